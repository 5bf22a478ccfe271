#pragma once

#include <cstdint>
#include <memory>

#include "MenuExtra/AnimatorContour.h"
#include "platform/core/Date.h"
#include "platform/core/Object.h"
#include "platform/core/Timer.h"

class Animator;

// What an animator's target answers. The animator does not own its target;
// the target stops the animator before it goes away.
class AnimatorTarget {
 public:
  virtual ~AnimatorTarget() = default;

  // Once per frame with the shaped value; lastStep is true on the frame that
  // ends a pass and on complete, after which the animator stops itself.
  virtual void animatorDoStepLastStep(Animator& animator, float value, bool lastStep) = 0;
  // Asked before each step, only for CustomContour and ReservedContour: x is
  // the direction-adjusted linear progress, the answer becomes the step value.
  // Targets of built-in curves are never asked; the default leaves x as is.
  virtual float animatorContourForProgress(Animator& animator, float x);
};

// Animates a value from 0 to 1 (or back) over a duration, measured on the
// clock, shaped through a timing contour and handed to the target once per
// frame. Runs on a repeating main-loop timer (start) or blocks the caller
// (startSynchronous). Misuse goes to the assertion handler; where the handler
// returns, the operation goes on.
class Animator final : public platform::Object {
  PLATFORM_SELECTORS(Animator, platform::Object)

 public:
  using ContourFunction = float (*)(const AnimatorContour&, float);

  // Timing curves, usable without an animator.
  static AnimatorContour defaultContourForType(std::int32_t contourType);
  static bool isContourValid(const AnimatorContour& contour);
  // Evaluates types 0 to 7; any other type answers x unchanged.
  static float applyContourToValue(const AnimatorContour& contour, float value);
  // Evaluates the parameterless curves (1, 2, 3 and 5); any other type answers x unchanged.
  static float applySimpleContourToValue(std::int32_t contourType, float value);

  static std::shared_ptr<Animator> linearAnimatorWithTargetTimeFps(AnimatorTarget* target, double time, float fps);
  static std::shared_ptr<Animator> easeOutAnimatorWithTargetTimeFps(AnimatorTarget* target, double time, float fps);
  static std::shared_ptr<Animator> sineWaveAnimatorWithTargetTimeFps(AnimatorTarget* target, double time, float fps);
  static std::shared_ptr<Animator> initWithTargetTimeFpsContour(AnimatorTarget* target, double time, float fps,
                                                                const AnimatorContour& contour);

  // Frames come from a repeating timer in the default and event-tracking
  // modes, the first one interval after the start.
  void start();
  // Frames come at once and then after each sleep of 1/fps on the clock,
  // until the pass ends or the target stops the animator.
  void startSynchronous();
  // Turns round in mid-flight, keeping the shaped value continuous.
  void reverse();
  // Ends the run without a last frame; harmless when idle.
  void stop();
  // Jumps to the end of the pass, sends the last frame and stops.
  void complete();

  bool isAnimating() const { return _startTime != nullptr; }
  bool isSynchronous() const { return isAnimating() && !_timer; }
  bool isReversed() const { return _reversed; }
  bool autoreverses() const { return _autoreverses; }
  void setAutoreverses(bool autoreverses) { _autoreverses = autoreverses; }
  double animationTime() const { return _animationTime; }
  // Takes effect at the next frame.
  void setAnimationTime(double animationTime) { _animationTime = animationTime; }
  float fps() const { return _fps; }
  AnimatorContour contour() const { return _contour; }
  double elapsedTime() const;
  float linearProgress() const;
  float progress() const;

  std::string className() const override { return "Animator"; }

  // Use the factories: the run loop holds a running animator by shared_ptr.
  struct ConstructionToken {
   private:
    ConstructionToken() = default;
    friend class Animator;
  };
  Animator(ConstructionToken, AnimatorTarget* target, double time, float fps, const AnimatorContour& contour);

 private:
  // One frame; the timer it may come from is ignored.
  void _timerStep(const platform::ObjectPtr& timer);
  float shapedValue(float x);

  platform::TimerPtr _timer;
  platform::DatePtr _startTime;
  AnimatorTarget* _target = nullptr;
  double _animationTime = 0.0;
  float _fps = 0.0f;
  AnimatorContour _contour;
  ContourFunction _applyContour = nullptr;
  float _linearProgress = 0.0f;
  float _progress = 0.0f;
  bool _reversed = false;
  bool _autoreverses = false;
};
