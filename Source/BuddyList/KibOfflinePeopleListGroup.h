#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

#include "Source/BuddyList/KibBuddyListPresence.h"
#include "Source/BuddyList/KibPeopleListGroup.h"

namespace kib {

class KibOfflinePeopleListGroup;
using KibOfflinePeopleListGroupPtr = std::shared_ptr<KibOfflinePeopleListGroup>;

// The Offline group: shows one row per presence (the first member that holds
// it) and hides the presences it was told not to show. The visible rows are
// cached; changes bracketed by beginChanges/endChanges clear the cache once,
// at the outermost endChanges.
class KibOfflinePeopleListGroup : public KibPeopleListGroup {
 public:
  using PresenceSet = std::unordered_set<KibBuddyListPresencePtr>;

  // Named with the main bundle's localization of "Offline".
  static KibOfflinePeopleListGroupPtr init();

  KibOfflinePeopleListGroup() = default;
  ~KibOfflinePeopleListGroup() override;

  // Change batching. The counter is not clamped: a surplus endChanges leaves
  // it negative and the group counts as not changing.
  bool isChanging() const { return _changes > 0; }
  void beginChanges();
  void endChanges();

  void addPeopleListItem(const KibPeopleListItemPtr& item) override;
  void removePeopleListItem(const KibPeopleListItemPtr& item) override;
  // Empties the cached rows (keeping the cache), the ignored presences and the members.
  void removeAllItems() override;

  // Hides the presence's rows from the next rebuild of the cache on.
  void dontShowPresence(const KibBuddyListPresencePtr& presence);
  // Forgets the hidden presences; the cache keeps its rows until it is next cleared.
  void forgetIgnoredPresences();
  // The presences that are not shown (compared by identity).
  const PresenceSet& dontShowMembers() const { return _dontShowMembers; }

  std::vector<KibPeopleListItemPtr> visibleMembers() const override;
  std::size_t numberOfItems() const override;

  std::string className() const override { return "KibOfflinePeopleListGroup"; }

 protected:
  // Drops the cache now, or once the current batch ends.
  void _clearVisibleMembers();

 private:
  mutable std::optional<std::vector<KibPeopleListItemPtr>> _visibleMembers;
  PresenceSet _dontShowMembers;
  std::int32_t _changes = 0;
  bool _pendingClear = false;
};

}  // namespace kib
