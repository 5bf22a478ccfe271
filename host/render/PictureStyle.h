#pragma once

#include "host/render/PanelTheme.h"
#include "platform/ui/Color.h"

namespace kibrender {

// How a picture is drawn: its device pixels per point (1 or 2) and its theme.
struct PictureStyle {
  double scale = 1.0;
  PanelTheme theme = PanelTheme::Light;
};

// The colours of the bar and of menus in a theme.
struct Palette {
  platform::Color bar;              // the menu bar behind the slot
  platform::Color menu;             // a menu's background
  platform::Color border;           // a menu's outline
  platform::Color text;             // enabled rows, the banner, template glyphs
  platform::Color disabledText;     // disabled rows and headings
  platform::Color separator;        // separator lines
  platform::Color highlight;        // the chosen row and the slot while its menu is open
  platform::Color highlightedText;  // text and glyphs on the highlight

  static Palette forTheme(PanelTheme theme);
};

}  // namespace kibrender
