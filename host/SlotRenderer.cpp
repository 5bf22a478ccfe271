#include "host/SlotRenderer.h"

#include <algorithm>
#include <cmath>

#include "host/ImageGlyphs.h"
#include "platform/ui/Cell.h"

namespace kibhost {

int SlotRenderer::columnsForLength(double length) {
  return std::max(1, static_cast<int>(std::lround(length / kPointsPerColumn)));
}

int SlotRenderer::columnAt(double x) { return static_cast<int>(std::floor(x / kPointsPerColumn + 0.5)); }

std::vector<TerminalScreen::Cell> SlotRenderer::render(const platform::RecordingCanvas& canvas, double length,
                                                       const TerminalScreen::Style& barStyle) {
  using Kind = platform::RecordingCanvas::Kind;
  const int width = columnsForLength(length);
  std::vector<TerminalScreen::Cell> cells(static_cast<std::size_t>(width), TerminalScreen::Cell{" ", barStyle});
  TerminalScreen::Style base = barStyle;
  auto put = [&](int column, std::string glyph, const TerminalScreen::Style& style) {
    if (column >= 0 && column < width) cells[static_cast<std::size_t>(column)] = {std::move(glyph), style};
  };

  for (const auto& op : canvas.operations()) {
    if (op.kind == Kind::MenuBackground && op.highlighted) {
      base.foreground = TerminalScreen::Color::BrightWhite;
      base.background = TerminalScreen::Color::Blue;
      for (auto& cell : cells) cell.style = base;
    } else if (op.kind == Kind::DrawCell && op.image) {
      auto glyph = ImageGlyphs::statusIcon(op.image->displayName());
      TerminalScreen::Style style = base;
      style.dim = !op.enabled;
      if (glyph.color != TerminalScreen::Color::Default && op.enabled) style.foreground = glyph.color;
      auto points = TerminalScreen::codePoints(glyph.text);
      const int first = columnAt(op.rect.x);
      for (std::size_t i = 0; i < points.size(); ++i) put(first + static_cast<int>(i), points[i], style);
    } else if (op.kind == Kind::DrawCell && op.cellClass == "TextFieldCell") {
      // The recorded operation keeps no font; banner text is in the system font.
      const double advance = 0.6 * platform::Cell::systemFontSizeForControlSize(platform::ControlSize::Regular);
      const auto clip = op.clip.value_or(platform::Rect{0, 0, length, 22});
      auto points = TerminalScreen::codePoints(op.string);
      for (std::size_t i = 0; i < points.size(); ++i) {
        const double x = op.rect.x + advance * static_cast<double>(i);
        const int column = columnAt(x);
        const double centre = (column + 0.5) * kPointsPerColumn;
        if (centre >= clip.x && centre < clip.maxX()) put(column, points[i], base);
      }
    } else if (op.kind == Kind::FillRects && op.operation == platform::CompositingOperation::DestinationOut) {
      // The edge fade: columns that are partly erased show dimmed.
      for (std::size_t i = 0; i < op.rects.size(); ++i) {
        if (i < op.colors.size() && op.colors[i].alpha <= 0) continue;
        const int column = static_cast<int>(std::floor(op.rects[i].x / kPointsPerColumn));
        if (column >= 0 && column < width) cells[static_cast<std::size_t>(column)].style.dim = true;
      }
    }
  }
  return cells;
}

}  // namespace kibhost
