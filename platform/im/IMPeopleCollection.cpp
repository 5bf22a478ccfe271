#include "platform/im/IMPeopleCollection.h"

#include <algorithm>
#include <unordered_set>

#include "platform/core/NotificationCenter.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"

namespace platform {

IMPeopleCollectionPtr IMPeopleCollection::make() { return std::make_shared<IMPeopleCollection>(); }

IMPeopleCollection::~IMPeopleCollection() {
  for (const auto& list : collected_) list->removeObserver(this);
}

void IMPeopleCollection::setShouldHidePeople(bool hide) {
  if (hide == shouldHidePeople_) return;
  shouldHidePeople_ = hide;
  noteChange();
}

void IMPeopleCollection::beginCoalescedChanges() { ++coalesceCount_; }

void IMPeopleCollection::endCoalescedChanges() {
  --coalesceCount_;
  if (coalesceCount_ <= 0 && pendingChange_) {
    pendingChange_ = false;
    NotificationCenter::defaultCenter().postNotificationName(IMPeopleChangedNotification, weak_from_this().lock());
  }
}

bool IMPeopleCollection::collectsIMPeople(const IMPeople* people) const {
  return std::any_of(collected_.begin(), collected_.end(),
                     [people](const IMPeoplePtr& p) { return p.get() == people; });
}

void IMPeopleCollection::addIMPeople(const IMPeoplePtr& people) {
  if (!people || collectsIMPeople(people.get())) return;
  collected_.push_back(people);
  people->addObserver(this);
  noteChange();
}

void IMPeopleCollection::removeIMPeople(const IMPeoplePtr& people) {
  auto found = std::find(collected_.begin(), collected_.end(), people);
  if (!people || found == collected_.end()) return;
  people->removeObserver(this);
  collected_.erase(found);
  noteChange();
}

std::vector<IMHandlePtr> IMPeopleCollection::people() const {
  std::vector<IMHandlePtr> all;
  std::unordered_set<const IMHandle*> seen;
  for (const auto& list : collected_)
    for (const auto& handle : list->people()) {
      if (shouldHidePeople_ && handle->isBlocked()) continue;
      if (seen.insert(handle.get()).second) all.push_back(handle);
    }
  return all;
}

void IMPeopleCollection::objectDidPostDirectNotification(const NotificationPtr& notification) {
  if (notification && notification->name() == IMPeopleListChangedNotification) noteChange();
}

void IMPeopleCollection::noteChange() {
  pendingChange_ = true;
  if (coalesceCount_ > 0) return;
  pendingChange_ = false;
  NotificationCenter::defaultCenter().postNotificationName(IMPeopleChangedNotification, weak_from_this().lock());
}

}  // namespace platform
