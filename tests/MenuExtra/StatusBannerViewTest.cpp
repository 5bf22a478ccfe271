#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/StatusBannerView.h"
#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuExtraHost.h"
#include "platform/ui/RecordingCanvas.h"
#include "platform/ui/TextMeasurer.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

// Ten points per character, so widths are easy to choose; counts its work.
class TenPointMeasurer final : public TextMeasurer {
 public:
  Size sizeOfString(const std::string& utf8, double) const override {
    ++measurements;
    return {10.0 * static_cast<double>(utf8.size()), 17.0};
  }
  mutable int measurements = 0;
};

class RecordingHost final : public MenuExtraHost {
 public:
  void menuExtraLengthDidChange(MenuExtra& extra) override { lengths.push_back(extra.length()); }
  void menuExtraNeedsDisplay(MenuExtra&) override {}
  void menuExtraPopUpMenu(MenuExtra&, const MenuPtr& menu) override { poppedUp.push_back(menu); }
  bool menuExtraIsMenuDown(const MenuExtra&) const override { return menuDown; }

  std::vector<double> lengths;
  std::vector<MenuPtr> poppedUp;
  bool menuDown = false;
};

class StatusItem final : public MenuExtra {};

// Records the callbacks; optionally answers them as the menu extra does:
// scroll once revealed, collapse after the third cycle.
class RecordingDelegate final : public StatusBannerViewDelegate {
 public:
  void statusBannerViewFinishedRevealAnimation(StatusBannerView& view, bool revealed) override {
    events.push_back(revealed ? "revealed" : "collapsed");
    times.push_back(Clock::current().now());
    if (followsExtra && revealed) view.startBannerAnimation();
  }
  void statusBannerViewBannerFinishedScrollCycle(StatusBannerView& view, std::int32_t cycles) override {
    events.push_back("cycle " + std::to_string(cycles));
    times.push_back(Clock::current().now());
    if (!followsExtra || cycles < 3) return;
    view.stopBannerAnimation();
    if (!view.isCollapsed()) view.startCollapseAnimation();
  }

  std::vector<std::string> events;
  std::vector<double> times;
  bool followsExtra = false;
};

class StatusBannerViewTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    kibtest::PlatformTest::SetUp();
    previousMeasurer_ = TextMeasurer::setCurrent(measurer);
    item->setHost(&host);
    view = StatusBannerView::initWithFrameStatusItem({0, 0, StatusBannerView::minWidth(), 22}, item.get());
    item->setView(view);
    view->setAutoresizingMask(kViewWidthSizable);
    view->setDelegate(&delegate);
    item->setLength(StatusBannerView::minWidth());
    view->setMaxRevealWidth(150.0f);
    view->setRevealed(false);
    host.lengths.clear();
  }
  void TearDown() override {
    view->stopAllAnimation();
    TextMeasurer::setCurrent(previousMeasurer_);
    kibtest::PlatformTest::TearDown();
  }

  // Sets a text of the width and lets the whole reveal run.
  void revealText(std::size_t width) {
    view->setBannerString(makeString(std::string(width / 10, 'x')));
    advance(1.1);
  }
  std::vector<RecordingCanvas::Operation> draw() {
    RecordingCanvas canvas;
    view->display(canvas);
    return canvas.operations();
  }

  std::shared_ptr<TenPointMeasurer> measurer = std::make_shared<TenPointMeasurer>();
  RecordingHost host;
  std::shared_ptr<StatusItem> item = std::make_shared<StatusItem>();
  RecordingDelegate delegate;
  StatusBannerViewPtr view;

 private:
  std::shared_ptr<TextMeasurer> previousMeasurer_;
};

TEST_F(StatusBannerViewTest, RevealWidensToTheTextOrTheLimit) {
  view->setBannerString(makeString("abcdef"));  // 60 wide
  ASSERT_EQ(host.lengths.size(), 1u) << "the first frame runs at once";
  EXPECT_EQ(host.lengths[0], 24.0);
  EXPECT_TRUE(view->revealed());
  EXPECT_FALSE(view->isCollapsed());

  advance(0.5 + 1e-3);
  EXPECT_NEAR(host.lengths.back(), 24 + (95 - 24) * 0.5, 1e-3) << "eased half way at half time";
  advance(0.6);
  EXPECT_GE(host.lengths.size(), 60u);
  EXPECT_LE(host.lengths.size(), 62u);
  for (std::size_t i = 1; i < host.lengths.size(); ++i) EXPECT_GE(host.lengths[i], host.lengths[i - 1]);
  EXPECT_NEAR(host.lengths.back(), 95.0, 0.05) << "the slot keeps the last frame's width";
  EXPECT_LE(host.lengths.back(), 95.0);
  EXPECT_EQ(delegate.events, (std::vector<std::string>{"revealed"}));
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 0u) << "the chain has ended";
  view->sizeToFit();
  EXPECT_EQ(item->length(), 95.0);

  // A long text is capped by the maximum reveal width and clipped at 147.
  view->setBannerString(makeString(std::string(20, 'w')));  // 200 wide
  advance(1.1);
  EXPECT_NEAR(host.lengths.back(), 150.0, 0.05);
  view->sizeToFit();
  EXPECT_EQ(view->frame().width, 150.0);
  view->startBannerAnimation();
  advance(1.0 / 30.0);
  const auto ops = draw();
  const auto clip = std::find_if(ops.begin(), ops.end(), [](auto& op) { return op.kind == RecordingCanvas::Kind::Clip; });
  ASSERT_NE(clip, ops.end());
  EXPECT_EQ(clip->rect, (Rect{30, 0, 117, 20}));
  EXPECT_EQ(clip->rect.maxX(), 147.0);
}

TEST_F(StatusBannerViewTest, ScrollWrapsEveryTextWidthPlusGapAndTheExtraCollapsesOnTheThird) {
  delegate.followsExtra = true;
  view->setBannerString(makeString("abcdefgh"));  // 80 wide
  advance(1.05);
  ASSERT_EQ(delegate.events, (std::vector<std::string>{"revealed"}));
  const double scrollStart = delegate.times[0];

  advance(49.5 / 30.0 - (now() - scrollStart));
  EXPECT_EQ(delegate.events.size(), 1u) << "49 ticks reach only 98 points";
  advance(1.0 / 30.0);
  ASSERT_EQ(delegate.events.size(), 2u);
  EXPECT_EQ(delegate.events[1], "cycle 1");
  EXPECT_NEAR(delegate.times[1] - scrollStart, 50.0 / 30.0, 1e-4);

  advance(2 * 50.0 / 30.0 + 1.2);
  EXPECT_EQ(delegate.events,
            (std::vector<std::string>{"revealed", "cycle 1", "cycle 2", "cycle 3", "collapsed"}));
  EXPECT_NEAR(delegate.times[3] - delegate.times[2], 50.0 / 30.0, 1e-4);
  EXPECT_TRUE(view->isCollapsed());
  EXPECT_FALSE(view->revealed());
  EXPECT_NEAR(host.lengths.back(), 24.0, 0.05);
  const auto ops = draw();
  EXPECT_EQ(std::count_if(ops.begin(), ops.end(), [](auto& op) { return op.cellClass == "TextFieldCell"; }), 0)
      << "no text once collapsed";
  advance(5.0);
  EXPECT_EQ(delegate.events.size(), 5u) << "scrolling stopped";
}

TEST_F(StatusBannerViewTest, CollapseRequestedMidRevealKeepsTheRevealsClock) {
  view->setBannerString(makeString("abcdef"));  // cap 95
  advance(0.25 + 1e-3);
  EXPECT_NEAR(host.lengths.back(), 24 + 71 * 0.125, 1e-3);
  view->startCollapseAnimation();
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 1u) << "the running chain goes on";
  advance(1.0 / 60.0);
  const double t = 16.0 / 60.0;
  EXPECT_NEAR(host.lengths.back(), 95 - 71 * (2 * t * t), 1e-2) << "a jump to the mirrored width";
  advance(1.0);
  EXPECT_EQ(delegate.events, (std::vector<std::string>{"collapsed"}));
  EXPECT_TRUE(view->isCollapsed());
  EXPECT_NEAR(host.lengths.back(), 24.0, 0.05);
}

TEST_F(StatusBannerViewTest, NewTextsRevealCollapseOrOnlyRedraw) {
  revealText(60);
  const auto first = view->bannerString();
  const auto lengths = host.lengths.size();
  view->setBannerString(first);
  view->setBannerString(makeString("yyyyyy"));  // equal width, another object
  EXPECT_EQ(host.lengths.size(), lengths) << "revealed and as wide: nothing moves";
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 0u);
  EXPECT_EQ(view->bannerString()->value(), "yyyyyy");

  // Wider: the reveal restarts from the collapsed width.
  view->setBannerString(makeString("abcdefghij"));  // 100 wide
  EXPECT_EQ(host.lengths.back(), 24.0);
  advance(1.1);
  EXPECT_NEAR(host.lengths.back(), 135.0, 0.05);
  EXPECT_EQ(delegate.events, (std::vector<std::string>{"revealed", "revealed"}));

  // Narrower while revealed collapses; nil measures as "" and collapses too.
  view->setBannerString(makeString("ab"));
  EXPECT_FALSE(view->isCollapsed());
  advance(1.1);
  EXPECT_EQ(delegate.events.back(), "collapsed");
  EXPECT_TRUE(view->isCollapsed());
  view->setBannerString(makeString("abcdef"));
  advance(1.1);
  view->setBannerString(nullptr);
  advance(1.1);
  EXPECT_EQ(delegate.events, (std::vector<std::string>{"revealed", "revealed", "collapsed", "revealed", "collapsed"}));
}

TEST_F(StatusBannerViewTest, StopOperationsAndPausedFrames) {
  view->setBannerString(makeString("abcdef"));
  advance(0.5);
  const double widthBefore = host.lengths.back();
  advance(2.0, kEventTrackingRunLoopMode);
  EXPECT_EQ(host.lengths.back(), widthBefore) << "reveal frames pause while the menu is tracked";
  drain();
  EXPECT_EQ(host.lengths.back(), widthBefore) << "a reveal paused past its second ends at its next frame";
  EXPECT_EQ(delegate.events, (std::vector<std::string>{"revealed"}));

  view->startBannerAnimation();
  view->startRevealAnimation();
  view->stopAllAnimation();
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 0u);
  EXPECT_TRUE(view->revealed()) << "stopAllAnimation leaves the chain flag as it is";
  const auto lengths = host.lengths.size();
  advance(2.0);
  EXPECT_EQ(host.lengths.size(), lengths);
  EXPECT_EQ(delegate.events.size(), 1u) << "neither frames nor scroll cycles";

  // Stopping "a collapse" after a reveal: the slot is narrow, yet the view is not collapsed.
  view->stopCollapseAnimation();
  EXPECT_EQ(item->length(), 24.0);
  EXPECT_FALSE(view->revealed());
  EXPECT_FALSE(view->isCollapsed());
  view->stopRevealAnimation();
  EXPECT_EQ(item->length(), 95.0);
  EXPECT_TRUE(view->revealed());
}

TEST_F(StatusBannerViewTest, DrawsInItsFixedOrderWithTheEdgeFade) {
  auto image = Image::initWithSize({16, 16});
  view->setImage(image);
  view->setDimmed(true);
  revealText(80);
  view->sizeToFit();  // exactly 115 wide: clip 30…112
  const int measurements = measurer->measurements;
  EXPECT_EQ(measurements, 1) << "measured once when the text was set";
  view->startBannerAnimation();
  advance(5.0 / 30.0 + 1e-3);  // offset 10

  const auto ops = draw();
  EXPECT_EQ(measurer->measurements, measurements) << "neither scrolling nor drawing measures";
  std::vector<std::string> lines;
  for (const auto& op : ops) lines.push_back(op.description());
  ASSERT_EQ(ops.size(), 10u) << ::testing::PrintToString(lines);
  using Kind = RecordingCanvas::Kind;
  EXPECT_EQ(ops[0].kind, Kind::MenuBackground);
  EXPECT_FALSE(ops[0].highlighted);
  EXPECT_EQ(ops[0].rect, (Rect{0, 0, 115, 22}));
  EXPECT_EQ(ops[1].cellClass, "ButtonCell");
  EXPECT_EQ(ops[1].rect, (Rect{2, 3.5, 20, 15}));
  EXPECT_EQ(ops[1].image, image);
  EXPECT_FALSE(ops[1].enabled) << "dimmed";
  EXPECT_EQ(ops[1].backgroundStyle, BackgroundStyle::Raised);
  EXPECT_EQ(ops[2].kind, Kind::SaveState);
  EXPECT_EQ(ops[3].kind, Kind::Clip);
  EXPECT_EQ(ops[3].rect, (Rect{30, 0, 82, 20}));
  EXPECT_EQ(ops[4].cellClass, "TextFieldCell");
  EXPECT_EQ(ops[4].string, "xxxxxxxx");
  EXPECT_EQ(ops[4].rect, (Rect{20, 0, 80, 20}));
  EXPECT_EQ(ops[5].rect, (Rect{120, 0, 80, 20})) << "the copy follows 20 points behind";
  EXPECT_EQ(ops[6].kind, Kind::RestoreState);
  for (int i = 0; i < 3; ++i) {
    const auto& fill = ops[7 + i];
    EXPECT_EQ(fill.kind, Kind::FillRects);
    EXPECT_EQ(fill.operation, CompositingOperation::DestinationOut);
    EXPECT_EQ(fill.rects, (std::vector<Rect>{{30.0 + i, 0, 1, 20}, {111.0 - i, 0, 1, 20}}));
    ASSERT_EQ(fill.colors.size(), 2u);
    EXPECT_NEAR(fill.colors[0].alpha, 1.0 - (i + 1) / 3.0, 1e-12);
    EXPECT_EQ(fill.colors[0], fill.colors[1]);
    EXPECT_EQ(fill.colors[0].red + fill.colors[0].green + fill.colors[0].blue, 0.0);
  }
  EXPECT_EQ(ops[9].colors[0].alpha, 0.0) << "the third pass erases nothing";

  // With the menu down: highlighted background, dark cells, no fade.
  host.menuDown = true;
  const auto down = draw();
  ASSERT_EQ(down.size(), 7u);
  EXPECT_TRUE(down[0].highlighted);
  EXPECT_EQ(down[1].backgroundStyle, BackgroundStyle::Dark);
  EXPECT_EQ(down[4].backgroundStyle, BackgroundStyle::Dark);
  EXPECT_EQ(down.back().kind, Kind::RestoreState);

  // Not scrolling: one text, no fade.
  host.menuDown = false;
  view->stopBannerAnimation();
  EXPECT_EQ(draw().size(), 6u);
}

TEST_F(StatusBannerViewTest, SetUpAndClicks) {
  EXPECT_EQ(StatusBannerView::minWidth(), 24.0f);
  EXPECT_FALSE(view->dimmed());
  EXPECT_TRUE(view->isCollapsed());
  EXPECT_FALSE(view->revealed());
  auto ops = draw();
  ASSERT_EQ(ops.size(), 2u) << "icon only without text";
  EXPECT_EQ(ops[1].rect, (Rect{2, 3.5, 20, 15}));

  auto menu = Menu::initWithTitle("");
  item->setMenu(menu);
  view->mouseDown({});
  view->setBannerString(makeString("abc"));
  view->mouseDown({});
  ASSERT_EQ(host.poppedUp.size(), 2u);
  EXPECT_EQ(host.poppedUp[0], menu);
  EXPECT_EQ(host.poppedUp[1], menu);
}

}  // namespace
