#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/NotificationCenter.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/MenuTracking.h"
#include "sim/SimEvent.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

// Two buddy-list services and a video-calling account without the buddy-list
// capability; the user's own AIM handle is on the AIM list.
constexpr const char* kBuddiesScenario = R"({
  "services": [
    { "name": "AIM" },
    { "name": "Jabber", "internalName": "XMPP+", "shortName": "Jabber" },
    { "name": "Vistel", "persistent": false }
  ],
  "accounts": [
    { "id": "aim", "service": "AIM", "login": "me.aim", "capabilities": ["buddyList"] },
    { "id": "jabber", "service": "Jabber", "login": "me@jab.example", "capabilities": ["buddyList"] },
    { "id": "vistel", "service": "Vistel", "login": "me.vistel" }
  ],
  "people": [
    { "id": "me", "firstName": "Kim", "lastName": "Self", "handles": [ { "account": "aim", "id": "me.aim" } ] },
    { "id": "bob", "firstName": "Bob", "lastName": "Baker",
      "handles": [ { "account": "aim", "id": "bob", "audio": true, "video": true, "conference": false } ] },
    { "id": "ann", "firstName": "Ann", "lastName": "Archer",
      "handles": [ { "account": "aim", "id": "ann", "audio": true, "video": true } ] },
    { "id": "cy", "firstName": "Cy", "lastName": "Cole",
      "handles": [ { "account": "jabber", "id": "cy@jab.example", "audio": true } ] },
    { "id": "jo", "firstName": "Jo", "lastName": "Yu", "handles": [ { "account": "jabber", "id": "jo yu@jab.example" } ] },
    { "id": "dee", "firstName": "Dee", "lastName": "Dunn", "handles": [ { "account": "aim", "id": "dee", "status": "away" } ] },
    { "id": "vic", "firstName": "Vic", "lastName": "Vance", "handles": [ { "account": "vistel", "id": "vic" } ] }
  ],
  "daemon": { "vcCapabilities": ["conference", "camera", "microphone"] }
})";

// title | action | image | modifier mask | alternate | enabled
std::string row(const MenuItem& item) {
  if (item.isSeparatorItem()) return "---";
  return item.title() + " | " + item.action() + " | " + (item.image() ? item.image()->displayName() : "nil") + " | " +
         std::to_string(item.keyEquivalentModifierMask()) + " | " + (item.isAlternate() ? "alt" : "main") + " | " +
         (item.isEnabled() ? "enabled" : "disabled");
}

class VelmoKibExtraBuddiesTest : public kibtest::ExtraTest {
 protected:
  // The account notifications that refill the people model.
  void accountsChanged() {
    NotificationCenter::defaultCenter().postNotificationName(IMAccountControllerUpdatedNotification, nullptr);
  }
  MenuPtr buddiesMenu() {
    auto menu = Menu::initWithTitle("");
    extra->_appendBuddies(menu);
    return menu;
  }
  std::vector<std::string> buddiesSection() {
    std::vector<std::string> rows;
    auto menu = buddiesMenu();
    for (const auto& item : menu->itemArray()) rows.push_back(row(*item));
    return rows;
  }
  // Chooses the row of the extra's menu shown for the title while the modifiers are held, as the host does.
  void chooseRow(const std::string& title, std::uint64_t modifiers = 0) {
    MenuTracking tracking(extra->menu());
    for (const auto& shown : tracking.visibleRows(modifiers)) {
      if (shown.item->title() != title) continue;
      ASSERT_TRUE(tracking.chooseItemAtIndex(shown.index));
      return;
    }
    FAIL() << "no row " << title;
  }
  std::string lastChatURL() const {
    const auto& chats = world->application()->openedChats();
    return chats.empty() ? "" : chats.back().url;
  }
};

TEST_F(VelmoKibExtraBuddiesTest, EveryAvailableBuddyGetsAMainRowAndAnOptionRow) {
  makeWorld(kBuddiesScenario);
  makeStartedExtra();
  // The daemon reports its accounts to the new listener, which fills the list.
  // Available people only, by first name; not the user, not the video-calling account's buddy.
  const std::string option = std::to_string(kAlternateKeyMask);
  EXPECT_EQ(buddiesSection(), (std::vector<std::string>{
                                  "Buddies | : | nil | 0 | main | disabled",
                                  "Ann Archer | messagePerson: | menu-video | 0 | main | enabled",
                                  "Ann Archer | textMessagePerson: | Empty Image | " + option + " | alt | enabled",
                                  "Bob Baker | messagePerson: | menu-video_busy | 0 | main | enabled",
                                  "Bob Baker | textMessagePerson: | Empty Image | " + option + " | alt | enabled",
                                  "Cy Cole | messagePerson: | menu-audio | 0 | main | enabled",
                                  "Cy Cole | textMessagePerson: | Empty Image | " + option + " | alt | enabled",
                                  "Jo Yu | messagePerson: | Empty Image | 0 | main | enabled",
                                  "Jo Yu | textMessagePerson: | Empty Image | " + option + " | alt | enabled",
                                  "---",
                              }));
  EXPECT_EQ(extra->peopleCollection()->collectedIMPeople().size(), 2u);

  // Both rows of a person stand for the list's item, and the spacer is the blank image of the icons' size.
  auto menu = buddiesMenu();
  const auto& items = extra->peopleList()->items();
  ASSERT_EQ(items.size(), 4u);
  EXPECT_EQ(menu->itemAtIndex(1)->representedObject(), items[0]);
  EXPECT_EQ(menu->itemAtIndex(2)->representedObject(), items[0]);
  EXPECT_EQ(menu->itemAtIndex(2)->target(), extra.get());
  EXPECT_EQ(menu->itemAtIndex(2)->image()->size(), menu->itemAtIndex(1)->image()->size());

  // With Option held the host shows the alternates in place of the main rows.
  MenuTracking tracking(menu);
  std::vector<std::string> shown;
  for (const auto& visible : tracking.visibleRows(kAlternateKeyMask)) shown.push_back(visible.item->action());
  EXPECT_EQ(shown, (std::vector<std::string>{":", "textMessagePerson:", "textMessagePerson:", "textMessagePerson:",
                                             "textMessagePerson:", ""}));
}

TEST_F(VelmoKibExtraBuddiesTest, PeopleChangesRefillTheListAndDropTheMenu) {
  makeWorld(kBuddiesScenario);
  makeStartedExtra();
  accountsChanged();
  auto menu = extra->menu();
  ASSERT_EQ(menu->indexOfItemWithTitle("Dee Dunn"), -1);

  world->apply(sim::SimEvent::buddyStatus("aim", "dee", kIMPersonStatusAvailable, ""));
  EXPECT_EQ(extra->MenuExtra::menu(), nullptr) << "the list's update drops the cached menu";
  EXPECT_NE(extra->menu()->indexOfItemWithTitle("Dee Dunn"), -1);

  // An account going away takes its people out of the collection and the menu.
  world->apply(sim::SimEvent::accountDisconnect("jabber"));
  EXPECT_EQ(extra->peopleCollection()->collectedIMPeople().size(), 1u);
  menu = extra->menu();
  EXPECT_EQ(menu->indexOfItemWithTitle("Cy Cole"), -1);
  EXPECT_NE(menu->indexOfItemWithTitle("Ann Archer"), -1);

  // Everybody gone: one disabled row, aligned with the person rows by the spacer.
  world->apply(sim::SimEvent::accountDisconnect("aim"));
  auto section = buddiesSection();
  ASSERT_EQ(section.size(), 3u);
  EXPECT_EQ(section[1], "Nobody Available | : | Empty Image | 0 | main | disabled");
}

TEST_F(VelmoKibExtraBuddiesTest, AChosenServiceFeedsTheListAlone) {
  makeWorld(kBuddiesScenario);
  makeStartedExtra();
  accountsChanged();

  extra->setDefaultService(IMService::serviceWithName("Jabber"));
  ASSERT_EQ(extra->peopleCollection()->collectedIMPeople().size(), 1u) << "the AIM list was removed";
  EXPECT_EQ(extra->peopleCollection()->collectedIMPeople()[0], world->account("jabber")->buddyList());
  EXPECT_EQ(buddiesSection(), (std::vector<std::string>{
                                  "Jabber Buddies | : | nil | 0 | main | disabled",
                                  "Cy Cole | messagePerson: | menu-audio | 0 | main | enabled",
                                  "Cy Cole | textMessagePerson: | Empty Image | 524288 | alt | enabled",
                                  "Jo Yu | messagePerson: | Empty Image | 0 | main | enabled",
                                  "Jo Yu | textMessagePerson: | Empty Image | 524288 | alt | enabled",
                                  "---",
                              }));

  // A chosen service with no connected account falls back to every buddy-list account.
  world->apply(sim::SimEvent::accountDisconnect("jabber"));
  auto section = buddiesSection();
  EXPECT_EQ(section.front(), "Buddies | : | nil | 0 | main | disabled");
  EXPECT_EQ(section.size(), 6u) << "Ann and Bob, two rows each";
}

TEST_F(VelmoKibExtraBuddiesTest, ChatIconsFollowTheDaemonCapabilitiesAtEachCall) {
  makeWorld(kBuddiesScenario);
  makeStartedExtra();
  auto ann = world->handle("aim", "ann");               // audio and video, free
  auto bob = world->handle("aim", "bob");               // audio and video, busy
  auto cy = world->handle("jabber", "cy@jab.example");  // audio only
  auto icon = [&](const IMHandlePtr& handle) {
    auto image = extra->menuImageForPerson(handle);
    return image ? image->displayName() : "nil";
  };
  auto& daemon = *world->daemon();

  // Camera with the multi-party engine but no one-to-one engine: video, and no audio.
  daemon.setVCCapabilities(kIMVCCapabilityCamera | kIMVCCapabilityMultiway | kIMVCCapabilityMicrophone);
  EXPECT_EQ(icon(ann), "menu-video");
  EXPECT_EQ(icon(bob), "menu-video_busy");
  EXPECT_EQ(icon(cy), "Empty Image");

  // No camera: a video buddy falls through to audio.
  daemon.setVCCapabilities(kIMVCCapabilityMicrophone | kIMVCCapabilityConference);
  EXPECT_EQ(icon(ann), "menu-audio");
  EXPECT_EQ(icon(bob), "menu-audio_busy");
  EXPECT_EQ(icon(cy), "menu-audio");

  // A camera alone is not enough for video.
  daemon.setVCCapabilities(kIMVCCapabilityCamera);
  EXPECT_EQ(icon(ann), "Empty Image");
  EXPECT_EQ(icon(nullptr), "Empty Image");
}

TEST_F(VelmoKibExtraBuddiesTest, ChoosingAPersonOpensAComposeURL) {
  makeWorld(kBuddiesScenario);
  makeStartedExtra();
  accountsChanged();

  chooseRow("Ann Archer");
  EXPECT_EQ(lastChatURL(), "Parlo:compose?service=AIM&id=ann") << "the application chooses the kind of chat";
  chooseRow("Ann Archer", kAlternateKeyMask);
  EXPECT_EQ(lastChatURL(), "Parlo:compose?service=AIM&id=ann&style=IM");
  chooseRow("Bob Baker");
  EXPECT_EQ(lastChatURL(), "Parlo:compose?service=AIM&id=bob&style=IM") << "a busy buddy gets a text chat";
  chooseRow("Jo Yu", kAlternateKeyMask);
  EXPECT_EQ(lastChatURL(), "Parlo:compose?service=XMPP%2B&id=jo%20yu%40jab.example&style=IM");

  // The application decodes what the extra escaped and knows the buddy.
  const auto& chat = world->application()->openedChats().back();
  EXPECT_EQ(chat.service, "XMPP+");
  EXPECT_EQ(chat.ID, "jo yu@jab.example");
  EXPECT_TRUE(chat.knownBuddy);
  EXPECT_TRUE(chat.textOnly);
  EXPECT_EQ(world->application()->openedChats().size(), 4u);

  // A row without a person opens a URL with empty fields.
  auto orphan = MenuItem::initWithTitleActionKeyEquivalent("x", "messagePerson:", "");
  extra->messagePerson(orphan);
  EXPECT_EQ(lastChatURL(), "Parlo:compose?service=&id=&style=IM");
}

TEST_F(VelmoKibExtraBuddiesTest, DisplayNameOfAPersonRecord) {
  auto record = [](const char* first, const char* last, const char* screenName) {
    auto person = std::make_shared<Dictionary>();
    if (first) person->setObjectForKey(IMPersonFirstNameKey, makeString(first));
    if (last) person->setObjectForKey(IMPersonLastNameKey, makeString(last));
    if (screenName) person->setObjectForKey(IMPersonScreenNameKey, makeString(screenName));
    return person;
  };
  EXPECT_EQ(VelmoKibExtra::displayNameForPerson(record("Ann", "Archer", "ann")), "Ann Archer");
  EXPECT_EQ(VelmoKibExtra::displayNameForPerson(record("Ann", "", "ann")), "Ann");
  EXPECT_EQ(VelmoKibExtra::displayNameForPerson(record(nullptr, "Archer", "ann")), "Archer");
  EXPECT_EQ(VelmoKibExtra::displayNameForPerson(record("", nullptr, "ann")), "ann");
  EXPECT_EQ(VelmoKibExtra::displayNameForPerson(record(nullptr, nullptr, nullptr)), "");
  EXPECT_EQ(VelmoKibExtra::displayNameForPerson(nullptr), "");
}

}  // namespace
