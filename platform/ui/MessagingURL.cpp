#include "platform/ui/MessagingURL.h"

#include <algorithm>
#include <cctype>

namespace platform {
namespace {

constexpr std::string_view kScheme = "parlo:";

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::string unescaped(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
      plain += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
      i += 2;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

bool hasScheme(std::string_view url) {
  return url.size() >= kScheme.size() && std::equal(kScheme.begin(), kScheme.end(), url.begin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

}  // namespace

std::string MessagingURL::escaped(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string escaped;
  escaped.reserve(text.size());
  for (unsigned char c : text) {
    // By range, not std::isalnum: the locale must not decide.
    bool unreserved = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
                      c == '.' || c == '_' || c == '~';
    if (unreserved) {
      escaped += static_cast<char>(c);
    } else {
      escaped += '%';
      escaped += kHex[c >> 4];
      escaped += kHex[c & 0x0F];
    }
  }
  return escaped;
}

std::optional<MessagingURL> MessagingURL::parse(std::string_view url) {
  if (!hasScheme(url)) return std::nullopt;
  auto rest = url.substr(kScheme.size());
  auto question = rest.find('?');
  if (question == std::string_view::npos) return MessagingURL(std::string(rest), "");
  return MessagingURL(std::string(rest.substr(0, question)), std::string(rest.substr(question + 1)));
}

std::optional<std::string> MessagingURL::parameter(std::string_view name) const {
  std::string_view query = query_;
  for (std::size_t start = 0; start <= query.size();) {
    auto end = std::min(query.find('&', start), query.size());
    auto pair = query.substr(start, end - start);
    auto equals = pair.find('=');
    if (pair.substr(0, equals) == name)
      return equals == std::string_view::npos ? std::string() : unescaped(pair.substr(equals + 1));
    start = end + 1;
  }
  return std::nullopt;
}

}  // namespace platform
