#include "platform/im/IMAccount.h"

#include "platform/core/Clock.h"
#include "platform/core/NotificationCenter.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMService.h"

namespace platform {

IMAccountPtr IMAccount::make(IMServicePtr service, std::string login, std::string uniqueID) {
  return std::make_shared<IMAccount>(std::move(service), std::move(login), std::move(uniqueID));
}

IMAccount::IMAccount(IMServicePtr service, std::string login, std::string uniqueID)
    : uniqueID_(std::move(uniqueID)),
      service_(std::move(service)),
      login_(std::move(login)),
      buddyList_(IMPeople::make(login_)) {
  if (uniqueID_.empty()) uniqueID_ = (service_ ? service_->internalName() : std::string()) + ":" + login_;
}

bool IMAccount::justLoggedIn() const {
  return isConnected() && loggedInAt_ && Clock::current().now() - *loggedInAt_ < kIMAccountJustLoggedInInterval;
}

void IMAccount::setInvisible(bool invisible) {
  if (invisible == isInvisible_) return;
  isInvisible_ = invisible;
  post(IMAccountInvisibilityChangedNotification);
}

void IMAccount::writeSettings() {
  IMDaemonController::sharedController()->writeSettingsForAccount(
      std::static_pointer_cast<IMAccount>(shared_from_this()));
}

void IMAccount::loginAccount() {
  IMDaemonController::sharedController()->loginAccount(std::static_pointer_cast<IMAccount>(shared_from_this()));
}

bool IMAccount::hasCapability(std::uint64_t mask) const { return mask != 0 && (capabilities_ & mask) == mask; }

IMHandlePtr IMAccount::loginIMHandle() {
  if (loginIMHandle_) return loginIMHandle_;
  loginIMHandle_ = buddyList_->imHandleWithID(login_);
  if (!loginIMHandle_) loginIMHandle_ = IMHandle::make(std::static_pointer_cast<IMAccount>(shared_from_this()), login_);
  loginIMHandle_->setIsLoginIMHandle(true);
  return loginIMHandle_;
}

void IMAccount::setActive(bool active) {
  if (active == isActive_) return;
  isActive_ = active;
  post(active ? IMAccountActivatedNotification : IMAccountDeactivatedNotification);
}

void IMAccount::setLoginStatus(std::uint32_t status) {
  if (status == loginStatus_) return;
  bool wasConnected = isConnected();
  loginStatus_ = status;
  if (isConnected() && !wasConnected) loggedInAt_ = Clock::current().now();
  if (!isConnected()) loggedInAt_.reset();
  post(IMAccountLoginStatusChangedNotification);
}

void IMAccount::setMyStatus(IMPersonStatus status, std::string message, std::string nowPlaying) {
  if (status == myStatus_ && message == myStatusMessage_ && nowPlaying == myNowPlayingString_) return;
  myStatus_ = status;
  myStatusMessage_ = std::move(message);
  myNowPlayingString_ = std::move(nowPlaying);
  post(IMMeStatusChangedNotification);
}

void IMAccount::setCapabilities(std::uint64_t capabilities) { capabilities_ = capabilities; }

std::string IMAccount::description() const {
  return login_ + " (" + (service_ ? service_->name() : std::string("no service")) + ")";
}

void IMAccount::post(const char* name) {
  NotificationCenter::defaultCenter().postNotificationName(name, weak_from_this().lock());
}

}  // namespace platform
