#pragma once

#include <cairo.h>

#include <memory>
#include <string>

#include "platform/ui/Color.h"
#include "platform/ui/Geometry.h"

namespace kibrender {

// Text for pictures with pango: one fixed font (DejaVu Sans from
// fonts-dejavu-core, DejaVu Sans Mono for the symbols it lacks) at an
// absolute size, grey antialiasing, no hinting, no metric rounding, on a font
// map of its own, so the same text gives the same pixels on one machine at
// every scale. Sizes and positions are in the cairo context's user units.
class TextRenderer {
 public:
  static constexpr const char* kFontFamilies = "DejaVu Sans,DejaVu Sans Mono";

  static constexpr const char* kMonospaceFamilies = "DejaVu Sans Mono";

  // Hinted text stands in for another machine's rasterisation (tests).
  explicit TextRenderer(bool hinted = false, std::string families = kFontFamilies);
  ~TextRenderer();
  TextRenderer(const TextRenderer&) = delete;
  TextRenderer& operator=(const TextRenderer&) = delete;

  // The text's logical width and height at the size.
  platform::Size measure(cairo_t* context, const std::string& text, double size) const;
  // Draws the text with its logical top left corner at (x, y).
  void draw(cairo_t* context, const std::string& text, double size, double x, double y,
            const platform::Color& color) const;

 private:
  struct Fonts;
  std::unique_ptr<Fonts> fonts_;
  std::string families_;
};

}  // namespace kibrender
