// A script over the built-in scenario: either a script or one ScriptError.
#include "host/ScriptError.h"
#include "host/ScriptParser.h"
#include "sim/ScenarioLoader.h"
#include "tests/fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  static const sim::Scenario scenario = sim::ScenarioLoader::defaultScenario();
  try {
    kibhost::ScriptParser::parse(kibfuzz::text(data, size), "fuzz.kbs", scenario);
  } catch (const kibhost::ScriptError&) {
  }
  return 0;
}
