#pragma once

#include <memory>
#include <string>

#include "platform/ui/Geometry.h"

namespace platform {

// Measures the natural size of a line of text. Replaceable, so that tests get
// exact widths and a real frontend can use its own font metrics.
//
// The default metric is deterministic and font-free: every Unicode code point
// advances 0.6 × the font size (7.8 points at 13 points), and the line height
// is 1.25 × the font size rounded up to whole points (17 at 13 points). An
// empty string is 0 wide and one line high.
class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;

  virtual Size sizeOfString(const std::string& utf8, double fontSize) const;

  static const TextMeasurer& current();
  // Installs a measurer (nil restores the default); answers the previous one.
  static std::shared_ptr<TextMeasurer> setCurrent(std::shared_ptr<TextMeasurer> measurer);
};

}  // namespace platform
