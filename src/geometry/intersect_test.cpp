#include "geometry/intersect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {


Linear Seg(Vec3 a, Vec3 b) { return {a, b, LinearKind::kSegment}; }

// True when both lists hold the same points in any order.
::testing::AssertionResult SamePoints(const std::vector<Vec3>& got, const std::vector<Vec3>& want) {
  auto fail = [&] {
    return ::testing::AssertionFailure() << "got " << ::testing::PrintToString(got) << ", want "
                                         << ::testing::PrintToString(want);
  };
  if (got.size() != want.size()) return fail();
  for (const Vec3& w : want)
    if (std::none_of(got.begin(), got.end(), [&](const Vec3& g) { return IsClose(g, w, 1e-7); }))
      return fail();
  return ::testing::AssertionSuccess();
}

struct Case {
  const char* name;
  Curve a, b;
  bool extend_a = false, extend_b = false;
  std::vector<Vec3> want;
};

void RunCases(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(SamePoints(Intersect(c.a, c.b, c.extend_a, c.extend_b), c.want));
    // The answer does not depend on the order of the operands.
    EXPECT_TRUE(SamePoints(Intersect(c.b, c.a, c.extend_b, c.extend_a), c.want));
  }
}

TEST(Intersect, LinearPairs) {
  RunCases({
      {"crossing segments", Seg({0, 0, 0}, {2, 2, 0}), Seg({0, 2, 0}, {2, 0, 0}), false, false, {{1, 1, 0}}},
      {"short of each other", Seg({0, 0, 0}, {1, 0, 0}), Seg({2, -1, 0}, {2, 1, 0}), false, false, {}},
      {"extend the short one", Seg({0, 0, 0}, {1, 0, 0}), Seg({2, -1, 0}, {2, 1, 0}), true, false, {{2, 0, 0}}},
      {"extending the other is not enough", Seg({0, 0, 0}, {1, 0, 0}), Seg({2, -1, 0}, {2, 1, 0}), false, true, {}},
      // Boundary: an end point touching the other segment counts.
      {"T junction", Seg({0, 0, 0}, {2, 0, 0}), Seg({1, 0, 0}, {1, 5, 0}), false, false, {{1, 0, 0}}},
      // Parallel lines never meet, even extended.
      {"parallel", Seg({0, 0, 0}, {1, 0, 0}), Seg({0, 1, 0}, {1, 1, 0}), true, true, {}},
      // Overlapping collinear segments: infinitely many points, none returned.
      {"collinear overlap", Seg({0, 0, 0}, {2, 0, 0}), Seg({1, 0, 0}, {3, 0, 0}), false, false, {}},
      // Collinear, meeting end to end: the single shared point.
      {"collinear end to end", Seg({0, 0, 0}, {1, 0, 0}), Seg({1, 0, 0}, {3, 0, 0}), false, false, {{1, 0, 0}}},
      {"collinear apart", Seg({0, 0, 0}, {1, 0, 0}), Seg({2, 0, 0}, {3, 0, 0}), false, false, {}},
      // Non-coplanar lines meet only if they truly meet.
      {"skew", Seg({0, 0, 0}, {1, 0, 0}), Seg({0.5, -1, 1}, {0.5, 1, 1}), true, true, {}},
      {"3D crossing", Seg({0, 0, 0}, {2, 2, 2}), Seg({2, 0, 0}, {0, 2, 2}), false, false, {{1, 1, 1}}},
      {"ray ahead", Linear{{0, 0, 0}, {1, 0, 0}, LinearKind::kRay}, Seg({5, -1, 0}, {5, 1, 0}), false, false, {{5, 0, 0}}},
      {"ray behind", Linear{{0, 0, 0}, {1, 0, 0}, LinearKind::kRay}, Seg({-1, -1, 0}, {-1, 1, 0}), false, false, {}},
      {"infinite line", Linear{{0, 0, 0}, {1, 0, 0}, LinearKind::kLine}, Seg({-7, -1, 0}, {-7, 1, 0}), false, false, {{-7, 0, 0}}},
      // A zero-length segment is a point: on the other curve or not.
      {"zero-length on", Seg({1, 0, 0}, {1, 0, 0}), Seg({0, 0, 0}, {2, 0, 0}), false, false, {{1, 0, 0}}},
      {"zero-length off", Seg({1, 1, 0}, {1, 1, 0}), Seg({0, 0, 0}, {2, 0, 0}), true, true, {}},
  });
}

TEST(Intersect, LinearAndCircle) {
  const Arc unit = Arc::Circle({0, 0, 0}, 1);
  const Arc quarter{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi / 2};
  RunCases({
      {"secant", Seg({-2, 0, 0}, {2, 0, 0}), unit, false, false, {{-1, 0, 0}, {1, 0, 0}}},
      // Tangency: one point.
      {"tangent", Seg({-2, 1, 0}, {2, 1, 0}), unit, false, false, {{0, 1, 0}}},
      {"just missing", Seg({-2, 1 + 1e-6, 0}, {2, 1 + 1e-6, 0}), unit, false, false, {}},
      {"segment inside", Seg({-0.5, 0, 0}, {0.5, 0, 0}), unit, false, false, {}},
      {"segment inside, extended", Seg({-0.5, 0, 0}, {0.5, 0, 0}), unit, true, false, {{-1, 0, 0}, {1, 0, 0}}},
      {"arc keeps its side", Seg({-2, 0.5, 0}, {2, 0.5, 0}), quarter, false, false, {{std::sqrt(0.75), 0.5, 0}}},
      {"arc extended", Seg({-2, 0.5, 0}, {2, 0.5, 0}), quarter, false, true,
       {{std::sqrt(0.75), 0.5, 0}, {-std::sqrt(0.75), 0.5, 0}}},
      // A line piercing a circle standing in the YZ plane.
      {"piercing", Seg({-1, 1, 0}, {1, 1, 0}), Arc::Circle({0, 0, 0}, 1, {1, 0, 0}), false, false, {{0, 1, 0}}},
      {"piercing inside", Seg({-1, 0.5, 0}, {1, 0.5, 0}), Arc::Circle({0, 0, 0}, 1, {1, 0, 0}), false, false, {}},
      {"parallel plane", Seg({-2, 0, 1}, {2, 0, 1}), unit, true, false, {}},
      // A bulged segment: bulge 1 from (0,0) to (2,0) passes (1,−1).
      {"bulge segment", Seg({1, -5, 0}, {1, 5, 0}),
       CurveFromPolylineSegment(*SegmentInWcs(std::vector<BulgeVertex>{{{0, 0}, 1}, {{2, 0}, 0}}, false, 0, {0, 0, 1}, 0)),
       false, false, {{1, -1, 0}}},
  });
}

TEST(Intersect, CirclePairs) {
  const double h = std::sqrt(3.0) / 2;
  RunCases({
      {"two points", Arc::Circle({0, 0, 0}, 1), Arc::Circle({1, 0, 0}, 1), false, false, {{0.5, h, 0}, {0.5, -h, 0}}},
      {"external tangency", Arc::Circle({0, 0, 0}, 1), Arc::Circle({2, 0, 0}, 1), false, false, {{1, 0, 0}}},
      {"internal tangency", Arc::Circle({0, 0, 0}, 2), Arc::Circle({1, 0, 0}, 1), false, false, {{2, 0, 0}}},
      {"apart", Arc::Circle({0, 0, 0}, 1), Arc::Circle({3, 0, 0}, 1), false, false, {}},
      {"nested", Arc::Circle({0, 0, 0}, 3), Arc::Circle({0.5, 0, 0}, 1), false, false, {}},
      // Coincident circles share everything: no points.
      {"coincident", Arc::Circle({0, 0, 0}, 1), Arc::Circle({0, 0, 0}, 1), false, false, {}},
      {"arcs end to end", Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi / 2}, Arc{{0, 0, 0}, 1, {0, 0, 1}, kPi / 2, kPi}, false, false, {{0, 1, 0}}},
      {"arcs overlapping", Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi / 2}, Arc{{0, 0, 0}, 1, {0, 0, 1}, kPi / 4, kPi}, false, false, {}},
      {"half circles", Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi}, Arc{{0, 0, 0}, 1, {0, 0, 1}, kPi, 0}, false, false, {{1, 0, 0}, {-1, 0, 0}}},
      // Seen from −Z (OCS x = WCS −x) the upper half runs 0..180° too: overlap.
      {"same arc, other normal", Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi}, Arc{{0, 0, 0}, 1, {0, 0, -1}, 0, kPi}, false, false, {}},
      {"lower half from -Z", Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi}, Arc{{0, 0, 0}, 1, {0, 0, -1}, kPi, 0}, false, false,
       {{1, 0, 0}, {-1, 0, 0}}},
      {"arc misses, extended hits", Arc{{0, 0, 0}, 1, {0, 0, 1}, kPi, 1.5 * kPi}, Arc::Circle({1, 0, 0}, 1), true, false,
       {{0.5, h, 0}, {0.5, -h, 0}}},
      // Different planes: only points on the common line count.
      {"crossed planes", Arc::Circle({0, 0, 0}, 1), Arc::Circle({0, 0, 0}, 1, {0, 1, 0}), false, false, {{1, 0, 0}, {-1, 0, 0}}},
      {"crossed planes apart", Arc::Circle({0, 0, 0}, 1), Arc::Circle({1, 0, 0}, 1, {0, 1, 0}), false, false, {}},
      {"parallel planes", Arc::Circle({0, 0, 0}, 1), Arc::Circle({0, 0, 1}, 1), false, false, {}},
  });
}

TEST(Intersect, EllipsePairs) {
  const Ellipse flat{{0, 0, 0}, {2, 0, 0}, 0.5};   // x²/4 + y² = 1
  const Ellipse tall{{0, 0, 0}, {0, 2, 0}, 0.5};   // x² + y²/4 = 1
  const double a = std::sqrt(5.0 / 3.0), b = std::sqrt(7.0 / 12.0), c = 2.0 / std::sqrt(5.0);
  RunCases({
      {"vertical line", Seg({1, -5, 0}, {1, 5, 0}), flat, false, false, {{1, std::sqrt(0.75), 0}, {1, -std::sqrt(0.75), 0}}},
      {"tangent line", Seg({2, -5, 0}, {2, 5, 0}), flat, false, false, {{2, 0, 0}}},
      // With x² + y² = 9/4: x² = 5/3, y² = 7/12.
      {"circle, four points", flat, Arc::Circle({0, 0, 0}, 1.5), false, false, {{a, b, 0}, {-a, b, 0}, {a, -b, 0}, {-a, -b, 0}}},
      // The unit circle touches the minor vertices, radius 2 the major ones.
      {"inner tangency", flat, Arc::Circle({0, 0, 0}, 1), false, false, {{0, 1, 0}, {0, -1, 0}}},
      {"outer tangency", flat, Arc::Circle({0, 0, 0}, 2), false, false, {{2, 0, 0}, {-2, 0, 0}}},
      {"crossed ellipses", flat, tall, false, false, {{c, c, 0}, {-c, c, 0}, {c, -c, 0}, {-c, -c, 0}}},
      {"first quadrant arc", Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5, {0, 0, 1}, 0, kPi / 2}, tall, false, false, {{c, c, 0}}},
      {"first quadrant arc, extended", Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5, {0, 0, 1}, 0, kPi / 2}, tall, true, false,
       {{c, c, 0}, {-c, c, 0}, {c, -c, 0}, {-c, -c, 0}}},
      {"coincident", flat, Ellipse{{0, 0, 0}, {-2, 0, 0}, 0.5}, false, false, {}},
      {"ellipse arcs end to end", Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5, {0, 0, 1}, 0, kPi / 2},
       Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5, {0, 0, 1}, kPi / 2, kPi}, false, false, {{0, 1, 0}}},
      // In the YZ plane with semi-axes 3 (z) and 1 (y): they share (0, ±1, 0).
      {"other plane", flat, Ellipse{{0, 0, 0}, {0, 0, 3}, 1.0 / 3.0, {1, 0, 0}}, false, false, {{0, 1, 0}, {0, -1, 0}}},
  });
}

TEST(Intersect, InvalidInputGivesNoPoints) {
  const Arc unit = Arc::Circle({0, 0, 0}, 1);
  const double nan = std::nan("");
  EXPECT_TRUE(Intersect(Seg({nan, 0, 0}, {1, 0, 0}), unit).empty());
  EXPECT_TRUE(Intersect(Arc::Circle({0, 0, 0}, 0), Seg({-1, 0, 0}, {1, 0, 0})).empty());
  EXPECT_TRUE(Intersect(Arc::Circle({0, 0, 0}, 1, {0, 0, 0}), Seg({-2, 0, 0}, {2, 0, 0})).empty());
  EXPECT_TRUE(Intersect(Linear{{0, 0, 0}, {0, 0, 0}, LinearKind::kRay}, unit).empty());
  EXPECT_TRUE(Intersect(Ellipse{{0, 0, 0}, {1, 0, 0}, 0}, unit).empty());
  EXPECT_TRUE(Intersect(Seg({-2, 0, 0}, {2, 0, 0}), unit, false, false, nan).empty());
  EXPECT_TRUE(Intersect(Seg({-INFINITY, 0, 0}, {2, 0, 0}), unit).empty());
}

// A random curve of each kind around the origin.
Curve RandomCurve(std::mt19937& rng, int kind) {
  std::uniform_real_distribution<double> angle(0, kTwoPi), ratio(0.2, 1.0);
  const Vec3 n{0, 0, 1};
  switch (kind) {
    case 0:
      return Seg(testing::RandomVec(rng, -3, 3) * 1.0 + Vec3{0, 0, 0}, testing::RandomVec(rng, -3, 3));
    case 1:
      return Arc{testing::RandomVec(rng, -1, 1), 2.0, n, angle(rng), angle(rng)};
    default:
      return Ellipse{testing::RandomVec(rng, -1, 1), Vec3{2.5, 0.7, 0}, ratio(rng), n, angle(rng), angle(rng)};
  }
}

// Flattens to z = 0 so random pairs are coplanar and actually meet.
Curve Flat(Curve c) {
  if (Linear* l = std::get_if<Linear>(&c)) l->start.z = l->end.z = 0;
  if (Arc* a = std::get_if<Arc>(&c)) a->center.z = 0;
  if (Ellipse* e = std::get_if<Ellipse>(&c)) e->center.z = 0;
  return c;
}

Curve TransformCurve(const Curve& c, const Matrix4& m) {
  if (const Linear* l = std::get_if<Linear>(&c))
    return Linear{m.TransformPoint(l->start), m.TransformPoint(l->end), l->kind};
  if (const Arc* a = std::get_if<Arc>(&c)) return *TransformArc(*a, m);
  return *TransformEllipse(std::get<Ellipse>(c), m);
}

TEST(Intersect, SyncedRandomTransforms) {
  std::mt19937 rng(31);
  int with_points = 0;
  for (int i = 0; i < 300; ++i) {
    SCOPED_TRACE(i);
    const Curve a = Flat(RandomCurve(rng, i % 3)), b = Flat(RandomCurve(rng, (i / 3) % 3));
    const std::vector<Vec3> before = Intersect(a, b);
    with_points += !before.empty();
    // Arcs stay arcs only under similarities; lines and ellipses take any
    // affine map, and intersections are affine-invariant.
    const bool arcs = std::holds_alternative<Arc>(a) || std::holds_alternative<Arc>(b);
    const Matrix4 m = arcs ? testing::RandomSimilarity(rng, i % 2) : testing::RandomAffine(rng);
    std::vector<Vec3> want;
    for (const Vec3& p : before) want.push_back(m.TransformPoint(p));
    EXPECT_TRUE(SamePoints(Intersect(TransformCurve(a, m), TransformCurve(b, m)), want));
  }
  EXPECT_GT(with_points, 100);  // the pairs do meet often enough to matter
}

TEST(Intersect, AppendUniqueDeduplicates) {
  std::vector<Vec3> pts;
  AppendUnique(&pts, {1, 0, 0});
  AppendUnique(&pts, {1 + 1e-12, 0, 0});
  AppendUnique(&pts, {2, 0, 0});
  AppendUnique(&pts, {std::nan(""), 0, 0});
  EXPECT_EQ(pts.size(), 2u);
}

}  // namespace
}  // namespace tovik::geometry
