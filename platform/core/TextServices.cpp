#include "platform/core/TextServices.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <memory>

#include "platform/core/Bundle.h"

namespace platform {
namespace {

constexpr unsigned kFoldOptions = kCaseInsensitiveSearch | kDiacriticInsensitiveSearch | kWidthInsensitiveSearch;

// One decoded character: its code point (U+FFFD for a malformed sequence) and byte length.
struct Character {
  UChar32 codePoint;
  std::size_t length;
  bool wellFormed;
};

Character decodeAt(std::string_view text, std::size_t offset) {
  auto window = static_cast<int32_t>(std::min<std::size_t>(4, text.size() - offset));
  int32_t index = 0;
  UChar32 codePoint = 0;
  U8_NEXT(reinterpret_cast<const uint8_t*>(text.data() + offset), index, window, codePoint);
  return {codePoint < 0 ? 0xFFFD : codePoint, static_cast<std::size_t>(index), codePoint >= 0};
}

bool isWhitespace(UChar32 c) { return c == '\t' || u_charType(c) == U_SPACE_SEPARATOR; }

bool isNewline(UChar32 c) { return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029; }

bool isASCII(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

int sign(int value) { return (value > 0) - (value < 0); }

icu::UnicodeString toUnicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string toUTF8(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

// The ICU normalizers are process-wide singletons owned by ICU.
struct Normalizers {
  const icu::Normalizer2* nfc;
  const icu::Normalizer2* nfd;
  const icu::Normalizer2* nfkc;
  const icu::Normalizer2* nfkcCasefold;
};

const Normalizers& normalizers() {
  static const Normalizers instances = [] {
    UErrorCode status = U_ZERO_ERROR;
    Normalizers n{};
    n.nfc = icu::Normalizer2::getNFCInstance(status);
    n.nfd = icu::Normalizer2::getNFDInstance(status);
    n.nfkc = icu::Normalizer2::getNFKCInstance(status);
    n.nfkcCasefold = icu::Normalizer2::getNFKCCasefoldInstance(status);
    return n;
  }();
  return instances;
}

icu::UnicodeString normalize(const icu::Normalizer2* normalizer, const icu::UnicodeString& text) {
  if (!normalizer) return text;
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString result = normalizer->normalize(text, status);
  return U_SUCCESS(status) ? result : text;
}

icu::UnicodeString withoutNonspacingMarks(const icu::UnicodeString& text) {
  icu::UnicodeString result;
  for (int32_t i = 0; i < text.length();) {
    UChar32 c = text.char32At(i);
    if (u_charType(c) != U_NON_SPACING_MARK) result.append(c);
    i += U16_LENGTH(c);
  }
  return result;
}

std::string foldASCII(std::string_view text, unsigned options) {
  std::string result(text);
  if (options & kCaseInsensitiveSearch) std::transform(result.begin(), result.end(), result.begin(), asciiLower);
  return result;
}

icu::UnicodeString foldCaseAndWidth(const icu::UnicodeString& text, unsigned options) {
  const auto& n = normalizers();
  if (options & kWidthInsensitiveSearch)
    return normalize(options & kCaseInsensitiveSearch ? n.nfkcCasefold : n.nfkc, text);
  icu::UnicodeString result = text;
  if (options & kCaseInsensitiveSearch) result.foldCase();
  return normalize(n.nfc, result);
}

// A collator per thread: ICU collators are not meant to be shared between
// threads. The generation counts language changes, so cached sort keys can
// tell whether they are still valid.
struct CachedCollator {
  std::string language;
  std::unique_ptr<icu::Collator> collator;
  std::uint64_t generation = 0;
  bool resolved = false;
};

CachedCollator& collatorCache() {
  thread_local CachedCollator cache;
  return cache;
}

icu::Collator* collatorFor(const std::string& language) {
  CachedCollator& cache = collatorCache();
  if (cache.resolved && cache.language == language) return cache.collator.get();
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(icu::Locale(language.c_str()), status));
  if (U_FAILURE(status) || !collator) {
    status = U_ZERO_ERROR;
    collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
  }
  if (U_FAILURE(status)) collator.reset();
  if (collator) collator->setStrength(icu::Collator::SECONDARY);
  cache.language = language;
  cache.collator = std::move(collator);
  cache.resolved = true;
  ++cache.generation;
  return cache.collator.get();
}

// Without a collator: folded code points, as caseInsensitiveCompare orders
// them (UTF-8 bytes sort in code point order).
std::string foldedSortKey(std::string_view text) {
  if (isASCII(text)) return foldASCII(text, kCaseInsensitiveSearch);
  return toUTF8(toUnicode(text).foldCase(U_FOLD_CASE_DEFAULT));
}

}  // namespace

bool TextServices::isValidUTF8(std::string_view text) {
  for (std::size_t offset = 0; offset < text.size();) {
    Character c = decodeAt(text, offset);
    if (!c.wellFormed) return false;
    offset += c.length;
  }
  return true;
}

std::vector<std::string> TextServices::componentsSeparatedByWhitespace(std::string_view text) {
  std::vector<std::string> components;
  std::size_t start = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    Character c = decodeAt(text, offset);
    if (isWhitespace(c.codePoint)) {
      components.emplace_back(text.substr(start, offset - start));
      start = offset + c.length;
    }
    offset += c.length;
  }
  components.emplace_back(text.substr(start));
  return components;
}

std::string TextServices::trimWhitespace(std::string_view text) {
  std::size_t first = text.size(), end = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    Character c = decodeAt(text, offset);
    if (!isWhitespace(c.codePoint) && !isNewline(c.codePoint)) {
      first = std::min(first, offset);
      end = offset + c.length;
    }
    offset += c.length;
  }
  return first < end ? std::string(text.substr(first, end - first)) : std::string();
}

std::string TextServices::replaceNewlinesWithSpaces(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    Character c = decodeAt(text, offset);
    if (c.codePoint == '\r' && offset + 1 < text.size() && text[offset + 1] == '\n') c.length = 2;
    if (isNewline(c.codePoint))
      result += ' ';
    else
      result.append(text.substr(offset, c.length));
    offset += c.length;
  }
  return result;
}

std::string TextServices::fold(std::string_view text, unsigned options) {
  options &= kFoldOptions;
  if (isASCII(text)) return foldASCII(text, options);
  icu::UnicodeString folded = foldCaseAndWidth(toUnicode(text), options);
  if (options & kDiacriticInsensitiveSearch) {
    const auto& n = normalizers();
    folded = normalize(n.nfc, withoutNonspacingMarks(normalize(n.nfd, folded)));
  }
  return toUTF8(folded);
}

bool TextServices::contains(std::string_view haystack, std::string_view needle, unsigned options) {
  if (needle.empty()) return false;
  return containsFolded(fold(haystack, options), fold(needle, options));
}

bool TextServices::containsFolded(std::string_view foldedHaystack, std::string_view foldedNeedle) {
  return !foldedNeedle.empty() && foldedHaystack.find(foldedNeedle) != std::string_view::npos;
}

int TextServices::localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
  icu::Collator* collator = collatorFor(Bundle::preferredLanguage());
  if (!collator) return caseInsensitiveCompare(a, b);
  UErrorCode status = U_ZERO_ERROR;
  UCollationResult result = collator->compareUTF8(icu::StringPiece(a.data(), static_cast<int32_t>(a.size())),
                                                  icu::StringPiece(b.data(), static_cast<int32_t>(b.size())), status);
  if (U_FAILURE(status)) return caseInsensitiveCompare(a, b);
  return result == UCOL_LESS ? -1 : result == UCOL_GREATER ? 1 : 0;
}

std::string TextServices::localizedSortKey(std::string_view text) {
  CachedCollator& cache = collatorCache();
  icu::Collator* collator = cache.resolved ? cache.collator.get() : collatorFor(Bundle::preferredLanguage());
  if (!collator) return foldedSortKey(text);
  icu::UnicodeString unicode = toUnicode(text);
  std::string key(std::max<std::size_t>(16, 2 * text.size() + 8), '\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    int32_t length = collator->getSortKey(unicode, reinterpret_cast<uint8_t*>(key.data()),
                                          static_cast<int32_t>(key.size()));
    if (length <= 0) return foldedSortKey(text);
    if (static_cast<std::size_t>(length) <= key.size()) {
      key.resize(static_cast<std::size_t>(length) - 1);  // without the terminating zero byte
      return key;
    }
    key.assign(static_cast<std::size_t>(length), '\0');
  }
  return foldedSortKey(text);
}

std::uint64_t TextServices::refreshCollationLanguage() {
  collatorFor(Bundle::preferredLanguage());
  return collatorCache().generation;
}

std::uint64_t TextServices::collationGeneration() {
  CachedCollator& cache = collatorCache();
  if (!cache.resolved) collatorFor(Bundle::preferredLanguage());
  return cache.generation;
}

int TextServices::caseInsensitiveCompare(std::string_view a, std::string_view b) {
  if (isASCII(a) && isASCII(b)) {
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
      int difference = asciiLower(a[i]) - asciiLower(b[i]);
      if (difference != 0) return sign(difference);
    }
    return sign(static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size()));
  }
  return sign(toUnicode(a).caseCompare(toUnicode(b), U_FOLD_CASE_DEFAULT | U_COMPARE_CODE_POINT_ORDER));
}

int TextServices::compare(std::string_view a, std::string_view b) { return sign(a.compare(b)); }

}  // namespace platform
