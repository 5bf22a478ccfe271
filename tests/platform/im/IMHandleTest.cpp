#include <gtest/gtest.h>

#include "platform/core/Clock.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMHandleRegistrar.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "tests/platform/im/IMTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using imtest::CentreRecorder;
using imtest::RecordingObserver;

namespace {

class IMHandleTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    aim = IMService::make("AIM", "AIM", "AIM");
    jabber = IMService::make("Jabber", "Jabber", "Jabber");
    IMService::registerService(aim);
    IMService::registerService(jabber);
    home = IMAccount::make(aim, "me.home");
    work = IMAccount::make(aim, "me.work");
    jabberAccount = IMAccount::make(jabber, "me@jabber.example");
  }

  IMHandlePtr handleWithStatus(IMPersonStatus status, const std::string& id = "buddy") {
    auto handle = IMHandle::make(home, id);
    handle->setStatus(status);
    return handle;
  }

  IMServicePtr aim, jabber;
  IMAccountPtr home, work, jabberAccount;
};

}  // namespace

TEST_F(IMHandleTest, EachSetterPostsItsHandleNotificationOnlyWhenSomethingChanged) {
  auto person = IMPerson::make("p1", "Ada", "Lovelace");
  auto handle = IMHandle::make(home, "ada", person);
  RecordingObserver observer;
  observer.recordsWillChange = true;
  // Observers hear of a change before it happens.
  std::vector<IMPersonStatus> statusesBefore;
  observer.onWillChange = [&](IMDirectlyObservableObject&) { statusesBefore.push_back(handle->status()); };
  handle->addObserver(&observer);

  handle->setCapabilities(true, false, true);
  handle->setCapabilities(true, false, true);
  handle->setStatus(kIMPersonStatusAvailable);
  handle->notePictureChanged();
  handle->setNickname("Countess");
  handle->setGroups({"Friends", "Work"});
  handle->setGroups({"Friends", "Work"});
  handle->setOtherServiceIDs({{"Jabber", "ada@jabber.example"}});
  handle->setMobileDeviceName("Phone");
  handle->setSortOrderInGroup("Work", 7);
  handle->setSortOrderInGroup("Missing", 7);  // not in that group: nothing
  handle->updateStatus(kIMPersonStatusAway, "Counting");  // two changes, told once
  handle->setAuthRequestStatus(kIMAuthRequestPending);
  person->setFirstName("Augusta");

  const std::string will = RecordingObserver::kWillChange;
  EXPECT_EQ(observer.names,
            (std::vector<std::string>{will, IMHandleCapabilitiesChangedNotification, will,
                                      IMHandleStatusChangedNotification, IMHandlePictureChangedNotification, will,
                                      IMHandleInfoChangedNotification, will, IMHandleGroupsChangedNotification, will,
                                      IMHandleExtraPropertiesChangedNotification, will,
                                      IMHandleIsMobileChangedNotification, will, IMHandleSortOrderChangedNotification,
                                      will, IMHandleStatusChangedNotification, will,
                                      IMHandleExtraPropertiesChangedNotification, will,
                                      IMHandleInfoChangedNotification}));
  ASSERT_EQ(statusesBefore.size(), 10u);
  EXPECT_EQ(statusesBefore[1], kIMPersonStatusOffline);
  EXPECT_EQ(statusesBefore[7], kIMPersonStatusAvailable);
  for (const auto& object : observer.objects) EXPECT_EQ(object.get(), handle.get());
}

TEST_F(IMHandleTest, StatusAndInfoChangesAlsoReachTheServiceCentreNotTheDefaultOne) {
  auto person = IMPerson::make("p1", "Ada", "Lovelace");
  auto handle = IMHandle::make(home, "ada", person);
  CentreRecorder service(IMService::notificationCenter());
  CentreRecorder standard(NotificationCenter::defaultCenter());

  handle->updateStatus(kIMPersonStatusAway, "Out");
  handle->updateStatus(kIMPersonStatusAway, "Out");  // no change
  person->setFirstName("Augusta");                   // through the person, to each of its handles
  handle->setCapabilities(true, true, true);         // direct only

  EXPECT_EQ(service.names,
            (std::vector<std::string>{IMPersonStatusChangedNotification, IMPersonInfoChangedNotification}));
  EXPECT_EQ(service.objects.at(0).get(), handle.get());
  EXPECT_TRUE(standard.names.empty());
  EXPECT_EQ(handle->firstName(), "Augusta");
}

TEST_F(IMHandleTest, StatusHistoryIdleTimeAndOfflineTimeFollowTheClock) {
  auto handle = handleWithStatus(kIMPersonStatusAvailable);
  handle->setStatusMessage("Here");
  handle->setStatusMessage("Still here");
  EXPECT_EQ(handle->previousStatusMessage(), "Here");
  EXPECT_EQ(handle->nameOfStatus(), "Available");
  EXPECT_EQ(handle->idleTime(), 0);
  EXPECT_EQ(handle->idleString(), "");
  EXPECT_EQ(handle->timeSinceWentOffline(), 0);

  clock().advance(30);
  EXPECT_DOUBLE_EQ(handle->timeSinceStatusChanged(), 30);
  handle->updateStatus(kIMPersonStatusIdle, "Still here", 125);
  EXPECT_DOUBLE_EQ(handle->timeSinceStatusChanged(), 0);
  EXPECT_DOUBLE_EQ(handle->idleTime(), 125);
  EXPECT_EQ(handle->idleString(), "Idle 2m");
  clock().advance(3600);
  EXPECT_EQ(handle->idleString(), "Idle 1h 02m");
  clock().advance(2 * 86400);
  EXPECT_EQ(handle->idleString(), "Idle 2d 1h");
  handle->setIdleTime(10);
  EXPECT_EQ(handle->idleString(), "Idle");

  handle->setStatus(kIMPersonStatusOffline);
  EXPECT_EQ(handle->idleTime(), 0) << "idle time belongs to the idle status only";
  clock().advance(42);
  EXPECT_DOUBLE_EQ(handle->timeSinceWentOffline(), 42);
  handle->setStatus(kIMPersonStatusUnknown);  // still not online: the offline moment stays
  clock().advance(8);
  EXPECT_DOUBLE_EQ(handle->timeSinceWentOffline(), 50);
}

TEST_F(IMHandleTest, BestHandleIsTheMostAvailableAndTheFirstOnATie) {
  auto away1 = handleWithStatus(kIMPersonStatusAway, "a1");
  auto away2 = handleWithStatus(kIMPersonStatusAway, "a2");
  auto idle = handleWithStatus(kIMPersonStatusIdle, "i");
  auto offline = handleWithStatus(kIMPersonStatusOffline, "o");
  auto noStatus = handleWithStatus(kIMPersonStatusNoStatus, "n");
  auto available = handleWithStatus(kIMPersonStatusAvailable, "v");

  auto best = [](std::vector<IMHandlePtr> handles) { return IMHandle::bestIMHandleInArray(handles); };
  EXPECT_EQ(best({}), nullptr);
  EXPECT_EQ(best({nullptr}), nullptr);
  EXPECT_EQ(best({idle, away1, away2}), away1);
  EXPECT_EQ(best({away2, nullptr, away1}), away2);
  EXPECT_EQ(best({offline, noStatus}), noStatus);
  EXPECT_EQ(best({offline, away1, available, idle}), available);
}

TEST_F(IMHandleTest, NamesFollowTheRegistrarsNameStyle) {
  auto person = IMPerson::make("p1", "Grace", "Hopper");
  auto full = IMHandle::make(home, "ghopper", person);
  full->setNickname("Amazing Grace");
  full->setEmails({"grace@navy.example"});
  auto bare = IMHandle::make(home, "Anon Ymous");

  EXPECT_EQ(full->name(), "Grace Hopper");
  EXPECT_EQ(full->fullName(), "Grace Hopper");
  EXPECT_EQ(full->uniqueName(), "Amazing Grace");
  EXPECT_EQ(full->nameAndEmail(), "Grace Hopper <grace@navy.example>");
  EXPECT_EQ(bare->name(), "Anon Ymous");
  EXPECT_EQ(bare->uniqueName(), "Anon Ymous");
  EXPECT_EQ(bare->nameAndEmail(), "Anon Ymous");
  EXPECT_EQ(bare->firstName(), "");

  IMHandleRegistrar::sharedInstance()->setNameStyle(kIMNameStyleShortName);
  EXPECT_EQ(full->name(), "Amazing Grace");
  IMHandleRegistrar::sharedInstance()->setNameStyle(kIMNameStyleScreenName);
  EXPECT_EQ(full->name(), "ghopper");
}

TEST_F(IMHandleTest, ComparisonsAndSiblings) {
  auto ann = IMHandle::make(home, "Ann Smith", IMPerson::make("1", "ann", "Zed"));
  auto annAtWork = IMHandle::make(work, "annsmith", IMPerson::make("2", "Ann", "Able"));
  auto annOnJabber = IMHandle::make(jabberAccount, "annsmith");
  auto bob = IMHandle::make(home, "bob", IMPerson::make("3", "Bob", "Able"));
  auto nameless = IMHandle::make(home, "aardvark");

  EXPECT_EQ(ann->compareIDs(annAtWork), 0) << "IDs compare without case and spaces";
  EXPECT_EQ(ann->compareIDs(bob), -1);
  EXPECT_EQ(ann->compareFirstNames(annAtWork), 0) << "names compare without case";
  EXPECT_EQ(ann->compareLastNames(annAtWork), 1);
  EXPECT_EQ(bob->compareLastNames(annAtWork), 0);
  EXPECT_EQ(bob->compareFirstNames(ann), 1);
  EXPECT_EQ(nameless->compareFirstNames(ann), -1) << "a handle without a first name compares by its name";

  EXPECT_TRUE(ann->isAccountSiblingOf(annAtWork));
  EXPECT_TRUE(annAtWork->isAccountSiblingOf(ann));
  EXPECT_FALSE(ann->isAccountSiblingOf(ann));
  EXPECT_FALSE(ann->isAccountSiblingOf(annOnJabber)) << "other service";
  EXPECT_FALSE(ann->isAccountSiblingOf(bob));
  EXPECT_FALSE(ann->isAccountSiblingOf(IMHandlePtr()));
}

TEST_F(IMHandleTest, GroupsKeepTheirOrderAndSortOrders) {
  auto handle = IMHandle::make(home, "x");
  handle->setGroups({"Work", "Friends", "Work"}, {{"Friends", 9}});
  EXPECT_EQ(handle->groupsArray(), (std::vector<std::string>{"Work", "Friends"}));
  EXPECT_EQ(handle->groups(), (std::set<std::string>{"Friends", "Work"}));
  EXPECT_EQ(handle->sortOrderInGroup("Work"), 0u);
  EXPECT_EQ(handle->sortOrderInGroup("Friends"), 9u);
  EXPECT_EQ(handle->sortOrderInGroup("Family"), 0xFFFFFFFFu);
}

TEST_F(IMHandleTest, PeopleAreEqualByIdentityOrRecordID) {
  auto a = IMPerson::make("rec-1", "A", "B");
  auto sameRecord = IMPerson::make("rec-1", "Other", "Name");
  auto noID = IMPerson::make("");
  auto alsoNoID = IMPerson::make("");
  EXPECT_TRUE(a->isEqualToIMPerson(sameRecord));
  EXPECT_TRUE(noID->isEqualToIMPerson(noID));
  EXPECT_FALSE(noID->isEqualToIMPerson(alsoNoID));
  EXPECT_FALSE(a->isEqualToIMPerson(IMPersonPtr()));

  auto handle = IMHandle::make(home, "h", a);
  EXPECT_EQ(a->imHandles().size(), 1u);
  handle->setPerson(sameRecord);
  EXPECT_TRUE(a->imHandles().empty());
  EXPECT_EQ(sameRecord->imHandles().at(0), handle);
  handle.reset();
  EXPECT_TRUE(sameRecord->imHandles().empty());
}
