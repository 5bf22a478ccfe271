#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bus/BusConnection.h"
#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScopedVariable.h"

namespace {

using kibbus::BusConnection;

// Bus traffic is real: these tests run the main loop on the real clock, each
// wait bounded.
class BusConnectionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    previousClock_ = platform::Clock::setCurrent(nullptr);
    platform::RunLoop::main().reset();
  }
  void TearDown() override {
    platform::RunLoop::main().reset();
    platform::Clock::setCurrent(previousClock_);
  }

  // Runs the main loop until the condition holds, at most the timeout.
  bool runUntil(const std::function<bool()>& condition, double timeout = 5.0) {
    auto& loop = platform::RunLoop::main();
    const double limit = platform::Clock::current().now() + timeout;
    while (!condition()) {
      if (platform::Clock::current().now() >= limit) return false;
      // A timer bounds each turn so the condition is checked again.
      loop.performBlock(0.05, platform::kDefaultRunLoopMode, [] {});
      loop.runUntil(std::min(limit, platform::Clock::current().now() + 0.05));
    }
    return true;
  }

  kibtest::PrivateBus bus_;
  std::shared_ptr<platform::Clock> previousClock_;
};

TEST_F(BusConnectionTest, CallsAndSignalsTravelThroughTheRunLoop) {
  auto server = BusConnection::openAddress(bus_.address());
  server->connection().requestName("org.example.Echo");
  auto object = sdbus::createObject(server->connection(), "/echo");
  object->registerMethod("Echo").onInterface("org.example.Echo").implementedAs([](const std::string& text) {
    if (text.empty()) throw sdbus::Error("org.example.Error.Empty", "nothing to echo");
    return text + text;
  });
  object->registerSignal("Said").onInterface("org.example.Echo").withParameters<std::string>();
  object->finishRegistration();

  auto client = BusConnection::openAddress(bus_.address());
  auto proxy = sdbus::createProxy(client->connection(), "org.example.Echo", "/echo");
  std::string heard;
  proxy->uponSignal("Said").onInterface("org.example.Echo").call([&](const std::string& text) { heard = text; });
  proxy->finishRegistration();

  std::string reply, error;
  proxy->callMethodAsync("Echo").onInterface("org.example.Echo").withArguments(std::string("ab")).uponReplyInvoke(
      [&](const sdbus::Error* e, const std::string& text) { e ? error = e->getName() : reply = text; });
  ASSERT_TRUE(runUntil([&] { return !reply.empty(); }));
  EXPECT_EQ(reply, "abab");

  // A handler's refusal reaches the caller as a D-Bus error, and the loop goes on.
  proxy->callMethodAsync("Echo").onInterface("org.example.Echo").withArguments(std::string()).uponReplyInvoke(
      [&](const sdbus::Error* e, const std::string&) { error = e ? e->getName() : "no error"; });
  ASSERT_TRUE(runUntil([&] { return !error.empty(); }));
  EXPECT_EQ(error, "org.example.Error.Empty");

  object->emitSignal("Said").onInterface("org.example.Echo").withArguments(std::string("hello"));
  ASSERT_TRUE(runUntil([&] { return heard == "hello"; }));
}

TEST_F(BusConnectionTest, FollowsANamesOwnerAndNoticesTheBusGoing) {
  auto watcher = BusConnection::openAddress(bus_.address());
  EXPECT_EQ(watcher->ownerOf("org.example.Watched"), "");
  std::vector<std::string> owners;
  auto watch = watcher->watchName("org.example.Watched", [&](const std::string& owner) { owners.push_back(owner); });

  std::string ownerName;
  {
    auto owner = BusConnection::openAddress(bus_.address());
    owner->connection().requestName("org.example.Watched");
    ownerName = owner->uniqueName();
    ASSERT_TRUE(runUntil([&] { return owners.size() == 1; }));
    EXPECT_EQ(owners[0], ownerName);
    EXPECT_EQ(watcher->ownerOf("org.example.Watched"), ownerName);
  }
  ASSERT_TRUE(runUntil([&] { return owners.size() == 2; }));
  EXPECT_EQ(owners[1], "");

  bool lost = false;
  watcher->setDisconnectHandler([&] { lost = true; });
  bus_.stop();
  ASSERT_TRUE(runUntil([&] { return lost; }));
  EXPECT_FALSE(watcher->isOpen());
}

TEST(BusConnectionOpening, ABusThatCannotBeReachedIsOneLine) {
  struct Case {
    const char* sessionAddress;
    const char* runtimeDirectory;
    std::string expected;
  };
  const std::vector<Case> cases{
      {"unix:path=/nonexistent/kibbar-test-bus", nullptr, "/nonexistent/kibbar-test-bus"},
      {nullptr, "/nonexistent/kibbar-runtime", "/nonexistent/kibbar-runtime/bus"},
      {nullptr, nullptr, "DBUS_SESSION_BUS_ADDRESS is not set"},
  };
  for (const auto& c : cases) {
    kibtest::ScopedVariable session("DBUS_SESSION_BUS_ADDRESS", c.sessionAddress);
    kibtest::ScopedVariable runtime("XDG_RUNTIME_DIR", c.runtimeDirectory);
    try {
      BusConnection::openSessionBus();
      ADD_FAILURE() << "connected to a bus that does not exist: " << c.expected;
    } catch (const kibbus::BusError& error) {
      std::string message = error.what();
      EXPECT_EQ(message.rfind("no session bus", 0), 0u) << message;
      EXPECT_NE(message.find(c.expected), std::string::npos) << message;
      EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
  }
}

}  // namespace
