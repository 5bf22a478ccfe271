#include "platform/ui/MenuTracking.h"

#include "platform/ui/KeyModifiers.h"

namespace platform {

std::int64_t MenuTracking::groupHeadOf(std::int64_t index) const {
  const auto& items = menu_->itemArray();
  const auto& key = items[index]->keyEquivalent();
  for (std::int64_t i = index - 1; i >= 0; --i) {
    const auto& candidate = items[i];
    if (candidate->isSeparatorItem() || candidate->keyEquivalent() != key) return -1;
    if (!candidate->isAlternate()) return i;
  }
  return -1;
}

bool MenuTracking::isItemVisible(std::int64_t index, std::uint64_t modifierFlags) const {
  if (!menu_ || index < 0 || index >= menu_->numberOfItems()) return false;
  const auto& items = menu_->itemArray();
  std::uint64_t held = modifierFlags & kDeviceIndependentModifierMask;
  std::int64_t head = items[index]->isAlternate() ? groupHeadOf(index) : index;
  if (head < 0) return true;  // a lone alternate is an ordinary row
  // The group is the head and the alternates after it that belong to it.
  std::int64_t shown = head;
  for (std::int64_t i = head + 1; i < menu_->numberOfItems() && items[i]->isAlternate() && groupHeadOf(i) == head;
       ++i) {
    if ((items[i]->keyEquivalentModifierMask() & kDeviceIndependentModifierMask) == held) {
      shown = i;
      break;
    }
  }
  return shown == index;
}

std::vector<MenuTracking::Row> MenuTracking::visibleRows(std::uint64_t modifierFlags) const {
  std::vector<Row> rows;
  if (!menu_) return rows;
  for (std::int64_t i = 0; i < menu_->numberOfItems(); ++i)
    if (isItemVisible(i, modifierFlags)) {
      auto item = menu_->itemAtIndex(i);
      rows.push_back({i, item, item->isEnabled()});
    }
  return rows;
}

std::int64_t MenuTracking::indexOfItemForKeyEquivalent(const std::string& key, std::uint64_t modifierFlags) const {
  if (!menu_ || key.empty()) return -1;
  std::uint64_t held = modifierFlags & kDeviceIndependentModifierMask;
  const auto& items = menu_->itemArray();
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto& item = items[i];
    if (item->keyEquivalent() == key &&
        (item->keyEquivalentModifierMask() & kDeviceIndependentModifierMask) == held && item->isEnabled())
      return static_cast<std::int64_t>(i);
  }
  return -1;
}

bool MenuTracking::chooseItemAtIndex(std::int64_t index) {
  auto item = menu_ ? menu_->itemAtIndex(index) : nullptr;
  if (!item || !item->isEnabled()) return false;
  menu_->performActionForItemAtIndex(index);
  return true;
}

bool MenuTracking::chooseItemForKeyEquivalent(const std::string& key, std::uint64_t modifierFlags) {
  return chooseItemAtIndex(indexOfItemForKeyEquivalent(key, modifierFlags));
}

}  // namespace platform
