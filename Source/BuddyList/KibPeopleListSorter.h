#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "Source/BuddyList/KibPeopleListItem.h"
#include "Source/BuddyList/KibSortParameters.h"

namespace kib {

class KibPeopleListGroup;

// Sorts the people list's displayed array into exactly the order that
// std::stable_sort with KibPeopleListItem::compareWithKibSortParameters gives,
// for less: the collation keys of every name are made once and kept on the
// handle until the name changes, persons compare by status rank, key bytes and
// handle address without touching a shared_ptr, and comparisons of two
// different groups are asked of the item comparator once per pair of groups.
//
// When the last result was a strict order (no two rows tie) of persons of one
// group, a sort in which only a few rows came, went or changed keeps the
// others where they were and places the changed ones by binary search: with no
// ties the sorted order is unique, so this is the full sort's order too.
class KibPeopleListSorter {
 public:
  using Items = std::vector<KibPeopleListItemPtr>;

  enum class Method { None, Reference, Full, Incremental };

  // A sort of the list as it stood at an earlier moment: the language and
  // name style read then, each item's status then, and no logging.
  struct EarlierState {
    std::uint64_t collationGeneration = 0;
    std::uint32_t nameStyle = 0;
    std::function<platform::IMPersonStatus(const KibPeopleListItem&)> statusOf;
  };

  // items: the rebuilt array, in rebuild order; previous: the array this
  // sorter answered last time (rows may have been taken out of it since).
  void sort(Items& items, const Items& previous, const KibSortParameters& parameters);
  // The same for a state the list recorded earlier; it must have sorted fast then.
  void sortAsEarlier(Items& items, const Items& previous, const KibSortParameters& parameters,
                     const EarlierState& earlier);

  // The item comparator under std::stable_sort, as the list always sorted.
  static void referenceSort(Items& items, const KibSortParameters& parameters);

  // How the last sort was done (for tests).
  Method lastMethod() const { return _lastMethod; }
  // The language generation and name style the last fast sort read.
  std::uint64_t collationGeneration() const { return _collationGeneration; }
  std::uint32_t nameStyle() const { return _nameStyle; }

 private:
  struct KeyBytes {
    std::uint32_t at;
    std::uint32_t size;
  };
  // A key's first sixteen bytes as a big-endian number, zero-padded.
  struct KeyPrefix {
    std::uint64_t high;
    std::uint64_t low;
    auto operator<=>(const KeyPrefix&) const = default;
  };
  // Small, for the merge moves thousands of them many times over.
  struct Entry {
    const KibPeopleListGroup* group;
    // The handle's name keys: their first bytes, so that most comparisons
    // read no key (see keyPrefix), and where the keys are in _keyBytes.
    KeyPrefix firstPrefix;
    KeyPrefix lastPrefix;
    KeyBytes first;
    KeyBytes last;
    const void* handle;
    std::int16_t rank;
    bool isGroup;
    std::uint32_t index;  // of the item in the array being sorted
  };

  // Whether the fast comparison gives the item comparator's answers here.
  static bool canCompareFast(const KibSortParameters& parameters, bool quiet);
  // False, with nothing moved, when a person has no handle: the comparator sorts those.
  bool sortFast(Items& items, const Items& previous);
  void sortByReference(Items& items, const KibSortParameters& parameters);
  static void prefetchRowsAhead(const Items& items, std::size_t index);
  KibPeopleListItem& itemOf(const Entry& entry) const { return *(*_sorting)[entry.index]; }
  // The item's record; the handle is its most available one.
  Entry entryFor(const KibPeopleListItem& item, const platform::IMHandle* handle, std::uint32_t index,
                 bool* keysChanged);
  std::int64_t compare(const Entry& a, const Entry& b);
  int compareKeys(const KeyPrefix& aPrefix, KeyBytes a, const KeyPrefix& bPrefix, KeyBytes b) const;
  static KeyPrefix keyPrefix(const std::string& key);
  KeyBytes keepKey(const std::string& key);
  std::int64_t compareAcrossGroups(const Entry& a, const Entry& b);
  void fullSort(Items& items, bool oneGroupOfPersons);
  bool placeChanged(Items& items, const Items& previous);

  KibSortParameters _parameters;
  const EarlierState* _earlier = nullptr;
  std::uint64_t _collationGeneration = 0;
  std::uint32_t _nameStyle = 0;
  // Kept between sorts so that their memory is reused.
  const Items* _sorting = nullptr;  // the array being sorted, in its order before the sort
  std::vector<Entry> _entries;
  // The name keys of the rows being sorted, side by side: the handles that
  // hold them lie all over the heap, and rows whose prefixes tie are compared
  // here instead of there.
  std::string _keyBytes;
  std::vector<Entry> _placed;
  std::vector<Entry> _mergeBuffer;
  std::vector<std::uint32_t> _changed;
  Items _result;
  std::uint64_t _sortNumber = 0;
  // The last result was a strict order of persons of one group, made by this sorter.
  bool _lastWasStrict = false;
  Method _lastMethod = Method::None;
  std::map<std::tuple<const void*, const void*, const void*>, std::int64_t> _groupOrder;
};

}  // namespace kib
