#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/core/Object.h"
#include "platform/ui/Image.h"

namespace platform {

class Menu;

// Menu item states.
inline constexpr int kOffState = 0;
inline constexpr int kOnState = 1;
inline constexpr int kMixedState = -1;

class MenuItem;
using MenuItemPtr = std::shared_ptr<MenuItem>;

// One row of a menu. The action is a selector name sent to the target with the
// item as argument. The target is not owned: whoever sets it outlives the menu
// or clears it. There is no responder chain, so an item without a target does
// nothing.
class MenuItem final : public Object {
 public:
  // The key-equivalent modifier mask starts empty (no modifier).
  static MenuItemPtr initWithTitleActionKeyEquivalent(std::string title, std::string action,
                                                      std::string keyEquivalent);
  static MenuItemPtr separatorItem();

  MenuItem(std::string title, std::string action, std::string keyEquivalent);

  const std::string& title() const { return title_; }
  void setTitle(std::string title) { title_ = std::move(title); }

  // The selector name ("selectMenuItem:"), "" for none.
  const std::string& action() const { return action_; }
  void setAction(std::string action) { action_ = std::move(action); }
  Object* target() const { return target_; }
  void setTarget(Object* target) { target_ = target; }

  // Enabled exactly when the item has an action and its target responds to it:
  // a label item (action ":" aimed at a target without that selector), an item
  // without action and a separator show disabled.
  bool isEnabled() const;

  const std::string& keyEquivalent() const { return keyEquivalent_; }
  void setKeyEquivalent(std::string key) { keyEquivalent_ = std::move(key); }
  std::uint64_t keyEquivalentModifierMask() const { return modifierMask_; }
  void setKeyEquivalentModifierMask(std::uint64_t mask) { modifierMask_ = mask; }

  std::int64_t tag() const { return tag_; }
  void setTag(std::int64_t tag) { tag_ = tag; }
  // kOnState, kOffState or kMixedState.
  int state() const { return state_; }
  void setState(int state) { state_ = state; }
  const ObjectPtr& representedObject() const { return representedObject_; }
  void setRepresentedObject(ObjectPtr object) { representedObject_ = std::move(object); }
  const ImagePtr& image() const { return image_; }
  void setImage(ImagePtr image) { image_ = std::move(image); }
  // An alternate replaces the item before it while its modifier mask is held.
  bool isAlternate() const { return alternate_; }
  void setAlternate(bool alternate) { alternate_ = alternate; }
  std::int64_t indentationLevel() const { return indentationLevel_; }
  // Clamped to 0…15 as the toolkit does.
  void setIndentationLevel(std::int64_t level);
  bool isSeparatorItem() const { return separator_; }

  // The menu that holds the item (not owned), nil when it is in none.
  Menu* menu() const { return menu_; }

  std::string className() const override { return "MenuItem"; }
  // The title, or "-" for a separator.
  std::string description() const override;

 private:
  friend class Menu;

  std::string title_;
  std::string action_;
  std::string keyEquivalent_;
  Object* target_ = nullptr;
  std::uint64_t modifierMask_ = 0;
  std::int64_t tag_ = 0;
  int state_ = kOffState;
  ObjectPtr representedObject_;
  ImagePtr image_;
  bool alternate_ = false;
  std::int64_t indentationLevel_ = 0;
  bool separator_ = false;
  Menu* menu_ = nullptr;
};

}  // namespace platform
