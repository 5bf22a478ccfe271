#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/core/Dictionary.h"
#include "platform/core/Notification.h"
#include "platform/core/Object.h"
#include "platform/core/SmallVector.h"
#include "platform/im/IMDirectlyObservableObjectObserver.h"

namespace platform {

// An object that hands its notifications straight to a set of observers
// instead of going through a notification centre. Observers are not owned;
// each removes itself before it goes away. The set keeps insertion order and
// holds an observer once. Adding or removing observers while a notification is
// being delivered is safe: an observer removed during delivery is not called
// afterwards; one added during delivery is called from the next notification on.
class IMDirectlyObservableObject : public Object {
 public:
  void addObserver(IMDirectlyObservableObjectObserver* observer);
  void removeObserver(IMDirectlyObservableObjectObserver* observer);
  bool hasObserver(const IMDirectlyObservableObjectObserver* observer) const;
  using Observers = SmallVector<IMDirectlyObservableObjectObserver*, 2>;
  const Observers& observers() const { return observers_; }

  // Delivers the notification to every observer, in order.
  void informObserversOfNotification(const NotificationPtr& notification);
  // Builds a notification with the receiver as object and delivers it.
  void postDirectNotification(const std::string& name, DictionaryPtr userInfo = nullptr);
  // Tells every observer, in order, that the receiver is about to change.
  void informObserversOfWillChange();

  std::string className() const override { return "IMDirectlyObservableObject"; }

 private:
  // Most objects have one observer or two.
  Observers observers_;
};

using IMDirectlyObservableObjectPtr = std::shared_ptr<IMDirectlyObservableObject>;

}  // namespace platform
