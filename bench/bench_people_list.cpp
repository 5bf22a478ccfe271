// The people list as the status menu uses it: a flat list of about 2,000
// people over three services. A resort rebuilds and sorts the whole displayed
// array; a search rebuilds it through the search match.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "Source/BuddyList/KibPeopleList.h"
#include "platform/core/Format.h"
#include "platform/core/String.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "bench/SampleNames.h"

namespace {

constexpr std::size_t kPeopleCount = 2000;

struct World {
  std::vector<platform::IMAccountPtr> accounts;
  std::vector<platform::IMHandlePtr> handles;
};

// Every person on one account; one in four also on a second one; statuses spread over the scale.
World makeWorld() {
  World world;
  for (const char* name : {"AIM", "Jabber"}) {
    auto service = platform::IMService::make(name, name, name);
    platform::IMService::registerService(service);
    auto account = platform::IMAccount::make(service, platform::format("me@%s", name));
    account->setCapabilities(platform::kIMAccountCapabilityBuddyList);
    world.accounts.push_back(account);
  }
  const auto& first = kibbench::sampleFirstNames();
  const auto& last = kibbench::sampleLastNames();
  std::mt19937 random(20240601);
  std::uniform_int_distribution<std::size_t> pick(0, first.size() - 1);
  std::uniform_int_distribution<platform::IMPersonStatus> status(platform::kIMPersonStatusOffline,
                                                                 platform::kIMPersonStatusAvailable);
  for (std::size_t i = 0; i < kPeopleCount; ++i) {
    auto person = platform::IMPerson::make(platform::format("p%lu", i), first[pick(random)], last[pick(random)]);
    auto handle = platform::IMHandle::make(world.accounts[0], platform::format("buddy%lu", i), person);
    handle->updateStatus(status(random), "");
    world.handles.push_back(handle);
    if (i % 4 == 0) {
      auto other = platform::IMHandle::make(world.accounts[1], platform::format("buddy%lu@jabber", i), person);
      other->updateStatus(status(random), "");
      world.handles.push_back(other);
    }
  }
  return world;
}

kib::KibPeopleListPtr makeList(const World& world) {
  auto list = kib::KibPeopleList::init();
  list->beginChanges();
  list->addPeopleFromArraySkipMe(world.handles, true);
  list->endChanges();
  return list;
}

void BM_ResortFlatList(benchmark::State& state) {
  auto world = makeWorld();
  auto list = makeList(world);
  for (auto _ : state) {
    list->resort();
    benchmark::DoNotOptimize(list->items().data());
  }
  state.counters["items"] = static_cast<double>(list->items().size());
  platform::IMService::removeAllServices();
}
BENCHMARK(BM_ResortFlatList)->Unit(benchmark::kMillisecond);

void BM_SearchFlatList(benchmark::State& state) {
  auto world = makeWorld();
  auto list = makeList(world);
  // Two terms, one accented: every person is tried, most fail on the first.
  auto text = platform::makeString("rene mull");
  for (auto _ : state) {
    list->setSearchString(nullptr);
    list->setSearchString(text);
    list->refreshList();
    benchmark::DoNotOptimize(list->items().data());
  }
  state.counters["found"] = static_cast<double>(list->items().size());
  platform::IMService::removeAllServices();
}
BENCHMARK(BM_SearchFlatList)->Unit(benchmark::kMillisecond);

}  // namespace
