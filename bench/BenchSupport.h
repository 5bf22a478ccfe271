#pragma once

// Shared by the benchmarks: CPU timing, the baseline every row is compared
// with (a bare std::sort of the same rows with the same ICU collation,
// measured in the same run), and generated worlds of people.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <time.h>
#include <unicode/coll.h>
#include <unicode/locid.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/SampleNames.h"
#include "platform/core/Clock.h"
#include "platform/core/Format.h"
#include "platform/core/VirtualClock.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMMessagingWorld.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMPersonStatus.h"
#include "platform/im/IMService.h"

namespace kibbench {

inline double threadCPUSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0.0 : values[values.size() / 2];
}

// One row of the list as the baseline sorts it: status, first and last name, handle.
struct BareRow {
  int rank;
  std::string first;
  std::string last;
  const void* handle;
};

// CPU seconds of std::sort over rows like the list's, comparing names with an
// ICU collator of the same language and strength as the list's; the median of
// several runs, measured once per row count and kept for the whole run.
inline double bareSortSeconds(std::size_t rows) {
  static std::map<std::size_t, double> measured;
  if (auto found = measured.find(rows); found != measured.end()) return found->second;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(icu::Locale("en"), status));
  collator->setStrength(icu::Collator::SECONDARY);
  const auto& first = sampleFirstNames();
  const auto& last = sampleLastNames();
  std::mt19937 random(7);
  std::vector<BareRow> original;
  for (std::size_t i = 0; i < rows; ++i)
    original.push_back({static_cast<int>(random() % 5), first[random() % first.size()],
                        last[random() % last.size()], reinterpret_cast<const void*>(i * 64 + 4096)});
  auto less = [&collator](const BareRow& a, const BareRow& b) {
    if (a.rank != b.rank) return a.rank > b.rank;
    UErrorCode error = U_ZERO_ERROR;
    auto byFirst = collator->compareUTF8(a.first, b.first, error);
    if (byFirst != UCOL_EQUAL) return byFirst == UCOL_LESS;
    auto byLast = collator->compareUTF8(a.last, b.last, error);
    if (byLast != UCOL_EQUAL) return byLast == UCOL_LESS;
    return a.handle < b.handle;
  };
  std::vector<double> times;
  for (int run = 0; run < 7; ++run) {
    auto copy = original;
    double start = threadCPUSeconds();
    std::sort(copy.begin(), copy.end(), less);
    times.push_back(threadCPUSeconds() - start);
    benchmark::DoNotOptimize(copy.data());
  }
  return measured[rows] = median(times);
}

// Reports the row's CPU time per iteration (ms) and its ratio to the baseline.
inline void reportRatio(benchmark::State& state, const std::vector<double>& seconds, std::size_t baselineRows) {
  double perIteration = median(seconds);
  double baseline = bareSortSeconds(baselineRows);
  state.counters["cpu_ms"] = perIteration * 1e3;
  state.counters["baseline_ms"] = baseline * 1e3;
  state.counters["ratio"] = perIteration / baseline;
}

// A virtual clock for the run: transitions and dates read it, and a
// benchmark moves it on by hand.
inline platform::VirtualClock& virtualClock() {
  static auto clock = [] {
    auto made = std::make_shared<platform::VirtualClock>();
    platform::Clock::setCurrent(made);
    return made;
  }();
  return *clock;
}

// People on two services: every person has one handle on each (handles = 2 × people).
struct World {
  std::vector<platform::IMAccountPtr> accounts;
  std::vector<platform::IMHandlePtr> handles;
};

inline World makeWorld(std::size_t handleCount, unsigned seed = 20240601, bool everyoneOffline = false) {
  virtualClock();
  platform::IMResetMessagingWorld();
  World world;
  for (const char* name : {"AIM", "Jabber"}) {
    auto service = platform::IMService::make(name, name, name);
    platform::IMService::registerService(service);
    auto account = platform::IMAccount::make(service, platform::format("me@%s", name));
    account->setCapabilities(platform::kIMAccountCapabilityBuddyList);
    world.accounts.push_back(account);
  }
  const auto& first = sampleFirstNames();
  const auto& last = sampleLastNames();
  std::mt19937 random(seed);
  std::uniform_int_distribution<platform::IMPersonStatus> status(platform::kIMPersonStatusOffline,
                                                                 platform::kIMPersonStatusAvailable);
  for (std::size_t i = 0; world.handles.size() < handleCount; ++i) {
    auto person = platform::IMPerson::make(platform::format("p%lu", i), first[random() % first.size()],
                                           last[random() % last.size()]);
    for (std::size_t a = 0; a < world.accounts.size() && world.handles.size() < handleCount; ++a) {
      auto handle = platform::IMHandle::make(world.accounts[a], platform::format("buddy%lu.%lu", i, a), person);
      handle->updateStatus(everyoneOffline ? platform::kIMPersonStatusOffline : status(random), "");
      world.handles.push_back(handle);
    }
  }
  return world;
}

inline std::size_t heapBytesInUse() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

}  // namespace kibbench
