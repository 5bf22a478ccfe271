#include "platform/im/IMAccountController.h"

#include <algorithm>

#include "platform/core/NotificationCenter.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"

namespace platform {
namespace {

IMAccountControllerPtr& sharedSlot() {
  static IMAccountControllerPtr shared = std::make_shared<IMAccountController>();
  return shared;
}

}  // namespace

const IMAccountControllerPtr& IMAccountController::sharedInstance() { return sharedSlot(); }

void IMAccountController::resetSharedInstance() { sharedSlot() = std::make_shared<IMAccountController>(); }

std::vector<IMAccountPtr> IMAccountController::activeAccounts() const {
  std::vector<IMAccountPtr> active;
  for (const auto& account : accounts_)
    if (account->isActive()) active.push_back(account);
  return active;
}

std::vector<IMAccountPtr> IMAccountController::connectedAccounts() const {
  std::vector<IMAccountPtr> connected;
  for (const auto& account : accounts_)
    if (account->isActive() && account->isConnected()) connected.push_back(account);
  return connected;
}

std::vector<IMAccountPtr> IMAccountController::connectedAccountsForService(const IMServicePtr& service) const {
  auto connected = connectedAccounts();
  if (!service) return connected;
  std::erase_if(connected, [&service](const IMAccountPtr& account) { return account->service() != service; });
  return connected;
}

std::vector<IMAccountPtr> IMAccountController::accountsForService(const IMServicePtr& service) const {
  std::vector<IMAccountPtr> matching;
  for (const auto& account : accounts_)
    if (service && account->service() == service) matching.push_back(account);
  return matching;
}

IMAccountPtr IMAccountController::accountWithUniqueID(const std::string& uniqueID) const {
  for (const auto& account : accounts_)
    if (account->uniqueID() == uniqueID) return account;
  return nullptr;
}

IMAccountPtr IMAccountController::bestAccountFromAccounts(const std::vector<IMAccountPtr>& accounts) {
  IMAccountPtr best;
  for (const auto& account : accounts) {
    if (!account || !account->isConnected()) continue;
    if (!best || IMComparePersonStatus(account->myStatus(), best->myStatus()) > 0) best = account;
  }
  if (best) return best;
  for (const auto& account : accounts)
    if (account) return account;
  return nullptr;
}

void IMAccountController::addAccount(const IMAccountPtr& account) {
  if (!account || std::find(accounts_.begin(), accounts_.end(), account) != accounts_.end()) return;
  accounts_.push_back(account);
  postUpdated();
}

void IMAccountController::removeAccount(const IMAccountPtr& account) {
  auto found = std::find(accounts_.begin(), accounts_.end(), account);
  if (found == accounts_.end()) return;
  accounts_.erase(found);
  postUpdated();
}

void IMAccountController::removeAllAccounts() {
  if (accounts_.empty()) return;
  accounts_.clear();
  postUpdated();
}

void IMAccountController::postUpdated() {
  NotificationCenter::defaultCenter().postNotificationName(IMAccountControllerUpdatedNotification,
                                                           weak_from_this().lock());
}

}  // namespace platform
