#include "platform/im/IMServiceAgent.h"

#include "platform/im/IMConstants.h"
#include "platform/im/IMService.h"

namespace platform {
namespace {

IMServiceAgentPtr& sharedSlot() {
  static IMServiceAgentPtr shared = std::make_shared<IMServiceAgent>();
  return shared;
}

}  // namespace

const IMServiceAgentPtr& IMServiceAgent::sharedAgent() { return sharedSlot(); }

void IMServiceAgent::resetSharedAgent() { sharedSlot() = std::make_shared<IMServiceAgent>(); }

std::string IMServiceAgent::imageNameForStatus(IMPersonStatus status) {
  switch (status) {
    case kIMPersonStatusAvailable:
      return "status-available";
    case kIMPersonStatusAway:
      return "status-away";
    case kIMPersonStatusIdle:
      return "status-idle";
    default:
      return "status-offline";
  }
}

void IMServiceAgent::setMyAvailableMessages(std::vector<std::string> messages) {
  if (messages == availableMessages_) return;
  availableMessages_ = std::move(messages);
  notificationCenter().postNotificationName(IMCustomStatusMessagesChangedNotification);
}

void IMServiceAgent::setMyAwayMessages(std::vector<std::string> messages) {
  if (messages == awayMessages_) return;
  awayMessages_ = std::move(messages);
  notificationCenter().postNotificationName(IMCustomStatusMessagesChangedNotification);
}

bool IMServiceAgent::launchIfNecessary() {
  if (launched_) return false;
  launched_ = true;
  return true;
}

NotificationCenter& IMServiceAgent::notificationCenter() { return IMService::notificationCenter(); }

void IMServiceAgent::noteStatusImagesChangedAppearance() {
  notificationCenter().postNotificationName(IMStatusImagesChangedAppearanceNotification);
}

}  // namespace platform
