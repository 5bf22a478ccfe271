#include <gtest/gtest.h>

#include "Source/BuddyList/KibPeopleList.h"
#include "platform/im/IMConstants.h"
#include "tests/BuddyList/PeopleListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

class KibPeopleListTest : public kibtest::PeopleListTest {};

TEST_F(KibPeopleListTest, AFreshListIsFlatShowsEveryoneAndHasNothingToShow) {
  EXPECT_TRUE(list->items().empty());
  EXPECT_FALSE(list->arrangesByGroup());
  EXPECT_TRUE(list->showsOfflinePeople() && list->showsIdlePeople() && list->showsAwayPeople() &&
              list->showsUnknownPeople() && list->showsNoStatusPeople());
  EXPECT_FALSE(list->usesOfflineGroup());
  EXPECT_FALSE(list->inSearchMode());
  EXPECT_FALSE(list->makingChanges());
  EXPECT_TRUE(list->allowsIMHandleSubstitution());
  EXPECT_EQ(list->peopleListGroupSortOrder(), nullptr);
  auto parameters = list->KibSortParameters();
  EXPECT_EQ(parameters.sortKeys[0], kKibSortKeyStatus);
  EXPECT_EQ(parameters.sortKeys[1], kKibSortKeyFirstName);
  EXPECT_EQ(parameters.sortKeys[2], kKibSortKeyHandle);
  EXPECT_EQ(parameters.currentKey, 0);
  EXPECT_FALSE(parameters.usesManualOrder);

  // The Offline group is in effect only when arranged by group with offline people shown.
  list->setUsesOfflineGroup(true);
  EXPECT_FALSE(list->usesOfflineGroup());
  list->setArrangesByGroup(true);
  EXPECT_TRUE(list->usesOfflineGroup());
  list->setShowsOfflinePeople(false);
  EXPECT_FALSE(list->usesOfflineGroup());
}

TEST_F(KibPeopleListTest, ABatchRebuildsSortsAndNotifiesOnceAtItsOutermostEnd) {
  list->addIMHandle(buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "A")));
  list->addIMHandle(buddy(aimAccount, "bo", kIMPersonStatusAway, person("Bo", "B")));
  EXPECT_EQ(rebuilds(), 2u) << "each filing outside a batch resorts";
  EXPECT_EQ(updates, 2);

  resetCounts();
  list->beginChanges();
  list->beginChanges();
  for (int i = 0; i < 10; ++i) list->resort();
  list->endChanges();
  EXPECT_TRUE(list->makingChanges());
  EXPECT_EQ(rebuilds(), 0u);
  EXPECT_EQ(updates, 0);
  list->endChanges();
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_EQ(sorts(), 1u);
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(rows(), (kibtest::Rows{"Ann A", "Bo B"}));

  // A person filed inside the batch costs nothing until its end.
  resetCounts();
  list->beginChanges();
  list->addPeopleFromArray({buddy(aimAccount, "cy", kIMPersonStatusAvailable, person("Cy", "C")),
                            buddy(aimAccount, "di", kIMPersonStatusIdle, person("Di", "D"))});
  EXPECT_EQ(rebuilds(), 0u);
  list->endChanges();
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(rows(), (kibtest::Rows{"Ann A", "Cy C", "Bo B", "Di D"}));
}

TEST_F(KibPeopleListTest, AnEmptyResultPostsNothingAndClearsThePendingResort) {
  list->setShowsOfflinePeople(false);
  resetCounts();
  list->beginChanges();
  list->addIMHandle(buddy(aimAccount, "gone", kIMPersonStatusOffline, person("Gone", "G")));
  list->resort();
  list->endChanges();
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_EQ(sorts(), 0u);
  EXPECT_EQ(updates, 0);
  EXPECT_TRUE(list->items().empty());
  EXPECT_EQ(list->peopleListItems().size(), 1u);

  // Not left pending: the next request rebuilds again.
  list->resort();
  EXPECT_EQ(rebuilds(), 2u);

  // Once something shows, the update comes; when it is gone again, none does.
  list->setShowsOfflinePeople(true);
  EXPECT_EQ(updates, 1);
  list->setShowsOfflinePeople(false);
  EXPECT_EQ(updates, 1);
  EXPECT_TRUE(list->items().empty());

  // Setting an option to its current value does nothing at all.
  resetCounts();
  list->setShowsOfflinePeople(false);
  list->setShowsAwayPeople(true);
  list->setArrangesByGroup(false);
  EXPECT_EQ(rebuilds(), 0u);
}

TEST_F(KibPeopleListTest, AnUnmatchedEndChangesLeavesTheCounterNegative) {
  list->addIMHandle(buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "A")));
  resetCounts();
  list->endChanges();
  EXPECT_FALSE(list->makingChanges());
  EXPECT_EQ(rebuilds(), 0u);

  // One beginChanges brings the counter back to zero only: every filing in
  // this "batch" resorts at once.
  list->beginChanges();
  EXPECT_FALSE(list->makingChanges());
  list->addIMHandle(buddy(aimAccount, "bo", kIMPersonStatusAvailable, person("Bo", "B")));
  list->addIMHandle(buddy(aimAccount, "cy", kIMPersonStatusAvailable, person("Cy", "C")));
  EXPECT_EQ(rebuilds(), 2u);
  EXPECT_EQ(updates, 2);
  list->endChanges();
  EXPECT_EQ(rebuilds(), 2u);

  // Two more are needed before a batch defers again.
  list->beginChanges();
  list->beginChanges();
  EXPECT_TRUE(list->makingChanges());
  list->addIMHandle(buddy(aimAccount, "di", kIMPersonStatusAvailable, person("Di", "D")));
  list->addIMHandle(buddy(aimAccount, "ed", kIMPersonStatusAvailable, person("Ed", "E")));
  EXPECT_EQ(rebuilds(), 2u);
  list->endChanges();
  EXPECT_EQ(rebuilds(), 3u);
  EXPECT_EQ(updates, 3);
  EXPECT_EQ(list->items().size(), 5u);
}

// Records, in one sequence, what the list hands its direct observers and the
// update notifications it posts.
class EventLog final : public IMDirectlyObservableObjectObserver {
 public:
  void objectDidPostDirectNotification(const NotificationPtr& notification) override {
    events.push_back(notification->name());
  }
  std::vector<std::string> events;
};

TEST_F(KibPeopleListTest, ItemNotificationsAreForwardedFirstAndThreeOfThemResort) {
  auto ann = buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "A"));
  auto bo = buddy(aimAccount, "bo", kIMPersonStatusAvailable, person("Bo", "B"));
  list->addPeopleFromArray({ann, bo});
  EXPECT_EQ(rows(), (kibtest::Rows{"Ann A", "Bo B"}));

  EventLog log;
  list->addObserver(&log);
  NotificationCenter::defaultCenter().addObserverForName(kKibPeopleListDidUpdateNotification, list.get(),
                                                         [&log](const NotificationPtr&) { log.events.push_back("update"); });

  // Ann goes away: her item asks for sorting; the list forwards, then resorts.
  resetCounts();
  ann->setStatus(kIMPersonStatusAway);
  ASSERT_GE(log.events.size(), 2u);
  EXPECT_EQ(log.events[0], kKibPeopleListItemNeedsSortingNotification);
  EXPECT_EQ(log.events[1], "update");
  EXPECT_EQ(rows(), (kibtest::Rows{"Bo B", "Ann A"}));
  EXPECT_EQ(rebuilds(), 1u);

  // A notification outside the table only reaches the observers.
  resetCounts();
  log.events.clear();
  auto item = list->items().front();
  item->informObserversOfNotification(Notification::make(kKibPeopleListItemNeedsUpdatingNotification, item));
  EXPECT_EQ(log.events, std::vector<std::string>{kKibPeopleListItemNeedsUpdatingNotification});
  EXPECT_EQ(rebuilds(), 0u);

  // Each of the three table names resorts.
  for (const auto& name : KibPeopleList::_notificationNames()) {
    resetCounts();
    item->informObserversOfNotification(Notification::make(name, item));
    EXPECT_EQ(rebuilds(), 1u) << name;
    EXPECT_EQ(updates, 1) << name;
  }
  EXPECT_EQ(KibPeopleList::_notificationSelectors().size(), KibPeopleList::_notificationNames().size());
  for (const auto& selector : KibPeopleList::_notificationSelectors()) EXPECT_TRUE(list->respondsToSelector(selector));

  // Inside a batch an item's request only marks the resort as due.
  resetCounts();
  list->beginChanges();
  bo->setStatus(kIMPersonStatusIdle);
  ann->setStatus(kIMPersonStatusIdle);
  EXPECT_EQ(rebuilds(), 0u);
  list->endChanges();
  EXPECT_EQ(rebuilds(), 1u);
  list->removeObserver(&log);
}

TEST_F(KibPeopleListTest, QueriesAnswerByIdentityAndOnlyForGroupedLists) {
  auto annPerson = person("Ann", "A");
  auto annAim = buddy(aimAccount, "ann", kIMPersonStatusAvailable, annPerson, {"Friends"});
  auto annJabber = buddy(jabberAccount, "ann@jabber", kIMPersonStatusAway, annPerson, {"Friends", "Work"});
  auto bo = buddy(aimAccount, "bo", kIMPersonStatusAvailable, person("Bo", "B"), {"Work"});
  list->addPeopleFromArray({annAim, annJabber, bo});

  auto all = list->allIMHandles();
  EXPECT_EQ(all.size(), 3u);
  EXPECT_EQ(list->numberOfIMHandles(), 3u);
  EXPECT_TRUE(list->containsIMHandle(annJabber));
  EXPECT_FALSE(list->containsIMHandle(IMHandle::make(aimAccount, "ann"))) << "an equal-looking handle is not it";

  // Groups added while flat are reported and made, but the flat list answers no group queries.
  list->addGroup("Friends");
  EXPECT_EQ(assertions->failures.size(), 1u);
  EXPECT_EQ(list->peopleListGroups().size(), 1u);
  EXPECT_FALSE(list->peopleInGroup("Friends").has_value());
  EXPECT_FALSE(list->representedPeopleInGroup("Friends").has_value());
  EXPECT_FALSE(list->containsGroup("Friends"));
  EXPECT_FALSE(list->groupForNewIMHandles().has_value());

  // Arranged by group, the groups answer; handles filed flat are not counted any more.
  list->setArrangesByGroup(true);
  list->addGroup("Work");
  EXPECT_TRUE(list->allIMHandles().empty());
  list->addPeopleFromArray({annAim, annJabber, bo});
  auto friends = list->peopleInGroup("Friends");
  ASSERT_TRUE(friends.has_value());
  EXPECT_EQ(friends->size(), 2u);
  auto work = list->representedPeopleInGroup("Work");
  ASSERT_TRUE(work.has_value());
  EXPECT_EQ(*work, (KibPeopleList::Handles{annJabber, bo}));
  EXPECT_FALSE(list->peopleInGroup("").has_value());
  EXPECT_FALSE(list->peopleInGroup("work").has_value()) << "group names are matched exactly";
  EXPECT_EQ(list->numberOfIMHandles(), 3u);
}

TEST_F(KibPeopleListTest, TeardownLeavesNoItemPointingAtTheList) {
  auto ann = buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "A"), {"Friends"});
  auto bo = buddy(aimAccount, "bo", kIMPersonStatusOffline, person("Bo", "B"), {"Friends"});
  list->setArrangesByGroup(true);
  list->setUsesOfflineGroup(true);
  list->addGroup("Friends");
  list->addPeopleFromArray({ann, bo});
  auto header = list->peopleListGroups().front()->peopleListItem();
  auto annItem = list->peopleListGroups().front()->members().front();
  auto offlineCopy = list->offlineGroup()->members().front();
  EXPECT_EQ(annItem->delegate(), list.get());
  EXPECT_TRUE(annItem->hasObserver(list.get()));

  // A group that was dropped keeps a member someone else still holds.
  list->setGroups(std::make_shared<Array>());
  list.reset();
  for (const auto& item : {annItem, offlineCopy, header}) {
    EXPECT_EQ(item->delegate(), nullptr);
    EXPECT_TRUE(item->observers().empty());
  }
  // The items live on and post without anyone to call.
  ann->setStatus(kIMPersonStatusAway);
  bo->setStatus(kIMPersonStatusAvailable);
  EXPECT_EQ(annItem->currentStatus(), kIMPersonStatusAway);
}

}  // namespace

namespace {

class TaggedItem final : public KibPeopleListItem {
 public:
  static KibPeopleListItemPtr make() { return std::make_shared<TaggedItem>(); }
  std::string className() const override { return "TaggedItem"; }
};

TEST_F(KibPeopleListTest, LogLinesAndItemsOfACustomClass) {
  list->setCustomPeopleListItemClass(&TaggedItem::make);
  list->setArrangesByGroup(true);
  list->addGroup("A");
  resetCounts();
  list->addIMHandle(buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "A"), {"A"}));
  for (const auto& item : list->items()) EXPECT_EQ(item->className(), "TaggedItem");

  std::vector<std::string> lines;
  for (const auto& line : linesOf(Log::Channel::Always))
    if (line.rfind("Setting delegate to ", 0) != 0) lines.push_back(line.substr(0, line.find(':')));
  EXPECT_EQ(lines, (std::vector<std::string>{"Rebuild Items", "***** ALL GROUPS *****", "* A", "**********************",
                                              "Items after rebuild", "Items after sort"}));

  Log::setEnabledCategories({});
  resetCounts();
  list->resort();
  list->setGroups(std::make_shared<Array>());
  list->removeAllIMHandles();
  EXPECT_EQ(updates, 1);
  EXPECT_TRUE(linesOf(Log::Channel::Always).empty());
}

// Records the order in which items go.
class CountedItem final : public KibPeopleListItem {
 public:
  static std::vector<std::string>& gone() {
    static std::vector<std::string> names;
    return names;
  }
  static KibPeopleListItemPtr make() { return std::make_shared<CountedItem>(); }
  ~CountedItem() override { gone().push_back(displayName() ? displayName()->value() : "?"); }
};

TEST_F(KibPeopleListTest, ItemsGoInTheOrderTheyWereFiledNotTheDisplayedOne) {
  // Their memory is taken again in the order it is given back: the next
  // filing then finds its items side by side.
  Log::setEnabledCategories({});
  list->setCustomPeopleListItemClass(&CountedItem::make);
  const std::vector<IMHandlePtr> handles{buddy(aimAccount, "cy", kIMPersonStatusAway, person("Cy", "C")),
                                         buddy(aimAccount, "al", kIMPersonStatusOffline, person("Al", "A")),
                                         buddy(aimAccount, "bo", kIMPersonStatusAvailable, person("Bo", "B"))};
  list->addPeopleFromArray(handles);
  ASSERT_EQ(rows(), (kibtest::Rows{"Bo B", "Cy C", "Al A"}));
  CountedItem::gone().clear();

  list->beginChanges();
  list->removeAllIMHandlesAndGroups(true);
  EXPECT_EQ(CountedItem::gone(), (std::vector<std::string>{"Cy C", "Al A", "Bo B"}));
  list->addPeopleFromArray(handles);
  list->endChanges();
  ASSERT_EQ(rows(), (kibtest::Rows{"Bo B", "Cy C", "Al A"}));

  CountedItem::gone().clear();
  list.reset();
  EXPECT_EQ(CountedItem::gone(), (std::vector<std::string>{"Cy C", "Al A", "Bo B"}));
}

}  // namespace
