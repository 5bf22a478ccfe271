#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/RunLoop.h"
#include "platform/im/IMFramework.h"
#include "sim/SelfTestIdentities.h"
#include "sim/SimEvent.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

const std::string kRealDurationLine = "RealDuration: 0.000000";
const std::string kDurationLine = "Duration: 0.000000";
const std::string kAtStart = "Time interval since start: 0.000000";

std::string performed(const std::string& title) { return "Performed action on item with title: " + title; }

// The self-test identities on AIM and the local-network service, and a Jabber
// list without the Jabber test buddy.
constexpr const char* kNoJabberBuddyScenario = R"({
  "services": [ { "name": "AIM" }, { "name": "SubNet", "shortName": "Ambrel" }, { "name": "Jabber" } ],
  "accounts": [
    { "id": "aim", "service": "AIM", "login": "me.aim", "capabilities": ["buddyList"] },
    { "id": "subnet", "service": "SubNet", "login": "me@host", "capabilities": ["buddyList"] },
    { "id": "jabber", "service": "Jabber", "login": "me@jab.example", "capabilities": ["buddyList"] }
  ],
  "people": [
    { "id": "aimtest", "handles": [ { "account": "aim", "id": "selftest.aim", "status": "offline" } ] },
    { "id": "tess", "firstName": "Tess", "lastName": "Tester",
      "handles": [ { "account": "subnet", "id": "tess@studio", "status": "away" } ] },
    { "id": "other", "handles": [ { "account": "jabber", "id": "someone@jab.example" } ] }
  ]
})";

class VelmoKibExtraSelfTestTest : public kibtest::ExtraTest {
 protected:
  void SetUp() override {
    ExtraTest::SetUp();
    VelmoKibExtra::setSelfTestTimeLineOffset(0);
  }
  void TearDown() override {
    VelmoKibExtra::setSelfTestTimeLineOffset(0);
    ExtraTest::TearDown();
  }
  std::size_t scheduledActions() const {
    return RunLoop::main().pendingPerformCount(extra.get(), "execMenuItemWithTitle:") +
           RunLoop::main().pendingPerformCount(extra.get(), "screenSharingStarted:") +
           RunLoop::main().pendingPerformCount(extra.get(), "screenSharingEnded:");
  }
  std::vector<std::string> performedTitles() const {
    std::vector<std::string> titles;
    for (const auto& line : testLog())
      if (line.rfind(performed(""), 0) == 0) titles.push_back(line.substr(performed("").size()));
    return titles;
  }
};

TEST_F(VelmoKibExtraSelfTestTest, TheTestIdentitiesMatchTheSimulatedWorld) {
  EXPECT_STREQ(VelmoKibExtra::SelfTestAIMScreenName, sim::SelfTestAIMScreenName);
  EXPECT_STREQ(VelmoKibExtra::SelfTestPersonFirstName, sim::SelfTestPersonFirstName);
  EXPECT_STREQ(VelmoKibExtra::SelfTestPersonLastName, sim::SelfTestPersonLastName);
  EXPECT_STREQ(VelmoKibExtra::SelfTestJabberAddress, sim::SelfTestJabberAddress);

  makeDefaultWorld();
  makeStartedExtra();
  EXPECT_EQ(extra->durationOfTest(0), 0.0);
  EXPECT_EQ(extra->durationOfTest(1), 15.0);
  EXPECT_EQ(extra->durationOfTest(2), 12.0);
  EXPECT_EQ(extra->durationOfTest(3), 12.0);
  EXPECT_EQ(extra->durationOfTest(4), 4.0);
  EXPECT_EQ(extra->durationOfTest(5), 0.0);
}

TEST_F(VelmoKibExtraSelfTestTest, AFullRunPlaysEveryTestOnOneTimeLine) {
  makeDefaultWorld();
  makeStartedExtra();
  extra->runSelfTestDuration(0, 120.0);

  EXPECT_EQ(testLog(), (std::vector<std::string>{
                           kRealDurationLine, kDurationLine, "Iteration:1 Message: Running test 1 [Change Status Test]",
                           kAtStart,
                           kRealDurationLine, kDurationLine, "Iteration:2 Message: Running test 2 [Start Chat With Test]",
                           "In start chat with", kAtStart,
                           kRealDurationLine, kDurationLine, "Iteration:3 Message: Running test 3 [Change Buddy List Test]",
                           kAtStart,
                           kRealDurationLine, kDurationLine, "Iteration:4 Message: Running test 4 [Screen Sharing Test]",
                           kAtStart,
                       }));
  EXPECT_EQ(VelmoKibExtra::selfTestTimeLineOffset(), 43.0);
  EXPECT_EQ(scheduledActions(), 5u + 6u + 6u + 2u);

  // The actions run as if the user chose them; the status changes log the accounts out and in again.
  clearLog();
  kibtest::DaemonRequestLog requests;
  advance(41.0);
  EXPECT_TRUE(extra->isScreenSharing());
  advance(5.0);
  EXPECT_FALSE(extra->isScreenSharing());
  EXPECT_EQ(scheduledActions(), 0u);
  EXPECT_EQ(performedTitles(), (std::vector<std::string>{
                                   "Offline", "Available", "Away", "Offline", "Available",
                                   "Display AIM Buddies", "selftest.aim", "Display Ambrel Buddies", "Tess Tester",
                                   "Display Jabber Buddies", "selftest@jabber.velmo.example",
                                   "Display AIM Buddies", "Show AIM Buddy List\u2026",
                                   "Display Ambrel Buddies", "Show Ambrel Buddy List\u2026",
                                   "Display Jabber Buddies", "Show Jabber Buddy List\u2026",
                               }));
  EXPECT_EQ(assertions->failures.size(), 0u) << "every title was in the menu";
  EXPECT_EQ(requests.commands.front(), "setMyStatus:message: 1 nil");

  std::vector<std::string> chats;
  for (const auto& chat : world->application()->openedChats())
    chats.push_back(chat.service + " " + chat.ID + (chat.knownBuddy ? "" : " (unknown)"));
  EXPECT_EQ(chats, (std::vector<std::string>{"AIM selftest.aim", "SubNet tess@tess-studio",
                                             "Jabber selftest@jabber.velmo.example"}));
  EXPECT_EQ(world->application()->shownBuddyLists(), (std::vector<std::string>{"AIM", "SubNet", "Jabber"}));
}

TEST_F(VelmoKibExtraSelfTestTest, AChangeStatusRunTakesItsTitlesFromTheMenu) {
  // No account is connected: the test has no preconditions.
  makeWorld(R"({ "services": [ { "name": "AIM" }, { "name": "Jabber" } ],
                 "accounts": [ { "id": "aim", "service": "AIM", "login": "me.aim", "loginStatus": "offline" },
                               { "id": "jabber", "service": "Jabber", "login": "me@jab.example",
                                 "loginStatus": "offline" } ] })");
  makeStartedExtra();
  extra->runSelfTestDuration(1, 0.0);
  EXPECT_EQ(testLog(), (std::vector<std::string>{kRealDurationLine, kDurationLine,
                                                 "Iteration:1 Message: Running test 1 [Change Status Test]",
                                                 kAtStart}));
  EXPECT_EQ(VelmoKibExtra::selfTestTimeLineOffset(), 15.0);
  clearLog();
  advance(16.5);
  EXPECT_EQ(performedTitles(), (std::vector<std::string>{"Offline", "Available", "Away", "Offline", "Available"}));
  ASSERT_TRUE(world->account("jabber")->isConnected()) << "choosing Available logged everything in";

  // The titles are read when the test is scheduled: here the Offline item names the offline service.
  world->apply(sim::SimEvent::accountDisconnect("jabber"));
  clearLog();
  extra->runSelfTestDuration(1, 0.0);
  advance(1.0);
  EXPECT_EQ(performedTitles(), std::vector<std::string>{"Offline (Jabber)"});
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(VelmoKibExtraSelfTestTest, TheScreenSharingTestMovesTheTimeLineByFourOnly) {
  makeDefaultWorld();
  makeStartedExtra();
  extra->runSelfTestDuration(4, 10.0);
  EXPECT_EQ(VelmoKibExtra::selfTestTimeLineOffset(), 4.0);
  advance(1.9);
  EXPECT_FALSE(extra->isScreenSharing());
  advance(0.2);
  EXPECT_TRUE(extra->isScreenSharing());
  EXPECT_EQ(extra->screenSharingName(), nullptr);
  advance(3.8);
  EXPECT_TRUE(extra->isScreenSharing());
  advance(0.2);
  EXPECT_FALSE(extra->isScreenSharing());

  // Laid on a time line already in use, the session starts at its offset and ends past the next base.
  VelmoKibExtra::setSelfTestTimeLineOffset(10);
  const double base = now();
  extra->screenSharing();
  EXPECT_EQ(VelmoKibExtra::selfTestTimeLineOffset(), 14.0);
  advance(12.1);
  EXPECT_TRUE(extra->isScreenSharing());
  advance(3.8);
  EXPECT_TRUE(extra->isScreenSharing());
  advance(0.2);
  EXPECT_FALSE(extra->isScreenSharing());
  EXPECT_NEAR(now() - base, 16.1, 1e-6);
}

TEST_F(VelmoKibExtraSelfTestTest, FailedPreconditionsEndTheRunBeforeAnythingIsScheduled) {
  makeDefaultWorld();
  makeStartedExtra();
  IMService::serviceWithName("Jabber")->setEnabled(false);
  extra->runSelfTestDuration(3, 12.0);
  EXPECT_EQ(testLog(), std::vector<std::string>{
                           "Ending Self-Test: Jabber is not logged in. You need to be logged in at least one account "
                           "per service for this test."});
  EXPECT_EQ(scheduledActions(), 0u);

  // A full run stops at the same test, after the first one was scheduled.
  clearLog();
  extra->runSelfTestDuration(0, 0.0);
  ASSERT_EQ(testLog().size(), 5u);
  EXPECT_EQ(testLog()[2], "Iteration:1 Message: Running test 1 [Change Status Test]");
  EXPECT_EQ(testLog()[4].rfind("Ending Self-Test: Jabber is not logged in.", 0), 0u);
  EXPECT_EQ(scheduledActions(), 5u);
}

TEST_F(VelmoKibExtraSelfTestTest, AnUnknownTestBuddyEndsTheChatTest) {
  makeWorld(kNoJabberBuddyScenario);
  makeStartedExtra();
  // Known is enough: the AIM test buddy is offline and the local-network one away.
  EXPECT_TRUE(extra->isBuddyAvailableOnService("selftest.aim", "AIM"));
  EXPECT_TRUE(extra->isBuddyAvailableOnService("Tess/sepTester", "SubNet"));
  clearLog();

  extra->runSelfTestDuration(2, 12.0);
  EXPECT_EQ(testLog(), std::vector<std::string>{
                           "Ending Self-Test: selftest@jabber.velmo.example is not available. You need to have "
                           "selftest@jabber.velmo.example available as a Jabber buddy for this test."});
  EXPECT_EQ(scheduledActions(), 0u);

  clearLog();
  EXPECT_FALSE(extra->isBuddyAvailableOnService("Tess/sepTaylor", "SubNet"));
  EXPECT_FALSE(extra->isBuddyAvailableOnService("Tess", "SubNet"));
  EXPECT_FALSE(extra->isBuddyAvailableOnService("selftest.aim", "ICQ"));
  EXPECT_EQ(testLog().back(),
            "Ending Self-Test: selftest.aim is not available. You need to have selftest.aim available as a ICQ buddy "
            "for this test.");
}

TEST_F(VelmoKibExtraSelfTestTest, AnUnknownTestOnlyLogsTheDurations) {
  makeDefaultWorld();
  makeStartedExtra();
  extra->runSelfTestDuration(9, 30.0);
  EXPECT_EQ(testLog(), (std::vector<std::string>{kRealDurationLine, kDurationLine}));
  EXPECT_EQ(scheduledActions(), 0u);
  EXPECT_EQ(VelmoKibExtra::selfTestTimeLineOffset(), 0.0);
}

TEST_F(VelmoKibExtraSelfTestTest, ATitleThatIsNotInTheMenuIsPassedOnUnchecked) {
  makeDefaultWorld();
  makeStartedExtra();
  extra->execMenuItemWithTitle(makeString("Display ICQ Buddies"));
  EXPECT_EQ(assertions->failures.size(), 1u) << "the menu is asked for item -1";
  EXPECT_EQ(testLog(), std::vector<std::string>{performed("Display ICQ Buddies")});

  extra->execMenuItemWithTitle(makeString("Away"));
  advance(0.3);
  EXPECT_EQ(extra->_myStatus(), kIMPersonStatusAway);
}

}  // namespace
