#include "host/panel/DBusMenuLayout.h"

#include "platform/ui/KeyModifiers.h"

namespace kibhost {
namespace {

constexpr std::int32_t kRootId = 0;
constexpr const char* kTextChatAction = "textMessagePerson:";
constexpr const char* kServiceChoiceAction = "switchService:";

std::string keyName(const std::string& key) {
  if (key == "\033") return "Escape";
  if (key == "\r" || key == "\n") return "Return";
  if (key == "\t") return "Tab";
  if (key == " ") return "space";
  if (key == "\x7f" || key == "\b") return "BackSpace";
  return key;
}

}  // namespace

DBusMenuLayout::DBusMenuLayout(IconEncoder icons) : icons_(std::move(icons)) {
  Entry root;
  root.id = kRootId;
  root.properties["children-display"] = std::string("submenu");
  entries_[kRootId] = root;
}

std::string DBusMenuLayout::labelFor(const std::string& title) {
  std::string label;
  label.reserve(title.size());
  for (char c : title) {
    label += c;
    if (c == '_') label += '_';
  }
  return label;
}

DBusMenuLayout::Shortcut DBusMenuLayout::shortcutFor(const std::string& keyEquivalent, std::uint64_t modifierMask) {
  if (keyEquivalent.empty()) return {};
  std::vector<std::string> keys;
  if (modifierMask & platform::kControlKeyMask) keys.push_back("Control");
  if (modifierMask & platform::kAlternateKeyMask) keys.push_back("Alt");
  if (modifierMask & platform::kShiftKeyMask) keys.push_back("Shift");
  if (modifierMask & platform::kCommandKeyMask) keys.push_back("Super");
  keys.push_back(keyName(keyEquivalent));
  return {keys};
}

const DBusMenuLayout::Entry* DBusMenuLayout::entry(std::int32_t id) const {
  auto found = entries_.find(id);
  return found == entries_.end() ? nullptr : &found->second;
}

std::vector<std::int32_t> DBusMenuLayout::ids() const {
  std::vector<std::int32_t> order;
  std::vector<std::int32_t> pending{kRootId};
  while (!pending.empty()) {
    const std::int32_t id = pending.back();
    pending.pop_back();
    order.push_back(id);
    const auto& children = entries_.at(id).children;
    pending.insert(pending.end(), children.rbegin(), children.rend());
  }
  return order;
}

std::int32_t DBusMenuLayout::idFor(const platform::MenuItemPtr& item, int role) {
  ItemKey key{item->title(), item->action(), item->tag(), role, 0};
  std::get<4>(key) = occurrences_[key]++;
  auto known = itemIds_.find(key);
  const std::int32_t id = known != itemIds_.end() ? known->second : nextId_++;
  nextItemIds_[key] = id;
  return id;
}

DBusMenuLayout::Properties DBusMenuLayout::propertiesOf(const platform::MenuItem& item) const {
  Properties properties;
  if (item.isSeparatorItem()) {
    properties["type"] = std::string("separator");
    return properties;
  }
  properties["label"] = labelFor(item.title());
  const bool enabled = item.isEnabled();
  if (!enabled) properties["enabled"] = false;
  const bool checkable =
      item.state() != platform::kOffState || (enabled && (item.tag() != 0 || item.action() == kServiceChoiceAction));
  if (checkable) {
    properties["toggle-type"] = std::string("checkmark");
    properties["toggle-state"] = std::int32_t{item.state() == platform::kOnState      ? 1
                                              : item.state() == platform::kMixedState ? -1
                                                                                      : 0};
  }
  if (auto png = icons_ ? icons_(item.image()) : std::vector<std::uint8_t>{}; !png.empty())
    properties["icon-data"] = std::move(png);
  if (auto shortcut = shortcutFor(item.keyEquivalent(), item.keyEquivalentModifierMask()); !shortcut.empty())
    properties["shortcut"] = std::move(shortcut);
  return properties;
}

std::int32_t DBusMenuLayout::addEntry(std::map<std::int32_t, Entry>& entries, std::int32_t parent,
                                      const platform::MenuItemPtr& item, int role, Properties properties,
                                      std::int64_t menuIndex) {
  Entry entry;
  entry.id = idFor(item, role);
  entry.parent = parent;
  entry.properties = std::move(properties);
  entry.menuIndex = menuIndex;
  entries[parent].children.push_back(entry.id);
  const std::int32_t id = entry.id;
  entries[id] = std::move(entry);
  return id;
}

// A row and its alternates [head, end): the row becomes a submenu holding its own choice and the alternates.
void DBusMenuLayout::addPersonSubmenu(std::map<std::int32_t, Entry>& entries, std::int64_t head, std::int64_t end) {
  const auto& items = menu_->itemArray();
  const auto& row = items[static_cast<std::size_t>(head)];
  Properties submenu = propertiesOf(*row);
  submenu.erase("enabled");
  submenu.erase("toggle-type");
  submenu.erase("toggle-state");
  submenu.erase("shortcut");
  submenu["children-display"] = std::string("submenu");
  const std::int32_t parent = addEntry(entries, kRootId, row, -1, std::move(submenu), -1);
  addEntry(entries, parent, row, 0, propertiesOf(*row), row->isEnabled() ? head : -1);
  for (std::int64_t i = head + 1; i < end; ++i) {
    const auto& alternate = items[static_cast<std::size_t>(i)];
    Properties properties = propertiesOf(*alternate);
    if (alternate->title() == row->title())
      properties["label"] =
          labelFor(alternate->action() == kTextChatAction ? kTextChatLabel : alternate->title() + " (Option)");
    properties.erase("shortcut");   // the modifier only picked the row; there is no key to press
    properties.erase("icon-data");  // the alternate's image is a blank spacer
    addEntry(entries, parent, alternate, static_cast<int>(i - head), std::move(properties),
             alternate->isEnabled() ? i : -1);
  }
}

std::vector<bool> DBusMenuLayout::hiddenSeparators() const {
  const auto& items = menu_->itemArray();
  std::vector<bool> hidden(items.size(), false);
  bool previousShownIsSeparator = true;  // a separator at the top is hidden
  std::int64_t lastShown = -1;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i]->isAlternate() && i > 0) continue;  // folded into its row's submenu
    if (items[i]->isSeparatorItem()) {
      hidden[i] = previousShownIsSeparator;
      if (!hidden[i]) previousShownIsSeparator = true;
    } else {
      previousShownIsSeparator = false;
    }
    if (!hidden[i]) lastShown = static_cast<std::int64_t>(i);
  }
  if (lastShown >= 0 && items[static_cast<std::size_t>(lastShown)]->isSeparatorItem())
    hidden[static_cast<std::size_t>(lastShown)] = true;
  return hidden;
}

DBusMenuLayout::Changes DBusMenuLayout::compare(const std::map<std::int32_t, Entry>& old,
                                                const std::map<std::int32_t, Entry>& now) const {
  Changes changes;
  for (const auto& [id, entry] : now) {
    auto before = old.find(id);
    if (before == old.end() || before->second.children != entry.children || before->second.parent != entry.parent) {
      changes.layout = true;
      continue;
    }
    for (const auto& [name, value] : entry.properties) {
      auto previous = before->second.properties.find(name);
      if (previous == before->second.properties.end() || previous->second != value) changes.updated[id][name] = value;
    }
    for (const auto& [name, value] : before->second.properties)
      if (!entry.properties.count(name)) changes.removed[id].push_back(name);
  }
  if (old.size() != now.size()) changes.layout = true;
  return changes;
}

DBusMenuLayout::Changes DBusMenuLayout::rebuild(const platform::MenuPtr& menu) {
  menu_ = menu;
  nextItemIds_.clear();
  occurrences_.clear();
  std::map<std::int32_t, Entry> entries;
  entries[kRootId] = entries_.at(kRootId);
  entries[kRootId].children.clear();
  if (menu_) {
    const auto& items = menu_->itemArray();
    const auto hidden = hiddenSeparators();
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(items.size());) {
      const auto& item = items[static_cast<std::size_t>(i)];
      std::int64_t end = i + 1;
      while (!item->isSeparatorItem() && end < static_cast<std::int64_t>(items.size()) &&
             items[static_cast<std::size_t>(end)]->isAlternate() &&
             !items[static_cast<std::size_t>(end)]->isSeparatorItem() &&
             items[static_cast<std::size_t>(end)]->keyEquivalent() == item->keyEquivalent())
        ++end;
      if (end > i + 1 && !item->isAlternate()) {
        addPersonSubmenu(entries, i, end);
      } else {
        end = i + 1;
        Properties properties = propertiesOf(*item);
        if (hidden[static_cast<std::size_t>(i)]) properties["visible"] = false;
        addEntry(entries, kRootId, item, 0, std::move(properties), item->isEnabled() ? i : -1);
      }
      i = end;
    }
  }
  itemIds_ = std::move(nextItemIds_);
  Changes changes = compare(entries_, entries);
  entries_ = std::move(entries);
  if (changes.any()) ++revision_;
  return changes;
}

}  // namespace kibhost
