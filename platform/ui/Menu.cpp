#include "platform/ui/Menu.h"

#include <exception>

#include "platform/core/Array.h"
#include "platform/core/AssertionHandler.h"
#include "platform/core/Format.h"
#include "platform/core/Log.h"

namespace platform {
namespace {

constexpr const char* kFile = "platform/ui/Menu";

}  // namespace

MenuPtr Menu::initWithTitle(std::string title) { return std::make_shared<Menu>(std::move(title)); }

Menu::~Menu() {
  for (const auto& item : items_) item->menu_ = nullptr;
}

void Menu::addItem(const MenuItemPtr& item) { insertItemAtIndex(item, numberOfItems()); }

MenuItemPtr Menu::addItemWithTitleActionKeyEquivalent(std::string title, std::string action,
                                                      std::string keyEquivalent) {
  auto item = MenuItem::initWithTitleActionKeyEquivalent(std::move(title), std::move(action), std::move(keyEquivalent));
  addItem(item);
  return item;
}

void Menu::insertItemAtIndex(const MenuItemPtr& item, std::int64_t index) {
  const std::string method = "-[Menu insertItem:atIndex:]";
  if (!assertParameter(item != nullptr, "item != nil", method, this, kFile, __LINE__)) return;
  if (item->menu_) {
    AssertionHandler::current().handleFailureInMethod(
        method, this, kFile, __LINE__, format("Item %@ is already in another menu", item->description()));
    return;
  }
  if (index < 0 || index > numberOfItems()) {
    AssertionHandler::current().handleFailureInMethod(
        method, this, kFile, __LINE__, format("Index %lld beyond bounds 0…%lld", index, numberOfItems()));
    return;
  }
  items_.insert(items_.begin() + index, item);
  item->menu_ = this;
}

void Menu::removeItem(const MenuItem* item) {
  auto index = indexOfItem(item);
  if (index >= 0) removeItemAtIndex(index);
}

void Menu::removeItemAtIndex(std::int64_t index) {
  if (!isValidIndex(index)) {
    AssertionHandler::current().handleFailureInMethod("-[Menu removeItemAtIndex:]", this, kFile, __LINE__,
                                                      format("Index %lld beyond bounds %lld", index, numberOfItems()));
    return;
  }
  items_[index]->menu_ = nullptr;
  items_.erase(items_.begin() + index);
}

void Menu::removeAllItems() {
  for (const auto& item : items_) item->menu_ = nullptr;
  items_.clear();
}

MenuItemPtr Menu::itemAtIndex(std::int64_t index) const { return isValidIndex(index) ? items_[index] : nullptr; }

MenuItemPtr Menu::itemWithTitle(const std::string& title) const { return itemAtIndex(indexOfItemWithTitle(title)); }

MenuItemPtr Menu::itemWithTag(std::int64_t tag) const { return itemAtIndex(indexOfItemWithTag(tag)); }

std::int64_t Menu::indexOfItem(const MenuItem* item) const {
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (items_[i].get() == item) return static_cast<std::int64_t>(i);
  return -1;
}

std::int64_t Menu::indexOfItemWithTitle(const std::string& title) const {
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (!items_[i]->isSeparatorItem() && items_[i]->title() == title) return static_cast<std::int64_t>(i);
  return -1;
}

std::int64_t Menu::indexOfItemWithTag(std::int64_t tag) const {
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (items_[i]->tag() == tag) return static_cast<std::int64_t>(i);
  return -1;
}

std::int64_t Menu::indexOfItemWithRepresentedObject(const Object* object) const {
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (platform::isEqual(items_[i]->representedObject().get(), object)) return static_cast<std::int64_t>(i);
  return -1;
}

void Menu::performActionForItemAtIndex(std::int64_t index) {
  if (!isValidIndex(index)) {
    AssertionHandler::current().handleFailureInMethod(
        "-[Menu performActionForItemAtIndex:]", this, kFile, __LINE__,
        format("Index %lld beyond bounds of a menu of %lld items", index, numberOfItems()));
    return;
  }
  MenuItemPtr item = items_[index];  // the action may rebuild or empty the menu
  Object* target = item->target();
  if (item->action().empty() || !target) return;
  try {
    target->performSelector(item->action(), item);
  } catch (const std::exception& error) {
    Log::write(Log::Channel::System,
               format("exception in the action %s of the menu item \"%s\": %s", item->action(), item->title(),
                      error.what()));
  }
}

std::string Menu::description() const { return describeObjects(items_); }

}  // namespace platform
