#include "Source/BuddyList/KibBuddyListPresence.h"

#include <algorithm>
#include <typeinfo>

#include "platform/core/RecyclingAllocator.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"

namespace kib {

using platform::IMHandlePtr;

KibBuddyListPresencePtr KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(
    const platform::IMPersonPtr& person, const platform::IMServiceImplPtr& service,
    const std::optional<GroupNames>& groups) {
  return initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(person, std::nullopt, service, groups, false);
}

KibBuddyListPresencePtr KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFiltersQuiet(
    const platform::IMPersonPtr& person, const platform::IMServiceImplPtr& service,
    const std::optional<GroupNames>& groups, bool quiet) {
  return initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(person, std::nullopt, service, groups, quiet);
}

KibBuddyListPresencePtr KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFilters(
    const platform::IMPersonPtr& person, const std::optional<std::string>& ID,
    const platform::IMServiceImplPtr& service, const std::optional<GroupNames>& groups) {
  return initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(person, ID, service, groups, false);
}

KibBuddyListPresencePtr KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(
    const platform::IMPersonPtr& person, const std::optional<std::string>& ID,
    const platform::IMServiceImplPtr& service, const std::optional<GroupNames>& groups, bool quiet) {
  // Made and dropped by the thousand with every refill of a list.
  auto presence = std::allocate_shared<KibBuddyListPresence>(platform::RecyclingAllocator<KibBuddyListPresence>());
  presence->setIsQuiet(quiet);
  presence->_filterService = service;
  presence->_filterPerson = person;
  if (groups || ID) {
    auto& filters = presence->editFilters();
    filters.groups = groups;
    filters.ID = ID;
    if (groups && groups->size() == 1) filters.singleGroup = *groups->begin();
  }
  return presence;
}

KibBuddyListPresence::~KibBuddyListPresence() {
  _filters.reset();
  _filterPerson.reset();
  _filterService.reset();
}

const KibBuddyListPresence::Filters& KibBuddyListPresence::filters() const {
  static const Filters none;
  return _filters ? *_filters : none;
}

KibBuddyListPresence::Filters& KibBuddyListPresence::editFilters() {
  if (!_filters) _filters = std::make_unique<Filters>();
  return *_filters;
}

void KibBuddyListPresence::setGroups(std::optional<GroupNames> groups) {
  if (groups || _filters) editFilters().groups = std::move(groups);
}

void KibBuddyListPresence::setGroup(std::optional<std::string> group) {
  if (group || _filters) editFilters().singleGroup = std::move(group);
}

void KibBuddyListPresence::set_IDFilter(std::optional<std::string> ID) {
  if (ID || _filters) editFilters().ID = std::move(ID);
}

bool KibBuddyListPresence::canAddIMHandle(const IMHandlePtr& handle) const {
  if (!handle) return false;
  if (_filterService && handle->service() != _filterService) return false;
  const Filters& filter = filters();
  if (filter.ID && *filter.ID != handle->ID()) return false;
  if (filter.groups) {
    if (filter.singleGroup) {
      const auto& names = handle->groupsArray();
      if (std::find(names.begin(), names.end(), *filter.singleGroup) == names.end()) return false;
    } else {
      auto handleGroups = handle->groups();
      bool intersects = std::any_of(filter.groups->begin(), filter.groups->end(),
                                    [&](const std::string& name) { return handleGroups.count(name) != 0; });
      if (!intersects) return false;
    }
  }
  if (_filterPerson) return _filterPerson->isEqualToIMPerson(handle->person());
  const auto& best = mostAvailableIMHandle();
  return !best || handle->ID() == best->ID();
}

namespace {

bool groupSetsMatch(const std::optional<std::set<std::string>>& a, const std::optional<std::set<std::string>>& b) {
  if (!a || !b || a->empty() || b->empty()) return true;
  if (a->size() != b->size()) return false;
  return *a == *b;
}

}  // namespace

bool KibBuddyListPresence::isEqual(const platform::Object* other) const {
  if (other == this) return true;
  if (!other || typeid(*other) != typeid(KibBuddyListPresence)) return false;
  const auto& that = static_cast<const KibBuddyListPresence&>(*other);
  const auto& mine = imHandles();
  const auto& theirs = that.imHandles();
  if (&mine == &theirs) return true;

  bool sameHandle = false;
  bool handlesMatch;
  if (theirs.size() == 1 && mine.size() == 1) {
    sameHandle = mine.front() == theirs.front();
    handlesMatch = sameHandle || mine.front()->isAccountSiblingOf(theirs.front());
  } else {
    handlesMatch = fastIsEqualToPointerCompareSet(imHandleSet(), that.imHandleSet());
  }
  if (!handlesMatch) {
    if (!_filterPerson) return false;
    return _filterPerson->isEqualToIMPerson(that._filterPerson);
  }

  const Filters &mineFilters = filters(), &theirFilters = that.filters();
  if (mineFilters.singleGroup && theirFilters.singleGroup) return *mineFilters.singleGroup == *theirFilters.singleGroup;
  return groupSetsMatch(mineFilters.groups, theirFilters.groups);
}

std::uint32_t KibBuddyListPresence::sortOrder() const {
  const auto& handles = imHandles();
  // An entry without handles sorts last.
  if (handles.empty()) return 0x7FFFFFFF;
  auto name = group();
  if (name.empty()) return 0;
  std::uint32_t smallest = handles.front()->sortOrderInGroup(name);
  for (const auto& handle : handles) smallest = std::min(smallest, handle->sortOrderInGroup(name));
  return smallest;
}

KibBuddyListPresencePtr KibBuddyListPresence::copy() {
  return std::static_pointer_cast<KibBuddyListPresence>(shared_from_this());
}

std::string KibBuddyListPresence::group() const {
  const auto& groups = filters().groups;
  if (!groups || groups->empty()) return "";
  return *groups->begin();
}

}  // namespace kib
