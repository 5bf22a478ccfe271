#include "bus/BusConnection.h"

#include <sdbus-c++/IProxy.h>
#include <sdbus-c++/Message.h>
#include <sdbus-c++/Types.h>
#include <systemd/sd-bus.h>
#include <time.h>

#include <cstring>

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

// sdbus-c++ leaks its half-made connection when connecting fails, so the
// address is tried with sd-bus first: a bus that is not there costs nothing.
void checkReachable(const std::string& address) {
  sd_bus* bus = nullptr;
  int result = sd_bus_new(&bus);
  if (result >= 0) result = sd_bus_set_address(bus, address.c_str());
  if (result >= 0) result = sd_bus_set_bus_client(bus, 1);
  if (result >= 0) result = sd_bus_start(bus);
  sd_bus_flush_close_unref(bus);
  if (result < 0) throw BusError("cannot connect to the bus at " + address + " (" + std::strerror(-result) + ")");
}

}  // namespace

std::unique_ptr<BusConnection> BusConnection::openSessionBus() {
  std::string address;
  if (const char* given = std::getenv("DBUS_SESSION_BUS_ADDRESS"); given && *given)
    address = given;
  else if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime)
    address = std::string("unix:path=") + runtime + "/bus";
  else
    throw BusError("no session bus (DBUS_SESSION_BUS_ADDRESS is not set)");
  try {
    return openAddress(address);
  } catch (const BusError& error) {
    throw BusError(std::string("no session bus: ") + error.what());
  }
}

std::unique_ptr<BusConnection> BusConnection::openAddress(const std::string& address) {
  checkReachable(address);
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
