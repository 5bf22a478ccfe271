// Batching and resorting, and the resorts that only note what changed.
//
// A resort asked for by an item whose own status changed (a transition that
// ended, a pulse) in a flat list, with nothing else changed since the last
// resort, does not rebuild the displayed array: it records the statuses the
// changed items have now, keeps count of the rows that would be shown, and
// posts. The array is rebuilt when it is read, or before anything it derives
// from changes, from those recorded statuses: exactly the array the last
// resort would have built. The items tell the list before their status moves
// (and their presences and handles before anything else does), so the list
// always knows each item's status as of its last resort.

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/Log.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/Prefetch.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMHandleRegistrar.h"

namespace kib {

namespace {

bool willLog() { return platform::IMWillLog(kKibPeopleListLogCategory); }

}  // namespace

// Batching.

void KibPeopleList::beginChanges() { ++_coalesceCount; }

void KibPeopleList::endChanges() {
  --_coalesceCount;
  if (makingChanges()) return;
  if (_pendingResort) _resortNow();
}

void KibPeopleList::_resort() {
  _nextResortRebuilds = true;
  _resortForItem();
}

void KibPeopleList::_resortForItem() {
  if (_pendingResort) return;
  if (!makingChanges())
    _resortNow();
  else
    _pendingResort = true;
}

void KibPeopleList::_refreshContents() {
  beginChanges();
  _resort();
  endChanges();
}

void KibPeopleList::resort() { _refreshContents(); }

void KibPeopleList::refreshList() { _refreshContents(); }

void KibPeopleList::_postResortNotification() {
  platform::NotificationCenter::defaultCenter().postNotificationName(kKibPeopleListDidUpdateNotification,
                                                                     weak_from_this().lock());
}

// Resorting.

void KibPeopleList::_resortNow() {
  if (canNoteResort())
    noteResort();
  else
    fullResort();
  _pendingResort = false;
}

void KibPeopleList::fullResort() {
  // The rebuild starts from the array the last resort left.
  settleOwedResort();
  _rebuildItems();
  if (!_items.empty()) {
    // Sorted as std::stable_sort with the item comparator sorts them (ties
    // keep the rebuild's order), only faster.
    if (_usesReferenceAlgorithms)
      KibPeopleListSorter::referenceSort(_items, KibSortParameters());
    else
      _sorter.sort(_items, _previousItems, KibSortParameters());
    if (willLog()) platform::IMAlwaysLog("Items after sort: %@", _items);
    _postResortNotification();
  }
  _previousItems.clear();
  recordResortedState();
}

void KibPeopleList::recordResortedState() {
  _nextResortRebuilds = false;
  _resortOwed = false;
  ++_journal;
  ++_resortNumber;
  _changedSinceResort.clear();
  _shownAtLastResort.clear();
  _shownCount = _items.size();
  auto method = _sorter.lastMethod();
  bool sortedFast = _items.empty() || method == KibPeopleListSorter::Method::Full ||
                    method == KibPeopleListSorter::Method::Incremental;
  _resortedFlatAndFast = !_arrangesByGroup && !_inSearchMode && !_usesReferenceAlgorithms && sortedFast;
  _resortedState.collationGeneration = platform::TextServices::collationGeneration();
  _resortedState.nameStyle = platform::IMHandleRegistrar::sharedInstance()->nameStyle();
}

bool KibPeopleList::canNoteResort() {
  return !_nextResortRebuilds && _resortedFlatAndFast && !_arrangesByGroup && !_inSearchMode &&
         !_usesReferenceAlgorithms && _itemsToCleanup.empty() && !willLog() &&
         platform::IMHandleRegistrar::sharedInstance()->nameStyle() == _resortedState.nameStyle &&
         platform::TextServices::refreshCollationLanguage() == _resortedState.collationGeneration;
}

void KibPeopleList::noteResort() {
  // The delegates as a rebuild leaves them: the rows displayed until now lose theirs.
  if (!_resortOwed)
    for (const auto& item : _items) item->setDelegate(nullptr);
  else
    for (const auto& item : _shownAtLastResort) item->setDelegate(nullptr);
  _shownAtLastResort.clear();

  for (const auto& item : _changedSinceResort) {
    auto& cache = item->sortCache();
    bool wasShown = shownWithStatusInGroup(cache.displayedStatus, nullptr);
    cache.displayedStatus = item->effectiveStatus();
    bool isShown = shownWithStatusInGroup(cache.displayedStatus, nullptr);
    if (isShown == wasShown) continue;
    if (isShown) {
      ++_shownCount;
      _shownAtLastResort.push_back(item);
    } else {
      --_shownCount;
    }
  }
  _changedSinceResort.clear();
  ++_resortNumber;
  _resortOwed = true;
  ++_notedResorts;
  if (_shownCount > 0) _postResortNotification();
}

platform::IMPersonStatus KibPeopleList::statusAtLastResort(const KibPeopleListItem& item) const {
  const auto& cache = item.sortCache();
  return cache.journalEpoch == _journal ? cache.displayedStatus : item.effectiveStatus();
}

void KibPeopleList::settleOwedResort() {
  if (!_resortOwed) return;
  _resortOwed = false;
  // No delegates change and nothing is logged here: the resorts that decided
  // this array did that already.
  _previousItems.swap(_items);
  _items.clear();
  for (std::size_t i = 0; i < _peopleListItems.size(); ++i) {
    if (const auto* item = platform::pointeeAhead(_peopleListItems, i, platform::kPrefetchDistance))
      item->prefetchRowState();
    const auto& item = _peopleListItems[i];
    if (shownWithStatusInGroup(statusAtLastResort(*item), nullptr)) _items.push_back(item);
  }
  _resortedState.statusOf = [this](const KibPeopleListItem& item) { return statusAtLastResort(item); };
  _sorter.sortAsEarlier(_items, _previousItems, KibSortParameters(), _resortedState);
  _resortedState.statusOf = nullptr;
  _previousItems.clear();
  closeJournal();
}

void KibPeopleList::closeJournal() {
  // The array now stands for the last resort; the items that changed since
  // keep the statuses they had then, in a journal of their own.
  ++_journal;
  for (const auto& item : _changedSinceResort) item->sortCache().journalEpoch = _journal;
}

const KibPeopleList::Items& KibPeopleList::items() const {
  const_cast<KibPeopleList*>(this)->settleOwedResort();
  return _items;
}

KibPeopleListSorter::Method KibPeopleList::lastSortMethod() const {
  const_cast<KibPeopleList*>(this)->settleOwedResort();
  return _sorter.lastMethod();
}

// Changes on the way.

void KibPeopleList::willChangeDisplayedState() {
  settleOwedResort();
  _nextResortRebuilds = true;
}

void KibPeopleList::objectWillChange(platform::IMDirectlyObservableObject& object) {
  auto* item = dynamic_cast<KibPeopleListItem*>(&object);
  if (item && item->isChangingOnlyItsStatus())
    noteStatusWillChange(*item);
  else
    willChangeDisplayedState();
}

void KibPeopleList::noteStatusWillChange(KibPeopleListItem& item) {
  // Only the flat list's own rows are counted; an emptied row that is still
  // observed has no handle.
  if (_arrangesByGroup || !item.imHandle()) {
    willChangeDisplayedState();
    return;
  }
  auto& cache = item.sortCache();
  if (cache.journalEpoch != _journal) {
    cache.journalEpoch = _journal;
    cache.displayedStatus = item.effectiveStatus();
  }
  if (cache.changedInResort != _resortNumber) {
    cache.changedInResort = _resortNumber;
    _changedSinceResort.push_back(item.copy());
  }
}

}  // namespace kib
