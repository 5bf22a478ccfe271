#pragma once

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kibtest {

// The test's side of a private session bus, on one connection that the test
// drives itself: a StatusNotifierWatcher (which it can own and give up) and a
// panel host that reads the item, calls its menu and records its signals.
class PanelBusPeer {
 public:
  static constexpr const char* kItemInterface = "org.kde.StatusNotifierItem";
  static constexpr const char* kMenuInterface = "com.canonical.dbusmenu";
  static constexpr const char* kWatcherName = "org.kde.StatusNotifierWatcher";

  using Node = sdbus::Struct<std::int32_t, std::map<std::string, sdbus::Variant>, std::vector<sdbus::Variant>>;
  struct Signal {
    std::string member;
    std::vector<std::string> arguments;
  };

  explicit PanelBusPeer(const std::string& address)
      : connection_(sdbus::createSessionBusConnectionWithAddress(address)) {
    watcher_ = sdbus::createObject(*connection_, "/StatusNotifierWatcher");
    watcher_->registerMethod("RegisterStatusNotifierItem")
        .onInterface(kWatcherName)
        .implementedAs([this](const std::string& service) { registrations.push_back(service); });
    watcher_->registerMethod("RegisterStatusNotifierHost")
        .onInterface(kWatcherName)
        .implementedAs([](const std::string&) {});
    watcher_->registerProperty("RegisteredStatusNotifierItems").onInterface(kWatcherName).withGetter([this] {
      return registrations;
    });
    watcher_->registerProperty("IsStatusNotifierHostRegistered").onInterface(kWatcherName).withGetter([] {
      return true;
    });
    watcher_->registerProperty("ProtocolVersion").onInterface(kWatcherName).withGetter([] { return 0; });
    watcher_->finishRegistration();
  }

  sdbus::IConnection& connection() { return *connection_; }
  void ownWatcher() { connection_->requestName(kWatcherName); }
  void releaseWatcher() { connection_->releaseName(kWatcherName); }

  // Follows the item registered as `service`: proxies for the item and its menu, every signal recorded.
  void follow(const std::string& service) {
    item_ = sdbus::createProxy(*connection_, service, "/StatusNotifierItem");
    menu_ = sdbus::createProxy(*connection_, service, "/MenuBar");
    for (const char* name : {"NewTitle", "NewIcon", "NewAttentionIcon", "NewToolTip"})
      item_->uponSignal(name).onInterface(kItemInterface).call([this, name] { signals.push_back({name, {}}); });
    item_->uponSignal("NewStatus").onInterface(kItemInterface).call([this](const std::string& status) {
      signals.push_back({"NewStatus", {status}});
    });
    item_->uponSignal("XAyatanaNewLabel")
        .onInterface(kItemInterface)
        .call([this](const std::string& label, const std::string& guide) {
          signals.push_back({"XAyatanaNewLabel", {label, guide}});
        });
    menu_->uponSignal("LayoutUpdated")
        .onInterface(kMenuInterface)
        .call([this](std::uint32_t revision, std::int32_t parent) {
          signals.push_back({"LayoutUpdated", {std::to_string(revision), std::to_string(parent)}});
        });
    item_->finishRegistration();
    menu_->finishRegistration();
  }
  sdbus::IProxy& item() { return *item_; }
  sdbus::IProxy& menu() { return *menu_; }

  template <typename T>
  T itemProperty(const std::string& name) {
    return item_->getProperty(name).onInterface(kItemInterface).template get<T>();
  }

  // Lets the connection work (the watcher answers, signals arrive) until the condition holds or time is up.
  bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
      while (connection_->processPendingRequest()) {
      }
      if (condition()) return true;
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      if (left.count() <= 0) return false;
      auto poll = connection_->getEventLoopPollData();
      pollfd descriptor{poll.fd, poll.events, 0};
      ::poll(&descriptor, 1, static_cast<int>(std::min<long long>(left.count(), 50)));
    }
  }
  // Lets the connection work for a while.
  void pump(std::chrono::milliseconds time) {
    waitFor([] { return false; }, time);
  }

  std::vector<std::string> registrations;
  std::vector<Signal> signals;

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IObject> watcher_;
  std::unique_ptr<sdbus::IProxy> item_;
  std::unique_ptr<sdbus::IProxy> menu_;
};

}  // namespace kibtest
