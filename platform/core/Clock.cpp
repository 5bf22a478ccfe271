#include "platform/core/Clock.h"

#include <chrono>
#include <thread>

#include "platform/core/RealClock.h"

namespace platform {
namespace {

// Seconds between the Unix epoch and 1 January 2001.
constexpr double kReferenceDateOffset = 978307200.0;

std::shared_ptr<Clock>& installed() {
  static std::shared_ptr<Clock> clock = std::make_shared<RealClock>();
  return clock;
}

}  // namespace

Clock& Clock::current() { return *installed(); }

std::shared_ptr<Clock> Clock::setCurrent(std::shared_ptr<Clock> clock) {
  auto previous = installed();
  installed() = clock ? std::move(clock) : std::make_shared<RealClock>();
  return previous;
}

double CFAbsoluteTimeGetCurrent() { return Clock::current().now(); }

double RealClock::now() const {
  auto since = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(since).count() - kReferenceDateOffset;
}

void RealClock::sleep(double seconds) {
  if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

}  // namespace platform
