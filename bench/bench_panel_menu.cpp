// What keeping a panel's copy of the menu current costs: the extra rebuilds
// its menu whenever it drops it (every 2 s while the screen is shared), and
// the panel frontend then exports it again. Baseline: building the menu alone.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "host/panel/DBusMenuLayout.h"
#include "host/panel/RenderedPanelIcons.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/Menu.h"

namespace {

class Target final : public platform::Object {
  PLATFORM_SELECTORS(Target, platform::Object)
 public:
  void act(const platform::ObjectPtr&) {}
};

const platform::SelectorTable<Target>& Target::selectorTable() {
  static const platform::SelectorTable<Target> table{{"selectMenuItem:", &Target::act},
                                                     {"messagePerson:", &Target::act},
                                                     {"textMessagePerson:", &Target::act},
                                                     {"switchService:", &Target::act}};
  return table;
}

std::string resources() { return (std::filesystem::path(__FILE__).parent_path().parent_path() / "Resources").string(); }

// A menu shaped like the extra's: the status section, `people` rows with their alternates, the controls.
platform::MenuPtr extraLikeMenu(Target& target, int people) {
  auto menu = platform::Menu::initWithTitle("");
  auto add = [&](const std::string& title, const std::string& action, std::int64_t tag = 0) {
    auto item = menu->addItemWithTitleActionKeyEquivalent(title, action, "");
    item->setTarget(&target);
    item->setTag(tag);
    return item;
  };
  auto away = platform::Image::initByReferencingFile(resources() + "/status-away.png");
  auto available = platform::Image::initByReferencingFile(resources() + "/status-available.png");
  add("My Status: Available", ":", 1);
  menu->addItem(platform::MenuItem::separatorItem());
  add("Offline", "selectMenuItem:", 4);
  add("Invisible", "selectMenuItem:", 5);
  menu->addItem(platform::MenuItem::separatorItem());
  for (const char* title : {"Available", "At my desk", "Writing code"})
    add(title, "selectMenuItem:", 2)->setImage(available);
  menu->itemWithTitle("Available")->setState(platform::kOnState);
  menu->addItem(platform::MenuItem::separatorItem());
  for (const char* title : {"Away", "Out to lunch", "In a meeting"}) add(title, "selectMenuItem:", 3)->setImage(away);
  menu->addItem(platform::MenuItem::separatorItem());
  add("Buddies", ":");
  auto video = platform::Image::initByReferencingFile(resources() + "/menu-video.png");
  for (int i = 0; i < people; ++i) {
    const std::string name = "Person " + std::to_string(i);
    add(name, "messagePerson:")->setImage(video);
    auto alternate = add(name, "textMessagePerson:");
    alternate->setAlternate(true);
    alternate->setKeyEquivalentModifierMask(platform::kAlternateKeyMask);
  }
  menu->addItem(platform::MenuItem::separatorItem());
  for (const char* title : {"Display AIM Buddies", "Display Ambrel Buddies", "Display Jabber Buddies"})
    add(title, "switchService:");
  menu->addItem(platform::MenuItem::separatorItem());
  add("Show Buddy List…", "selectMenuItem:");
  return menu;
}

void BM_BuildMenu(benchmark::State& state) {
  Target target;
  for (auto _ : state) benchmark::DoNotOptimize(extraLikeMenu(target, static_cast<int>(state.range(0))));
}
BENCHMARK(BM_BuildMenu)->Arg(10)->Arg(100);

// Building plus exporting an unchanged menu again (the icons drawn once, as in the program).
void BM_BuildAndExportUnchangedMenu(benchmark::State& state) {
  Target target;
  kibhost::RenderedPanelIcons icons(kibrender::PanelTheme::Light);
  kibhost::DBusMenuLayout layout([&](const platform::ImagePtr& image) { return icons.menuIconPNG(image); });
  layout.rebuild(extraLikeMenu(target, static_cast<int>(state.range(0))));
  for (auto _ : state) {
    auto changes = layout.rebuild(extraLikeMenu(target, static_cast<int>(state.range(0))));
    if (changes.any()) state.SkipWithError("an unchanged menu changed the layout");
  }
}
BENCHMARK(BM_BuildAndExportUnchangedMenu)->Arg(10)->Arg(100);

}  // namespace
