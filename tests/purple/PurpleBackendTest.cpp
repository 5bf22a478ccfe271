#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bus/BusConnection.h"
#include "platform/core/Clock.h"
#include "platform/core/Log.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMMessagingWorld.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMService.h"
#include "platform/im/IMServiceAgent.h"
#include "platform/ui/Workspace.h"
#include "purple/PurpleApplication.h"
#include "purple/PurpleBackend.h"
#include "tests/purple/FakePurpleService.h"
#include "tests/support/ChildProcess.h"

namespace {

using kibtest::FakePurpleService;
using Ids = std::vector<std::int32_t>;

// The backend against a fake libpurple client on a private bus. Bus traffic
// is real, so the main loop runs on the real clock, every wait bounded.
class PurpleBackendTest : public ::testing::Test {
 protected:
  void SetUp() override {
    previousClock_ = platform::Clock::setCurrent(nullptr);
    platform::RunLoop::main().reset();
    platform::IMResetMessagingWorld();
    previousSink_ = platform::Log::setSink([this](platform::Log::Channel channel, const std::string& line) {
      if (channel == platform::Log::Channel::Warning) warnings_.push_back(line);
    });
    fake_ = std::make_unique<FakePurpleService>(bus_.address());
    fillWorld();
    connection_ = kibbus::BusConnection::openAddress(bus_.address());
    backend_ = std::make_shared<kibpurple::PurpleBackend>(*connection_);
    backend_->setActivityObserver([this](const std::string& line) { activity_.push_back(line); });
    auto& centre = platform::NotificationCenter::defaultCenter();
    for (const char* name : {platform::IMDaemonDidConnectNotification, platform::IMDaemonDidDisconnectNotification})
      tokens_.push_back(centre.addObserverForName(std::string(name), nullptr,
                                                  [this, name](const auto&) { daemonNotifications_.push_back(name); }));
  }

  void TearDown() override {
    for (const auto& token : tokens_) platform::NotificationCenter::defaultCenter().removeObserver(token.get());
    platform::IMDaemonController::sharedController()->setBackend(nullptr);
    platform::Workspace::sharedWorkspace().setURLHandler(nullptr);
    backend_.reset();
    connection_.reset();
    fake_.reset();
    platform::IMResetMessagingWorld();
    platform::RunLoop::main().reset();
    platform::Log::setSink(previousSink_);
    platform::Clock::setCurrent(previousClock_);
  }

  // One XMPP and one AIM account; Sam has a handle on each (one libpurple
  // contact), Kim is idle; two saved statuses.
  void fillWorld() {
    auto& f = *fake_;
    f.set("PurpleCoreGetUi", 0, std::string("gtk-gaim"));
    f.set("PurpleSavedstatusGetCurrent", 0, 0);
    f.set("PurpleAccountsGetAll", 0, Ids{10, 11});
    account(10, "me@example.org/home", "prpl-jabber", "XMPP", 100, 2, "", 0);
    account(11, "meonaim", "prpl-aim", "AIM", 101, 5, "Lunch", 1);
    f.set("PurpleFindBuddies", 10, Ids{20, 22});
    f.set("PurpleFindBuddies", 11, Ids{21});
    buddy(20, 10, "sam@example.org", "Sam", 30, 50, 102, 2, "", false, 0x10);
    buddy(21, 11, "samonaim", "Sam", 30, 51, 103, 5, "Out", false, 0);
    buddy(22, 10, "kim@example.org", "Kim", 31, 52, 104, 2, "", true, 0x1);
    f.set("PurpleSavedstatusesGetAll", 0, Ids{60, 61, 62});
    saved(60, 2, "Working", false);
    saved(61, 5, "In a meeting", false);
    saved(62, 5, "Gone", true);
  }

  void status(std::int32_t id, std::int32_t primitive, const std::string& message) {
    fake_->set("PurpleStatusGetType", id, id + 1000);
    fake_->set("PurpleStatusTypeGetPrimitive", id + 1000, primitive);
    fake_->set("PurpleStatusGetAttrString", id, message);
  }

  void account(std::int32_t id, const std::string& user, const std::string& protocol, const std::string& name,
               std::int32_t statusID, std::int32_t primitive, const std::string& message, std::int32_t invisible) {
    auto& f = *fake_;
    f.set("PurpleAccountGetUsername", id, user);
    f.set("PurpleAccountGetProtocolId", id, protocol);
    f.set("PurpleAccountGetProtocolName", id, name);
    f.set("PurpleAccountGetEnabled", id, 1);
    f.set("PurpleAccountIsConnected", id, 1);
    f.set("PurpleAccountIsConnecting", id, 0);
    f.set("PurpleAccountGetActiveStatus", id, statusID);
    f.set("PurpleAccountGetStatusTypeWithPrimitive", id, invisible ? 77 : 0);
    status(statusID, primitive, message);
  }

  void buddy(std::int32_t id, std::int32_t accountID, const std::string& name, const std::string& alias,
             std::int32_t contact, std::int32_t presence, std::int32_t statusID, std::int32_t primitive,
             const std::string& message, bool idle, std::int32_t caps) {
    auto& f = *fake_;
    f.set("PurpleBuddyGetAccount", id, accountID);
    f.set("PurpleBuddyGetName", id, name);
    f.set("PurpleBuddyGetAlias", id, alias);
    f.set("PurpleBuddyGetContact", id, contact);
    f.set("PurpleBuddyGetGroup", id, 0);
    f.set("PurpleBuddyGetPresence", id, presence);
    f.set("PurplePresenceIsOnline", presence, 1);
    f.set("PurplePresenceGetActiveStatus", presence, statusID);
    f.set("PurplePresenceIsIdle", presence, idle ? 1 : 0);
    f.set("PurplePresenceGetIdleTime", presence, 0);
    f.set("PurpleBuddyGetMediaCaps", id, caps);
    status(statusID, primitive, message);
  }

  void saved(std::int32_t id, std::int32_t primitive, const std::string& message, bool transient) {
    fake_->set("PurpleSavedstatusGetTitle", id, message);
    fake_->set("PurpleSavedstatusGetType", id, primitive);
    fake_->set("PurpleSavedstatusGetMessage", id, message);
    fake_->set("PurpleSavedstatusIsTransient", id, transient ? 1 : 0);
  }

  bool runUntil(const std::function<bool()>& condition, double timeout = 5.0) {
    auto& loop = platform::RunLoop::main();
    const double limit = platform::Clock::current().now() + timeout;
    while (!condition()) {
      if (platform::Clock::current().now() >= limit) return false;
      loop.performBlock(0.02, platform::kDefaultRunLoopMode, [] {});
      loop.runUntil(std::min(limit, platform::Clock::current().now() + 0.02));
    }
    return true;
  }

  bool connected() { return platform::IMDaemonController::sharedController()->isConnected(); }
  platform::IMAccountPtr account(const std::string& uniqueID) {
    return platform::IMAccountController::sharedInstance()->accountWithUniqueID(uniqueID);
  }
  platform::IMHandlePtr handle(const std::string& uniqueID, const std::string& id) {
    auto owner = account(uniqueID);
    return owner ? owner->buddyList()->imHandleWithID(id) : nullptr;
  }
  int warningsContaining(const std::string& text) {
    int count = 0;
    for (const auto& line : warnings_) count += line.find(text) != std::string::npos;
    return count;
  }
  void startConnected() {
    fake_->claimName();
    backend_->start();
    ASSERT_TRUE(runUntil([this] { return connected(); }));
  }

  kibtest::PrivateBus bus_;
  std::unique_ptr<FakePurpleService> fake_;
  std::unique_ptr<kibbus::BusConnection> connection_;
  std::shared_ptr<kibpurple::PurpleBackend> backend_;
  std::vector<std::string> activity_, warnings_, daemonNotifications_;
  std::vector<platform::ObjectPtr> tokens_;
  std::shared_ptr<platform::Clock> previousClock_;
  platform::Log::Sink previousSink_;
};

const char* const kXMPP = "purple:prpl-jabber:me@example.org/home";
const char* const kAIM = "purple:prpl-aim:meonaim";

TEST_F(PurpleBackendTest, MirrorsTheClientsAccountsBuddiesPeopleAndSavedStatuses) {
  startConnected();
  EXPECT_EQ(daemonNotifications_, std::vector<std::string>{platform::IMDaemonDidConnectNotification});
  auto xmpp = account(kXMPP), aim = account(kAIM);
  ASSERT_TRUE(xmpp && aim);
  EXPECT_EQ(xmpp->service()->name(), "Jabber");
  EXPECT_EQ(aim->service()->name(), "AIM");
  EXPECT_EQ(xmpp->login(), "me@example.org");
  EXPECT_TRUE(xmpp->isConnected());
  EXPECT_EQ(xmpp->myStatus(), platform::kIMPersonStatusAvailable);
  EXPECT_EQ(aim->myStatus(), platform::kIMPersonStatusAway);
  EXPECT_EQ(aim->myStatusMessage(), "Lunch");
  EXPECT_TRUE(xmpp->hasCapability(platform::kIMAccountCapabilityBuddyList));
  EXPECT_FALSE(xmpp->hasCapability(platform::kIMAccountCapabilityInvisibleLogin));
  EXPECT_TRUE(aim->hasCapability(platform::kIMAccountCapabilityInvisibleLogin));
  EXPECT_EQ(platform::IMService::serviceWithName("Jabber")->status(), platform::kIMPersonStatusAvailable);

  auto sam = handle(kXMPP, "sam@example.org"), samOnAIM = handle(kAIM, "samonaim"),
       kim = handle(kXMPP, "kim@example.org");
  ASSERT_TRUE(sam && samOnAIM && kim);
  EXPECT_EQ(sam->nickname(), "Sam");
  EXPECT_EQ(sam->status(), platform::kIMPersonStatusAvailable);
  EXPECT_TRUE(sam->hasAudio() && sam->hasVideo());
  EXPECT_EQ(samOnAIM->status(), platform::kIMPersonStatusAway);
  EXPECT_EQ(samOnAIM->statusMessage(), "Out");
  EXPECT_TRUE(sam->person() && sam->person() == samOnAIM->person());  // one contact, one person
  EXPECT_EQ(kim->status(), platform::kIMPersonStatusIdle);
  EXPECT_TRUE(kim->hasAudio() && !kim->hasVideo());

  const auto& agent = platform::IMServiceAgent::sharedAgent();
  EXPECT_EQ(agent->myAvailableMessages(), std::vector<std::string>{"Working"});
  EXPECT_EQ(agent->myAwayMessages(), std::vector<std::string>{"In a meeting"});  // the transient one left out
  EXPECT_EQ(backend_->vcCapabilities(), platform::kIMVCCapabilityConference | platform::kIMVCCapabilityCamera |
                                            platform::kIMVCCapabilityMicrophone);
  EXPECT_TRUE(warnings_.empty()) << warnings_.front();
}

TEST_F(PurpleBackendTest, NonsenseFromTheClientIsSkippedAndSaidOnce) {
  fake_->set("PurpleAccountsGetAll", 0, Ids{10, 11, 12, -3});
  fake_->set("PurpleAccountGetUsername", 12, 42);  // a number where a name belongs; 12 has nothing else
  fake_->set("PurpleFindBuddies", 10, Ids{20, 22, 23, 24});
  fake_->set("PurpleBuddyGetAccount", 24, 10);  // 23 vanished; 24 has a primitive out of range
  fake_->set("PurpleBuddyGetName", 24, std::string("odd@example.org"));
  buddy(24, 10, "odd@example.org", "Odd", 32, 54, 106, 42, "", false, 0);
  startConnected();

  EXPECT_EQ(platform::IMAccountController::sharedInstance()->accounts().size(), 2u);
  EXPECT_TRUE(handle(kXMPP, "sam@example.org"));
  EXPECT_FALSE(handle(kXMPP, "odd@example.org"));
  EXPECT_EQ(account(kXMPP)->buddyList()->count(), 2u);
  EXPECT_EQ(warningsContaining("PurpleAccountGetUsername(12)"), 1);
  EXPECT_EQ(warningsContaining("lists the id -3"), 1);
  EXPECT_EQ(warningsContaining("PurpleBuddyGetAccount(23)"), 1);
  EXPECT_EQ(warningsContaining("status primitive 42"), 1);

  // The same nonsense again is not said again; a signal of the wrong shape is said and skipped.
  fake_->emit("BuddyStatusChanged", 24);
  fake_->emitWrongly("BuddySignedOn");
  ASSERT_TRUE(runUntil([this] { return warningsContaining("BuddySignedOn") == 1; }));
  EXPECT_EQ(warningsContaining("status primitive 42"), 1);
  EXPECT_TRUE(connected());
}

TEST_F(PurpleBackendTest, SignalsKeepTheMirrorCurrent) {
  startConnected();
  auto sam = handle(kXMPP, "sam@example.org");
  struct Case {
    const char* signal;
    std::function<void()> change;
    std::function<bool()> seen;
  };
  const std::vector<Case> cases = {
      {"BuddyStatusChanged", [this] { status(102, 5, "Brb"); },
       [&] { return sam->status() == platform::kIMPersonStatusAway && sam->statusMessage() == "Brb"; }},
      {"BuddySignedOff", [this] { fake_->set("PurplePresenceIsOnline", 50, 0); },
       [&] { return sam->status() == platform::kIMPersonStatusOffline; }},
      {"BlistNodeAliased", [this] { fake_->set("PurpleBuddyGetAlias", 20, std::string("Samantha")); },
       [&] { return sam->nickname() == "Samantha"; }},
      {"BuddyRemoved", [] {}, [this] { return !handle(kXMPP, "sam@example.org"); }},
      {"AccountStatusChanged", [this] { status(100, 6, "Far away"); },
       [this] { return account(kXMPP)->myStatus() == platform::kIMPersonStatusAway; }},
      {"AccountSignedOff", [this] { fake_->set("PurpleAccountIsConnected", 10, 0); },
       [this] { return !account(kXMPP)->isConnected(); }},
      {"SavedstatusAdded",
       [this] {
         fake_->set("PurpleSavedstatusesGetAll", 0, Ids{60, 61, 63});
         saved(63, 2, "Coding", false);
       },
       [] { return platform::IMServiceAgent::sharedAgent()->myAvailableMessages().size() == 2; }},
  };
  for (const auto& c : cases) {
    c.change();
    const std::int32_t subject = std::string(c.signal).rfind("Account", 0) == 0 ? 10 : 20;
    fake_->emit(c.signal, std::string(c.signal).rfind("Saved", 0) == 0 ? 63 : subject);
    EXPECT_TRUE(runUntil(c.seen)) << c.signal;
  }
}

TEST_F(PurpleBackendTest, FollowsTheClientAwayAndBack) {
  backend_->start();
  EXPECT_FALSE(runUntil([this] { return connected(); }, 0.3));  // no client yet
  fake_->claimName();
  ASSERT_TRUE(runUntil([this] { return connected(); }));
  fake_->releaseName();
  ASSERT_TRUE(runUntil([this] { return !connected(); }));
  EXPECT_TRUE(platform::IMAccountController::sharedInstance()->accounts().empty());
  fake_->claimName();
  ASSERT_TRUE(runUntil([this] { return connected() && account(kXMPP); }));
  EXPECT_EQ(daemonNotifications_, (std::vector<std::string>{platform::IMDaemonDidConnectNotification,
                                                            platform::IMDaemonDidDisconnectNotification,
                                                            platform::IMDaemonDidConnectNotification}));
}

TEST_F(PurpleBackendTest, RequestsBecomeLibpurpleCalls) {
  fake_->set("PurpleSavedstatusFindTransientByTypeAndMessage", 5, 0);
  fake_->set("PurpleSavedstatusNew", 5, 900);
  fake_->set("PurpleSavedstatusSetMessage", 900, FakePurpleService::Nothing{});
  fake_->set("PurpleSavedstatusActivate", 900, FakePurpleService::Nothing{});
  fake_->set("PurpleSavedstatusFindTransientByTypeAndMessage", 4, 901);  // reused, not made
  fake_->set("PurpleSavedstatusActivate", 901, FakePurpleService::Nothing{});
  fake_->set("PurpleAccountSetEnabled", 11, FakePurpleService::Nothing{});
  fake_->set("PurpleAccountConnect", 11, FakePurpleService::Nothing{});
  fake_->set("PurpleConversationNew", 1, 700);
  fake_->set("PurpleConversationPresent", 700, FakePurpleService::Nothing{});
  fake_->set("PurpleBlistSetVisible", 1, FakePurpleService::Nothing{});
  startConnected();
  auto application = std::make_shared<kibpurple::PurpleApplication>(backend_);
  kibpurple::PurpleApplication::install(application);
  const auto& daemon = platform::IMDaemonController::sharedController();

  daemon->setMyStatusMessage(platform::kIMPersonStatusAway, platform::makeString("Away"));
  ASSERT_TRUE(runUntil([this] { return fake_->called("PurpleSavedstatusActivate(900)"); }));
  EXPECT_TRUE(fake_->called("PurpleSavedstatusNew(\"\", 5)"));
  EXPECT_TRUE(fake_->called("PurpleSavedstatusSetMessage(900, \"Away\")"));

  // Invisible: the status and every account's setting in one turn make one activation.
  daemon->setMyStatusMessage(platform::kIMPersonStatusAvailable, nullptr);
  for (const auto& each : platform::IMAccountController::sharedInstance()->accounts()) {
    each->setInvisible(true);
    each->writeSettings();
  }
  ASSERT_TRUE(runUntil([this] { return fake_->called("PurpleSavedstatusFindTransientByTypeAndMessage(4, \"\")"); }));
  EXPECT_TRUE(fake_->called("PurpleSavedstatusActivate(901)"));
  EXPECT_FALSE(fake_->called("PurpleSavedstatusFindTransientByTypeAndMessage(2"));

  fake_->set("PurpleAccountGetEnabled", 11, 0);
  fake_->set("PurpleAccountIsConnected", 11, 0);
  fake_->emit("AccountDisabled", 11);
  ASSERT_TRUE(runUntil([this] { return !account(kAIM)->isActive(); }));
  daemon->loginAllAccounts();
  EXPECT_TRUE(fake_->called("PurpleAccountSetEnabled(11, \"gtk-gaim\", 1)"));
  EXPECT_TRUE(fake_->called("PurpleAccountConnect(11)"));
  EXPECT_FALSE(fake_->called("PurpleAccountConnect(10)"));

  auto& workspace = platform::Workspace::sharedWorkspace();
  EXPECT_TRUE(workspace.openURL("Parlo:compose?service=Jabber&id=sam%40example.org&style=IM"));
  EXPECT_TRUE(fake_->called("PurpleConversationNew(1, 10, \"sam@example.org\")"));
  EXPECT_TRUE(fake_->called("PurpleConversationPresent(700)"));
  EXPECT_TRUE(workspace.openURL("Parlo:openbuddylist?service=Jabber"));
  EXPECT_TRUE(fake_->called("PurpleBlistSetVisible(1)"));
  EXPECT_FALSE(workspace.openURL("Parlo:compose?service=ICQ&id=sam%40example.org"));  // no such account
  EXPECT_FALSE(workspace.openURL("http://example.org/"));
}

}  // namespace
