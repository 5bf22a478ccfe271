#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "platform/ui/Menu.h"

namespace kibhost {

// The extra's menu as a com.canonical.dbusmenu item tree, free of any bus type
// so that it can be compared and tested on its own.
//
// Every item gets an id when it is first exported and keeps it while an item
// like it (same title, action and tag, in the same order) stays in the
// exported menu, so a menu the extra rebuilds unchanged exports unchanged;
// id 0 is the root. A property map holds only what
// differs from the protocol's defaults. A row with Option-key alternates (a
// person) becomes a submenu: the row's own choice first, then one entry per
// alternate ("Text chat" for the text-only chat), since dbusmenu has no
// modifier-dependent rows. Separators at the ends and in runs are hidden.
class DBusMenuLayout {
 public:
  using Shortcut = std::vector<std::vector<std::string>>;
  using Value = std::variant<std::string, std::int32_t, bool, std::vector<std::uint8_t>, Shortcut>;
  using Properties = std::map<std::string, Value>;
  // PNG bytes of an item's image, empty when it has none worth sending.
  using IconEncoder = std::function<std::vector<std::uint8_t>(const platform::ImagePtr& image)>;

  struct Entry {
    std::int32_t id = 0;
    std::int32_t parent = -1;
    Properties properties;
    std::vector<std::int32_t> children;
    // The menu index chosen when the entry is clicked; −1 for headings, submenus and the root.
    std::int64_t menuIndex = -1;
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  static constexpr const char* kTextChatLabel = "Text chat";

  explicit DBusMenuLayout(IconEncoder icons);

  // What a rebuild changed: the tree itself (LayoutUpdated), or only
  // properties of items that stayed (ItemsPropertiesUpdated).
  struct Changes {
    bool layout = false;
    std::map<std::int32_t, Properties> updated;                // new or changed values
    std::map<std::int32_t, std::vector<std::string>> removed;  // names back at their defaults
    bool any() const { return layout || !updated.empty() || !removed.empty(); }
  };

  // Exports the menu (nil: an empty root). Items still in it keep their ids.
  // The revision moves exactly when something changed.
  Changes rebuild(const platform::MenuPtr& menu);

  const platform::MenuPtr& menu() const { return menu_; }
  std::uint32_t revision() const { return revision_; }
  // Nil for an id that is not (or no longer) exported.
  const Entry* entry(std::int32_t id) const;
  // Ids in tree order, the root first.
  std::vector<std::int32_t> ids() const;

  // Property values of dbusmenu's text form, shared by the adaptor and tests.
  static std::string labelFor(const std::string& title);  // "_" doubles: dbusmenu reads it as a mnemonic
  static Shortcut shortcutFor(const std::string& keyEquivalent, std::uint64_t modifierMask);

 private:
  // Title, action, tag, role (0 the item, −1 its submenu, n its nth alternate) and how many like it came before.
  using ItemKey = std::tuple<std::string, std::string, std::int64_t, int, int>;

  std::int32_t idFor(const platform::MenuItemPtr& item, int role);
  Properties propertiesOf(const platform::MenuItem& item) const;
  std::int32_t addEntry(std::map<std::int32_t, Entry>& entries, std::int32_t parent, const platform::MenuItemPtr& item,
                        int role, Properties properties, std::int64_t menuIndex);
  void addPersonSubmenu(std::map<std::int32_t, Entry>& entries, std::int64_t head, std::int64_t end);
  std::vector<bool> hiddenSeparators() const;
  Changes compare(const std::map<std::int32_t, Entry>& old, const std::map<std::int32_t, Entry>& now) const;

  IconEncoder icons_;
  platform::MenuPtr menu_;
  std::map<std::int32_t, Entry> entries_;
  std::map<ItemKey, std::int32_t> itemIds_;
  std::map<ItemKey, std::int32_t> nextItemIds_;
  std::map<ItemKey, int> occurrences_;
  std::int32_t nextId_ = 1;
  std::uint32_t revision_ = 1;
};

}  // namespace kibhost
