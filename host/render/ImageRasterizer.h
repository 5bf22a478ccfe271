#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/render/Pixmap.h"
#include "platform/ui/Color.h"
#include "platform/ui/Image.h"

namespace kibrender {

// How an image is turned into pixels.
struct RasterOptions {
  // Template images are drawn in this colour, their own alpha as the mask;
  // other images keep their colours (PanelTheme chooses it for a panel).
  platform::Color tint = platform::Color::black();
  // Drawn at platform::kDimmedImageFraction of its opacity, as a disabled image cell draws.
  bool dimmed = false;
};

// Rasterises the images a bundle refers to (platform::Image: a file) into
// pixmaps: PDF pages with poppler and cairo, PNG, TIFF and whatever else
// gdk-pixbuf reads. The image is scaled to fit the box with its aspect ratio
// kept and centred in it. A file that is missing or cannot be read gives an
// empty pixmap and the reason, never a crash. Decoded files are kept for the
// next request, so an instance belongs to one thread.
class ImageRasterizer {
 public:
  // The largest pixmap side it draws.
  static constexpr int kMaximumSide = 4096;

  ImageRasterizer();
  ~ImageRasterizer();
  ImageRasterizer(const ImageRasterizer&) = delete;
  ImageRasterizer& operator=(const ImageRasterizer&) = delete;

  // A size × size pixmap (an icon at 16, 22, 24, 32, 48 px, …).
  Pixmap renderSquare(const platform::Image& image, int size, const RasterOptions& options,
                      std::string* error = nullptr);
  // A width × height pixmap with the image fitted in it.
  Pixmap render(const platform::Image& image, int width, int height, const RasterOptions& options,
                std::string* error = nullptr);
  // Forgets the decoded files (they will be read again).
  void forgetDecodedFiles();

 private:
  class Source;
  std::shared_ptr<Source> sourceFor(const std::string& path, std::string& error);

  std::map<std::string, std::shared_ptr<Source>> sources_;
};

}  // namespace kibrender
