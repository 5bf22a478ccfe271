#include "platform/core/Timer.h"

#include <cmath>

#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"

namespace platform {

Timer::Timer(double interval, bool repeats, ObjectPtr target, std::string selector, ObjectPtr userInfo, Block block)
    : interval_(interval > 0 ? interval : 0.0001),
      repeats_(repeats),
      target_(std::move(target)),
      selector_(std::move(selector)),
      userInfo_(std::move(userInfo)),
      block_(std::move(block)),
      fireDate_(Clock::current().now() + interval_) {}

TimerPtr Timer::timerWithTimeInterval(double interval, ObjectPtr target, std::string selector, ObjectPtr userInfo,
                                      bool repeats) {
  return std::make_shared<Timer>(interval, repeats, std::move(target), std::move(selector), std::move(userInfo),
                                 nullptr);
}

TimerPtr Timer::timerWithTimeInterval(double interval, bool repeats, Block block) {
  return std::make_shared<Timer>(interval, repeats, nullptr, "", nullptr, std::move(block));
}

TimerPtr Timer::scheduledTimerWithTimeInterval(double interval, ObjectPtr target, std::string selector,
                                               ObjectPtr userInfo, bool repeats) {
  auto timer = timerWithTimeInterval(interval, std::move(target), std::move(selector), std::move(userInfo), repeats);
  RunLoop::current().addTimer(timer, kDefaultRunLoopMode);
  return timer;
}

TimerPtr Timer::scheduledTimerWithTimeInterval(double interval, bool repeats, Block block) {
  auto timer = timerWithTimeInterval(interval, repeats, std::move(block));
  RunLoop::current().addTimer(timer, kDefaultRunLoopMode);
  return timer;
}

void Timer::fire() {
  if (!valid_) return;
  auto self = std::static_pointer_cast<Timer>(shared_from_this());
  if (block_) {
    auto block = block_;
    block(*this);
  } else if (target_) {
    auto target = target_;
    target->performSelector(selector_, self);
  }
}

void Timer::invalidate() {
  valid_ = false;
  target_.reset();
  userInfo_.reset();
  block_ = nullptr;
}

void Timer::reschedule(double now) {
  double next = fireDate_ + interval_;
  if (next <= now) next = fireDate_ + interval_ * (std::floor((now - fireDate_) / interval_) + 1.0);
  fireDate_ = next;
}

}  // namespace platform
