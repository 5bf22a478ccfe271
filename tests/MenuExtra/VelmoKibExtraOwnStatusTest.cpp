#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Number.h"
#include "platform/core/RunLoop.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/TextMeasurer.h"
#include "sim/SimEvent.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

class VelmoKibExtraOwnStatusTest : public kibtest::ExtraTest {
 protected:
  std::vector<std::string> loginsOf(const std::vector<IMAccountPtr>& accounts) {
    std::vector<std::string> logins;
    for (const auto& account : accounts) logins.push_back(account->login());
    return logins;
  }
  void setEveryStatus(IMPersonStatus status) {
    IMDaemonController::sharedController()->setMyStatusMessage(status, nullptr);
    advance(0.3);  // the daemon answers after its status latency
  }
  void postStatusText(ObjectPtr text) {
    DistributedNotificationCenter::defaultCenter().postNotificationName(IMDisplayStatusTextNotification,
                                                                        std::move(text));
    drain();
  }
  static bool somethingIsAnimating() {
    return RunLoop::main().nextDueTime(kDefaultRunLoopMode) != std::numeric_limits<double>::infinity();
  }
};

TEST_F(VelmoKibExtraOwnStatusTest, AnAccountThatIsNotLoggedInReadsOffline) {
  makeWorld(R"({
    "services": [ { "name": "AIM" } ],
    "accounts": [ { "id": "aim", "service": "AIM", "login": "me", "loginStatus": "connecting",
                    "myStatus": "available", "myMessage": "Ready" } ]
  })");
  makeStartedExtra();
  ASSERT_EQ(extra->_bestAccountForStatus(), world->account("aim"));
  EXPECT_EQ(extra->_myStatus(), kIMPersonStatusOffline);
  EXPECT_FALSE(extra->_hasConnectedAccounts());
  EXPECT_FALSE(extra->_overallStatusIsInvisible());
  EXPECT_TRUE(extra->bannerView()->dimmed());
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[3]);

  // Logging in changes the service's status, which brings the icon up to date.
  ASSERT_TRUE(world->apply(sim::SimEvent::accountConnect("aim")));
  EXPECT_EQ(extra->_myStatus(), kIMPersonStatusAvailable);
  EXPECT_TRUE(extra->_hasConnectedAccounts());
  EXPECT_FALSE(extra->bannerView()->dimmed());
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[0]);
}

TEST_F(VelmoKibExtraOwnStatusTest, NoAccountsAtAll) {
  makeWorld(R"({ "services": [ { "name": "AIM" } ] })");
  makeStartedExtra();
  EXPECT_EQ(extra->_bestAccountForStatus(), nullptr);
  EXPECT_EQ(extra->_myStatus(), kIMPersonStatusOffline);
  EXPECT_FALSE(extra->_hasConnectedAccounts());
  EXPECT_FALSE(extra->_overallStatusIsInvisible());
  EXPECT_TRUE(extra->bannerView()->dimmed());
  EXPECT_EQ(extra->activeService(), nullptr);
}

TEST_F(VelmoKibExtraOwnStatusTest, TheIconFollowsTheStatusAndIdleKeepsIt) {
  makeDefaultWorld();
  makeStartedExtra();
  const auto& view = extra->bannerView();
  const auto& images = extra->images();

  setEveryStatus(kIMPersonStatusAway);
  EXPECT_EQ(view->image(), images[1]);
  EXPECT_FALSE(view->dimmed());

  setEveryStatus(kIMPersonStatusIdle);
  ASSERT_EQ(extra->_myStatus(), kIMPersonStatusIdle);
  EXPECT_EQ(view->image(), images[1]) << "idle keeps the Away glyph";
  EXPECT_FALSE(view->dimmed());

  setEveryStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(view->image(), images[0]);
  EXPECT_FALSE(view->dimmed());

  setEveryStatus(kIMPersonStatusOffline);  // logs every account out
  ASSERT_EQ(extra->_myStatus(), kIMPersonStatusOffline);
  EXPECT_EQ(view->image(), images[3]);
  EXPECT_TRUE(view->dimmed());

  // Statuses outside the scale read as the dimmed glyph; invisibility is not shown.
  extra->updateMenuTitleStatus(kIMPersonStatusAvailable);
  extra->updateMenuTitleStatus(kIMPersonStatusNoStatus);
  EXPECT_EQ(view->image(), images[3]);
  EXPECT_TRUE(view->dimmed());
  extra->updateMenuTitleStatus(kIMPersonStatusUnknown);
  EXPECT_TRUE(view->dimmed());
}

TEST_F(VelmoKibExtraOwnStatusTest, InvisibilityNeedsAMajorityOfAvailableConnectedAccounts) {
  makeWorld(R"({
    "services": [ { "name": "AIM" }, { "name": "Jabber" }, { "name": "Other" } ],
    "accounts": [
      { "id": "a", "service": "AIM", "login": "a" },
      { "id": "b", "service": "Jabber", "login": "b" },
      { "id": "c", "service": "Other", "login": "c" },
      { "id": "off", "service": "AIM", "login": "off", "loginStatus": "offline", "invisible": true }
    ]
  })");
  makeExtra();
  auto a = world->account("a"), b = world->account("b"), c = world->account("c");
  EXPECT_FALSE(extra->_overallStatusIsInvisible()) << "an offline invisible account does not count";

  a->setInvisible(true);
  EXPECT_FALSE(extra->_overallStatusIsInvisible()) << "one of three";
  b->setInvisible(true);
  EXPECT_TRUE(extra->_overallStatusIsInvisible()) << "two of three";

  ASSERT_TRUE(world->apply(sim::SimEvent::accountDisconnect("c")));
  b->setInvisible(false);
  EXPECT_FALSE(extra->_overallStatusIsInvisible()) << "one of two is a tie";

  b->setInvisible(true);
  b->setMyStatus(kIMPersonStatusAway, "");
  EXPECT_TRUE(extra->_overallStatusIsInvisible()) << "only available accounts are counted";
  a->setMyStatus(kIMPersonStatusAway, "");
  EXPECT_FALSE(extra->_overallStatusIsInvisible()) << "nothing counted";
}

TEST_F(VelmoKibExtraOwnStatusTest, VideoCallingAccountsDoNotCount) {
  makeWorld(R"({
    "services": [ { "name": "AIM" }, { "name": "Vistel", "persistent": false } ],
    "accounts": [
      { "id": "aim", "service": "AIM", "login": "me", "loginStatus": "offline" },
      { "id": "vistel", "service": "Vistel", "login": "me", "myStatus": "away" },
      { "id": "disabled", "service": "AIM", "login": "old", "active": false }
    ]
  })");
  makeStartedExtra();
  EXPECT_EQ(loginsOf(IMAccountController::sharedInstance()->activeAccounts()),
            (std::vector<std::string>{"me", "me"}));
  EXPECT_EQ(loginsOf(extra->_activeAccounts()), std::vector<std::string>{"me"});
  EXPECT_EQ(extra->_activeAccounts().front(), world->account("aim"));
  EXPECT_FALSE(extra->_hasConnectedAccounts()) << "only the video-calling account is connected";
  EXPECT_EQ(extra->_myStatus(), kIMPersonStatusOffline);
  EXPECT_TRUE(extra->bannerView()->dimmed());

  ASSERT_TRUE(world->apply(sim::SimEvent::accountConnect("aim")));
  EXPECT_TRUE(extra->_hasConnectedAccounts());
  EXPECT_EQ(extra->_bestAccountForStatus(), world->account("aim"));
}

TEST_F(VelmoKibExtraOwnStatusTest, StatusTextScrollsThreeCyclesThenCollapses) {
  TextMeasurer::setCurrent(std::make_shared<kibtest::TenPointMeasurer>());
  makeDefaultWorld();
  makeStartedExtra();
  auto view = extra->bannerView();

  postStatusText(makeString("hello"));  // 50 wide: the slot opens to 85, a cycle is 70 points
  ASSERT_TRUE(view->bannerString());
  EXPECT_EQ(view->bannerString()->value(), "hello");
  advance(1.05);
  EXPECT_TRUE(view->revealed());
  EXPECT_NEAR(extra->length(), 85.0, 0.5);
  EXPECT_TRUE(somethingIsAnimating()) << "scrolling";
  const double revealedLength = extra->length();

  // Reports of cycles 1 and 2 change nothing.
  extra->statusBannerViewBannerFinishedScrollCycle(*view, 1);
  extra->statusBannerViewBannerFinishedScrollCycle(*view, 2);
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 0u);
  EXPECT_FALSE(view->isCollapsed());

  // Scrolling began at about 1.017 s; three cycles of 35 ticks take 3.5 s.
  advance(3.35);  // 4.4 s
  EXPECT_EQ(extra->length(), revealedLength);
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 0u);
  advance(0.2);  // 4.6 s: the third cycle has ended
  EXPECT_GT(RunLoop::main().pendingPerformCount(view.get()), 0u) << "collapsing";
  EXPECT_LT(extra->length(), revealedLength);
  advance(1.0);
  EXPECT_NEAR(extra->length(), 24.0, 0.5);
  EXPECT_TRUE(view->isCollapsed());
  EXPECT_FALSE(somethingIsAnimating()) << "the scroll stopped";
  EXPECT_EQ(view->bannerString()->value(), "hello") << "the text stays";

  // A cycle reported while collapsed only stops the scroll.
  view->startBannerAnimation();
  ASSERT_TRUE(somethingIsAnimating());
  extra->statusBannerViewBannerFinishedScrollCycle(*view, 3);
  EXPECT_FALSE(somethingIsAnimating());
  EXPECT_TRUE(view->isCollapsed());

  // An empty text while collapsed does nothing.
  postStatusText(makeString(""));
  EXPECT_FALSE(somethingIsAnimating());
  EXPECT_EQ(view->bannerString()->value(), "hello");

  // While revealed, an empty text or one that is no string collapses the banner.
  postStatusText(makeString("hi there"));
  advance(1.05);
  ASSERT_TRUE(view->revealed());
  postStatusText(makeNumber(7));
  EXPECT_GT(RunLoop::main().pendingPerformCount(view.get()), 0u) << "collapsing";
  EXPECT_EQ(view->bannerString()->value(), "hi there");
  advance(1.05);
  EXPECT_TRUE(view->isCollapsed());
  postStatusText(makeString("again"));
  advance(1.05);
  ASSERT_TRUE(view->revealed());
  postStatusText(nullptr);
  EXPECT_GT(RunLoop::main().pendingPerformCount(view.get()), 0u) << "collapsing";
  EXPECT_EQ(view->bannerString()->value(), "again");
}

}  // namespace
