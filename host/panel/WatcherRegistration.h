#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <memory>
#include <string>

#include "bus/BusConnection.h"

namespace kibhost {

// Keeps the item registered with the panel's org.kde.StatusNotifierWatcher:
// it follows the watcher's name and registers (asynchronously; a failure is
// reported, not fatal) whenever a watcher appears, again after one went away.
class WatcherRegistration {
 public:
  static constexpr const char* kWatcherName = "org.kde.StatusNotifierWatcher";
  static constexpr const char* kWatcherPath = "/StatusNotifierWatcher";

  // note: one line for the user (no watcher yet, registration refused).
  WatcherRegistration(kibbus::BusConnection& bus, std::string itemName, std::function<void(const std::string&)> note);
  ~WatcherRegistration();
  WatcherRegistration(const WatcherRegistration&) = delete;
  WatcherRegistration& operator=(const WatcherRegistration&) = delete;

  bool isRegistered() const { return registered_; }
  // How many registrations the watchers accepted so far.
  int registrations() const { return registrations_; }

 private:
  void watcherChanged(const std::string& owner);
  void registerItem();

  kibbus::BusConnection& bus_;
  std::string itemName_;
  std::function<void(const std::string&)> note_;
  std::unique_ptr<sdbus::IProxy> proxy_;
  std::string owner_;
  bool registered_ = false;
  int registrations_ = 0;
  std::shared_ptr<WatcherRegistration*> self_;
  kibbus::BusConnection::NameWatch watch_;
};

}  // namespace kibhost
