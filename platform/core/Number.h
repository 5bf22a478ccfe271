#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "platform/core/Object.h"

namespace platform {

// A boxed boolean, integer or floating-point value.
class Number final : public Object {
 public:
  explicit Number(bool value) : value_(value) {}
  explicit Number(std::int64_t value) : value_(value) {}
  explicit Number(int value) : value_(static_cast<std::int64_t>(value)) {}
  explicit Number(std::uint64_t value) : value_(static_cast<std::int64_t>(value)) {}
  explicit Number(double value) : value_(value) {}

  bool isBool() const { return std::holds_alternative<bool>(value_); }
  bool isInteger() const { return std::holds_alternative<std::int64_t>(value_); }
  bool isReal() const { return std::holds_alternative<double>(value_); }

  bool boolValue() const;
  std::int32_t intValue() const { return static_cast<std::int32_t>(longLongValue()); }
  std::int64_t longLongValue() const;
  std::uint64_t unsignedLongLongValue() const { return static_cast<std::uint64_t>(longLongValue()); }
  double doubleValue() const;

  std::string className() const override { return "Number"; }
  std::string description() const override;
  bool isEqual(const Object* other) const override;
  std::size_t hash() const override;

 private:
  std::variant<bool, std::int64_t, double> value_;
};

using NumberPtr = std::shared_ptr<Number>;

template <class T>
NumberPtr makeNumber(T value) {
  return std::make_shared<Number>(value);
}

// The integer value of a number object or a numeric string, 0 otherwise (like intValue).
std::int64_t integerValue(const Object* object);

}  // namespace platform
