#include <poll.h>
#include <unistd.h>

#include <limits>
#include <string>
#include <vector>

#include "platform/core/Date.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

// Records the selectors it is sent, with the virtual time.
class Recorder final : public Object {
  PLATFORM_SELECTORS(Recorder, Object)
 public:
  void ping(const ObjectPtr& argument) {
    auto timer = std::dynamic_pointer_cast<Timer>(argument);
    calls.push_back("ping:" + stringValue(timer ? timer->userInfo() : argument));
  }
  void pong(const ObjectPtr&) { calls.push_back("pong"); }
  void tick(const ObjectPtr&) { ticks.push_back(Clock::current().now()); }
  std::vector<std::string> calls;
  std::vector<double> ticks;
};

const SelectorTable<Recorder>& Recorder::selectorTable() {
  static const SelectorTable<Recorder> table{
      {"ping:", &Recorder::ping}, {"pong:", &Recorder::pong}, {"tick:", &Recorder::tick}};
  return table;
}

class RunLoopTest : public kibtest::PlatformTest {
 protected:
  RunLoop& loop() { return RunLoop::main(); }
  std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
};

TEST_F(RunLoopTest, TimersRespectTheModesTheyWereAddedIn) {
  auto defaultOnly = Timer::timerWithTimeInterval(1.0, recorder, "ping:", makeString("default"), false);
  auto both = Timer::timerWithTimeInterval(1.0, recorder, "ping:", makeString("both"), false);
  loop().addTimer(defaultOnly, kDefaultRunLoopMode);
  loop().addTimer(both, kDefaultRunLoopMode);
  loop().addTimer(both, kEventTrackingRunLoopMode);

  advance(2.0, kEventTrackingRunLoopMode);
  EXPECT_EQ(recorder->calls, (std::vector<std::string>{"ping:both"}));

  // Back in the default mode the overdue timer fires at once.
  drain();
  EXPECT_EQ(recorder->calls, (std::vector<std::string>{"ping:both", "ping:default"}));
  EXPECT_FALSE(defaultOnly->isValid()) << "a one-shot timer is invalidated after firing";
}

TEST_F(RunLoopTest, RepeatingTimerKeepsItsPlannedScheduleAndCollapsesMissedFirings) {
  double start = now();
  auto timer = Timer::scheduledTimerWithTimeInterval(1.0, recorder, "tick:", nullptr, true);
  advance(3.5);
  ASSERT_EQ(recorder->ticks.size(), 3u);
  EXPECT_DOUBLE_EQ(recorder->ticks[0], start + 1.0);
  EXPECT_DOUBLE_EQ(recorder->ticks[2], start + 3.0);

  // Five intervals pass while the loop is blocked: one firing, then the plan resumes.
  clock().advance(5.2);
  drain();
  EXPECT_EQ(recorder->ticks.size(), 4u);
  EXPECT_DOUBLE_EQ(timer->fireDate(), start + 9.0);
  advance(1.0);
  EXPECT_EQ(recorder->ticks.size(), 5u);
  EXPECT_DOUBLE_EQ(recorder->ticks.back(), start + 9.0);
  timer->invalidate();
  advance(5.0);
  EXPECT_EQ(recorder->ticks.size(), 5u);
}

TEST_F(RunLoopTest, DelayedPerformsRunInDueOrderAndCancelBySelectorOrTarget) {
  auto other = std::make_shared<Recorder>();
  loop().performSelectorAfterDelay(recorder, "ping:", makeString("late"), 2.0);
  loop().performSelectorAfterDelay(recorder, "ping:", makeString("early"), 1.0);
  loop().performSelectorAfterDelay(recorder, "pong:", nullptr, 1.0);
  loop().performSelectorAfterDelay(other, "pong:", nullptr, 1.0);
  EXPECT_EQ(loop().pendingPerformCount(recorder.get()), 3u);

  loop().cancelPreviousPerformRequests(recorder.get(), "ping:");
  advance(3.0);
  EXPECT_EQ(recorder->calls, (std::vector<std::string>{"pong"})) << "cancelling ping: leaves pong:";
  EXPECT_EQ(other->calls, (std::vector<std::string>{"pong"}));

  loop().performSelectorAfterDelay(recorder, "ping:", makeString("a"), 1.0);
  loop().performSelectorAfterDelay(recorder, "ping:", makeString("b"), 1.0);
  loop().cancelPreviousPerformRequests(recorder.get(), "ping:", makeString("a").get());
  advance(1.0);
  EXPECT_EQ(recorder->calls.back(), "ping:b") << "only the equal argument is cancelled";

  loop().performSelectorAfterDelay(recorder, "ping:", makeString("x"), 1.0);
  loop().performSelectorAfterDelay(recorder, "pong:", nullptr, 1.0);
  loop().cancelPreviousPerformRequests(recorder.get());
  advance(2.0);
  EXPECT_EQ(recorder->calls.size(), 2u);
}

TEST_F(RunLoopTest, TiesRunInSchedulingOrderAndWorkScheduledInsideWaitsForTheNextPass) {
  std::vector<std::string> order;
  loop().performBlock(1.0, kDefaultRunLoopMode, [&] {
    order.push_back("first");
    loop().performBlock(0, kDefaultRunLoopMode, [&] { order.push_back("nested"); });
  });
  loop().performBlock(1.0, kDefaultRunLoopMode, [&] { order.push_back("second"); });
  advance(1.0);
  EXPECT_EQ(order, (std::vector<std::string>{"first", "second", "nested"}));
}

TEST_F(RunLoopTest, SleepingThroughTheClockMovesVirtualTimeWithoutRunningWork) {
  double start = now();
  loop().performSelectorAfterDelay(recorder, "pong:", nullptr, 0.5);
  Clock::current().sleep(1.0);
  EXPECT_DOUBLE_EQ(now(), start + 1.0);
  EXPECT_TRUE(recorder->calls.empty());
  EXPECT_NEAR(Date::now()->timeIntervalSinceReferenceDate(), start + 1.0, 1e-9);
}

TEST_F(RunLoopTest, AnExceptionInAPerformIsLoggedAndTheLoopGoesOn) {
  loop().performBlock(0.1, kDefaultRunLoopMode, [] { throw std::runtime_error("boom"); });
  loop().performSelectorAfterDelay(recorder, "pong:", nullptr, 0.2);
  loop().performSelectorAfterDelay(recorder, "nothing:", nullptr, 0.3);
  advance(1.0);
  EXPECT_EQ(recorder->calls, (std::vector<std::string>{"pong"}));
  auto system = linesOf(Log::Channel::System);
  ASSERT_EQ(system.size(), 2u);
  EXPECT_NE(system[0].find("boom"), std::string::npos);
  EXPECT_NE(system[1].find("does not respond to nothing:"), std::string::npos);
}

TEST_F(RunLoopTest, StopEndsRunUntilEarly) {
  double start = now();
  loop().performBlock(2.0, kDefaultRunLoopMode, [&] { loop().stop(); });
  loop().runUntil(start + 100.0);
  EXPECT_DOUBLE_EQ(now(), start + 2.0);
}

}  // namespace

namespace {

// Cancels another object's performs from its destructor.
class Canceller final : public Object {
 public:
  explicit Canceller(const Object* other) : other_(other) {}
  ~Canceller() override { RunLoop::main().cancelPreviousPerformRequests(other_); }
  std::string className() const override { return "Canceller"; }

 private:
  const Object* other_;
};

TEST_F(RunLoopTest, ATargetReleasedByACancelMayCancelOtherPerformsFromItsDestructor) {
  auto other = std::make_shared<Recorder>();
  auto canceller = std::make_shared<Canceller>(other.get());
  loop().performSelectorAfterDelay(canceller, "anything:", nullptr, 1.0);
  loop().performSelectorAfterDelay(other, "pong:", nullptr, 1.0);
  loop().performSelectorAfterDelay(recorder, "pong:", nullptr, 1.0);
  const Object* cancellerAddress = canceller.get();
  canceller.reset();  // the loop now holds the only reference
  loop().cancelPreviousPerformRequests(cancellerAddress);
  EXPECT_EQ(loop().pendingPerformCount(other.get()), 0u) << "the destructor's cancel took effect";
  advance(2.0);
  EXPECT_TRUE(other->calls.empty());
  EXPECT_EQ(recorder->calls, (std::vector<std::string>{"pong"}));
}

}  // namespace

// Descriptors are only waited on under the real clock.
TEST(RunLoopDescriptors, ASourceIsCalledForItsEventsOrWhenItsDeadlinePasses) {
  auto previous = Clock::setCurrent(nullptr);
  auto& loop = RunLoop::main();
  loop.reset();
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  int calls = 0;
  const double start = Clock::current().now();
  RunLoop::DescriptorInterest interest{POLLIN, start + 0.02};
  // Nothing to read: the deadline alone brings the call, and not before it.
  loop.addFileDescriptorSource(
      fds[0], [&] { return interest; }, [&] { ++calls, loop.stop(); });
  loop.runUntil(start + 5.0);
  EXPECT_EQ(calls, 1);
  EXPECT_GE(Clock::current().now(), start + 0.02);
  EXPECT_LT(Clock::current().now(), start + 5.0);

  // Without a deadline only the descriptor's event brings it.
  interest.deadline = std::numeric_limits<double>::infinity();
  ASSERT_EQ(write(fds[1], "x", 1), 1);
  loop.runUntil(Clock::current().now() + 5.0);
  EXPECT_EQ(calls, 2);

  loop.reset();
  close(fds[0]);
  close(fds[1]);
  Clock::setCurrent(previous);
}
