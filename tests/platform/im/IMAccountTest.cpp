#include <gtest/gtest.h>

#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMService.h"
#include "tests/platform/im/IMTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using imtest::CentreRecorder;

namespace {

class IMAccountTest : public kibtest::PlatformTest {
 protected:
  IMAccountPtr makeAccount(const IMServicePtr& service, const std::string& login, bool connected,
                           IMPersonStatus myStatus = kIMPersonStatusAvailable) {
    auto account = IMAccount::make(service, login);
    account->setMyStatus(myStatus, "");
    if (connected) account->setLoginStatus(kIMAccountLoginStatusConnected);
    return account;
  }

  IMServicePtr aim = IMService::make("AIM", "AIM", "AIM");
  IMServicePtr jabber = IMService::make("Jabber", "Jabber", "Jabber");
};

}  // namespace

TEST_F(IMAccountTest, StateChangesPostAccountNotificationsOnTheDefaultCentre) {
  auto account = IMAccount::make(aim, "kib");
  CentreRecorder standard(NotificationCenter::defaultCenter());
  CentreRecorder service(IMService::notificationCenter());

  account->setLoginStatus(kIMAccountLoginStatusConnecting);
  account->setLoginStatus(kIMAccountLoginStatusConnecting);
  account->setMyStatus(kIMPersonStatusAway, "Out", "");
  account->setMyStatus(kIMPersonStatusAway, "Out", "");
  account->setInvisible(true);
  account->setInvisible(true);
  account->setActive(false);
  account->setActive(true);

  EXPECT_EQ(standard.names,
            (std::vector<std::string>{IMAccountLoginStatusChangedNotification, IMMeStatusChangedNotification,
                                      IMAccountInvisibilityChangedNotification, IMAccountDeactivatedNotification,
                                      IMAccountActivatedNotification}));
  for (const auto& object : standard.objects) EXPECT_EQ(object.get(), account.get());
  EXPECT_TRUE(service.names.empty());
  EXPECT_FALSE(account->isConnected()) << "connecting is not logged in";
}

TEST_F(IMAccountTest, JustLoggedInLastsAFewSecondsAfterTheLogIn) {
  auto account = IMAccount::make(aim, "kib");
  EXPECT_FALSE(account->justLoggedIn());
  account->setLoginStatus(kIMAccountLoginStatusConnected);
  EXPECT_TRUE(account->justLoggedIn());
  clock().advance(kIMAccountJustLoggedInInterval - 0.1);
  EXPECT_TRUE(account->justLoggedIn());
  clock().advance(0.2);
  EXPECT_FALSE(account->justLoggedIn());
  account->setLoginStatus(kIMAccountLoginStatusOffline);
  account->setLoginStatus(kIMAccountLoginStatusConnected);
  EXPECT_TRUE(account->justLoggedIn());
}

TEST_F(IMAccountTest, CapabilitiesNeedEveryBitOfTheMask) {
  auto account = IMAccount::make(aim, "kib");
  account->setCapabilities(kIMAccountCapabilityBuddyList | kIMAccountCapabilityInvisibleLogin);
  EXPECT_TRUE(account->hasCapability(0x8000));
  EXPECT_TRUE(account->hasCapability(0x4000000000ULL));
  EXPECT_TRUE(account->hasCapability(0x4000008000ULL));
  EXPECT_FALSE(account->hasCapability(0x4000008001ULL));
  EXPECT_FALSE(account->hasCapability(0));
}

TEST_F(IMAccountTest, TheLoginHandleIsTheBuddyListEntryForTheLoginOrANewOne) {
  auto account = IMAccount::make(aim, "Kib Runner");
  auto listed = IMHandle::make(account, "kibrunner");
  account->buddyList()->addIMHandle(listed);
  EXPECT_EQ(account->loginIMHandle(), listed);
  EXPECT_TRUE(listed->isLoginIMHandle());

  auto other = IMAccount::make(jabber, "kib@jabber.example");
  auto made = other->loginIMHandle();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->ID(), "kib@jabber.example");
  EXPECT_TRUE(made->isLoginIMHandle());
  EXPECT_EQ(made->account(), other);
  EXPECT_EQ(other->loginIMHandle(), made);
}

TEST_F(IMAccountTest, ControllerListsAccountsByStateAndService) {
  const auto& controller = IMAccountController::sharedInstance();
  auto aimOn = makeAccount(aim, "a", true);
  auto aimOff = makeAccount(aim, "b", false);
  auto jabberOn = makeAccount(jabber, "c", true);
  auto inactive = makeAccount(jabber, "d", true);
  inactive->setActive(false);
  CentreRecorder standard(NotificationCenter::defaultCenter());
  for (const auto& account : {aimOn, aimOff, jabberOn, inactive}) controller->addAccount(account);
  controller->addAccount(aimOn);  // already there
  EXPECT_EQ(standard.names.size(), 4u);
  EXPECT_EQ(standard.names.at(0), IMAccountControllerUpdatedNotification);

  EXPECT_EQ(controller->accounts().size(), 4u);
  EXPECT_EQ(controller->activeAccounts(), (std::vector<IMAccountPtr>{aimOn, aimOff, jabberOn}));
  EXPECT_EQ(controller->connectedAccounts(), (std::vector<IMAccountPtr>{aimOn, jabberOn}));
  EXPECT_EQ(controller->connectedAccountsForService(aim), (std::vector<IMAccountPtr>{aimOn}));
  EXPECT_EQ(controller->connectedAccountsForService(nullptr), (std::vector<IMAccountPtr>{aimOn, jabberOn}));
  EXPECT_EQ(controller->accountsForService(jabber), (std::vector<IMAccountPtr>{jabberOn, inactive}));
  EXPECT_EQ(controller->accountWithUniqueID(aimOff->uniqueID()), aimOff);

  controller->removeAccount(aimOff);
  EXPECT_EQ(controller->accounts().size(), 3u);
  EXPECT_EQ(standard.names.size(), 5u);
}

TEST_F(IMAccountTest, BestAccountIsTheMostAvailableLoggedInOneElseTheFirst) {
  auto away = makeAccount(aim, "away", true, kIMPersonStatusAway);
  auto idle = makeAccount(aim, "idle", true, kIMPersonStatusIdle);
  auto available = makeAccount(aim, "available", true, kIMPersonStatusAvailable);
  auto alsoAvailable = makeAccount(jabber, "also", true, kIMPersonStatusAvailable);
  auto availableButOffline = makeAccount(jabber, "notLoggedIn", false, kIMPersonStatusAvailable);
  auto connecting = makeAccount(jabber, "connecting", false, kIMPersonStatusAvailable);
  connecting->setLoginStatus(kIMAccountLoginStatusConnecting);

  using Controller = IMAccountController;
  EXPECT_EQ(Controller::bestAccountFromAccounts({}), nullptr);
  EXPECT_EQ(Controller::bestAccountFromAccounts({idle, away}), away);
  EXPECT_EQ(Controller::bestAccountFromAccounts({availableButOffline, idle, available, alsoAvailable}), available);
  EXPECT_EQ(Controller::bestAccountFromAccounts({alsoAvailable, available}), alsoAvailable);
  EXPECT_EQ(Controller::bestAccountFromAccounts({connecting, availableButOffline}), connecting)
      << "with none logged in, the first account";
  EXPECT_EQ(Controller::bestAccountFromAccounts({availableButOffline, idle}), idle);
}
