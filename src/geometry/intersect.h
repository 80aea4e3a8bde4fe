// Intersections of planar curve primitives in 3D (IntersectWith).
//
// Primitives: line segments, rays, infinite lines, circles and arcs,
// ellipses and elliptical arcs, and bulged polyline segments (a segment or
// an arc, see CurveFromPolylineSegment). Every pair is handled:
// - linear × linear: exact; lines that are not coplanar meet only when they
//   truly pass within the tolerance of each other (skew lines: none);
// - linear × circle/ellipse: exact (a quadratic in the conic's unit frame),
//   both when the line crosses the conic's plane and when it lies in it;
// - circle × circle: exact; any pair involving an ellipse on one plane:
//   sampled at 720 parameters, refined by bisection (crossings) and golden
//   section (touching), within ~1e-12 of the conic's size;
// - curves on different planes: intersected along the planes' common line.
//
// Settled conventions:
// - Tangency gives ONE point (the touching point), for line × conic and
//   conic × conic alike, when the curves come within the tolerance.
// - Overlaps give NO points: collinear segments sharing a stretch, and arcs
//   or ellipses on the same curve sharing a stretch, have infinitely many
//   common points and return an empty list (as AcGe's intersectWith, which
//   leaves overlaps to a separate overlap query). When the shared part is a
//   single point (segments or arcs meeting end to end on one carrier) that
//   point is returned. Coincident full circles return nothing.
// - Points are deduplicated within the tolerance, in order of discovery.
// - Invalid primitives (zero radius, zero normal, NaN, a ray or line with no
//   direction) give no points; a zero-length segment is a point and meets a
//   curve only if it lies on it.
#ifndef TOVIK_GEOMETRY_INTERSECT_H_
#define TOVIK_GEOMETRY_INTERSECT_H_

#include <variant>
#include <vector>

#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "geometry/ellipse.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// How far a linear primitive runs: a segment start..end, a ray from start
// through end and on, a line through both both ways.
enum class LinearKind { kSegment, kRay, kLine };

struct Linear {
  Vec3 start;
  Vec3 end;
  LinearKind kind = LinearKind::kSegment;
};

// One planar primitive.
using Curve = std::variant<Linear, Arc, Ellipse>;

// The curve of one polyline segment from bulge.h's SegmentInWcs.
Curve CurveFromPolylineSegment(const PolylineSegment3d& segment);

// The curve as IntersectWith's extend option sees it: a segment or ray
// becomes an infinite line, an arc a full circle, an elliptical arc a full
// ellipse. A zero-length segment stays a point.
Curve Extended(const Curve& curve);

// The intersection points of a and b. extend_a / extend_b apply Extended()
// to that side first. tol is the distance within which curves meet (WCS
// units). See the file comment for tangency and overlap rules.
std::vector<Vec3> Intersect(const Curve& a, const Curve& b, bool extend_a = false,
                            bool extend_b = false, double tol = kAbsTol);

// Appends p to points unless a point within tol is already there.
void AppendUnique(std::vector<Vec3>* points, const Vec3& p, double tol = kAbsTol);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_INTERSECT_H_
