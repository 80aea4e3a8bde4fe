#include "geometry/ellipse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {


TEST(Ellipse, ExtentsByHand) {
  const double s2 = std::sqrt(2.0), w = std::sqrt(2.5);
  struct Case {
    const char* name;
    Ellipse e;
    BoundingBox box;
  };
  const Case cases[] = {
      {"axis aligned", {{0, 0, 0}, {2, 0, 0}, 0.5}, {{-2, -1, 0}, {2, 1, 0}}},
      {"first quadrant", {{0, 0, 0}, {2, 0, 0}, 0.5, {0, 0, 1}, 0, kPi / 2}, {{0, 0, 0}, {2, 1, 0}}},
      // Major along Y: minor = ½·2·(Z × Y) = (−1,0,0).
      {"major along Y", {{0, 0, 0}, {0, 2, 0}, 0.5}, {{-1, -2, 0}, {1, 2, 0}}},
      {"major along Y, 0..90°", {{0, 0, 0}, {0, 2, 0}, 0.5, {0, 0, 1}, 0, kPi / 2}, {{-1, 0, 0}, {0, 2, 0}}},
      // Turned 45°, a = 2, b = 1: half-width √(a²cos²θ + b²sin²θ) = √2.5.
      {"turned 45", {{1, 1, 0}, {s2, s2, 0}, 0.5}, {{1 - w, 1 - w, 0}, {1 + w, 1 + w, 0}}},
      // Standing in the XZ plane (normal −Y): minor = (−Y) × X = Z.
      {"vertical", {{0, 0, 0}, {3, 0, 0}, 0.5, {0, -1, 0}, 0, kPi / 2}, {{0, 0, 0}, {3, 0, 1.5}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_BOX_CLOSE(Extents(c.e), c.box);
  }
}

TEST(Ellipse, ExtentsMatchDenseSampling) {
  std::mt19937 rng(23);
  std::uniform_real_distribution<double> angle(0, kTwoPi), ratio(0.05, 1.0);
  for (int i = 0; i < 100; ++i) {
    SCOPED_TRACE(i);
    const Vec3 n = testing::RandomVec(rng);
    const Vec3 major = Cross(n, testing::RandomVec(rng));
    const Ellipse e{testing::RandomVec(rng), major, ratio(rng), n, angle(rng), angle(rng)};
    ASSERT_TRUE(IsValid(e));
    BoundingBox sampled;
    for (int k = 0; k <= 20000; ++k)
      sampled.Extend(*PointAtParameter(e, e.start_param + Sweep(e) * k / 20000));
    const BoundingBox exact = Extents(e);
    EXPECT_TRUE(exact.Contains(sampled, 1e-9));
    EXPECT_TRUE(IsClose(exact, sampled, Length(major) * 1e-7, 0.0));
  }
}

TEST(Ellipse, ParameterAndAngleConvert) {
  // The point at 45° on a 2:1 ellipse: tan t = tan 45° / ½ = 2.
  EXPECT_NEAR(ParameterFromAngle(kPi / 4, 0.5), std::atan(2.0), 1e-15);
  EXPECT_NEAR(AngleFromParameter(std::atan(2.0), 0.5), kPi / 4, 1e-15);
  for (double a : {0.0, kPi / 2, kPi, 1.5 * kPi}) EXPECT_NEAR(ParameterFromAngle(a, 0.3), a, 1e-12);
  EXPECT_NEAR(ParameterFromAngle(1.0, 1.0), 1.0, 1e-15);  // a circle
}

TEST(Ellipse, ArcLength) {
  EXPECT_NEAR(ArcLength(Ellipse{{0, 0, 0}, {2, 0, 0}, 1.0}), 4 * kPi, 1e-12);
  // The perimeter of a = 2, b = 1 (complete elliptic integral): 9.68844822054767...
  EXPECT_NEAR(ArcLength(Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5}), 9.688448220547675, 1e-11);
  // A quarter by symmetry.
  EXPECT_NEAR(ArcLength(Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5, {0, 0, 1}, 0, kPi / 2}),
              9.688448220547675 / 4, 1e-11);
}

TEST(Ellipse, InvalidEllipsesHaveNoGeometry) {
  const Ellipse cases[] = {
      {{0, 0, 0}, {0, 0, 0}, 0.5},                  // zero major axis
      {{0, 0, 0}, {1, 0, 0}, 0.0},                  // ratio 0
      {{0, 0, 0}, {1, 0, 0}, 1.5},                  // ratio above 1
      {{0, 0, 0}, {1, 0, 0}, 0.5, {1, 0, 0}},       // normal along the major axis
      {{0, 0, 0}, {1, 0, 0}, 0.5, {0, 0, 0}},       // zero normal
      {{0, 0, 0}, {1, 0, 0}, std::nan("")},         // NaN ratio
  };
  for (const Ellipse& e : cases) {
    SCOPED_TRACE(::testing::PrintToString(e));
    EXPECT_FALSE(IsValid(e));
    EXPECT_FALSE(Extents(e).has_data);
    EXPECT_FALSE(StartPoint(e).has_value());
    EXPECT_EQ(ArcLength(e), 0.0);
  }
}

// True when q lies on e: its coordinates in the (major, minor) frame are on
// the unit circle, it is in the plane, and its parameter is on the arc.
::testing::AssertionResult OnEllipse(const Ellipse& e, const Vec3& q) {
  const EllipseAxes ax = *AxesOf(e);
  const Vec3 d = q - e.center;
  const double a = Dot(d, ax.major) / LengthSquared(ax.major);
  const double b = Dot(d, ax.minor) / LengthSquared(ax.minor);
  const Vec3 back = e.center + ax.major * a + ax.minor * b;
  if (!IsClose(back, q, 1e-7) || std::fabs(std::hypot(a, b) - 1) > 1e-9)
    return ::testing::AssertionFailure() << ::testing::PrintToString(q) << " is off the ellipse";
  if (!ContainsParameter(e, std::atan2(b, a), 1e-9))
    return ::testing::AssertionFailure() << ::testing::PrintToString(q) << " is off the arc";
  return ::testing::AssertionSuccess();
}

TEST(Ellipse, SyncedRandomAffineTransforms) {
  std::mt19937 rng(29);
  std::uniform_real_distribution<double> angle(0, kTwoPi), ratio(0.1, 1.0);
  for (int i = 0; i < 200; ++i) {
    SCOPED_TRACE(i);
    const Vec3 n = testing::RandomVec(rng);
    const Ellipse e{testing::RandomVec(rng), Cross(n, testing::RandomVec(rng)), ratio(rng), n,
                    angle(rng), angle(rng)};
    Matrix4 m = testing::RandomAffine(rng);
    if (i % 2) m = *Matrix4::Mirror({}, testing::RandomVec(rng)) * m;
    const std::optional<Ellipse> moved = TransformEllipse(e, m);
    ASSERT_TRUE(moved.has_value());
    EXPECT_LE(moved->ratio, 1.0);
    for (int k = 0; k <= 8; ++k) {
      const Vec3 q = m.TransformPoint(*PointAtParameter(e, e.start_param + Sweep(e) * k / 8));
      EXPECT_TRUE(OnEllipse(*moved, q)) << k;
    }
    // The ends map to the ends (swapped when the map mirrors the curve).
    const Vec3 s = m.TransformPoint(*StartPoint(e)), t = m.TransformPoint(*EndPoint(e));
    const bool mirrored = m.IsMirroring();
    EXPECT_VEC_CLOSE(*StartPoint(*moved), mirrored ? t : s);
    EXPECT_VEC_CLOSE(*EndPoint(*moved), mirrored ? s : t);
  }
}

TEST(Ellipse, CircleUnderNonUniformScaleBecomesEllipse) {
  const std::optional<Ellipse> e = EllipseFromArc(Arc::Circle({1, 0, 0}, 1));
  ASSERT_TRUE(e.has_value());
  const std::optional<Ellipse> stretched = TransformEllipse(*e, Matrix4::Scaling(Vec3{2, 1, 1}));
  ASSERT_TRUE(stretched.has_value());
  EXPECT_VEC_CLOSE(stretched->center, (Vec3{2, 0, 0}));
  EXPECT_NEAR(Length(stretched->major_axis), 2.0, 1e-12);
  EXPECT_NEAR(stretched->ratio, 0.5, 1e-12);
  EXPECT_TRUE(IsFullEllipse(*stretched));
  EXPECT_BOX_CLOSE(Extents(*stretched), BoundingBox({0, -1, 0}, {4, 1, 0}));
  EXPECT_FALSE(TransformEllipse(*e, Matrix4::Scaling(Vec3{1, 0, 1})).has_value());
}

}  // namespace
}  // namespace tovik::geometry
