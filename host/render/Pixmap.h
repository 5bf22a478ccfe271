#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kibrender {

// A straight (not premultiplied) colour of 8-bit components.
struct Rgba8 {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 0;
  friend bool operator==(const Rgba8&, const Rgba8&) = default;
};

// A raster picture: rows of 32-bit pixels, premultiplied ARGB in the
// machine's byte order, without padding (cairo's ARGB32 layout with a stride
// of width × 4). An empty pixmap (0 × 0) stands for "nothing could be drawn".
class Pixmap {
 public:
  Pixmap() = default;
  // Fully transparent.
  Pixmap(int width, int height);

  int width() const { return width_; }
  int height() const { return height_; }
  bool isEmpty() const { return width_ <= 0 || height_ <= 0; }
  const std::vector<std::uint32_t>& pixels() const { return pixels_; }
  std::vector<std::uint32_t>& pixels() { return pixels_; }
  int stride() const { return width_ * 4; }

  // The pixel at (x, y), top left origin, un-premultiplied; transparent outside.
  Rgba8 pixelAt(int x, int y) const;

  // A StatusNotifierItem icon entry's bytes (the `ay` of `a(iiay)`): ARGB32 in
  // network byte order, not premultiplied.
  std::vector<std::uint8_t> statusNotifierBytes() const;
  // A PNG file's bytes (for dbusmenu's icon-data); empty for an empty pixmap.
  std::vector<std::uint8_t> pngBytes() const;
  // Writes pngBytes() to a file; false with the reason when it cannot.
  bool writePNG(const std::string& path, std::string& error) const;

  friend bool operator==(const Pixmap&, const Pixmap&) = default;

 private:
  int width_ = 0;
  int height_ = 0;
  std::vector<std::uint32_t> pixels_;
};

}  // namespace kibrender
