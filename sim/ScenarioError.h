#pragma once

#include <stdexcept>
#include <string>

namespace sim {

// A scenario that cannot be loaded. The message names the file, the place
// (JSON path, or line and column for a syntax error) and the problem.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace sim
