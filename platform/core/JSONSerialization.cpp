#include "platform/core/JSONSerialization.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/core/Array.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Number.h"
#include "platform/core/String.h"
#include "platform/core/TextServices.h"

namespace platform {
namespace {

void setError(std::string* error, std::string text) {
  if (error) *error = std::move(text);
}

std::optional<nlohmann::json> numberJSON(const Number& number, std::string* error) {
  if (number.isBool()) return nlohmann::json(number.boolValue());
  if (number.isInteger()) return nlohmann::json(number.longLongValue());
  double value = number.doubleValue();
  if (!std::isfinite(value)) {
    setError(error, "the number " + number.description() + " is not finite");
    return std::nullopt;
  }
  return nlohmann::json(value);
}

}  // namespace

ObjectPtr JSONSerialization::objectWithJSON(const nlohmann::json& json) {
  switch (json.type()) {
    case nlohmann::json::value_t::string:
      return makeString(json.get<std::string>());
    case nlohmann::json::value_t::boolean:
      return makeNumber(json.get<bool>());
    case nlohmann::json::value_t::number_integer:
      return makeNumber(json.get<std::int64_t>());
    case nlohmann::json::value_t::number_unsigned:
      return makeNumber(json.get<std::uint64_t>());
    case nlohmann::json::value_t::number_float:
      return makeNumber(json.get<double>());
    case nlohmann::json::value_t::array: {
      auto array = std::make_shared<Array>();
      for (const auto& item : json) array->add(objectWithJSON(item));
      return array;
    }
    case nlohmann::json::value_t::object: {
      auto dictionary = std::make_shared<Dictionary>();
      for (const auto& [key, value] : json.items()) dictionary->setObjectForKey(key, objectWithJSON(value));
      return dictionary;
    }
    default:
      return nullptr;
  }
}

std::optional<nlohmann::json> JSONSerialization::JSONWithObject(const ObjectPtr& object, std::string* error) {
  if (!object) return nlohmann::json(nullptr);
  if (auto* string = dynamic_cast<const String*>(object.get())) {
    if (!TextServices::isValidUTF8(string->value())) {
      setError(error, "the string \"" + string->value() + "\" is not valid UTF-8");
      return std::nullopt;
    }
    return nlohmann::json(string->value());
  }
  if (auto* number = dynamic_cast<const Number*>(object.get())) return numberJSON(*number, error);
  if (auto* array = dynamic_cast<const Array*>(object.get())) {
    auto json = nlohmann::json::array();
    for (const auto& item : array->items()) {
      auto converted = JSONWithObject(item, error);
      if (!converted) return std::nullopt;
      json.push_back(std::move(*converted));
    }
    return json;
  }
  if (auto* dictionary = dynamic_cast<const Dictionary*>(object.get())) {
    auto json = nlohmann::json::object();
    for (const auto& [key, value] : dictionary->entries()) {
      if (!TextServices::isValidUTF8(key)) {
        setError(error, "the key \"" + key + "\" is not valid UTF-8");
        return std::nullopt;
      }
      auto converted = JSONWithObject(value, error);
      if (!converted) return std::nullopt;
      json[key] = std::move(*converted);
    }
    return json;
  }
  setError(error, "a " + object->className() + " cannot be stored as JSON");
  return std::nullopt;
}

std::optional<JSONSerialization::LimitProblem> JSONSerialization::findLimitProblem(std::string_view text) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      for (++i; i < text.size() && text[i] != '"'; ++i)
        if (text[i] == '\\') ++i;
    } else if (c == '[' || c == '{') {
      if (++depth > kMaxNestingDepth)
        return LimitProblem{i, "nested deeper than " + std::to_string(kMaxNestingDepth) + " levels"};
    } else if (c == ']' || c == '}') {
      if (depth > 0) --depth;
    } else if (c == '-' || (c >= '0' && c <= '9')) {
      std::size_t end = i;
      while (end < text.size() && std::strchr("+-.0123456789eE", text[end]) && text[end] != '\0') ++end;
      const std::string number(text.substr(i, end - i));
      errno = 0;
      const double value = std::strtod(number.c_str(), nullptr);
      if (errno == ERANGE && std::isinf(value)) return LimitProblem{i, "the number " + number + " is out of range"};
      i = end - 1;
    }
  }
  return std::nullopt;
}

std::string JSONSerialization::placeOfOffset(std::string_view text, std::size_t offset) {
  std::size_t line = 1, column = 1;
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

std::optional<nlohmann::json> JSONSerialization::parse(std::string_view text, std::string* error) {
  if (auto problem = findLimitProblem(text)) {
    setError(error, placeOfOffset(text, problem->offset) + ": " + problem->message);
    return std::nullopt;
  }
  try {
    return nlohmann::json::parse(text.begin(), text.end());
  } catch (const nlohmann::json::exception& e) {
    std::string message = e.what();  // "[json.exception.parse_error.101] parse error at line 1, …"
    if (auto end = message.find("] "); message.rfind("[json.exception", 0) == 0 && end != std::string::npos)
      message.erase(0, end + 2);
    setError(error, message);
    return std::nullopt;
  }
}

}  // namespace platform
