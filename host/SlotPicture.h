#pragma once

#include <optional>
#include <string>

#include "platform/ui/RecordingCanvas.h"

namespace kibhost {

// What a status item's view showed when it was last drawn, read back from the
// drawing operations: the icon (the image cell), the banner text (the first
// text cell drawn where its clip leaves room to show it, and the copy of it that
// follows while it scrolls) and whether the slot
// was drawn as the open menu's title.
struct SlotPicture {
  std::string image;  // the icon's display name, "" when no image was drawn
  bool dimmed = false;
  bool highlighted = false;
  std::optional<std::string> text;  // nullopt when no text was drawn
  double textX = 0;                 // where the text was drawn; it decreases while the text scrolls
  std::optional<double> copyX;      // where the copy that follows a scrolling text was drawn

  static SlotPicture fromCanvas(const platform::RecordingCanvas& canvas);

  friend bool operator==(const SlotPicture&, const SlotPicture&) = default;
};

}  // namespace kibhost
