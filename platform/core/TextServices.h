#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// String search options, as the platform numbers them.
inline constexpr unsigned kCaseInsensitiveSearch = 1;
inline constexpr unsigned kDiacriticInsensitiveSearch = 128;
inline constexpr unsigned kWidthInsensitiveSearch = 256;

// Unicode text operations (UTF-8 in and out), backed by ICU. Malformed UTF-8
// is read as U+FFFD where a character is needed and compared byte for byte
// elsewhere; it never stops an operation.
class TextServices {
 public:
  static bool isValidUTF8(std::string_view text);

  // White space is tab and the Unicode space separators (Zs); newlines are
  // U+000A to U+000D, NEL (U+0085), U+2028 and U+2029.

  // Splits at white space (not at newlines), keeping the empty parts between
  // adjacent separators: "a  b" → {"a", "", "b"}, "" → {""}.
  static std::vector<std::string> componentsSeparatedByWhitespace(std::string_view text);
  // Removes leading and trailing white space and newlines.
  static std::string trimWhitespace(std::string_view text);
  // Every newline becomes one space; CR LF counts as one newline.
  static std::string replaceNewlinesWithSpaces(std::string_view text);

  // Folds for searching with the given options, each bit on its own: case
  // folding (1), nonspacing marks removed after canonical decomposition (128),
  // compatibility forms such as full-width letters unified (256). Without 128
  // the result is canonically composed, so a precomposed "é" keeps its accent.
  // Other option bits are ignored.
  static std::string fold(std::string_view text, unsigned options);
  // Whether the needle occurs in the haystack under the options. An empty needle never occurs.
  static bool contains(std::string_view haystack, std::string_view needle, unsigned options);
  // The same when both sides are already folded with fold(…, options).
  static bool containsFolded(std::string_view foldedHaystack, std::string_view foldedNeedle);

  // Localized, case-insensitive comparison (−1, 0, 1): an ICU collator for the
  // preferred language (Bundle::preferredLanguage, the root order when ICU
  // has no data for it) at secondary strength, so case is ignored and accents count.
  static int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b);
  // Sort keys for the same order, for sorting many names: two keys compare
  // (as byte strings) as localizedCaseInsensitiveCompare compares the texts.
  // The language is the one resolved by the last refreshCollationLanguage
  // (resolved on first use); keys made under different generations must not
  // be compared with each other.
  static std::string localizedSortKey(std::string_view text);
  // Resolves the preferred language again and answers the collation's
  // generation, which changes exactly when the language (and so every key) does.
  static std::uint64_t refreshCollationLanguage();
  // The generation now, without resolving the language again.
  static std::uint64_t collationGeneration();
  // Case-insensitive comparison by folded code points (−1, 0, 1).
  static int caseInsensitiveCompare(std::string_view a, std::string_view b);
  // Plain comparison by code points (−1, 0, 1).
  static int compare(std::string_view a, std::string_view b);
};

}  // namespace platform
