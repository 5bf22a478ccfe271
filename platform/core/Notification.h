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
      : ownName_(std::move(name)), name_(&ownName_), object_(std::move(object)), userInfo_(std::move(userInfo)) {}
  // Borrows the name, which must outlive the notification (a name constant).
  Notification(const std::string* constantName, ObjectPtr object, DictionaryPtr userInfo)
      : name_(constantName), object_(std::move(object)), userInfo_(std::move(userInfo)) {}
  // A copy would point at the original's name.
  Notification(const Notification&) = delete;
  Notification& operator=(const Notification&) = delete;

  static std::shared_ptr<Notification> make(std::string name, ObjectPtr object = nullptr,
                                            DictionaryPtr userInfo = nullptr) {
    return std::make_shared<Notification>(std::move(name), std::move(object), std::move(userInfo));
  }
  // For the names a class posts again and again: no copy of the name per notification.
  static std::shared_ptr<Notification> makeWithConstantName(const std::string& constantName, ObjectPtr object,
                                                            DictionaryPtr userInfo = nullptr) {
    return std::make_shared<Notification>(&constantName, std::move(object), std::move(userInfo));
  }

  const std::string& name() const { return *name_; }
  const ObjectPtr& object() const { return object_; }
  const DictionaryPtr& userInfo() const { return userInfo_; }

  std::string className() const override { return "Notification"; }
  std::string description() const override;

 private:
  std::string ownName_;
  const std::string* name_;  // ownName_ or a constant
  ObjectPtr object_;
  DictionaryPtr userInfo_;
};

using NotificationPtr = std::shared_ptr<Notification>;

// A name constant as a string that lives as long as the program, for makeWithConstantName.
template <const char* const& Name>
const std::string& constantName() {
  static const std::string name(Name);
  return name;
}

}  // namespace platform
