// Object coordinate systems: AutoCAD's arbitrary-axis algorithm.
//
// An entity with extrusion direction N keeps its 2D data (polyline vertices,
// arc angles, DXF centres) in the OCS of N. The OCS has no origin of its own:
// it shares the WCS origin, so points and vectors convert the same way.
#ifndef TOVIK_GEOMETRY_OCS_H_
#define TOVIK_GEOMETRY_OCS_H_

#include <optional>

#include "geometry/matrix.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// A right-handed orthonormal frame: z = x × y.
struct Axes {
  Vec3 x;
  Vec3 y;
  Vec3 z;
};

// Below this, a normal's x and y are "near the world Z axis" (1/64, from the
// DXF reference's arbitrary-axis algorithm).
inline constexpr double kArbitraryAxisLimit = 1.0 / 64.0;

// The OCS axes of normal n: N = n/|n|; Ax = (0,1,0)×N when |Nx| < 1/64 and
// |Ny| < 1/64, else (0,0,1)×N, normalised; Ay = N×Ax.
// nullopt when n is zero or not finite.
std::optional<Axes> ArbitraryAxis(const Vec3& normal);

// Matrix taking OCS coordinates to WCS (columns Ax, Ay, N; no translation).
std::optional<Matrix4> OcsToWcsMatrix(const Vec3& normal);
// Matrix taking WCS coordinates to OCS (the transpose of the above).
std::optional<Matrix4> WcsToOcsMatrix(const Vec3& normal);

// P = x·Ax + y·Ay + z·N. nullopt for a degenerate normal.
std::optional<Vec3> OcsToWcs(const Vec3& p, const Vec3& normal);
// (P·Ax, P·Ay, P·N). nullopt for a degenerate normal.
std::optional<Vec3> WcsToOcs(const Vec3& p, const Vec3& normal);

// x·ax.x + y·ax.y + z·ax.z for an already built frame (no validation).
inline Vec3 FromFrame(const Axes& ax, const Vec3& p) { return ax.x * p.x + ax.y * p.y + ax.z * p.z; }
// The coordinates of p in the frame (dot products).
inline Vec3 ToFrame(const Axes& ax, const Vec3& p) { return {Dot(p, ax.x), Dot(p, ax.y), Dot(p, ax.z)}; }

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_OCS_H_
