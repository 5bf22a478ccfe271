#pragma once

#include <memory>
#include <string>

#include "platform/core/Dictionary.h"
#include "platform/core/Object.h"

namespace platform {

// A notification: a name, an object (the sender or a payload) and an optional
// user-info dictionary.
class Notification final : public Object {
 public:
  Notification(std::string name, ObjectPtr object, DictionaryPtr userInfo)
      : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}

  static std::shared_ptr<Notification> make(std::string name, ObjectPtr object = nullptr,
                                            DictionaryPtr userInfo = nullptr) {
    return std::make_shared<Notification>(std::move(name), std::move(object), std::move(userInfo));
  }

  const std::string& name() const { return name_; }
  const ObjectPtr& object() const { return object_; }
  const DictionaryPtr& userInfo() const { return userInfo_; }

  std::string className() const override { return "Notification"; }
  std::string description() const override;

 private:
  std::string name_;
  ObjectPtr object_;
  DictionaryPtr userInfo_;
};

using NotificationPtr = std::shared_ptr<Notification>;

}  // namespace platform
