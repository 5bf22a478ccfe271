#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/core/Dictionary.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/Object.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace platform {

// A messaging service (AIM, the local-network service, Jabber, the
// video-calling service). The registered services form the platform's service
// list; the class operations look them up.
class IMService final : public Object {
 public:
  static IMServicePtr make(std::string name, std::string internalName, std::string localizedShortName);

  // The service list, in registration order.
  static const std::vector<IMServicePtr>& allServices();
  static IMServicePtr serviceWithName(const std::string& name);
  static IMServicePtr serviceWithInternalName(const std::string& internalName);
  // The local-network service (name "SubNet"), or nil when none is registered.
  static IMServicePtr subnetService();
  // The video-calling service (name "Vistel"), or nil.
  static IMServicePtr vistelService();
  // The service notification centre, NotificationCenter::centerNamed("service").
  static NotificationCenter& notificationCenter();

  // Backend: the service list. A second service with a registered name is refused (false).
  static bool registerService(const IMServicePtr& service);
  static void removeAllServices();

  const std::string& name() const { return name_; }
  const std::string& internalName() const { return internalName_; }
  const std::string& localizedShortName() const { return localizedShortName_; }
  bool isEnabled() const { return isEnabled_; }
  // Persistent services keep buddy lists and are offered as a display choice.
  bool isPersistent() const { return isPersistent_; }
  // The service's login state on the person-status scale: below 2 offline, 4 available.
  IMPersonStatus status() const { return status_; }

  // The person record of a screen name known to the service (on the buddy list
  // of one of its accounts), or nil: IMPersonFirstNameKey, IMPersonLastNameKey,
  // IMPersonScreenNameKey, IMPersonStatusKey, IMPersonServiceNameKey. The ID
  // is compared normalized; of several handles the most available one answers.
  DictionaryPtr infoForScreenName(const std::string& screenName) const;
  // One record per screen name the service knows, in account and list order.
  std::vector<DictionaryPtr> infoForAllScreenNames() const;

  // Backend setters; setEnabled and setStatus post IMServiceStatusChangedNotification on change.
  void setEnabled(bool enabled);
  void setPersistent(bool persistent) { isPersistent_ = persistent; }
  void setStatus(IMPersonStatus status);

  std::string className() const override { return "IMService"; }
  std::string description() const override { return name_; }

  IMService(std::string name, std::string internalName, std::string localizedShortName);

 private:
  std::vector<IMHandlePtr> knownHandles() const;

  std::string name_;
  std::string internalName_;
  std::string localizedShortName_;
  bool isEnabled_ = true;
  bool isPersistent_ = true;
  IMPersonStatus status_ = kIMPersonStatusOffline;
};

}  // namespace platform
