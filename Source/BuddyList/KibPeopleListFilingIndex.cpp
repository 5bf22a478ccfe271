#include "Source/BuddyList/KibPeopleListFilingIndex.h"

#include <algorithm>

#include "platform/core/Prefetch.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"

namespace kib {

namespace {

constexpr std::size_t kEnd = static_cast<std::size_t>(-1);

}  // namespace

struct KibPeopleListFilingIndex::Spare {
  std::vector<KibPeopleListItem*> items;
  std::vector<std::size_t> next;
  std::vector<PersonChain> personChains;
  std::vector<std::uint32_t> personSlots;
};

KibPeopleListFilingIndex::Spare& KibPeopleListFilingIndex::spare() {
  thread_local Spare arrays;
  return arrays;
}

KibPeopleListFilingIndex::KibPeopleListFilingIndex(const Items& items) {
  Spare& arrays = spare();
  _items.swap(arrays.items);
  _next.swap(arrays.next);
  _personChains.swap(arrays.personChains);
  _personSlots.swap(arrays.personSlots);
  // The table keeps its size; emptied, it is as good as new.
  std::fill(_personSlots.begin(), _personSlots.end(), 0);
  _items.reserve(items.size());
  _next.reserve(items.size());
  for (const auto& item : items) addItem(item);
}

KibPeopleListFilingIndex::~KibPeopleListFilingIndex() {
  Spare& arrays = spare();
  // The larger arrays are kept; a moved-from index has none.
  if (_items.capacity() <= arrays.items.capacity()) return;
  _items.clear();
  _next.clear();
  _personChains.clear();
  arrays.items.swap(_items);
  arrays.next.swap(_next);
  arrays.personChains.swap(_personChains);
  arrays.personSlots.swap(_personSlots);
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

std::uint32_t& KibPeopleListFilingIndex::personSlot(std::string_view ID, std::size_t hash) {
  const std::size_t mask = _personSlots.size() - 1;
  for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
    std::uint32_t& entry = _personSlots[slot];
    if (entry == 0) return entry;
    const PersonChain& chain = _personChains[entry - 1];
    if (chain.hash == hash && chain.person->uniqueID() == ID) return entry;
  }
}

void KibPeopleListFilingIndex::growPersonSlots() {
  std::vector<std::uint32_t> slots(std::max<std::size_t>(64, _personSlots.size() * 2), 0);
  _personSlots.swap(slots);
  const std::size_t mask = _personSlots.size() - 1;
  for (std::size_t index = 0; index < _personChains.size(); ++index) {
    std::size_t slot = _personChains[index].hash & mask;
    while (_personSlots[slot] != 0) slot = (slot + 1) & mask;
    _personSlots[slot] = static_cast<std::uint32_t>(index + 1);
  }
}

void KibPeopleListFilingIndex::appendPersonID(const platform::IMPersonPtr& person, std::size_t position) {
  const std::string& ID = person->uniqueID();
  const std::size_t hash = StringHash()(ID);
  // At most half full, so probes stay short and always end.
  if (2 * (_personChains.size() + 1) > _personSlots.size()) growPersonSlots();
  std::uint32_t& entry = personSlot(ID, hash);
  if (entry == 0) {
    _personChains.push_back({person, hash, Chain{position, position}});
    entry = static_cast<std::uint32_t>(_personChains.size());
    return;
  }
  Chain& chain = _personChains[entry - 1].chain;
  _next[chain.last] = position;
  chain.last = position;
}

void KibPeopleListFilingIndex::collectPersonID(std::string_view ID) {
  if (_personSlots.empty()) return;
  std::uint32_t entry = personSlot(ID, StringHash()(ID));
  if (entry == 0) return;
  for (std::size_t position = _personChains[entry - 1].chain.first; position != kEnd; position = _next[position])
    _candidates.push_back(position);
}

void KibPeopleListFilingIndex::addItem(const KibPeopleListItemPtr& item) {
  const std::size_t position = _items.size();
  _items.push_back(item.get());
  _next.push_back(kEnd);
  const auto& presence = item ? item->buddyListPresence() : nullptr;
  if (!presence) return;  // filing passes items without a presence by
  // Persons are equal as isEqualToIMPerson says: the same object, or the same non-empty unique ID.
  const platform::IMPerson* person = presence->person().get();
  const auto& best = presence->mostAvailableIMHandle();
  if (person && !person->uniqueID().empty())
    appendPersonID(presence->person(), position);
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

void KibPeopleListFilingIndex::prefetchCandidatesFor(const platform::IMHandle& handle) const {
  const platform::IMPerson* person = handle.person().get();
  if (!person || person->uniqueID().empty() || _personSlots.empty()) return;
  platform::prefetch(&_personSlots[StringHash()(person->uniqueID()) & (_personSlots.size() - 1)]);
}

const std::vector<std::size_t>& KibPeopleListFilingIndex::candidatesFor(const platform::IMHandle& handle) {
  _candidates.assign(_anyHandle.begin(), _anyHandle.end());
  if (const platform::IMPerson* person = handle.person().get()) {
    if (!person->uniqueID().empty())
      collectPersonID(person->uniqueID());
    // Also the same object when its ID is empty.
    if (!_byPersonObject.empty()) collect(_byPersonObject, person);
  }
  if (!_byID.empty()) collect(_byID, std::string_view(handle.ID()));
  if (!_strayHandles.empty()) {
    auto strays = _strayHandles.equal_range(&handle);
    for (auto it = strays.first; it != strays.second; ++it) _candidates.push_back(it->second);
  }
  std::sort(_candidates.begin(), _candidates.end());
  _candidates.erase(std::unique(_candidates.begin(), _candidates.end()), _candidates.end());
  return _candidates;
}

}  // namespace kib
