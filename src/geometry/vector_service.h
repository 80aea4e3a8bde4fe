// VectorService: the shared vector helper object, as an automation object.
// Vectors are automation arrays of numbers (usually three Doubles).
#ifndef TOVIK_GEOMETRY_VECTOR_SERVICE_H_
#define TOVIK_GEOMETRY_VECTOR_SERVICE_H_

#include <memory>
#include <string_view>

#include "frame/member_table.h"

namespace tovik {

// Each element of `vector` multiplied by `factor`, as a new Double array
// from index 0 with as many elements. Raises 13 when `vector` is no array
// or an element is no number.
Variant ScaleVector(const Variant& vector, double factor);

class VectorService : public DispatchObject<VectorService> {
 public:
  static constexpr std::string_view kClassName = "VectorService";
  static std::shared_ptr<VectorService> Make() { return std::make_shared<VectorService>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<VectorService>& Members();
};

}  // namespace tovik

#endif  // TOVIK_GEOMETRY_VECTOR_SERVICE_H_
