#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The messaging application's URLs, "Parlo:<command>?<name>=<value>&…": the
// extra makes them, and the application (simulated or real) reads them.
class MessagingURL {
 public:
  // Escapes UTF-8 text for a query value: every byte but letters, digits,
  // "-", ".", "_" and "~" becomes "%XX".
  static std::string escaped(std::string_view text);
  // Nothing unless the URL has the application's scheme (in any case).
  static std::optional<MessagingURL> parse(std::string_view url);

  // What comes between the scheme and the "?", as written.
  const std::string& command() const { return command_; }
  // The first value given for the name, percent-decoded (a malformed escape
  // stays as written); "" for a name without "=", nothing for a missing name.
  std::optional<std::string> parameter(std::string_view name) const;

 private:
  MessagingURL(std::string command, std::string query) : command_(std::move(command)), query_(std::move(query)) {}

  std::string command_;
  std::string query_;
};

}  // namespace platform
