#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace kibhost {

// The kibbar program: reads the command line, loads the scenario, the script
// and the extra's bundle, and runs the chosen frontend. Answers the exit status.
class Program {
 public:
  static int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors);
  // The extra's bundle that ships with the program: bundles/Parlo.menuextra
  // beside the program's folder, else in the build tree it was built in.
  static std::filesystem::path defaultBundlePath();
};

}  // namespace kibhost
