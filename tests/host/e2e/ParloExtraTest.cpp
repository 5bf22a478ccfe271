// The program with the extra's own bundle (the default --bundle) on the
// built-in scenario: what the user sees and what the extra does, read from
// the transcripts of the scripts in tests/host/scripts.
#include <regex>

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

  // A people-list item, as its description names it: "item of <its most available handle>".
  static std::string represented(const nlohmann::ordered_json& value) {
    if (value.is_null()) return "nil";
    const std::string text = value;
    static const std::regex item(R"(^KibPeopleListItem .*MostAvailable: (\S+) )");
    std::smatch match;
    return std::regex_search(text, match, item) ? "item of " + match[1].str() : text;
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
                       represented(item["represented"]));
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
  EXPECT_EQ(rows(menus[0]),
            (std::vector<std::string>{
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
                // Everyone available on the accounts with a buddy list, by first name.
                "Buddies | 0 | 0 | disabled | : | - |  | 0 | 0 | nil | nil",
                "Felix Moreau | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | menu-video | "
                "item of felix@felix-imac",
                "Felix Moreau | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of felix@felix-imac",
                "Hana Sato | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | Empty Image | "
                "item of hanasato",
                "Hana Sato | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of hanasato",
                "Maya Okafor | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | menu-video | "
                "item of maya.okafor",
                "Maya Okafor | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of maya.okafor",
                "Ruth Calder | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | menu-video_busy | "
                "item of ruthcalder",
                "Ruth Calder | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of ruthcalder",
                "Sam Whitfield | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | menu-audio | "
                "item of sam@jabber.velmo.example",
                "Sam Whitfield | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of sam@jabber.velmo.example",
                "selftest.aim | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | Empty Image | "
                "item of selftest.aim",
                "selftest.aim | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of selftest.aim",
                "selftest@jabber.velmo.example | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | "
                "Empty Image | item of selftest@jabber.velmo.example",
                "selftest@jabber.velmo.example | 0 | 0 | enabled | textMessagePerson: | alternate |  | "
                "524288 | 0 | Empty Image | item of selftest@jabber.velmo.example",
                "Tess Tester | 0 | 0 | enabled | messagePerson: | - |  | 0 | 0 | Empty Image | "
                "item of tess@tess-studio",
                "Tess Tester | 0 | 0 | enabled | textMessagePerson: | alternate |  | 524288 | 0 | "
                "Empty Image | item of tess@tess-studio",
                "---",
                // The persistent services with a connected account, none chosen yet.
                "Display AIM Buddies | 0 | 0 | enabled | switchService: | - |  | 0 | 0 | nil | AIM",
                "Display Ambrel Buddies | 0 | 0 | enabled | switchService: | - |  | 0 | 0 | nil | SubNet",
                "Display Jabber Buddies | 0 | 0 | enabled | switchService: | - |  | 0 | 0 | nil | Jabber",
                "---",
                "Show Buddy List… | 0 | 0 | enabled | openBuddyList: | - |  | 0 | 0 | nil | nil",
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
                          "2.0 setMyStatus:message: 3 \"Away\"", "2.0 writeSettings aim visible",
                          "2.0 writeSettings ambrel visible", "2.0 writeSettings jabber visible",
                          "2.0 writeSettings vistel visible",
                          "3.5 removeListenerID: \"com.velmo.menuextra.Parlo\"",  // willUnload
                          "3.5 removeListenerID: \"com.velmo.menuextra.Parlo\"",  // and the release
                      }));

  std::vector<std::string> icons;
  for (const auto& line : linesOfType(lines, "icon"))
    icons.push_back(line["t"].dump() + " " + line["image"].get<std::string>() +
                    (line["dimmed"].get<bool>() ? " dimmed" : ""));
  EXPECT_EQ(icons, (std::vector<std::string>{"0.0 MenuExtra.pdf dimmed", "1.0 MenuExtra.pdf", "2.25 MenuExtra-.pdf"}))
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
      banner.push_back(line["t"].dump() + " text " +
                       (line["text"].is_null() ? "none" : line["text"].get<std::string>()));
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

TEST_F(ParloExtraTest, AReplacedStatusTextCountsOnlyItsOwnScrollCycles) {
  std::vector<std::string> banner;
  for (const auto& line : play("status-text-replaced.kbs")) {
    const std::string type = line["type"];
    if (type == "banner") banner.push_back(line["text"].is_null() ? "none" : line["text"].get<std::string>());
    if (type == "banner-scroll")
      banner.push_back(line["event"].get<std::string>() + (line.contains("count") ? " " + line["count"].dump() : ""));
  }
  // The first text's scrolling goes on under the wider one and jumps back at the first text's length; the wider
  // text's reveal ends with another jump back, where its own cycles start: neither is a finished cycle.
  ASSERT_FALSE(banner.empty());
  auto last = std::find(banner.begin(), banner.end(), "Reading the paper, back soon");
  ASSERT_NE(last, banner.end());
  EXPECT_EQ(std::vector<std::string>(last, banner.end()),
            (std::vector<std::string>{"Reading the paper, back soon", "start", "start", "start", "wrap 1", "wrap 2",
                                      "wrap 3", "none"}));
}

TEST_F(ParloExtraTest, InvisibilityShowsAsTheDaemonsWriteSettings) {
  std::vector<std::string> requests;
  for (const auto& line : linesOfType(play("invisible.kbs"), "daemon")) {
    if (line["request"] == "addListenerID:capabilities:" || line["request"] == "removeListenerID:") continue;
    std::string text = line["request"].get<std::string>();
    for (const auto& argument : line["arguments"]) text += " " + argument.get<std::string>();
    requests.push_back(text);
  }
  EXPECT_EQ(requests, (std::vector<std::string>{"setMyStatus:message: 4 nil", "writeSettings aim invisible",
                                                "writeSettings ambrel invisible", "writeSettings jabber invisible",
                                                "writeSettings vistel invisible"}));
}

TEST_F(ParloExtraTest, ChoosingABuddyOpensAChatInTheMessagingApplication) {
  auto lines = play("chat.kbs");
  std::vector<std::string> chats;
  for (const auto& line : lines) {
    const std::string type = line["type"];
    if (type == "menu-close") chats.push_back("chose " + line["title"].get<std::string>());
    if (type == "url") chats.push_back("url " + line["url"].get<std::string>());
    if (type == "application") chats.push_back("application: " + line["activity"].get<std::string>());
  }
  EXPECT_EQ(chats, (std::vector<std::string>{
                       "chose Maya Okafor",
                       "url Parlo:compose?service=AIM&id=maya.okafor",
                       "application: chat with maya.okafor on AIM",
                       "chose Maya Okafor",  // the alternate row, with Option held
                       "url Parlo:compose?service=AIM&id=maya.okafor&style=IM",
                       "application: text chat with maya.okafor on AIM",
                       "chose Ruth Calder",  // busy in another chat: a text chat
                       "url Parlo:compose?service=AIM&id=ruthcalder&style=IM",
                       "application: text chat with ruthcalder on AIM",
                   }));
  auto close = linesOfType(lines, "menu-close");
  ASSERT_EQ(close.size(), 3u);
  auto menu = linesOfType(lines, "menu").at(1)["items"];
  EXPECT_EQ(menu[close[1]["chosen"].get<int>()]["action"], "textMessagePerson:");
}

TEST_F(ParloExtraTest, TheChosenServiceIsKeptAcrossARestart) {
  auto lines = play("service-choice.kbs");
  auto written = linesOfType(lines, "preferences");
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(written[0]["domain"], "com.velmo.menuextra.Parlo");
  EXPECT_EQ(written[0]["values"].dump(), R"({"DefaultServiceName":"AIM"})");
  auto menus = linesOfType(lines, "menu");
  ASSERT_EQ(menus.size(), 2u);
  auto urls = linesOfType(lines, "url");
  ASSERT_EQ(urls.size(), 1u);
  EXPECT_EQ(urls[0]["url"], "Parlo:openbuddylist?service=AIM");

  // The program starts again with the same preferences: the menu shows the choice.
  auto restarted = linesOfType(play("default-menu.kbs"), "menu");
  ASSERT_EQ(restarted.size(), 1u);
  std::vector<std::string> titles;
  for (const auto& item : restarted[0]["items"])
    if (item.contains("title") && item["action"] != "messagePerson:" && item["action"] != "textMessagePerson:" &&
        item["action"] != "selectMenuItem:")
      titles.push_back(item["title"].get<std::string>() + (item["state"] == 1 ? " ✓" : ""));
  EXPECT_EQ(titles,
            (std::vector<std::string>{"My Status: Available", "AIM Buddies", "Display AIM Buddies ✓",
                                      "Display Ambrel Buddies", "Display Jabber Buddies", "Show AIM Buddy List…"}));
  EXPECT_EQ(rows(restarted[0]), rows(menus[1])) << "the same menu as after the choice";
}

TEST_F(ParloExtraTest, ScreenSharingBlinksTheIconUntilItEnds) {
  auto lines = play("screen-sharing.kbs");
  std::vector<std::string> seen;
  for (const auto& line : lines) {
    const std::string type = line["type"];
    const std::string t = line["t"].dump() + " ";
    if (type == "icon") seen.push_back(t + "icon " + line["image"].get<std::string>());
    if (type == "distributed") seen.push_back(t + line["name"].get<std::string>());
    if (type == "menu-close") seen.push_back(t + "chose " + line["title"].get<std::string>());
  }
  EXPECT_EQ(seen,
            (std::vector<std::string>{
                "0.0 icon MenuExtra.pdf", "1.0 icon MenuExtra.pdf", "2.0 kKBParloScreenSharingStartedNotification",
                "4.0 icon SharingActive.png",  // every two seconds
                "6.0 icon MenuExtra.pdf", "8.0 icon SharingActive.png",
                "9.0 chose End Screen Sharing",  // Control-Escape
                "9.0 kKBParloScreenSharingShouldTerminateNotification",
                "9.5 kKBParloScreenSharingEndedNotification",  // the application's answer
                "9.5 icon MenuExtra.pdf",                      // and no more blinking
            }));
  auto menu = linesOfType(lines, "menu").at(0);
  auto shown = rows(menu);
  ASSERT_GE(shown.size(), 3u);
  EXPECT_EQ(shown[0], "Screen Sharing with Sam Whitfield | 0 | 0 | disabled | : | - |  | 0 | 0 | nil | nil");
  EXPECT_EQ(shown[1], "End Screen Sharing | 0 | 0 | enabled | endScreenSharing: | - | \033 | 262144 | 1 | nil | nil");
  EXPECT_EQ(shown[2], "---");
  EXPECT_EQ(shown[3].substr(0, 20), "My Status: Available");
}

TEST_F(ParloExtraTest, TheSelfTestPrintsItsLog) {
  auto run = kibbar({"--self-test", "0"});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.out,
            "RealDuration: 0.000000\nDuration: 0.000000\n"
            "Iteration:1 Message: Running test 1 [Change Status Test]\nTime interval since start: 0.000000\n"
            "RealDuration: 0.000000\nDuration: 0.000000\n"
            "Iteration:2 Message: Running test 2 [Start Chat With Test]\nIn start chat with\n"
            "Time interval since start: 0.000000\n"
            "RealDuration: 0.000000\nDuration: 0.000000\n"
            "Iteration:3 Message: Running test 3 [Change Buddy List Test]\nTime interval since start: 0.000000\n"
            "RealDuration: 0.000000\nDuration: 0.000000\n"
            "Iteration:4 Message: Running test 4 [Screen Sharing Test]\nTime interval since start: 0.000000\n"
            "Performed action on item with title: Offline\n"
            "Performed action on item with title: Available\n"
            "Performed action on item with title: Away\n"
            "Performed action on item with title: Offline\n"
            "Performed action on item with title: Available\n"
            "Performed action on item with title: Display AIM Buddies\n"
            "Performed action on item with title: selftest.aim\n"
            "Performed action on item with title: Display Ambrel Buddies\n"
            "Performed action on item with title: Tess Tester\n"
            "Performed action on item with title: Display Jabber Buddies\n"
            "Performed action on item with title: selftest@jabber.velmo.example\n"
            "Performed action on item with title: Display AIM Buddies\n"
            "Performed action on item with title: Show AIM Buddy List…\n"
            "Performed action on item with title: Display Ambrel Buddies\n"
            "Performed action on item with title: Show Ambrel Buddy List…\n"
            "Performed action on item with title: Display Jabber Buddies\n"
            "Performed action on item with title: Show Jabber Buddy List…\n");

  // The transcript of a single test shows its actions on the time line.
  run = kibbar({"--self-test", "4", "--transcript", "-", "--no-queries"});
  EXPECT_EQ(run.status, 0) << run.errors;
  std::vector<std::string> sharing;
  for (const auto& line : run.transcript()) {
    const std::string type = line["type"];
    if (type == "self-test") sharing.push_back(line["t"].dump() + " self-test " + line["duration"].dump());
    if (type == "icon") sharing.push_back(line["t"].dump() + " " + line["image"].get<std::string>());
  }
  EXPECT_EQ(sharing, (std::vector<std::string>{"0.0 MenuExtra.pdf", "1.0 MenuExtra.pdf", "2.0 self-test 4.0",
                                               "6.0 SharingActive.png", "8.0 MenuExtra.pdf"}))
      << "the session starts two seconds in and ends at six; it blinks once";
}

}  // namespace
