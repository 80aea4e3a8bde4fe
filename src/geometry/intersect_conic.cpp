// Conic × conic intersections: circles exactly, anything with an ellipse by
// sampling and refinement, curves on different planes along the planes'
// common line.
#include <algorithm>
#include <cmath>
#include <limits>

#include "geometry/intersect_internal.h"

namespace tovik::geometry::internal {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kSamples = 720;

// The parameter on `a` of a point on a's curve.
double ParamOn(const ConicPart& a, const Vec3& p) {
  double x = 0.0, y = 0.0;
  a.UnitCoords(p, &x, &y);
  return NormalizeAngle(std::atan2(y, x));
}

// Both parts lie on one curve. Overlapping stretches give no points; parts
// meeting only at ends give those ends (see intersect.h).
void CoincidentConics(const ConicPart& a, const ConicPart& b, double tol, std::vector<Vec3>* out) {
  if (a.full || b.full) return;  // the whole of the other part is shared
  const double ptol = a.ParamTol(tol);
  const double a0 = a.start, a1 = NormalizeAngle(a.start + a.sweep);
  // b's run in a's parameter: the same way round when the normals agree.
  const Vec3 b_start = b.PointAt(b.start), b_end = b.PointAt(b.start + b.sweep);
  const bool same_way = Dot(a.normal, b.normal) > 0.0;
  const double b0 = ParamOn(a, same_way ? b_start : b_end);
  ConicPart b_in_a = a;
  b_in_a.start = b0;
  b_in_a.sweep = b.sweep;
  const double b1 = NormalizeAngle(b0 + b.sweep);
  // Look between consecutive cut points for a stretch inside both.
  std::vector<double> cuts = {a0, a1, b0, b1};
  std::sort(cuts.begin(), cuts.end());
  for (size_t i = 0; i < cuts.size(); ++i) {
    const double from = cuts[i];
    const double to = (i + 1 < cuts.size()) ? cuts[i + 1] : cuts[0] + kTwoPi;
    if (to - from <= 2.0 * ptol) continue;
    const double mid = 0.5 * (from + to);
    if (a.ContainsParam(mid, 0.0) && b_in_a.ContainsParam(mid, 0.0)) return;  // overlap
  }
  for (double t : {a0, a1})
    if (b_in_a.ContainsParam(t, ptol)) AppendUnique(out, a.PointAt(t), tol);
  for (double t : {b0, b1})
    if (a.ContainsParam(t, ptol)) AppendUnique(out, a.PointAt(t), tol);
}

// Two coplanar circles, exactly.
void CoplanarCircles(const ConicPart& a, const ConicPart& b, double tol, std::vector<Vec3>* out) {
  const double r1 = Length(a.u), r2 = Length(b.u);
  const Vec3 delta = b.center - a.center;
  const double d = Length(delta);
  if (d <= tol && std::fabs(r1 - r2) <= tol) {
    CoincidentConics(a, b, tol, out);
    return;
  }
  if (d > r1 + r2 + tol || d < std::fabs(r1 - r2) - tol || d <= tol) return;
  const Vec3 dir = delta / d;
  const Vec3 side = Cross(a.normal, dir);
  std::vector<Vec3> candidates;
  // Distance along dir to the common chord, and half the chord.
  const double along = (d * d + r1 * r1 - r2 * r2) / (2.0 * d);
  const double half2 = r1 * r1 - along * along;
  const bool tangent =
      std::fabs(d - (r1 + r2)) <= tol || std::fabs(d - std::fabs(r1 - r2)) <= tol || half2 <= 0.0;
  if (tangent) {
    // One touching point, on the line of centres.
    candidates.push_back(a.center + dir * (along >= 0.0 ? r1 : -r1));
  } else {
    const double half = std::sqrt(half2);
    candidates.push_back(a.center + dir * along + side * half);
    candidates.push_back(a.center + dir * along - side * half);
  }
  for (const Vec3& p : candidates)
    if (a.Contains(p, tol) && b.Contains(p, tol)) AppendUnique(out, p, tol);
}

// Golden-section minimum of g on [lo, hi].
template <typename F>
double MinimizeOn(F g, double lo, double hi) {
  const double k = 0.5 * (std::sqrt(5.0) - 1.0);
  double x1 = hi - k * (hi - lo), x2 = lo + k * (hi - lo);
  double g1 = g(x1), g2 = g(x2);
  for (int i = 0; i < 100 && hi - lo > 1e-15; ++i) {
    if (g1 < g2) {
      hi = x2, x2 = x1, g2 = g1;
      x1 = hi - k * (hi - lo), g1 = g(x1);
    } else {
      lo = x1, x1 = x2, g1 = g2;
      x2 = lo + k * (hi - lo), g2 = g(x2);
    }
  }
  return 0.5 * (lo + hi);
}

// Coplanar conics, one at least an ellipse: in a's unit frame a is the unit
// circle; f(t) = |b(t)|² − 1 over b's parameter has a root at each meeting.
void CoplanarNumeric(const ConicPart& a, const ConicPart& b, double tol, std::vector<Vec3>* out) {
  double cx = 0.0, cy = 0.0;
  a.UnitCoords(b.center, &cx, &cy);
  const double ux = Dot(b.u, a.u) / LengthSquared(a.u), uy = Dot(b.u, a.v) / LengthSquared(a.v);
  const double vx = Dot(b.v, a.u) / LengthSquared(a.u), vy = Dot(b.v, a.v) / LengthSquared(a.v);
  auto f = [&](double t) {
    const double c = std::cos(t), s = std::sin(t);
    const double x = cx + ux * c + vx * s, y = cy + uy * c + vy * s;
    return x * x + y * y - 1.0;
  };
  // f ≈ 2·(distance in the unit frame), and the unit frame shrinks distances
  // by at most the major radius.
  const double f_tol = 2.0 * tol / std::max(Length(a.u), Length(a.v));
  std::vector<double> fs(kSamples + 2);
  auto t_at = [](int i) { return kTwoPi * i / kSamples; };
  double worst = 0.0;
  for (int i = 0; i <= kSamples + 1; ++i) {
    fs[i] = f(t_at(i));
    worst = std::max(worst, std::fabs(fs[i]));
  }
  if (worst <= f_tol) {
    CoincidentConics(a, b, tol, out);
    return;
  }
  std::vector<double> roots;
  for (int i = 0; i < kSamples; ++i) {
    double lo = t_at(i), hi = t_at(i + 1);
    if (fs[i] == 0.0) {
      roots.push_back(lo);
    } else if ((fs[i] < 0.0) != (fs[i + 1] < 0.0) && fs[i + 1] != 0.0) {
      double flo = fs[i];
      for (int k = 0; k < 80 && hi - lo > 1e-16; ++k) {  // bisection
        const double mid = 0.5 * (lo + hi), fm = f(mid);
        if ((fm < 0.0) == (flo < 0.0)) {
          lo = mid, flo = fm;
        } else {
          hi = mid;
        }
      }
      roots.push_back(0.5 * (lo + hi));
    } else if (i > 0 && std::fabs(fs[i]) < std::fabs(fs[i - 1]) &&
               std::fabs(fs[i]) <= std::fabs(fs[i + 1]) && (fs[i - 1] < 0.0) == (fs[i] < 0.0) &&
               (fs[i + 1] < 0.0) == (fs[i] < 0.0)) {
      // A dip toward zero without a sign change: a touching candidate.
      const double t = MinimizeOn([&](double x) { return std::fabs(f(x)); }, t_at(i - 1), t_at(i + 1));
      if (std::fabs(f(t)) <= f_tol) roots.push_back(t);
    }
  }
  for (double t : roots) {
    const Vec3 p = b.PointAt(t);
    if (b.ContainsParam(t, b.ParamTol(tol)) && a.Contains(p, tol)) AppendUnique(out, p, tol);
  }
}

}  // namespace

void IntersectConics(const ConicPart& a, const ConicPart& b, double tol, std::vector<Vec3>* out) {
  const Vec3 cross = Cross(a.normal, b.normal);
  if (Length(cross) <= 1e-12) {
    if (std::fabs(Dot(b.center - a.center, a.normal)) > tol) return;  // parallel planes
    if (a.IsCircle() && b.IsCircle()) {
      CoplanarCircles(a, b, tol, out);
    } else {
      CoplanarNumeric(a, b, tol, out);
    }
    return;
  }
  // Different planes: every common point is on the planes' common line.
  const double h1 = Dot(a.center, a.normal), h2 = Dot(b.center, b.normal);
  const double k = Dot(a.normal, b.normal);
  const double denom = 1.0 - k * k;
  const Vec3 origin = (a.normal * (h1 - h2 * k) + b.normal * (h2 - h1 * k)) / denom;
  const LinePart line{origin, *Normalized(cross), -kInf, kInf};
  std::vector<Vec3> on_a;
  IntersectLineConic(line, a, tol, &on_a);
  for (const Vec3& p : on_a)
    if (b.Contains(p, tol)) AppendUnique(out, p, tol);
}

}  // namespace tovik::geometry::internal
