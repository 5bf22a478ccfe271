#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "sim/Scenario.h"
#include "sim/ScenarioError.h"

namespace sim {

// Reads scenario files (docs/scenario.md). A scenario is checked completely
// before anything is answered: bad syntax, a value of the wrong type, an
// unknown field, service, account, status or event type, a handle on a
// missing account and duplicate IDs raise ScenarioError with one message
// "<file>: <place>: <problem>", where the place is a JSON path ("$.accounts[1].service")
// or, for a syntax error, "line L, column C".
class ScenarioLoader {
 public:
  // Times and durations in a scenario or script go no further than this (about
  // 115 days), so that a run under the virtual clock always ends.
  static constexpr double kLongestTime = 1e7;

  static Scenario loadFile(const std::filesystem::path& path);
  // source names the text in messages (a file name).
  static Scenario parse(const std::string& text, const std::string& source);
  // The built-in scenario (the text of examples/default-scenario.json).
  static Scenario defaultScenario();
  static const std::string& defaultScenarioText();

  // One event in the scenario's event format, checked against the scenario's
  // accounts and handles; path names its place in messages.
  static SimEvent parseEvent(const nlohmann::json& value, const Scenario& scenario, const std::string& source,
                             const std::string& path = "$");
};

}  // namespace sim
