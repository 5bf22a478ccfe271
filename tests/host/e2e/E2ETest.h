#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/host/e2e/KibbarProcess.h"

namespace kibtest {

// Each test gets its own folder, with the program's preferences inside it.
class E2ETest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir = std::filesystem::temp_directory_path() /
          ("kibbar-e2e-" + std::to_string(getpid()) + "-" + info->test_suite_name() + "-" + info->name());
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
  }

  KibbarRun kibbar(const std::vector<std::string>& arguments, const std::filesystem::path& standardOutput = {}) {
    return runKibbar(arguments, dir / ("run-" + std::to_string(++runs)),
                     {{"KIBBAR_CONFIG_DIR", (dir / "prefs").string()}}, standardOutput);
  }

  std::filesystem::path dir;
  int runs = 0;
};

inline std::string testBundle() { return environmentPath("KIB_TEST_BUNDLE").string(); }
inline std::string script(const std::string& name) { return sourcePath("tests/host/scripts/" + name).string(); }

}  // namespace kibtest
