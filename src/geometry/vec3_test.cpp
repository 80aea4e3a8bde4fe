#include "geometry/vec3.h"

#include <gtest/gtest.h>

#include <limits>

namespace tovik::geometry {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(Vec3, NormalizedRefusesZeroAndNonFinite) {
  ASSERT_TRUE(Normalized(Vec3{0, 3, 4}).has_value());
  EXPECT_EQ(*Normalized(Vec3{0, 3, 4}), (Vec3{0, 0.6, 0.8}));
  EXPECT_FALSE(Normalized(Vec3{}).has_value());
  EXPECT_FALSE(Normalized(Vec3{1e-12, 0, 0}).has_value());  // below kAbsTol
  EXPECT_FALSE(Normalized(Vec3{kNaN, 1, 0}).has_value());
  EXPECT_FALSE(Normalized(Vec3{kInf, 1, 0}).has_value());
  EXPECT_FALSE(Normalized(Vec2{0, 0}).has_value());
  // Huge but finite components do not overflow the length.
  ASSERT_TRUE(Normalized(Vec3{1e300, 1e300, 0}).has_value());
}

TEST(Vec3, IsCloseUsesAbsoluteAndRelativeTolerance) {
  struct Case {
    double a, b;
    bool close;
  };
  const Case cases[] = {
      {0.0, 0.0, true},
      {0.0, 0.5 * kAbsTol, true},
      {0.0, 2.0 * kAbsTol, false},
      {1e6, 1e6 + 1e-4, true},   // relative: 1e-9 * 1e6 = 1e-3
      {1e6, 1e6 + 1e-2, false},
      {kNaN, kNaN, false},       // NaN is never close
      {kInf, kInf, true},
      {kInf, -kInf, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.a << " vs " << c.b);
    EXPECT_EQ(IsClose(c.a, c.b), c.close);
  }
  EXPECT_TRUE(IsClose(Vec3{1, 2, 3}, Vec3{1, 2, 3 + 1e-10}));
  EXPECT_FALSE(IsClose(Vec3{1, 2, 3}, Vec3{1, 2, 3.001}));
  EXPECT_FALSE(IsClose(Vec3{kNaN, 0, 0}, Vec3{kNaN, 0, 0}));
}

TEST(Vec3, NormalizeAngleIntoOneTurn) {
  EXPECT_DOUBLE_EQ(NormalizeAngle(0.0), 0.0);
  EXPECT_DOUBLE_EQ(NormalizeAngle(kTwoPi), 0.0);
  EXPECT_DOUBLE_EQ(NormalizeAngle(-std::numbers::pi / 2), 1.5 * std::numbers::pi);
  EXPECT_DOUBLE_EQ(NormalizeAngle(5 * std::numbers::pi), std::numbers::pi);
  // A tiny negative angle must not come back as exactly 2π.
  const double r = NormalizeAngle(-1e-18);
  EXPECT_GE(r, 0.0);
  EXPECT_LT(r, kTwoPi);
  EXPECT_TRUE(std::isnan(NormalizeAngle(kNaN)));
}

}  // namespace
}  // namespace tovik::geometry
