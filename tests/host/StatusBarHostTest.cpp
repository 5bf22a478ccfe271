#include <gtest/gtest.h>

#include <limits>

#include "host/PluginBundle.h"
#include "host/SlotPicture.h"
#include "host/StatusBarHost.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/String.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/Workspace.h"
#include "tests/host/HostTestSupport.h"
#include "tests/support/PlatformTest.h"

namespace {

using kibhost::SlotPicture;
using kibhost::StatusBarHost;

// Records what the host tells its frontend; closes the menu when told to.
class RecordingDelegate final : public kibhost::StatusBarHostDelegate {
 public:
  void slotLengthDidChange(double length) override { lengths.push_back(length); }
  void slotDidDisplay(const platform::RecordingCanvas& canvas) override {
    pictures.push_back(SlotPicture::fromCanvas(canvas));
  }
  void menuDidOpen(const platform::MenuPtr& menu) override {
    menus.push_back(menu);
    events.push_back("open");
    if (onOpen) onOpen();
  }
  void menuDidClose(std::int64_t chosenIndex) override { events.push_back("close " + std::to_string(chosenIndex)); }
  double menuTrackingDeadline() override { return deadline; }

  std::vector<double> lengths;
  std::vector<SlotPicture> pictures;
  std::vector<platform::MenuPtr> menus;
  std::vector<std::string> events;
  std::function<void()> onOpen;
  double deadline = std::numeric_limits<double>::infinity();
};

class StatusBarHostTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    std::string error;
    plugin = kibhost::PluginBundle::load(kibtest::testBundlePath(), error);
    ASSERT_TRUE(plugin) << error;
    host = std::make_unique<StatusBarHost>(delegate);
    ASSERT_TRUE(host->load(*plugin, error)) << error;
  }
  void TearDown() override {
    host->unload();
    host.reset();
    PlatformTest::TearDown();
  }

  // Closes the open menu after a while of tracking, choosing the item at the index.
  void closeAfter(double delay, std::int64_t index) {
    delegate.onOpen = [this, delay, index] {
      platform::RunLoop::main().performBlock(delay, platform::kEventTrackingRunLoopMode,
                                             [this, index] { host->closeMenu(index); });
    };
  }

  RecordingDelegate delegate;
  std::shared_ptr<kibhost::PluginBundle> plugin;
  std::unique_ptr<StatusBarHost> host;
};

TEST_F(StatusBarHostTest, TheExtraIsAttachedAndItsSlotDrawnOncePerTurn) {
  ASSERT_TRUE(host->extra());
  EXPECT_EQ(host->extra()->host(), host.get());
  EXPECT_EQ(delegate.lengths, std::vector<double>{24}) << "what the extra set before it had a host";
  EXPECT_TRUE(delegate.pictures.empty()) << "drawing waits for the run loop";
  drain();
  ASSERT_EQ(delegate.pictures.size(), 1u);
  EXPECT_EQ(delegate.pictures[0].image, "MenuExtra.pdf");
  EXPECT_TRUE(delegate.pictures[0].dimmed);

  // A text changes the length and the picture; several requests make one drawing.
  platform::DistributedNotificationCenter::defaultCenter().postNotificationName("TestExtraText",
                                                                                platform::makeString("Hi"));
  drain();
  EXPECT_EQ(delegate.lengths.back(), 40);
  ASSERT_EQ(delegate.pictures.size(), 2u);
  EXPECT_EQ(delegate.pictures[1].text, "Hi");
  EXPECT_FALSE(delegate.pictures[1].dimmed);
  EXPECT_EQ(host->length(), 40);
}

TEST_F(StatusBarHostTest, AClickTracksTheMenuAndTheChoiceRunsAfterItCloses) {
  bool defaultWorkRan = false;
  platform::RunLoop::main().performBlock(0.1, platform::kDefaultRunLoopMode, [&] { defaultWorkRan = true; });
  bool downWhileTracking = false;
  delegate.onOpen = [&] {
    downWhileTracking = host->extra()->isMenuDown();
    platform::RunLoop::main().performBlock(0.5, platform::kEventTrackingRunLoopMode, [&] {
      EXPECT_FALSE(defaultWorkRan) << "default-mode work waits while the menu is tracked";
      EXPECT_TRUE(testLog().empty()) << "nothing is chosen while the menu is open";
      host->closeMenu(2);
    });
  };
  const double start = now();
  host->click();
  EXPECT_DOUBLE_EQ(now() - start, 0.5);
  EXPECT_TRUE(downWhileTracking);
  EXPECT_FALSE(host->extra()->isMenuDown());
  EXPECT_EQ(delegate.events, (std::vector<std::string>{"open", "close 2"}));
  ASSERT_EQ(delegate.menus.size(), 1u);
  EXPECT_EQ(delegate.menus[0]->itemAtIndex(2)->title(), "Say Hello");
  EXPECT_EQ(testLog(), std::vector<std::string>{"hello"});
  // The slot was drawn as the open menu's title and back.
  ASSERT_GE(delegate.pictures.size(), 2u);
  EXPECT_TRUE(delegate.pictures[delegate.pictures.size() - 2].highlighted);
  EXPECT_FALSE(delegate.pictures.back().highlighted);
  drain();
  EXPECT_TRUE(defaultWorkRan);

  // Every click asks the extra for its menu again.
  closeAfter(0, -1);
  host->click();
  ASSERT_EQ(delegate.menus.size(), 2u);
  EXPECT_EQ(delegate.menus[1]->itemAtIndex(0)->title(), "Menu 2");
  EXPECT_EQ(delegate.events.back(), "close -1");
  EXPECT_EQ(testLog().size(), 1u) << "dismissing chooses nothing";
}

TEST_F(StatusBarHostTest, ModifiersAndKeyEquivalentsReachTheOpenMenu) {
  std::uint64_t held = 0;
  delegate.onOpen = [&] {
    auto* open = host->openMenu();
    held = open->modifierFlags;
    const auto index =
        open->tracking.indexOfItemForKeyEquivalent(platform::kEscapeKeyEquivalent, platform::kControlKeyMask);
    platform::RunLoop::main().performBlock(0, platform::kEventTrackingRunLoopMode,
                                           [this, index] { host->closeMenu(index); });
  };
  std::vector<std::string> stopped;
  auto token = platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
      "TestExtraStopped", nullptr, [&](const platform::NotificationPtr& note) { stopped.push_back(note->name()); });
  host->click(platform::kAlternateKeyMask);
  EXPECT_EQ(held, platform::kAlternateKeyMask);
  EXPECT_EQ(delegate.events.back(), "close 5");
  drain();
  EXPECT_EQ(stopped.size(), 1u) << "Control-Escape chose Stop";
  platform::DistributedNotificationCenter::defaultCenter().removeObserver(token.get());
}

TEST_F(StatusBarHostTest, AMenuLeftOpenClosesAtTheDeadlineAndUnloadingEndsTheExtra) {
  delegate.deadline = now() + 2;
  host->click();
  EXPECT_EQ(delegate.events.back(), "close -1");
  EXPECT_DOUBLE_EQ(now(), delegate.deadline);

  std::weak_ptr<platform::MenuExtra> extra = host->extra();
  host->unload();
  EXPECT_FALSE(host->extra());
  EXPECT_EQ(testLog(), std::vector<std::string>{"unloading"});
  platform::RunLoop::main().reset();  // what the extra left on the loop
  EXPECT_TRUE(extra.expired()) << "released once unloaded";
  host->click();
  EXPECT_EQ(delegate.menus.size(), 1u) << "no extra, no menu";
}

}  // namespace
