// Filing handles into items and groups, taking them out again, and the group
// operations of the people list.

#include <algorithm>
#include <cstdint>
#include <span>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/AssertionHandler.h"
#include "platform/core/Log.h"
#include "platform/core/Number.h"
#include "platform/core/Prefetch.h"
#include "platform/core/TextServices.h"
#include "platform/core/UserDefaults.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"

namespace kib {

namespace {

constexpr const char* kSourceFile = "MenuExtra/../Source/BuddyList/KibPeopleList";
constexpr int kAddGroupLine = 696;
constexpr int kRemoveGroupLine = 729;
constexpr int kSetGroupsLine = 739;

bool willLog() { return platform::IMWillLog(kKibPeopleListLogCategory); }

void reportNotArrangingByGroup(const KibPeopleList* list, const char* method, int line, const char* message) {
  platform::AssertionHandler::current().handleFailureInMethod(method, list, kSourceFile, line, message);
}

bool containsName(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

template <class Pointer>
void removeByIdentity(std::vector<Pointer>& collection, const void* object) {
  std::erase_if(collection, [object](const Pointer& entry) { return entry.get() == object; });
}

// The Ambrel group's abilities: nothing may be changed in it.
platform::DictionaryPtr ambrelGroupProperties() {
  auto no = [] { return platform::makeNumber(false); };
  return platform::makeDictionary({
      {platform::kKBGroupSupportsAdd, no()},
      {platform::kKBGroupSupportsRemove, no()},
      {platform::kKBGroupSupportsReorder, no()},
      {platform::kKBGroupSupportsRename, no()},
      {platform::kKBGroupSupportsMemberReorder, no()},
  });
}

}  // namespace

// Making items.

KibPeopleListItemPtr KibPeopleList::newPersonItem(const KibBuddyListPresencePtr& presence,
                                                  KibPeopleListGroup* group) const {
  auto item = peopleListItemClass()();
  item->initialiseWithBuddyListPresenceInGroup(presence, group);
  return item;
}

KibPeopleListItemPtr KibPeopleList::newGroupHeader(KibPeopleListGroup* group) {
  auto header = peopleListItemClass()();
  header->initialiseAsGroup(group);
  header->setPeopleListGroup(group);
  header->setDelegate(this);
  group->setPeopleListItem(header);
  return header;
}

KibBuddyListPresencePtr KibPeopleList::newPresenceForIMHandle(const platform::IMHandlePtr& handle,
                                                              const KibPeopleListGroup* group) const {
  std::optional<GroupNames> groups;
  std::optional<std::string> ID;
  platform::IMServicePtr service;
  platform::IMPersonPtr person;
  KibHandleFilter filter{false, true, true, true};  // the flat list: no group
  if (group) {
    filter = group->filterForIMHandle(handle);
    if (filter.filterByGroup) groups = GroupNames{group->name()};
  }
  if (_allowsIMHandleSubstitution) {
    if (filter.filterByPerson) person = handle->person();
  } else {
    if (filter.filterByID) ID = handle->ID();
    if (filter.filterByService) service = handle->service();
  }
  return KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFilters(person, ID, service, groups);
}

// Adding.

void KibPeopleList::addIMHandle(const platform::IMHandlePtr& handle) {
  if (!handle) return;
  willChangeDisplayedState();
  FilingPass pass(*this);
  beginChanges();
  if (_arrangesByGroup) {
    // Smart groups first: one that consumes a handle keeps it from the rest.
    Groups candidates = _smartGroups;
    candidates.insert(candidates.end(), _peopleListGroups.begin(), _peopleListGroups.end());
    for (const auto& group : candidates) {
      if (!group->shouldContainIMHandle(handle)) continue;
      _addIMHandleToCollectionUsingOrphanItems(handle, group.get(), nullptr);
      if (group->shouldConsumeIMHandle(handle)) break;
    }
  } else {
    _addIMHandleToCollectionUsingOrphanItems(handle, nullptr, nullptr);
  }
  endChanges();
}

void KibPeopleList::addPeopleFromArray(const Handles& handles) { addPeopleFromArraySkipMe(handles, false); }

void KibPeopleList::addPeopleFromArraySkipMe(const Handles& handles, bool skipMe) {
  if (handles.empty()) return;
  willChangeDisplayedState();
  FilingPass pass(*this);
  beginChanges();
  // Filing reads each handle, its person, and where the flat list's index
  // keeps that person: each is asked for some handles ahead.
  constexpr std::size_t step = platform::kPrefetchDistance / 2;
  for (std::size_t i = 0; i < handles.size(); ++i) {
    if (const auto* handle = platform::pointeeAhead(handles, i, 3 * step))
      platform::prefetch(handle, sizeof(platform::IMHandle));
    if (const auto* handle = platform::pointeeAhead(handles, i, 2 * step))
      platform::prefetch(handle->person().get(), sizeof(platform::IMPerson));
    if (const auto* handle = platform::pointeeAhead(handles, i, step); handle && !_arrangesByGroup) {
      auto index = _filingIndexes.find(nullptr);
      if (index != _filingIndexes.end()) index->second.prefetchCandidatesFor(*handle);
    }
    const auto& handle = handles[i];
    if (skipMe && handle && handle->isLoginIMHandle()) continue;
    addIMHandle(handle);
  }
  endChanges();
}

KibPeopleList::FilingPass::FilingPass(KibPeopleList& list) : _list(list) { ++_list._filingPasses; }

KibPeopleList::FilingPass::~FilingPass() {
  if (--_list._filingPasses == 0) _list.dropFilingIndexes();
}

void KibPeopleList::dropFilingIndexes() { _filingIndexes.clear(); }


KibPeopleListFilingIndex* KibPeopleList::filingIndexFor(KibPeopleListGroup* collection) {
  if (_filingPasses <= 0 || _usesReferenceAlgorithms) return nullptr;
  std::size_t size = collection ? collection->numberOfMembers() : _peopleListItems.size();
  auto found = _filingIndexes.find(collection);
  // A collection that changed other than through the filing is indexed again.
  if (found != _filingIndexes.end() && found->second.size() == size) return &found->second;
  if (found != _filingIndexes.end()) _filingIndexes.erase(found);
  auto made = _filingIndexes.emplace(
      collection, KibPeopleListFilingIndex(collection ? collection->members() : _peopleListItems));
  return &made.first->second;
}

void KibPeopleList::noteFiledItem(KibPeopleListGroup* collection, const KibPeopleListItemPtr& item) {
  auto found = _filingIndexes.find(collection);
  if (found == _filingIndexes.end()) return;
  std::size_t size = collection ? collection->numberOfMembers() : _peopleListItems.size();
  if (found->second.size() + 1 == size)
    found->second.addItem(item);
  else
    _filingIndexes.erase(found);
}

bool KibPeopleList::_addIMHandleToCollectionUsingOrphanItems(const platform::IMHandlePtr& handle,
                                                             KibPeopleListGroup* collection, Items* orphans) {
  // Offering a handle to an item that cannot take it changes nothing, so only
  // the items the index names are asked, in the same order.
  KibPeopleListFilingIndex* index = filingIndexFor(collection);
  // Copies: offering a handle may reach observers that file more. A handle
  // mostly has one candidate or none; one is kept off the heap.
  KibPeopleListItemPtr onlyCandidate;
  Items candidates;
  if (index) {
    const auto& positions = index->candidatesFor(*handle);
    if (positions.size() == 1) {
      onlyCandidate = index->item(positions.front());
    } else {
      candidates.reserve(positions.size());
      for (std::size_t position : positions) candidates.push_back(index->item(position));
    }
  } else {
    candidates = collection ? collection->members() : _peopleListItems;
  }
  std::span<const KibPeopleListItemPtr> toAsk(candidates);
  if (onlyCandidate) toAsk = std::span<const KibPeopleListItemPtr>(&onlyCandidate, 1);
  bool filed = false;
  for (const auto& item : toAsk) {
    const auto& presence = item->buddyListPresence();
    if (!presence) continue;
    if (presence->containsIMHandle(handle)) {
      if (!_allowsIMHandleSubstitution) return true;
      filed = true;
    } else if (presence->addIMHandle(handle)) {
      filed = true;  // and it may join further items of the collection
    }
  }
  if (filed) return true;

  beginChanges();
  auto presence = newPresenceForIMHandle(handle, collection);
  presence->addIMHandle(handle);
  KibPeopleListItemPtr item;
  if (orphans && !orphans->empty()) {
    // The item keeps its identity across a move between groups.
    item = orphans->front();
    orphans->erase(orphans->begin());
    item->setBuddyListPresence(presence);
    item->setPeopleListGroup(collection);
  } else {
    item = newPersonItem(presence, collection);
  }
  _observePeopleListItem(item);
  item->setDelegate(this);
  if (collection)
    collection->addPeopleListItem(item);
  else
    _peopleListItems.push_back(item);
  noteFiledItem(collection, item);
  _resort();
  endChanges();
  return true;
}

// Removing.

KibPeopleListItemPtr KibPeopleList::_removeIMHandleFromPeopleListItem(const platform::IMHandlePtr& handle,
                                                                      const KibPeopleListItemPtr& item) {
  const auto& presence = item->buddyListPresence();
  if (!presence || !presence->containsIMHandle(handle)) return nullptr;
  presence->removeIMHandle(handle);
  return presence->numberOfIMHandles() < 1 ? item : nullptr;
}

void KibPeopleList::_removeIMHandleFromPeopleListGroup(const platform::IMHandlePtr& handle,
                                                       KibPeopleListGroup* group) {
  beginChanges();
  for (const auto& item : group->members()) {
    auto emptied = _removeIMHandleFromPeopleListItem(handle, item);
    if (!emptied) continue;
    emptied->setPeopleListGroup(nullptr);
    group->removePeopleListItem(emptied);
    _unobservePeopleListItem(emptied);
    _resort();
  }
  endChanges();
}

void KibPeopleList::removeIMHandle(const platform::IMHandlePtr& handle) { removeIMHandleFromGroups(handle, std::nullopt); }

void KibPeopleList::removeIMHandleFromGroup(const platform::IMHandlePtr& handle, const std::string& groupName) {
  removeIMHandleFromGroups(handle, GroupNames{groupName});
}

void KibPeopleList::removeIMHandleFromGroups(const platform::IMHandlePtr& handle,
                                             const std::optional<GroupNames>& groupNames) {
  if (!handle) return;
  willChangeDisplayedState();
  dropFilingIndexes();
  beginChanges();
  bool everyGroup = !groupNames || groupNames->empty();
  for (const auto& group : Groups(_peopleListGroups))
    if (everyGroup || groupNames->count(group->name())) _removeIMHandleFromPeopleListGroup(handle, group.get());

  if (!_peopleListItems.empty()) {
    std::vector<const KibPeopleListItem*> emptiedItems;  // not owned: the flat list still holds them
    for (const auto& item : Items(_peopleListItems)) {
      auto emptied = _removeIMHandleFromPeopleListItem(handle, item);
      if (!emptied) continue;
      emptied->setPeopleListGroup(nullptr);
      emptiedItems.push_back(emptied.get());
      _resort();
    }
    for (const auto* emptied : emptiedItems) removeByIdentity(_peopleListItems, emptied);
  }
  endChanges();
}

void KibPeopleList::removeAllIMHandles() { removeAllIMHandlesAndGroups(false); }

void KibPeopleList::removeAllIMHandlesAndGroups(bool alsoGroups) {
  // The displayed rows let go of their delegates. An array the noted resorts
  // owe is not built for that, unless its order shows in the log lines: the
  // walk below finds its rows from the statuses the items had at the last
  // resort, in the order they were filed.
  const bool rowsFromJournal = _resortOwed && !willLog();
  if (rowsFromJournal) {
    _resortOwed = false;
    _items.clear();  // the array the noted resorts replaced: dropping it changes no delegate
  }
  willChangeDisplayedState();  // settles what is still owed, sorted, for the log lines
  dropFilingIndexes();
  beginChanges();
  for (std::size_t i = 0; i < _items.size(); ++i) {
    if (const auto* item = platform::pointeeAhead(_items, i, platform::kPrefetchDistance)) item->prefetchDelegate();
    _items[i]->setDelegate(nullptr);
  }
  _items.clear();
  for (const auto& group : _peopleListGroups) {
    for (const auto& item : group->members()) _unobservePeopleListItem(item);
    group->removeAllItems();
  }
  if (_offlineGroup) _offlineGroup->removeAllItems();
  // One walk lets each item go: its delegate if it was displayed, the list's
  // watch, then the item with its presence, which leaves its handles. The
  // items go in the order they were filed, so their memory is given back (and
  // taken by the next filing) in order. Each is asked for some items ahead,
  // one level further per step.
  constexpr std::size_t step = platform::kPrefetchDistance / 2;
  for (std::size_t i = 0; i < _peopleListItems.size(); ++i) {
    platform::prefetch(platform::pointeeAhead(_peopleListItems, i, 3 * step), sizeof(KibPeopleListItem));
    if (const auto* item = platform::pointeeAhead(_peopleListItems, i, 2 * step))
      platform::prefetch(item->buddyListPresence().get(), sizeof(KibBuddyListPresence));
    if (const auto* item = platform::pointeeAhead(_peopleListItems, i, step))
      if (const auto& presence = item->buddyListPresence())
        for (const auto& handle : presence->imHandles()) platform::prefetch(handle.get(), sizeof(platform::IMHandle));
    auto& item = _peopleListItems[i];
    if (rowsFromJournal && shownWithStatusInGroup(statusAtLastResort(*item), nullptr)) item->setDelegate(nullptr);
    _unobservePeopleListItem(item);
    item.reset();
  }
  _peopleListItems.clear();
  if (rowsFromJournal) closeJournal();
  if (alsoGroups) _peopleListGroups.clear();
  if (willLog()) platform::IMAlwaysLog("Removing all IMHandles and groups, no more items");
  _resort();
  endChanges();
}

// Re-filing.

void KibPeopleList::repopulateIMHandle(const platform::IMHandlePtr& handle) {
  beginChanges();
  _repopulateIMHandleFilterGroups(handle, false);
  endChanges();
}

void KibPeopleList::_repopulateIMHandleFilterGroups(const platform::IMHandlePtr& handle, bool filterGroups) {
  if (!handle) return;
  willChangeDisplayedState();
  dropFilingIndexes();
  beginChanges();
  Items orphans;
  const auto groupNames = handle->groupsArray();
  for (const auto& group : Groups(_peopleListGroups)) {
    if (filterGroups && containsName(groupNames, group->name())) continue;
    for (const auto& item : group->members()) {
      auto emptied = _removeIMHandleFromPeopleListItem(handle, item);
      if (!emptied) continue;
      orphans.push_back(emptied);
      emptied->setPeopleListGroup(nullptr);
      group->removePeopleListItem(emptied);
      _unobservePeopleListItem(emptied);
      _resort();
    }
  }
  if (!_peopleListItems.empty()) {
    for (const auto& item : Items(_peopleListItems)) {
      auto emptied = _removeIMHandleFromPeopleListItem(handle, item);
      if (!emptied) continue;
      orphans.push_back(emptied);
      removeByIdentity(_peopleListItems, emptied.get());
      _unobservePeopleListItem(emptied);
      _resort();
    }
  }
  for (const auto& group : Groups(_peopleListGroups)) {
    if (!containsName(groupNames, group->name())) continue;
    _addIMHandleToCollectionUsingOrphanItems(handle, group.get(), &orphans);
    _resort();
  }
  endChanges();
}

std::optional<std::string> KibPeopleList::groupForNewIMHandles() const {
  if (!_arrangesByGroup) return std::nullopt;
  std::optional<std::string> firstCollapsed;
  for (const auto& item : _items) {
    if (!item->isGroup()) continue;
    const KibPeopleListGroup* group = item->peopleListGroup();
    if (_isOfflineGroup(group)) return firstCollapsed;
    if (!group) continue;
    if (group->isExpanded()) return group->name();
    if (!firstCollapsed) firstCollapsed = group->name();
  }
  return firstCollapsed;
}

// Groups.

void KibPeopleList::setGroups(const platform::ArrayPtr& groupNames) {
  willChangeDisplayedState();
  if (!_arrangesByGroup)
    reportNotArrangingByGroup(this, "-[KibPeopleList setGroups:]", kSetGroupsLine,
                              "Can't set groups if not arranging by group");
  if (groupNames != _groupsOrdering) {
    _groupsOrdering = groupNames;
    if (willLog()) platform::IMAlwaysLog("_groupsOrdering changed to %@", _groupsOrdering);
  }

  std::vector<std::string> wanted;
  if (groupNames)
    for (const auto& name : groupNames->items()) wanted.push_back(platform::stringValue(name));
  std::vector<std::string> toAdd = wanted;
  Groups toDrop;
  for (const auto& group : _peopleListGroups) {
    if (containsName(wanted, group->name()))
      std::erase(toAdd, group->name());
    else
      toDrop.push_back(group);
  }

  beginChanges();
  if (!toAdd.empty() || !toDrop.empty()) {
    for (const auto& group : toDrop) {
      _itemsToCleanup.push_back(group);
      removeByIdentity(_peopleListGroups, group.get());
    }
    for (const auto& name : toAdd) _addGroup(name);
  }
  _resort();
  endChanges();
}

void KibPeopleList::addGroup(const std::optional<std::string>& name) {
  willChangeDisplayedState();
  if (!name) return;
  if (!_arrangesByGroup)
    reportNotArrangingByGroup(this, "-[KibPeopleList addGroup:]", kAddGroupLine,
                              "Can't add a group if not arranging by group");
  _addGroup(*name);
}

void KibPeopleList::_addGroup(const std::string& name) {
  auto group = KibPeopleListGroup::init();
  group->setName(name);
  group->setExpanded(startsExpanded(name, false));
  auto properties = _groupProperties ? _groupProperties->objectForKey(name) : nullptr;
  group->setProperties(std::dynamic_pointer_cast<platform::Dictionary>(properties));
  _peopleListGroups.push_back(group);
  newGroupHeader(group.get());
}

void KibPeopleList::removeGroup(const std::optional<std::string>& name) {
  if (!name) return;
  if (!_arrangesByGroup)
    reportNotArrangingByGroup(this, "-[KibPeopleList removeGroup:]", kRemoveGroupLine,
                              "Can't remove a group if not arranging by group");
  _removeGroup(*name);
}

void KibPeopleList::_removeGroup(const std::string& name) {
  willChangeDisplayedState();
  dropFilingIndexes();
  for (const auto& group : Groups(_peopleListGroups)) {
    if (group->name() != name) continue;
    if (const auto& header = group->peopleListItem()) header->setDelegate(nullptr);
    // Its header may stay displayed (another header of the name may be the
    // one taken out below), so the group lives until the next rebuild.
    _itemsToCleanup.push_back(group);
    removeByIdentity(_peopleListGroups, group.get());
  }
  auto range = _rangeOfGroupAndItemsStartingAtIndex(name, 0);
  if (range.length == 0) return;
  beginChanges();
  auto first = _items.begin() + static_cast<std::ptrdiff_t>(range.location);
  _items.erase(first, first + static_cast<std::ptrdiff_t>(range.length));
  _updateGroupPreferences();
  endChanges();
}

KibPeopleListGroupPtr KibPeopleList::groupWithName(const std::string& name) const {
  auto found = std::find_if(_peopleListGroups.begin(), _peopleListGroups.end(),
                            [&name](const auto& group) { return group->name() == name; });
  return found == _peopleListGroups.end() ? nullptr : *found;
}

bool KibPeopleList::containsGroup(const std::string& name) const {
  if (!_arrangesByGroup) return false;
  return _indexOfGroupStartingAtIndex(name, 0) != kNotFound;
}

std::uint64_t KibPeopleList::_indexOfGroupStartingAtIndex(const std::optional<std::string>& name,
                                                          std::int32_t start) const {
  if (start < 0 || static_cast<std::uint64_t>(start) >= _items.size()) return kNotFound;
  for (std::size_t index = static_cast<std::size_t>(start); index < _items.size(); ++index) {
    const auto& item = _items[index];
    if (!item->isGroup()) continue;
    if (!name || platform::TextServices::caseInsensitiveCompare(item->group(), *name) == 0) return index;
  }
  return kNotFound;
}

KibItemRange KibPeopleList::_rangeOfGroupAndItemsStartingAtIndex(const std::string& name, std::uint32_t start) const {
  if (start > static_cast<std::uint32_t>(INT32_MAX)) return {};
  auto index = _indexOfGroupStartingAtIndex(name, static_cast<std::int32_t>(start));
  if (index == kNotFound) return {};
  auto end = index + 1;
  while (end < _items.size() && !_items[end]->isGroup()) ++end;
  return {index, end - index};
}

// The collapsed groups.

bool KibPeopleList::startsExpanded(const std::string& groupName, bool specialGroup) const {
  if (!_collapsedGroupsPrefKey) return true;
  auto stored = platform::UserDefaults::standardUserDefaults().objectForKey(*_collapsedGroupsPrefKey);
  auto names = std::dynamic_pointer_cast<platform::Array>(stored);
  if (!names) {
    if (stored)
      platform::IMWarn("The collapsed groups under \"%@\" are not a list of group names; ignoring %@",
                       *_collapsedGroupsPrefKey, stored);
    return !specialGroup;
  }
  return std::none_of(names->items().begin(), names->items().end(),
                      [&groupName](const auto& entry) { return platform::stringValue(entry) == groupName; });
}

void KibPeopleList::_updateGroupPreferences() {
  if (!_arrangesByGroup) return;
  auto names = std::make_shared<platform::Array>();
  for (const auto& item : _items) {
    const KibPeopleListGroup* group = item->peopleListGroup();
    if (item->isGroup() && group && !group->isExpanded()) names->add(platform::makeString(item->group()));
  }
  if (_offlineGroup && !_offlineGroup->isExpanded()) names->add(platform::makeString(_offlineGroup->name()));
  if (_ambrelGroup && !_ambrelGroup->isExpanded()) names->add(platform::makeString(_ambrelGroup->name()));
  if (!_collapsedGroupsPrefKey) return;  // nowhere to keep them
  platform::UserDefaults::standardUserDefaults().setObjectForKey(names, *_collapsedGroupsPrefKey);
}

// The Offline and Ambrel groups.

void KibPeopleList::setUsesOfflineGroup(bool uses) {
  if (uses == _usesOfflineGroup) return;
  willChangeDisplayedState();
  _usesOfflineGroup = uses;
  if (!uses || _offlineGroup) {
    if (_offlineGroup) _offlineGroup->removeAllItems();
  } else {
    _offlineGroup = KibOfflinePeopleListGroup::init();
    newGroupHeader(_offlineGroup.get());
    _offlineGroup->setExpanded(startsExpanded(_offlineGroup->name(), true));
  }
  if (_arrangesByGroup && !_hideOfflinePeople) _refreshContents();
}

void KibPeopleList::setUsesAmbrelGroup(bool uses) {
  if (uses == _usesAmbrelGroup) return;
  willChangeDisplayedState();
  beginChanges();
  _usesAmbrelGroup = uses;
  if (uses) {
    if (!_ambrelGroup) {
      _ambrelGroup = KibServicePeopleListGroup::ambrelGroup();
      newGroupHeader(_ambrelGroup.get());
      _ambrelGroup->setSupportsOfflineMembers(false);
      _ambrelGroup->setProperties(ambrelGroupProperties());
    }
    _smartGroups.push_back(_ambrelGroup);
    _ambrelGroup->setExpanded(startsExpanded(_ambrelGroup->name(), true));
  } else if (_ambrelGroup) {
    // Kept for the next time the option is turned on.
    _ambrelGroup->removeAllItems();
    removeByIdentity(_smartGroups, _ambrelGroup.get());
  }
  if (_arrangesByGroup) _refreshContents();
  endChanges();
}

}  // namespace kib
