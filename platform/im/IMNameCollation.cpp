#include "platform/im/IMNameCollation.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <cstring>
#include <memory>

namespace platform {
namespace {

const icu::Collator* nameCollator() {
  static const std::unique_ptr<icu::Collator> collator = [] {
    // The POSIX locale collates by code point; names want the language's order.
    auto locale = icu::Locale::getDefault();
    if (std::strcmp(locale.getVariant(), "POSIX") == 0) locale = icu::Locale::getRoot();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> made(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status)) made.reset();
    if (made) made->setStrength(icu::Collator::SECONDARY);  // letters and accents, not case
    return made;
  }();
  return collator.get();
}

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

}  // namespace

int IMNameCollation::compareNames(std::string_view a, std::string_view b) {
  if (const auto* collator = nameCollator()) {
    UErrorCode status = U_ZERO_ERROR;
    auto result = collator->compare(unicode(a), unicode(b), status);
    if (U_SUCCESS(status)) return result < 0 ? -1 : result > 0 ? 1 : 0;
  }
  auto folded = unicode(a).foldCase().compare(unicode(b).foldCase());
  return folded < 0 ? -1 : folded > 0 ? 1 : 0;
}

std::string IMNameCollation::normalizeID(std::string_view ID) {
  auto text = unicode(ID).foldCase();
  text.findAndReplace(icu::UnicodeString(u" "), icu::UnicodeString());
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace platform
