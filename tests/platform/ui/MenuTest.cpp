#include <gtest/gtest.h>

#include "platform/core/String.h"
#include "platform/ui/Menu.h"
#include "tests/platform/ui/UiTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

class MenuTest : public kibtest::PlatformTest {
 protected:
  MenuItemPtr item(const std::string& title, const std::string& action = "choose:") {
    auto made = MenuItem::initWithTitleActionKeyEquivalent(title, action, "");
    made->setTarget(&target);
    return made;
  }
  std::vector<std::string> titles(const Menu& menu) {
    std::vector<std::string> result;
    for (const auto& i : menu.itemArray()) result.push_back(i->description());
    return result;
  }

  uitest::ActionTarget target;
};

TEST_F(MenuTest, AnItemIsEnabledExactlyWhenItsTargetRespondsToItsAction) {
  auto label = item("My Status:", ":");
  auto noAction = item("No Account Enabled", "");
  auto noTarget = MenuItem::initWithTitleActionKeyEquivalent("Orphan", "choose:", "");
  auto unknown = item("Unknown", "missing:");
  auto working = item("Available");
  auto separator = MenuItem::separatorItem();

  EXPECT_FALSE(label->isEnabled()) << "label items show disabled";
  EXPECT_FALSE(noAction->isEnabled());
  EXPECT_FALSE(noTarget->isEnabled());
  EXPECT_FALSE(unknown->isEnabled());
  EXPECT_TRUE(working->isEnabled());
  EXPECT_FALSE(separator->isEnabled());
  EXPECT_TRUE(separator->isSeparatorItem());
  EXPECT_FALSE(working->isSeparatorItem());

  working->setTarget(nullptr);
  EXPECT_FALSE(working->isEnabled()) << "validation is computed when asked, not cached";
}

TEST_F(MenuTest, ItemAttributesKeepWhatIsSet) {
  auto made = item("End Screen Sharing", "choose:");
  EXPECT_EQ(made->keyEquivalentModifierMask(), 0u) << "no modifier until one is set";
  EXPECT_EQ(made->state(), kOffState);
  made->setKeyEquivalent("\033");
  made->setKeyEquivalentModifierMask(0x40000);
  made->setTag(4);
  made->setState(kMixedState);
  made->setIndentationLevel(1);
  made->setAlternate(true);
  auto represented = makeString("Working");
  made->setRepresentedObject(represented);
  EXPECT_EQ(made->keyEquivalent(), "\033");
  EXPECT_EQ(made->keyEquivalentModifierMask(), 0x40000u);
  EXPECT_EQ(made->tag(), 4);
  EXPECT_EQ(made->state(), -1);
  EXPECT_EQ(made->indentationLevel(), 1);
  EXPECT_TRUE(made->isAlternate());
  EXPECT_EQ(made->representedObject(), represented);
  made->setIndentationLevel(40);
  EXPECT_EQ(made->indentationLevel(), 15);
  made->setIndentationLevel(-2);
  EXPECT_EQ(made->indentationLevel(), 0);
}

TEST_F(MenuTest, ItemsKeepTheirOrderThroughInsertionAndRemoval) {
  auto menu = Menu::initWithTitle("");
  auto away = item("Away");
  menu->addItem(item("Offline"));
  menu->addItem(MenuItem::separatorItem());
  menu->addItem(away);
  menu->insertItemAtIndex(item("Heading", ":"), 0);
  auto added = menu->addItemWithTitleActionKeyEquivalent("Show Buddy List…", "choose:", "");
  EXPECT_EQ(titles(*menu), (std::vector<std::string>{"Heading", "Offline", "-", "Away", "Show Buddy List…"}));
  EXPECT_EQ(menu->numberOfItems(), 5);
  EXPECT_EQ(added->menu(), menu.get());
  EXPECT_EQ(menu->indexOfItemWithTitle("Away"), 3);
  EXPECT_EQ(menu->indexOfItemWithTitle("Display Jabber Buddies"), -1);
  EXPECT_EQ(menu->indexOfItemWithTitle(""), -1) << "separators have no title to find";
  EXPECT_EQ(menu->itemAtIndex(3), away);
  EXPECT_EQ(menu->itemAtIndex(5), nullptr);
  EXPECT_EQ(menu->itemAtIndex(-1), nullptr);

  away->setTag(3);
  menu->itemAtIndex(1)->setTag(3);
  EXPECT_EQ(menu->indexOfItemWithTag(3), 1) << "the first item with the tag";
  EXPECT_EQ(menu->itemWithTag(9), nullptr);
  away->setRepresentedObject(makeString("Away"));
  EXPECT_EQ(menu->indexOfItemWithRepresentedObject(makeString("Away").get()), 3) << "by equality";

  menu->removeItem(away.get());
  menu->removeItemAtIndex(0);
  EXPECT_EQ(titles(*menu), (std::vector<std::string>{"Offline", "-", "Show Buddy List…"}));
  EXPECT_EQ(away->menu(), nullptr);
  EXPECT_TRUE(assertions->failures.empty());

  menu->removeAllItems();
  EXPECT_EQ(menu->numberOfItems(), 0);
  EXPECT_EQ(added->menu(), nullptr);
}

TEST_F(MenuTest, MisplacedInsertionsAreReportedAndChangeNothing) {
  auto menu = Menu::initWithTitle("");
  auto other = Menu::initWithTitle("");
  auto shared = item("Shared");
  other->addItem(shared);
  menu->addItem(shared);
  menu->insertItemAtIndex(item("Far"), 3);
  menu->removeItemAtIndex(0);
  ASSERT_EQ(assertions->failures.size(), 3u);
  EXPECT_EQ(assertions->failures[0].description, "Item Shared is already in another menu");
  EXPECT_EQ(assertions->failures[1].method, "-[Menu insertItem:atIndex:]");
  EXPECT_EQ(assertions->failures[2].method, "-[Menu removeItemAtIndex:]");
  EXPECT_EQ(menu->numberOfItems(), 0);
  EXPECT_EQ(shared->menu(), other.get());
}

TEST_F(MenuTest, PerformActionSendsTheItemToItsTarget) {
  auto menu = Menu::initWithTitle("");
  menu->addItem(item("My Status: Available", ":"));
  menu->addItem(item("Away"));
  menu->addItem(item("No action", ""));
  menu->addItem(item("Other", "other:"));
  for (std::int64_t i = 0; i < menu->numberOfItems(); ++i) menu->performActionForItemAtIndex(i);
  EXPECT_EQ(target.chosen, (std::vector<std::string>{"Away", "other:Other"}))
      << "label and action-less items do nothing";
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(MenuTest, PerformActionOutOfRangeIsReportedAndDoesNothingElse) {
  auto menu = Menu::initWithTitle("");
  menu->addItem(item("Away"));
  menu->performActionForItemAtIndex(-1);
  menu->performActionForItemAtIndex(1);
  EXPECT_TRUE(target.chosen.empty());
  ASSERT_EQ(assertions->failures.size(), 2u);
  EXPECT_EQ(assertions->failures[0].method, "-[Menu performActionForItemAtIndex:]");
  EXPECT_EQ(assertions->failures[0].object, menu.get());
  EXPECT_EQ(assertions->failures[0].file, "platform/ui/Menu");
  EXPECT_EQ(assertions->failures[0].description, "Index -1 beyond bounds of a menu of 1 items");
  EXPECT_EQ(assertions->failures[1].description, "Index 1 beyond bounds of a menu of 1 items");
  EXPECT_EQ(menu->numberOfItems(), 1);
}

TEST_F(MenuTest, AnExceptionEscapingAnActionIsLogged) {
  auto menu = Menu::initWithTitle("");
  menu->addItem(item("Explode", "explode:"));
  EXPECT_NO_THROW(menu->performActionForItemAtIndex(0));
  auto lines = linesOf(Log::Channel::System);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NE(lines[0].find("explode:"), std::string::npos) << lines[0];
  EXPECT_NE(lines[0].find("boom"), std::string::npos) << lines[0];
}

TEST_F(MenuTest, AMenuActionMayEmptyTheMenuThatRunsIt) {
  auto menu = Menu::initWithTitle("");
  menu->addItem(item("Clear", "clearMenu:"));
  menu->performActionForItemAtIndex(0);
  EXPECT_EQ(target.chosen, (std::vector<std::string>{"cleared:Clear"}));
  EXPECT_EQ(menu->numberOfItems(), 0);
}

}  // namespace
