// Axis-aligned bounding boxes in WCS (GetBoundingBox, selection, extents).
#ifndef TOVIK_GEOMETRY_BOX_H_
#define TOVIK_GEOMETRY_BOX_H_

#include <algorithm>
#include <cmath>
#include <ostream>

#include "geometry/matrix.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// An axis-aligned box. An empty box (has_data == false) is the identity of
// Union and contains and intersects nothing; min and max are meaningless
// then. Non-finite points are ignored by Extend, so a box never holds NaN.
struct BoundingBox {
  Vec3 min;
  Vec3 max;
  bool has_data = false;

  BoundingBox() = default;
  // The box spanning two corners given in any order.
  BoundingBox(const Vec3& a, const Vec3& b) {
    Extend(a);
    Extend(b);
  }

  // Grows the box to hold p; a point with NaN or infinity is skipped.
  void Extend(const Vec3& p) {
    if (!IsFinite(p)) return;
    if (!has_data) {
      min = max = p;
      has_data = true;
      return;
    }
    for (int i = 0; i < 3; ++i) {
      min[i] = std::min(min[i], p[i]);
      max[i] = std::max(max[i], p[i]);
    }
  }
  // Grows the box to hold another box (an empty one changes nothing).
  void Extend(const BoundingBox& other) {
    if (!other.has_data) return;
    Extend(other.min);
    Extend(other.max);
  }
  // The smallest box holding both.
  static BoundingBox Union(const BoundingBox& a, const BoundingBox& b) {
    BoundingBox r = a;
    r.Extend(b);
    return r;
  }

  // max − min; zero for an empty box.
  Vec3 Size() const { return has_data ? max - min : Vec3{}; }
  // The middle; the origin for an empty box.
  Vec3 Center() const { return has_data ? (min + max) * 0.5 : Vec3{}; }

  // True when p lies inside or on the boundary, widened by tol.
  bool Contains(const Vec3& p, double tol = kAbsTol) const {
    if (!has_data) return false;
    for (int i = 0; i < 3; ++i)
      if (!(p[i] >= min[i] - tol && p[i] <= max[i] + tol)) return false;
    return true;
  }
  // True when all of other lies inside this box widened by tol (an empty
  // other is contained by nothing, so the answer stays false).
  bool Contains(const BoundingBox& other, double tol = kAbsTol) const {
    return other.has_data && Contains(other.min, tol) && Contains(other.max, tol);
  }
  // True when the boxes share at least a point (touching counts), with tol.
  bool Intersects(const BoundingBox& other, double tol = kAbsTol) const {
    if (!has_data || !other.has_data) return false;
    for (int i = 0; i < 3; ++i)
      if (other.min[i] > max[i] + tol || other.max[i] < min[i] - tol) return false;
    return true;
  }

  // The box of the 8 transformed corners: exact for the box itself, and a
  // (possibly loose) box for what it held. Use the curves' own transforms for
  // tight extents after a rotation.
  BoundingBox Transform(const Matrix4& m) const {
    BoundingBox r;
    if (!has_data) return r;
    for (int corner = 0; corner < 8; ++corner) {
      const Vec3 p{(corner & 1) ? max.x : min.x, (corner & 2) ? max.y : min.y,
                   (corner & 4) ? max.z : min.z};
      r.Extend(m.TransformPoint(p));
    }
    return r;
  }
};

// A 2D axis-aligned rectangle (plan extents, selection windows, the spatial
// index). REQUIRES for meaningful results: min_x ≤ max_x, min_y ≤ max_y; use
// Box2::FromCorners for two corners in any order.
struct Box2 {
  double min_x = 0.0;
  double min_y = 0.0;
  double max_x = 0.0;
  double max_y = 0.0;

  static Box2 FromCorners(const Vec2& a, const Vec2& b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
  }
  // The xy part of a 3D box (an empty box gives NaN corners: check first).
  static Box2 FromBox(const BoundingBox& b) {
    if (!b.has_data) return {NAN, NAN, NAN, NAN};
    return {b.min.x, b.min.y, b.max.x, b.max.y};
  }
  bool IsFinite() const {
    return std::isfinite(min_x) && std::isfinite(min_y) && std::isfinite(max_x) && std::isfinite(max_y);
  }
  // Touching counts: boxes sharing only an edge or corner intersect.
  bool Intersects(const Box2& o) const {
    return o.min_x <= max_x && o.max_x >= min_x && o.min_y <= max_y && o.max_y >= min_y;
  }
  // True when o lies inside or on the boundary.
  bool Contains(const Box2& o) const {
    return o.min_x >= min_x && o.max_x <= max_x && o.min_y >= min_y && o.max_y <= max_y;
  }
  bool Contains(const Vec2& p) const {
    return p.x >= min_x && p.x <= max_x && p.y >= min_y && p.y <= max_y;
  }
  // The smallest box holding both.
  static Box2 Union(const Box2& a, const Box2& b) {
    return {std::min(a.min_x, b.min_x), std::min(a.min_y, b.min_y), std::max(a.max_x, b.max_x),
            std::max(a.max_y, b.max_y)};
  }
  double Area() const { return (max_x - min_x) * (max_y - min_y); }
  double Margin() const { return (max_x - min_x) + (max_y - min_y); }
  // The distance from p to the box (0 inside).
  double DistanceTo(const Vec2& p) const {
    const double dx = std::max({min_x - p.x, 0.0, p.x - max_x});
    const double dy = std::max({min_y - p.y, 0.0, p.y - max_y});
    return std::hypot(dx, dy);
  }
  friend bool operator==(const Box2&, const Box2&) = default;
};

inline void PrintTo(const Box2& b, std::ostream* os) {
  *os << "Box2(" << b.min_x << ", " << b.min_y << " .. " << b.max_x << ", " << b.max_y << ")";
}

inline bool IsClose(const BoundingBox& a, const BoundingBox& b, double abs_tol = kAbsTol,
                    double rel_tol = kRelTol) {
  if (a.has_data != b.has_data) return false;
  if (!a.has_data) return true;
  return IsClose(a.min, b.min, abs_tol, rel_tol) && IsClose(a.max, b.max, abs_tol, rel_tol);
}

inline void PrintTo(const BoundingBox& b, std::ostream* os) {
  if (!b.has_data) {
    *os << "BoundingBox(empty)";
    return;
  }
  *os << "BoundingBox(";
  PrintTo(b.min, os);
  *os << " .. ";
  PrintTo(b.max, os);
  *os << ")";
}

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_BOX_H_
