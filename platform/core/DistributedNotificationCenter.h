#pragma once

#include "platform/core/NotificationCenter.h"

namespace platform {

// The system-wide centre. A post returns at once; observers receive the
// notification on the main run loop's next turn (in every mode).
class DistributedNotificationCenter final : public NotificationCenter {
 public:
  static DistributedNotificationCenter& defaultCenter();

  DistributedNotificationCenter() : NotificationCenter("distributed") {}

  void postNotification(const NotificationPtr& notification) override;

  std::string className() const override { return "DistributedNotificationCenter"; }
};

}  // namespace platform
