#include "platform/ui/MenuItem.h"

#include <algorithm>

namespace platform {

MenuItemPtr MenuItem::initWithTitleActionKeyEquivalent(std::string title, std::string action,
                                                       std::string keyEquivalent) {
  return std::make_shared<MenuItem>(std::move(title), std::move(action), std::move(keyEquivalent));
}

MenuItemPtr MenuItem::separatorItem() {
  auto item = std::make_shared<MenuItem>("", "", "");
  item->separator_ = true;
  return item;
}

MenuItem::MenuItem(std::string title, std::string action, std::string keyEquivalent)
    : title_(std::move(title)), action_(std::move(action)), keyEquivalent_(std::move(keyEquivalent)) {}

bool MenuItem::isEnabled() const {
  return !separator_ && !action_.empty() && target_ && target_->respondsToSelector(action_);
}

void MenuItem::setIndentationLevel(std::int64_t level) { indentationLevel_ = std::clamp<std::int64_t>(level, 0, 15); }

std::string MenuItem::description() const { return separator_ ? "-" : title_; }

}  // namespace platform
