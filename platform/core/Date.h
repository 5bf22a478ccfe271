#pragma once

#include <memory>

#include "platform/core/Object.h"

namespace platform {

// A moment in time, read from the current clock.
class Date final : public Object {
 public:
  explicit Date(double timeIntervalSinceReferenceDate) : time_(timeIntervalSinceReferenceDate) {}

  static std::shared_ptr<Date> now();
  static std::shared_ptr<Date> dateWithTimeIntervalSinceNow(double seconds);

  double timeIntervalSinceReferenceDate() const { return time_; }
  // Negative for a date in the past.
  double timeIntervalSinceNow() const;
  double timeIntervalSinceDate(const Date& other) const { return time_ - other.time_; }

  std::string className() const override { return "Date"; }
  std::string description() const override;
  bool isEqual(const Object* other) const override;

 private:
  double time_;
};

using DatePtr = std::shared_ptr<Date>;

}  // namespace platform
