#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/core/Object.h"

namespace platform {

class Timer;
using TimerPtr = std::shared_ptr<Timer>;

// A one-shot or repeating timer. It holds its target until it is invalidated.
// A repeating timer is rescheduled from its planned time, not from the time it
// actually fired; firings missed while the loop was busy collapse into one.
class Timer final : public Object {
 public:
  using Block = std::function<void(Timer&)>;

  static TimerPtr timerWithTimeInterval(double interval, ObjectPtr target, std::string selector, ObjectPtr userInfo,
                                        bool repeats);
  static TimerPtr timerWithTimeInterval(double interval, bool repeats, Block block);
  // The same, added to the current run loop in the default mode.
  static TimerPtr scheduledTimerWithTimeInterval(double interval, ObjectPtr target, std::string selector,
                                                 ObjectPtr userInfo, bool repeats);
  static TimerPtr scheduledTimerWithTimeInterval(double interval, bool repeats, Block block);

  // Runs the action now without changing the schedule.
  void fire();
  void invalidate();
  bool isValid() const { return valid_; }
  bool repeats() const { return repeats_; }
  double timeInterval() const { return interval_; }
  double fireDate() const { return fireDate_; }
  void setFireDate(double time) { fireDate_ = time; }
  const ObjectPtr& userInfo() const { return userInfo_; }
  const std::string& selector() const { return selector_; }

  std::string className() const override { return "Timer"; }

  Timer(double interval, bool repeats, ObjectPtr target, std::string selector, ObjectPtr userInfo, Block block);

 private:
  friend class RunLoop;
  // Moves the fire date past now by whole intervals (repeating timers).
  void reschedule(double now);

  double interval_;
  bool repeats_;
  ObjectPtr target_;
  std::string selector_;
  ObjectPtr userInfo_;
  Block block_;
  double fireDate_ = 0;
  bool valid_ = true;
};

}  // namespace platform
