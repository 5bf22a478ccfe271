#pragma once

#include "platform/core/Array.h"
#include "platform/im/IMPersonStatus.h"

namespace kib {

class KibPeopleListItem;

// What an item asks of its delegate (the people list). An item's delegate is
// a plain platform::Object*; it answers these messages when it implements
// this interface (dynamic_cast succeeds).
class KibPeopleListItemDelegate {
 public:
  virtual ~KibPeopleListItemDelegate() = default;

  // Whether the item may start a status transition; status is the item's effectiveStatus.
  virtual bool peopleListItemCanTransitionToStatus(KibPeopleListItem* item, platform::IMPersonStatus status) = 0;
  // The names of the groups in display order (Strings), or nil when no order was given.
  virtual platform::ArrayPtr peopleListGroupSortOrder() = 0;
};

}  // namespace kib
