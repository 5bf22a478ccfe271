#pragma once

#include <memory>
#include <string>

#include "platform/core/Object.h"
#include "platform/ui/Geometry.h"
#include "platform/ui/Image.h"

namespace platform {

class Canvas;
class View;

// How a cell's content contrasts with what is behind it (the platform's values).
enum class BackgroundStyle : int { Light = 0, Dark = 1, Raised = 2, Lowered = 3 };

// Control sizes and their system font sizes.
enum class ControlSize : int { Regular = 0, Small = 1, Mini = 2 };

// Draws one piece of content (text, image) in a rectangle of a view. Cells do
// not paint pixels themselves: they hand themselves to the canvas, which
// renders or records them.
class Cell : public Object {
 public:
  static double systemFontSizeForControlSize(ControlSize size);

  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled) { enabled_ = enabled; }
  const ImagePtr& image() const { return image_; }
  void setImage(ImagePtr image) { image_ = std::move(image); }
  const std::string& stringValue() const { return string_; }
  void setStringValue(std::string value) { string_ = std::move(value); }
  double fontSize() const { return fontSize_; }
  void setFontSize(double size) { fontSize_ = size; }
  BackgroundStyle backgroundStyle() const { return backgroundStyle_; }
  void setBackgroundStyle(BackgroundStyle style) { backgroundStyle_ = style; }

  // The smallest size that shows the whole content, limited to the bounds' size.
  virtual Size cellSizeForBounds(const Rect& bounds) const;
  void drawWithFrameInView(const Rect& frame, const View* view, Canvas& canvas) const;

 protected:
  // The content's natural size, before the bounds limit it.
  virtual Size naturalSize() const;
  Size textSize() const;

 private:
  bool enabled_ = true;
  ImagePtr image_;
  std::string string_;
  double fontSize_ = systemFontSizeForControlSize(ControlSize::Regular);
  BackgroundStyle backgroundStyle_ = BackgroundStyle::Light;
};

using CellPtr = std::shared_ptr<Cell>;

}  // namespace platform
