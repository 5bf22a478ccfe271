#include <gtest/gtest.h>

#include "host/render/SlotPainter.h"
#include "platform/ui/ButtonCell.h"
#include "platform/ui/TextFieldCell.h"
#include "tests/host/render/RenderTestSupport.h"

namespace {

using kibrender::PanelTheme;
using kibrender::Pixmap;
using kibrender::SlotPainter;

// What the banner view draws: the background, the icon in its frame, the text clipped, the edge fade.
struct Slot {
  platform::ButtonCell icon;
  platform::TextFieldCell text{"Back from Lisbon and very happy about it"};
  platform::RecordingCanvas canvas;

  void draw(double width, bool dimmed, bool highlighted, double textX, bool fade) {
    canvas.clear();
    icon.setImage(platform::Image::initByReferencingFile((rendertest::resourcesDir() / "MenuExtra.pdf").string()));
    icon.image()->setTemplate(true);
    icon.setEnabled(!dimmed);
    canvas.fillMenuBackground({0, 0, width, 22}, highlighted);
    canvas.drawCell(icon, {2, 3.5, 20, 15});
    canvas.saveGraphicsState();
    canvas.clipToRect({30, 0, width - 33, 20});
    canvas.drawCell(text, {textX, 0, 300, 20});
    canvas.restoreGraphicsState();
    if (fade)
      canvas.fillRectsWithColors({{30, 0, 1, 20}, {width - 4, 0, 1, 20}},
                                 {platform::Color::black(1.0), platform::Color::black(1.0)},
                                 platform::CompositingOperation::DestinationOut);
  }
};

int luminance(const kibrender::Rgba8& p) { return (p.red * 3 + p.green * 6 + p.blue) / 10; }

// The darkest luminance in columns [x0, x1) of the picture.
int darkestIn(const Pixmap& picture, int x0, int x1) {
  int least = 255;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = x0; x < x1; ++x) least = std::min(least, luminance(picture.pixelAt(x, y)));
  return least;
}

TEST(SlotPainterTest, TheIconTheClippedTextTheDimmingAndTheHighlightAreDrawnWhereTheViewDrewThem) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  Slot slot;
  const double width = 120;
  for (double scale : {1.0, 2.0}) {
    SCOPED_TRACE(scale);
    SlotPainter painter(rasterizer, text, {scale, PanelTheme::Light});
    const int s = static_cast<int>(scale);
    const int left = static_cast<int>(SlotPainter::kBarMargin) * s;
    slot.draw(width, false, false, 30, false);
    const Pixmap plain = painter.paint(slot.canvas, width);
    ASSERT_EQ(plain.width(), static_cast<int>(width + 2 * SlotPainter::kBarMargin) * s);
    ASSERT_EQ(plain.height(), 22 * s);
    const int bar = luminance(plain.pixelAt(1, 1));
    // The icon: dark glyph pixels in its frame; dimmed, they are lighter.
    const int icon = darkestIn(plain, left + 2 * s, left + 22 * s);
    EXPECT_LT(icon, 60);
    slot.draw(width, true, false, 30, false);
    const int dimmed = darkestIn(painter.paint(slot.canvas, width), left + 2 * s, left + 22 * s);
    EXPECT_NEAR(dimmed, (icon + bar) / 2, 6);
    // The text starts at 30 and is cut at the clip's end (width − 3).
    EXPECT_LT(darkestIn(plain, left + 30 * s, left + 60 * s), 80);
    EXPECT_EQ(darkestIn(plain, left + static_cast<int>(width - 3) * s, plain.width()), bar);
    EXPECT_EQ(darkestIn(plain, left + 22 * s, left + 30 * s), bar);

    // Highlighted: the slot is blue, the bar beside it is not, the glyph turns white.
    slot.draw(width, false, true, 30, false);
    const Pixmap open = painter.paint(slot.canvas, width);
    const auto inside = open.pixelAt(left + 25 * s, 2 * s);
    EXPECT_GT(inside.blue, 180);
    EXPECT_LT(inside.red, 80);
    EXPECT_EQ(open.pixelAt(1, 1), plain.pixelAt(1, 1));
    int brightest = 0;
    for (int y = 0; y < open.height(); ++y)
      for (int x = left + 2 * s; x < left + 22 * s; ++x) brightest = std::max(brightest, int(open.pixelAt(x, y).red));
    EXPECT_GT(brightest, 240);

    // The edge fade erases what the view drew, so the bar shows there.
    slot.draw(width, false, false, -6, true);
    const Pixmap faded = painter.paint(slot.canvas, width);
    EXPECT_EQ(darkestIn(faded, left + 30 * s, left + 31 * s), bar);
  }
}

TEST(SlotPainterTest, DarkBarsTintTheGlyphLightAndAMissingIconLeavesTheBar) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  Slot slot;
  slot.draw(24, false, false, 30, false);
  const Pixmap dark = SlotPainter(rasterizer, text, {1.0, PanelTheme::Dark}).paint(slot.canvas, 24);
  int brightest = 0;
  for (int y = 0; y < dark.height(); ++y)
    for (int x = 10; x < 30; ++x) brightest = std::max(brightest, luminance(dark.pixelAt(x, y)));
  EXPECT_GT(brightest, 220);
  EXPECT_LT(luminance(dark.pixelAt(1, 1)), 50);

  slot.icon.setImage(platform::Image::initByReferencingFile("/nonexistent/MenuExtra.pdf"));
  slot.canvas.clear();
  slot.canvas.drawCell(slot.icon, {2, 3.5, 20, 15});
  const Pixmap missing = SlotPainter(rasterizer, text, {1.0, PanelTheme::Light}).paint(slot.canvas, 24);
  EXPECT_EQ(darkestIn(missing, 0, missing.width()), luminance(missing.pixelAt(0, 0)));
}

}  // namespace
