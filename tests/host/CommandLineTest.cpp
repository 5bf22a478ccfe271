#include <gtest/gtest.h>

#include "host/CommandLine.h"

namespace {

using kibhost::CommandLine;
using kibhost::UsageError;
using Mode = CommandLine::Mode;

std::string usageErrorOf(const std::vector<std::string>& arguments) {
  try {
    CommandLine::parse(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "(no error)";
}

TEST(CommandLineTest, OptionsChooseTheFrontend) {
  auto terminal = CommandLine::parse({});
  EXPECT_EQ(terminal.mode, Mode::Terminal);
  EXPECT_FALSE(terminal.scenario);
  EXPECT_TRUE(terminal.daemonQueries);

  auto script = CommandLine::parse({"--scenario", "evening.json", "--script=a.kbs", "--transcript", "-", "--bundle",
                                    "Other.menuextra", "--no-queries"});
  EXPECT_EQ(script.mode, Mode::Script);
  EXPECT_EQ(script.scenario, "evening.json");
  EXPECT_EQ(script.script, "a.kbs");
  EXPECT_EQ(script.transcript, "-");
  EXPECT_EQ(script.bundle, "Other.menuextra");
  EXPECT_FALSE(script.daemonQueries);

  auto selfTest = CommandLine::parse({"--self-test", "0"});
  EXPECT_EQ(selfTest.mode, Mode::SelfTest);
  EXPECT_EQ(selfTest.selfTest, 0u);
  EXPECT_EQ(CommandLine::parse({"--self-test=4"}).selfTest, 4u);

  EXPECT_EQ(CommandLine::parse({"--script", "a.kbs", "--help"}).mode, Mode::Help);
  EXPECT_EQ(CommandLine::parse({"-h"}).mode, Mode::Help);
  EXPECT_EQ(CommandLine::parse({"--transcript", "live.jsonl"}).mode, Mode::Terminal)
      << "the terminal frontend can keep a transcript in a file";
  EXPECT_NE(CommandLine::usage().find("--self-test N"), std::string::npos);
  EXPECT_EQ(CommandLine::parse({"--script", "a.kbs", "--version"}).mode, Mode::Version);
  EXPECT_EQ(CommandLine::parse({"--script", "a.kbs", "--pictures", "out"}).pictures, "out");
  EXPECT_EQ(CommandLine::parse({"--self-test", "1", "--pictures=out"}).mode, Mode::SelfTest);
  EXPECT_EQ(CommandLine::parse({}).backend, "sim");
  EXPECT_EQ(CommandLine::parse({"--backend", "purple", "--script", "a.kbs"}).backend, "purple");
  EXPECT_EQ(CommandLine::parse({"--backend=sim"}).backend, "sim");

  const auto panel = CommandLine::parse({"--panel", "--scenario", "w.json", "--transcript", "-"});
  EXPECT_EQ(panel.mode, Mode::Panel);
  EXPECT_EQ(panel.scenario, "w.json");
  EXPECT_EQ(panel.transcript, "-") << "the panel frontend leaves standard output free";
  EXPECT_NE(CommandLine::usage().find("--panel"), std::string::npos);
}

TEST(CommandLineTest, BadCommandLinesSayWhatIsWrong) {
  EXPECT_EQ(usageErrorOf({"--verbose"}), "unknown option --verbose (kibbar --help lists the options)");
  EXPECT_EQ(usageErrorOf({"-x"}), "unknown option -x (kibbar --help lists the options)");
  EXPECT_EQ(usageErrorOf({"script.kbs"}), "unexpected argument \"script.kbs\" (kibbar --help lists the options)");
  EXPECT_EQ(usageErrorOf({"--scenario"}), "--scenario needs a scenario file");
  EXPECT_EQ(usageErrorOf({"--script="}), "--script needs a script file");
  EXPECT_EQ(usageErrorOf({"--bundle", "a", "--bundle", "b"}), "--bundle is given twice");
  EXPECT_EQ(usageErrorOf({"--self-test", "x"}), "--self-test needs a test number (0 for all), not \"x\"");
  EXPECT_EQ(usageErrorOf({"--self-test", "-1"}), "--self-test needs a test number (0 for all), not \"-1\"");
  EXPECT_EQ(usageErrorOf({"--self-test", "99999999999"}),
            "--self-test needs a test number (0 for all), not \"99999999999\"");
  EXPECT_EQ(usageErrorOf({"--script", "a.kbs", "--self-test", "1"}),
            "--script and --self-test cannot be used together");
  EXPECT_EQ(usageErrorOf({"--pictures", "out"}),
            "--pictures draws a headless run; give --script FILE or --self-test N");
  EXPECT_EQ(usageErrorOf({"--script", "a.kbs", "--pictures", "a", "--pictures", "b"}), "--pictures is given twice");
  EXPECT_EQ(usageErrorOf({"--backend", "icq"}), "--backend needs sim or purple, not \"icq\"");
  EXPECT_EQ(usageErrorOf({"--backend", "sim", "--backend", "sim"}), "--backend is given twice");
  EXPECT_EQ(usageErrorOf({"--backend", "purple", "--scenario", "w.json"}),
            "--scenario is for the simulated world, not --backend purple");
  EXPECT_EQ(usageErrorOf({"--panel", "--script", "a.kbs"}), "--panel cannot be used with --script or --self-test");
  EXPECT_EQ(usageErrorOf({"--self-test", "1", "--panel"}), "--panel cannot be used with --script or --self-test");
  EXPECT_EQ(usageErrorOf({"--transcript", "-"}),
            "--transcript - writes to standard output, which the terminal frontend uses; give a file");
}

}  // namespace
