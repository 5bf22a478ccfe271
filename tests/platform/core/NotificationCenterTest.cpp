#include <string>
#include <vector>

#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/String.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

class Listener final : public Object {
  PLATFORM_SELECTORS(Listener, Object)
 public:
  explicit Listener(std::string name, std::vector<std::string>* journal) : name_(std::move(name)), journal_(journal) {}
  void heard(const ObjectPtr& argument) {
    auto notification = std::dynamic_pointer_cast<Notification>(argument);
    journal_->push_back(name_ + ":" + notification->name());
    if (onHeard) onHeard();
  }
  std::function<void()> onHeard;

 private:
  std::string name_;
  std::vector<std::string>* journal_;
};

const SelectorTable<Listener>& Listener::selectorTable() {
  static const SelectorTable<Listener> table{{"heard:", &Listener::heard}};
  return table;
}

class NotificationCenterTest : public kibtest::PlatformTest {
 protected:
  std::vector<std::string> journal;
  NotificationCenter center{"test"};
};

TEST_F(NotificationCenterTest, FiltersByNameAndSenderInRegistrationOrder) {
  Listener any("any", &journal), named("named", &journal), fromSender("sender", &journal);
  auto sender = makeString("me");
  center.addObserver(&any, "heard:", std::nullopt, nullptr);
  center.addObserver(&named, "heard:", "A", nullptr);
  center.addObserver(&fromSender, "heard:", std::nullopt, sender.get());

  center.postNotificationName("A");
  center.postNotificationName("B", sender);
  center.postNotificationName("A", makeString("me"));  // equal but not the same sender
  EXPECT_EQ(journal, (std::vector<std::string>{"any:A", "named:A", "any:B", "sender:B", "any:A", "named:A"}));

  journal.clear();
  center.removeObserver(&named, "A", nullptr);
  Listener stranger("stranger", &journal);
  center.removeObserver(&stranger);  // never registered: harmless
  center.postNotificationName("A");
  EXPECT_EQ(journal, (std::vector<std::string>{"any:A"}));
}

TEST_F(NotificationCenterTest, ObserversRemovedOrAddedDuringDeliveryAreHandledSafely) {
  Listener first("first", &journal), second("second", &journal), late("late", &journal);
  first.onHeard = [&] {
    center.removeObserver(&second);
    center.addObserver(&late, "heard:", std::nullopt, nullptr);
  };
  center.addObserver(&first, "heard:", std::nullopt, nullptr);
  center.addObserver(&second, "heard:", std::nullopt, nullptr);
  center.postNotificationName("N");
  EXPECT_EQ(journal, (std::vector<std::string>{"first:N"})) << "the removed observer is not called";
  first.onHeard = nullptr;
  center.postNotificationName("M");
  EXPECT_EQ(journal, (std::vector<std::string>{"first:N", "first:M", "late:M"}));
}

TEST_F(NotificationCenterTest, BlockObserversAndNamedSharedCentres) {
  std::vector<std::string> seen;
  auto& workspace = NotificationCenter::centerNamed("workspace");
  EXPECT_EQ(&workspace, &NotificationCenter::centerNamed("workspace"));
  EXPECT_NE(&workspace, &NotificationCenter::defaultCenter());
  auto token = workspace.addObserverForName("Quit", nullptr, [&](const NotificationPtr& n) {
    seen.push_back(stringValue(n->userInfo()->objectForKey("who")));
  });
  workspace.postNotificationName("Quit", nullptr, makeDictionary({{"who", makeString("app")}}));
  workspace.removeObserver(token.get());
  workspace.postNotificationName("Quit", nullptr, makeDictionary({{"who", makeString("again")}}));
  EXPECT_EQ(seen, (std::vector<std::string>{"app"}));
}

TEST_F(NotificationCenterTest, DistributedNotificationsArriveOnTheNextTurnNotDuringThePost) {
  auto& distributed = DistributedNotificationCenter::defaultCenter();
  EXPECT_EQ(&NotificationCenter::centerNamed("distributed"), &distributed);
  Listener listener("listener", &journal);
  distributed.addObserver(&listener, "heard:", "Hello", nullptr);
  distributed.postNotificationName("Hello");
  EXPECT_TRUE(journal.empty());
  drain(kEventTrackingRunLoopMode);
  EXPECT_EQ(journal, (std::vector<std::string>{"listener:Hello"}));
  distributed.removeObserver(&listener);
}

}  // namespace
