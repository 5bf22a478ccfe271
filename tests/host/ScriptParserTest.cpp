#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/ScriptParser.h"
#include "platform/ui/KeyModifiers.h"
#include "sim/ScenarioLoader.h"

namespace {

using kibhost::Script;
using kibhost::ScriptError;
using kibhost::ScriptParser;
using Kind = kibhost::ScriptStep::Kind;

const sim::Scenario& scenario() {
  static const sim::Scenario built = sim::ScenarioLoader::defaultScenario();
  return built;
}

Script parse(const std::string& text) { return ScriptParser::parse(text, "test.kbs", scenario()); }

std::string errorOf(const std::string& text) {
  try {
    parse(text);
  } catch (const ScriptError& error) {
    return error.what();
  }
  return "(no error)";
}

TEST(ScriptParserTest, StepsTakeTheScriptTimeAndTheirArguments) {
  auto script = parse(
      "# a comment\n"
      "\n"
      "wait 1.5\n"
      "click option   # with Option held\n"
      "choose \"Show Buddy List\\u2026\" option\n"
      "choose Away\n"
      "at 4\n"
      "choose-index 12\n"
      "key escape control\n"
      "key q command shift\n"
      "dismiss\n"
      "wait 0.25\n"
      "event {\"type\": \"buddy-offline\", \"account\": \"aim\", \"handle\": \"jreyes77\"}\n"
      "post distributed kKBParloScreenSharingStartedNotification \"Alex Doe\"\n"
      "post workspace NSWorkspaceDidTerminateApplicationNotification nil {\"NSApplicationBundleIdentifier\": "
      "\"com.velmo.Parlo\"}\n"
      "post default Plain\n"
      "self-test 4 12.5\n"
      "unload\n"
      "wait 2\n");
  ASSERT_EQ(script.steps.size(), 13u);
  EXPECT_EQ(script.endTime, 6.25);
  EXPECT_EQ(script.source, "test.kbs");

  const auto& click = script.steps[0];
  EXPECT_EQ(click.kind, Kind::Click);
  EXPECT_EQ(click.line, 4);
  EXPECT_EQ(click.time, 1.5);
  EXPECT_EQ(click.modifiers, platform::kAlternateKeyMask);
  EXPECT_EQ(click.command, "click option");

  EXPECT_EQ(script.steps[1].title, "Show Buddy List\u2026");
  EXPECT_EQ(script.steps[1].modifiers, platform::kAlternateKeyMask);
  EXPECT_EQ(script.steps[2].title, "Away");
  EXPECT_FALSE(script.steps[2].modifiers.has_value()) << "no modifiers: those of the click";

  EXPECT_EQ(script.steps[3].kind, Kind::ChooseIndex);
  EXPECT_EQ(script.steps[3].index, 12);
  EXPECT_EQ(script.steps[3].time, 4.0);
  EXPECT_EQ(script.steps[4].key, "\033");
  EXPECT_EQ(script.steps[4].modifiers, platform::kControlKeyMask);
  EXPECT_EQ(script.steps[5].key, "q");
  EXPECT_EQ(script.steps[5].modifiers, platform::kCommandKeyMask | platform::kShiftKeyMask);
  EXPECT_EQ(script.steps[6].kind, Kind::Dismiss);

  const auto& event = script.steps[7];
  EXPECT_EQ(event.kind, Kind::Event);
  EXPECT_EQ(event.time, 4.25);
  EXPECT_EQ(event.event.type, sim::SimEvent::Type::BuddyOffline);
  EXPECT_EQ(event.event.handle, "jreyes77");

  EXPECT_EQ(script.steps[8].centre, "distributed");
  EXPECT_EQ(script.steps[8].name, "kKBParloScreenSharingStartedNotification");
  EXPECT_EQ(script.steps[8].object, "Alex Doe");
  EXPECT_FALSE(script.steps[9].object.has_value());
  EXPECT_EQ(script.steps[9].userInfo["NSApplicationBundleIdentifier"], "com.velmo.Parlo");
  EXPECT_EQ(script.steps[10].centre, "default");
  EXPECT_TRUE(script.steps[10].userInfo.is_null());

  EXPECT_EQ(script.steps[11].kind, Kind::SelfTest);
  EXPECT_EQ(script.steps[11].test, 4u);
  EXPECT_EQ(script.steps[11].duration, 12.5);
  EXPECT_EQ(script.steps[12].kind, Kind::Unload);
}

TEST(ScriptParserTest, WaitForAndNoteTakeATitleAndALimit) {
  auto script = kibhost::ScriptParser::parse("wait 1\nwait-for \"Bud Dy\" 15\nwait-for-no Away\nnote \"cue one\"\n",
                                             "test.kbs", sim::ScenarioLoader::defaultScenario());
  ASSERT_EQ(script.steps.size(), 3u);
  using Kind = kibhost::ScriptStep::Kind;
  EXPECT_EQ(script.steps[0].kind, Kind::WaitFor);
  EXPECT_EQ(script.steps[0].title, "Bud Dy");
  EXPECT_EQ(script.steps[0].duration, 15);
  EXPECT_FALSE(script.steps[0].absent);
  EXPECT_EQ(script.steps[1].kind, Kind::WaitFor);
  EXPECT_TRUE(script.steps[1].absent);
  EXPECT_EQ(script.steps[1].duration, 10);  // the default limit
  EXPECT_EQ(script.steps[2].kind, Kind::Note);
  EXPECT_EQ(script.steps[2].title, "cue one");
  EXPECT_EQ(script.steps[2].time, 1);
  EXPECT_EQ(script.endTime, 1);
}

TEST(ScriptParserTest, BadLinesNameTheFileTheLineAndTheProblem) {
  struct Case {
    std::string script;
    std::string error;
  };
  const std::string deep = std::string(1000, '[') + std::string(1000, ']');
  const std::vector<Case> cases{
      {"wait 1\nfly away\n",
       "test.kbs:2: unknown command \"fly\" (commands: wait, at, click, choose, choose-index, key, dismiss, event, "
       "post, self-test, unload, wait-for, wait-for-no, note)"},
      {"wait-for", "test.kbs:1: wait-for: expected the title of a menu item"},
      {"wait-for-no Bob soon", "test.kbs:1: wait-for-no: expected a number of seconds, found \"soon\""},
      {"wait-for Bob 3 4", "test.kbs:1: unexpected \"4\" after wait-for"},
      {"note", "test.kbs:1: note: expected a text"},
      {"wait soon", "test.kbs:1: wait: expected a number of seconds, found \"soon\""},
      {"wait -1", "test.kbs:1: wait: expected a number of seconds, found \"-1\""},
      {"wait", "test.kbs:1: wait: expected a number of seconds"},
      {"wait 5\nat 3\n", "test.kbs:2: at 3 is earlier than the script's time 5"},
      {"click twice", "test.kbs:1: unexpected \"twice\" (modifiers are shift, control, option and command)"},
      {"choose", "test.kbs:1: choose: expected the title of a menu item"},
      {"choose \"Away", "test.kbs:1: unterminated string"},
      {"choose-index -2", "test.kbs:1: choose-index: expected a whole number, found \"-2\""},
      {"dismiss now", "test.kbs:1: unexpected \"now\" after dismiss"},
      {"key enterprise",
       "test.kbs:1: key: expected one character or escape, return, tab, space or delete, found \"enterprise\""},
      {"post radio Hello",
       "test.kbs:1: post: unknown centre \"radio\" (centres: distributed, default, service or workspace)"},
      {"post default Hello nil [1]", "test.kbs:1: unexpected \"[1]\" after post"},
      {"self-test", "test.kbs:1: self-test: expected a whole number"},
      {"event", "test.kbs:1: event: expected a JSON event such as {\"type\": \"buddy-offline\", …}"},
      {"event {\"type\": ", "test.kbs:1: event: not valid JSON: {\"type\":"},
      {"event {\"type\": \"buddy-offline\", \"account\": \"icq\", \"handle\": \"x\"}",
       "test.kbs:1: event: $.account: no account with id \"icq\""},
      {"event {\"type\": \"buddy-offline\", \"account\": \"aim\", \"handle\": \"ghost\"}",
       "test.kbs:1: event: $.handle: no handle \"ghost\" on account \"aim\""},
      {"event {\"type\": \"status-text\", \"text\": \"hi\", \"at\": 3}",
       "test.kbs:1: event: leave out \"at\"; the event happens at the script's time (use wait or at)"},
      {"post default Hello nil {\"a\": " + deep + "}",
       "test.kbs:1: post user info: line 1, column 134: nested deeper than 128 levels"},
      {"event {\"type\": \"buddy-status\", \"account\": \"aim\", \"handle\": \"jreyes77\", \"idle\": 1e999}",
       "test.kbs:1: event: line 1, column 74: the number 1e999 is out of range"},
      {"wait 10000001", "test.kbs:1: wait: 10000001 seconds is too long (at most 10000000)"},
      {"wait 9000000\nwait 9000000", "test.kbs:2: wait: the script's time would go past 10000000 seconds"},
  };
  for (const auto& c : cases) EXPECT_EQ(errorOf(c.script), c.error) << c.script;
}

TEST(ScriptParserTest, FilesAreReadWholeOrRefused) {
  auto path = std::filesystem::temp_directory_path() / "kibhost-script-parser-test.kbs";
  {
    std::ofstream out(path);
    out << "click\r\nchoose \"Away\"\r\nwait 1\r\n";
  }
  auto script = ScriptParser::loadFile(path, scenario());
  ASSERT_EQ(script.steps.size(), 2u);
  EXPECT_EQ(script.steps[1].title, "Away") << "Windows line ends are accepted";
  EXPECT_EQ(script.source, path.string());
  std::filesystem::remove(path);
  try {
    ScriptParser::loadFile(path, scenario());
    FAIL() << "a missing file must be refused";
  } catch (const ScriptError& error) {
    EXPECT_EQ(std::string(error.what()), path.string() + ": cannot read the file (No such file or directory)");
  }
}

TEST(ScriptParserTest, FoldersAndEndlessFilesAreRefused) {
  for (const auto& [path, problem] : std::vector<std::pair<std::string, std::string>>{
           {std::filesystem::temp_directory_path().string(), "is a folder, not a file"},
           {"/dev/zero", "is too large (more than 16 MiB)"}}) {
    try {
      ScriptParser::loadFile(path, scenario());
      ADD_FAILURE() << path << " must be refused";
    } catch (const ScriptError& error) {
      EXPECT_EQ(std::string(error.what()), path + ": " + problem);
    }
  }
}

}  // namespace
