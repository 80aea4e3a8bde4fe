// Projection of primitives into the selection plan, their plan extents and
// pick distances (selection_geometry.h).
#include <algorithm>
#include <cmath>

#include "geometry/intersect_internal.h"
#include "geometry/selection_geometry.h"

namespace tovik::geometry {

namespace {

Vec3 Flat(const Vec3& p) { return {p.x, p.y, 0.0}; }

// The plan image of c + u·cos t + v·sin t (t from start over sweep).
void AddConic(const Vec3& c, const Vec3& u, const Vec3& v, double start, double sweep, bool full,
              const Matrix4& to_plan, PlanShape* out) {
  const Vec3 pc = Flat(to_plan.TransformPoint(c));
  const Vec3 pu = Flat(to_plan.TransformVector(u));
  const Vec3 pv = Flat(to_plan.TransformVector(v));
  if (!IsFinite(pc) || !IsFinite(pu) || !IsFinite(pv)) return;
  if (const std::optional<Ellipse> e =
          EllipseFromConjugateAxes(pc, pu, pv, start, start + sweep, full, {0.0, 0.0, 1.0})) {
    out->curves.push_back(*e);
    return;
  }
  // Seen edge-on: the points c + w·f(t) cover a segment of the line along w.
  const Vec3 along = Length(pu) >= Length(pv) ? pu : pv;
  const std::optional<Vec3> w = Normalized(along);
  if (!w) {
    out->points.push_back(Xy(pc));  // a vanishing curve is its centre
    return;
  }
  const double fu = Dot(pu, *w), fv = Dot(pv, *w);
  auto f = [&](double t) { return fu * std::cos(t) + fv * std::sin(t); };
  double lo = INFINITY, hi = -INFINITY;
  auto take = [&](double t) {
    lo = std::min(lo, f(t));
    hi = std::max(hi, f(t));
  };
  if (!full) {
    take(start);
    take(start + sweep);
  }
  const double phi = std::atan2(fv, fu);
  for (double t : {phi, phi + std::numbers::pi})
    if (full || NormalizeAngle(t - start) <= sweep) take(t);
  out->curves.push_back(Linear{pc + *w * lo, pc + *w * hi, LinearKind::kSegment});
}

}  // namespace

PlanShape PlanOfPoint(const Vec3& p, const Matrix4& to_plan) {
  PlanShape shape;
  const Vec3 q = to_plan.TransformPoint(p);
  if (IsFinite(q)) shape.points.push_back(Xy(q));
  return shape;
}

PlanShape PlanOfCurve(const Curve& curve, const Matrix4& to_plan) {
  PlanShape shape;
  if (const Linear* l = std::get_if<Linear>(&curve)) {
    const Vec3 a = Flat(to_plan.TransformPoint(l->start)), b = Flat(to_plan.TransformPoint(l->end));
    if (!IsFinite(a) || !IsFinite(b)) return shape;
    if (Distance(a, b) <= kAbsTol) {
      // A line seen end-on (or a zero-length one) is a point, a ray or
      // infinite line seen end-on is too (its direction vanished).
      shape.points.push_back(Xy(a));
    } else {
      shape.curves.push_back(Linear{a, b, l->kind});
    }
    return shape;
  }
  std::optional<internal::ConicPart> part;
  if (const Arc* a = std::get_if<Arc>(&curve)) part = internal::ToConicPart(*a);
  if (const Ellipse* e = std::get_if<Ellipse>(&curve)) part = internal::ToConicPart(*e);
  if (part) AddConic(part->center, part->u, part->v, part->start, part->sweep, part->full, to_plan, &shape);
  return shape;
}

PlanShape PlanOfPolyline(std::span<const BulgeVertex> vertices, bool closed, const Vec3& normal,
                         double elevation, const Matrix4& to_plan) {
  PlanShape shape;
  const size_t n = vertices.size();
  if (n == 1) {
    if (const std::optional<Vec3> p = OcsToWcs(Lift(vertices[0].point, elevation), normal))
      Append(&shape, PlanOfPoint(*p, to_plan));
  }
  const size_t segments = n < 2 ? 0 : (closed ? n : n - 1);
  for (size_t i = 0; i < segments; ++i) {
    const std::optional<PolylineSegment3d> seg = SegmentInWcs(vertices, closed, i, normal, elevation);
    if (seg) Append(&shape, PlanOfCurve(CurveFromPolylineSegment(*seg), to_plan));
  }
  return shape;
}

PlanShape PlanOfPolygon(std::span<const Vec3> outline, const Matrix4& to_plan) {
  PlanShape shape;
  const size_t n = outline.size();
  if (n == 1) return PlanOfPoint(outline[0], to_plan);
  for (size_t i = 0; i < n && n >= 2; ++i) {
    if (n == 2 && i == 1) break;  // two points: one edge, not two
    Append(&shape, PlanOfCurve(Linear{outline[i], outline[(i + 1) % n]}, to_plan));
  }
  return shape;
}

void Append(PlanShape* into, const PlanShape& more) {
  into->curves.insert(into->curves.end(), more.curves.begin(), more.curves.end());
  into->points.insert(into->points.end(), more.points.begin(), more.points.end());
}

BoundingBox PlanExtents(const PlanShape& shape) {
  BoundingBox box;
  for (const Vec2& p : shape.points) box.Extend(Lift(p));
  for (const Curve& c : shape.curves) {
    if (const Linear* l = std::get_if<Linear>(&c)) {
      if (l->kind != LinearKind::kSegment) continue;
      box.Extend(l->start);
      box.Extend(l->end);
    } else if (const Arc* a = std::get_if<Arc>(&c)) {
      box.Extend(Extents(*a));
    } else {
      box.Extend(Extents(std::get<Ellipse>(c)));
    }
  }
  return box;
}

std::optional<double> DistanceToCurve(const Curve& curve, const Vec2& p) {
  if (!IsFinite(p)) return std::nullopt;
  if (const Linear* l = std::get_if<Linear>(&curve)) {
    const std::optional<internal::LinePart> line = internal::ToLinePart(*l);
    if (!line) return std::nullopt;
    if (line->IsPoint()) return Distance(Xy(line->origin), p);
    const Vec2 o = Xy(line->origin), d = Xy(line->direction);
    const double len2 = Dot(d, d);
    if (len2 == 0.0) return Distance(o, p);
    const double s = std::clamp(Dot(p - o, d) / len2, line->s_min, line->s_max);
    return Distance(o + d * s, p);
  }
  std::optional<internal::ConicPart> c;
  if (const Arc* a = std::get_if<Arc>(&curve)) c = internal::ToConicPart(*a);
  if (const Ellipse* e = std::get_if<Ellipse>(&curve)) c = internal::ToConicPart(*e);
  if (!c) return std::nullopt;
  // Sample the run, then refine around the best sample by golden section.
  auto dist = [&](double s) { return Distance(Xy(c->PointAt(c->start + s)), p); };
  constexpr int kSamples = 96;
  const double step = c->sweep / kSamples;
  int best = 0;
  double best_d = dist(0.0);
  for (int i = 1; i <= kSamples; ++i) {
    const double d = dist(step * i);
    if (d < best_d) best = i, best_d = d;
  }
  double lo = std::max(0.0, step * (best - 1)), hi = std::min(c->sweep, step * (best + 1));
  if (c->full) lo = step * (best - 1), hi = step * (best + 1);
  const double k = 0.5 * (std::sqrt(5.0) - 1.0);
  for (int i = 0; i < 80 && hi - lo > 1e-15; ++i) {
    const double x1 = hi - k * (hi - lo), x2 = lo + k * (hi - lo);
    if (dist(x1) < dist(x2)) {
      hi = x2;
    } else {
      lo = x1;
    }
  }
  return std::min(best_d, dist(0.5 * (lo + hi)));
}

std::optional<double> DistanceTo(const PlanShape& shape, const Vec2& p) {
  std::optional<double> best;
  auto take = [&](std::optional<double> d) {
    if (d && (!best || *d < *best)) best = d;
  };
  for (const Vec2& q : shape.points) take(IsFinite(p) ? std::optional<double>(Distance(p, q)) : std::nullopt);
  for (const Curve& c : shape.curves) take(DistanceToCurve(c, p));
  return best;
}

}  // namespace tovik::geometry
