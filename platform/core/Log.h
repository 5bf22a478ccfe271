#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "platform/core/Format.h"

namespace platform {

// The platform's log channels. Diagnostic lines of a category are written only
// when that category is on (KIB_LOG="KibPeopleList,Other" or KIB_LOG=all);
// warnings and lines written with IMAlwaysLog always go out; the test log
// collects the self-test's lines. Every channel has a replaceable sink.
class Log {
 public:
  enum class Channel { Always, Warning, Test, System };
  using Sink = std::function<void(Channel, const std::string&)>;

  static bool isCategoryEnabled(std::string_view category);
  static void setEnabledCategories(std::set<std::string> categories);
  // Reads KIB_LOG again (tests call it after changing the environment).
  static void resetCategoriesFromEnvironment();

  // Installs a sink (nil restores the default, standard error); answers the previous one.
  static Sink setSink(Sink sink);
  static void write(Channel channel, const std::string& line);
};

bool IMWillLog(std::string_view category);

template <class... Args>
void IMAlwaysLog(std::string_view text, const Args&... args) {
  Log::write(Log::Channel::Always, format(text, args...));
}

template <class... Args>
void IMWarn(std::string_view text, const Args&... args) {
  Log::write(Log::Channel::Warning, format(text, args...));
}

// The platform test log; the level argument is kept for the callers' sake.
template <class... Args>
void CFLogTest(int /*level*/, std::string_view text, const Args&... args) {
  Log::write(Log::Channel::Test, format(text, args...));
}

}  // namespace platform
