#include "geometry/bulge.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {


TEST(Bulge, ToArcByHand) {
  struct Case {
    const char* name;
    Vec2 p1, p2;
    double bulge;
    Vec2 center;
    double radius, start, end;
    bool reversed;
  };
  const Case cases[] = {
      // Bulge 1 is a half circle; positive runs CCW, so from (0,0) to (2,0)
      // it passes below the chord (through (1,−1)): start 180°, end 0°.
      {"+1", {0, 0}, {2, 0}, 1.0, {1, 0}, 1.0, kPi, 0.0, false},
      // Bulge −1 runs clockwise, above the chord; read CCW it is 0°..180°.
      {"-1", {0, 0}, {2, 0}, -1.0, {1, 0}, 1.0, 0.0, kPi, true},
      // b = 0.5 on a chord of 2: r = 2(1 + ¼)/2 = 1.25, centre 0.75 above
      // the midpoint (left of the chord, as |b| < 1).
      {"0.5", {0, 0}, {2, 0}, 0.5, {1, 0.75}, 1.25, std::atan2(-0.75, -1) + kTwoPi,
       std::atan2(-0.75, 1) + kTwoPi, false},
      // Quarter circle CCW about the origin: b = tan(90°/4).
      {"quarter", {1, 0}, {0, 1}, std::tan(kPi / 8), {0, 0}, 1.0, 0.0, kPi / 2, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::optional<BulgeArc> arc = BulgeToArc(c.p1, c.p2, c.bulge);
    ASSERT_TRUE(arc.has_value());
    EXPECT_VEC_CLOSE(Lift(arc->center), Lift(c.center));
    EXPECT_NEAR(arc->radius, c.radius, 1e-12);
    EXPECT_NEAR(arc->start_angle, c.start, 1e-12);
    EXPECT_NEAR(arc->end_angle, c.end, 1e-12);
    EXPECT_EQ(arc->reversed, c.reversed);
  }
}

TEST(Bulge, DegenerateSegmentsHaveNoArc) {
  // Zero bulge: straight. Zero-length chord: a point, whatever the bulge.
  EXPECT_FALSE(BulgeToArc({0, 0}, {2, 0}, 0.0).has_value());
  EXPECT_FALSE(BulgeToArc({1, 1}, {1, 1}, 1.0).has_value());
  EXPECT_FALSE(BulgeToArc({0, 0}, {2, 0}, std::nan("")).has_value());
  EXPECT_FALSE(BulgeToArc({0, 0}, {INFINITY, 0}, 1.0).has_value());
  EXPECT_EQ(SegmentLength({1, 1}, {1, 1}, 1.0), 0.0);
  EXPECT_EQ(BulgeSegmentArea({1, 1}, {1, 1}, 1.0), 0.0);
  EXPECT_EQ(ArcToBulge({0, 0}, {1, 0}, {1, 0}, true), 0.0);
}

TEST(Bulge, ArcToBulgeInvertsBulgeToArc) {
  EXPECT_NEAR(ArcToBulge({1, 0}, {0, 0}, {2, 0}, true), 1.0, 1e-12);
  EXPECT_NEAR(ArcToBulge({1, 0}, {0, 0}, {2, 0}, false), -1.0, 1e-12);
  EXPECT_NEAR(ArcToBulge({0, 0}, {1, 0}, {0, 1}, true), std::tan(kPi / 8), 1e-12);
  // Three-quarter turn clockwise from (1,0) to (0,1): θ = −270°.
  EXPECT_NEAR(ArcToBulge({0, 0}, {1, 0}, {0, 1}, false), -std::tan(3 * kPi / 8), 1e-12);
  std::mt19937 rng(2);
  std::uniform_real_distribution<double> b(-3, 3);
  for (int i = 0; i < 100; ++i) {
    const double bulge = b(rng);
    const Vec2 p1{b(rng), b(rng)}, p2{b(rng) + 7, b(rng)};
    const std::optional<BulgeArc> arc = BulgeToArc(p1, p2, bulge);
    ASSERT_TRUE(arc.has_value());
    EXPECT_NEAR(ArcToBulge(arc->center, p1, p2, bulge > 0), bulge, 1e-9) << i;
    // The arc's midpoint is the sagitta |b|·c/2 from the chord's midpoint.
    const Vec2 mid = SegmentPointAt(p1, p2, bulge, 0.5);
    EXPECT_NEAR(Distance(mid, (p1 + p2) * 0.5), std::fabs(bulge) * Distance(p1, p2) / 2, 1e-9) << i;
  }
}

TEST(Bulge, IncludedAngleIsFourArctan) {
  EXPECT_NEAR(IncludedAngle(1.0), kPi, 1e-15);
  EXPECT_NEAR(IncludedAngle(-1.0), -kPi, 1e-15);
  EXPECT_NEAR(BulgeFromIncludedAngle(kPi / 2), std::tan(kPi / 8), 1e-15);
}

std::vector<BulgeVertex> RoundedSquare(double bulge) {
  // 2×2 square, CCW, its right edge (2,0)→(2,2) bulged by `bulge`.
  return {{{0, 0}, 0}, {{2, 0}, bulge}, {{2, 2}, 0}, {{0, 2}, 0}};
}

TEST(Bulge, PolylineAreaIncludesArcSegments) {
  struct Case {
    const char* name;
    std::vector<BulgeVertex> vertices;
    bool closed;
    double area;
  };
  const Case cases[] = {
      {"unit square", {{{0, 0}}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, true, 1.0},
      // Open: measured as if closed by the chord.
      {"open square", {{{0, 0}}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, false, 1.0},
      {"clockwise square", {{{0, 0}}, {{0, 1}}, {{1, 1}}, {{1, 0}}}, true, 1.0},
      // Two half circles of radius 1 make a circle.
      {"circle", {{{0, 0}, 1}, {{2, 0}, 1}}, true, kPi},
      // Positive bulge on a CCW outline bulges outward: + π/2.
      {"outward half circle", RoundedSquare(1.0), true, 4 + kPi / 2},
      {"inward half circle", RoundedSquare(-1.0), true, 4 - kPi / 2},
      // An open half circle closed by its (straight) chord.
      {"open half circle", {{{0, 0}, 1}, {{2, 0}, 0}}, false, kPi / 2},
      // The last vertex's bulge counts only when closed.
      {"open ignores last bulge", {{{0, 0}, 0}, {{2, 0}, 1}}, false, 0.0},
      {"closed uses last bulge", {{{0, 0}, 0}, {{2, 0}, 1}}, true, kPi / 2},
      // A zero-length segment adds nothing, whatever its bulge.
      {"zero-length segment", {{{0, 0}, 1}, {{0, 0}, 0}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, true, 1.0},
      {"one vertex", {{{5, 5}, 1}}, true, 0.0},
      {"empty", {}, true, 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_NEAR(PolylineArea(c.vertices, c.closed), c.area, 1e-12);
  }
}

TEST(Bulge, PolylineLengthCountsArcsAndClosingSegment) {
  EXPECT_NEAR(PolylineLength(RoundedSquare(1.0), true), 6 + kPi, 1e-12);
  EXPECT_NEAR(PolylineLength(RoundedSquare(1.0), false), 4 + kPi, 1e-12);
  const std::vector<BulgeVertex> circle = {{{0, 0}, 1}, {{2, 0}, 1}};
  EXPECT_NEAR(PolylineLength(circle, true), 2 * kPi, 1e-12);
  EXPECT_NEAR(PolylineLength(circle, false), kPi, 1e-12);
  const std::vector<BulgeVertex> zero = {{{1, 1}, 1}, {{1, 1}, 0}, {{4, 5}, 0}};
  EXPECT_NEAR(PolylineLength(zero, false), 5.0, 1e-12);
}

TEST(Bulge, ExtentsIncludeArcExtremes) {
  // The outward half circle on x = 2 reaches x = 3.
  EXPECT_BOX_CLOSE(PolylineExtents(RoundedSquare(1.0), true), BoundingBox({0, 0, 0}, {3, 2, 0}));
  // Inward it stays inside the square.
  EXPECT_BOX_CLOSE(PolylineExtents(RoundedSquare(-1.0), true), BoundingBox({0, 0, 0}, {2, 2, 0}));
  // Open: the last bulge does not count.
  const std::vector<BulgeVertex> v = {{{0, 0}, 0}, {{2, 0}, 1}};
  EXPECT_BOX_CLOSE(PolylineExtents(v, false), BoundingBox({0, 0, 0}, {2, 0, 0}));
  EXPECT_BOX_CLOSE(PolylineExtents(v, true), BoundingBox({0, 0, 0}, {2, 1, 0}));
  EXPECT_BOX_CLOSE(SegmentExtents2d({0, 0}, {2, 0}, 1.0), BoundingBox({0, -1, 0}, {2, 0, 0}));
}

TEST(Bulge, ExtentsOnAnotherNormalAndElevation) {
  // Normal −Z: OCS x is WCS −x, OCS z (elevation 3) is WCS −z.
  const std::vector<BulgeVertex> v = {{{1, 0}, 1}, {{3, 0}, 0}};
  // OCS half circle below the chord, y down to −1; in WCS x is mirrored.
  EXPECT_BOX_CLOSE(PolylineExtents(v, false, {0, 0, -1}, 3.0), BoundingBox({-3, -1, -3}, {-1, 0, -3}));
  EXPECT_FALSE(PolylineExtents(v, false, {0, 0, 0}).has_data);
  const std::optional<PolylineSegment3d> seg = SegmentInWcs(v, false, 0, {0, 0, -1}, 3.0);
  ASSERT_TRUE(seg.has_value() && seg->arc.has_value());
  // A positive bulge starts at its start vertex, OCS (1,0) = WCS (−1,0,−3).
  EXPECT_VEC_CLOSE(*StartPoint(*seg->arc), (Vec3{-1, 0, -3}));
  EXPECT_VEC_CLOSE(seg->start, (Vec3{-1, 0, -3}));
  EXPECT_FALSE(SegmentInWcs(v, false, 1, {0, 0, 1}, 0).has_value());  // open: one segment
}

}  // namespace
}  // namespace tovik::geometry
