#include "Source/BuddyList/KibPeopleListFilingIndex.h"

#include <algorithm>
#include <cstdio>

#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"

namespace kib {

KibPeopleListFilingIndex::KibPeopleListFilingIndex(const Items& items) {
  _items.reserve(items.size());
  for (const auto& item : items) addItem(item);
}

// Persons are equal as isEqualToIMPerson says: the same object, or the same
// non-empty unique ID.
std::string KibPeopleListFilingIndex::personKey(const platform::IMPerson* person) {
  if (!person->uniqueID().empty()) return "p" + person->uniqueID();
  char address[32];
  std::snprintf(address, sizeof address, "o%p", static_cast<const void*>(person));
  return address;
}

std::string KibPeopleListFilingIndex::IDKey(const std::string& ID) { return "i" + ID; }

void KibPeopleListFilingIndex::addItem(const KibPeopleListItemPtr& item) {
  std::size_t position = _items.size();
  _items.push_back(item);
  const auto& presence = item ? item->buddyListPresence() : nullptr;
  if (!presence) return;  // filing passes items without a presence by
  for (const auto& handle : presence->imHandles()) _byHandle[handle.get()].push_back(position);
  if (const auto& person = presence->person()) {
    _byKey[personKey(person.get())].push_back(position);
  } else if (const auto& best = presence->mostAvailableIMHandle()) {
    // Every handle it took had the most available handle's ID.
    _byKey[IDKey(best->ID())].push_back(position);
  } else {
    _anyHandle.push_back(position);
  }
}

void KibPeopleListFilingIndex::noteHandleJoined(std::size_t position, const platform::IMHandle* handle) {
  auto& positions = _byHandle[handle];
  if (std::find(positions.begin(), positions.end(), position) == positions.end()) positions.push_back(position);
  // An empty presence that took a handle now wants that handle's ID only; a
  // superset of candidates is harmless, so it may stay where it is.
}

std::vector<KibPeopleListFilingIndex::Candidate> KibPeopleListFilingIndex::candidatesFor(
    const platform::IMHandle& handle) const {
  std::vector<std::size_t> positions = _anyHandle;
  auto take = [&](const auto& map, const auto& key) {
    auto found = map.find(key);
    if (found != map.end()) positions.insert(positions.end(), found->second.begin(), found->second.end());
  };
  take(_byHandle, &handle);
  if (const auto& person = handle.person()) take(_byKey, personKey(person.get()));
  take(_byKey, IDKey(handle.ID()));
  std::sort(positions.begin(), positions.end());
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
  std::vector<Candidate> candidates;
  candidates.reserve(positions.size());
  for (std::size_t position : positions) candidates.push_back({position, _items[position]});
  return candidates;
}

}  // namespace kib
