#include <gtest/gtest.h>

#include "Source/BuddyList/KibOfflinePeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListItem.h"
#include "Source/BuddyList/KibPeopleListItemDelegate.h"
#include "Source/BuddyList/KibPeopleListSorter.h"
#include "Source/BuddyList/KibServicePeopleListGroup.h"
#include "Source/BuddyList/KibSortParameters.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandleRegistrar.h"
#include "tests/BuddyList/PeopleListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

// A delegate that answers a fixed group order.
class GroupOrderDelegate final : public Object, public KibPeopleListItemDelegate {
 public:
  bool peopleListItemCanTransitionToStatus(KibPeopleListItem*, IMPersonStatus) override { return true; }
  ArrayPtr peopleListGroupSortOrder() override { return order; }
  ArrayPtr order;
};

ArrayPtr names(std::initializer_list<const char*> list) {
  auto array = std::make_shared<Array>();
  for (const char* name : list) array->add(makeString(name));
  return array;
}

class KibPeopleListItemOrderingTest : public kibtest::PeopleListTest {
 protected:
  static KibPeopleListGroupPtr group(const std::string& name, bool reorders = true) {
    auto g = KibPeopleListGroup::init();
    g->setName(name);
    g->setSupportsReordering(reorders);
    return g;
  }

  // A person item of the group whose presence is limited to the group (when it is an ordinary one).
  KibPeopleListItemPtr member(const IMHandlePtr& h, const KibPeopleListGroupPtr& g) {
    std::optional<KibBuddyListPresence::GroupNames> filter;
    if (g && !std::dynamic_pointer_cast<KibOfflinePeopleListGroup>(g) &&
        !std::dynamic_pointer_cast<KibServicePeopleListGroup>(g))
      filter = KibBuddyListPresence::GroupNames{g->name()};
    auto presence = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(h->person(), nullptr, filter);
    EXPECT_TRUE(presence->addIMHandle(h));
    auto item = KibPeopleListItem::initWithBuddyListPresenceInGroup(presence, g.get());
    keep.push_back(item);
    return item;
  }

  KibPeopleListItemPtr header(const KibPeopleListGroupPtr& g) {
    auto item = KibPeopleListItem::initAsGroup(g.get());
    g->setPeopleListItem(item);
    return item;
  }

  std::int64_t compare(const KibPeopleListItemPtr& a, const KibPeopleListItemPtr& b) {
    last = list->KibSortParameters();
    return a->compareWithKibSortParameters(*b, &last);
  }

  KibSortParameters last;
  std::vector<KibPeopleListItemPtr> keep;
};

TEST_F(KibPeopleListItemOrderingTest, HeadersLeadTheirGroupsAndGroupsKeepTheirKindOrder) {
  auto friends = group("Friends"), work = group("work");
  auto fixedZeta = group("Zeta", false), fixedAlpha = group("alpha", false);
  auto aimGroup = KibServicePeopleListGroup::initWithServiceFilter(aim);
  auto localGroup = KibServicePeopleListGroup::ambrelGroup();
  auto offline = KibOfflinePeopleListGroup::init();

  auto someone = [&](const KibPeopleListGroupPtr& g) {
    return member(buddy(aimAccount, "x" + g->name(), kIMPersonStatusAvailable, nullptr, {g->name()}), g);
  };
  auto friendsHeader = header(friends);
  auto inFriends = someone(friends), inWork = someone(work), inZeta = someone(fixedZeta), inAlpha = someone(fixedAlpha);
  auto inAim = someone(aimGroup), inLocal = someone(localGroup), inOffline = someone(offline);

  EXPECT_EQ(compare(friendsHeader, inFriends), -1);
  EXPECT_EQ(compare(inFriends, friendsHeader), 1);

  // The Offline group comes after every other kind of group.
  for (const auto& other : {inFriends, inZeta, inAim, inLocal, friendsHeader}) {
    EXPECT_EQ(compare(inOffline, other), 1);
    EXPECT_EQ(compare(other, inOffline), -1);
  }
  // Service groups by name, after the ordinary groups.
  EXPECT_EQ(compare(inAim, inLocal), -1);
  EXPECT_EQ(compare(inLocal, inAim), 1);
  EXPECT_EQ(compare(inAim, inFriends), 1);
  EXPECT_EQ(compare(inZeta, inAim), -1);
  // Groups that cannot be moved: after the movable ones, by name ignoring case.
  EXPECT_EQ(compare(inZeta, inAlpha), 1);
  EXPECT_EQ(compare(inAlpha, inZeta), -1);
  EXPECT_EQ(compare(inZeta, inFriends), 1);
  EXPECT_EQ(compare(inFriends, inAlpha), -1);

  // Movable groups follow the delegate's order, and are never equal.
  auto delegate = std::make_shared<GroupOrderDelegate>();
  inFriends->setDelegate(delegate.get());
  inWork->setDelegate(delegate.get());
  delegate->order = names({"work", "Friends"});
  EXPECT_EQ(compare(inFriends, inWork), 1);
  EXPECT_EQ(compare(inWork, inFriends), -1);
  delegate->order = names({"Friends"});
  EXPECT_EQ(compare(inFriends, inWork), -1);
  EXPECT_EQ(compare(inWork, inFriends), 1) << "a missing name sorts after every listed one";
  delegate->order = names({"Other"});
  EXPECT_EQ(compare(inFriends, inWork), 1);
  EXPECT_EQ(compare(inWork, inFriends), 1) << "two missing names: the order is not symmetric";

  // Without an order: plain names ignoring case, with a log line.
  delegate->order = nullptr;
  clearLog();
  EXPECT_EQ(compare(inWork, inFriends), 1);
  EXPECT_EQ(countLinesStartingWith("Sorting groups alphabetically self was "), 1u);
  inWork->setDelegate(nullptr);
  EXPECT_EQ(compare(inWork, inFriends), 1);
  EXPECT_EQ(compare(inFriends, inWork), -1);

  // The line is written only while the category is on.
  Log::setEnabledCategories({});
  clearLog();
  compare(inWork, inFriends);
  EXPECT_EQ(countLinesStartingWith("Sorting groups alphabetically"), 0u);
}

TEST_F(KibPeopleListItemOrderingTest, PersonsByStatusThenFirstAndLastNameThenHandle) {
  auto friends = group("Friends");
  auto aliceSmith = member(buddy(aimAccount, "zz-as", kIMPersonStatusAvailable, person("Alice", "Smith"), {"Friends"}), friends);
  auto aliceJones = member(buddy(aimAccount, "zz-aj", kIMPersonStatusAvailable, person("Alice", "Jones"), {"Friends"}), friends);
  auto bobAway = member(buddy(aimAccount, "aa-ba", kIMPersonStatusAway, person("Bob", "Adams"), {"Friends"}), friends);
  auto twinA = member(buddy(aimAccount, "twin1", kIMPersonStatusIdle, person("Dana", "Twin"), {"Friends"}), friends);
  auto twinB = member(buddy(jabberAccount, "twin2", kIMPersonStatusIdle, person("Dana", "Twin"), {"Friends"}), friends);

  EXPECT_EQ(compare(bobAway, aliceSmith), 1) << "the more available person first";
  EXPECT_EQ(last.currentKey, 0);
  EXPECT_EQ(compare(aliceJones, aliceSmith), -1) << "same first name: the last name decides";
  EXPECT_EQ(last.currentKey, 1);
  EXPECT_EQ(compare(aliceSmith, aliceJones), 1);

  // Nothing but the handles tells the twins apart: their addresses decide, consistently.
  auto forward = compare(twinA, twinB);
  EXPECT_EQ(last.currentKey, 2);
  EXPECT_NE(forward, 0);
  EXPECT_EQ(compare(twinB, twinA), -forward);
  EXPECT_EQ(compare(twinA, twinA), 0);

  // With the screen-name style only the IDs count.
  auto zedZulu = member(buddy(aimAccount, "aa-zz", kIMPersonStatusAvailable, person("Zed", "Zulu"), {"Friends"}), friends);
  EXPECT_EQ(compare(aliceJones, zedZulu), -1);
  IMHandleRegistrar::sharedInstance()->setNameStyle(kIMNameStyleScreenName);
  EXPECT_EQ(compare(aliceJones, zedZulu), 1) << "zz-aj comes after aa-zz";
  EXPECT_EQ(compare(zedZulu, aliceJones), -1);
}

TEST_F(KibPeopleListItemOrderingTest, ManualOrderReplacesTheKeysAndInvalidKeysAreSkipped) {
  auto controller = IMAccountController::sharedInstance();
  controller->addAccount(aimAccount);
  controller->addAccount(jabberAccount);
  auto friends = group("Friends");
  auto make = [&](const IMAccountPtr& account, const std::string& ID, IMPersonStatus status, std::uint32_t order) {
    auto h = buddy(account, ID, status, person(ID, "P"));
    h->setGroups({"Friends"}, {{"Friends", order}});
    return member(h, friends);
  };
  auto availableFifth = make(aimAccount, "ann", kIMPersonStatusAvailable, 5);
  auto offlineSecond = make(aimAccount, "ben", kIMPersonStatusOffline, 2);
  auto jabberSecond = make(jabberAccount, "cid", kIMPersonStatusAvailable, 2);
  auto unknownAccountSecond = make(aimAccount2, "dot", kIMPersonStatusAvailable, 2);

  auto manual = [&](const KibPeopleListItemPtr& a, const KibPeopleListItemPtr& b) {
    auto parameters = list->KibSortParameters();
    parameters.usesManualOrder = true;
    return a->compareWithKibSortParameters(*b, &parameters);
  };
  EXPECT_EQ(manual(offlineSecond, availableFifth), -1) << "sort order, not status";
  EXPECT_EQ(manual(availableFifth, offlineSecond), 1);
  EXPECT_EQ(manual(offlineSecond, jabberSecond), -1) << "equal orders: the account order";
  EXPECT_EQ(manual(jabberSecond, offlineSecond), 1);
  EXPECT_EQ(manual(unknownAccountSecond, offlineSecond), 0) << "an account the controller does not list";

  // A group whose members cannot be reordered keeps to the keys.
  friends->setSupportsMemberReordering(false);
  EXPECT_EQ(manual(offlineSecond, availableFifth), 1);

  // An invalid key is warned about and skipped; key 0 ends in a tie.
  KibSortParameters parameters;
  parameters.sortKeys[0] = 9;
  parameters.sortKeys[1] = kKibSortKeyStatus;
  parameters.sortKeys[2] = kKibSortKeyHandle;
  EXPECT_EQ(availableFifth->compareWithKibSortParameters(*offlineSecond, &parameters), -1);
  EXPECT_EQ(parameters.currentKey, 1);
  EXPECT_EQ(linesOf(Log::Channel::Warning),
            std::vector<std::string>{"IMHandle comparator got passed invalid sort key 9"});
  KibSortParameters none;
  none.sortKeys[0] = kKibSortKeyNone;
  none.sortKeys[1] = kKibSortKeyStatus;
  EXPECT_EQ(availableFifth->compareWithKibSortParameters(*offlineSecond, &none), 0);
  // A key list that never ends runs out in a tie instead of reading past the record.
  KibSortParameters endless;
  for (auto& key : endless.sortKeys) key = kKibSortKeyFirstName;
  EXPECT_EQ(unknownAccountSecond->compareWithKibSortParameters(*unknownAccountSecond, &endless), 0);
}

// The sorter's fast comparison cannot order a person without a handle: it
// finds one wherever it stands and lets the item comparator sort, and the
// rows it looked at before do not mislead the sorts after.
TEST_F(KibPeopleListItemOrderingTest, ASortWithAPersonWithoutAHandleIsTheComparators) {
  platform::Log::setEnabledCategories({});  // the fast comparison keeps out of logged sorts
  const auto parameters = list->KibSortParameters();
  auto friends = group("Friends");
  KibPeopleListSorter::Items items;
  for (int i = 0; i < 40; ++i) {
    auto name = person(std::string(1, static_cast<char>('A' + (i * 7) % 26)) + "nn", "P" + std::to_string(i % 3));
    items.push_back(member(buddy(aimAccount, "b" + std::to_string(i), i % 4 ? kIMPersonStatusAvailable : kIMPersonStatusAway,
                                 name, {"Friends"}),
                           friends));
  }
  auto empty = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(person("Eve", "Empty"), nullptr,
                                                                                     KibBuddyListPresence::GroupNames{"Friends"});
  auto handleless = KibPeopleListItem::initWithBuddyListPresenceInGroup(empty, friends.get());
  keep.push_back(handleless);
  for (std::size_t at : {std::size_t{0}, std::size_t{25}, std::size_t{40}}) {
    auto rows = items;
    rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), handleless);
    auto expected = rows;
    KibPeopleListSorter::referenceSort(expected, parameters);
    KibPeopleListSorter sorter;
    auto sorted = rows;
    sorter.sort(sorted, {}, parameters);
    EXPECT_EQ(sorter.lastMethod(), KibPeopleListSorter::Method::Reference) << "at " << at;
    EXPECT_EQ(sorted, expected) << "at " << at;

    // Without it the same sorter sorts fast again, and as the comparator does.
    expected = items;
    KibPeopleListSorter::referenceSort(expected, parameters);
    auto again = items;
    sorter.sort(again, sorted, parameters);
    EXPECT_NE(sorter.lastMethod(), KibPeopleListSorter::Method::Reference);
    EXPECT_EQ(again, expected) << "at " << at;
  }
}

}  // namespace
