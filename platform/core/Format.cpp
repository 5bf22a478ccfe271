#include "platform/core/Format.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace platform {
namespace {

std::int64_t asSigned(const FormatArgument::Value& v) {
  if (auto* i = std::get_if<std::int64_t>(&v)) return *i;
  if (auto* u = std::get_if<std::uint64_t>(&v)) return static_cast<std::int64_t>(*u);
  if (auto* d = std::get_if<double>(&v)) return static_cast<std::int64_t>(*d);
  return 0;
}

double asReal(const FormatArgument::Value& v) {
  if (auto* d = std::get_if<double>(&v)) return *d;
  if (auto* u = std::get_if<std::uint64_t>(&v)) return static_cast<double>(*u);
  return static_cast<double>(asSigned(v));
}

std::string asText(const FormatArgument::Value& v) {
  if (auto* s = std::get_if<std::string>(&v)) return *s;
  if (std::holds_alternative<std::monostate>(v)) return "(null)";
  if (auto* d = std::get_if<double>(&v)) {
    char text[64];
    std::snprintf(text, sizeof text, "%g", *d);
    return text;
  }
  if (auto* u = std::get_if<std::uint64_t>(&v)) return std::to_string(*u);
  return std::to_string(asSigned(v));
}

template <class T>
std::string printfOne(const std::string& pattern, T value) {
  int size = std::snprintf(nullptr, 0, pattern.c_str(), value);
  if (size < 0) return pattern;
  std::string text(static_cast<std::size_t>(size) + 1, '\0');
  std::snprintf(text.data(), text.size(), pattern.c_str(), value);
  text.resize(static_cast<std::size_t>(size));
  return text;
}

}  // namespace

std::string formatArguments(std::string_view format, const std::vector<FormatArgument>& arguments) {
  static const FormatArgument none(nullptr);
  std::string out;
  std::size_t next = 0;
  auto take = [&]() -> const FormatArgument::Value& {
    return next < arguments.size() ? arguments[next++].value() : none.value();
  };
  for (std::size_t i = 0; i < format.size(); ++i) {
    char c = format[i];
    if (c != '%') {
      out += c;
      continue;
    }
    std::size_t start = i++;
    while (i < format.size() && std::string_view("-+ #0").find(format[i]) != std::string_view::npos) ++i;
    while (i < format.size() && (std::isdigit(static_cast<unsigned char>(format[i])) || format[i] == '.')) ++i;
    int longs = 0;
    while (i < format.size() && (format[i] == 'l' || format[i] == 'h' || format[i] == 'q' || format[i] == 'z')) {
      if (format[i] == 'l' || format[i] == 'q' || format[i] == 'z') ++longs;
      ++i;
    }
    if (i >= format.size()) {
      out += format.substr(start);
      break;
    }
    char conversion = format[i];
    std::string flags(format.substr(start, i - start));
    flags.erase(std::remove_if(flags.begin() + 1, flags.end(),
                               [](char f) { return f == 'l' || f == 'h' || f == 'q' || f == 'z'; }),
                flags.end());
    switch (conversion) {
      case '%':
        out += '%';
        break;
      case '@':
      case 's':
        out += printfOne(flags + "s", asText(take()).c_str());
        break;
      case 'd':
      case 'i': {
        std::int64_t v = asSigned(take());
        if (longs == 0) v = static_cast<std::int32_t>(v);
        out += printfOne(flags + "lld", static_cast<long long>(v));
        break;
      }
      case 'u':
      case 'x':
      case 'X':
      case 'o': {
        auto v = static_cast<std::uint64_t>(asSigned(take()));
        if (longs == 0) v = static_cast<std::uint32_t>(v);
        out += printfOne(flags + "ll" + conversion, static_cast<unsigned long long>(v));
        break;
      }
      case 'c':
        out += printfOne(flags + "c", static_cast<int>(asSigned(take())));
        break;
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
        out += printfOne(flags + conversion, asReal(take()));
        break;
      case 'p':
        out += "0x" + printfOne("%llx", static_cast<unsigned long long>(asSigned(take())));
        break;
      default:
        out += format.substr(start, i - start + 1);
        break;
    }
  }
  return out;
}

}  // namespace platform
