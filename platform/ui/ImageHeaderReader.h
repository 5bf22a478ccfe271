#pragma once

#include <optional>
#include <string>

#include "platform/ui/Geometry.h"

namespace platform {

// Reads an image's size from its file header without decoding the pixels.
// PNG, GIF and JPEG answer their pixel size, TIFF its ImageWidth and
// ImageLength, PDF the size of the first MediaBox (points).
class ImageHeaderReader {
 public:
  struct Result {
    std::optional<Size> size;
    // Why there is no size: names the file and what is wrong with it.
    std::string error;
  };

  static Result readSize(const std::string& path);
  // The same for bytes already in memory; `name` appears in error messages.
  static Result readSizeFromData(const std::string& data, const std::string& name);
};

}  // namespace platform
