#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/im/IMFramework.h"
#include "sim/SimEvent.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

// Lines of describeMenuItem for the status items (the extra is the target).
std::string label(const std::string& title, std::int64_t tag) {
  return title + " | " + std::to_string(tag) + " | 0 | nil | nil | :->extra | disabled";
}
std::string offlineItem(const std::string& title, int state) {
  return title + " | 4 | " + std::to_string(state) + " | nil | status-offline | selectMenuItem:->extra | enabled";
}
std::string invisibleItem(int state) {
  return "Invisible | 5 | " + std::to_string(state) +
         " | nil | status-invisible-flat.tif | selectMenuItem:->extra | enabled";
}
std::string availableItem(const std::string& title, const std::string& represented, int state = 0) {
  return title + " | 2 | " + std::to_string(state) + " | \"" + represented +
         "\" | status-available | selectMenuItem:->extra | enabled";
}
std::string awayItem(const std::string& title, int state = 0) {
  return title + " | 3 | " + std::to_string(state) + " | \"" + title +
         "\" | status-away | selectMenuItem:->extra | enabled";
}
const std::string separator = "---";

class VelmoKibExtraStatusSectionTest : public kibtest::ExtraTest {
 protected:
  void requestStatus(IMPersonStatus status, const std::string& message) {
    IMDaemonController::sharedController()->setMyStatusMessage(status, makeString(message));
    advance(0.3);  // the daemon answers after its status latency
  }
  // Chooses the item of the extra's menu with the title, as the host does.
  void choose(const std::string& title) {
    auto menu = extra->menu();
    auto index = menu->indexOfItemWithTitle(title);
    ASSERT_NE(index, -1) << title;
    menu->performActionForItemAtIndex(index);
  }
};

TEST_F(VelmoKibExtraStatusSectionTest, AnUnsavedAvailableMessageIsOfferedFirstAndChecked) {
  makeDefaultWorld();
  makeStartedExtra();
  requestStatus(kIMPersonStatusAvailable, "Working");

  EXPECT_EQ(statusSection(), (std::vector<std::string>{
                                 label("My Status: Working", 1),
                                 separator,
                                 offlineItem("Offline", 0),
                                 invisibleItem(0),
                                 separator,
                                 availableItem("Available", ""),
                                 availableItem("Working", "Working", 1),
                                 availableItem("At my desk", "At my desk"),
                                 availableItem("Writing code", "Writing code"),
                                 separator,
                                 availableItem("Current Melodix Song", "♫ %@"),
                                 separator,
                                 awayItem("Away"),
                                 awayItem("Out to lunch"),
                                 awayItem("In a meeting"),
                                 awayItem("Gone home"),
                                 separator,
                             }));

  // The menu the host gets starts with that section; it is cached until the status changes.
  auto menu = extra->menu();
  EXPECT_EQ(extra->menu(), menu);
  auto lines = kibtest::describeMenu(*menu, extra.get());
  auto section = statusSection();
  ASSERT_GE(lines.size(), section.size());
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + section.size()), section);
  EXPECT_EQ(menu->itemAtIndex(10)->representedObject(), IMMelodixMessageFormat()) << "the format object itself";

  // A saved message is not repeated; an unsaved one while away goes first among the away messages.
  requestStatus(kIMPersonStatusAvailable, "Writing code");
  EXPECT_EQ(extra->platform::MenuExtra::menu(), nullptr);
  section = statusSection();
  EXPECT_EQ(section[0], label("My Status: Writing code", 1));
  EXPECT_EQ(section[6], availableItem("At my desk", "At my desk"));
  EXPECT_EQ(section[7], availableItem("Writing code", "Writing code", 1));
  requestStatus(kIMPersonStatusAway, "Dentist");
  section = statusSection();
  ASSERT_EQ(section.size(), 17u);
  EXPECT_EQ(section[0], label("My Status: Dentist", 1));
  EXPECT_EQ(section[6], availableItem("At my desk", "At my desk"));
  EXPECT_EQ(section[11], awayItem("Away"));
  EXPECT_EQ(section[12], awayItem("Dentist", 1));
  EXPECT_EQ(section[13], awayItem("Out to lunch"));

  // Idle: the unsaved message shows in the heading only, and nothing is checked.
  requestStatus(kIMPersonStatusIdle, "Dozing");
  section = statusSection();
  EXPECT_EQ(section.size(), 16u);
  EXPECT_EQ(section[0], label("My Status: Dozing", 1));
  auto idleMenu = Menu::initWithTitle("");
  extra->_appendStatus(idleMenu);
  for (const auto& item : idleMenu->itemArray()) EXPECT_EQ(item->state(), kOffState) << item->title();
}

TEST_F(VelmoKibExtraStatusSectionTest, TheNowPlayingFormatReadsAsTheTrackOrAvailable) {
  makeWorld(R"({
    "services": [ { "name": "AIM" } ],
    "accounts": [ { "id": "aim", "service": "AIM", "login": "me", "myMessage": "♫ %@" } ],
    "savedMessages": { "available": ["Here"] },
    "music": { "interop": true }
  })");
  makeStartedExtra();
  ASSERT_EQ(world->account("aim")->myNowPlayingString(), "");

  EXPECT_EQ(statusSection(), (std::vector<std::string>{
                                 label("My Status: Available", 1),
                                 separator,
                                 offlineItem("Offline", 0),
                                 invisibleItem(0),
                                 separator,
                                 availableItem("Available", ""),
                                 availableItem("Here", "Here"),
                                 separator,
                                 availableItem("Current Melodix Song", "♫ %@", 1),
                                 separator,
                                 awayItem("Away"),
                                 separator,
                             }));

  world->account("aim")->setMyStatus(kIMPersonStatusAvailable, "♫ %@", "♫ Slow Tide");
  auto section = statusSection();
  EXPECT_EQ(section[0], label("My Status: ♫ Slow Tide", 1));
  EXPECT_EQ(section[8], availableItem("Current Melodix Song", "♫ %@", 1));

  // Without the music player the item is gone, and so is the mark.
  IMServiceAgent::sharedAgent()->setMelodixInteropAvailable(false);
  EXPECT_EQ(statusSection(), (std::vector<std::string>{
                                 label("My Status: ♫ Slow Tide", 1),
                                 separator,
                                 offlineItem("Offline", 0),
                                 invisibleItem(0),
                                 separator,
                                 availableItem("Available", ""),
                                 availableItem("Here", "Here"),
                                 separator,
                                 awayItem("Away"),
                                 separator,
                             }));
}

TEST_F(VelmoKibExtraStatusSectionTest, InvisibilityOverridesTheHeadingAndTheMark) {
  makeWorld(R"({
    "services": [ { "name": "AIM" }, { "name": "Jabber" }, { "name": "Other" } ],
    "accounts": [
      { "id": "a", "service": "AIM", "login": "a", "myMessage": "Working", "invisible": true },
      { "id": "b", "service": "Jabber", "login": "b", "myMessage": "Working", "invisible": true },
      { "id": "c", "service": "Other", "login": "c", "myMessage": "Working" }
    ],
    "savedMessages": { "available": ["Working"] }
  })");
  makeStartedExtra();
  EXPECT_EQ(statusSection(), (std::vector<std::string>{
                                 label("My Status: Invisible", 1),
                                 separator,
                                 offlineItem("Offline", 0),
                                 invisibleItem(1),
                                 separator,
                                 availableItem("Available", ""),
                                 availableItem("Working", "Working"),
                                 separator,
                                 awayItem("Away"),
                                 separator,
                             }));

  world->account("b")->setInvisible(false);
  auto section = statusSection();
  EXPECT_EQ(section[0], label("My Status: Working", 1));
  EXPECT_EQ(section[3], invisibleItem(0));
  EXPECT_EQ(section[6], availableItem("Working", "Working", 1));
}

TEST_F(VelmoKibExtraStatusSectionTest, OfflineServicesDashTheOfflineItemAndTheChoice) {
  makeWorld(R"({
    "services": [ { "name": "AIM" }, { "name": "Jabber" }, { "name": "Vistel", "persistent": false },
                  { "name": "Old", "enabled": false } ],
    "accounts": [
      { "id": "aim", "service": "AIM", "login": "me" },
      { "id": "jabber", "service": "Jabber", "login": "me@j", "loginStatus": "offline" },
      { "id": "vistel", "service": "Vistel", "login": "me", "loginStatus": "offline" },
      { "id": "old", "service": "Old", "login": "me", "loginStatus": "offline" }
    ]
  })");
  makeStartedExtra();
  const std::vector<std::string> dashed{
      label("My Status: Available", 1),
      separator,
      offlineItem("Offline (Jabber)", -1),
      invisibleItem(0),
      separator,
      availableItem("Available", "", -1),
      separator,
      awayItem("Away"),
      separator,
  };
  EXPECT_EQ(statusSection(), dashed);

  // Unselecting restores the plain Offline title; re-marking a cached menu puts the dashes back.
  auto menu = Menu::initWithTitle("");
  extra->_appendStatus(menu);
  extra->_unselectAllStatusItems(menu);
  EXPECT_EQ(kibtest::describeMenuItem(*menu->itemAtIndex(2), extra.get()), offlineItem("Offline", 0));
  EXPECT_EQ(kibtest::describeMenuItem(*menu->itemAtIndex(5), extra.get()), availableItem("Available", ""));
  extra->setMenu(menu);
  extra->_setMyStatusMenuStateStatusMessage(kIMPersonStatusAway, "");
  EXPECT_EQ(kibtest::describeMenuItem(*menu->itemAtIndex(2), extra.get()), offlineItem("Offline (Jabber)", -1));
  EXPECT_EQ(kibtest::describeMenuItem(*menu->itemAtIndex(7), extra.get()), awayItem("Away", -1));
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[1]) << "the icon follows";

  // Idle: only the Offline item carries a dash. Every offline service is named, in order.
  auto zephyr = IMService::make("Zephyr", "Zephyr", "Zephyr");
  ASSERT_TRUE(IMService::registerService(zephyr));
  world->account("aim")->setMyStatus(kIMPersonStatusIdle, "");
  auto section = statusSection();
  EXPECT_EQ(section[0], label("My Status: ", 1));
  EXPECT_EQ(section[2], offlineItem("Offline (Jabber, Zephyr)", -1));
  EXPECT_EQ(section[5], availableItem("Available", ""));

  // Offline: a plain check on the Offline item.
  ASSERT_TRUE(world->apply(sim::SimEvent::accountDisconnect("aim")));
  section = statusSection();
  EXPECT_EQ(section[0], label("My Status: Offline", 1));
  EXPECT_EQ(section[2], offlineItem("Offline", 1));
  EXPECT_EQ(section[5], availableItem("Available", ""));
  EXPECT_EQ(extra->_menuItemWithTagMessageMenu(2, "", menu), 5);
  EXPECT_EQ(extra->_menuItemWithTagMessageMenu(3, "Away", menu), 7);
  EXPECT_EQ(extra->_menuItemWithTagMessageMenu(3, "Gone", menu), -1);
}

TEST_F(VelmoKibExtraStatusSectionTest, ChoosingInvisibleWhileOfflineLogsInTheAccountsThatCan) {
  makeWorld(R"({
    "services": [ { "name": "AIM" }, { "name": "Jabber" } ],
    "accounts": [
      { "id": "aim", "service": "AIM", "login": "me", "capabilities": ["invisibleLogin"], "loginStatus": "offline" },
      { "id": "jabber", "service": "Jabber", "login": "me@j", "capabilities": ["buddyList"], "loginStatus": "offline" }
    ]
  })");
  makeStartedExtra();
  kibtest::DaemonRequestLog requests;
  choose("Invisible");
  EXPECT_EQ(requests.commands, (std::vector<std::string>{
                                   "loginAccount aim",
                                   "setMyStatus:message: 4 nil",
                                   "writeSettings aim invisible",
                                   "writeSettings jabber invisible",
                               }));
  EXPECT_TRUE(world->account("jabber")->isInvisible());

  advance(1.1);  // the log-in completes
  EXPECT_TRUE(world->account("aim")->isConnected());
  EXPECT_FALSE(world->account("jabber")->isConnected());
  EXPECT_TRUE(extra->_overallStatusIsInvisible());
  auto lines = kibtest::describeMenu(*extra->menu(), extra.get());
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[0], label("My Status: Invisible", 1));
  EXPECT_EQ(lines[2], offlineItem("Offline (Jabber)", -1));
  EXPECT_EQ(lines[3], invisibleItem(-1));

  // Online, Invisible keeps the status and logs nothing in.
  requests.clear();
  requestStatus(kIMPersonStatusAway, "Out");
  requests.clear();
  choose("Invisible");
  EXPECT_EQ(requests.commands, (std::vector<std::string>{
                                   "setMyStatus:message: 3 nil",
                                   "writeSettings aim invisible",
                                   "writeSettings jabber invisible",
                               }));
}

TEST_F(VelmoKibExtraStatusSectionTest, ChoosingAwayAvailableAndOffline) {
  makeDefaultWorld();
  makeStartedExtra();
  kibtest::DaemonRequestLog requests;
  const std::vector<std::string> visible{"writeSettings aim visible", "writeSettings ambrel visible",
                                         "writeSettings jabber visible", "writeSettings vistel visible"};
  auto expectRequests = [&](std::vector<std::string> expected) {
    expected.insert(expected.end(), visible.begin(), visible.end());
    EXPECT_EQ(requests.commands, expected);
    requests.clear();
  };
  world->account("jabber")->setInvisible(true);

  choose("Away");
  expectRequests({"setMyStatus:message: 3 \"Away\""});
  EXPECT_FALSE(world->account("jabber")->isInvisible()) << "every account is visible again";
  EXPECT_EQ(extra->platform::MenuExtra::menu(), nullptr) << "Jabber's visibility changed";
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[0]) << "until the daemon answers";
  advance(0.3);
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[1]);
  auto lines = kibtest::describeMenu(*extra->menu(), extra.get());
  ASSERT_GE(lines.size(), 16u);
  EXPECT_EQ(lines[0], label("My Status: Away", 1));
  EXPECT_EQ(lines[11], awayItem("Away", 1));
  EXPECT_EQ(lines[12], awayItem("Out to lunch"));
  EXPECT_EQ(statusSection().size(), 16u) << "the word Away is not offered as a message";

  choose("Gone home");
  expectRequests({"setMyStatus:message: 3 \"Gone home\""});
  choose("At my desk");
  expectRequests({"setMyStatus:message: 4 \"At my desk\""});
  choose("Available");
  expectRequests({"setMyStatus:message: 4 \"\""});
  choose("Current Melodix Song");
  expectRequests({"setMyStatus:message: 4 \"♫ %@\""});

  choose("Offline");
  expectRequests({"setMyStatus:message: 1 nil"});
  advance(0.3);
  ASSERT_FALSE(extra->_hasConnectedAccounts());
  EXPECT_TRUE(extra->bannerView()->dimmed());

  // With nothing connected, choosing an online status logs everything in first.
  choose("Out to lunch");
  expectRequests({"loginAllAccounts", "setMyStatus:message: 3 \"Out to lunch\""});
}

}  // namespace
