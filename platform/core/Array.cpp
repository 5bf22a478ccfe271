#include "platform/core/Array.h"

namespace platform {

bool Array::containsObject(const Object* object) const {
  for (const auto& item : items_)
    if (platform::isEqual(item.get(), object)) return true;
  return false;
}

std::string Array::description() const { return describeObjects(items_); }

bool Array::isEqual(const Object* other) const {
  auto* array = dynamic_cast<const Array*>(other);
  if (!array || array->items_.size() != items_.size()) return false;
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (!platform::isEqual(items_[i].get(), array->items_[i].get())) return false;
  return true;
}

std::string describeList(const std::vector<std::string>& descriptions) {
  if (descriptions.empty()) return "(\n)";
  std::string text = "(\n";
  for (std::size_t i = 0; i < descriptions.size(); ++i) {
    text += "    " + descriptions[i];
    text += i + 1 < descriptions.size() ? ",\n" : "\n";
  }
  return text + ")";
}

}  // namespace platform
