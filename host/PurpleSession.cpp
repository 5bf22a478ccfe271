#include "host/PurpleSession.h"

#include "platform/im/IMDaemonController.h"
#include "platform/ui/Workspace.h"

namespace kibhost {

std::unique_ptr<PurpleSession> PurpleSession::open(std::ostream& errors) {
  try {
    return std::make_unique<PurpleSession>(kibbus::BusConnection::openSessionBus());
  } catch (const kibbus::BusError& error) {
    errors << "kibbar: " << error.what() << '\n';
    return nullptr;
  }
}

PurpleSession::PurpleSession(std::unique_ptr<kibbus::BusConnection> bus)
    : bus_(std::move(bus)),
      backend_(std::make_shared<kibpurple::PurpleBackend>(*bus_)),
      application_(std::make_shared<kibpurple::PurpleApplication>(backend_)) {
  kibpurple::PurpleApplication::install(application_);
}

PurpleSession::~PurpleSession() {
  const auto& controller = platform::IMDaemonController::sharedController();
  if (controller->backend() == backend_) controller->setBackend(nullptr);
  platform::Workspace::sharedWorkspace().setURLHandler(nullptr);
  application_.reset();
  backend_.reset();
  bus_.reset();
}

}  // namespace kibhost
