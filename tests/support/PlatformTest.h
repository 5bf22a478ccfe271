#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/core/AssertionHandler.h"
#include "platform/core/Log.h"
#include "platform/core/RunLoop.h"
#include "platform/core/VirtualClock.h"

namespace kibtest {

// An assertion handler that records each failure and returns.
class RecordingAssertionHandler final : public platform::AssertionHandler {
 public:
  struct Failure {
    std::string method;
    const platform::Object* object;
    std::string file;
    int line;
    std::string description;
  };

  void handleFailureInMethod(const std::string& method, const platform::Object* object, const std::string& file,
                             int line, const std::string& description) override {
    failures.push_back({method, object, file, line, description});
  }

  std::vector<std::string> descriptions() const {
    std::vector<std::string> texts;
    for (const auto& f : failures) texts.push_back(f.description);
    return texts;
  }

  std::vector<Failure> failures;
};

// Base fixture: a virtual clock, an empty main run loop, no observers on the
// shared centres, an empty messaging world, a recording assertion handler,
// captured log lines and a temporary preferences folder; everything is put
// back afterwards.
class PlatformTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  platform::VirtualClock& clock() { return *clock_; }
  double now() const { return clock_->now(); }
  // Runs the main loop in the mode while virtual time moves on by the seconds.
  void advance(double seconds, platform::RunLoopModes mode = platform::kDefaultRunLoopMode);
  // Runs what is due now (distributed notifications, zero-delay performs).
  void drain(platform::RunLoopModes mode = platform::kDefaultRunLoopMode);

  std::vector<std::string> linesOf(platform::Log::Channel channel) const;
  std::vector<std::string> testLog() const { return linesOf(platform::Log::Channel::Test); }
  void clearLog() { log_.clear(); }

  std::shared_ptr<RecordingAssertionHandler> assertions;
  std::filesystem::path tempDir;

 private:
  std::shared_ptr<platform::VirtualClock> clock_;
  std::shared_ptr<platform::Clock> previousClock_;
  std::shared_ptr<platform::AssertionHandler> previousHandler_;
  std::vector<std::pair<platform::Log::Channel, std::string>> log_;

  // Empties the named-image registry, restores the default text measurer and
  // removes the workspace's URL handler.
  static void resetToolkit();
};

}  // namespace kibtest
