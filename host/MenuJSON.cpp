#include "host/MenuJSON.h"

#include <regex>

namespace kibhost {

nlohmann::ordered_json MenuJSON::items(const platform::Menu& menu) {
  auto list = nlohmann::ordered_json::array();
  std::int64_t index = 0;
  for (const auto& entry : menu.itemArray()) list.push_back(item(*entry, index++));
  return list;
}

nlohmann::ordered_json MenuJSON::item(const platform::MenuItem& item, std::int64_t index) {
  nlohmann::ordered_json json;
  json["index"] = index;
  if (item.isSeparatorItem()) {
    json["separator"] = true;
    return json;
  }
  json["title"] = item.title();
  json["tag"] = item.tag();
  json["state"] = item.state();
  json["enabled"] = item.isEnabled();
  json["action"] = item.action();
  json["alternate"] = item.isAlternate();
  json["key"] = item.keyEquivalent();
  json["modifiers"] = item.keyEquivalentModifierMask();
  json["indent"] = item.indentationLevel();
  json["image"] = item.image() ? nlohmann::ordered_json(item.image()->displayName()) : nullptr;
  json["represented"] = object(item.representedObject().get());
  return json;
}

nlohmann::ordered_json MenuJSON::object(const platform::Object* object) {
  if (!object) return nullptr;
  static const std::regex address(R"(:? ?0x[0-9a-fA-F]+)");
  static const std::regex whitespace(R"(\s+)");
  auto text = std::regex_replace(object->description(), address, "");
  text = std::regex_replace(text, whitespace, " ");
  // No space at either end once line breaks are gone.
  const auto begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return text.empty() ? text : "";
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

}  // namespace kibhost
