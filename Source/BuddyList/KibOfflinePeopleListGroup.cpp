#include "Source/BuddyList/KibOfflinePeopleListGroup.h"

#include <unordered_set>

#include "platform/core/Bundle.h"

namespace kib {

KibOfflinePeopleListGroupPtr KibOfflinePeopleListGroup::init() {
  auto group = std::make_shared<KibOfflinePeopleListGroup>();
  group->setName(platform::Bundle::mainBundle().localizedStringForKey("Offline", "", ""));
  return group;
}

KibOfflinePeopleListGroup::~KibOfflinePeopleListGroup() {
  _dontShowMembers.clear();
  _visibleMembers.reset();
}

void KibOfflinePeopleListGroup::beginChanges() {
  if (!isChanging()) _pendingClear = false;
  ++_changes;
}

void KibOfflinePeopleListGroup::endChanges() {
  --_changes;
  if (_changes == 0 && _pendingClear) _clearVisibleMembers();
}

void KibOfflinePeopleListGroup::_clearVisibleMembers() {
  if (isChanging()) {
    _pendingClear = true;
    return;
  }
  _visibleMembers.reset();
}

void KibOfflinePeopleListGroup::addPeopleListItem(const KibPeopleListItemPtr& item) {
  _clearVisibleMembers();
  KibPeopleListGroup::addPeopleListItem(item);
}

void KibOfflinePeopleListGroup::removePeopleListItem(const KibPeopleListItemPtr& item) {
  _clearVisibleMembers();
  KibPeopleListGroup::removePeopleListItem(item);
}

void KibOfflinePeopleListGroup::removeAllItems() {
  if (_visibleMembers) _visibleMembers->clear();
  _dontShowMembers.clear();
  KibPeopleListGroup::removeAllItems();
}

void KibOfflinePeopleListGroup::dontShowPresence(const KibBuddyListPresencePtr& presence) {
  _clearVisibleMembers();
  if (presence) _dontShowMembers.insert(presence);
}

void KibOfflinePeopleListGroup::forgetIgnoredPresences() { _dontShowMembers.clear(); }

std::vector<KibPeopleListItemPtr> KibOfflinePeopleListGroup::visibleMembers() const {
  if (_visibleMembers) return *_visibleMembers;
  _visibleMembers.emplace();
  std::unordered_set<const KibBuddyListPresence*> taken;
  for (const auto& item : members()) {
    const auto* presence = item->buddyListPresence().get();
    bool firstForPresence = taken.insert(presence).second;
    bool hidden = _dontShowMembers.count(item->buddyListPresence()) != 0;
    if (firstForPresence && !hidden) _visibleMembers->push_back(item);
  }
  return *_visibleMembers;
}

std::size_t KibOfflinePeopleListGroup::numberOfItems() const { return visibleMembers().size(); }

}  // namespace kib
