#include "host/TerminalScreen.h"

#include <algorithm>
#include <optional>

namespace kibhost {

void TerminalScreen::resize(int width, int height) {
  width_ = std::max(0, width);
  height_ = std::max(0, height);
  cells_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), Cell{});
}

void TerminalScreen::clear() { std::fill(cells_.begin(), cells_.end(), Cell{}); }

TerminalScreen::Cell& TerminalScreen::at(int x, int y) {
  return cells_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
}

const TerminalScreen::Cell& TerminalScreen::at(int x, int y) const {
  return cells_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
}

std::vector<std::string> TerminalScreen::codePoints(std::string_view text) {
  std::vector<std::string> points;
  std::size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = lead < 0x80           ? 1
                         : (lead >> 5) == 0x6  ? 2
                         : (lead >> 4) == 0xE  ? 3
                         : (lead >> 3) == 0x1E ? 4
                                               : 0;
    bool valid = length > 0 && i + length <= text.size();
    for (std::size_t k = 1; valid && k < length; ++k) valid = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    if (!valid) {
      points.emplace_back("\xEF\xBF\xBD");
      ++i;
      continue;
    }
    points.emplace_back(text.substr(i, length));
    i += length;
  }
  return points;
}

int TerminalScreen::put(int x, int y, std::string_view text, const Style& style, int maxWidth) {
  if (y < 0 || y >= height_) return 0;
  int written = 0;
  for (auto& glyph : codePoints(text)) {
    if (maxWidth >= 0 && written >= maxWidth) break;
    const int column = x + written;
    if (column >= width_) break;
    if (column >= 0) {
      const bool control = glyph.size() == 1 && (static_cast<unsigned char>(glyph[0]) < 0x20 || glyph[0] == 0x7f);
      at(column, y) = Cell{control ? " " : std::move(glyph), style};
    }
    ++written;
  }
  return written;
}

std::string TerminalScreen::fitted(std::string_view text, int width) {
  if (width <= 0) return "";
  auto points = codePoints(text);
  std::string result;
  const int count = static_cast<int>(points.size());
  const int kept = count > width ? width - 1 : count;
  for (int i = 0; i < kept; ++i) result += points[static_cast<std::size_t>(i)];
  if (count > width) result += "…";
  for (int i = std::min(count, width); i < width; ++i) result += ' ';
  return result;
}

int TerminalScreen::put(int x, int y, std::string_view text) { return put(x, y, text, Style{}); }

void TerminalScreen::fill(int x, int y, int width, const Style& style, std::string_view glyph) {
  for (int column = x; column < x + width; ++column)
    if (contains(column, y)) at(column, y) = Cell{std::string(glyph), style};
}

std::string TerminalScreen::rowText(int y) const {
  std::string text;
  for (int x = 0; x < width_; ++x) text += at(x, y).glyph;
  return text;
}

std::string TerminalScreen::styleSequence(const Style& style) {
  std::string sequence = "\x1b[0";
  if (style.bold) sequence += ";1";
  if (style.dim) sequence += ";2";
  if (style.reverse) sequence += ";7";
  auto colour = [&](Color color, int normal, int bright) {
    const int value = static_cast<int>(color);
    if (value < 0) return;
    sequence += ";" + std::to_string(value < 8 ? normal + value : bright + value - 8);
  };
  colour(style.foreground, 30, 90);
  colour(style.background, 40, 100);
  return sequence + "m";
}

std::string TerminalScreen::render(const TerminalScreen& previous) const {
  const bool sameSize = previous.width_ == width_ && previous.height_ == height_ && !previous.cells_.empty();
  std::string out;
  if (!sameSize) out += "\x1b[0m\x1b[2J";
  for (int y = 0; y < height_; ++y) {
    bool changed = !sameSize;
    for (int x = 0; !changed && x < width_; ++x) changed = !(at(x, y) == previous.at(x, y));
    if (!changed) continue;
    out += "\x1b[" + std::to_string(y + 1) + ";1H";
    std::optional<Style> current;
    for (int x = 0; x < width_; ++x) {
      const Cell& cell = at(x, y);
      if (!current || !(*current == cell.style)) {
        out += styleSequence(cell.style);
        current = cell.style;
      }
      out += cell.glyph;
    }
    out += "\x1b[0m";
  }
  return out;
}

}  // namespace kibhost
