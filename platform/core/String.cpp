#include "platform/core/String.h"

#include <functional>

namespace platform {

bool String::isEqual(const Object* other) const {
  auto* string = dynamic_cast<const String*>(other);
  return string && string->value_ == value_;
}

std::size_t String::hash() const { return std::hash<std::string>()(value_); }

const std::string& stringValue(const Object* object) {
  static const std::string empty;
  auto* string = dynamic_cast<const String*>(object);
  return string ? string->value() : empty;
}

StringPtr asString(const ObjectPtr& object) { return std::dynamic_pointer_cast<String>(object); }

}  // namespace platform
