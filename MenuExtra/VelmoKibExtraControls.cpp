// The controls section: which service's buddies the menu shows (remembered in
// the extra's preferences), the buddy-list entry, and the menu shown while the
// daemon is away.
#include <algorithm>
#include <optional>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/Format.h"
#include "platform/core/Preferences.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/Workspace.h"

using namespace platform;

namespace {

constexpr const char* kDefaultServiceNameKey = "DefaultServiceName";
constexpr const char* kOpenBuddyListAction = "openBuddyList:";
constexpr const char* kFallbackBuddyListService = "AIM";

std::vector<IMServicePtr> servicesByShortName() {
  auto services = IMService::allServices();
  std::stable_sort(services.begin(), services.end(), [](const IMServicePtr& a, const IMServicePtr& b) {
    return TextServices::compare(a->localizedShortName(), b->localizedShortName()) < 0;
  });
  return services;
}

bool hasConnectedPersistentService(const std::vector<IMServicePtr>& services) {
  auto controller = IMAccountController::sharedInstance();
  return std::any_of(services.begin(), services.end(), [&](const IMServicePtr& service) {
    return service->isPersistent() && !controller->connectedAccountsForService(service).empty();
  });
}

}  // namespace

void VelmoKibExtra::_appendControls(const MenuPtr& menu) {
  const auto services = servicesByShortName();
  std::optional<std::string> checkedName;

  if (hasConnectedPersistentService(services)) {
    auto active = activeService();
    for (const auto& service : services) {
      if (!service->isEnabled() || service->status() != kIMPersonStatusAvailable || !service->isPersistent()) continue;
      auto item = MenuItem::initWithTitleActionKeyEquivalent(
          format(localized("Display %@ Buddies"), service->localizedShortName()), "switchService:", "");
      item->setRepresentedObject(service);
      item->setTarget(this);
      if (active && service->name() == active->name()) {
        item->setState(kOnState);
        checkedName = service->localizedShortName();
      }
      menu->addItem(item);
    }
    menu->addItem(MenuItem::separatorItem());
  }

  // An offline user is shown the general entry, whatever service is chosen.
  std::string title = localized("Show Buddy List\\U2026");
  if (_myStatus() >= kIMPersonStatusIdle && checkedName)
    title = format(localized("Show %@ Buddy List\\U2026"), *checkedName);
  auto showBuddyList = MenuItem::initWithTitleActionKeyEquivalent(title, kOpenBuddyListAction, "");
  showBuddyList->setTarget(this);
  menu->addItem(showBuddyList);
}

void VelmoKibExtra::_appendOpenParlo(const MenuPtr& menu) {
  menu->addItem(MenuItem::initWithTitleActionKeyEquivalent(localized("No Account Enabled"), "", ""));
  auto open = MenuItem::initWithTitleActionKeyEquivalent(localized("Open Parlo\\U2026"), kOpenBuddyListAction, "");
  open->setTarget(this);
  menu->addItem(open);
}

void VelmoKibExtra::switchService(const ObjectPtr& sender) {
  auto item = std::dynamic_pointer_cast<MenuItem>(sender);
  auto service = std::dynamic_pointer_cast<IMService>(item ? item->representedObject() : nullptr);
  // Choosing the checked service again goes back to showing every service.
  setDefaultService(service == _selectedService ? nullptr : service);
  invalidateMenu();
}

IMServicePtr VelmoKibExtra::defaultService() {
  auto stored = asString(Preferences::copyAppValue(kDefaultServiceNameKey, bundle()->bundleIdentifier()));
  _selectedService = nullptr;
  if (stored && !stored->empty()) {
    auto service = IMService::serviceWithInternalName(stored->value());
    // Only persistent services keep buddy lists worth choosing.
    if (service && service->isPersistent()) _selectedService = service;
  }
  return _selectedService;
}

void VelmoKibExtra::setDefaultService(const IMServicePtr& service) {
  if (service == _selectedService) return;
  _selectedService = service;
  const std::string& domain = bundle()->bundleIdentifier();
  Preferences::setAppValue(kDefaultServiceNameKey, service ? makeString(service->internalName()) : nullptr, domain);
  Preferences::appSynchronize(domain);
  _rebuildPeopleCollection();
}

void VelmoKibExtra::openBuddyList(const ObjectPtr&) {
  auto service = activeService();
  std::string name = service ? service->name() : "";
  if (name.empty()) name = kFallbackBuddyListService;
  Workspace::sharedWorkspace().openURL("Parlo:openbuddylist?service=" + name);
}
