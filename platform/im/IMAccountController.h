#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/core/Object.h"
#include "platform/im/IMForward.h"

namespace platform {

// The user's accounts, in the daemon's order.
class IMAccountController final : public Object {
 public:
  static const IMAccountControllerPtr& sharedInstance();
  // Replaces the shared instance with an empty one (IMResetMessagingWorld).
  static void resetSharedInstance();

  const std::vector<IMAccountPtr>& accounts() const { return accounts_; }
  // Accounts the user has enabled.
  std::vector<IMAccountPtr> activeAccounts() const;
  // Active accounts that are logged in.
  std::vector<IMAccountPtr> connectedAccounts() const;
  // Connected accounts of the service (identity); every connected account for nil.
  std::vector<IMAccountPtr> connectedAccountsForService(const IMServicePtr& service) const;
  std::vector<IMAccountPtr> accountsForService(const IMServicePtr& service) const;
  IMAccountPtr accountWithUniqueID(const std::string& uniqueID) const;

  // The account that stands for the user's own status: among the logged-in
  // accounts the one whose my status is most available (the first on a tie);
  // with none logged in, the first account; nil for no accounts.
  static IMAccountPtr bestAccountFromAccounts(const std::vector<IMAccountPtr>& accounts);

  // Backend: adding or removing posts IMAccountControllerUpdatedNotification.
  void addAccount(const IMAccountPtr& account);
  void removeAccount(const IMAccountPtr& account);
  void removeAllAccounts();
  // Tells observers the account list is ready (a daemon that just took on a listener).
  void postUpdated();

  std::string className() const override { return "IMAccountController"; }

 private:
  std::vector<IMAccountPtr> accounts_;
};

}  // namespace platform
