// Bulged polyline segments (LWPolyline, 2D Polyline).
//
// Conventions: vertices are 2D OCS points; the bulge of a segment is stored
// on its START vertex and equals tan(θ/4), θ the included angle. A positive
// bulge runs counter-clockwise about the polyline's normal from start to end
// (so it bulges to the right of the chord's direction), negative clockwise,
// 0 is straight, ±1 is a half circle. The last vertex's bulge counts only
// when the polyline is closed. Formulas: the DXF reference's bulge
// definition; radius r = c(1 + b²)/(4|b|), sagitta = |b|·c/2 for chord c.
#ifndef TOVIK_GEOMETRY_BULGE_H_
#define TOVIK_GEOMETRY_BULGE_H_

#include <optional>
#include <span>
#include <vector>

#include "geometry/arc.h"
#include "geometry/box.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// One polyline vertex: OCS position and the bulge of the segment it starts.
struct BulgeVertex {
  Vec2 point;
  double bulge = 0.0;
};

// The arc of one bulged segment in 2D (OCS): it always runs counter-clockwise
// from start_angle to end_angle (a negative bulge therefore starts at the
// segment's end vertex); `reversed` says so.
struct BulgeArc {
  Vec2 center;
  double radius = 0.0;
  double start_angle = 0.0;  // [0, 2π)
  double end_angle = 0.0;    // [0, 2π)
  bool reversed = false;     // true for a negative bulge (clockwise segment)
};

// The included angle 4·atan(bulge), signed (positive counter-clockwise).
double IncludedAngle(double bulge);
// tan(θ/4) for a signed included angle θ.
double BulgeFromIncludedAngle(double included_angle);

// The arc of segment p1→p2 with `bulge`. nullopt for a straight segment
// (bulge 0 within 1e-15), a zero-length chord (≤ kAbsTol: the segment is a
// point whatever the bulge), or non-finite input.
std::optional<BulgeArc> BulgeToArc(const Vec2& p1, const Vec2& p2, double bulge);
// The bulge of the arc about `center` from p1 to p2, counter-clockwise when
// ccw, else clockwise (negative). 0 when p1 and p2 coincide or any input is
// not finite. The radius is implied by the points.
double ArcToBulge(const Vec2& center, const Vec2& p1, const Vec2& p2, bool ccw);

// Length of one segment: the chord or the arc length.
double SegmentLength(const Vec2& p1, const Vec2& p2, double bulge);
// Signed area between the segment's arc and its chord, positive when the
// arc lies to the right of p1→p2 (positive bulge) and so enlarges a
// counter-clockwise outline. 0 for a straight segment.
double BulgeSegmentArea(const Vec2& p1, const Vec2& p2, double bulge);
// The 2D point at parameter t in [0, 1] along the segment (by angle on an arc).
Vec2 SegmentPointAt(const Vec2& p1, const Vec2& p2, double bulge, double t);
// The tight 2D box of one segment (z = 0), arc extremes included.
BoundingBox SegmentExtents2d(const Vec2& p1, const Vec2& p2, double bulge);

// Total length; closed adds the segment from the last vertex to the first
// (with the last vertex's bulge). Fewer than 2 vertices give 0.
double PolylineLength(std::span<const BulgeVertex> vertices, bool closed);
// Enclosed area (≥ 0): the shoelace sum of the chords plus each arc's signed
// segment area. An open polyline is measured as if closed by a straight
// chord from the last vertex to the first (the last bulge ignored).
// Self-crossing outlines give |signed sum|, not the covered area.
double PolylineArea(std::span<const BulgeVertex> vertices, bool closed);

// Segment i of a polyline in WCS: the straight segment, or the arc (normal,
// elevation: the polyline's extrusion and OCS z). i runs 0..n−2 (open) or
// 0..n−1 (closed). nullopt for an arc when the bulge is 0 or the chord is
// zero length; the straight form is then in *start / *end.
struct PolylineSegment3d {
  Vec3 start;
  Vec3 end;
  std::optional<Arc> arc;  // set for a bulged, non-degenerate segment
};
std::optional<PolylineSegment3d> SegmentInWcs(std::span<const BulgeVertex> vertices, bool closed,
                                              size_t i, const Vec3& normal, double elevation);

// The tight WCS box of a whole polyline on any normal: vertices plus arc
// extremes. Empty for no vertices or a degenerate normal.
BoundingBox PolylineExtents(std::span<const BulgeVertex> vertices, bool closed,
                            const Vec3& normal = {0.0, 0.0, 1.0}, double elevation = 0.0);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_BULGE_H_
