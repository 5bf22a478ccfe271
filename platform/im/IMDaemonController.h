#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/core/Object.h"
#include "platform/core/String.h"
#include "platform/im/IMDaemonBackend.h"
#include "platform/im/IMDaemonRequest.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace platform {

// The client's connection to the messaging daemon. Every request goes to the
// installed backend and is shown first to the request observers (with its
// answer, for queries). Without a backend commands are dropped and queries
// answer the zero value.
class IMDaemonController final : public Object {
 public:
  using RequestObserver = std::function<void(const IMDaemonRequest&)>;

  static const IMDaemonControllerPtr& sharedController();
  static void resetSharedController();

  void setBackend(std::shared_ptr<IMDaemonBackend> backend);
  const std::shared_ptr<IMDaemonBackend>& backend() const { return backend_; }

  // Listeners.
  bool addListenerIDCapabilities(const std::string& listenerID, std::uint32_t capabilities);
  void removeListenerID(const std::string& listenerID);
  // Listener ID -> capabilities of the registered listeners.
  const std::map<std::string, std::uint32_t>& listeners() const { return listeners_; }
  const IMDaemonListenerPtr& listener() const;

  // Commands.
  void setMyStatusMessage(IMPersonStatus status, const StringPtr& message);
  void loginAllAccounts();
  void loginAccount(const IMAccountPtr& account);
  void writeSettingsForAccount(const IMAccountPtr& account);

  // Queries.
  bool isConnected() const;
  std::uint64_t vcCapabilities() const;
  ObjectPtr valueOfPersistentProperty(const std::string& key) const;

  // Backend: connection changes, posted on the default centre
  // (IMDaemonDidConnectNotification, IMDaemonDidDisconnectNotification).
  void noteDaemonDidConnect();
  void noteDaemonDidDisconnect();

  // Request observers, called in registration order; answers a token for removal.
  std::uint64_t addRequestObserver(RequestObserver observer);
  void removeRequestObserver(std::uint64_t token);

  std::string className() const override { return "IMDaemonController"; }

 private:
  void report(IMDaemonRequest request) const;

  std::shared_ptr<IMDaemonBackend> backend_;
  mutable IMDaemonListenerPtr listener_;  // made on first use
  std::map<std::string, std::uint32_t> listeners_;
  std::map<std::uint64_t, RequestObserver> requestObservers_;
  std::uint64_t nextObserverToken_ = 1;
};

}  // namespace platform
