#pragma once

#include <memory>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// An immutable string object, for the places where a string is passed as an
// object or compared by identity. Content equality through isEqual.
class String final : public Object {
 public:
  explicit String(std::string value) : value_(std::move(value)) {}

  const std::string& value() const { return value_; }
  bool empty() const { return value_.empty(); }
  std::size_t length() const { return value_.size(); }

  bool isEqualToString(const String* other) const { return other && other->value_ == value_; }

  std::string className() const override { return "String"; }
  std::string description() const override { return value_; }
  bool isEqual(const Object* other) const override;
  std::size_t hash() const override;

 private:
  std::string value_;
};

using StringPtr = std::shared_ptr<String>;

inline StringPtr makeString(std::string value) { return std::make_shared<String>(std::move(value)); }

// The text of a string object, "" for nil or for an object that is not a string.
const std::string& stringValue(const Object* object);
inline const std::string& stringValue(const ObjectPtr& object) { return stringValue(object.get()); }
// The object as a string, or nil when it is not one.
StringPtr asString(const ObjectPtr& object);

}  // namespace platform
