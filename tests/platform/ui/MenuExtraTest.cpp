#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/core/RunLoop.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuExtra.h"
#include "platform/ui/RecordingCanvas.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

// A status bar that records what its extra asks of it. While a menu is open it
// runs the main loop in event-tracking mode, as a real host does.
class FakeHost final : public MenuExtraHost {
 public:
  void menuExtraLengthDidChange(MenuExtra& extra) override { calls.push_back("length " + std::to_string(int(extra.length()))); }
  void menuExtraNeedsDisplay(MenuExtra&) override { calls.push_back("display"); }
  void menuExtraPopUpMenu(MenuExtra& extra, const MenuPtr& menu) override {
    calls.push_back("pop-up " + std::to_string(menu->numberOfItems()));
    menuDown = true;
    seenDownWhileOpen = extra.isMenuDown();
    RunLoop::main().runFor(1.0, kEventTrackingRunLoopMode);
    menuDown = false;
  }
  bool menuExtraIsMenuDown(const MenuExtra&) const override { return menuDown; }

  std::vector<std::string> calls;
  bool menuDown = false;
  bool seenDownWhileOpen = false;
};

// An extra that builds its menu on demand and caches it in the base.
class SampleExtra final : public MenuExtra {
 public:
  static std::shared_ptr<SampleExtra> initWithBundle(BundlePtr bundle) {
    auto extra = std::shared_ptr<SampleExtra>(new SampleExtra);
    if (!extra->MenuExtra::initWithBundle(bundle)) return nullptr;
    return extra;
  }
  MenuPtr menu() override {
    if (auto cached = MenuExtra::menu()) return cached;
    ++builds;
    auto built = Menu::initWithTitle("");
    built->addItemWithTitleActionKeyEquivalent("Available", "choose:", "");
    setMenu(built);
    return built;
  }
  void willUnload() override {
    unloaded = true;
    MenuExtra::willUnload();
  }
  int builds = 0;
  bool unloaded = false;

 private:
  SampleExtra() = default;
};

class MenuExtraTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    bundle = std::make_shared<Bundle>(tempDir.string(), "com.velmo.menuextra.Parlo", "SampleExtra", "");
    extra = SampleExtra::initWithBundle(bundle);
    ASSERT_NE(extra, nullptr);
  }

  BundlePtr bundle;
  std::shared_ptr<SampleExtra> extra;
  FakeHost host;
};

TEST_F(MenuExtraTest, TheBaseInitialiserNeedsABundle) {
  EXPECT_EQ(SampleExtra::initWithBundle(nullptr), nullptr);
  EXPECT_EQ(extra->bundle(), bundle);
  EXPECT_EQ(extra->host(), nullptr);
  EXPECT_FALSE(extra->isMenuDown()) << "no host, no open menu";
  EXPECT_FALSE(extra->convertedForNewUI());
}

TEST_F(MenuExtraTest, TheBaseKeepsTheCachedMenuForSubclasses) {
  EXPECT_EQ(extra->MenuExtra::menu(), nullptr);
  auto first = extra->menu();
  EXPECT_EQ(extra->menu(), first);
  EXPECT_EQ(extra->MenuExtra::menu(), first);
  EXPECT_EQ(extra->builds, 1);
  extra->setMenu(nullptr);  // invalidated
  EXPECT_NE(extra->menu(), first);
  EXPECT_EQ(extra->builds, 2);
}

TEST_F(MenuExtraTest, LengthAndRedisplayReachTheHost) {
  auto view = View::initWithFrame({0, 0, 24, 22});
  view->setAutoresizingMask(kViewWidthSizable);
  extra->setView(view);
  extra->setLength(24);  // before a host is attached: kept, not sent
  EXPECT_EQ(extra->length(), 24);
  extra->setHost(&host);

  RecordingCanvas canvas;
  view->display(canvas);
  extra->setLength(95);
  EXPECT_EQ(view->frame(), (Rect{0, 0, 95, 22})) << "a width-sizable view follows the slot";
  view->setNeedsDisplay(true);
  view->setNeedsDisplay(true);
  EXPECT_EQ(host.calls, (std::vector<std::string>{"length 95", "display"}));

  auto fixed = View::initWithFrame({0, 0, 24, 22});
  extra->setView(fixed);
  extra->setLength(60);
  EXPECT_EQ(fixed->frame().width, 24) << "a view without the width-sizable mask keeps its width";
  view->setNeedsDisplay(false);
  view->setNeedsDisplay(true);
  EXPECT_EQ(host.calls.back(), "length 60") << "the replaced view no longer reaches the host";
}

TEST_F(MenuExtraTest, PopUpMenuTracksTheMenuThroughTheHost) {
  auto view = View::initWithFrame({0, 0, 24, 22});
  extra->setView(view);
  extra->setHost(&host);
  RecordingCanvas canvas;
  view->display(canvas);

  int defaultModeTicks = 0, trackingTicks = 0;
  RunLoop::main().performBlock(0.5, kDefaultRunLoopMode, [&] { ++defaultModeTicks; });
  RunLoop::main().performBlock(0.5, kCommonRunLoopModes, [&] { ++trackingTicks; });
  extra->popUpMenu(extra->menu());
  EXPECT_TRUE(host.seenDownWhileOpen);
  EXPECT_FALSE(extra->isMenuDown());
  EXPECT_EQ(host.calls, (std::vector<std::string>{"display", "pop-up 1"}))
      << "the highlight redraw is asked for once until the view is drawn";
  EXPECT_EQ(trackingTicks, 1);
  EXPECT_EQ(defaultModeTicks, 0) << "default-mode work waits while the menu is open";

  extra->popUpMenu(nullptr);
  EXPECT_EQ(host.calls.size(), 2u);
}

TEST_F(MenuExtraTest, TheMenuBackgroundCoversTheView) {
  RecordingCanvas canvas;
  extra->setLength(30);
  extra->drawMenuBackground(canvas, false);
  extra->setView(View::initWithFrame({0, 0, 95, 22}));
  extra->drawMenuBackground(canvas, true);
  EXPECT_EQ(canvas.descriptions(), (std::vector<std::string>{"menu-background {{0, 0}, {30, 22}}",
                                                             "menu-background highlighted {{0, 0}, {95, 22}}"}));
}

TEST_F(MenuExtraTest, AfterWillUnloadTheExtraNoLongerTalksToTheHost) {
  auto view = View::initWithFrame({0, 0, 24, 22});
  extra->setView(view);
  extra->setHost(&host);
  host.calls.clear();
  extra->willUnload();
  EXPECT_TRUE(extra->unloaded);
  extra->setLength(150);
  view->setNeedsDisplay(false);
  view->setNeedsDisplay(true);
  extra->popUpMenu(extra->menu());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_EQ(extra->host(), nullptr);
}

}  // namespace
