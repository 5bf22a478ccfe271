#include "platform/ui/ButtonCell.h"

#include <algorithm>

namespace platform {

Size ButtonCell::naturalSize() const {
  Size image = this->image() ? this->image()->size() : Size{};
  Size text = stringValue().empty() ? Size{} : textSize();
  Size content;
  switch (imagePosition_) {
    case CellImagePosition::NoImage:
      content = text;
      break;
    case CellImagePosition::ImageOnly:
      content = image;
      break;
    case CellImagePosition::ImageAbove:
    case CellImagePosition::ImageBelow:
      content = {std::max(image.width, text.width), image.height + text.height};
      break;
    case CellImagePosition::ImageOverlaps:
      content = {std::max(image.width, text.width), std::max(image.height, text.height)};
      break;
    default:
      content = {image.width + text.width, std::max(image.height, text.height)};
      break;
  }
  if (bordered_) content = {content.width + 6, content.height + 6};
  return content;
}

}  // namespace platform
