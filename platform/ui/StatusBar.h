#pragma once

#include "platform/ui/Cell.h"

namespace platform {

// The system status bar, as far as the items drawn into it need to know.
class StatusBar {
 public:
  // The bar's height in points.
  static double thickness() { return 22.0; }
  // Highlighted (menu open): content drawn dark on the selection; otherwise
  // raised, as the bar's own titles are drawn.
  static BackgroundStyle backgroundStyleForHighlight(bool highlighted) {
    return highlighted ? BackgroundStyle::Dark : BackgroundStyle::Raised;
  }
};

}  // namespace platform
