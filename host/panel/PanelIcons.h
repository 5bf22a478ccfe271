#pragma once

#include <cstdint>
#include <vector>

#include "platform/ui/Image.h"

namespace kibhost {

// What the panel frontend needs drawn: the slot's icon as StatusNotifierItem
// pixmaps and menu images as PNG bytes. The rendering module supplies it
// (RenderedPanelIcons); tests may supply their own.
class PanelIcons {
 public:
  struct Pixmap {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> argb;  // ARGB32, network byte order, not premultiplied
    friend bool operator==(const Pixmap&, const Pixmap&) = default;
  };
  // The icon sizes a panel picks from.
  static constexpr int kIconSizes[] = {16, 22, 24, 32, 48};
  static constexpr int kMenuIconSize = 16;

  virtual ~PanelIcons() = default;
  // One pixmap per icon size; none when the image cannot be drawn.
  virtual std::vector<Pixmap> iconPixmaps(const platform::ImagePtr& image, bool dimmed) = 0;
  // PNG bytes of a menu item's image; empty for none, a blank or an unreadable image.
  virtual std::vector<std::uint8_t> menuIconPNG(const platform::ImagePtr& image) = 0;
};

}  // namespace kibhost
