#include "host/render/PictureStyle.h"

namespace kibrender {
namespace {

platform::Color rgb(int hex) {
  return {((hex >> 16) & 0xff) / 255.0, ((hex >> 8) & 0xff) / 255.0, (hex & 0xff) / 255.0, 1.0};
}

}  // namespace

Palette Palette::forTheme(PanelTheme theme) {
  // Template glyphs and text share one colour, so an icon reads like the text beside it.
  const platform::Color ink = templateTint(theme);
  if (theme == PanelTheme::Dark)
    return {rgb(0x1f1f1f), rgb(0x2d2d2d), rgb(0x585858), ink,
            rgb(0x7f7f7f), rgb(0x4a4a4a), rgb(0x2a62d4), rgb(0xffffff)};
  return {rgb(0xe8e8e8), rgb(0xf7f7f7), rgb(0xc4c4c4), ink, rgb(0x9a9a9a), rgb(0xdcdcdc), rgb(0x2a62d4), rgb(0xffffff)};
}

}  // namespace kibrender
