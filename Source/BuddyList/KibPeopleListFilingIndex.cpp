#include "Source/BuddyList/KibPeopleListFilingIndex.h"

#include <algorithm>

#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"

namespace kib {

namespace {

constexpr std::size_t kEnd = static_cast<std::size_t>(-1);

}  // namespace

KibPeopleListFilingIndex::KibPeopleListFilingIndex(const Items& items) {
  _items.reserve(items.size());
  _next.reserve(items.size());
  for (const auto& item : items) addItem(item);
}

template <class Map, class Key>
void KibPeopleListFilingIndex::append(Map& map, const Key& key, std::size_t position) {
  auto found = map.find(key);
  if (found == map.end()) {
    map.emplace(key, Chain{position, position});
    return;
  }
  _next[found->second.last] = position;
  found->second.last = position;
}

template <class Map, class Key>
void KibPeopleListFilingIndex::collect(const Map& map, const Key& key) {
  auto found = map.find(key);
  if (found == map.end()) return;
  for (std::size_t position = found->second.first; position != kEnd; position = _next[position])
    _candidates.push_back(position);
}

void KibPeopleListFilingIndex::addItem(const KibPeopleListItemPtr& item) {
  const std::size_t position = _items.size();
  _items.push_back(item);
  _next.push_back(kEnd);
  const auto& presence = item ? item->buddyListPresence() : nullptr;
  if (!presence) return;  // filing passes items without a presence by
  // Persons are equal as isEqualToIMPerson says: the same object, or the same non-empty unique ID.
  const platform::IMPerson* person = presence->person().get();
  const auto& best = presence->mostAvailableIMHandle();
  if (person && !person->uniqueID().empty())
    append(_byPersonID, person->uniqueID(), position);
  else if (person)
    append(_byPersonObject, person, position);
  else if (best)
    append(_byID, best->ID(), position);
  else
    _anyHandle.push_back(position);
  for (const auto& handle : presence->imHandles()) {
    bool fits = person ? person->isEqualToIMPerson(handle->person()) : (best && handle->ID() == best->ID());
    if (!fits) _strayHandles.emplace(handle.get(), position);
  }
}

// A handle that joins an item fits its key; an empty presence that took one
// stays among the items that take any handle, a harmless superset.

const std::vector<std::size_t>& KibPeopleListFilingIndex::candidatesFor(const platform::IMHandle& handle) {
  _candidates.assign(_anyHandle.begin(), _anyHandle.end());
  if (const platform::IMPerson* person = handle.person().get()) {
    if (!person->uniqueID().empty())
      collect(_byPersonID, std::string_view(person->uniqueID()));
    // Also the same object when its ID is empty.
    collect(_byPersonObject, person);
  }
  collect(_byID, std::string_view(handle.ID()));
  auto strays = _strayHandles.equal_range(&handle);
  for (auto it = strays.first; it != strays.second; ++it) _candidates.push_back(it->second);
  std::sort(_candidates.begin(), _candidates.end());
  _candidates.erase(std::unique(_candidates.begin(), _candidates.end()), _candidates.end());
  return _candidates;
}

}  // namespace kib
