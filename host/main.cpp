#include <iostream>
#include <string>
#include <vector>

#include "host/Program.h"
#include "host/panel/PanelFrontend.h"
#include "host/panel/RenderedPanelIcons.h"
#include "host/pictures/PictureWriter.h"

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  kibhost::ProgramExtensions extensions;
  extensions.pictures = kibpictures::PictureWriter::make;
  extensions.panel = [](kibhost::PanelLaunch& launch) {
    kibhost::PanelFrontend frontend(std::move(launch.scenario), launch.scenarioName, launch.plugin, launch.transcript,
                                    std::make_unique<kibhost::RenderedPanelIcons>());
    return frontend.run(launch.errors);
  };
  return kibhost::Program::run(arguments, std::cout, std::cerr, extensions);
}
