// The people list's fast paths (filing index, kept collation keys, incremental
// placement, kept search texts, resorts that only note statuses) against the
// straightforward algorithms: two lists over one random world go through the
// same random changes, one of them with setUsesReferenceAlgorithms, and must
// post the same number of updates after every step and show the same rows,
// with the same delegates, whenever they are looked at (not after every step,
// so that noted resorts pile up between looks).
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/core/Array.h"
#include "platform/core/Format.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandleRegistrar.h"
#include "tests/BuddyList/BuddyListTestSupport.h"
#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/String.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"

namespace kibtest {
namespace {

using platform::IMHandlePtr;
using platform::IMPersonPtr;

// Names that tie, differ only in case or accents, or are missing; long ones
// that differ only past their sort keys' first sixteen bytes.
const std::vector<std::string> kFirstNames{"Ann", "ann", "Änn", "Bo", "Zoë", "", "Émile", "bo",
                                           "Christopherson", "Christophersön", "Maximilianusstrasse",
                                           "Maximilianusstrassa"};
const std::vector<std::string> kLastNames{"Lee", "lee", "Léé", "Ng", "", "Østby", "Vanderbiltingtonshire",
                                          "Vanderbiltingtonshira"};
const std::vector<std::string> kGroups{"A", "B", "C"};
const std::vector<std::string> kSearches{"an", "ann lee", "bo  ", "é", "zz", "lee ng", "aim", " "};

class KibPeopleListPropertyTest : public BuddyListTest {
 protected:
  // Looks at the rows of a list in the middle of an item's change: when the
  // list passes on every third animation-state notification, which an item
  // posts after its status moved and before it asks for a resort.
  struct MidChangeLook : platform::IMDirectlyObservableObjectObserver {
    const kib::KibPeopleList* list = nullptr;
    int animations = 0;
    std::vector<std::vector<std::string>> seen;
    void objectDidPostDirectNotification(const platform::NotificationPtr& note) override {
      if (note->name() == kib::kKibPeopleListItemAnimationStateChangedNotification && ++animations % 3 == 0)
        seen.push_back(rows(*list));
    }
  };

  struct Config {
    bool grouped;
    bool offlineGroup;
    bool substitution;
    bool menu;  // only available people shown
  };

  void TearDown() override {
    fast.reset();
    reference.reset();
    platform::IMHandleRegistrar::sharedInstance()->setNameStyle(platform::kIMNameStyleFullName);
    BuddyListTest::TearDown();
  }

  void SetUp() override {
    BuddyListTest::SetUp();
    platform::NotificationCenter::defaultCenter().addObserverForName(
        kib::kKibPeopleListDidUpdateNotification, nullptr, [this](const platform::NotificationPtr& note) {
          if (fast && note->object() == fast) ++fastUpdates;
          if (reference && note->object() == reference) ++referenceUpdates;
        });
  }

  kib::KibPeopleListPtr makeList(const Config& config, bool referenceAlgorithms) {
    auto list = kib::KibPeopleList::init();
    list->setUsesReferenceAlgorithms(referenceAlgorithms);
    list->setAllowsIMHandleSubstitution(config.substitution);
    if (config.grouped) {
      list->setArrangesByGroup(true);
      auto names = std::make_shared<platform::Array>();
      for (const auto& name : kGroups) names->add(platform::makeString(name));
      list->setGroups(names);
      list->setUsesOfflineGroup(config.offlineGroup);
    }
    if (config.menu) {
      list->setShowsOfflinePeople(false);
      list->setShowsAwayPeople(false);
      list->setShowsIdlePeople(false);
    }
    return list;
  }

  IMHandlePtr newHandle() {
    auto accounts = {aimAccount, aimAccount2, jabberAccount, subnetAccount};
    auto account = *(accounts.begin() + static_cast<std::ptrdiff_t>(random() % 4));
    IMPersonPtr person;
    if (!people.empty() && random() % 3 == 0)
      person = people[random() % people.size()];
    else if (random() % 5 != 0) {
      person = platform::IMPerson::make(random() % 7 == 0 ? "" : platform::format("person%zu", people.size()),
                                        pick(kFirstNames), pick(kLastNames));
      people.push_back(person);
    }
    // Some IDs repeat across accounts, so ID-filtered presences meet.
    auto ID = platform::format("buddy%u", static_cast<unsigned>(random() % 40));
    auto handle = platform::IMHandle::make(account, ID, person);
    handle->updateStatus(randomStatus(), random() % 4 == 0 ? "msg" : "");
    std::vector<std::string> groups;
    for (const auto& group : kGroups)
      if (random() % 2) groups.push_back(group);
    handle->setGroups(groups);
    handles.push_back(handle);
    return handle;
  }

  platform::IMPersonStatus randomStatus() { return static_cast<platform::IMPersonStatus>(random() % 6); }
  const std::string& pick(const std::vector<std::string>& names) { return names[random() % names.size()]; }
  IMHandlePtr anyHandle() { return handles[random() % handles.size()]; }

  // A refill of both lists, after world changes made in its batch: the
  // delegates it left to the items it dropped, fast list first.
  std::vector<std::vector<bool>> refillBoth(const std::vector<IMHandlePtr>& all,
                                            const std::function<void()>& changesInBatch) {
    std::vector<kib::KibPeopleList::Items> dropped;
    onBoth([&](kib::KibPeopleList& list) {
      dropped.push_back(list.peopleListItems());
      list.beginChanges();
    });
    changesInBatch();
    std::vector<std::vector<bool>> delegates;
    onBoth([&](kib::KibPeopleList& list) {
      list.removeAllIMHandlesAndGroups(false);
      list.addPeopleFromArraySkipMe(all, false);
      list.endChanges();
      delegates.emplace_back();
      for (const auto& item : dropped[delegates.size() - 1]) delegates.back().push_back(item->delegate() != nullptr);
    });
    return delegates;
  }

  // Both lists get the same change.
  template <class Change>
  void onBoth(Change change) {
    change(*fast);
    change(*reference);
  }

  // The items of the list that hold the handle, in either arrangement.
  static kib::KibPeopleList::Items itemsHolding(const kib::KibPeopleList& list, const IMHandlePtr& handle) {
    kib::KibPeopleList::Items found;
    auto collect = [&](const kib::KibPeopleList::Items& items) {
      for (const auto& item : items)
        if (item->buddyListPresence() && item->buddyListPresence()->containsIMHandle(handle)) found.push_back(item);
    };
    collect(list.peopleListItems());
    for (const auto& group : list.peopleListGroups()) collect(group->members());
    return found;
  }

  // One random step; its name, for the failure message.
  std::string step() {
    switch (random() % 15) {
      case 0:
      case 1:
      case 2: {
        auto handle = anyHandle();
        handle->updateStatus(randomStatus(), random() % 3 == 0 ? "away msg" : handle->statusMessage());
        return "status of " + handle->ID();
      }
      case 3: {
        if (people.empty()) return "nothing";
        auto person = people[random() % people.size()];
        random() % 2 ? person->setFirstName(pick(kFirstNames)) : person->setLastName(pick(kLastNames));
        return "name of " + person->uniqueID();
      }
      case 4:
        anyHandle()->setNickname(random() % 2 ? "" : pick(kFirstNames));
        return "nickname";
      case 5:
        platform::IMHandleRegistrar::sharedInstance()->setNameStyle(static_cast<std::uint32_t>(random() % 3));
        onBoth([](kib::KibPeopleList& list) { list.resort(); });
        return "name style";
      case 6: {
        auto handle = newHandle();
        onBoth([&](kib::KibPeopleList& list) { list.addIMHandle(handle); });
        return "add " + handle->ID();
      }
      case 7: {
        auto handle = anyHandle();
        onBoth([&](kib::KibPeopleList& list) { list.removeIMHandle(handle); });
        return "remove " + handle->ID();
      }
      case 8: {
        auto all = handles;
        std::shuffle(all.begin(), all.end(), random);
        if (!all.empty() && random() % 2) all.push_back(all.front());  // a handle twice
        auto droppedDelegates = refillBoth(all, [this] {
          for (auto changes = random() % 3; changes > 0; --changes) anyHandle()->updateStatus(randomStatus(), "");
        });
        EXPECT_EQ(droppedDelegates.front(), droppedDelegates.back()) << "delegates of the items a refill dropped";
        return "refill";
      }
      case 9: {
        auto text = random() % 3 == 0 ? nullptr : platform::makeString(pick(kSearches));
        onBoth([&](kib::KibPeopleList& list) {
          list.setSearchString(text);
          list.refreshList();
        });
        return "search";
      }
      case 10: {
        bool shows = random() % 2;
        onBoth([&](kib::KibPeopleList& list) { list.setShowsAwayPeople(shows); });
        return "shows away";
      }
      case 11: {
        auto handle = anyHandle();
        handle->setPerson(people.empty() || random() % 4 == 0 ? nullptr : people[random() % people.size()]);
        onBoth([](kib::KibPeopleList& list) { list.resort(); });
        return "person of " + handle->ID();
      }
      case 12: {
        auto handle = anyHandle();
        onBoth([&](kib::KibPeopleList& list) {
          for (const auto& item : itemsHolding(list, handle)) item->startPulse();
        });
        return "pulse " + handle->ID();
      }
      default:
        advance(0.5 * static_cast<double>(1 + random() % 6));  // transitions end
        return "time";
    }
  }

  // A row as both lists can show it: header or person, group, handle (the
  // handles are shared), the presence's handles.
  static std::vector<std::string> rows(const kib::KibPeopleList& list) {
    std::vector<std::string> result;
    for (const auto& item : list.items()) {
      std::string row = (item->isGroup() ? "[" : "") + item->group() + " " +
                        platform::format("%p", static_cast<const void*>(item->imHandle().get()));
      if (const auto& presence = item->buddyListPresence())
        for (const auto& handle : presence->imHandles()) row += " " + handle->ID();
      result.push_back(row);
    }
    return result;
  }

  // Which flat items have a delegate (a rebuild takes it from the rows it replaces).
  static std::vector<bool> delegates(const kib::KibPeopleList& list) {
    std::vector<bool> result;
    for (const auto& item : list.peopleListItems()) result.push_back(item->delegate() != nullptr);
    return result;
  }

  void run(unsigned seed, const Config& config, std::size_t worldSize, int steps) {
    random.seed(seed);
    fast = makeList(config, false);
    reference = makeList(config, true);
    fastUpdates = referenceUpdates = 0;
    MidChangeLook fastLook, referenceLook;
    fastLook.list = fast.get();
    referenceLook.list = reference.get();
    fast->addObserver(&fastLook);
    reference->addObserver(&referenceLook);
    for (std::size_t i = 0; i < worldSize; ++i) newHandle();
    onBoth([&](kib::KibPeopleList& list) { list.addPeopleFromArraySkipMe(handles, false); });
    std::string since;
    for (int i = 0; i < steps; ++i) {
      since += step() + "; ";
      ASSERT_EQ(fastUpdates, referenceUpdates) << "seed " << seed << ", step " << i << ": " << since;
      ASSERT_EQ(delegates(*fast), delegates(*reference)) << "seed " << seed << ", step " << i << ": " << since;
      ASSERT_EQ(fastLook.seen, referenceLook.seen) << "seed " << seed << ", step " << i << ": " << since;
      if (random() % 3 != 0) continue;
      ASSERT_EQ(rows(*fast), rows(*reference)) << "seed " << seed << ", step " << i << ": " << since;
      ++methods[fast->lastSortMethod()];
      since.clear();
    }
    notedResorts += fast->numberOfNotedResorts();
    fast->removeObserver(&fastLook);
    reference->removeObserver(&referenceLook);
  }

  std::mt19937 random;
  std::vector<IMPersonPtr> people;
  std::vector<IMHandlePtr> handles;
  kib::KibPeopleListPtr fast, reference;
  int fastUpdates = 0, referenceUpdates = 0;
  std::map<kib::KibPeopleListSorter::Method, int> methods;
  std::uint64_t notedResorts = 0;
};

TEST_F(KibPeopleListPropertyTest, FastPathsShowWhatTheStraightforwardAlgorithmsShow) {
  const Config configs[] = {
      {false, false, true, false},  // flat, everybody
      {false, false, true, true},   // the menu's: flat, only available
      {false, false, false, false},
      {true, true, true, false},  // groups with the Offline group
      {true, false, false, true},
  };
  unsigned seed = 1;
  for (const auto& config : configs)
    for (int world = 0; world < 4; ++world) {
      SCOPED_TRACE(platform::format("grouped %d offline %d substitution %d menu %d", config.grouped,
                                    config.offlineGroup, config.substitution, config.menu));
      run(seed++, config, 5 + static_cast<std::size_t>(world) * 12, 200);
      if (HasFatalFailure()) return;
      fast.reset();
      reference.reset();
      handles.clear();
      people.clear();
    }
  // The fast paths were taken, not only the fallbacks.
  EXPECT_GT(methods[kib::KibPeopleListSorter::Method::Incremental], 50);
  EXPECT_GT(methods[kib::KibPeopleListSorter::Method::Full], 50);
  EXPECT_GT(notedResorts, 100u);
}

TEST_F(KibPeopleListPropertyTest, ARefillClearsTheDelegatesOfRowsANotedResortShowed) {
  // Away people hidden, offline ones shown: a person fading from away to
  // offline appears when the fade ends. Of two such fades ending together the
  // first rebuilds, the second is a noted resort, which shows its person with
  // the delegate kept. The refill that follows lets go of it.
  fast = makeList({false, false, true, true}, false);
  reference = makeList({false, false, true, true}, true);
  for (int i = 0; i < 3; ++i) {
    auto person = platform::IMPerson::make(platform::format("p%d", i), kFirstNames[i + 2], "Lee");
    handles.push_back(platform::IMHandle::make(aimAccount, platform::format("row%d", i), person));
    handles.back()->updateStatus(i == 0 ? platform::kIMPersonStatusAvailable : platform::kIMPersonStatusAway, "");
  }
  onBoth([&](kib::KibPeopleList& list) {
    list.setShowsOfflinePeople(true);
    list.addPeopleFromArraySkipMe(handles, false);
  });
  advance(2.5);
  for (int i = 1; i < 3; ++i) handles[i]->updateStatus(platform::kIMPersonStatusOffline, "");
  auto noted = fast->numberOfNotedResorts();
  advance(2.5);
  ASSERT_EQ(fast->numberOfNotedResorts(), noted + 1);
  auto kept = delegates(*fast);
  ASSERT_EQ(kept, delegates(*reference));
  ASSERT_NE(std::count(kept.begin(), kept.end(), true), 0);

  auto dropped = refillBoth(handles, [] {});
  EXPECT_EQ(dropped.front(), dropped.back());
  EXPECT_EQ(rows(*fast), rows(*reference));
}

TEST_F(KibPeopleListPropertyTest, TransitionsEndingTogetherPostWhileRowsAreShown) {
  // The menu's list: the last of three fading rows to go leaves nothing shown,
  // and that resort posts nothing, noted or not.
  random.seed(7);
  fast = makeList({false, false, true, true}, false);
  reference = makeList({false, false, true, true}, true);
  for (int i = 0; i < 3; ++i) {
    auto person = platform::IMPerson::make(platform::format("p%d", i), kFirstNames[i], "Lee");
    handles.push_back(platform::IMHandle::make(aimAccount, platform::format("fader%d", i), person));
    handles.back()->updateStatus(platform::kIMPersonStatusAvailable, "");
  }
  onBoth([&](kib::KibPeopleList& list) { list.addPeopleFromArraySkipMe(handles, false); });
  for (const auto& handle : handles) handle->updateStatus(platform::kIMPersonStatusOffline, "");
  for (const auto* list : {fast.get(), reference.get()}) EXPECT_EQ(rows(*list).size(), 3u);
  fastUpdates = referenceUpdates = 0;
  advance(2.5);
  EXPECT_EQ(referenceUpdates, 2);
  EXPECT_EQ(fastUpdates, referenceUpdates);
  // The first end rebuilds: the last handle went offline after the last resort.
  EXPECT_EQ(fast->numberOfNotedResorts(), 2u);
  EXPECT_TRUE(rows(*fast).empty());

  // Two come back: rows are shown again, and the ends of their transitions post.
  for (int i = 0; i < 2; ++i) handles[i]->updateStatus(platform::kIMPersonStatusAvailable, "");
  fastUpdates = referenceUpdates = 0;
  advance(2.5);
  EXPECT_EQ(referenceUpdates, 2);
  EXPECT_EQ(fastUpdates, referenceUpdates);
  EXPECT_EQ(rows(*fast), rows(*reference));
  EXPECT_EQ(rows(*fast).size(), 2u);

  // Shown by the end of a fade: with away people hidden and offline ones
  // shown, a person fading from away to offline appears only when it ends.
  onBoth([](kib::KibPeopleList& list) { list.setShowsOfflinePeople(true); });
  for (const auto& handle : handles) handle->updateStatus(platform::kIMPersonStatusAway, "");
  advance(2.5);
  handles[0]->updateStatus(platform::kIMPersonStatusOffline, "");
  onBoth([](kib::KibPeopleList& list) { list.refreshList(); });
  EXPECT_TRUE(rows(*fast).empty());
  fastUpdates = referenceUpdates = 0;
  advance(2.5);
  EXPECT_EQ(referenceUpdates, 1);
  EXPECT_EQ(fastUpdates, referenceUpdates);
  EXPECT_EQ(rows(*fast).size(), 1u);
}

// Hundreds of people: the filing index's person table grows several times, and
// every refill reuses the arrays the last filing left.
TEST_F(KibPeopleListPropertyTest, FastPathsHoldInAWorldOfHundreds) {
  const Config configs[] = {
      {false, false, true, false},
      {true, false, true, true},
  };
  unsigned seed = 100;
  for (const auto& config : configs) {
    SCOPED_TRACE(platform::format("grouped %d", config.grouped));
    run(seed++, config, 400, 40);
    if (HasFatalFailure()) return;
    fast.reset();
    reference.reset();
    handles.clear();
    people.clear();
  }
}

}  // namespace
}  // namespace kibtest
