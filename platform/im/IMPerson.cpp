#include "platform/im/IMPerson.h"

#include <algorithm>
#include <functional>

#include "platform/im/IMHandle.h"

namespace platform {

IMPersonPtr IMPerson::make(std::string uniqueID, std::string firstName, std::string lastName) {
  return std::make_shared<IMPerson>(std::move(uniqueID), std::move(firstName), std::move(lastName));
}

IMPerson::IMPerson(std::string uniqueID, std::string firstName, std::string lastName)
    : uniqueID_(std::move(uniqueID)), firstName_(std::move(firstName)), lastName_(std::move(lastName)) {}

std::string IMPerson::fullName() const {
  if (firstName_.empty()) return lastName_;
  if (lastName_.empty()) return firstName_;
  return firstName_ + " " + lastName_;
}

bool IMPerson::isEqualToIMPerson(const IMPerson* other) const {
  if (!other) return false;
  if (other == this) return true;
  return !uniqueID_.empty() && uniqueID_ == other->uniqueID_;
}

bool IMPerson::isEqual(const Object* other) const { return isEqualToIMPerson(dynamic_cast<const IMPerson*>(other)); }

std::size_t IMPerson::hash() const { return uniqueID_.empty() ? Object::hash() : std::hash<std::string>()(uniqueID_); }

std::string IMPerson::description() const {
  auto name = fullName();
  return name.empty() ? "IMPerson " + uniqueID_ : "IMPerson " + uniqueID_ + " (" + name + ")";
}

std::vector<IMHandlePtr> IMPerson::imHandles() const {
  std::vector<IMHandlePtr> live;
  for (const auto& weak : handles_)
    if (auto handle = weak.lock()) live.push_back(std::move(handle));
  return live;
}

void IMPerson::setFirstName(std::string firstName) {
  if (firstName == firstName_) return;
  tellHandlesWillChange();
  firstName_ = std::move(firstName);
  tellHandlesInfoChanged();
}

void IMPerson::setLastName(std::string lastName) {
  if (lastName == lastName_) return;
  tellHandlesWillChange();
  lastName_ = std::move(lastName);
  tellHandlesInfoChanged();
}

void IMPerson::setEmails(std::vector<std::string> emails) {
  if (emails == emails_) return;
  tellHandlesWillChange();
  emails_ = std::move(emails);
  tellHandlesInfoChanged();
}

void IMPerson::attachHandle(const IMHandlePtr& handle) {
  detachHandle(handle.get());
  handles_.push_back(handle);
}

void IMPerson::detachHandle(const IMHandle* handle) {
  handles_.erase(std::remove_if(handles_.begin(), handles_.end(),
                                [handle](const std::weak_ptr<IMHandle>& weak) {
                                  auto held = weak.lock();
                                  return !held || held.get() == handle;
                                }),
                 handles_.end());
}

void IMPerson::tellHandlesWillChange() {
  for (const auto& handle : imHandles()) handle->informObserversOfWillChange();
}

void IMPerson::tellHandlesInfoChanged() {
  for (const auto& handle : imHandles()) handle->postInfoChanged();
}

}  // namespace platform
