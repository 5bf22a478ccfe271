// A preferences file as another process or a damaged disk may leave it: read,
// changed and written back. A damaged file is moved aside, never a crash.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/core/Number.h"
#include "platform/core/Preferences.h"
#include "tests/fuzz/FuzzInput.h"

namespace {

const std::filesystem::path& folder() {
  static const std::filesystem::path path = [] {
    char pattern[] = "/tmp/kib-fuzz-preferences-XXXXXX";
    const char* made = mkdtemp(pattern);
    return std::filesystem::path(made ? made : "/tmp/kib-fuzz-preferences");
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  std::error_code ignored;
  std::filesystem::remove_all(folder(), ignored);
  std::filesystem::create_directories(folder(), ignored);
  platform::Preferences::setDirectory(folder());
  std::ofstream(folder() / "fuzz.json", std::ios::binary) << kibfuzz::text(data, size);
  platform::Preferences::copyAppValue("DefaultServiceName", "fuzz");
  platform::Preferences::setAppValue("DefaultServiceName", platform::makeNumber(std::int64_t{3}), "fuzz");
  platform::Preferences::appSynchronize("fuzz");
  platform::Preferences::copyAppValue("other", "fuzz");
  return 0;
}
