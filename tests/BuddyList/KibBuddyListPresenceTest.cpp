#include <gtest/gtest.h>

#include "Source/BuddyList/FastIMHandleCompareAdditions.h"
#include "Source/BuddyList/KibBuddyListPresence.h"
#include "tests/BuddyList/BuddyListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using Groups = KibBuddyListPresence::GroupNames;

class KibBuddyListPresenceTest : public kibtest::BuddyListTest {
 protected:
  static KibBuddyListPresencePtr presence(const IMPersonPtr& person, const IMServicePtr& service,
                                         std::optional<Groups> groups, std::optional<std::string> ID = std::nullopt) {
    return KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFilters(person, ID, service, groups);
  }

  static IMHandlePtr inGroups(IMHandlePtr h, std::vector<std::string> groups,
                              std::map<std::string, std::uint32_t> orders = {}) {
    h->setGroups(std::move(groups), std::move(orders));
    return h;
  }
};

// A subclass, which never counts as the same entry.
class DerivedPresence : public KibBuddyListPresence {};

TEST_F(KibBuddyListPresenceTest, InitialisersSetFiltersAndQuietness) {
  auto person = IMPerson::make("p1");
  auto plain = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(person, aim, Groups{"A"});
  EXPECT_EQ(plain->person(), person);
  EXPECT_EQ(plain->service(), aim);
  EXPECT_EQ(plain->groups(), (Groups{"A"}));
  EXPECT_EQ(plain->filterSingleGroup(), "A");
  EXPECT_EQ(plain->group(), "A");
  EXPECT_EQ(plain->IDFilter(), std::nullopt);
  EXPECT_FALSE(plain->isQuiet());

  auto quiet = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFiltersQuiet(nullptr, nullptr,
                                                                                          Groups{"A", "B"}, true);
  EXPECT_TRUE(quiet->isQuiet());
  EXPECT_EQ(quiet->filterSingleGroup(), std::nullopt) << "two names: no single group";
  EXPECT_FALSE(quiet->group().empty());

  auto withID = KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFilters(nullptr, "x", nullptr,
                                                                                              std::nullopt);
  EXPECT_EQ(withID->IDFilter(), "x");
  EXPECT_FALSE(withID->isQuiet());
  EXPECT_EQ(withID->groups(), std::nullopt);
  EXPECT_EQ(withID->group(), "");

  auto all = KibBuddyListPresence::initWithIMPersonFilterIDFilterServiceFilterGroupFiltersQuiet(nullptr, "y", jabber,
                                                                                               Groups{}, true);
  EXPECT_EQ(all->IDFilter(), "y");
  EXPECT_TRUE(all->isQuiet());
  EXPECT_EQ(all->groups(), Groups{});
}

TEST_F(KibBuddyListPresenceTest, WithoutAPersonFilterTheFirstHandleFixesTheID) {
  auto p = presence(nullptr, aim, std::nullopt);
  EXPECT_FALSE(p->addIMHandle(handle(jabberAccount, "alice"))) << "another service";
  auto first = handle(aimAccount, "alice");
  EXPECT_TRUE(p->addIMHandle(first));
  EXPECT_FALSE(p->addIMHandle(handle(aimAccount, "bob")));
  EXPECT_FALSE(p->addIMHandle(handle(aimAccount2, "Alice"))) << "IDs compare as plain strings";
  EXPECT_TRUE(p->addIMHandle(handle(aimAccount2, "alice")));
  EXPECT_EQ(p->numberOfIMHandles(), 2);

  // The ID filter is a plain string comparison too.
  auto byID = presence(nullptr, nullptr, std::nullopt, "carol");
  EXPECT_FALSE(byID->canAddIMHandle(handle(aimAccount, "Carol")));
  EXPECT_TRUE(byID->canAddIMHandle(handle(jabberAccount, "carol")));
}

TEST_F(KibBuddyListPresenceTest, APersonFilterGathersThePersonAcrossServicesAfterTheOtherRules) {
  auto person = IMPerson::make("p-dana", "Dana");
  auto samePersonRecord = IMPerson::make("p-dana");
  auto stranger = IMPerson::make("p-other");

  auto p = presence(person, nullptr, std::nullopt);
  EXPECT_TRUE(p->addIMHandle(handle(aimAccount, "dana", kIMPersonStatusAvailable, person)));
  EXPECT_TRUE(p->addIMHandle(handle(jabberAccount, "dana@jabber", kIMPersonStatusOffline, person)));
  EXPECT_TRUE(p->addIMHandle(handle(subnetAccount, "dana@host", kIMPersonStatusOffline, samePersonRecord)));
  EXPECT_FALSE(p->addIMHandle(handle(aimAccount2, "dana", kIMPersonStatusOffline, stranger)));
  EXPECT_FALSE(p->addIMHandle(handle(aimAccount2, "dana")));
  EXPECT_EQ(p->numberOfIMHandles(), 3);

  // Service, ID and groups are checked before the person.
  auto limited = presence(person, aim, Groups{"Friends"}, "dana");
  EXPECT_FALSE(limited->canAddIMHandle(inGroups(handle(jabberAccount, "dana", 1, person), {"Friends"})));
  EXPECT_FALSE(limited->canAddIMHandle(inGroups(handle(aimAccount, "dana2", 1, person), {"Friends"})));
  EXPECT_FALSE(limited->canAddIMHandle(inGroups(handle(aimAccount, "dana", 1, person), {"Work"})));
  EXPECT_TRUE(limited->canAddIMHandle(inGroups(handle(aimAccount, "dana", 1, person), {"Work", "Friends"})));
}

TEST_F(KibBuddyListPresenceTest, GroupFiltersAdmitHandlesInAnyOfTheirGroups) {
  auto two = presence(nullptr, nullptr, Groups{"Friends", "Work"});
  EXPECT_TRUE(two->canAddIMHandle(inGroups(handle(aimAccount, "a"), {"Work"})));
  EXPECT_TRUE(two->canAddIMHandle(inGroups(handle(aimAccount, "b"), {"Family", "Friends"})));
  EXPECT_FALSE(two->canAddIMHandle(inGroups(handle(aimAccount, "c"), {"Family"})));
  EXPECT_FALSE(two->canAddIMHandle(handle(aimAccount, "d")));

  auto one = presence(nullptr, nullptr, Groups{"Friends"});
  EXPECT_TRUE(one->canAddIMHandle(inGroups(handle(aimAccount, "e"), {"Work", "Friends"})));
  EXPECT_FALSE(one->canAddIMHandle(inGroups(handle(aimAccount, "f"), {"friends"})));

  auto none = presence(nullptr, nullptr, Groups{});
  EXPECT_FALSE(none->canAddIMHandle(inGroups(handle(aimAccount, "g"), {"Work"}))) << "an empty set admits nobody";
}

TEST_F(KibBuddyListPresenceTest, EntryIdentityWithOneHandleEach) {
  auto mine = inGroups(handle(aimAccount, "erin"), {"Friends", "Work"});
  auto sibling = inGroups(handle(aimAccount2, "Erin"), {"Friends", "Work"});  // same service and normalized ID
  auto elsewhere = inGroups(handle(jabberAccount, "erin"), {"Friends"});

  auto a = presence(nullptr, nullptr, Groups{"Friends"});
  auto b = presence(nullptr, nullptr, Groups{"Friends"});
  auto c = presence(nullptr, nullptr, Groups{"Work"});
  ASSERT_TRUE(a->addIMHandle(mine));
  ASSERT_TRUE(b->addIMHandle(sibling));
  ASSERT_TRUE(c->addIMHandle(sibling));
  EXPECT_TRUE(a->isEqual(a.get()));
  EXPECT_TRUE(a->isEqual(b.get())) << "account siblings, equal single groups";
  EXPECT_FALSE(a->isEqual(c.get())) << "account siblings, different single groups";

  auto d = presence(nullptr, nullptr, Groups{"Friends"});
  ASSERT_TRUE(d->addIMHandle(elsewhere));
  EXPECT_FALSE(a->isEqual(d.get())) << "not siblings, no person filter";

  // The very same handle skips the sibling test (a handle is not its own sibling).
  auto e = presence(nullptr, nullptr, Groups{"Friends"});
  ASSERT_TRUE(e->addIMHandle(mine));
  EXPECT_TRUE(a->isEqual(e.get()));

  // Exactly this class, not a subclass, nor another kind of object.
  auto derived = std::make_shared<DerivedPresence>();
  ASSERT_TRUE(derived->addIMHandle(mine));
  EXPECT_FALSE(a->isEqual(derived.get()));
  EXPECT_FALSE(a->isEqual(mine.get()));
  EXPECT_FALSE(a->isEqual(nullptr));
}

TEST_F(KibBuddyListPresenceTest, EntryIdentityFallsBackToThePersonFilter) {
  auto person = IMPerson::make("p-finn");
  auto samePerson = IMPerson::make("p-finn");
  auto a = presence(person, nullptr, Groups{"Friends"});
  auto b = presence(samePerson, nullptr, Groups{"Work"});
  ASSERT_TRUE(a->addIMHandle(inGroups(handle(aimAccount, "finn", 1, person), {"Friends"})));
  ASSERT_TRUE(b->addIMHandle(inGroups(handle(jabberAccount, "finn@jabber", 1, samePerson), {"Work"})));
  EXPECT_TRUE(a->isEqual(b.get())) << "equal persons, whatever the groups";

  auto noPerson = presence(nullptr, nullptr, Groups{"Friends"});
  ASSERT_TRUE(noPerson->addIMHandle(inGroups(handle(jabberAccount, "finn@jabber", 1, samePerson), {"Friends"})));
  EXPECT_FALSE(a->isEqual(noPerson.get())) << "the other's person filter is nil";
  EXPECT_FALSE(noPerson->isEqual(a.get())) << "the receiver has no person filter";
}

TEST_F(KibBuddyListPresenceTest, EntryIdentityComparesHandleSetsAndGroupSets) {
  auto h1 = inGroups(handle(aimAccount, "gus"), {"A", "B", "C"});
  auto h2 = inGroups(handle(aimAccount2, "gus"), {"A", "B", "C"});
  auto h3 = inGroups(handle(aimAccount, "gus"), {"A", "B", "C"});
  auto a = presence(nullptr, nullptr, Groups{"A", "B"});
  auto b = presence(nullptr, nullptr, Groups{"B", "A"});
  auto c = presence(nullptr, nullptr, Groups{"A", "C"});
  auto d = presence(nullptr, nullptr, Groups{});
  auto e = presence(nullptr, nullptr, std::nullopt);
  auto f = presence(nullptr, nullptr, Groups{"A"});
  // The group sets are set after filling: an empty filter set admits nobody.
  for (const auto& p : {a, b, c, d, e, f}) {
    auto wanted = p->groups();
    p->setGroups(std::nullopt);
    ASSERT_TRUE(p->addIMHandle(h1));
    ASSERT_TRUE(p->addIMHandle(h2));
    p->setGroups(wanted);
  }
  EXPECT_TRUE(a->isEqual(b.get()));
  EXPECT_FALSE(a->isEqual(c.get()));
  EXPECT_TRUE(a->isEqual(d.get())) << "an empty group set matches anything";
  EXPECT_TRUE(d->isEqual(a.get()));
  EXPECT_TRUE(a->isEqual(e.get())) << "so does no group set";
  EXPECT_FALSE(a->isEqual(f.get())) << "different counts";

  auto g = presence(nullptr, nullptr, Groups{"A", "B"});
  ASSERT_TRUE(g->addIMHandle(h1));
  ASSERT_TRUE(g->addIMHandle(h3));
  ASSERT_TRUE(g->addIMHandle(h2));
  EXPECT_FALSE(a->isEqual(g.get())) << "different handle sets";

  // Two presences without handles hold equal (empty) sets.
  EXPECT_TRUE(presence(nullptr, nullptr, Groups{"A"})->isEqual(presence(nullptr, nullptr, Groups{"A"}).get()));
}

TEST_F(KibBuddyListPresenceTest, FastSetComparisonSettlesOneMemberSetsByIdentity) {
  auto h1 = handle(aimAccount, "hal");
  auto h2 = handle(aimAccount2, "hal");
  EXPECT_TRUE(fastIsEqualToPointerCompareSet({h1}, {h1}));
  EXPECT_FALSE(fastIsEqualToPointerCompareSet({h1}, {h2}));
  EXPECT_FALSE(fastIsEqualToPointerCompareSet({h1}, {h1, h2}));
  EXPECT_TRUE(fastIsEqualToPointerCompareSet({h1, h2}, {h2, h1}));
  EXPECT_TRUE(fastIsEqualToPointerCompareSet({}, {}));
}

TEST_F(KibBuddyListPresenceTest, SortOrderIsTheSmallestOrderInTheFilterGroup) {
  auto empty = presence(nullptr, nullptr, Groups{"Friends"});
  EXPECT_EQ(empty->sortOrder(), 0x7FFFFFFFu) << "an empty entry sorts last";

  auto a = inGroups(handle(aimAccount, "ida"), {"Friends"}, {{"Friends", 9}});
  auto b = inGroups(handle(aimAccount2, "ida"), {"Work", "Friends"}, {{"Friends", 4}});
  auto p = presence(nullptr, nullptr, Groups{"Friends"});
  p->addIMHandle(a);
  EXPECT_EQ(p->sortOrder(), 9u);
  p->addIMHandle(b);
  EXPECT_EQ(p->sortOrder(), 4u);

  auto noGroups = presence(nullptr, nullptr, std::nullopt);
  ASSERT_TRUE(noGroups->addIMHandle(a));
  EXPECT_EQ(noGroups->sortOrder(), 0u);
  noGroups->setGroups(Groups{});
  EXPECT_EQ(noGroups->sortOrder(), 0u);

  // A handle outside the group answers the largest order, compared unsigned.
  noGroups->setGroups(Groups{"Family"});
  EXPECT_EQ(noGroups->sortOrder(), 0xFFFFFFFFu);
}

TEST_F(KibBuddyListPresenceTest, CopyAnswersTheReceiverAndGroupsAnswerTheFilter) {
  auto p = presence(nullptr, nullptr, Groups{"Friends"});
  p->addIMHandle(inGroups(handle(aimAccount, "kim"), {"Work"}));
  EXPECT_EQ(p->copy(), p);
  KibPresence& asPresence = *p;
  EXPECT_EQ(asPresence.groups(), (Groups{"Friends"})) << "the filter set, not the handle's groups";
}

}  // namespace
