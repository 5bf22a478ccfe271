// Rebuilding the displayed array: which items are shown, the Offline group's
// fresh rows, and the search.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/Log.h"
#include "platform/core/Prefetch.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMHandleRegistrar.h"
#include "platform/im/IMService.h"

namespace kib {

namespace {

using platform::IMPersonStatusIsOnline;
using platform::TextServices;

// Case, diacritics and width are all ignored.
constexpr unsigned kSearchOptions =
    platform::kCaseInsensitiveSearch | platform::kDiacriticInsensitiveSearch | platform::kWidthInsensitiveSearch;
static_assert(kSearchOptions == 385);

// An account without it keeps its offline buddies out of searches.
constexpr std::uint64_t kSearchableWhileOfflineCapability = 32768;

bool willLog() { return platform::IMWillLog(kKibPeopleListLogCategory); }

// The texts a search term is looked for in, in the order they are tried;
// each is folded the first time a term reaches it, and the item keeps both
// until what they were read from changes.
class SearchFields {
 public:
  SearchFields(const KibPeopleListItem& item, const KibBuddyListPresence* presence, bool keep)
      : cache_(item.searchCache()) {
    KibItemSearchCache::Stamp stamp = stampOf(item, presence);
    if (keep && cache_.valid && cache_.stamp == stamp) return;
    cache_.stamp = std::move(stamp);
    cache_.texts.clear();
    cache_.folded.clear();
    auto& texts = cache_.texts;
    if (presence)
      texts = {presence->displayName(), presence->statusMessage(), presence->nameOfStatus(),
               presence->firstName(),   presence->lastName(),      presence->fullName()};
    texts.push_back(item.group());
    if (presence)
      for (const auto& handle : presence->imHandles()) addHandle(*handle);
    std::erase_if(texts, [](const std::string& text) { return text.empty(); });
    cache_.valid = true;
  }

  bool contain(const std::string& foldedTerm) {
    auto& folded = cache_.folded;
    for (std::size_t index = 0; index < cache_.texts.size(); ++index) {
      if (index == folded.size()) folded.push_back(TextServices::fold(cache_.texts[index], kSearchOptions));
      if (TextServices::containsFolded(folded[index], foldedTerm)) return true;
    }
    return false;
  }

 private:
  static KibItemSearchCache::Stamp stampOf(const KibPeopleListItem& item, const KibBuddyListPresence* presence) {
    KibItemSearchCache::Stamp stamp;
    if (presence) {
      for (const auto& handle : presence->imHandles()) stamp.handles.emplace_back(handle.get(), handle->nameRevision());
      if (const auto& best = presence->mostAvailableIMHandle()) {
        stamp.best = best.get();
        stamp.status = best->status();
        stamp.statusMessage = best->statusMessage();
      }
    }
    stamp.nameStyle = platform::IMHandleRegistrar::sharedInstance()->nameStyle();
    stamp.group = item.group();
    return stamp;
  }

  // A local-network buddy is found by neither its ID, nickname nor unique name.
  void addHandle(const platform::IMHandle& handle) {
    auto& texts = cache_.texts;
    auto service = handle.service();
    if (service != platform::IMService::subnetService()) {
      texts.push_back(handle.ID());
      texts.push_back(handle.nickname());
      texts.push_back(handle.uniqueName());
    }
    if (service) texts.push_back(service->name());
    for (const auto& email : handle.emails()) texts.push_back(email);
    for (const auto& [serviceName, ID] : handle.otherServiceIDs()) texts.push_back(ID);
  }

  KibItemSearchCache& cache_;
};

}  // namespace

void KibPeopleList::_rebuildItems() {
  if (willLog()) platform::IMAlwaysLog("Rebuild Items");
  for (const auto& item : _items) item->setDelegate(nullptr);
  // Kept for the sorter, which moves only what changed since.
  // Swapped, not moved: the new array reuses the old one's memory.
  _previousItems.swap(_items);
  _items.clear();
  _itemsToCleanup.clear();

  if (_arrangesByGroup)
    rebuildGroupedItems();
  else
    rebuildFlatItems();

  if (willLog()) platform::IMAlwaysLog("Items after rebuild: %@", _items);
}

void KibPeopleList::rebuildFlatItems() {
  // Shown flat items keep no delegate. The sort reads the items and their
  // presences next: both are asked for some items ahead.
  constexpr std::size_t ahead = platform::kPrefetchDistance;
  for (std::size_t i = 0; i < _peopleListItems.size(); ++i) {
    if (const auto* item = platform::pointeeAhead(_peopleListItems, i, 2 * ahead)) item->prefetchRowState();
    if (const auto* item = platform::pointeeAhead(_peopleListItems, i, ahead))
      platform::prefetch(item->buddyListPresence().get(), sizeof(KibBuddyListPresence));
    const auto& item = _peopleListItems[i];
    if (_peopleListItemShouldBeShownInGroup(item, nullptr) && (!_inSearchMode || _allowPeopleListItemInCurrentSearch(item)))
      _items.push_back(item);
  }
}

void KibPeopleList::rebuildGroupedItems() {
  const bool offlinePass = !_inSearchMode && usesOfflineGroup() && _offlineGroup;
  if (offlinePass) {
    _offlineGroup->beginChanges();
    for (const auto& item : _offlineGroup->members()) _unobservePeopleListItem(item);
    _offlineGroup->removeAllItems();
    _offlineGroup->forgetIgnoredPresences();
  }

  Groups groups = _smartGroups;
  groups.insert(groups.end(), _peopleListGroups.begin(), _peopleListGroups.end());
  if (willLog()) {
    platform::IMAlwaysLog("***** ALL GROUPS *****");
    for (const auto& group : groups) platform::IMAlwaysLog("* %@", group->name());
    platform::IMAlwaysLog("**********************");
  }

  for (const auto& group : groups) {
    const auto& header = group->peopleListItem();
    if (header) {
      header->setDelegate(this);
      _items.push_back(header);
    }
    // In search mode a group none of whose members match goes away with its header.
    bool dropHeader = _inSearchMode;
    for (const auto& item : group->visibleMembers()) {
      if (_inSearchMode && !_allowPeopleListItemInCurrentSearch(item)) continue;
      item->setDelegate(this);
      bool countsOnline = false;
      if (offlinePass && IMPersonStatusIsOnline(item->effectiveStatus())) {
        // Online here, so not to be shown as offline elsewhere.
        _offlineGroup->dontShowPresence(item->buddyListPresence());
        countsOnline = true;
      }
      dropHeader = false;
      if (_peopleListItemShouldBeShownInGroup(item, group.get())) {
        _items.push_back(item);
        continue;
      }
      if (offlinePass && !countsOnline && _peopleListItemShouldBeInGroup(item, _offlineGroup.get()) &&
          group->supportsOfflineMembers())
        fileOfflineCopyOf(item);
    }
    if (dropHeader && header) {
      _unobservePeopleListItem(_items.back());
      _items.pop_back();
    }
  }

  if (!offlinePass) return;
  _offlineGroup->endChanges();
  auto offlineMembers = _offlineGroup->visibleMembers();
  // The Offline header comes whenever anything at all is displayed.
  if (_items.empty() && offlineMembers.empty()) return;
  if (const auto& header = _offlineGroup->peopleListItem()) {
    header->setDelegate(this);
    _items.push_back(header);
  }
  for (const auto& item : offlineMembers)
    if (_peopleListItemShouldBeShownInGroup(item, _offlineGroup.get()) &&
        (!_inSearchMode || _allowPeopleListItemInCurrentSearch(item)))
      _items.push_back(item);
}

// A row of its own in the Offline group, made afresh on every rebuild.
void KibPeopleList::fileOfflineCopyOf(const KibPeopleListItemPtr& item) {
  const auto& original = item->buddyListPresence();
  auto presence = KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(
      original ? original->person() : nullptr, std::nullopt, nullptr, std::nullopt, false);
  if (original)
    for (const auto& handle : original->imHandles()) presence->addIMHandle(handle);
  auto copy = newPersonItem(presence, _offlineGroup.get());
  _offlineGroup->addPeopleListItem(copy);
  copy->setDelegate(this);
  _observePeopleListItem(copy);
}

// Visibility.

bool KibPeopleList::_peopleListItemShouldBeShownInGroup(const KibPeopleListItemPtr& item,
                                                        const KibPeopleListGroup* group) const {
  return shownWithStatusInGroup(item->effectiveStatus(), group);
}

bool KibPeopleList::shownWithStatusInGroup(platform::IMPersonStatus status, const KibPeopleListGroup* group) const {
  if (!group && _arrangesByGroup) return false;
  // Search mode bypasses every filter, collapsed groups included.
  if (_inSearchMode) return true;
  if (group && !group->isExpanded()) return false;
  if (status == platform::kIMPersonStatusOffline && _hideOfflinePeople) return false;
  if (status == platform::kIMPersonStatusAway && _hideAwayPeople) return false;
  if (status == platform::kIMPersonStatusIdle && _hideIdlePeople) return false;
  if (status == platform::kIMPersonStatusUnknown && _hideUnknownPeople) return false;
  if (status == platform::kIMPersonStatusNoStatus && _hideNoStatusPeople) return false;
  bool online = IMPersonStatusIsOnline(status);
  if (_isOfflineGroup(group)) return !online;
  if (online) return true;
  // Offline people are shown only in the Offline group when there is one.
  if (usesOfflineGroup()) return false;
  return !_hideOfflinePeople;
}

bool KibPeopleList::_peopleListItemShouldBeInGroup(const KibPeopleListItemPtr& item,
                                                   const KibPeopleListGroup* group) const {
  if (!group && _arrangesByGroup) return false;
  bool online = IMPersonStatusIsOnline(item->effectiveStatus());
  if (_isOfflineGroup(group)) return !online;
  if (online) return true;
  return !_hideOfflinePeople;
}

// Search.

bool KibPeopleList::_allowPeopleListItemInCurrentSearch(const KibPeopleListItemPtr& item) const {
  if (!_inSearchMode) return true;
  const KibBuddyListPresence* presence = item->buddyListPresence().get();
  if (presence && !IMPersonStatusIsOnline(presence->status()) && presence->numberOfIMHandles() == 1) {
    const auto& handles = presence->imHandles();
    // A pending authorization request is always worth finding.
    if (presence->status() == platform::kIMPersonStatusUnknown &&
        std::any_of(handles.begin(), handles.end(), [](const auto& h) { return h->authRequestStatus() != 0; }))
      return true;
    auto account = handles.front()->account();
    if (!account || !account->hasCapability(kSearchableWhileOfflineCapability)) return false;
  }

  const auto& terms = foldedSearchTerms();
  if (terms.empty()) return false;
  std::optional<SearchFields> fields;
  for (const auto& term : terms) {
    if (!term) continue;  // a blank part matches by itself
    if (!fields) fields.emplace(*item, presence, !_usesReferenceAlgorithms);
    if (!fields->contain(*term)) return false;
  }
  return true;
}

// The search text's parts, trimmed and folded (none for a blank part), made
// once per text rather than once per item.
const std::vector<std::optional<std::string>>& KibPeopleList::foldedSearchTerms() const {
  const std::string text = _searchString ? _searchString->value() : std::string();
  if (!_usesReferenceAlgorithms && _foldedSearchTermsValid && _foldedSearchTermsText == text)
    return _foldedSearchTerms;
  _foldedSearchTerms.clear();
  for (const auto& part : TextServices::componentsSeparatedByWhitespace(text)) {
    auto trimmed = TextServices::trimWhitespace(part);
    if (trimmed.empty())
      _foldedSearchTerms.emplace_back(std::nullopt);
    else
      _foldedSearchTerms.emplace_back(TextServices::fold(trimmed, kSearchOptions));
  }
  _foldedSearchTermsText = text;
  _foldedSearchTermsValid = true;
  return _foldedSearchTerms;
}

void KibPeopleList::setSearchString(const platform::StringPtr& searchString) {
  if (searchString == _searchString) return;
  willChangeDisplayedState();
  _searchString = searchString;
  if (!searchString || TextServices::trimWhitespace(searchString->value()).empty())
    endSearchMode();
  else
    _inSearchMode = true;
}

void KibPeopleList::endSearchMode() {
  if (!_inSearchMode) return;
  willChangeDisplayedState();
  _inSearchMode = false;
}

}  // namespace kib
