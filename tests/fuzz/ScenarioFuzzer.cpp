// A scenario file: either a scenario or one ScenarioError, never anything else.
#include "sim/ScenarioLoader.h"
#include "tests/fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  try {
    sim::ScenarioLoader::parse(kibfuzz::text(data, size), "fuzz.json");
  } catch (const sim::ScenarioError&) {
  }
  return 0;
}
