#pragma once

#include <cstdint>

namespace kib {

// The criteria of KibPeopleListItem::compareWithKibSortParameters, as sortKeys values.
inline constexpr std::int64_t kKibSortKeyNone = 0;       // ends the comparison with a tie
inline constexpr std::int64_t kKibSortKeyFirstName = 1;  // first name, then last name
inline constexpr std::int64_t kKibSortKeyLastName = 2;   // last name, then first name
inline constexpr std::int64_t kKibSortKeyStatus = 3;     // more available first
inline constexpr std::int64_t kKibSortKeyHandle = 4;     // handle address; always ends the comparison

// What the people list hands its item comparator, by address. The comparator
// applies sortKeys from currentKey on, moving currentKey past every tie.
struct KibSortParameters {
  static constexpr int kNumberOfSortKeys = 3;

  std::int64_t sortKeys[kNumberOfSortKeys] = {kKibSortKeyNone, kKibSortKeyNone, kKibSortKeyNone};
  std::int32_t currentKey = 0;
  bool usesManualOrder = false;
};

}  // namespace kib
