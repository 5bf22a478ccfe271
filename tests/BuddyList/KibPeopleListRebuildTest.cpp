#include <gtest/gtest.h>

#include "Source/BuddyList/KibPeopleList.h"
#include "platform/im/IMConstants.h"
#include "tests/BuddyList/PeopleListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using kibtest::Rows;

constexpr std::uint64_t kSearchableWhileOffline = 32768;

class KibPeopleListRebuildTest : public kibtest::PeopleListTest {
 protected:
  void arrangeInGroups(std::initializer_list<const char*> names) {
    list->setArrangesByGroup(true);
    for (const char* name : names) list->addGroup(name);
  }

  KibPeopleListItemPtr displayed(const std::string& row) const {
    for (const auto& item : list->items())
      if (!item->isGroup() && item->displayName()->value() == row) return item;
    return nullptr;
  }
};

TEST_F(KibPeopleListRebuildTest, AGroupShowsItsHeaderAloneButNotInAFruitlessSearch) {
  arrangeInGroups({"Empty"});
  list->refreshList();
  EXPECT_EQ(rows(), Rows{"[Empty]"});
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(list->items().front()->delegate(), list.get());

  search("x");
  EXPECT_TRUE(list->inSearchMode());
  EXPECT_TRUE(list->items().empty());
  EXPECT_EQ(updates, 1) << "an empty result posts nothing";

  list->setSearchString(makeString(" \t "));
  EXPECT_FALSE(list->inSearchMode());
  list->refreshList();
  EXPECT_EQ(rows(), Rows{"[Empty]"});
}

TEST_F(KibPeopleListRebuildTest, ACollapsedGroupShowsItsHeaderAndSearchShowsItsMatches) {
  arrangeInGroups({"Friends"});
  list->setShowsAwayPeople(false);
  list->addPeopleFromArray({buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "Able"), {"Friends"}),
                            buddy(aimAccount, "bob", kIMPersonStatusAvailable, person("Bob", "Baker"), {"Friends"}),
                            buddy(aimAccount, "cat", kIMPersonStatusAway, person("Cat", "Cole"), {"Friends"})});
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able", "Bob Baker"}));

  list->groupWithName("Friends")->setExpanded(false);
  list->refreshList();
  EXPECT_EQ(rows(), Rows{"[Friends]"});

  // Search mode passes over collapsed groups and status filters alike.
  search("ann");
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able"}));
  search("cole");
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Cat Cole"}));
  search("nobody");
  EXPECT_TRUE(rows().empty());
}

TEST_F(KibPeopleListRebuildTest, OfflinePeopleGetFreshRowsUnderTheOfflineHeader) {
  arrangeInGroups({"Friends", "Work"});
  list->setUsesOfflineGroup(true);
  list->setUsesAmbrelGroup(true);
  auto ann = buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "Able"), {"Friends"});
  auto bo = buddy(aimAccount, "bo", kIMPersonStatusOffline, person("Bo", "Best"), {"Friends"});
  auto cy = buddy(jabberAccount, "cy", kIMPersonStatusOffline, person("Cy", "Cole"), {"Work"});
  auto lou = buddy(subnetAccount, "lou@host", kIMPersonStatusOffline, person("Lou", "Local"), {"Work"});
  list->addPeopleFromArray({ann, bo, cy, lou});

  // The Ambrel group holds no offline members, so Lou is nowhere.
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able", "[Work]", "[Local]", "[Offline]", "Bo Best", "Cy Cole"}));
  auto boInFriends = list->groupWithName("Friends")->members().at(1);
  auto boOffline = displayed("Bo Best");
  ASSERT_NE(boOffline, nullptr);
  EXPECT_NE(boOffline, boInFriends) << "a row of its own";
  EXPECT_EQ(boOffline->peopleListGroup(), list->offlineGroup().get());
  EXPECT_EQ(boOffline->buddyListPresence()->person(), bo->person());
  EXPECT_EQ(boOffline->buddyListPresence()->imHandles(), KibPeopleList::Handles{bo});
  EXPECT_EQ(boOffline->delegate(), list.get());
  EXPECT_TRUE(boOffline->hasObserver(list.get()));
  // Ann is online, so the Offline group was told not to show her.
  auto annItem = displayed("Ann Able");
  EXPECT_EQ(annItem->delegate(), list.get());
  EXPECT_EQ(list->offlineGroup()->dontShowMembers().count(annItem->buddyListPresence()), 1u);
  EXPECT_EQ(list->allIMHandles().size(), 3u) << "the copies and the smart groups are not counted";

  // Every rebuild makes the rows afresh and stops observing the old ones.
  list->refreshList();
  EXPECT_NE(displayed("Bo Best"), boOffline);
  EXPECT_FALSE(boOffline->hasObserver(list.get()));

  // Bo comes online: back in Friends, out of the Offline group.
  bo->setStatus(kIMPersonStatusAvailable);
  advance(2.0);  // the end of his status transition
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able", "Bo Best", "[Work]", "[Local]", "[Offline]", "Cy Cole"}));

  // With nobody offline the Offline header still comes, alone.
  list->removeIMHandle(cy);
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able", "Bo Best", "[Work]", "[Local]", "[Offline]"}));

  // Hiding offline people turns the Offline group off.
  cy->setStatus(kIMPersonStatusOffline);
  list->addIMHandle(cy);
  list->setShowsOfflinePeople(false);
  EXPECT_FALSE(list->usesOfflineGroup());
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able", "Bo Best", "[Work]", "[Local]"}));
  // Without the Offline group, offline people show in their own groups.
  list->setShowsOfflinePeople(true);
  list->setUsesOfflineGroup(false);
  EXPECT_EQ(rows(), (Rows{"[Friends]", "Ann Able", "Bo Best", "[Work]", "Cy Cole", "[Local]", "Lou Local"}));
}

TEST_F(KibPeopleListRebuildTest, NothingDisplayedMeansNoOfflineHeaderEither) {
  list->setArrangesByGroup(true);
  list->setUsesOfflineGroup(true);
  list->refreshList();
  EXPECT_TRUE(list->items().empty());
  EXPECT_EQ(updates, 0);
}

TEST_F(KibPeopleListRebuildTest, AFlatListFiltersByStatusAndLeavesItsRowsWithoutDelegate) {
  list->addPeopleFromArray({buddy(aimAccount, "di", kIMPersonStatusOffline, person("Di", "Dell")),
                            buddy(aimAccount, "ann", kIMPersonStatusAvailable, person("Ann", "Able")),
                            buddy(aimAccount, "ed", kIMPersonStatusUnknown, person("Ed", "Eve")),
                            buddy(aimAccount, "cy", kIMPersonStatusIdle, person("Cy", "Cole")),
                            buddy(aimAccount, "fay", kIMPersonStatusNoStatus, person("Fay", "Fox")),
                            buddy(aimAccount, "bo", kIMPersonStatusAway, person("Bo", "Best"))});
  EXPECT_EQ(rows(), (Rows{"Ann Able", "Bo Best", "Cy Cole", "Fay Fox", "Di Dell", "Ed Eve"}));
  // Filing made the list their delegate; a rebuild takes it from the rows it
  // displayed before and gives it back only to grouped rows.
  for (const auto& item : list->items()) EXPECT_EQ(item->delegate(), list.get());
  list->refreshList();
  for (const auto& item : list->items()) EXPECT_EQ(item->delegate(), nullptr);

  list->setShowsIdlePeople(false);
  list->setShowsUnknownPeople(false);
  EXPECT_EQ(rows(), (Rows{"Ann Able", "Bo Best", "Fay Fox", "Di Dell"}));
  // As the status menu sets it up: available people only.
  list->setShowsOfflinePeople(false);
  list->setShowsAwayPeople(false);
  list->setShowsNoStatusPeople(false);
  EXPECT_EQ(rows(), Rows{"Ann Able"});
}

TEST_F(KibPeopleListRebuildTest, EveryTermMustBeFoundIgnoringCaseAccentsAndWidth) {
  aimAccount->setCapabilities(kSearchableWhileOffline);
  list->addPeopleFromArray({buddy(aimAccount, "as1", kIMPersonStatusAvailable, person("Alice", "Smith")),
                            buddy(aimAccount, "aj2", kIMPersonStatusAvailable, person("Alice", "Jones")),
                            buddy(aimAccount, "jn3", kIMPersonStatusAvailable, person("José", "Núñez")),
                            buddy(aimAccount, "rb4", kIMPersonStatusOffline, person("Renee", "Blanc"))});
  auto rowsFor = [&](const std::string& text) {
    search(text);
    return rows();
  };
  EXPECT_EQ(rowsFor("ali smi"), Rows{"Alice Smith"});
  EXPECT_EQ(rowsFor("SMI ALI"), Rows{"Alice Smith"});
  EXPECT_EQ(rowsFor("  ali \t  smi  "), Rows{"Alice Smith"}) << "empty parts match by themselves";
  EXPECT_EQ(rowsFor("ali\u3000smi"), Rows{"Alice Smith"}) << "an ideographic space separates too";
  EXPECT_EQ(rowsFor("ali"), (Rows{"Alice Jones", "Alice Smith"}));
  EXPECT_TRUE(rowsFor("alice brown").empty()) << "only the first word is found";
  EXPECT_EQ(rowsFor("jose nunez"), Rows{"José Núñez"});
  EXPECT_EQ(rowsFor("Renée"), Rows{"Renee Blanc"}) << "an accented term finds the plain name";
  EXPECT_EQ(rowsFor("ＲＥＮＥＥ"), Rows{"Renee Blanc"}) << "so do full-width letters";
}

TEST_F(KibPeopleListRebuildTest, SearchLooksAtHandlesExceptALocalBuddysNames) {
  auto ally = buddy(aimAccount, "qq-ally", kIMPersonStatusAvailable, person("Ally", "Ames"));
  ally->setEmails({"ally@example.org"});
  ally->setOtherServiceIDs({{"Jabber", "ames@jabber.example"}});
  ally->setNickname("Sparrow");
  auto lou = buddy(subnetAccount, "qq-lou", kIMPersonStatusAvailable, person("Lou", "Lane"));
  lou->setNickname("Robin");
  list->addPeopleFromArray({ally, lou});

  auto rowsFor = [&](const std::string& text) {
    search(text);
    return rows();
  };
  EXPECT_EQ(rowsFor("qq-"), Rows{"Ally Ames"}) << "a local buddy is not found by its ID";
  EXPECT_TRUE(rowsFor("robin").empty()) << "nor by its nickname";
  EXPECT_EQ(rowsFor("sparrow"), Rows{"Ally Ames"});
  EXPECT_EQ(rowsFor("subnet"), Rows{"Lou Lane"}) << "but by its service's name";
  EXPECT_EQ(rowsFor("example.org"), Rows{"Ally Ames"});
  EXPECT_EQ(rowsFor("jabber.example"), Rows{"Ally Ames"});
  EXPECT_EQ(rowsFor("available lane"), Rows{"Lou Lane"}) << "the status name is a field too";
}

TEST_F(KibPeopleListRebuildTest, OfflinePeopleAreFoundOnlyWhereTheAccountAllowsIt) {
  list->setShowsOfflinePeople(false);
  auto olga = buddy(aimAccount2, "olga", kIMPersonStatusOffline, person("Olga", "Orr"));
  auto pat = buddy(aimAccount2, "pat", kIMPersonStatusUnknown, person("Pat", "Poe"));
  pat->setAuthRequestStatus(kIMAuthRequestPending);
  list->addPeopleFromArray({olga, pat});
  EXPECT_TRUE(list->items().empty());

  search("olga");
  EXPECT_EQ(rows(), Rows{"Pat Poe"}) << "Olga's account lacks the capability";
  search("zzzz");
  EXPECT_EQ(rows(), Rows{"Pat Poe"}) << "a pending request is found whatever the text";

  pat->setAuthRequestStatus(kIMAuthRequestNone);
  aimAccount2->setCapabilities(kSearchableWhileOffline);
  search("orr");
  EXPECT_EQ(rows(), Rows{"Olga Orr"}) << "search mode shows hidden statuses";

  // Two handles: the account test no longer applies.
  aimAccount2->setCapabilities(0);
  list->addIMHandle(buddy(jabberAccount, "olga@jabber", kIMPersonStatusOffline, olga->person()));
  search("olga");
  EXPECT_EQ(rows(), Rows{"Olga Orr"});
}

TEST_F(KibPeopleListRebuildTest, SearchModeFollowsTheSearchStringObject) {
  auto text = makeString("ann");
  list->setSearchString(text);
  EXPECT_TRUE(list->inSearchMode());
  list->endSearchMode();
  EXPECT_FALSE(list->inSearchMode());
  EXPECT_EQ(list->searchString(), text) << "the text is kept";
  list->setSearchString(text);
  EXPECT_FALSE(list->inSearchMode()) << "the same object again changes nothing";
  list->setSearchString(makeString("ann"));
  EXPECT_TRUE(list->inSearchMode());
  list->setSearchString(nullptr);
  EXPECT_FALSE(list->inSearchMode());
  EXPECT_EQ(rebuilds(), 0u) << "none of this rebuilds";
}

}  // namespace
