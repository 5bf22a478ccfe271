#include <gtest/gtest.h>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMDaemonListener.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMMelodix.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "platform/im/IMServiceAgent.h"
#include "sim/ScenarioLoader.h"
#include "sim/SimWorld.h"
#include "tests/sim/SimTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using sim::SimEvent;
using sim::SimWorld;
using simtest::CentreRecorder;

namespace {

class SimWorldTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    world = SimWorld::make(sim::ScenarioLoader::parse(simtest::kSmallScenario, "small.json"));
  }
  void TearDown() override {
    world.reset();
    PlatformTest::TearDown();
  }

  IMHandlePtr jane() { return world->handle("aim", "janedoe"); }
  static const IMDaemonControllerPtr& daemon() { return IMDaemonController::sharedController(); }

  std::shared_ptr<SimWorld> world;
};

}  // namespace

TEST_F(SimWorldTest, BuildsTheMirrorObjectsFromTheScenario) {
  auto aim = IMService::serviceWithName("AIM");
  auto jabber = IMService::serviceWithInternalName("JabberInternal");
  ASSERT_TRUE(aim && jabber);
  EXPECT_EQ(aim->status(), kIMPersonStatusAvailable) << "follows its connected accounts";
  EXPECT_EQ(jabber->status(), kIMPersonStatusOffline);
  EXPECT_EQ(jabber->localizedShortName(), "Jab");

  const auto& accounts = IMAccountController::sharedInstance()->accounts();
  ASSERT_EQ(accounts.size(), 3u);
  EXPECT_EQ(accounts[0], world->account("aim"));
  EXPECT_EQ(accounts[1]->myStatus(), kIMPersonStatusAway);
  EXPECT_EQ(accounts[1]->myStatusMessage(), "Busy");
  EXPECT_EQ(accounts[2]->loginStatus(), kIMAccountLoginStatusOffline);
  EXPECT_TRUE(accounts[2]->isInvisible());
  EXPECT_EQ(world->accountID(accounts[2].get()), "jab");

  auto handle = jane();
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(handle->status(), kIMPersonStatusAway);
  EXPECT_EQ(handle->statusMessage(), "Out");
  EXPECT_EQ(handle->fullName(), "Jane Doe");
  EXPECT_EQ(handle->groupsArray(), (std::vector<std::string>{"Friends", "Work"}));
  EXPECT_EQ(handle->sortOrderInGroup("Work"), 3u);
  EXPECT_TRUE(handle->hasAudio());
  EXPECT_FALSE(handle->isConferenceAvailable());
  EXPECT_EQ(world->account("aim")->buddyList()->people(), std::vector<IMHandlePtr>{handle});
  EXPECT_EQ(world->handle("jab", "jane@j")->status(), kIMPersonStatusOffline) << "its account is logged out";
  EXPECT_TRUE(world->handle("jab", "jane@j")->person()->isEqualToIMPerson(handle->person()));
  EXPECT_DOUBLE_EQ(world->handle("aim2", "bob")->idleTime(), 120);
  EXPECT_EQ(world->handle("aim2", "bob")->authRequestStatus(), kIMAuthRequestPending);

  EXPECT_EQ(IMServiceAgent::sharedAgent()->myAvailableMessages(), std::vector<std::string>{"Here"});
  EXPECT_EQ(IMServiceAgent::sharedAgent()->myAwayMessages(), std::vector<std::string>{"Gone"});
  EXPECT_TRUE(IMMelodixInteropAvailable());
  EXPECT_TRUE(daemon()->isConnected());
  EXPECT_EQ(daemon()->listener()->vcCapabilities(), 0xE0000u);
  EXPECT_EQ(stringValue(daemon()->listener()->valueOfPersistentProperty(kKBDaemonPropertyNowPlayingFormatString)),
            IMMelodixMessageFormat()->value());
}

TEST_F(SimWorldTest, ScenarioEventsPlayAtTheirTimesAfterStart) {
  std::vector<std::string> played;
  world->setEventObserver([&](const SimEvent& event) { played.push_back(event.description()); });
  advance(20);
  EXPECT_TRUE(played.empty()) << "events wait for start()";

  world->start();
  EXPECT_DOUBLE_EQ(world->startTime(), now());
  CentreRecorder distributed(DistributedNotificationCenter::defaultCenter());
  advance(4.9);
  EXPECT_EQ(jane()->status(), kIMPersonStatusAway);
  advance(0.2);
  EXPECT_EQ(jane()->status(), kIMPersonStatusAvailable);
  EXPECT_EQ(jane()->statusMessage(), "Back");
  EXPECT_EQ(played.size(), 1u);

  advance(6.8);
  EXPECT_TRUE(world->account("aim2")->isConnected());
  advance(0.2);
  EXPECT_FALSE(world->account("aim2")->isConnected());
  EXPECT_EQ(world->handle("aim2", "bob")->status(), kIMPersonStatusOffline);
  EXPECT_EQ(played, (std::vector<std::string>{"buddy-status aim/janedoe status=Available message=\"Back\"",
                                              "account-disconnect aim2", "status-text \"Hello\""}));
  ASSERT_EQ(distributed.names, std::vector<std::string>{IMDisplayStatusTextNotification});
  EXPECT_EQ(stringValue(distributed.notifications[0]->object()), "Hello");
}

TEST_F(SimWorldTest, AStatusSetReachesEveryConnectedAccountAfterTheLatency) {
  CentreRecorder standard(NotificationCenter::defaultCenter());
  daemon()->setMyStatusMessage(kIMPersonStatusAway, makeString("Lunch"));
  advance(0.2);
  EXPECT_EQ(world->account("aim")->myStatus(), kIMPersonStatusAvailable);
  advance(0.1);
  for (const char* id : {"aim", "aim2"}) {
    EXPECT_EQ(world->account(id)->myStatus(), kIMPersonStatusAway) << id;
    EXPECT_EQ(world->account(id)->myStatusMessage(), "Lunch") << id;
  }
  EXPECT_EQ(world->account("jab")->myStatusMessage(), "") << "a logged-out account is not told";
  EXPECT_EQ(standard.count(IMMeStatusChangedNotification), 2u);

  daemon()->setMyStatusMessage(kIMPersonStatusAvailable, IMMelodixMessageFormat());
  advance(0.3);
  EXPECT_EQ(world->account("aim")->myStatusMessage(), IMMelodixMessageFormat()->value());
  EXPECT_EQ(world->account("aim")->myNowPlayingString(), "\u266B Song");
}

TEST_F(SimWorldTest, GoingOfflineLogsOutAndLoggingInBringsTheAccountsBack) {
  auto bob = world->handle("aim2", "bob");
  daemon()->setMyStatusMessage(kIMPersonStatusOffline, nullptr);
  advance(0.3);
  EXPECT_TRUE(IMAccountController::sharedInstance()->connectedAccounts().empty());
  EXPECT_EQ(jane()->status(), kIMPersonStatusOffline);
  EXPECT_EQ(IMService::serviceWithName("AIM")->status(), kIMPersonStatusOffline);

  CentreRecorder standard(NotificationCenter::defaultCenter());
  advance(60);
  daemon()->loginAllAccounts();
  EXPECT_EQ(world->account("aim")->loginStatus(), kIMAccountLoginStatusConnecting);
  EXPECT_EQ(world->account("jab")->loginStatus(), kIMAccountLoginStatusConnecting);
  daemon()->loginAllAccounts();  // already on its way: no second log-in
  advance(0.9);
  EXPECT_FALSE(world->account("aim")->isConnected());
  advance(0.2);
  for (const char* id : {"aim", "aim2", "jab"}) {
    EXPECT_TRUE(world->account(id)->isConnected()) << id;
    EXPECT_EQ(world->account(id)->myStatus(), kIMPersonStatusAvailable) << id;
    EXPECT_TRUE(world->account(id)->justLoggedIn());
  }
  EXPECT_EQ(standard.count(IMAccountLoginStatusChangedNotification), 6u) << "connecting, then connected";
  EXPECT_EQ(jane()->status(), kIMPersonStatusAway) << "the buddy comes back as it really is";
  EXPECT_EQ(jane()->statusMessage(), "Out");
  EXPECT_EQ(world->handle("jab", "jane@j")->status(), kIMPersonStatusAvailable);
  EXPECT_NEAR(bob->idleTime(), 120 + 61.4, 1e-6) << "idle time went on while the account was away";
  EXPECT_EQ(IMService::serviceWithName("AIM")->status(), kIMPersonStatusAvailable);
}

TEST_F(SimWorldTest, InvisibilityIsKeptPerAccountAcrossLogIns) {
  auto aim = world->account("aim");
  aim->setInvisible(true);
  aim->writeSettings();
  world->apply(SimEvent::accountDisconnect("aim"));
  aim->setInvisible(false);  // the local setting, never written
  world->apply(SimEvent::accountConnect("aim"));
  EXPECT_TRUE(aim->isInvisible());

  auto jab = world->account("jab");
  jab->loginAccount();
  advance(1.0);
  EXPECT_TRUE(jab->isConnected());
  EXPECT_TRUE(jab->isInvisible()) << "the scenario's setting";
  EXPECT_FALSE(world->account("aim2")->isInvisible());
}

TEST_F(SimWorldTest, TheDaemonDisconnectsIgnoresCommandsAndComesBack) {
  CentreRecorder standard(NotificationCenter::defaultCenter());
  world->apply(SimEvent::daemonDisconnect());
  world->apply(SimEvent::daemonDisconnect());
  EXPECT_FALSE(daemon()->isConnected());
  daemon()->setMyStatusMessage(kIMPersonStatusAway, makeString("x"));
  daemon()->loginAllAccounts();
  advance(5);
  EXPECT_EQ(world->account("aim")->myStatus(), kIMPersonStatusAvailable);
  EXPECT_FALSE(world->account("jab")->isConnected());
  world->apply(SimEvent::daemonConnect());
  EXPECT_TRUE(daemon()->isConnected());
  EXPECT_EQ(standard.names,
            (std::vector<std::string>{IMDaemonDidDisconnectNotification, IMDaemonDidConnectNotification}));
}

TEST_F(SimWorldTest, BuddyEventsChangeTheBuddyOnlyWhileItsAccountShowsIt) {
  CentreRecorder service(IMService::notificationCenter());
  ASSERT_TRUE(world->apply(SimEvent::buddyOffline("aim", "janedoe")));
  EXPECT_EQ(jane()->status(), kIMPersonStatusOffline);
  EXPECT_EQ(service.count(IMPersonStatusChangedNotification), 1u);

  ASSERT_TRUE(world->apply(SimEvent::buddyOnline("jab", "jane@j")));
  EXPECT_EQ(world->handle("jab", "jane@j")->status(), kIMPersonStatusOffline) << "its account is logged out";

  SimEvent idle = SimEvent::buddyStatus("aim", "janedoe", kIMPersonStatusIdle);
  idle.idle = 300;
  world->apply(idle);
  EXPECT_DOUBLE_EQ(jane()->idleTime(), 300);

  SimEvent groups;
  groups.type = SimEvent::Type::BuddyGroups;
  groups.account = "aim";
  groups.handle = "janedoe";
  groups.groups = std::vector<std::string>{"Family"};
  world->apply(groups);
  EXPECT_EQ(jane()->groupsArray(), std::vector<std::string>{"Family"});

  SimEvent capabilities;
  capabilities.type = SimEvent::Type::BuddyCapabilities;
  capabilities.account = "aim";
  capabilities.handle = "janedoe";
  capabilities.video = true;
  world->apply(capabilities);
  EXPECT_TRUE(jane()->hasVideo());
  EXPECT_TRUE(jane()->hasAudio()) << "unnamed capabilities stay";

  std::string error;
  EXPECT_FALSE(world->apply(SimEvent::buddyOnline("aim", "ghost"), &error));
  EXPECT_EQ(error, "no handle \"ghost\" on account \"aim\"");
  EXPECT_FALSE(world->apply(SimEvent::accountConnect("icq"), &error));
  EXPECT_EQ(error, "no account with id \"icq\"");
}

TEST_F(SimWorldTest, AccountEventsMoveTheServiceStatus) {
  CentreRecorder service(IMService::notificationCenter());
  auto aimService = IMService::serviceWithName("AIM");
  world->apply(SimEvent::accountDisconnect("aim"));
  EXPECT_EQ(aimService->status(), kIMPersonStatusAvailable) << "its other account is still online";
  world->apply(SimEvent::accountDisconnect("aim2"));
  EXPECT_EQ(aimService->status(), kIMPersonStatusOffline);
  world->apply(SimEvent::accountConnect("jab"));
  EXPECT_EQ(IMService::serviceWithInternalName("JabberInternal")->status(), kIMPersonStatusAvailable);
  EXPECT_EQ(service.count(IMServiceStatusChangedNotification), 2u);
}

TEST_F(SimWorldTest, StatusTextsGoToTheCentreTheEventNames) {
  CentreRecorder distributed(DistributedNotificationCenter::defaultCenter());
  CentreRecorder service(IMService::notificationCenter());
  auto both = SimEvent::statusText("Both");
  both.centre = "both";
  world->apply(both);
  EXPECT_TRUE(distributed.names.empty()) << "distributed notifications arrive on the next turn";
  EXPECT_EQ(service.count(IMDisplayStatusTextNotification), 1u);
  drain();
  EXPECT_EQ(distributed.count(IMDisplayStatusTextNotification), 1u);
  EXPECT_EQ(stringValue(distributed.notifications[0]->object()), "Both");
}

TEST_F(SimWorldTest, TheWorldLetsGoOfTheDaemonControllerWhenItEnds) {
  EXPECT_NE(daemon()->backend(), nullptr);
  world.reset();
  EXPECT_EQ(daemon()->backend(), nullptr);
  EXPECT_FALSE(daemon()->isConnected());
}

TEST_F(SimWorldTest, TheExampleEveningPlaysToItsEnd) {
  world.reset();
  world = SimWorld::make(sim::ScenarioLoader::loadFile(simtest::sourceDir() / "examples" / "busy-evening.json"));
  std::size_t played = 0;
  world->setEventObserver([&](const SimEvent&) { ++played; });
  CentreRecorder distributed(DistributedNotificationCenter::defaultCenter());
  world->start();
  advance(16);
  EXPECT_EQ(world->handle("aim", "jreyes77")->groupsArray(), (std::vector<std::string>{"Buddies", "Co-Workers"}));
  EXPECT_EQ(world->handle("aim", "jreyes77")->statusMessage(), "Home at last");
  EXPECT_TRUE(world->account("jabber")->isConnected());
  EXPECT_EQ(world->handle("jabber", "maya@jabber.velmo.example")->status(), kIMPersonStatusAway);
  EXPECT_FALSE(world->handle("ambrel", "felix@felix-imac")->isConferenceAvailable());
  advance(20);
  EXPECT_FALSE(daemon()->isConnected());
  EXPECT_EQ(world->handle("ambrel", "felix@felix-imac")->status(), kIMPersonStatusOffline);
  advance(20);
  EXPECT_EQ(played, world->scenario().events.size());
  EXPECT_TRUE(daemon()->isConnected());
  EXPECT_EQ(world->handle("aim", "maya.okafor")->status(), kIMPersonStatusOffline);
  EXPECT_FALSE(world->application()->isRunning());
  EXPECT_EQ(distributed.count(kKBParloScreenSharingStartedNotification), 2u);
  EXPECT_EQ(distributed.count(kKBParloScreenSharingEndedNotification), 1u);
  EXPECT_EQ(distributed.count(IMDisplayStatusTextNotification), 1u);
  EXPECT_TRUE(linesOf(platform::Log::Channel::Warning).empty());
}

TEST_F(SimWorldTest, ANewListenerHearsAboutTheAccountsOnTheNextTurn) {
  CentreRecorder centre(NotificationCenter::defaultCenter());
  daemon()->addListenerIDCapabilities("com.example.listener", 0);
  EXPECT_EQ(centre.count(IMAccountControllerUpdatedNotification), 0u) << "not during the call";
  drain();
  EXPECT_EQ(centre.count(IMAccountControllerUpdatedNotification), 1u);

  world->apply(SimEvent::daemonDisconnect());
  drain();
  centre.clear();
  daemon()->addListenerIDCapabilities("com.example.other", 0);
  drain();
  EXPECT_EQ(centre.count(IMAccountControllerUpdatedNotification), 0u) << "a disconnected daemon says nothing";
}

TEST_F(SimWorldTest, AnAccountsNowPlayingTextIsFilledInOnlyWhenAbsent) {
  struct Case {
    const char* nowPlayingField;  // the JSON text after "nowPlaying": or nullptr for none
    const char* expected;
  };
  const Case cases[] = {{nullptr, "\u266B Song"}, {R"("")", ""}, {R"("Other Song")", "Other Song"}};
  for (const auto& c : cases) {
    world.reset();
    std::string account = R"({"id": "aim", "service": "AIM", "login": "me", "myMessage": "\u266B %@")";
    if (c.nowPlayingField) account += std::string(R"(, "nowPlaying": )") + c.nowPlayingField;
    world = SimWorld::make(sim::ScenarioLoader::parse(
        R"({"services": [{"name": "AIM"}], "music": {"interop": true, "currentTrack": "Song"}, "accounts": [)" +
            account + "}]}",
        "music.json"));
    EXPECT_EQ(world->account("aim")->myNowPlayingString(), c.expected) << (c.nowPlayingField ? c.nowPlayingField : "");
  }
}

namespace {

TEST_F(SimWorldTest, AWorldThatReleasesItsScenarioPeopleStillKnowsAndMovesEveryBuddy) {
  const auto scenario = sim::ScenarioLoader::parse(simtest::kSmallScenario, "small.json");
  std::size_t handles = 0;
  for (const auto& person : scenario.people) handles += person.handles.size();
  ASSERT_GT(handles, 1u);
  world.reset();
  world = SimWorld::make(scenario, SimWorld::ScenarioPeople::Released);
  EXPECT_TRUE(world->scenario().people.empty());
  EXPECT_EQ(world->scenario().accounts.size(), scenario.accounts.size());
  EXPECT_EQ(world->scenario().events.size(), scenario.events.size());
  for (const auto& person : scenario.people)
    for (const auto& handle : person.handles) {
      auto mirror = world->handle(handle.account, handle.id);
      ASSERT_NE(mirror, nullptr) << handle.id;
      ASSERT_NE(mirror->person(), nullptr) << handle.id;
      EXPECT_EQ(mirror->person()->firstName(), person.firstName) << handle.id;
    }
  ASSERT_TRUE(world->apply(SimEvent::buddyOffline("aim", "janedoe")));
  EXPECT_EQ(jane()->status(), kIMPersonStatusOffline);
}

}  // namespace
