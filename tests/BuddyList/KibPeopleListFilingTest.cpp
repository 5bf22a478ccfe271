#include <gtest/gtest.h>

#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/UserDefaults.h"
#include "platform/im/IMConstants.h"
#include "tests/BuddyList/PeopleListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using kibtest::Rows;

ArrayPtr groupNames(std::initializer_list<const char*> names) {
  auto array = std::make_shared<Array>();
  for (const char* name : names) array->add(makeString(name));
  return array;
}

std::vector<std::string> storedNames(const std::string& key) {
  std::vector<std::string> result;
  if (auto array = UserDefaults::standardUserDefaults().arrayForKey(key))
    for (const auto& entry : array->items()) result.push_back(stringValue(entry));
  return result;
}

class KibPeopleListFilingTest : public kibtest::PeopleListTest {
 protected:
  void arrangeInGroups(std::initializer_list<const char*> names) {
    list->setArrangesByGroup(true);
    for (const char* name : names) list->addGroup(name);
  }

  KibPeopleListGroupPtr group(const std::string& name) const { return list->groupWithName(name); }
};

TEST_F(KibPeopleListFilingTest, AFlatListMergesAPersonsHandlesOnlyWithSubstitution) {
  auto ann = person("Ann", "Able");
  auto annAim = buddy(aimAccount, "ann", kIMPersonStatusAvailable, ann);
  auto annJabber = buddy(jabberAccount, "ann@jabber", kIMPersonStatusAway, ann);
  list->addPeopleFromArray({annAim, annJabber, annAim});
  ASSERT_EQ(list->peopleListItems().size(), 1u);
  EXPECT_EQ(list->peopleListItems().front()->buddyListPresence()->imHandles(), (KibPeopleList::Handles{annAim, annJabber}));
  EXPECT_EQ(list->peopleListItems().front()->buddyListPresence()->person(), ann);
  EXPECT_EQ(rows(), Rows{"Ann Able"});

  // Without a person the handles of one ID stay together, others apart.
  list->addPeopleFromArray({buddy(aimAccount, "x1", kIMPersonStatusAvailable), buddy(aimAccount, "x2", kIMPersonStatusAvailable)});
  EXPECT_EQ(list->peopleListItems().size(), 3u);

  // Without substitution: one buddy on one service per item.
  list->removeAllIMHandles();
  EXPECT_TRUE(list->peopleListItems().empty());
  list->setAllowsIMHandleSubstitution(false);
  auto annAimElsewhere = buddy(aimAccount2, "ann", kIMPersonStatusOffline, ann);
  list->addPeopleFromArray({annAim, annJabber, annAim, annAimElsewhere});
  ASSERT_EQ(list->peopleListItems().size(), 2u);
  const auto& first = list->peopleListItems().front()->buddyListPresence();
  EXPECT_EQ(first->imHandles(), (KibPeopleList::Handles{annAim, annAimElsewhere})) << "same ID, same service";
  EXPECT_EQ(first->IDFilter(), std::optional<std::string>("ann"));
  EXPECT_EQ(first->service(), aim);
  EXPECT_EQ(first->person(), nullptr);

  // The user's own entries are skipped on request.
  auto me = aimAccount->loginIMHandle();
  list->addPeopleFromArraySkipMe({me}, true);
  EXPECT_FALSE(list->containsIMHandle(me));
  list->addPeopleFromArraySkipMe({me}, false);
  EXPECT_TRUE(list->containsIMHandle(me));
}

TEST_F(KibPeopleListFilingTest, HandlesGoToEveryGroupThatWantsThemUnlessOneConsumesThem) {
  arrangeInGroups({"A", "B"});
  list->setUsesAmbrelGroup(true);
  auto both = buddy(aimAccount, "both", kIMPersonStatusAvailable, person("Bea", "Both"), {"A", "B"});
  auto local = buddy(subnetAccount, "lou@host", kIMPersonStatusAvailable, person("Lou", "Local"), {"A"});
  auto nowhere = buddy(aimAccount, "nowhere", kIMPersonStatusAvailable, person("No", "Where"), {"Elsewhere"});
  list->addPeopleFromArray({both, local, nowhere});

  ASSERT_EQ(group("A")->members().size(), 1u);
  ASSERT_EQ(group("B")->members().size(), 1u);
  EXPECT_NE(group("A")->members().front(), group("B")->members().front());
  EXPECT_EQ(group("A")->members().front()->buddyListPresence()->groups(), KibBuddyListPresence::GroupNames{"A"});
  // The Ambrel group took the local-network buddy before group A could, for all its groups.
  ASSERT_EQ(list->ambrelGroup()->members().size(), 1u);
  EXPECT_EQ(list->ambrelGroup()->members().front()->imHandle(), local);
  EXPECT_FALSE(list->ambrelGroup()->members().front()->buddyListPresence()->groups().has_value());
  EXPECT_FALSE(list->containsIMHandle(nowhere));
  EXPECT_EQ(rows(), (Rows{"[A]", "Bea Both", "[B]", "Bea Both", "[Local]", "Lou Local"}));

  // Taking everything out keeps the groups (unless asked) and the smart groups' items.
  resetCounts();
  list->removeAllIMHandles();
  EXPECT_EQ(countLines("Removing all IMHandles and groups, no more items"), 1u);
  EXPECT_EQ(list->peopleListGroups().size(), 2u);
  EXPECT_TRUE(group("A")->members().empty());
  EXPECT_EQ(rows(), (Rows{"[A]", "[B]", "[Local]", "Lou Local"}));
  list->removeAllIMHandlesAndGroups(true);
  EXPECT_TRUE(list->peopleListGroups().empty());
  EXPECT_EQ(rows(), (Rows{"[Local]", "Lou Local"}));
}

TEST_F(KibPeopleListFilingTest, RemovingAHandleEmptiesAndDropsItsItemsOnly) {
  auto ann = person("Ann", "Able");
  auto annAim = buddy(aimAccount, "ann", kIMPersonStatusAvailable, ann);
  auto annJabber = buddy(jabberAccount, "ann@jabber", kIMPersonStatusAway, ann);
  list->addPeopleFromArray({annAim, annJabber});
  auto item = list->peopleListItems().front();
  list->removeIMHandle(annAim);
  EXPECT_EQ(list->peopleListItems(), KibPeopleList::Items{item});
  EXPECT_EQ(item->imHandle(), annJabber);
  resetCounts();
  list->removeIMHandle(annJabber);
  EXPECT_TRUE(list->peopleListItems().empty());
  EXPECT_EQ(item->peopleListGroup(), nullptr);
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_TRUE(list->items().empty());

  // In groups: from the named groups only, or from all of them.
  list->setArrangesByGroup(true);
  list->addGroup("A");
  list->addGroup("B");
  auto bea = buddy(aimAccount, "bea", kIMPersonStatusAvailable, person("Bea", "Both"), {"A", "B"});
  list->addIMHandle(bea);
  auto inA = group("A")->members().front();
  list->removeIMHandleFromGroup(bea, "A");
  EXPECT_TRUE(group("A")->members().empty());
  EXPECT_FALSE(inA->hasObserver(list.get()));
  EXPECT_EQ(inA->peopleListGroup(), nullptr);
  EXPECT_EQ(rows(), (Rows{"[A]", "[B]", "Bea Both"}));
  list->removeIMHandleFromGroups(bea, KibPeopleList::GroupNames{});
  EXPECT_EQ(rows(), (Rows{"[A]", "[B]"}));
}

TEST_F(KibPeopleListFilingTest, RepopulatingMovesAHandleAndReusesTheItemItLeft) {
  arrangeInGroups({"A", "B"});
  auto ann = buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "Able"), {"A"});
  list->addIMHandle(ann);
  auto item = group("A")->members().front();
  auto oldPresence = item->buddyListPresence();

  ann->setGroups({"B"});
  EXPECT_EQ(group("A")->members(), KibPeopleList::Items{item}) << "a group change alone moves nothing";
  list->repopulateIMHandle(ann);
  EXPECT_TRUE(group("A")->members().empty());
  EXPECT_EQ(group("B")->members(), KibPeopleList::Items{item}) << "the same item object";
  EXPECT_EQ(item->peopleListGroup(), group("B").get());
  EXPECT_NE(item->buddyListPresence(), oldPresence);
  EXPECT_EQ(item->buddyListPresence()->groups(), KibBuddyListPresence::GroupNames{"B"});
  EXPECT_TRUE(item->hasObserver(list.get()));
  EXPECT_EQ(rows(), (Rows{"[A]", "[B]", "Ann Able"}));

  // A flat list takes the handle out and does not put it back.
  list->removeAllIMHandlesAndGroups(true);
  list->setArrangesByGroup(false);
  list->addIMHandle(ann);
  ASSERT_EQ(list->peopleListItems().size(), 1u);
  list->repopulateIMHandle(ann);
  EXPECT_TRUE(list->peopleListItems().empty());
  EXPECT_FALSE(list->containsIMHandle(ann));
}

TEST_F(KibPeopleListFilingTest, SetGroupsAddsDropsAndOrdersTheGroups) {
  list->setArrangesByGroup(true);
  auto abc = groupNames({"A", "B", "C"});
  list->setGroups(abc);
  EXPECT_EQ(list->peopleListGroupSortOrder(), abc);
  EXPECT_EQ(rows(), (Rows{"[A]", "[B]", "[C]"}));
  auto a = group("A"), b = group("B"), c = group("C");

  // The same names in another order: nothing added or dropped, a resort, a log line.
  resetCounts();
  list->setGroups(groupNames({"C", "A", "B"}));
  EXPECT_EQ(list->peopleListGroups(), (KibPeopleList::Groups{a, b, c}));
  EXPECT_EQ(rows(), (Rows{"[C]", "[A]", "[B]"}));
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_EQ(countLinesStartingWith("_groupsOrdering changed to "), 1u);
  resetCounts();
  list->setGroups(list->peopleListGroupSortOrder());
  EXPECT_EQ(rebuilds(), 1u) << "the same array object still resorts";
  EXPECT_EQ(countLinesStartingWith("_groupsOrdering changed to "), 0u);

  // Dropping B and adding D.
  list->setGroups(groupNames({"D", "C", "A"}));
  ASSERT_EQ(list->peopleListGroups().size(), 3u);
  EXPECT_EQ(list->peopleListGroups()[0], a);
  EXPECT_EQ(list->peopleListGroups()[1], c);
  EXPECT_EQ(list->peopleListGroups()[2]->name(), "D");
  EXPECT_EQ(rows(), (Rows{"[D]", "[C]", "[A]"}));
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(KibPeopleListFilingTest, GroupOperationsOnAFlatListAreReportedAndCarriedOut) {
  list->addGroup(std::nullopt);
  list->removeGroup(std::nullopt);
  EXPECT_TRUE(assertions->failures.empty()) << "no name: nothing, silently";

  list->addGroup("A");
  list->setGroups(groupNames({"A", "B"}));
  list->removeGroup("A");
  ASSERT_EQ(assertions->failures.size(), 3u);
  const auto& failures = assertions->failures;
  EXPECT_EQ(failures[0].description, "Can't add a group if not arranging by group");
  EXPECT_EQ(failures[0].line, 696);
  EXPECT_EQ(failures[1].description, "Can't set groups if not arranging by group");
  EXPECT_EQ(failures[1].line, 739);
  EXPECT_EQ(failures[2].description, "Can't remove a group if not arranging by group");
  EXPECT_EQ(failures[2].line, 729);
  for (const auto& failure : failures) {
    EXPECT_EQ(failure.file, "MenuExtra/../Source/BuddyList/KibPeopleList");
    EXPECT_EQ(failure.object, list.get());
  }
  EXPECT_EQ(failures[0].method, "-[KibPeopleList addGroup:]");
  // Each went ahead: A added, B added by setGroups, A removed again.
  ASSERT_EQ(list->peopleListGroups().size(), 1u);
  EXPECT_EQ(list->peopleListGroups().front()->name(), "B");
}

TEST_F(KibPeopleListFilingTest, CollapsedGroupsComeFromTheDefaultsAndGoBackThere) {
  // No key: everything starts expanded.
  arrangeInGroups({"A"});
  list->setUsesOfflineGroup(true);
  list->setUsesAmbrelGroup(true);
  EXPECT_TRUE(group("A")->isExpanded());
  EXPECT_TRUE(list->offlineGroup()->isExpanded());
  EXPECT_TRUE(list->ambrelGroup()->isExpanded());

  // A key with nothing stored: ordinary groups expanded, the special groups collapsed.
  auto fresh = KibPeopleList::init();
  fresh->setCollapsedGroupsPrefKey("CollapsedGroups");
  fresh->setArrangesByGroup(true);
  fresh->addGroup("A");
  fresh->setUsesOfflineGroup(true);
  fresh->setUsesAmbrelGroup(true);
  EXPECT_TRUE(fresh->groupWithName("A")->isExpanded());
  EXPECT_FALSE(fresh->offlineGroup()->isExpanded());
  EXPECT_FALSE(fresh->ambrelGroup()->isExpanded());

  // A stored list: collapsed exactly when named.
  UserDefaults::standardUserDefaults().setObjectForKey(groupNames({"B", "Offline"}), "CollapsedGroups");
  auto stored = KibPeopleList::init();
  stored->setCollapsedGroupsPrefKey("CollapsedGroups");
  stored->setArrangesByGroup(true);
  stored->addGroup("A");
  stored->addGroup("B");
  stored->setUsesOfflineGroup(true);
  stored->setUsesAmbrelGroup(true);
  EXPECT_TRUE(stored->groupWithName("A")->isExpanded());
  EXPECT_FALSE(stored->groupWithName("B")->isExpanded());
  EXPECT_FALSE(stored->offlineGroup()->isExpanded());
  EXPECT_TRUE(stored->ambrelGroup()->isExpanded());

  // Stored back in display order; the displayed Offline header counts once more.
  stored->refreshList();
  stored->groupWithName("A")->setExpanded(false);
  stored->_updateGroupPreferences();
  EXPECT_EQ(storedNames("CollapsedGroups"), (std::vector<std::string>{"A", "B", "Offline", "Offline"}));

  // A group that is not displayed goes without touching the stored list;
  // a displayed one leaves items at once, with no update notification.
  stored->addGroup("Zed");
  stored->removeGroup("Zed");
  EXPECT_EQ(storedNames("CollapsedGroups"), (std::vector<std::string>{"A", "B", "Offline", "Offline"}));
  int storedUpdates = 0;
  NotificationCenter::defaultCenter().addObserverForName(kKibPeopleListDidUpdateNotification, stored.get(),
                                                         [&](const NotificationPtr&) { ++storedUpdates; });
  stored->removeGroup("B");
  EXPECT_EQ(storedUpdates, 0);
  EXPECT_FALSE(stored->containsGroup("B"));
  EXPECT_EQ(stored->items().size(), 3u);
  EXPECT_EQ(storedNames("CollapsedGroups"), (std::vector<std::string>{"A", "Offline", "Offline"}));
}

TEST_F(KibPeopleListFilingTest, ACollapsedGroupsValueThatIsNoListIsWarnedAboutAndIgnored) {
  UserDefaults::standardUserDefaults().setObjectForKey(makeString("A"), "CollapsedGroups");
  list->setCollapsedGroupsPrefKey("CollapsedGroups");
  arrangeInGroups({"A"});
  list->setUsesOfflineGroup(true);
  EXPECT_TRUE(group("A")->isExpanded());
  EXPECT_FALSE(list->offlineGroup()->isExpanded()) << "as if nothing were stored";
  auto warnings = linesOf(Log::Channel::Warning);
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_EQ(warnings[0], "The collapsed groups under \"CollapsedGroups\" are not a list of group names; ignoring A");

  // The next store replaces the bad value.
  list->refreshList();
  list->_updateGroupPreferences();
  EXPECT_EQ(storedNames("CollapsedGroups"), (std::vector<std::string>{"Offline", "Offline"}));
}

TEST_F(KibPeopleListFilingTest, LookupsAndTheGroupForNewHandles) {
  arrangeInGroups({"Family", "Friends", "Work"});
  list->setGroups(groupNames({"Family", "Friends", "Work"}));
  list->setUsesOfflineGroup(true);
  EXPECT_TRUE(list->containsGroup("FRIENDS"));
  EXPECT_EQ(list->groupWithName("FRIENDS"), nullptr);
  EXPECT_NE(list->groupWithName("Friends"), nullptr);
  EXPECT_EQ(list->groupForNewIMHandles(), std::optional<std::string>("Family"));

  group("Family")->setExpanded(false);
  EXPECT_EQ(list->groupForNewIMHandles(), std::optional<std::string>("Friends"));
  group("Friends")->setExpanded(false);
  group("Work")->setExpanded(false);
  EXPECT_EQ(list->groupForNewIMHandles(), std::optional<std::string>("Family"))
      << "the Offline header ends the search at the first collapsed group";

  // A group that exists but is not displayed is not contained.
  list->addGroup("Later");
  EXPECT_FALSE(list->containsGroup("Later"));
  list->refreshList();
  EXPECT_TRUE(list->containsGroup("later"));
}

}  // namespace
