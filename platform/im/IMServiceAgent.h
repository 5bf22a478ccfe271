#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/core/NotificationCenter.h"
#include "platform/core/Object.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace platform {

// The service agent: the user's saved status messages, the status images and
// the music-player interop.
class IMServiceAgent final : public Object {
 public:
  static const IMServiceAgentPtr& sharedAgent();
  static void resetSharedAgent();

  // Image names of the status images: "status-available", "status-away",
  // "status-idle", and "status-offline" for every other status.
  static std::string imageNameForStatus(IMPersonStatus status);

  const std::vector<std::string>& myAvailableMessages() const { return availableMessages_; }
  const std::vector<std::string>& myAwayMessages() const { return awayMessages_; }
  // Each posts IMCustomStatusMessagesChangedNotification on the service centre when the list changes.
  void setMyAvailableMessages(std::vector<std::string> messages);
  void setMyAwayMessages(std::vector<std::string> messages);

  // Starts the agent unless it runs; answers whether it had to start it.
  bool launchIfNecessary();
  bool isLaunched() const { return launched_; }

  // The same centre as IMService::notificationCenter().
  NotificationCenter& notificationCenter();
  // Posts IMStatusImagesChangedAppearanceNotification on the service centre.
  void noteStatusImagesChangedAppearance();

  // Music-player interop (IMMelodixInteropAvailable).
  bool melodixInteropAvailable() const { return melodixInteropAvailable_; }
  void setMelodixInteropAvailable(bool available) { melodixInteropAvailable_ = available; }

  std::string className() const override { return "IMServiceAgent"; }

 private:
  std::vector<std::string> availableMessages_;
  std::vector<std::string> awayMessages_;
  bool launched_ = false;
  bool melodixInteropAvailable_ = false;
};

}  // namespace platform
