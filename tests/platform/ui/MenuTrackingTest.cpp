#include <gtest/gtest.h>

#include "platform/ui/KeyModifiers.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuTracking.h"
#include "tests/platform/ui/UiTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

class MenuTrackingTest : public kibtest::PlatformTest {
 protected:
  MenuItemPtr add(const std::string& title, const std::string& action = "choose:", bool alternate = false,
                  std::uint64_t mask = 0, const std::string& key = "") {
    auto item = menu->addItemWithTitleActionKeyEquivalent(title, action, key);
    item->setTarget(&target);
    item->setAlternate(alternate);
    item->setKeyEquivalentModifierMask(mask);
    return item;
  }
  std::vector<std::string> shown(std::uint64_t modifiers) {
    std::vector<std::string> rows;
    for (const auto& row : MenuTracking(menu).visibleRows(modifiers))
      rows.push_back(row.item->description() + (row.enabled || row.item->isSeparatorItem() ? "" : " (disabled)"));
    return rows;
  }

  MenuPtr menu = Menu::initWithTitle("");
  uitest::ActionTarget target;
};

TEST_F(MenuTrackingTest, AlternatesReplaceTheItemBeforeThemWhileTheirModifiersAreHeld) {
  add("Buddies", ":");
  add("Alex");
  add("Alex (text)", "other:", true, kAlternateKeyMask);
  add("Sam");
  add("Sam (text)", "other:", true, kAlternateKeyMask);
  add("Sam (shift)", "other:", true, kAlternateKeyMask | kShiftKeyMask);
  menu->addItem(MenuItem::separatorItem());

  EXPECT_EQ(shown(0), (std::vector<std::string>{"Buddies (disabled)", "Alex", "Sam", "-"}));
  EXPECT_EQ(shown(kAlternateKeyMask), (std::vector<std::string>{"Buddies (disabled)", "Alex (text)", "Sam (text)", "-"}));
  EXPECT_EQ(shown(kAlternateKeyMask | kShiftKeyMask),
            (std::vector<std::string>{"Buddies (disabled)", "Alex", "Sam (shift)", "-"}))
      << "the held modifiers must equal the alternate's mask";
  EXPECT_EQ(shown(kControlKeyMask), shown(0));
  EXPECT_EQ(shown(kAlternateKeyMask | kAlphaShiftKeyMask), shown(kAlternateKeyMask)) << "caps lock does not count";
}

TEST_F(MenuTrackingTest, AnAlternateWithoutAMatchingItemBeforeItIsAnOrdinaryRow) {
  add("Lone", "other:", true, kAlternateKeyMask);
  add("Keyed", "choose:", false, 0, "k");
  add("Unkeyed alternate", "other:", true, kAlternateKeyMask);
  menu->addItem(MenuItem::separatorItem());
  add("After separator", "other:", true, kAlternateKeyMask);
  EXPECT_EQ(shown(0), (std::vector<std::string>{"Lone", "Keyed", "Unkeyed alternate", "-", "After separator"}));
}

TEST_F(MenuTrackingTest, KeyEquivalentsChooseTheMatchingEnabledItem) {
  add("Sharing My Screen", ":");
  auto end = add("End Screen Sharing", "choose:", false, kControlKeyMask, kEscapeKeyEquivalent);
  add("Label with key", ":", false, kControlKeyMask, "x");
  add("Available");
  MenuTracking tracking(menu);

  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("\033", kControlKeyMask), 1);
  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("\033", 0), -1) << "Escape alone closes the menu instead";
  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("\033", kControlKeyMask | kShiftKeyMask), -1);
  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("x", kControlKeyMask), -1) << "disabled items take no keys";
  EXPECT_EQ(tracking.indexOfItemForKeyEquivalent("", 0), -1) << "an empty key matches nothing";

  EXPECT_TRUE(tracking.chooseItemForKeyEquivalent("\033", kControlKeyMask));
  EXPECT_FALSE(tracking.chooseItemForKeyEquivalent("\033", kAlternateKeyMask));
  EXPECT_EQ(target.chosen, (std::vector<std::string>{"End Screen Sharing"}));
  EXPECT_EQ(end->keyEquivalent(), "\033");
}

TEST_F(MenuTrackingTest, ChoosingPerformsOnlyEnabledItems) {
  add("My Status:", ":");
  menu->addItem(MenuItem::separatorItem());
  add("Away");
  MenuTracking tracking(menu);
  EXPECT_FALSE(tracking.chooseItemAtIndex(0));
  EXPECT_FALSE(tracking.chooseItemAtIndex(1));
  EXPECT_FALSE(tracking.chooseItemAtIndex(7));
  EXPECT_TRUE(tracking.chooseItemAtIndex(2));
  EXPECT_EQ(target.chosen, (std::vector<std::string>{"Away"}));
  EXPECT_TRUE(assertions->failures.empty()) << "choosing checks the index before asking the menu";
}

}  // namespace
