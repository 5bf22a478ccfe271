#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/ui/Image.h"
#include "platform/ui/ImageHeaderReader.h"
#include "tests/platform/ui/UiTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

class ImageTest : public kibtest::PlatformTest {
 protected:
  std::string resource(const std::string& name) { return (uitest::resourcesDir() / name).string(); }
  std::string write(const std::string& name, const std::string& bytes) {
    auto path = tempDir / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
  }
  static Size sizeOf(const std::string& bytes) {
    auto result = ImageHeaderReader::readSizeFromData(bytes, "test");
    EXPECT_TRUE(result.size) << result.error;
    return result.size.value_or(Size{});
  }
  static std::string errorOf(const std::string& bytes) {
    auto result = ImageHeaderReader::readSizeFromData(bytes, "test");
    EXPECT_FALSE(result.size);
    return result.error;
  }
};

TEST_F(ImageTest, SizesAreReadFromTheHeadersOfTheBundleResources) {
  struct Expected {
    const char* file;
    Size size;
  };
  const Expected expected[] = {
      {"MenuExtra.pdf", {18, 16}},          {"MenuExtra-.pdf", {18, 16}},      {"MenuExtra!.pdf", {18, 16}},
      {"SharingActive.png", {18, 16}},      {"status-invisible-flat.tif", {12, 12}},
      {"menu-video.png", {16, 16}},         {"menu-video_busy.png", {16, 16}}, {"menu-audio.png", {16, 16}},
      {"menu-audio_busy.png", {16, 16}},    {"status-available.png", {12, 12}}, {"status-away.png", {12, 12}},
      {"status-idle.png", {12, 12}},        {"status-offline.png", {12, 12}},
  };
  for (const auto& e : expected) {
    auto image = Image::initByReferencingFile(resource(e.file));
    EXPECT_EQ(image->size(), e.size) << e.file << ": " << image->loadError();
    EXPECT_TRUE(image->isValid()) << e.file;
    EXPECT_EQ(image->displayName(), e.file);
  }
}

TEST_F(ImageTest, AnImageReadsItsFileOnlyWhenItsSizeIsNeeded) {
  auto missing = Image::initByReferencingFile((tempDir / "nothing.png").string());
  EXPECT_FALSE(missing->isLoaded());
  EXPECT_EQ(missing->loadError(), "") << "nothing is noticed before the file is needed";
  EXPECT_EQ(missing->size(), (Size{0, 0}));
  EXPECT_FALSE(missing->isValid());
  EXPECT_NE(missing->loadError().find("nothing.png: cannot open"), std::string::npos) << missing->loadError();

  // The file is read when the size is asked for, not when the image is made.
  auto later = Image::initByReferencingFile((tempDir / "later.png").string());
  std::filesystem::copy_file(resource("menu-video.png"), tempDir / "later.png");
  EXPECT_EQ(later->size(), (Size{16, 16}));
  EXPECT_TRUE(later->isLoaded());
  std::filesystem::remove(tempDir / "later.png");
  EXPECT_EQ(later->size(), (Size{16, 16})) << "read once, then kept";
}

TEST_F(ImageTest, MalformedFilesGiveAnEmptyImageAndSayWhy) {
  auto text = Image::initByReferencingFile(write("notes.png", "just some text"));
  EXPECT_FALSE(text->isValid());
  EXPECT_EQ(text->size(), (Size{0, 0}));
  EXPECT_EQ(text->loadError(), (tempDir / "notes.png").string() + ": not a PNG, TIFF, PDF, GIF or JPEG image");

  EXPECT_EQ(errorOf(""), "test: empty file");
  EXPECT_EQ(errorOf(std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16)), "test: truncated PNG header");
  EXPECT_EQ(errorOf("%PDF-1.4\n1 0 obj << /MediaBox 5 0 R >> endobj"), "test: PDF without a readable MediaBox");
  EXPECT_EQ(errorOf(std::string("II*\0\xff\0\0\0", 8)), "test: TIFF directory offset beyond the end of the file");
  EXPECT_EQ(errorOf(std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\0\0\0\0\x10", 24)),
            "test: PNG image with an empty size");
}

TEST_F(ImageTest, HeaderVariantsOfEachFormat) {
  // Big-endian TIFF with LONG dimensions, after an unrelated tag.
  std::string tiff("MM\0*\0\0\0\x08\0\x03", 10);
  tiff += std::string("\x01\x03\0\x03\0\0\0\x01\0\x01\0\0", 12);      // Compression SHORT 1
  tiff += std::string("\x01\0\0\x04\0\0\0\x01\0\0\x01\x2c", 12);      // ImageWidth LONG 300
  tiff += std::string("\x01\x01\0\x03\0\0\0\x01\0\xc8\0\0", 12);      // ImageLength SHORT 200
  tiff += std::string("\0\0\0\0", 4);
  EXPECT_EQ(sizeOf(tiff), (Size{300, 200}));

  EXPECT_EQ(sizeOf("%PDF-1.3\n3 0 obj << /Type /Page /MediaBox [ 10 20.5 110 70.5 ] >>"), (Size{100, 50}));
  EXPECT_EQ(sizeOf("%PDF-1.3\n<< /MediaBox 4 0 R >> << /MediaBox[0 0 612 792] >>"), (Size{612, 792}))
      << "an indirect box is skipped for the next literal one";
  EXPECT_EQ(sizeOf(std::string("GIF89a\x20\0\x10\0", 10)), (Size{32, 16}));
  std::string jpeg("\xFF\xD8\xFF\xE0\0\x04\0\0\xFF\xC0\0\x0b\x08\0\x30\0\x40\x03", 18);
  EXPECT_EQ(sizeOf(jpeg), (Size{64, 48}));
}

TEST_F(ImageTest, TheRegistryAnswersImagesByName) {
  EXPECT_EQ(Image::imageNamed("menu-video"), nullptr);
  auto video = Image::initByReferencingFile(resource("menu-video.png"));
  EXPECT_EQ(video->name(), "");
  EXPECT_TRUE(video->setName("menu-video"));
  EXPECT_EQ(Image::imageNamed("menu-video"), video) << "the same object";
  EXPECT_EQ(video->displayName(), "menu-video");
  EXPECT_EQ(video->description(), "menu-video");
  EXPECT_EQ(video->filePath(), resource("menu-video.png"));

  auto other = Image::initByReferencingFile(resource("menu-audio.png"));
  EXPECT_FALSE(other->setName("menu-video")) << "a name in use stays with its image";
  EXPECT_EQ(Image::imageNamed("menu-video"), video);

  EXPECT_TRUE(video->setName("renamed"));
  EXPECT_EQ(Image::imageNamed("menu-video"), nullptr);
  EXPECT_EQ(Image::imageNamed("renamed"), video);
  EXPECT_TRUE(other->setName("menu-video"));

  Image unshared("", Size{1, 1});
  EXPECT_FALSE(unshared.setName("stack")) << "only shared images can be registered";

  Image::resetNamedImages();
  EXPECT_EQ(Image::imageNamed("renamed"), nullptr);
  EXPECT_EQ(video->name(), "");
}

TEST_F(ImageTest, UnregisteredNamesAreLookedUpInTheSystemImageDirectories) {
  Image::setSystemImageDirectories({tempDir.string(), uitest::resourcesDir().string()});
  auto available = Image::imageNamed("status-available");
  ASSERT_NE(available, nullptr);
  EXPECT_EQ(available->filePath(), resource("status-available.png"));
  EXPECT_EQ(available->name(), "status-available");
  EXPECT_EQ(Image::imageNamed("status-available"), available) << "registered on first use";
  EXPECT_EQ(Image::imageNamed("status-invisible-flat.tif")->size(), (Size{12, 12})) << "a name with its extension";
  EXPECT_EQ(Image::imageNamed("status-unheard-of"), nullptr);
  EXPECT_EQ(Image::imageNamed("../Resources/status-away"), nullptr) << "names are not paths";

  std::filesystem::copy_file(resource("menu-audio.png"), tempDir / "status-away.png");
  EXPECT_EQ(Image::imageNamed("status-away")->filePath(), (tempDir / "status-away.png").string())
      << "directories are searched in order";
}

TEST_F(ImageTest, BlankImagesAndTemplates) {
  auto blank = Image::initWithSize({16, 16});
  EXPECT_TRUE(blank->isLoaded());
  EXPECT_TRUE(blank->isValid());
  EXPECT_EQ(blank->size(), (Size{16, 16}));
  EXPECT_EQ(blank->filePath(), "");
  EXPECT_EQ(blank->description(), "blank {16, 16}");
  EXPECT_TRUE(blank->setName("Empty Image"));
  EXPECT_EQ(blank->description(), "Empty Image");

  auto glyph = Image::initByReferencingFile(resource("MenuExtra.pdf"));
  EXPECT_FALSE(glyph->isTemplate());
  glyph->setTemplate(true);
  EXPECT_TRUE(glyph->isTemplate());
  EXPECT_FALSE(glyph->isLoaded()) << "marking a template does not read the file";
}

}  // namespace
