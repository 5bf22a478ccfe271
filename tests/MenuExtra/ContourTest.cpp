#include <cmath>
#include <limits>

#include "MenuExtra/Animator.h"
#include "tests/support/PlatformTest.h"

namespace {

class ContourTest : public kibtest::PlatformTest {
 protected:
  static float at(const AnimatorContour& contour, float x) { return Animator::applyContourToValue(contour, x); }
  static float at(std::int32_t type, float x) { return at(AnimatorContour{type, 0, 0, 0.0f, 0.0f}, x); }
};

TEST_F(ContourTest, QuadraticAndSineCurvesHitTheirReferenceValues) {
  EXPECT_FLOAT_EQ(at(EaseInQuadraticContour, 0.5f), 0.25f);
  EXPECT_FLOAT_EQ(at(EaseOutQuadraticContour, 0.5f), 0.75f);
  EXPECT_EQ(at(EaseInAndOutQuadraticContour, 0.5f), 0.5f) << "0.5 belongs to the first half";
  EXPECT_FLOAT_EQ(at(EaseInAndOutQuadraticContour, 0.25f), 0.125f);
  EXPECT_FLOAT_EQ(at(EaseInAndOutQuadraticContour, 0.75f), 0.875f);
  // The sine wave uses the full-precision pi: exactly half way at 0.5.
  EXPECT_EQ(at(SineWaveContour, 0.5f), 0.5f);
  EXPECT_NEAR(at(SineWaveContour, 0.25f), 0.14644661f, 1e-7);
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(ContourTest, ParameterisedCurvesWithTheirDefaultRecords) {
  const auto ramps = Animator::defaultContourForType(EaseInAndOutLinearContour);
  EXPECT_FLOAT_EQ(at(ramps, 0.1f), 0.03f);
  EXPECT_FLOAT_EQ(at(ramps, 0.2f), 0.12f);
  EXPECT_FLOAT_EQ(at(ramps, 0.5f), 0.5f);
  EXPECT_FLOAT_EQ(at(ramps, 0.8f), 0.88f);
  EXPECT_FLOAT_EQ(at(ramps, 0.9f), 0.97f);

  const auto pulse = Animator::defaultContourForType(PulseContour);
  EXPECT_FLOAT_EQ(at(pulse, 0.2f), 0.595f);
  EXPECT_EQ(at(pulse, 1.0f), 1.0f) << "an odd count ends at 1";
  EXPECT_EQ(at(AnimatorContour{PulseContour, 4, 1, 0.5f, 0.0f}, 1.0f), 0.5f) << "an even count ends at the drift weight";
  EXPECT_EQ(at(AnimatorContour{PulseContour, -1, 1, 0.5f, 0.0f}, 1.0f), 0.5f) << "the remainder is signed";

  const auto bounce = Animator::defaultContourForType(BounceContour);
  EXPECT_FLOAT_EQ(at(bounce, 0.35f), 0.25f);
  EXPECT_FLOAT_EQ(at(bounce, 0.7f), 1.0f);
  EXPECT_FLOAT_EQ(at(bounce, 0.85f), 0.8f) << "bottom of the single rebound";
  EXPECT_NEAR(at(bounce, 1.0f), 1.0f, 1e-6);
  // Two rebounds: the second one dips only r squared.
  const AnimatorContour twice{BounceContour, 2, 1, 0.6f, 0.5f};
  EXPECT_NEAR(at(twice, 0.7f), 0.5f, 1e-6);
  EXPECT_NEAR(at(twice, 0.9f), 0.75f, 1e-6);
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(ContourTest, PulseUsesTheTruncatedPiAndItsOwnWeight) {
  // With b = 0 and one half-oscillation the curve is (1 - cos(3.14159 x)) * 0.495:
  // at 0.5 the truncated pi leaves cos at 1.3e-6, so the value sits just under 0.495.
  const AnimatorContour pure{PulseContour, 1, 1, 0.0f, 0.0f};
  const float half = at(pure, 0.5f);
  EXPECT_NEAR(half, 0.49499934f, 3e-8);
  EXPECT_LT(half, 0.495f);
  EXPECT_NEAR(at(pure, 0.999f), 0.99, 1e-5) << "the weight 0.495 keeps the peak at 0.99";
}

TEST_F(ContourTest, EveryBuiltInCurveRunsFromZeroToOne) {
  for (std::int32_t type = LinearContour; type < CustomContour; ++type) {
    const auto contour = Animator::defaultContourForType(type);
    EXPECT_NEAR(at(contour, 0.0f), 0.0f, 1e-7) << "type " << type;
    EXPECT_NEAR(at(contour, 1.0f), 1.0f, 1e-6) << "type " << type;
  }
  for (std::int32_t type : {LinearContour, EaseInQuadraticContour, EaseOutQuadraticContour,
                            EaseInAndOutQuadraticContour, SineWaveContour}) {
    EXPECT_EQ(Animator::applySimpleContourToValue(type, 0.0f), 0.0f) << "type " << type;
    EXPECT_EQ(Animator::applySimpleContourToValue(type, 1.0f), 1.0f) << "type " << type;
  }
  EXPECT_FLOAT_EQ(Animator::applySimpleContourToValue(EaseInAndOutQuadraticContour, 0.75f), 0.875f);
  EXPECT_TRUE(assertions->failures.empty());
}

TEST_F(ContourTest, DefaultRecordsAndValidity) {
  const auto generic = Animator::defaultContourForType(SineWaveContour);
  EXPECT_EQ(generic.contourType, SineWaveContour);
  EXPECT_EQ(generic.intParam1, 1);
  EXPECT_EQ(generic.intParam2, 1);
  EXPECT_EQ(generic.floatParam1, 0.0f);
  EXPECT_EQ(generic.floatParam2, 0.0f);
  const auto pulse = Animator::defaultContourForType(PulseContour);
  EXPECT_EQ(pulse.intParam1, 5);
  EXPECT_EQ(pulse.floatParam1, 0.5f);

  for (std::int32_t type = LinearContour; type <= ReservedContour; ++type)
    EXPECT_TRUE(Animator::isContourValid(Animator::defaultContourForType(type))) << "type " << type;

  EXPECT_FALSE(Animator::isContourValid({4, 1, 1, 0.2f, 0.12f})) << "ramp value must stay below its length";
  EXPECT_FALSE(Animator::isContourValid({4, 1, 1, 0.0f, 0.2f}));
  EXPECT_FALSE(Animator::isContourValid({4, 1, 1, 0.12f, 0.5f}));
  EXPECT_FALSE(Animator::isContourValid({6, 0, 1, 0.5f, 0.0f})) << "a pulse needs a count";
  EXPECT_FALSE(Animator::isContourValid({6, 5, 1, 1.0f, 0.0f}));
  EXPECT_FALSE(Animator::isContourValid({6, 5, 1, -0.1f, 0.0f}));
  EXPECT_FALSE(Animator::isContourValid({7, 0, 1, 0.7f, 0.2f}));
  EXPECT_FALSE(Animator::isContourValid({7, 1, 1, 0.7f, 1.0f}));
  EXPECT_FALSE(Animator::isContourValid({10, 0, 0, 0.0f, 0.0f}));
  EXPECT_FALSE(Animator::isContourValid({-1, 0, 0, 0.0f, 0.0f}));
  EXPECT_TRUE(Animator::isContourValid({7, 1, 1, -3.0f, -3.0f})) << "bounce has no lower bounds";
  EXPECT_TRUE(Animator::isContourValid({9, 0, 0, 0.0f, 0.0f}));
  EXPECT_TRUE(Animator::isContourValid({2, -7, 3, 99.0f, -1.0f})) << "plain curves ignore their parameters";

  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FALSE(Animator::isContourValid({4, 1, 1, nan, 0.2f}));
  EXPECT_FALSE(Animator::isContourValid({6, 5, 1, nan, 0.0f}));
  EXPECT_FALSE(Animator::isContourValid({7, 1, 1, 0.7f, nan}));
}

TEST_F(ContourTest, OutOfRangeInputIsReportedAndEvaluationGoesOn) {
  EXPECT_EQ(at(LinearContour, 1.5f), 1.5f);
  EXPECT_EQ(at(CustomContour, 0.25f), 0.25f) << "types without a curve answer x";
  EXPECT_EQ(at(-3, 0.25f), 0.25f);
  EXPECT_EQ(Animator::applySimpleContourToValue(EaseInAndOutLinearContour, 0.1f), 0.1f);
  EXPECT_FLOAT_EQ(Animator::applySimpleContourToValue(EaseInQuadraticContour, -0.5f), 0.25f);

  ASSERT_EQ(assertions->failures.size(), 4u) << "a negative type passes the range check";
  const std::string contourCondition =
      "Invalid parameter not satisfying: value >= 0.0 && value <= 1.0 && contour.contourType < CustomContour";
  const std::string simpleCondition =
      "Invalid parameter not satisfying: value >= 0.0 && value <= 1.0 && (contourType == LinearContour || "
      "contourType == EaseInQuadraticContour || contourType == EaseOutQuadraticContour || "
      "contourType == EaseInAndOutQuadraticContour || contourType == SineWaveContour)";
  EXPECT_EQ(assertions->failures[0].description, contourCondition);
  EXPECT_EQ(assertions->failures[1].description, contourCondition);
  EXPECT_EQ(assertions->failures[2].description, simpleCondition);
  EXPECT_EQ(assertions->failures[3].description, simpleCondition);
  for (const auto& failure : assertions->failures) EXPECT_EQ(failure.file, "MenuExtra/Animator");
  EXPECT_EQ(assertions->failures[0].method, "applyContour:toValue:");
  EXPECT_EQ(assertions->failures[2].method, "applySimpleContour:toValue:");

  // Unchecked parameters give whatever the formulas give.
  EXPECT_TRUE(std::isnan(at(AnimatorContour{BounceContour, 0, 1, 0.5f, 0.5f}, 0.75f)));
  EXPECT_TRUE(std::isnan(at(AnimatorContour{EaseInAndOutLinearContour, 1, 1, 0.1f, 0.5f}, 0.5f)));
}

}  // namespace
