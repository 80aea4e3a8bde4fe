#include "geometry/vector_service.h"

#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {

Variant ScaleVector(const Variant& vector, double factor) {
  if (!vector.IsArray()) throw errors::TypeMismatch();
  const std::vector<Variant>& items = vector.Array().Items();
  std::vector<double> scaled;
  scaled.reserve(items.size());
  for (const Variant& item : items) {
    if (item.IsArray() || item.IsObject() || item.IsString()) throw errors::TypeMismatch();
    scaled.push_back(CDbl(item) * factor);
  }
  return Variant(SafeArray::OfDoubles(scaled));
}

const MemberTable<VectorService>& VectorService::Members() {
  static const MemberTable<VectorService> table = [] {
    MemberTable<VectorService> t;
    // ScaleVector(Vector, Factor): the vector with every element multiplied
    // by Factor, as a new Double array.
    t.Method(
        "ScaleVector",
        [](VectorService&, CallArgs& a) { return ScaleVector(a[0], CDbl(a[1])); }, 2, 2);
    return t;
  }();
  return table;
}

}  // namespace tovik
