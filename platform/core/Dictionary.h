#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// A dictionary from string keys to objects (user info, person records,
// group properties, preference domains).
class Dictionary final : public Object {
 public:
  Dictionary() = default;
  Dictionary(std::initializer_list<std::pair<const std::string, ObjectPtr>> entries) : entries_(entries) {}

  ObjectPtr objectForKey(const std::string& key) const;
  void setObjectForKey(const std::string& key, ObjectPtr value);
  void removeObjectForKey(const std::string& key) { entries_.erase(key); }
  bool containsKey(const std::string& key) const { return entries_.count(key) != 0; }
  std::size_t count() const { return entries_.size(); }
  const std::map<std::string, ObjectPtr>& entries() const { return entries_; }

  std::string className() const override { return "Dictionary"; }
  std::string description() const override;
  bool isEqual(const Object* other) const override;

 private:
  std::map<std::string, ObjectPtr> entries_;
};

using DictionaryPtr = std::shared_ptr<Dictionary>;

inline DictionaryPtr makeDictionary(std::initializer_list<std::pair<const std::string, ObjectPtr>> entries) {
  return std::make_shared<Dictionary>(entries);
}

}  // namespace platform
