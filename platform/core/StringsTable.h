#pragma once

#include <map>
#include <optional>
#include <string>

namespace platform {

// Reads the platform's strings-file format:
//   /* comment */  // comment
//   "key" = "value";
// Escapes in keys and values: \" \\ \n \t \r and \UXXXX (a UTF-16 code unit,
// written out as UTF-8). A key that must contain the six characters \U2026
// writes its backslash escaped: "Show Buddy List\\U2026".
class StringsTable {
 public:
  // The entries, or nullopt with a message naming the line when the text is malformed.
  static std::optional<std::map<std::string, std::string>> parse(const std::string& text, std::string* error);
  static std::optional<std::map<std::string, std::string>> load(const std::string& path, std::string* error);
};

}  // namespace platform
