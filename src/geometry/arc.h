// Circles and circular arcs on any plane.
//
// Conventions (as the Arc and Circle objects have them): the centre is WCS;
// the angles are radians measured in the OCS of `normal` (arbitrary-axis
// algorithm, see ocs.h), counter-clockwise about the normal, from start to
// end. The sweep End − Start is taken into (0, 2π], so equal start and end
// angles mean a full circle.
#ifndef TOVIK_GEOMETRY_ARC_H_
#define TOVIK_GEOMETRY_ARC_H_

#include <optional>

#include "geometry/box.h"
#include "geometry/matrix.h"
#include "geometry/ocs.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// A circle (start == end) or an arc.
struct Arc {
  Vec3 center;
  double radius = 1.0;
  Vec3 normal{0.0, 0.0, 1.0};
  double start_angle = 0.0;
  double end_angle = 0.0;

  // A full circle.
  static Arc Circle(const Vec3& center, double radius, const Vec3& normal = {0.0, 0.0, 1.0}) {
    return Arc{center, radius, normal, 0.0, 0.0};
  }
};

// True when centre, angles and normal are finite, the normal is nonzero and
// the radius is above kAbsTol. Every other function treats an invalid arc as
// having no points (nullopt, empty box, length 0).
bool IsValid(const Arc& arc);
// End − Start normalised into (0, 2π]; 2π for a full circle.
double Sweep(const Arc& arc);
// True when the sweep is a whole turn (within a relative 1e-12).
bool IsFullCircle(const Arc& arc);
// The OCS axes of the arc's plane (Ax, Ay, N).
std::optional<Axes> Frame(const Arc& arc);
// The WCS point at OCS angle `angle`.
std::optional<Vec3> PointAt(const Arc& arc, double angle);
std::optional<Vec3> StartPoint(const Arc& arc);
std::optional<Vec3> EndPoint(const Arc& arc);
// True when `angle` (any turn) lies on the arc, ends included, with an
// angular tolerance in radians. Always true for a full circle.
bool ContainsAngle(const Arc& arc, double angle, double angle_tol = 1e-12);
// Radius × sweep; 0 for an invalid arc.
double ArcLength(const Arc& arc);
// The area between the arc and its chord, r²/2 (θ − sin θ); a full circle
// gives πr². 0 for an invalid arc.
double SegmentArea(const Arc& arc);
// The tight WCS box of the curve: its end points plus every per-axis extreme
// the arc actually passes, on any normal. Empty for an invalid arc.
BoundingBox Extents(const Arc& arc);

// Transforms an arc by a matrix whose linear part is a uniform scale times a
// rotation or reflection (see Matrix4::UniformScale). A mirroring matrix
// reverses the direction, so start and end swap roles. nullopt for other
// matrices (a non-uniform scale makes an ellipse: use ellipse.h) and for an
// invalid arc.
std::optional<Arc> TransformArc(const Arc& arc, const Matrix4& m);

// The tight box of the parametric arc c + u·cos t + v·sin t for t in
// [start, start + sweep] (sweep ≥ 2π: the whole curve). Used for arcs
// (u = r·Ax, v = r·Ay) and ellipses (u = major, v = minor axis).
BoundingBox ConicArcExtents(const Vec3& center, const Vec3& u, const Vec3& v, double start,
                            double sweep);

void PrintTo(const Arc& arc, std::ostream* os);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_ARC_H_
