#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include <sdbus-c++/IConnection.h>

namespace kibbus {

// A bus that cannot be reached; the message is one line.
class BusError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One connection to a message bus, driven by the main run loop: before every
// wait the loop asks the connection which events and timeout it needs, and
// when the descriptor is ready (or the timeout passes) the connection
// processes everything pending. No thread of its own, so every handler runs on
// the main thread like the rest of the program.
class BusConnection {
 public:
  // The bus in DBUS_SESSION_BUS_ADDRESS (or the user's default session bus).
  static std::unique_ptr<BusConnection> openSessionBus();
  // A bus at an address ("unix:path=…"): private buses in tests.
  static std::unique_ptr<BusConnection> openAddress(const std::string& address);

  explicit BusConnection(std::unique_ptr<sdbus::IConnection> connection);
  ~BusConnection();
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  sdbus::IConnection& connection() { return *connection_; }
  std::string uniqueName() const { return connection_->getUniqueName(); }

  // Processes the messages, replies and timeouts that are pending now.
  void dispatch();

  // Called once when the bus goes away (the daemon ended); the connection is
  // then out of the run loop and only good for being destroyed.
  void setDisconnectHandler(std::function<void()> handler) { onDisconnect_ = std::move(handler); }
  bool isOpen() const { return open_; }

  // Follows the owner of a well-known name: the handler hears the owner's
  // unique name whenever it changes ("" when the name has no owner). Answers
  // the owner now. The watch lasts as long as the returned slot.
  using NameWatch = sdbus::Slot;
  [[nodiscard]] NameWatch watchName(const std::string& name, std::function<void(const std::string& owner)> onChange);
  // The name's owner now, "" when it has none (asks the bus daemon).
  std::string ownerOf(const std::string& name);

 private:
  void fail(const std::string& reason);

  std::unique_ptr<sdbus::IConnection> connection_;
  int fd_ = -1;
  bool open_ = true;
  std::function<void()> onDisconnect_;
};

}  // namespace kibbus
