// The user's own status, the menu-bar icon and the banner text.
#include "MenuExtra/VelmoKibExtra.h"
#include "platform/im/IMFramework.h"

using namespace platform;

namespace {

// Indexes into the status image list.
constexpr std::size_t kAvailableImage = 0;
constexpr std::size_t kAwayImage = 1;
constexpr std::size_t kDimmedImage = 3;

// Every status text scrolls this many times before the banner collapses.
constexpr std::int32_t kBannerScrollCycles = 3;

bool isVideoCallingAccount(const IMAccountPtr& account) {
  return account->service() == IMService::vistelService();
}

}  // namespace

std::vector<IMAccountPtr> VelmoKibExtra::_activeAccounts() const {
  auto active = IMAccountController::sharedInstance()->activeAccounts();
  std::vector<IMAccountPtr> accounts;
  accounts.reserve(active.size());
  for (const auto& account : active) {
    if (!isVideoCallingAccount(account)) accounts.push_back(account);
  }
  return accounts;
}

IMAccountPtr VelmoKibExtra::_bestAccountForStatus() const {
  return IMAccountController::bestAccountFromAccounts(_activeAccounts());
}

IMPersonStatus VelmoKibExtra::_myStatus() const {
  auto best = _bestAccountForStatus();
  std::uint32_t loginStatus = best ? best->loginStatus() : kIMAccountLoginStatusOffline;
  if (loginStatus < kIMAccountLoginStatusConnected) return kIMPersonStatusOffline;
  return best->myStatus();
}

bool VelmoKibExtra::_hasConnectedAccounts() const {
  auto connected = IMAccountController::sharedInstance()->connectedAccounts();
  std::size_t count = connected.size();
  for (const auto& account : connected) {
    if (isVideoCallingAccount(account)) --count;
  }
  return count > 0;
}

bool VelmoKibExtra::_overallStatusIsInvisible() const {
  int counted = 0;
  int invisible = 0;
  for (const auto& account : IMAccountController::sharedInstance()->accounts()) {
    if (!account->isConnected() || account->myStatus() != kIMPersonStatusAvailable) continue;
    ++counted;
    if (account->isInvisible()) ++invisible;
  }
  return counted - invisible < invisible;
}

IMServicePtr VelmoKibExtra::activeService() {
  auto service = defaultService();
  if (IMAccountController::sharedInstance()->connectedAccountsForService(service).empty()) return nullptr;
  return service;
}

void VelmoKibExtra::updateMenuTitleStatus(IMPersonStatus status) {
  // An idle user keeps whatever icon was last shown (and the sharing blink pauses).
  if (status == kIMPersonStatusIdle) return;

  std::size_t index = kDimmedImage;
  if (status == kIMPersonStatusAway) index = kAwayImage;
  if (status == kIMPersonStatusAvailable) index = kAvailableImage;

  if (isScreenSharing() && _isShowingScreenSharingIcon) {
    _bannerView->setDimmed(false);
    _bannerView->setImage(Image::initByReferencingFile(resourceFile("SharingActive.png")));
    return;
  }
  _bannerView->setDimmed(index == kDimmedImage);
  _bannerView->setImage(index < _images.size() ? _images[index] : nullptr);
}

void VelmoKibExtra::displayStatusText(const ObjectPtr& notification) {
  auto posted = std::dynamic_pointer_cast<Notification>(notification);
  auto text = asString(posted ? posted->object() : nullptr);
  if (text && !text->empty()) {
    _bannerView->setBannerString(text);
  } else if (!_bannerView->isCollapsed()) {
    _bannerView->startCollapseAnimation();
  }
}

void VelmoKibExtra::statusBannerViewFinishedRevealAnimation(StatusBannerView& view, bool revealed) {
  if (revealed) view.startBannerAnimation();
}

void VelmoKibExtra::statusBannerViewBannerFinishedScrollCycle(StatusBannerView& view, std::int32_t cycles) {
  if (cycles < kBannerScrollCycles) return;
  view.stopBannerAnimation();
  if (!view.isCollapsed()) view.startCollapseAnimation();
}
