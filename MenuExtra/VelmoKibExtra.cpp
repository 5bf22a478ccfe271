// Start-up and shutdown, notifications, images and the menu of the extra.
#include "MenuExtra/VelmoKibExtra.h"

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Format.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/Workspace.h"

#include "Source/BuddyList/KibPeopleList.h"

using namespace platform;

namespace {

constexpr float kBannerHeight = 22.0f;
constexpr float kMaxRevealWidth = 150.0f;
constexpr double kStartupDelay = 1.0;
constexpr const char* kPeopleListDidUpdateNotification = "__kKibPeopleListDidUpdateNotification";
constexpr const char* kEmptyImageName = "Empty Image";

}  // namespace

const SelectorTable<VelmoKibExtra>& VelmoKibExtra::selectorTable() {
  static const SelectorTable<VelmoKibExtra> table{
      {"_finishStartup", &VelmoKibExtra::_finishStartup},
      {"invalidateMenu:", &VelmoKibExtra::invalidateMenu},
      {"myStatusChanged:", &VelmoKibExtra::myStatusChanged},
      {"serviceStatusChanged:", &VelmoKibExtra::serviceStatusChanged},
      {"accountsUpdated:", &VelmoKibExtra::accountsUpdated},
      {"peopleChanged:", &VelmoKibExtra::peopleChanged},
      {"displayStatusText:", &VelmoKibExtra::displayStatusText},
      {"selectMenuItem:", &VelmoKibExtra::selectMenuItem},
      {"messagePerson:", &VelmoKibExtra::messagePerson},
      {"textMessagePerson:", &VelmoKibExtra::textMessagePerson},
      {"switchService:", &VelmoKibExtra::switchService},
      {"openBuddyList:", &VelmoKibExtra::openBuddyList},
      {"screenSharingStarted:", &VelmoKibExtra::screenSharingStarted},
      {"screenSharingEnded:", &VelmoKibExtra::screenSharingEnded},
      {"screenSharingPulse:", &VelmoKibExtra::screenSharingPulse},
      {"applicationDidTerminate:", &VelmoKibExtra::applicationDidTerminate},
      {"endScreenSharing:", &VelmoKibExtra::endScreenSharing},
      {"execMenuItemWithTitle:", &VelmoKibExtra::execMenuItemWithTitle},
  };
  return table;
}

// Construction.

std::shared_ptr<VelmoKibExtra> VelmoKibExtra::initWithBundle(BundlePtr bundle) {
  std::shared_ptr<VelmoKibExtra> extra(new VelmoKibExtra());
  if (!extra->MenuExtra::initWithBundle(bundle)) return nullptr;

  extra->_setUpPeopleModel();

  const float minWidth = StatusBannerView::minWidth();
  extra->_bannerView = StatusBannerView::initWithFrameStatusItem({0, 0, minWidth, kBannerHeight}, extra.get());
  extra->setView(extra->_bannerView);
  extra->_bannerView->setAutoresizingMask(kViewWidthSizable);
  extra->_bannerView->setDelegate(extra.get());
  extra->setLength(minWidth);

  auto glyph = Image::initByReferencingFile(extra->resourceFile("MenuExtra.pdf"));
  glyph->setTemplate(true);
  extra->_bannerView->setImage(glyph);
  extra->_bannerView->setDimmed(true);
  extra->_bannerView->setMaxRevealWidth(kMaxRevealWidth);
  extra->_bannerView->setRevealed(false);

  auto& distributed = DistributedNotificationCenter::defaultCenter();
  distributed.addObserver(extra.get(), "displayStatusText:", IMDisplayStatusTextNotification, nullptr);
  distributed.addObserver(extra.get(), "screenSharingStarted:", kKBParloScreenSharingStartedNotification, nullptr);
  distributed.addObserver(extra.get(), "screenSharingEnded:", kKBParloScreenSharingEndedNotification, nullptr);

  RunLoop::main().performSelectorAfterDelay(extra->shared_from_this(), "_finishStartup", nullptr, kStartupDelay);
  return extra;
}

VelmoKibExtra::~VelmoKibExtra() {
  removeFromAllCentres();
  stopScreenSharingPulse();
  _selectedService = nullptr;
  IMDaemonController::sharedController()->removeListenerID(kListenerID);
  if (_bannerView) {
    _bannerView->stopAllAnimation();
    _bannerView->setDelegate(nullptr);
  }
  _peopleCollection = nullptr;
  if (_peopleList) _peopleList->removeObserver(this);
  _peopleList = nullptr;
  _bannerView = nullptr;
  _images.clear();
  _sortDefaults = nullptr;
}

void VelmoKibExtra::_finishStartup(const ObjectPtr&) {
  if (_finishedLoading) return;
  _finishedLoading = true;

  _initImages();
  IMDaemonController::sharedController()->addListenerIDCapabilities(kListenerID, kKBListenerCapManageStatus);

  auto& services = IMService::notificationCenter();
  services.addObserver(this, "serviceStatusChanged:", IMServiceStatusChangedNotification, nullptr);
  services.addObserver(this, "invalidateMenu:", IMPersonStatusChangedNotification, nullptr);
  services.addObserver(this, "invalidateMenu:", IMPersonInfoChangedNotification, nullptr);
  services.addObserver(this, "invalidateMenu:", IMCustomStatusMessagesChangedNotification, nullptr);
  services.addObserver(this, "invalidateMenu:", IMStatusImagesChangedAppearanceNotification, nullptr);
  services.addObserver(this, "displayStatusText:", IMDisplayStatusTextNotification, nullptr);

  IMServiceAgent::sharedAgent()->launchIfNecessary();

  auto& local = NotificationCenter::defaultCenter();
  local.addObserver(this, "accountsUpdated:", IMAccountLoginStatusChangedNotification, nullptr);
  local.addObserver(this, "accountsUpdated:", IMAccountDeactivatedNotification, nullptr);
  local.addObserver(this, "accountsUpdated:", IMAccountActivatedNotification, nullptr);
  local.addObserver(this, "myStatusChanged:", IMMeStatusChangedNotification, nullptr);
  local.addObserver(this, "accountsUpdated:", IMAccountControllerUpdatedNotification, nullptr);
  local.addObserver(this, "invalidateMenu:", kPeopleListDidUpdateNotification, _peopleList.get());
  local.addObserver(this, "invalidateMenu:", IMAccountInvisibilityChangedNotification, nullptr);
  local.addObserver(this, "peopleChanged:", IMPeopleChangedNotification, nullptr);
  local.addObserver(this, "accountsUpdated:", IMDaemonDidDisconnectNotification, nullptr);
  local.addObserver(this, "accountsUpdated:", IMDaemonDidConnectNotification, nullptr);

  updateMenuTitleStatus(_myStatus());
}

void VelmoKibExtra::_initImages() {
  auto available = Image::initByReferencingFile(resourceFile("MenuExtra.pdf"));
  auto away = Image::initByReferencingFile(resourceFile("MenuExtra-.pdf"));
  auto alert = Image::initByReferencingFile(resourceFile("MenuExtra!.pdf"));
  // Index 2 is never shown; it keeps the dimmed entry at index 3, which is the
  // Available image object itself.
  _images = {available, away, alert, available};
  for (const auto& image : _images) image->setTemplate(true);
}

// The menu.

MenuPtr VelmoKibExtra::menu() {
  if (!_finishedLoading) _finishStartup();
  if (auto cached = MenuExtra::menu()) return cached;

  auto built = Menu::initWithTitle("");
  if (IMDaemonController::sharedController()->isConnected()) {
    if (isScreenSharing()) _appendScreenSharingControls(built);
    _appendStatus(built);
    _appendBuddies(built);
    _appendControls(built);
  } else {
    _appendOpenParlo(built);
  }
  setMenu(built);
  return built;
}

void VelmoKibExtra::invalidateMenu(const ObjectPtr&) { setMenu(nullptr); }

// Notification handlers.

void VelmoKibExtra::myStatusChanged(const ObjectPtr&) {
  invalidateMenu();
  updateMenuTitleStatus(_myStatus());
}

void VelmoKibExtra::serviceStatusChanged(const ObjectPtr&) {
  invalidateMenu();
  updateMenuTitleStatus(_myStatus());
}

void VelmoKibExtra::accountsUpdated(const ObjectPtr&) { _rebuildPeopleCollection(); }

void VelmoKibExtra::peopleChanged(const ObjectPtr&) { _rebuildPeopleList(); }

void VelmoKibExtra::objectDidPostDirectNotification(const NotificationPtr&) { invalidateMenu(); }

// Images.

ImagePtr VelmoKibExtra::imageNamed(const std::string& name) {
  if (auto registered = Image::imageNamed(name)) return registered;
  std::string path = bundle()->pathForImageResource(name);
  if (path.empty()) return nullptr;
  auto image = Image::initByReferencingFile(path);
  image->setName(name);
  return image;
}

ImagePtr VelmoKibExtra::emptyImageFromName(const std::string& name) {
  if (auto blank = Image::imageNamed(kEmptyImageName)) return blank;
  auto model = imageNamed(name);
  auto blank = Image::initWithSize(model ? model->size() : Size{0, 0});
  blank->setName(kEmptyImageName);
  return blank;
}

ImagePtr VelmoKibExtra::imageForStatus(IMPersonStatus status) {
  return Image::imageNamed(IMServiceAgent::imageNameForStatus(status));
}

// Shutdown.

void VelmoKibExtra::willUnload() {
  _bannerView->stopAllAnimation();
  removeFromAllCentres();
  _selectedService = nullptr;
  IMDaemonController::sharedController()->removeListenerID(kListenerID);
  // Later code may still address the collection, so it is replaced, not dropped.
  _peopleCollection = IMPeopleCollection::make();
  if (_peopleList) _peopleList->removeObserver(this);
  _peopleList = nullptr;
  stopScreenSharingPulse();
  MenuExtra::willUnload();
}

void VelmoKibExtra::removeFromAllCentres() {
  Workspace::sharedWorkspace().notificationCenter().removeObserver(this);
  IMServiceAgent::sharedAgent()->notificationCenter().removeObserver(this);
  DistributedNotificationCenter::defaultCenter().removeObserver(this);
  NotificationCenter::defaultCenter().removeObserver(this);
}

void VelmoKibExtra::stopScreenSharingPulse() {
  if (_screenSharingPulse) _screenSharingPulse->invalidate();
  _screenSharingPulse = nullptr;
}

// Helpers.

std::string VelmoKibExtra::localized(const std::string& key) const {
  return bundle()->localizedStringForKey(key, "", kStringsTable);
}

std::string VelmoKibExtra::resourceFile(const std::string& file) const {
  return format("%@/%@", bundle()->resourcePath(), file);
}

MenuItemPtr VelmoKibExtra::labelItem(const std::string& title) {
  auto item = MenuItem::initWithTitleActionKeyEquivalent(title, kLabelAction, "");
  item->setTarget(this);
  return item;
}
