#include <iostream>
#include <string>
#include <vector>

#include "host/Program.h"

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  return kibhost::Program::run(arguments, std::cout, std::cerr);
}
