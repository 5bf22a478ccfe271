#pragma once

#include <string>
#include <vector>

#include "platform/core/NotificationCenter.h"
#include "platform/im/IMDirectlyObservableObject.h"

namespace imtest {

// Records the names (and objects) of the notifications a direct observer receives.
class RecordingObserver : public platform::IMDirectlyObservableObjectObserver {
 public:
  void objectDidPostDirectNotification(const platform::NotificationPtr& notification) override {
    names.push_back(notification->name());
    objects.push_back(notification->object());
    if (onNotification) onNotification(notification);
  }
  void objectWillChange(platform::IMDirectlyObservableObject& object) override {
    if (recordsWillChange) names.push_back(kWillChange);
    if (onWillChange) onWillChange(object);
  }
  static constexpr const char* kWillChange = "(will change)";
  bool recordsWillChange = false;
  std::function<void(platform::IMDirectlyObservableObject&)> onWillChange;
  std::vector<std::string> names;
  std::vector<platform::ObjectPtr> objects;
  std::function<void(const platform::NotificationPtr&)> onNotification;
};

// Records every notification posted on one centre.
class CentreRecorder {
 public:
  explicit CentreRecorder(platform::NotificationCenter& centre) : centre_(centre) {
    token_ = centre.addObserverForName(std::nullopt, nullptr, [this](const platform::NotificationPtr& n) {
      names.push_back(n->name());
      objects.push_back(n->object());
    });
  }
  ~CentreRecorder() { centre_.removeObserver(token_.get()); }
  CentreRecorder(const CentreRecorder&) = delete;
  CentreRecorder& operator=(const CentreRecorder&) = delete;

  void clear() {
    names.clear();
    objects.clear();
  }

  std::vector<std::string> names;
  std::vector<platform::ObjectPtr> objects;

 private:
  platform::NotificationCenter& centre_;
  platform::ObjectPtr token_;
};

}  // namespace imtest
