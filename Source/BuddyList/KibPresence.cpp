#include "Source/BuddyList/KibPresence.h"

#include <algorithm>

#include "Source/BuddyList/KibNotifications.h"
#include "platform/core/Array.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Format.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"

namespace kib {

using platform::IMHandle;
using platform::IMHandlePtr;
using platform::ObjectPtr;

namespace {

// A notification name as a string that lives as long as the program.
template <const char* const& Name>
const std::string& named() {
  return platform::constantName<Name>();
}

IMHandlePtr notifyingHandle(const ObjectPtr& argument) {
  auto notification = std::dynamic_pointer_cast<platform::Notification>(argument);
  return notification ? std::dynamic_pointer_cast<IMHandle>(notification->object()) : nullptr;
}

}  // namespace

const platform::SelectorTable<KibPresence>& KibPresence::selectorTable() {
  static const platform::SelectorTable<KibPresence> table{
      {"_imHandleCapabilitiesChanged:", &KibPresence::_imHandleCapabilitiesChanged},
      {"_imHandleStatusChanged:", &KibPresence::_imHandleStatusChanged},
      {"_imHandlePictureChanged:", &KibPresence::_imHandlePictureChanged},
      {"_imHandleInfoChanged:", &KibPresence::_imHandleInfoChanged},
      {"_imHandleGroupsChanged:", &KibPresence::_imHandleGroupsChanged},
      {"_imHandleExtraPropsChanged:", &KibPresence::_imHandleExtraPropsChanged},
      {"_imHandleMobileChanged:", &KibPresence::_imHandleMobileChanged},
      {"_imHandleCertsChanged:", &KibPresence::_imHandleCertsChanged},
      {"_imHandleSortOrderChanged:", &KibPresence::_imHandleSortOrderChanged},
  };
  return table;
}

const std::vector<std::string>& KibPresence::selectors() {
  static const std::vector<std::string> list{
      "_imHandleCapabilitiesChanged:", "_imHandleStatusChanged:",     "_imHandlePictureChanged:",
      "_imHandleInfoChanged:",         "_imHandleGroupsChanged:",     "_imHandleExtraPropsChanged:",
      "_imHandleMobileChanged:",       "_imHandleCertsChanged:",      "_imHandleSortOrderChanged:",
  };
  return list;
}

const std::vector<std::string>& KibPresence::notifications() {
  // One name fewer than selectors: the sort-order notification pairs with the
  // certificate handler. Kept so on purpose.
  static const std::vector<std::string> list{
      platform::IMHandleCapabilitiesChangedNotification, platform::IMHandleStatusChangedNotification,
      platform::IMHandlePictureChangedNotification,      platform::IMHandleInfoChangedNotification,
      platform::IMHandleGroupsChangedNotification,       platform::IMHandleExtraPropertiesChangedNotification,
      platform::IMHandleIsMobileChangedNotification,     platform::IMHandleSortOrderChangedNotification,
  };
  return list;
}

KibPresencePtr KibPresence::init() { return std::make_shared<KibPresence>(); }

KibPresence::KibPresence() = default;

KibPresence::~KibPresence() {
  if (!_quiet)
    for (const auto& handle : _imHandles) handle->removeObserver(this);
}

bool KibPresence::canAddIMHandle(const IMHandlePtr&) const { return true; }

bool KibPresence::addIMHandle(const IMHandlePtr& handle) {
  if (!handle || !canAddIMHandle(handle)) return false;
  if (containsIMHandle(handle.get())) return true;
  informObserversOfWillChange();
  _imHandles.push_back(handle);
  _imHandlesSetIsCurrent = false;
  _observeIMHandle(handle);
  _fullRecache();
  return true;
}

void KibPresence::removeIMHandle(const IMHandlePtr& handle) {
  if (!containsIMHandle(handle.get())) return;
  // The argument may be an element of _imHandles itself.
  IMHandlePtr held = handle;
  informObserversOfWillChange();
  _unobserveIMHandle(held);
  if (_imHandlesSet) _imHandlesSet->clear();  // holds no handle the presence let go of
  _imHandlesSetIsCurrent = false;
  _imHandles.erase(std::remove(_imHandles.begin(), _imHandles.end(), held), _imHandles.end());
  _fullRecache();
}

bool KibPresence::containsIMHandle(const IMHandle* handle) const {
  if (!handle) return false;
  return std::any_of(_imHandles.begin(), _imHandles.end(),
                     [handle](const IMHandlePtr& held) { return held.get() == handle; });
}

const IMHandleSet& KibPresence::imHandleSet() const {
  if (!_imHandlesSetIsCurrent || !_imHandlesSet) {
    _imHandlesSet = std::make_unique<IMHandleSet>(_imHandles.begin(), _imHandles.end());
    _imHandlesSetIsCurrent = true;
  }
  return *_imHandlesSet;
}

std::int32_t KibPresence::numberOfIMHandles() const { return static_cast<std::int32_t>(_imHandles.size()); }

bool KibPresence::_fullRecache() {
  auto best = IMHandle::bestIMHandleInArray(_imHandles);
  if (best != _mostAvailableIMHandle) _setMostAvailableIMHandle(best);
  std::string message = best ? best->statusMessage() : std::string();
  platform::IMPersonStatus status = best ? best->status() : 0;
  if (status == _status && message == _statusMessage) return false;
  _statusMessage = std::move(message);
  _previousStatus = _status;
  _status = status;
  postConstantNamedForIMHandle(named<kKibPresenceStatusChangedNotification>(), best);
  return true;
}

void KibPresence::_setMostAvailableIMHandle(const IMHandlePtr& handle) {
  if (handle == _mostAvailableIMHandle) return;
  _mostAvailableIMHandle = handle;
}

void KibPresence::_observeIMHandle(const IMHandlePtr& handle) {
  if (!_quiet && handle) handle->addObserver(this);
}

void KibPresence::_unobserveIMHandle(const IMHandlePtr& handle) {
  if (!_quiet && handle) handle->removeObserver(this);
}

platform::DictionaryPtr KibPresence::userInfoForIMHandle(const IMHandlePtr& handle) {
  if (!handle) return nullptr;
  return platform::makeDictionary({{kKibIMHandleResponsibleKey, handle}});
}

void KibPresence::postNotificationNamedForIMHandle(const std::string& name, const IMHandlePtr& handle) {
  // Nobody would receive it: a new presence has no observer until its item is made.
  if (_quiet || observers().empty()) return;
  informObserversOfNotification(platform::Notification::make(name, shared_from_this(), userInfoForIMHandle(handle)));
}

void KibPresence::postConstantNamedForIMHandle(const std::string& constantName, const IMHandlePtr& handle) {
  if (_quiet || observers().empty()) return;
  informObserversOfNotification(
      platform::Notification::makeWithConstantName(constantName, shared_from_this(), userInfoForIMHandle(handle)));
}

void KibPresence::objectDidPostDirectNotification(const platform::NotificationPtr& notification) {
  if (!notification) return;
  const auto& names = notifications();
  auto found = std::find(names.begin(), names.end(), notification->name());
  if (found == names.end()) return;
  auto index = static_cast<std::size_t>(found - names.begin());
  // The handlers may make the observers let go of the presence.
  auto keepAlive = weak_from_this().lock();
  performSelector(selectors().at(index), notification);
}

void KibPresence::objectWillChange(platform::IMDirectlyObservableObject&) {
  if (!_quiet) informObserversOfWillChange();
}

void KibPresence::postForNotifyingHandle(const std::string& constantName, const ObjectPtr& notification) {
  postConstantNamedForIMHandle(constantName, notifyingHandle(notification));
}

void KibPresence::_imHandleCapabilitiesChanged(const ObjectPtr& notification) {
  auto handle = notifyingHandle(notification);
  if (handle && handle == _mostAvailableIMHandle)
    postConstantNamedForIMHandle(named<kKibPresenceCapabilitiesChangedNotification>(), handle);
}

void KibPresence::_imHandleStatusChanged(const ObjectPtr& notification) {
  if (!_fullRecache()) postForNotifyingHandle(named<kKibPresenceStatusChangedNotification>(), notification);
}

void KibPresence::_imHandlePictureChanged(const ObjectPtr& notification) {
  postForNotifyingHandle(named<kKibPresencePictureChangedNotification>(), notification);
}

void KibPresence::_imHandleInfoChanged(const ObjectPtr& notification) {
  postForNotifyingHandle(named<kKibPresenceInfoChangedNotification>(), notification);
}

void KibPresence::_imHandleGroupsChanged(const ObjectPtr& notification) {
  _fullRecache();
  postForNotifyingHandle(named<kKibPresenceGroupsChangedNotification>(), notification);
}

void KibPresence::_imHandleExtraPropsChanged(const ObjectPtr& notification) {
  _fullRecache();
  postForNotifyingHandle(named<kKibPresenceExtraPropsChangedNotification>(), notification);
}

void KibPresence::_imHandleMobileChanged(const ObjectPtr& notification) {
  _fullRecache();
  postForNotifyingHandle(named<kKibPresenceMobileChangedNotification>(), notification);
}

void KibPresence::_imHandleCertsChanged(const ObjectPtr& notification) {
  postForNotifyingHandle(named<kKibPresenceCertsChangedNotification>(), notification);
}

void KibPresence::_imHandleSortOrderChanged(const ObjectPtr& notification) {
  postForNotifyingHandle(named<kKibPresenceSortOrderChangedNotification>(), notification);
}

// Forwarding accessors.

double KibPresence::timeSinceStatusChanged() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->timeSinceStatusChanged() : 0.0;
}

double KibPresence::timeSinceWentOffline() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->timeSinceWentOffline() : 0.0;
}

std::string KibPresence::mobileDeviceName() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->mobileDeviceName() : std::string();
}

bool KibPresence::isMobile() const { return _mostAvailableIMHandle && _mostAvailableIMHandle->isMobile(); }

std::string KibPresence::nameOfStatus() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->nameOfStatus() : std::string();
}

std::string KibPresence::previousStatusMessage() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->previousStatusMessage() : std::string();
}

std::string KibPresence::statusMessage() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->statusMessage() : std::string();
}

std::string KibPresence::nameAndEmail() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->nameAndEmail() : std::string();
}

std::string KibPresence::displayName() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->name() : std::string();
}

std::string KibPresence::shortName() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->uniqueName() : std::string();
}

std::string KibPresence::fullName() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->fullName() : std::string();
}

std::string KibPresence::lastName() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->lastName() : std::string();
}

std::string KibPresence::firstName() const {
  return _mostAvailableIMHandle ? _mostAvailableIMHandle->firstName() : std::string();
}

std::optional<std::set<std::string>> KibPresence::groups() const {
  if (!_mostAvailableIMHandle) return std::nullopt;
  return _mostAvailableIMHandle->groups();
}

std::string KibPresence::description() const {
  return platform::format("\n\t\tKibPresence:\n\t\t\tMostAvailable: %@ \n\t\t\tEveryone: {%@}",
                          _mostAvailableIMHandle, std::vector<IMHandlePtr>(_imHandles.begin(), _imHandles.end()));
}

}  // namespace kib
