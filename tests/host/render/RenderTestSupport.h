#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "host/render/Pixmap.h"

namespace rendertest {

// The repository root: from KIB_TEST_SOURCE_DIR (set by CTest), else from this file's place.
inline std::filesystem::path sourceDir() {
  if (const char* dir = std::getenv("KIB_TEST_SOURCE_DIR")) return dir;
  return std::filesystem::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
}

inline std::filesystem::path resourcesDir() { return sourceDir() / "Resources"; }

// The largest alpha in the pixmap.
inline int maximumAlpha(const kibrender::Pixmap& pixmap) {
  int most = 0;
  for (int y = 0; y < pixmap.height(); ++y)
    for (int x = 0; x < pixmap.width(); ++x) most = std::max(most, int(pixmap.pixelAt(x, y).alpha));
  return most;
}

struct Comparison {
  double meanDifference = 0;  // per channel, over the common area, 0…255
  double farOffFraction = 0;  // of the common area's pixels, a channel more than 64 off
  double worstTile = 0;       // the largest mean difference per channel of an 8 × 8 tile
};

// Compares two pictures over their common top-left area (premultiplied channels).
inline Comparison compare(const kibrender::Pixmap& a, const kibrender::Pixmap& b) {
  const int width = std::min(a.width(), b.width()), height = std::min(a.height(), b.height());
  Comparison result;
  if (width <= 0 || height <= 0) return {255, 1};
  double total = 0;
  long farOff = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto p = a.pixels()[std::size_t(y) * std::size_t(a.width()) + std::size_t(x)];
      const auto q = b.pixels()[std::size_t(y) * std::size_t(b.width()) + std::size_t(x)];
      int worst = 0;
      for (int shift = 0; shift < 32; shift += 8) {
        const int d = std::abs(int((p >> shift) & 0xff) - int((q >> shift) & 0xff));
        total += d;
        worst = std::max(worst, d);
      }
      if (worst > 64) ++farOff;
    }
  }
  const double pixels = double(width) * double(height);
  result.meanDifference = total / (pixels * 4);
  for (int ty = 0; ty < height; ty += 8) {
    for (int tx = 0; tx < width; tx += 8) {
      double tile = 0;
      int count = 0;
      for (int y = ty; y < std::min(height, ty + 8); ++y) {
        for (int x = tx; x < std::min(width, tx + 8); ++x, ++count) {
          const auto p = a.pixels()[std::size_t(y) * std::size_t(a.width()) + std::size_t(x)];
          const auto q = b.pixels()[std::size_t(y) * std::size_t(b.width()) + std::size_t(x)];
          for (int shift = 0; shift < 32; shift += 8)
            tile += std::abs(int((p >> shift) & 0xff) - int((q >> shift) & 0xff));
        }
      }
      result.worstTile = std::max(result.worstTile, tile / (count * 4));
    }
  }
  result.farOffFraction = double(farOff) / pixels;
  return result;
}

// Alike enough to be the same picture drawn with another build of the fonts
// and of freetype: glyph edges may differ a little everywhere, but no small
// part of the picture may change much (a mark moved, a word replaced).
inline bool looksAlike(const Comparison& comparison) {
  return comparison.meanDifference < 2.0 && comparison.farOffFraction < 0.02 && comparison.worstTile < 24;
}

}  // namespace rendertest
