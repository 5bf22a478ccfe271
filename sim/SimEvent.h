#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/im/IMPersonStatus.h"

namespace sim {

// Something that happens in the simulated world at a given time: a buddy
// changes, an account or the daemon connects or disconnects, the messaging
// application shows a status text, shares the screen or quits.
struct SimEvent {
  enum class Type {
    BuddyStatus,        // account, handle; any of status, message, idle
    BuddyOnline,        // account, handle; status (default available), message
    BuddyOffline,       // account, handle
    BuddyGroups,        // account, handle, groups (with sort orders)
    BuddyCapabilities,  // account, handle; any of audio, video, conference
    AccountConnect,     // account
    AccountDisconnect,  // account
    DaemonDisconnect,
    DaemonConnect,
    StatusText,          // text; centre "distributed" (default), "service" or "both"
    ScreenSharingStart,  // partner (optional)
    ScreenSharingEnd,
    ApplicationQuit,
  };

  Type type = Type::BuddyStatus;
  double at = 0;  // seconds after the world started (scenario events)
  std::string account;
  std::string handle;
  std::optional<platform::IMPersonStatus> status;
  std::optional<std::string> message;
  std::optional<double> idle;
  std::optional<std::vector<std::string>> groups;
  std::map<std::string, std::uint32_t> sortOrders;
  std::optional<bool> audio;
  std::optional<bool> video;
  std::optional<bool> conference;
  std::string text;
  std::string centre = "distributed";
  std::optional<std::string> partner;

  // The type as scenario files spell it ("buddy-status", ...).
  static std::string typeName(Type type);
  static std::optional<Type> typeNamed(const std::string& name);
  static const std::vector<std::string>& typeNames();
  // Whether the type names an account, and a handle on it.
  static bool needsAccount(Type type);
  static bool needsHandle(Type type);

  // Makers for callers that script the world in C++.
  static SimEvent buddyStatus(std::string account, std::string handle, platform::IMPersonStatus status,
                              std::optional<std::string> message = std::nullopt);
  static SimEvent buddyOnline(std::string account, std::string handle);
  static SimEvent buddyOffline(std::string account, std::string handle);
  static SimEvent accountConnect(std::string account);
  static SimEvent accountDisconnect(std::string account);
  static SimEvent daemonDisconnect();
  static SimEvent daemonConnect();
  static SimEvent statusText(std::string text);
  static SimEvent screenSharingStart(std::optional<std::string> partner);
  static SimEvent screenSharingEnd();
  static SimEvent applicationQuit();

  // One line for transcripts: "buddy-status aim/jreyes77 status=away message=\"Lunch\"".
  std::string description() const;
};

}  // namespace sim
