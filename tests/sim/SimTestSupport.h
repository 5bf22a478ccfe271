#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/core/NotificationCenter.h"

namespace simtest {

// The repository root: from the test environment, else the one the build names.
inline std::filesystem::path sourceDir() {
  if (const char* dir = std::getenv("KIB_TEST_SOURCE_DIR")) return dir;
  return KIB_SOURCE_DIR;  // the build compiles it in; __FILE__ may be relative to the build
}

// A small world: two AIM accounts and an offline Jabber account, three handles, three events.
inline const char* const kSmallScenario = R"({
  "services": [
    { "name": "AIM" },
    { "name": "Jabber", "internalName": "JabberInternal", "shortName": "Jab" }
  ],
  "accounts": [
    { "id": "aim", "service": "AIM", "login": "me", "capabilities": ["buddyList"] },
    { "id": "aim2", "service": "AIM", "login": "me2", "capabilities": "0x4000008000", "myStatus": "away",
      "myMessage": "Busy" },
    { "id": "jab", "service": "Jabber", "login": "me@j", "loginStatus": "offline", "invisible": true }
  ],
  "people": [
    { "id": "jane", "firstName": "Jane", "lastName": "Doe", "handles": [
      { "account": "aim", "id": "janedoe", "groups": ["Friends", { "name": "Work", "sortOrder": 3 }],
        "status": "away", "message": "Out", "audio": true, "conference": false },
      { "account": "jab", "id": "jane@j", "status": "available" }
    ] },
    { "id": "bob", "handles": [ { "account": "aim2", "id": "bob", "status": "idle", "idle": 120, "authRequest": true } ] }
  ],
  "savedMessages": { "available": ["Here"], "away": ["Gone"] },
  "music": { "interop": true, "currentTrack": "Song" },
  "daemon": { "vcCapabilities": 917504 },
  "events": [
    { "at": 5, "type": "buddy-status", "account": "aim", "handle": "janedoe", "status": "available", "message": "Back" },
    { "at": 12, "type": "account-disconnect", "account": "aim2" },
    { "at": 12, "type": "status-text", "text": "Hello" }
  ]
})";

// Records the notifications posted on one centre.
class CentreRecorder {
 public:
  explicit CentreRecorder(platform::NotificationCenter& centre) : centre_(centre) {
    token_ = centre.addObserverForName(std::nullopt, nullptr, [this](const platform::NotificationPtr& n) {
      names.push_back(n->name());
      notifications.push_back(n);
    });
  }
  ~CentreRecorder() { centre_.removeObserver(token_.get()); }
  CentreRecorder(const CentreRecorder&) = delete;
  CentreRecorder& operator=(const CentreRecorder&) = delete;

  std::size_t count(const std::string& name) const {
    std::size_t n = 0;
    for (const auto& each : names) n += each == name;
    return n;
  }
  void clear() {
    names.clear();
    notifications.clear();
  }

  std::vector<std::string> names;
  std::vector<platform::NotificationPtr> notifications;

 private:
  platform::NotificationCenter& centre_;
  platform::ObjectPtr token_;
};

}  // namespace simtest
