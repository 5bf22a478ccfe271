#pragma once

namespace kib {

// Which filters a group wants on the buddy-list presence made for a handle
// filed in it (KibPeopleListGroup::filterForIMHandle).
struct KibHandleFilter {
  bool filterByGroup = false;    // limited to the group's name
  bool filterByID = false;       // limited to the handle's ID (handles not merged)
  bool filterByService = false;  // limited to the handle's service (handles not merged)
  bool filterByPerson = false;   // limited to the handle's person (a person's handles merged)
};

}  // namespace kib
