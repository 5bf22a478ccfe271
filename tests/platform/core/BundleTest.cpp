#include "platform/core/Bundle.h"

#include <fstream>

#include "tests/support/PlatformTest.h"
#include "tests/support/ScopedVariable.h"

using namespace platform;
using kibtest::ScopedVariable;
namespace fs = std::filesystem;

namespace {

void writeFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

class BundleTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    folder = tempDir / "Kib.bundle";
    writeFile(folder / "Info.json",
              R"({"identifier": "com.velmo.menuextra.Parlo", "principalClass": "VelmoKibExtra",
                  "executable": "libkibextra.so"})");
    writeFile(folder / "libkibextra.so", "");
    writeFile(folder / "Resources/en.lproj/MenuExtraLocalizable.strings",
              "/* Menu titles */\n"
              "\"Available\" = \"Available\";\n"
              "\"Show Buddy List\\\\U2026\" = \"Show Buddy List\\U2026\";\n"
              "\"Only in English\" = \"English only\";\n");
    writeFile(folder / "Resources/de.lproj/MenuExtraLocalizable.strings", "\"Available\" = \"Verfügbar\";\n");
    writeFile(folder / "Resources/en.lproj/Localizable.strings", "\"Hello\" = \"Hello there\";\n");
  }
  void TearDown() override {
    Bundle::setMainBundle(nullptr);
    PlatformTest::TearDown();
  }

  BundlePtr bundle() {
    auto b = Bundle::bundleWithPath(folder.string());
    EXPECT_TRUE(b);
    return b;
  }
  std::vector<std::string> systemLog() const { return linesOf(Log::Channel::System); }

  fs::path folder;
  // The language variables, cleared so that each test states its own.
  ScopedVariable lcAll{"LC_ALL", nullptr};
  ScopedVariable lcMessages{"LC_MESSAGES", nullptr};
  ScopedVariable language{"LANGUAGE", nullptr};
  ScopedVariable lang{"LANG", nullptr};
};

TEST_F(BundleTest, MetadataComesFromInfoJson) {
  auto b = Bundle::bundleWithPath(folder.string() + "/");
  ASSERT_TRUE(b);
  EXPECT_EQ(b->bundlePath(), folder.string());
  EXPECT_EQ(b->bundleIdentifier(), "com.velmo.menuextra.Parlo");
  EXPECT_EQ(b->principalClassName(), "VelmoKibExtra");
  EXPECT_EQ(b->resourcePath(), folder.string() + "/Resources");
  EXPECT_EQ(b->executablePath(), (folder / "libkibextra.so").string());
  EXPECT_EQ(b->description(), "Bundle <" + folder.string() + "> (com.velmo.menuextra.Parlo)");

  fs::remove(folder / "libkibextra.so");
  EXPECT_EQ(b->executablePath(), "") << "a missing library is no executable";
  writeFile(folder / "Info.json", R"({"identifier": "com.example.plain"})");
  auto plain = Bundle::bundleWithPath(folder.string());
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->principalClassName(), "");
  EXPECT_EQ(plain->executablePath(), "");
  EXPECT_TRUE(systemLog().empty());
}

TEST_F(BundleTest, MissingOrGarbledMetadataAnswersNilWithAReason) {
  EXPECT_EQ(Bundle::bundleWithPath((tempDir / "Nowhere.bundle").string()), nullptr);
  for (const char* garbled : {"{\"identifier\": ", "[\"identifier\"]", R"({"identifier": 42})"}) {
    writeFile(folder / "Info.json", garbled);
    EXPECT_EQ(Bundle::bundleWithPath(folder.string()), nullptr) << garbled;
  }
  ASSERT_EQ(systemLog().size(), 4u);
  EXPECT_NE(systemLog()[0].find("Nowhere.bundle"), std::string::npos) << systemLog()[0];
  for (std::size_t i = 1; i < 4; ++i)
    EXPECT_NE(systemLog()[i].find((folder / "Info.json").string()), std::string::npos) << systemLog()[i];
}

TEST_F(BundleTest, ImagesAreFoundWithOrWithoutTheirExtension) {
  writeFile(folder / "Resources/MenuExtra.pdf", "%PDF");
  writeFile(folder / "Resources/Away.png", "png");
  writeFile(folder / "Resources/Idle.tiff", "tiff");
  fs::create_directories(folder / "Resources/Folder.png");
  auto b = bundle();
  const std::string resources = b->resourcePath();

  EXPECT_EQ(b->pathForImageResource("MenuExtra"), resources + "/MenuExtra.pdf");
  EXPECT_EQ(b->pathForImageResource("MenuExtra.pdf"), resources + "/MenuExtra.pdf");
  EXPECT_EQ(b->pathForImageResource("Away"), resources + "/Away.png");
  EXPECT_EQ(b->pathForImageResource("Idle"), resources + "/Idle.tiff");
  EXPECT_EQ(b->pathForImageResource("Folder"), "") << "a folder is not an image";
  EXPECT_EQ(b->pathForImageResource("Missing"), "");
  EXPECT_EQ(b->pathForImageResource(""), "");
  EXPECT_EQ(b->pathForResource("Away", "png"), resources + "/Away.png");
  EXPECT_EQ(b->pathForResource("Away.png", ""), resources + "/Away.png");
  EXPECT_EQ(b->pathForResource("Away", "pdf"), "");
  EXPECT_EQ(Bundle::mainBundle().pathForImageResource("Away"), "") << "the default main bundle has no resources";
}

TEST_F(BundleTest, LocalizedLookupFallsBackToEnglishThenToTheDefaultOrKey) {
  auto b = bundle();
  const std::string table = "MenuExtraLocalizable";
  EXPECT_EQ(b->localizedStringForKey("Available", "", table), "Available");
  EXPECT_EQ(b->localizedStringForKey("Show Buddy List\\U2026", "", table), "Show Buddy List\u2026");
  EXPECT_EQ(b->localizedStringForKey("Show Buddy List\u2026", "", table), "Show Buddy List\u2026")
      << "the real ellipsis is not the key";
  EXPECT_EQ(b->localizedStringForKey("Open Parlo\\U2026", "", table), "Open Parlo\\U2026") << "missing: the key";
  EXPECT_EQ(b->localizedStringForKey("Away", "Gone", table), "Gone") << "missing: the default";
  EXPECT_EQ(b->localizedStringForKey("Available", "", "NoSuchTable"), "Available");
  EXPECT_EQ(b->localizedStringForKey("Hello", "", ""), "Hello there") << "the default table is Localizable";

  ScopedVariable german("LANG", "de_DE.UTF-8");
  EXPECT_EQ(b->localizedStringForKey("Available", "", table), "Verfügbar");
  EXPECT_EQ(b->localizedStringForKey("Only in English", "", table), "English only");
  {
    ScopedVariable messages("LC_MESSAGES", "fr_FR.UTF-8");
    EXPECT_EQ(b->localizedStringForKey("Available", "", table), "Available") << "no French table: English";
  }
  EXPECT_EQ(Bundle::mainBundle().localizedStringForKey("Available", "", table), "Available");
  Bundle::setMainBundle(b);
  EXPECT_EQ(Bundle::mainBundle().localizedStringForKey("Available", "", table), "Verfügbar");
  Bundle::setMainBundle(nullptr);
  EXPECT_EQ(Bundle::mainBundle().bundlePath(), "");
  EXPECT_TRUE(systemLog().empty());
}

TEST_F(BundleTest, AMalformedStringsFileIsReportedOnceAndReadAsEmpty) {
  writeFile(folder / "Resources/de.lproj/MenuExtraLocalizable.strings",
            "\"Available\" = \"Verfügbar\";\n\"Away\" = \"Abwesend\"\n\"Offline\" = \"Offline\";\n");
  auto b = bundle();
  ScopedVariable german("LANG", "de_DE.UTF-8");

  EXPECT_EQ(b->localizedStringForKey("Available", "", "MenuExtraLocalizable"), "Available");
  EXPECT_EQ(b->localizedStringForKey("Away", "", "MenuExtraLocalizable"), "Away");
  ASSERT_EQ(systemLog().size(), 1u);
  EXPECT_NE(systemLog()[0].find("de.lproj/MenuExtraLocalizable.strings"), std::string::npos) << systemLog()[0];
  EXPECT_NE(systemLog()[0].find("line 3"), std::string::npos) << systemLog()[0];
}

TEST_F(BundleTest, PreferredLanguageReadsTheLocaleVariablesInOrder) {
  EXPECT_EQ(Bundle::preferredLanguage(), "en");
  ScopedVariable langVariable("LANG", "pt_BR.UTF-8");
  EXPECT_EQ(Bundle::preferredLanguage(), "pt");
  ScopedVariable languageList("LANGUAGE", "sv:de");
  EXPECT_EQ(Bundle::preferredLanguage(), "sv");
  ScopedVariable messages("LC_MESSAGES", "ja_JP");
  EXPECT_EQ(Bundle::preferredLanguage(), "ja");
  ScopedVariable all("LC_ALL", "C.UTF-8");
  EXPECT_EQ(Bundle::preferredLanguage(), "en");
  ScopedVariable empty("LC_ALL", "");
  EXPECT_EQ(Bundle::preferredLanguage(), "ja") << "an empty variable is skipped";
  ScopedVariable modifier("LC_MESSAGES", "de@euro");
  EXPECT_EQ(Bundle::preferredLanguage(), "de");
}

}  // namespace
