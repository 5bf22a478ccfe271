#include "host/panel/RenderedPanelIcons.h"

namespace kibhost {

RenderedPanelIcons::RenderedPanelIcons(kibrender::PanelTheme theme) : theme_(theme) {}

std::vector<PanelIcons::Pixmap> RenderedPanelIcons::iconPixmaps(const platform::ImagePtr& image, bool dimmed) {
  std::vector<Pixmap> pixmaps;
  if (!image || image->filePath().empty()) return pixmaps;
  kibrender::RasterOptions options;
  options.tint = kibrender::templateTint(theme_);
  options.dimmed = dimmed;
  for (int size : kIconSizes) {
    auto pixmap = rasterizer_.renderSquare(*image, size, options);
    if (pixmap.isEmpty()) return {};
    pixmaps.push_back({pixmap.width(), pixmap.height(), pixmap.statusNotifierBytes()});
  }
  return pixmaps;
}

std::vector<std::uint8_t> RenderedPanelIcons::menuIconPNG(const platform::ImagePtr& image) {
  if (!image || image->filePath().empty()) return {};
  const std::string key = image->filePath() + (image->isTemplate() ? "|template" : "");
  auto known = menuIcons_.find(key);
  if (known != menuIcons_.end()) return known->second;
  kibrender::RasterOptions options;
  options.tint = kibrender::templateTint(theme_);  // a desktop's menus follow its theme
  return menuIcons_[key] = rasterizer_.renderSquare(*image, kMenuIconSize, options).pngBytes();
}

}  // namespace kibhost
