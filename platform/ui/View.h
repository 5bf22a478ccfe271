#pragma once

#include <functional>
#include <memory>

#include "platform/core/Object.h"
#include "platform/ui/Event.h"
#include "platform/ui/Geometry.h"

namespace platform {

class Canvas;

// Autoresizing masks (the platform's values).
inline constexpr unsigned kViewNotSizable = 0;
inline constexpr unsigned kViewMinXMargin = 1;
inline constexpr unsigned kViewWidthSizable = 2;
inline constexpr unsigned kViewMaxXMargin = 4;
inline constexpr unsigned kViewMinYMargin = 8;
inline constexpr unsigned kViewHeightSizable = 16;
inline constexpr unsigned kViewMaxYMargin = 32;

// A rectangle that draws itself onto a canvas and receives mouse events.
// Whoever shows the view installs a handler that hears when the view first
// needs display; displaying it clears the flag, so requests coalesce until the
// next display.
class View : public Object {
 public:
  using NeedsDisplayHandler = std::function<void(View&)>;

  static std::shared_ptr<View> initWithFrame(const Rect& frame) { return std::make_shared<View>(frame); }

  explicit View(const Rect& frame) : frame_(frame) {}

  const Rect& frame() const { return frame_; }
  void setFrame(const Rect& frame) { frame_ = frame; }
  void setFrameSize(Size size);
  // The frame in the view's own coordinates (origin 0, 0).
  Rect bounds() const { return {0, 0, frame_.width, frame_.height}; }

  unsigned autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }

  bool needsDisplay() const { return needsDisplay_; }
  void setNeedsDisplay(bool needsDisplay);
  void setNeedsDisplayHandler(NeedsDisplayHandler handler) { needsDisplayHandler_ = std::move(handler); }

  // Draws the whole view and clears the needs-display flag.
  void display(Canvas& canvas);
  // Draws the part of the view inside the rectangle; the base draws nothing.
  virtual void drawRect(Canvas& canvas, const Rect& dirtyRect);
  virtual void mouseDown(const Event& event);

 private:
  Rect frame_;
  unsigned autoresizingMask_ = kViewNotSizable;
  bool needsDisplay_ = false;
  NeedsDisplayHandler needsDisplayHandler_;
};

using ViewPtr = std::shared_ptr<View>;

}  // namespace platform
