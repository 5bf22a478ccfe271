// Bad command lines, scenarios, scripts and bundles: one line that names the
// problem, exit status 2, nothing run.
#include "tests/host/e2e/E2ETest.h"

namespace {

using kibtest::E2ETest;
using kibtest::script;
using kibtest::testBundle;

class BadInputTest : public E2ETest {
 protected:
  // Runs the program and expects a refusal with exactly this message.
  void expectRefusal(const std::vector<std::string>& arguments, const std::string& message) {
    auto run = kibbar(arguments);
    EXPECT_EQ(run.status, 2) << run.errors;
    EXPECT_EQ(run.errors, "kibbar: " + message + "\n");
    EXPECT_EQ(run.out, "") << "nothing ran";
  }
};

TEST_F(BadInputTest, CommandLines) {
  expectRefusal({"--verbose"}, "unknown option --verbose (kibbar --help lists the options)");
  expectRefusal({"--script"}, "--script needs a script file");
  expectRefusal({"--self-test", "many"}, "--self-test needs a test number (0 for all), not \"many\"");
  expectRefusal({"--script", "a.kbs", "--self-test", "1"}, "--script and --self-test cannot be used together");
  expectRefusal({"--bundle", testBundle()},
                "the terminal frontend needs a terminal (use --script FILE for a headless run)");

  auto help = kibbar({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("Usage: kibbar"), std::string::npos);
  EXPECT_NE(help.out.find("--transcript FILE"), std::string::npos);
}

TEST_F(BadInputTest, MissingAndDamagedFiles) {
  const auto missing = (dir / "missing.kbs").string();
  expectRefusal({"--bundle", testBundle(), "--script", missing},
                missing + ": cannot read the file (No such file or directory)");

  const auto scenario = (dir / "evening.json").string();
  expectRefusal({"--scenario", scenario, "--script", script("test-extra.kbs")},
                scenario + ": cannot read the file (No such file or directory)");
  kibtest::writeFile(scenario, "{\"accounts\": [ {\"id\": \"aim\", \"service\": \"ICQ\", \"login\": \"me\"} ]}");
  expectRefusal({"--scenario", scenario, "--script", script("test-extra.kbs")},
                scenario + ": $.accounts[0].service: unknown service \"ICQ\"");

  const auto bundle = (dir / "Nothing.menuextra").string();
  expectRefusal({"--bundle", bundle, "--script", script("test-extra.kbs")}, "bundle " + bundle + ": no such folder");

  const auto transcript = (dir / "no-such-folder" / "out.jsonl").string();
  expectRefusal({"--bundle", testBundle(), "--script", script("test-extra.kbs"), "--transcript", transcript},
                transcript + ": cannot write the transcript (No such file or directory)");
}

TEST_F(BadInputTest, ScriptLines) {
  const auto path = (dir / "bad.kbs").string();
  auto refuse = [&](const std::string& text, const std::string& message) {
    kibtest::writeFile(path, text);
    expectRefusal({"--bundle", testBundle(), "--script", path}, path + ":" + message);
  };
  refuse("wait 1\nclick\nchoose\n", "3: choose: expected the title of a menu item");
  refuse("# comment\nsnooze 5\n",
         "2: unknown command \"snooze\" (commands: wait, at, click, choose, choose-index, "
         "key, dismiss, event, post, self-test, unload, wait-for, wait-for-no, note)");
  refuse("event {\"type\": \"buddy-online\", \"account\": \"aim\", \"handle\": \"nobody\"}\n",
         "1: event: $.handle: no handle \"nobody\" on account \"aim\"");
  refuse("event {\"type\": \"earthquake\"}\n",
         "1: event: $.type: unknown event type \"earthquake\" (known: buddy-status, buddy-online, buddy-offline, "
         "buddy-groups, buddy-capabilities, account-connect, account-disconnect, daemon-disconnect, daemon-connect, "
         "status-text, screen-sharing-start, screen-sharing-end, application-quit)");
  refuse("wait 10\nat 2\n", "2: at 2 is earlier than the script's time 10");
  refuse("click\nkey escape hyper\n", "2: unexpected \"hyper\" (modifiers are shift, control, option and command)");
}

}  // namespace
