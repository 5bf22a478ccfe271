#pragma once

#include <string>
#include <vector>

namespace platform {

// One request the daemon controller passed to its backend, as request
// observers see it: the selector as the library spells it, the arguments as
// text, and for a query its answer.
struct IMDaemonRequest {
  std::string selector;                // "setMyStatus:message:"
  std::vector<std::string> arguments;  // "4", "\"Working\"", "nil"
  bool isQuery = false;                // a read (isConnected, vcCapabilities, ...)
  std::string answer;                  // a query's answer as text

  static IMDaemonRequest command(std::string selector, std::vector<std::string> arguments);
  static IMDaemonRequest query(std::string selector, std::vector<std::string> arguments, std::string answer);

  // "setMyStatus:message: 4 \"Working\"", "isConnected -> YES".
  std::string description() const;
};

}  // namespace platform
