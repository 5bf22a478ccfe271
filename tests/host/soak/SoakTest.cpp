// A long busy run of the real extra under the virtual clock: buddies come and
// go about a million times a day, status texts scroll by, screen sharing starts
// and ends, the menu opens. Memory and the run loop's queues must not grow and
// no assertion may be reported. KIB_SOAK_HOURS sets the simulated hours (the
// long form is 24; docs/fuzzing.md).
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <streambuf>

#include "host/HeadlessRun.h"
#include "host/PluginBundle.h"
#include "platform/core/RunLoop.h"
#include "sim/ScenarioLoader.h"
#include "tests/host/HostTestSupport.h"
#include "tests/support/PlatformTest.h"

#if defined(__SANITIZE_ADDRESS__)
#define KIB_SOAK_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KIB_SOAK_UNDER_ASAN 1
#endif
#endif
#ifdef KIB_SOAK_UNDER_ASAN
// The sanitizer runtime's allocator statistics (its allocator_interface.h, which not every compiler installs).
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

using kibhost::ScriptStep;

std::size_t allocatedBytes() {
#ifdef KIB_SOAK_UNDER_ASAN
  return __sanitizer_get_current_allocated_bytes();
#else
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
#endif
}

int soakHours() {
  if (const char* hours = std::getenv("KIB_SOAK_HOURS")) return std::max(2, std::atoi(hours));
#ifdef KIB_SOAK_UNDER_ASAN
  return 2;
#else
  return 4;
#endif
}

// Counts the transcript's lines by type without keeping them.
class LineCounter : public std::streambuf {
 public:
  std::size_t count(const std::string& type) const { return type == "assertion" ? assertions_ : events_; }
  std::size_t lines() const { return lines_; }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    line_.append(text, static_cast<std::size_t>(size));
    return size;
  }
  int_type overflow(int_type c) override {
    if (c == '\n') {
      ++lines_;
      if (line_.find("\"type\":\"assertion\"") != std::string::npos) ++assertions_;
      if (line_.find("\"type\":\"event\"") != std::string::npos) ++events_;
      line_.clear();
    } else if (c != traits_type::eof()) {
      line_.push_back(static_cast<char>(c));
    }
    return c;
  }

 private:
  std::string line_;
  std::size_t lines_ = 0, assertions_ = 0, events_ = 0;
};

struct Buddy {
  std::string account, handle;
};

// One simulated minute of a busy world: events about every 86 ms, a status
// text, the menu opened and dismissed, every quarter hour a status chosen,
// screen sharing for five minutes of every ten.
kibhost::Script busyMinute(int minute, const std::vector<Buddy>& buddies, std::mt19937& random) {
  kibhost::Script script;
  script.source = "soak";
  auto add = [&](double time, ScriptStep step) {
    step.time = time;
    step.line = static_cast<int>(script.steps.size()) + 1;
    script.steps.push_back(std::move(step));
  };
  auto event = [&](double time, sim::SimEvent e) {
    ScriptStep step;
    step.kind = ScriptStep::Kind::Event;
    step.event = std::move(e);
    add(time, std::move(step));
  };
  constexpr int kEventsPerMinute = 694;  // 999,360 a day
  const platform::IMPersonStatus statuses[] = {platform::kIMPersonStatusAvailable, platform::kIMPersonStatusAway,
                                               platform::kIMPersonStatusIdle};
  if (minute % 10 == 0) event(0, sim::SimEvent::screenSharingStart("Maya Okafor"));
  if (minute % 10 == 5) event(0, sim::SimEvent::screenSharingEnd());
  for (int i = 0; i < kEventsPerMinute; ++i) {
    const double time = 60.0 * i / kEventsPerMinute;
    const Buddy& buddy = buddies[random() % buddies.size()];
    switch (random() % 4) {
      case 0:
        event(time, sim::SimEvent::buddyOffline(buddy.account, buddy.handle));
        break;
      case 1:
        event(time, sim::SimEvent::buddyOnline(buddy.account, buddy.handle));
        break;
      default:
        event(time, sim::SimEvent::buddyStatus(buddy.account, buddy.handle, statuses[random() % 3],
                                               "message " + std::to_string(random() % 50)));
    }
    if (i == kEventsPerMinute / 6) event(time, sim::SimEvent::statusText("Soak text " + std::to_string(minute % 7)));
    if (i == kEventsPerMinute / 2) {
      ScriptStep click;
      click.kind = ScriptStep::Kind::Click;
      add(time, click);
      ScriptStep close;
      close.kind = minute % 15 == 0 ? ScriptStep::Kind::Choose : ScriptStep::Kind::Dismiss;
      close.title = minute % 30 == 0 ? "Away" : "Available";
      add(time + 0.25, close);
    }
  }
  script.endTime = 60;
  return script;
}

class SoakTest : public kibtest::PlatformTest {};

TEST_F(SoakTest, ABusyDayGrowsNeitherMemoryNorTheRunLoop) {
  const auto bundle = kibtest::environmentPath("KIB_EXTRA_BUNDLE");
  if (!std::filesystem::exists(bundle / "Info.json")) GTEST_SKIP() << "the extra's bundle is not built";
  std::string error;
  auto plugin = kibhost::PluginBundle::load(bundle, error);
  ASSERT_TRUE(plugin) << error;

  auto scenario = sim::ScenarioLoader::defaultScenario();
  std::vector<Buddy> buddies;
  for (const auto& person : scenario.people)
    for (const auto& handle : person.handles) buddies.push_back({handle.account, handle.id});
  ASSERT_FALSE(buddies.empty());

  LineCounter counter;
  std::ostream transcript(&counter);
  std::ostringstream errors;
  kibhost::HeadlessRun run(scenario, "soak", *plugin, transcript, errors, false);
  ASSERT_TRUE(run.start());

  std::mt19937 random(20261122);
  const int hours = soakHours();
  std::size_t baselineBytes = 0, baselineQueue = 0, largestBytes = 0, largestQueue = 0;
  int failures = 0;
  for (int hour = 0; hour < hours; ++hour) {
    for (int minute = 0; minute < 60; ++minute) failures += run.playScriptPart(busyMinute(minute, buddies, random));
    const std::size_t bytes = allocatedBytes();
    const std::size_t queue = platform::RunLoop::main().queuedWorkCount();
    if (hour == 0) {
      baselineBytes = bytes;  // after an hour every cache has been filled once
      baselineQueue = queue;
    } else {
      largestBytes = std::max(largestBytes, bytes);
      largestQueue = std::max(largestQueue, queue);
    }
  }
  run.finish();
  std::cout << "soak: " << hours << " simulated hours, " << counter.count("event") << " events, memory in use "
            << baselineBytes << " -> at most " << largestBytes << " bytes, run-loop queue " << baselineQueue
            << " -> at most " << largestQueue << "\n";

  EXPECT_EQ(failures, 0) << errors.str().substr(0, 2000);
  EXPECT_EQ(counter.count("assertion"), 0u);
  EXPECT_GT(counter.count("event"), static_cast<std::size_t>(hours) * 41000) << "the world was busy";
  EXPECT_LE(largestBytes, baselineBytes + (std::size_t{1} << 20))
      << "memory grew from " << baselineBytes << " to " << largestBytes << " bytes";
  EXPECT_LE(largestQueue, baselineQueue + 16) << "the run loop's queue grew from " << baselineQueue;
}

}  // namespace
