#include "sim/SimEvent.h"

#include <cstdio>
#include <utility>

namespace sim {
namespace {

const std::vector<std::pair<SimEvent::Type, std::string>>& typeTable() {
  using Type = SimEvent::Type;
  static const std::vector<std::pair<Type, std::string>> table = {
      {Type::BuddyStatus, "buddy-status"},
      {Type::BuddyOnline, "buddy-online"},
      {Type::BuddyOffline, "buddy-offline"},
      {Type::BuddyGroups, "buddy-groups"},
      {Type::BuddyCapabilities, "buddy-capabilities"},
      {Type::AccountConnect, "account-connect"},
      {Type::AccountDisconnect, "account-disconnect"},
      {Type::DaemonDisconnect, "daemon-disconnect"},
      {Type::DaemonConnect, "daemon-connect"},
      {Type::StatusText, "status-text"},
      {Type::ScreenSharingStart, "screen-sharing-start"},
      {Type::ScreenSharingEnd, "screen-sharing-end"},
      {Type::ApplicationQuit, "application-quit"},
  };
  return table;
}

std::string inQuotes(const std::string& text) { return "\"" + text + "\""; }

std::string yesNo(bool value) { return value ? "yes" : "no"; }

std::string secondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", seconds);
  return text;
}

}  // namespace

std::string SimEvent::typeName(Type type) {
  for (const auto& [t, name] : typeTable())
    if (t == type) return name;
  return "unknown";
}

std::optional<SimEvent::Type> SimEvent::typeNamed(const std::string& name) {
  for (const auto& [type, n] : typeTable())
    if (n == name) return type;
  return std::nullopt;
}

const std::vector<std::string>& SimEvent::typeNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const auto& [type, name] : typeTable()) all.push_back(name);
    return all;
  }();
  return names;
}

bool SimEvent::needsAccount(Type type) {
  return needsHandle(type) || type == Type::AccountConnect || type == Type::AccountDisconnect;
}

bool SimEvent::needsHandle(Type type) {
  return type == Type::BuddyStatus || type == Type::BuddyOnline || type == Type::BuddyOffline ||
         type == Type::BuddyGroups || type == Type::BuddyCapabilities;
}

SimEvent SimEvent::buddyStatus(std::string account, std::string handle, platform::IMPersonStatus status,
                               std::optional<std::string> message) {
  SimEvent event;
  event.type = Type::BuddyStatus;
  event.account = std::move(account);
  event.handle = std::move(handle);
  event.status = status;
  event.message = std::move(message);
  return event;
}

SimEvent SimEvent::buddyOnline(std::string account, std::string handle) {
  SimEvent event;
  event.type = Type::BuddyOnline;
  event.account = std::move(account);
  event.handle = std::move(handle);
  return event;
}

SimEvent SimEvent::buddyOffline(std::string account, std::string handle) {
  SimEvent event;
  event.type = Type::BuddyOffline;
  event.account = std::move(account);
  event.handle = std::move(handle);
  return event;
}

SimEvent SimEvent::accountConnect(std::string account) {
  SimEvent event;
  event.type = Type::AccountConnect;
  event.account = std::move(account);
  return event;
}

SimEvent SimEvent::accountDisconnect(std::string account) {
  SimEvent event;
  event.type = Type::AccountDisconnect;
  event.account = std::move(account);
  return event;
}

SimEvent SimEvent::daemonDisconnect() {
  SimEvent event;
  event.type = Type::DaemonDisconnect;
  return event;
}

SimEvent SimEvent::daemonConnect() {
  SimEvent event;
  event.type = Type::DaemonConnect;
  return event;
}

SimEvent SimEvent::statusText(std::string text) {
  SimEvent event;
  event.type = Type::StatusText;
  event.text = std::move(text);
  return event;
}

SimEvent SimEvent::screenSharingStart(std::optional<std::string> partner) {
  SimEvent event;
  event.type = Type::ScreenSharingStart;
  event.partner = std::move(partner);
  return event;
}

SimEvent SimEvent::screenSharingEnd() {
  SimEvent event;
  event.type = Type::ScreenSharingEnd;
  return event;
}

SimEvent SimEvent::applicationQuit() {
  SimEvent event;
  event.type = Type::ApplicationQuit;
  return event;
}

std::string SimEvent::description() const {
  std::string text = typeName(type);
  if (needsHandle(type)) {
    text += " " + account + "/" + handle;
  } else if (needsAccount(type)) {
    text += " " + account;
  }
  if (status) text += " status=" + platform::IMNameOfPersonStatus(*status);
  if (message) text += " message=" + inQuotes(*message);
  if (idle) text += " idle=" + secondsText(*idle);
  if (groups) {
    std::string names;
    for (const auto& group : *groups) names += (names.empty() ? "" : ",") + group;
    text += " groups=" + inQuotes(names);
  }
  if (audio) text += " audio=" + yesNo(*audio);
  if (video) text += " video=" + yesNo(*video);
  if (conference) text += " conference=" + yesNo(*conference);
  if (type == Type::StatusText)
    text += " " + inQuotes(this->text) + (centre == "distributed" ? "" : " centre=" + centre);
  if (type == Type::ScreenSharingStart) text += partner ? " partner=" + inQuotes(*partner) : " (no partner)";
  return text;
}

}  // namespace sim
