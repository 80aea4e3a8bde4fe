// The boundary loops of a HATCH record, as the host keeps them: closed
// polygons of points with bulges. Line and circular-arc edges and polyline
// loops map exactly; elliptic-arc and spline edges become points along the
// curve (the record itself is written back as it came, so nothing of the
// file's edges is lost).
#include "host/dxf/read/hatch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tovik::host::dxf {
namespace {

using geometry::Vec2;

// Points per full turn of an elliptic arc, and per span of a spline.
constexpr int kEllipseSteps = 256;
constexpr int kSplineStepsPerSpan = 32;
// Guards against absurd counts in damaged files.
constexpr int64_t kMaxItems = 1 << 24;

// Walks the tags of the AcDbHatch part in order.
class Cursor {
 public:
  explicit Cursor(std::span<const Tag> tags) : tags_(tags) {}

  bool AtEnd() const { return at_ >= tags_.size(); }
  int PeekCode() const { return AtEnd() ? -1 : tags_[at_].code; }

  // The next tag when it has `code` (consumed), otherwise nullptr.
  const Tag* Take(int code) {
    if (AtEnd() || tags_[at_].code != code) return nullptr;
    return &tags_[at_++];
  }
  double Real(int code, double fallback = 0) {
    const Tag* t = Take(code);
    return t != nullptr ? NumberOf(*t) : fallback;
  }
  int64_t Int(int code, int64_t fallback = 0) {
    const Tag* t = Take(code);
    return t != nullptr && t->IsInteger() ? t->integer : fallback;
  }
  Vec2 Point(int code) {
    double x = Real(code);
    double y = Real(code + 10);
    return {x, y};
  }
  // Moves to the next tag with `code`; false at the end.
  bool SeekTo(int code) {
    while (!AtEnd() && tags_[at_].code != code) ++at_;
    return !AtEnd();
  }

 private:
  std::span<const Tag> tags_;
  size_t at_ = 0;
};

Vec2 OnCircle(const Vec2& c, double r, double angle) {
  return {c.x + r * std::cos(angle), c.y + r * std::sin(angle)};
}

// Where a curved edge starts and which way it turns: HATCH stores a
// clockwise edge with its angles negated (360 - angle), so it runs from
// -a0 to -a1 clockwise. Reads the edge's 73 (counter-clockwise) flag.
struct Turn {
  double start;  // radians (angle or ellipse parameter)
  double sweep;  // (0, 2 pi]
  double sign;   // +1 counter-clockwise, -1 clockwise
};

Turn TurnOf(Cursor& c, double a0, double a1) {
  bool ccw = c.Int(73, 1) != 0;
  double sweep = std::fmod(a1 - a0, 2 * std::numbers::pi);
  if (sweep < 0) sweep += 2 * std::numbers::pi;
  if (sweep <= 1e-12) sweep += 2 * std::numbers::pi;
  return {ccw ? a0 : -a0, sweep, ccw ? 1.0 : -1.0};
}

// An arc edge as bulged points.
void ArcEdge(Cursor& c, HatchLoop* loop) {
  Vec2 center = c.Point(10);
  double radius = c.Real(40);
  double a0 = c.Real(50) * kDegToRad;  // read in file order, before 73
  double a1 = c.Real(51) * kDegToRad;
  Turn turn = TurnOf(c, a0, a1);
  double sweep = turn.sweep, start = turn.start, sign = turn.sign;
  // A bulge describes at most a half turn well: split longer arcs.
  int pieces = sweep > std::numbers::pi ? 2 : 1;
  for (int k = 0; k < pieces; ++k) {
    double piece = sweep / pieces;
    loop->points.push_back(OnCircle(center, radius, start + sign * piece * k));
    loop->bulges.push_back(sign * std::tan(piece / 4));
  }
}

void EllipseEdge(Cursor& c, HatchLoop* loop) {
  Vec2 center = c.Point(10);
  Vec2 major = c.Point(11);
  double ratio = c.Real(40, 1);
  // The edge stores geometric angles in the ellipse's own frame; the
  // curve is followed by its parameter: tan(t) = tan(angle) / ratio.
  auto parameter = [ratio](double angle) {
    return ratio == 0 ? angle : std::atan2(std::sin(angle) / ratio, std::cos(angle));
  };
  double a0 = parameter(c.Real(50) * kDegToRad);
  double a1 = parameter(c.Real(51) * kDegToRad);
  Turn turn = TurnOf(c, a0, a1);
  double sweep = turn.sweep, start = turn.start, sign = turn.sign;
  Vec2 minor{-major.y * ratio, major.x * ratio};
  int steps = std::max(2, static_cast<int>(std::ceil(kEllipseSteps * sweep / (2 * std::numbers::pi))));
  for (int k = 0; k < steps; ++k) {
    double t = start + sign * sweep * k / steps;
    loop->points.push_back({center.x + major.x * std::cos(t) + minor.x * std::sin(t),
                            center.y + major.y * std::cos(t) + minor.y * std::sin(t)});
    loop->bulges.push_back(0);
  }
}

// A point of a (rational) B-spline by de Boor's algorithm.
Vec2 SplinePoint(int degree, const std::vector<double>& knots, const std::vector<Vec2>& points,
                 const std::vector<double>& weights, double u) {
  int n = static_cast<int>(points.size());
  int span = degree;
  while (span < n - 1 && knots[static_cast<size_t>(span + 1)] <= u) ++span;
  struct H {
    double x, y, w;
  };
  std::vector<H> d(static_cast<size_t>(degree + 1));
  for (int j = 0; j <= degree; ++j) {
    size_t i = static_cast<size_t>(j + span - degree);
    double w = weights.empty() ? 1.0 : weights[i];
    d[static_cast<size_t>(j)] = {points[i].x * w, points[i].y * w, w};
  }
  for (int r = 1; r <= degree; ++r) {
    for (int j = degree; j >= r; --j) {
      size_t k = static_cast<size_t>(j + span - degree);
      double left = knots[k];
      double right = knots[k + static_cast<size_t>(degree) - static_cast<size_t>(r) + 1];
      double alpha = right - left == 0 ? 0 : (u - left) / (right - left);
      H& a = d[static_cast<size_t>(j)];
      const H& b = d[static_cast<size_t>(j - 1)];
      a = {(1 - alpha) * b.x + alpha * a.x, (1 - alpha) * b.y + alpha * a.y, (1 - alpha) * b.w + alpha * a.w};
    }
  }
  const H& p = d[static_cast<size_t>(degree)];
  return p.w == 0 ? Vec2{p.x, p.y} : Vec2{p.x / p.w, p.y / p.w};
}

void SplineEdge(Cursor& c, HatchLoop* loop) {
  int degree = static_cast<int>(c.Int(94, 3));
  bool rational = c.Int(73) != 0;
  c.Take(74);
  int64_t knot_count = c.Int(95);
  int64_t point_count = c.Int(96);
  if (degree < 1 || knot_count < 0 || point_count < 0 || knot_count > kMaxItems || point_count > kMaxItems) return;
  std::vector<double> knots;
  for (int64_t k = 0; k < knot_count && c.PeekCode() == 40; ++k) knots.push_back(c.Real(40));
  std::vector<Vec2> points;
  std::vector<double> weights;
  for (int64_t k = 0; k < point_count && c.PeekCode() == 10; ++k) {
    points.push_back(c.Point(10));
    if (rational || c.PeekCode() == 42) weights.push_back(c.Real(42, 1));
  }
  // Fit data and tangents that may follow are not needed for the shape.
  if (c.Take(97) != nullptr) {
    while (c.PeekCode() == 11 || c.PeekCode() == 21) c.Take(c.PeekCode());
  }
  while (c.PeekCode() == 12 || c.PeekCode() == 22 || c.PeekCode() == 13 || c.PeekCode() == 23) c.Take(c.PeekCode());
  if (weights.size() != points.size()) weights.clear();
  size_t n = points.size();
  if (n < 2 || knots.size() != n + static_cast<size_t>(degree) + 1) {
    for (const Vec2& p : points) {  // no usable knots: the control polygon
      loop->points.push_back(p);
      loop->bulges.push_back(0);
    }
    return;
  }
  double u0 = knots[static_cast<size_t>(degree)];
  double u1 = knots[n];
  int steps = kSplineStepsPerSpan * static_cast<int>(n - static_cast<size_t>(degree));
  for (int k = 0; k < steps; ++k) {
    loop->points.push_back(SplinePoint(degree, knots, points, weights, u0 + (u1 - u0) * k / steps));
    loop->bulges.push_back(0);
  }
}

}  // namespace

std::vector<HatchLoop> ReadHatchLoops(std::span<const Tag> hatch_part) {
  std::vector<HatchLoop> loops;
  Cursor c(hatch_part);
  if (!c.SeekTo(91)) return loops;
  int64_t count = c.Int(91);
  for (int64_t n = 0; n < count && n < kMaxItems; ++n) {
    if (!c.SeekTo(92)) break;
    HatchLoop loop;
    loop.flags = static_cast<int32_t>(c.Int(92));
    if (loop.flags & 2) {  // a polyline loop
      bool has_bulges = c.Int(72) != 0;
      c.Take(73);
      int64_t vertices = c.Int(93);
      for (int64_t k = 0; k < vertices && k < kMaxItems && c.PeekCode() == 10; ++k) {
        loop.points.push_back(c.Point(10));
        loop.bulges.push_back(has_bulges || c.PeekCode() == 42 ? c.Real(42) : 0);
      }
    } else {
      int64_t edges = c.Int(93);
      for (int64_t k = 0; k < edges && k < kMaxItems; ++k) {
        switch (c.Int(72)) {
          case 1: {
            Vec2 start = c.Point(10);
            c.Point(11);
            loop.points.push_back(start);
            loop.bulges.push_back(0);
            break;
          }
          case 2: ArcEdge(c, &loop); break;
          case 3: EllipseEdge(c, &loop); break;
          case 4: SplineEdge(c, &loop); break;
          default: k = edges; break;  // not an edge: the loop ends here
        }
      }
    }
    // Handles of the boundary objects follow; the host does not use them.
    if (c.Take(97) != nullptr) {
      while (c.Take(330) != nullptr) {
      }
    }
    // Two points make no area; drop a closing point equal to the first.
    if (loop.points.size() > 2 && loop.points.front().x == loop.points.back().x &&
        loop.points.front().y == loop.points.back().y) {
      loop.points.pop_back();
      loop.bulges.pop_back();
    }
    if (loop.points.size() >= 2) loops.push_back(std::move(loop));
  }
  // External loops (flag 1) bound the hatch; "outermost" (16) marks the
  // outermost islands inside them. With none marked external, the first
  // loop bounds it.
  bool any_outer = false;
  for (HatchLoop& loop : loops) {
    loop.outer = (loop.flags & 1) != 0;
    any_outer = any_outer || loop.outer;
  }
  if (!any_outer && !loops.empty()) loops.front().outer = true;
  return loops;
}

}  // namespace tovik::host::dxf
