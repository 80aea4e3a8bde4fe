// Dimension members: the measurement and the dimension kinds' names.
#include <cmath>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"

namespace tovik::host {

using geometry::Vec3;

namespace {

struct DimNames {
  std::string_view type_name, object_name;
};
constexpr DimNames kDimNames[] = {
    {"IAcadDimRotated", "AcDbRotatedDimension"},
    {"IAcadDimAligned", "AcDbAlignedDimension"},
    {"IAcadDimAngular", "AcDb2LineAngularDimension"},
    {"IAcadDim3PointAngular", "AcDb3PointAngularDimension"},
    {"IAcadDimRadial", "AcDbRadialDimension"},
    {"IAcadDimRadialLarge", "AcDbRadialDimensionLarge"},
    {"IAcadDimDiametric", "AcDbDiametricDimension"},
    {"IAcadDimOrdinate", "AcDbOrdinateDimension"},
    {"IAcadDimArcLength", "AcDbArcDimension"},
};

double AngleBetween(const Vec3& a, const Vec3& b) {
  double c = geometry::Dot(a, b) / (geometry::Length(a) * geometry::Length(b));
  return std::acos(std::clamp(c, -1.0, 1.0));
}

}  // namespace

std::string_view Dimension::TypeName() const {
  return kDimNames[static_cast<size_t>(data_.kind)].type_name;
}
std::string_view Dimension::ObjectName() const {
  return kDimNames[static_cast<size_t>(data_.kind)].object_name;
}

double Dimension::Measurement() const {
  const Data& d = data_;
  switch (d.kind) {
    case DimensionKind::kRotated: {
      // The 13-14 distance projected on the dimension line's direction.
      Vec3 dir{std::cos(d.rotation), std::sin(d.rotation), 0};
      return std::fabs(geometry::Dot(d.p14 - d.p13, dir));
    }
    case DimensionKind::kAligned: return geometry::Distance(d.p13, d.p14);
    case DimensionKind::kRadial:
    case DimensionKind::kRadialLarge:
    case DimensionKind::kDiametric: return geometry::Distance(d.p10, d.p15);
    case DimensionKind::kAngular: return AngleBetween(d.p14 - d.p13, d.p10 - d.p15);
    case DimensionKind::kAngular3Point: return AngleBetween(d.p13 - d.p15, d.p14 - d.p15);
    case DimensionKind::kOrdinate: return std::fabs((d.p14 - d.p13).x);
    case DimensionKind::kArcLength: {
      double r = geometry::Distance(d.p15, d.p13);
      return r * AngleBetween(d.p13 - d.p15, d.p14 - d.p15);
    }
  }
  return 0;
}

const MemberTable<Dimension>& Dimension::Members() {
  static const MemberTable<Dimension> table = [] {
    MemberTable<Dimension> t;
    using K = Dimension;
    t.Property("Measurement", [](K& s, CallArgs&) { return Variant(s.Measurement()); });
    t.Property("TextOverride", GetStringField<K, &K::Data::text_override>,
               LetStringField<K, &K::Data::text_override, "TextOverride">);
    t.Property("TextRotation", GetDoubleField<K, &K::Data::text_rotation>,
               LetDoubleField<K, &K::Data::text_rotation, "TextRotation">);
    t.Property("TextPosition", GetPointField<K, &K::Data::p11>,
               LetPointField<K, &K::Data::p11, "TextPosition">);
    t.Property("Rotation", GetDoubleField<K, &K::Data::rotation>,
               LetDoubleField<K, &K::Data::rotation, "Rotation">);
    AddNormalMember(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
