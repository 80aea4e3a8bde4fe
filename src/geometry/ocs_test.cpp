#include "geometry/ocs.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {

TEST(Ocs, ArbitraryAxisMatchesHandComputedFrames) {
  struct Case {
    Vec3 normal, ax, ay;
  };
  const Case cases[] = {
      // World Z: the OCS is the WCS.
      {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
      // −Z: Ax = (0,1,0)×(0,0,−1) = (−1,0,0), Ay = N×Ax = (0,1,0).
      {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
      // +X: Ax = (0,0,1)×(1,0,0) = (0,1,0), Ay = (1,0,0)×(0,1,0) = (0,0,1).
      {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
      // +Y: Ax = (0,0,1)×(0,1,0) = (−1,0,0), Ay = (0,1,0)×(−1,0,0) = (0,0,1).
      {{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}},
      // Unnormalised input is normalised first.
      {{0, 0, 7}, {1, 0, 0}, {0, 1, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.normal));
    const std::optional<Axes> ax = ArbitraryAxis(c.normal);
    ASSERT_TRUE(ax.has_value());
    EXPECT_VEC_CLOSE(ax->x, c.ax);
    EXPECT_VEC_CLOSE(ax->y, c.ay);
  }
}

TEST(Ocs, OneSixtyFourthThresholdPicksTheHelperAxis) {
  // Boundary: |Nx| < 1/64 and |Ny| < 1/64 uses world Y; exactly 1/64 is
  // NOT below the limit and uses world Z.
  const double below = 1.0 / 64.0 - 1e-6;
  const Vec3 n_below = *Normalized(Vec3{below, 0, std::sqrt(1 - below * below)});
  const std::optional<Axes> a = ArbitraryAxis(n_below);
  ASSERT_TRUE(a.has_value());
  EXPECT_VEC_CLOSE(a->x, *Normalized(Cross({0, 1, 0}, n_below)));

  const double at = 1.0 / 64.0;
  const Vec3 n_at{at, 0, std::sqrt(1 - at * at)};
  const std::optional<Axes> b = ArbitraryAxis(n_at);
  ASSERT_TRUE(b.has_value());
  // (0,0,1)×(at,0,z) = (0, at, 0): Ax is world Y.
  EXPECT_VEC_CLOSE(b->x, (Vec3{0, 1, 0}));
}

TEST(Ocs, DegenerateNormalHasNoFrame) {
  EXPECT_FALSE(ArbitraryAxis({0, 0, 0}).has_value());
  EXPECT_FALSE(ArbitraryAxis({std::nan(""), 0, 1}).has_value());
  EXPECT_FALSE(OcsToWcs({1, 2, 3}, {0, 0, 0}).has_value());
  EXPECT_FALSE(WcsToOcsMatrix({0, 0, 0}).has_value());
}

TEST(Ocs, RoundTripAndRightHandedness) {
  std::mt19937 rng(11);
  for (int i = 0; i < 100; ++i) {
    SCOPED_TRACE(i);
    const Vec3 n = testing::RandomVec(rng);
    const Vec3 p = testing::RandomVec(rng, -50, 50);
    const std::optional<Axes> ax = ArbitraryAxis(n);
    ASSERT_TRUE(ax.has_value());
    EXPECT_VEC_CLOSE(Cross(ax->x, ax->y), ax->z);
    EXPECT_NEAR(Dot(ax->x, ax->y), 0.0, 1e-12);
    EXPECT_VEC_CLOSE(*OcsToWcs(*WcsToOcs(p, n), n), p);
    EXPECT_VEC_CLOSE(WcsToOcsMatrix(n)->TransformPoint(OcsToWcsMatrix(n)->TransformPoint(p)), p);
    // The OCS z of a point is its height along the normal.
    EXPECT_NEAR(WcsToOcs(p, n)->z, Dot(p, *Normalized(n)), kGeoTol);
  }
}

}  // namespace
}  // namespace tovik::geometry
