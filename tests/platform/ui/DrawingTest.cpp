#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/ui/ButtonCell.h"
#include "platform/ui/RecordingCanvas.h"
#include "platform/ui/StatusBar.h"
#include "platform/ui/TextFieldCell.h"
#include "platform/ui/TextMeasurer.h"
#include "platform/ui/View.h"
#include "tests/platform/ui/UiTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

// Ten points per byte, height twice the font size: widths a test can predict.
class FixedMeasurer final : public TextMeasurer {
 public:
  Size sizeOfString(const std::string& text, double fontSize) const override {
    return {10.0 * static_cast<double>(text.size()), 2 * fontSize};
  }
};

// Draws like a banner: background, icon, clipped text twice, edge fade.
class SampleView final : public View {
 public:
  using View::View;
  void drawRect(Canvas& canvas, const Rect&) override {
    canvas.fillMenuBackground(bounds(), true);
    icon->drawWithFrameInView({2, 3.5, 20, 15}, this, canvas);
    canvas.saveGraphicsState();
    canvas.clipToRect({30, 0, 117, 20});
    canvas.clipToRect({0, 0, 100, 10});
    text->drawWithFrameInView({10, 0, 200, 20}, this, canvas);
    canvas.restoreGraphicsState();
    canvas.fillRectsWithColors({{30, 0, 1, 20}, {146, 0, 1, 20}}, {Color::black(2.0 / 3), Color::black(2.0 / 3)},
                               CompositingOperation::DestinationOut);
  }
  std::shared_ptr<ButtonCell> icon = std::make_shared<ButtonCell>();
  std::shared_ptr<TextFieldCell> text = TextFieldCell::initTextCell("Working");
};

class DrawingTest : public kibtest::PlatformTest {};

TEST_F(DrawingTest, TheRecordingCanvasKeepsOperationsInOrderWithTheClipInEffect) {
  SampleView view({0, 0, 150, 22});
  auto glyph = Image::initByReferencingFile((uitest::resourcesDir() / "MenuExtra.pdf").string());
  view.icon->setImage(glyph);
  view.icon->setEnabled(false);
  view.text->setBackgroundStyle(BackgroundStyle::Dark);
  RecordingCanvas canvas;
  view.display(canvas);

  EXPECT_EQ(canvas.descriptions(),
            (std::vector<std::string>{
                "menu-background highlighted {{0, 0}, {150, 22}}",
                "cell ButtonCell image MenuExtra.pdf disabled {{2, 3.5}, {20, 15}}",
                "save",
                "clip {{30, 0}, {117, 20}}",
                "clip {{0, 0}, {100, 10}}",
                "cell TextFieldCell \"Working\" {{10, 0}, {200, 20}}",
                "restore",
                "fill op 8 {{30, 0}, {1, 20}} rgba(0.0000, 0.0000, 0.0000, 0.6667) {{146, 0}, {1, 20}} "
                "rgba(0.0000, 0.0000, 0.0000, 0.6667)",
            }));
  const auto& ops = canvas.operations();
  EXPECT_EQ(ops[1].cell, view.icon.get());
  EXPECT_EQ(ops[1].image, glyph);
  EXPECT_FALSE(ops[1].clip) << "nothing clipped yet";
  EXPECT_EQ(ops[5].clip, (Rect{30, 0, 70, 10})) << "clips narrow each other";
  EXPECT_EQ(ops[5].backgroundStyle, BackgroundStyle::Dark);
  EXPECT_FALSE(ops[7].clip) << "restore brings the saved clip back";
  EXPECT_EQ(ops[7].operation, CompositingOperation::DestinationOut);
  EXPECT_EQ(static_cast<int>(ops[7].operation), 8);
  EXPECT_EQ(canvas.operationsOfKind(RecordingCanvas::Kind::DrawCell).size(), 2u);
  EXPECT_EQ(canvas.unbalancedRestores(), 0);

  canvas.clear();
  canvas.restoreGraphicsState();
  EXPECT_EQ(canvas.unbalancedRestores(), 1);
  EXPECT_EQ(canvas.descriptions(), (std::vector<std::string>{"restore"}));
}

TEST_F(DrawingTest, CellsMeasureTheirTextThroughTheReplaceableMeasurer) {
  TextFieldCell cell("Working");
  EXPECT_EQ(cell.fontSize(), 13.0) << "the regular control size's system font";
  const Rect unlimited{0, 0, kGreatestFiniteMagnitude, kGreatestFiniteMagnitude};
  // The default metric: 0.6 em per code point, line height 1.25 em rounded up.
  EXPECT_EQ(cell.cellSizeForBounds(unlimited), (Size{7 * 0.6 * 13, 17}));
  cell.setStringValue("Zoë…");
  EXPECT_EQ(cell.cellSizeForBounds(unlimited).width, 4 * 0.6 * 13) << "code points, not bytes";
  cell.setStringValue("");
  EXPECT_EQ(cell.cellSizeForBounds(unlimited), (Size{0, 17}));

  auto previous = TextMeasurer::setCurrent(std::make_shared<FixedMeasurer>());
  cell.setStringValue("Working");
  cell.setFontSize(11);
  EXPECT_EQ(cell.cellSizeForBounds(unlimited), (Size{70, 22}));
  EXPECT_EQ(cell.cellSizeForBounds({0, 0, 50, 100}), (Size{50, 22})) << "limited by the bounds";
  TextMeasurer::setCurrent(nullptr);
  EXPECT_EQ(cell.cellSizeForBounds(unlimited).width, 7 * 0.6 * 11) << "nil restores the default";
  EXPECT_NE(previous, nullptr);
}

TEST_F(DrawingTest, ButtonCellsSizeToTheirImage) {
  ButtonCell cell;
  cell.setImage(Image::initWithSize({20, 15}));
  cell.setImagePosition(CellImagePosition::ImageOnly);
  cell.setBordered(false);
  cell.setStringValue("ignored");
  EXPECT_EQ(cell.cellSizeForBounds({0, 0, 100, 100}), (Size{20, 15}));
  cell.setBordered(true);
  EXPECT_EQ(cell.cellSizeForBounds({0, 0, 100, 100}), (Size{26, 21}));

  cell.setHighlightsBy(kContentsCellMask | kChangeGrayCellMask);
  cell.setImageDimsWhenDisabled(true);
  EXPECT_EQ(cell.highlightsBy(), 5u);
  EXPECT_TRUE(cell.imageDimsWhenDisabled());
  EXPECT_EQ(static_cast<int>(CellImagePosition::ImageOnly), 1);
  EXPECT_EQ(static_cast<int>(LineBreakMode::ByTruncatingTail), 4);
  EXPECT_EQ(StatusBar::backgroundStyleForHighlight(true), BackgroundStyle::Dark);
  EXPECT_EQ(StatusBar::backgroundStyleForHighlight(false), BackgroundStyle::Raised);
}

TEST_F(DrawingTest, DisplayRequestsCoalesceUntilTheViewIsDrawn) {
  SampleView view({0, 0, 24, 22});
  int requests = 0;
  view.setNeedsDisplayHandler([&](View& asking) {
    EXPECT_EQ(&asking, &view);
    ++requests;
  });
  view.setNeedsDisplay(true);
  view.setNeedsDisplay(true);
  EXPECT_EQ(requests, 1);
  EXPECT_TRUE(view.needsDisplay());
  RecordingCanvas canvas;
  view.display(canvas);
  EXPECT_FALSE(view.needsDisplay());
  view.setNeedsDisplay(true);
  EXPECT_EQ(requests, 2);

  view.setFrameSize({95, 22});
  EXPECT_EQ(view.bounds(), (Rect{0, 0, 95, 22}));
  view.setAutoresizingMask(kViewWidthSizable);
  EXPECT_EQ(view.autoresizingMask(), 2u);
}

}  // namespace
