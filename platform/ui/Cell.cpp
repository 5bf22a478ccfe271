#include "platform/ui/Cell.h"

#include <algorithm>

#include "platform/ui/Canvas.h"
#include "platform/ui/TextMeasurer.h"

namespace platform {

double Cell::systemFontSizeForControlSize(ControlSize size) {
  switch (size) {
    case ControlSize::Small:
      return 11.0;
    case ControlSize::Mini:
      return 9.0;
    default:
      return 13.0;
  }
}

Size Cell::cellSizeForBounds(const Rect& bounds) const {
  Size natural = naturalSize();
  return {std::min(natural.width, bounds.width), std::min(natural.height, bounds.height)};
}

void Cell::drawWithFrameInView(const Rect& frame, const View*, Canvas& canvas) const { canvas.drawCell(*this, frame); }

Size Cell::naturalSize() const { return textSize(); }

Size Cell::textSize() const { return TextMeasurer::current().sizeOfString(string_, fontSize_); }

}  // namespace platform
