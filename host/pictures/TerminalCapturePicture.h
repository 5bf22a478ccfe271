#pragma once

#include <string>
#include <vector>

#include "host/render/Pixmap.h"

namespace kibpictures {

// A captured terminal screen (lines of text, as tmux captures it) drawn as a
// picture: light text in DejaVu Sans Mono on a dark terminal background.
class TerminalCapturePicture {
 public:
  static constexpr double kFontSize = 13;
  static constexpr double kMargin = 12;

  static kibrender::Pixmap draw(const std::vector<std::string>& lines, double scale);
};

}  // namespace kibpictures
