#include <iostream>
#include <string>
#include <vector>

#include "host/Program.h"
#include "host/panel/PanelFrontend.h"
#include "host/panel/RenderedPanelIcons.h"

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  return kibhost::Program::run(arguments, std::cout, std::cerr, [](kibhost::PanelLaunch& launch) {
    kibhost::PanelFrontend frontend(std::move(launch.scenario), launch.scenarioName, launch.plugin, launch.transcript,
                                    std::make_unique<kibhost::RenderedPanelIcons>());
    return frontend.run(launch.errors);
  });
}
