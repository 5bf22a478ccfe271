#include <gtest/gtest.h>

#include "platform/core/Number.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMMelodix.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "platform/im/IMServiceAgent.h"
#include "tests/platform/im/IMTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using imtest::CentreRecorder;

namespace {

class IMServiceTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    aim = IMService::make("AIM", "AIM", "AIM");
    subnet = IMService::make("SubNet", "SubNet", "Ambrel");
    vistel = IMService::make("Vistel", "VistelInternal", "Vistel");
    for (const auto& service : {aim, subnet, vistel}) IMService::registerService(service);
  }

  IMHandlePtr addBuddy(const IMAccountPtr& account, const std::string& id, IMPersonStatus status,
                       IMPersonPtr person = nullptr) {
    auto handle = IMHandle::make(account, id, std::move(person));
    handle->setStatus(status);
    account->buddyList()->addIMHandle(handle);
    return handle;
  }

  static std::string text(const DictionaryPtr& info, const char* key) { return stringValue(info->objectForKey(key)); }

  IMServicePtr aim, subnet, vistel;
};

}  // namespace

TEST_F(IMServiceTest, LooksServicesUpByNameAndInternalName) {
  EXPECT_EQ(IMService::allServices(), (std::vector<IMServicePtr>{aim, subnet, vistel}));
  EXPECT_EQ(IMService::serviceWithName("SubNet"), subnet);
  EXPECT_EQ(IMService::serviceWithName("Ambrel"), nullptr) << "short names are not names";
  EXPECT_EQ(IMService::serviceWithInternalName("VistelInternal"), vistel);
  EXPECT_EQ(IMService::subnetService(), subnet);
  EXPECT_EQ(IMService::vistelService(), vistel);
  EXPECT_FALSE(IMService::registerService(IMService::make("AIM", "Other", "Other")));
  EXPECT_EQ(&IMService::notificationCenter(), &NotificationCenter::centerNamed("service"));
  EXPECT_EQ(&IMServiceAgent::sharedAgent()->notificationCenter(), &IMService::notificationCenter());

  IMService::removeAllServices();
  EXPECT_EQ(IMService::subnetService(), nullptr);
  EXPECT_TRUE(IMService::allServices().empty());
}

TEST_F(IMServiceTest, StatusAndEnablingPostOnTheServiceCentre) {
  CentreRecorder service(IMService::notificationCenter());
  aim->setStatus(kIMPersonStatusAvailable);
  aim->setStatus(kIMPersonStatusAvailable);
  aim->setEnabled(false);
  EXPECT_EQ(service.names, (std::vector<std::string>(2, IMServiceStatusChangedNotification)));
  EXPECT_EQ(service.objects.at(0), aim);
}

TEST_F(IMServiceTest, PersonInfoComesFromTheBuddyListsOfTheServicesAccounts) {
  auto home = IMAccount::make(aim, "home");
  auto work = IMAccount::make(aim, "work");
  auto local = IMAccount::make(subnet, "me@laptop");
  for (const auto& account : {home, work, local}) IMAccountController::sharedInstance()->addAccount(account);
  addBuddy(home, "Jane Doe", kIMPersonStatusAway, IMPerson::make("jane", "Jane", "Doe"));
  addBuddy(work, "janedoe", kIMPersonStatusAvailable, IMPerson::make("jane", "Jane", "Doe"));
  addBuddy(home, "bob", kIMPersonStatusOffline);
  addBuddy(local, "tess@studio", kIMPersonStatusAvailable, IMPerson::make("tess", "Tess", "Tester"));

  auto jane = aim->infoForScreenName("JANEDOE");
  ASSERT_NE(jane, nullptr);
  EXPECT_EQ(text(jane, IMPersonFirstNameKey), "Jane");
  EXPECT_EQ(text(jane, IMPersonLastNameKey), "Doe");
  EXPECT_EQ(text(jane, IMPersonScreenNameKey), "janedoe") << "the most available of the two handles";
  EXPECT_EQ(integerValue(jane->objectForKey(IMPersonStatusKey).get()), 4);
  EXPECT_EQ(text(jane, IMPersonServiceNameKey), "AIM");
  EXPECT_EQ(aim->infoForScreenName("tess@studio"), nullptr) << "another service's buddy";
  EXPECT_EQ(aim->infoForScreenName(""), nullptr);

  auto all = aim->infoForAllScreenNames();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(text(all[0], IMPersonScreenNameKey), "janedoe");
  EXPECT_EQ(text(all[1], IMPersonScreenNameKey), "bob");
  EXPECT_EQ(text(all[1], IMPersonFirstNameKey), "");
  auto localInfo = subnet->infoForAllScreenNames();
  ASSERT_EQ(localInfo.size(), 1u);
  EXPECT_EQ(text(localInfo[0], IMPersonFirstNameKey), "Tess");
  EXPECT_TRUE(vistel->infoForAllScreenNames().empty());
}

TEST_F(IMServiceTest, AgentKeepsSavedMessagesImagesAndMusicInterop) {
  const auto& agent = IMServiceAgent::sharedAgent();
  CentreRecorder service(IMService::notificationCenter());
  agent->setMyAvailableMessages({"Coding"});
  agent->setMyAvailableMessages({"Coding"});
  agent->setMyAwayMessages({"Lunch", "Home"});
  agent->noteStatusImagesChangedAppearance();
  EXPECT_EQ(service.names, (std::vector<std::string>{IMCustomStatusMessagesChangedNotification,
                                                     IMCustomStatusMessagesChangedNotification,
                                                     IMStatusImagesChangedAppearanceNotification}));
  EXPECT_EQ(agent->myAwayMessages(), (std::vector<std::string>{"Lunch", "Home"}));

  EXPECT_TRUE(agent->launchIfNecessary());
  EXPECT_FALSE(agent->launchIfNecessary());

  EXPECT_EQ(IMServiceAgent::imageNameForStatus(kIMPersonStatusAvailable), "status-available");
  EXPECT_EQ(IMServiceAgent::imageNameForStatus(kIMPersonStatusAway), "status-away");
  EXPECT_EQ(IMServiceAgent::imageNameForStatus(kIMPersonStatusIdle), "status-idle");
  for (IMPersonStatus other : {kIMPersonStatusOffline, kIMPersonStatusUnknown, kIMPersonStatusNoStatus})
    EXPECT_EQ(IMServiceAgent::imageNameForStatus(other), "status-offline");

  EXPECT_FALSE(IMMelodixInteropAvailable());
  agent->setMelodixInteropAvailable(true);
  EXPECT_TRUE(IMMelodixInteropAvailable());
  EXPECT_EQ(IMMelodixMessageFormat(), IMMelodixMessageFormat()) << "one object";
  EXPECT_NE(IMMelodixMessageFormat()->value().find("%@"), std::string::npos);
}

TEST(IMCapabilitiesTest, VideoAndAudioNeedTheirBitCombinations) {
  EXPECT_TRUE(IMVCCapabilitiesAllowVideo(0x40000 | 0x20000));
  EXPECT_TRUE(IMVCCapabilitiesAllowVideo(0x40000 | 0x200000));
  EXPECT_FALSE(IMVCCapabilitiesAllowVideo(0x40000));
  EXPECT_FALSE(IMVCCapabilitiesAllowVideo(0x20000 | 0x200000));
  EXPECT_TRUE(IMVCCapabilitiesAllowAudio(0x80000 | 0x20000));
  EXPECT_FALSE(IMVCCapabilitiesAllowAudio(0x80000 | 0x200000));
  EXPECT_FALSE(IMVCCapabilitiesAllowAudio(0x20000));
}
