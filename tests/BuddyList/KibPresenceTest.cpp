#include <gtest/gtest.h>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPresence.h"
#include "platform/im/IMConstants.h"
#include "tests/BuddyList/BuddyListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using Names = std::vector<std::string>;

class KibPresenceTest : public kibtest::BuddyListTest {
 protected:
  void SetUp() override {
    BuddyListTest::SetUp();
    presence = KibPresence::init();
    recorder.observe(presence);
  }

  KibPresencePtr presence;
  kibtest::DirectRecorder recorder;
};

TEST_F(KibPresenceTest, KeepsHandlesInOrderAndAsASetByIdentity) {
  auto first = handle(aimAccount, "alice");
  auto second = handle(jabberAccount, "alice@jabber");
  auto lookalike = handle(aimAccount, "alice");

  EXPECT_TRUE(presence->addIMHandle(first));
  EXPECT_TRUE(presence->addIMHandle(second));
  EXPECT_EQ(presence->imHandles(), (std::vector<IMHandlePtr>{first, second}));
  EXPECT_EQ(presence->imHandleSet(), (IMHandleSet{first, second}));
  EXPECT_EQ(presence->numberOfIMHandles(), 2);
  EXPECT_TRUE(presence->containsIMHandle(first));
  EXPECT_FALSE(presence->containsIMHandle(lookalike)) << "membership is by identity";
  EXPECT_FALSE(presence->addIMHandle(nullptr));

  // A duplicate is accepted without a second copy, observation or recache.
  recorder.clear();
  EXPECT_TRUE(presence->addIMHandle(first));
  EXPECT_EQ(presence->numberOfIMHandles(), 2);
  EXPECT_EQ(first->observers().size(), 1u);
  EXPECT_TRUE(recorder.received.empty());

  // Removing an unknown handle changes nothing and posts nothing.
  presence->removeIMHandle(lookalike);
  EXPECT_EQ(presence->numberOfIMHandles(), 2);
  EXPECT_TRUE(recorder.received.empty());

  presence->removeIMHandle(first);
  EXPECT_EQ(presence->imHandles(), (std::vector<IMHandlePtr>{second}));
  EXPECT_EQ(presence->imHandleSet(), (IMHandleSet{second}));
  EXPECT_TRUE(first->observers().empty());
}

TEST_F(KibPresenceTest, FollowsTheMostAvailableHandleAndRecordsStatusChanges) {
  auto offline = handle(aimAccount, "bob");
  auto away = handle(aimAccount2, "bob", kIMPersonStatusAway);
  auto available = handle(jabberAccount, "bob@jabber", kIMPersonStatusAvailable);
  available->setStatusMessage("here");

  presence->addIMHandle(offline);
  EXPECT_EQ(presence->mostAvailableIMHandle(), offline);
  EXPECT_EQ(presence->status(), kIMPersonStatusOffline);
  EXPECT_EQ(presence->previousStatus(), 0u);
  presence->addIMHandle(away);
  presence->addIMHandle(available);
  EXPECT_EQ(presence->mostAvailableIMHandle(), available);
  EXPECT_EQ(presence->status(), kIMPersonStatusAvailable);
  EXPECT_EQ(presence->previousStatus(), kIMPersonStatusAway);

  // Each recorded change posted once, naming the best handle of the moment.
  ASSERT_EQ(recorder.names(), Names(3, kKibPresenceStatusChangedNotification));
  EXPECT_EQ(recorder.responsible(0), offline);
  EXPECT_EQ(recorder.responsible(1), away);
  EXPECT_EQ(recorder.responsible(2), available);
  for (const auto& n : recorder.received) EXPECT_EQ(n->object(), presence);

  // A tie goes to the handle added first; its empty message is a change.
  recorder.clear();
  away->setStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(presence->mostAvailableIMHandle(), away);
  ASSERT_EQ(recorder.names(), Names{kKibPresenceStatusChangedNotification});
  EXPECT_EQ(recorder.responsible(0), away);
  EXPECT_EQ(presence->previousStatus(), kIMPersonStatusAvailable);

  // The best handle's status and message stay: the handler posts for the notifying handle.
  recorder.clear();
  offline->setStatus(kIMPersonStatusIdle);
  EXPECT_EQ(presence->mostAvailableIMHandle(), away);
  ASSERT_EQ(recorder.names(), Names{kKibPresenceStatusChangedNotification});
  EXPECT_EQ(recorder.responsible(0), offline);

  // The best handle drops back: the next one takes over and the recache names it.
  recorder.clear();
  away->setStatus(kIMPersonStatusIdle);
  EXPECT_EQ(presence->mostAvailableIMHandle(), available);
  EXPECT_EQ(presence->status(), kIMPersonStatusAvailable);
  ASSERT_EQ(recorder.names(), Names{kKibPresenceStatusChangedNotification});
  EXPECT_EQ(recorder.responsible(0), available);
}

TEST_F(KibPresenceTest, AMessageOnlyChangeCountsAsAStatusChange) {
  auto h = handle(aimAccount, "carol", kIMPersonStatusAway);
  presence->addIMHandle(h);
  recorder.clear();

  h->setStatusMessage("out to lunch");
  ASSERT_EQ(recorder.names(), Names{kKibPresenceStatusChangedNotification});
  EXPECT_EQ(recorder.responsible(0), h);
  EXPECT_EQ(presence->status(), kIMPersonStatusAway);
  EXPECT_EQ(presence->previousStatus(), kIMPersonStatusAway);
  EXPECT_EQ(presence->statusMessage(), "out to lunch");
}

TEST_F(KibPresenceTest, AnEmptiedPresenceAnswersZeroValues) {
  auto h = handle(aimAccount, "dave", kIMPersonStatusIdle, IMPerson::make("p-dave", "Dave", "Doe"));
  h->setStatusMessage("zzz");
  h->setMobileDeviceName("phone");
  h->setGroups({"Friends"});
  presence->addIMHandle(h);
  EXPECT_EQ(presence->firstName(), "Dave");
  EXPECT_TRUE(presence->isMobile());
  EXPECT_EQ(presence->groups(), (std::set<std::string>{"Friends"}));
  recorder.clear();

  presence->removeIMHandle(h);
  EXPECT_EQ(presence->mostAvailableIMHandle(), nullptr);
  EXPECT_EQ(presence->status(), 0u);
  EXPECT_EQ(presence->previousStatus(), kIMPersonStatusIdle);
  ASSERT_EQ(recorder.names(), Names{kKibPresenceStatusChangedNotification});
  EXPECT_EQ(recorder.received[0]->userInfo(), nullptr) << "no handle, no user info";

  EXPECT_EQ(presence->timeSinceStatusChanged(), 0.0);
  EXPECT_EQ(presence->timeSinceWentOffline(), 0.0);
  EXPECT_EQ(presence->mobileDeviceName(), "");
  EXPECT_FALSE(presence->isMobile());
  EXPECT_EQ(presence->nameOfStatus(), "");
  EXPECT_EQ(presence->statusMessage(), "");
  EXPECT_EQ(presence->previousStatusMessage(), "");
  EXPECT_EQ(presence->nameAndEmail(), "");
  EXPECT_EQ(presence->displayName(), "");
  EXPECT_EQ(presence->shortName(), "");
  EXPECT_EQ(presence->fullName(), "");
  EXPECT_EQ(presence->firstName(), "");
  EXPECT_EQ(presence->lastName(), "");
  EXPECT_EQ(presence->groups(), std::nullopt);
}

TEST_F(KibPresenceTest, EmptyingAPresenceThatRecordedNothingPostsNothing) {
  auto h = handle(aimAccount, "nobody", kIMPersonStatusUnknown);
  presence->addIMHandle(h);
  presence->removeIMHandle(h);
  EXPECT_TRUE(recorder.received.empty()) << "status 0 and no message before and after";
}

TEST_F(KibPresenceTest, ForwardsPropertiesToTheMostAvailableHandle) {
  auto person = IMPerson::make("p-erin", "Erin", "Eve");
  person->setEmails({"erin@example.com"});
  auto low = handle(aimAccount, "erin_low", kIMPersonStatusAway, person);
  auto best = handle(jabberAccount, "erin", kIMPersonStatusAvailable, person);
  best->setNickname("Rin");
  best->setStatusMessage("new");
  best->setStatusMessage("newer");
  best->setGroups({"Work", "Friends"});
  presence->addIMHandle(low);
  presence->addIMHandle(best);
  advance(30);

  EXPECT_EQ(presence->displayName(), best->name());
  EXPECT_EQ(presence->shortName(), "Rin");
  EXPECT_EQ(presence->fullName(), "Erin Eve");
  EXPECT_EQ(presence->firstName(), "Erin");
  EXPECT_EQ(presence->lastName(), "Eve");
  EXPECT_EQ(presence->nameAndEmail(), best->nameAndEmail());
  EXPECT_EQ(presence->nameOfStatus(), "Available");
  EXPECT_EQ(presence->statusMessage(), "newer");
  EXPECT_EQ(presence->previousStatusMessage(), "new");
  EXPECT_DOUBLE_EQ(presence->timeSinceStatusChanged(), 30.0);
  EXPECT_EQ(presence->groups(), (std::set<std::string>{"Friends", "Work"}));
}

TEST_F(KibPresenceTest, RepostsHandleNotificationsThroughThePairedHandlers) {
  auto best = handle(aimAccount, "frank", kIMPersonStatusAvailable);
  auto other = handle(aimAccount2, "frank", kIMPersonStatusAway);
  presence->addIMHandle(best);
  presence->addIMHandle(other);
  recorder.clear();

  // Capabilities count only for the most available handle.
  other->setCapabilities(true, true, true);
  EXPECT_TRUE(recorder.received.empty());
  best->setCapabilities(true, false, true);
  best->notePictureChanged();
  other->setNickname("Franky");
  other->setGroups({"Friends"});
  other->setStatusURL("http://example.com/status");
  other->setMobileDeviceName("phone");
  // The sort-order notification lands on the certificate handler.
  other->setSortOrderInGroup("Friends", 7);

  EXPECT_EQ(recorder.names(), (Names{kKibPresenceCapabilitiesChangedNotification,
                                     kKibPresencePictureChangedNotification, kKibPresenceInfoChangedNotification,
                                     kKibPresenceGroupsChangedNotification, kKibPresenceExtraPropsChangedNotification,
                                     kKibPresenceMobileChangedNotification, kKibPresenceCertsChangedNotification}));
  EXPECT_EQ(recorder.responsible(0), best);
  for (std::size_t i = 2; i < recorder.received.size(); ++i) EXPECT_EQ(recorder.responsible(i), other) << i;
}

TEST_F(KibPresenceTest, HandlersThatRecacheMayPostAStatusChangeFirst) {
  auto best = handle(aimAccount, "gina", kIMPersonStatusAvailable);
  presence->addIMHandle(best);
  // The handle's status changes without a word to its observers; the next
  // recaching handler finds it.
  best->removeObserver(presence.get());
  best->setStatusMessage("quietly changed");
  best->addObserver(presence.get());
  recorder.clear();

  best->setGroups({"Family"});
  EXPECT_EQ(recorder.names(),
            (Names{kKibPresenceStatusChangedNotification, kKibPresenceGroupsChangedNotification}));
}

TEST_F(KibPresenceTest, ClassListsAreDeliberatelyMispaired) {
  const auto& names = KibPresence::notifications();
  const auto& handlers = KibPresence::selectors();
  ASSERT_EQ(names.size(), 8u);
  ASSERT_EQ(handlers.size(), 9u);
  EXPECT_EQ(&names, &KibPresence::notifications()) << "built once";
  EXPECT_EQ(names[7], IMHandleSortOrderChangedNotification);
  EXPECT_EQ(handlers[7], "_imHandleCertsChanged:");
  EXPECT_EQ(handlers[8], "_imHandleSortOrderChanged:");

  // The unreachable handler still exists and posts its own notification.
  auto h = handle(aimAccount, "henry");
  presence->addIMHandle(h);
  recorder.clear();
  EXPECT_TRUE(presence->respondsToSelector("_imHandleSortOrderChanged:"));
  presence->performSelector("_imHandleSortOrderChanged:", Notification::make("anything", h));
  ASSERT_EQ(recorder.names(), Names{kKibPresenceSortOrderChangedNotification});
  EXPECT_EQ(recorder.responsible(0), h);

  // Names outside the list are ignored.
  recorder.clear();
  presence->objectDidPostDirectNotification(Notification::make(kKibPresenceSortOrderChangedNotification, h));
  presence->objectDidPostDirectNotification(Notification::make("SomethingElse", h));
  EXPECT_TRUE(recorder.received.empty());
}

TEST_F(KibPresenceTest, AQuietPresenceNeitherObservesNorPosts) {
  auto quiet = KibPresence::init();
  quiet->setIsQuiet(true);
  kibtest::DirectRecorder quietRecorder;
  quietRecorder.observe(quiet);
  auto h = handle(aimAccount, "ivy");
  {
    // Another observer of the handle shows that the quiet presence never registers.
    kibtest::DirectRecorder handleRecorder;
    handleRecorder.observe(h);
    EXPECT_TRUE(quiet->addIMHandle(h));
    EXPECT_EQ(h->observers().size(), 1u);
    h->updateStatus(kIMPersonStatusAvailable, "hi");
    EXPECT_EQ(quiet->status(), kIMPersonStatusOffline) << "not observing, it does not hear of the change";
    quiet->postNotificationNamedForIMHandle(kKibPresenceInfoChangedNotification, h);
    EXPECT_TRUE(quietRecorder.received.empty());
    quiet.reset();
    EXPECT_EQ(h->observers().size(), 1u);
  }
  EXPECT_TRUE(h->observers().empty());
}

TEST_F(KibPresenceTest, StopsObservingItsHandlesWhenDestroyed) {
  auto a = handle(aimAccount, "jack");
  auto b = handle(aimAccount2, "jack");
  presence->addIMHandle(a);
  presence->addIMHandle(b);
  EXPECT_TRUE(a->hasObserver(presence.get()));
  std::weak_ptr<KibPresence> gone = presence;
  recorder.clear();  // recorded notifications hold the presence
  presence.reset();
  ASSERT_TRUE(gone.expired());
  EXPECT_TRUE(a->observers().empty());
  EXPECT_TRUE(b->observers().empty());
  a->setStatus(kIMPersonStatusAvailable);  // must not reach the destroyed presence
}

TEST_F(KibPresenceTest, DescribesItselfWithTheBestHandleAndAllHandles) {
  auto h = handle(aimAccount, "kate", kIMPersonStatusAvailable);
  presence->addIMHandle(h);
  EXPECT_EQ(presence->description(),
            "\n\t\tKibPresence:\n\t\t\tMostAvailable: kate (AIM) \n\t\t\tEveryone: {" + describeObjects(presence->imHandles()) +
                "}");
}

}  // namespace
