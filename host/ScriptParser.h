#pragma once

#include <filesystem>
#include <string>

#include "host/Script.h"
#include "host/ScriptError.h"
#include "sim/Scenario.h"

namespace kibhost {

// Reads scripts (docs/script.md). Every line is checked before anything
// runs; the first bad line raises ScriptError "<file>:<line>: <problem>".
// World events are checked against the scenario's accounts and handles.
class ScriptParser {
 public:
  static Script loadFile(const std::filesystem::path& path, const sim::Scenario& scenario);
  static Script parse(const std::string& text, const std::string& source, const sim::Scenario& scenario);
};

}  // namespace kibhost
