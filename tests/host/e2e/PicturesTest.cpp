// kibbar --pictures DIR and --version: the pictures a headless run draws, one
// for each menu and each change of the slot, the same bytes every time, and
// the refusals when they cannot be drawn.
#include <fstream>
#include <regex>
#include <set>

#include "tests/host/e2e/E2ETest.h"

namespace {

using kibtest::script;

// A PNG's width and height from its header.
std::pair<int, int> pngSize(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  unsigned char header[24] = {};
  in.read(reinterpret_cast<char*>(header), sizeof header);
  if (in.gcount() != 24 || std::string(reinterpret_cast<char*>(header) + 1, 3) != "PNG") return {0, 0};
  auto number = [&](int at) { return header[at] << 24 | header[at + 1] << 16 | header[at + 2] << 8 | header[at + 3]; };
  return {number(16), number(20)};
}

class PicturesTest : public kibtest::E2ETest {
 protected:
  void SetUp() override {
    E2ETest::SetUp();
    if (!std::filesystem::exists(kibtest::environmentPath("KIB_EXTRA_BUNDLE") / "Info.json"))
      GTEST_SKIP() << "the extra's bundle is not part of this build";
  }
};

TEST_F(PicturesTest, EachMenuAndEachChangeOfTheSlotIsDrawnInFourVariantsTheSameEveryTime) {
  const auto folder = dir / "pictures";
  auto run = kibbar({"--script", script("screen-sharing.kbs"), "--no-queries", "--pictures", folder.string()});
  ASSERT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  const auto lines = run.transcript();

  std::set<double> slotChanges, menuTimes, slotPictures, menuPictures;
  int number = 0;
  for (const auto& line : lines) {
    const std::string type = line["type"];
    const double t = line["t"];
    if (type == "icon" || type == "banner" || type == "highlight") slotChanges.insert(t);
    if (type == "menu") menuTimes.insert(t);
    if (type != "picture") continue;
    const std::string of = line["of"], file = line["file"];
    char expected[32];
    std::snprintf(expected, sizeof expected, "%04d-%s.png", ++number, of.c_str());
    EXPECT_EQ(file, expected);
    (of == "menu" ? menuPictures : slotPictures).insert(t);
    const auto base = file.substr(0, file.size() - 4);
    const auto [width, height] = pngSize(folder / file);
    EXPECT_GT(width, 0) << file;
    for (const char* variant : {"@2x", "-dark", "-dark@2x"}) {
      const auto [w, h] = pngSize(folder / (base + variant + ".png"));
      const int scale = std::string(variant).find("@2x") != std::string::npos ? 2 : 1;
      EXPECT_EQ(w, width * scale) << base << variant;
      EXPECT_EQ(h, height * scale) << base << variant;
    }
  }
  EXPECT_EQ(menuPictures, menuTimes) << "one picture as each menu pops up";
  for (double t : slotChanges) EXPECT_TRUE(slotPictures.count(t)) << "no slot picture at " << t;
  EXPECT_GE(menuPictures.size(), 1u);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 4 * number);

  // The blink between the sharing glyph and the status icon gives pictures that differ.
  const auto first = kibtest::readFile(folder / "0001-slot.png");
  bool differs = false;
  for (int i = 2; i <= number && !differs; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "%04d-slot.png", i);
    if (std::filesystem::exists(folder / name)) differs = kibtest::readFile(folder / name) != first;
  }
  EXPECT_TRUE(differs);

  // The same run draws the same bytes.
  const auto again = dir / "again";
  ASSERT_EQ(kibbar({"--script", script("screen-sharing.kbs"), "--no-queries", "--pictures", again.string()}).status, 0);
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    EXPECT_EQ(kibtest::readFile(entry.path()), kibtest::readFile(again / entry.path().filename()))
        << entry.path().filename();
}

TEST_F(PicturesTest, PicturesThatCannotBeDrawnAreRefusedAndTheVersionIsShown) {
  const auto file = dir / "a-file";
  kibtest::writeFile(file, "x");
  auto blocked = kibbar({"--script", script("away.kbs"), "--pictures", (file / "pictures").string()});
  EXPECT_EQ(blocked.status, 2);
  EXPECT_EQ(blocked.errors.rfind("kibbar: " + (file / "pictures").string() + ": cannot make the pictures folder (", 0),
            0u)
      << blocked.errors;
  EXPECT_EQ(blocked.out, "");

  auto terminal = kibbar({"--pictures", (dir / "p").string()});
  EXPECT_EQ(terminal.status, 2);
  EXPECT_EQ(terminal.errors, "kibbar: --pictures draws a headless run; give --script FILE or --self-test N\n");
  EXPECT_EQ(kibbar({"--pictures"}).errors, "kibbar: --pictures needs a folder\n");

  auto version = kibbar({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(std::regex_match(version.out, std::regex("kibbar [0-9]+\\.[0-9]+\\.[0-9]+\n"))) << version.out;
}

}  // namespace
