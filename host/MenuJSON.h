#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "platform/core/Object.h"
#include "platform/ui/Menu.h"

namespace kibhost {

// Menus as transcripts show them: every item with everything a user or the
// host can observe of it.
class MenuJSON {
 public:
  // [{"index", "title", "tag", "state", "enabled", "action", "alternate", "key",
  //   "modifiers", "indent", "image", "represented"} or {"index", "separator": true}, …]
  static nlohmann::ordered_json items(const platform::Menu& menu);
  static nlohmann::ordered_json item(const platform::MenuItem& item, std::int64_t index);
  // An object's description on one line, with any memory address left out
  // (transcripts must not differ between runs); null for nil.
  static nlohmann::ordered_json object(const platform::Object* object);
  // The text object() gives for a description: every address (":? ?0x<hex digits>") left out, then
  // every run of white space (of the C locale) made one space, none left at either end.
  static std::string oneLineDescription(std::string_view description);
};

}  // namespace kibhost
