#include "geometry/coordinate_systems.h"

#include <cmath>

namespace tovik::geometry {

std::optional<Axes> UcsAxes(const Ucs& ucs) {
  if (!IsFinite(ucs.origin)) return std::nullopt;
  const std::optional<Vec3> x = Normalized(ucs.x_dir);
  const std::optional<Vec3> y = Normalized(ucs.y_dir);
  if (!x || !y) return std::nullopt;
  const std::optional<Vec3> z = Normalized(Cross(*x, *y));
  if (!z) return std::nullopt;
  return Axes{*x, Cross(*z, *x), *z};
}

std::optional<Matrix4> UcsToWcsMatrix(const Ucs& ucs) {
  const std::optional<Axes> ax = UcsAxes(ucs);
  if (!ax) return std::nullopt;
  return Matrix4::FromAxes(ax->x, ax->y, ax->z, ucs.origin);
}

std::optional<Matrix4> DcsToWcsMatrix(const View& view, const Ucs& ucs) {
  const std::optional<Matrix4> ucs_to_wcs = UcsToWcsMatrix(ucs);
  if (!ucs_to_wcs || !std::isfinite(view.twist) || !IsFinite(view.target)) return std::nullopt;
  const Vec3 target = ucs_to_wcs->TransformPoint(view.target);
  const Vec3 direction = ucs_to_wcs->TransformVector(view.view_direction);
  const std::optional<Axes> ax = ArbitraryAxis(direction);
  if (!ax) return std::nullopt;
  // The frame turned by −θ about D̂, so the content shows turned by +θ.
  const double c = std::cos(view.twist), s = std::sin(view.twist);
  const Vec3 xd = ax->x * c - ax->y * s;
  const Vec3 yd = ax->x * s + ax->y * c;
  return Matrix4::FromAxes(xd, yd, ax->z, target);
}

std::optional<Matrix4> DcsToPsdcsMatrix(const PaperViewport& viewport) {
  const double s = viewport.scale;
  if (!std::isfinite(s) || s == 0.0 || !IsFinite(viewport.paper_centre) ||
      !IsFinite(viewport.view_centre))
    return std::nullopt;
  // P_ps = C + s·(P − c) = s·P + (C − s·c), z scaled too (c has z = 0).
  Matrix4 m = Matrix4::Scaling(s);
  const Vec3 offset = viewport.paper_centre - Lift(viewport.view_centre) * s;
  for (int i = 0; i < 3; ++i) m(i, 3) = offset[i];
  return m;
}

TranslateStatus ValidateTranslation(CoordinateSystem from, CoordinateSystem to,
                                    const CoordinateContext& context) {
  using CS = CoordinateSystem;
  if (from == CS::kOcs && to == CS::kOcs) return TranslateStatus::kOcsToOcs;
  if (from == to) return TranslateStatus::kOk;
  if ((from == CS::kPaperSpaceDcs && to != CS::kDisplayDcs) ||
      (to == CS::kPaperSpaceDcs && from != CS::kDisplayDcs))
    return TranslateStatus::kPaperSpacePair;
  if ((from == CS::kOcs || to == CS::kOcs) && !context.ocs_normal)
    return TranslateStatus::kMissingOcsNormal;
  return TranslateStatus::kOk;
}

namespace {

// The matrix taking coordinates in `system` to WCS; for PSDCS the result is
// PSDCS→DCS (the only allowed pair). nullopt when degenerate.
std::optional<Matrix4> ToWcs(CoordinateSystem system, const CoordinateContext& context) {
  switch (system) {
    case CoordinateSystem::kWorld:
      return Matrix4::Identity();
    case CoordinateSystem::kUcs:
      return UcsToWcsMatrix(context.ucs);
    case CoordinateSystem::kDisplayDcs:
      return DcsToWcsMatrix(context.view, context.ucs);
    case CoordinateSystem::kOcs:
      return context.ocs_normal ? OcsToWcsMatrix(*context.ocs_normal) : std::nullopt;
    case CoordinateSystem::kPaperSpaceDcs:
      break;
  }
  return std::nullopt;
}

// Applies m as a point or, for a displacement, as a vector.
Vec3 Apply(const Matrix4& m, const Vec3& p, bool displacement) {
  return displacement ? m.TransformVector(p) : m.TransformPoint(p);
}

}  // namespace

std::optional<Vec3> TranslateCoordinates(const Vec3& point, CoordinateSystem from,
                                         CoordinateSystem to, bool displacement,
                                         const CoordinateContext& context) {
  using CS = CoordinateSystem;
  if (ValidateTranslation(from, to, context) != TranslateStatus::kOk) return std::nullopt;
  if (!IsFinite(point)) return std::nullopt;
  if (from == to) return point;
  if (from == CS::kPaperSpaceDcs || to == CS::kPaperSpaceDcs) {
    // With no floating viewport active, PSDCS is DCS.
    if (!context.viewport) return point;
    const std::optional<Matrix4> dcs_to_ps = DcsToPsdcsMatrix(*context.viewport);
    if (!dcs_to_ps) return std::nullopt;
    if (to == CS::kPaperSpaceDcs) return Apply(*dcs_to_ps, point, displacement);
    const std::optional<Matrix4> ps_to_dcs = dcs_to_ps->Inverse();
    if (!ps_to_dcs) return std::nullopt;
    return Apply(*ps_to_dcs, point, displacement);
  }
  const std::optional<Matrix4> from_to_wcs = ToWcs(from, context);
  const std::optional<Matrix4> to_to_wcs = ToWcs(to, context);
  if (!from_to_wcs || !to_to_wcs) return std::nullopt;
  const std::optional<Matrix4> wcs_to_target = to_to_wcs->Inverse();
  if (!wcs_to_target) return std::nullopt;
  const Vec3 wcs = Apply(*from_to_wcs, point, displacement);
  const Vec3 result = Apply(*wcs_to_target, wcs, displacement);
  if (!IsFinite(result)) return std::nullopt;
  return result;
}

}  // namespace tovik::geometry
