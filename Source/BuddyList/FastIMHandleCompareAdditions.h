#pragma once

#include <set>

#include "platform/im/IMForward.h"

namespace kib {

// A set of handles; handles are equal only to themselves, so the set compares members by identity.
using IMHandleSet = std::set<platform::IMHandlePtr>;

// Set equality that settles the common one-member case by identity without
// asking the members: different counts are unequal, two one-member sets are
// equal when they hold the same object, anything else is ordinary set equality.
bool fastIsEqualToPointerCompareSet(const IMHandleSet& set, const IMHandleSet& other);

// Ordinary set equality: the same count and every member equal (isEqual) to a member of the other.
bool isEqualToSet(const IMHandleSet& set, const IMHandleSet& other);

}  // namespace kib
