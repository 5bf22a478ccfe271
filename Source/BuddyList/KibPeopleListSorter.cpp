#include "Source/BuddyList/KibPeopleListSorter.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "Source/BuddyList/KibNotifications.h"
#include "platform/core/Log.h"
#include "platform/core/Prefetch.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMHandleRegistrar.h"

namespace kib {

namespace {

// How many of a key's first bytes an entry keeps (keyPrefix).
constexpr std::uint32_t kPrefixBytes = 16;

// Above this many changed rows a full sort is cheaper than placing each.
constexpr std::size_t kMostRowsToPlace = 64;

bool isListOrder(const KibSortParameters& parameters) {
  return parameters.sortKeys[0] == kKibSortKeyStatus && parameters.sortKeys[1] == kKibSortKeyFirstName &&
         parameters.sortKeys[2] == kKibSortKeyHandle && parameters.currentKey == 0 && !parameters.usesManualOrder;
}

const platform::IMHandle* handleOf(const KibPeopleListItem& item) {
  const auto& presence = item.buddyListPresence();
  return presence ? presence->mostAvailableIMHandle().get() : nullptr;
}

// std::stable_sort's order (any stable sort gives the same), in a buffer
// kept between sorts: std::stable_sort takes a new one every time, and so
// large a block made the heap gather its small free blocks each time.
// Runs sorted by insertion, then merged pairwise (std::merge is stable).
template <class T, class Less>
void stableSortInBuffer(std::vector<T>& items, std::vector<T>& buffer, Less less) {
  constexpr std::size_t kRun = 16;
  const std::size_t count = items.size();
  for (std::size_t start = 0; start < count; start += kRun) {
    const std::size_t end = std::min(start + kRun, count);
    for (std::size_t next = start + 1; next < end; ++next) {
      T moving = items[next];
      std::size_t at = next;
      for (; at > start && less(moving, items[at - 1]); --at) items[at] = items[at - 1];
      items[at] = moving;
    }
  }
  if (count <= kRun) return;
  buffer.resize(count);
  T* from = items.data();
  T* to = buffer.data();
  for (std::size_t width = kRun; width < count; width *= 2) {
    for (std::size_t low = 0; low < count; low += 2 * width) {
      const std::size_t middle = std::min(low + width, count), high = std::min(low + 2 * width, count);
      std::merge(from + low, from + middle, from + middle, from + high, to + low, less);
    }
    std::swap(from, to);
  }
  if (from != items.data()) std::copy(from, from + count, items.data());
}

}  // namespace

void KibPeopleListSorter::referenceSort(Items& items, const KibSortParameters& parameters) {
  auto record = parameters;
  std::stable_sort(items.begin(), items.end(), [&record](const auto& a, const auto& b) {
    return a->compareWithKibSortParameters(*b, &record) < 0;
  });
}

bool KibPeopleListSorter::canCompareFast(const KibSortParameters& parameters, bool quiet) {
  // The group comparison logs; keep its lines as many as they always were.
  return isListOrder(parameters) && (quiet || !platform::IMWillLog(kKibPeopleListLogCategory));
}

void KibPeopleListSorter::sortByReference(Items& items, const KibSortParameters& parameters) {
  referenceSort(items, parameters);
  _lastWasStrict = false;
  _lastMethod = Method::Reference;
}

void KibPeopleListSorter::sort(Items& items, const Items& previous, const KibSortParameters& parameters) {
  if (!canCompareFast(parameters, false)) return sortByReference(items, parameters);
  _parameters = parameters;
  // The language and the name style are read once per sort; the handles' keys follow them.
  _collationGeneration = platform::TextServices::refreshCollationLanguage();
  _nameStyle = platform::IMHandleRegistrar::sharedInstance()->nameStyle();
  if (!sortFast(items, previous)) sortByReference(items, parameters);
}

void KibPeopleListSorter::sortAsEarlier(Items& items, const Items& previous, const KibSortParameters& parameters,
                                        const EarlierState& earlier) {
  if (!canCompareFast(parameters, true)) return sortByReference(items, parameters);
  _parameters = parameters;
  _collationGeneration = earlier.collationGeneration;
  _nameStyle = earlier.nameStyle;
  _earlier = &earlier;
  bool sorted = sortFast(items, previous);
  _earlier = nullptr;
  if (!sorted) sortByReference(items, parameters);
}

bool KibPeopleListSorter::sortFast(Items& items, const Items& previous) {
  _groupOrder.clear();
  _sorting = &items;
  const std::uint64_t lastSort = _sortNumber++;

  _entries.clear();
  _entries.reserve(items.size());
  _keyBytes.clear();
  _changed.clear();
  bool oneGroupOfPersons = true;
  for (std::uint32_t index = 0; index < items.size(); ++index) {
    prefetchRowsAhead(items, index);
    // A person without a handle compares asymmetrically: the comparator sorts then.
    const auto& item = items[index];
    const platform::IMHandle* handle = item ? handleOf(*item) : nullptr;
    if (!item || (!item->isGroup() && !handle)) {
      _sorting = nullptr;
      return false;
    }
    bool keysChanged = false;
    _entries.push_back(entryFor(*item, handle, index, &keysChanged));
    const Entry& entry = _entries.back();
    oneGroupOfPersons = oneGroupOfPersons && !entry.isGroup && entry.group == _entries.front().group;
    auto& cache = items[index]->sortCache();
    cache.seenInSort = _sortNumber;
    cache.indexInSort = index;
    if (cache.placedInSort == lastSort && cache.placedRank == entry.rank && !keysChanged)
      cache.unchangedInSort = _sortNumber;
    else
      _changed.push_back(index);
    // Noted now, while the item is at hand: this sort places every row it sees.
    cache.placedInSort = _sortNumber;
    cache.placedRank = entry.rank;
  }

  bool placed = _lastWasStrict && oneGroupOfPersons && lastSort != 0 && _changed.size() <= kMostRowsToPlace &&
                placeChanged(items, previous);
  if (placed) {
    _lastMethod = Method::Incremental;
  } else {
    fullSort(items, oneGroupOfPersons);
    _lastMethod = Method::Full;
  }
  _sorting = nullptr;
  return true;
}

// A row's item, presence, handle and keys lie all over the heap and each is
// found through the one before: each is asked for some rows before its row is
// read, one level further per step.
void KibPeopleListSorter::prefetchRowsAhead(const Items& items, std::size_t index) {
  constexpr std::size_t step = platform::kPrefetchDistance / 2;
  if (const auto* item = platform::pointeeAhead(items, index, 4 * step)) item->prefetchRowState();
  if (const auto* item = platform::pointeeAhead(items, index, 3 * step))
    platform::prefetch(item->buddyListPresence().get(), sizeof(KibBuddyListPresence));
  if (const auto* item = platform::pointeeAhead(items, index, 2 * step))
    if (const auto* handle = handleOf(*item)) handle->prefetchNameSortKeys();
  if (const auto* item = platform::pointeeAhead(items, index, step))
    if (const auto* handle = handleOf(*item)) handle->prefetchNameSortKeyBytes();
}

KibPeopleListSorter::Entry KibPeopleListSorter::entryFor(const KibPeopleListItem& item, const platform::IMHandle* handle,
                                                         std::uint32_t index, bool* keysChanged) {
  Entry entry{item.peopleListGroup(), {}, {}, {}, {}, nullptr, 0, item.isGroup(), index};
  if (entry.isGroup) return entry;
  entry.handle = handle;
  entry.rank = static_cast<std::int16_t>(
      platform::IMPersonStatusAvailabilityRank(_earlier ? _earlier->statusOf(item) : item.effectiveStatus()));
  const auto& keys = handle->nameSortKeys(_collationGeneration, _nameStyle);
  entry.firstPrefix = keyPrefix(keys.first);
  entry.lastPrefix = keyPrefix(keys.last);
  entry.first = keepKey(keys.first);
  entry.last = keepKey(keys.last);
  auto& cache = item.sortCache();
  if (cache.handle != handle || cache.keysVersion != keys.version) {
    cache.handle = handle;
    cache.keysVersion = keys.version;
    *keysChanged = true;
  }
  return entry;
}

// Two keys whose prefixes differ compare as their prefixes do (a shorter key
// padded with zeros sorts before any longer one that differs from it there);
// equal prefixes say nothing, and the rest of the keys is compared.
KibPeopleListSorter::KeyPrefix KibPeopleListSorter::keyPrefix(const std::string& key) {
  auto half = [&key](std::size_t from) {
    std::uint64_t bytes = 0;
    for (std::size_t i = from; i < from + 8; ++i)
      bytes = (bytes << 8) | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0u);
    return bytes;
  };
  return {half(0), half(8)};
}

// Only what the prefix does not hold is kept: most keys are short.
KibPeopleListSorter::KeyBytes KibPeopleListSorter::keepKey(const std::string& key) {
  KeyBytes kept{static_cast<std::uint32_t>(_keyBytes.size()), static_cast<std::uint32_t>(key.size())};
  if (key.size() > kPrefixBytes) _keyBytes.append(key, kPrefixBytes);
  return kept;
}

int KibPeopleListSorter::compareKeys(const KeyPrefix& aPrefix, KeyBytes a, const KeyPrefix& bPrefix,
                                     KeyBytes b) const {
  if (aPrefix != bPrefix) return aPrefix < bPrefix ? -1 : 1;
  // The first sixteen bytes are equal (a shorter key's missing ones are
  // zeros in the other): the rest decides, then the length, as std::string
  // does. Short keys, the most, need no look at the bytes.
  if (a.size > kPrefixBytes || b.size > kPrefixBytes) {
    auto rest = [this](KeyBytes key) {
      return key.size > kPrefixBytes ? std::string_view(_keyBytes).substr(key.at, key.size - kPrefixBytes)
                                     : std::string_view();
    };
    if (int result = rest(a).compare(rest(b))) return (result > 0) - (result < 0);
  }
  return (a.size > b.size) - (a.size < b.size);
}

std::int64_t KibPeopleListSorter::compare(const Entry& a, const Entry& b) {
  if (a.group != b.group) return compareAcrossGroups(a, b);
  if (a.isGroup) return -1;
  if (b.isGroup) return 1;
  // Status (more available first), first names, last names, handle address.
  if (a.rank != b.rank) return a.rank > b.rank ? -1 : 1;
  if (int first = compareKeys(a.firstPrefix, a.first, b.firstPrefix, b.first)) return first;
  if (int second = compareKeys(a.lastPrefix, a.last, b.lastPrefix, b.last)) return second;
  if (a.handle == b.handle) return 0;
  return std::less<const void*>()(a.handle, b.handle) ? -1 : 1;
}

// Depends only on the two groups and the receiver's delegate (the group order).
std::int64_t KibPeopleListSorter::compareAcrossGroups(const Entry& a, const Entry& b) {
  auto key = std::make_tuple(static_cast<const void*>(a.group), static_cast<const void*>(b.group),
                             static_cast<const void*>(itemOf(a).delegate()));
  auto found = _groupOrder.find(key);
  if (found != _groupOrder.end()) return found->second;
  auto record = _parameters;
  std::int64_t result = itemOf(a).compareWithKibSortParameters(itemOf(b), &record);
  _groupOrder.emplace(key, result);
  return result;
}

void KibPeopleListSorter::fullSort(Items& items, bool oneGroupOfPersons) {
  stableSortInBuffer(_entries, _mergeBuffer, [this](const Entry& a, const Entry& b) { return compare(a, b) < 0; });
  _lastWasStrict = oneGroupOfPersons;
  for (std::size_t i = 1; i < _entries.size() && _lastWasStrict; ++i)
    _lastWasStrict = compare(_entries[i - 1], _entries[i]) != 0;

  _result.clear();
  _result.reserve(items.size());
  for (const auto& entry : _entries) _result.push_back(std::move(items[entry.index]));
  items.swap(_result);
  _result.clear();
}

bool KibPeopleListSorter::placeChanged(Items& items, const Items& previous) {
  // The rows that kept their keys keep their order.
  _placed.clear();
  for (const auto& item : previous) {
    if (!item) continue;
    auto& cache = item->sortCache();
    // Seen now and unchanged, and only once.
    if (cache.seenInSort != _sortNumber || cache.unchangedInSort != _sortNumber) continue;
    cache.unchangedInSort = 0;
    _placed.push_back(_entries[cache.indexInSort]);
  }
  if (_placed.size() + _changed.size() != items.size()) return false;

  for (std::uint32_t index : _changed) {
    const Entry& entry = _entries[index];
    auto at = std::lower_bound(_placed.begin(), _placed.end(), entry,
                               [this](const Entry& a, const Entry& b) { return compare(a, b) < 0; });
    // A tie would make the order depend on the rebuild's: leave it to the full sort.
    if (at != _placed.end() && compare(entry, *at) == 0) return false;
    _placed.insert(at, entry);
  }
  _result.clear();
  _result.reserve(items.size());
  for (const auto& entry : _placed) _result.push_back(std::move(items[entry.index]));
  items.swap(_result);
  _result.clear();
  return true;
}

}  // namespace kib
