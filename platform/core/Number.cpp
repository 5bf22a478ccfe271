#include "platform/core/Number.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "platform/core/String.h"

namespace platform {

bool Number::boolValue() const {
  if (auto* b = std::get_if<bool>(&value_)) return *b;
  if (auto* i = std::get_if<std::int64_t>(&value_)) return *i != 0;
  return std::get<double>(value_) != 0.0;
}

std::int64_t Number::longLongValue() const {
  if (auto* b = std::get_if<bool>(&value_)) return *b ? 1 : 0;
  if (auto* i = std::get_if<std::int64_t>(&value_)) return *i;
  double d = std::get<double>(value_);
  return std::isfinite(d) ? static_cast<std::int64_t>(d) : 0;
}

double Number::doubleValue() const {
  if (auto* d = std::get_if<double>(&value_)) return *d;
  return static_cast<double>(longLongValue());
}

std::string Number::description() const {
  if (auto* d = std::get_if<double>(&value_)) {
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", *d);
    return text;
  }
  return std::to_string(longLongValue());
}

bool Number::isEqual(const Object* other) const {
  auto* number = dynamic_cast<const Number*>(other);
  if (!number) return false;
  if (isReal() || number->isReal()) return doubleValue() == number->doubleValue();
  return longLongValue() == number->longLongValue();
}

std::size_t Number::hash() const { return std::hash<double>()(doubleValue()); }

std::int64_t integerValue(const Object* object) {
  if (auto* number = dynamic_cast<const Number*>(object)) return number->longLongValue();
  if (auto* string = dynamic_cast<const String*>(object)) return std::strtoll(string->value().c_str(), nullptr, 10);
  return 0;
}

}  // namespace platform
