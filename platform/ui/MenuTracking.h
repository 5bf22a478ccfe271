#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ui/Menu.h"

namespace platform {

// The host's side of an open menu, shared by every frontend: which rows show
// for the modifier keys held, which item a key equivalent chooses, and choosing
// an item.
//
// Alternates: an alternate item belongs to the nearest non-alternate item
// before it when both have the same key equivalent (the usual case: both
// empty). Of such a group exactly one row shows: the first alternate whose
// modifier mask equals the held modifiers, else the group's first item. An
// alternate with no such item before it is an ordinary row.
class MenuTracking {
 public:
  struct Row {
    std::int64_t index;  // in the menu
    MenuItemPtr item;
    bool enabled;
  };

  explicit MenuTracking(MenuPtr menu) : menu_(std::move(menu)) {}

  const MenuPtr& menu() const { return menu_; }

  // The rows shown, top to bottom, while the modifiers are held.
  std::vector<Row> visibleRows(std::uint64_t modifierFlags) const;
  // Whether the item at the index shows while the modifiers are held.
  bool isItemVisible(std::int64_t index, std::uint64_t modifierFlags) const;

  // The enabled item whose key equivalent and modifier mask match exactly
  // (e.g. "\033" with kControlKeyMask), or −1. An empty key matches nothing.
  std::int64_t indexOfItemForKeyEquivalent(const std::string& key, std::uint64_t modifierFlags) const;

  // Performs the item's action through the menu when the item is enabled;
  // answers whether it did. Hosts call it once the menu has closed.
  bool chooseItemAtIndex(std::int64_t index);
  // The same for a key equivalent; answers whether an item was chosen.
  bool chooseItemForKeyEquivalent(const std::string& key, std::uint64_t modifierFlags);

 private:
  // The index of the group head that an alternate at the index belongs to, or −1.
  std::int64_t groupHeadOf(std::int64_t index) const;

  MenuPtr menu_;
};

}  // namespace platform
