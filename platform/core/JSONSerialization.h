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

  // The limits every JSON reader of the system applies before it parses, so
  // that no input can exhaust the stack or smuggle in a number a double
  // cannot hold: arrays and objects nest at most kMaxNestingDepth deep.
  static constexpr int kMaxNestingDepth = 128;
  struct LimitProblem {
    std::size_t offset;  // of the byte where the text goes past a limit
    std::string message;
  };
  static std::optional<LimitProblem> findLimitProblem(std::string_view text);
  // "line L, column C" of a byte offset (1-based, columns in bytes).
  static std::string placeOfOffset(std::string_view text, std::size_t offset);

  // Parses UTF-8 JSON text within the limits; nullopt with the problem
  // (the parser's message, or the place and the limit) when it is refused.
  static std::optional<nlohmann::json> parse(std::string_view text, std::string* error);
};

}  // namespace platform
