#include "geometry/bulge.h"

#include <cmath>

namespace tovik::geometry {

namespace {

// Bulges smaller than this are straight segments.
constexpr double kStraightBulge = 1e-15;

bool IsFinite(double v) { return std::isfinite(v); }

}  // namespace

double IncludedAngle(double bulge) { return 4.0 * std::atan(bulge); }

double BulgeFromIncludedAngle(double included_angle) { return std::tan(included_angle / 4.0); }

std::optional<BulgeArc> BulgeToArc(const Vec2& p1, const Vec2& p2, double bulge) {
  if (!geometry::IsFinite(p1) || !geometry::IsFinite(p2) || !IsFinite(bulge)) return std::nullopt;
  if (std::fabs(bulge) <= kStraightBulge) return std::nullopt;
  const Vec2 chord = p2 - p1;
  const double c = Length(chord);
  if (c <= kAbsTol) return std::nullopt;
  // The centre lies on the chord's perpendicular bisector, at signed
  // distance c(1 − b²)/(4b) to the left of p1→p2 (right of it for |b| > 1).
  const Vec2 left = Perp(chord) / c;
  const double offset = c * (1.0 - bulge * bulge) / (4.0 * bulge);
  BulgeArc arc;
  arc.center = (p1 + p2) * 0.5 + left * offset;
  arc.radius = c * (1.0 + bulge * bulge) / (4.0 * std::fabs(bulge));
  const double a1 = NormalizeAngle(std::atan2(p1.y - arc.center.y, p1.x - arc.center.x));
  const double a2 = NormalizeAngle(std::atan2(p2.y - arc.center.y, p2.x - arc.center.x));
  arc.reversed = bulge < 0.0;
  arc.start_angle = arc.reversed ? a2 : a1;
  arc.end_angle = arc.reversed ? a1 : a2;
  return arc;
}

double ArcToBulge(const Vec2& center, const Vec2& p1, const Vec2& p2, bool ccw) {
  if (!geometry::IsFinite(center) || !geometry::IsFinite(p1) || !geometry::IsFinite(p2)) return 0.0;
  if (Distance(p1, p2) <= kAbsTol) return 0.0;
  const double a1 = std::atan2(p1.y - center.y, p1.x - center.x);
  const double a2 = std::atan2(p2.y - center.y, p2.x - center.x);
  const double sweep = ccw ? NormalizeAngle(a2 - a1) : NormalizeAngle(a1 - a2);
  return (ccw ? 1.0 : -1.0) * std::tan(sweep / 4.0);
}

double SegmentLength(const Vec2& p1, const Vec2& p2, double bulge) {
  const std::optional<BulgeArc> arc = BulgeToArc(p1, p2, bulge);
  if (!arc) {
    const double d = Distance(p1, p2);
    return std::isfinite(d) ? d : 0.0;
  }
  return arc->radius * std::fabs(IncludedAngle(bulge));
}

double BulgeSegmentArea(const Vec2& p1, const Vec2& p2, double bulge) {
  const std::optional<BulgeArc> arc = BulgeToArc(p1, p2, bulge);
  if (!arc) return 0.0;
  const double theta = std::fabs(IncludedAngle(bulge));
  const double area = 0.5 * arc->radius * arc->radius * (theta - std::sin(theta));
  return bulge > 0.0 ? area : -area;
}

Vec2 SegmentPointAt(const Vec2& p1, const Vec2& p2, double bulge, double t) {
  const std::optional<BulgeArc> arc = BulgeToArc(p1, p2, bulge);
  if (!arc) return Lerp(p1, p2, t);
  const double a1 = std::atan2(p1.y - arc->center.y, p1.x - arc->center.x);
  const double a = a1 + IncludedAngle(bulge) * t;
  return arc->center + Vec2{std::cos(a), std::sin(a)} * arc->radius;
}

BoundingBox SegmentExtents2d(const Vec2& p1, const Vec2& p2, double bulge) {
  BoundingBox box;
  box.Extend(Lift(p1));
  box.Extend(Lift(p2));
  const std::optional<BulgeArc> arc = BulgeToArc(p1, p2, bulge);
  if (!arc) return box;
  const Arc full{Lift(arc->center), arc->radius, {0.0, 0.0, 1.0}, arc->start_angle, arc->end_angle};
  box.Extend(Extents(full));
  return box;
}

double PolylineLength(std::span<const BulgeVertex> vertices, bool closed) {
  const size_t n = vertices.size();
  if (n < 2) return 0.0;
  double total = 0.0;
  const size_t segments = closed ? n : n - 1;
  for (size_t i = 0; i < segments; ++i) {
    const BulgeVertex& a = vertices[i];
    const BulgeVertex& b = vertices[(i + 1) % n];
    total += SegmentLength(a.point, b.point, a.bulge);
  }
  return total;
}

double PolylineArea(std::span<const BulgeVertex> vertices, bool closed) {
  const size_t n = vertices.size();
  if (n < 2) return 0.0;
  // Shoelace about the first vertex (better conditioned far from the origin)
  // plus the arcs' segment areas; the closing chord of an open polyline is
  // straight.
  const Vec2 o = vertices[0].point;
  double twice = 0.0, arcs = 0.0;
  for (size_t i = 0; i < n; ++i) {
    const BulgeVertex& a = vertices[i];
    const BulgeVertex& b = vertices[(i + 1) % n];
    twice += Cross(a.point - o, b.point - o);
    const bool closing = i + 1 == n;
    if (!closing || closed) arcs += BulgeSegmentArea(a.point, b.point, a.bulge);
  }
  const double area = std::fabs(0.5 * twice + arcs);
  return std::isfinite(area) ? area : 0.0;
}

std::optional<PolylineSegment3d> SegmentInWcs(std::span<const BulgeVertex> vertices, bool closed,
                                              size_t i, const Vec3& normal, double elevation) {
  const size_t n = vertices.size();
  if (n < 2 || i >= (closed ? n : n - 1)) return std::nullopt;
  const std::optional<Axes> ax = ArbitraryAxis(normal);
  if (!ax || !IsFinite(elevation)) return std::nullopt;
  const BulgeVertex& a = vertices[i];
  const BulgeVertex& b = vertices[(i + 1) % n];
  PolylineSegment3d seg;
  seg.start = FromFrame(*ax, Lift(a.point, elevation));
  seg.end = FromFrame(*ax, Lift(b.point, elevation));
  if (const std::optional<BulgeArc> arc = BulgeToArc(a.point, b.point, a.bulge)) {
    seg.arc = Arc{FromFrame(*ax, Lift(arc->center, elevation)), arc->radius, *Normalized(normal),
                  arc->start_angle, arc->end_angle};
  }
  return seg;
}

BoundingBox PolylineExtents(std::span<const BulgeVertex> vertices, bool closed,
                            const Vec3& normal, double elevation) {
  BoundingBox box;
  const std::optional<Axes> ax = ArbitraryAxis(normal);
  if (!ax || !IsFinite(elevation)) return box;
  for (const BulgeVertex& v : vertices) box.Extend(FromFrame(*ax, Lift(v.point, elevation)));
  const size_t n = vertices.size();
  if (n < 2) return box;
  const size_t segments = closed ? n : n - 1;
  for (size_t i = 0; i < segments; ++i) {
    const std::optional<PolylineSegment3d> seg = SegmentInWcs(vertices, closed, i, normal, elevation);
    if (seg && seg->arc) box.Extend(Extents(*seg->arc));
  }
  return box;
}

}  // namespace tovik::geometry
