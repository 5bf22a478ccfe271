#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/MenuTracking.h"
#include "platform/ui/Workspace.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

const std::string kEndItem = "End Screen Sharing | 0 | 0 | nil | nil | endScreenSharing:->extra | enabled";

std::string heading(const std::string& title) { return title + " | 0 | 0 | nil | nil | :->extra | disabled"; }
// The first item of the menu without sharing.
const std::string kStatusHeading = "My Status: Available | 1 | 0 | nil | nil | :->extra | disabled";

class VelmoKibExtraScreenSharingTest : public kibtest::ExtraTest {
 protected:
  void SetUp() override {
    ExtraTest::SetUp();
    makeDefaultWorld();
    makeStartedExtra();
  }
  sim::MessagingApplication& application() { return *world->application(); }
  void startSharing(std::optional<std::string> partner) {
    application().startScreenSharing(std::move(partner));
    drain();
  }
  std::vector<std::string> firstItems(std::size_t count) {
    auto lines = kibtest::describeMenu(*extra->menu(), extra.get());
    lines.resize(std::min(count, lines.size()));
    return lines;
  }
  std::string icon() const {
    auto image = extra->bannerView()->image();
    return image ? image->displayName() : "nil";
  }
  static std::size_t workspaceObservers() { return Workspace::sharedWorkspace().notificationCenter().observerCount(); }
  void requestStatus(IMPersonStatus status) {
    IMDaemonController::sharedController()->setMyStatusMessage(status, makeString(""));
    advance(0.3);
  }
};

TEST_F(VelmoKibExtraScreenSharingTest, ASessionShowsItsSectionAndBlinksUntilItEnds) {
  const auto observersBefore = workspaceObservers();
  startSharing("Alex");
  ASSERT_TRUE(extra->isScreenSharing());
  EXPECT_EQ(workspaceObservers(), observersBefore + 1);
  EXPECT_EQ(firstItems(4),
            (std::vector<std::string>{heading("Screen Sharing with Alex"), kEndItem, "---", kStatusHeading}));
  auto end = extra->menu()->itemAtIndex(1);
  EXPECT_EQ(end->keyEquivalent(), "\033");
  EXPECT_EQ(end->keyEquivalentModifierMask(), kControlKeyMask);
  EXPECT_EQ(end->indentationLevel(), 1);

  // A second start changes nothing.
  auto pulse = extra->screenSharingPulseTimer();
  startSharing("Sam");
  EXPECT_EQ(extra->screenSharingPulseTimer(), pulse);
  EXPECT_EQ(firstItems(1), std::vector<std::string>{heading("Screen Sharing with Alex")});

  // Every 2 seconds the icon flips between the sharing glyph and the status icon, and the menu is dropped.
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[0]);
  advance(1.9);
  EXPECT_FALSE(extra->isShowingScreenSharingIcon());
  auto cached = extra->menu();
  advance(0.2);
  EXPECT_TRUE(extra->isShowingScreenSharingIcon());
  EXPECT_EQ(icon(), "SharingActive.png");
  EXPECT_FALSE(extra->bannerView()->dimmed());
  EXPECT_FALSE(extra->bannerView()->image()->isTemplate());
  EXPECT_EQ(extra->MenuExtra::menu(), nullptr);
  advance(2.0);
  EXPECT_FALSE(extra->isShowingScreenSharingIcon());
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[0]);

  application().endScreenSharing();
  drain();
  EXPECT_FALSE(extra->isScreenSharing());
  EXPECT_FALSE(pulse->isValid());
  EXPECT_EQ(workspaceObservers(), observersBefore);
  EXPECT_EQ(firstItems(1), std::vector<std::string>{kStatusHeading});
  EXPECT_EQ(extra->screenSharingName()->value(), "Alex") << "kept after the end";
  advance(4.0);
  EXPECT_FALSE(extra->isShowingScreenSharingIcon()) << "no pulse after the end";

  // An end while not sharing leaves the cached menu alone.
  cached = extra->menu();
  application().endScreenSharing();
  drain();
  EXPECT_EQ(extra->MenuExtra::menu(), cached);
}

TEST_F(VelmoKibExtraScreenSharingTest, ControlEscapeAsksTheApplicationToEndSharing) {
  startSharing("Alex");
  MenuTracking tracking(extra->menu());
  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("\033", 0), -1) << "Escape alone closes the menu";
  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("\033", kControlKeyMask), 1);

  ASSERT_TRUE(tracking.chooseItemForKeyEquivalent("\033", kControlKeyMask));
  drain();
  EXPECT_EQ(application().activity().back(), "asked to end screen sharing");
  EXPECT_TRUE(extra->isScreenSharing()) << "until the application answers";
  advance(0.6);
  EXPECT_FALSE(extra->isScreenSharing());
  EXPECT_FALSE(application().isScreenSharing());
}

TEST_F(VelmoKibExtraScreenSharingTest, UnnamedSessionsAndTheApplicationQuitting) {
  startSharing("Alex");
  application().endScreenSharing();
  drain();
  startSharing(std::nullopt);
  EXPECT_EQ(extra->screenSharingName(), nullptr);
  EXPECT_EQ(firstItems(2), (std::vector<std::string>{heading("Sharing My Screen"), kEndItem}));

  // Another application quitting changes nothing; the messaging application quitting ends the session.
  Workspace::sharedWorkspace().noteApplicationTerminated("com.example.editor");
  EXPECT_TRUE(extra->isScreenSharing());
  application().quit();
  drain();
  EXPECT_FALSE(extra->isScreenSharing());
  EXPECT_EQ(firstItems(1), std::vector<std::string>{kStatusHeading});

  // An empty name counts as none.
  extra->screenSharingStarted(Notification::make(kKBParloScreenSharingStartedNotification, makeString("")));
  EXPECT_EQ(extra->screenSharingName(), nullptr);
  EXPECT_EQ(firstItems(1), std::vector<std::string>{heading("Sharing My Screen")});
}

TEST_F(VelmoKibExtraScreenSharingTest, TheBlinkPausesWhileIdleAndKeepsItsPhaseAcrossSessions) {
  requestStatus(kIMPersonStatusIdle);
  auto idleIcon = extra->bannerView()->image();
  startSharing("Alex");
  EXPECT_EQ(firstItems(2), (std::vector<std::string>{heading("Screen Sharing with Alex"), kEndItem}));
  advance(2.0);
  ASSERT_TRUE(extra->isShowingScreenSharingIcon());
  EXPECT_EQ(extra->bannerView()->image(), idleIcon) << "idle keeps the icon";

  // Leaving idle while the phase is on shows the sharing glyph.
  requestStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(icon(), "SharingActive.png");

  // Ended while the phase is on: a new session's first pulse turns it off.
  extra->screenSharingEnded(nullptr);
  EXPECT_TRUE(extra->isShowingScreenSharingIcon());
  extra->screenSharingStarted(nullptr);
  EXPECT_EQ(icon(), "SharingActive.png") << "the new session starts in the old phase";
  advance(2.0);
  EXPECT_FALSE(extra->isShowingScreenSharingIcon());
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[0]);
}

}  // namespace
