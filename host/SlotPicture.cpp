#include "host/SlotPicture.h"

namespace kibhost {

SlotPicture SlotPicture::fromCanvas(const platform::RecordingCanvas& canvas) {
  using Kind = platform::RecordingCanvas::Kind;
  SlotPicture picture;
  bool haveIcon = false;
  for (const auto& op : canvas.operations()) {
    if (op.kind == Kind::MenuBackground) {
      picture.highlighted = picture.highlighted || op.highlighted;
    } else if (op.kind == Kind::DrawCell) {
      if (op.image && !haveIcon) {
        haveIcon = true;
        picture.image = op.image->displayName();
        picture.dimmed = !op.enabled;
      } else if (op.cellClass == "TextFieldCell" && !(op.clip && op.clip->isEmpty())) {
        if (!picture.text) {
          picture.text = op.string;
          picture.textX = op.rect.x;
        } else if (!picture.copyX && op.string == *picture.text && op.rect.x > picture.textX) {
          picture.copyX = op.rect.x;
        }
      }
    }
  }
  return picture;
}

}  // namespace kibhost
