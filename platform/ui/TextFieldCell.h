#pragma once

#include <memory>
#include <string>

#include "platform/ui/Cell.h"

namespace platform {

// How text that does not fit is broken or cut (the platform's values).
enum class LineBreakMode : int {
  ByWordWrapping = 0,
  ByCharWrapping = 1,
  ByClipping = 2,
  ByTruncatingHead = 3,
  ByTruncatingTail = 4,
  ByTruncatingMiddle = 5
};

// A cell that shows a line of text. Its natural size is exactly what the
// current TextMeasurer answers for its string and font size.
class TextFieldCell final : public Cell {
 public:
  explicit TextFieldCell(std::string text = "") { setStringValue(std::move(text)); }
  static std::shared_ptr<TextFieldCell> initTextCell(std::string text) {
    return std::make_shared<TextFieldCell>(std::move(text));
  }

  bool isScrollable() const { return scrollable_; }
  void setScrollable(bool scrollable) { scrollable_ = scrollable; }
  LineBreakMode lineBreakMode() const { return lineBreakMode_; }
  void setLineBreakMode(LineBreakMode mode) { lineBreakMode_ = mode; }

  std::string className() const override { return "TextFieldCell"; }

 private:
  bool scrollable_ = false;
  LineBreakMode lineBreakMode_ = LineBreakMode::ByClipping;
};

using TextFieldCellPtr = std::shared_ptr<TextFieldCell>;

}  // namespace platform
