#pragma once

#include "host/render/ImageRasterizer.h"
#include "host/render/PictureStyle.h"
#include "host/render/Pixmap.h"
#include "host/render/TextRenderer.h"
#include "platform/ui/RecordingCanvas.h"

namespace kibrender {

// Draws the slot as its view drew it: the recorded drawing operations
// replayed with cairo on a piece of menu bar. The view draws on a layer of its
// own (its edge fade erases what it drew, not the bar), which is then laid on
// the bar; the icon cell's template glyph takes the bar's text colour, white on
// the highlight, and is dimmed when the cell is disabled.
class SlotPainter {
 public:
  static constexpr double kBarHeight = 22;  // points
  static constexpr double kBarMargin = 8;   // bar shown at each side of the slot
  static constexpr double kFontSize = 13;

  SlotPainter(ImageRasterizer& rasterizer, const TextRenderer& text, PictureStyle style);

  // The slot of the given width (the status item's length) as the canvas recorded it.
  Pixmap paint(const platform::RecordingCanvas& canvas, double slotWidth);

 private:
  void drawCell(cairo_t* context, const platform::RecordingCanvas::Operation& op, bool highlighted);
  void drawImage(cairo_t* context, const platform::RecordingCanvas::Operation& op, bool highlighted);
  // A toolkit rectangle (bottom left origin) in the picture's points, top left origin.
  void addRectangle(cairo_t* context, const platform::Rect& rect) const;

  ImageRasterizer& rasterizer_;
  const TextRenderer& text_;
  PictureStyle style_;
  Palette palette_;
};

}  // namespace kibrender
