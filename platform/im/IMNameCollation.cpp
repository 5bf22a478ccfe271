#include "platform/im/IMNameCollation.h"

#include <unicode/unistr.h>

#include <algorithm>

#include "platform/core/TextServices.h"

namespace platform {
namespace {

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

}  // namespace

int IMNameCollation::compareNames(std::string_view a, std::string_view b) {
  return TextServices::localizedCaseInsensitiveCompare(a, b);
}

std::string IMNameCollation::sortKey(std::string_view name) { return TextServices::localizedSortKey(name); }

std::string IMNameCollation::normalizeID(std::string_view ID) {
  // Most IDs are ASCII, where case folding is lowering A to Z: no ICU round trip for them.
  if (std::all_of(ID.begin(), ID.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    std::string result;
    result.reserve(ID.size());
    for (const char c : ID)
      if (c != ' ') result += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    return result;
  }
  auto text = unicode(ID).foldCase();
  text.findAndReplace(icu::UnicodeString(u" "), icu::UnicodeString());
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace platform
