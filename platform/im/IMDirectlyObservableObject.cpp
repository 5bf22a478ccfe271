#include "platform/im/IMDirectlyObservableObject.h"

#include <algorithm>

namespace platform {

void IMDirectlyObservableObject::addObserver(IMDirectlyObservableObjectObserver* observer) {
  if (!observer || hasObserver(observer)) return;
  observers_.push_back(observer);
}

void IMDirectlyObservableObject::removeObserver(IMDirectlyObservableObjectObserver* observer) {
  observers_.erase(std::remove(observers_.begin(), observers_.end(), observer), observers_.end());
}

bool IMDirectlyObservableObject::hasObserver(const IMDirectlyObservableObjectObserver* observer) const {
  return std::find(observers_.begin(), observers_.end(), observer) != observers_.end();
}

void IMDirectlyObservableObject::informObserversOfNotification(const NotificationPtr& notification) {
  if (!notification || observers_.empty()) return;
  auto keepAlive = weak_from_this().lock();
  // Deliver to the observers present now, skipping any that leave on the way.
  const auto snapshot = observers_;
  for (auto* observer : snapshot)
    if (hasObserver(observer)) observer->objectDidPostDirectNotification(notification);
}

void IMDirectlyObservableObject::informObserversOfWillChange() {
  // Observers only take note here; none of them joins or leaves.
  for (std::size_t index = 0; index < observers_.size(); ++index) observers_[index]->objectWillChange(*this);
}

void IMDirectlyObservableObject::postDirectNotification(const std::string& name, DictionaryPtr userInfo) {
  if (observers_.empty()) return;
  informObserversOfNotification(Notification::make(name, weak_from_this().lock(), std::move(userInfo)));
}

}  // namespace platform
