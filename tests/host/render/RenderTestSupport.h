#pragma once

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

}  // namespace rendertest
