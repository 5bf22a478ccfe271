#include <gtest/gtest.h>

#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMPeopleCollection.h"
#include "platform/im/IMService.h"
#include "tests/platform/im/IMTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using imtest::CentreRecorder;

namespace {

class IMPeopleCollectionTest : public kibtest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    auto service = IMService::make("AIM", "AIM", "AIM");
    home = IMAccount::make(service, "home");
    work = IMAccount::make(service, "work");
    for (const char* id : {"h1", "h2"}) home->buddyList()->addIMHandle(IMHandle::make(home, id));
    for (const char* id : {"w1"}) work->buddyList()->addIMHandle(IMHandle::make(work, id));
  }

  std::vector<std::string> ids(const std::vector<IMHandlePtr>& handles) {
    std::vector<std::string> result;
    for (const auto& handle : handles) result.push_back(handle->ID());
    return result;
  }

  IMAccountPtr home, work;
};

}  // namespace

TEST_F(IMPeopleCollectionTest, CollectsListsAndAnswersTheirPeopleInOrder) {
  auto collection = IMPeopleCollection::make();
  CentreRecorder standard(NotificationCenter::defaultCenter());
  collection->addIMPeople(work->buddyList());
  collection->addIMPeople(home->buddyList());
  collection->addIMPeople(home->buddyList());
  EXPECT_TRUE(collection->collectsIMPeople(home->buddyList()));
  EXPECT_EQ(ids(collection->people()), (std::vector<std::string>{"w1", "h1", "h2"}));
  EXPECT_EQ(standard.names, (std::vector<std::string>{IMPeopleChangedNotification, IMPeopleChangedNotification}));
  EXPECT_EQ(standard.objects.at(0).get(), collection.get());

  collection->removeIMPeople(work->buddyList());
  EXPECT_FALSE(collection->collectsIMPeople(work->buddyList()));
  EXPECT_EQ(ids(collection->people()), (std::vector<std::string>{"h1", "h2"}));
  standard.clear();
  work->buddyList()->addIMHandle(IMHandle::make(work, "w2"));
  EXPECT_TRUE(standard.names.empty()) << "a list no longer collected is no longer observed";
  home->buddyList()->addIMHandle(IMHandle::make(home, "h3"));
  EXPECT_EQ(standard.names, (std::vector<std::string>{IMPeopleChangedNotification}));
}

TEST_F(IMPeopleCollectionTest, CoalescedChangesPostOnceAtTheOutermostEnd) {
  auto collection = IMPeopleCollection::make();
  CentreRecorder standard(NotificationCenter::defaultCenter());
  collection->beginCoalescedChanges();
  collection->beginCoalescedChanges();
  collection->addIMPeople(home->buddyList());
  home->buddyList()->addIMHandle(IMHandle::make(home, "h3"));
  collection->addIMPeople(work->buddyList());
  collection->endCoalescedChanges();
  EXPECT_TRUE(standard.names.empty());
  collection->endCoalescedChanges();
  EXPECT_EQ(standard.names, (std::vector<std::string>{IMPeopleChangedNotification}));

  standard.clear();
  collection->beginCoalescedChanges();
  collection->endCoalescedChanges();
  EXPECT_TRUE(standard.names.empty()) << "nothing changed, nothing posted";
}

TEST_F(IMPeopleCollectionTest, HidesBlockedPeopleUnlessToldNotTo) {
  auto collection = IMPeopleCollection::make();
  collection->addIMPeople(home->buddyList());
  home->buddyList()->people().at(0)->setBlocked(true);
  EXPECT_TRUE(collection->shouldHidePeople());
  EXPECT_EQ(ids(collection->people()), (std::vector<std::string>{"h2"}));
  collection->setShouldHidePeople(false);
  EXPECT_EQ(ids(collection->people()), (std::vector<std::string>{"h1", "h2"}));
}

TEST_F(IMPeopleCollectionTest, ListsChangeMembershipAndLookUpByNormalizedID) {
  auto& list = *home->buddyList();
  auto extra = IMHandle::make(home, "Big Bird");
  imtest::RecordingObserver observer;
  list.addObserver(&observer);
  auto lookalike = IMHandle::make(home, "Big Bird");
  const auto before = list.count();
  list.addIMHandle(extra);
  list.addIMHandle(extra);
  EXPECT_EQ(list.count(), before + 1);
  EXPECT_TRUE(list.containsIMHandle(extra.get()));
  EXPECT_FALSE(list.containsIMHandle(lookalike.get())) << "membership is by identity";
  EXPECT_EQ(list.imHandleWithID("bigbird"), extra);
  EXPECT_EQ(list.imHandleWithID("nobody"), nullptr);
  list.removeIMHandle(extra.get());
  EXPECT_FALSE(list.containsIMHandle(extra.get()));
  list.removeIMHandle(extra.get());
  auto kept = list.people();
  ASSERT_FALSE(kept.empty());
  list.removeAllIMHandles();
  EXPECT_EQ(list.count(), 0u);
  for (const auto& handle : kept) EXPECT_FALSE(list.containsIMHandle(handle.get())) << handle->ID();
  list.addIMHandle(extra);
  EXPECT_TRUE(list.containsIMHandle(extra.get())) << "a handle taken out can come back";
  list.removeAllIMHandles();
  EXPECT_EQ(observer.names, (std::vector<std::string>(5, IMPeopleListChangedNotification)));
}
