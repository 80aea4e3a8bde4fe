// Utility.TranslateCoordinates and the drawing state the geometry members
// read from system variables.
#include "host/input/utility_geometry.h"

#include <cmath>

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/input/utility.h"
#include "host/shapes/geometry_context.h"
#include "host/shapes/geometry_members.h"
#include "host/surface/args.h"

namespace tovik::host {

using geometry::CoordinateSystem;
using geometry::Vec3;

namespace {

Vec3 PointVar(Document& doc, const char* name, const Vec3& fallback) {
  const Variant v = doc.GetSysVar(name);
  if (!v.IsArray()) return fallback;
  const std::vector<double> d = v.Array().ToDoubles();
  if (d.size() < 2) return fallback;
  return {d[0], d[1], d.size() > 2 ? d[2] : 0.0};
}

double DoubleVar(Document& doc, const char* name, double fallback) {
  const Variant v = doc.GetSysVar(name);
  return v.IsNumber() ? NumberOf(v) : fallback;
}

constexpr std::string_view kTranslate = "TranslateCoordinates";

CoordinateSystem SystemArg(const Variant& v, std::string_view arg) {
  const int32_t code = LongArg(v, {arg, kTranslate});
  if (code < 0 || code > 4) throw InvalidArgument(arg, kTranslate);
  return static_cast<CoordinateSystem>(code);
}

Variant TranslateCoordinates(Utility& s, CallArgs& a) {
  // The point must be exactly a 3-Double array: the host refuses Variant
  // arrays here, unlike other point arguments.
  const Variant& point = a[0];
  if (!point.IsArray() || point.Array().ElementType() != VarType::kDouble ||
      point.Array().Dims() != 1 || point.Array().Count() != 3) {
    throw InvalidArgument("Point", kTranslate);
  }
  const std::vector<double> d = point.Array().ToDoubles();
  const CoordinateSystem from = SystemArg(a[1], "From");
  const CoordinateSystem to = SystemArg(a[2], "To");
  const bool displacement = LongArg(a[3], {"Displacement", kTranslate}) != 0;
  geometry::CoordinateContext context = CurrentCoordinateContext(*s.document());
  if (a.Has(4)) context.ocs_normal = PointArg(a[4], {"OCSNormal", kTranslate});
  switch (geometry::ValidateTranslation(from, to, context)) {
    case geometry::TranslateStatus::kMissingOcsNormal:
      throw InvalidArgument("OCSNormal", kTranslate);
    case geometry::TranslateStatus::kOk:
      break;
    default:  // OCS to OCS, paper-space DCS with anything but DCS
      throw HostError(HostFailure::kInvalidInput);
  }
  const auto result =
      geometry::TranslateCoordinates({d[0], d[1], d[2]}, from, to, displacement, context);
  // A zero normal, degenerate UCS or view, or a non-finite point.
  if (!result) throw HostError(HostFailure::kInvalidInput);
  return PointValue(*result);
}

}  // namespace

geometry::Ucs CurrentUcs(Document& doc) {
  return {PointVar(doc, "UCSORG", {}), PointVar(doc, "UCSXDIR", {1, 0, 0}),
          PointVar(doc, "UCSYDIR", {0, 1, 0})};
}

geometry::CoordinateContext CurrentCoordinateContext(Document& doc) {
  geometry::CoordinateContext c;
  c.ucs = CurrentUcs(doc);
  c.view.target = PointVar(doc, "TARGET", {});
  c.view.view_direction = PointVar(doc, "VIEWDIR", {0, 0, 1});
  c.view.twist = DoubleVar(doc, "VIEWTWIST", 0);
  return c;
}

geometry::Matrix4 WcsToUcsMatrix(Document& doc) {
  const auto m = geometry::UcsToWcsMatrix(CurrentUcs(doc));
  if (!m) return geometry::Matrix4();
  return m->Inverse().value_or(geometry::Matrix4());
}

Vec3 UcsZAxis(Document& doc) {
  const auto axes = geometry::UcsAxes(CurrentUcs(doc));
  return axes ? axes->z : Vec3{0, 0, 1};
}

bool KeepTextReadable(Document& doc) { return DoubleVar(doc, "MIRRTEXT", 0) == 0; }

double PickAperture(Document& doc) {
  const double pickbox = DoubleVar(doc, "PICKBOX", 3);
  const double view_size = DoubleVar(doc, "VIEWSIZE", 1);
  const Vec3 screen = PointVar(doc, "SCREENSIZE", {1, 1, 0});
  const double aperture = screen.y > 0 ? pickbox * view_size / screen.y : 0;
  return std::isfinite(aperture) && aperture >= 0 ? aperture : 0;
}

void AddUtilityGeometryMembers(MemberTable<Utility>& t) {
  t.Method("TranslateCoordinates", TranslateCoordinates, 4, 5);
}

}  // namespace tovik::host
