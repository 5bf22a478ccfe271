#include "platform/im/IMDaemonController.h"

#include <cstdio>

#include "platform/core/NotificationCenter.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMDaemonListener.h"

namespace platform {
namespace {

IMDaemonControllerPtr& sharedSlot() {
  static IMDaemonControllerPtr shared = std::make_shared<IMDaemonController>();
  return shared;
}

std::string inQuotes(const std::string& text) { return "\"" + text + "\""; }

std::string argumentText(const StringPtr& text) { return text ? inQuotes(text->value()) : "nil"; }

std::string argumentText(const IMAccountPtr& account) { return account ? account->uniqueID() : "nil"; }

std::string hexText(std::uint64_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
  return text;
}

}  // namespace

const IMDaemonControllerPtr& IMDaemonController::sharedController() { return sharedSlot(); }

void IMDaemonController::resetSharedController() { sharedSlot() = std::make_shared<IMDaemonController>(); }

const IMDaemonListenerPtr& IMDaemonController::listener() const {
  if (!listener_)
    listener_ = std::make_shared<IMDaemonListener>(std::const_pointer_cast<IMDaemonController>(
        std::static_pointer_cast<const IMDaemonController>(shared_from_this())));
  return listener_;
}

void IMDaemonController::setBackend(std::shared_ptr<IMDaemonBackend> backend) { backend_ = std::move(backend); }

bool IMDaemonController::addListenerIDCapabilities(const std::string& listenerID, std::uint32_t capabilities) {
  report(IMDaemonRequest::command("addListenerID:capabilities:", {inQuotes(listenerID), hexText(capabilities)}));
  listeners_[listenerID] = capabilities;
  if (backend_) backend_->addListener(listenerID, capabilities);
  return true;
}

void IMDaemonController::removeListenerID(const std::string& listenerID) {
  report(IMDaemonRequest::command("removeListenerID:", {inQuotes(listenerID)}));
  listeners_.erase(listenerID);
  if (backend_) backend_->removeListener(listenerID);
}

void IMDaemonController::setMyStatusMessage(IMPersonStatus status, const StringPtr& message) {
  report(IMDaemonRequest::command("setMyStatus:message:", {std::to_string(status), argumentText(message)}));
  if (backend_) backend_->setMyStatus(status, message);
}

void IMDaemonController::loginAllAccounts() {
  report(IMDaemonRequest::command("loginAllAccounts", {}));
  if (backend_) backend_->loginAllAccounts();
}

void IMDaemonController::loginAccount(const IMAccountPtr& account) {
  report(IMDaemonRequest::command("loginAccount", {argumentText(account)}));
  if (backend_ && account) backend_->loginAccount(account);
}

void IMDaemonController::writeSettingsForAccount(const IMAccountPtr& account) {
  report(IMDaemonRequest::command(
      "writeSettings", {argumentText(account), account && account->isInvisible() ? "invisible" : "visible"}));
  if (backend_ && account) backend_->writeAccountSettings(account);
}

bool IMDaemonController::isConnected() const {
  bool connected = backend_ && backend_->isConnected();
  report(IMDaemonRequest::query("isConnected", {}, connected ? "YES" : "NO"));
  return connected;
}

std::uint64_t IMDaemonController::vcCapabilities() const {
  auto capabilities = backend_ ? backend_->vcCapabilities() : 0;
  report(IMDaemonRequest::query("vcCapabilities", {}, hexText(capabilities)));
  return capabilities;
}

ObjectPtr IMDaemonController::valueOfPersistentProperty(const std::string& key) const {
  auto value = backend_ ? backend_->valueOfPersistentProperty(key) : nullptr;
  report(
      IMDaemonRequest::query("valueOfPersistentProperty:", {inQuotes(key)}, value ? inQuotes(describe(value)) : "nil"));
  return value;
}

void IMDaemonController::noteDaemonDidConnect() {
  NotificationCenter::defaultCenter().postNotificationName(IMDaemonDidConnectNotification, weak_from_this().lock());
}

void IMDaemonController::noteDaemonDidDisconnect() {
  NotificationCenter::defaultCenter().postNotificationName(IMDaemonDidDisconnectNotification, weak_from_this().lock());
}

std::uint64_t IMDaemonController::addRequestObserver(RequestObserver observer) {
  auto token = nextObserverToken_++;
  requestObservers_[token] = std::move(observer);
  return token;
}

void IMDaemonController::removeRequestObserver(std::uint64_t token) { requestObservers_.erase(token); }

void IMDaemonController::report(IMDaemonRequest request) const {
  if (requestObservers_.empty()) return;
  auto observers = requestObservers_;  // an observer may remove itself
  for (const auto& [token, observer] : observers)
    if (requestObservers_.count(token) && observer) observer(request);
}

}  // namespace platform
