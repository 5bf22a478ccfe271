#pragma once

#include <cstdint>

#include "platform/ui/Geometry.h"

namespace platform {

// A mouse event as a view receives it.
struct Event {
  Point locationInView;
  std::uint64_t modifierFlags = 0;
  int clickCount = 1;
};

}  // namespace platform
