#include "geometry/ellipse.h"

#include <array>
#include <cmath>

namespace tovik::geometry {

bool IsValid(const Ellipse& e) {
  if (!IsFinite(e.center) || !IsFinite(e.major_axis) || !IsFinite(e.normal)) return false;
  if (!std::isfinite(e.start_param) || !std::isfinite(e.end_param)) return false;
  if (!(e.ratio > 0.0 && e.ratio <= 1.0 + 1e-9)) return false;
  if (Length(e.major_axis) <= kAbsTol || e.ratio * Length(e.major_axis) <= kAbsTol) return false;
  const std::optional<Vec3> n = Normalized(e.normal);
  const std::optional<Vec3> m = Normalized(e.major_axis);
  return n && m && Normalized(Cross(*n, *m)).has_value();
}

std::optional<EllipseAxes> AxesOf(const Ellipse& e) {
  if (!IsValid(e)) return std::nullopt;
  const Vec3 side = *Normalized(Cross(*Normalized(e.normal), e.major_axis));
  return EllipseAxes{e.major_axis, side * (e.ratio * Length(e.major_axis))};
}

double Sweep(const Ellipse& e) {
  if (!std::isfinite(e.start_param) || !std::isfinite(e.end_param)) return 0.0;
  const double s = NormalizeAngle(e.end_param - e.start_param);
  return s == 0.0 ? kTwoPi : s;
}

bool IsFullEllipse(const Ellipse& e) { return Sweep(e) >= kTwoPi * (1.0 - 1e-12); }

std::optional<Vec3> PointAtParameter(const Ellipse& e, double t) {
  const std::optional<EllipseAxes> ax = AxesOf(e);
  if (!ax || !std::isfinite(t)) return std::nullopt;
  return e.center + ax->major * std::cos(t) + ax->minor * std::sin(t);
}

std::optional<Vec3> StartPoint(const Ellipse& e) { return PointAtParameter(e, e.start_param); }
std::optional<Vec3> EndPoint(const Ellipse& e) { return PointAtParameter(e, e.end_param); }

bool ContainsParameter(const Ellipse& e, double t, double tol) {
  if (!std::isfinite(t)) return false;
  const double sweep = Sweep(e);
  if (sweep >= kTwoPi) return true;
  const double d = NormalizeAngle(t - e.start_param);
  return d <= sweep + tol || d >= kTwoPi - tol;
}

double ParameterFromAngle(double angle, double ratio) {
  if (!std::isfinite(angle) || !(ratio > 0.0)) return angle;
  return NormalizeAngle(std::atan2(std::sin(angle) / ratio, std::cos(angle)));
}

double AngleFromParameter(double t, double ratio) {
  if (!std::isfinite(t) || !(ratio > 0.0)) return t;
  return NormalizeAngle(std::atan2(ratio * std::sin(t), std::cos(t)));
}

BoundingBox Extents(const Ellipse& e) {
  const std::optional<EllipseAxes> ax = AxesOf(e);
  if (!ax) return {};
  return ConicArcExtents(e.center, ax->major, ax->minor, e.start_param, Sweep(e));
}

double ArcLength(const Ellipse& e) {
  const std::optional<EllipseAxes> ax = AxesOf(e);
  if (!ax) return 0.0;
  // 5-point Gauss–Legendre nodes and weights on [-1, 1].
  static constexpr std::array<double, 5> kNodes = {0.0, 0.5384693101056831, -0.5384693101056831,
                                                   0.9061798459386640, -0.9061798459386640};
  static constexpr std::array<double, 5> kWeights = {0.5688888888888889, 0.4786286704993665,
                                                     0.4786286704993665, 0.2369268850561891,
                                                     0.2369268850561891};
  constexpr int kPanels = 64;
  const double sweep = Sweep(e);
  const double h = sweep / kPanels;
  double total = 0.0;
  for (int p = 0; p < kPanels; ++p) {
    const double mid = e.start_param + (p + 0.5) * h;
    for (size_t k = 0; k < kNodes.size(); ++k) {
      const double t = mid + 0.5 * h * kNodes[k];
      total += kWeights[k] * Length(ax->minor * std::cos(t) - ax->major * std::sin(t));
    }
  }
  return total * 0.5 * h;
}

std::optional<Ellipse> EllipseFromConjugateAxes(const Vec3& center, const Vec3& u, const Vec3& v,
                                                double start, double end, bool full,
                                                const Vec3& normal_hint) {
  if (!IsFinite(center) || !IsFinite(u) || !IsFinite(v) || !std::isfinite(start) ||
      !std::isfinite(end))
    return std::nullopt;
  const Vec3 plane = Cross(u, v);
  if (Length(plane) <= 1e-12 * std::max(LengthSquared(u), LengthSquared(v)) ||
      Length(plane) <= kAbsTol * kAbsTol)
    return std::nullopt;
  const std::optional<Vec3> hint = Normalized(normal_hint);
  const Vec3 normal = (hint && std::fabs(Dot(*hint, plane)) > 0.0) ? *hint : *Normalized(plane);
  // Principal axes of c + u cos t + v sin t: turning the parameter by t0
  // with tan 2t0 = 2u·v / (|u|² − |v|²) makes the two vectors perpendicular;
  // the curve is then c + u' cos(t − t0) + v' sin(t − t0).
  const double t0 = 0.5 * std::atan2(2.0 * Dot(u, v), Dot(u, u) - Dot(v, v));
  Vec3 major = u * std::cos(t0) + v * std::sin(t0);
  Vec3 minor = v * std::cos(t0) - u * std::sin(t0);
  double shift = t0;
  if (Length(minor) > Length(major)) {
    // Re-base a quarter turn later so the longer axis is the major one.
    const Vec3 old_major = major;
    major = minor;
    minor = -old_major;
    shift += std::numbers::pi / 2.0;
  }
  Ellipse r;
  r.center = center;
  r.major_axis = major;
  r.ratio = std::min(1.0, Length(minor) / Length(major));
  r.normal = normal;
  r.start_param = NormalizeAngle(start - shift);
  r.end_param = NormalizeAngle(end - shift);
  if (Dot(Cross(major, minor), normal) < 0.0) {
    // About the normal the parameter runs clockwise. With minor → −minor
    // and t → −t the points are unchanged and the run is counter-clockwise
    // again, from the old end to the old start.
    const double s = r.start_param;
    r.start_param = NormalizeAngle(-r.end_param);
    r.end_param = NormalizeAngle(-s);
  }
  if (full) r.end_param = r.start_param;
  if (!IsValid(r)) return std::nullopt;
  return r;
}

std::optional<Ellipse> TransformEllipse(const Ellipse& e, const Matrix4& m) {
  const std::optional<EllipseAxes> ax = AxesOf(e);
  if (!ax || !m.IsFinite()) return std::nullopt;
  const std::optional<Vec3> geometric_normal = m.TransformNormal(e.normal);
  if (!geometric_normal) return std::nullopt;
  return EllipseFromConjugateAxes(m.TransformPoint(e.center), m.TransformVector(ax->major),
                                  m.TransformVector(ax->minor), e.start_param, e.end_param,
                                  IsFullEllipse(e), *geometric_normal);
}

std::optional<Ellipse> EllipseFromArc(const Arc& arc) {
  if (!IsValid(arc)) return std::nullopt;
  const Axes ax = *Frame(arc);
  Ellipse e{arc.center, ax.x * arc.radius, 1.0, ax.z, NormalizeAngle(arc.start_angle),
            NormalizeAngle(arc.end_angle)};
  if (IsFullCircle(arc)) e.end_param = e.start_param;
  return e;
}

void PrintTo(const Ellipse& e, std::ostream* os) {
  *os << "Ellipse(center ";
  PrintTo(e.center, os);
  *os << ", major ";
  PrintTo(e.major_axis, os);
  *os << ", ratio " << e.ratio << ", normal ";
  PrintTo(e.normal, os);
  *os << ", " << e.start_param << " .. " << e.end_param << ")";
}

}  // namespace tovik::geometry
