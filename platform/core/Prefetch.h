#pragma once

#include <cstddef>

namespace platform {

// Asks the processor to start loading an object's first bytes. A loop over
// thousands of heap objects reached through an array of pointers otherwise
// waits on memory at every object; asking a few objects ahead overlaps those
// waits.
inline void prefetch(const void* object, std::size_t bytes = 64) {
  if (!object) return;
  const char* start = static_cast<const char*>(object);
  for (std::size_t at = 0; at < bytes; at += 64) __builtin_prefetch(start + at);
}

// How many objects ahead a loop asks for.
inline constexpr std::size_t kPrefetchDistance = 8;

// The object the element `rows` after `index` points to, or null past the end.
template <class Pointers>
auto* pointeeAhead(const Pointers& pointers, std::size_t index, std::size_t rows) {
  return index + rows < pointers.size() ? pointers[index + rows].get() : nullptr;
}

}  // namespace platform
