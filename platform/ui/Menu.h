#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/core/Object.h"
#include "platform/ui/MenuItem.h"

namespace platform {

class Menu;
using MenuPtr = std::shared_ptr<Menu>;

// An ordered list of menu items. Indexes are signed; −1 means "not found".
// An item belongs to at most one menu at a time.
class Menu final : public Object {
 public:
  static MenuPtr initWithTitle(std::string title);

  explicit Menu(std::string title = "") : title_(std::move(title)) {}
  ~Menu() override;

  const std::string& title() const { return title_; }
  const std::vector<MenuItemPtr>& itemArray() const { return items_; }
  std::int64_t numberOfItems() const { return static_cast<std::int64_t>(items_.size()); }

  void addItem(const MenuItemPtr& item);
  // Answers the new item.
  MenuItemPtr addItemWithTitleActionKeyEquivalent(std::string title, std::string action, std::string keyEquivalent);
  // Index 0…numberOfItems; an index out of range or an item already in a menu
  // is reported through the assertion handler and nothing is inserted.
  void insertItemAtIndex(const MenuItemPtr& item, std::int64_t index);
  void removeItem(const MenuItem* item);
  void removeItemAtIndex(std::int64_t index);
  void removeAllItems();

  // Nil when the index is out of range.
  MenuItemPtr itemAtIndex(std::int64_t index) const;
  // The first item with that title or tag, or nil.
  MenuItemPtr itemWithTitle(const std::string& title) const;
  MenuItemPtr itemWithTag(std::int64_t tag) const;

  std::int64_t indexOfItem(const MenuItem* item) const;
  std::int64_t indexOfItemWithTitle(const std::string& title) const;
  std::int64_t indexOfItemWithTag(std::int64_t tag) const;
  // By equality of the represented objects (two nils match).
  std::int64_t indexOfItemWithRepresentedObject(const Object* object) const;

  // Sends the item's action to its target with the item as argument. An index
  // out of range is reported through the assertion handler and nothing else
  // happens; an item without action, without target or whose target does not
  // know the selector does nothing. An exception escaping the action is logged.
  void performActionForItemAtIndex(std::int64_t index);

  std::string className() const override { return "Menu"; }
  // The item descriptions as a list.
  std::string description() const override;

 private:
  bool isValidIndex(std::int64_t index) const { return index >= 0 && index < numberOfItems(); }

  std::string title_;
  std::vector<MenuItemPtr> items_;
};

}  // namespace platform
