#include "geometry/ocs.h"

#include <cmath>

namespace tovik::geometry {

std::optional<Axes> ArbitraryAxis(const Vec3& normal) {
  const std::optional<Vec3> n = Normalized(normal);
  if (!n) return std::nullopt;
  const Vec3 helper = (std::fabs(n->x) < kArbitraryAxisLimit && std::fabs(n->y) < kArbitraryAxisLimit)
                          ? Vec3{0.0, 1.0, 0.0}
                          : Vec3{0.0, 0.0, 1.0};
  const std::optional<Vec3> ax = Normalized(Cross(helper, *n));
  if (!ax) return std::nullopt;  // unreachable for a unit n, kept for safety
  return Axes{*ax, Cross(*n, *ax), *n};
}

std::optional<Matrix4> OcsToWcsMatrix(const Vec3& normal) {
  const std::optional<Axes> ax = ArbitraryAxis(normal);
  if (!ax) return std::nullopt;
  return Matrix4::FromAxes(ax->x, ax->y, ax->z);
}

std::optional<Matrix4> WcsToOcsMatrix(const Vec3& normal) {
  const std::optional<Matrix4> m = OcsToWcsMatrix(normal);
  if (!m) return std::nullopt;
  return m->Transposed();  // orthonormal, no translation
}

std::optional<Vec3> OcsToWcs(const Vec3& p, const Vec3& normal) {
  const std::optional<Axes> ax = ArbitraryAxis(normal);
  if (!ax) return std::nullopt;
  return FromFrame(*ax, p);
}

std::optional<Vec3> WcsToOcs(const Vec3& p, const Vec3& normal) {
  const std::optional<Axes> ax = ArbitraryAxis(normal);
  if (!ax) return std::nullopt;
  return ToFrame(*ax, p);
}

}  // namespace tovik::geometry
