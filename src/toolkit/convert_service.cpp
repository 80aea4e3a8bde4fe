#include "toolkit/convert_service.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {

double ValueAsDouble(const Variant& value) {
  if (value.IsArray() || value.IsObject()) throw errors::TypeMismatch();
  return CDbl(value);
}

const MemberTable<ConvertService>& ConvertService::Members() {
  static const MemberTable<ConvertService> table = [] {
    MemberTable<ConvertService> t;
    t.Method(
        "ValueAsDouble",
        [](ConvertService&, CallArgs& a) { return Variant(ValueAsDouble(a[0])); }, 1, 1);
    return t;
  }();
  return table;
}

}  // namespace tovik
