// The kinds kept whole without a geometry model of their own.
#include <algorithm>
#include <cmath>
#include <span>

#include "frame/automation_error.h"

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"

namespace tovik::host {

using geometry::Vec3;

std::string_view GenericEntity::TypeName() const {
  return InfoOf(data_.kind).type_name;
}
std::string_view GenericEntity::ObjectName() const {
  return InfoOf(data_.kind).object_name;
}

namespace {

// The spline's own data; other kinds do not have these members (438).
const GenericEntity::Data& SplineData(const GenericEntity& s) {
  if (s.data().kind != GenericKind::kSpline) throw errors::NotSupported();
  return s.data();
}

Variant FlatPoints(std::span<const Vec3> points) {
  std::vector<double> xyz;
  xyz.reserve(points.size() * 3);
  for (const Vec3& p : points) xyz.insert(xyz.end(), {p.x, p.y, p.z});
  return DoublesValue(xyz);
}

// IAcadSpline: Degree, NumberOfControlPoints, ControlPoints, Knots,
// Weights (one per control point, 1 when the file gave none),
// NumberOfFitPoints, FitPoints. Read only here.
void AddSplineMembers(MemberTable<GenericEntity>& t) {
  using K = GenericEntity;
  t.Property("Degree", [](K& s, CallArgs&) { return Variant(SplineData(s).degree); });
  t.Property("NumberOfControlPoints", [](K& s, CallArgs&) {
    return Variant(static_cast<int32_t>(SplineData(s).control_count));
  });
  t.Property("ControlPoints", [](K& s, CallArgs&) {
    const auto& d = SplineData(s);
    return FlatPoints(std::span(d.points).first(std::min(d.control_count, d.points.size())));
  });
  t.Property("Knots", [](K& s, CallArgs&) { return DoublesValue(SplineData(s).knots); });
  t.Property("Weights", [](K& s, CallArgs&) {
    const auto& d = SplineData(s);
    std::vector<double> w = d.weights;
    if (w.size() != d.control_count) w.assign(d.control_count, 1.0);
    return DoublesValue(w);
  });
  t.Property("NumberOfFitPoints", [](K& s, CallArgs&) {
    const auto& d = SplineData(s);
    return Variant(static_cast<int32_t>(d.points.size() - std::min(d.control_count, d.points.size())));
  });
  t.Property("FitPoints", [](K& s, CallArgs&) {
    const auto& d = SplineData(s);
    return FlatPoints(std::span(d.points).subspan(std::min(d.control_count, d.points.size())));
  });
}

}  // namespace

const MemberTable<GenericEntity>& GenericEntity::Members() {
  static const MemberTable<GenericEntity> table = [] {
    MemberTable<GenericEntity> t;
    using K = GenericEntity;
    t.Property("Coordinates", [](K& s, CallArgs&) {
      std::vector<double> xyz;
      for (const Vec3& p : s.data().points) {
        xyz.insert(xyz.end(), {p.x, p.y, p.z});
      }
      return DoublesValue(xyz);
    });
    AddSplineMembers(t);
    // GetBulge(Index) of an old-style 2D polyline (438 for other kinds).
    t.Method(
        "GetBulge",
        [](K& s, CallArgs& a) {
          if (s.data().kind != GenericKind::kPolyline2d) throw errors::NotSupported();
          int32_t i = LongArg(a[0], {"Index", "GetBulge"});
          if (i < 0 || static_cast<size_t>(i) >= s.data().points.size()) {
            throw InvalidArgument("Index", "GetBulge");
          }
          size_t k = static_cast<size_t>(i);
          return Variant(k < s.data().bulges.size() ? s.data().bulges[k] : 0.0);
        },
        1, 1);
    t.Property("Closed", GetBoolField<K, &K::Data::closed>,
               LetBoolField<K, &K::Data::closed, "Closed">);
    AddNormalMember(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
