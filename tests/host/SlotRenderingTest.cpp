#include <gtest/gtest.h>

#include "host/SlotPicture.h"
#include "host/SlotRenderer.h"
#include "platform/ui/ButtonCell.h"
#include "platform/ui/Image.h"
#include "platform/ui/TextFieldCell.h"

namespace {

using kibhost::SlotPicture;
using kibhost::SlotRenderer;
using kibhost::TerminalScreen;

std::string text(const std::vector<TerminalScreen::Cell>& cells) {
  std::string result;
  for (const auto& cell : cells) result += cell.glyph;
  return result;
}

// Draws what a banner view draws: background, icon, and the text (twice while it scrolls).
void drawSlot(platform::RecordingCanvas& canvas, double width, const std::string& image, bool dimmed,
              const std::string& banner, double offset, bool highlighted) {
  canvas.fillMenuBackground({0, 0, width, 22}, highlighted);
  platform::ButtonCell icon;
  icon.setImage(platform::Image::initByReferencingFile("/nowhere/" + image));
  icon.setEnabled(!dimmed);
  canvas.drawCell(icon, {2, 3.5, 20, 15});
  if (banner.empty()) return;
  platform::TextFieldCell cell(banner);
  const double textWidth = cell.cellSizeForBounds({0, 0, 1e9, 1e9}).width;
  canvas.saveGraphicsState();
  canvas.clipToRect({30, 0, width - 33, 20});
  canvas.drawCell(cell, {30 - offset, 0, textWidth, 20});
  if (offset > 0) canvas.drawCell(cell, {30 - offset + textWidth + 20, 0, textWidth, 20});
  canvas.restoreGraphicsState();
  if (offset > 0)
    canvas.fillRectsWithColors({{30, 0, 1, 20}, {30 + width - 34, 0, 1, 20}},
                               {platform::Color::black(0.67), platform::Color::black(0.67)},
                               platform::CompositingOperation::DestinationOut);
}

TEST(SlotRenderingTest, ThePictureIsReadBackFromTheDrawing) {
  platform::RecordingCanvas canvas;
  drawSlot(canvas, 24, "MenuExtra-.pdf", true, "", 0, false);
  auto picture = SlotPicture::fromCanvas(canvas);
  EXPECT_EQ(picture.image, "MenuExtra-.pdf");
  EXPECT_TRUE(picture.dimmed);
  EXPECT_FALSE(picture.highlighted);
  EXPECT_FALSE(picture.text);

  canvas.clear();
  drawSlot(canvas, 150, "MenuExtra.pdf", false, "Working late", 12, true);
  picture = SlotPicture::fromCanvas(canvas);
  EXPECT_EQ(picture.image, "MenuExtra.pdf");
  EXPECT_FALSE(picture.dimmed);
  EXPECT_TRUE(picture.highlighted);
  EXPECT_EQ(picture.text, "Working late");
  EXPECT_EQ(picture.textX, 18) << "the first copy of the text, not the one following it";

  // A slot too narrow for any text (the end of a collapse) shows none.
  canvas.clear();
  drawSlot(canvas, 30, "MenuExtra.pdf", false, "Working late", 0, false);
  EXPECT_FALSE(SlotPicture::fromCanvas(canvas).text);
}

TEST(SlotRenderingTest, TheSlotBecomesColumnsOfTheBarsTextWidth) {
  EXPECT_EQ(SlotRenderer::columnsForLength(24), 3);
  EXPECT_EQ(SlotRenderer::columnsForLength(150), 19);
  EXPECT_EQ(SlotRenderer::columnsForLength(0), 1);

  TerminalScreen::Style bar;
  bar.background = TerminalScreen::Color::White;
  platform::RecordingCanvas canvas;
  drawSlot(canvas, 24, "MenuExtra.pdf", true, "", 0, false);
  auto cells = SlotRenderer::render(canvas, 24, bar);
  EXPECT_EQ(text(cells), "(•)");
  EXPECT_TRUE(cells[1].style.dim) << "a dimmed icon";
  EXPECT_EQ(cells[1].style.background, TerminalScreen::Color::White);

  // Revealed: the text starts after the icon and is clipped at the slot's right margin.
  canvas.clear();
  drawSlot(canvas, 95, "MenuExtra.pdf", false, "Reading the paper", 0, false);
  cells = SlotRenderer::render(canvas, 95, bar);
  EXPECT_EQ(text(cells), "(•) Reading ");
  EXPECT_FALSE(cells[1].style.dim);

  // Scrolled by three characters, with the copy following after the gap; the edges fade.
  canvas.clear();
  drawSlot(canvas, 150, "MenuExtra.pdf", false, "Hi there", 3 * 7.8, false);
  cells = SlotRenderer::render(canvas, 150, bar);
  EXPECT_EQ(text(cells), "(•) there  Hi there");
  EXPECT_TRUE(cells[18].style.dim);
  EXPECT_TRUE(cells[3].style.dim);

  // The open menu's title: the whole slot in the selection colour.
  canvas.clear();
  drawSlot(canvas, 24, "SharingActive.png", false, "", 0, true);
  cells = SlotRenderer::render(canvas, 24, bar);
  EXPECT_EQ(text(cells), "[▶]");
  EXPECT_EQ(cells[0].style.background, TerminalScreen::Color::Blue);
}

}  // namespace
