#pragma once

#include <limits>
#include <ostream>
#include <string>

namespace platform {

// Toolkit geometry in points, origin at the bottom left as the toolkit draws.

struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  static Rect withOriginAndSize(Point origin, Size size) { return {origin.x, origin.y, size.width, size.height}; }

  Point origin() const { return {x, y}; }
  Size size() const { return {width, height}; }
  double maxX() const { return x + width; }
  double maxY() const { return y + height; }
  bool isEmpty() const { return !(width > 0) || !(height > 0); }
  bool containsPoint(Point p) const { return p.x >= x && p.x < maxX() && p.y >= y && p.y < maxY(); }
  // The common part of both rectangles; an empty rectangle at the origin when they do not meet.
  Rect intersection(const Rect& other) const;

  friend bool operator==(const Rect&, const Rect&) = default;
};

// The largest finite size, for measuring without a limit.
inline constexpr double kGreatestFiniteMagnitude = std::numeric_limits<double>::max();

// "{x, y}", "{w, h}" and "{{x, y}, {w, h}}", numbers printed with %g.
std::string toString(Point point);
std::string toString(Size size);
std::string toString(const Rect& rect);

inline std::ostream& operator<<(std::ostream& out, Point p) { return out << toString(p); }
inline std::ostream& operator<<(std::ostream& out, Size s) { return out << toString(s); }
inline std::ostream& operator<<(std::ostream& out, const Rect& r) { return out << toString(r); }

}  // namespace platform
