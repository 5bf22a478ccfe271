#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// Application preferences by domain (the CFPreferences app-value calls). Each
// domain is one JSON object in "<directory>/<domain>.json". Values are
// strings, numbers, booleans, arrays and dictionaries.
//
// Reads see the file as it is on disk unless this process holds unsynchronized
// changes, so a value written by another process is seen at the next read.
// synchronize writes atomically (temporary file, fsync, rename). A file that is
// not a JSON object is read as empty, moved aside to "<file>.corrupt" (or
// "<file>.corrupt-N") and reported once on the system log with both paths;
// nothing is overwritten silently.
class Preferences {
 public:
  // $KIBBAR_CONFIG_DIR, else $XDG_CONFIG_HOME/kibbar, else ~/.config/kibbar.
  static std::filesystem::path directory();
  // Points the store somewhere else (tests); empty restores the default. Drops cached domains.
  static void setDirectory(const std::filesystem::path& directory);

  // A copy of the value, or nil.
  static ObjectPtr copyAppValue(const std::string& key, const std::string& domain);
  // Sets a value in memory; nil removes the key. Written by appSynchronize.
  static void setAppValue(const std::string& key, const ObjectPtr& value, const std::string& domain);
  // Writes pending changes of the domain and re-reads it; false when the write failed.
  static bool appSynchronize(const std::string& domain);

  // Observes every successful write (the host's transcript); nil removes it.
  using WriteObserver = std::function<void(const std::string& domain, const std::filesystem::path& file)>;
  static void setWriteObserver(WriteObserver observer);
};

}  // namespace platform
