#pragma once

#include <vector>

#include "host/TerminalScreen.h"
#include "platform/ui/RecordingCanvas.h"

namespace kibhost {

// Draws what a status item's view drew (its recorded canvas operations) as a
// row of terminal cells. One column stands for kPointsPerColumn points: the
// width of one character of the menu bar's text, so a banner text keeps its
// letters and the slot grows and shrinks with its length.
class SlotRenderer {
 public:
  static constexpr double kPointsPerColumn = 7.8;

  // The slot's width in columns for its length in points (at least one).
  static int columnsForLength(double length);
  // The cells of a slot of that length, with the bar's style as background.
  static std::vector<TerminalScreen::Cell> render(const platform::RecordingCanvas& canvas, double length,
                                                  const TerminalScreen::Style& barStyle);

 private:
  static int columnAt(double x);
};

}  // namespace kibhost
