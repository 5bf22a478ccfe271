#include "host/Program.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "host/CommandLine.h"
#include "host/HeadlessRun.h"
#include "host/PluginBundle.h"
#include "host/ScriptParser.h"
#include "host/TerminalFrontend.h"
#include "platform/ui/Image.h"
#include "sim/ScenarioError.h"
#include "sim/ScenarioLoader.h"

#ifndef KIB_BUILD_BUNDLE_DIR
#define KIB_BUILD_BUNDLE_DIR "bundles"
#endif

namespace kibhost {
namespace {

constexpr int kDone = 0;
constexpr int kBadInput = 2;
constexpr const char* kBundleName = "Parlo.menuextra";

// Where a transcript goes: standard output, a file, or nowhere.
class TranscriptOutput {
 public:
  bool open(const std::optional<std::string>& path, std::ostream& out, std::ostream& errors) {
    if (!path) {
      stream_ = &null_;
      return true;
    }
    if (*path == "-") {
      stream_ = &out;
      return true;
    }
    file_.open(*path, std::ios::out | std::ios::trunc);
    if (!file_) {
      errors << "kibbar: " << *path << ": cannot write the transcript (" << std::strerror(errno) << ")\n";
      return false;
    }
    stream_ = &file_;
    return true;
  }
  std::ostream& stream() { return *stream_; }
  bool toStandardOutput(const std::ostream& out) const { return stream_ == &out; }

 private:
  std::ofstream file_;
  std::ostream null_{nullptr};
  std::ostream* stream_ = nullptr;
};

}  // namespace

std::filesystem::path Program::defaultBundlePath() {
  std::error_code error;
  auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    auto beside = program.parent_path().parent_path() / "bundles" / kBundleName;
    if (std::filesystem::is_directory(beside, error)) return beside;
  }
  return std::filesystem::path(KIB_BUILD_BUNDLE_DIR) / kBundleName;
}

int Program::run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors,
                 const PanelRunner& panel) {
  CommandLine line;
  try {
    line = CommandLine::parse(arguments);
  } catch (const UsageError& error) {
    errors << "kibbar: " << error.what() << '\n';
    return kBadInput;
  }
  if (line.mode == CommandLine::Mode::Help) {
    out << CommandLine::usage();
    return kDone;
  }

  sim::Scenario scenario;
  Script script;
  try {
    scenario = line.scenario ? sim::ScenarioLoader::loadFile(*line.scenario) : sim::ScenarioLoader::defaultScenario();
    if (line.script) script = ScriptParser::loadFile(*line.script, scenario);
  } catch (const sim::ScenarioError& error) {
    errors << "kibbar: " << error.what() << '\n';
    return kBadInput;
  } catch (const ScriptError& error) {
    errors << "kibbar: " << error.what() << '\n';
    return kBadInput;
  }

  std::string error;
  auto plugin = PluginBundle::load(line.bundle ? std::filesystem::path(*line.bundle) : defaultBundlePath(), error);
  if (!plugin) {
    errors << "kibbar: " << error << '\n';
    return kBadInput;
  }
  // Status images the messaging platform names ("status-away", …) are the bundle's resources.
  platform::Image::setSystemImageDirectories({plugin->bundle()->resourcePath()});

  const std::string scenarioName = line.scenario ? *line.scenario : "built-in";
  if (line.mode == CommandLine::Mode::Terminal) {
    if (!isatty(STDIN_FILENO) || !isatty(STDOUT_FILENO)) {
      errors << "kibbar: the terminal frontend needs a terminal (use --script FILE for a headless run)\n";
      return kBadInput;
    }
    TranscriptOutput transcript;
    if (!transcript.open(line.transcript, out, errors)) return kBadInput;
    TerminalFrontend frontend(std::move(scenario), scenarioName, *plugin,
                              line.transcript ? &transcript.stream() : nullptr);
    return frontend.run(errors);
  }

  if (line.mode == CommandLine::Mode::Panel) {
    TranscriptOutput transcript;
    if (!transcript.open(line.transcript, out, errors)) return kBadInput;
    if (!panel) {
      errors << "kibbar: this program was built without the panel frontend\n";
      return kBadInput;
    }
    PanelLaunch launch{std::move(scenario), scenarioName, *plugin, line.transcript ? &transcript.stream() : nullptr,
                       errors};
    return panel(launch);
  }

  TranscriptOutput transcript;
  const bool selfTest = line.mode == CommandLine::Mode::SelfTest;
  auto transcriptPath = line.transcript;
  if (!selfTest && !transcriptPath) transcriptPath = "-";
  if (!transcript.open(transcriptPath, out, errors)) return kBadInput;
  HeadlessRun run(std::move(scenario), scenarioName, *plugin, transcript.stream(), errors, line.daemonQueries);
  if (!run.start()) return kBadInput;
  if (!selfTest) return run.playScript(script);
  std::ostream null(nullptr);
  return run.runSelfTest(line.selfTest, transcript.toStandardOutput(out) ? null : out);
}

}  // namespace kibhost
