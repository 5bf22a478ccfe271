#pragma once

#include <cstdint>

#include "platform/im/IMPersonStatus.h"

namespace platform {
class IMHandle;
}

namespace kib {

// What the people list's sorter remembers about one item between sorts:
// whose name keys it was placed by and where it stood after the last sort.
struct KibItemSortCache {
  // The handle whose name keys placed the item, and their version then.
  const platform::IMHandle* handle = nullptr;
  std::uint64_t keysVersion = 0;

  // The sort that last placed the item, and the status rank it had then.
  std::uint64_t placedInSort = 0;
  int placedRank = 0;
  // The sort now running saw the item (in the new displayed array) / found it unchanged.
  std::uint64_t seenInSort = 0;
  std::uint64_t unchangedInSort = 0;
  // Its index in the array being sorted.
  std::uint32_t indexInSort = 0;

  // While the list owes its displayed array a rebuild: the status the item
  // had at the list's last resort (valid in journal journalEpoch), and the
  // resort epoch in which it was noted as changed since.
  std::uint64_t journalEpoch = 0;
  std::uint64_t changedInResort = 0;
  platform::IMPersonStatus displayedStatus = 0;
};

}  // namespace kib
