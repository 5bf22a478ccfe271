// The program with the extra's own bundle (the default --bundle) on the
// built-in scenario: what the user sees and what the extra does, read from
// the transcripts of the scripts in tests/host/scripts.
#include "tests/host/e2e/E2ETest.h"

namespace {

using kibtest::linesOfType;
using kibtest::script;
using Lines = std::vector<nlohmann::ordered_json>;

class ParloExtraTest : public kibtest::E2ETest {
 protected:
  void SetUp() override {
    E2ETest::SetUp();
    if (!std::filesystem::exists(kibtest::environmentPath("KIB_EXTRA_BUNDLE") / "Info.json"))
      GTEST_SKIP() << "the extra's bundle is not part of this build";
  }

  // Plays a script with the program's own bundle; answers the transcript.
  Lines play(const std::string& name) {
    auto run = kibbar({"--script", script(name), "--no-queries"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    return run.transcript();
  }

  // One line per item: "title | tag | state | enabled | action | alternate | key | modifiers | indent | image |
  // represented object", or "---" for a separator.
  static std::vector<std::string> rows(const nlohmann::ordered_json& menu) {
    std::vector<std::string> result;
    for (const auto& item : menu["items"]) {
      if (item.value("separator", false)) {
        result.push_back("---");
        continue;
      }
      auto text = [](const nlohmann::ordered_json& value) {
        return value.is_null() ? std::string("nil") : value.is_string() ? value.get<std::string>() : value.dump();
      };
      result.push_back(text(item["title"]) + " | " + text(item["tag"]) + " | " + text(item["state"]) + " | " +
                       (item["enabled"].get<bool>() ? "enabled" : "disabled") + " | " + text(item["action"]) + " | " +
                       (item["alternate"].get<bool>() ? "alternate" : "-") + " | " + text(item["key"]) + " | " +
                       text(item["modifiers"]) + " | " + text(item["indent"]) + " | " + text(item["image"]) + " | " +
                       text(item["represented"]));
    }
    return result;
  }
};

TEST_F(ParloExtraTest, TheDefaultScenariosMenuItemByItem) {
  auto lines = play("default-menu.kbs");
  EXPECT_EQ(lines.front()["bundle"], "com.velmo.menuextra.Parlo");
  EXPECT_EQ(lines.front()["principalClass"], "VelmoKibExtra");
  auto menus = linesOfType(lines, "menu");
  ASSERT_EQ(menus.size(), 1u);
  EXPECT_EQ(rows(menus[0]), (std::vector<std::string>{
                                "My Status: Available | 1 | 0 | disabled | : | - |  | 0 | 0 | nil | nil",
                                "---",
                                "Offline | 4 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-offline | nil",
                                "Invisible | 5 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | "
                                "status-invisible-flat.tif | nil",
                                "---",
                                "Available | 2 | 1 | enabled | selectMenuItem: | - |  | 0 | 0 | status-available | ",
                                "At my desk | 2 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-available | "
                                "At my desk",
                                "Writing code | 2 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-available | "
                                "Writing code",
                                "---",
                                "Current Melodix Song | 2 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | "
                                "status-available | ♫ %@",
                                "---",
                                "Away | 3 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-away | Away",
                                "Out to lunch | 3 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-away | "
                                "Out to lunch",
                                "In a meeting | 3 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-away | "
                                "In a meeting",
                                "Gone home | 3 | 0 | enabled | selectMenuItem: | - |  | 0 | 0 | status-away | Gone home",
                                "---",
                            }));
}

TEST_F(ParloExtraTest, ChoosingAwaySendsTheRequestAndTheIconFollows) {
  auto lines = play("away.kbs");
  auto close = linesOfType(lines, "menu-close");
  ASSERT_EQ(close.size(), 2u);
  EXPECT_EQ(close[0]["title"], "Away");

  std::vector<std::string> requests;
  for (const auto& line : linesOfType(lines, "daemon")) {
    std::string text = line["t"].dump() + " " + line["request"].get<std::string>();
    for (const auto& argument : line["arguments"]) text += " " + argument.get<std::string>();
    requests.push_back(text);
  }
  EXPECT_EQ(requests, (std::vector<std::string>{
                          "1.0 addListenerID:capabilities: \"com.velmo.menuextra.Parlo\" 0x1",
                          "2.0 setMyStatus:message: 3 \"Away\"",
                          "2.0 writeSettings aim visible",
                          "2.0 writeSettings ambrel visible",
                          "2.0 writeSettings jabber visible",
                          "2.0 writeSettings vistel visible",
                          "3.5 removeListenerID: \"com.velmo.menuextra.Parlo\"",  // willUnload
                          "3.5 removeListenerID: \"com.velmo.menuextra.Parlo\"",  // and the release
                      }));

  std::vector<std::string> icons;
  for (const auto& line : linesOfType(lines, "icon"))
    icons.push_back(line["t"].dump() + " " + line["image"].get<std::string>() +
                    (line["dimmed"].get<bool>() ? " dimmed" : ""));
  EXPECT_EQ(icons, (std::vector<std::string>{"0.0 MenuExtra.pdf dimmed", "1.0 MenuExtra.pdf",
                                             "2.25 MenuExtra-.pdf"}))
      << "dimmed until start-up, then Available, then Away once the daemon answered";

  auto menus = linesOfType(lines, "menu");
  ASSERT_EQ(menus.size(), 2u);
  const auto& after = menus[1]["items"];
  EXPECT_EQ(after[0]["title"], "My Status: Away");
  EXPECT_EQ(after[5]["title"], "Available");
  EXPECT_EQ(after[5]["state"], 0);
  EXPECT_EQ(after[11]["title"], "Away");
  EXPECT_EQ(after[11]["state"], 1);
}

TEST_F(ParloExtraTest, AStatusTextScrollsThreeTimesAndCollapses) {
  auto lines = play("status-text.kbs");
  std::vector<std::string> banner;
  for (const auto& line : lines) {
    const std::string type = line["type"];
    if (type == "banner")
      banner.push_back(line["t"].dump() + " text " + (line["text"].is_null() ? "none" : line["text"].get<std::string>()));
    if (type == "banner-scroll")
      banner.push_back(line["t"].dump() + " " + line["event"].get<std::string>() +
                       (line.contains("count") ? " " + line["count"].dump() : ""));
  }
  // The text shows once the slot is wide enough, scrolls 60 points a second
  // (its width, 218.4 points, and the gap of 20 take four seconds a cycle),
  // and is gone when the slot has narrowed again.
  EXPECT_EQ(banner, (std::vector<std::string>{"2.2 text Reading the paper, back soon", "3.05 start", "7.0167 wrap 1",
                                              "11.0167 wrap 2", "15.0167 wrap 3", "15.8333 text none"}));

  std::vector<std::pair<double, double>> lengths;
  for (const auto& line : linesOfType(lines, "length")) lengths.emplace_back(line["t"], line["length"]);
  ASSERT_EQ(lengths.size(), 121u) << "24, sixty reveal frames, sixty collapse frames";
  EXPECT_EQ(lengths[0], std::make_pair(0.0, 24.0));
  EXPECT_EQ(lengths[30], std::make_pair(2.5, 87.0)) << "half way through the eased reveal";
  EXPECT_EQ(lengths[60], std::make_pair(3.0, 150.0)) << "the widest a banner gets";
  EXPECT_EQ(lengths[61].first, 15.0333) << "the collapse starts with the third wrap";
  EXPECT_EQ(lengths[120], std::make_pair(16.0167, 24.0));
}

}  // namespace
