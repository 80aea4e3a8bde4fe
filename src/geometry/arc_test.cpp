#include "geometry/arc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {

double Deg(double d) { return d * kPi / 180.0; }

// The box of many points along the arc: always inside the exact box and
// within the sampling error of it.
BoundingBox SampledBox(const Arc& arc, int samples) {
  BoundingBox b;
  for (int i = 0; i <= samples; ++i) b.Extend(*PointAt(arc, arc.start_angle + Sweep(arc) * i / samples));
  return b;
}

TEST(Arc, ExtentsByHand) {
  const double r3 = std::sqrt(3.0), h = std::sqrt(0.5);
  struct Case {
    const char* name;
    Arc arc;
    BoundingBox box;
  };
  const Case cases[] = {
      // 30°..120°, r 2 at (1,1): ends (1+√3, 2) and (0, 1+√3); passes 90°
      // (top, y = 3) and no other quadrant point.
      {"30-120", {{1, 1, 0}, 2, {0, 0, 1}, Deg(30), Deg(120)}, {{0, 2, 0}, {1 + r3, 3, 0}}},
      // Crossing 0°: 300°..60° passes the right extreme (3, 1).
      {"300-60", {{1, 1, 0}, 2, {0, 0, 1}, Deg(300), Deg(60)}, {{2, 1 - r3, 0}, {3, 1 + r3, 0}}},
      // Full circle.
      {"circle", Arc::Circle({1, 1, 5}, 2), {{-1, -1, 5}, {3, 3, 5}}},
      // Normal −Z: Ax = (−1,0,0), so 0..90° runs from (−1,0) to (0,1).
      {"normal -Z", {{0, 0, 0}, 1, {0, 0, -1}, 0, Deg(90)}, {{-1, 0, 0}, {0, 1, 0}}},
      // Normal +X: Ax = Y, Ay = Z; 0..90° from (5,2,0) to (5,0,2).
      {"normal +X", {{5, 0, 0}, 2, {1, 0, 0}, 0, Deg(90)}, {{5, 0, 0}, {5, 2, 2}}},
      // Tilted 45° about X: N = (0,−1,1)/√2, Ax = (1,0,0), Ay = (0,½√2,½√2).
      // The half circle 0..180° rises to (0, √½, √½) at 90°.
      {"tilted half", {{0, 0, 0}, 1, {0, -1, 1}, 0, kPi}, {{-1, 0, 0}, {1, h, h}}},
      {"tilted circle", Arc::Circle({0, 0, 0}, 1, {0, -1, 1}), {{-1, -h, -h}, {1, h, h}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_BOX_CLOSE(Extents(c.arc), c.box);
  }
}

TEST(Arc, ExtentsMatchDenseSamplingOnRandomNormals) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> angle(0, kTwoPi);
  for (int i = 0; i < 200; ++i) {
    SCOPED_TRACE(i);
    const Arc arc{testing::RandomVec(rng), 0.5 + i * 0.05, testing::RandomVec(rng), angle(rng), angle(rng)};
    const BoundingBox exact = Extents(arc);
    const BoundingBox sampled = SampledBox(arc, 20000);
    ASSERT_TRUE(exact.has_data);
    EXPECT_TRUE(exact.Contains(sampled, 1e-9));
    // Sampling misses at most r(1 − cos(Δ/2)) per extreme.
    EXPECT_TRUE(IsClose(exact, sampled, arc.radius * 1e-7, 0.0));
  }
}

TEST(Arc, SweepLengthAndArea) {
  const Arc quarter{{0, 0, 0}, 2, {0, 0, 1}, Deg(350), Deg(80)};
  EXPECT_NEAR(Sweep(quarter), Deg(90), 1e-12);
  EXPECT_NEAR(ArcLength(quarter), kPi, 1e-12);  // 2 · π/2
  // Segment area r²/2 (θ − sin θ) = 2 (π/2 − 1).
  EXPECT_NEAR(SegmentArea(quarter), kPi - 2, 1e-12);
  // Equal angles: a full turn, as TotalAngle's (0, 2π] says.
  const Arc circle{{0, 0, 0}, 1, {0, 0, 1}, 1.0, 1.0};
  EXPECT_DOUBLE_EQ(Sweep(circle), kTwoPi);
  EXPECT_TRUE(IsFullCircle(circle));
  EXPECT_NEAR(SegmentArea(circle), kPi, 1e-12);
  EXPECT_NEAR(ArcLength(Arc::Circle({}, 3)), 6 * kPi, 1e-12);
}

TEST(Arc, ContainsAngleAcrossZero) {
  const Arc arc{{0, 0, 0}, 1, {0, 0, 1}, Deg(300), Deg(60)};
  EXPECT_TRUE(ContainsAngle(arc, 0));
  EXPECT_TRUE(ContainsAngle(arc, Deg(300)));  // ends included
  EXPECT_TRUE(ContainsAngle(arc, Deg(60) + kTwoPi));
  EXPECT_FALSE(ContainsAngle(arc, Deg(180)));
  EXPECT_FALSE(ContainsAngle(arc, std::nan("")));
}

TEST(Arc, InvalidArcsHaveNoGeometry) {
  const Arc cases[] = {
      {{0, 0, 0}, 0.0, {0, 0, 1}, 0, 1},            // zero radius
      {{0, 0, 0}, -1.0, {0, 0, 1}, 0, 1},           // negative radius
      {{0, 0, 0}, 1.0, {0, 0, 0}, 0, 1},            // zero normal
      {{std::nan(""), 0, 0}, 1.0, {0, 0, 1}, 0, 1}, // NaN centre
      {{0, 0, 0}, INFINITY, {0, 0, 1}, 0, 1},       // infinite radius
      {{0, 0, 0}, 1.0, {0, 0, 1}, std::nan(""), 1}, // NaN angle
  };
  for (const Arc& a : cases) {
    SCOPED_TRACE(::testing::PrintToString(a));
    EXPECT_FALSE(IsValid(a));
    EXPECT_FALSE(Extents(a).has_data);
    EXPECT_FALSE(StartPoint(a).has_value());
    EXPECT_EQ(ArcLength(a), 0.0);
    EXPECT_FALSE(TransformArc(a, Matrix4::Identity()).has_value());
  }
}

TEST(Arc, SyncedRandomSimilarityTransforms) {
  std::mt19937 rng(17);
  std::uniform_real_distribution<double> angle(0, kTwoPi);
  for (int i = 0; i < 200; ++i) {
    const bool mirror = i % 2 == 1;
    SCOPED_TRACE(::testing::Message() << i << (mirror ? " mirrored" : ""));
    const Arc arc{testing::RandomVec(rng), 1.5, testing::RandomVec(rng), angle(rng), angle(rng)};
    const Matrix4 m = testing::RandomSimilarity(rng, mirror);
    const std::optional<Arc> moved = TransformArc(arc, m);
    ASSERT_TRUE(moved.has_value());
    const Vec3 s = m.TransformPoint(*StartPoint(arc)), e = m.TransformPoint(*EndPoint(arc));
    // A mirrored arc runs the other way round: its start is the old end.
    EXPECT_VEC_CLOSE(*StartPoint(*moved), mirror ? e : s);
    EXPECT_VEC_CLOSE(*EndPoint(*moved), mirror ? s : e);
    EXPECT_NEAR(Sweep(*moved), Sweep(arc), kGeoTol);
    EXPECT_NEAR(ArcLength(*moved), ArcLength(arc) * *m.UniformScale(), kGeoTol);
    // The middle of the old arc lands on the middle of the new one.
    const Vec3 mid = m.TransformPoint(*PointAt(arc, arc.start_angle + Sweep(arc) / 2));
    EXPECT_VEC_CLOSE(*PointAt(*moved, moved->start_angle + Sweep(*moved) / 2), mid);
  }
  // A non-uniform scale has no arc image.
  EXPECT_FALSE(TransformArc(Arc::Circle({}, 1), Matrix4::Scaling(Vec3{2, 1, 1})).has_value());
}

}  // namespace
}  // namespace tovik::geometry
