// Shared pieces of intersect.cpp and intersect_conic.cpp: the primitives in
// a common parametric form. Internal to the geometry library.
#ifndef TOVIK_GEOMETRY_INTERSECT_INTERNAL_H_
#define TOVIK_GEOMETRY_INTERSECT_INTERNAL_H_

#include <optional>
#include <vector>

#include "geometry/intersect.h"

namespace tovik::geometry::internal {

// p(s) = origin + s·direction for s in [s_min, s_max] (±infinity allowed).
// A zero direction means a single point (s_min = s_max = 0).
struct LinePart {
  Vec3 origin;
  Vec3 direction;
  double s_min = 0.0;
  double s_max = 1.0;
  bool IsPoint() const { return s_min == s_max; }
};

// c + u·cos t + v·sin t, u ⟂ v, for t in [start, start + sweep]; full when
// the whole curve counts. normal = unit(u × v).
struct ConicPart {
  Vec3 center;
  Vec3 u;
  Vec3 v;
  Vec3 normal;
  double start = 0.0;
  double sweep = kTwoPi;
  bool full = true;
  bool IsCircle() const;
  Vec3 PointAt(double t) const;
  // Coordinates of p in the unit frame: p = c + a·u + b·v + h·normal.
  void UnitCoords(const Vec3& p, double* a, double* b) const;
  // True when parameter t lies on the part within a parameter tolerance.
  bool ContainsParam(double t, double param_tol) const;
  // The parameter tolerance matching a distance tolerance.
  double ParamTol(double tol) const;
  // True when p lies on the part (in plane, on the curve, within range).
  bool Contains(const Vec3& p, double tol) const;
};

std::optional<LinePart> ToLinePart(const Linear& l);
std::optional<ConicPart> ToConicPart(const Arc& arc);
std::optional<ConicPart> ToConicPart(const Ellipse& e);

bool LineContains(const LinePart& l, const Vec3& p, double tol);

// The intersections of two conics (any planes).
void IntersectConics(const ConicPart& a, const ConicPart& b, double tol, std::vector<Vec3>* out);
// The intersections of a line part and a conic.
void IntersectLineConic(const LinePart& l, const ConicPart& c, double tol, std::vector<Vec3>* out);

}  // namespace tovik::geometry::internal

#endif  // TOVIK_GEOMETRY_INTERSECT_INTERNAL_H_
