#include "Source/BuddyList/KibPeopleListGroup.h"

#include <algorithm>

#include "platform/core/Bundle.h"
#include "platform/core/Format.h"
#include "platform/core/Number.h"
#include "platform/core/String.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPersonStatus.h"

namespace kib {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

// A property value read as the platform's one-byte boolean: intValue, truncated to a byte.
bool byteBoolean(const platform::ObjectPtr& value) {
  auto intValue = static_cast<std::int32_t>(platform::integerValue(value.get()));
  return static_cast<signed char>(intValue) != 0;
}

}  // namespace

KibPeopleListGroupPtr KibPeopleListGroup::init() { return std::make_shared<KibPeopleListGroup>(); }

KibPeopleListGroup::KibPeopleListGroup() {
  {
    Lock lock(_lock);
    _members.clear();
  }
  resetAbilities();
  setProperties(nullptr);
  _supportsOfflineMembers = true;
}

KibPeopleListGroup::~KibPeopleListGroup() {
  KibPeopleListItem::clearAllWeakGroupReferencesTo(this);
  setProperties(nullptr);
  setLocalizableName(std::nullopt);
  {
    Lock lock(_lock);
    _members.clear();
  }
  _name.clear();
  _item.reset();
}

void KibPeopleListGroup::resetAbilities() {
  _maxMembers = kNoMemberLimit;
  _supportsReordering = true;
  _supportsMemberReordering = true;
  _supportsRename = true;
  _supportsAdding = true;
  _supportsRemoving = true;
}

void KibPeopleListGroup::setProperties(const platform::DictionaryPtr& properties) {
  {
    Lock lock(_lock);
    if (properties == _properties) return;
    _properties = properties;
  }
  // supportsOfflineMembers is not one of the properties and keeps its value.
  resetAbilities();
  setLocalizableName(std::nullopt);  // nil properties drop the name as well
  if (properties) applyProperties(*properties);
}

void KibPeopleListGroup::applyProperties(const platform::Dictionary& properties) {
  struct Ability {
    const char* key;
    bool KibPeopleListGroup::*field;
  };
  static const Ability abilities[] = {
      {platform::kKBGroupSupportsAdd, &KibPeopleListGroup::_supportsAdding},
      {platform::kKBGroupSupportsRemove, &KibPeopleListGroup::_supportsRemoving},
      {platform::kKBGroupSupportsReorder, &KibPeopleListGroup::_supportsReordering},
      {platform::kKBGroupSupportsRename, &KibPeopleListGroup::_supportsRename},
      {platform::kKBGroupSupportsMemberReorder, &KibPeopleListGroup::_supportsMemberReordering},
  };
  for (const auto& ability : abilities)
    if (auto value = properties.objectForKey(ability.key)) this->*ability.field = byteBoolean(value);
  if (auto value = properties.objectForKey(platform::kKBGroupMaxMembers)) {
    auto maxMembers = static_cast<std::int32_t>(platform::integerValue(value.get()));
    if (maxMembers > 0) _maxMembers = maxMembers;
  }

  auto key = platform::asString(properties.objectForKey(platform::kKBGroupLocalizableKey));
  if (key && !key->empty())
    setLocalizableName(platform::Bundle::mainBundle().localizedStringForKey(key->value(), "", ""));
}

platform::DictionaryPtr KibPeopleListGroup::properties() const {
  Lock lock(_lock);
  return _properties;
}

std::vector<KibPeopleListItemPtr> KibPeopleListGroup::members() const {
  Lock lock(_lock);
  return _members;
}

std::size_t KibPeopleListGroup::numberOfMembers() const {
  Lock lock(_lock);
  return _members.size();
}

std::vector<KibPeopleListItemPtr> KibPeopleListGroup::visibleMembers() const { return members(); }

std::size_t KibPeopleListGroup::numberOfItems() const { return members().size(); }

std::size_t KibPeopleListGroup::numberOfOnlineItems() const {
  auto items = members();
  return static_cast<std::size_t>(std::count_if(items.begin(), items.end(), [](const KibPeopleListItemPtr& item) {
    return platform::IMPersonStatusIsOnline(item->effectiveStatus());
  }));
}

std::size_t KibPeopleListGroup::actualNumberOfOnlineItems() const {
  auto items = members();
  return static_cast<std::size_t>(std::count_if(items.begin(), items.end(), [](const KibPeopleListItemPtr& item) {
    return platform::IMPersonStatusIsOnline(item->currentStatus());
  }));
}

void KibPeopleListGroup::addPeopleListItem(const KibPeopleListItemPtr& item) {
  if (!item) return;
  Lock lock(_lock);
  if (std::find(_members.begin(), _members.end(), item) == _members.end()) _members.push_back(item);
}

void KibPeopleListGroup::removePeopleListItem(const KibPeopleListItemPtr& item) {
  // The argument may be one of the members themselves.
  KibPeopleListItemPtr held = item;
  Lock lock(_lock);
  _members.erase(std::remove(_members.begin(), _members.end(), held), _members.end());
}

void KibPeopleListGroup::removeAllItems() {
  std::vector<KibPeopleListItemPtr> released;
  {
    Lock lock(_lock);
    released.swap(_members);
  }
}

std::string KibPeopleListGroup::displayName() const { return _localizableName ? *_localizableName : _name; }

bool KibPeopleListGroup::shouldContainIMHandle(const platform::IMHandlePtr& handle) const {
  if (!handle) return false;
  const auto& names = handle->groupsArray();
  return std::find(names.begin(), names.end(), _name) != names.end();
}

bool KibPeopleListGroup::shouldConsumeIMHandle(const platform::IMHandlePtr&) const { return false; }

KibHandleFilter KibPeopleListGroup::filterForIMHandle(const platform::IMHandlePtr&) const {
  return KibHandleFilter{true, true, true, true};
}

std::string KibPeopleListGroup::description() const {
  return platform::format("%@ [%d members]: {%@}", _name, numberOfItems(), members());
}

}  // namespace kib
