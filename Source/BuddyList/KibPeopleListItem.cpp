#include "Source/BuddyList/KibPeopleListItem.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListItemDelegate.h"
#include "platform/core/AssertionHandler.h"
#include "platform/core/Clock.h"
#include "platform/core/Format.h"
#include "platform/core/Log.h"
#include "platform/core/Prefetch.h"
#include "platform/core/RecyclingAllocator.h"
#include "platform/core/RunLoop.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMHandle.h"

namespace kib {

using platform::IMPersonStatus;
using platform::IMPersonStatusIsOnline;
using platform::ObjectPtr;

namespace {

// A notification name as a string that lives as long as the program.
template <const char* const& Name>
const std::string& named() {
  return platform::constantName<Name>();
}

constexpr const char* kSourceFile = "MenuExtra/../Source/BuddyList/KibPeopleListItem";
constexpr double kStatusTransitionTime = 2.0;
constexpr double kPulseTransitionTime = 4.0;
constexpr double kNeverChanged = 99999.0;

// The live person items; they hold themselves in and take themselves out. A
// flat array with each item's slot kept in the item: no node per item.
std::vector<KibPeopleListItem*>& registry() {
  static auto* items = new std::vector<KibPeopleListItem*>;
  return *items;
}

platform::DictionaryPtr userInfoOf(const ObjectPtr& argument) {
  auto notification = std::dynamic_pointer_cast<platform::Notification>(argument);
  return notification ? notification->userInfo() : nullptr;
}

unsigned shortAddress(const void* pointer) {
  return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer));
}

}  // namespace

const platform::SelectorTable<KibPeopleListItem>& KibPeopleListItem::selectorTable() {
  static const platform::SelectorTable<KibPeopleListItem> table{
      {"_presenceCapabilitiesChanged:", &KibPeopleListItem::_presenceCapabilitiesChanged},
      {"_presenceStatusChanged:", &KibPeopleListItem::_presenceStatusChanged},
      {"_presencePictureChanged:", &KibPeopleListItem::_presencePictureChanged},
      {"_presenceInfoChanged:", &KibPeopleListItem::_presenceInfoChanged},
      {"_presenceGroupsChanged:", &KibPeopleListItem::_presenceGroupsChanged},
      {"_presenceMobileChanged:", &KibPeopleListItem::_presenceMobileChanged},
      {"_presenceCertsChanged:", &KibPeopleListItem::_presenceCertsChanged},
      {"_presenceSortOrderChanged:", &KibPeopleListItem::_presenceSortOrderChanged},
      {"stopTransition", &KibPeopleListItem::stopTransitionPerformed},
  };
  return table;
}

const std::vector<std::string>& KibPeopleListItem::notifications() {
  // Extra-properties changes of the presence are not listened to.
  static const std::vector<std::string> list{
      kKibPresenceCapabilitiesChangedNotification, kKibPresenceStatusChangedNotification,
      kKibPresencePictureChangedNotification,      kKibPresenceInfoChangedNotification,
      kKibPresenceGroupsChangedNotification,       kKibPresenceMobileChangedNotification,
      kKibPresenceCertsChangedNotification,        kKibPresenceSortOrderChangedNotification,
  };
  return list;
}

const std::vector<std::string>& KibPeopleListItem::selectors() {
  static const std::vector<std::string> list{
      "_presenceCapabilitiesChanged:", "_presenceStatusChanged:", "_presencePictureChanged:",
      "_presenceInfoChanged:",         "_presenceGroupsChanged:", "_presenceMobileChanged:",
      "_presenceCertsChanged:",        "_presenceSortOrderChanged:",
  };
  return list;
}

// Initialisation and teardown.

KibPeopleListItemPtr KibPeopleListItem::make() {
  return std::allocate_shared<KibPeopleListItem>(platform::RecyclingAllocator<KibPeopleListItem>());
}

KibPeopleListItemPtr KibPeopleListItem::initWithBuddyListPresenceInGroup(const KibBuddyListPresencePtr& presence,
                                                                         KibPeopleListGroup* group) {
  auto item = make();
  item->initialiseWithBuddyListPresenceInGroup(presence, group);
  return item;
}

KibPeopleListItemPtr KibPeopleListItem::initAsGroup(KibPeopleListGroup* group) {
  auto item = make();
  item->initialiseAsGroup(group);
  return item;
}

void KibPeopleListItem::initialiseWithBuddyListPresenceInGroup(const KibBuddyListPresencePtr& presence,
                                                               KibPeopleListGroup* group) {
  // Checked first: the report's texts are built only for a failure.
  if (!presence)
    platform::assertParameter(false, "presence != nil", "-[KibPeopleListItem initWithBuddyListPresence:inGroup:]", this,
                              kSourceFile, __LINE__);
  setBuddyListPresence(presence);
  setPeopleListGroup(group);
  if (_registrySlot == kNotRegistered) {
    _registrySlot = registry().size();
    registry().push_back(this);
  }
}

void KibPeopleListItem::initialiseAsGroup(KibPeopleListGroup* group) {
  if (!group)
    platform::assertParameter(false, "group != nil", "-[KibPeopleListItem initAsGroup:]", this, kSourceFile, __LINE__);
  _isGroup = true;
  setPeopleListGroup(group);
}

KibPeopleListItem::~KibPeopleListItem() {
  if (_presence) _presence->removeObserver(this);
  // No perform aimed at the item can be waiting: the run loop holds its targets.
  _attributedStatusMessage.reset();
  _statusMessage.reset();
  _displayName.reset();
  _presence.reset();
  if (_registrySlot != kNotRegistered) {
    // The last item takes the slot.
    auto& items = registry();
    items[_registrySlot] = items.back();
    items[_registrySlot]->_registrySlot = _registrySlot;
    items.pop_back();
  }
}

KibPeopleListItemPtr KibPeopleListItem::copy() {
  return std::static_pointer_cast<KibPeopleListItem>(shared_from_this());
}

// The registry.

void KibPeopleListItem::clearAllWeakReferencesTo(const platform::Object* delegate) {
  // Copied: clearing may log, and logging must not see the set change under it.
  const std::vector<KibPeopleListItem*> items(registry().begin(), registry().end());
  for (auto* item : items)
    if (item->_delegate == delegate) item->setDelegate(nullptr);
}

void KibPeopleListItem::clearAllWeakGroupReferencesTo(const KibPeopleListGroup* group) {
  for (auto* item : registry())
    if (item->_group == group) item->setPeopleListGroup(nullptr);
}

void KibPeopleListItem::removeObserverFromEveryItem(platform::IMDirectlyObservableObjectObserver* observer) {
  for (auto* item : registry()) item->removeObserver(observer);
}

bool KibPeopleListItem::isRegistered(const KibPeopleListItem* item) {
  // By address: the item may be gone.
  const auto& items = registry();
  return std::find(items.begin(), items.end(), item) != items.end();
}

// Accessors.

void KibPeopleListItem::setDelegate(platform::Object* delegate) {
  if (platform::IMWillLog(kKibPeopleListLogCategory)) platform::IMAlwaysLog("Setting delegate to %@", delegate);
  _delegate = delegate;
}

void KibPeopleListItem::setBuddyListPresence(const KibBuddyListPresencePtr& presence) {
  if (presence == _presence) return;
  KibBuddyListPresencePtr incoming = presence;
  informObserversOfWillChange();
  // The new presence, not the old one: the old presence is never unobserved here.
  _unobservePresence(incoming);
  _presence = incoming;
  _observePresence(_presence);
  _updateCurrentStatus();
  _cacheCurrentState();
}

platform::IMHandlePtr KibPeopleListItem::imHandle() const {
  return _presence ? _presence->mostAvailableIMHandle() : nullptr;
}

std::string KibPeopleListItem::group() const {
  if (_presence) return _presence->group();
  return _group ? _group->name() : std::string();
}

std::uint32_t KibPeopleListItem::sortOrder() const { return _presence ? _presence->sortOrder() : 0; }

bool KibPeopleListItem::isPulseTransition() const {
  return _inTransition && _currentTransitionTime == kPulseTransitionTime;
}

void KibPeopleListItem::prefetchRowState() const {
  platform::prefetch(&_presence);
  platform::prefetch(&_group);
  platform::prefetch(&_currentStatus);
  platform::prefetch(&_sortCache, sizeof(_sortCache));
}

IMPersonStatus KibPeopleListItem::effectiveStatus() const {
  if (!_inTransition || IMPersonStatusIsOnline(_currentStatus)) return _currentStatus;
  return _previousStatus;
}

std::string KibPeopleListItem::description() const {
  auto nameOrNil = [](const std::string& name) { return name.empty() ? std::string("(null)") : name; };
  if (_isGroup)
    return platform::format("%@<0x%x> Group \"%@\"", className(), shortAddress(this), nameOrNil(group()));
  if (_presence)
    return platform::format("%@ Group: \"%@\" %@", className(), nameOrNil(_presence->group()), _presence);
  auto handle = imHandle();
  return platform::format("%@<0x%x> %@ in group \"%@\"", className(), shortAddress(this),
                          handle ? handle->ID() : std::string("(null)"), nameOrNil(group()));
}

// Display text.

platform::StringPtr KibPeopleListItem::displayNameForString(const std::string& string) {
  return platform::makeString(string);
}

platform::StringPtr KibPeopleListItem::displayStatusMessageForString(const std::string& string) {
  using platform::TextServices;
  return platform::makeString(TextServices::trimWhitespace(TextServices::replaceNewlinesWithSpaces(string)));
}

platform::StringPtr KibPeopleListItem::displayName() const {
  if (!_presence) return nullptr;
  return displayNameForString(_presence->displayName());
}

platform::StringPtr KibPeopleListItem::displayStatusMessage() {
  if (_attributedStatusMessage) return _attributedStatusMessage;
  auto handle = imHandle();
  std::string text;
  if (handle)
    text = effectiveStatus() == platform::kIMPersonStatusIdle && handle->statusURL().empty() ? handle->idleString()
                                                                                             : handle->statusMessage();
  auto message = displayStatusMessageForString(text);
  _attributedStatusMessage =
      platform::makeString(platform::TextServices::replaceNewlinesWithSpaces(message->value()));
  return _attributedStatusMessage;
}

void KibPeopleListItem::clearAttributedStatusMessageCache() { _attributedStatusMessage.reset(); }

// Presence observation.

void KibPeopleListItem::_observePresence(const KibBuddyListPresencePtr& presence) {
  if (presence && !presence->isQuiet()) presence->addObserver(this);
}

void KibPeopleListItem::_unobservePresence(const KibBuddyListPresencePtr& presence) {
  if (presence && !presence->isQuiet()) presence->removeObserver(this);
}

void KibPeopleListItem::objectDidPostDirectNotification(const platform::NotificationPtr& notification) {
  if (!notification) return;
  const auto& names = notifications();
  auto found = std::find(names.begin(), names.end(), notification->name());
  if (found == names.end()) return;
  // The observers may let go of the item while it reposts.
  auto keepAlive = weak_from_this().lock();
  performSelector(selectors().at(static_cast<std::size_t>(found - names.begin())), notification);
}

void KibPeopleListItem::objectWillChange(platform::IMDirectlyObservableObject&) { informObserversOfWillChange(); }

void KibPeopleListItem::willChangeOwnStatus() {
  _changingOnlyItsStatus = true;
  informObserversOfWillChange();
  _changingOnlyItsStatus = false;
}

void KibPeopleListItem::_presenceCapabilitiesChanged(const ObjectPtr& notification) {
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), userInfoOf(notification));
}

void KibPeopleListItem::_presenceStatusChanged(const ObjectPtr& notification) {
  clearAttributedStatusMessageCache();
  if (_updateCurrentStatus()) _setWhenStatusChanged(nullptr);
  _presenceInfoChanged(notification);
}

void KibPeopleListItem::_presencePictureChanged(const ObjectPtr& notification) {
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), userInfoOf(notification));
}

void KibPeopleListItem::_presenceInfoChanged(const ObjectPtr& notification) {
  if (!_currentInfoDiffersFromCache()) return;
  clearAttributedStatusMessageCache();
  _cacheCurrentState();
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), userInfoOf(notification));
}

void KibPeopleListItem::_presenceGroupsChanged(const ObjectPtr& notification) {
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsGroupChangeNotification>(), userInfoOf(notification));
}

void KibPeopleListItem::_presenceMobileChanged(const ObjectPtr& notification) {
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), userInfoOf(notification));
}

void KibPeopleListItem::_presenceCertsChanged(const ObjectPtr&) {}

void KibPeopleListItem::_presenceSortOrderChanged(const ObjectPtr& notification) {
  _postConstantNamedUserInfo(named<kKibPeopleListItemSortOrderChangedNotification>(), userInfoOf(notification));
}

// The state cache.

std::int32_t KibPeopleListItem::currentMinutesIdle() const {
  auto handle = imHandle();
  return handle ? static_cast<std::int32_t>(handle->idleTime() / 60.0) : 0;
}

bool KibPeopleListItem::_updateCurrentStatus() {
  if (!imHandle()) return false;
  auto status = _presence->status();
  if (status == _currentStatus) return false;
  willChangeOwnStatus();
  _previousStatus = _currentStatus;
  _currentStatus = status;
  return true;
}

void KibPeopleListItem::_cacheCurrentState() {
  // Without a handle the presence has no message and no name (nil), which
  // never compares equal afterwards.
  bool hasHandle = imHandle() != nullptr;
  _statusMessage = hasHandle ? std::optional<std::string>(_presence->statusMessage()) : std::nullopt;
  _displayName = hasHandle ? std::optional<std::string>(_presence->displayName()) : std::nullopt;
  _minutesIdle = currentMinutesIdle();
}

bool KibPeopleListItem::_currentInfoDiffersFromCache() const {
  if (currentMinutesIdle() != _minutesIdle) return true;
  bool hasHandle = imHandle() != nullptr;
  if (!_displayName || !hasHandle || *_displayName != _presence->displayName()) return true;
  return !_statusMessage || *_statusMessage != _presence->statusMessage();
}

bool KibPeopleListItem::_currentStatusDiffersFromCache() const {
  return _currentStatus != (_presence ? _presence->status() : 0);
}

// Transitions.

void KibPeopleListItem::_setWhenStatusChanged(const platform::DatePtr& date) {
  _whenStatusChanged = date ? date->timeIntervalSinceReferenceDate() : platform::Clock::current().now();
  bool cameOnline = IMPersonStatusIsOnline(_currentStatus) && !IMPersonStatusIsOnline(_previousStatus);
  bool wentOffline = !IMPersonStatusIsOnline(_currentStatus) && IMPersonStatusIsOnline(_previousStatus);
  if ((cameOnline || wentOffline) && canTransition()) {
    _startStatusTransition();
    // The row keeps its place while it fades out.
    if (!IMPersonStatusIsOnline(_currentStatus)) {
      _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), nullptr);
      return;
    }
  }
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsSortingNotification>(), nullptr);
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), nullptr);
}

bool KibPeopleListItem::canTransition() const {
  if (!imHandle()) return false;
  auto* delegate = dynamic_cast<KibPeopleListItemDelegate*>(_delegate);
  if (!delegate) return true;
  return delegate->peopleListItemCanTransitionToStatus(const_cast<KibPeopleListItem*>(this), effectiveStatus());
}

void KibPeopleListItem::_startAnimationPusling(bool statusTransition) {
  auto self = shared_from_this();
  if (_isGroup)
    platform::AssertionHandler::current().handleFailureInMethod(
        "-[KibPeopleListItem _startAnimationPusling:]", this, kSourceFile, __LINE__,
        "Can't ask -_startStatusTransition for a group item!");
  willChangeOwnStatus();
  _inTransition = true;
  _currentTransitionTime = statusTransition ? kStatusTransitionTime : kPulseTransitionTime;
  auto& loop = platform::RunLoop::main();
  if (_hasScheduledPerforms) loop.cancelPreviousPerformRequests(this, "stopTransition");
  _hasScheduledPerforms = true;
  // Common modes: the transition also ends while a menu is being tracked.
  loop.performSelectorAfterDelay(self, "stopTransition", nullptr, _currentTransitionTime,
                                 platform::kCommonRunLoopModes);
  _postConstantNamedUserInfo(named<kKibPeopleListItemAnimationStateChangedNotification>(), nullptr);
}

void KibPeopleListItem::_startStatusTransition() { _startAnimationPusling(true); }

void KibPeopleListItem::_startPulse() { _startAnimationPusling(false); }

void KibPeopleListItem::startPulse() {
  if (!canTransition()) return;
  _setWhenStatusChanged(platform::Date::now());
  _startPulse();
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsSortingNotification>(), nullptr);
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), nullptr);
}

void KibPeopleListItem::stopTransition() {
  // Cancels the offline-transition perform by name, deliberately not stopTransition.
  platform::RunLoop::main().cancelPreviousPerformRequests(this, "_finishOfflineTransition");
  willChangeOwnStatus();
  _inTransition = false;
  _postConstantNamedUserInfo(named<kKibPeopleListItemAnimationStateChangedNotification>(), nullptr);
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsSortingNotification>(), nullptr);
  _postConstantNamedUserInfo(named<kKibPeopleListItemNeedsUpdatingNotification>(), nullptr);
}

void KibPeopleListItem::stopTransitionPerformed(const ObjectPtr&) { stopTransition(); }

double KibPeopleListItem::timeSinceStatusChanged() const {
  if (!_whenStatusChanged) return kNeverChanged;
  return platform::Clock::current().now() - *_whenStatusChanged;
}

double KibPeopleListItem::transitionPhase(double throbs) const {
  if (!_inTransition) return 1.0;
  double elapsed = _whenStatusChanged ? platform::Clock::current().now() - *_whenStatusChanged : 0.0;
  double p = elapsed / _currentTransitionTime;
  if (p >= 1.0) return 1.0;
  // The constants are the drawing code's own, 3.14159 and 0.495 exactly.
  double w = (1.0 - std::cos(3.14159 * p * throbs)) * 0.495;
  if (throbs == 1.0) return w;
  return w * 0.5 + p * 0.5;
}

double KibPeopleListItem::transitionAlphaToFromThrobs(double to, double from, std::uint64_t throbs) const {
  double phase = transitionPhase(static_cast<double>(throbs));
  if (to == from) {
    double m = phase < 0.5 ? 1.0 - phase : phase;
    double d = (m - 0.5) * 2;
    return to > 0.5 ? d : 1.0 - d;
  }
  if (phase >= 1.0) return to;
  auto handle = imHandle();
  auto account = handle ? handle->account() : nullptr;
  // No fade right after log-in.
  if (account && account->justLoggedIn()) return to;
  return from * (1.0 - phase) + to * phase;
}

void KibPeopleListItem::_postNotificationNamedUserInfo(const std::string& name,
                                                       const platform::DictionaryPtr& userInfo) {
  if (observers().empty()) return;  // nobody to tell: not worth building
  informObserversOfNotification(platform::Notification::make(name, shared_from_this(), userInfo));
}

void KibPeopleListItem::_postConstantNamedUserInfo(const std::string& constantName,
                                                   const platform::DictionaryPtr& userInfo) {
  if (observers().empty()) return;
  informObserversOfNotification(
      platform::Notification::makeWithConstantName(constantName, shared_from_this(), userInfo));
}

}  // namespace kib
