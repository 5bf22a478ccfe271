#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/Object.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"
#include "sim/MessagingApplication.h"
#include "sim/Scenario.h"
#include "sim/SimDaemon.h"
#include "sim/SimEvent.h"

namespace sim {

// The simulated messaging world, the default backend of the messaging library.
// make() clears the messaging world (IMResetMessagingWorld) and builds it from
// a scenario: services, accounts with their buddy lists, people, saved
// messages, music interop; it installs its daemon as the daemon controller's
// backend and starts the messaging application. start() schedules the
// scenario's events on the main run loop relative to that moment; apply()
// plays one event at once. The world remembers each buddy's true presence, so
// a buddy shows offline while its account is logged out and comes back as it
// is when the account logs in again.
class SimWorld final : public platform::Object {
 public:
  // What the world keeps of its scenario's people once it has built its buddies from them:
  // a frontend that lists the scenario's people keeps them; a headless run lets them go, since a
  // big world's people take tens of MiB beside the handles made from them.
  enum class ScenarioPeople { Kept, Released };
  static std::shared_ptr<SimWorld> make(Scenario scenario, ScenarioPeople people = ScenarioPeople::Kept);
  // The built-in scenario.
  static std::shared_ptr<SimWorld> makeDefault();
  ~SimWorld() override;

  // Without its people when they were released.
  const Scenario& scenario() const { return scenario_; }

  void start();
  bool isStarted() const { return startTime_.has_value(); }
  // The virtual or real time start() was called (seconds since 2001), 0 before.
  double startTime() const { return startTime_.value_or(0); }

  // Plays an event now; false (with the reason) when it names an unknown account or handle.
  bool apply(const SimEvent& event, std::string* error = nullptr);
  // Plays an event after a delay (its "at" is ignored).
  void schedule(const SimEvent& event, double delay);
  // Told of every event just before it is played.
  using EventObserver = std::function<void(const SimEvent&)>;
  void setEventObserver(EventObserver observer) { eventObserver_ = std::move(observer); }

  platform::IMAccountPtr account(const std::string& id) const;
  // The scenario id of an account of this world, "" for another.
  std::string accountID(const platform::IMAccount* account) const;
  platform::IMHandlePtr handle(const std::string& accountID, const std::string& handleID) const;
  const std::shared_ptr<SimDaemon>& daemon() const { return daemon_; }
  const std::shared_ptr<MessagingApplication>& application() const { return application_; }

  // The daemon's side.
  void applyMyStatus(platform::IMPersonStatus status, const std::string& message);
  void beginLogin(const platform::IMAccountPtr& account);
  void connectAccount(const platform::IMAccountPtr& account);
  void disconnectAccount(const platform::IMAccountPtr& account);
  // The now-playing text a status message stands for: the current track in
  // the now-playing format when the message is that format, else "".
  std::string nowPlayingFor(const std::string& message) const;

  std::string className() const override { return "SimWorld"; }

  explicit SimWorld(Scenario scenario) : scenario_(std::move(scenario)) {}

 private:
  // A buddy as it really is, whatever its account shows.
  struct Buddy {
    std::string accountID;
    platform::IMHandlePtr handle;
    platform::IMPersonStatus status;
    std::string message;
    std::optional<double> idleSince;
  };

  void build();
  void buildServices();
  void buildAccounts();
  void buildPeople();
  void show(const Buddy& buddy);
  Buddy* buddy(const std::string& accountID, const std::string& handleID);
  void updateServiceStatus(const platform::IMServicePtr& service);
  void postStatusText(const SimEvent& event);
  void applyBuddyEvent(const SimEvent& event, Buddy& buddy);

  Scenario scenario_;
  std::map<std::string, platform::IMAccountPtr> accounts_;
  std::vector<Buddy> buddies_;
  std::shared_ptr<SimDaemon> daemon_;
  std::shared_ptr<MessagingApplication> application_;
  std::optional<double> startTime_;
  EventObserver eventObserver_;
};

}  // namespace sim
