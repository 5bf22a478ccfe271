// kibbar-capture: draws a captured terminal screen (a text file) as a PNG,
// for the documentation's pictures of the terminal frontend.
//   kibbar-capture CAPTURE.txt OUT.png [SCALE]
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "host/pictures/TerminalCapturePicture.h"

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::cerr << "usage: kibbar-capture CAPTURE.txt OUT.png [SCALE]\n";
    return 2;
  }
  std::ifstream in(argv[1]);
  if (!in) {
    std::cerr << "kibbar-capture: " << argv[1] << ": cannot read\n";
    return 2;
  }
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  const double scale = argc == 4 ? std::stod(argv[3]) : 1.0;
  std::string error;
  if (!kibpictures::TerminalCapturePicture::draw(lines, scale).writePNG(argv[2], error)) {
    std::cerr << "kibbar-capture: " << error << '\n';
    return 1;
  }
  return 0;
}
