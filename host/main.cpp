#include <iostream>
#include <string>
#include <vector>

#include "host/Program.h"
#include "host/pictures/PictureWriter.h"

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  kibhost::ProgramExtensions extensions;
  extensions.pictures = kibpictures::PictureWriter::make;
  return kibhost::Program::run(arguments, std::cout, std::cerr, extensions);
}
