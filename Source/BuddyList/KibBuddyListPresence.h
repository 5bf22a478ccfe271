#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "Source/BuddyList/KibPresence.h"
#include "platform/im/IMForward.h"

namespace kib {

class KibBuddyListPresence;
using KibBuddyListPresencePtr = std::shared_ptr<KibBuddyListPresence>;

// The presence of one buddy-list entry: only handles that pass its filters
// (service, ID, group names, person) may join. Without a person filter it
// gathers handles of one and the same ID. Two presences stand for the same
// entry when isEqual says so; the filters are set once, at initialisation.
class KibBuddyListPresence : public KibPresence {
 public:
  using GroupNames = std::set<std::string>;

  // A nil filter (nullptr, nullopt) filters nothing.
  static KibBuddyListPresencePtr initWithIMPersonFilterServiceFilterGroupFilters(
      const platform::IMPersonPtr& person, const platform::IMServiceImplPtr& service,
      const std::optional<GroupNames>& groups);
  static KibBuddyListPresencePtr initWithIMPersonFilterServiceFilterGroupFiltersQuiet(
      const platform::IMPersonPtr& person, const platform::IMServiceImplPtr& service,
      const std::optional<GroupNames>& groups, bool quiet);
  static KibBuddyListPresencePtr initWithIMPersonFilterIDFilterServiceFilterGroupFilters(
      const platform::IMPersonPtr& person, const std::optional<std::string>& ID,
      const platform::IMServiceImplPtr& service, const std::optional<GroupNames>& groups);
  static KibBuddyListPresencePtr initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(
      const platform::IMPersonPtr& person, const std::optional<std::string>& ID,
      const platform::IMServiceImplPtr& service, const std::optional<GroupNames>& groups, bool quiet);

  KibBuddyListPresence() = default;
  ~KibBuddyListPresence() override;

  // The filter rules, in order: service (identity), ID, groups, then person;
  // without a person filter only handles with the most available handle's ID.
  bool canAddIMHandle(const platform::IMHandlePtr& handle) const override;

  // Entry identity: same object; else exactly this class, then the handles
  // (one each: the same handle or account siblings; otherwise the handle sets
  // by fastIsEqualToPointerCompareSet), falling back to the person filters,
  // then the group filters.
  bool isEqual(const platform::Object* other) const override;

  // The entry's position in its group: the smallest sortOrderInGroup of the
  // handles for the filter group; 0 without a group name; 0x7FFFFFFF without handles.
  std::uint32_t sortOrder() const;

  // Answers the receiver: the entry is treated as immutable.
  KibBuddyListPresencePtr copy();

  // Filters.
  const platform::IMServiceImplPtr& service() const { return _filterService; }
  void setService(platform::IMServiceImplPtr service) { _filterService = std::move(service); }
  const platform::IMPersonPtr& person() const { return _filterPerson; }
  void setPerson(platform::IMPersonPtr person) { _filterPerson = std::move(person); }
  // The filter group names (not the handle's groups); nil when there is no group filter.
  std::optional<GroupNames> groups() const override { return filters().groups; }
  void setGroups(std::optional<GroupNames> groups);
  // Any one filter group name; "" when there is none.
  std::string group() const;
  void setGroup(std::optional<std::string> group);
  const std::optional<std::string>& IDFilter() const { return filters().ID; }
  void set_IDFilter(std::optional<std::string> ID);
  // The group name when the filter was made with exactly one.
  const std::optional<std::string>& filterSingleGroup() const { return filters().singleGroup; }

  std::string className() const override { return "KibBuddyListPresence"; }

 private:
  // The filters a flat list's presences mostly do without, kept apart so
  // that a presence stays small: a refill makes thousands.
  struct Filters {
    std::optional<GroupNames> groups;
    std::optional<std::string> singleGroup;
    std::optional<std::string> ID;
  };
  const Filters& filters() const;
  Filters& editFilters();

  platform::IMServiceImplPtr _filterService;
  platform::IMPersonPtr _filterPerson;
  std::unique_ptr<Filters> _filters;
};

}  // namespace kib
