#include "host/Program.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>

#include "host/CheckedOutput.h"
#include "host/CommandLine.h"
#include "host/HeadlessRun.h"
#include "host/PluginBundle.h"
#include "host/PurpleSession.h"
#include "host/ScriptParser.h"
#include "host/TerminalFrontend.h"
#include "platform/ui/Image.h"
#include "sim/ScenarioError.h"
#include "sim/ScenarioLoader.h"

#ifndef KIB_VERSION
#define KIB_VERSION "0"
#endif

#ifndef KIB_BUILD_BUNDLE_DIR
#define KIB_BUILD_BUNDLE_DIR "bundles"
#endif

namespace kibhost {
namespace {

constexpr int kDone = 0;
constexpr int kWriteFailed = 1;
constexpr int kBadInput = 2;
constexpr const char* kBundleName = "Parlo.menuextra";

// Where a transcript goes: standard output, a file, or nowhere. Write errors
// are kept, so that a full disk ends the run with a failure.
class TranscriptOutput {
 public:
  bool open(const std::optional<std::string>& path, std::ostream& out, std::ostream& errors) {
    if (!path) {
      stream_ = &null_;
      return true;
    }
    if (*path == "-") {
      checked_.emplace(out);
      name_ = "standard output";
    } else {
      file_.open(*path, std::ios::out | std::ios::trunc);
      if (!file_) {
        errors << "kibbar: " << *path << ": cannot write the transcript (" << std::strerror(errno) << ")\n";
        return false;
      }
      checked_.emplace(file_);
      name_ = *path;
    }
    stream_ = &*checked_;
    return true;
  }
  std::ostream& stream() { return *stream_; }
  bool toStandardOutput() const { return name_ == "standard output"; }
  // The run's status, or 1 with a line on the error stream when the transcript could not be written.
  int finish(int status, std::ostream& errors) {
    if (checked_) checked_->flush();
    if (!checked_ || !checked_->failed()) return status;
    errors << "kibbar: " << name_ << ": cannot write the transcript (" << checked_->problem() << ")\n";
    return kWriteFailed;
  }

 private:
  std::ofstream file_;
  std::optional<CheckedOutput> checked_;
  std::string name_;
  std::ostream null_{nullptr};
  std::ostream* stream_ = nullptr;
};

// Whether the transcript would overwrite one of the run's own inputs.
bool namesAnInput(const CommandLine& line) {
  if (!line.transcript || *line.transcript == "-") return false;
  for (const auto& input : {line.scenario, line.script}) {
    std::error_code error;
    if (input && std::filesystem::equivalent(*line.transcript, *input, error)) return true;
  }
  return false;
}

}  // namespace

std::filesystem::path Program::defaultBundlePath() {
  std::error_code error;
  auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    auto beside = program.parent_path().parent_path() / "bundles" / kBundleName;
    if (std::filesystem::is_directory(beside, error)) return beside;
#ifdef KIB_INSTALLED_BUNDLE_DIR
    // Installed: bin/kibbar finds lib/kibbar/bundles/ (GNUInstallDirs' places, relative to each other).
    auto installed = (program.parent_path() / KIB_INSTALLED_BUNDLE_DIR / kBundleName).lexically_normal();
    if (std::filesystem::is_directory(installed, error)) return installed;
#endif
  }
  return std::filesystem::path(KIB_BUILD_BUNDLE_DIR) / kBundleName;
}

std::string Program::versionLine() { return std::string("kibbar ") + KIB_VERSION; }

int Program::run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors,
                 const ProgramExtensions& extensions) {
  CommandLine line;
  try {
    line = CommandLine::parse(arguments);
  } catch (const UsageError& error) {
    errors << "kibbar: " << error.what() << '\n';
    return kBadInput;
  }
  if (line.mode == CommandLine::Mode::Help) {
    CheckedOutput help(out);
    help << CommandLine::usage() << std::flush;
    if (!help.failed()) return kDone;
    errors << "kibbar: standard output: cannot write the usage (" << help.problem() << ")\n";
    return kWriteFailed;
  }

  if (namesAnInput(line)) {
    errors << "kibbar: --transcript " << *line.transcript << " names an input of the run; give another file\n";
    return kBadInput;
  }
  if (line.mode == CommandLine::Mode::Version) {
    out << versionLine() << '\n';
    return kDone;
  }
  if (line.pictures && !extensions.pictures) {
    errors << "kibbar: this program was built without pictures (--pictures)\n";
    return kBadInput;
  }

  sim::Scenario scenario;
  Script script;
  const bool purple = line.backend == "purple";
  try {
    // Over a libpurple client there is no simulated world: script events name nothing.
    if (!purple)
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
  std::unique_ptr<PurpleSession> session;
  if (purple && !(session = PurpleSession::open(errors))) return kBadInput;
  if (line.mode == CommandLine::Mode::Terminal) {
    if (!isatty(STDIN_FILENO) || !isatty(STDOUT_FILENO)) {
      errors << "kibbar: the terminal frontend needs a terminal (use --script FILE for a headless run)\n";
      return kBadInput;
    }
    TranscriptOutput transcript;
    if (!transcript.open(line.transcript, out, errors)) return kBadInput;
    std::optional<sim::Scenario> world;
    if (!purple) world = std::move(scenario);
    TerminalFrontend frontend(std::move(world), purple ? "purple" : scenarioName, *plugin,
                              line.transcript ? &transcript.stream() : nullptr);
    if (session) {
      session->backend().setActivityObserver([&frontend](const std::string& activity) { frontend.noteActivity(activity); });
      session->start();
    }
    return transcript.finish(frontend.run(errors), errors);
  }

  if (line.mode == CommandLine::Mode::Panel) {
    TranscriptOutput transcript;
    if (!transcript.open(line.transcript, out, errors)) return kBadInput;
    if (!extensions.panel) {
      errors << "kibbar: this program was built without the panel frontend\n";
      return kBadInput;
    }
    std::optional<sim::Scenario> world;
    if (!purple) world = std::move(scenario);
    if (session) session->start();
    PanelLaunch launch{std::move(world), purple ? "purple" : scenarioName, *plugin,
                       line.transcript ? &transcript.stream() : nullptr, errors};
    return transcript.finish(extensions.panel(launch), errors);
  }

  TranscriptOutput transcript;
  const bool selfTest = line.mode == CommandLine::Mode::SelfTest;
  auto transcriptPath = line.transcript;
  if (!selfTest && !transcriptPath) transcriptPath = "-";
  if (!transcript.open(transcriptPath, out, errors)) return kBadInput;
  // Declared before the run, so it outlives the run's teardown, which it hears.
  std::unique_ptr<HeadlessObserver> pictures;
  auto run = purple ? std::make_unique<HeadlessRun>("purple", *plugin, transcript.stream(), errors, line.daemonQueries)
                    : std::make_unique<HeadlessRun>(std::move(scenario), scenarioName, *plugin, transcript.stream(),
                                                    errors, line.daemonQueries);
  if (line.pictures) {
    pictures = extensions.pictures(*line.pictures, *run, errors);
    if (!pictures) return kBadInput;
    run->recorder().setFollower(pictures.get());
  }
  if (session) {
    session->backend().setActivityObserver(
        [&recorder = run->recorder()](const std::string& activity) { recorder.recordApplicationActivity(activity); });
    session->start();
  }
  if (!run->start()) return kBadInput;
  int status = 0;
  if (!selfTest) {
    status = transcript.finish(run->playScript(script), errors);
  } else {
    std::ostream null(nullptr);
    CheckedOutput testLog(out);
    status =
        transcript.finish(run->runSelfTest(line.selfTest, transcript.toStandardOutput() ? null : testLog), errors);
    testLog.flush();
    if (testLog.failed()) {
      errors << "kibbar: standard output: cannot write the test log (" << testLog.problem() << ")\n";
      status = kWriteFailed;
    }
  }
  return pictures && !pictures->succeeded() && status == kDone ? kWriteFailed : status;
}

}  // namespace kibhost
