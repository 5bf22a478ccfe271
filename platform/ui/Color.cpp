#include "platform/ui/Color.h"

#include <cstdio>

namespace platform {

std::string Color::toString() const {
  char text[96];
  std::snprintf(text, sizeof text, "rgba(%.4f, %.4f, %.4f, %.4f)", red, green, blue, alpha);
  return text;
}

}  // namespace platform
