#include "geometry/vector_service.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/value_helpers.h"
#include "geometry/matrix.h"

namespace tovik {
namespace {

double ElementNumber(const Variant& item) {
  if (item.IsArray() || item.IsObject() || item.IsString()) throw errors::TypeMismatch();
  return CDbl(item);
}

double Finite(double value) {
  if (!std::isfinite(value)) throw errors::Overflow();
  return value;
}

}  // namespace

geometry::Vec3 VectorOf(const Variant& value) {
  if (!value.IsArray()) throw errors::TypeMismatch();
  const SafeArray& a = value.Array();
  int32_t lb = a.LBound();
  geometry::Vec3 v{ElementNumber(a.At(lb)), ElementNumber(a.At(lb + 1)), 0.0};
  if (a.Count() > 2) v.z = ElementNumber(a.At(lb + 2));
  return v;
}

Variant PointOf(const geometry::Vec3& p) { return MakePoint(p.x, p.y, p.z); }

Variant ScaleVector(const Variant& vector, double factor) {
  if (!vector.IsArray()) throw errors::TypeMismatch();
  const std::vector<Variant>& items = vector.Array().Items();
  std::vector<double> scaled;
  scaled.reserve(items.size());
  for (const Variant& item : items) scaled.push_back(Finite(ElementNumber(item) * factor));
  return Variant(SafeArray::OfDoubles(scaled));
}

geometry::Vec3 SumOf(const Variant& vectors) {
  if (!vectors.IsArray()) throw errors::TypeMismatch();
  geometry::Vec3 sum;
  for (const Variant& item : vectors.Array().Items()) sum = sum + VectorOf(item);
  return sum;
}

double AngleOf(const geometry::Vec3& vector) {
  double a = std::atan2(vector.y, vector.x);
  return a < 0 ? a + 2 * std::numbers::pi : a;
}

geometry::Vec3 RotatedAboutZ(const geometry::Vec3& vector, double angle) {
  double c = std::cos(angle), s = std::sin(angle);
  return {vector.x * c - vector.y * s, vector.x * s + vector.y * c, vector.z};
}

geometry::Vec3 RotatedAboutAxis(const geometry::Vec3& point, const geometry::Vec3& centre,
                                const geometry::Vec3& axis, double angle) {
  auto m = geometry::Matrix4::Rotation(centre, axis, angle);
  if (!m) throw errors::InvalidCall();
  return m->TransformPoint(point);
}

// Members in the order of the service's interface.
const MemberTable<VectorService>& VectorService::Members() {
  static const MemberTable<VectorService> table = [] {
    MemberTable<VectorService> t;
    t.Method("Sum", [](VectorService&, CallArgs& a) { return PointOf(SumOf(a[0])); }, 1, 1);
    // The factor may be an Integer (-1 flips a vector) or a Double.
    t.Method(
        "ScaleVector",
        [](VectorService&, CallArgs& a) { return ScaleVector(a[0], CDbl(a[1])); }, 2, 2);
    t.Method(
        "Angle", [](VectorService&, CallArgs& a) { return Variant(AngleOf(VectorOf(a[0]))); }, 1,
        2);
    t.Method(
        "Distance",
        [](VectorService&, CallArgs& a) {
          return Variant(geometry::Length(VectorOf(a[1]) - VectorOf(a[0])));
        },
        2, 2);
    t.Method(
        "RotateVector",
        [](VectorService&, CallArgs& a) {
          return PointOf(RotatedAboutZ(VectorOf(a[0]), CDbl(a[1])));
        },
        2, 2);
    t.Method(
        "VectorFromTo",
        [](VectorService&, CallArgs& a) { return PointOf(VectorOf(a[1]) - VectorOf(a[0])); },
        2, 2);
    return t;
  }();
  return table;
}

const MemberTable<RotationService>& RotationService::Members() {
  static const MemberTable<RotationService> table = [] {
    MemberTable<RotationService> t;
    t.Method(
        "RotateAboutAxis",
        [](RotationService&, CallArgs& a) {
          a[4] = PointOf(
              RotatedAboutAxis(VectorOf(a[0]), VectorOf(a[1]), VectorOf(a[2]), CDbl(a[3])));
          return Variant();
        },
        5, 5).Outs({4});
    return t;
  }();
  return table;
}

}  // namespace tovik
