#include "platform/im/IMService.h"

#include <algorithm>

#include "platform/core/Number.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMNameCollation.h"
#include "platform/im/IMPeople.h"

namespace platform {
namespace {

std::vector<IMServicePtr>& registeredServices() {
  static std::vector<IMServicePtr> services;
  return services;
}

DictionaryPtr personInfo(const IMHandle& handle) {
  return makeDictionary({
      {IMPersonFirstNameKey, makeString(handle.firstName())},
      {IMPersonLastNameKey, makeString(handle.lastName())},
      {IMPersonScreenNameKey, makeString(handle.ID())},
      {IMPersonStatusKey, makeNumber(handle.status())},
      {IMPersonServiceNameKey, makeString(handle.service() ? handle.service()->name() : std::string())},
  });
}

}  // namespace

IMServicePtr IMService::make(std::string name, std::string internalName, std::string localizedShortName) {
  return std::make_shared<IMService>(std::move(name), std::move(internalName), std::move(localizedShortName));
}

IMService::IMService(std::string name, std::string internalName, std::string localizedShortName)
    : name_(std::move(name)),
      internalName_(std::move(internalName)),
      localizedShortName_(std::move(localizedShortName)) {}

const std::vector<IMServicePtr>& IMService::allServices() { return registeredServices(); }

IMServicePtr IMService::serviceWithName(const std::string& name) {
  for (const auto& service : registeredServices())
    if (service->name() == name) return service;
  return nullptr;
}

IMServicePtr IMService::serviceWithInternalName(const std::string& internalName) {
  for (const auto& service : registeredServices())
    if (service->internalName() == internalName) return service;
  return nullptr;
}

IMServicePtr IMService::subnetService() { return serviceWithName(IMServiceNameSubNet); }

IMServicePtr IMService::vistelService() { return serviceWithName(IMServiceNameVistel); }

NotificationCenter& IMService::notificationCenter() { return NotificationCenter::centerNamed("service"); }

bool IMService::registerService(const IMServicePtr& service) {
  if (!service || serviceWithName(service->name())) return false;
  registeredServices().push_back(service);
  return true;
}

void IMService::removeAllServices() { registeredServices().clear(); }

std::vector<IMHandlePtr> IMService::knownHandles() const {
  std::vector<IMHandlePtr> handles;
  for (const auto& account : IMAccountController::sharedInstance()->accounts()) {
    if (account->service().get() != this) continue;
    const auto& people = account->buddyList()->people();
    handles.insert(handles.end(), people.begin(), people.end());
  }
  return handles;
}

DictionaryPtr IMService::infoForScreenName(const std::string& screenName) const {
  if (screenName.empty()) return nullptr;
  auto wanted = IMNameCollation::normalizeID(screenName);
  std::vector<IMHandlePtr> matching;
  for (const auto& handle : knownHandles())
    if (handle->normalizedID() == wanted) matching.push_back(handle);
  auto best = IMHandle::bestIMHandleInArray(matching);
  return best ? personInfo(*best) : nullptr;
}

std::vector<DictionaryPtr> IMService::infoForAllScreenNames() const {
  std::vector<std::string> order;
  std::vector<std::vector<IMHandlePtr>> byID;
  for (const auto& handle : knownHandles()) {
    auto id = handle->normalizedID();
    auto found = std::find(order.begin(), order.end(), id);
    if (found == order.end()) {
      order.push_back(id);
      byID.push_back({handle});
    } else {
      byID[static_cast<std::size_t>(found - order.begin())].push_back(handle);
    }
  }
  std::vector<DictionaryPtr> records;
  for (const auto& handles : byID) records.push_back(personInfo(*IMHandle::bestIMHandleInArray(handles)));
  return records;
}

void IMService::setEnabled(bool enabled) {
  if (enabled == isEnabled_) return;
  isEnabled_ = enabled;
  notificationCenter().postNotificationName(IMServiceStatusChangedNotification, weak_from_this().lock());
}

void IMService::setStatus(IMPersonStatus status) {
  if (status == status_) return;
  status_ = status;
  notificationCenter().postNotificationName(IMServiceStatusChangedNotification, weak_from_this().lock());
}

}  // namespace platform
