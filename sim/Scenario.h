#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/im/IMConstants.h"
#include "platform/im/IMPersonStatus.h"
#include "sim/SimEvent.h"

namespace sim {

// The content of a scenario file (docs/scenario.md), as loaded and checked by
// ScenarioLoader. Every reference in it resolves: accounts name services,
// handles and events name accounts (and handles on them).

struct ScenarioService {
  std::string name;
  std::string internalName;
  std::string shortName;
  bool enabled = true;
  bool persistent = true;
  // The initial status; when absent it follows the service's accounts.
  std::optional<platform::IMPersonStatus> status;
};

struct ScenarioAccount {
  std::string id;       // the scenario's name for the account
  std::string service;  // a service name
  std::string login;
  std::uint64_t capabilities = 0;
  bool active = true;
  std::uint32_t loginStatus = platform::kIMAccountLoginStatusConnected;
  platform::IMPersonStatus myStatus = platform::kIMPersonStatusAvailable;
  std::string myMessage;
  bool invisible = false;
  std::optional<std::string> nowPlaying;  // absent: filled in from the message
};

struct ScenarioHandle {
  std::string account;  // an account id
  std::string id;       // the screen name
  std::vector<std::string> groups;
  std::map<std::string, std::uint32_t> sortOrders;  // only the orders the file gives
  platform::IMPersonStatus status = platform::kIMPersonStatusAvailable;
  std::string message;
  double idle = 0;  // seconds idle when the world starts (idle status only)
  bool audio = false;
  bool video = false;
  bool conference = true;
  std::string mobile;  // mobile device name, "" when not on a mobile device
  std::vector<std::string> emails;
  std::map<std::string, std::string> otherServiceIDs;
  std::uint32_t authRequest = platform::kIMAuthRequestNone;
  std::string nickname;
  std::string statusURL;
  bool blocked = false;
};

struct ScenarioPerson {
  std::string id;
  std::string firstName;
  std::string lastName;
  std::vector<std::string> emails;
  std::vector<ScenarioHandle> handles;
};

struct ScenarioDaemon {
  bool connected = true;
  std::uint64_t vcCapabilities = 0;
  std::optional<std::string> nowPlayingFormat;  // absent: the platform's music format
};

struct ScenarioMusic {
  bool interop = false;
  std::string currentTrack;
};

// How long the simulated daemon and application take to answer (seconds).
struct ScenarioLatency {
  double status = 0.25;           // setMyStatus:message: until the accounts show it
  double login = 1.0;             // a log-in request until the account is connected
  double screenSharingEnd = 0.5;  // should-terminate until the ended notification
};

struct Scenario {
  std::string source;  // the file name, or "built-in scenario"
  std::string description;
  std::vector<ScenarioService> services;
  std::vector<ScenarioAccount> accounts;
  std::vector<ScenarioPerson> people;
  std::vector<std::string> availableMessages;
  std::vector<std::string> awayMessages;
  ScenarioMusic music;
  ScenarioDaemon daemon;
  ScenarioLatency latency;
  std::vector<SimEvent> events;  // in file order; each carries its time

  const ScenarioAccount* accountWithID(const std::string& id) const;
  const ScenarioService* serviceNamed(const std::string& name) const;
};

}  // namespace sim
