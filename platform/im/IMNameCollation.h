#pragma once

#include <string>
#include <string_view>

namespace platform {

// Text comparisons of the messaging library (UTF-8 in, ICU underneath).
class IMNameCollation {
 public:
  // Localized, case-insensitive order of two names (-1, 0, 1), as TextServices collates.
  static int compareNames(std::string_view a, std::string_view b);
  // A key that orders as compareNames, compared as bytes (TextServices::localizedSortKey).
  static std::string sortKey(std::string_view name);
  // A screen name as compared: case-folded, spaces removed.
  static std::string normalizeID(std::string_view ID);
};

}  // namespace platform
