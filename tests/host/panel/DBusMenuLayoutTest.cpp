#include <gtest/gtest.h>

#include "host/panel/DBusMenuLayout.h"
#include "platform/ui/KeyModifiers.h"
#include "tests/platform/ui/UiTestSupport.h"
#include "tests/support/PlatformTest.h"

using namespace platform;
using kibhost::DBusMenuLayout;

namespace {

// Icons as their file names' bytes, so a test can see which image an item carries.
std::vector<std::uint8_t> fakePNG(const ImagePtr& image) {
  if (!image || image->filePath().empty()) return {};
  auto name = image->displayName();
  return {name.begin(), name.end()};
}

// Answers the extra's own action names, so the items that use them are enabled.
class ExtraLikeTarget final : public Object {
  PLATFORM_SELECTORS(ExtraLikeTarget, Object)
 public:
  void act(const ObjectPtr&) {}
};

const SelectorTable<ExtraLikeTarget>& ExtraLikeTarget::selectorTable() {
  static const SelectorTable<ExtraLikeTarget> table{{"choose:", &ExtraLikeTarget::act},
                                                    {"messagePerson:", &ExtraLikeTarget::act},
                                                    {"textMessagePerson:", &ExtraLikeTarget::act},
                                                    {"switchService:", &ExtraLikeTarget::act}};
  return table;
}

class DBusMenuLayoutTest : public kibtest::PlatformTest {
 protected:
  MenuItemPtr add(const std::string& title, const std::string& action = "choose:") {
    auto item = menu->addItemWithTitleActionKeyEquivalent(title, action, "");
    item->setTarget(&target);
    return item;
  }
  MenuItemPtr addAlternate(const std::string& title, const std::string& action) {
    auto item = add(title, action);
    item->setAlternate(true);
    item->setKeyEquivalentModifierMask(kAlternateKeyMask);
    return item;
  }
  void separator() { menu->addItem(MenuItem::separatorItem()); }

  // The top level as "label [property=value…]" lines, children indented.
  std::vector<std::string> describe(const DBusMenuLayout& layout) {
    std::vector<std::string> lines;
    for (auto id : layout.ids()) {
      if (id == 0) continue;
      const auto* entry = layout.entry(id);
      std::string line = entry->parent == 0 ? "" : "  ";
      for (const auto& [name, value] : entry->properties) {
        line += name + "=";
        if (auto* text = std::get_if<std::string>(&value)) line += *text;
        if (auto* number = std::get_if<std::int32_t>(&value)) line += std::to_string(*number);
        if (auto* flag = std::get_if<bool>(&value)) line += *flag ? "true" : "false";
        if (auto* bytes = std::get_if<std::vector<std::uint8_t>>(&value))
          line += std::string(bytes->begin(), bytes->end());
        if (auto* keys = std::get_if<DBusMenuLayout::Shortcut>(&value))
          for (const auto& key : keys->at(0)) line += key + "+";
        line += " ";
      }
      line += "@" + std::to_string(entry->menuIndex);
      lines.push_back(line);
    }
    return lines;
  }

  MenuPtr menu = Menu::initWithTitle("");
  ExtraLikeTarget target;
};

TEST_F(DBusMenuLayoutTest, EveryKindOfItemMapsToItsProperties) {
  separator();  // leading: hidden
  add("My Status: Away", ":")->setTag(1);
  separator();
  auto offline = add("Offline (AIM)");
  offline->setTag(4);
  offline->setState(kMixedState);
  add("Invisible")->setTag(5);
  separator();
  separator();  // a run: the second one is hidden
  auto away = add("Away");
  away->setTag(3);
  away->setState(kOnState);
  away->setImage(Image::initByReferencingFile(uitest::resourcesDir() / "status-away.png"));
  add("Buddies", ":");
  auto maya = add("Maya_Okafor", "messagePerson:");
  maya->setImage(Image::initByReferencingFile(uitest::resourcesDir() / "menu-video.png"));
  addAlternate("Maya_Okafor", "textMessagePerson:")->setImage(Image::initWithSize({16, 16}));
  auto end = add("End Screen Sharing");
  end->setKeyEquivalent("\033");
  end->setKeyEquivalentModifierMask(kControlKeyMask);
  add("Display AIM Buddies", "switchService:");
  add("No Account Enabled", "");
  separator();  // trailing: hidden

  DBusMenuLayout layout(fakePNG);
  EXPECT_TRUE(layout.rebuild(menu).layout);
  EXPECT_EQ(describe(layout), (std::vector<std::string>{
                                  "type=separator visible=false @-1",
                                  "enabled=false label=My Status: Away @-1",
                                  "type=separator @-1",
                                  "label=Offline (AIM) toggle-state=-1 toggle-type=checkmark @3",
                                  "label=Invisible toggle-state=0 toggle-type=checkmark @4",
                                  "type=separator @-1",
                                  "type=separator visible=false @-1",
                                  "icon-data=status-away.png label=Away toggle-state=1 toggle-type=checkmark @7",
                                  "enabled=false label=Buddies @-1",
                                  "children-display=submenu icon-data=menu-video.png label=Maya__Okafor @-1",
                                  "  icon-data=menu-video.png label=Maya__Okafor @9",
                                  "  label=Text chat @10",
                                  "label=End Screen Sharing shortcut=Control+Escape+ @11",
                                  "label=Display AIM Buddies toggle-state=0 toggle-type=checkmark @12",
                                  "enabled=false label=No Account Enabled @-1",
                                  "type=separator visible=false @-1",
                              }));
}

TEST_F(DBusMenuLayoutTest, ItemsKeepTheirIdsAndOnlyRealChangesMoveTheRevision) {
  auto away = add("Away");
  add("Alex", "messagePerson:");
  addAlternate("Alex", "textMessagePerson:");
  DBusMenuLayout layout(fakePNG);
  layout.rebuild(menu);
  const auto ids = layout.ids();
  const auto revision = layout.revision();

  auto same = layout.rebuild(menu);
  EXPECT_FALSE(same.any());
  EXPECT_EQ(layout.revision(), revision);
  EXPECT_EQ(layout.ids(), ids);

  // A property edited in place: the same ids, only that property is sent.
  away->setState(kOnState);
  auto edited = layout.rebuild(menu);
  EXPECT_FALSE(edited.layout);
  ASSERT_EQ(edited.updated.size(), 1u);
  EXPECT_EQ(edited.updated.begin()->first, ids[1]);
  EXPECT_EQ(std::get<std::int32_t>(edited.updated.begin()->second.at("toggle-state")), 1);
  EXPECT_EQ(layout.revision(), revision + 1);

  // The extra rebuilds the same menu from new items: nothing changes, not even an id.
  menu = Menu::initWithTitle("");
  add("Away")->setState(kOnState);
  add("Alex", "messagePerson:");
  addAlternate("Alex", "textMessagePerson:");
  EXPECT_FALSE(layout.rebuild(menu).any());
  EXPECT_EQ(layout.ids(), ids);

  // A new row: a new id for it, the others stay.
  menu = Menu::initWithTitle("");
  add("Away")->setState(kOnState);
  add("Sam", "messagePerson:");
  addAlternate("Sam", "textMessagePerson:");
  auto rebuilt = layout.rebuild(menu);
  EXPECT_TRUE(rebuilt.layout);
  EXPECT_EQ(layout.ids().size(), ids.size());
  EXPECT_EQ(layout.ids()[1], ids[1]);
  for (std::size_t i = 2; i < ids.size(); ++i) EXPECT_EQ(layout.entry(ids[i]), nullptr) << ids[i];

  // No menu: only the root.
  EXPECT_TRUE(layout.rebuild(nullptr).layout);
  EXPECT_EQ(layout.ids(), std::vector<std::int32_t>{0});
  EXPECT_EQ(layout.entry(0)->children.size(), 0u);
}

TEST_F(DBusMenuLayoutTest, ShortcutsAndLabelsUseTheProtocolsSpelling) {
  EXPECT_EQ(DBusMenuLayout::labelFor("a_b__c"), "a__b____c");
  EXPECT_EQ(DBusMenuLayout::shortcutFor("", kControlKeyMask), DBusMenuLayout::Shortcut{});
  EXPECT_EQ(DBusMenuLayout::shortcutFor("\033", kControlKeyMask), (DBusMenuLayout::Shortcut{{"Control", "Escape"}}));
  EXPECT_EQ(DBusMenuLayout::shortcutFor("q", kCommandKeyMask | kShiftKeyMask | kAlternateKeyMask),
            (DBusMenuLayout::Shortcut{{"Alt", "Shift", "Super", "q"}}));
}

}  // namespace
