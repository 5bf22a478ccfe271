#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "host/render/ImageRasterizer.h"
#include "host/render/PanelTheme.h"
#include "platform/ui/ButtonCell.h"
#include "tests/host/render/RenderTestSupport.h"

namespace {

using kibrender::ImageRasterizer;
using kibrender::Pixmap;
using kibrender::RasterOptions;
using rendertest::maximumAlpha;
using rendertest::resourcesDir;

struct ResourceCase {
  const char* file;
  bool isTemplate;
};

const ResourceCase kResources[] = {
    {"MenuExtra.pdf", true},
    {"MenuExtra-.pdf", true},
    {"MenuExtra!.pdf", true},
    {"SharingActive.png", false},
    {"menu-audio.png", false},
    {"menu-audio_busy.png", false},
    {"menu-video.png", false},
    {"menu-video_busy.png", false},
    {"status-available.png", false},
    {"status-away.png", false},
    {"status-idle.png", false},
    {"status-offline.png", false},
    {"status-invisible-flat.tif", false},
};

const int kSizes[] = {16, 22, 24, 32, 48, 13};

platform::ImagePtr resourceImage(const ResourceCase& resource) {
  auto image = platform::Image::initByReferencingFile((resourcesDir() / resource.file).string());
  image->setTemplate(resource.isTemplate);
  return image;
}

// Where the image lands in a size × size box: its fitted width and height, centred.
struct Fitted {
  double left, top, right, bottom;
};
Fitted fittedBox(const platform::Image& image, int size) {
  const auto natural = image.size();
  const double scale = std::min(size / natural.width, size / natural.height);
  const double width = natural.width * scale, height = natural.height * scale;
  return {(size - width) / 2, (size - height) / 2, (size + width) / 2, (size + height) / 2};
}

TEST(ImageRasterizerTest, RendersEveryResourceImageAtEverySizeTintedAndDimmed) {
  ImageRasterizer rasterizer;
  const RasterOptions tinted{platform::Color{0.8, 0.2, 0.4, 1.0}, false};
  const RasterOptions dimmed{tinted.tint, true};
  for (const auto& resource : kResources) {
    auto image = resourceImage(resource);
    ASSERT_TRUE(image->isValid()) << resource.file;
    for (int size : kSizes) {
      SCOPED_TRACE(std::string(resource.file) + " at " + std::to_string(size));
      std::string error;
      const Pixmap plain = rasterizer.renderSquare(*image, size, tinted, &error);
      ASSERT_EQ(plain.width(), size);
      ASSERT_EQ(plain.height(), size);
      EXPECT_EQ(error, "");
      // The image is drawn, nearly opaque somewhere (thin rings lose a little when resampled)…
      EXPECT_GE(maximumAlpha(plain), 200);
      const Fitted box = fittedBox(*image, size);
      const Pixmap faded = rasterizer.renderSquare(*image, size, dimmed, &error);
      for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
          const auto pixel = plain.pixelAt(x, y);
          // …and nothing outside the place it was fitted into.
          if (x + 1 <= box.left - 0.01 || x >= box.right + 0.01 || y + 1 <= box.top - 0.01 || y >= box.bottom + 0.01) {
            ASSERT_EQ(pixel.alpha, 0) << x << "," << y;
          }
          // Template glyphs take the tint wherever they cover.
          if (resource.isTemplate && pixel.alpha >= 64) {
            ASSERT_NEAR(pixel.red, 204, 2) << x << "," << y;
            ASSERT_NEAR(pixel.green, 51, 2) << x << "," << y;
            ASSERT_NEAR(pixel.blue, 102, 2) << x << "," << y;
          }
          // Dimming halves the opacity and keeps the colour.
          const auto dim = faded.pixelAt(x, y);
          ASSERT_NEAR(dim.alpha, pixel.alpha * platform::kDimmedImageFraction, 1.0) << x << "," << y;
          if (pixel.alpha >= 128) {
            ASSERT_NEAR(dim.red, pixel.red, 3) << x << "," << y;
          }
        }
      }
    }
  }
}

TEST(ImageRasterizerTest, TemplateGlyphsFollowThePanelThemeAndColourImagesKeepTheirColours) {
  ImageRasterizer rasterizer;
  auto glyph = resourceImage({"MenuExtra.pdf", true});
  auto away = resourceImage({"status-away.png", false});
  for (auto theme : {kibrender::PanelTheme::Light, kibrender::PanelTheme::Dark}) {
    const RasterOptions options{kibrender::templateTint(theme), false};
    const Pixmap icon = rasterizer.renderSquare(*glyph, 22, options);
    const Pixmap dot = rasterizer.renderSquare(*away, 22, options);
    const int expected = static_cast<int>(std::lround(options.tint.red * 255));
    bool sawGlyph = false;
    for (int y = 0; y < 22; ++y)
      for (int x = 0; x < 22; ++x)
        if (icon.pixelAt(x, y).alpha == 255) {
          sawGlyph = true;
          EXPECT_NEAR(icon.pixelAt(x, y).red, expected, 1);
        }
    EXPECT_TRUE(sawGlyph);
    // The away dot is a red disc whatever the theme.
    const auto centre = dot.pixelAt(11, 11);
    EXPECT_EQ(centre.alpha, 255);
    EXPECT_GT(centre.red, 150);
    EXPECT_LT(centre.green, 120);
  }
  EXPECT_GT(kibrender::templateTint(kibrender::PanelTheme::Dark).red, 0.8);
  EXPECT_LT(kibrender::templateTint(kibrender::PanelTheme::Light).red, 0.2);
}

TEST(ImageRasterizerTest, WideImagesAreCentredInTheSquare) {
  ImageRasterizer rasterizer;
  auto sharing = resourceImage({"SharingActive.png", false});  // 18 × 16
  const Pixmap pixmap = rasterizer.render(*sharing, 36, 16, {});
  ASSERT_EQ(pixmap.width(), 36);
  // 18 px of image in the middle of 36: columns 0…8 and 27…35 stay empty.
  for (int y = 0; y < 16; ++y) {
    EXPECT_EQ(pixmap.pixelAt(8, y).alpha, 0);
    EXPECT_EQ(pixmap.pixelAt(27, y).alpha, 0);
  }
  EXPECT_GT(maximumAlpha(pixmap), 250);
}

TEST(ImageRasterizerTest, BadFilesAndSizesGiveAnEmptyPixmapAndTheReason) {
  const auto dir = std::filesystem::temp_directory_path() / ("kibrender-bad-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  auto write = [&](const std::string& name, const std::string& bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
    return (dir / name).string();
  };
  struct Case {
    std::string path;
    int size;
    std::string reason;
  };
  const Case cases[] = {
      {(dir / "missing.png").string(), 16, "no such file"},
      {write("empty.png", ""), 16, "not a readable image"},
      {write("garbage.pdf", "%PDF-1.4\nnothing useful here\n"), 16, "not a readable PDF"},
      {write("truncated.png", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)), 16, "not a readable image"},
      {write("text.tif", "II*\0 not really a tiff"), 16, "not a readable image"},
      {dir.string(), 16, "not a file"},
      {(resourcesDir() / "MenuExtra.pdf").string(), 0, "cannot draw at 0 × 0 pixels"},
      {(resourcesDir() / "MenuExtra.pdf").string(), 5000, "cannot draw at 5000 × 5000 pixels"},
  };
  ImageRasterizer rasterizer;
  for (const auto& test : cases) {
    SCOPED_TRACE(test.path);
    auto image = platform::Image::initByReferencingFile(test.path);
    image->setTemplate(true);
    std::string error;
    const Pixmap pixmap = rasterizer.renderSquare(*image, test.size, {}, &error);
    EXPECT_TRUE(pixmap.isEmpty());
    EXPECT_EQ(error.rfind(test.path + ": " + test.reason, 0), 0u) << error;
    EXPECT_TRUE(pixmap.statusNotifierBytes().empty());
    EXPECT_TRUE(pixmap.pngBytes().empty());
  }
  std::filesystem::remove_all(dir);
}

TEST(ImageRasterizerTest, BlankImagesAreTransparentAndFilesAreReadOnce) {
  ImageRasterizer rasterizer;
  auto blank = platform::Image::initWithSize({12, 12});
  std::string error;
  const Pixmap empty = rasterizer.renderSquare(*blank, 16, {}, &error);
  EXPECT_EQ(error, "");
  ASSERT_EQ(empty.width(), 16);
  EXPECT_EQ(maximumAlpha(empty), 0);

  // A decoded file is kept: drawing it again after the file is gone still works, until forgotten.
  const auto copy = std::filesystem::temp_directory_path() / ("kibrender-copy-" + std::to_string(::getpid()) + ".pdf");
  std::filesystem::copy_file(resourcesDir() / "MenuExtra.pdf", copy, std::filesystem::copy_options::overwrite_existing);
  auto image = platform::Image::initByReferencingFile(copy.string());
  const Pixmap first = rasterizer.renderSquare(*image, 24, {});
  std::filesystem::remove(copy);
  EXPECT_EQ(rasterizer.renderSquare(*image, 24, {}), first);
  rasterizer.forgetDecodedFiles();
  EXPECT_TRUE(rasterizer.renderSquare(*image, 24, {}).isEmpty());
}

}  // namespace
