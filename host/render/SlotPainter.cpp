#include "host/render/SlotPainter.h"

#include <cmath>

#include "host/render/CairoHandles.h"
#include "platform/ui/ButtonCell.h"

namespace kibrender {
namespace {

using Kind = platform::RecordingCanvas::Kind;

cairo_operator_t cairoOperator(platform::CompositingOperation operation) {
  using Op = platform::CompositingOperation;
  switch (operation) {
    case Op::Clear:
      return CAIRO_OPERATOR_CLEAR;
    case Op::Copy:
      return CAIRO_OPERATOR_SOURCE;
    case Op::SourceIn:
      return CAIRO_OPERATOR_IN;
    case Op::SourceOut:
      return CAIRO_OPERATOR_OUT;
    case Op::SourceAtop:
      return CAIRO_OPERATOR_ATOP;
    case Op::DestinationOver:
      return CAIRO_OPERATOR_DEST_OVER;
    case Op::DestinationIn:
      return CAIRO_OPERATOR_DEST_IN;
    case Op::DestinationOut:
      return CAIRO_OPERATOR_DEST_OUT;
    case Op::DestinationAtop:
      return CAIRO_OPERATOR_DEST_ATOP;
    case Op::XOR:
      return CAIRO_OPERATOR_XOR;
    case Op::PlusDarker:
      return CAIRO_OPERATOR_DARKEN;
    case Op::PlusLighter:
      return CAIRO_OPERATOR_ADD;
    default:
      return CAIRO_OPERATOR_OVER;
  }
}

void setColor(cairo_t* context, const platform::Color& color) {
  cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
}

}  // namespace

SlotPainter::SlotPainter(ImageRasterizer& rasterizer, const TextRenderer& text, PictureStyle style)
    : rasterizer_(rasterizer), text_(text), style_(style), palette_(Palette::forTheme(style.theme)) {}

void SlotPainter::addRectangle(cairo_t* context, const platform::Rect& rect) const {
  cairo_rectangle(context, rect.x, kBarHeight - rect.y - rect.height, rect.width, rect.height);
}

Pixmap SlotPainter::paint(const platform::RecordingCanvas& canvas, double slotWidth) {
  const double width = std::max(0.0, slotWidth) + 2 * kBarMargin;
  Pixmap picture(static_cast<int>(std::ceil(width * style_.scale)),
                 static_cast<int>(std::ceil(kBarHeight * style_.scale)));
  auto surface = surfaceDrawingInto(picture);
  ContextHandle context(cairo_create(surface.get()));
  cairo_t* cr = context.get();
  cairo_scale(cr, style_.scale, style_.scale);
  setColor(cr, palette_.bar);
  cairo_paint(cr);

  bool highlighted = false;
  for (const auto& op : canvas.operations())
    if (op.kind == Kind::MenuBackground) highlighted = highlighted || op.highlighted;

  cairo_translate(cr, kBarMargin, 0);
  cairo_push_group(cr);
  for (const auto& op : canvas.operations()) {
    switch (op.kind) {
      case Kind::SaveState:
        cairo_save(cr);
        break;
      case Kind::RestoreState:
        cairo_restore(cr);
        break;
      case Kind::Clip:
        addRectangle(cr, op.rect);
        cairo_clip(cr);
        break;
      case Kind::MenuBackground:
        // Not highlighted, the bar shows through.
        if (op.highlighted) {
          addRectangle(cr, op.rect);
          setColor(cr, palette_.highlight);
          cairo_fill(cr);
        }
        break;
      case Kind::DrawCell:
        drawCell(cr, op, highlighted);
        break;
      case Kind::FillRects:
        cairo_save(cr);
        cairo_set_operator(cr, cairoOperator(op.operation));
        for (std::size_t i = 0; i < op.rects.size() && i < op.colors.size(); ++i) {
          addRectangle(cr, op.rects[i]);
          setColor(cr, op.colors[i]);
          cairo_fill(cr);
        }
        cairo_restore(cr);
        break;
    }
  }
  cairo_pop_group_to_source(cr);
  cairo_paint(cr);
  cairo_surface_flush(surface.get());
  return picture;
}

void SlotPainter::drawCell(cairo_t* cr, const platform::RecordingCanvas::Operation& op, bool highlighted) {
  if (op.image) {
    drawImage(cr, op, highlighted);
    return;
  }
  if (op.string.empty()) return;
  const auto size = text_.measure(cr, op.string, kFontSize);
  const double top = kBarHeight - op.rect.y - op.rect.height;
  text_.draw(cr, op.string, kFontSize, op.rect.x, top + (op.rect.height - size.height) / 2,
             highlighted ? palette_.highlightedText : palette_.text);
}

void SlotPainter::drawImage(cairo_t* cr, const platform::RecordingCanvas::Operation& op, bool highlighted) {
  const auto* button = dynamic_cast<const platform::ButtonCell*>(op.cell);
  const bool dims = !button || button->imageDimsWhenDisabled();
  // Whole device pixels, so the glyph is not resampled a second time.
  double x = op.rect.x, y = kBarHeight - op.rect.y - op.rect.height;
  cairo_user_to_device(cr, &x, &y);
  const int left = static_cast<int>(std::lround(x)), top = static_cast<int>(std::lround(y));
  const int width = static_cast<int>(std::lround(op.rect.width * style_.scale));
  const int height = static_cast<int>(std::lround(op.rect.height * style_.scale));
  const RasterOptions options{highlighted ? palette_.highlightedText : palette_.text, dims && !op.enabled};
  Pixmap image = rasterizer_.render(*op.image, width, height, options);
  if (image.isEmpty()) return;
  auto source = surfaceDrawingInto(image);
  cairo_save(cr);
  cairo_identity_matrix(cr);
  cairo_set_source_surface(cr, source.get(), left, top);
  cairo_paint(cr);
  cairo_restore(cr);
}

}  // namespace kibrender
