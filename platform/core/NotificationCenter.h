#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/core/Notification.h"
#include "platform/core/Object.h"

namespace platform {

// Delivers notifications synchronously to its observers, in registration
// order, filtered by name and sender (identity). Observers are not owned; an
// observer removes itself before it goes away. Adding or removing observers
// while a notification is being delivered is safe: an observer removed during
// delivery is not called afterwards, one added during delivery is called from
// the next notification on.
class NotificationCenter : public Object {
 public:
  using Block = std::function<void(const NotificationPtr&)>;

  // The process-local default centre.
  static NotificationCenter& defaultCenter();
  // A shared centre by name, created on first use ("workspace", "service", …).
  static NotificationCenter& centerNamed(const std::string& name);
  // Removes every observer from every shared centre (tests).
  static void resetSharedCenters();

  explicit NotificationCenter(std::string name = "") : name_(std::move(name)) {}

  const std::string& name() const { return name_; }

  // Sends `selector` to the observer with the notification. An empty name
  // means every name; a null sender means any object.
  void addObserver(Object* observer, std::string selector, std::optional<std::string> notificationName,
                   const Object* sender);
  // A block observer; remove it with removeObserver(token).
  ObjectPtr addObserverForName(std::optional<std::string> notificationName, const Object* sender, Block block);

  // Removing an observer that never registered is harmless.
  void removeObserver(const Object* observer);
  void removeObserver(const Object* observer, std::optional<std::string_view> notificationName,
                      const Object* sender);
  void removeAllObservers();
  std::size_t observerCount() const;

  virtual void postNotification(const NotificationPtr& notification);
  void postNotificationName(std::string notificationName, ObjectPtr object = nullptr,
                            DictionaryPtr userInfo = nullptr);

  std::string className() const override { return "NotificationCenter"; }

 protected:
  void deliver(const NotificationPtr& notification);

 private:
  struct Registration {
    const Object* observer;
    std::string selector;
    std::optional<std::string> name;
    const Object* sender;
    Block block;
    ObjectPtr token;
    bool active = true;
  };

  std::string name_;
  std::vector<std::shared_ptr<Registration>> registrations_;
};

}  // namespace platform
