// Window, crossing, polygon and fence predicates (selection_geometry.h).
#include "geometry/selection_geometry.h"

#include <algorithm>
#include <cmath>

#include "geometry/intersect_internal.h"

namespace tovik::geometry {

namespace {

using internal::ConicPart;
using internal::LinePart;

// A plan curve with a parameter running from 0 to end().
struct Run {
  std::optional<LinePart> line;
  std::optional<ConicPart> conic;

  static Run Of(const Curve& c) {
    Run r;
    if (const Linear* l = std::get_if<Linear>(&c)) r.line = internal::ToLinePart(*l);
    if (const Arc* a = std::get_if<Arc>(&c)) r.conic = internal::ToConicPart(*a);
    if (const Ellipse* e = std::get_if<Ellipse>(&c)) r.conic = internal::ToConicPart(*e);
    return r;
  }
  bool valid() const { return line || conic; }
  bool bounded() const { return conic || (line && std::isfinite(line->s_min) && std::isfinite(line->s_max)); }
  double end() const { return line ? line->s_max : conic->sweep; }
  double ParamOf(const Vec3& p) const {
    if (line) {
      if (line->IsPoint()) return 0.0;
      return Dot(p - line->origin, line->direction) / LengthSquared(line->direction);
    }
    double a = 0.0, b = 0.0;
    conic->UnitCoords(p, &a, &b);
    return NormalizeAngle(std::atan2(b, a) - conic->start);
  }
  Vec2 PointAt(double s) const {
    return Xy(line ? line->origin + line->direction * s : conic->PointAt(conic->start + s));
  }
};

std::vector<Vec2> RectanglePolygon(const Box2& w) {
  return {{w.min_x, w.min_y}, {w.max_x, w.min_y}, {w.max_x, w.max_y}, {w.min_x, w.max_y}};
}

Linear Edge(std::span<const Vec2> poly, size_t i, bool closed) {
  const size_t j = closed ? (i + 1) % poly.size() : i + 1;
  return Linear{Lift(poly[i]), Lift(poly[j]), LinearKind::kSegment};
}

// Every point where the curve meets an edge of the outline.
std::vector<Vec3> Meetings(const Curve& c, std::span<const Vec2> poly, bool closed) {
  std::vector<Vec3> all;
  const size_t edges = closed ? poly.size() : poly.size() - 1;
  for (size_t i = 0; i < edges; ++i)
    for (const Vec3& p : Intersect(c, Edge(poly, i, closed))) AppendUnique(&all, p);
  return all;
}

double SegmentDistance(const Vec2& p, const Vec2& a, const Vec2& b) {
  const Vec2 d = b - a;
  const double len2 = Dot(d, d);
  const double t = len2 == 0.0 ? 0.0 : std::clamp(Dot(p - a, d) / len2, 0.0, 1.0);
  return Distance(a + d * t, p);
}

bool AllFinite(std::span<const Vec2> poly) {
  return std::all_of(poly.begin(), poly.end(), [](const Vec2& p) { return IsFinite(p); });
}

// The curve lies inside the polygon or on its boundary: cut it where it
// meets the edges and test the middle of every piece and both ends.
bool CurveInsidePolygon(const Curve& c, std::span<const Vec2> poly) {
  const Run run = Run::Of(c);
  if (!run.valid() || !run.bounded()) return false;
  std::vector<double> cuts = {0.0, run.end()};
  for (const Vec3& p : Meetings(c, poly, true)) cuts.push_back(std::clamp(run.ParamOf(p), 0.0, run.end()));
  std::sort(cuts.begin(), cuts.end());
  for (size_t i = 0; i < cuts.size(); ++i) {
    if (LocatePoint(run.PointAt(cuts[i]), poly) == PointLocation::kOutside) return false;
    if (i + 1 < cuts.size() &&
        LocatePoint(run.PointAt(0.5 * (cuts[i] + cuts[i + 1])), poly) == PointLocation::kOutside)
      return false;
  }
  return true;
}

}  // namespace

PointLocation LocatePoint(const Vec2& p, std::span<const Vec2> polygon, double tol) {
  const size_t n = polygon.size();
  if (n == 0 || !IsFinite(p)) return PointLocation::kOutside;
  bool inside = false;
  for (size_t i = 0, j = n - 1; i < n; j = i++) {
    const Vec2& a = polygon[i];
    const Vec2& b = polygon[j];
    if (SegmentDistance(p, a, b) <= tol) return PointLocation::kOnBoundary;
    // Even-odd crossing of the ray toward +x.
    if ((a.y > p.y) != (b.y > p.y)) {
      const double x = a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y);
      if (x > p.x) inside = !inside;
    }
  }
  return inside ? PointLocation::kInside : PointLocation::kOutside;
}

bool InsideRectangle(const PlanShape& shape, const Box2& window) {
  if (shape.empty() || !window.IsFinite()) return false;
  for (const Curve& c : shape.curves)
    if (const Linear* l = std::get_if<Linear>(&c); l && l->kind != LinearKind::kSegment) return false;
  const BoundingBox box = PlanExtents(shape);
  if (!box.has_data) return false;
  // A curve lies in an axis-aligned box exactly when its extents do.
  const Box2 grown{window.min_x - kAbsTol, window.min_y - kAbsTol, window.max_x + kAbsTol,
                   window.max_y + kAbsTol};
  return grown.Contains(Box2::FromBox(box));
}

bool CrossesOrInsideRectangle(const PlanShape& shape, const Box2& window) {
  if (shape.empty() || !window.IsFinite()) return false;
  return CrossesOrInsidePolygon(shape, RectanglePolygon(window));
}

bool InsidePolygon(const PlanShape& shape, std::span<const Vec2> polygon) {
  if (shape.empty() || polygon.size() < 3 || !AllFinite(polygon)) return false;
  for (const Vec2& p : shape.points)
    if (LocatePoint(p, polygon) == PointLocation::kOutside) return false;
  for (const Curve& c : shape.curves)
    if (!CurveInsidePolygon(c, polygon)) return false;
  return true;
}

bool CrossesOrInsidePolygon(const PlanShape& shape, std::span<const Vec2> polygon) {
  if (shape.empty() || polygon.size() < 3 || !AllFinite(polygon)) return false;
  for (const Vec2& p : shape.points)
    if (LocatePoint(p, polygon) != PointLocation::kOutside) return true;
  for (const Curve& c : shape.curves) {
    const Run run = Run::Of(c);
    if (!run.valid()) continue;
    if (!Meetings(c, polygon, true).empty()) return true;
    // No meeting: the curve is wholly in or wholly out; one point decides.
    const double s = run.bounded() ? 0.0 : (std::isfinite(run.line->s_min) ? run.line->s_min : 0.0);
    if (LocatePoint(run.PointAt(s), polygon) != PointLocation::kOutside) return true;
  }
  return false;
}

bool FenceCrosses(const PlanShape& shape, std::span<const Vec2> fence) {
  if (shape.empty() || fence.size() < 2 || !AllFinite(fence)) return false;
  for (const Vec2& p : shape.points)
    for (size_t i = 0; i + 1 < fence.size(); ++i)
      if (SegmentDistance(p, fence[i], fence[i + 1]) <= kAbsTol) return true;
  for (const Curve& c : shape.curves) {
    if (!Meetings(c, fence, false).empty()) return true;
    // A fence running along a segment overlaps it without a single meeting
    // point; the segment's ends then lie on the fence.
    if (const Linear* l = std::get_if<Linear>(&c)) {
      for (size_t i = 0; i + 1 < fence.size(); ++i)
        if (SegmentDistance(Xy(l->start), fence[i], fence[i + 1]) <= kAbsTol ||
            SegmentDistance(Xy(l->end), fence[i], fence[i + 1]) <= kAbsTol ||
            SegmentDistance(fence[i], Xy(l->start), Xy(l->end)) <= kAbsTol)
          return true;
    }
  }
  return false;
}

}  // namespace tovik::geometry
