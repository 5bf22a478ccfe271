#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kibtest {

// The path the build compiled in for one of CTest's variables, "" when none.
inline std::string builtPath(std::string_view name) {
  const std::map<std::string_view, const char*> built{
#ifdef BUILT_KIB_TEST_SOURCE_DIR
      {"KIB_TEST_SOURCE_DIR", BUILT_KIB_TEST_SOURCE_DIR},
#endif
#ifdef BUILT_KIB_TEST_BUNDLE
      {"KIB_TEST_BUNDLE", BUILT_KIB_TEST_BUNDLE},
#endif
#ifdef BUILT_KIB_EXTRA_BUNDLE
      {"KIB_EXTRA_BUNDLE", BUILT_KIB_EXTRA_BUNDLE},
#endif
#ifdef BUILT_KIB_PLATFORM_LIBRARY
      {"KIB_PLATFORM_LIBRARY", BUILT_KIB_PLATFORM_LIBRARY},
#endif
#ifdef BUILT_KIBBAR
      {"KIBBAR", BUILT_KIBBAR},
#endif
  };
  auto found = built.find(name);
  return found == built.end() ? std::string() : found->second;
}

// Where the build put the test extra's bundle, the platform library, the
// program: from CTest's environment, else the build's own paths (a test binary
// run by hand).
inline std::filesystem::path environmentPath(const char* name) {
  if (const char* value = std::getenv(name); value && *value) return value;
  return builtPath(name);
}

inline std::filesystem::path testBundlePath() { return environmentPath("KIB_TEST_BUNDLE"); }

inline std::string readBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

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
