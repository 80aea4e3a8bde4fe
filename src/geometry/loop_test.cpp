// Loops: areas, containment on arcs and splitting, on shapes whose answers
// are worked out by hand, then a randomised check that pieces add up.
#include "geometry/loop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tovik::geometry {
namespace {

Loop Square(double x0, double y0, double x1, double y1) {
  return {{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}, {0, 0, 0, 0}};
}
// A circle of radius r about c: two half circles, counter-clockwise.
Loop Circle(Vec2 c, double r) { return {{{c.x - r, c.y}, {c.x + r, c.y}}, {1, 1}}; }

double Sum(const std::vector<Loop>& loops) {
  double total = 0;
  for (const Loop& l : loops) total += SignedArea(l);
  return total;
}

TEST(Loop, AreasCountArcsExactly) {
  EXPECT_NEAR(SignedArea(Square(0, 0, 2, 1)), 2, 1e-12);
  EXPECT_NEAR(SignedArea(Circle({3, 4}, 2)), 4 * kPi, 1e-12);
  // A repeated vertex and a clockwise order.
  Loop cw{{{0, 0}, {0, 2}, {0, 2}, {2, 2}, {2, 0}}, {}};
  EXPECT_NEAR(SignedArea(cw), -4, 1e-12);
  // A square whose bottom edge bulges out by a half circle of radius 1.
  Loop d = Square(0, 0, 2, 2);
  d.bulges[0] = 1;
  EXPECT_NEAR(SignedArea(d), 4 + kPi / 2, 1e-12);
}

TEST(Loop, ContainmentIsExactOnArcs) {
  Loop d = Square(0, 0, 2, 2);
  d.bulges[0] = 1;  // the half circle below reaches (1, -1)
  const struct {
    Vec2 p;
    Containment expected;
  } cases[] = {
      {{1, -0.999}, Containment::kInside},
      {{1, -1}, Containment::kOnBoundary},
      {{1, -1.001}, Containment::kOutside},
      {{0.02, -0.5}, Containment::kOutside},  // below the chord, outside the circle
      {{1 + std::sqrt(0.5), -std::sqrt(0.5)}, Containment::kOnBoundary},
      {{2, 1}, Containment::kOnBoundary},
      {{1, 1}, Containment::kInside},
      {{3, 1}, Containment::kOutside},
  };
  for (const auto& c : cases) EXPECT_EQ(Locate(d, c.p), c.expected) << c.p.x << "," << c.p.y;
  // Bulges near 0 are straight; near ±1 half circles.
  Loop nearly_flat = Square(0, 0, 2, 2);
  nearly_flat.bulges[0] = 1e-14;
  EXPECT_EQ(Locate(nearly_flat, {1, 0}), Containment::kOnBoundary);
  Loop hole = Circle({1, 1}, 0.5);
  EXPECT_EQ(Locate(hole, {1.5 - 1e-9, 1}), Containment::kOnBoundary);
  EXPECT_EQ(Locate(hole, {1, 1.49}), Containment::kInside);
}

TEST(Loop, SplittingAHoleKeepsItsArcs) {
  // A square with a round hole, split through the hole's centre.
  SplitPieces square = SplitByLine(Square(0, 0, 4, 4), {-1, 2}, {5, 2});
  SplitPieces hole = SplitByLine(Circle({2, 2}, 1), {-1, 2}, {5, 2});
  ASSERT_EQ(square.left.size(), 1u);
  ASSERT_EQ(hole.left.size(), 1u);
  ASSERT_EQ(hole.right.size(), 1u);
  EXPECT_NEAR(SignedArea(square.left[0]), 8, 1e-9);
  EXPECT_NEAR(SignedArea(hole.left[0]), kPi / 2, 1e-9);
  // The upper half of the hole: its half circle and the chord along the line.
  const Loop& top = hole.left[0];
  ASSERT_EQ(top.vertices.size(), 2u);
  EXPECT_NEAR(std::fabs(top.bulges[0]) + std::fabs(top.bulges[1]), 1, 1e-9);
}

TEST(Loop, SplitLinesThroughVerticesAndAlongEdges) {
  const struct {
    const char* what;
    Loop loop;
    Vec2 from, to;
    size_t left, right;
    double left_area;
  } cases[] = {
      {"through two corners", Square(0, 0, 2, 2), {0, 0}, {2, 2}, 1, 1, 2},
      {"along the bottom edge", Square(0, 0, 2, 2), {-1, 0}, {3, 0}, 1, 0, 4},
      {"missing the loop", Square(0, 0, 2, 2), {-1, -1}, {3, -1}, 1, 0, 4},
      {"touching a corner", Square(0, 0, 2, 2), {2, 0}, {4, 2}, 1, 0, 4},
      {"reversed direction", Square(0, 0, 2, 2), {3, 1}, {-1, 1}, 1, 1, 2},
      // A U shape cut across both arms: two pieces below.
      {"two arms", {{{0, 0}, {3, 0}, {3, 3}, {2, 3}, {2, 1}, {1, 1}, {1, 3}, {0, 3}}, {}}, {-1, 2}, {4, 2}, 2, 1,
       2},
  };
  for (const auto& c : cases) {
    SplitPieces p = SplitByLine(c.loop, c.from, c.to);
    EXPECT_EQ(p.left.size(), c.left) << c.what;
    EXPECT_EQ(p.right.size(), c.right) << c.what;
    EXPECT_NEAR(Sum(p.left), c.left_area, 1e-9) << c.what;
    EXPECT_NEAR(Sum(p.left) + Sum(p.right), SignedArea(c.loop), 1e-9) << c.what;
  }
}

// Random star-shaped loops with random bulges (kept small enough not to
// cross) and random lines: the pieces add up and lie on their side.
TEST(Loop, RandomSplitsAddUpAndStayOnTheirSide) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> unit(0, 1);
  int cut_through = 0;
  for (int trial = 0; trial < 400; ++trial) {
    Loop loop;
    const int n = 3 + static_cast<int>(rng() % 8);
    for (int i = 0; i < n; ++i) {
      double a = 2 * kPi * (i + 0.8 * unit(rng)) / n, r = 2 + 3 * unit(rng);
      loop.vertices.push_back({r * std::cos(a), r * std::sin(a)});
      loop.bulges.push_back(rng() % 3 == 0 ? 0.3 * (unit(rng) - 0.5) : 0.0);
    }
    if (trial % 2) std::reverse(loop.vertices.begin(), loop.vertices.end());
    Vec2 from{8 * unit(rng) - 4, 8 * unit(rng) - 4};
    Vec2 to = trial % 7 == 0 ? loop.vertices[0] : Vec2{8 * unit(rng) - 4, 8 * unit(rng) - 4};
    if (trial % 11 == 0) from = loop.vertices[1];  // through vertices
    SplitPieces p = SplitByLine(loop, from, to);
    ASSERT_NEAR(Sum(p.left) + Sum(p.right), SignedArea(loop), 1e-7) << "trial " << trial;
    if (!p.left.empty() && !p.right.empty()) ++cut_through;
    Vec2 d = (to - from) / std::hypot(to.x - from.x, to.y - from.y);
    for (int side : {1, -1}) {
      for (const Loop& piece : side > 0 ? p.left : p.right) {
        for (size_t i = 0; i < piece.vertices.size(); ++i) {
          for (double u : {0.0, 0.25, 0.5, 0.75}) {
            Vec2 q = PointOnSegment(piece, i, u);
            double s = d.x * (q.y - from.y) - d.y * (q.x - from.x);
            ASSERT_GE(side * s, -1e-6) << "trial " << trial;
          }
        }
      }
    }
  }
  EXPECT_GT(cut_through, 200);  // most lines do cut the loops
}

}  // namespace
}  // namespace tovik::geometry
