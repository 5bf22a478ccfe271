#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/PluginBundle.h"
#include "host/StatusBarHost.h"
#include "sim/Scenario.h"

namespace kibhost {

class HeadlessRun;

// Hears a headless run as the transcript does and makes something of it (pictures).
class HeadlessObserver : public StatusBarHostDelegate {
 public:
  // False once something could not be written (said on the error stream then).
  virtual bool succeeded() const = 0;
};

// What the panel frontend starts from.
struct PanelLaunch {
  std::optional<sim::Scenario> scenario;  // none over a real backend
  std::string scenarioName;
  const PluginBundle& plugin;
  std::ostream* transcript;  // nil: none
  std::ostream& errors;
};

// Parts of the program that live outside the host library because they link
// more (the rendering module, the session bus); main() hands them in.
struct ProgramExtensions {
  // Makes the writer of --pictures DIR for a run; null (reason on errors) when it cannot.
  std::function<std::unique_ptr<HeadlessObserver>(const std::string& folder, HeadlessRun& run, std::ostream& errors)>
      pictures;
  // Runs `--panel`; without it the option is refused.
  std::function<int(PanelLaunch& launch)> panel;
};

// The kibbar program: reads the command line, loads the scenario, the script
// and the extra's bundle, and runs the chosen frontend. Answers the exit status.
class Program {
 public:
  static int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors,
                 const ProgramExtensions& extensions = {});
  // "kibbar 0.1.0"
  static std::string versionLine();
  // The extra's bundle that ships with the program: bundles/Parlo.menuextra
  // beside the program's folder (the build tree), else where the installation
  // puts it (bin/../lib/kibbar/bundles), else in the build tree it was built in.
  static std::filesystem::path defaultBundlePath();
};

}  // namespace kibhost
