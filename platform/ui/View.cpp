#include "platform/ui/View.h"

namespace platform {

void View::setFrameSize(Size size) {
  frame_.width = size.width;
  frame_.height = size.height;
}

void View::setNeedsDisplay(bool needsDisplay) {
  bool newlyNeeded = needsDisplay && !needsDisplay_;
  needsDisplay_ = needsDisplay;
  if (newlyNeeded && needsDisplayHandler_) needsDisplayHandler_(*this);
}

void View::display(Canvas& canvas) {
  needsDisplay_ = false;
  drawRect(canvas, bounds());
}

void View::drawRect(Canvas&, const Rect&) {}

void View::mouseDown(const Event&) {}

}  // namespace platform
