#include <gtest/gtest.h>

#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMDaemonListener.h"
#include "platform/im/IMHandleRegistrar.h"
#include "platform/im/IMMessagingWorld.h"
#include "platform/im/IMService.h"
#include "platform/im/IMServiceAgent.h"
#include "tests/platform/im/IMTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using imtest::CentreRecorder;

namespace {

// A backend that writes down what it was asked.
class RecordingBackend final : public IMDaemonBackend {
 public:
  void addListener(const std::string& id, std::uint32_t caps) override {
    calls.push_back("add " + id + " " + std::to_string(caps));
  }
  void removeListener(const std::string& id) override { calls.push_back("remove " + id); }
  void setMyStatus(IMPersonStatus status, const StringPtr& message) override {
    calls.push_back("status " + std::to_string(status) + " " + (message ? "'" + message->value() + "'" : "nil"));
  }
  void loginAllAccounts() override { calls.push_back("login all"); }
  void loginAccount(const IMAccountPtr& account) override { calls.push_back("login " + account->login()); }
  void writeAccountSettings(const IMAccountPtr& account) override {
    calls.push_back("settings " + account->login() + (account->isInvisible() ? " invisible" : " visible"));
  }
  bool isConnected() const override { return connected; }
  std::uint64_t vcCapabilities() const override { return 0xE0000; }
  ObjectPtr valueOfPersistentProperty(const std::string& key) const override {
    return key == kKBDaemonPropertyNowPlayingFormatString ? makeString("%@ playing") : nullptr;
  }

  std::vector<std::string> calls;
  bool connected = true;
};

class IMDaemonControllerTest : public kibtest::PlatformTest {};

}  // namespace

TEST_F(IMDaemonControllerTest, WithoutABackendCommandsAreDroppedAndQueriesAnswerZero) {
  const auto& controller = IMDaemonController::sharedController();
  controller->setMyStatusMessage(kIMPersonStatusAway, makeString("x"));
  controller->loginAllAccounts();
  EXPECT_FALSE(controller->isConnected());
  EXPECT_EQ(controller->listener()->vcCapabilities(), 0u);
  EXPECT_EQ(controller->listener()->valueOfPersistentProperty(kKBDaemonPropertyNowPlayingFormatString), nullptr);
}

TEST_F(IMDaemonControllerTest, RequestsReachTheBackendAndTheObserversWithTheirArguments) {
  const auto& controller = IMDaemonController::sharedController();
  auto backend = std::make_shared<RecordingBackend>();
  controller->setBackend(backend);
  std::vector<std::string> seen;
  auto token = controller->addRequestObserver([&](const IMDaemonRequest& r) { seen.push_back(r.description()); });
  auto account = IMAccount::make(IMService::make("AIM", "AIM", "AIM"), "kib", "aim");

  controller->addListenerIDCapabilities("com.velmo.menuextra.Parlo", kKBListenerCapManageStatus);
  controller->setMyStatusMessage(kIMPersonStatusAvailable, makeString("Working"));
  controller->setMyStatusMessage(kIMPersonStatusOffline, nullptr);
  controller->loginAllAccounts();
  account->loginAccount();
  account->setInvisible(true);
  account->writeSettings();
  bool connected = controller->isConnected();
  auto caps = controller->listener()->vcCapabilities();
  auto format = controller->listener()->valueOfPersistentProperty(kKBDaemonPropertyNowPlayingFormatString);
  controller->removeListenerID("com.velmo.menuextra.Parlo");

  EXPECT_TRUE(connected);
  EXPECT_EQ(caps, 0xE0000u);
  EXPECT_EQ(stringValue(format), "%@ playing");
  EXPECT_EQ(backend->calls, (std::vector<std::string>{"add com.velmo.menuextra.Parlo 1", "status 4 'Working'",
                                                      "status 1 nil", "login all", "login kib",
                                                      "settings kib invisible", "remove com.velmo.menuextra.Parlo"}));
  EXPECT_EQ(seen, (std::vector<std::string>{
                      "addListenerID:capabilities: \"com.velmo.menuextra.Parlo\" 0x1",
                      "setMyStatus:message: 4 \"Working\"",
                      "setMyStatus:message: 1 nil",
                      "loginAllAccounts",
                      "loginAccount aim",
                      "writeSettings aim invisible",
                      "isConnected -> YES",
                      "vcCapabilities -> 0xe0000",
                      "valueOfPersistentProperty: \"kKBDaemonPropertyNowPlayingFormatString\" -> \"%@ playing\"",
                      "removeListenerID: \"com.velmo.menuextra.Parlo\"",
                  }));
  EXPECT_TRUE(controller->listeners().empty());

  controller->removeRequestObserver(token);
  controller->loginAllAccounts();
  EXPECT_EQ(seen.size(), 10u);
}

TEST_F(IMDaemonControllerTest, ConnectionChangesPostOnTheDefaultCentre) {
  const auto& controller = IMDaemonController::sharedController();
  CentreRecorder standard(NotificationCenter::defaultCenter());
  controller->noteDaemonDidDisconnect();
  controller->noteDaemonDidConnect();
  EXPECT_EQ(standard.names,
            (std::vector<std::string>{IMDaemonDidDisconnectNotification, IMDaemonDidConnectNotification}));
  EXPECT_EQ(standard.objects.at(0), controller);
}

TEST_F(IMDaemonControllerTest, ResetClearsTheWholeMessagingWorld) {
  auto oldController = IMDaemonController::sharedController();
  oldController->setBackend(std::make_shared<RecordingBackend>());
  oldController->addListenerIDCapabilities("x", 1);
  auto service = IMService::make("AIM", "AIM", "AIM");
  IMService::registerService(service);
  IMAccountController::sharedInstance()->addAccount(IMAccount::make(service, "kib"));
  IMServiceAgent::sharedAgent()->setMyAwayMessages({"Gone"});
  IMServiceAgent::sharedAgent()->launchIfNecessary();
  IMHandleRegistrar::sharedInstance()->setNameStyle(kIMNameStyleScreenName);

  IMResetMessagingWorld();

  const auto& controller = IMDaemonController::sharedController();
  EXPECT_NE(controller, oldController);
  EXPECT_EQ(controller->backend(), nullptr);
  EXPECT_TRUE(controller->listeners().empty());
  EXPECT_TRUE(IMService::allServices().empty());
  EXPECT_TRUE(IMAccountController::sharedInstance()->accounts().empty());
  EXPECT_TRUE(IMServiceAgent::sharedAgent()->myAwayMessages().empty());
  EXPECT_FALSE(IMServiceAgent::sharedAgent()->isLaunched());
  EXPECT_EQ(IMHandleRegistrar::sharedInstance()->nameStyle(), kIMNameStyleFullName);
}
