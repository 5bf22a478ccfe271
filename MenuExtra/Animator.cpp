#include "MenuExtra/Animator.h"

#include <climits>
#include <cmath>
#include <numbers>

#include "platform/core/AssertionHandler.h"
#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"

namespace {

constexpr const char* kSourceFile = "MenuExtra/Animator";

// The curves. Arithmetic is single precision except where a step is
// deliberately done in double and narrowed; the narrowing points matter to
// the exact values callers see.

float identityCurve(const AnimatorContour&, float x) { return x; }

float easeInCurve(const AnimatorContour&, float x) { return x * x; }

float easeOutCurve(const AnimatorContour&, float x) { return 2.0f * x - x * x; }

float easeInAndOutCurve(const AnimatorContour&, float x) {
  if (x <= 0.5f) return 2.0f * x * x;
  float fromEnd = x - 1.0f;
  return 1.0f - 2.0f * fromEnd * fromEnd;
}

float rampsAndLineCurve(const AnimatorContour& contour, float x) {
  const float a = contour.floatParam1;
  const float d = contour.floatParam2;
  if (x < d) {
    float t = x / d;
    return a * t * t;
  }
  if (static_cast<double>(x) > 1.0 - static_cast<double>(d)) {
    float t = (x - 1.0f) / d;
    return 1.0f - a * t * t;
  }
  const float slope = static_cast<float>((1.0 - 2.0 * static_cast<double>(a)) / (1.0 - 2.0 * static_cast<double>(d)));
  return x * slope + a - d * slope;
}

float sineWaveCurve(const AnimatorContour&, float x) {
  return static_cast<float>((1.0 - std::cos(std::numbers::pi * static_cast<double>(x))) * 0.5);
}

float pulseCurve(const AnimatorContour& contour, float x) {
  const std::int32_t n = contour.intParam1;
  const float b = contour.floatParam1;
  if (x < 1.0f) {
    // The truncated pi and the 0.495 weight are part of the curve's shape.
    const float q = static_cast<float>((1.0 - std::cos(static_cast<double>(x) * 3.14159 * n)) * 0.495);
    return static_cast<float>(static_cast<double>(b * x) + static_cast<double>(q) * (1.0 - static_cast<double>(b)));
  }
  return n % 2 == 1 ? 1.0f : b;
}

// Truncation toward zero; values an int cannot hold (NaN, infinities) give
// INT_MIN, as the processor's conversion does, instead of undefined behaviour.
int truncatedToInt(double value) {
  if (!(value > static_cast<double>(INT_MIN) - 1.0 && value < static_cast<double>(INT_MAX) + 1.0)) return INT_MIN;
  return static_cast<int>(value);
}

float bounceCurve(const AnimatorContour& contour, float x) {
  const float c = contour.floatParam1;
  const std::int32_t n = contour.intParam1;
  const float r = contour.floatParam2;
  if (x <= c) {
    float t = x / c;
    return t * t;
  }
  const double segment = (1.0 - static_cast<double>(c)) / n;
  const int rebound = truncatedToInt(static_cast<double>(x - c) / segment);
  const float height = static_cast<float>(std::pow(static_cast<double>(r), rebound + 1));
  const float u = static_cast<float>((static_cast<double>(x) - (rebound * segment + static_cast<double>(c))) / segment);
  const float w = 2.0f * u - 1.0f;
  return 1.0f - height + w * w * height;
}

Animator::ContourFunction curveForType(std::int32_t contourType) {
  switch (contourType) {
    case LinearContour: return identityCurve;
    case EaseInQuadraticContour: return easeInCurve;
    case EaseOutQuadraticContour: return easeOutCurve;
    case EaseInAndOutQuadraticContour: return easeInAndOutCurve;
    case EaseInAndOutLinearContour: return rampsAndLineCurve;
    case SineWaveContour: return sineWaveCurve;
    case PulseContour: return pulseCurve;
    case BounceContour: return bounceCurve;
    default: return nullptr;
  }
}

void fail(const char* method, const platform::Object* object, int line, const char* description) {
  platform::AssertionHandler::current().handleFailureInMethod(method, object, kSourceFile, line, description);
}

}  // namespace

float AnimatorTarget::animatorContourForProgress(Animator&, float x) { return x; }

const platform::SelectorTable<Animator>& Animator::selectorTable() {
  static const platform::SelectorTable<Animator> table{{"_timerStep:", &Animator::_timerStep}};
  return table;
}

// Class operations: contours.

AnimatorContour Animator::defaultContourForType(std::int32_t contourType) {
  switch (contourType) {
    case EaseInAndOutLinearContour: return {EaseInAndOutLinearContour, 1, 1, 0.12f, 0.2f};
    case PulseContour: return {PulseContour, 5, 1, 0.5f, 0.0f};
    case BounceContour: return {BounceContour, 1, 1, 0.7f, 0.2f};
    default: return {contourType, 1, 1, 0.0f, 0.0f};
  }
}

bool Animator::isContourValid(const AnimatorContour& contour) {
  if (static_cast<std::uint32_t>(contour.contourType) >= 10) return false;
  switch (contour.contourType) {
    case EaseInAndOutLinearContour:
      return 0.0f < contour.floatParam1 && contour.floatParam1 < contour.floatParam2 && contour.floatParam2 < 0.5f;
    case PulseContour:
      return contour.intParam1 >= 1 && 0.0f <= contour.floatParam1 && contour.floatParam1 < 1.0f;
    case BounceContour:
      return contour.intParam1 >= 1 && contour.floatParam1 < 1.0f && contour.floatParam2 < 1.0f;
    default:
      return true;
  }
}

float Animator::applyContourToValue(const AnimatorContour& contour, float value) {
  platform::assertParameter(value >= 0.0 && value <= 1.0 && contour.contourType < CustomContour,
                            "value >= 0.0 && value <= 1.0 && contour.contourType < CustomContour",
                            "applyContour:toValue:", nullptr, kSourceFile, __LINE__);
  if (contour.contourType < LinearContour || contour.contourType >= CustomContour) return value;
  return curveForType(contour.contourType)(contour, value);
}

float Animator::applySimpleContourToValue(std::int32_t contourType, float value) {
  platform::assertParameter(
      value >= 0.0 && value <= 1.0 &&
          (contourType == LinearContour || contourType == EaseInQuadraticContour ||
           contourType == EaseOutQuadraticContour || contourType == EaseInAndOutQuadraticContour ||
           contourType == SineWaveContour),
      "value >= 0.0 && value <= 1.0 && (contourType == LinearContour || contourType == EaseInQuadraticContour || "
      "contourType == EaseOutQuadraticContour || contourType == EaseInAndOutQuadraticContour || "
      "contourType == SineWaveContour)",
      "applySimpleContour:toValue:", nullptr, kSourceFile, __LINE__);
  const AnimatorContour simple{contourType, 0, 0, 0.0f, 0.0f};
  switch (contourType) {
    case EaseInQuadraticContour: return easeInCurve(simple, value);
    case EaseOutQuadraticContour: return easeOutCurve(simple, value);
    case EaseInAndOutQuadraticContour: return easeInAndOutCurve(simple, value);
    case SineWaveContour: return sineWaveCurve(simple, value);
    default: return value;
  }
}

// Creation.

Animator::Animator(ConstructionToken, AnimatorTarget* target, double time, float fps, const AnimatorContour& contour) {
  platform::assertParameter(time > 0.0, "animationTime > 0.0", "initWithTarget:time:fps:contour:", this, kSourceFile,
                            __LINE__);
  platform::assertParameter(fps > 0.0, "fps > 0.0", "initWithTarget:time:fps:contour:", this, kSourceFile, __LINE__);
  platform::assertParameter(isContourValid(contour), "[[self class] isContourValid:contour]",
                            "initWithTarget:time:fps:contour:", this, kSourceFile, __LINE__);
  _target = target;
  _animationTime = time;
  _fps = fps;
  _contour = contour;
  _applyContour = curveForType(contour.contourType);
}

std::shared_ptr<Animator> Animator::initWithTargetTimeFpsContour(AnimatorTarget* target, double time, float fps,
                                                                 const AnimatorContour& contour) {
  return std::make_shared<Animator>(ConstructionToken{}, target, time, fps, contour);
}

std::shared_ptr<Animator> Animator::linearAnimatorWithTargetTimeFps(AnimatorTarget* target, double time, float fps) {
  return initWithTargetTimeFpsContour(target, time, fps, {LinearContour, 0, 0, 0.0f, 0.0f});
}

std::shared_ptr<Animator> Animator::easeOutAnimatorWithTargetTimeFps(AnimatorTarget* target, double time, float fps) {
  return initWithTargetTimeFpsContour(target, time, fps, {EaseOutQuadraticContour, 0, 0, 0.0f, 0.0f});
}

std::shared_ptr<Animator> Animator::sineWaveAnimatorWithTargetTimeFps(AnimatorTarget* target, double time,
                                                                      float fps) {
  return initWithTargetTimeFpsContour(target, time, fps, {SineWaveContour, 0, 0, 0.0f, 0.0f});
}

// Running.

float Animator::shapedValue(float x) {
  if (_applyContour) return _applyContour(_contour, x);
  return _target ? _target->animatorContourForProgress(*this, x) : 0.0f;
}

void Animator::_timerStep(const platform::ObjectPtr&) {
  // The target may drop its last reference to us inside the step.
  if (!_startTime) return;
  auto self = weak_from_this().lock();
  _linearProgress = static_cast<float>(-_startTime->timeIntervalSinceNow() / _animationTime);
  bool lastStep = false;
  if (_linearProgress >= 1.0f) {
    _linearProgress = 1.0f;
    if (_autoreverses)
      reverse();
    else
      lastStep = true;
  }
  const float x = _reversed ? 1.0f - _linearProgress : _linearProgress;
  _progress = shapedValue(x);
  if (_target) _target->animatorDoStepLastStep(*this, _progress, lastStep);
  if (lastStep) stop();
}

void Animator::start() {
  if (isAnimating()) fail("start", this, __LINE__, "Can't call -[Animator start] while animating!");
  if (_timer) _timer->invalidate();
  _linearProgress = 0.0f;
  _startTime = platform::Date::now();
  _timer = platform::Timer::scheduledTimerWithTimeInterval(1.0 / static_cast<double>(_fps), shared_from_this(),
                                                           "_timerStep:", nullptr, true);
  // Frames keep coming while a menu is open and tracking the mouse.
  platform::RunLoop::main().addTimer(_timer, platform::kEventTrackingRunLoopMode);
}

void Animator::startSynchronous() {
  if (isAnimating())
    fail("startSynchronous", this, __LINE__, "Can't call -[Animator startSynchronous] while animating!");
  auto self = weak_from_this().lock();
  _linearProgress = 0.0f;
  _startTime = platform::Date::now();
  do {
    _timerStep(nullptr);
    platform::Clock::current().sleep(1.0 / static_cast<double>(_fps));
  } while (_startTime);
}

void Animator::reverse() {
  if (!isAnimating()) return;
  _linearProgress = 1.0f - _linearProgress;
  _startTime = platform::Date::dateWithTimeIntervalSinceNow(-static_cast<double>(_linearProgress) * _animationTime);
  _reversed = !_reversed;
}

void Animator::stop() {
  auto self = weak_from_this().lock();
  if (_timer) {
    _timer->invalidate();
    _timer.reset();
  }
  _startTime.reset();
  _reversed = false;
}

void Animator::complete() {
  if (_autoreverses) fail("complete", this, __LINE__, "Can't call -complete on an Animator that autoreverses!");
  auto self = weak_from_this().lock();
  _linearProgress = 1.0f;
  const float x = _reversed ? 0.0f : 1.0f;
  _progress = shapedValue(x);
  if (_target) _target->animatorDoStepLastStep(*this, _progress, true);
  stop();
}

// Queries.

double Animator::elapsedTime() const {
  if (!isAnimating()) {
    fail("elapsedTime", this, __LINE__, "Can't call -[Animator elapsedTime] while not animating!");
    return 0.0;
  }
  return -_startTime->timeIntervalSinceNow();
}

float Animator::linearProgress() const {
  if (!isAnimating()) fail("linearProgress", this, __LINE__, "Can't call -[Animator linearProgress] while not animating!");
  return _linearProgress;
}

float Animator::progress() const {
  if (!isAnimating()) fail("progress", this, __LINE__, "Can't call -[Animator progress] while not animating!");
  return _progress;
}
