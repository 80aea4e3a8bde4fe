#include "toolkit/acad_space.h"

#include "frame/conversions.h"
#include "frame/value_helpers.h"

namespace tovik {

void AcadSpace::ArrDbls2ArrPoints(const Variant& arr_dbl, Variant& arr_point,
                                  const Variant& xy_only) {
  bool xy = !xy_only.IsMissing() && CBool(xy_only);
  int32_t step = xy ? 2 : 3;
  Variant list = arr_dbl;  // arr_dbl and arr_point may be one variable
  const SafeArray& values = list.Array();
  for (int64_t i = values.LBound(); i <= values.UBound(); i += step) {
    int32_t at = static_cast<int32_t>(i);
    double x = CDbl(values.At(at));
    double y = CDbl(values.At(at + 1));
    double z = xy ? 0.0 : CDbl(values.At(at + 2));
    InsertElement(arr_point, MakePoint(x, y, z));
  }
}

// Members in interface order, by family. The frame registers the value
// members; the attribute, block reference, transform, polyline, sub-entity,
// lisp and identity families register theirs as they are written.
const MemberTable<AcadSpace>& AcadSpace::Members() {
  static const MemberTable<AcadSpace> table = [] {
    MemberTable<AcadSpace> t;
    t.Method(
        "ArrDbls2ArrPoints",
        [](AcadSpace&, CallArgs& a) {
          ArrDbls2ArrPoints(a[0], a[1], a[2]);
          return Variant();
        },
        2, 3);
    return t;
  }();
  return table;
}

}  // namespace tovik
