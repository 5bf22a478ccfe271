#include "platform/core/Date.h"

#include "platform/core/Clock.h"
#include "platform/core/Format.h"

namespace platform {

std::shared_ptr<Date> Date::now() { return std::make_shared<Date>(Clock::current().now()); }

std::shared_ptr<Date> Date::dateWithTimeIntervalSinceNow(double seconds) {
  return std::make_shared<Date>(Clock::current().now() + seconds);
}

double Date::timeIntervalSinceNow() const { return time_ - Clock::current().now(); }

std::string Date::description() const { return format("%.3f", time_); }

bool Date::isEqual(const Object* other) const {
  auto* date = dynamic_cast<const Date*>(other);
  return date && date->time_ == time_;
}

}  // namespace platform
