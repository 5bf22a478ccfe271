#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "platform/core/Object.h"

namespace platform {

// Converts between platform objects and JSON: String ↔ string (UTF-8), Number ↔
// boolean or number (a boolean Number stays a boolean), Array ↔ array,
// Dictionary ↔ object, nil ↔ null (a null dictionary value is dropped,
// because a dictionary cannot hold nil).
class JSONSerialization {
 public:
  static ObjectPtr objectWithJSON(const nlohmann::json& json);
  // Nullopt, with the reason, for an object JSON cannot hold (another class,
  // a number that is not finite).
  static std::optional<nlohmann::json> JSONWithObject(const ObjectPtr& object, std::string* error);

  // Parses UTF-8 JSON text; nullopt with the parser's message when it is malformed.
  static std::optional<nlohmann::json> parse(std::string_view text, std::string* error);
};

}  // namespace platform
