#include "host/panel/LabelThrottle.h"

#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"

namespace kibhost {

LabelThrottle::LabelThrottle(double minimumInterval, std::function<void(const std::string&)> send)
    : interval_(minimumInterval), send_(std::move(send)), self_(std::make_shared<LabelThrottle*>(this)) {}

LabelThrottle::~LabelThrottle() = default;

void LabelThrottle::update(const std::string& label) {
  latest_ = label;
  if (flushScheduled_) return;
  if (latest_ == sent_) return;
  const double now = platform::Clock::current().now();
  const double wait = lastSendTime_ + interval_ - now;
  if (wait <= 0) return flush();
  flushScheduled_ = true;
  std::weak_ptr<LabelThrottle*> self = self_;
  platform::RunLoop::main().performBlock(wait, platform::kCommonRunLoopModes, [self] {
    if (auto throttle = self.lock()) {
      (*throttle)->flushScheduled_ = false;
      (*throttle)->flush();
    }
  });
}

void LabelThrottle::flush() {
  if (latest_ == sent_) return;
  sent_ = latest_;
  lastSendTime_ = platform::Clock::current().now();
  send_(sent_);
}

}  // namespace kibhost
