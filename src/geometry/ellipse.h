// Ellipses and elliptical arcs on any plane.
//
// Conventions (the Ellipse object and DXF ELLIPSE): centre and major axis
// are WCS; the major axis vector runs from the centre to the end of the major
// axis; ratio = minor / major in (0, 1]; the minor axis is
// ratio · (N̂ × major), so parameters run counter-clockwise about the normal.
// start_param / end_param are the DXF 41/42 parameters t in
// P(t) = C + major·cos t + minor·sin t; equal parameters mean a whole
// ellipse. The interface's StartAngle/EndAngle are geometric angles from the
// major axis; ParameterFromAngle/AngleFromParameter convert.
#ifndef TOVIK_GEOMETRY_ELLIPSE_H_
#define TOVIK_GEOMETRY_ELLIPSE_H_

#include <optional>

#include "geometry/arc.h"
#include "geometry/box.h"
#include "geometry/matrix.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

struct Ellipse {
  Vec3 center;
  Vec3 major_axis{1.0, 0.0, 0.0};
  double ratio = 1.0;
  Vec3 normal{0.0, 0.0, 1.0};
  double start_param = 0.0;
  double end_param = 0.0;
};

// The two semi-axis vectors of a valid ellipse.
struct EllipseAxes {
  Vec3 major;
  Vec3 minor;
};

// True when everything is finite, the major axis is longer than kAbsTol,
// 0 < ratio ≤ 1 (a ratio up to 1 + 1e-9 is accepted) and the normal is
// nonzero and not parallel to the major axis. A normal that is not exactly
// perpendicular is used only for its side: minor = ratio·|M|·unit(N × M)
// stays perpendicular to the major axis.
bool IsValid(const Ellipse& e);
// The major and minor semi-axis vectors; nullopt for an invalid ellipse.
std::optional<EllipseAxes> AxesOf(const Ellipse& e);
// End − Start normalised into (0, 2π].
double Sweep(const Ellipse& e);
bool IsFullEllipse(const Ellipse& e);
// P(t) in WCS.
std::optional<Vec3> PointAtParameter(const Ellipse& e, double t);
std::optional<Vec3> StartPoint(const Ellipse& e);
std::optional<Vec3> EndPoint(const Ellipse& e);
// True when parameter t (any turn) is on the arc, ends included.
bool ContainsParameter(const Ellipse& e, double t, double tol = 1e-12);
// The parameter of the point at geometric angle `angle` from the major axis
// (counter-clockwise about the normal): atan2(sin a / ratio, cos a), in
// [0, 2π). Angles 0, π/2, π, 3π/2 map to themselves.
double ParameterFromAngle(double angle, double ratio);
// The geometric angle of parameter t: atan2(ratio·sin t, cos t), in [0, 2π).
double AngleFromParameter(double t, double ratio);
// The tight WCS box, per-axis extremes included where the arc passes them.
BoundingBox Extents(const Ellipse& e);
// The curve length (numeric, Gauss–Legendre on 64 panels; relative error
// below 1e-12 for ratios above 0.01). 0 for an invalid ellipse.
double ArcLength(const Ellipse& e);

// Transforms by any non-singular affine matrix: the image of an ellipse (or
// of a circle under non-uniform scaling) is an ellipse. Its principal axes
// are recomputed, so the major axis and parameters are re-based; a mirroring
// matrix keeps the curve but reverses the parameter direction, handled by
// swapping ends. nullopt for singular matrices or an invalid ellipse.
std::optional<Ellipse> TransformEllipse(const Ellipse& e, const Matrix4& m);
// The ellipse traced by c + u·cos t + v·sin t for t from start to end, with
// u and v any two conjugate semi-diameters (not necessarily perpendicular),
// re-based onto its principal axes. The result's normal is `normal_hint`
// when the curve runs counter-clockwise about it, else the hint reversed is
// honoured by flipping the parameter direction (the normal stays the hint).
// nullopt when u × v is (nearly) zero: the curve is flat, a line segment.
std::optional<Ellipse> EllipseFromConjugateAxes(const Vec3& center, const Vec3& u, const Vec3& v,
                                                double start, double end, bool full,
                                                const Vec3& normal_hint);
// The ellipse form of an arc (ratio 1, major axis along the arc's OCS X, so
// parameters equal the arc's angles).
std::optional<Ellipse> EllipseFromArc(const Arc& arc);

void PrintTo(const Ellipse& e, std::ostream* os);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_ELLIPSE_H_
