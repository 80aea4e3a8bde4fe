// Selection by true geometry: window, crossing, window polygon, crossing
// polygon and fence tests, point-in-polygon, and pick distances.
//
// Everything is judged in a plan: the caller passes the matrix taking WCS to
// the judging frame (the current UCS), and the primitives are projected onto
// its XY plane (z dropped). An arc seen at an angle is judged as the ellipse
// it projects to; seen edge-on it is the segment it covers.
//
// Boundary rule (as AutoCAD's window): touching counts. An entity touching
// the window's or polygon's edge from inside is entirely inside; a
// crossing window or fence that only touches an entity selects it. The
// tolerance is kAbsTol in plan units.
#ifndef TOVIK_GEOMETRY_SELECTION_GEOMETRY_H_
#define TOVIK_GEOMETRY_SELECTION_GEOMETRY_H_

#include <optional>
#include <span>
#include <vector>

#include "geometry/box.h"
#include "geometry/bulge.h"
#include "geometry/intersect.h"
#include "geometry/matrix.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// A primitive flattened into the plan: curves lying in z = 0 plus lone
// points. One entity may combine several (a polyline's segments, a text's
// box outline). Rays and infinite lines are never inside a window.
struct PlanShape {
  std::vector<Curve> curves;
  std::vector<Vec2> points;
  bool empty() const { return curves.empty() && points.empty(); }
};

// Projections into the plan of to_plan (WCS → judging frame). Degenerate
// input (NaN, zero radius, zero normal) contributes nothing.
PlanShape PlanOfPoint(const Vec3& p, const Matrix4& to_plan);
PlanShape PlanOfCurve(const Curve& curve, const Matrix4& to_plan);
// A bulged polyline (bulge.h conventions) on normal/elevation.
PlanShape PlanOfPolyline(std::span<const BulgeVertex> vertices, bool closed, const Vec3& normal,
                         double elevation, const Matrix4& to_plan);
// A closed outline of straight edges through the given WCS points (a text
// or solid's box, a 3D face).
PlanShape PlanOfPolygon(std::span<const Vec3> outline, const Matrix4& to_plan);
// Adds the parts of `more` to `into`.
void Append(PlanShape* into, const PlanShape& more);
// The plan box of the shape (z = 0); empty for an empty shape. Rays and
// lines are left out.
BoundingBox PlanExtents(const PlanShape& shape);

// Where a point lies relative to a closed polygon (implicitly closed; any
// orientation; self-crossing outlines use the even-odd rule).
enum class PointLocation { kOutside, kInside, kOnBoundary };
PointLocation LocatePoint(const Vec2& p, std::span<const Vec2> polygon, double tol = kAbsTol);

// Window: every part lies inside the rectangle or on its edge. False for an
// empty shape or one with a ray or infinite line.
bool InsideRectangle(const PlanShape& shape, const Box2& window);
// Crossing: some part lies inside the rectangle or touches its edge.
bool CrossesOrInsideRectangle(const PlanShape& shape, const Box2& window);
// Window polygon: every part inside the polygon or on its edge. False for
// fewer than 3 polygon vertices.
bool InsidePolygon(const PlanShape& shape, std::span<const Vec2> polygon);
// Crossing polygon: some part inside the polygon or touching its edge.
bool CrossesOrInsidePolygon(const PlanShape& shape, std::span<const Vec2> polygon);
// Fence: the open polyline through `fence` touches or crosses some part.
// False for fewer than 2 fence points.
bool FenceCrosses(const PlanShape& shape, std::span<const Vec2> fence);

// The plan distance from p to the nearest part (pick aperture tests);
// nullopt for an empty shape.
std::optional<double> DistanceTo(const PlanShape& shape, const Vec2& p);
// The distance from p to one plan curve (z ignored); nullopt when invalid.
std::optional<double> DistanceToCurve(const Curve& curve, const Vec2& p);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_SELECTION_GEOMETRY_H_
