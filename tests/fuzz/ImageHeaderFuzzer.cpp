// An image file's header (PNG, TIFF, PDF, GIF, JPEG): a size or an error.
#include "platform/ui/ImageHeaderReader.h"
#include "tests/fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  platform::ImageHeaderReader::readSizeFromData(kibfuzz::text(data, size), "fuzz");
  return 0;
}
