#include "platform/ui/Geometry.h"

#include <algorithm>
#include <cstdio>

namespace platform {
namespace {

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

}  // namespace

Rect Rect::intersection(const Rect& other) const {
  double left = std::max(x, other.x);
  double bottom = std::max(y, other.y);
  double right = std::min(maxX(), other.maxX());
  double top = std::min(maxY(), other.maxY());
  if (right <= left || top <= bottom) return {};
  return {left, bottom, right - left, top - bottom};
}

std::string toString(Point point) { return "{" + number(point.x) + ", " + number(point.y) + "}"; }

std::string toString(Size size) { return "{" + number(size.width) + ", " + number(size.height) + "}"; }

std::string toString(const Rect& rect) { return "{" + toString(rect.origin()) + ", " + toString(rect.size()) + "}"; }

}  // namespace platform
