#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Source/BuddyList/KibNotifications.h"
#include "platform/core/Notification.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMDirectlyObservableObjectObserver.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPerson.h"
#include "platform/im/IMService.h"
#include "tests/support/PlatformTest.h"

namespace kibtest {

// Records what an observable object hands its direct observers, and stops
// observing when it goes away.
class DirectRecorder final : public platform::IMDirectlyObservableObjectObserver {
 public:
  ~DirectRecorder() override {
    for (const auto& weak : observed_)
      if (auto object = weak.lock()) object->removeObserver(this);
  }

  void observe(const platform::IMDirectlyObservableObjectPtr& object) {
    object->addObserver(this);
    observed_.push_back(object);
  }

  void objectDidPostDirectNotification(const platform::NotificationPtr& notification) override {
    received.push_back(notification);
  }

  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& n : received) result.push_back(n->name());
    return result;
  }

  // The handle named responsible in the user info of the notification at the index.
  platform::ObjectPtr responsible(std::size_t index) const {
    const auto& info = received.at(index)->userInfo();
    return info ? info->objectForKey(kib::kKibIMHandleResponsibleKey) : nullptr;
  }

  void clear() { received.clear(); }

  std::vector<platform::NotificationPtr> received;

 private:
  std::vector<std::weak_ptr<platform::IMDirectlyObservableObject>> observed_;
};

// A small messaging world of real platform objects: three registered services
// (AIM, the local-network service, Jabber) and an account on each, two on AIM.
class BuddyListTest : public PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    aim = platform::IMService::make("AIM", "aim", "AIM");
    subnet = platform::IMService::make(platform::IMServiceNameSubNet, "subnet", "Local");
    jabber = platform::IMService::make("Jabber", "jabber", "Jabber");
    for (const auto& service : {aim, subnet, jabber}) platform::IMService::registerService(service);
    aimAccount = platform::IMAccount::make(aim, "me");
    aimAccount2 = platform::IMAccount::make(aim, "me2");
    subnetAccount = platform::IMAccount::make(subnet, "me@host");
    jabberAccount = platform::IMAccount::make(jabber, "me@jabber.example");
  }

  static platform::IMHandlePtr handle(const platform::IMAccountPtr& account, const std::string& ID,
                                      platform::IMPersonStatus status = platform::kIMPersonStatusOffline,
                                      const platform::IMPersonPtr& person = nullptr) {
    auto h = platform::IMHandle::make(account, ID, person);
    h->updateStatus(status, "");
    return h;
  }

  platform::IMServicePtr aim, subnet, jabber;
  platform::IMAccountPtr aimAccount, aimAccount2, subnetAccount, jabberAccount;
};

}  // namespace kibtest
