// The program with the host's test extra: the plug-in mechanism, the script
// player and the transcript, end to end.
#include "tests/host/e2e/E2ETest.h"

namespace {

using kibtest::E2ETest;
using kibtest::linesOfType;
using kibtest::script;
using kibtest::testBundle;

// "t type detail" for the lines of the given types.
std::vector<std::string> outline(const std::vector<nlohmann::ordered_json>& lines,
                                 const std::vector<std::string>& types) {
  std::vector<std::string> result;
  for (const auto& line : lines) {
    const std::string type = line["type"];
    if (std::find(types.begin(), types.end(), type) == types.end()) continue;
    std::string text = line["t"].dump() + " " + type;
    for (const auto& [key, value] : line.items())
      if (key != "t" && key != "type" && key != "items")
        text += " " + (value.is_string() ? value.get<std::string>() : value.dump());
    result.push_back(text);
  }
  return result;
}

TEST_F(E2ETest, AScriptOnTheTestExtraWritesWhatHappened) {
  auto run = kibbar({"--bundle", testBundle(), "--script", script("test-extra.kbs"), "--no-queries"});
  ASSERT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  auto lines = run.transcript();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front()["type"], "start");
  EXPECT_EQ(lines.front()["bundle"], "com.velmo.kibtest.TestExtra");
  EXPECT_EQ(lines.front()["principalClass"], "TestExtra");
  EXPECT_EQ(lines.front()["scenario"], "built-in");

  EXPECT_EQ(outline(lines, {"length", "icon", "banner", "menu-close", "test-log", "distributed", "daemon", "url",
                            "application", "preferences", "assertion", "unload", "end"}),
            (std::vector<std::string>{
                "0.0 length 24.0",
                "0.0 icon MenuExtra.pdf true",
                "1.0 menu-close 2 Say Hello",
                "1.0 test-log hello",
                "1.0 distributed TestExtraText Hello world",
                "1.0 length 112.0",
                "1.0 icon MenuExtra.pdf false",
                "1.0 banner Hello world",
                "1.5 menu-close 3 Say Hello Quietly",
                "1.5 test-log hello, quietly",
                "2.0 menu-close 5 Stop",
                "2.0 distributed TestExtraStopped null",
                "2.0 menu-close 7 Remember",
                "2.0 preferences com.velmo.kibtest.TestExtra {\"Remembered\":\"yes\"}",
                "2.0 menu-close 8 Set Away",
                "2.0 daemon setMyStatus:message: [\"3\",\"\\\"Away\\\"\"]",
                "2.0 menu-close 9 Fail",
                "2.0 assertion -[TestExtra fail:] <TestExtra> tests/host/TestExtra 1 Invalid parameter not "
                "satisfying: menusBuilt_ < 0",
                "2.0 test-log went on after the assertion",
                "2.0 menu-close 4 Open Example",
                "2.0 url Parlo:openbuddylist?service=AIM",
                "2.0 application buddy list AIM",
                "2.0 test-log Running test 1 for 0.000000",
                "3.0 test-log hello",
                "3.0 test-log Performed action on item with title: Say Hello",
                "5.0 test-log unloading",
                "5.0 unload",
                "5.0 end",
            }));

  // Every menu is written whole, and the one opened with Option held is the same menu.
  auto menus = linesOfType(lines, "menu");
  ASSERT_EQ(menus.size(), 7u);
  EXPECT_EQ(menus[0]["items"].size(), 11u);
  EXPECT_EQ(menus[0]["items"][3].dump(),
            R"({"index":3,"title":"Say Hello Quietly","tag":0,"state":0,"enabled":true,"action":"sayHelloQuietly:",)"
            R"("alternate":true,"key":"","modifiers":524288,"indent":0,"image":null,"represented":null})");
  EXPECT_EQ(menus[1]["items"][0]["title"], "Menu 2") << "the extra is asked for its menu at every click";
}

TEST_F(E2ETest, TheSelfTestPrintsTheTestLog) {
  auto run = kibbar({"--bundle", testBundle(), "--self-test", "3"});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.out, "Running test 3 for 6.000000\nhello\nPerformed action on item with title: Say Hello\nunloading\n");

  // With the transcript on standard output, the test log is in the transcript.
  run = kibbar({"--bundle", testBundle(), "--self-test", "1", "--transcript", "-"});
  EXPECT_EQ(run.status, 0) << run.errors;
  auto log = linesOfType(run.transcript(), "test-log");
  ASSERT_EQ(log.size(), 4u);
  EXPECT_EQ(log[0]["line"], "Running test 1 for 2.000000");
  EXPECT_EQ(log[0]["t"], 2.0);
}

TEST_F(E2ETest, ATranscriptCanGoToAFile) {
  const auto path = dir / "out.jsonl";
  auto run = kibbar({"--bundle", testBundle(), "--script", script("test-extra.kbs"), "--transcript", path.string()});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.out, "");
  const auto text = kibtest::readFile(path);
  EXPECT_EQ(text.rfind("{\"t\":0.0,\"type\":\"start\"", 0), 0u) << text.substr(0, 80);
  EXPECT_NE(text.find("\"type\":\"end\""), std::string::npos);
}

}  // namespace
