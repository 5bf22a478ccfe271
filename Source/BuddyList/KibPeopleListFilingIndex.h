#pragma once

#include <cstddef>
#include <string>
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
// index keeps the items under exactly these keys.
//
// It describes the collection as it was indexed plus what the filing told it
// since (addItem, noteHandleJoined); whoever changes the collection otherwise
// must drop it.
class KibPeopleListFilingIndex {
 public:
  using Items = std::vector<KibPeopleListItemPtr>;

  explicit KibPeopleListFilingIndex(const Items& items);

  // The number of items indexed; a collection of another size has changed behind its back.
  std::size_t size() const { return _items.size(); }
  // An item appended to the collection.
  void addItem(const KibPeopleListItemPtr& item);
  // The handle joined the item's presence.
  void noteHandleJoined(std::size_t position, const platform::IMHandle* handle);

  // The items that hold the handle or might accept it, in collection order,
  // with their positions in the collection.
  struct Candidate {
    std::size_t position;
    KibPeopleListItemPtr item;
  };
  std::vector<Candidate> candidatesFor(const platform::IMHandle& handle) const;

 private:
  static std::string personKey(const platform::IMPerson* person);
  static std::string IDKey(const std::string& ID);

  Items _items;
  std::unordered_map<std::string, std::vector<std::size_t>> _byKey;
  std::unordered_map<const platform::IMHandle*, std::vector<std::size_t>> _byHandle;
  // Items whose presence would take any handle of the right ID: none held yet.
  std::vector<std::size_t> _anyHandle;
};

}  // namespace kib
