#include "platform/ui/Workspace.h"
#include <gtest/gtest.h>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/String.h"
#include "platform/im/IMConstants.h"
#include "sim/SimWorld.h"
#include "tests/sim/SimTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using simtest::CentreRecorder;

namespace {

class MessagingApplicationTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    world = sim::SimWorld::makeDefault();
    app = world->application();
  }
  void TearDown() override {
    app.reset();
    world.reset();
    PlatformTest::TearDown();
  }

  std::shared_ptr<sim::SimWorld> world;
  std::shared_ptr<sim::MessagingApplication> app;
};

}  // namespace

TEST_F(MessagingApplicationTest, ComposeURLsOpenChatsWithTheDecodedBuddy) {
  EXPECT_TRUE(app->openURL("Parlo:compose?service=AIM&id=maya.okafor"));
  EXPECT_TRUE(app->openURL("Parlo:compose?service=Jabber&id=selftest%40jabber.velmo.example&style=IM"));
  EXPECT_TRUE(app->openURL("Parlo:compose?service=AIM&id=Some%20One%2"));
  EXPECT_TRUE(app->openURL("Parlo:compose?service=&id="));

  const auto& chats = app->openedChats();
  ASSERT_EQ(chats.size(), 4u);
  EXPECT_EQ(chats[0].service, "AIM");
  EXPECT_EQ(chats[0].ID, "maya.okafor");
  EXPECT_FALSE(chats[0].textOnly);
  EXPECT_TRUE(chats[0].knownBuddy);
  EXPECT_EQ(chats[1].ID, "selftest@jabber.velmo.example");
  EXPECT_TRUE(chats[1].textOnly);
  EXPECT_TRUE(chats[1].knownBuddy);
  EXPECT_EQ(chats[2].ID, "Some One%2") << "a broken escape stays as it is";
  EXPECT_FALSE(chats[2].knownBuddy);
  EXPECT_EQ(chats[3].service, "");
  EXPECT_EQ(app->activity().at(1), "text chat with selftest@jabber.velmo.example on Jabber");
}

TEST_F(MessagingApplicationTest, BuddyListURLsAndForeignURLs) {
  std::vector<std::string> seen;
  app->setActivityObserver([&](const std::string& line) { seen.push_back(line); });
  EXPECT_TRUE(app->openURL("Parlo:openbuddylist?service=SubNet"));
  EXPECT_TRUE(app->openURL("parlo:openbuddylist?service=AIM"));
  EXPECT_FALSE(app->openURL("https://velmo.example/"));
  EXPECT_FALSE(app->openURL("Parlo:format?disk=all"));
  EXPECT_EQ(app->shownBuddyLists(), (std::vector<std::string>{"SubNet", "AIM"}));
  EXPECT_EQ(seen, (std::vector<std::string>{"buddy list SubNet", "buddy list AIM", "refused Parlo:format?disk=all"}));
  EXPECT_TRUE(app->openedChats().empty());
}

TEST_F(MessagingApplicationTest, TheWorkspaceHandsItsURLsToTheApplicationWhileTheWorldLives) {
  auto& workspace = platform::Workspace::sharedWorkspace();
  EXPECT_TRUE(workspace.openURL("Parlo:openbuddylist?service=Jabber"));
  EXPECT_EQ(app->shownBuddyLists(), (std::vector<std::string>{"Jabber"}));
  app.reset();
  world.reset();
  EXPECT_FALSE(workspace.openURL("Parlo:openbuddylist?service=AIM")) << "nobody handles it once the world is gone";
}

TEST_F(MessagingApplicationTest, ScreenSharingStartsEndsOnRequestAndStopsWhenTheApplicationQuits) {
  CentreRecorder distributed(DistributedNotificationCenter::defaultCenter());
  CentreRecorder workspace(NotificationCenter::centerNamed("workspace"));
  world->apply(sim::SimEvent::screenSharingStart(std::string("Felix Moreau")));
  drain();
  ASSERT_EQ(distributed.names, std::vector<std::string>{kKBParloScreenSharingStartedNotification});
  EXPECT_EQ(stringValue(distributed.notifications[0]->object()), "Felix Moreau");
  EXPECT_TRUE(app->isScreenSharing());

  DistributedNotificationCenter::defaultCenter().postNotificationName(kKBParloScreenSharingShouldTerminateNotification);
  drain();
  EXPECT_TRUE(app->isScreenSharing());
  advance(0.4);
  EXPECT_EQ(distributed.count(kKBParloScreenSharingEndedNotification), 0u);
  advance(0.2);
  EXPECT_EQ(distributed.count(kKBParloScreenSharingEndedNotification), 1u);
  EXPECT_FALSE(app->isScreenSharing());

  world->apply(sim::SimEvent::screenSharingStart(std::nullopt));
  drain();
  EXPECT_EQ(distributed.notifications.back()->object(), nullptr);
  world->apply(sim::SimEvent::applicationQuit());
  drain();
  ASSERT_EQ(workspace.names, std::vector<std::string>{"NSWorkspaceDidTerminateApplicationNotification"});
  EXPECT_EQ(stringValue(workspace.notifications[0]->userInfo()->objectForKey("NSApplicationBundleIdentifier")),
            kKBAppBundleIdentifier);
  EXPECT_EQ(distributed.count(kKBParloScreenSharingEndedNotification), 1u) << "quitting ends sharing silently";
  EXPECT_FALSE(app->isRunning());

  DistributedNotificationCenter::defaultCenter().postNotificationName(kKBParloScreenSharingShouldTerminateNotification);
  advance(1);
  EXPECT_EQ(distributed.count(kKBParloScreenSharingEndedNotification), 1u) << "a quit application answers nothing";
  app->openURL("Parlo:openbuddylist?service=AIM");
  EXPECT_TRUE(app->isRunning());
}
