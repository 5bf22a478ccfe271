#include "sim/MessagingApplication.h"

#include "platform/core/Dictionary.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMService.h"
#include "platform/ui/MessagingURL.h"

namespace sim {
namespace {

const char* const kWorkspaceDidTerminateApplication = "NSWorkspaceDidTerminateApplicationNotification";
const char* const kApplicationBundleIdentifierKey = "NSApplicationBundleIdentifier";

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
  auto parsed = platform::MessagingURL::parse(url);
  if (!parsed) return false;
  if (parsed->command() == "compose") return compose(url, *parsed);
  if (parsed->command() == "openbuddylist") return openBuddyList(*parsed);
  record("refused " + url);
  return false;
}

bool MessagingApplication::compose(const std::string& url, const platform::MessagingURL& parsed) {
  if (!running_) record("launched");
  running_ = true;
  Chat chat;
  chat.service = parsed.parameter("service").value_or("");
  chat.ID = parsed.parameter("id").value_or("");
  chat.textOnly = parsed.parameter("style").value_or("") == "IM";
  auto service = platform::IMService::serviceWithInternalName(chat.service);
  chat.knownBuddy = service && service->infoForScreenName(chat.ID) != nullptr;
  chat.url = url;
  record(std::string(chat.textOnly ? "text chat" : "chat") + " with " + chat.ID + " on " + chat.service +
         (chat.knownBuddy ? "" : " (not a known buddy)"));
  chats_.push_back(std::move(chat));
  return true;
}

bool MessagingApplication::openBuddyList(const platform::MessagingURL& parsed) {
  if (!running_) record("launched");
  running_ = true;
  auto service = parsed.parameter("service").value_or("");
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
