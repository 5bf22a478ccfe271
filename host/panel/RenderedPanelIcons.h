#pragma once

#include <map>
#include <string>

#include "host/panel/PanelIcons.h"
#include "host/render/ImageRasterizer.h"
#include "host/render/PanelTheme.h"

namespace kibhost {

// Panel icons drawn by the rendering module: template glyphs tinted for the
// panel's theme (light or dark, as the desktop says), dimmed as the view dims.
// Menu images are drawn once per file.
class RenderedPanelIcons final : public PanelIcons {
 public:
  explicit RenderedPanelIcons(kibrender::PanelTheme theme = kibrender::detectPanelTheme());

  std::vector<Pixmap> iconPixmaps(const platform::ImagePtr& image, bool dimmed) override;
  std::vector<std::uint8_t> menuIconPNG(const platform::ImagePtr& image) override;

 private:
  kibrender::PanelTheme theme_;
  kibrender::ImageRasterizer rasterizer_;
  // Menus are exported again whenever the extra rebuilds them; their images rarely change.
  std::map<std::string, std::vector<std::uint8_t>> menuIcons_;
};

}  // namespace kibhost
