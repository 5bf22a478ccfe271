#include <gtest/gtest.h>

#include "host/PluginBundle.h"
#include "tests/host/HostTestSupport.h"
#include "tests/support/PlatformTest.h"

namespace {

using kibhost::PluginBundle;

class PluginBundleTest : public kibtest::PlatformTest {
 protected:
  // A bundle folder with the given metadata; answers its path.
  std::filesystem::path bundleWithInfo(const std::string& name, const std::string& info) {
    auto folder = tempDir / name;
    kibtest::writeFile(folder / "Info.json", info);
    return folder;
  }

  std::string loadError(const std::filesystem::path& folder) {
    std::string error;
    auto plugin = PluginBundle::load(folder, error);
    EXPECT_FALSE(plugin) << folder;
    return error;
  }
};

TEST_F(PluginBundleTest, ThePrincipalClassIsFoundThroughTheExportedLookup) {
  std::string error;
  auto plugin = PluginBundle::load(kibtest::testBundlePath(), error);
  ASSERT_TRUE(plugin) << error;
  EXPECT_EQ(plugin->bundle()->bundleIdentifier(), "com.velmo.kibtest.TestExtra");
  EXPECT_EQ(std::string(plugin->principalClass().name), "TestExtra");
  EXPECT_TRUE(plugin->hasSelfTest());

  auto extra = plugin->instantiate();
  ASSERT_TRUE(extra);
  EXPECT_EQ(extra->className(), "TestExtra");
  EXPECT_EQ(extra->bundle(), plugin->bundle()) << "created with initWithBundle on its own bundle";
  EXPECT_EQ(extra->length(), 24);
  EXPECT_EQ(plugin->principalClass().durationOfTest(*extra, 3), 6.0) << "entry points reach the instance";
  extra->willUnload();
}

TEST_F(PluginBundleTest, WhatIsWrongWithABundleIsSaid) {
  const auto library = kibtest::testBundlePath() / "TestExtra.so";
  const auto platformLibrary = kibtest::environmentPath("KIB_PLATFORM_LIBRARY");
  ASSERT_TRUE(std::filesystem::exists(library));
  ASSERT_TRUE(std::filesystem::exists(platformLibrary));

  auto missing = tempDir / "Missing.menuextra";
  EXPECT_EQ(loadError(missing), "bundle " + missing.string() + ": no such folder");

  auto empty = tempDir / "Empty.menuextra";
  std::filesystem::create_directories(empty);
  auto error = loadError(empty);
  EXPECT_NE(error.find(empty.string()), std::string::npos) << error;
  EXPECT_NE(error.find("Info.json"), std::string::npos) << error;

  auto noClass = bundleWithInfo("NoClass.menuextra", R"({"identifier": "x", "executable": "x.so"})");
  EXPECT_EQ(loadError(noClass), "bundle " + noClass.string() + ": Info.json names no principalClass");

  auto noLibrary = bundleWithInfo("NoLibrary.menuextra", R"({"principalClass": "TestExtra", "executable": "gone.so"})");
  EXPECT_EQ(loadError(noLibrary),
            "bundle " + noLibrary.string() + ": Info.json names no executable, or the executable is missing");

  auto notALibrary = bundleWithInfo("Text.menuextra", R"({"principalClass": "TestExtra", "executable": "Info.json"})");
  error = loadError(notALibrary);
  EXPECT_EQ(error.rfind("bundle " + notALibrary.string() + ": cannot load " + (notALibrary / "Info.json").string(), 0),
            0u)
      << error;

  auto noLookup = bundleWithInfo(
      "NoLookup.menuextra", R"({"principalClass": "TestExtra", "executable": ")" + platformLibrary.string() + "\"}");
  EXPECT_EQ(loadError(noLookup), "bundle " + noLookup.string() + ": " + platformLibrary.string() +
                                     " does not export kib_menu_extra_class_named");

  auto otherClass = bundleWithInfo("Other.menuextra",
                                   R"({"principalClass": "VelmoKibExtra", "executable": ")" + library.string() + "\"}");
  EXPECT_EQ(loadError(otherClass),
            "bundle " + otherClass.string() + ": " + library.string() + " defines no class VelmoKibExtra");
}

TEST_F(PluginBundleTest, DamagedLibrariesAndMetadataAreRefusedBeforeLoading) {
  const std::string whole = kibtest::readBytes(kibtest::testBundlePath() / "TestExtra.so");
  ASSERT_GT(whole.size(), 4096u);
  std::string otherClass = whole;
  otherClass[4] = 1;  // ELFCLASS32
  std::string executable = whole;
  executable[16] = 2;  // ET_EXEC
  struct Case {
    std::string name;
    std::string bytes;
    std::string reason;
  };
  const std::vector<Case> cases{
      {"empty", "", "it is too short to be a library"},
      {"text", std::string(100, 'x'), "it is not a shared library (no ELF header)"},
      {"header only", whole.substr(0, 64), "its program headers are damaged or cut off"},
      {"cut in half", whole.substr(0, whole.size() / 2), "it is cut off (its section headers lie past its end)"},
      {"one byte short", whole.substr(0, whole.size() - 1), "it is cut off (its section headers lie past its end)"},
      {"32-bit", otherClass, "it is not a 64-bit library"},
      {"program", executable, "it is not a shared library (ELF type 2)"},
  };
  for (const auto& c : cases) {
    auto folder = bundleWithInfo("Damaged.menuextra", R"({"principalClass": "TestExtra", "executable": "lib.so"})");
    kibtest::writeFile(folder / "lib.so", c.bytes);
    EXPECT_EQ(loadError(folder),
              "bundle " + folder.string() + ": cannot load " + (folder / "lib.so").string() + ": " + c.reason)
        << c.name;
  }

  auto folderInfo = tempDir / "FolderInfo.menuextra";
  std::filesystem::create_directories(folderInfo / "Info.json");
  EXPECT_EQ(loadError(folderInfo), "No bundle at " + folderInfo.string() + ": " + (folderInfo / "Info.json").string() +
                                       " is a folder, not a file");
}

}  // namespace
