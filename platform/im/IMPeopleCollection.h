#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMForward.h"

namespace platform {

// A collection of people lists (buddy lists). It observes the lists it
// collects and posts IMPeopleChangedNotification on the default centre, with
// itself as object, whenever its set of lists or the members of one of them
// change. Between beginCoalescedChanges and the matching endCoalescedChanges
// the changes are gathered and posted once, at the outermost end.
class IMPeopleCollection final : public IMDirectlyObservableObject, public IMDirectlyObservableObjectObserver {
 public:
  static IMPeopleCollectionPtr make();
  ~IMPeopleCollection() override;

  // When YES, people leaves out the handles the user has blocked. Default YES.
  void setShouldHidePeople(bool hide);
  bool shouldHidePeople() const { return shouldHidePeople_; }

  void beginCoalescedChanges();
  void endCoalescedChanges();
  bool isCoalescing() const { return coalesceCount_ > 0; }

  bool collectsIMPeople(const IMPeople* people) const;
  bool collectsIMPeople(const IMPeoplePtr& people) const { return collectsIMPeople(people.get()); }
  void addIMPeople(const IMPeoplePtr& people);
  void removeIMPeople(const IMPeoplePtr& people);
  const std::vector<IMPeoplePtr>& collectedIMPeople() const { return collected_; }

  // Every handle of the collected lists, list by list in collection order,
  // each list in its own order; a handle on two lists appears once.
  std::vector<IMHandlePtr> people() const;

  void objectDidPostDirectNotification(const NotificationPtr& notification) override;

  std::string className() const override { return "IMPeopleCollection"; }

 private:
  void noteChange();

  std::vector<IMPeoplePtr> collected_;
  bool shouldHidePeople_ = true;
  std::int64_t coalesceCount_ = 0;
  bool pendingChange_ = false;
};

}  // namespace platform
