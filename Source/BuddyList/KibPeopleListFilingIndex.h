#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Source/BuddyList/KibPeopleListItem.h"
#include "platform/im/IMForward.h"

namespace kib {

// Which items of one collection (a group's members or the flat list) a
// handle could join, so that filing offers a handle only to those instead of
// to every item. An item's presence takes a handle only when it already holds
// it, when its person filter is the handle's person, or, without a person
// filter, when its handles have the handle's ID (or it has none yet); the
// index keeps the items under exactly these keys. A held handle that no
// longer fits its item's key (its person changed since) is kept by itself.
//
// It describes the collection as it was indexed plus what the filing told it
// since (addItem); whoever changes the collection otherwise
// must drop it.
class KibPeopleListFilingIndex {
 public:
  using Items = std::vector<KibPeopleListItemPtr>;

  explicit KibPeopleListFilingIndex(const Items& items);
  // Hands its arrays, emptied, to the next index: a refill indexes thousands
  // of items, and growing fresh arrays every time cost more than the indexing.
  ~KibPeopleListFilingIndex();
  KibPeopleListFilingIndex(KibPeopleListFilingIndex&&) = default;
  KibPeopleListFilingIndex& operator=(KibPeopleListFilingIndex&&) = default;

  // The number of items indexed; a collection of another size has changed behind its back.
  std::size_t size() const { return _items.size(); }
  // An item appended to the collection.
  void addItem(const KibPeopleListItemPtr& item);

  // The positions of the items that hold the handle or might accept it, in
  // collection order; valid until the next call.
  const std::vector<std::size_t>& candidatesFor(const platform::IMHandle& handle);
  // Starts loading where candidatesFor will look for the handle's person.
  void prefetchCandidatesFor(const platform::IMHandle& handle) const;
  KibPeopleListItemPtr item(std::size_t position) const {
    KibPeopleListItem* item = _items[position];
    return item ? std::static_pointer_cast<KibPeopleListItem>(item->shared_from_this()) : nullptr;
  }

 private:
  struct StringHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  // The positions under one key, first to last, chained through _next.
  struct Chain {
    std::size_t first;
    std::size_t last;
  };
  template <class Map, class Key>
  void append(Map& map, const Key& key, std::size_t position);
  template <class Map, class Key>
  void collect(const Map& map, const Key& key);

  // Persons by unique ID in an open-addressed table: no node per person. The
  // chain keeps its person, whose ID never changes, and compares against it.
  struct PersonChain {
    platform::IMPersonPtr person;
    std::size_t hash;
    Chain chain;
  };
  void appendPersonID(const platform::IMPersonPtr& person, std::size_t position);
  void collectPersonID(std::string_view ID);
  // The slot that holds the ID's chain, or the empty slot where it would go.
  std::uint32_t& personSlot(std::string_view ID, std::size_t hash);
  void growPersonSlots();
  // The emptied arrays of the last index dropped on this thread.
  struct Spare;
  static Spare& spare();

  // Not owned: the collection holds them, and an index lives only while the
  // collection changes through the filing. Holding them cost a write to
  // every item when the index went, long after the item was last read.
  std::vector<KibPeopleListItem*> _items;
  std::vector<std::size_t> _next;
  std::vector<PersonChain> _personChains;
  std::vector<std::uint32_t> _personSlots;  // 1 + index into _personChains; 0 is empty
  std::unordered_map<const platform::IMPerson*, Chain> _byPersonObject;
  std::unordered_map<std::string, Chain, StringHash, std::equal_to<>> _byID;
  // Handles held by an item whose key they do not fit.
  std::unordered_multimap<const platform::IMHandle*, std::size_t> _strayHandles;
  // Items whose presence would take any handle: none held yet.
  std::vector<std::size_t> _anyHandle;
  std::vector<std::size_t> _candidates;
};

}  // namespace kib
