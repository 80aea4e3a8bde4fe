#include "geometry/selection_geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "geometry/coordinate_systems.h"
#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {

const Matrix4 kPlan = Matrix4::Identity();

PlanShape Shape(const Curve& c) { return PlanOfCurve(c, kPlan); }
Linear Seg(Vec2 a, Vec2 b) { return {Lift(a), Lift(b), LinearKind::kSegment}; }

// An L-shaped (concave) polygon: the square 0..4 minus its top-right 2×2.
const std::vector<Vec2> kL = {{0, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 4}, {0, 4}};

TEST(Selection, LocatePointWithBoundaries) {
  struct Case {
    Vec2 p;
    PointLocation want;
  };
  const Case cases[] = {
      {{1, 1}, PointLocation::kInside},
      {{3, 3}, PointLocation::kOutside},       // in the notch
      {{3, 1}, PointLocation::kInside},
      {{4, 1}, PointLocation::kOnBoundary},    // on an edge
      {{2, 2}, PointLocation::kOnBoundary},    // on the reflex vertex
      {{0, 4}, PointLocation::kOnBoundary},    // on a corner
      {{-1, 2}, PointLocation::kOutside},
      {{1, 2}, PointLocation::kInside},        // level with a vertex
      {{std::nan(""), 1}, PointLocation::kOutside},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.p));
    EXPECT_EQ(LocatePoint(c.p, kL), c.want);
  }
  EXPECT_EQ(LocatePoint({0, 0}, std::vector<Vec2>{}), PointLocation::kOutside);
}

TEST(Selection, WindowAndCrossingOnTrueGeometry) {
  const Box2 window{-1.5, -0.5, 1.5, 0.9};
  struct Case {
    const char* name;
    PlanShape shape;
    bool inside, crossing;
  };
  const Case cases[] = {
      {"segment inside", Shape(Seg({-1, 0}, {1, 0})), true, true},
      // Boundary pinned: touching the window edge counts as inside.
      {"segment touching the edge", Shape(Seg({-1.5, 0}, {1.5, 0.9})), true, true},
      {"segment poking out", Shape(Seg({0, 0}, {2, 0})), false, true},
      {"segment outside", Shape(Seg({2, 0}, {3, 0})), false, false},
      {"segment touching from outside", Shape(Seg({1.5, 0}, {3, 0})), false, true},
      // The upper half circle: ends and chord are inside, but its top (0,1)
      // is above the window. True geometry says: crossing, not inside.
      {"arc bulging out", Shape(Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi}), false, true},
      {"lower half circle", Shape(Arc{{0, 0, 0}, 0.4, {0, 0, 1}, kPi, 0}), true, true},
      // A circle around the window does not touch it: not selected.
      {"circle around", Shape(Arc::Circle({0, 0, 0}, 5)), false, false},
      {"point inside", PlanOfPoint({0, 0, 7}, kPlan), true, true},
      {"point on corner", PlanOfPoint({1.5, 0.9, 0}, kPlan), true, true},
      {"ray", Shape(Linear{{0, 0, 0}, {1, 0, 0}, LinearKind::kRay}), false, true},
      {"empty", PlanShape{}, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(InsideRectangle(c.shape, window), c.inside);
    EXPECT_EQ(CrossesOrInsideRectangle(c.shape, window), c.crossing);
  }
  EXPECT_FALSE(InsideRectangle(Shape(Seg({0, 0}, {1, 0})), {NAN, 0, 1, 1}));
}

TEST(Selection, PolygonModesOnAConcaveOutline) {
  struct Case {
    const char* name;
    PlanShape shape;
    bool inside, crossing;
  };
  const Case cases[] = {
      {"in the foot", Shape(Seg({0.5, 0.5}, {3.5, 0.5})), true, true},
      // Both ends inside, but the segment cuts across the notch.
      {"across the notch", Shape(Seg({3.5, 1.5}, {1.5, 3.5})), false, true},
      // Boundary: passing exactly through the reflex corner (2,2) stays inside.
      {"through the reflex corner", Shape(Seg({3, 1}, {1, 3})), true, true},
      // Along the reflex edges: on the boundary all the way, so inside.
      {"along the boundary", Shape(Seg({4, 2}, {2, 2})), true, true},
      {"in the notch", Shape(Seg({2.5, 2.5}, {3.5, 3.5})), false, false},
      {"circle inside", Shape(Arc::Circle({1, 1, 0}, 0.9)), true, true},
      // Touches the bottom edge from inside: inside.
      {"circle touching", Shape(Arc::Circle({1, 1, 0}, 1)), true, true},
      {"circle bulging into the notch", Shape(Arc::Circle({1.8, 1.8, 0}, 0.5)), false, true},
      {"polyline", PlanOfPolyline(std::vector<BulgeVertex>{{{0.5, 0.5}, 1}, {{1.5, 0.5}, 0}}, false, {0, 0, 1}, 0, kPlan),
       true, true},
      // The bulge swings below y = 0: outside the polygon.
      {"bulge poking out", PlanOfPolyline(std::vector<BulgeVertex>{{{0.5, 0.2}, 1}, {{1.5, 0.2}, 0}}, false, {0, 0, 1}, 0, kPlan),
       false, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(InsidePolygon(c.shape, kL), c.inside);
    EXPECT_EQ(CrossesOrInsidePolygon(c.shape, kL), c.crossing);
  }
  const std::vector<Vec2> two = {{0, 0}, {1, 1}};
  EXPECT_FALSE(InsidePolygon(Shape(Seg({0, 0}, {0.1, 0.1})), two));  // too few vertices
}

TEST(Selection, FenceTouchingCounts) {
  const std::vector<Vec2> fence = {{-2, 1}, {2, 1}, {2, 5}};
  EXPECT_TRUE(FenceCrosses(Shape(Seg({0, 0}, {0, 3})), fence));
  // Tangent to the top of the unit circle: touching selects.
  EXPECT_TRUE(FenceCrosses(Shape(Arc::Circle({0, 0, 0}, 1)), fence));
  EXPECT_FALSE(FenceCrosses(Shape(Arc::Circle({0, -0.1, 0}, 1)), fence));
  // A segment lying along the fence overlaps it.
  EXPECT_TRUE(FenceCrosses(Shape(Seg({-1, 1}, {1, 1})), fence));
  EXPECT_TRUE(FenceCrosses(PlanOfPoint({2, 3, 0}, kPlan), fence));
  // The fence is open: nothing joins (2,5) back to (−2,1).
  EXPECT_FALSE(FenceCrosses(Shape(Seg({-1, 3}, {0, 3.5})), fence));
  EXPECT_FALSE(FenceCrosses(Shape(Seg({0, 0}, {0, 3})), std::vector<Vec2>{{0, 1}}));
}

TEST(Selection, ProjectionIntoThePlan) {
  // A circle standing on edge (normal X) covers the segment x = 0, y ±1.
  const PlanShape edge_on = Shape(Arc::Circle({0, 0, 5}, 1, {1, 0, 0}));
  EXPECT_BOX_CLOSE(PlanExtents(edge_on), BoundingBox({0, -1, 0}, {0, 1, 0}));
  EXPECT_TRUE(InsideRectangle(edge_on, {-0.1, -1, 0.1, 1}));
  EXPECT_FALSE(InsideRectangle(edge_on, {-0.1, -0.9, 0.1, 1}));
  // Tilted 45° about X it projects to an ellipse with semi-axes 1 and √½.
  const double h = std::sqrt(0.5);
  const PlanShape tilted = Shape(Arc::Circle({0, 0, 0}, 1, {0, -1, 1}));
  EXPECT_BOX_CLOSE(PlanExtents(tilted), BoundingBox({-1, -h, 0}, {1, h, 0}));
  EXPECT_TRUE(std::holds_alternative<Ellipse>(tilted.curves.at(0)));
  // A vertical line seen from above is a point.
  EXPECT_EQ(Shape(Linear{{1, 2, 0}, {1, 2, 9}}).points.size(), 1u);
  // Judged in a UCS turned 90°: WCS (0,0)–(2,0) lies along UCS −Y.
  CoordinateContext ctx;
  ctx.ucs = Ucs{{0, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
  const Matrix4 to_ucs = *UcsToWcsMatrix(ctx.ucs)->Inverse();
  const PlanShape in_ucs = PlanOfCurve(Linear{{0, 0, 0}, {2, 0, 0}}, to_ucs);
  EXPECT_TRUE(InsideRectangle(in_ucs, {-0.1, -2, 0.1, 0}));
  EXPECT_FALSE(InsideRectangle(in_ucs, {0, 0, 2, 0.1}));
  // Degenerate input contributes nothing.
  EXPECT_TRUE(Shape(Arc::Circle({0, 0, 0}, 0)).empty());
  EXPECT_TRUE(PlanOfPoint({NAN, 0, 0}, kPlan).empty());
}

TEST(Selection, PickDistances) {
  EXPECT_NEAR(*DistanceTo(Shape(Seg({0, 0}, {2, 0})), {1, 3}), 3.0, 1e-12);
  EXPECT_NEAR(*DistanceTo(Shape(Seg({0, 0}, {2, 0})), {5, 4}), 5.0, 1e-12);  // to the end
  EXPECT_NEAR(*DistanceTo(Shape(Arc::Circle({0, 0, 0}, 1)), {3, 0}), 2.0, kGeoTol);
  EXPECT_NEAR(*DistanceTo(Shape(Arc::Circle({0, 0, 0}, 1)), {0.25, 0}), 0.75, kGeoTol);
  // The quarter arc 0..90°: from (0,−2) the nearest point is its start (1,0).
  EXPECT_NEAR(*DistanceTo(Shape(Arc{{0, 0, 0}, 1, {0, 0, 1}, 0, kPi / 2}), {0, -2}), std::sqrt(5.0), kGeoTol);
  // The 2:1 ellipse: (0,3) is 2 above its minor vertex (0,1).
  EXPECT_NEAR(*DistanceTo(Shape(Ellipse{{0, 0, 0}, {2, 0, 0}, 0.5}), {0, 3}), 2.0, kGeoTol);
  PlanShape both = Shape(Seg({10, 0}, {10, 1}));
  Append(&both, PlanOfPoint({0, 0, 0}, kPlan));
  EXPECT_NEAR(*DistanceTo(both, {1, 0}), 1.0, 1e-12);
  EXPECT_FALSE(DistanceTo(PlanShape{}, {0, 0}).has_value());
  EXPECT_FALSE(DistanceTo(both, {NAN, 0}).has_value());
}

}  // namespace
}  // namespace tovik::geometry
