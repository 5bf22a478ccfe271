#include "platform/core/DistributedNotificationCenter.h"

#include "platform/core/RunLoop.h"

namespace platform {

DistributedNotificationCenter& DistributedNotificationCenter::defaultCenter() {
  static auto* center = new DistributedNotificationCenter;
  return *center;
}

void DistributedNotificationCenter::postNotification(const NotificationPtr& notification) {
  if (!notification) return;
  RunLoop::main().performBlock(0, kCommonRunLoopModes, [this, notification] { deliver(notification); });
}

}  // namespace platform
