// Search folding over a people list of 100,000 short names: folding every
// name once, then finding a term in the folded names, as a search does.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "platform/core/TextServices.h"
#include "bench/SampleNames.h"

namespace {

constexpr unsigned kSearchOptions = 385;
constexpr std::size_t kNameCount = 100000;

// Mostly plain ASCII names, some with accents, a few in full-width letters.
std::vector<std::string> makeNames() {
  const auto& first = kibbench::sampleFirstNames();
  const auto& last = kibbench::sampleLastNames();
  std::mt19937 random(20240601);
  std::uniform_int_distribution<std::size_t> pick(0, first.size() - 1);
  std::vector<std::string> names;
  names.reserve(kNameCount);
  for (std::size_t i = 0; i < kNameCount; ++i) names.push_back(first[pick(random)] + " " + last[pick(random)]);
  return names;
}

const std::vector<std::string>& names() {
  static const std::vector<std::string> all = makeNames();
  return all;
}

void BM_FoldNames(benchmark::State& state) {
  const auto& all = names();
  for (auto _ : state) {
    for (const auto& name : all) benchmark::DoNotOptimize(platform::TextServices::fold(name, kSearchOptions));
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * all.size()));
}
BENCHMARK(BM_FoldNames)->Unit(benchmark::kMillisecond);

void BM_ContainsInFoldedNames(benchmark::State& state) {
  std::vector<std::string> folded;
  folded.reserve(names().size());
  for (const auto& name : names()) folded.push_back(platform::TextServices::fold(name, kSearchOptions));
  const std::string needle = platform::TextServices::fold("MULL", kSearchOptions);
  std::size_t found = 0;
  for (auto _ : state) {
    found = 0;
    for (const auto& name : folded) found += platform::TextServices::containsFolded(name, needle);
    benchmark::DoNotOptimize(found);
  }
  state.counters["matches"] = static_cast<double>(found);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * folded.size()));
}
BENCHMARK(BM_ContainsInFoldedNames)->Unit(benchmark::kMillisecond);

}  // namespace
