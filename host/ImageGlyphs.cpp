#include "host/ImageGlyphs.h"

#include <map>

namespace kibhost {
namespace {

using Color = TerminalScreen::Color;

// Names may come with or without their file extension.
std::string baseName(const std::string& name) {
  auto dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(0, dot);
}

}  // namespace

ImageGlyphs::Glyph ImageGlyphs::statusIcon(const std::string& imageName) {
  static const std::map<std::string, Glyph> icons{
      {"MenuExtra", {"(•)", Color::Default}},
      {"MenuExtra-", {"(-)", Color::Default}},
      {"MenuExtra!", {"(!)", Color::Default}},
      {"SharingActive", {"[▶]", Color::BrightBlue}},
  };
  if (imageName.empty()) return {"   ", Color::Default};
  auto found = icons.find(baseName(imageName));
  return found != icons.end() ? found->second : Glyph{"(?)", Color::Default};
}

ImageGlyphs::Glyph ImageGlyphs::menuImage(const std::string& imageName) {
  static const std::map<std::string, Glyph> images{
      {"status-available", {"●", Color::Green}},
      {"status-away", {"●", Color::Red}},
      {"status-idle", {"●", Color::Yellow}},
      {"status-offline", {"○", Color::Default}},
      {"status-invisible-flat", {"◌", Color::Default}},
      {"menu-video", {"▶", Color::Cyan}},
      {"menu-video_busy", {"▶", Color::BrightBlack}},
      {"menu-audio", {"♪", Color::Cyan}},
      {"menu-audio_busy", {"♪", Color::BrightBlack}},
      {"Empty Image", {" ", Color::Default}},
      {"SharingActive", {"▣", Color::BrightBlue}},
  };
  if (imageName.empty()) return {" ", Color::Default};
  auto found = images.find(baseName(imageName));
  return found != images.end() ? found->second : Glyph{"▪", Color::Default};
}

}  // namespace kibhost
