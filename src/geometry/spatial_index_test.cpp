#include "geometry/spatial_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace tovik::geometry {
namespace {

std::vector<uint64_t> Sorted(std::vector<uint64_t> v) {
  std::sort(v.begin(), v.end());
  return v;
}

// The plain model: a map of boxes, scanned linearly.
struct Model {
  std::map<uint64_t, Box2> boxes;
  std::vector<uint64_t> Rect(const Box2& r) const {
    std::vector<uint64_t> out;
    for (const auto& [id, b] : boxes)
      if (b.Intersects(r)) out.push_back(id);
    return out;
  }
  std::vector<uint64_t> Point(const Vec2& p, double radius) const {
    std::vector<uint64_t> out;
    for (const auto& [id, b] : boxes)
      if (b.DistanceTo(p) <= radius) out.push_back(id);
    return out;
  }
};

Box2 RandomBox(std::mt19937& rng) {
  std::uniform_real_distribution<double> pos(-1000, 1000), size(0, 1);
  std::uniform_int_distribution<int> scale(0, 9);
  // Mixed scales: mostly small boxes, some points, a few huge ones.
  const int s = scale(rng);
  const double w = s == 0 ? 0.0 : (s == 9 ? 500.0 : 5.0) * size(rng);
  const double h = s == 0 ? 0.0 : (s == 9 ? 500.0 : 5.0) * size(rng);
  const double x = pos(rng), y = pos(rng);
  return {x, y, x + w, y + h};
}

TEST(SpatialIndex, RandomStepsMatchTheModel) {
  std::mt19937 rng(41);
  SpatialIndex index;
  Model model;
  std::uniform_int_distribution<int> op(0, 9), id(0, 3000);
  for (int step = 0; step < 20000; ++step) {
    const int o = op(rng);
    const uint64_t key = id(rng);
    if (o < 5) {
      const Box2 b = RandomBox(rng);
      ASSERT_TRUE(index.Insert(key, b));
      model.boxes[key] = b;  // insert replaces
    } else if (o < 7) {
      EXPECT_EQ(index.Remove(key), model.boxes.erase(key) == 1);
    } else if (o < 8) {
      const Box2 b = RandomBox(rng);
      const bool present = model.boxes.count(key) == 1;
      EXPECT_EQ(index.Update(key, b), present);
      if (present) model.boxes[key] = b;
    } else {
      const Box2 r = Box2::FromCorners({std::uniform_real_distribution<double>(-1000, 1000)(rng), 0},
                                       {std::uniform_real_distribution<double>(-1000, 1000)(rng), 300});
      std::vector<uint64_t> got;
      index.QueryRect(r, &got);
      ASSERT_EQ(Sorted(got), model.Rect(r)) << "step " << step;
      got.clear();
      const Vec2 p{r.min_x, r.max_y};
      index.QueryPoint(p, 20.0, &got);
      ASSERT_EQ(Sorted(got), model.Point(p, 20.0)) << "step " << step;
    }
    ASSERT_EQ(index.size(), model.boxes.size());
    if (step % 1000 == 0) {
      ASSERT_TRUE(index.CheckInvariants()) << "step " << step;
    }
  }
  ASSERT_TRUE(index.CheckInvariants());
  // Remove everything: the index empties cleanly.
  for (const auto& [key, b] : model.boxes) EXPECT_TRUE(index.Remove(key));
  EXPECT_TRUE(index.empty());
  EXPECT_FALSE(index.Extents().has_value());
  EXPECT_TRUE(index.CheckInvariants());
}

TEST(SpatialIndex, BuildMatchesTheModelAndAcceptsInsertsAfter) {
  std::mt19937 rng(43);
  std::vector<std::pair<uint64_t, Box2>> entries;
  Model model;
  for (uint64_t i = 0; i < 5000; ++i) {
    const Box2 b = RandomBox(rng);
    entries.push_back({i % 4000, b});  // ids 0..999 repeat: the later wins
    model.boxes[i % 4000] = b;
  }
  SpatialIndex index;
  index.Build(entries);
  EXPECT_EQ(index.size(), 4000u);
  EXPECT_TRUE(index.CheckInvariants());
  for (int i = 0; i < 200; ++i) {
    const Box2 b = RandomBox(rng);
    index.Insert(10000 + i, b);
    model.boxes[10000 + i] = b;
    index.Remove(i);
    model.boxes.erase(i);
  }
  EXPECT_TRUE(index.CheckInvariants());
  const Box2 r{-300, -300, 300, 300};
  std::vector<uint64_t> got;
  index.QueryRect(r, &got);
  EXPECT_EQ(Sorted(got), model.Rect(r));
  EXPECT_EQ(*index.BoxOf(4000 - 1), model.boxes[3999]);
}

TEST(SpatialIndex, BoundariesAndRefusedBoxes) {
  SpatialIndex index;
  EXPECT_FALSE(index.Extents().has_value());
  EXPECT_TRUE(index.Insert(1, {0, 0, 1, 1}));
  EXPECT_TRUE(index.Insert(2, {5, 5, 5, 5}));  // a point box
  // Refused: NaN, infinite, inverted.
  EXPECT_FALSE(index.Insert(3, {NAN, 0, 1, 1}));
  EXPECT_FALSE(index.Insert(3, {0, 0, INFINITY, 1}));
  EXPECT_FALSE(index.Insert(3, {1, 0, 0, 1}));
  EXPECT_FALSE(index.Update(1, {NAN, 0, 1, 1}));
  EXPECT_FALSE(index.Update(99, {0, 0, 1, 1}));
  EXPECT_EQ(index.size(), 2u);
  std::vector<uint64_t> got;
  // Touching counts: a window whose edge is the box's edge finds it.
  index.QueryRect({1, 1, 2, 2}, &got);
  EXPECT_EQ(got, std::vector<uint64_t>{1});
  got.clear();
  index.QueryPoint({5, 6}, 1.0, &got);  // exactly at the radius
  EXPECT_EQ(got, std::vector<uint64_t>{2});
  got.clear();
  index.QueryPoint({5, 6.001}, 1.0, &got);
  EXPECT_TRUE(got.empty());
  index.QueryPoint({5, 6}, NAN, &got);
  EXPECT_TRUE(got.empty());
  EXPECT_EQ(*index.Extents(), (Box2{0, 0, 5, 5}));
  EXPECT_TRUE(index.Update(2, {-1, -2, 0, 0}));
  EXPECT_EQ(*index.Extents(), (Box2{-1, -2, 1, 1}));
  EXPECT_FALSE(index.Remove(2) && index.Remove(2));
}

}  // namespace
}  // namespace tovik::geometry
