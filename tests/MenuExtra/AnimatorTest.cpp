#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "MenuExtra/Animator.h"
#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"
#include "tests/support/PlatformTest.h"

using platform::Clock;
using platform::kEventTrackingRunLoopMode;

namespace {

struct Step {
  double time;
  float value;
  bool last;
};

// Records every frame with the virtual time it came at.
class RecordingTarget final : public AnimatorTarget {
 public:
  void animatorDoStepLastStep(Animator& animator, float value, bool lastStep) override {
    steps.push_back({Clock::current().now(), value, lastStep});
    if (onStep) onStep(animator, steps.back());
  }
  float animatorContourForProgress(Animator&, float x) override {
    asked.push_back(x);
    return x * 0.5f;
  }

  std::vector<Step> steps;
  std::vector<float> asked;
  std::function<void(Animator&, const Step&)> onStep;
};

class AnimatorTest : public kibtest::PlatformTest {
 protected:
  void TearDown() override {
    for (auto& animator : animators)
      if (animator) animator->stop();
    kibtest::PlatformTest::TearDown();
  }
  std::shared_ptr<Animator> keep(std::shared_ptr<Animator> animator) {
    animators.push_back(animator);
    return animator;
  }

  RecordingTarget target;
  std::vector<std::shared_ptr<Animator>> animators;
};

TEST_F(AnimatorTest, LinearPassSendsFramesUntilExactlyOne) {
  auto animator = keep(Animator::linearAnimatorWithTargetTimeFps(&target, 1.0, 10.0f));
  const double started = now();
  animator->start();
  EXPECT_TRUE(animator->isAnimating());
  EXPECT_FALSE(animator->isSynchronous());
  drain();
  EXPECT_TRUE(target.steps.empty()) << "the first frame comes one interval later";

  advance(3.0);
  ASSERT_GE(target.steps.size(), 10u);
  ASSERT_LE(target.steps.size(), 11u);
  EXPECT_NEAR(target.steps.front().time - started, 0.1, 1e-6);
  EXPECT_NEAR(target.steps.front().value, 0.1f, 1e-5);
  for (std::size_t i = 1; i < target.steps.size(); ++i) {
    EXPECT_GT(target.steps[i].value, target.steps[i - 1].value);
    EXPECT_FALSE(target.steps[i - 1].last);
  }
  EXPECT_EQ(target.steps.back().value, 1.0f);
  EXPECT_TRUE(target.steps.back().last);
  EXPECT_LT(target.steps.back().time - started, 1.1 + 1e-6);
  EXPECT_FALSE(animator->isAnimating());
  EXPECT_EQ(platform::RunLoop::main().nextDueTime(platform::kDefaultRunLoopMode),
            std::numeric_limits<double>::infinity())
      << "the timer is gone";
}

TEST_F(AnimatorTest, FramesKeepComingWhileAMenuIsTracked) {
  auto animator = keep(Animator::easeOutAnimatorWithTargetTimeFps(&target, 1.0, 8.0f));
  animator->start();
  advance(0.5, kEventTrackingRunLoopMode);
  EXPECT_EQ(target.steps.size(), 4u);
  EXPECT_NEAR(target.steps.back().value, 0.75f, 1e-5) << "ease-out at half time";
  EXPECT_NEAR(animator->progress(), 0.75f, 1e-5);
  EXPECT_NEAR(animator->linearProgress(), 0.5f, 1e-5);
  EXPECT_NEAR(animator->elapsedTime(), 0.5, 1e-6);
}

TEST_F(AnimatorTest, AutoreverseTurnsAtTheEndAndNeverStops) {
  auto animator = keep(Animator::linearAnimatorWithTargetTimeFps(&target, 1.0, 10.0f));
  animator->setAutoreverses(true);
  animator->start();
  advance(1.55);

  std::size_t turn = 0;
  while (turn < target.steps.size() && target.steps[turn].value != 1.0f) ++turn;
  ASSERT_LT(turn, target.steps.size()) << "the turn frame carries the end value";
  EXPECT_FALSE(target.steps[turn].last);
  EXPECT_TRUE(animator->isReversed());
  ASSERT_GT(target.steps.size(), turn + 2);
  EXPECT_LT(target.steps[turn + 1].value, 1.0f);
  EXPECT_LT(target.steps[turn + 2].value, target.steps[turn + 1].value) << "the next pass runs back";

  advance(10.0);
  EXPECT_TRUE(animator->isAnimating());
  for (const auto& step : target.steps) EXPECT_FALSE(step.last);
  EXPECT_GT(target.steps.size(), 100u);

  animator->stop();
  EXPECT_FALSE(animator->isAnimating());
  EXPECT_FALSE(animator->isReversed()) << "stop clears the direction";
  const auto frames = target.steps.size();
  advance(1.0);
  EXPECT_EQ(target.steps.size(), frames) << "stop sends no last frame and no more frames";
}

TEST_F(AnimatorTest, ReverseInMidFlightEndsAfterTheTimeAlreadyRun) {
  auto animator = keep(Animator::linearAnimatorWithTargetTimeFps(&target, 2.0, 50.0f));
  double reversedAt = 0;
  target.onStep = [&](Animator& a, const Step& step) {
    if (reversedAt == 0 && step.value >= 0.3f - 1e-4f) {
      a.reverse();
      reversedAt = step.time;
      EXPECT_TRUE(a.isReversed());
      EXPECT_NEAR(a.linearProgress(), 0.7f, 1e-4);
      EXPECT_NEAR(a.elapsedTime(), 1.4, 1e-3);
    }
  };
  animator->start();
  advance(5.0);

  ASSERT_NE(reversedAt, 0.0);
  const Step& last = target.steps.back();
  EXPECT_TRUE(last.last);
  EXPECT_EQ(last.value, 0.0f) << "a reversed linear pass ends at 0";
  EXPECT_GE(last.time - reversedAt, 0.6 - 1e-3);
  EXPECT_LE(last.time - reversedAt, 0.6 + 0.02 + 1e-3);
  // The value continues from where it turned, downwards.
  std::size_t after = 0;
  while (target.steps[after].time <= reversedAt) ++after;
  EXPECT_NEAR(target.steps[after].value, 0.29f, 1e-3);
  for (std::size_t i = after + 1; i < target.steps.size(); ++i)
    EXPECT_LT(target.steps[i].value, target.steps[i - 1].value);

  animator->reverse();
  EXPECT_FALSE(animator->isReversed()) << "reverse is ignored when idle";
}

TEST_F(AnimatorTest, CompleteSendsTheEndValueOfTheCurrentDirection) {
  auto animator = keep(Animator::sineWaveAnimatorWithTargetTimeFps(&target, 1.0, 10.0f));
  animator->start();
  advance(0.45);
  animator->reverse();
  animator->complete();
  ASSERT_FALSE(target.steps.empty());
  EXPECT_EQ(target.steps.back().value, 0.0f);
  EXPECT_TRUE(target.steps.back().last);
  EXPECT_FALSE(animator->isAnimating());
  EXPECT_FALSE(animator->isReversed());

  // An idle animator completes forward.
  target.steps.clear();
  animator->complete();
  ASSERT_EQ(target.steps.size(), 1u);
  EXPECT_EQ(target.steps[0].value, 1.0f);
  EXPECT_TRUE(target.steps[0].last);
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(AnimatorTest, SynchronousRunSleepsThroughTheClock) {
  auto animator = keep(Animator::linearAnimatorWithTargetTimeFps(&target, 1.0, 10.0f));
  bool synchronousInside = false;
  target.onStep = [&](Animator& a, const Step&) { synchronousInside = a.isSynchronous(); };
  const double started = now();
  animator->startSynchronous();

  ASSERT_GE(target.steps.size(), 11u);
  ASSERT_LE(target.steps.size(), 12u);
  EXPECT_EQ(target.steps.front().value, 0.0f) << "the first frame comes at once";
  EXPECT_EQ(target.steps.front().time, started);
  EXPECT_EQ(target.steps.back().value, 1.0f);
  EXPECT_TRUE(target.steps.back().last);
  EXPECT_TRUE(synchronousInside);
  EXPECT_FALSE(animator->isAnimating());
  EXPECT_NEAR(now() - target.steps.back().time, 0.1, 1e-6) << "it sleeps after the last frame too";
}

TEST_F(AnimatorTest, CustomContourAsksTheTargetWithTheDirectedProgress) {
  auto animator = keep(Animator::initWithTargetTimeFpsContour(&target, 1.0, 4.0f, {CustomContour, 0, 0, 0, 0}));
  target.onStep = [&](Animator& a, const Step&) {
    if (target.steps.size() == 3) a.reverse();
  };
  animator->startSynchronous();
  // Frames at 0, 0.25, 0.5 (reverse: back to linear 0.5), then 0.75, 1.0 backwards.
  ASSERT_EQ(target.asked.size(), 5u);
  EXPECT_FLOAT_EQ(target.asked[1], 0.25f);
  EXPECT_FLOAT_EQ(target.asked[2], 0.5f);
  EXPECT_FLOAT_EQ(target.asked[3], 0.25f);
  EXPECT_FLOAT_EQ(target.asked[4], 0.0f);
  ASSERT_EQ(target.steps.size(), 5u);
  EXPECT_FLOAT_EQ(target.steps[1].value, 0.125f) << "the target's answer is the step value";
  EXPECT_TRUE(target.steps[4].last);
}

TEST_F(AnimatorTest, MisuseIsReportedWithItsTexts) {
  auto bad = keep(Animator::initWithTargetTimeFpsContour(&target, 0.0, 0.0f, {4, 1, 1, 0.3f, 0.2f}));
  ASSERT_EQ(assertions->descriptions(), (std::vector<std::string>{
                                            "Invalid parameter not satisfying: animationTime > 0.0",
                                            "Invalid parameter not satisfying: fps > 0.0",
                                            "Invalid parameter not satisfying: [[self class] isContourValid:contour]",
                                        }));
  EXPECT_EQ(assertions->failures[0].object, bad.get());
  EXPECT_EQ(assertions->failures[0].method, "initWithTarget:time:fps:contour:");
  assertions->failures.clear();

  auto animator = keep(Animator::linearAnimatorWithTargetTimeFps(&target, 1.0, 10.0f));
  animator->elapsedTime();
  animator->linearProgress();
  animator->progress();
  animator->start();
  animator->start();
  animator->startSynchronous();
  animator->setAutoreverses(true);
  animator->complete();
  EXPECT_EQ(assertions->descriptions(), (std::vector<std::string>{
                                            "Can't call -[Animator elapsedTime] while not animating!",
                                            "Can't call -[Animator linearProgress] while not animating!",
                                            "Can't call -[Animator progress] while not animating!",
                                            "Can't call -[Animator start] while animating!",
                                            "Can't call -[Animator startSynchronous] while animating!",
                                            "Can't call -complete on an Animator that autoreverses!",
                                        }));
  for (const auto& failure : assertions->failures) {
    EXPECT_EQ(failure.file, "MenuExtra/Animator");
    EXPECT_GT(failure.line, 0);
    EXPECT_EQ(failure.object, animator.get());
  }

  // A start while running goes on with one timer: two frames before the restart, two after.
  auto restarted = keep(Animator::linearAnimatorWithTargetTimeFps(&target, 1.0, 4.0f));
  target.steps.clear();
  restarted->start();
  advance(0.5);
  restarted->start();
  advance(0.5);
  EXPECT_EQ(target.steps.size(), 4u);
  EXPECT_NEAR(target.steps.back().value, 0.5f, 1e-5);
}

TEST_F(AnimatorTest, TargetMayDropTheAnimatorInItsLastStep) {
  struct Owner final : AnimatorTarget {
    std::shared_ptr<Animator> animator;
    int lastSteps = 0;
    void animatorDoStepLastStep(Animator&, float, bool lastStep) override {
      if (!lastStep) return;
      ++lastSteps;
      animator.reset();
    }
  };

  // Each way of ending a pass: the owner's reference is the only one left.
  const std::vector<std::function<void(Owner&)>> runs{
      [&](Owner& owner) { owner.animator->start(); advance(1.0); },
      [](Owner& owner) { owner.animator->startSynchronous(); },
      [](Owner& owner) { owner.animator->start(); owner.animator->complete(); },
  };
  for (const auto& run : runs) {
    Owner owner;
    owner.animator = Animator::linearAnimatorWithTargetTimeFps(&owner, 0.5, 10.0f);
    std::weak_ptr<Animator> alive = owner.animator;
    run(owner);
    EXPECT_EQ(owner.lastSteps, 1);
    EXPECT_TRUE(alive.expired()) << "a stopped timer no longer holds the animator";
  }
}

}  // namespace
