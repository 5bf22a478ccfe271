#include "sim/MessagingApplication.h"

#include <cctype>

#include "platform/core/Dictionary.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMService.h"

namespace sim {
namespace {

const char* const kScheme = "parlo:";
const char* const kWorkspaceDidTerminateApplication = "NSWorkspaceDidTerminateApplicationNotification";
const char* const kApplicationBundleIdentifierKey = "NSApplicationBundleIdentifier";

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Percent-decoding; a malformed escape is kept as it stands.
std::string unescape(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      int high = hexDigit(text[i + 1]), low = hexDigit(text[i + 2]);
      if (high >= 0 && low >= 0) {
        plain += static_cast<char>(high * 16 + low);
        i += 2;
        continue;
      }
    }
    plain += text[i];
  }
  return plain;
}

// The value of a query parameter (decoded), or nothing.
std::optional<std::string> parameter(const std::string& query, const std::string& name) {
  std::size_t start = 0;
  while (start <= query.size()) {
    auto end = query.find('&', start);
    if (end == std::string::npos) end = query.size();
    auto pair = query.substr(start, end - start);
    auto equals = pair.find('=');
    auto key = pair.substr(0, equals);
    if (key == name) return unescape(equals == std::string::npos ? "" : pair.substr(equals + 1));
    start = end + 1;
  }
  return std::nullopt;
}

bool startsWithIgnoringCase(const std::string& text, const std::string& prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(text[i])) != prefix[i]) return false;
  return true;
}

}  // namespace

std::shared_ptr<MessagingApplication> MessagingApplication::make(double endLatency) {
  auto application = std::make_shared<MessagingApplication>(endLatency);
  application->listen();
  return application;
}

MessagingApplication::~MessagingApplication() {
  if (shouldTerminateToken_)
    platform::DistributedNotificationCenter::defaultCenter().removeObserver(shouldTerminateToken_.get());
}

void MessagingApplication::listen() {
  std::weak_ptr<MessagingApplication> weakSelf = std::static_pointer_cast<MessagingApplication>(shared_from_this());
  shouldTerminateToken_ = platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
      platform::kKBParloScreenSharingShouldTerminateNotification, nullptr,
      [weakSelf](const platform::NotificationPtr&) {
        if (auto self = weakSelf.lock()) self->shouldTerminateSharing();
      });
}

bool MessagingApplication::openURL(const std::string& url) {
  if (!startsWithIgnoringCase(url, kScheme)) return false;
  auto rest = url.substr(std::string(kScheme).size());
  auto question = rest.find('?');
  auto command = rest.substr(0, question);
  auto query = question == std::string::npos ? std::string() : rest.substr(question + 1);
  if (command == "compose") return compose(url, query);
  if (command == "openbuddylist") return openBuddyList(query);
  record("refused " + url);
  return false;
}

bool MessagingApplication::compose(const std::string& url, const std::string& query) {
  if (!running_) record("launched");
  running_ = true;
  Chat chat;
  chat.service = parameter(query, "service").value_or("");
  chat.ID = parameter(query, "id").value_or("");
  chat.textOnly = parameter(query, "style").value_or("") == "IM";
  auto service = platform::IMService::serviceWithInternalName(chat.service);
  chat.knownBuddy = service && service->infoForScreenName(chat.ID) != nullptr;
  chat.url = url;
  record(std::string(chat.textOnly ? "text chat" : "chat") + " with " + chat.ID + " on " + chat.service +
         (chat.knownBuddy ? "" : " (not a known buddy)"));
  chats_.push_back(std::move(chat));
  return true;
}

bool MessagingApplication::openBuddyList(const std::string& query) {
  if (!running_) record("launched");
  running_ = true;
  auto service = parameter(query, "service").value_or("");
  record("buddy list " + service);
  buddyLists_.push_back(std::move(service));
  return true;
}

void MessagingApplication::startScreenSharing(std::optional<std::string> partner) {
  running_ = true;
  sharing_ = true;
  partner_ = std::move(partner);
  record("screen sharing started" + (partner_ ? " with " + *partner_ : std::string()));
  platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
      platform::kKBParloScreenSharingStartedNotification, partner_ ? platform::makeString(*partner_) : nullptr);
}

void MessagingApplication::endScreenSharing() {
  sharing_ = false;
  record("screen sharing ended");
  platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
      platform::kKBParloScreenSharingEndedNotification);
}

void MessagingApplication::quit() {
  running_ = false;
  sharing_ = false;
  record("quit");
  platform::NotificationCenter::centerNamed("workspace")
      .postNotificationName(kWorkspaceDidTerminateApplication, nullptr,
                            platform::makeDictionary({{kApplicationBundleIdentifierKey,
                                                       platform::makeString(platform::kKBAppBundleIdentifier)}}));
}

void MessagingApplication::shouldTerminateSharing() {
  if (!running_) return;
  record("asked to end screen sharing");
  std::weak_ptr<MessagingApplication> weakSelf = std::static_pointer_cast<MessagingApplication>(shared_from_this());
  platform::RunLoop::main().performBlock(endLatency_, platform::kCommonRunLoopModes, [weakSelf] {
    if (auto self = weakSelf.lock(); self && self->running_) self->endScreenSharing();
  });
}

void MessagingApplication::record(std::string line) {
  activity_.push_back(line);
  if (observer_) observer_(activity_.back());
}

}  // namespace sim
