// The status section of the menu: reading and changing the user's status.
#include <algorithm>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/Format.h"
#include "platform/im/IMFramework.h"

using namespace platform;

namespace {

constexpr const char* kSelectAction = "selectMenuItem:";

bool contains(const std::vector<std::string>& messages, const std::string& message) {
  return std::find(messages.begin(), messages.end(), message) != messages.end();
}

// The short names of the enabled services that are offline, in service order,
// leaving out the video-calling service.
std::vector<std::string> offlineServiceNames() {
  std::vector<std::string> names;
  auto videoCalling = IMService::vistelService();
  for (const auto& service : IMService::allServices()) {
    if (service == videoCalling || !service->isEnabled()) continue;
    if (service->status() < kIMPersonStatusIdle) names.push_back(service->localizedShortName());
  }
  return names;
}

// "(AIM, Jabber)".
std::string parenthesizedList(const std::vector<std::string>& names) {
  std::string text = format("(%@", names.front());
  for (std::size_t i = 1; i < names.size(); ++i) text += format(", %@", names[i]);
  return text + ")";
}

}  // namespace

void VelmoKibExtra::_appendStatus(const MenuPtr& menu) {
  const std::string myStatusTitle = localized("My Status:");
  const std::string availableTitle = localized("Available");
  const std::string awayTitle = localized("Away");
  const std::string offlineTitle = localized("Offline");
  const std::string invisibleTitle = localized("Invisible");

  auto best = _bestAccountForStatus();
  const std::string message = best ? best->myStatusMessage() : "";
  const std::string nowPlaying = best ? best->myNowPlayingString() : "";
  const IMPersonStatus status = _myStatus();

  // The daemon is asked for its now-playing format only when the earlier rules do not decide.
  auto isNowPlayingFormat = [](const std::string& text) {
    auto format = asString(IMDaemonController::sharedController()->listener()->valueOfPersistentProperty(
        kKBDaemonPropertyNowPlayingFormatString));
    return format && text == format->value();
  };
  std::string word;
  if (status == kIMPersonStatusAvailable && message.empty()) {
    word = availableTitle;
  } else if (status == kIMPersonStatusAway && message.empty()) {
    word = awayTitle;
  } else if (status == kIMPersonStatusUnknown || status == kIMPersonStatusOffline) {
    word = offlineTitle;
  } else if (isNowPlayingFormat(message)) {
    word = nowPlaying.empty() ? availableTitle : nowPlaying;
  } else {
    word = best ? best->myStatusMessage() : "";
  }
  std::string heading = format("%@ %@", myStatusTitle, word);
  if (_overallStatusIsInvisible()) heading = format("%@ %@", myStatusTitle, invisibleTitle);

  auto header = labelItem(heading);
  header->setTag(HeaderTag);
  menu->addItem(header);
  menu->addItem(MenuItem::separatorItem());

  auto offline = MenuItem::initWithTitleActionKeyEquivalent(offlineTitle, kSelectAction, "");
  offline->setTag(OfflineTag);
  offline->setImage(imageForStatus(kIMPersonStatusOffline));
  offline->setTarget(this);
  menu->addItem(offline);

  auto invisible = MenuItem::initWithTitleActionKeyEquivalent(invisibleTitle, kSelectAction, "");
  invisible->setTag(InvisibleTag);
  invisible->setImage(Image::initByReferencingFile(resourceFile("status-invisible-flat.tif")));
  invisible->setTarget(this);
  menu->addItem(invisible);
  menu->addItem(MenuItem::separatorItem());

  const auto& agent = IMServiceAgent::sharedAgent();
  std::vector<std::string> availableMessages = agent->myAvailableMessages();
  std::vector<std::string> awayMessages = agent->myAwayMessages();

  // A current message that is not saved is offered first in its block, for this menu only.
  const std::string current = best ? best->myStatusMessage() : "";
  bool unsaved = !current.empty() && !contains(availableMessages, current) && !contains(awayMessages, current) &&
                 current != IMMelodixMessageFormat()->value() && current != availableTitle && current != awayTitle;
  if (unsaved && status == kIMPersonStatusAway) awayMessages.insert(awayMessages.begin(), current);
  if (unsaved && status == kIMPersonStatusAvailable) availableMessages.insert(availableMessages.begin(), current);

  _appendStatusMessagesTagTitleTagTitleImageMenu(availableMessages, AvailableTag, availableTitle, false,
                                                 imageForStatus(kIMPersonStatusAvailable), menu);
  _appendStatusMessagesTagTitleTagTitleImageMenu(awayMessages, AwayTag, awayTitle, true,
                                                 imageForStatus(kIMPersonStatusAway), menu);

  _updateStatusSelectionMessageMenu(status, best ? best->myStatusMessage() : "", menu);
}

void VelmoKibExtra::_appendStatusMessagesTagTitleTagTitleImageMenu(const std::vector<std::string>& messages,
                                                                   std::int32_t tag, const std::string& title,
                                                                   bool tagTitle, const ImagePtr& image,
                                                                   const MenuPtr& menu) {
  auto addStatusItem = [&](const std::string& itemTitle, ObjectPtr represented) {
    auto item = MenuItem::initWithTitleActionKeyEquivalent(itemTitle, kSelectAction, "");
    item->setTag(tag);
    item->setRepresentedObject(std::move(represented));
    item->setImage(image);
    item->setTarget(this);
    menu->addItem(item);
  };

  addStatusItem(title, makeString(tagTitle ? title : ""));
  for (const auto& message : messages) addStatusItem(message, makeString(message));
  menu->addItem(MenuItem::separatorItem());

  if (tag == AvailableTag && IMMelodixInteropAvailable()) {
    addStatusItem(localized("Current Melodix Song"), IMMelodixMessageFormat());
    menu->addItem(MenuItem::separatorItem());
  }
}

void VelmoKibExtra::_updateStatusSelectionMessageMenu(IMPersonStatus status, const std::string& message,
                                                      const MenuPtr& menu) {
  _unselectAllStatusItems(menu);

  std::int64_t index = -1;
  if (status == kIMPersonStatusUnknown || status == kIMPersonStatusOffline) {
    index = menu->indexOfItemWithTag(OfflineTag);
  } else if (status == kIMPersonStatusAway || status == kIMPersonStatusAvailable) {
    std::int64_t tag = status == kIMPersonStatusAway ? AwayTag : AvailableTag;
    index = message.empty() ? menu->indexOfItemWithTag(tag) : _menuItemWithTagMessageMenu(tag, message, menu);
  }

  int mark = kOnState;
  if (status > kIMPersonStatusOffline) {
    auto names = offlineServiceNames();
    auto offline = menu->itemWithTag(OfflineTag);
    if (!names.empty() && offline) {
      offline->setState(kMixedState);
      offline->setTitle(format("%@ %@", localized("Offline"), parenthesizedList(names)));
    }
    if (!names.empty()) mark = kMixedState;
  }

  if (_overallStatusIsInvisible()) index = menu->indexOfItemWithTag(InvisibleTag);
  if (index != -1) menu->itemAtIndex(index)->setState(mark);
}

std::int32_t VelmoKibExtra::_menuItemWithTagMessageMenu(std::int64_t tag, const std::string& message,
                                                        const MenuPtr& menu) const {
  const auto& items = menu->itemArray();
  for (std::size_t i = 0; i < items.size(); ++i) {
    auto represented = asString(items[i]->representedObject());
    if (items[i]->tag() == tag && represented && represented->value() == message) return static_cast<std::int32_t>(i);
  }
  return -1;
}

void VelmoKibExtra::_unselectAllStatusItems(const MenuPtr& menu) {
  for (const auto& item : menu->itemArray()) {
    if (item->tag() != 0) item->setState(kOffState);
    if (item->tag() == OfflineTag) item->setTitle(localized("Offline"));
  }
}

void VelmoKibExtra::_setMyStatusMenuStateStatusMessage(IMPersonStatus status, const std::string& message) {
  if (auto cached = MenuExtra::menu()) _updateStatusSelectionMessageMenu(status, message, cached);
  updateMenuTitleStatus(status);
}

void VelmoKibExtra::selectMenuItem(const ObjectPtr& sender) {
  auto item = std::dynamic_pointer_cast<MenuItem>(sender);
  StringPtr message = asString(item ? item->representedObject() : nullptr);
  const std::int64_t tag = item ? item->tag() : 0;
  const auto& controller = IMAccountController::sharedInstance();
  bool invisible = false;
  IMPersonStatus status = kIMPersonStatusAvailable;

  if (tag == AwayTag) {
    status = kIMPersonStatusAway;
  } else if (tag == OfflineTag) {
    status = kIMPersonStatusOffline;
    message = nullptr;
  } else if (tag == InvisibleTag) {
    IMPersonStatus current = _myStatus();
    invisible = true;
    message = nullptr;
    if (IMPersonStatusIsOnline(current)) {
      status = current;
    } else {
      // Only accounts that can log in invisibly are brought online for it.
      auto accounts = controller->accounts();
      for (const auto& account : accounts) {
        if (account->capabilities() & kIMAccountCapabilityInvisibleLogin) account->loginAccount();
      }
      status = kIMPersonStatusAvailable;
    }
  }

  const auto& daemon = IMDaemonController::sharedController();
  if (IMPersonStatusIsOnline(status) && !_hasConnectedAccounts() && !invisible) daemon->loginAllAccounts();
  daemon->setMyStatusMessage(status, message);

  auto accounts = controller->accounts();
  for (const auto& account : accounts) {
    account->setInvisible(invisible);
    account->writeSettings();
  }
}
