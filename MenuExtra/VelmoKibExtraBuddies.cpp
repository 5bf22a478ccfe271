// The buddies section: the people model behind it, one row per available
// person, and the chats its rows open.
#include <algorithm>
#include <cstdint>

#include "MenuExtra/VelmoKibExtra.h"
#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/Format.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/KeyModifiers.h"
#include "platform/ui/MessagingURL.h"
#include "platform/ui/Workspace.h"

using namespace platform;

namespace {

constexpr const char* kMessageAction = "messagePerson:";
constexpr const char* kTextMessageAction = "textMessagePerson:";
// The spacer is sized like the chat icons.
constexpr const char* kSpacerModelImage = "menu-video";

// Local chat capabilities of the daemon connection: video needs the camera and
// a conferencing engine, audio the microphone and the one-to-one engine.
bool allowsVideo(std::uint64_t caps) {
  return (caps & kIMVCCapabilityCamera) && (caps & (kIMVCCapabilityConference | kIMVCCapabilityMultiway));
}

bool allowsAudio(std::uint64_t caps) {
  return (caps & kIMVCCapabilityMicrophone) && (caps & kIMVCCapabilityConference);
}

bool containsEqual(const std::vector<IMPeoplePtr>& lists, const IMPeoplePtr& people) {
  return std::any_of(lists.begin(), lists.end(), [&](const IMPeoplePtr& kept) { return isEqual(kept, people); });
}

}  // namespace

// The people model.

void VelmoKibExtra::_setUpPeopleModel() {
  _peopleCollection = IMPeopleCollection::make();
  _peopleCollection->setShouldHidePeople(false);

  _peopleList = kib::KibPeopleList::init();
  _peopleList->addObserver(this);
  _peopleList->setArrangesByGroup(false);
  _peopleList->setShowsOfflinePeople(false);
  _peopleList->setShowsIdlePeople(false);
  _peopleList->setShowsAwayPeople(false);
  _peopleList->setShowsUnknownPeople(false);
  _peopleList->setShowsNoStatusPeople(false);
}

void VelmoKibExtra::_rebuildPeopleCollection() {
  _peopleCollection->beginCoalescedChanges();

  auto service = activeService();
  std::vector<IMPeoplePtr> wanted;
  for (const auto& account : IMAccountController::sharedInstance()->connectedAccountsForService(service)) {
    bool kept = service ? account->service() == service : account->hasCapability(kIMAccountCapabilityBuddyList);
    if (!kept) continue;
    const auto& buddyList = account->buddyList();
    if (!_peopleCollection->collectsIMPeople(buddyList)) _peopleCollection->addIMPeople(buddyList);
    wanted.push_back(buddyList);
  }

  // Removed after the walk: the collection's array must not change under it.
  std::vector<IMPeoplePtr> unwanted;
  for (const auto& people : _peopleCollection->collectedIMPeople()) {
    if (!containsEqual(wanted, people)) unwanted.push_back(people);
  }
  for (const auto& people : unwanted) _peopleCollection->removeIMPeople(people);

  _peopleCollection->endCoalescedChanges();
  _rebuildPeopleList();
}

void VelmoKibExtra::_rebuildPeopleList() {
  // After willUnload there is no list; the menu is still dropped.
  if (_peopleList) {
    _peopleList->beginChanges();
    _peopleList->removeAllIMHandlesAndGroups(true);
    _peopleList->addPeopleFromArraySkipMe(_peopleCollection->people(), true);
    _peopleList->endChanges();
  }
  invalidateMenu();
}

// The section.

void VelmoKibExtra::_appendBuddies(const MenuPtr& menu) {
  static const kib::KibPeopleList::Items kNobody;
  const auto& items = _peopleList ? _peopleList->items() : kNobody;
  auto service = activeService();

  menu->addItem(
      labelItem(service ? format(localized("%@ Buddies"), service->localizedShortName()) : localized("Buddies")));

  if (items.empty()) {
    auto nobody = labelItem(localized("Nobody Available"));
    nobody->setImage(menuImageForPerson(nullptr));
    menu->addItem(nobody);
  }
  for (const auto& item : items) {
    const std::string name = stringValue(item->displayName());
    menu->addItem(_menuItemForPersonNamedIsAlternate(item, name, false));
    menu->addItem(_menuItemForPersonNamedIsAlternate(item, name, true));
  }
  menu->addItem(MenuItem::separatorItem());
}

MenuItemPtr VelmoKibExtra::_menuItemForPersonNamedIsAlternate(const std::shared_ptr<kib::KibPeopleListItem>& item,
                                                              const std::string& name, bool isAlternate) {
  auto row = MenuItem::initWithTitleActionKeyEquivalent(name, isAlternate ? kTextMessageAction : kMessageAction, "");
  if (isAlternate) {
    row->setKeyEquivalentModifierMask(kAlternateKeyMask);
    row->setAlternate(true);
  }
  row->setRepresentedObject(item);
  row->setTarget(this);
  row->setImage(menuImageForPerson(isAlternate || !item ? nullptr : item->imHandle()));
  return row;
}

ImagePtr VelmoKibExtra::menuImageForPerson(const IMHandlePtr& handle) {
  // Read at every call: a camera or microphone may come and go.
  const std::uint64_t caps = IMDaemonController::sharedController()->listener()->vcCapabilities();
  if (handle && handle->hasVideo() && allowsVideo(caps))
    return imageNamed(handle->isConferenceAvailable() ? "menu-video" : "menu-video_busy");
  if (handle && handle->hasAudio() && allowsAudio(caps))
    return imageNamed(handle->isConferenceAvailable() ? "menu-audio" : "menu-audio_busy");
  return emptyImageFromName(kSpacerModelImage);
}

// Chats.

void VelmoKibExtra::messagePerson(const ObjectPtr& sender) {
  _messagePersonForceText(std::dynamic_pointer_cast<MenuItem>(sender), false);
}

void VelmoKibExtra::textMessagePerson(const ObjectPtr& sender) {
  _messagePersonForceText(std::dynamic_pointer_cast<MenuItem>(sender), true);
}

void VelmoKibExtra::_messagePersonForceText(const MenuItemPtr& item, bool forceText) {
  auto person = std::dynamic_pointer_cast<kib::KibPeopleListItem>(item ? item->representedObject() : nullptr);
  auto handle = person ? person->imHandle() : nullptr;
  // A buddy busy in another audio or video chat can only take a text chat.
  if (!forceText && !(handle && handle->isConferenceAvailable())) forceText = true;

  auto service = handle ? handle->service() : nullptr;
  const std::string serviceName = service ? service->internalName() : "";
  const std::string ID = handle ? handle->ID() : "";
  const std::string url = format("Parlo:compose?service=%@&id=%@%@", MessagingURL::escaped(serviceName),
                                 MessagingURL::escaped(ID), forceText ? "&style=IM" : "");
  Workspace::sharedWorkspace().openURL(url);
}

std::string VelmoKibExtra::displayNameForPerson(const DictionaryPtr& record) {
  if (!record) return "";
  const std::string first = stringValue(record->objectForKey(IMPersonFirstNameKey));
  const std::string last = stringValue(record->objectForKey(IMPersonLastNameKey));
  if (!first.empty() && !last.empty()) return format("%@ %@", first, last);
  if (!first.empty()) return first;
  if (!last.empty()) return last;
  return stringValue(record->objectForKey(IMPersonScreenNameKey));
}
