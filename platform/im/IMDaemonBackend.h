#pragma once

#include <cstdint>
#include <string>

#include "platform/core/Object.h"
#include "platform/core/String.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace platform {

// The messaging daemon behind IMDaemonController: the simulated world by
// default, a real client's adapter later. Commands come in on the main
// thread; the backend answers by changing the mirror objects (accounts,
// handles, services) and by telling the controller about its connection
// (IMDaemonController::noteDaemonDidConnect / noteDaemonDidDisconnect).
class IMDaemonBackend {
 public:
  virtual ~IMDaemonBackend() = default;

  virtual void addListener(const std::string& listenerID, std::uint32_t capabilities) = 0;
  virtual void removeListener(const std::string& listenerID) = 0;
  // message nil: no message.
  virtual void setMyStatus(IMPersonStatus status, const StringPtr& message) = 0;
  virtual void loginAllAccounts() = 0;
  virtual void loginAccount(const IMAccountPtr& account) = 0;
  // The account's settings (its invisibility) as the client last set them.
  virtual void writeAccountSettings(const IMAccountPtr& account) = 0;

  virtual bool isConnected() const = 0;
  virtual std::uint64_t vcCapabilities() const = 0;
  // nil for an unknown key.
  virtual ObjectPtr valueOfPersistentProperty(const std::string& key) const = 0;
};

}  // namespace platform
