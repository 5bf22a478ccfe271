// The people list at scale: refills, one buddy's status change, the burst of
// transitions that end together, search and memory. Every row reports its CPU
// time and its ratio to a bare std::sort of as many rows with the same ICU
// collation, measured in the same run (BenchSupport.h).
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Source/BuddyList/KibPeopleList.h"
#include "bench/BenchSupport.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"

namespace {

using kibbench::threadCPUSeconds;

// The status menu's configuration: flat, only available people.
void showOnlyAvailable(kib::KibPeopleList& list) {
  list.setShowsOfflinePeople(false);
  list.setShowsIdlePeople(false);
  list.setShowsAwayPeople(false);
  list.setShowsUnknownPeople(false);
  list.setShowsNoStatusPeople(false);
}

void refill(kib::KibPeopleList& list, const kibbench::World& world) {
  list.beginChanges();
  list.removeAllIMHandlesAndGroups(true);
  list.addPeopleFromArraySkipMe(world.handles, true);
  list.endChanges();
}

// Lets the transitions a refill started end, as the program's run loop does
// two seconds later (a person whose second handle comes online fades in).
void endTransitions() {
  auto& clock = kibbench::virtualClock();
  double end = clock.now() + 2.5;
  clock.advanceTo(end);
  platform::RunLoop::main().runUntil(end);
}

kib::KibPeopleListPtr makeList(const kibbench::World& world, bool menu) {
  auto list = kib::KibPeopleList::init();
  if (menu) showOnlyAvailable(*list);
  refill(*list, world);
  return list;
}

void BM_BareCollationSort(benchmark::State& state) {
  auto rows = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) state.SetIterationTime(kibbench::bareSortSeconds(rows));
  kibbench::reportRatio(state, {kibbench::bareSortSeconds(rows)}, rows);
}
BENCHMARK(BM_BareCollationSort)->Arg(10000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

// beginChanges, remove all, add all, endChanges. Args: handles, menu configuration.
void BM_Refill(benchmark::State& state) {
  auto handles = static_cast<std::size_t>(state.range(0));
  bool menu = state.range(1) != 0;
  auto world = kibbench::makeWorld(handles);
  auto list = makeList(world, menu);
  std::vector<double> seconds;
  for (auto _ : state) {
    endTransitions();
    double start = threadCPUSeconds();
    refill(*list, world);
    benchmark::DoNotOptimize(list->items().data());
    seconds.push_back(threadCPUSeconds() - start);
    state.SetIterationTime(seconds.back());
  }
  endTransitions();
  state.counters["items"] = static_cast<double>(list->items().size());
  kibbench::reportRatio(state, seconds, handles);
  list.reset();
  platform::IMResetMessagingWorld();
}
BENCHMARK(BM_Refill)
    ->Args({2500, 0})
    ->Args({5000, 0})
    ->Args({10000, 0})
    ->Args({20000, 0})
    ->Args({40000, 0})
    ->Args({10000, 1})
    ->UseManualTime()
    ->MinTime(0.5)
    ->Unit(benchmark::kMillisecond);

// One buddy goes from available to away or back; the list resorts and posts
// its update before updateStatus returns. Args: handles, menu configuration.
void BM_StatusChange(benchmark::State& state) {
  auto handles = static_cast<std::size_t>(state.range(0));
  bool menu = state.range(1) != 0;
  auto world = kibbench::makeWorld(handles);
  for (const auto& handle : world.handles) handle->updateStatus(platform::kIMPersonStatusAvailable, "");
  auto list = makeList(world, menu);
  std::vector<double> seconds;
  std::size_t next = 0;
  for (auto _ : state) {
    const auto& handle = world.handles[(next++ * 7919) % world.handles.size()];
    auto status = handle->status() == platform::kIMPersonStatusAvailable ? platform::kIMPersonStatusAway
                                                                         : platform::kIMPersonStatusAvailable;
    double start = threadCPUSeconds();
    handle->updateStatus(status, "");
    seconds.push_back(threadCPUSeconds() - start);
    state.SetIterationTime(seconds.back());
  }
  kibbench::reportRatio(state, seconds, handles);
  list.reset();
  platform::IMResetMessagingWorld();
}
BENCHMARK(BM_StatusChange)->Args({10000, 0})->Args({10000, 1})->UseManualTime()->Unit(benchmark::kMillisecond);

// A refill of everyone offline, then a thousand people come online at once;
// their 2.0 s transitions all end at one instant, and each end asks for a
// resort. Measured: that instant, and reading the displayed array after it.
void BM_TransitionBurst(benchmark::State& state) {
  auto handles = static_cast<std::size_t>(state.range(0));
  auto comers = static_cast<std::size_t>(state.range(1));
  std::vector<double> seconds;
  for (auto _ : state) {
    auto world = kibbench::makeWorld(handles, 20240601, true);
    auto list = makeList(world, false);
    platform::RunLoop::main().reset();
    for (std::size_t i = 0; i < comers; ++i)
      world.handles[i * 2 % world.handles.size()]->updateStatus(platform::kIMPersonStatusAvailable, "");
    auto& clock = kibbench::virtualClock();
    double end = clock.now() + 2.0;
    double start = threadCPUSeconds();
    clock.advanceTo(end);
    platform::RunLoop::main().runUntil(end);
    benchmark::DoNotOptimize(list->items().data());
    seconds.push_back(threadCPUSeconds() - start);
    state.SetIterationTime(seconds.back());
    list.reset();
  }
  kibbench::reportRatio(state, seconds, handles);
  platform::IMResetMessagingWorld();
}
BENCHMARK(BM_TransitionBurst)->Args({10000, 1000})->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

// Two words over every item; most people fail on the first.
void BM_Search(benchmark::State& state) {
  auto handles = static_cast<std::size_t>(state.range(0));
  auto world = kibbench::makeWorld(handles);
  auto list = makeList(world, false);
  auto text = platform::makeString("rene mull");
  std::vector<double> seconds;
  for (auto _ : state) {
    double start = threadCPUSeconds();
    list->setSearchString(nullptr);
    list->setSearchString(text);
    list->refreshList();
    seconds.push_back(threadCPUSeconds() - start);
    state.SetIterationTime(seconds.back());
  }
  state.counters["found"] = static_cast<double>(list->items().size());
  kibbench::reportRatio(state, seconds, handles);
  list.reset();
  platform::IMResetMessagingWorld();
}
BENCHMARK(BM_Search)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);

// Heap bytes per handle: the world's mirror objects and the list's items.
void BM_MemoryPerHandle(benchmark::State& state) {
  auto handles = static_cast<std::size_t>(state.range(0));
  double worldBytes = 0, listBytes = 0;
  for (auto _ : state) {
    std::size_t before = kibbench::heapBytesInUse();
    auto world = kibbench::makeWorld(handles);
    std::size_t withWorld = kibbench::heapBytesInUse();
    auto list = makeList(world, false);
    std::size_t withList = kibbench::heapBytesInUse();
    worldBytes = static_cast<double>(withWorld - before);
    listBytes = static_cast<double>(withList - withWorld);
    state.SetIterationTime(1.0);
    list.reset();
    platform::IMResetMessagingWorld();
  }
  state.counters["KiB_per_handle"] = (worldBytes + listBytes) / 1024.0 / static_cast<double>(handles);
  state.counters["list_KiB_per_handle"] = listBytes / 1024.0 / static_cast<double>(handles);
  state.counters["world_KiB_per_handle"] = worldBytes / 1024.0 / static_cast<double>(handles);
}
BENCHMARK(BM_MemoryPerHandle)->Arg(100000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
