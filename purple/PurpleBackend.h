#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "bus/BusConnection.h"
#include "platform/im/IMDaemonBackend.h"
#include "purple/PurpleClient.h"
#include "purple/PurpleComplaints.h"
#include "purple/PurpleMirror.h"
#include "purple/PurpleReader.h"

namespace kibpurple {

// The messaging daemon played by a running libpurple client (Pidgin, Finch)
// on the session bus. It follows the client's bus name: while no client owns
// it the daemon is not connected; when one appears the backend reads its
// accounts, buddies and saved statuses into the mirror and from then on keeps
// the mirror current from the client's signals (it never polls). Requests are
// turned into libpurple calls. Every call is bounded in time; an answer that
// makes no sense is complained about once and skipped.
class PurpleBackend final : public platform::IMDaemonBackend, public std::enable_shared_from_this<PurpleBackend> {
 public:
  using ActivityObserver = std::function<void(const std::string&)>;

  explicit PurpleBackend(kibbus::BusConnection& bus);
  ~PurpleBackend() override;
  PurpleBackend(const PurpleBackend&) = delete;
  PurpleBackend& operator=(const PurpleBackend&) = delete;

  // Installs the backend as the daemon controller's and starts following the
  // client's name (connecting at once when a client is there).
  void start();

  // IMDaemonBackend.
  void addListener(const std::string& listenerID, std::uint32_t capabilities) override;
  void removeListener(const std::string& listenerID) override;
  void setMyStatus(platform::IMPersonStatus status, const platform::StringPtr& message) override;
  void loginAllAccounts() override;
  void loginAccount(const platform::IMAccountPtr& account) override;
  void writeAccountSettings(const platform::IMAccountPtr& account) override;
  // Connected once the client's state has been read.
  bool isConnected() const override { return ready_; }
  std::uint64_t vcCapabilities() const override { return vcCapabilities_; }
  platform::ObjectPtr valueOfPersistentProperty(const std::string& key) const override;

  // What the backend asked of the client or saw it do, one line each
  // ("client appeared", "activated saved status away \"Away\"").
  void setActivityObserver(ActivityObserver observer) { observer_ = std::move(observer); }
  void note(const std::string& line);

  // The client's calls while connected, nil otherwise.
  PurpleClient* client() { return client_.get(); }
  const PurpleMirror& mirror() const { return mirror_; }
  PurpleComplaints& complaints() { return complaints_; }
  const std::string& clientName() const { return owner_; }

 private:
  void ownerChanged(const std::string& owner);
  void connect(const std::string& owner);
  void disconnect();
  void subscribe();
  void readEverything();
  // Reads everything; a client that is still starting up gets a few more tries.
  void attemptFirstRead();
  void onSignal(const std::string& name, sdbus::Signal& signal);

  void refreshAccount(PurpleID id, bool withBuddies);
  void refreshBuddy(PurpleID id);
  void refreshNode(PurpleID node);
  void refreshSavedStatuses();

  void scheduleStatusUpdate();
  void applyStatusRequest();
  void activateStatus(PurplePrimitive primitive, const std::string& message);
  bool allAccountsInvisible() const;

  kibbus::BusConnection& bus_;
  kibbus::BusConnection::NameWatch watch_;
  std::string owner_;
  std::unique_ptr<sdbus::IProxy> proxy_;
  std::unique_ptr<PurpleClient> client_;
  std::unique_ptr<PurpleReader> reader_;
  PurpleComplaints complaints_;
  PurpleMirror mirror_;
  ActivityObserver observer_;

  std::map<std::string, std::uint32_t> listeners_;
  std::uint64_t vcCapabilities_ = 0;
  // Status requests of one turn of the loop are applied together, so a status
  // and the invisibility written right after it make one activation.
  struct StatusRequest {
    platform::IMPersonStatus status;
    std::string message;
  };
  std::optional<StatusRequest> pendingRequest_;
  StatusRequest lastRequest_{platform::kIMPersonStatusAvailable, ""};
  std::map<std::string, bool> invisibility_;  // account unique ID -> as last written
  bool invisibleApplied_ = false;
  bool updateScheduled_ = false;
  bool ready_ = false;
  int readAttempts_ = 0;
};

}  // namespace kibpurple
