// Helpers shared by the host geometry tests: points out of Variants,
// bounding boxes and intersections through the automation surface.
#ifndef TOVIK_TESTS_SUPPORT_GEOMETRY_CHECKS_H_
#define TOVIK_TESTS_SUPPORT_GEOMETRY_CHECKS_H_

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>
#include <vector>

#include "geometry/vec3.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {

// A 3-Double point out of a Variant.
inline geometry::Vec3 V3(const Variant& v) {
  const std::vector<double> d = v.Array().ToDoubles();
  return {d.at(0), d.at(1), d.size() > 2 ? d[2] : 0.0};
}

// A flat Double array.
inline Variant Doubles(std::initializer_list<double> values) {
  return Variant(SafeArray::OfDoubles(values));
}

// The doubles of a Variant array, each compared within tol.
inline void ExpectDoubles(const std::vector<double>& got, const std::vector<double>& want,
                          double tol = kGeoTol) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], tol) << "at " << i;
}

inline void ExpectPoint(const Variant& got, const geometry::Vec3& want, double tol = kGeoTol) {
  const geometry::Vec3 p = V3(got);
  EXPECT_NEAR(p.x, want.x, tol);
  EXPECT_NEAR(p.y, want.y, tol);
  EXPECT_NEAR(p.z, want.z, tol);
}

// GetBoundingBox through the automation surface.
inline std::pair<geometry::Vec3, geometry::Vec3> BoxOf(const ObjectRef& e) {
  std::vector<Variant> args(2);
  CallMethodRef(e, "GetBoundingBox", args);
  return {V3(args[0]), V3(args[1])};
}

inline void ExpectBox(const ObjectRef& e, const geometry::Vec3& lo, const geometry::Vec3& hi,
                      double tol = kGeoTol) {
  const auto [a, b] = BoxOf(e);
  EXPECT_TRUE(geometry::IsClose(a, lo, tol)) << a << " vs " << lo;
  EXPECT_TRUE(geometry::IsClose(b, hi, tol)) << b << " vs " << hi;
}

// IntersectWith as a flat list of doubles; it must be a Double array.
inline std::vector<double> IntersectionOf(const ObjectRef& a, const ObjectRef& b, int option) {
  const Variant r = CallMethod(a, "IntersectWith", {Variant(b), Variant(int32_t(option))});
  EXPECT_TRUE(r.IsArray());
  if (!r.IsArray()) return {};
  EXPECT_EQ(r.Array().ElementType(), VarType::kDouble);
  return r.Array().ToDoubles();
}

// The points of a flat x,y,z list, sorted by x then y then z so that tests
// need not depend on the order intersections are found in.
inline std::vector<double> SortedPoints(std::vector<double> flat) {
  std::vector<std::vector<double>> points;
  for (size_t i = 0; i + 2 < flat.size(); i += 3) points.push_back({flat[i], flat[i + 1], flat[i + 2]});
  std::sort(points.begin(), points.end(), [](const auto& p, const auto& q) {
    for (int k = 0; k < 3; ++k) {
      if (std::fabs(p[k] - q[k]) > 1e-7) return p[k] < q[k];
    }
    return false;
  });
  std::vector<double> out;
  for (const auto& p : points) out.insert(out.end(), p.begin(), p.end());
  return out;
}

}  // namespace tovik::host

#endif  // TOVIK_TESTS_SUPPORT_GEOMETRY_CHECKS_H_
