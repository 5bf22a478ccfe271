#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/Preferences.h"
#include "platform/im/IMFramework.h"
#include "sim/SimEvent.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

constexpr const char* kDomain = "com.velmo.menuextra.Parlo";

// Services registered out of order: ICQ is connected but only away, the
// video-calling service is not persistent.
constexpr const char* kServicesScenario = R"({
  "services": [
    { "name": "Jabber" },
    { "name": "SubNet", "shortName": "Ambrel" },
    { "name": "ICQ", "status": "away" },
    { "name": "AIM" },
    { "name": "Vistel", "persistent": false }
  ],
  "accounts": [
    { "id": "jabber", "service": "Jabber", "login": "me@jab.example", "capabilities": ["buddyList"] },
    { "id": "subnet", "service": "SubNet", "login": "me@host", "capabilities": ["buddyList"] },
    { "id": "icq", "service": "ICQ", "login": "12345", "capabilities": ["buddyList"] },
    { "id": "aim", "service": "AIM", "login": "me.aim", "capabilities": ["buddyList"] },
    { "id": "vistel", "service": "Vistel", "login": "me.vistel" }
  ]
})";

std::string serviceItem(const std::string& shortName, const std::string& name, int state = 0) {
  return "Display " + shortName + " Buddies | 0 | " + std::to_string(state) + " | " + name +
         " | nil | switchService:->extra | enabled";
}
std::string showBuddyListItem(const std::string& title) {
  return title + " | 0 | 0 | nil | nil | openBuddyList:->extra | enabled";
}
const std::string kShowBuddyList = showBuddyListItem("Show Buddy List\u2026");

class VelmoKibExtraControlsTest : public kibtest::ExtraTest {
 protected:
  void accountsChanged() {
    NotificationCenter::defaultCenter().postNotificationName(IMAccountControllerUpdatedNotification, nullptr);
  }
  std::vector<std::string> section(void (VelmoKibExtra::*append)(const MenuPtr&)) {
    auto menu = Menu::initWithTitle("");
    (extra.get()->*append)(menu);
    return kibtest::describeMenu(*menu, extra.get());
  }
  std::vector<std::string> controls() { return section(&VelmoKibExtra::_appendControls); }
  void choose(const std::string& title) {
    auto menu = extra->menu();
    auto index = menu->indexOfItemWithTitle(title);
    ASSERT_NE(index, -1) << title;
    menu->performActionForItemAtIndex(index);
  }
  // The preference domain as it is on disk.
  nlohmann::json storedPreferences() const {
    std::ifstream file(Preferences::fileForDomain(kDomain));
    return file ? nlohmann::json::parse(file) : nlohmann::json();
  }
  void storeOnDisk(const std::string& json) const { std::ofstream(Preferences::fileForDomain(kDomain)) << json; }
  std::string lastBuddyList() const {
    const auto& lists = world->application()->shownBuddyLists();
    return lists.empty() ? "" : lists.back();
  }
};

TEST_F(VelmoKibExtraControlsTest, TheMenuIsBuiltInSectionOrder) {
  makeDefaultWorld();
  makeStartedExtra();
  accountsChanged();

  auto expected = statusSection();
  for (const auto& line : section(&VelmoKibExtra::_appendBuddies)) expected.push_back(line);
  for (const auto& line : controls()) expected.push_back(line);
  EXPECT_EQ(kibtest::describeMenu(*extra->menu(), extra.get()), expected);
  EXPECT_EQ(controls(), (std::vector<std::string>{
                            serviceItem("AIM", "AIM"),
                            serviceItem("Ambrel", "SubNet"),
                            serviceItem("Jabber", "Jabber"),
                            "---",
                            kShowBuddyList,
                        }));

  // Sharing puts its section first; it alone has a key equivalent and an indentation.
  world->application()->startScreenSharing("Alex");
  drain();
  auto sharing = section(&VelmoKibExtra::_appendScreenSharingControls);
  ASSERT_EQ(sharing.size(), 3u);
  sharing.insert(sharing.end(), expected.begin(), expected.end());
  auto menu = extra->menu();
  EXPECT_EQ(kibtest::describeMenu(*menu, extra.get()), sharing);
  int withKeys = 0, indented = 0;
  for (const auto& item : menu->itemArray()) {
    withKeys += !item->keyEquivalent().empty();
    indented += item->indentationLevel() != 0;
    if (!item->action().empty()) {
      EXPECT_EQ(item->target(), extra.get()) << item->title();
    }
  }
  EXPECT_EQ(withKeys, 1);
  EXPECT_EQ(indented, 1);
}

TEST_F(VelmoKibExtraControlsTest, WithoutTheDaemonTheMenuOnlyOpensTheApplication) {
  makeWorld(R"({ "services": [ { "name": "Jabber" } ],
                 "accounts": [ { "id": "jabber", "service": "Jabber", "login": "me@jab.example" } ],
                 "daemon": { "connected": false } })");
  makeStartedExtra();
  auto menu = extra->menu();
  EXPECT_EQ(kibtest::describeMenu(*menu, extra.get()), (std::vector<std::string>{
                                                           "No Account Enabled | 0 | 0 | nil | nil | ->nil | disabled",
                                                           showBuddyListItem("Open Parlo\u2026"),
                                                       }));
  choose("Open Parlo\u2026");
  EXPECT_EQ(lastBuddyList(), "AIM") << "no service chosen";

  // The daemon coming back drops the short menu.
  world->daemon()->setConnected(true);
  EXPECT_GT(extra->menu()->numberOfItems(), 2);
}

TEST_F(VelmoKibExtraControlsTest, ServiceChoicesAreSortedAndOnlyOfferUsableServices) {
  makeWorld(kServicesScenario);
  makeStartedExtra();
  EXPECT_EQ(controls(), (std::vector<std::string>{
                            serviceItem("AIM", "AIM"),
                            serviceItem("Ambrel", "SubNet"),
                            serviceItem("Jabber", "Jabber"),
                            "---",
                            kShowBuddyList,
                        }))
      << "ICQ is only away and the video-calling service keeps no buddy list";

  // The away service alone still shows the section, with nothing to choose.
  for (const char* account : {"jabber", "subnet", "aim"}) world->apply(sim::SimEvent::accountDisconnect(account));
  EXPECT_EQ(controls(), (std::vector<std::string>{"---", kShowBuddyList}));
  // Only the video-calling account left: no section at all.
  world->apply(sim::SimEvent::accountDisconnect("icq"));
  EXPECT_EQ(controls(), std::vector<std::string>{kShowBuddyList});
}

TEST_F(VelmoKibExtraControlsTest, ChoosingAServiceChecksItAndRemembersItOnDisk) {
  makeDefaultWorld();
  makeStartedExtra();
  accountsChanged();
  EXPECT_EQ(extra->defaultService(), nullptr);

  choose("Display Jabber Buddies");
  EXPECT_EQ(storedPreferences(), nlohmann::json({{"DefaultServiceName", "Jabber"}}));
  EXPECT_EQ(extra->selectedService(), IMService::serviceWithName("Jabber"));
  EXPECT_EQ(extra->MenuExtra::menu(), nullptr);
  auto menu = extra->menu();
  EXPECT_NE(menu->indexOfItemWithTitle("Jabber Buddies"), -1);
  EXPECT_EQ(controls(), (std::vector<std::string>{
                            serviceItem("AIM", "AIM"),
                            serviceItem("Ambrel", "SubNet"),
                            serviceItem("Jabber", "Jabber", kOnState),
                            "---",
                            showBuddyListItem("Show Jabber Buddy List\u2026"),
                        }));
  choose("Show Jabber Buddy List\u2026");
  EXPECT_EQ(lastBuddyList(), "Jabber");

  // The buddy list is opened by the service's name, not the name shown.
  choose("Display Ambrel Buddies");
  EXPECT_EQ(storedPreferences()["DefaultServiceName"], "SubNet");
  choose("Show Ambrel Buddy List\u2026");
  EXPECT_EQ(lastBuddyList(), "SubNet");

  // Choosing the checked service again clears the choice.
  choose("Display Ambrel Buddies");
  EXPECT_EQ(storedPreferences(), nlohmann::json::object());
  EXPECT_EQ(extra->selectedService(), nullptr);
  EXPECT_EQ(controls().back(), kShowBuddyList);
  for (const auto& line : controls()) EXPECT_EQ(line.find(" | 1 | "), std::string::npos) << line;
  choose("Show Buddy List\u2026");
  EXPECT_EQ(lastBuddyList(), "AIM");
}

TEST_F(VelmoKibExtraControlsTest, TheStoredChoiceIsReadAgainEachTime) {
  makeDefaultWorld();
  makeStartedExtra();
  choose("Display Ambrel Buddies");

  // Across loads of the extra.
  unloadExtra();
  EXPECT_EQ(storedPreferences()["DefaultServiceName"], "SubNet") << "unloading keeps the preference";
  makeStartedExtra();
  EXPECT_EQ(extra->selectedService(), IMService::serviceWithName("SubNet")) << "the start-up rebuild read it";
  EXPECT_EQ(extra->defaultService(), IMService::serviceWithName("SubNet"));
  EXPECT_EQ(extra->activeService(), IMService::serviceWithName("SubNet"));

  // Written by another process.
  storeOnDisk(R"({"DefaultServiceName": "AIM"})");
  EXPECT_EQ(extra->defaultService(), IMService::serviceWithName("AIM"));
  // Names that are not a persistent service read as no choice.
  storeOnDisk(R"({"DefaultServiceName": "Vistel"})");
  EXPECT_EQ(extra->defaultService(), nullptr);
  storeOnDisk(R"({"DefaultServiceName": "Telex"})");
  EXPECT_EQ(extra->defaultService(), nullptr);
  storeOnDisk(R"({"DefaultServiceName": 7})");
  EXPECT_EQ(extra->defaultService(), nullptr);
  EXPECT_EQ(extra->selectedService(), nullptr);
}

TEST_F(VelmoKibExtraControlsTest, AnOfflineUserIsOfferedTheGeneralBuddyList) {
  makeWorld(R"({ "services": [ { "name": "AIM" }, { "name": "Jabber" } ],
                 "accounts": [ { "id": "aim", "service": "AIM", "login": "me.aim", "myStatus": "offline" },
                               { "id": "jabber", "service": "Jabber", "login": "me@jab.example", "myStatus": "offline" } ] })");
  makeStartedExtra();
  ASSERT_EQ(extra->_myStatus(), kIMPersonStatusOffline);
  extra->setDefaultService(IMService::serviceWithName("AIM"));
  EXPECT_EQ(controls(), (std::vector<std::string>{
                            serviceItem("AIM", "AIM", kOnState),
                            serviceItem("Jabber", "Jabber"),
                            "---",
                            kShowBuddyList,
                        }));
  choose("Show Buddy List\u2026");
  EXPECT_EQ(lastBuddyList(), "AIM");
}

}  // namespace
