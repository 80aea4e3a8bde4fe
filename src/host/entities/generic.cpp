// The kinds kept whole without a geometry model of their own.
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

struct GenericNames {
  std::string_view type_name, object_name;
};
constexpr GenericNames kGenericNames[] = {
    {"IAcadPolyline", "AcDb2dPolyline"},      {"IAcad3DPolyline", "AcDb3dPolyline"},
    {"IAcadSpline", "AcDbSpline"},            {"IAcadRay", "AcDbRay"},
    {"IAcadXline", "AcDbXline"},              {"IAcadPViewport", "AcDbViewport"},
    {"IAcadRegion", "AcDbRegion"},            {"IAcadSolid", "AcDbSolid"},
    {"IAcad3DSolid", "AcDb3dSolid"},          {"IAcadTrace", "AcDbTrace"},
    {"IAcad3DFace", "AcDbFace"},              {"IAcadLeader", "AcDbLeader"},
    {"IAcadMLeader", "AcDbMLeader"},          {"IAcadTable", "AcDbTable"},
    {"IAcadPolyfaceMesh", "AcDbPolyFaceMesh"}, {"IAcadPolygonMesh", "AcDbPolygonMesh"},
    {"IAcadEntity", "AcDbBody"},              {"IAcadMLine", "AcDbMline"},
    {"IAcadTolerance", "AcDbFcf"},            {"IAcadShape", "AcDbShape"},
    {"IAcadOle", "AcDbOle2Frame"},            {"IAcadEntity", "AcDbEntity"},
};

}  // namespace

std::string_view GenericEntity::TypeName() const {
  return kGenericNames[static_cast<size_t>(data_.kind)].type_name;
}
std::string_view GenericEntity::ObjectName() const {
  return kGenericNames[static_cast<size_t>(data_.kind)].object_name;
}

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
    t.Property("Closed", GetBoolField<K, &K::Data::closed>,
               LetBoolField<K, &K::Data::closed, "Closed">);
    AddNormalMember(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
