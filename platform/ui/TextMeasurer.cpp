#include "platform/ui/TextMeasurer.h"

#include <cmath>

namespace platform {
namespace {

std::shared_ptr<TextMeasurer>& installed() {
  static std::shared_ptr<TextMeasurer> measurer = std::make_shared<TextMeasurer>();
  return measurer;
}

std::size_t codePointCount(const std::string& utf8) {
  std::size_t count = 0;
  for (unsigned char byte : utf8)
    if ((byte & 0xC0) != 0x80) ++count;  // continuation bytes do not start a code point
  return count;
}

}  // namespace

Size TextMeasurer::sizeOfString(const std::string& utf8, double fontSize) const {
  return {static_cast<double>(codePointCount(utf8)) * 0.6 * fontSize, std::ceil(1.25 * fontSize)};
}

const TextMeasurer& TextMeasurer::current() { return *installed(); }

std::shared_ptr<TextMeasurer> TextMeasurer::setCurrent(std::shared_ptr<TextMeasurer> measurer) {
  auto previous = installed();
  installed() = measurer ? std::move(measurer) : std::make_shared<TextMeasurer>();
  return previous;
}

}  // namespace platform
