#include "platform/core/Dictionary.h"

namespace platform {

ObjectPtr Dictionary::objectForKey(const std::string& key) const {
  auto found = entries_.find(key);
  return found == entries_.end() ? nullptr : found->second;
}

void Dictionary::setObjectForKey(const std::string& key, ObjectPtr value) {
  if (value)
    entries_[key] = std::move(value);
  else
    entries_.erase(key);
}

std::string Dictionary::description() const {
  std::string text = "{\n";
  for (const auto& [key, value] : entries_) text += "    " + key + " = " + describe(value) + ";\n";
  return text + "}";
}

bool Dictionary::isEqual(const Object* other) const {
  auto* dictionary = dynamic_cast<const Dictionary*>(other);
  if (!dictionary || dictionary->entries_.size() != entries_.size()) return false;
  for (const auto& [key, value] : entries_) {
    auto found = dictionary->entries_.find(key);
    if (found == dictionary->entries_.end() || !platform::isEqual(value.get(), found->second.get())) return false;
  }
  return true;
}

}  // namespace platform
