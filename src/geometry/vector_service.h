// The companion geometry services as automation objects: VectorService
// (sums, scaling, angles, distances, rotation about Z, differences of
// points) and RotationService (rotation about any axis). The library keeps
// one shared instance of each, made on first use (GlobalInstance<T>()).
//
// Points and vectors are automation arrays of numbers read from their lower
// bound: x, y and, when present, z (a missing z reads as 0). Results are new
// points: three Doubles from index 0.
#ifndef TOVIK_GEOMETRY_VECTOR_SERVICE_H_
#define TOVIK_GEOMETRY_VECTOR_SERVICE_H_

#include <memory>
#include <string_view>

#include "frame/member_table.h"
#include "geometry/vec3.h"

namespace tovik {

// The point or vector held by `value`. Raises 13 when it is no array or an
// element is no number, 9 when it has fewer than two elements.
geometry::Vec3 VectorOf(const Variant& value);
// A new point of three Doubles from index 0.
Variant PointOf(const geometry::Vec3& p);

// Each element of `vector` multiplied by `factor`, as a new Double array
// from index 0 with as many elements. Raises 13 when `vector` is no array
// or an element is no number; 6 when a product overflows.
Variant ScaleVector(const Variant& vector, double factor);
// The component-wise sum of the points held by the array `vectors`.
geometry::Vec3 SumOf(const Variant& vectors);
// The direction of `vector` in the XY plane, radians from the X axis, in
// [0, 2π).
double AngleOf(const geometry::Vec3& vector);
// `vector` turned by `angle` radians about the Z axis (counter-clockwise for
// a positive angle); z is kept.
geometry::Vec3 RotatedAboutZ(const geometry::Vec3& vector, double angle);
// `point` turned by `angle` radians about the line through `centre` along
// `axis`, by the right-hand rule. Raises 5 when the axis is zero or a value
// is not finite.
geometry::Vec3 RotatedAboutAxis(const geometry::Vec3& point, const geometry::Vec3& centre,
                                const geometry::Vec3& axis, double angle);

class VectorService : public DispatchObject<VectorService> {
 public:
  static constexpr std::string_view kClassName = "VectorService";
  static std::shared_ptr<VectorService> Make() { return std::make_shared<VectorService>(); }
  static ObjectRef MakeGlobal() { return Make(); }

  std::string_view TypeName() const override { return kClassName; }
  // Sum(Vectors), ScaleVector(Vector, Factor), Angle(Vector[, Reference]),
  // Distance(P1, P2), RotateVector(Vector, Angle), VectorFromTo(A, B).
  static const MemberTable<VectorService>& Members();
};

class RotationService : public DispatchObject<RotationService> {
 public:
  static constexpr std::string_view kClassName = "RotationService";
  static std::shared_ptr<RotationService> Make() { return std::make_shared<RotationService>(); }
  static ObjectRef MakeGlobal() { return Make(); }

  std::string_view TypeName() const override { return kClassName; }
  // RotateAboutAxis(Point, Centre, Axis, Angle, Result): Result (written)
  // is Point turned by Angle radians about the line through Centre along
  // Axis, by the right-hand rule.
  static const MemberTable<RotationService>& Members();
};

}  // namespace tovik

#endif  // TOVIK_GEOMETRY_VECTOR_SERVICE_H_
