#include "platform/core/Log.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <sstream>

namespace platform {
namespace {

struct LogState {
  std::mutex mutex;
  std::set<std::string> categories;
  bool all = false;
  // Whether any category is on: asked on hot paths, so the common answer
  // (nothing is logged) takes neither the lock nor a string.
  std::atomic<bool> anyEnabled{false};
  Log::Sink sink;
};

LogState& state() {
  static LogState* s = [] {
    auto* created = new LogState;
    return created;
  }();
  return *s;
}

void loadCategories(LogState& s) {
  s.categories.clear();
  s.all = false;
  s.anyEnabled = false;
  const char* value = std::getenv("KIB_LOG");
  if (!value) return;
  std::stringstream list(value);
  std::string category;
  while (std::getline(list, category, ',')) {
    if (category == "all") s.all = true;
    if (!category.empty()) s.categories.insert(category);
  }
  s.anyEnabled = s.all || !s.categories.empty();
}

const char* prefix(Log::Channel channel) {
  switch (channel) {
    case Log::Channel::Warning:
      return "warning: ";
    case Log::Channel::Test:
      return "test: ";
    case Log::Channel::System:
      return "kibbar: ";
    default:
      return "";
  }
}

struct CategoriesLoader {
  CategoriesLoader() { loadCategories(state()); }
};

}  // namespace

bool Log::isCategoryEnabled(std::string_view category) {
  static CategoriesLoader loader;
  auto& s = state();
  if (!s.anyEnabled.load(std::memory_order_relaxed)) return false;
  std::lock_guard lock(s.mutex);
  return s.all || s.categories.count(std::string(category)) != 0;
}

void Log::setEnabledCategories(std::set<std::string> categories) {
  isCategoryEnabled("");
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.all = categories.count("all") != 0;
  s.categories = std::move(categories);
  s.anyEnabled = s.all || !s.categories.empty();
}

void Log::resetCategoriesFromEnvironment() {
  isCategoryEnabled("");
  auto& s = state();
  std::lock_guard lock(s.mutex);
  loadCategories(s);
}

Log::Sink Log::setSink(Sink sink) {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  auto previous = std::move(s.sink);
  s.sink = std::move(sink);
  return previous;
}

void Log::write(Channel channel, const std::string& line) {
  Sink sink;
  {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    sink = s.sink;
  }
  if (sink) {
    sink(channel, line);
    return;
  }
  std::fprintf(stderr, "%s%s\n", prefix(channel), line.c_str());
}

bool IMWillLog(std::string_view category) { return Log::isCategoryEnabled(category); }

}  // namespace platform
