#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace kibtest {

// Where the build put the test extra's bundle and the platform library (set by CTest).
inline std::filesystem::path environmentPath(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::filesystem::path(value) : std::filesystem::path();
}

inline std::filesystem::path testBundlePath() { return environmentPath("KIB_TEST_BUNDLE"); }

inline void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

// The transcript's lines, parsed.
inline std::vector<nlohmann::ordered_json> transcriptLines(const std::string& text) {
  std::vector<nlohmann::ordered_json> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line))
    if (!line.empty()) lines.push_back(nlohmann::ordered_json::parse(line));
  return lines;
}

inline std::vector<nlohmann::ordered_json> linesOfType(const std::vector<nlohmann::ordered_json>& lines,
                                                       const std::string& type) {
  std::vector<nlohmann::ordered_json> found;
  for (const auto& line : lines)
    if (line.value("type", "") == type) found.push_back(line);
  return found;
}

}  // namespace kibtest
