#pragma once

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "host/PluginBundle.h"
#include "sim/Scenario.h"

namespace kibhost {

// What the panel frontend starts from. It lives in its own library (it needs
// the session bus and the renderer), which the program hands in.
struct PanelLaunch {
  sim::Scenario scenario;
  std::string scenarioName;
  const PluginBundle& plugin;
  std::ostream* transcript;  // nil: none
  std::ostream& errors;
};
using PanelRunner = std::function<int(PanelLaunch& launch)>;

// The kibbar program: reads the command line, loads the scenario, the script
// and the extra's bundle, and runs the chosen frontend. Answers the exit status.
class Program {
 public:
  // panel: runs `--panel`; without it the option is refused.
  static int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors,
                 const PanelRunner& panel = nullptr);
  // The extra's bundle that ships with the program: bundles/Parlo.menuextra
  // beside the program's folder, else in the build tree it was built in.
  static std::filesystem::path defaultBundlePath();
};

}  // namespace kibhost
