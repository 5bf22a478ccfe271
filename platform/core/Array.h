#pragma once

#include <memory>
#include <vector>

#include "platform/core/Object.h"

namespace platform {

// An ordered array of objects, for values that travel as objects
// (preferences, user info, represented objects).
class Array final : public Object {
 public:
  Array() = default;
  explicit Array(std::vector<ObjectPtr> items) : items_(std::move(items)) {}

  const std::vector<ObjectPtr>& items() const { return items_; }
  std::vector<ObjectPtr>& items() { return items_; }
  std::size_t count() const { return items_.size(); }
  const ObjectPtr& at(std::size_t index) const { return items_.at(index); }
  void add(ObjectPtr item) { items_.push_back(std::move(item)); }
  // Whether an equal object is in the array.
  bool containsObject(const Object* object) const;

  std::string className() const override { return "Array"; }
  std::string description() const override;
  bool isEqual(const Object* other) const override;

 private:
  std::vector<ObjectPtr> items_;
};

using ArrayPtr = std::shared_ptr<Array>;

// The array description the platform prints: "(\n    a,\n    b\n)".
std::string describeList(const std::vector<std::string>& descriptions);

template <class Range>
std::string describeObjects(const Range& objects) {
  std::vector<std::string> descriptions;
  for (const auto& object : objects) descriptions.push_back(describe(object));
  return describeList(descriptions);
}

}  // namespace platform
