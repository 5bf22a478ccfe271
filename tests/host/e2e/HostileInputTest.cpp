// Input a hostile user or a fuzzer would give the program: each is refused
// with one line and exit status 2, or the run goes on and a lost output is
// reported with exit status 1. Nothing crashes, nothing is overwritten.
#include "tests/host/e2e/E2ETest.h"

namespace {

using kibtest::E2ETest;
using kibtest::script;
using kibtest::testBundle;

class HostileInputTest : public E2ETest {};

TEST_F(HostileInputTest, BadFilesAreRefusedWithOneLine) {
  const auto scenario = (dir / "scenario.json").string();
  const auto deepScript = (dir / "deep.kbs").string();
  kibtest::writeFile(deepScript,
                     "post distributed Hi nil {\"k\": " + std::string(50000, '[') + std::string(50000, ']') + "}\n");
  const auto folder = (dir / "folder").string();
  std::filesystem::create_directories(folder);
  struct Case {
    std::string name;
    std::string scenarioText;  // written to scenario.json when not empty
    std::vector<std::string> arguments;
    std::string message;
  };
  const std::vector<Case> cases{
      {"a number past a double",
       "{\"latency\": {\"status\": 1e400}}",
       {"--scenario", scenario},
       scenario + ": line 1, column 24: the number 1e400 is out of range"},
      {"deep user info",
       "",
       {"--script", deepScript},
       deepScript + ":1: post user info: line 1, column 134: nested "
                    "deeper than 128 levels"},
      {"a script folder", "", {"--script", folder}, folder + ": is a folder, not a file"},
      {"a scenario folder", "", {"--scenario", folder}, folder + ": is a folder, not a file"},
      {"an endless script", "", {"--script", "/dev/zero"}, "/dev/zero: is too large (more than 16 MiB)"},
      {"an endless scenario", "", {"--scenario", "/dev/zero"}, "/dev/zero: is too large (more than 16 MiB)"},
  };
  for (const auto& c : cases) {
    if (!c.scenarioText.empty()) kibtest::writeFile(scenario, c.scenarioText);
    auto arguments = c.arguments;
    arguments.insert(arguments.begin(), {"--bundle", testBundle()});
    if (std::find(arguments.begin(), arguments.end(), "--script") == arguments.end())
      arguments.insert(arguments.end(), {"--script", script("test-extra.kbs")});
    auto run = kibbar(arguments);
    EXPECT_EQ(run.status, 2) << c.name << ": " << run.errors;
    EXPECT_EQ(run.errors, "kibbar: " + c.message + "\n") << c.name;
    EXPECT_EQ(run.out, "") << c.name;
  }
}

TEST_F(HostileInputTest, ATranscriptNeverOverwritesAnInput) {
  const auto scenario = (dir / "scenario.json").string();
  const std::string text = R"({"description": "mine"})";
  kibtest::writeFile(scenario, text);
  const auto scriptCopy = (dir / "copy.kbs").string();
  kibtest::writeFile(scriptCopy, "wait 1\n");
  for (const auto& [input, transcript] : std::vector<std::pair<std::string, std::string>>{
           {scenario, scenario}, {scriptCopy, scriptCopy}, {scenario, (dir / "." / "scenario.json").string()}}) {
    auto run =
        kibbar({"--bundle", testBundle(), "--scenario", scenario, "--script", scriptCopy, "--transcript", transcript});
    EXPECT_EQ(run.status, 2) << transcript;
    EXPECT_EQ(run.errors, "kibbar: --transcript " + transcript + " names an input of the run; give another file\n");
  }
  EXPECT_EQ(kibtest::readFile(scenario), text);
  EXPECT_EQ(kibtest::readFile(scriptCopy), "wait 1\n");
}

TEST_F(HostileInputTest, OutputLostToAFullDiskEndsWithAFailure) {
  auto transcript =
      kibbar({"--bundle", testBundle(), "--script", script("test-extra.kbs"), "--transcript", "/dev/full"});
  EXPECT_EQ(transcript.status, 1);
  EXPECT_EQ(transcript.errors, "kibbar: /dev/full: cannot write the transcript (No space left on device)\n");

  auto standardOutput = kibbar({"--bundle", testBundle(), "--script", script("test-extra.kbs")}, "/dev/full");
  EXPECT_EQ(standardOutput.status, 1);
  EXPECT_EQ(standardOutput.errors, "kibbar: standard output: cannot write the transcript (No space left on device)\n");

  auto testLog = kibbar({"--bundle", testBundle(), "--self-test", "1"}, "/dev/full");
  EXPECT_EQ(testLog.status, 1);
  EXPECT_EQ(testLog.errors, "kibbar: standard output: cannot write the test log (No space left on device)\n");

  auto help = kibbar({"--help"}, "/dev/full");
  EXPECT_EQ(help.status, 1);
  EXPECT_EQ(help.errors, "kibbar: standard output: cannot write the usage (No space left on device)\n");
}

TEST_F(HostileInputTest, DamagedBundlesAreRefusedBeforeLoading) {
  const auto truncated = dir / "Truncated.menuextra";
  std::filesystem::copy(testBundle(), truncated, std::filesystem::copy_options::recursive);
  const auto library = truncated / "TestExtra.so";
  std::filesystem::resize_file(library, std::filesystem::file_size(library) / 3);
  auto run = kibbar({"--bundle", truncated.string(), "--script", script("test-extra.kbs")});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.errors.rfind(
                "kibbar: bundle " + truncated.string() + ": cannot load " + library.string() + ": it is cut off", 0),
            0u)
      << run.errors;

  const auto folderInfo = dir / "FolderInfo.menuextra";
  std::filesystem::create_directories(folderInfo / "Info.json");
  run = kibbar({"--bundle", folderInfo.string(), "--script", script("test-extra.kbs")});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.errors, "kibbar: No bundle at " + folderInfo.string() + ": " + (folderInfo / "Info.json").string() +
                            " is a folder, not a file\n");
}

TEST_F(HostileInputTest, AStepThatCannotBeDoneIsReportedWithTheProgramsPrefix) {
  const auto path = (dir / "late.kbs").string();
  kibtest::writeFile(path, "wait 1\nchoose \"Say Hello\"\n");
  auto run = kibbar({"--bundle", testBundle(), "--script", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "kibbar: " + path + ":2: no menu is open\n");
}

}  // namespace
