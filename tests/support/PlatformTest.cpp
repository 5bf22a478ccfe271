#include "tests/support/PlatformTest.h"

#include <unistd.h>

#include "platform/core/NotificationCenter.h"
#include "platform/core/Preferences.h"
#include "platform/im/IMMessagingWorld.h"
#include "platform/ui/Image.h"
#include "platform/ui/TextMeasurer.h"
#include "platform/ui/Workspace.h"

namespace kibtest {

void PlatformTest::SetUp() {
  clock_ = std::make_shared<platform::VirtualClock>();
  previousClock_ = platform::Clock::setCurrent(clock_);
  platform::RunLoop::main().reset();
  platform::NotificationCenter::resetSharedCenters();
  platform::IMResetMessagingWorld();
  resetToolkit();
  assertions = std::make_shared<RecordingAssertionHandler>();
  previousHandler_ = platform::AssertionHandler::setCurrent(assertions);
  platform::Log::setSink([this](platform::Log::Channel channel, const std::string& line) {
    log_.emplace_back(channel, line);
  });
  auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  tempDir = std::filesystem::temp_directory_path() /
            ("kibtest-" + std::to_string(getpid()) + "-" + info->test_suite_name() + "-" + info->name());
  std::filesystem::remove_all(tempDir);
  std::filesystem::create_directories(tempDir);
  platform::Preferences::setDirectory(tempDir / "prefs");
}

void PlatformTest::TearDown() {
  platform::RunLoop::main().reset();
  platform::IMResetMessagingWorld();
  platform::NotificationCenter::resetSharedCenters();
  platform::Preferences::setDirectory({});
  resetToolkit();
  platform::Log::setSink(nullptr);
  platform::AssertionHandler::setCurrent(previousHandler_);
  platform::Clock::setCurrent(previousClock_);
  std::error_code ignored;
  std::filesystem::remove_all(tempDir, ignored);
}

void PlatformTest::resetToolkit() {
  platform::Image::resetNamedImages();
  platform::TextMeasurer::setCurrent(nullptr);
  platform::Workspace::sharedWorkspace().reset();
}

void PlatformTest::advance(double seconds, platform::RunLoopModes mode) {
  platform::RunLoop::main().runUntil(clock_->now() + seconds, mode);
}

void PlatformTest::drain(platform::RunLoopModes mode) { platform::RunLoop::main().runUntilIdle(mode); }

std::vector<std::string> PlatformTest::linesOf(platform::Log::Channel channel) const {
  std::vector<std::string> lines;
  for (const auto& [c, line] : log_)
    if (c == channel) lines.push_back(line);
  return lines;
}

}  // namespace kibtest
