#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// String search options, as the platform numbers them.
inline constexpr unsigned kCaseInsensitiveSearch = 1;
inline constexpr unsigned kDiacriticInsensitiveSearch = 128;
inline constexpr unsigned kWidthInsensitiveSearch = 256;

// Unicode text operations (UTF-8 in and out), backed by ICU.
class TextServices {
 public:
  // Splits at white space (Unicode spaces and tab, not newlines), keeping the
  // empty parts between adjacent separators: "a  b" → {"a", "", "b"}, "" → {""}.
  static std::vector<std::string> componentsSeparatedByWhitespace(std::string_view text);
  // Removes leading and trailing white space and newlines.
  static std::string trimWhitespace(std::string_view text);
  // Every newline (LF, CR, CRLF, U+2028, U+2029, NEL) becomes one space.
  static std::string replaceNewlinesWithSpaces(std::string_view text);

  // Folds for searching with the given options: case folding, diacritics
  // removed, compatibility (width) forms unified, per option.
  static std::string fold(std::string_view text, unsigned options);
  // Whether the needle occurs in the haystack under the options. An empty needle never occurs.
  static bool contains(std::string_view haystack, std::string_view needle, unsigned options);
  // The same when both sides are already folded with fold(…, options).
  static bool containsFolded(std::string_view foldedHaystack, std::string_view foldedNeedle);

  // Localized, case-insensitive comparison (−1, 0, 1).
  static int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b);
  // Case-insensitive comparison by folded code points (−1, 0, 1).
  static int caseInsensitiveCompare(std::string_view a, std::string_view b);
  // Plain comparison by code points (−1, 0, 1).
  static int compare(std::string_view a, std::string_view b);
};

}  // namespace platform
