#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/core/Array.h"
#include "platform/core/Object.h"

namespace platform {

// One argument of a platform format string. Integers, reals, C strings and
// objects (for "%@", printed with their description, "(null)" for nil).
class FormatArgument {
 public:
  using Value = std::variant<std::monostate, std::int64_t, std::uint64_t, double, std::string>;

  FormatArgument(std::nullptr_t) {}
  FormatArgument(bool v) : value_(static_cast<std::int64_t>(v)) {}
  FormatArgument(int v) : value_(static_cast<std::int64_t>(v)) {}
  FormatArgument(long v) : value_(static_cast<std::int64_t>(v)) {}
  FormatArgument(long long v) : value_(static_cast<std::int64_t>(v)) {}
  FormatArgument(unsigned v) : value_(static_cast<std::uint64_t>(v)) {}
  FormatArgument(unsigned long v) : value_(static_cast<std::uint64_t>(v)) {}
  FormatArgument(unsigned long long v) : value_(static_cast<std::uint64_t>(v)) {}
  FormatArgument(float v) : value_(static_cast<double>(v)) {}
  FormatArgument(double v) : value_(v) {}
  FormatArgument(const char* v) : value_(std::string(v ? v : "(null)")) {}
  FormatArgument(const std::string& v) : value_(v) {}
  FormatArgument(std::string_view v) : value_(std::string(v)) {}
  FormatArgument(const Object* v) : value_(describe(v)) {}
  template <class T, class = std::enable_if_t<std::is_base_of_v<Object, T>>>
  FormatArgument(const std::shared_ptr<T>& v) : value_(describe(v.get())) {}
  template <class T, class = std::enable_if_t<std::is_base_of_v<Object, T>>>
  FormatArgument(const std::vector<std::shared_ptr<T>>& v) : value_(describeObjects(v)) {}

  const Value& value() const { return value_; }

 private:
  Value value_;
};

// Formats with the platform's specifiers: %@ %d %i %u %ld %lu %lld %llu %x %X
// %f %e %g %s %c %p and %%, with flags, width and precision. A missing argument
// prints as zero or "(null)"; an unknown specifier is copied as it stands.
std::string formatArguments(std::string_view format, const std::vector<FormatArgument>& arguments);

template <class... Args>
std::string format(std::string_view text, const Args&... args) {
  return formatArguments(text, std::vector<FormatArgument>{FormatArgument(args)...});
}

}  // namespace platform
