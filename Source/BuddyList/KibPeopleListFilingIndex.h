#pragma once

#include <cstddef>
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

  // The number of items indexed; a collection of another size has changed behind its back.
  std::size_t size() const { return _items.size(); }
  // An item appended to the collection.
  void addItem(const KibPeopleListItemPtr& item);

  // The positions of the items that hold the handle or might accept it, in
  // collection order; valid until the next call.
  const std::vector<std::size_t>& candidatesFor(const platform::IMHandle& handle);
  const KibPeopleListItemPtr& item(std::size_t position) const { return _items[position]; }

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

  Items _items;
  std::vector<std::size_t> _next;
  std::unordered_map<std::string, Chain, StringHash, std::equal_to<>> _byPersonID;
  std::unordered_map<const platform::IMPerson*, Chain> _byPersonObject;
  std::unordered_map<std::string, Chain, StringHash, std::equal_to<>> _byID;
  // Handles held by an item whose key they do not fit.
  std::unordered_multimap<const platform::IMHandle*, std::size_t> _strayHandles;
  // Items whose presence would take any handle: none held yet.
  std::vector<std::size_t> _anyHandle;
  std::vector<std::size_t> _candidates;
};

}  // namespace kib
