#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Source/BuddyList/KibHandleFilter.h"
#include "Source/BuddyList/KibPeopleListItem.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Object.h"
#include "platform/im/IMForward.h"

namespace kib {

class KibPeopleListGroup;
using KibPeopleListGroupPtr = std::shared_ptr<KibPeopleListGroup>;

// A heading of the people list with its member items (no duplicates, by
// identity) and its abilities, which come from a properties dictionary keyed
// by the platform's kKBGroup… constants. The members and the properties are
// guarded by a recursive lock; everything else belongs to the main thread.
// The group owns its members and its header item.
class KibPeopleListGroup : public platform::Object {
 public:
  static constexpr std::int32_t kNoMemberLimit = 0x7FFFFFFF;

  static KibPeopleListGroupPtr init();

  KibPeopleListGroup();
  ~KibPeopleListGroup() override;

  // Resets the abilities (all but supportsOfflineMembers) and applies the
  // keys present; the same dictionary object again changes nothing.
  void setProperties(const platform::DictionaryPtr& properties);
  platform::DictionaryPtr properties() const;

  // Members.
  // A snapshot of the members, in order.
  std::vector<KibPeopleListItemPtr> members() const;
  // members().size(), without the snapshot.
  std::size_t numberOfMembers() const;
  virtual std::vector<KibPeopleListItemPtr> visibleMembers() const;
  virtual std::size_t numberOfItems() const;
  // Members whose effectiveStatus is online (one fading out after going offline counts).
  std::size_t numberOfOnlineItems() const;
  // Members whose currentStatus is online.
  std::size_t actualNumberOfOnlineItems() const;
  virtual void addPeopleListItem(const KibPeopleListItemPtr& item);
  virtual void removePeopleListItem(const KibPeopleListItemPtr& item);
  virtual void removeAllItems();

  // Handles.
  // Whether the handle's groupsArray names this group.
  virtual bool shouldContainIMHandle(const platform::IMHandlePtr& handle) const;
  // Whether no later group may take the handle.
  virtual bool shouldConsumeIMHandle(const platform::IMHandlePtr& handle) const;
  virtual KibHandleFilter filterForIMHandle(const platform::IMHandlePtr& handle) const;

  // Names.
  const std::string& name() const { return _name; }
  void setName(std::string name) { _name = std::move(name); }
  const std::optional<std::string>& localizableName() const { return _localizableName; }
  void setLocalizableName(std::optional<std::string> name) { _localizableName = std::move(name); }
  // The localized name when there is one, else the name.
  std::string displayName() const;

  // The header item.
  const KibPeopleListItemPtr& peopleListItem() const { return _item; }
  void setPeopleListItem(KibPeopleListItemPtr item) { _item = std::move(item); }

  // Abilities.
  bool isExpanded() const { return _expanded; }
  void setExpanded(bool expanded) { _expanded = expanded; }
  std::int32_t maxMembers() const { return _maxMembers; }
  void setMaxMembers(std::int32_t maxMembers) { _maxMembers = maxMembers; }
  bool supportsReordering() const { return _supportsReordering; }
  void setSupportsReordering(bool value) { _supportsReordering = value; }
  bool supportsMemberReordering() const { return _supportsMemberReordering; }
  void setSupportsMemberReordering(bool value) { _supportsMemberReordering = value; }
  bool supportsRename() const { return _supportsRename; }
  void setSupportsRename(bool value) { _supportsRename = value; }
  bool supportsAdding() const { return _supportsAdding; }
  void setSupportsAdding(bool value) { _supportsAdding = value; }
  bool supportsRemoving() const { return _supportsRemoving; }
  void setSupportsRemoving(bool value) { _supportsRemoving = value; }
  bool supportsOfflineMembers() const { return _supportsOfflineMembers; }
  void setSupportsOfflineMembers(bool value) { _supportsOfflineMembers = value; }

  std::string className() const override { return "KibPeopleListGroup"; }
  std::string description() const override;

 private:
  void resetAbilities();
  void applyProperties(const platform::Dictionary& properties);

  mutable std::recursive_mutex _lock;
  platform::DictionaryPtr _properties;
  std::optional<std::string> _localizableName;
  KibPeopleListItemPtr _item;
  bool _expanded = false;
  std::string _name;
  std::vector<KibPeopleListItemPtr> _members;
  std::int32_t _maxMembers = kNoMemberLimit;
  bool _supportsReordering = true;
  bool _supportsMemberReordering = true;
  bool _supportsRename = true;
  bool _supportsAdding = true;
  bool _supportsRemoving = true;
  bool _supportsOfflineMembers = true;
};

}  // namespace kib
