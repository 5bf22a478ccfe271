#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMForward.h"

namespace platform {

// An ordered list of handles: an account's buddy list. It tells its direct
// observers (the people collections that collect it) about every change of
// membership with IMPeopleListChangedNotification.
class IMPeople final : public IMDirectlyObservableObject {
 public:
  static IMPeoplePtr make(std::string name = "");

  const std::string& name() const { return name_; }
  const std::vector<IMHandlePtr>& people() const { return people_; }
  std::size_t count() const { return people_.size(); }
  bool containsIMHandle(const IMHandle* handle) const;
  // The first handle with that normalized ID, or nil.
  IMHandlePtr imHandleWithID(const std::string& ID) const;

  // Appends a handle not yet on the list (identity).
  void addIMHandle(const IMHandlePtr& handle);
  void removeIMHandle(const IMHandle* handle);
  void removeAllIMHandles();

  std::string className() const override { return "IMPeople"; }
  std::string description() const override;

  explicit IMPeople(std::string name) : name_(std::move(name)) {}

 private:
  void postChanged();

  std::string name_;
  std::vector<IMHandlePtr> people_;
  // The same handles, for membership tests: a world of tens of thousands of buddies asks once per handle.
  std::unordered_set<const IMHandle*> members_;
};

}  // namespace platform
