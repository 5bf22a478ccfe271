#include <gtest/gtest.h>

#include <sstream>

#include "host/HeadlessRun.h"
#include "host/PluginBundle.h"
#include "host/ScriptParser.h"
#include "sim/ScenarioLoader.h"
#include "tests/host/HostTestSupport.h"
#include "tests/support/PlatformTest.h"

namespace {

using kibtest::linesOfType;
using kibtest::transcriptLines;

class HeadlessRunTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    std::string error;
    plugin = kibhost::PluginBundle::load(kibtest::testBundlePath(), error);
    ASSERT_TRUE(plugin) << error;
  }

  // Plays the script on the test extra; answers the exit status.
  int play(const std::string& text) {
    auto scenario = sim::ScenarioLoader::defaultScenario();
    auto script = kibhost::ScriptParser::parse(text, "play.kbs", scenario);
    kibhost::HeadlessRun run(scenario, "built-in", *plugin, out, errors, false);
    EXPECT_TRUE(run.start());
    return run.playScript(script);
  }

  // "type detail" for each line, with the time.
  std::vector<std::string> outline(const std::vector<std::string>& types) const {
    std::vector<std::string> result;
    for (const auto& line : transcriptLines(out.str())) {
      const std::string type = line["type"];
      if (std::find(types.begin(), types.end(), type) == types.end()) continue;
      std::ostringstream text;
      text << line["t"].get<double>() << " " << type;
      if (line.contains("title")) text << " " << line["title"].get<std::string>();
      if (line.contains("chosen") && line["chosen"].is_null()) text << " none";
      if (line.contains("line") && type == "test-log") text << " " << line["line"].get<std::string>();
      if (line.contains("message")) text << " " << line["message"].get<std::string>();
      result.push_back(text.str());
    }
    return result;
  }

  std::shared_ptr<kibhost::PluginBundle> plugin;
  std::ostringstream out;
  std::ostringstream errors;
};

TEST_F(HeadlessRunTest, StepsActOnTheOpenMenuInTurn) {
  const int status = play(
      "wait 1\n"
      "click\n"
      "choose \"Say Hello\"\n"  // the same moment: chosen once the menu is open
      "click option\n"          // and the next click waits until that menu has closed
      "choose \"Say Hello Quietly\"\n"
      "wait 0.5\n"
      "click\n"
      "wait 0.25\n"
      "key escape control\n"
      "wait 1\n");
  EXPECT_EQ(status, 0) << errors.str();
  EXPECT_EQ(outline({"menu", "menu-close", "test-log", "distributed", "unload", "end"}),
            (std::vector<std::string>{"1 menu", "1 menu-close Say Hello", "1 test-log hello", "1 menu",
                                      "1 menu-close Say Hello Quietly", "1 test-log hello, quietly", "1.5 menu",
                                      "1.75 menu-close Stop", "1.75 distributed", "2.75 test-log unloading",
                                      "2.75 unload", "2.75 end"}));
}

TEST_F(HeadlessRunTest, StepsThatCannotBeDoneAreReportedAndTheScriptGoesOn) {
  const int status = play(
      "choose Away\n"
      "click\n"
      "choose \"Not Handled\"\n"
      "choose \"Say Hello Quietly\"\n"
      "choose-index 1\n"
      "choose-index 40\n"
      "key x\n"
      "click\n"
      "unload\n"
      "wait 2\n"
      "event {\"type\": \"buddy-offline\", \"account\": \"aim\", \"handle\": \"jreyes77\"}\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(outline({"script-error", "key-unmatched", "menu-close", "event", "unload"}),
            (std::vector<std::string>{
                "0 script-error no menu is open",
                "0 script-error \"Not Handled\" is disabled",
                "0 script-error \"Say Hello Quietly\" is not shown with these modifier keys",
                "0 script-error item 1 is a separator",
                "0 script-error the open menu has 11 items, no index 40",
                "0 key-unmatched",
                "0 script-error a menu is already open",
                "0 script-error the menu is open; dismiss it first",
                "2 event",            // the world goes on while the menu is open
                "2 menu-close none",  // left open at the end of the script
                "2 unload",
            }));
  EXPECT_EQ(errors.str().substr(0, errors.str().find('\n')), "kibbar: play.kbs:1: no menu is open");
}

TEST_F(HeadlessRunTest, LinesAtTheScriptsLastInstantStillActOnTheOpenMenu) {
  EXPECT_EQ(play("wait 2\nclick\nchoose \"Say Hello\"\n"), 0) << errors.str();
  EXPECT_EQ(outline({"menu-close", "test-log", "end"}),
            (std::vector<std::string>{"2 menu-close Say Hello", "2 test-log hello", "2 test-log unloading", "2 end"}));
}

TEST_F(HeadlessRunTest, WaitForWaitsForTheMenuAndMovesTheRestOfTheScript) {
  const int status = play(
      "wait-for \"Say Hello\" 3\n"   // there at once
      "note \"cue\"\n"
      "wait-for \"Never There\" 2\n"  // runs out after two seconds
      "wait-for-no \"Never There\"\n"
      "click\n"
      "wait 1\n");
  EXPECT_EQ(status, 1);
  auto lines = transcriptLines(out.str());
  std::vector<std::string> errorsSeen;
  double menuTime = -1, endTime = -1;
  for (const auto& line : lines) {
    if (line["type"] == "script-error") errorsSeen.push_back(line["message"]);
    if (line["type"] == "menu") menuTime = line["t"];
    if (line["type"] == "end") endTime = line["t"];
  }
  EXPECT_EQ(errorsSeen, std::vector<std::string>{"\"Never There\" not in the menu within 2 s"});
  EXPECT_GE(menuTime, 2.0);   // the click came after the wait
  EXPECT_LT(menuTime, 2.5);
  EXPECT_GE(endTime, menuTime + 1.0);  // and the script's end moved with it
  EXPECT_EQ(linesOfType(lines, "menu-close").size(), 1u);
}

TEST_F(HeadlessRunTest, NothingActsOnAnUnloadedExtra) {
  EXPECT_EQ(play("unload\nclick\nself-test 1\nunload\nwait 1\n"), 1);
  EXPECT_EQ(outline({"script-error", "unload", "end"}),
            (std::vector<std::string>{"0 unload", "0 script-error the extra is unloaded",
                                      "0 script-error the extra is unloaded",
                                      "0 script-error the extra is unloaded already", "1 end"}));
}

TEST_F(HeadlessRunTest, TheSelfTestRunsThroughTheBundlesEntryPoints) {
  kibhost::HeadlessRun run(sim::ScenarioLoader::defaultScenario(), "built-in", *plugin, out, errors, true);
  ASSERT_TRUE(run.start());
  std::ostringstream testLog;
  EXPECT_EQ(run.runSelfTest(2, testLog), 0);
  EXPECT_EQ(testLog.str(),
            "Running test 2 for 4.000000\nhello\nPerformed action on item with title: Say Hello\nunloading\n");
  auto selfTest = linesOfType(transcriptLines(out.str()), "self-test");
  ASSERT_EQ(selfTest.size(), 1u);
  EXPECT_EQ(selfTest[0]["t"], 2.0) << "after the extra has started";
  EXPECT_EQ(selfTest[0]["duration"], 4.0);
  EXPECT_EQ(linesOfType(transcriptLines(out.str()), "end").at(0)["t"], 11.0);
}

}  // namespace
