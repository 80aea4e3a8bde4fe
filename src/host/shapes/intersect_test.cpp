// IntersectWith on rays, construction lines, ellipses, block references
// (their box) and bulged polylines under the four extend options, with
// points worked out by hand.
#include <cmath>
#include <string>

#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "tests/support/geometry_checks.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

class IntersectTest : public HostTest {
 protected:


  struct Case {
    std::string what;
    ObjectRef a, b;
    int option;
    std::vector<double> points;  // x,y,z per point, any order
  };
  void Check(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.what + ", option " + std::to_string(c.option));
      ExpectDoubles(SortedPoints(IntersectionOf(c.a, c.b, c.option)), SortedPoints(c.points));
    }
  }
};

TEST_F(IntersectTest, RaysAndConstructionLinesRunOnFromTheirBase) {
  ObjectRef ray = Infinite(GenericKind::kRay, {0, 0, 0}, {1, 0, 0});
  ObjectRef ray_inside = Infinite(GenericKind::kRay, {4, 0, 0}, {1, 0, 0});
  ObjectRef diagonal = Infinite(GenericKind::kXLine, {0, 0, 0}, {1, 1, 0});
  ObjectRef ahead = Line(5, -1, 5, 1), behind = Line(-5, -1, -5, 1), low = Line(-5, -3, 5, -3);
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(5, 0), Variant(2.0)}).Object();
  ObjectRef at_base = Line(0, -1, 0, 1);
  Check({
      {"ray meets a line ahead of its base", ray, ahead, 0, {5, 0, 0}},
      {"the same seen from the line", ahead, ray, 0, {5, 0, 0}},
      {"nothing behind the base", ray, behind, 0, {}},
      // Extending the other side makes the line x = −5, still behind.
      {"nothing behind the base, other extended", ray, behind, 2, {}},
      // Boundary: a line through the base point itself meets the ray.
      {"line through the base", ray, at_base, 0, {0, 0, 0}},
      {"ray through a circle", ray, circle, 0, {3, 0, 0, 7, 0, 0}},
      // Starting inside the circle at x = 4, only the far crossing is ahead.
      {"ray from inside a circle", ray_inside, circle, 0, {7, 0, 0}},
      // y = x meets y = −3 at (−3,−3), on both sides of nothing.
      {"construction line both ways", diagonal, low, 0, {-3, -3, 0}},
      {"construction line and ray", diagonal, ray, 0, {0, 0, 0}},
      // On y = x: (x − 5)² + x² = 4 → 2x² − 10x + 21 = 0, whose
      // discriminant 100 − 168 is negative: the diagonal misses the circle.
      {"construction line missing a circle", diagonal, circle, 0, {}},
  });
  // Neither has extents.
  const AutomationError r = ErrorOf([&] { BoxOf(ray); });
  EXPECT_EQ(r.Number(), -2145386458);
  EXPECT_EQ(r.Description(), "Null extents");
}

TEST_F(IntersectTest, EllipsesAndEllipticalArcs) {
  // x²/16 + y²/4 = 1 around the origin.
  ObjectRef ellipse = CallMethod(ms, "AddEllipse", {Pt(0, 0), Pt(4, 0), Variant(0.5)}).Object();
  ObjectRef upper = CallMethod(ms, "AddEllipse", {Pt(0, 0), Pt(4, 0), Variant(0.5)}).Object();
  LetProperty(upper, "EndParameter", Variant(kPi));  // the half above the X axis
  ObjectRef axis = Line(0, -5, 0, 5), at_two = Line(2, -5, 2, 5), short_up = Line(2, 0.5, 2, 5);
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(3.0)}).Object();
  ObjectRef tangent = Line(-5, 2, 5, 2);
  const double r3 = std::sqrt(3.0);
  // With x² + y² = 9: x²/16 + (9 − x²)/4 = 1 → 3x² = 20, y² = 7/3.
  const double cx = std::sqrt(20.0 / 3), cy = std::sqrt(7.0 / 3);
  Check({
      {"minor axis", ellipse, axis, 0, {0, -2, 0, 0, 2, 0}},
      // x = 2: y² = 4·(1 − 4/16) = 3.
      {"vertical at x = 2", ellipse, at_two, 0, {2, -r3, 0, 2, r3, 0}},
      {"short line reaching only the upper crossing", ellipse, short_up, 0, {2, r3, 0}},
      // Extending the short line gives both crossings.
      {"short line extended", ellipse, short_up, 2, {2, -r3, 0, 2, r3, 0}},
      {"circle", ellipse, circle, 0, {-cx, -cy, 0, -cx, cy, 0, cx, -cy, 0, cx, cy, 0}},
      {"upper half and circle", upper, circle, 0, {-cx, cy, 0, cx, cy, 0}},
      {"upper half extended to the whole ellipse", upper, circle, 1,
       {-cx, -cy, 0, -cx, cy, 0, cx, -cy, 0, cx, cy, 0}},
      // Boundary: y = 2 touches the top (0,2) once.
      {"tangent line", ellipse, tangent, 0, {0, 2, 0}},
  });
}

TEST_F(IntersectTest, BlockReferencesIntersectByTheirBox) {
  ObjectRef block = AddBlock("RING");
  CallMethod(block, "AddCircle", {Pt(0, 0), Variant(1.0)});
  ObjectRef stick = AddBlock("STICK");
  CallMethod(stick, "AddLine", {Pt(0, 0), Pt(2, 0)});
  // The ring's box is (9,−1)-(11,1). A line at y = 0.9 crosses the circle
  // at x = 10 ± 0.436 but the box at x = 9 and x = 11.
  ObjectRef ring = Insert(ms, "RING", {10, 0, 0});
  ObjectRef high = Line(0, 0.9, 20, 0.9);
  // The stick turned a quarter: its box is the segment (0,0)-(0,2).
  ObjectRef turned = Insert(ms, "STICK", {0, 0, 0}, {1, 1, 1}, kPi / 2);
  ObjectRef across = Line(-1, 1, 1, 1), missing = Line(-1, 3, 1, 3);
  Check({
      {"line across the ring's box", high, ring, 0, {9, 0.9, 0, 11, 0.9, 0}},
      {"the ring's box across the line", ring, high, 0, {9, 0.9, 0, 11, 0.9, 0}},
      {"flat box of a turned stick", turned, across, 0, {0, 1, 0}},
      {"above the stick", turned, missing, 0, {}},
      // The other side extended: y = 3 still misses a box ending at y = 2.
      {"above the stick, line extended", turned, missing, 2, {}},
  });
}

TEST_F(IntersectTest, BulgedPolylineEndsExtendOnlyOutwards) {
  // (0,0) → (2,0) straight, then bulge −1 from (2,0) to (4,0): the half
  // circle above, centre (3,0), radius 1, through (3,1).
  ObjectRef pl = Polyline({0, 0, 2, 0, 4, 0});
  CallMethod(pl, "SetBulge", {Variant(int16_t(1)), Variant(-1.0)});
  ObjectRef top = Line(3, 0.5, 3, 5), bottom = Line(3, -5, 3, -0.5), left = Line(-1, -1, -1, 1);
  // A three-segment polyline whose middle segment x = 2 would reach y = 5
  // if it were extended; only the end segments (y = 0 backwards, y = 2
  // forwards) extend, and they run parallel to y = 5.
  ObjectRef zigzag = Polyline({0, 0, 2, 0, 2, 2, 4, 2});
  ObjectRef above = Line(1, 5, 3, 5);
  ObjectRef square = Polyline({0, 0, 2, 0, 2, 2, 0, 2});
  LetProperty(square, "Closed", Variant(true));
  ObjectRef beside = Line(3, 1, 5, 1);
  Check({
      {"arc top", pl, top, 0, {3, 1, 0}},
      {"arc top", pl, top, 1, {3, 1, 0}},
      // The last segment becomes its full circle: (3,−1).
      {"below the arc", pl, bottom, 0, {}},
      {"below the arc", pl, bottom, 1, {3, -1, 0}},
      // The line becomes x = 3 and meets the half circle at its top.
      {"below the arc", pl, bottom, 2, {3, 1, 0}},
      {"below the arc", pl, bottom, 3, {3, -1, 0, 3, 1, 0}},
      // The first segment runs on backwards from (0,0) along y = 0.
      {"left of the start", pl, left, 0, {}},
      {"left of the start", pl, left, 1, {-1, 0, 0}},
      {"left of the start", pl, left, 2, {}},
      {"left of the start", pl, left, 3, {-1, 0, 0}},
      // Seen from the other side, option 2 extends the polyline.
      {"left of the start, from the line", left, pl, 2, {-1, 0, 0}},
      {"middle segment never extends", zigzag, above, 1, {}},
      {"middle segment never extends", zigzag, above, 3, {}},
      // A closed polyline has no ends to extend.
      {"closed square", square, beside, 1, {}},
      {"closed square, line extended", square, beside, 2, {0, 1, 0, 2, 1, 0}},
  });
}

TEST_F(IntersectTest, DegenerateCurvesAndBadOptions) {
  ObjectRef base = Line(0, 0, 2, 0);
  ObjectRef dot = Line(1, 0, 1, 0), off = Line(1, 1, 1, 1);
  ObjectRef raised = Line(0, 0, 0, 2);  // starts on base's start point
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(1, 0, 1), Variant(1.0)}).Object();  // at z = 1
  ObjectRef arc = CallMethod(ms, "AddArc", {Pt(1, 1), Variant(1.0), Variant(kPi), Variant(0.0)}).Object();
  Check({
      {"zero-length line on the other", dot, base, 0, {1, 0, 0}},
      {"zero-length line off the other", off, base, 0, {}},
      // Boundary: segments sharing an end point meet there.
      {"shared end point", base, raised, 0, {0, 0, 0}},
      // The circle lies in z = 1; the line at z = 0 passes under it.
      {"line under a raised circle", base, circle, 0, {}},
      // The lower half-circle of radius 1 about (1,1) touches y = 0 at (1,0).
      {"tangent arc", base, arc, 0, {1, 0, 0}},
  });
  for (const Variant& option : {Variant(int32_t(4)), Variant(int32_t(-1))}) {
    SCOPED_TRACE(CLng(option));
    const AutomationError r = ErrorOf([&] { CallMethod(base, "IntersectWith", {Variant(dot), option}); });
    EXPECT_EQ(r.Number(), kScodeInvalidArgument);
    EXPECT_EQ(r.Description(), "Invalid argument ExtendOption in IntersectWith");
  }
  const AutomationError r = ErrorOf([&] { CallMethod(base, "IntersectWith", {Variant(doc), Variant(int32_t(0))}); });
  EXPECT_EQ(r.Number(), kScodeInvalidArgument);
  EXPECT_EQ(r.Description(), "Invalid argument IntersectObject in IntersectWith");
}

}  // namespace
}  // namespace tovik::host
