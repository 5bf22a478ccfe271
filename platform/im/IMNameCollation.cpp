#include "platform/im/IMNameCollation.h"

#include <unicode/unistr.h>

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
  auto text = unicode(ID).foldCase();
  text.findAndReplace(icu::UnicodeString(u" "), icu::UnicodeString());
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace platform
