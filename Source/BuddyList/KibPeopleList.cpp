#include "Source/BuddyList/KibPeopleList.h"

#include <algorithm>
#include <unordered_set>

#include "Source/BuddyList/KibNotifications.h"
#include "platform/core/Log.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/im/IMHandle.h"

namespace kib {

namespace {

KibPeopleListItemPtr makeKibPeopleListItem() { return KibPeopleListItem::make(); }

// Appends the handles of the items' presences that are not there yet.
void collectHandles(const KibPeopleList::Items& items, KibPeopleList::Handles& handles,
                    std::unordered_set<const platform::IMHandle*>& seen) {
  for (const auto& item : items) {
    const auto& presence = item->buddyListPresence();
    if (!presence) continue;
    for (const auto& handle : presence->imHandles())
      if (seen.insert(handle.get()).second) handles.push_back(handle);
  }
}

}  // namespace

const platform::SelectorTable<KibPeopleList>& KibPeopleList::selectorTable() {
  static const platform::SelectorTable<KibPeopleList> table{
      {"_peopleListItemNeedsSorting:", &KibPeopleList::_peopleListItemNeedsSorting},
      {"_peopleListItemNeedsGroupChange:", &KibPeopleList::_peopleListItemNeedsGroupChange},
      {"_peopleListItemSortOrderChangedNotification:", &KibPeopleList::_peopleListItemSortOrderChangedNotification},
  };
  return table;
}

const std::vector<std::string>& KibPeopleList::_notificationNames() {
  static const std::vector<std::string> names{
      kKibPeopleListItemNeedsSortingNotification,
      kKibPeopleListItemNeedsGroupChangeNotification,
      kKibPeopleListItemSortOrderChangedNotification,
  };
  return names;
}

const std::vector<std::string>& KibPeopleList::_notificationSelectors() {
  static const std::vector<std::string> selectors{
      "_peopleListItemNeedsSorting:",
      "_peopleListItemNeedsGroupChange:",
      "_peopleListItemSortOrderChangedNotification:",
  };
  return selectors;
}

// Creation and teardown.

KibPeopleListPtr KibPeopleList::init() { return std::make_shared<KibPeopleList>(); }

KibPeopleList::KibPeopleList() = default;

KibPeopleList::~KibPeopleList() {
  platform::NotificationCenter::defaultCenter().removeObserver(this);
  platform::RunLoop::main().cancelPreviousPerformRequests(this);
  KibPeopleListItem::clearAllWeakReferencesTo(this);

  for (const auto& item : _peopleListItems) {
    item->removeObserver(this);
    item->setDelegate(nullptr);
  }
  for (const auto& item : _items) item->setDelegate(nullptr);
  // The displayed rows let go first, so that the items go in the order they
  // were filed: their memory is taken again in that order by the next list.
  _items.clear();
  _previousItems.clear();
  _peopleListItems.clear();

  if (_offlineGroup)
    for (const auto& item : _offlineGroup->visibleMembers()) item->removeObserver(this);
  _offlineGroup.reset();

  // Items still alive elsewhere must not call a list that is gone: neither as
  // observer (the list observes person items only, all in the item registry)
  // nor, for the group headers, which are not in the registry, as delegate.
  KibPeopleListItem::removeObserverFromEveryItem(this);
  for (const Groups* groups : {&_itemsToCleanup, &_peopleListGroups, &_smartGroups})
    for (const auto& group : *groups)
      if (const auto& header = group->peopleListItem()) header->setDelegate(nullptr);
  if (_ambrelGroup && _ambrelGroup->peopleListItem()) _ambrelGroup->peopleListItem()->setDelegate(nullptr);

  _itemsToCleanup.clear();
  _collapsedGroupsPrefKey.reset();
  _peopleListGroups.clear();
  _smartGroups.clear();
  _ambrelGroup.reset();
  _groupProperties.reset();
  _searchString.reset();
}

// Options.

KibPeopleListItemClass KibPeopleList::peopleListItemClass() const {
  return _customPeopleListItemClass ? _customPeopleListItemClass : &makeKibPeopleListItem;
}

void KibPeopleList::setGroupProperties(const platform::DictionaryPtr& properties) {
  if (properties != _groupProperties) _groupProperties = properties;
}

void KibPeopleList::setArrangesByGroup(bool arranges) {
  if (arranges == _arrangesByGroup) return;
  willChangeDisplayedState();
  if (_offlineGroup) _offlineGroup->removeAllItems();
  _arrangesByGroup = arranges;
  refreshList();
}

void KibPeopleList::setShowsStatus(bool& hideField, bool shows) {
  if (hideField == !shows) return;
  willChangeDisplayedState();
  beginChanges();
  hideField = !shows;
  _refreshContents();
  endChanges();
}

void KibPeopleList::setShowsOfflinePeople(bool shows) {
  if (showsOfflinePeople() == shows) return;
  willChangeDisplayedState();
  if (_offlineGroup) _offlineGroup->removeAllItems();
  setShowsStatus(_hideOfflinePeople, shows);
}

void KibPeopleList::setShowsIdlePeople(bool shows) { setShowsStatus(_hideIdlePeople, shows); }
void KibPeopleList::setShowsAwayPeople(bool shows) { setShowsStatus(_hideAwayPeople, shows); }
void KibPeopleList::setShowsUnknownPeople(bool shows) { setShowsStatus(_hideUnknownPeople, shows); }
void KibPeopleList::setShowsNoStatusPeople(bool shows) { setShowsStatus(_hideNoStatusPeople, shows); }

bool KibPeopleList::_isOfflineGroup(const KibPeopleListGroup* group) const {
  return group && group == _offlineGroup.get();
}

bool KibPeopleList::_isAmbrelGroup(const KibPeopleListGroup* group) const {
  return group && group == _ambrelGroup.get();
}

kib::KibSortParameters KibPeopleList::KibSortParameters() const {
  kib::KibSortParameters parameters;
  parameters.sortKeys[0] = kKibSortKeyStatus;
  parameters.sortKeys[1] = kKibSortKeyFirstName;
  parameters.sortKeys[2] = kKibSortKeyHandle;
  parameters.currentKey = 0;
  parameters.usesManualOrder = false;
  return parameters;
}

// Item observation and notifications.

void KibPeopleList::_observePeopleListItem(const KibPeopleListItemPtr& item) {
  if (item) item->addObserver(this);
}

void KibPeopleList::_unobservePeopleListItem(const KibPeopleListItemPtr& item) {
  if (item) item->removeObserver(this);
}

void KibPeopleList::objectDidPostDirectNotification(const platform::NotificationPtr& notification) {
  if (!notification) return;
  // An observer may let go of the list while it is told.
  auto self = weak_from_this().lock();
  informObserversOfNotification(notification);
  const auto& names = _notificationNames();
  auto found = std::find(names.begin(), names.end(), notification->name());
  if (found == names.end()) return;
  performSelector(_notificationSelectors().at(static_cast<std::size_t>(found - names.begin())), notification);
}

void KibPeopleList::_peopleListItemNeedsSorting(const platform::ObjectPtr&) {
  beginChanges();
  _resortForItem();
  endChanges();
}

void KibPeopleList::_peopleListItemNeedsGroupChange(const platform::ObjectPtr&) { _refreshContents(); }

void KibPeopleList::_peopleListItemSortOrderChangedNotification(const platform::ObjectPtr&) { _refreshContents(); }

bool KibPeopleList::peopleListItemCanTransitionToStatus(KibPeopleListItem*, platform::IMPersonStatus) { return true; }

// Queries.

KibPeopleList::Handles KibPeopleList::allIMHandles() const {
  Handles handles;
  std::unordered_set<const platform::IMHandle*> seen;
  if (!_arrangesByGroup) {
    collectHandles(_peopleListItems, handles, seen);
    return handles;
  }
  for (const auto& group : _peopleListGroups) collectHandles(group->members(), handles, seen);
  return handles;
}

std::uint64_t KibPeopleList::numberOfIMHandles() const { return allIMHandles().size(); }

bool KibPeopleList::containsIMHandle(const platform::IMHandle* handle) const {
  if (!handle) return false;
  auto handles = allIMHandles();
  return std::any_of(handles.begin(), handles.end(), [handle](const auto& h) { return h.get() == handle; });
}

std::optional<KibPeopleList::Handles> KibPeopleList::peopleInGroup(const std::string& groupName) const {
  if (!_arrangesByGroup || groupName.empty()) return std::nullopt;
  auto group = groupWithName(groupName);
  if (!group) return std::nullopt;
  Handles handles;
  std::unordered_set<const platform::IMHandle*> seen;
  collectHandles(group->members(), handles, seen);
  return handles;
}

std::optional<KibPeopleList::Handles> KibPeopleList::representedPeopleInGroup(const std::string& groupName) const {
  if (!_arrangesByGroup || groupName.empty()) return std::nullopt;
  auto group = groupWithName(groupName);
  if (!group) return std::nullopt;
  Handles handles;
  for (const auto& item : group->members())
    if (auto handle = item->imHandle()) handles.push_back(handle);
  return handles;
}

}  // namespace kib
