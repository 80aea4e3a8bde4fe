#include "geometry/intersect.h"

#include <cmath>
#include <limits>

#include "geometry/intersect_internal.h"

namespace tovik::geometry {

namespace internal {

namespace {
constexpr double kInf = std::numeric_limits<double>::infinity();
// Directions closer than this (sine of the angle) are parallel.
constexpr double kParallelSine = 1e-12;
}  // namespace

bool ConicPart::IsCircle() const {
  return std::fabs(Length(u) - Length(v)) <= 1e-12 * Length(u);
}

Vec3 ConicPart::PointAt(double t) const { return center + u * std::cos(t) + v * std::sin(t); }

void ConicPart::UnitCoords(const Vec3& p, double* a, double* b) const {
  const Vec3 d = p - center;
  *a = Dot(d, u) / LengthSquared(u);
  *b = Dot(d, v) / LengthSquared(v);
}

bool ConicPart::ContainsParam(double t, double param_tol) const {
  if (full) return true;
  if (!std::isfinite(t)) return false;
  const double d = NormalizeAngle(t - start);
  return d <= sweep + param_tol || d >= kTwoPi - param_tol;
}

double ConicPart::ParamTol(double tol) const { return tol / Length(v) + 1e-12; }

bool ConicPart::Contains(const Vec3& p, double tol) const {
  if (std::fabs(Dot(p - center, normal)) > tol) return false;
  double a = 0.0, b = 0.0;
  UnitCoords(p, &a, &b);
  const double t = std::atan2(b, a);
  return Distance(PointAt(t), p) <= tol && ContainsParam(t, ParamTol(tol));
}

std::optional<LinePart> ToLinePart(const Linear& l) {
  if (!IsFinite(l.start) || !IsFinite(l.end)) return std::nullopt;
  const Vec3 d = l.end - l.start;
  if (Length(d) <= kAbsTol) {
    // A zero-length segment is a point; a ray or line has no direction.
    if (l.kind != LinearKind::kSegment) return std::nullopt;
    return LinePart{l.start, {}, 0.0, 0.0};
  }
  switch (l.kind) {
    case LinearKind::kSegment:
      return LinePart{l.start, d, 0.0, 1.0};
    case LinearKind::kRay:
      return LinePart{l.start, d, 0.0, kInf};
    case LinearKind::kLine:
      return LinePart{l.start, d, -kInf, kInf};
  }
  return std::nullopt;
}

std::optional<ConicPart> ToConicPart(const Arc& arc) {
  if (!IsValid(arc)) return std::nullopt;
  const Axes ax = *Frame(arc);
  return ConicPart{arc.center, ax.x * arc.radius, ax.y * arc.radius, ax.z,
                   NormalizeAngle(arc.start_angle), Sweep(arc), IsFullCircle(arc)};
}

std::optional<ConicPart> ToConicPart(const Ellipse& e) {
  const std::optional<EllipseAxes> ax = AxesOf(e);
  if (!ax) return std::nullopt;
  return ConicPart{e.center, ax->major, ax->minor, *Normalized(Cross(ax->major, ax->minor)),
                   NormalizeAngle(e.start_param), Sweep(e), IsFullEllipse(e)};
}

bool LineContains(const LinePart& l, const Vec3& p, double tol) {
  if (l.IsPoint()) return Distance(l.origin, p) <= tol;
  const double len2 = LengthSquared(l.direction);
  double s = Dot(p - l.origin, l.direction) / len2;
  s = std::clamp(s, l.s_min, l.s_max);
  return Distance(l.origin + l.direction * s, p) <= tol;
}

namespace {

bool InRange(const LinePart& l, double s, double tol) {
  const double slack = tol / Length(l.direction);
  return s >= l.s_min - slack && s <= l.s_max + slack;
}

// Collinear parts: the shared stretch, as a point or nothing (overlaps give
// no points, see intersect.h).
void CollinearOverlap(const LinePart& a, const LinePart& b, double tol, std::vector<Vec3>* out) {
  const double len2 = LengthSquared(a.direction);
  // b's parameter maps onto a's as s_a = alpha + beta·s_b.
  const double alpha = Dot(b.origin - a.origin, a.direction) / len2;
  const double beta = Dot(b.direction, a.direction) / len2;
  double lo = alpha + beta * b.s_min, hi = alpha + beta * b.s_max;
  if (lo > hi) std::swap(lo, hi);
  lo = std::max(lo, a.s_min);
  hi = std::min(hi, a.s_max);
  const double slack = tol / std::sqrt(len2);
  if (lo > hi + slack) return;                                   // disjoint
  if (!std::isfinite(lo) || !std::isfinite(hi) || hi - lo > slack) return;  // overlap
  AppendUnique(out, a.origin + a.direction * (0.5 * (lo + hi)), tol);
}

void IntersectLines(const LinePart& a, const LinePart& b, double tol, std::vector<Vec3>* out) {
  if (a.IsPoint()) {
    if (LineContains(b, a.origin, tol)) AppendUnique(out, a.origin, tol);
    return;
  }
  if (b.IsPoint()) {
    if (LineContains(a, b.origin, tol)) AppendUnique(out, b.origin, tol);
    return;
  }
  const Vec3 d1 = a.direction, d2 = b.direction, w = a.origin - b.origin;
  const Vec3 cross = Cross(d1, d2);
  if (Length(cross) <= kParallelSine * Length(d1) * Length(d2)) {
    // Parallel: they meet only if collinear.
    const double off = Length(Cross(b.origin - a.origin, d1)) / Length(d1);
    if (off <= tol) CollinearOverlap(a, b, tol, out);
    return;
  }
  // Closest points of the two carriers (they are unique when not parallel).
  const double aa = Dot(d1, d1), bb = Dot(d1, d2), cc = Dot(d2, d2);
  const double dd = Dot(d1, w), ee = Dot(d2, w);
  const double denom = aa * cc - bb * bb;
  const double s = (bb * ee - cc * dd) / denom;
  const double t = (aa * ee - bb * dd) / denom;
  const Vec3 p1 = a.origin + d1 * s, p2 = b.origin + d2 * t;
  if (Distance(p1, p2) > tol) return;  // skew lines
  if (InRange(a, s, tol) && InRange(b, t, tol)) AppendUnique(out, (p1 + p2) * 0.5, tol);
}

}  // namespace

void IntersectLineConic(const LinePart& l, const ConicPart& c, double tol, std::vector<Vec3>* out) {
  if (l.IsPoint()) {
    if (c.Contains(l.origin, tol)) AppendUnique(out, l.origin, tol);
    return;
  }
  const Vec3& d = l.direction;
  const double dn = Dot(d, c.normal);
  const double h = Dot(l.origin - c.center, c.normal);
  if (std::fabs(dn) > kParallelSine * Length(d)) {
    // The line pierces the plane at one point.
    const double s = -h / dn;
    const Vec3 p = l.origin + d * s;
    if (InRange(l, s, tol) && c.Contains(p, tol)) AppendUnique(out, p, tol);
    return;
  }
  if (std::fabs(h) > tol) return;  // parallel to the plane, off it
  // In the plane: in the conic's unit frame the conic is the unit circle and
  // the line stays a line, (a0 + s·da, b0 + s·db).
  double a0 = 0.0, b0 = 0.0;
  c.UnitCoords(l.origin, &a0, &b0);
  const double da = Dot(d, c.u) / LengthSquared(c.u), db = Dot(d, c.v) / LengthSquared(c.v);
  const double qa = da * da + db * db;
  const double s_near = -(a0 * da + b0 * db) / qa;  // closest to the centre
  const double ha = a0 + s_near * da, hb = b0 + s_near * db;
  const double dist = std::hypot(ha, hb);
  const double tol_unit = tol / std::max(Length(c.u), Length(c.v));
  if (dist > 1.0 + tol_unit) return;
  auto add = [&](double s) {
    const double t = std::atan2(b0 + s * db, a0 + s * da);
    if (InRange(l, s, tol) && c.ContainsParam(t, c.ParamTol(tol)))
      AppendUnique(out, l.origin + d * s, tol);
  };
  if (dist >= 1.0 - tol_unit) {
    add(s_near);  // tangent: one point
    return;
  }
  const double ds = std::sqrt((1.0 - dist * dist) / qa);
  add(s_near - ds);
  add(s_near + ds);
}

}  // namespace internal

void AppendUnique(std::vector<Vec3>* points, const Vec3& p, double tol) {
  if (!IsFinite(p)) return;
  for (const Vec3& q : *points)
    if (Distance(p, q) <= tol) return;
  points->push_back(p);
}

Curve CurveFromPolylineSegment(const PolylineSegment3d& segment) {
  if (segment.arc) return *segment.arc;
  return Linear{segment.start, segment.end, LinearKind::kSegment};
}

Curve Extended(const Curve& curve) {
  if (const Linear* l = std::get_if<Linear>(&curve)) {
    if (Distance(l->start, l->end) <= kAbsTol) return *l;
    return Linear{l->start, l->end, LinearKind::kLine};
  }
  if (const Arc* a = std::get_if<Arc>(&curve)) {
    Arc full = *a;
    full.end_angle = full.start_angle;
    return full;
  }
  Ellipse full = std::get<Ellipse>(curve);
  full.end_param = full.start_param;
  return full;
}

namespace {

using internal::ConicPart;
using internal::LinePart;

// A curve in the common form; nullopt when invalid.
struct Part {
  std::optional<LinePart> line;
  std::optional<ConicPart> conic;
  bool Valid() const { return line || conic; }
};

Part ToPart(const Curve& c) {
  Part p;
  if (const Linear* l = std::get_if<Linear>(&c)) p.line = internal::ToLinePart(*l);
  if (const Arc* a = std::get_if<Arc>(&c)) p.conic = internal::ToConicPart(*a);
  if (const Ellipse* e = std::get_if<Ellipse>(&c)) p.conic = internal::ToConicPart(*e);
  return p;
}

}  // namespace

std::vector<Vec3> Intersect(const Curve& a, const Curve& b, bool extend_a, bool extend_b,
                            double tol) {
  std::vector<Vec3> out;
  if (!std::isfinite(tol) || tol < 0.0) return out;
  const Part pa = ToPart(extend_a ? Extended(a) : a);
  const Part pb = ToPart(extend_b ? Extended(b) : b);
  if (!pa.Valid() || !pb.Valid()) return out;
  if (pa.line && pb.line) {
    internal::IntersectLines(*pa.line, *pb.line, tol, &out);
  } else if (pa.line) {
    internal::IntersectLineConic(*pa.line, *pb.conic, tol, &out);
  } else if (pb.line) {
    internal::IntersectLineConic(*pb.line, *pa.conic, tol, &out);
  } else {
    internal::IntersectConics(*pa.conic, *pb.conic, tol, &out);
  }
  return out;
}

}  // namespace tovik::geometry
