#include "host/render/CairoHandles.h"

#include <cstring>

namespace kibrender {

SurfaceHandle surfaceDrawingInto(Pixmap& pixmap) {
  auto* data = reinterpret_cast<unsigned char*>(pixmap.pixels().data());
  return SurfaceHandle(
      cairo_image_surface_create_for_data(data, CAIRO_FORMAT_ARGB32, pixmap.width(), pixmap.height(), pixmap.stride()));
}

Pixmap pixmapFromSurface(cairo_surface_t* surface) {
  if (!surface || cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS ||
      cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32)
    return {};
  cairo_surface_flush(surface);
  const int width = cairo_image_surface_get_width(surface);
  const int height = cairo_image_surface_get_height(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  const unsigned char* data = cairo_image_surface_get_data(surface);
  Pixmap pixmap(width, height);
  if (pixmap.isEmpty() || !data) return {};
  for (int y = 0; y < height; ++y)
    std::memcpy(pixmap.pixels().data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width),
                data + static_cast<std::size_t>(y) * static_cast<std::size_t>(stride),
                static_cast<std::size_t>(width) * 4);
  return pixmap;
}

}  // namespace kibrender
