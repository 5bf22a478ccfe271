#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/render/ImageRasterizer.h"
#include "host/render/PictureStyle.h"
#include "host/render/Pixmap.h"
#include "host/render/TextRenderer.h"
#include "platform/ui/Image.h"
#include "platform/ui/Menu.h"

namespace kibrender {

// One row of a menu as it is drawn.
struct MenuRow {
  bool separator = false;
  std::string title;
  int state = 0;  // platform::kOnState (a check), kMixedState (a dash) or kOffState
  bool enabled = true;
  platform::ImagePtr image;
  std::int64_t indentationLevel = 0;
  std::string keyEquivalent;  // as shown: "⌃⎋"
  bool hasSubmenu = false;
  bool highlighted = false;

  // The rows the menu shows while the modifiers are held (alternates replace their rows).
  static std::vector<MenuRow> rowsOf(const platform::MenuPtr& menu, std::uint64_t modifierFlags);
};

// A rectangle in device pixels, top left origin.
struct PixelRect {
  int x = 0, y = 0, width = 0, height = 0;
  int centreX() const { return x + width / 2; }
  int centreY() const { return y + height / 2; }
};

// Where the parts of one row were drawn; empty rectangles for parts it lacks.
struct MenuRowPlacement {
  PixelRect row, mark, image, title, key, arrow;
};

// Draws a menu as a picture: a rounded panel with its rows, check marks and
// dashes in the left column, the rows' images, indented titles, disabled rows
// in grey, separators as lines, key equivalents at the right and an arrow for
// rows with submenus. Geometry is in points, multiplied by the style's scale.
class MenuPainter {
 public:
  // Points.
  static constexpr double kFontSize = 13;
  static constexpr double kRowHeight = 20;
  static constexpr double kSeparatorHeight = 11;
  static constexpr double kVerticalPadding = 5;
  static constexpr double kMarkX = 8;
  static constexpr double kMarkSize = 12;
  static constexpr double kImageX = 24;
  static constexpr double kImageGap = 5;
  static constexpr double kIndentation = 12;
  static constexpr double kKeyGap = 28;
  static constexpr double kArrowWidth = 8;
  static constexpr double kRightMargin = 14;
  static constexpr double kMinimumWidth = 120;

  MenuPainter(ImageRasterizer& rasterizer, const TextRenderer& text, PictureStyle style);

  Pixmap paint(const std::vector<MenuRow>& rows);
  // Where each row of the last picture went.
  const std::vector<MenuRowPlacement>& placements() const { return placements_; }

 private:
  struct Columns {
    double imageWidth = 0;  // widest image, 0 when no row has one
    double titleX = 0;
    double width = 0;
  };
  Columns measureColumns(cairo_t* context, const std::vector<MenuRow>& rows) const;
  void drawRow(cairo_t* context, const MenuRow& row, const Columns& columns, double top, MenuRowPlacement& placement);
  void drawMark(cairo_t* context, int state, double top, const platform::Color& color) const;
  void drawArrow(cairo_t* context, double right, double top, const platform::Color& color) const;
  double imageWidth(const MenuRow& row) const;
  PixelRect pixels(double x, double y, double width, double height) const;

  ImageRasterizer& rasterizer_;
  const TextRenderer& text_;
  PictureStyle style_;
  Palette palette_;
  std::vector<MenuRowPlacement> placements_;
};

}  // namespace kibrender
