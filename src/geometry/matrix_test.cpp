#include "geometry/matrix.h"

#include <gtest/gtest.h>

#include <limits>
#include <numbers>
#include <random>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Matrix4, TranslationMovesPointsNotVectors) {
  const Matrix4 m = Matrix4::Translation({1, 2, 3});
  EXPECT_VEC_CLOSE(m.TransformPoint({1, 1, 1}), (Vec3{2, 3, 4}));
  EXPECT_VEC_CLOSE(m.TransformVector({1, 1, 1}), (Vec3{1, 1, 1}));
  // Column-vector convention: translation is the last column.
  EXPECT_EQ(m(0, 3), 1.0);
  EXPECT_EQ(m(2, 3), 3.0);
}

TEST(Matrix4, NonUniformScalingKeepsBaseFixed) {
  const Matrix4 m = Matrix4::Scaling(Vec3{2, 3, 4}, Vec3{1, 1, 1});
  EXPECT_VEC_CLOSE(m.TransformPoint({1, 1, 1}), (Vec3{1, 1, 1}));
  EXPECT_VEC_CLOSE(m.TransformPoint({2, 2, 2}), (Vec3{3, 4, 5}));
  EXPECT_FALSE(m.UniformScale().has_value());
  ASSERT_TRUE(Matrix4::Scaling(2.5).UniformScale().has_value());
  EXPECT_DOUBLE_EQ(*Matrix4::Scaling(2.5).UniformScale(), 2.5);
}

TEST(Matrix4, RotationFollowsRightHandRule) {
  struct Case {
    Vec3 point, axis;
    double angle;
    Vec3 in, out;
  };
  const Case cases[] = {
      // About +Z by 90°: X goes to Y.
      {{0, 0, 0}, {0, 0, 1}, kPi / 2, {1, 0, 0}, {0, 1, 0}},
      // About −Z by 90°: X goes to −Y.
      {{0, 0, 0}, {0, 0, -1}, kPi / 2, {1, 0, 0}, {0, -1, 0}},
      // About +X: Y goes to Z.
      {{0, 0, 0}, {1, 0, 0}, kPi / 2, {0, 1, 0}, {0, 0, 1}},
      // About +Y: Z goes to X.
      {{0, 0, 0}, {0, 1, 0}, kPi / 2, {0, 0, 1}, {1, 0, 0}},
      // Axis through (1,1,0) parallel to Z, 180°: (2,1) goes to (0,1).
      {{1, 1, 0}, {0, 0, 5}, kPi, {2, 1, 7}, {0, 1, 7}},
      // About the (1,1,1) diagonal by 120°: X → Y → Z.
      {{0, 0, 0}, {1, 1, 1}, 2 * kPi / 3, {1, 0, 0}, {0, 1, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.axis));
    const std::optional<Matrix4> m = Matrix4::Rotation(c.point, c.axis, c.angle);
    ASSERT_TRUE(m.has_value());
    EXPECT_VEC_CLOSE(m->TransformPoint(c.in), c.out);
    EXPECT_NEAR(m->LinearDeterminant(), 1.0, 1e-12);
  }
}

TEST(Matrix4, DegenerateConstructorsGiveNullopt) {
  EXPECT_FALSE(Matrix4::Rotation({0, 0, 0}, {0, 0, 0}, 1.0).has_value());
  EXPECT_FALSE(Matrix4::Rotation({0, 0, 0}, {0, 0, 1}, kNaN).has_value());
  EXPECT_FALSE(Matrix4::Rotation({kNaN, 0, 0}, {0, 0, 1}, 1.0).has_value());
  EXPECT_FALSE(Matrix4::Mirror({0, 0, 0}, {0, 0, 0}).has_value());
}

TEST(Matrix4, MirrorReflectsAndFlipsDeterminant) {
  // The plane x = 1.
  const Matrix4 m = *Matrix4::Mirror({1, 5, 5}, {2, 0, 0});
  EXPECT_VEC_CLOSE(m.TransformPoint({3, 2, 1}), (Vec3{-1, 2, 1}));
  EXPECT_TRUE(m.IsMirroring());
  EXPECT_NEAR(m.Determinant(), -1.0, 1e-12);
  EXPECT_TRUE(IsClose(m * m, Matrix4::Identity()));
  EXPECT_FALSE(Matrix4::Scaling(3.0).IsMirroring());
  EXPECT_TRUE(Matrix4::Scaling(Vec3{1, -1, 1}).IsMirroring());
}

TEST(Matrix4, ProductAppliesRightOperandFirst) {
  const Matrix4 t = Matrix4::Translation({10, 0, 0});
  const Matrix4 r = *Matrix4::Rotation({}, {0, 0, 1}, kPi / 2);
  // Rotate then translate: (1,0,0) → (0,1,0) → (10,1,0).
  EXPECT_VEC_CLOSE((t * r).TransformPoint({1, 0, 0}), (Vec3{10, 1, 0}));
  // Translate then rotate: (1,0,0) → (11,0,0) → (0,11,0).
  EXPECT_VEC_CLOSE((r * t).TransformPoint({1, 0, 0}), (Vec3{0, 11, 0}));
}

TEST(Matrix4, InverseReturnsInput) {
  std::mt19937 rng(7);
  for (int i = 0; i < 200; ++i) {
    SCOPED_TRACE(i);
    const Matrix4 m = testing::RandomAffine(rng);
    const std::optional<Matrix4> inv = m.Inverse();
    ASSERT_TRUE(inv.has_value());
    const Vec3 p = testing::RandomVec(rng, -100, 100);
    EXPECT_VEC_CLOSE(inv->TransformPoint(m.TransformPoint(p)), p);
    EXPECT_TRUE(IsClose(*inv * m, Matrix4::Identity(), 1e-9, 1e-9));
  }
}

TEST(Matrix4, SingularOrNonFiniteHasNoInverse) {
  EXPECT_FALSE(Matrix4::Scaling(Vec3{1, 0, 1}).Inverse().has_value());
  Matrix4 nan;
  nan(1, 2) = kNaN;
  EXPECT_FALSE(nan.Inverse().has_value());
  // A tiny but uniform scale is invertible: singularity is relative.
  ASSERT_TRUE(Matrix4::Scaling(1e-6).Inverse().has_value());
  EXPECT_VEC_CLOSE(Matrix4::Scaling(1e-6).Inverse()->TransformPoint({1e-6, 0, 0}), (Vec3{1, 0, 0}));
}

TEST(Matrix4, NormalsStayPerpendicularUnderShear) {
  // A shear x += y tilts the plane through the Z axis and (1,1,0); the
  // transformed normal must stay perpendicular to the transformed tangents.
  Matrix4 shear;
  shear(0, 1) = 1.0;
  const Vec3 n{1, -1, 0};
  const Vec3 tangent{1, 1, 0};  // lies in the plane
  const std::optional<Vec3> n2 = shear.TransformNormal(n);
  ASSERT_TRUE(n2.has_value());
  EXPECT_NEAR(Dot(*n2, shear.TransformVector(tangent)), 0.0, 1e-12);
  EXPECT_NEAR(Dot(*n2, shear.TransformVector({0, 0, 1})), 0.0, 1e-12);
  EXPECT_NEAR(Length(*n2), 1.0, 1e-12);
  EXPECT_FALSE(Matrix4::Scaling(Vec3{1, 1, 0}).TransformNormal({0, 0, 1}).has_value());
}

TEST(Matrix4, FromAxesMapsUnitVectorsToColumns) {
  const Matrix4 m = Matrix4::FromAxes({0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {5, 6, 7});
  EXPECT_VEC_CLOSE(m.TransformPoint({1, 0, 0}), (Vec3{5, 7, 7}));
  EXPECT_VEC_CLOSE(m.TransformPoint({0, 2, 0}), (Vec3{3, 6, 7}));
}

}  // namespace
}  // namespace tovik::geometry
