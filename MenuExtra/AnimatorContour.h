#pragma once

#include <cstdint>

// The curve an animation's progress is shaped through; see Animator's class
// operations for how each type is evaluated.
enum AnimatorContourType : std::int32_t {
  LinearContour = 0,
  EaseInQuadraticContour = 1,
  EaseOutQuadraticContour = 2,
  EaseInAndOutQuadraticContour = 3,
  // Quadratic ramps at both ends joined by a straight line.
  EaseInAndOutLinearContour = 4,
  SineWaveContour = 5,
  // Linear drift with a superimposed cosine pulse.
  PulseContour = 6,
  // Quadratic fall-in followed by rebounds of shrinking height.
  BounceContour = 7,
  // No built-in curve: the animator's target shapes each frame.
  CustomContour = 8,
  // Accepted as valid and handled like CustomContour.
  ReservedContour = 9,
};

// A timing curve and its parameters, passed and stored by value.
struct AnimatorContour {
  std::int32_t contourType = LinearContour;
  // Number of half-oscillations (pulse) or of rebounds (bounce).
  std::int32_t intParam1 = 0;
  // Reserved: set by the default records, read by no curve.
  std::int32_t intParam2 = 0;
  // Ramps: value at the end of the first ramp. Pulse: weight of the drift. Bounce: time of first arrival.
  float floatParam1 = 0.0f;
  // Ramps: fraction of the time each ramp takes. Bounce: height ratio of each rebound.
  float floatParam2 = 0.0f;
};
