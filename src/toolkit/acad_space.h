// AcadSpace: the entity toolkit, a global class whose members clients may
// call as free functions of the library (block attributes and dynamic
// properties, block references, coordinate transforms, polylines and
// loops, sub-entities, the lisp bridge, object identity). The library's own
// classes call it through the implicit instance GlobalInstance<AcadSpace>().
//
// The class is split by member family: acad_space.cpp holds the frame and
// the value members; each family adds its file and registers its members
// in the table below, in interface order.
#ifndef TOVIK_TOOLKIT_ACAD_SPACE_H_
#define TOVIK_TOOLKIT_ACAD_SPACE_H_

#include <memory>
#include <string_view>

#include "frame/member_table.h"
#include "frame/variant.h"

namespace tovik {

class AcadSpace : public DispatchObject<AcadSpace> {
 public:
  static constexpr std::string_view kClassName = "AcadSpace";

  // The implicit instance of this global class.
  static ObjectRef MakeGlobal() { return std::make_shared<AcadSpace>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<AcadSpace>& Members();

  // ArrDbls2ArrPoints(arrDbl, arrPoint[, XYOnly]): walks the flat list
  // arrDbl (by reference, unchanged) from its lower bound in steps of 3 (2
  // when XYOnly is True) and appends one point of three Doubles per step
  // to arrPoint (in/out; it becomes, or grows as, an array of points): X
  // and Y from the list, Z from the list or 0 with XYOnly. A list whose
  // length is not a multiple of the step raises 9 at its last, partial
  // step (the points before it are appended). arrDbl not an array raises
  // 13.
  static void ArrDbls2ArrPoints(const Variant& arr_dbl, Variant& arr_point,
                                const Variant& xy_only = Variant::Missing());
};

}  // namespace tovik

#endif  // TOVIK_TOOLKIT_ACAD_SPACE_H_
