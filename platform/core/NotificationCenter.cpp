#include "platform/core/NotificationCenter.h"

#include <algorithm>
#include <map>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Log.h"

namespace platform {
namespace {

std::map<std::string, std::shared_ptr<NotificationCenter>>& namedCenters() {
  static auto* centers = new std::map<std::string, std::shared_ptr<NotificationCenter>>;
  return *centers;
}

class ObserverToken final : public Object {
 public:
  std::string className() const override { return "ObserverToken"; }
};

}  // namespace

NotificationCenter& NotificationCenter::defaultCenter() { return centerNamed("default"); }

NotificationCenter& NotificationCenter::centerNamed(const std::string& name) {
  if (name == "distributed") return DistributedNotificationCenter::defaultCenter();
  auto& centers = namedCenters();
  auto& center = centers[name];
  if (!center) center = std::make_shared<NotificationCenter>(name);
  return *center;
}

void NotificationCenter::resetSharedCenters() {
  for (auto& [name, center] : namedCenters()) center->removeAllObservers();
  DistributedNotificationCenter::defaultCenter().removeAllObservers();
}

void NotificationCenter::addObserver(Object* observer, std::string selector,
                                     std::optional<std::string> notificationName, const Object* sender) {
  if (!observer) return;
  auto registration = std::make_shared<Registration>();
  registration->observer = observer;
  registration->selector = std::move(selector);
  registration->name = std::move(notificationName);
  registration->sender = sender;
  registrations_.push_back(std::move(registration));
}

ObjectPtr NotificationCenter::addObserverForName(std::optional<std::string> notificationName, const Object* sender,
                                                 Block block) {
  auto registration = std::make_shared<Registration>();
  registration->token = std::make_shared<ObserverToken>();
  registration->observer = registration->token.get();
  registration->name = std::move(notificationName);
  registration->sender = sender;
  registration->block = std::move(block);
  auto token = registration->token;
  registrations_.push_back(std::move(registration));
  return token;
}

void NotificationCenter::removeObserver(const Object* observer) { removeObserver(observer, std::nullopt, nullptr); }

void NotificationCenter::removeObserver(const Object* observer, std::optional<std::string_view> notificationName,
                                        const Object* sender) {
  auto matches = [&](const std::shared_ptr<Registration>& r) {
    if (r->observer != observer) return false;
    if (notificationName && (!r->name || *r->name != *notificationName)) return false;
    if (sender && r->sender != sender) return false;
    return true;
  };
  for (auto& r : registrations_)
    if (matches(r)) r->active = false;
  registrations_.erase(std::remove_if(registrations_.begin(), registrations_.end(), matches), registrations_.end());
}

void NotificationCenter::removeAllObservers() {
  for (auto& r : registrations_) r->active = false;
  registrations_.clear();
}

std::size_t NotificationCenter::observerCount() const { return registrations_.size(); }

void NotificationCenter::postNotification(const NotificationPtr& notification) { deliver(notification); }

void NotificationCenter::postNotificationName(std::string notificationName, ObjectPtr object,
                                              DictionaryPtr userInfo) {
  postNotification(Notification::make(std::move(notificationName), std::move(object), std::move(userInfo)));
}

void NotificationCenter::deliver(const NotificationPtr& notification) {
  if (!notification) return;
  auto snapshot = registrations_;
  for (const auto& r : snapshot) {
    if (!r->active) continue;
    if (r->name && *r->name != notification->name()) continue;
    if (r->sender && r->sender != notification->object().get()) continue;
    if (r->block) {
      auto token = r->token;
      r->block(notification);
      continue;
    }
    auto* observer = const_cast<Object*>(r->observer);
    if (!observer->performSelector(r->selector, notification))
      Log::write(Log::Channel::System, observer->className() + " does not respond to " + r->selector);
  }
}

}  // namespace platform
