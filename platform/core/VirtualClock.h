#pragma once

#include <atomic>

#include "platform/core/Clock.h"

namespace platform {

// Time that moves only when told: tests and headless runs. The run loop
// advances it to the next due work; a sleep advances it by the sleep.
class VirtualClock final : public Clock {
 public:
  // Starts at a fixed, recognisable moment.
  static constexpr double kDefaultStart = 800000000.0;

  explicit VirtualClock(double start = kDefaultStart) : now_(start) {}

  double now() const override { return now_; }
  void sleep(double seconds) override { advance(seconds); }
  bool isVirtual() const override { return true; }

  void advance(double seconds) {
    if (seconds > 0) now_ = now_ + seconds;
  }
  // Moves forward to a time; never backwards.
  void advanceTo(double time) {
    if (time > now_) now_ = time;
  }

 private:
  double now_;
};

}  // namespace platform
