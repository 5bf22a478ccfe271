#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "Source/BuddyList/KibBuddyListPresence.h"
#include "Source/BuddyList/KibOfflinePeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListFilingIndex.h"
#include "Source/BuddyList/KibPeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListItem.h"
#include "Source/BuddyList/KibPeopleListItemDelegate.h"
#include "Source/BuddyList/KibPeopleListSorter.h"
#include "Source/BuddyList/KibServicePeopleListGroup.h"
#include "Source/BuddyList/KibSortParameters.h"
#include "platform/core/Array.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Notification.h"
#include "platform/core/String.h"
#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMDirectlyObservableObjectObserver.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace kib {

class KibPeopleList;
using KibPeopleListPtr = std::shared_ptr<KibPeopleList>;

// The class a list makes its items from: answers a new item of that class, not
// yet initialised; the list then initialises it as a person or as a header.
using KibPeopleListItemClass = KibPeopleListItemPtr (*)();

// A run of the displayed array.
struct KibItemRange {
  std::uint64_t location = 0;
  std::uint64_t length = 0;
};

// The model behind a list of people. It files IMHandles into people-list
// items, either in one flat list or in groups (ordinary buddy-list groups,
// smart groups such as the local-network service's Ambrel group, and the
// Offline group, whose rows are made afresh on every rebuild), and keeps one
// displayed array, items(): headers and the members that pass the display
// options and the current search, sorted by the item comparator.
//
// Changes are batched: beginChanges/endChanges nest, and a resort asked for
// inside a batch runs once, synchronously, at the outermost endChanges. A
// resort that leaves items() non-empty posts kKibPeopleListDidUpdateNotification
// on the default centre; an empty result posts nothing. The list observes its
// items, forwards every item notification to its own direct observers and
// resorts on the sorting, group-change and sort-order ones.
//
// When all that changed since the last resort is the status of a few items of
// a flat list (a transition ending, say), a resort only notes their statuses,
// counts the rows shown and posts; the displayed array is rebuilt once, when
// it is next read (or before anything else changes), exactly as the last of
// those resorts would have left it. The items, presences and handles tell the
// list before they change (objectWillChange), which is what makes that safe.
//
// The list is its items' delegate: person items may always run their status
// transitions (see peopleListItemCanTransitionToStatus).
class KibPeopleList : public platform::IMDirectlyObservableObject,
                      public platform::IMDirectlyObservableObjectObserver,
                      public KibPeopleListItemDelegate {
  PLATFORM_SELECTORS(KibPeopleList, platform::IMDirectlyObservableObject)

 public:
  using GroupNames = std::set<std::string>;
  using Items = std::vector<KibPeopleListItemPtr>;
  using Groups = std::vector<KibPeopleListGroupPtr>;
  using Handles = std::vector<platform::IMHandlePtr>;

  // What _indexOfGroupStartingAtIndex answers when there is no such header.
  static constexpr std::uint64_t kNotFound = 0x7FFFFFFFFFFFFFFF;

  // A flat list that shows everybody.
  static KibPeopleListPtr init();

  KibPeopleList();
  ~KibPeopleList() override;

  // Options.
  bool allowsSearching() const { return _allowsSearching; }
  void setAllowsSearching(bool allows) { _allowsSearching = allows; }
  // With substitution an item gathers every handle of one person; without it,
  // one buddy on one service.
  bool allowsIMHandleSubstitution() const { return _allowsIMHandleSubstitution; }
  void setAllowsIMHandleSubstitution(bool allows) { _allowsIMHandleSubstitution = allows; }
  KibPeopleListItemClass customPeopleListItemClass() const { return _customPeopleListItemClass; }
  void setCustomPeopleListItemClass(KibPeopleListItemClass itemClass) { _customPeopleListItemClass = itemClass; }
  // The custom class, else KibPeopleListItem.
  KibPeopleListItemClass peopleListItemClass() const;
  // Group name -> properties, for the groups added from now on.
  const platform::DictionaryPtr& groupProperties() const { return _groupProperties; }
  void setGroupProperties(const platform::DictionaryPtr& properties);
  // The user-defaults key of the collapsed groups' names; none: nothing is stored.
  const std::optional<std::string>& collapsedGroupsPrefKey() const { return _collapsedGroupsPrefKey; }
  void setCollapsedGroupsPrefKey(std::optional<std::string> key) { _collapsedGroupsPrefKey = std::move(key); }

  bool arrangesByGroup() const { return _arrangesByGroup; }
  // Empties the Offline group and refreshes; filed items stay where they are.
  void setArrangesByGroup(bool arranges);
  // In effect only when arranged by group and offline people are shown.
  bool usesOfflineGroup() const { return _arrangesByGroup && _usesOfflineGroup && !_hideOfflinePeople; }
  void setUsesOfflineGroup(bool uses);
  bool usesAmbrelGroup() const { return _usesAmbrelGroup; }
  void setUsesAmbrelGroup(bool uses);

  bool showsOfflinePeople() const { return !_hideOfflinePeople; }
  bool showsIdlePeople() const { return !_hideIdlePeople; }
  bool showsAwayPeople() const { return !_hideAwayPeople; }
  bool showsUnknownPeople() const { return !_hideUnknownPeople; }
  bool showsNoStatusPeople() const { return !_hideNoStatusPeople; }
  void setShowsOfflinePeople(bool shows);
  void setShowsIdlePeople(bool shows);
  void setShowsAwayPeople(bool shows);
  void setShowsUnknownPeople(bool shows);
  void setShowsNoStatusPeople(bool shows);

  // Change batching. The counter is not clamped: a surplus endChanges leaves
  // it negative, and batches then resort at once until it is above zero again.
  bool makingChanges() const { return _coalesceCount > 0; }
  void beginChanges();
  void endChanges();
  void resort();
  void refreshList();

  // The sort record: status, then first name, then handle; no manual order.
  kib::KibSortParameters KibSortParameters() const;

  // The collections.
  // The displayed array as the last resort left it. (Logically const: it may
  // finish the rebuild that resort decided on.)
  const Items& items() const;
  // How the last rebuild of the displayed array sorted (for tests of the fast paths).
  KibPeopleListSorter::Method lastSortMethod() const;
  // How many resorts so far only noted changed statuses (for tests of the fast paths).
  std::uint64_t numberOfNotedResorts() const { return _notedResorts; }
  // Files, searches and sorts the straightforward way (every item asked, every
  // text folded anew, the item comparator alone): the reference that tests
  // hold the fast paths to.
  void setUsesReferenceAlgorithms(bool uses) { _usesReferenceAlgorithms = uses; }
  // The flat list.
  const Items& peopleListItems() const { return _peopleListItems; }
  // The ordinary groups, in the order they were added.
  const Groups& peopleListGroups() const { return _peopleListGroups; }
  const KibOfflinePeopleListGroupPtr& offlineGroup() const { return _offlineGroup; }
  const KibServicePeopleListGroupPtr& ambrelGroup() const { return _ambrelGroup; }
  bool _isOfflineGroup(const KibPeopleListGroup* group) const;
  bool _isAmbrelGroup(const KibPeopleListGroup* group) const;

  // Search. A search string that is not blank puts the list in search mode;
  // neither call rebuilds: the caller refreshes when it wants the result.
  const platform::StringPtr& searchString() const { return _searchString; }
  void setSearchString(const platform::StringPtr& searchString);
  bool inSearchMode() const { return _inSearchMode; }
  // Leaves search mode, keeping the text.
  void endSearchMode();

  // Filing handles.
  void addIMHandle(const platform::IMHandlePtr& handle);
  void addPeopleFromArray(const Handles& handles);
  // With skipMe the user's own login handles are left out.
  void addPeopleFromArraySkipMe(const Handles& handles, bool skipMe);
  void removeIMHandle(const platform::IMHandlePtr& handle);
  void removeIMHandleFromGroup(const platform::IMHandlePtr& handle, const std::string& groupName);
  // None or an empty set: every group. The flat list is always treated.
  void removeIMHandleFromGroups(const platform::IMHandlePtr& handle, const std::optional<GroupNames>& groupNames);
  void removeAllIMHandles();
  // Empties the flat list, the ordinary groups and the Offline group, and with
  // alsoGroups drops the ordinary groups; the smart groups keep their items.
  void removeAllIMHandlesAndGroups(bool alsoGroups);
  // Files the handle again into the ordinary groups its groupsArray names
  // (never into the flat list or a smart group), reusing the items it empties.
  void repopulateIMHandle(const platform::IMHandlePtr& handle);
  // The displayed group new handles should go to; none when not arranged by group.
  std::optional<std::string> groupForNewIMHandles() const;

  // Groups. Operations on a list that is not arranged by group are reported
  // to the assertion handler and then carried out all the same.
  // The wanted groups in display order: adds the missing ones, drops the others.
  void setGroups(const platform::ArrayPtr& groupNames);
  void addGroup(const std::optional<std::string>& name);
  // Takes the group's rows out of items() at once, without a resort.
  void removeGroup(const std::optional<std::string>& name);
  KibPeopleListGroupPtr groupWithName(const std::string& name) const;
  // Whether a header of that name (ignoring case) is displayed.
  bool containsGroup(const std::string& name) const;
  // Stores the names of the displayed collapsed groups (and of the special
  // groups when collapsed) under collapsedGroupsPrefKey; call it after
  // expanding or collapsing a group.
  void _updateGroupPreferences();

  // Queries.
  // Every handle of every filed item (flat list, or the ordinary groups), once each.
  Handles allIMHandles() const;
  std::uint64_t numberOfIMHandles() const;
  // Identity, not equality.
  bool containsIMHandle(const platform::IMHandle* handle) const;
  bool containsIMHandle(const platform::IMHandlePtr& handle) const { return containsIMHandle(handle.get()); }
  // None unless arranged by group and an ordinary group has exactly that name.
  std::optional<Handles> peopleInGroup(const std::string& groupName) const;
  // One representative handle per member, in member order.
  std::optional<Handles> representedPeopleInGroup(const std::string& groupName) const;

  // KibPeopleListItemDelegate. Person items may always fade in and out: flat
  // lists leave their displayed items without a delegate, and such items
  // transition anyway, so answering yes keeps grouped and flat lists alike.
  bool peopleListItemCanTransitionToStatus(KibPeopleListItem* item, platform::IMPersonStatus status) override;
  // The order given to setGroups; nil before the first call.
  platform::ArrayPtr peopleListGroupSortOrder() override { return _groupsOrdering; }

  // Item notifications: forwarded to the list's observers first, then
  // dispatched through the two tables below.
  void objectDidPostDirectNotification(const platform::NotificationPtr& notification) override;
  // An item about to change (KibPeopleListResort.cpp).
  void objectWillChange(platform::IMDirectlyObservableObject& item) override;
  static const std::vector<std::string>& _notificationNames();
  static const std::vector<std::string>& _notificationSelectors();

  std::string className() const override { return "KibPeopleList"; }

 protected:
  // Resorting (KibPeopleListResort.cpp).
  void _resort();
  // A resort asked for by an item of the list, about the item alone.
  void _resortForItem();
  void _resortNow();
  void _refreshContents();
  void _postResortNotification();

  // Item observation.
  void _observePeopleListItem(const KibPeopleListItemPtr& item);
  void _unobservePeopleListItem(const KibPeopleListItemPtr& item);

  // Item notification handlers, by selector; each resorts.
  void _peopleListItemNeedsSorting(const platform::ObjectPtr& notification);
  void _peopleListItemNeedsGroupChange(const platform::ObjectPtr& notification);
  void _peopleListItemSortOrderChangedNotification(const platform::ObjectPtr& notification);

  // Filing (KibPeopleListFiling.cpp). A null collection is the flat list.
  bool _addIMHandleToCollectionUsingOrphanItems(const platform::IMHandlePtr& handle, KibPeopleListGroup* collection,
                                               Items* orphans);
  void _removeIMHandleFromPeopleListGroup(const platform::IMHandlePtr& handle, KibPeopleListGroup* group);
  // The item when taking the handle out left it empty, else null.
  KibPeopleListItemPtr _removeIMHandleFromPeopleListItem(const platform::IMHandlePtr& handle,
                                                         const KibPeopleListItemPtr& item);
  void _repopulateIMHandleFilterGroups(const platform::IMHandlePtr& handle, bool filterGroups);
  void _addGroup(const std::string& name);
  void _removeGroup(const std::string& name);
  // None matches any header.
  std::uint64_t _indexOfGroupStartingAtIndex(const std::optional<std::string>& name, std::int32_t start) const;
  KibItemRange _rangeOfGroupAndItemsStartingAtIndex(const std::string& name, std::uint32_t start) const;

  // Rebuilding and search (KibPeopleListRebuild.cpp).
  void _rebuildItems();
  bool _peopleListItemShouldBeShownInGroup(const KibPeopleListItemPtr& item, const KibPeopleListGroup* group) const;
  // The same for an item of that status.
  bool shownWithStatusInGroup(platform::IMPersonStatus status, const KibPeopleListGroup* group) const;
  bool _peopleListItemShouldBeInGroup(const KibPeopleListItemPtr& item, const KibPeopleListGroup* group) const;
  bool _allowPeopleListItemInCurrentSearch(const KibPeopleListItemPtr& item) const;

 private:
  KibPeopleListItemPtr newPersonItem(const KibBuddyListPresencePtr& presence, KibPeopleListGroup* group) const;
  KibPeopleListItemPtr newGroupHeader(KibPeopleListGroup* group);
  KibBuddyListPresencePtr newPresenceForIMHandle(const platform::IMHandlePtr& handle,
                                                 const KibPeopleListGroup* group) const;
  // Whether a new group starts expanded; the Offline and Ambrel groups start
  // collapsed when a key is set but nothing is stored under it.
  bool startsExpanded(const std::string& groupName, bool specialGroup) const;
  void setShowsStatus(bool& hideField, bool shows);
  void rebuildGroupedItems();
  void rebuildFlatItems();
  void fileOfflineCopyOf(const KibPeopleListItemPtr& item);

  // Resorts that only note changed statuses (KibPeopleListResort.cpp).
  bool canNoteResort();
  void noteResort();
  void fullResort();
  // The state the displayed array now shows, recorded after a full resort.
  void recordResortedState();
  // Rebuilds the displayed array the noted resorts owe, as the last of them saw the list.
  void settleOwedResort();
  // Ends the statuses recorded at the last resort, once the array stands for it.
  void closeJournal();
  // Call before changing anything the displayed array derives from.
  void willChangeDisplayedState();
  void noteStatusWillChange(KibPeopleListItem& item);
  platform::IMPersonStatus statusAtLastResort(const KibPeopleListItem& item) const;

  // Filing passes (addIMHandle, addPeopleFromArray) index their collections
  // for as long as the outermost pass runs; nothing else may use the indexes.
  class FilingPass {
   public:
    explicit FilingPass(KibPeopleList& list);
    ~FilingPass();
    FilingPass(const FilingPass&) = delete;
    FilingPass& operator=(const FilingPass&) = delete;

   private:
    KibPeopleList& _list;
  };
  // The collection's index during a filing pass; null outside one.
  KibPeopleListFilingIndex* filingIndexFor(KibPeopleListGroup* collection);
  void noteFiledItem(KibPeopleListGroup* collection, const KibPeopleListItemPtr& item);
  void dropFilingIndexes();
  const std::vector<std::optional<std::string>>& foldedSearchTerms() const;

  KibPeopleListItemClass _customPeopleListItemClass = nullptr;
  platform::DictionaryPtr _groupProperties;
  Items _peopleListItems;
  Groups _peopleListGroups;
  Groups _smartGroups;
  std::optional<std::string> _collapsedGroupsPrefKey;
  platform::StringPtr _searchString;
  platform::ArrayPtr _groupsOrdering;
  KibServicePeopleListGroupPtr _ambrelGroup;
  // Groups the list let go of while their headers may still be displayed;
  // kept alive until the next rebuild.
  Groups _itemsToCleanup;
  bool _allowsIMHandleSubstitution = true;
  bool _hideOfflinePeople = false;
  bool _hideAwayPeople = false;
  bool _hideIdlePeople = false;
  bool _hideUnknownPeople = false;
  bool _hideNoStatusPeople = false;
  bool _usesOfflineGroup = false;
  bool _usesAmbrelGroup = false;
  bool _arrangesByGroup = false;
  bool _allowsSearching = false;
  bool _inSearchMode = false;
  Items _items;
  // The displayed array of the last resort while the next one is sorted.
  Items _previousItems;
  KibPeopleListSorter _sorter;
  KibOfflinePeopleListGroupPtr _offlineGroup;
  bool _allowsGroupOrdering = false;  // kept; nothing reads it
  bool _pendingResort = false;
  std::int64_t _coalesceCount = 0;

  // Noted resorts. The next resort rebuilds when anything but an item's own
  // status changed since the last one.
  bool _nextResortRebuilds = true;
  // Noted resorts whose displayed array is not built yet.
  bool _resortOwed = false;
  // The last full resort was of a flat list, sorted fast.
  bool _resortedFlatAndFast = false;
  // Items noted in this journal keep sortCache().displayedStatus.
  std::uint64_t _journal = 1;
  std::uint64_t _resortNumber = 1;
  std::size_t _shownCount = 0;
  std::uint64_t _notedResorts = 0;
  Items _changedSinceResort;
  // Rows that came into view at the last noted resort; the next one takes their delegate.
  Items _shownAtLastResort;
  KibPeopleListSorter::EarlierState _resortedState;

  mutable std::vector<std::optional<std::string>> _foldedSearchTerms;
  mutable std::string _foldedSearchTermsText;
  mutable bool _foldedSearchTermsValid = false;

  bool _usesReferenceAlgorithms = false;
  int _filingPasses = 0;
  std::unordered_map<const KibPeopleListGroup*, KibPeopleListFilingIndex> _filingIndexes;
};

}  // namespace kib
