#include "document/units.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/host_link.h"
#include "frame/library_errors.h"
#include "geometry/dlength.h"

namespace tovik {
namespace {

Variant InsUnitsOf(const ObjectRef& document) {
  return CallMethod(document, "GetVariable", {Variant("INSUNITS")});
}

}  // namespace

std::optional<int16_t> LengthUnitOfHostCode(int32_t code) {
  switch (code) {
    case 0:  // unitless: taken as millimetres
    case 4:
      return kLengthMillimetre;
    case 5:
      return kLengthCentimetre;
    case 14:
      return kLengthDecimetre;
    case 6:
      return kLengthMetre;
    case 1:
      return kLengthInch;
    case 2:
      return kLengthFoot;
    default:
      return std::nullopt;
  }
}

int16_t DrawingLengthUnit(const ObjectRef& target) {
  Variant code;
  if (!target) {
    code = InsUnitsOf(CurrentDrawing());
  } else if (target->TypeName() == "IAcadDocument") {
    code = InsUnitsOf(target);
  } else if (CBool(GetProperty(target, "IsLayout"))) {
    code = InsUnitsOf(GetProperty(target, "Document").Object());
  } else {
    code = GetProperty(target, "Units");
  }
  std::optional<int16_t> unit = LengthUnitOfHostCode(CInt(code));
  if (!unit) throw errors::Library(kUnsupportedLengthUnit);
  return *unit;
}

double MillimetreFactor(const ObjectRef& target) {
  DLength length;
  length.SetMillimetres(1.0);
  return length.GetValue(DrawingLengthUnit(target));
}

}  // namespace tovik
