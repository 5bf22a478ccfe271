#include <cairo.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "host/render/CairoHandles.h"
#include "host/render/Pixmap.h"

namespace {

using kibrender::Pixmap;
using kibrender::Rgba8;

struct ReadState {
  const std::vector<std::uint8_t>* bytes;
  std::size_t offset;
};

cairo_status_t readBytes(void* closure, unsigned char* data, unsigned int length) {
  auto& state = *static_cast<ReadState*>(closure);
  if (state.offset + length > state.bytes->size()) return CAIRO_STATUS_READ_ERROR;
  std::copy_n(state.bytes->data() + state.offset, length, data);
  state.offset += length;
  return CAIRO_STATUS_SUCCESS;
}

TEST(PixmapTest, PixelsConvertToTheStatusNotifierWireFormatAndToPNG) {
  // Premultiplied ARGB pixels and the straight ARGB bytes each must give.
  struct Case {
    std::uint32_t premultiplied;
    Rgba8 straight;
  };
  const Case cases[] = {
      {0xff102030, {0x10, 0x20, 0x30, 0xff}},
      {0x80402010, {128, 64, 32, 0x80}},
      {0x00000000, {0, 0, 0, 0}},
      {0x01010101, {255, 255, 255, 1}},
  };
  Pixmap pixmap(2, 2);
  for (std::size_t i = 0; i < 4; ++i) pixmap.pixels()[i] = cases[i].premultiplied;
  const auto bytes = pixmap.statusNotifierBytes();
  ASSERT_EQ(bytes.size(), 16u);
  for (std::size_t i = 0; i < 4; ++i) {
    const auto& expected = cases[i].straight;
    EXPECT_EQ(pixmap.pixelAt(int(i % 2), int(i / 2)), expected) << i;
    // A, R, G, B: network byte order, row after row.
    EXPECT_EQ(bytes[i * 4 + 0], expected.alpha) << i;
    EXPECT_EQ(bytes[i * 4 + 1], expected.red) << i;
    EXPECT_EQ(bytes[i * 4 + 2], expected.green) << i;
    EXPECT_EQ(bytes[i * 4 + 3], expected.blue) << i;
  }
  EXPECT_EQ(pixmap.pixelAt(-1, 0), Rgba8{});
  EXPECT_EQ(pixmap.pixelAt(2, 0), Rgba8{});

  const auto png = pixmap.pngBytes();
  ASSERT_GT(png.size(), 8u);
  EXPECT_EQ(std::string(png.begin(), png.begin() + 8), std::string("\x89PNG\r\n\x1a\n", 8));
  ReadState state{&png, 0};
  kibrender::SurfaceHandle decoded(cairo_image_surface_create_from_png_stream(readBytes, &state));
  const Pixmap back = kibrender::pixmapFromSurface(decoded.get());
  ASSERT_EQ(back.width(), 2);
  EXPECT_EQ(back.pixelAt(0, 0), cases[0].straight);
  EXPECT_EQ(back.pixelAt(1, 0), cases[1].straight);
  // The same pixels encode to the same bytes.
  EXPECT_EQ(pixmap.pngBytes(), png);
}

TEST(PixmapTest, WritingAPictureReportsFailures) {
  Pixmap pixmap(3, 1);
  std::string error;
  EXPECT_FALSE(Pixmap().writePNG("/tmp/never.png", error));
  EXPECT_NE(error.find("empty picture"), std::string::npos);
  EXPECT_FALSE(pixmap.writePNG("/nonexistent-folder/picture.png", error));
  EXPECT_EQ(error, "/nonexistent-folder/picture.png: cannot write (No such file or directory)");
  const auto path = std::filesystem::temp_directory_path() / ("kibrender-" + std::to_string(::getpid()) + ".png");
  ASSERT_TRUE(pixmap.writePNG(path.string(), error)) << error;
  EXPECT_EQ(std::filesystem::file_size(path), pixmap.pngBytes().size());
  std::filesystem::remove(path);
  EXPECT_TRUE(Pixmap(0, 5).isEmpty());
  EXPECT_TRUE(Pixmap(-3, 5).pixels().empty());
}

}  // namespace
