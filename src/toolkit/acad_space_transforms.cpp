// AcadSpace: point transforms between a block definition and the space
// holding its reference, between the host's coordinate systems, and for
// the screen. The vector arithmetic goes through the shared geometry
// services.
#include <cmath>

#include "document/spaces.h"
#include "document/units.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_state.h"
#include "frame/runtime_number.h"
#include "geometry/trans_matrix.h"
#include "geometry/vector_service.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

using geometry::Vec3;

// The host's AcCoordinateSystem codes used here.
constexpr int32_t kWorld = 0, kUcs = 1, kOcs = 4;

bool IsTrue(const Variant& flag) { return !flag.IsMissing() && CBool(flag); }

Vec3 PointProperty(const ObjectRef& obj, std::string_view name) {
  return VectorOf(GetProperty(obj, name));
}

// The reference's x and y scale factors; with IgnoreScale only their signs
// (mirroring survives, magnitude does not).
std::pair<double, double> PlanarScale(const ObjectRef& bref, bool ignore_scale) {
  double xs = CDbl(GetProperty(bref, "XScaleFactor"));
  double ys = CDbl(GetProperty(bref, "YScaleFactor"));
  if (ignore_scale) {
    xs = xs < 0 ? -1.0 : 1.0;
    ys = ys < 0 ? -1.0 : 1.0;
  }
  return {xs, ys};
}

// The definition of the reference, found by its Name (not an effective
// name) in its own document's Blocks.
ObjectRef DefinitionOf(const ObjectRef& bref) {
  ObjectRef blocks = GetProperty(GetProperty(bref, "Document").Object(), "Blocks").Object();
  return CallMethod(blocks, "Item", {GetProperty(bref, "Name")}).Object();
}

Variant Translated(const ObjectRef& utility, const Variant& point, int32_t from, int32_t to,
                   bool displacement, const Variant& normal = Variant::Missing()) {
  if (normal.IsMissing()) {
    return CallMethod(utility, "TranslateCoordinates",
                      {point, Variant(from), Variant(to), Variant(displacement)});
  }
  return CallMethod(utility, "TranslateCoordinates",
                    {point, Variant(from), Variant(to), Variant(displacement), normal});
}

ObjectRef UtilityOf(const ObjectRef& drawing) { return GetProperty(drawing, "Utility").Object(); }

// The image of `block_point` in the space holding the reference (the
// mapping of TranslatePointFromBlock without IsVector).
Vec3 FromBlock(const Vec3& block_point, const ObjectRef& bref, bool ignore_scale) {
  auto [xs, ys] = PlanarScale(bref, ignore_scale);
  ObjectRef definition = DefinitionOf(bref);
  Vec3 origin = PointProperty(definition, "Origin");
  Vec3 insertion = PointProperty(bref, "InsertionPoint");
  Variant out = PointOf(block_point);
  AcadSpace::TranslatePoint(out, PointOf(insertion - origin),
                            CDbl(GetProperty(bref, "Rotation")), xs, ys, PointOf(origin));
  return VectorOf(out);
}

// The inverse mapping (TranslatePointToBlock without IsVector).
Vec3 ToBlock(const Vec3& outside_point, const ObjectRef& bref, bool ignore_scale) {
  auto [xs, ys] = PlanarScale(bref, ignore_scale);
  GetProperty(bref, "ZScaleFactor");  // read as the host's callers read it; not used
  ObjectRef definition = DefinitionOf(bref);
  Variant insertion = GetProperty(bref, "InsertionPoint");
  Variant p = PointOf(outside_point);
  AcadSpace::TranslatePoint(p, ScaleVector(insertion, -1.0), -CDbl(GetProperty(bref, "Rotation")),
                            1.0, 1.0, insertion);
  Vec3 q = VectorOf(p);
  q.x = DivideDoubles(q.x, xs);
  q.y = DivideDoubles(q.y, ys);
  return q + PointProperty(definition, "Origin");
}

}  // namespace

void AcadSpace::TranslatePoint(Variant& point, const Variant& displacement, double rotation,
                               double x_scale, double y_scale, const Variant& base_point) {
  Vec3 base = base_point.IsMissing() ? Vec3{} : VectorOf(base_point);
  Vec3 v = VectorOf(point) - base;
  v.x *= x_scale;
  v.y *= y_scale;
  if (!std::isfinite(v.x) || !std::isfinite(v.y)) throw errors::Overflow();
  Vec3 p = RotatedAboutAxis(base + v, base, {0, 0, 1}, rotation);
  // Displacement is read at indices 0 to 2, whatever its lower bound.
  const SafeArray& d = displacement.Array();
  p += Vec3{CDbl(d.At(0)), CDbl(d.At(1)), CDbl(d.At(2))};
  point = PointOf(p);
}

void AcadSpace::TranslatePointFromBlock(const Variant& block_point, const ObjectRef& block_ref,
                                        Variant& outside_point, const Variant& ignore_scale,
                                        const Variant& is_vector) {
  bool ignore = IsTrue(ignore_scale);
  Vec3 p = FromBlock(VectorOf(block_point), block_ref, ignore);
  if (IsTrue(is_vector)) p = p - FromBlock({}, block_ref, ignore);
  outside_point = PointOf(p);
}

void AcadSpace::TranslatePointToBlock(const Variant& outside_point, const ObjectRef& block_ref,
                                      Variant& block_point, const Variant& ignore_scale,
                                      const Variant& is_vector) {
  bool ignore = IsTrue(ignore_scale);
  Vec3 p = ToBlock(VectorOf(outside_point), block_ref, ignore);
  if (IsTrue(is_vector)) p = p - ToBlock({}, block_ref, ignore);
  block_point = PointOf(p);
}

ObjectRef AcadSpace::BRef_TransMatrix(const ObjectRef& bref, const Variant& ignore_scale) {
  Variant normal = GetProperty(bref, "Normal");
  ObjectRef utility = UtilityOf(CurrentDrawing());
  Vec3 n = VectorOf(normal);
  Vec3 x = VectorOf(Translated(utility, PointOf({1, 0, 0}), kOcs, kWorld, true, normal));
  Vec3 y = VectorOf(Translated(utility, PointOf({0, 1, 0}), kOcs, kWorld, true, normal));
  double rotation = CDbl(GetProperty(bref, "Rotation"));
  x = RotatedAboutAxis(x, {}, n, rotation);
  y = RotatedAboutAxis(y, {}, n, rotation);
  if (!IsTrue(ignore_scale)) {
    x = VectorOf(ScaleVector(PointOf(x), CDbl(GetProperty(bref, "XScaleFactor"))));
    y = VectorOf(ScaleVector(PointOf(y), CDbl(GetProperty(bref, "YScaleFactor"))));
    n = VectorOf(ScaleVector(PointOf(n), CDbl(GetProperty(bref, "ZScaleFactor"))));
  }
  // The definition's origin lands on the insertion point: the translation
  // is the insertion point plus the image of the negated origin.
  Vec3 origin = PointProperty(DefinitionOf(bref), "Origin");
  Vec3 moved_origin = x * origin.x + y * origin.y + n * origin.z;
  Vec3 t = SumOf(Variant(SafeArray::Of({GetProperty(bref, "InsertionPoint"),
                                        PointOf(-moved_origin)})));
  geometry::Matrix4 m = geometry::Matrix4::FromAxes(x, y, n, t);
  return TransMatrix::FromMatrix4(m);
}

ObjectRef AcadSpace::BRef_UCS(const ObjectRef& block, const Variant& convert_org_to_mm) {
  auto ucs = UCS::Make();
  Variant x_axis, y_axis;
  TranslatePointFromBlock(PointOf({1, 0, 0}), block, x_axis, Variant(true), Variant(true));
  TranslatePointFromBlock(PointOf({0, 1, 0}), block, y_axis, Variant(true), Variant(true));
  ucs->x_axis = VectorOf(x_axis);
  ucs->y_axis = VectorOf(y_axis);
  ucs->z_axis = geometry::Cross(ucs->x_axis, ucs->y_axis);
  Vec3 origin = PointProperty(block, "InsertionPoint");
  if (IsTrue(convert_org_to_mm)) {
    double factor = MillimetreFactor(Block_OwnerOf(block));
    if (factor != 1.0) origin = origin * (1.0 / factor);
  }
  ucs->origin = origin;
  return ucs;
}

void AcadSpace::TranslateCoordinates(const ObjectRef& acad_drawing, Variant& points_list,
                                     int32_t from_cs, int32_t to_cs, const Variant& dims) {
  ResumeNext trap;
  int32_t step = 3;
  ObjectRef utility;
  trap([&] {
    if (!dims.IsMissing()) step = CByte(dims);
    utility = UtilityOf(acad_drawing);
  });
  if (trap.Number() != 0) return;
  for (int64_t i = 0;; i += step) {
    trap([&] {
      const SafeArray& list = points_list.Array();
      int32_t at = static_cast<int32_t>(list.LBound() + i);
      Vec3 p{CDbl(list.At(at)), CDbl(list.At(at + 1)), step == 3 ? CDbl(list.At(at + 2)) : 0.0};
      Vec3 q = VectorOf(Translated(utility, PointOf(p), from_cs, to_cs, false));
      SafeArray& out = points_list.MutableArray();
      out.Set(at, Variant(q.x));
      out.Set(at + 1, Variant(q.y));
      if (step == 3) out.Set(at + 2, Variant(q.z));
    });
    if (trap.Number() != 0 || step <= 0) return;
  }
}

Variant AcadSpace::UCSPoint(const Variant& wcs_point) {
  return Translated(UtilityOf(CurrentDrawing()), wcs_point, kWorld, kUcs, false);
}

Variant AcadSpace::WCSPoint(const Variant& ucs_point) {
  return Translated(UtilityOf(CurrentDrawing()), ucs_point, kUcs, kWorld, false);
}

void AcadSpace::Align3D(const ObjectRef& acad_ent, const Variant& base1, const Variant& base2,
                        const Variant& base3, const Variant& dest1, const Variant& dest2,
                        const Variant& dest3) {
  CallMethod(acad_ent, "Move", {base1, dest1});
  Vec3 d1 = VectorOf(dest1), shift = d1 - VectorOf(base1);
  Vec3 b2 = VectorOf(base2) + shift, b3 = VectorOf(base3) + shift;
  auto rotate = [&](const Vec3& axis, double angle) {
    CallMethod(acad_ent, "Rotate3D", {dest1, PointOf(d1 + axis), Variant(angle)});
    b3 = RotatedAboutAxis(b3, d1, axis, angle);
  };
  // First turn: Base1→Base2 onto Dest1→Dest2, about their common normal.
  Vec3 u = b2 - d1, v = VectorOf(dest2) - d1;
  Vec3 axis = geometry::Cross(u, v);
  double angle = std::atan2(geometry::Length(axis), geometry::Dot(u, v));
  if (geometry::Length(axis) == 0.0 && angle != 0.0) {
    // Opposite directions: any axis square to u turns it half round.
    axis = geometry::Cross(u, std::fabs(u.x) < std::fabs(u.z) ? Vec3{1, 0, 0} : Vec3{0, 0, 1});
  }
  if (angle != 0.0 && geometry::Length(axis) != 0.0) rotate(axis, angle);
  // Second turn, about Dest1→Dest2: Base3 into the destination plane, on
  // the side of Dest3.
  double vv = geometry::Dot(v, v);
  if (vv == 0.0) return;
  auto across = [&](const Vec3& p) { return (p - d1) - v * (geometry::Dot(p - d1, v) / vv); };
  Vec3 p = across(b3), q = across(VectorOf(dest3));
  double turn = std::atan2(geometry::Dot(geometry::Cross(p, q), v) / std::sqrt(vv),
                           geometry::Dot(p, q));
  if (turn != 0.0 && geometry::Length(p) != 0.0 && geometry::Length(q) != 0.0) rotate(v, turn);
}

AcadSpace::ScreenView AcadSpace::GetAcadScreenWCS(const ObjectRef& this_drawing) {
  ScreenView out;
  auto variable = [&](const char* name) {
    return CallMethod(this_drawing, "GetVariable", {Variant(name)});
  };
  Variant size = variable("ScreenSize");
  out.window_width = CDbl(size.Array().At(0));
  out.window_height = CDbl(size.Array().At(1));
  out.acad_height = CDbl(variable("ViewSize"));
  double product = out.acad_height * out.window_width;
  if (!std::isfinite(product)) throw errors::Overflow();
  out.acad_width = DivideDoubles(product, out.window_height);
  ObjectRef utility = UtilityOf(this_drawing);
  out.view_centre = Translated(utility, variable("ViewCtr"), kUcs, kWorld, false);
  out.twist_angle = CDbl(variable("ViewTwist"));
  out.view_dir = Translated(utility, variable("ViewDir"), kUcs, kWorld, true);
  Vec3 corner = RotatedAboutZ({-out.acad_width / 2, out.acad_height / 2, 0}, -out.twist_angle);
  Variant world = Translated(utility, PointOf(corner), kOcs, kWorld, true, out.view_dir);
  out.tl_corner = PointOf(VectorOf(out.view_centre) + VectorOf(world));
  return out;
}

ObjectRef AcadSpace::CurSpace(const ObjectRef& acad_drawing) {
  return CurrentSpaceOf(acad_drawing);
}

}  // namespace tovik
