#include "platform/im/IMDirectlyObservableObject.h"

#include <algorithm>
#include <array>
#include <span>

namespace platform {

void IMDirectlyObservableObject::addObserver(IMDirectlyObservableObjectObserver* observer) {
  if (!observer || hasObserver(observer)) return;
  observers_.push_back(observer);
}

void IMDirectlyObservableObject::removeObserver(IMDirectlyObservableObjectObserver* observer) {
  // Held once at most; the latest observers tend to leave first.
  auto found = std::find(observers_.rbegin(), observers_.rend(), observer);
  if (found != observers_.rend()) observers_.erase(std::next(found).base());
}

bool IMDirectlyObservableObject::hasObserver(const IMDirectlyObservableObjectObserver* observer) const {
  return std::find(observers_.begin(), observers_.end(), observer) != observers_.end();
}

void IMDirectlyObservableObject::informObserversOfNotification(const NotificationPtr& notification) {
  if (!notification || observers_.empty()) return;
  auto keepAlive = weak_from_this().lock();
  // Deliver to the observers present now, skipping any that leave on the way.
  // Most objects have one or two observers: their snapshot stays on the stack.
  constexpr std::size_t kInlineObservers = 4;
  std::array<IMDirectlyObservableObjectObserver*, kInlineObservers> inlineSnapshot;
  std::vector<IMDirectlyObservableObjectObserver*> heapSnapshot;
  std::span<IMDirectlyObservableObjectObserver* const> snapshot;
  if (observers_.size() <= kInlineObservers) {
    std::copy(observers_.begin(), observers_.end(), inlineSnapshot.begin());
    snapshot = std::span(inlineSnapshot.data(), observers_.size());
  } else {
    heapSnapshot.assign(observers_.begin(), observers_.end());
    snapshot = heapSnapshot;
  }
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
