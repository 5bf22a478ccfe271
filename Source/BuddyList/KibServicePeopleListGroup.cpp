#include "Source/BuddyList/KibServicePeopleListGroup.h"

#include "platform/im/IMHandle.h"
#include "platform/im/IMService.h"

namespace kib {

KibServicePeopleListGroupPtr KibServicePeopleListGroup::initWithServiceFilter(
    const platform::IMServiceImplPtr& service) {
  auto group = std::make_shared<KibServicePeopleListGroup>();
  group->_serviceFilter = service;
  group->setName(service ? service->localizedShortName() : std::string());
  return group;
}

KibServicePeopleListGroupPtr KibServicePeopleListGroup::ambrelGroup() {
  return initWithServiceFilter(platform::IMService::subnetService());
}

KibServicePeopleListGroup::~KibServicePeopleListGroup() { _serviceFilter.reset(); }

bool KibServicePeopleListGroup::shouldContainIMHandle(const platform::IMHandlePtr& handle) const {
  return handle && handle->service() == _serviceFilter;
}

bool KibServicePeopleListGroup::shouldConsumeIMHandle(const platform::IMHandlePtr& handle) const {
  return shouldContainIMHandle(handle);
}

KibHandleFilter KibServicePeopleListGroup::filterForIMHandle(const platform::IMHandlePtr& handle) const {
  auto filter = KibPeopleListGroup::filterForIMHandle(handle);
  filter.filterByGroup = false;
  return filter;
}

}  // namespace kib
