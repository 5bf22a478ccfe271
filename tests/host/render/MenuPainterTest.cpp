#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "host/render/CairoHandles.h"
#include "host/render/MenuPainter.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/MenuItem.h"
#include "tests/host/render/RenderTestSupport.h"

namespace {

using kibrender::MenuPainter;
using kibrender::MenuRow;
using kibrender::PanelTheme;
using kibrender::PictureStyle;
using kibrender::PixelRect;
using kibrender::Pixmap;
using rendertest::resourcesDir;

platform::ImagePtr resource(const char* name) {
  return platform::Image::initByReferencingFile((resourcesDir() / name).string());
}

// Every kind of row: a disabled heading, a check, a dash, an image, a
// separator, an indented row with a key equivalent, a submenu, a disabled image row.
std::vector<MenuRow> sampleRows() {
  std::vector<MenuRow> rows(9);
  rows[0].title = "My Status: Available";
  rows[0].enabled = false;
  rows[1].title = "Available";
  rows[1].state = platform::kOnState;
  rows[1].image = resource("status-available.png");
  rows[2].title = "Offline";
  rows[2].state = platform::kMixedState;
  rows[2].image = resource("status-offline.png");
  rows[3].separator = true;
  rows[4].title = "Sharing My Screen";
  rows[4].enabled = false;
  rows[5].title = "End Screen Sharing";
  rows[5].indentationLevel = 1;
  rows[5].keyEquivalent = "⌃⎋";
  rows[6].separator = true;
  rows[7].title = "Maya Okafor";
  rows[7].hasSubmenu = true;
  rows[7].image = resource("menu-video.png");
  rows[8].title = "Show Buddy List…";
  return rows;
}

// The darkest luminance in the rectangle (255 when it has no visible pixel), over the menu's background.
int darkest(const Pixmap& picture, const PixelRect& rect) {
  int least = 255;
  for (int y = rect.y; y < rect.y + rect.height; ++y)
    for (int x = rect.x; x < rect.x + rect.width; ++x) {
      const auto p = picture.pixelAt(x, y);
      if (p.alpha < 200) continue;
      least = std::min(least, (p.red * 3 + p.green * 6 + p.blue) / 10);
    }
  return least;
}

// How many pixels of the rectangle are darker than the threshold.
int inkIn(const Pixmap& picture, const PixelRect& rect, int threshold = 160) {
  int count = 0;
  for (int y = rect.y; y < rect.y + rect.height; ++y)
    for (int x = rect.x; x < rect.x + rect.width; ++x) {
      const auto p = picture.pixelAt(x, y);
      if (p.alpha >= 200 && (p.red * 3 + p.green * 6 + p.blue) / 10 < threshold) ++count;
    }
  return count;
}

PixelRect quarter(const PixelRect& r, bool right, bool bottom) {
  return {r.x + (right ? r.width / 2 : 0), r.y + (bottom ? r.height / 2 : 0), r.width / 2, r.height / 2};
}

TEST(MenuPainterTest, EachKindOfRowIsDrawnWhereItBelongsAtEveryScale) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  const auto rows = sampleRows();
  for (double scale : {1.0, 2.0}) {
    SCOPED_TRACE(scale);
    MenuPainter painter(rasterizer, text, {scale, PanelTheme::Light});
    const Pixmap picture = painter.paint(rows);
    const auto& at = painter.placements();
    ASSERT_EQ(at.size(), rows.size());
    const int s = static_cast<int>(scale);

    // Check: ink in the upper right (the long stroke) and the lower left; dash: a line across the middle only.
    EXPECT_GT(inkIn(picture, quarter(at[1].mark, true, false)), 2 * s);
    EXPECT_GT(inkIn(picture, at[1].mark), 10 * s);
    const PixelRect dashTop{at[2].mark.x, at[2].mark.y, at[2].mark.width, at[2].mark.height / 3};
    const PixelRect dashMiddle{at[2].mark.x, at[2].mark.centreY() - s, at[2].mark.width, 2 * s};
    EXPECT_EQ(inkIn(picture, dashTop), 0);
    EXPECT_GT(inkIn(picture, dashMiddle), 4 * s);
    // No mark where the state is off.
    EXPECT_EQ(at[0].mark.width, 0);
    EXPECT_EQ(inkIn(picture, {at[1].mark.x, at[8].row.y, at[1].mark.width, at[8].row.height}), 0);

    // A disabled heading is grey; an enabled title is near-black.
    EXPECT_GT(darkest(picture, at[0].title), 120);
    EXPECT_LT(darkest(picture, at[8].title), 60);
    EXPECT_GT(inkIn(picture, at[0].title, 200), 20 * s);

    // The available dot is green in the image column; the video image of a submenu row too.
    const auto dot = picture.pixelAt(at[1].image.centreX(), at[1].image.centreY());
    EXPECT_GT(dot.green, 120);
    EXPECT_LT(dot.red, 120);
    EXPECT_EQ(at[1].image.x, at[2].image.x);
    EXPECT_GT(at[1].title.x, at[1].image.x + at[1].image.width);

    // Indentation moves the title right by 12 points.
    EXPECT_EQ(at[5].title.x - at[4].title.x, 12 * s);
    // The key equivalent sits at the right edge, after the titles, and is drawn.
    EXPECT_GT(at[5].key.width, 0);
    EXPECT_NEAR(at[5].key.x + at[5].key.width, picture.width() - MenuPainter::kRightMargin * scale, 1.5);
    EXPECT_GT(at[5].key.x, at[5].title.x + at[5].title.width);
    EXPECT_GT(inkIn(picture, at[5].key), 10 * s);
    EXPECT_EQ(at[8].key.width, 0);
    // The submenu arrow.
    EXPECT_GT(inkIn(picture, at[7].arrow), 8 * s * s);
    EXPECT_EQ(at[8].arrow.width, 0);

    // Separators: a line across the middle of their row, nothing above it.
    const auto line = picture.pixelAt(picture.width() / 2, at[3].row.centreY());
    const auto above = picture.pixelAt(picture.width() / 2, at[3].row.y + 1);
    EXPECT_LT(line.green, above.green);
    EXPECT_EQ(at[3].row.height, static_cast<int>(MenuPainter::kSeparatorHeight * scale));
  }
}

TEST(MenuPainterTest, ThemesAndHighlightChangeTheColours) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  auto rows = sampleRows();
  rows[8].highlighted = true;
  MenuPainter dark(rasterizer, text, {1.0, PanelTheme::Dark});
  const Pixmap picture = dark.paint(rows);
  const auto& at = dark.placements();
  // The highlighted row is blue with white text; a dark menu is dark behind light text.
  const auto behind = picture.pixelAt(at[8].row.x + 2, at[8].row.y + 2);
  EXPECT_GT(behind.blue, 180);
  EXPECT_LT(behind.red, 80);
  const auto background = picture.pixelAt(at[7].row.x + 2, at[7].row.y + 2);
  EXPECT_LT(background.red, 60);
  int brightest = 0;
  for (int y = at[7].title.y; y < at[7].title.y + at[7].title.height; ++y)
    for (int x = at[7].title.x; x < at[7].title.x + at[7].title.width; ++x)
      brightest = std::max(brightest, int(picture.pixelAt(x, y).green));
  EXPECT_GT(brightest, 220);
}

TEST(MenuPainterTest, RowsFollowTheMenuItemsAndTheModifiersHeld) {
  auto menu = platform::Menu::initWithTitle("");
  auto heading = platform::MenuItem::initWithTitleActionKeyEquivalent("Buddies", "", "");
  auto person = platform::MenuItem::initWithTitleActionKeyEquivalent("Maya", "", "");
  auto alternate = platform::MenuItem::initWithTitleActionKeyEquivalent("Maya (text)", "", "");
  alternate->setAlternate(true);
  alternate->setKeyEquivalentModifierMask(platform::kAlternateKeyMask);
  auto end = platform::MenuItem::initWithTitleActionKeyEquivalent("End", "", "\033");
  end->setKeyEquivalentModifierMask(platform::kControlKeyMask);
  end->setIndentationLevel(1);
  end->setState(platform::kMixedState);
  menu->addItem(heading);
  menu->addItem(person);
  menu->addItem(alternate);
  menu->addItem(platform::MenuItem::separatorItem());
  menu->addItem(end);

  const auto plain = MenuRow::rowsOf(menu, 0);
  ASSERT_EQ(plain.size(), 4u);
  EXPECT_EQ(plain[1].title, "Maya");
  EXPECT_FALSE(plain[0].enabled);
  EXPECT_TRUE(plain[2].separator);
  EXPECT_EQ(plain[3].keyEquivalent, "⌃⎋");
  EXPECT_EQ(plain[3].indentationLevel, 1);
  EXPECT_EQ(plain[3].state, platform::kMixedState);
  const auto option = MenuRow::rowsOf(menu, platform::kAlternateKeyMask);
  ASSERT_EQ(option.size(), 4u);
  EXPECT_EQ(option[1].title, "Maya (text)");
  EXPECT_TRUE(MenuRow::rowsOf(nullptr, 0).empty());
}

// Reference pictures: tests/host/render/references/menu-{light,dark}@{1,2}x.png.
// KIB_UPDATE_REFERENCES=1 writes them anew. Text may rasterise a little
// differently elsewhere, so the comparison allows a size difference of two
// pixels, small average differences and a few very different pixels.
TEST(MenuPainterTest, KnownMenusLookLikeTheirReferencePictures) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  const auto rows = sampleRows();
  const auto references = rendertest::sourceDir() / "tests/host/render/references";
  const bool update = std::getenv("KIB_UPDATE_REFERENCES") != nullptr;
  for (auto theme : {PanelTheme::Light, PanelTheme::Dark}) {
    for (double scale : {1.0, 2.0}) {
      const std::string name = std::string("menu-") + kibrender::panelThemeName(theme) + "@" +
                               std::to_string(static_cast<int>(scale)) + "x.png";
      SCOPED_TRACE(name);
      const Pixmap picture = MenuPainter(rasterizer, text, {scale, theme}).paint(rows);
      // Deterministic: the same menu gives the same bytes.
      EXPECT_EQ(MenuPainter(rasterizer, text, {scale, theme}).paint(rows).pngBytes(), picture.pngBytes());
      std::string error;
      if (update) {
        std::filesystem::create_directories(references);
        ASSERT_TRUE(picture.writePNG((references / name).string(), error)) << error;
      }
      kibrender::SurfaceHandle surface(cairo_image_surface_create_from_png((references / name).c_str()));
      const Pixmap expected = kibrender::pixmapFromSurface(surface.get());
      ASSERT_FALSE(expected.isEmpty()) << "missing reference " << name;
      const auto comparison = rendertest::compare(picture, expected);
      EXPECT_LE(std::abs(picture.width() - expected.width()), 2);
      EXPECT_LE(std::abs(picture.height() - expected.height()), 2);
      EXPECT_TRUE(rendertest::looksAlike(comparison)) << comparison.meanDifference << " " << comparison.farOffFraction;
    }
  }
}

TEST(MenuPainterTest, ReferenceComparisonNoticesADifferentMenu) {
  kibrender::ImageRasterizer rasterizer;
  kibrender::TextRenderer text;
  auto rows = sampleRows();
  const Pixmap picture = MenuPainter(rasterizer, text, {1.0, PanelTheme::Light}).paint(rows);
  // One detail at a time: the check on another row, a word changed. (Colours
  // of a row, like a heading's grey, are left to the pixel probes above.)
  auto moved = rows;
  moved[1].state = platform::kOffState;
  moved[2].state = platform::kOnState;
  auto retitled = rows;
  retitled[5].title = "Stop Screen Sharing";
  for (const auto& changed : {moved, retitled}) {
    const auto comparison =
        rendertest::compare(MenuPainter(rasterizer, text, {1.0, PanelTheme::Light}).paint(changed), picture);
    EXPECT_FALSE(rendertest::looksAlike(comparison)) << comparison.worstTile;
  }
  const auto same = rendertest::compare(picture, picture);
  EXPECT_EQ(same.meanDifference, 0.0);
  // Text rasterised differently (hinted outlines) still passes.
  kibrender::TextRenderer hinted(true);
  const Pixmap elsewhere = MenuPainter(rasterizer, hinted, {1.0, PanelTheme::Light}).paint(rows);
  EXPECT_NE(elsewhere.pngBytes(), picture.pngBytes());
  const auto tolerated = rendertest::compare(elsewhere, picture);
  EXPECT_TRUE(rendertest::looksAlike(tolerated))
      << tolerated.meanDifference << " " << tolerated.farOffFraction << " " << tolerated.worstTile;
}

}  // namespace
