#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/core/Object.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuItem.h"

namespace uitest {

// The repository root: from KIB_TEST_SOURCE_DIR (set by CTest), else the one the build names.
inline std::filesystem::path sourceDir() {
  if (const char* dir = std::getenv("KIB_TEST_SOURCE_DIR")) return dir;
  return KIB_SOURCE_DIR;  // the build compiles it in; __FILE__ may be relative to the build
}

inline std::filesystem::path resourcesDir() { return sourceDir() / "Resources"; }

// A menu target that records the titles of the items whose actions it receives.
class ActionTarget final : public platform::Object {
  PLATFORM_SELECTORS(ActionTarget, platform::Object)
 public:
  void choose(const platform::ObjectPtr& sender) { chosen.push_back(titleOf(sender)); }
  void other(const platform::ObjectPtr& sender) { chosen.push_back("other:" + titleOf(sender)); }
  void explode(const platform::ObjectPtr&) { throw std::runtime_error("boom"); }
  // Empties the menu that holds the sender, as a rebuild from inside an action would.
  void clearMenu(const platform::ObjectPtr& sender) {
    auto item = std::dynamic_pointer_cast<platform::MenuItem>(sender);
    item->menu()->removeAllItems();
    chosen.push_back("cleared:" + item->title());
  }

  std::vector<std::string> chosen;

 private:
  static std::string titleOf(const platform::ObjectPtr& sender) {
    auto item = std::dynamic_pointer_cast<platform::MenuItem>(sender);
    return item ? item->title() : "(not an item)";
  }
};

inline const platform::SelectorTable<ActionTarget>& ActionTarget::selectorTable() {
  static const platform::SelectorTable<ActionTarget> table{
      {"choose:", &ActionTarget::choose}, {"other:", &ActionTarget::other}, {"explode:", &ActionTarget::explode},
      {"clearMenu:", &ActionTarget::clearMenu}};
  return table;
}

}  // namespace uitest
