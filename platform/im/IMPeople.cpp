#include "platform/im/IMPeople.h"

#include <algorithm>

#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMNameCollation.h"

namespace platform {

IMPeoplePtr IMPeople::make(std::string name) { return std::make_shared<IMPeople>(std::move(name)); }

bool IMPeople::containsIMHandle(const IMHandle* handle) const { return members_.count(handle) != 0; }

IMHandlePtr IMPeople::imHandleWithID(const std::string& ID) const {
  auto wanted = IMNameCollation::normalizeID(ID);
  for (const auto& handle : people_)
    if (handle->normalizedID() == wanted) return handle;
  return nullptr;
}

void IMPeople::addIMHandle(const IMHandlePtr& handle) {
  if (!handle || !members_.insert(handle.get()).second) return;
  people_.push_back(handle);
  postChanged();
}

void IMPeople::removeIMHandle(const IMHandle* handle) {
  auto found =
      std::find_if(people_.begin(), people_.end(), [handle](const IMHandlePtr& h) { return h.get() == handle; });
  if (found == people_.end()) return;
  auto keepAlive = *found;
  people_.erase(found);
  members_.erase(handle);
  postChanged();
}

void IMPeople::removeAllIMHandles() {
  if (people_.empty()) return;
  auto keepAlive = std::move(people_);
  people_.clear();
  members_.clear();
  postChanged();
}

std::string IMPeople::description() const {
  return "IMPeople " + name_ + " (" + std::to_string(people_.size()) + " handles)";
}

void IMPeople::postChanged() { postDirectNotification(IMPeopleListChangedNotification); }

}  // namespace platform
