#include "host/render/Pixmap.h"

#include <cairo.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "host/render/CairoHandles.h"

namespace kibrender {
namespace {

std::uint8_t unpremultiply(std::uint32_t component, std::uint32_t alpha) {
  if (alpha == 0) return 0;
  return static_cast<std::uint8_t>((component * 255 + alpha / 2) / alpha);
}

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
  auto& bytes = *static_cast<std::vector<std::uint8_t>*>(closure);
  bytes.insert(bytes.end(), data, data + length);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

Pixmap::Pixmap(int width, int height)
    : width_(width > 0 && height > 0 ? width : 0),
      height_(width > 0 && height > 0 ? height : 0),
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0) {}

Rgba8 Pixmap::pixelAt(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return {};
  const std::uint32_t pixel =
      pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
  const std::uint32_t alpha = pixel >> 24;
  return {unpremultiply((pixel >> 16) & 0xff, alpha), unpremultiply((pixel >> 8) & 0xff, alpha),
          unpremultiply(pixel & 0xff, alpha), static_cast<std::uint8_t>(alpha)};
}

std::vector<std::uint8_t> Pixmap::statusNotifierBytes() const {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(pixels_.size() * 4);
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      const Rgba8 pixel = pixelAt(x, y);
      bytes.insert(bytes.end(), {pixel.alpha, pixel.red, pixel.green, pixel.blue});
    }
  }
  return bytes;
}

std::vector<std::uint8_t> Pixmap::pngBytes() const {
  std::vector<std::uint8_t> bytes;
  if (isEmpty()) return bytes;
  // cairo reads the pixels in place and never writes them when encoding.
  auto* data = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(pixels_.data()));
  SurfaceHandle surface(cairo_image_surface_create_for_data(data, CAIRO_FORMAT_ARGB32, width_, height_, stride()));
  if (cairo_surface_write_to_png_stream(surface.get(), appendBytes, &bytes) != CAIRO_STATUS_SUCCESS) bytes.clear();
  return bytes;
}

bool Pixmap::writePNG(const std::string& path, std::string& error) const {
  const auto bytes = pngBytes();
  if (bytes.empty()) {
    error = path + ": nothing to write (an empty picture)";
    return false;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (file) file.close();
  if (!file) {
    error = path + ": cannot write (" + std::strerror(errno) + ")";
    return false;
  }
  return true;
}

}  // namespace kibrender
