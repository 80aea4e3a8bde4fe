// Plain 3D and 2D vectors and the named tolerances every geometry comparison
// goes through. Coordinates are drawing units; angles are radians.
#ifndef TOVIK_GEOMETRY_VEC3_H_
#define TOVIK_GEOMETRY_VEC3_H_

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <ostream>

namespace tovik::geometry {

// Absolute tolerance for lengths and coordinates near zero (drawing units).
inline constexpr double kAbsTol = 1e-9;
// Relative tolerance for values far from zero (a fraction of the magnitude).
inline constexpr double kRelTol = 1e-9;
// Full turn, for angle normalisation.
inline constexpr double kPi = std::numbers::pi;
inline constexpr double kTwoPi = 2.0 * std::numbers::pi;

// True when a and b differ by at most max(abs_tol, rel_tol * max(|a|, |b|)),
// the same rule as Python's math.isclose. NaN is never close to anything.
inline bool IsClose(double a, double b, double abs_tol = kAbsTol,
                    double rel_tol = kRelTol) {
  if (a == b) return true;  // also equal infinities
  if (!std::isfinite(a) || !std::isfinite(b)) return false;
  const double diff = std::fabs(a - b);
  return diff <= std::max(abs_tol, rel_tol * std::max(std::fabs(a), std::fabs(b)));
}

// A 3D point or vector: x, y, z in drawing units.
struct Vec3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  friend Vec3 operator+(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
  friend Vec3 operator-(const Vec3& a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
  friend Vec3 operator-(const Vec3& a) { return {-a.x, -a.y, -a.z}; }
  friend Vec3 operator*(const Vec3& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
  friend Vec3 operator*(double s, const Vec3& a) { return a * s; }
  friend Vec3 operator/(const Vec3& a, double s) { return {a.x / s, a.y / s, a.z / s}; }
  Vec3& operator+=(const Vec3& b) { return *this = *this + b; }
  Vec3& operator-=(const Vec3& b) { return *this = *this - b; }
  Vec3& operator*=(double s) { return *this = *this * s; }
  // Exact component equality; use IsClose for geometry.
  friend bool operator==(const Vec3&, const Vec3&) = default;

  // Component i: 0 = x, 1 = y, 2 = z. REQUIRES: 0 <= i <= 2.
  double operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }
  double& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
};

// Dot product.
inline double Dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
// Right-handed cross product a × b.
inline Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
// Euclidean length (overflow-safe).
inline double Length(const Vec3& a) { return std::hypot(a.x, a.y, a.z); }
// Squared length.
inline double LengthSquared(const Vec3& a) { return Dot(a, a); }
// Distance between two points.
inline double Distance(const Vec3& a, const Vec3& b) { return Length(a - b); }
// True when all three components are finite (no NaN, no infinity).
inline bool IsFinite(const Vec3& a) {
  return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}
// The unit vector along a; nullopt when a is shorter than kAbsTol or not finite.
inline std::optional<Vec3> Normalized(const Vec3& a) {
  const double len = Length(a);
  if (!std::isfinite(len) || len <= kAbsTol) return std::nullopt;
  return a / len;
}
// Linear interpolation a + (b - a) * t.
inline Vec3 Lerp(const Vec3& a, const Vec3& b, double t) { return a + (b - a) * t; }

// True when the points are within the tolerance of each other, judged on the
// distance: |a - b| <= max(abs_tol, rel_tol * max(|a|, |b|)).
inline bool IsClose(const Vec3& a, const Vec3& b, double abs_tol = kAbsTol,
                    double rel_tol = kRelTol) {
  if (a == b) return true;
  const double scale = std::max(Length(a), Length(b));
  return Distance(a, b) <= std::max(abs_tol, rel_tol * scale);
}

// A 2D point or vector (OCS vertices, plan coordinates).
struct Vec2 {
  double x = 0.0;
  double y = 0.0;

  friend Vec2 operator+(const Vec2& a, const Vec2& b) { return {a.x + b.x, a.y + b.y}; }
  friend Vec2 operator-(const Vec2& a, const Vec2& b) { return {a.x - b.x, a.y - b.y}; }
  friend Vec2 operator-(const Vec2& a) { return {-a.x, -a.y}; }
  friend Vec2 operator*(const Vec2& a, double s) { return {a.x * s, a.y * s}; }
  friend Vec2 operator*(double s, const Vec2& a) { return a * s; }
  friend Vec2 operator/(const Vec2& a, double s) { return {a.x / s, a.y / s}; }
  friend bool operator==(const Vec2&, const Vec2&) = default;
};

inline double Dot(const Vec2& a, const Vec2& b) { return a.x * b.x + a.y * b.y; }
// The z component of the 3D cross product: positive when b is CCW from a.
inline double Cross(const Vec2& a, const Vec2& b) { return a.x * b.y - a.y * b.x; }
inline double Length(const Vec2& a) { return std::hypot(a.x, a.y); }
inline double Distance(const Vec2& a, const Vec2& b) { return Length(a - b); }
inline bool IsFinite(const Vec2& a) { return std::isfinite(a.x) && std::isfinite(a.y); }
// The vector turned 90° counter-clockwise.
inline Vec2 Perp(const Vec2& a) { return {-a.y, a.x}; }
inline std::optional<Vec2> Normalized(const Vec2& a) {
  const double len = Length(a);
  if (!std::isfinite(len) || len <= kAbsTol) return std::nullopt;
  return a / len;
}
inline Vec2 Lerp(const Vec2& a, const Vec2& b, double t) { return a + (b - a) * t; }
inline bool IsClose(const Vec2& a, const Vec2& b, double abs_tol = kAbsTol,
                    double rel_tol = kRelTol) {
  if (a == b) return true;
  const double scale = std::max(Length(a), Length(b));
  return Distance(a, b) <= std::max(abs_tol, rel_tol * scale);
}
// The xy part of a 3D point, and a 2D point lifted to height z.
inline Vec2 Xy(const Vec3& a) { return {a.x, a.y}; }
inline Vec3 Lift(const Vec2& a, double z = 0.0) { return {a.x, a.y, z}; }

// Angle normalised into [0, 2π). Non-finite input comes back unchanged.
inline double NormalizeAngle(double a) {
  if (!std::isfinite(a)) return a;
  double r = std::fmod(a, kTwoPi);
  if (r < 0) r += kTwoPi;
  if (r >= kTwoPi) r = 0.0;  // fmod of a tiny negative can round up to 2π
  return r;
}

// gtest printers, so failed expectations show coordinates.
inline void PrintTo(const Vec3& v, std::ostream* os) {
  *os << "(" << v.x << ", " << v.y << ", " << v.z << ")";
}
inline void PrintTo(const Vec2& v, std::ostream* os) { *os << "(" << v.x << ", " << v.y << ")"; }
inline std::ostream& operator<<(std::ostream& os, const Vec3& v) {
  PrintTo(v, &os);
  return os;
}
inline std::ostream& operator<<(std::ostream& os, const Vec2& v) {
  PrintTo(v, &os);
  return os;
}

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_VEC3_H_
