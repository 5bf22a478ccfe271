// Reading a preference from a large, unchanged preferences file costs about
// what reading it from a small one does: the file is read and parsed once and
// then served from memory while its identity stays the same. Compare
// BM_ReadFromLargeFile with BM_ReadFromSmallFile (a ratio near 1).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>

#include "platform/core/Preferences.h"

namespace {

namespace fs = std::filesystem;

// A preferences folder with one domain file of about `filler` bytes, written an hour ago.
fs::path preparedFolder(const std::string& name, std::size_t filler) {
  const fs::path folder = fs::temp_directory_path() / ("kib-bench-preferences-" + std::to_string(getpid()) + name);
  fs::create_directories(folder);
  const fs::path file = folder / "bench.json";
  std::ofstream(file) << R"({"DefaultServiceName": "AIM", "Filler": ")" << std::string(filler, 'x') << "\"}\n";
  const timespec times[2] = {{0, UTIME_OMIT}, {std::time(nullptr) - 3600, 0}};
  utimensat(AT_FDCWD, file.c_str(), times, 0);
  return folder;
}

void readRepeatedly(benchmark::State& state, std::size_t filler) {
  const fs::path folder = preparedFolder(std::to_string(filler), filler);
  platform::Preferences::setDirectory(folder);
  platform::Preferences::copyAppValue("DefaultServiceName", "bench");  // the one read of the file
  const auto reads = platform::Preferences::diskReadCount();
  for (auto _ : state) benchmark::DoNotOptimize(platform::Preferences::copyAppValue("DefaultServiceName", "bench"));
  state.counters["diskReads"] = static_cast<double>(platform::Preferences::diskReadCount() - reads);
  fs::remove_all(folder);
}

void BM_ReadFromSmallFile(benchmark::State& state) { readRepeatedly(state, 10); }
void BM_ReadFromLargeFile(benchmark::State& state) { readRepeatedly(state, 8 << 20); }

}  // namespace

BENCHMARK(BM_ReadFromSmallFile);
BENCHMARK(BM_ReadFromLargeFile);
