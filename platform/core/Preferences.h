#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// Application preferences by domain (the CFPreferences app-value calls). Each
// domain is one JSON object in "<directory>/<domain>.json". Values are
// strings, numbers, booleans (Number(bool)), arrays and dictionaries.
//
// Reads look at the file's identity (device, inode, size, times) every time
// and read it again only when that changed, or while its last change is too
// recent to tell writes apart; it is parsed again only when its bytes changed.
// So a value written by another process is seen at the next read; keys this
// process changed and has not synchronized yet answer the local value.
// synchronize merges those keys into the file as it is on disk
// now and writes it atomically (temporary file "<file>.tmp-<pid>", fsync,
// rename, fsync of the folder), so a crash leaves the old file whole; the
// temporary files of writers that no longer run are removed when the domain
// is first read.
//
// A file that is not a JSON object is read as empty, moved aside to
// "<file>.corrupt" (or "<file>.corrupt-N", never over an earlier copy) and
// reported once on the system log with both paths. A file that can be neither
// read nor moved aside is reported once and never written over: synchronize
// fails for that domain until the file is repaired or removed.
//
// A domain is a file name: not empty, no "/", not "." or "..". An invalid
// domain, or a value JSON cannot hold, is reported on the system log and
// changes nothing.
class Preferences {
 public:
  // $KIBBAR_CONFIG_DIR, else $XDG_CONFIG_HOME/kibbar, else ~/.config/kibbar.
  static std::filesystem::path directory();
  // Points the store somewhere else (tests); empty restores the default.
  // Drops cached domains, unsynchronized changes included.
  static void setDirectory(const std::filesystem::path& directory);
  // The file that holds the domain.
  static std::filesystem::path fileForDomain(const std::string& domain);

  // A copy of the value, or nil.
  static ObjectPtr copyAppValue(const std::string& key, const std::string& domain);
  // Sets a value in memory; nil removes the key. Written by appSynchronize.
  static void setAppValue(const std::string& key, const ObjectPtr& value, const std::string& domain);
  // Writes pending changes of the domain and re-reads it; false when the write failed
  // (the changes stay pending and the reason is on the system log).
  static bool appSynchronize(const std::string& domain);

  // Observes every successful write (the host's transcript); nil removes it.
  // Called after the write, outside the store's lock.
  using WriteObserver = std::function<void(const std::string& domain, const std::filesystem::path& file)>;
  static void setWriteObserver(WriteObserver observer);
  // How many times a preferences file was read from disk (reads of an
  // unchanged file are served from memory).
  static std::uint64_t diskReadCount();
};

}  // namespace platform
