#pragma once

#include "platform/core/Notification.h"

namespace platform {

class IMDirectlyObservableObject;

// Receives the notifications an IMDirectlyObservableObject hands to its observers.
class IMDirectlyObservableObjectObserver {
 public:
  virtual ~IMDirectlyObservableObjectObserver() = default;
  virtual void objectDidPostDirectNotification(const NotificationPtr& notification) = 0;
  // Told just before the object changes state that its notifications will
  // report afterwards, so that an observer can keep what it derived from the
  // old state. Nothing by default.
  virtual void objectWillChange(IMDirectlyObservableObject& /*object*/) {}
};

}  // namespace platform
