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

std::string_view GenericEntity::TypeName() const {
  return InfoOf(data_.kind).type_name;
}
std::string_view GenericEntity::ObjectName() const {
  return InfoOf(data_.kind).object_name;
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
