#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/Log.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/String.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"
#include "tests/BuddyList/BuddyListTestSupport.h"

namespace kibtest {

// A people list over real platform handles, with the list's log category on
// and its update notifications counted.
class PeopleListTest : public BuddyListTest {
 protected:
  void SetUp() override {
    BuddyListTest::SetUp();
    platform::Log::setEnabledCategories({kib::kKibPeopleListLogCategory});
    list = kib::KibPeopleList::init();
    platform::NotificationCenter::defaultCenter().addObserverForName(
        kib::kKibPeopleListDidUpdateNotification, list.get(), [this](const platform::NotificationPtr& note) {
          ++updates;
          EXPECT_EQ(note->object(), list);
        });
  }

  void TearDown() override {
    list.reset();
    platform::Log::resetCategoriesFromEnvironment();
    BuddyListTest::TearDown();
  }

  // A buddy with a person (so it has names), a status and buddy-list groups.
  static platform::IMHandlePtr buddy(const platform::IMAccountPtr& account, const std::string& ID,
                                     platform::IMPersonStatus status, const platform::IMPersonPtr& person = nullptr,
                                     std::vector<std::string> groups = {}) {
    auto h = handle(account, ID, status, person);
    if (!groups.empty()) h->setGroups(std::move(groups));
    return h;
  }

  static platform::IMPersonPtr person(const std::string& first, const std::string& last) {
    return platform::IMPerson::make(first + "." + last, first, last);
  }

  std::size_t countLines(const std::string& line) const {
    auto lines = linesOf(platform::Log::Channel::Always);
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
  }

  std::size_t countLinesStartingWith(const std::string& prefix) const {
    auto lines = linesOf(platform::Log::Channel::Always);
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; }));
  }

  std::size_t rebuilds() const { return countLines("Rebuild Items"); }
  std::size_t sorts() const { return countLinesStartingWith("Items after sort: "); }

  void resetCounts() {
    clearLog();
    updates = 0;
  }

  // The displayed rows: "[name]" for a header, the display name for a person.
  std::vector<std::string> rows() const {
    std::vector<std::string> result;
    for (const auto& item : list->items())
      result.push_back(item->isGroup() ? "[" + item->group() + "]" : item->displayName()->value());
    return result;
  }

  void search(const std::string& text) {
    list->setSearchString(platform::makeString(text));
    list->refreshList();
  }

  kib::KibPeopleListPtr list;
  int updates = 0;
};

using Rows = std::vector<std::string>;

}  // namespace kibtest
