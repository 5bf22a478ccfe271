#pragma once

#include <ostream>
#include <string>

namespace platform {

// A device colour with components from 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static Color black(double alpha = 1.0) { return {0, 0, 0, alpha}; }
  static Color white(double alpha = 1.0) { return {1, 1, 1, alpha}; }
  Color withAlphaComponent(double newAlpha) const { return {red, green, blue, newAlpha}; }

  // "rgba(r, g, b, a)" with four decimals.
  std::string toString() const;

  friend bool operator==(const Color&, const Color&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const Color& c) { return out << c.toString(); }

}  // namespace platform
