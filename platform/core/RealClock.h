#pragma once

#include "platform/core/Clock.h"

namespace platform {

// Wall-clock time for the programs.
class RealClock final : public Clock {
 public:
  double now() const override;
  void sleep(double seconds) override;
};

}  // namespace platform
