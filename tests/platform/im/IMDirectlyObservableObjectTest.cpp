#include <gtest/gtest.h>

#include "platform/im/IMDirectlyObservableObject.h"
#include "tests/platform/im/IMTestSupport.h"

using namespace platform;
using imtest::RecordingObserver;

namespace {

class Poster final : public IMDirectlyObservableObject {};

}  // namespace

TEST(IMDirectlyObservableObjectTest, DeliversToEachObserverOnceInOrderWithTheSenderAsObject) {
  auto poster = std::make_shared<Poster>();
  std::vector<std::string> calls;
  RecordingObserver first, second;
  first.onNotification = [&](const NotificationPtr&) { calls.push_back("first"); };
  second.onNotification = [&](const NotificationPtr&) { calls.push_back("second"); };
  poster->addObserver(&first);
  poster->addObserver(&second);
  poster->addObserver(&first);  // already there
  poster->addObserver(nullptr);
  EXPECT_EQ(poster->observers().size(), 2u);

  poster->postDirectNotification("Ping");
  EXPECT_EQ(calls, (std::vector<std::string>{"first", "second"}));
  EXPECT_EQ(first.objects.at(0).get(), poster.get());

  poster->removeObserver(&first);
  poster->informObserversOfNotification(Notification::make("Forwarded", nullptr));
  EXPECT_EQ(first.names, (std::vector<std::string>{"Ping"}));
  EXPECT_EQ(second.names, (std::vector<std::string>{"Ping", "Forwarded"}));
}

TEST(IMDirectlyObservableObjectTest, ObserversChangingDuringDeliveryAreHandledSafely) {
  auto poster = std::make_shared<Poster>();
  RecordingObserver remover, removed, added, selfRemover;
  remover.onNotification = [&](const NotificationPtr&) {
    poster->removeObserver(&removed);
    poster->addObserver(&added);
  };
  selfRemover.onNotification = [&](const NotificationPtr&) { poster->removeObserver(&selfRemover); };
  poster->addObserver(&selfRemover);
  poster->addObserver(&remover);
  poster->addObserver(&removed);

  poster->postDirectNotification("One");
  EXPECT_EQ(selfRemover.names.size(), 1u);
  EXPECT_TRUE(removed.names.empty()) << "an observer removed during delivery is not called afterwards";
  EXPECT_TRUE(added.names.empty()) << "an observer added during delivery waits for the next notification";

  poster->postDirectNotification("Two");
  EXPECT_EQ(selfRemover.names.size(), 1u);
  EXPECT_EQ(added.names, (std::vector<std::string>{"Two"}));
  EXPECT_EQ(remover.names.size(), 2u);
}

TEST(IMDirectlyObservableObjectTest, APosterReleasedByItsObserverSurvivesTheDelivery) {
  auto poster = std::make_shared<Poster>();
  std::weak_ptr<Poster> weak = poster;
  RecordingObserver dropper, after;
  dropper.onNotification = [&](const NotificationPtr&) { poster.reset(); };
  poster->addObserver(&dropper);
  poster->addObserver(&after);
  Poster* raw = poster.get();
  raw->postDirectNotification("Bye");
  EXPECT_EQ(after.names.size(), 1u);
  after.objects.clear();  // the recorded notification objects were the last owners
  dropper.objects.clear();
  EXPECT_TRUE(weak.expired());
}
