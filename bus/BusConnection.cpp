#include "bus/BusConnection.h"

#include <sdbus-c++/IProxy.h>
#include <sdbus-c++/Message.h>
#include <sdbus-c++/Types.h>
#include <time.h>

#include <cstdint>
#include <cstdlib>
#include <limits>

#include "platform/core/Clock.h"
#include "platform/core/Log.h"
#include "platform/core/RunLoop.h"

namespace kibbus {
namespace {

constexpr const char* kBusService = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";
constexpr const char* kBusInterface = "org.freedesktop.DBus";
// A flood of messages must not starve the rest of the loop; what is left is
// processed on the next turn (sd-bus then asks for a zero timeout).
constexpr int kMaxMessagesPerDispatch = 256;

double monotonicNow() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

// sd-bus states its timeout on CLOCK_MONOTONIC; the run loop waits on its own clock.
double deadlineOnClock(std::uint64_t timeoutUsec) {
  if (timeoutUsec == std::numeric_limits<std::uint64_t>::max()) return std::numeric_limits<double>::infinity();
  const double remaining = static_cast<double>(timeoutUsec) / 1e6 - monotonicNow();
  return platform::Clock::current().now() + std::max(0.0, remaining);
}

}  // namespace

std::unique_ptr<BusConnection> BusConnection::openSessionBus() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  try {
    if (address && *address) return openAddress(address);
    return std::make_unique<BusConnection>(sdbus::createSessionBusConnection());
  } catch (const sdbus::Error& error) {
    throw BusError("no session bus (" + error.getMessage() + ")");
  }
}

std::unique_ptr<BusConnection> BusConnection::openAddress(const std::string& address) {
  try {
    return std::make_unique<BusConnection>(sdbus::createSessionBusConnectionWithAddress(address));
  } catch (const sdbus::Error& error) {
    throw BusError("cannot connect to the bus at " + address + " (" + error.getMessage() + ")");
  }
}

BusConnection::BusConnection(std::unique_ptr<sdbus::IConnection> connection) : connection_(std::move(connection)) {
  fd_ = connection_->getEventLoopPollData().fd;
  platform::RunLoop::main().addFileDescriptorSource(
      fd_,
      [this] {
        platform::RunLoop::DescriptorInterest interest;
        if (!open_) return interest;
        try {
          auto data = connection_->getEventLoopPollData();
          interest.events = data.events;
          interest.deadline = deadlineOnClock(data.timeout_usec);
        } catch (const sdbus::Error& error) {
          fail(error.getMessage());
        }
        return interest;
      },
      [this] { dispatch(); });
}

BusConnection::~BusConnection() {
  if (fd_ >= 0) platform::RunLoop::main().removeFileDescriptorSource(fd_);
}

void BusConnection::dispatch() {
  for (int i = 0; open_ && i < kMaxMessagesPerDispatch; ++i) {
    try {
      if (!connection_->processPendingRequest()) return;
    } catch (const sdbus::Error& error) {
      fail(error.getMessage());
    } catch (const std::exception& error) {
      // A handler's exception must not end the loop; the message is dropped.
      platform::Log::write(platform::Log::Channel::Warning, std::string("bus handler failed: ") + error.what());
    }
  }
}

void BusConnection::fail(const std::string& reason) {
  if (!open_) return;
  open_ = false;
  platform::Log::write(platform::Log::Channel::Warning, "bus connection lost: " + reason);
  // Out of the loop at once, or the hung-up descriptor would wake it for ever.
  platform::RunLoop::main().removeFileDescriptorSource(fd_);
  fd_ = -1;
  if (auto handler = onDisconnect_) handler();
}

BusConnection::NameWatch BusConnection::watchName(const std::string& name,
                                                  std::function<void(const std::string&)> onChange) {
  const std::string rule = std::string("type='signal',sender='") + kBusService + "',interface='" + kBusInterface +
                           "',member='NameOwnerChanged',path='" + kBusPath + "',arg0='" + name + "'";
  return connection_->addMatch(rule, [name, onChange = std::move(onChange)](sdbus::Message& message) {
    std::string changed, oldOwner, newOwner;
    try {
      message >> changed >> oldOwner >> newOwner;
    } catch (const sdbus::Error&) {
      return;  // not the bus daemon's signal shape: ignore it
    }
    if (changed == name) onChange(newOwner);
  });
}

std::string BusConnection::ownerOf(const std::string& name) {
  try {
    auto proxy = sdbus::createProxy(*connection_, kBusService, kBusPath);
    std::string owner;
    proxy->callMethod("GetNameOwner").onInterface(kBusInterface).withArguments(name).storeResultsTo(owner);
    return owner;
  } catch (const sdbus::Error&) {
    return "";  // org.freedesktop.DBus.Error.NameHasNoOwner
  }
}

}  // namespace kibbus
