// The companion geometry's loop types exchanged through the interface, in
// millimetres:
//
// Loop7: a chain of straight and arc (bulge) segments filled from a vertex
// list (x, y, x, y...), a bulge list (one per vertex) and NoClose. With
// NoClose False the last vertex joins the first through its bulge; with
// NoClose True the chain is open and its last bulge is not used (callers
// repeat the first vertex at the end to close it). For area, containment
// and splitting an open chain is closed by a straight segment.
// Members: SetVertices(Vertices, Bulges[, NoClose]), Vertices, Bulges,
// NoClose, IsOuter (read and assigned), Area (signed: positive counter-
// clockwise), Contains(Point) (points within 1e-6 mm of the boundary count
// as inside).
//
// IsOuter tells an outer boundary from a hole: a loop filled on its own is
// outer when it runs counter-clockwise; a collection made from polylines
// (Loop7s.ClassifyByNesting) decides it by nesting instead: a loop inside
// an odd number of the others is a hole.
//
// Loop7s: a collection of Loop7: Count, Item(i) (default, from 0), Add(Loop),
// For Each, ClassifyByNesting, Split(StartPoint, EndPoint, Upper, Lower).
#ifndef TOVIK_GEOMETRY_LOOP7_H_
#define TOVIK_GEOMETRY_LOOP7_H_

#include <memory>
#include <string_view>
#include <vector>

#include "frame/member_table.h"
#include "geometry/loop.h"

namespace tovik {

class Loop7 : public DispatchObject<Loop7> {
 public:
  static constexpr std::string_view kClassName = "Loop7";
  static std::shared_ptr<Loop7> Make() { return std::make_shared<Loop7>(); }
  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<Loop7>& Members();

  // Fills the loop. Vertices must hold an even number of numbers and
  // Bulges (Missing or Empty: all 0) numbers; 13 otherwise. IsOuter is set
  // by orientation.
  void SetVertices(const Variant& vertices, const Variant& bulges, bool no_close);
  // The lists as filled (0-based Double arrays).
  Variant Vertices() const;
  Variant Bulges() const;
  bool no_close() const { return no_close_; }
  bool is_outer() const { return is_outer_; }
  void set_is_outer(bool outer) { is_outer_ = outer; }

  // The closed loop the geometry works on.
  geometry::Loop Closed() const;
  double Area() const { return geometry::SignedArea(Closed()); }
  bool Contains(const geometry::Vec2& p) const;
  // A loop filled from pieces: closed, with the given flag.
  static std::shared_ptr<Loop7> FromLoop(const geometry::Loop& loop, bool is_outer);

 private:
  std::vector<double> vertices_;  // x, y pairs
  std::vector<double> bulges_;
  bool no_close_ = false;
  bool is_outer_ = true;
};

class Loop7s : public DispatchObject<Loop7s> {
 public:
  static constexpr std::string_view kClassName = "Loop7s";
  static std::shared_ptr<Loop7s> Make() { return std::make_shared<Loop7s>(); }
  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<Loop7s>& Members();
  std::vector<Variant> Enumerate() override;

  void Add(std::shared_ptr<Loop7> loop) { loops_.push_back(std::move(loop)); }
  int32_t Count() const { return static_cast<int32_t>(loops_.size()); }
  // Loop i from 0; outside the range raises 9.
  const std::shared_ptr<Loop7>& Item(int32_t i) const;
  // IsOuter of each loop by nesting: a loop inside an odd number of the
  // others is a hole.
  void ClassifyByNesting();
  // The pieces of every loop on the left (upper, for a line drawn from left
  // to right) and on the right (lower) of the line through from and to,
  // each keeping its loop's IsOuter. Arcs stay arcs.
  void Split(const geometry::Vec2& from, const geometry::Vec2& to, Loop7s& upper, Loop7s& lower) const;

 private:
  std::vector<std::shared_ptr<Loop7>> loops_;
};

}  // namespace tovik

#endif  // TOVIK_GEOMETRY_LOOP7_H_
