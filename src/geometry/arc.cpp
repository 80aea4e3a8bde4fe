#include "geometry/arc.h"

#include <cmath>

namespace tovik::geometry {

bool IsValid(const Arc& arc) {
  return IsFinite(arc.center) && std::isfinite(arc.radius) && arc.radius > kAbsTol &&
         std::isfinite(arc.start_angle) && std::isfinite(arc.end_angle) &&
         Normalized(arc.normal).has_value();
}

double Sweep(const Arc& arc) {
  if (!std::isfinite(arc.start_angle) || !std::isfinite(arc.end_angle)) return 0.0;
  const double s = NormalizeAngle(arc.end_angle - arc.start_angle);
  return s == 0.0 ? kTwoPi : s;
}

bool IsFullCircle(const Arc& arc) { return Sweep(arc) >= kTwoPi * (1.0 - 1e-12); }

std::optional<Axes> Frame(const Arc& arc) { return ArbitraryAxis(arc.normal); }

std::optional<Vec3> PointAt(const Arc& arc, double angle) {
  if (!IsValid(arc) || !std::isfinite(angle)) return std::nullopt;
  const Axes ax = *Frame(arc);
  return arc.center + (ax.x * std::cos(angle) + ax.y * std::sin(angle)) * arc.radius;
}

std::optional<Vec3> StartPoint(const Arc& arc) { return PointAt(arc, arc.start_angle); }
std::optional<Vec3> EndPoint(const Arc& arc) { return PointAt(arc, arc.end_angle); }

bool ContainsAngle(const Arc& arc, double angle, double angle_tol) {
  if (!std::isfinite(angle)) return false;
  const double sweep = Sweep(arc);
  if (sweep >= kTwoPi) return true;
  const double d = NormalizeAngle(angle - arc.start_angle);
  return d <= sweep + angle_tol || d >= kTwoPi - angle_tol;
}

double ArcLength(const Arc& arc) { return IsValid(arc) ? arc.radius * Sweep(arc) : 0.0; }

double SegmentArea(const Arc& arc) {
  if (!IsValid(arc)) return 0.0;
  const double theta = Sweep(arc);
  return 0.5 * arc.radius * arc.radius * (theta - std::sin(theta));
}

BoundingBox ConicArcExtents(const Vec3& center, const Vec3& u, const Vec3& v, double start,
                            double sweep) {
  BoundingBox box;
  if (!IsFinite(center) || !IsFinite(u) || !IsFinite(v) || !std::isfinite(start) ||
      !std::isfinite(sweep) || sweep <= 0.0)
    return box;
  auto point = [&](double t) { return center + u * std::cos(t) + v * std::sin(t); };
  const bool full = sweep >= kTwoPi * (1.0 - 1e-12);
  auto on_arc = [&](double t) {
    if (full) return true;
    return NormalizeAngle(t - start) <= sweep;
  };
  if (!full) {
    box.Extend(point(start));
    box.Extend(point(start + sweep));
  }
  // Per axis, x_k(t) = c_k + A cos(t − φ) with A = hypot(u_k, v_k) and
  // φ = atan2(v_k, u_k): the maximum is at t = φ, the minimum at φ + π.
  for (int k = 0; k < 3; ++k) {
    const double amplitude = std::hypot(u[k], v[k]);
    if (amplitude == 0.0) {
      Vec3 p = box.has_data ? box.min : center;  // the axis is flat: c_k
      p[k] = center[k];
      box.Extend(p);
      continue;
    }
    const double phi = std::atan2(v[k], u[k]);
    for (double t : {phi, phi + std::numbers::pi}) {
      if (!on_arc(t)) continue;
      // Extend only axis k with the exact extreme, keep the others inside.
      Vec3 p = point(t);
      p[k] = center[k] + (t == phi ? amplitude : -amplitude);
      box.Extend(p);
    }
  }
  return box;
}

BoundingBox Extents(const Arc& arc) {
  if (!IsValid(arc)) return {};
  const Axes ax = *Frame(arc);
  return ConicArcExtents(arc.center, ax.x * arc.radius, ax.y * arc.radius, arc.start_angle,
                         Sweep(arc));
}

std::optional<Arc> TransformArc(const Arc& arc, const Matrix4& m) {
  if (!IsValid(arc) || !m.IsFinite()) return std::nullopt;
  const std::optional<double> scale = m.UniformScale();
  const std::optional<Vec3> normal = m.TransformNormal(arc.normal);
  if (!scale || !normal) return std::nullopt;
  Arc r;
  r.center = m.TransformPoint(arc.center);
  r.radius = arc.radius * *scale;
  r.normal = *normal;
  const std::optional<Axes> ax = ArbitraryAxis(*normal);
  if (!ax || !IsValid(r)) return std::nullopt;
  auto angle_of = [&](double old_angle) {
    const Vec3 d = m.TransformPoint(*PointAt(arc, old_angle)) - r.center;
    return NormalizeAngle(std::atan2(Dot(d, ax->y), Dot(d, ax->x)));
  };
  if (IsFullCircle(arc)) {
    r.start_angle = r.end_angle = angle_of(arc.start_angle);
    return r;
  }
  const double a = angle_of(arc.start_angle), b = angle_of(arc.end_angle);
  // A reflection turns the counter-clockwise run into a clockwise one about
  // the transformed normal; read counter-clockwise it goes from end to start.
  if (m.IsMirroring()) {
    r.start_angle = b;
    r.end_angle = a;
  } else {
    r.start_angle = a;
    r.end_angle = b;
  }
  return r;
}

void PrintTo(const Arc& arc, std::ostream* os) {
  *os << "Arc(center ";
  PrintTo(arc.center, os);
  *os << ", r " << arc.radius << ", normal ";
  PrintTo(arc.normal, os);
  *os << ", " << arc.start_angle << " .. " << arc.end_angle << ")";
}

}  // namespace tovik::geometry
