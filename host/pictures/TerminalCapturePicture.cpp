#include "host/pictures/TerminalCapturePicture.h"

#include <algorithm>
#include <cmath>

#include "host/render/CairoHandles.h"
#include "host/render/TextRenderer.h"

namespace kibpictures {

kibrender::Pixmap TerminalCapturePicture::draw(const std::vector<std::string>& lines, double scale) {
  kibrender::TextRenderer text(false, kibrender::TextRenderer::kMonospaceFamilies);
  kibrender::Pixmap probe(1, 1);
  auto probeSurface = kibrender::surfaceDrawingInto(probe);
  kibrender::ContextHandle measuring(cairo_create(probeSurface.get()));
  double width = 0, lineHeight = 0;
  for (const auto& line : lines) {
    const auto size = text.measure(measuring.get(), line.empty() ? " " : line, kFontSize);
    width = std::max(width, size.width);
    lineHeight = std::max(lineHeight, size.height);
  }
  const double height = lineHeight * static_cast<double>(lines.size());
  kibrender::Pixmap picture(static_cast<int>(std::ceil((width + 2 * kMargin) * scale)),
                            static_cast<int>(std::ceil((height + 2 * kMargin) * scale)));
  if (picture.isEmpty()) return picture;
  auto surface = kibrender::surfaceDrawingInto(picture);
  kibrender::ContextHandle context(cairo_create(surface.get()));
  cairo_scale(context.get(), scale, scale);
  cairo_set_source_rgb(context.get(), 0x1d / 255.0, 0x1f / 255.0, 0x21 / 255.0);
  cairo_paint(context.get());
  for (std::size_t i = 0; i < lines.size(); ++i)
    text.draw(context.get(), lines[i], kFontSize, kMargin, kMargin + lineHeight * static_cast<double>(i),
              {0.85, 0.85, 0.85, 1.0});
  cairo_surface_flush(surface.get());
  return picture;
}

}  // namespace kibpictures
