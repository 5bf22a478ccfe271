#pragma once

#include <memory>

#include "Source/BuddyList/KibPeopleListGroup.h"
#include "platform/im/IMForward.h"

namespace kib {

class KibServicePeopleListGroup;
using KibServicePeopleListGroupPtr = std::shared_ptr<KibServicePeopleListGroup>;

// A group that takes every handle of one service, before (and instead of)
// any later group, named with the service's localized short name.
class KibServicePeopleListGroup : public KibPeopleListGroup {
 public:
  static KibServicePeopleListGroupPtr initWithServiceFilter(const platform::IMServiceImplPtr& service);
  // A new group for the platform's local-network service.
  static KibServicePeopleListGroupPtr ambrelGroup();

  KibServicePeopleListGroup() = default;
  ~KibServicePeopleListGroup() override;

  const platform::IMServiceImplPtr& serviceFilter() const { return _serviceFilter; }
  void set_serviceFilter(platform::IMServiceImplPtr service) { _serviceFilter = std::move(service); }

  // The handle's service is the group's service (identity).
  bool shouldContainIMHandle(const platform::IMHandlePtr& handle) const override;
  bool shouldConsumeIMHandle(const platform::IMHandlePtr& handle) const override;
  // No group filter: the presence spans the handle's buddy-list groups.
  KibHandleFilter filterForIMHandle(const platform::IMHandlePtr& handle) const override;

  std::string className() const override { return "KibServicePeopleListGroup"; }

 private:
  platform::IMServiceImplPtr _serviceFilter;
};

}  // namespace kib
