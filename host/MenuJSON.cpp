#include "host/MenuJSON.h"

namespace kibhost {
namespace {

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// The white space of the C locale.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The length of an address written at the start of text (":? ?0x<hex digits>"), 0 when there is none.
std::size_t addressLength(std::string_view text) {
  std::size_t at = 0;
  if (at < text.size() && text[at] == ':') ++at;
  if (at < text.size() && text[at] == ' ') ++at;
  if (text.substr(at, 2) != "0x") return 0;
  std::size_t end = at + 2;
  while (end < text.size() && isHexDigit(text[end])) ++end;
  return end == at + 2 ? 0 : end;
}

std::string withoutAddresses(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    if (const auto length = addressLength(text.substr(i))) {
      i += length;
    } else {
      result += text[i++];
    }
  }
  return result;
}

// Every run of white space as one space, none at either end.
std::string onOneLine(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  bool pendingSpace = false;
  for (const char c : text) {
    if (isSpace(c)) {
      pendingSpace = true;
      continue;
    }
    if (pendingSpace && !result.empty()) result += ' ';
    pendingSpace = false;
    result += c;
  }
  return result;
}

}  // namespace

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
  // Hand-written scans, not regular expressions: a menu of many people describes an object per item.
  return oneLineDescription(object->description());
}

std::string MenuJSON::oneLineDescription(std::string_view description) {
  return onOneLine(withoutAddresses(description));
}

}  // namespace kibhost
