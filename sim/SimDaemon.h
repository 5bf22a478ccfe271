#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/im/IMDaemonBackend.h"
#include "sim/Scenario.h"

namespace sim {

class SimWorld;

// The simulated messaging daemon: the backend of IMDaemonController. It keeps
// the daemon's own state (connection, listeners, the requested status, each
// account's invisibility, the audio/video capabilities and persistent
// properties) and answers commands after the scenario's latency by changing
// the world on the main run loop (in every mode). While disconnected it
// ignores commands.
class SimDaemon final : public platform::IMDaemonBackend {
 public:
  SimDaemon(std::weak_ptr<SimWorld> world, const Scenario& scenario);

  // IMDaemonBackend.
  void addListener(const std::string& listenerID, std::uint32_t capabilities) override;
  void removeListener(const std::string& listenerID) override;
  void setMyStatus(platform::IMPersonStatus status, const platform::StringPtr& message) override;
  void loginAllAccounts() override;
  void loginAccount(const platform::IMAccountPtr& account) override;
  void writeAccountSettings(const platform::IMAccountPtr& account) override;
  bool isConnected() const override { return connected_; }
  std::uint64_t vcCapabilities() const override { return vcCapabilities_; }
  platform::ObjectPtr valueOfPersistentProperty(const std::string& key) const override;

  // Connects or disconnects, telling the daemon controller when it changed.
  void setConnected(bool connected);
  const std::map<std::string, std::uint32_t>& listeners() const { return listeners_; }
  // The status and message of the last setMyStatus:message: the daemon applied.
  const std::optional<platform::IMPersonStatus>& requestedStatus() const { return requestedStatus_; }
  const std::string& requestedMessage() const { return requestedMessage_; }
  // The invisibility the client last wrote for the account (uniqueID).
  bool invisibilityOf(const std::string& accountUniqueID) const;
  void setInvisibility(const std::string& accountUniqueID, bool invisible);
  const std::string& nowPlayingFormat() const { return nowPlayingFormat_; }
  void setVCCapabilities(std::uint64_t capabilities) { vcCapabilities_ = capabilities; }
  // The world is going away: no more answers.
  void detach() { world_.reset(); }

 private:
  void startLogin(const platform::IMAccountPtr& account);
  void later(double delay, std::function<void(SimWorld&)> work);

  std::weak_ptr<SimWorld> world_;
  ScenarioLatency latency_;
  bool connected_;
  std::uint64_t vcCapabilities_;
  std::string nowPlayingFormat_;
  std::map<std::string, std::uint32_t> listeners_;
  std::optional<platform::IMPersonStatus> requestedStatus_;
  std::string requestedMessage_;
  std::map<std::string, bool> invisibility_;
  std::set<std::string> pendingLogins_;
};

}  // namespace sim
