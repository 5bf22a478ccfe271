#pragma once

#include "platform/core/Notification.h"

namespace platform {

// Receives the notifications an IMDirectlyObservableObject hands to its observers.
class IMDirectlyObservableObjectObserver {
 public:
  virtual ~IMDirectlyObservableObjectObserver() = default;
  virtual void objectDidPostDirectNotification(const NotificationPtr& notification) = 0;
};

}  // namespace platform
