#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Source/BuddyList/KibPeopleList.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMPeopleCollection.h"
#include "sim/ScenarioLoader.h"
#include "sim/SimWorld.h"
#include "tests/BuddyList/PeopleListTestSupport.h"

using namespace platform;
using namespace kib;

namespace {

using kibtest::Rows;

// The built-in simulated world, its buddy lists gathered the way the status
// menu gathers them: every connected account that keeps a buddy list.
class KibPeopleListScenarioTest : public kibtest::PeopleListTest {
 protected:
  void SetUp() override {
    PeopleListTest::SetUp();
    world = sim::SimWorld::makeDefault();
    collection = IMPeopleCollection::make();
    collection->setShouldHidePeople(false);
    for (const auto& account : IMAccountController::sharedInstance()->connectedAccounts())
      if (account->hasCapability(kIMAccountCapabilityBuddyList)) collection->addIMPeople(account->buddyList());
  }

  void TearDown() override {
    collection.reset();
    world.reset();
    PeopleListTest::TearDown();
  }

  void refill() {
    list->beginChanges();
    list->removeAllIMHandlesAndGroups(true);
    list->addPeopleFromArraySkipMe(collection->people(), true);
    list->endChanges();
  }

  void play(const nlohmann::json& event) {
    std::string error;
    ASSERT_TRUE(world->apply(sim::ScenarioLoader::parseEvent(event, world->scenario(), "test"), &error)) << error;
  }

  std::shared_ptr<sim::SimWorld> world;
  IMPeopleCollectionPtr collection;
};

TEST_F(KibPeopleListScenarioTest, TheStatusMenusListShowsTheAvailablePeopleInOrder) {
  list->setArrangesByGroup(false);
  list->setShowsOfflinePeople(false);
  list->setShowsIdlePeople(false);
  list->setShowsAwayPeople(false);
  list->setShowsUnknownPeople(false);
  list->setShowsNoStatusPeople(false);
  resetCounts();
  refill();
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_EQ(updates, 1);
  // Maya is merged over her two accounts and shows as available.
  const Rows available{"Felix Moreau", "Hana Sato",    "Maya Okafor",
                       "Ruth Calder",  "Sam Whitfield", "selftest.aim",
                       "selftest@jabber.velmo.example", "Tess Tester"};
  EXPECT_EQ(rows(), available);

  // Hana leaves: her row stays while it fades out, then goes.
  resetCounts();
  play({{"type", "buddy-offline"}, {"account", "aim"}, {"handle", "hanasato"}});
  EXPECT_EQ(rows(), available);
  advance(1.9);
  EXPECT_EQ(rows(), available);
  advance(0.2);
  EXPECT_EQ(rows(), (Rows{"Felix Moreau", "Maya Okafor", "Ruth Calder", "Sam Whitfield", "selftest.aim",
                          "selftest@jabber.velmo.example", "Tess Tester"}));
  EXPECT_GE(updates, 1);

  // Priya, idle until now, becomes available: her row comes at once.
  play({{"type", "buddy-status"}, {"account", "aim"}, {"handle", "priyan"}, {"status", "available"}});
  EXPECT_EQ(rows(), (Rows{"Felix Moreau", "Maya Okafor", "Priya Natarajan", "Ruth Calder", "Sam Whitfield",
                          "selftest.aim", "selftest@jabber.velmo.example", "Tess Tester"}));

  // Refilling after a change of the people gives the same rows, with one update.
  resetCounts();
  refill();
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(rows().size(), 8u);
}

TEST_F(KibPeopleListScenarioTest, AGroupedListShowsGroupsInOrderThenAmbrelThenOffline) {
  list->setArrangesByGroup(true);
  list->setUsesOfflineGroup(true);
  list->setUsesAmbrelGroup(true);
  auto order = std::make_shared<Array>();
  for (const char* name : {"Buddies", "Co-Workers", "Family", "Friends", "Work", "Test"}) order->add(makeString(name));
  resetCounts();
  list->beginChanges();
  list->removeAllIMHandles();
  list->setGroups(order);
  list->addPeopleFromArraySkipMe(collection->people(), true);
  list->endChanges();
  EXPECT_EQ(rebuilds(), 1u);
  EXPECT_EQ(updates, 1);
  // Maya appears in Buddies (available on AIM) and in Friends (away on Jabber);
  // the offline and unknown people only under Offline.
  EXPECT_EQ(rows(), (Rows{"[Buddies]", "Maya Okafor", "Kestrel",
                          "[Co-Workers]", "Ruth Calder", "Jonah Reyes", "Priya Natarajan",
                          "[Family]", "Hana Sato",
                          "[Friends]", "Maya Okafor", "Inês Duarte",
                          "[Work]", "Sam Whitfield",
                          "[Test]", "selftest.aim", "selftest@jabber.velmo.example",
                          "[Ambrel]", "Felix Moreau", "Tess Tester", "Greta Lind",
                          "[Offline]", "Leo Brandt", "Omar Haddad", "Nadia Ferreira"}));

  // A search shows everyone who matches in their own groups, and no Offline
  // group; Nadia's pending authorization request finds her whatever the text.
  search("an");
  EXPECT_EQ(rows(), (Rows{"[Buddies]", "Leo Brandt", "[Co-Workers]", "Priya Natarajan", "[Family]", "Hana Sato",
                          "[Friends]", "Nadia Ferreira"}));
}

}  // namespace
