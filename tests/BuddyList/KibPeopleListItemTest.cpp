#include <gtest/gtest.h>

#include <cmath>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListItem.h"
#include "Source/BuddyList/KibPeopleListItemDelegate.h"
#include "platform/core/Log.h"
#include "platform/core/RunLoop.h"
#include "tests/BuddyList/BuddyListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using Names = std::vector<std::string>;

const std::string kUpdating = kKibPeopleListItemNeedsUpdatingNotification;
const std::string kSorting = kKibPeopleListItemNeedsSortingNotification;
const std::string kAnimation = kKibPeopleListItemAnimationStateChangedNotification;
const std::string kGroupChange = kKibPeopleListItemNeedsGroupChangeNotification;
const std::string kSortOrder = kKibPeopleListItemSortOrderChangedNotification;

class RecordingDelegate final : public Object, public KibPeopleListItemDelegate {
 public:
  bool peopleListItemCanTransitionToStatus(KibPeopleListItem* item, IMPersonStatus status) override {
    asked.emplace_back(item, status);
    return allow;
  }
  ArrayPtr peopleListGroupSortOrder() override { return nullptr; }

  bool allow = true;
  std::vector<std::pair<KibPeopleListItem*, IMPersonStatus>> asked;
};

// Reaches the transition start directly, as only a subclass can.
class ExposedItem final : public KibPeopleListItem {
 public:
  using KibPeopleListItem::_startStatusTransition;
};

// "<prefix>0x<hex digits><suffix>".
bool matchesWithAddress(const std::string& text, const std::string& prefix, const std::string& suffix) {
  if (text.size() <= prefix.size() + 2 + suffix.size()) return false;
  if (text.compare(0, prefix.size() + 2, prefix + "0x") != 0) return false;
  if (text.compare(text.size() - suffix.size(), suffix.size(), suffix) != 0) return false;
  auto digits = text.substr(prefix.size() + 2, text.size() - prefix.size() - 2 - suffix.size());
  return digits.find_first_not_of("0123456789abcdef") == std::string::npos;
}

class KibPeopleListItemTest : public kibtest::BuddyListTest {
 protected:
  void SetUp() override {
    BuddyListTest::SetUp();
    buddy = handle(aimAccount, "alice", kIMPersonStatusAway);
    buddy->setGroups({"Friends"});
    presence = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(nullptr, aim,
                                                                                    KibBuddyListPresence::GroupNames{"Friends"});
    presence->addIMHandle(buddy);
    item = KibPeopleListItem::initWithBuddyListPresenceInGroup(presence, nullptr);
    recorder.observe(item);
  }

  std::size_t pendingStops() const { return RunLoop::main().pendingPerformCount(item.get(), "stopTransition"); }

  IMHandlePtr buddy;
  KibBuddyListPresencePtr presence;
  KibPeopleListItemPtr item;
  kibtest::DirectRecorder recorder;
};

TEST_F(KibPeopleListItemTest, InitialisersCheckTheirArgumentsAndOnlyPersonItemsRegister) {
  EXPECT_TRUE(assertions->failures.empty());
  EXPECT_TRUE(KibPeopleListItem::isRegistered(item.get()));
  EXPECT_TRUE(item->isIMHandle());
  EXPECT_FALSE(item->isGroup());
  EXPECT_EQ(item->imHandle(), buddy);
  EXPECT_EQ(item->group(), "Friends");
  EXPECT_EQ(item->currentStatus(), kIMPersonStatusAway);
  EXPECT_EQ(item->previousStatus(), 0u);
  EXPECT_EQ(item->copy(), item);
  EXPECT_TRUE(presence->hasObserver(item.get()));

  auto twin = KibPeopleListItem::initWithBuddyListPresenceInGroup(presence, nullptr);
  EXPECT_FALSE(item->isEqual(twin.get())) << "identity only";

  auto orphan = KibPeopleListItem::initWithBuddyListPresenceInGroup(nullptr, nullptr);
  ASSERT_EQ(assertions->failures.size(), 1u);
  EXPECT_EQ(assertions->failures[0].description, "Invalid parameter not satisfying: presence != nil");
  EXPECT_EQ(assertions->failures[0].file, "MenuExtra/../Source/BuddyList/KibPeopleListItem");
  EXPECT_EQ(assertions->failures[0].object, orphan.get());
  EXPECT_TRUE(KibPeopleListItem::isRegistered(orphan.get())) << "the initialiser goes on";
  EXPECT_FALSE(orphan->isIMHandle());

  auto group = KibPeopleListGroup::init();
  group->setName("Work");
  auto header = KibPeopleListItem::initAsGroup(group.get());
  EXPECT_TRUE(header->isGroup());
  EXPECT_EQ(header->peopleListGroup(), group.get());
  EXPECT_EQ(header->group(), "Work");
  EXPECT_FALSE(KibPeopleListItem::isRegistered(header.get()));

  KibPeopleListItem::initAsGroup(nullptr);
  ASSERT_EQ(assertions->failures.size(), 2u);
  EXPECT_EQ(assertions->failures[1].description, "Invalid parameter not satisfying: group != nil");

  KibPeopleListItem* gone = twin.get();
  twin.reset();
  EXPECT_FALSE(KibPeopleListItem::isRegistered(gone));
}

TEST_F(KibPeopleListItemTest, ClearsWeakReferencesOfRegisteredItemsOnly) {
  RecordingDelegate list, otherList;
  auto group = KibPeopleListGroup::init();
  auto other = KibPeopleListItem::initWithBuddyListPresenceInGroup(presence, group.get());
  auto header = KibPeopleListItem::initAsGroup(group.get());
  item->setDelegate(&list);
  item->setPeopleListGroup(group.get());
  other->setDelegate(&otherList);
  header->setDelegate(&list);

  KibPeopleListItem::clearAllWeakReferencesTo(&list);
  EXPECT_EQ(item->delegate(), nullptr);
  EXPECT_EQ(other->delegate(), &otherList);
  EXPECT_EQ(header->delegate(), &list) << "group items are not in the registry";

  KibPeopleListItem::clearAllWeakGroupReferencesTo(group.get());
  EXPECT_EQ(item->peopleListGroup(), nullptr);
  EXPECT_EQ(other->peopleListGroup(), nullptr);
  EXPECT_EQ(header->peopleListGroup(), group.get());
}

TEST_F(KibPeopleListItemTest, SettingTheDelegateLogsWhenTheCategoryIsOn) {
  RecordingDelegate list;
  Log::setEnabledCategories({});
  item->setDelegate(&list);
  EXPECT_TRUE(linesOf(Log::Channel::Always).empty());
  Log::setEnabledCategories({"KibPeopleList"});
  item->setDelegate(nullptr);
  Log::setEnabledCategories({});
  EXPECT_EQ(linesOf(Log::Channel::Always), (Names{"Setting delegate to (null)"}));
}

TEST_F(KibPeopleListItemTest, AChangeBetweenOnlineStatusesResortsWithoutATransition) {
  buddy->setStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(recorder.names(), (Names{kSorting, kUpdating}));
  EXPECT_FALSE(item->inStatusTransition());
  EXPECT_EQ(pendingStops(), 0u);
  EXPECT_EQ(item->currentStatus(), kIMPersonStatusAvailable);
  EXPECT_EQ(item->previousStatus(), kIMPersonStatusAway);
  EXPECT_EQ(item->effectiveStatus(), kIMPersonStatusAvailable);
}

TEST_F(KibPeopleListItemTest, GoingOfflineFadesOutInPlaceThenResorts) {
  buddy->setStatus(kIMPersonStatusOffline);
  EXPECT_EQ(recorder.names(), (Names{kAnimation, kUpdating}));
  EXPECT_TRUE(item->inStatusTransition());
  EXPECT_FALSE(item->isPulseTransition());
  EXPECT_EQ(item->currentStatus(), kIMPersonStatusOffline);
  EXPECT_EQ(item->effectiveStatus(), kIMPersonStatusAway) << "the previous status shows during the fade";
  for (const auto& n : recorder.received) {
    EXPECT_EQ(n->object(), item);
    EXPECT_EQ(n->userInfo(), nullptr);
  }

  recorder.clear();
  advance(1.5);
  EXPECT_TRUE(item->inStatusTransition());
  EXPECT_TRUE(recorder.received.empty());
  advance(0.5);
  EXPECT_FALSE(item->inStatusTransition());
  EXPECT_EQ(recorder.names(), (Names{kAnimation, kSorting, kUpdating}));
  EXPECT_EQ(item->effectiveStatus(), kIMPersonStatusOffline);
}

TEST_F(KibPeopleListItemTest, ComingOnlineTransitionsAndResortsAtOnce) {
  buddy->setStatus(kIMPersonStatusOffline);
  advance(2.0);
  recorder.clear();

  buddy->setStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(recorder.names(), (Names{kAnimation, kSorting, kUpdating}));
  EXPECT_TRUE(item->inStatusTransition());
  EXPECT_EQ(item->effectiveStatus(), kIMPersonStatusAvailable);
  EXPECT_EQ(pendingStops(), 1u);
}

TEST_F(KibPeopleListItemTest, TheTransitionEndsWhileAMenuIsTracked) {
  buddy->setStatus(kIMPersonStatusOffline);
  advance(2.0, kEventTrackingRunLoopMode);
  EXPECT_FALSE(item->inStatusTransition());
}

TEST_F(KibPeopleListItemTest, StartingAgainRestartsTheTimer) {
  buddy->setStatus(kIMPersonStatusOffline);
  advance(1.0);
  buddy->setStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(pendingStops(), 1u);
  advance(1.5);
  EXPECT_TRUE(item->inStatusTransition()) << "the first stop was cancelled";
  advance(0.5);
  EXPECT_FALSE(item->inStatusTransition());
}

TEST_F(KibPeopleListItemTest, TheDelegateDecidesWhetherToTransition) {
  RecordingDelegate list;
  list.allow = false;
  item->setDelegate(&list);
  buddy->setStatus(kIMPersonStatusOffline);
  EXPECT_EQ(recorder.names(), (Names{kSorting, kUpdating}));
  EXPECT_FALSE(item->inStatusTransition());
  ASSERT_EQ(list.asked.size(), 1u);
  EXPECT_EQ(list.asked[0].first, item.get());
  EXPECT_EQ(list.asked[0].second, kIMPersonStatusOffline);

  // A delegate that does not answer the message lets every transition run.
  Object plainDelegate;
  item->setDelegate(&plainDelegate);
  buddy->setStatus(kIMPersonStatusAvailable);
  EXPECT_TRUE(item->inStatusTransition());
}

TEST_F(KibPeopleListItemTest, APulseRunsFourSecondsAfterTheStatusStep) {
  buddy->setStatus(kIMPersonStatusAvailable);  // online before and after: no transition due
  recorder.clear();

  item->startPulse();
  EXPECT_EQ(recorder.names(), (Names{kSorting, kUpdating, kAnimation, kSorting, kUpdating}));
  EXPECT_TRUE(item->isPulseTransition());
  advance(3.5);
  EXPECT_TRUE(item->isPulseTransition());
  advance(0.5);
  EXPECT_FALSE(item->inStatusTransition());
  EXPECT_FALSE(item->isPulseTransition());
}

TEST_F(KibPeopleListItemTest, APulseRightAfterComingOnlineFirstStartsAStatusTransition) {
  // Created online from status 0: the status step sees a log-on still pending.
  recorder.clear();
  item->startPulse();
  EXPECT_EQ(recorder.names(), (Names{kAnimation, kSorting, kUpdating, kAnimation, kSorting, kUpdating}));
  EXPECT_TRUE(item->isPulseTransition());
  EXPECT_EQ(pendingStops(), 1u);
  advance(2.0);
  EXPECT_TRUE(item->isPulseTransition()) << "the 2.0 s stop was replaced by the pulse's";
  advance(2.0);
  EXPECT_FALSE(item->inStatusTransition());
}

TEST_F(KibPeopleListItemTest, NoPulseWhenTheDelegateRefuses) {
  RecordingDelegate list;
  list.allow = false;
  item->setDelegate(&list);
  item->startPulse();
  EXPECT_TRUE(recorder.received.empty());
  EXPECT_FALSE(item->inStatusTransition());
  EXPECT_EQ(item->timeSinceStatusChanged(), 99999.0);
}

TEST_F(KibPeopleListItemTest, StopTransitionCancelsOnlyTheOfflineFinish) {
  buddy->setStatus(kIMPersonStatusOffline);
  RunLoop::main().performSelectorAfterDelay(item, "_finishOfflineTransition", nullptr, 1.0);
  recorder.clear();

  item->stopTransition();
  EXPECT_EQ(recorder.names(), (Names{kAnimation, kSorting, kUpdating}));
  EXPECT_FALSE(item->inStatusTransition());
  EXPECT_EQ(RunLoop::main().pendingPerformCount(item.get(), "_finishOfflineTransition"), 0u);
  EXPECT_EQ(pendingStops(), 1u) << "the scheduled stop stays";
  recorder.clear();
  advance(2.0);
  EXPECT_EQ(recorder.names(), (Names{kAnimation, kSorting, kUpdating}));
}

TEST_F(KibPeopleListItemTest, AGroupItemMustNotTransition) {
  auto group = KibPeopleListGroup::init();
  auto header = std::make_shared<ExposedItem>();
  header->initialiseAsGroup(group.get());
  header->_startStatusTransition();
  ASSERT_EQ(assertions->failures.size(), 1u);
  EXPECT_EQ(assertions->failures[0].description, "Can't ask -_startStatusTransition for a group item!");
  EXPECT_EQ(assertions->failures[0].file, "MenuExtra/../Source/BuddyList/KibPeopleListItem");
  EXPECT_TRUE(header->inStatusTransition()) << "where the handler returns, the start goes on";
  advance(2.0);
  EXPECT_FALSE(header->inStatusTransition());
}

TEST_F(KibPeopleListItemTest, AnItemHeldOnlyByItsPendingStopGoesWithTheLoop) {
  buddy->setStatus(kIMPersonStatusOffline);
  std::weak_ptr<KibPeopleListItem> weak = item;
  recorder.clear();
  item.reset();
  ASSERT_FALSE(weak.expired()) << "the delayed stop holds the item";
  RunLoop::main().reset();
  EXPECT_TRUE(weak.expired());
  EXPECT_TRUE(presence->observers().empty());
}

TEST_F(KibPeopleListItemTest, TimeSinceStatusChanged) {
  EXPECT_EQ(item->timeSinceStatusChanged(), 99999.0);
  buddy->setStatus(kIMPersonStatusAvailable);
  advance(5.0);
  EXPECT_DOUBLE_EQ(item->timeSinceStatusChanged(), 5.0);
}

TEST_F(KibPeopleListItemTest, TransitionPhaseFollowsTheThrobCurve) {
  EXPECT_EQ(item->transitionPhase(1.0), 1.0) << "outside a transition";

  buddy->setStatus(kIMPersonStatusOffline);  // a 2.0 s transition
  EXPECT_NEAR(item->transitionPhase(1.0), 0.0, 1e-12);
  EXPECT_NEAR(item->transitionPhase(2.0), 0.0, 1e-12);
  clock().advance(1.0);  // halfway, without running the loop
  EXPECT_NEAR(item->transitionPhase(1.0), 0.495, 1e-6);
  EXPECT_NEAR(item->transitionPhase(1.0), (1.0 - std::cos(1.570795)) * 0.495, 1e-15);
  // More throbs blend the curve with the straight line: w(1.5π) ≈ 0.495 → 0.2475 + 0.25.
  EXPECT_NEAR(item->transitionPhase(3.0), 0.4975, 1e-5);
  clock().advance(0.5);
  // With 2 throbs at p = 0.75: w = (1 − cos(1.5π)) × 0.495 ≈ 0.495, answer ≈ 0.6225.
  EXPECT_NEAR(item->transitionPhase(2.0), 0.6225, 1e-5);
  clock().advance(0.5);
  EXPECT_TRUE(item->inStatusTransition());
  EXPECT_EQ(item->transitionPhase(1.0), 1.0) << "from the end of the transition length on";
}

TEST_F(KibPeopleListItemTest, TransitionAlphaFadesBetweenTheValues) {
  EXPECT_EQ(item->transitionAlphaToFromThrobs(1.0, 0.2, 1), 1.0) << "outside a transition: the target";

  buddy->setStatus(kIMPersonStatusOffline);
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(1.0, 0.2, 1), 0.2, 1e-12);
  clock().advance(1.0);
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(1.0, 0.2, 1), 0.2 * 0.505 + 0.495, 1e-6);
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(0.0, 1.0, 1), 0.505, 1e-6);
  clock().advance(1.0);
  EXPECT_EQ(item->transitionAlphaToFromThrobs(0.0, 1.0, 1), 0.0) << "at the end: the target";
}

TEST_F(KibPeopleListItemTest, NoFadeRightAfterTheAccountLoggedIn) {
  aimAccount->setLoginStatus(kIMAccountLoginStatusConnected);
  clock().advance(4.0);
  buddy->setStatus(kIMPersonStatusOffline);
  clock().advance(0.5);
  EXPECT_EQ(item->transitionAlphaToFromThrobs(1.0, 0.2, 1), 1.0);
  clock().advance(0.5);  // logged in 5 s ago: no longer just
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(1.0, 0.2, 1), 0.596, 1e-6);
}

TEST_F(KibPeopleListItemTest, PulseAlphaSwingsDownAndBack) {
  buddy->setStatus(kIMPersonStatusAvailable);
  item->startPulse();  // 4.0 s
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(1.0, 1.0, 1), 1.0, 1e-12);
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(0.3, 0.3, 1), 0.0, 1e-12);
  clock().advance(2.0);  // phase 0.495, as low as the swing goes
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(1.0, 1.0, 1), 0.01, 1e-5);
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(0.3, 0.3, 1), 0.99, 1e-5);
  clock().advance(1.0);  // phase (1 − cos(0.75π)) × 0.495 ≈ 0.845, on the way back up
  EXPECT_NEAR(item->transitionPhase(1.0), 0.845016, 1e-5);
  EXPECT_NEAR(item->transitionAlphaToFromThrobs(1.0, 1.0, 1), 0.690032, 1e-5);
}

TEST_F(KibPeopleListItemTest, PresenceNotificationsBecomeItemNotifications) {
  auto other = handle(aimAccount2, "alice", kIMPersonStatusIdle);
  other->setGroups({"Friends"});
  presence->addIMHandle(other);
  recorder.clear();

  buddy->setCapabilities(true, true, false);
  buddy->notePictureChanged();
  buddy->setMobileDeviceName("phone");
  buddy->setGroups({"Friends", "Work"});
  buddy->setStatusURL("http://example.com");    // extra properties: ignored
  buddy->setSortOrderInGroup("Friends", 3);     // reaches the presence as a certificate change: ignored
  buddy->setEmails({"alice@example.com"});      // info, but nothing shown changed
  buddy->setNickname("Ali");                    // info, and the display name changed
  ASSERT_EQ(recorder.names(), (Names{kUpdating, kUpdating, kUpdating, kGroupChange, kUpdating}));
  for (const auto& n : recorder.received) {
    ASSERT_NE(n->userInfo(), nullptr);
    EXPECT_EQ(n->userInfo()->objectForKey(kKibIMHandleResponsibleKey), buddy);
  }

  // The presence's own sort-order notification is reposted.
  recorder.clear();
  presence->postNotificationNamedForIMHandle(kKibPresenceSortOrderChangedNotification, other);
  ASSERT_EQ(recorder.names(), Names{kSortOrder});
  EXPECT_EQ(recorder.received[0]->userInfo()->objectForKey(kKibIMHandleResponsibleKey), other);

  // A message change without a status change refreshes the row only.
  recorder.clear();
  buddy->setStatusMessage("busy");
  EXPECT_EQ(recorder.names(), Names{kUpdating});
  EXPECT_EQ(item->previousStatus(), 0u);
}

TEST_F(KibPeopleListItemTest, IdleMinutesRefreshTheRow) {
  buddy->updateStatus(kIMPersonStatusIdle, "", 0.0);
  recorder.clear();
  advance(59.0);
  buddy->updateStatus(kIMPersonStatusIdle, "", 30.0);  // a new idle start, still under a minute
  EXPECT_TRUE(recorder.received.empty());
  buddy->updateStatus(kIMPersonStatusIdle, "", 60.0);
  EXPECT_EQ(recorder.names(), Names{kUpdating}) << "a new idle minute";
}

TEST_F(KibPeopleListItemTest, DisplayTextIsCachedAndCleaned) {
  buddy->setNickname("Ali");
  EXPECT_EQ(item->displayName()->value(), "Ali");
  buddy->setStatusMessage("  gone\nfishing \r\n");
  auto message = item->displayStatusMessage();
  EXPECT_EQ(message->value(), "gone fishing");
  EXPECT_EQ(item->displayStatusMessage(), message) << "cached";

  // An idle person shows the idle text, unless the handle has a status URL.
  buddy->updateStatus(kIMPersonStatusIdle, "away from keys", 600.0);
  ASSERT_EQ(item->effectiveStatus(), kIMPersonStatusIdle);
  EXPECT_EQ(item->displayStatusMessage()->value(), "Idle 10m");
  buddy->setStatusURL("http://example.com/now");
  item->clearAttributedStatusMessageCache();
  EXPECT_EQ(item->displayStatusMessage()->value(), "away from keys");

  EXPECT_EQ(KibPeopleListItem::displayStatusMessageForString("\n a\nb \n")->value(), "a b");
  EXPECT_EQ(KibPeopleListItem::displayNameForString(" x ")->value(), " x ");
}

TEST_F(KibPeopleListItemTest, ANewPresenceIsObservedWhileTheOldOneKeepsTheItem) {
  auto newcomer = handle(aimAccount2, "bob", kIMPersonStatusAvailable);
  auto replacement = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(nullptr, nullptr,
                                                                                          std::nullopt);
  replacement->addIMHandle(newcomer);
  item->setBuddyListPresence(replacement);
  EXPECT_TRUE(replacement->hasObserver(item.get()));
  EXPECT_TRUE(presence->hasObserver(item.get())) << "the old presence is never unobserved here";
  EXPECT_EQ(item->currentStatus(), kIMPersonStatusAvailable);
  EXPECT_EQ(item->previousStatus(), kIMPersonStatusAway);
  EXPECT_EQ(item->imHandle(), newcomer);
  EXPECT_TRUE(recorder.received.empty());
  presence->removeObserver(item.get());  // the test lets go of the old presence cleanly

  // Going away, the item leaves its presence, also a quiet one.
  auto quiet = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFiltersQuiet(nullptr, nullptr,
                                                                                         std::nullopt, true);
  auto quietItem = KibPeopleListItem::initWithBuddyListPresenceInGroup(quiet, nullptr);
  EXPECT_FALSE(quiet->hasObserver(quietItem.get()));
  quiet->addObserver(quietItem.get());
  quietItem.reset();
  EXPECT_TRUE(quiet->observers().empty());

  recorder.clear();
  item.reset();
  EXPECT_TRUE(replacement->observers().empty());
}

TEST_F(KibPeopleListItemTest, DescribesEachKindOfItem) {
  auto group = KibPeopleListGroup::init();
  group->setName("Work");
  auto header = KibPeopleListItem::initAsGroup(group.get());
  EXPECT_TRUE(matchesWithAddress(header->description(), "KibPeopleListItem<", "> Group \"Work\""))
      << header->description();
  EXPECT_EQ(item->description(), "KibPeopleListItem Group: \"Friends\" " + presence->description());
  auto empty = KibPeopleListItem::initWithBuddyListPresenceInGroup(nullptr, group.get());
  EXPECT_TRUE(matchesWithAddress(empty->description(), "KibPeopleListItem<", "> (null) in group \"Work\""))
      << empty->description();
}

}  // namespace
