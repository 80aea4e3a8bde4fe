#include "geometry/box.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {

TEST(BoundingBox, ExtendGrowsAndSkipsNonFinitePoints) {
  BoundingBox b;
  EXPECT_FALSE(b.has_data);
  b.Extend(Vec3{std::nan(""), 0, 0});
  b.Extend(Vec3{INFINITY, 0, 0});
  EXPECT_FALSE(b.has_data);  // nothing finite yet
  b.Extend(Vec3{1, 2, 3});
  ASSERT_TRUE(b.has_data);
  EXPECT_EQ(b.min, (Vec3{1, 2, 3}));
  EXPECT_EQ(b.max, (Vec3{1, 2, 3}));
  b.Extend(Vec3{-1, 5, 0});
  EXPECT_EQ(b.min, (Vec3{-1, 2, 0}));
  EXPECT_EQ(b.max, (Vec3{1, 5, 3}));
  EXPECT_EQ(b.Size(), (Vec3{2, 3, 3}));
  EXPECT_EQ(b.Center(), (Vec3{0, 3.5, 1.5}));
}

TEST(BoundingBox, EmptyIsTheIdentityOfUnion) {
  const BoundingBox a({0, 0, 0}, {1, 1, 1});
  const BoundingBox empty;
  EXPECT_BOX_CLOSE(BoundingBox::Union(a, empty), a);
  EXPECT_BOX_CLOSE(BoundingBox::Union(empty, a), a);
  EXPECT_FALSE(BoundingBox::Union(empty, empty).has_data);
  const BoundingBox c({5, -1, 0}, {6, 0, 2});
  EXPECT_BOX_CLOSE(BoundingBox::Union(a, c), BoundingBox({0, -1, 0}, {6, 1, 2}));
  // Corners in any order.
  EXPECT_BOX_CLOSE(BoundingBox({1, 1, 1}, {0, 0, 0}), a);
}

TEST(BoundingBox, ContainsAndIntersectsCountTheBoundary) {
  const BoundingBox a({0, 0, 0}, {2, 2, 2});
  // Boundary pinned: a point on a face is contained; a box sharing only a
  // face or a corner intersects.
  EXPECT_TRUE(a.Contains(Vec3{2, 1, 1}));
  EXPECT_TRUE(a.Contains(Vec3{0, 0, 0}));
  EXPECT_FALSE(a.Contains(Vec3{2.001, 1, 1}));
  EXPECT_TRUE(a.Contains(BoundingBox({0, 0, 0}, {2, 2, 2})));
  EXPECT_FALSE(a.Contains(BoundingBox({1, 1, 1}, {3, 1, 1})));
  EXPECT_TRUE(a.Intersects(BoundingBox({2, 2, 2}, {3, 3, 3})));
  EXPECT_FALSE(a.Intersects(BoundingBox({2.001, 0, 0}, {3, 1, 1})));
  EXPECT_FALSE(a.Intersects(BoundingBox()));
  EXPECT_FALSE(BoundingBox().Contains(Vec3{}));
  EXPECT_FALSE(a.Contains(BoundingBox()));
}

TEST(BoundingBox, TransformUsesAllEightCorners) {
  const BoundingBox unit({0, 0, 0}, {1, 1, 0});
  const Matrix4 r = *Matrix4::Rotation({}, {0, 0, 1}, std::numbers::pi / 4);
  const double h = std::sqrt(0.5);
  // The square turned 45° stands on its corner: x ±√½, y 0..√2.
  EXPECT_BOX_CLOSE(unit.Transform(r), BoundingBox({-h, 0, 0}, {h, 2 * h, 0}));
  EXPECT_FALSE(BoundingBox().Transform(r).has_data);
  const BoundingBox moved = unit.Transform(Matrix4::Translation({1, 2, 3}));
  EXPECT_BOX_CLOSE(moved, BoundingBox({1, 2, 3}, {2, 3, 3}));
}

}  // namespace
}  // namespace tovik::geometry
