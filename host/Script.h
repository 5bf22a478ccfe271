#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "sim/SimEvent.h"

namespace kibhost {

// One timed action of a script (docs/script.md).
struct ScriptStep {
  enum class Kind {
    Click,        // modifiers: held while clicking and while the menu is open
    Choose,       // title; modifiers (nullopt: those of the click)
    ChooseIndex,  // index in the open menu
    Key,          // key equivalent with modifiers
    Dismiss,
    Event,     // a simulated-world event
    Post,      // centre, name, object, userInfo
    SelfTest,  // test, duration
    Unload,
    WaitFor,  // title, absent, duration: until the extra's menu shows (or no longer shows) the title
    Note,     // title: a mark in the transcript for whoever reads it as it is written
  };

  Kind kind = Kind::Click;
  int line = 0;
  double time = 0;      // seconds after the start
  std::string command;  // the line as written, without comment
  std::string title;
  std::int64_t index = -1;
  std::string key;
  std::optional<std::uint64_t> modifiers;
  sim::SimEvent event;
  std::string centre;
  std::string name;
  std::optional<std::string> object;
  nlohmann::json userInfo;  // null or an object
  std::uint32_t test = 0;
  double duration = 0;
  bool absent = false;
};

struct Script {
  std::string source;  // the file name, for messages
  std::vector<ScriptStep> steps;
  // The script's time after its last line: the run ends then.
  double endTime = 0;
};

}  // namespace kibhost
