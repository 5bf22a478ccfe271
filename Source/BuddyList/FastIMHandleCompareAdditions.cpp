#include "Source/BuddyList/FastIMHandleCompareAdditions.h"

#include <algorithm>

#include "platform/im/IMHandle.h"

namespace kib {

bool isEqualToSet(const IMHandleSet& set, const IMHandleSet& other) {
  if (set.size() != other.size()) return false;
  return std::all_of(set.begin(), set.end(), [&](const platform::IMHandlePtr& member) {
    if (other.count(member)) return true;
    return std::any_of(other.begin(), other.end(),
                       [&](const platform::IMHandlePtr& candidate) { return platform::isEqual(member, candidate); });
  });
}

bool fastIsEqualToPointerCompareSet(const IMHandleSet& set, const IMHandleSet& other) {
  if (set.size() != other.size()) return false;
  if (set.size() == 1) return *set.begin() == *other.begin();
  return isEqualToSet(set, other);
}

}  // namespace kib
