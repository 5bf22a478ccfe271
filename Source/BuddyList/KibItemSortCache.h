#pragma once

#include <cstdint>
#include <string>

namespace platform {
class IMHandle;
}

namespace kib {

// What the people list's sorter remembers about one item between sorts: the
// collation keys of its names, valid while the handle, its names, the name
// style and the collation language stay the same, and where the item stood
// after the last sort.
struct KibItemSortCache {
  // The names the keys were made from.
  const platform::IMHandle* handle = nullptr;
  std::uint64_t nameRevision = 0;
  std::uint64_t collationGeneration = 0;
  std::uint32_t nameStyle = 0;
  bool hasKeys = false;
  // Collation keys of the first and the second name criterion.
  std::string firstKey;
  std::string secondKey;

  // The sort that last placed the item, and the status rank it had then.
  std::uint64_t placedInSort = 0;
  int placedRank = 0;
  // The sort now running saw the item (in the new displayed array) / found it unchanged.
  std::uint64_t seenInSort = 0;
  std::uint64_t unchangedInSort = 0;
};

}  // namespace kib
