#pragma once

#include <memory>
#include <ostream>

#include "bus/BusConnection.h"
#include "purple/PurpleApplication.h"
#include "purple/PurpleBackend.h"

namespace kibhost {

// The purple backend as the program runs it: the session bus, the backend
// following the libpurple client on it, and the client as the messaging
// application behind the workspace's URLs. Ends them in the right order.
class PurpleSession {
 public:
  // Nil (with one line on the error stream) when there is no session bus.
  static std::unique_ptr<PurpleSession> open(std::ostream& errors);
  ~PurpleSession();

  kibpurple::PurpleBackend& backend() { return *backend_; }
  // Installs the backend as the daemon's and connects when a client is there.
  void start() { backend_->start(); }

  explicit PurpleSession(std::unique_ptr<kibbus::BusConnection> bus);

 private:
  std::unique_ptr<kibbus::BusConnection> bus_;
  std::shared_ptr<kibpurple::PurpleBackend> backend_;
  std::shared_ptr<kibpurple::PurpleApplication> application_;
};

}  // namespace kibhost
