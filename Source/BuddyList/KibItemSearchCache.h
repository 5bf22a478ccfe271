#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kib {

// The texts a search looks in for one item, and those already folded, kept
// between searches while what they were read from stays the same: the
// presence's handles and their text revisions, the most available handle's
// status and message, the name style and the item's group name.
struct KibItemSearchCache {
  struct Stamp {
    std::vector<std::pair<const void*, std::uint64_t>> handles;
    const void* best = nullptr;
    std::uint64_t status = 0;
    std::string statusMessage;
    std::uint32_t nameStyle = 0;
    std::string group;
    bool operator==(const Stamp&) const = default;
  };

  bool valid = false;
  Stamp stamp;
  std::vector<std::string> texts;
  // Folded on first use, in the order of texts.
  std::vector<std::string> folded;
};

}  // namespace kib
