#include "host/TerminalMenu.h"

#include <algorithm>

#include "host/ImageGlyphs.h"
#include "platform/ui/KeyEquivalentText.h"
#include "platform/ui/KeyModifiers.h"

namespace kibhost {
namespace {

using Style = TerminalScreen::Style;
using Color = TerminalScreen::Color;

Style boxStyle() {
  Style style;
  style.foreground = Color::Black;
  style.background = Color::White;
  return style;
}

}  // namespace

TerminalMenu::TerminalMenu(const platform::MenuTracking& tracking, std::uint64_t modifierFlags)
    : tracking_(tracking), modifierFlags_(modifierFlags) {}

std::vector<platform::MenuTracking::Row> TerminalMenu::rows() const { return tracking_.visibleRows(modifierFlags_); }

bool TerminalMenu::isOptionHeld() const { return (modifierFlags_ & platform::kAlternateKeyMask) != 0; }

void TerminalMenu::toggleOption() { modifierFlags_ ^= platform::kAlternateKeyMask; }

void TerminalMenu::moveSelection(int direction) {
  const auto shown = rows();
  const int count = static_cast<int>(shown.size());
  if (count == 0) return;
  int position = selected_;
  for (int step = 0; step < count; ++step) {
    position = position < 0 ? (direction > 0 ? 0 : count - 1) : (position + direction + count) % count;
    if (shown[static_cast<std::size_t>(position)].enabled) {
      selected_ = position;
      return;
    }
  }
}

std::int64_t TerminalMenu::selectedIndex() const {
  const auto shown = rows();
  if (selected_ < 0 || selected_ >= static_cast<int>(shown.size())) return -1;
  const auto& row = shown[static_cast<std::size_t>(selected_)];
  return row.enabled ? row.index : -1;
}

std::string TerminalMenu::keyEquivalentText(const std::string& key, std::uint64_t modifierMask) {
  return platform::keyEquivalentText(key, modifierMask);
}

std::string TerminalMenu::rowTitle(const platform::MenuItem& item) const {
  return std::string(static_cast<std::size_t>(item.indentationLevel()) * 2, ' ') + item.title();
}

void TerminalMenu::draw(TerminalScreen& screen, int slotColumn, int top, int bottom) {
  const auto shown = rows();
  const int count = static_cast<int>(shown.size());
  int titleWidth = 8;
  int keyWidth = 0;
  for (const auto& row : shown) {
    if (row.item->isSeparatorItem()) continue;
    titleWidth = std::max(titleWidth, TerminalScreen::columns(rowTitle(*row.item)));
    keyWidth = std::max(keyWidth, TerminalScreen::columns(keyEquivalentText(row.item->keyEquivalent(),
                                                                            row.item->keyEquivalentModifierMask())));
  }
  // "│ ✓ ● title  key │"
  const int inner = 1 + 1 + 1 + 1 + 1 + titleWidth + (keyWidth ? 2 + keyWidth : 0) + 1;
  boxWidth_ = std::min(inner + 2, screen.width());
  // A menu taller than the screen shows a window of its rows that follows the highlight.
  const int visible = std::max(1, std::min(count, bottom - top - 2));
  if (selected_ >= 0) {
    if (selected_ < first_) first_ = selected_;
    if (selected_ >= first_ + visible) first_ = selected_ - visible + 1;
  }
  first_ = std::clamp(first_, 0, std::max(0, count - visible));
  shownRows_ = visible;
  boxHeight_ = visible + 2;
  boxX_ = std::max(0, std::min(slotColumn, screen.width() - boxWidth_));
  boxY_ = top;

  const Style frame = boxStyle();
  screen.fill(boxX_, boxY_, boxWidth_, frame, "─");
  screen.put(boxX_, boxY_, "┌", frame);
  screen.put(boxX_ + boxWidth_ - 1, boxY_, "┐", frame);
  if (first_ > 0) screen.put(boxX_ + boxWidth_ / 2 - 1, boxY_, " ▲ ", frame);
  int y = boxY_ + 1;
  for (int position = first_; position < first_ + visible; ++position, ++y) {
    const auto& row = shown[static_cast<std::size_t>(position)];
    const auto& item = *row.item;
    Style style = frame;
    if (position == selected_ && row.enabled) {
      style.foreground = Color::BrightWhite;
      style.background = Color::Blue;
    }
    screen.fill(boxX_, y, boxWidth_, style);
    screen.put(boxX_, y, "│", frame);
    screen.put(boxX_ + boxWidth_ - 1, y, "│", frame);
    if (item.isSeparatorItem()) {
      screen.fill(boxX_ + 1, y, boxWidth_ - 2, frame, "─");
      screen.put(boxX_, y, "├", frame);
      screen.put(boxX_ + boxWidth_ - 1, y, "┤", frame);
      continue;
    }
    Style text = style;
    if (!row.enabled) {
      text.foreground = Color::BrightBlack;
    }
    int x = boxX_ + 2;
    const char* mark = item.state() == platform::kOnState ? "✓" : item.state() == platform::kMixedState ? "–" : " ";
    screen.put(x, y, mark, text);
    x += 2;
    auto glyph = ImageGlyphs::menuImage(item.image() ? item.image()->displayName() : "");
    Style imageStyle = style;
    if (glyph.color != Color::Default && row.enabled) imageStyle.foreground = glyph.color;
    if (!row.enabled) imageStyle.foreground = Color::BrightBlack;
    screen.put(x, y, glyph.text, imageStyle, 1);
    x += 2;
    const int limit = boxX_ + boxWidth_ - 1 - x - (keyWidth ? keyWidth + 2 : 0);
    screen.put(x, y, rowTitle(item), text, std::max(0, limit));
    const auto key = keyEquivalentText(item.keyEquivalent(), item.keyEquivalentModifierMask());
    if (!key.empty()) screen.put(boxX_ + boxWidth_ - 2 - TerminalScreen::columns(key), y, key, text);
  }
  screen.fill(boxX_, y, boxWidth_, frame, "─");
  screen.put(boxX_, y, "└", frame);
  screen.put(boxX_ + boxWidth_ - 1, y, "┘", frame);
  if (first_ + visible < count) screen.put(boxX_ + boxWidth_ / 2 - 1, y, " ▼ ", frame);
}

std::int64_t TerminalMenu::indexAt(int column, int row, bool& inBox) const {
  inBox = column >= boxX_ && column < boxX_ + boxWidth_ && row >= boxY_ && row < boxY_ + boxHeight_;
  if (!inBox) return -1;
  const int position = first_ + row - boxY_ - 1;
  const auto shown = rows();
  if (row - boxY_ - 1 < 0 || row - boxY_ - 1 >= shownRows_ || position >= static_cast<int>(shown.size())) return -1;
  const auto& entry = shown[static_cast<std::size_t>(position)];
  return entry.enabled ? entry.index : -1;
}

}  // namespace kibhost
