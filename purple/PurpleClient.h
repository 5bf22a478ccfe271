#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "purple/PurpleRecords.h"
#include "purple/PurpleReplyError.h"

namespace kibpurple {

inline constexpr const char* kPurpleService = "im.pidgin.purple.PurpleService";
inline constexpr const char* kPurpleObjectPath = "/im/pidgin/purple/PurpleObject";
inline constexpr const char* kPurpleInterface = "im.pidgin.purple.PurpleInterface";

// Typed calls to libpurple's D-Bus interface. Every call waits at most the
// call timeout; after a call that got no answer the client counts as
// unresponsive for a while and further calls fail at once, so one stuck
// client costs the run loop one timeout, not one per call. Failures of any
// kind throw PurpleReplyError (PurpleNoAnswer for no answer).
class PurpleClient {
 public:
  explicit PurpleClient(sdbus::IProxy& proxy, std::chrono::milliseconds timeout = std::chrono::milliseconds(500));

  template <class Result, class... Args>
  Result call(const char* method, const Args&... args) {
    Result result{};
    invoke(method, describe(method, args...),
           [&](sdbus::MethodInvoker& invoker) { invoker.withArguments(args...).storeResultsTo(result); });
    return result;
  }
  template <class... Args>
  void send(const char* method, const Args&... args) {
    invoke(method, describe(method, args...), [&](sdbus::MethodInvoker& invoker) { invoker.withArguments(args...); });
  }

  std::int32_t integer(const char* method, PurpleID id) { return call<std::int32_t>(method, id); }
  std::string text(const char* method, PurpleID id) { return call<std::string>(method, id); }
  std::vector<PurpleID> ids(const char* method) { return call<std::vector<PurpleID>>(method); }

  // Calls that got no answer in time so far (a client still starting up, or stuck).
  std::uint64_t unansweredCalls() const { return unanswered_; }

 private:
  template <class... Args>
  static std::string describe(const char* method, const Args&... args) {
    std::ostringstream out;
    out << method << '(';
    const char* separator = "";
    ((out << separator << quoted(args), separator = ", "), ...);
    (void)separator;
    out << ')';
    return out.str();
  }
  static std::string quoted(const std::string& text) { return '"' + text + '"'; }
  static std::string quoted(const char* text) { return quoted(std::string(text)); }
  template <class T>
  static T quoted(const T& value) {
    return value;
  }

  void invoke(const char* method, const std::string& description,
              const std::function<void(sdbus::MethodInvoker&)>& complete);

  sdbus::IProxy& proxy_;
  std::chrono::milliseconds timeout_;
  std::chrono::steady_clock::time_point unresponsiveUntil_{};
  std::uint64_t unanswered_ = 0;
};

}  // namespace kibpurple
