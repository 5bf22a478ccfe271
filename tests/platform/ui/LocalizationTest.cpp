#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/core/Bundle.h"
#include "platform/ui/Image.h"
#include "tests/platform/ui/UiTestSupport.h"
#include "tests/support/PlatformTest.h"
#include "tests/support/ScopedVariable.h"

using namespace platform;

namespace {

constexpr const char* kTable = "MenuExtraLocalizable";
constexpr const char* kEllipsis = "\u2026";

// Every key the extra looks up; the six characters \U2026 at the end of a key stand for the ellipsis.
const char* const kKeys[] = {"My Status:",
                             "Available",
                             "Away",
                             "Offline",
                             "Invisible",
                             "Current Melodix Song",
                             "%@ Buddies",
                             "Buddies",
                             "Nobody Available",
                             "Display %@ Buddies",
                             "Show %@ Buddy List\\U2026",
                             "Show Buddy List\\U2026",
                             "No Account Enabled",
                             "Open Parlo\\U2026",
                             "Screen Sharing with %@",
                             "Sharing My Screen",
                             "End Screen Sharing"};

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The locale for one test: LC_ALL set (or not), the other locale variables unset.
struct LanguageScope {
  explicit LanguageScope(const char* language) : all("LC_ALL", language) {}
  kibtest::ScopedVariable all;
  kibtest::ScopedVariable messages{"LC_MESSAGES", nullptr};
  kibtest::ScopedVariable languages{"LANGUAGE", nullptr};
  kibtest::ScopedVariable lang{"LANG", nullptr};
};

class LocalizationTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    auto folder = tempDir / "Extra.bundle";
    std::filesystem::create_directories(folder);
    std::filesystem::copy(uitest::resourcesDir(), folder / "Resources", std::filesystem::copy_options::recursive);
    std::ofstream(folder / "Info.json") << R"({"identifier": "com.velmo.menuextra.Parlo", "principalClass": "VelmoKibExtra"})";
    bundle = Bundle::bundleWithPath(folder.string());
    ASSERT_NE(bundle, nullptr);
  }
  std::string localized(const std::string& key) const { return bundle->localizedStringForKey(key, "", kTable); }

  BundlePtr bundle;
};

TEST_F(LocalizationTest, TheEnglishTableHoldsEveryTitle) {
  LanguageScope english("en_GB.UTF-8");
  for (const char* key : kKeys) {
    std::string title = localized(key);
    if (endsWith(key, "\\U2026")) {
      std::string stem = std::string(key).substr(0, std::string(key).size() - 6);
      EXPECT_EQ(title, stem + kEllipsis) << key;
    } else {
      EXPECT_EQ(title, key) << "English titles read as their keys";
    }
  }
  EXPECT_EQ(localized("Open Parlo\\U2026"), "Open Parlo\u2026");
}

TEST_F(LocalizationTest, AMissingKeyShowsItselfOrTheGivenDefault) {
  LanguageScope english(nullptr);
  EXPECT_EQ(localized("Display Ambrel Buddies"), "Display Ambrel Buddies");
  EXPECT_EQ(localized("Show Nothing\\U2026"), "Show Nothing\\U2026") << "a missing key is shown as it stands";
  EXPECT_EQ(bundle->localizedStringForKey("Elsewhere", "Fallback", kTable), "Fallback");
  EXPECT_EQ(bundle->localizedStringForKey("Away", "", "NoSuchTable"), "Away");
  EXPECT_EQ(localized("Away"), "Away");
}

TEST_F(LocalizationTest, TheGermanTableIsUsedForAGermanLocale) {
  LanguageScope german("de_DE.UTF-8");
  EXPECT_EQ(localized("Available"), "Verfügbar");
  EXPECT_EQ(localized("Away"), "Abwesend");
  EXPECT_EQ(localized("Show Buddy List\\U2026"), "Kontaktliste einblenden\u2026");
  for (const char* key : kKeys) {
    std::string title = localized(key);
    if (std::string(key) != "Offline") {  // the same word in German
      EXPECT_NE(title, std::string(key)) << "untranslated or missing in German: " << key;
    }
    EXPECT_EQ(endsWith(key, "\\U2026"), endsWith(title, kEllipsis)) << key;
    EXPECT_EQ(std::string(key).find("%@") != std::string::npos, title.find("%@") != std::string::npos) << key;
  }
}

TEST_F(LocalizationTest, TheBundleFindsTheImagesByTheirNames) {
  for (const char* name : {"menu-video", "menu-video_busy", "menu-audio", "menu-audio_busy", "SharingActive"}) {
    std::string path = bundle->pathForImageResource(name);
    ASSERT_FALSE(path.empty()) << name;
    EXPECT_TRUE(Image::initByReferencingFile(path)->isValid()) << path;
  }
  for (const char* file : {"MenuExtra.pdf", "MenuExtra-.pdf", "MenuExtra!.pdf", "status-invisible-flat.tif"}) {
    auto image = Image::initByReferencingFile(bundle->resourcePath() + "/" + file);
    EXPECT_TRUE(image->isValid()) << image->loadError();
  }
}

}  // namespace
