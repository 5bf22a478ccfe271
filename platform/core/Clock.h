#pragma once

#include <memory>

namespace platform {

// The one source of time. Times are seconds since the platform's reference
// date (1 January 2001, UTC), as doubles.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual double now() const = 0;
  // Blocks the calling thread; a virtual clock just moves on.
  virtual void sleep(double seconds) = 0;
  virtual bool isVirtual() const { return false; }

  // The clock every read in the system goes through (a real clock by default).
  static Clock& current();
  // Installs a clock (nil restores a real one); answers the previous one.
  static std::shared_ptr<Clock> setCurrent(std::shared_ptr<Clock> clock);
};

// CFAbsoluteTimeGetCurrent: the current clock's now.
double CFAbsoluteTimeGetCurrent();

}  // namespace platform
