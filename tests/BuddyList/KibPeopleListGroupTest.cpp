#include <gtest/gtest.h>

#include "Source/BuddyList/KibOfflinePeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListGroup.h"
#include "Source/BuddyList/KibServicePeopleListGroup.h"
#include "platform/core/Number.h"
#include "platform/core/String.h"
#include "platform/im/IMConstants.h"
#include "tests/BuddyList/BuddyListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using Items = std::vector<KibPeopleListItemPtr>;

class KibPeopleListGroupTest : public kibtest::BuddyListTest {
 protected:
  // A person item for a new buddy on AIM with the status.
  KibPeopleListItemPtr person(const std::string& ID, IMPersonStatus status = kIMPersonStatusOffline) {
    auto h = handle(aimAccount, ID, status);
    handles.push_back(h);
    return itemFor(presenceFor(h));
  }

  static KibBuddyListPresencePtr presenceFor(const IMHandlePtr& h) {
    auto p = KibBuddyListPresence::initWithIMPersonFilterServiceFilterGroupFilters(nullptr, nullptr, std::nullopt);
    p->addIMHandle(h);
    return p;
  }

  static KibPeopleListItemPtr itemFor(const KibBuddyListPresencePtr& p) {
    return KibPeopleListItem::initWithBuddyListPresenceInGroup(p, nullptr);
  }

  static void expectAllAbilities(const KibPeopleListGroup& group) {
    EXPECT_EQ(group.maxMembers(), 0x7FFFFFFF);
    EXPECT_TRUE(group.supportsReordering());
    EXPECT_TRUE(group.supportsMemberReordering());
    EXPECT_TRUE(group.supportsRename());
    EXPECT_TRUE(group.supportsAdding());
    EXPECT_TRUE(group.supportsRemoving());
  }

  std::vector<IMHandlePtr> handles;
};

TEST_F(KibPeopleListGroupTest, ANewGroupHasNoLimitAndSupportsEverything) {
  auto group = KibPeopleListGroup::init();
  expectAllAbilities(*group);
  EXPECT_TRUE(group->supportsOfflineMembers());
  EXPECT_FALSE(group->isExpanded());
  EXPECT_EQ(group->properties(), nullptr);
  EXPECT_EQ(group->localizableName(), std::nullopt);
  EXPECT_EQ(group->numberOfItems(), 0u);
  EXPECT_EQ(group->peopleListItem(), nullptr);
}

TEST_F(KibPeopleListGroupTest, PropertiesSetAbilitiesAndResetOnlyWhenTheDictionaryChanges) {
  auto group = KibPeopleListGroup::init();
  group->setSupportsOfflineMembers(false);
  auto restrictive = makeDictionary({
      {kKBGroupSupportsAdd, makeNumber(false)},
      {kKBGroupSupportsRemove, makeNumber(0)},
      {kKBGroupSupportsReorder, makeString("0")},
      {kKBGroupSupportsRename, makeNumber(256)},  // a one-byte boolean: 256 is NO
      {kKBGroupSupportsMemberReorder, makeNumber(false)},
      {kKBGroupMaxMembers, makeNumber(12)},
  });
  group->setProperties(restrictive);
  EXPECT_EQ(group->properties(), restrictive);
  EXPECT_FALSE(group->supportsAdding());
  EXPECT_FALSE(group->supportsRemoving());
  EXPECT_FALSE(group->supportsReordering());
  EXPECT_FALSE(group->supportsRename());
  EXPECT_FALSE(group->supportsMemberReordering());
  EXPECT_EQ(group->maxMembers(), 12);

  // The same dictionary again leaves hand-made changes alone.
  group->setSupportsAdding(true);
  group->setProperties(restrictive);
  EXPECT_TRUE(group->supportsAdding());
  EXPECT_FALSE(group->supportsRemoving());

  // Another dictionary resets first, then applies what it holds.
  group->setProperties(makeDictionary({{kKBGroupSupportsRemove, makeNumber(false)}, {kKBGroupMaxMembers, makeNumber(0)}}));
  EXPECT_FALSE(group->supportsRemoving());
  EXPECT_TRUE(group->supportsAdding());
  EXPECT_TRUE(group->supportsReordering());
  EXPECT_EQ(group->maxMembers(), 0x7FFFFFFF) << "a limit of 0 is no limit";
  group->setProperties(makeDictionary({{kKBGroupMaxMembers, makeNumber(-3)}}));
  EXPECT_EQ(group->maxMembers(), 0x7FFFFFFF);
  expectAllAbilities(*group);
  EXPECT_FALSE(group->supportsOfflineMembers()) << "not a property, never reset";

  group->setProperties(nullptr);
  EXPECT_EQ(group->properties(), nullptr);
  expectAllAbilities(*group);
}

TEST_F(KibPeopleListGroupTest, TheLocalizableKeyNamesTheGroupForDisplay) {
  auto group = KibPeopleListGroup::init();
  group->setName("Buddies");
  EXPECT_EQ(group->displayName(), "Buddies");

  group->setProperties(makeDictionary({{kKBGroupLocalizableKey, makeString("Recent Buddies")}}));
  // The main bundle has no table here: the key stands for itself.
  EXPECT_EQ(group->localizableName(), "Recent Buddies");
  EXPECT_EQ(group->displayName(), "Recent Buddies");

  group->setProperties(makeDictionary({{kKBGroupLocalizableKey, makeString("")}}));
  EXPECT_EQ(group->localizableName(), std::nullopt);
  EXPECT_EQ(group->displayName(), "Buddies");

  group->setProperties(makeDictionary({{kKBGroupLocalizableKey, makeString("Recent Buddies")}}));
  group->setProperties(makeDictionary({{kKBGroupSupportsAdd, makeNumber(true)}}));
  EXPECT_EQ(group->localizableName(), std::nullopt) << "each new dictionary starts without one";

  group->setProperties(makeDictionary({{kKBGroupLocalizableKey, makeString("Recent Buddies")}}));
  group->setProperties(nullptr);
  EXPECT_EQ(group->localizableName(), std::nullopt) << "nil properties drop the name too";
  EXPECT_EQ(group->displayName(), "Buddies");
}

TEST_F(KibPeopleListGroupTest, MembersAreKeptOnceInOrder) {
  auto group = KibPeopleListGroup::init();
  group->setName("Friends");
  auto a = person("a", kIMPersonStatusAvailable);
  auto b = person("b");
  group->addPeopleListItem(a);
  group->addPeopleListItem(b);
  group->addPeopleListItem(a);
  EXPECT_EQ(group->members(), (Items{a, b}));
  EXPECT_EQ(group->visibleMembers(), (Items{a, b}));
  EXPECT_EQ(group->numberOfItems(), 2u);
  EXPECT_EQ(group->description(), "Friends [2 members]: {" + describeObjects(Items{a, b}) + "}");

  group->removePeopleListItem(person("a"));  // an equal-looking item is not a member
  EXPECT_EQ(group->numberOfItems(), 2u);
  group->removePeopleListItem(a);
  EXPECT_EQ(group->members(), (Items{b}));
  group->removeAllItems();
  EXPECT_TRUE(group->members().empty());
}

TEST_F(KibPeopleListGroupTest, OnlineCountsTellFadingMembersApart) {
  auto group = KibPeopleListGroup::init();
  auto staying = person("stay", kIMPersonStatusAway);
  auto leaving = person("leave", kIMPersonStatusAvailable);
  auto away = person("gone");
  for (const auto& item : {staying, leaving, away}) group->addPeopleListItem(item);
  EXPECT_EQ(group->numberOfOnlineItems(), 2u);
  EXPECT_EQ(group->actualNumberOfOnlineItems(), 2u);

  handles[1]->setStatus(kIMPersonStatusOffline);  // "leave" starts fading out
  ASSERT_TRUE(leaving->inStatusTransition());
  EXPECT_EQ(group->numberOfOnlineItems(), 2u);
  EXPECT_EQ(group->actualNumberOfOnlineItems(), 1u);
  advance(2.0);
  EXPECT_EQ(group->numberOfOnlineItems(), 1u);
}

TEST_F(KibPeopleListGroupTest, AnOrdinaryGroupTakesHandlesThatNameIt) {
  auto group = KibPeopleListGroup::init();
  group->setName("Work");
  auto inWork = handle(aimAccount, "w");
  inWork->setGroups({"Family", "Work"});
  auto elsewhere = handle(aimAccount, "f");
  elsewhere->setGroups({"Family", "work"});
  EXPECT_TRUE(group->shouldContainIMHandle(inWork));
  EXPECT_FALSE(group->shouldContainIMHandle(elsewhere));
  EXPECT_FALSE(group->shouldConsumeIMHandle(inWork));
  auto filter = group->filterForIMHandle(inWork);
  EXPECT_TRUE(filter.filterByGroup && filter.filterByID && filter.filterByService && filter.filterByPerson);
}

TEST_F(KibPeopleListGroupTest, GoingAwayClearsTheGroupOfPersonItemsOnly) {
  auto group = KibPeopleListGroup::init();
  auto member = person("m");
  member->setPeopleListGroup(group.get());
  group->addPeopleListItem(member);
  auto header = KibPeopleListItem::initAsGroup(group.get());
  group->setPeopleListItem(header);
  group.reset();
  EXPECT_EQ(member->peopleListGroup(), nullptr);
  EXPECT_EQ(member.use_count(), 1) << "the members were released";
  EXPECT_EQ(header.use_count(), 1) << "the header item was released";
}

TEST_F(KibPeopleListGroupTest, TheOfflineGroupShowsOneRowPerPresence) {
  auto offline = KibOfflinePeopleListGroup::init();
  EXPECT_EQ(offline->name(), "Offline");
  auto shared = presenceFor(handle(aimAccount, "twin"));
  auto first = itemFor(shared);
  auto second = itemFor(shared);
  auto other = person("other");
  offline->addPeopleListItem(first);
  offline->addPeopleListItem(other);
  offline->addPeopleListItem(second);
  EXPECT_EQ(offline->members().size(), 3u);
  EXPECT_EQ(offline->visibleMembers(), (Items{first, other}));
  EXPECT_EQ(offline->numberOfItems(), 2u);

  offline->dontShowPresence(shared);
  EXPECT_EQ(offline->visibleMembers(), (Items{other}));
  EXPECT_EQ(offline->dontShowMembers().size(), 1u);

  // Forgetting does not clear the cache: the presence stays hidden until the next clear.
  offline->forgetIgnoredPresences();
  EXPECT_TRUE(offline->dontShowMembers().empty());
  EXPECT_EQ(offline->visibleMembers(), (Items{other}));
  offline->removePeopleListItem(other);
  EXPECT_EQ(offline->visibleMembers(), (Items{first}));
}

TEST_F(KibPeopleListGroupTest, TheOfflineGroupClearsItsRowsOnceABatchEnds) {
  auto offline = KibOfflinePeopleListGroup::init();
  auto a = person("a");
  auto b = person("b");
  auto c = person("c");
  offline->addPeopleListItem(a);
  EXPECT_EQ(offline->visibleMembers(), (Items{a}));

  offline->beginChanges();
  offline->beginChanges();
  EXPECT_TRUE(offline->isChanging());
  offline->addPeopleListItem(b);
  offline->dontShowPresence(a->buddyListPresence());
  EXPECT_EQ(offline->visibleMembers(), (Items{a})) << "the cache holds inside the batch";
  offline->endChanges();
  EXPECT_EQ(offline->visibleMembers(), (Items{a})) << "only the outermost end clears";
  offline->endChanges();
  EXPECT_FALSE(offline->isChanging());
  EXPECT_EQ(offline->visibleMembers(), (Items{b}));

  // A batch without a clear request keeps the cache.
  offline->beginChanges();
  offline->forgetIgnoredPresences();
  offline->endChanges();
  EXPECT_EQ(offline->visibleMembers(), (Items{b}));

  // A surplus end makes the counter negative: the group is not changing, and
  // the next batch does not hold the cache back.
  offline->endChanges();
  EXPECT_FALSE(offline->isChanging());
  offline->beginChanges();
  EXPECT_FALSE(offline->isChanging());
  offline->addPeopleListItem(c);
  EXPECT_EQ(offline->visibleMembers(), (Items{a, b, c}));
}

TEST_F(KibPeopleListGroupTest, EmptyingTheOfflineGroupKeepsAnEmptyCache) {
  auto offline = KibOfflinePeopleListGroup::init();
  auto a = person("a");
  offline->addPeopleListItem(a);
  offline->dontShowPresence(person("hidden")->buddyListPresence());
  ASSERT_EQ(offline->visibleMembers().size(), 1u);

  offline->beginChanges();
  offline->removeAllItems();
  EXPECT_TRUE(offline->members().empty());
  EXPECT_TRUE(offline->dontShowMembers().empty());
  EXPECT_TRUE(offline->visibleMembers().empty());
  offline->addPeopleListItem(a);
  EXPECT_TRUE(offline->visibleMembers().empty()) << "the emptied cache answers until the batch ends";
  offline->endChanges();
  EXPECT_EQ(offline->visibleMembers(), (Items{a}));
}

TEST_F(KibPeopleListGroupTest, TheAmbrelGroupTakesEveryHandleOfTheLocalNetworkService) {
  auto ambrel = KibServicePeopleListGroup::ambrelGroup();
  EXPECT_EQ(ambrel->serviceFilter(), subnet);
  EXPECT_EQ(ambrel->name(), "Local");
  expectAllAbilities(*ambrel);

  auto local = handle(subnetAccount, "neighbour@host");
  auto remote = handle(aimAccount, "neighbour");
  // A service of the same name that is not the registered object does not count.
  auto lookalikeService = IMService::make(IMServiceNameSubNet, "subnet", "Local");
  auto lookalikeAccount = IMAccount::make(lookalikeService, "me@elsewhere");
  auto lookalike = handle(lookalikeAccount, "neighbour@host");
  EXPECT_TRUE(ambrel->shouldContainIMHandle(local));
  EXPECT_TRUE(ambrel->shouldConsumeIMHandle(local));
  EXPECT_FALSE(ambrel->shouldContainIMHandle(remote));
  EXPECT_FALSE(ambrel->shouldConsumeIMHandle(remote));
  EXPECT_FALSE(ambrel->shouldContainIMHandle(lookalike));

  auto filter = ambrel->filterForIMHandle(local);
  EXPECT_FALSE(filter.filterByGroup);
  EXPECT_TRUE(filter.filterByID && filter.filterByService && filter.filterByPerson);

  auto jabberGroup = KibServicePeopleListGroup::initWithServiceFilter(jabber);
  EXPECT_EQ(jabberGroup->name(), "Jabber");
  EXPECT_NE(KibServicePeopleListGroup::ambrelGroup(), ambrel) << "a new group each time";
}

}  // namespace
