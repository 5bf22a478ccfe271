#include <gtest/gtest.h>

#include "host/TerminalMenu.h"
#include "platform/ui/KeyModifiers.h"

namespace {

using kibhost::TerminalMenu;
using kibhost::TerminalScreen;

// A target that answers the menu's actions, so their items show enabled.
class Target final : public platform::Object {
  PLATFORM_SELECTORS(Target, platform::Object)
 public:
  void act(const platform::ObjectPtr&) {}
};

const platform::SelectorTable<Target>& Target::selectorTable() {
  static const platform::SelectorTable<Target> table{{"act:", &Target::act}};
  return table;
}

class TerminalMenuTest : public ::testing::Test {
 protected:
  void SetUp() override {
    menu = platform::Menu::initWithTitle("");
    add("My Status: Away", ":");
    menu->addItem(platform::MenuItem::separatorItem());
    add("Available", "act:")->setState(platform::kOnState);
    add("Offline (AIM)", "act:")->setState(platform::kMixedState);
    auto person = add("Maya Okafor", "act:");
    person->setImage(platform::Image::initByReferencingFile("/nowhere/menu-video.png"));
    auto alternate = add("Maya Okafor (text)", "act:");
    alternate->setAlternate(true);
    alternate->setKeyEquivalentModifierMask(platform::kAlternateKeyMask);
    auto end = add("End Screen Sharing", "act:");
    end->setKeyEquivalent(platform::kEscapeKeyEquivalent);
    end->setKeyEquivalentModifierMask(platform::kControlKeyMask);
    end->setIndentationLevel(1);
  }

  platform::MenuItemPtr add(const std::string& title, const std::string& action) {
    auto item = menu->addItemWithTitleActionKeyEquivalent(title, action, "");
    item->setTarget(&target);
    return item;
  }

  Target target;
  platform::MenuPtr menu;
};

TEST_F(TerminalMenuTest, RowsShowMarksIndentationKeysAndAlternates) {
  platform::MenuTracking tracking(menu);
  TerminalMenu terminalMenu(tracking, 0);
  TerminalScreen screen;
  screen.resize(40, 12);
  terminalMenu.draw(screen, 30, 1, 12);
  // The box is moved left to fit: 32 columns wide, ending at the screen's edge.
  EXPECT_EQ(screen.rowText(1), "        ┌──────────────────────────────┐");
  EXPECT_EQ(screen.rowText(2), "        │     My Status: Away          │");
  EXPECT_EQ(screen.rowText(3), "        ├──────────────────────────────┤");
  EXPECT_EQ(screen.rowText(4), "        │ ✓   Available                │");
  EXPECT_EQ(screen.rowText(5), "        │ –   Offline (AIM)            │");
  EXPECT_EQ(screen.rowText(6), "        │   ▶ Maya Okafor              │");
  EXPECT_EQ(screen.rowText(7), "        │       End Screen Sharing  ⌃⎋ │");
  EXPECT_EQ(screen.rowText(8), "        └──────────────────────────────┘");
  EXPECT_EQ(screen.at(12, 6).style.foreground, TerminalScreen::Color::Cyan) << "the video glyph";
  EXPECT_EQ(screen.at(16, 2).style.foreground, TerminalScreen::Color::BrightBlack) << "the label shows disabled";

  bool inBox = false;
  EXPECT_EQ(terminalMenu.indexAt(20, 6, inBox), 4);
  EXPECT_TRUE(inBox);
  EXPECT_EQ(terminalMenu.indexAt(20, 2, inBox), -1) << "a disabled row chooses nothing";
  EXPECT_TRUE(inBox);
  EXPECT_EQ(terminalMenu.indexAt(2, 6, inBox), -1);
  EXPECT_FALSE(inBox);

  // Holding Option shows the alternate in place of its main row.
  terminalMenu.toggleOption();
  EXPECT_TRUE(terminalMenu.isOptionHeld());
  screen.clear();
  terminalMenu.draw(screen, 30, 1, 12);
  EXPECT_EQ(screen.rowText(6), "        │     Maya Okafor (text)       │");
  EXPECT_EQ(terminalMenu.indexAt(20, 6, inBox), 5);
}

TEST_F(TerminalMenuTest, AMenuTallerThanTheScreenScrollsWithTheHighlight) {
  platform::MenuTracking tracking(menu);
  TerminalMenu terminalMenu(tracking, 0);
  TerminalScreen screen;
  screen.resize(40, 6);
  terminalMenu.draw(screen, 0, 1, 6);  // room for three of the six rows
  EXPECT_EQ(screen.rowText(1), "┌──────────────────────────────┐        ");
  EXPECT_EQ(screen.rowText(2), "│     My Status: Away          │        ");
  EXPECT_EQ(screen.rowText(4), "│ ✓   Available                │        ");
  EXPECT_EQ(screen.rowText(5), "└────────────── ▼ ─────────────┘        ");
  bool inBox = false;
  EXPECT_EQ(terminalMenu.indexAt(5, 4, inBox), 2);

  for (int i = 0; i < 4; ++i) terminalMenu.moveSelection(1);  // down to End Screen Sharing
  EXPECT_EQ(terminalMenu.selectedIndex(), 6);
  screen.clear();
  terminalMenu.draw(screen, 0, 1, 6);
  EXPECT_EQ(screen.rowText(1), "┌────────────── ▲ ─────────────┐        ");
  EXPECT_EQ(screen.rowText(2), "│ –   Offline (AIM)            │        ");
  EXPECT_EQ(screen.rowText(4), "│       End Screen Sharing  ⌃⎋ │        ");
  EXPECT_EQ(screen.rowText(5), "└──────────────────────────────┘        ");
  EXPECT_EQ(terminalMenu.indexAt(5, 4, inBox), 6);
  EXPECT_EQ(terminalMenu.indexAt(5, 3, inBox), 4);
  EXPECT_EQ(terminalMenu.indexAt(5, 5, inBox), -1) << "the border";
}

TEST_F(TerminalMenuTest, TheHighlightSkipsWhatCannotBeChosen) {
  platform::MenuTracking tracking(menu);
  TerminalMenu terminalMenu(tracking, 0);
  EXPECT_EQ(terminalMenu.selectedIndex(), -1) << "nothing is highlighted when the menu opens";
  terminalMenu.moveSelection(1);
  EXPECT_EQ(terminalMenu.selectedIndex(), 2);
  terminalMenu.moveSelection(-1);
  EXPECT_EQ(terminalMenu.selectedIndex(), 6) << "wraps around past the label and the separator";
  terminalMenu.moveSelection(-1);
  EXPECT_EQ(terminalMenu.selectedIndex(), 4);
  terminalMenu.toggleOption();
  EXPECT_EQ(terminalMenu.selectedIndex(), 5) << "the same row, now showing its alternate";
}

TEST(TerminalMenuKeyTest, KeyEquivalentsAreShownWithTheirModifiers) {
  EXPECT_EQ(TerminalMenu::keyEquivalentText("\033", platform::kControlKeyMask), "⌃⎋");
  EXPECT_EQ(TerminalMenu::keyEquivalentText(
                "k", platform::kCommandKeyMask | platform::kShiftKeyMask | platform::kAlternateKeyMask),
            "⌥⇧⌘K");
  EXPECT_EQ(TerminalMenu::keyEquivalentText("\r", 0), "↩");
  EXPECT_EQ(TerminalMenu::keyEquivalentText("", platform::kCommandKeyMask), "");
}

}  // namespace
