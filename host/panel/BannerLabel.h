#pragma once

#include <string>

#include "platform/ui/RecordingCanvas.h"

namespace kibhost {

// The slot's banner as a panel label: the characters the view shows at this
// moment (inside the text clip, one column per character as the terminal
// draws them, the gap before a scrolling copy as spaces), and the guide, the
// widest label the slot can show for that text, so a panel keeps a steady
// width. Text is cut by characters, never inside a UTF-8 sequence.
class BannerLabel {
 public:
  // Points per character of the banner's system-font text.
  static double advance();
  // The widest clip a revealed banner has: the extra's 150-point maximum less the icon and margins.
  static constexpr double kWidestClip = 150.0 - 33.0;

  static std::string visibleText(const platform::RecordingCanvas& canvas);
  // The banner text drawn (the first text cell), "" when none.
  static std::string bannerText(const platform::RecordingCanvas& canvas);
  static std::string guideFor(const std::string& bannerText);
};

}  // namespace kibhost
