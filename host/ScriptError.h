#pragma once

#include <stdexcept>
#include <string>

namespace kibhost {

// A script that cannot be played: "<file>:<line>: <problem>", or
// "<file>: <problem>" when the file itself cannot be read.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kibhost
