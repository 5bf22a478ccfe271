#pragma once

#include <string>

#include "host/TerminalScreen.h"

namespace kibhost {

// How the terminal shows images: by their names, as a few characters.
class ImageGlyphs {
 public:
  struct Glyph {
    std::string text;
    TerminalScreen::Color color = TerminalScreen::Color::Default;
  };

  // The menu-bar icon, three columns wide ("(•)" for the plain glyph, "(-)" for away, …).
  static Glyph statusIcon(const std::string& imageName);
  // A menu item's image, one column wide (status dots, chat icons, blank spacers).
  static Glyph menuImage(const std::string& imageName);
};

}  // namespace kibhost
