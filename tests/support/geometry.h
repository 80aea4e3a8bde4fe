// Test helpers for geometry: the constants and tolerances the tests share,
// tolerance-aware expectations and random transforms.
#ifndef TOVIK_TESTS_SUPPORT_GEOMETRY_H_
#define TOVIK_TESTS_SUPPORT_GEOMETRY_H_

#include <gtest/gtest.h>

#include <random>

#include "geometry/box.h"
#include "geometry/matrix.h"
#include "geometry/vec3.h"

namespace tovik {

// The geometry's own constants: π, and the absolute tolerance to which
// geometry computed from exact inputs agrees.
using geometry::kPi;
inline constexpr double kGeoTol = geometry::kAbsTol;

}  // namespace tovik

namespace tovik::geometry::testing {

// Predicate formatter: points equal within the named tolerances, or `tol`.
inline ::testing::AssertionResult VecClose(const char* a_expr, const char* b_expr, const Vec3& a,
                                           const Vec3& b) {
  if (IsClose(a, b, 1e-7, 1e-9)) return ::testing::AssertionSuccess();
  ::testing::AssertionResult r = ::testing::AssertionFailure();
  r << a_expr << " = " << ::testing::PrintToString(a) << " vs " << b_expr << " = "
    << ::testing::PrintToString(b) << " (distance " << Distance(a, b) << ")";
  return r;
}

inline ::testing::AssertionResult BoxClose(const char* a_expr, const char* b_expr,
                                           const BoundingBox& a, const BoundingBox& b) {
  if (IsClose(a, b, 1e-7, 1e-9)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a_expr << " = " << ::testing::PrintToString(a) << " vs "
                                       << b_expr << " = " << ::testing::PrintToString(b);
}

#define EXPECT_VEC_CLOSE(a, b) EXPECT_PRED_FORMAT2(::tovik::geometry::testing::VecClose, a, b)
#define EXPECT_BOX_CLOSE(a, b) EXPECT_PRED_FORMAT2(::tovik::geometry::testing::BoxClose, a, b)

inline Vec3 RandomVec(std::mt19937& rng, double lo = -10.0, double hi = 10.0) {
  std::uniform_real_distribution<double> d(lo, hi);
  return {d(rng), d(rng), d(rng)};
}

// A random rotation about a random axis through a random point, then a
// uniform scale (0.2..5) and, when `mirror`, a reflection in a random plane.
inline Matrix4 RandomSimilarity(std::mt19937& rng, bool mirror = false) {
  std::uniform_real_distribution<double> angle(-3.0, 3.0), scale(0.2, 5.0);
  Matrix4 m = *Matrix4::Rotation(RandomVec(rng), RandomVec(rng) + Vec3{0.1, 0, 0}, angle(rng));
  m = Matrix4::Scaling(scale(rng), RandomVec(rng)) * m;
  if (mirror) m = *Matrix4::Mirror(RandomVec(rng), RandomVec(rng) + Vec3{0, 0.1, 0}) * m;
  return m;
}

// A random affine map: a similarity followed by a non-uniform scale.
inline Matrix4 RandomAffine(std::mt19937& rng) {
  std::uniform_real_distribution<double> scale(0.3, 3.0);
  return Matrix4::Scaling(Vec3{scale(rng), scale(rng), scale(rng)}) * RandomSimilarity(rng);
}

}  // namespace tovik::geometry::testing

#endif  // TOVIK_TESTS_SUPPORT_GEOMETRY_H_
