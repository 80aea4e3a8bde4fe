#include "geometry/loop7.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "geometry/vector_service.h"

namespace tovik {
namespace {

std::vector<double> NumbersOf(const Variant& list) {
  if (list.IsMissing() || list.IsEmpty()) return {};
  std::vector<double> out;
  for (const Variant& v : list.Array().Items()) out.push_back(CDbl(v));
  return out;
}

Variant DoublesValue(const std::vector<double>& values) { return Variant(SafeArray::OfDoubles(values)); }

geometry::Vec2 Point2(const Variant& point) {
  geometry::Vec3 p = VectorOf(point);
  return {p.x, p.y};
}

// Whether loop `inner` lies inside `outer`: judged at the first midpoint of
// inner's segments that is not on outer's boundary (loops may touch).
bool InsideOf(const geometry::Loop& inner, const Loop7& outer) {
  geometry::Loop closed = outer.Closed();
  for (size_t i = 0; i < inner.vertices.size(); ++i) {
    switch (geometry::Locate(closed, geometry::PointOnSegment(inner, i, 0.5))) {
      case geometry::Containment::kInside: return true;
      case geometry::Containment::kOutside: return false;
      case geometry::Containment::kOnBoundary: break;
    }
  }
  return false;
}

}  // namespace

void Loop7::SetVertices(const Variant& vertices, const Variant& bulges, bool no_close) {
  std::vector<double> xy = NumbersOf(vertices);
  if (xy.size() % 2 != 0) throw errors::TypeMismatch();
  vertices_ = std::move(xy);
  bulges_ = NumbersOf(bulges);
  no_close_ = no_close;
  is_outer_ = Area() >= 0;
}

Variant Loop7::Vertices() const { return DoublesValue(vertices_); }
Variant Loop7::Bulges() const { return DoublesValue(bulges_); }

geometry::Loop Loop7::Closed() const {
  geometry::Loop loop;
  for (size_t i = 0; i + 1 < vertices_.size(); i += 2) loop.vertices.push_back({vertices_[i], vertices_[i + 1]});
  loop.bulges.assign(loop.vertices.size(), 0.0);
  for (size_t i = 0; i < loop.bulges.size() && i < bulges_.size(); ++i) loop.bulges[i] = bulges_[i];
  if (no_close_ && !loop.bulges.empty()) loop.bulges.back() = 0;  // closed by a straight segment
  return loop;
}

bool Loop7::Contains(const geometry::Vec2& p) const {
  return geometry::Locate(Closed(), p) != geometry::Containment::kOutside;
}

std::shared_ptr<Loop7> Loop7::FromLoop(const geometry::Loop& loop, bool is_outer) {
  auto out = Make();
  for (const geometry::Vec2& v : loop.vertices) out->vertices_.insert(out->vertices_.end(), {v.x, v.y});
  out->bulges_ = loop.bulges;
  out->is_outer_ = is_outer;
  return out;
}

const MemberTable<Loop7>& Loop7::Members() {
  static const MemberTable<Loop7> table = [] {
    using L = Loop7;
    MemberTable<L> t;
    t.Method(
        "SetVertices",
        [](L& s, CallArgs& a) {
          s.SetVertices(a[0], a[1], a.Has(2) && CBool(a[2]));
          return Variant();
        },
        1, 3);
    t.Property("Vertices", [](L& s, CallArgs&) { return s.Vertices(); });
    t.Property("Bulges", [](L& s, CallArgs&) { return s.Bulges(); });
    t.Property("NoClose", [](L& s, CallArgs&) { return Variant(s.no_close()); });
    t.Property(
        "IsOuter", [](L& s, CallArgs&) { return Variant(s.is_outer()); },
        [](L& s, CallArgs&, Variant& v) { s.set_is_outer(CBool(v)); });
    t.Property("Area", [](L& s, CallArgs&) { return Variant(s.Area()); });
    t.Method("Contains", [](L& s, CallArgs& a) { return Variant(s.Contains(Point2(a[0]))); }, 1, 1);
    return t;
  }();
  return table;
}

std::vector<Variant> Loop7s::Enumerate() {
  std::vector<Variant> out;
  for (const auto& loop : loops_) out.emplace_back(ObjectRef(loop));
  return out;
}

const std::shared_ptr<Loop7>& Loop7s::Item(int32_t i) const {
  if (i < 0 || i >= Count()) throw errors::SubscriptOutOfRange();
  return loops_[static_cast<size_t>(i)];
}

void Loop7s::ClassifyByNesting() {
  for (const auto& loop : loops_) {
    geometry::Loop closed = loop->Closed();
    int depth = 0;
    for (const auto& other : loops_) {
      if (other != loop && InsideOf(closed, *other)) ++depth;
    }
    loop->set_is_outer(depth % 2 == 0);
  }
}

void Loop7s::Split(const geometry::Vec2& from, const geometry::Vec2& to, Loop7s& upper, Loop7s& lower) const {
  for (const auto& loop : loops_) {
    geometry::SplitPieces pieces = geometry::SplitByLine(loop->Closed(), from, to);
    for (const geometry::Loop& piece : pieces.left) upper.Add(Loop7::FromLoop(piece, loop->is_outer()));
    for (const geometry::Loop& piece : pieces.right) lower.Add(Loop7::FromLoop(piece, loop->is_outer()));
  }
}

const MemberTable<Loop7s>& Loop7s::Members() {
  static const MemberTable<Loop7s> table = [] {
    using L = Loop7s;
    MemberTable<L> t;
    t.Property("Count", [](L& s, CallArgs&) { return Variant(s.Count()); });
    t.Method("Item", [](L& s, CallArgs& a) { return Variant(ObjectRef(s.Item(CLng(a[0])))); }, 1, 1);
    t.Default("Item");
    t.Method(
        "Add",
        [](L& s, CallArgs& a) {
          std::shared_ptr<Loop7> loop = ObjectAs<Loop7>(a[0]);
          if (!loop) throw errors::TypeMismatch();
          s.Add(std::move(loop));
          return Variant();
        },
        1, 1);
    t.Method("ClassifyByNesting", [](L& s, CallArgs&) { return s.ClassifyByNesting(), Variant(); });
    t.Method(
        "Split",
        [](L& s, CallArgs& a) {
          auto upper = Make(), lower = Make();
          s.Split(Point2(a[0]), Point2(a[1]), *upper, *lower);
          a[2] = Variant(ObjectRef(upper));
          a[3] = Variant(ObjectRef(lower));
          return Variant();
        },
        2, 4).Outs({2, 3});
    return t;
  }();
  return table;
}

}  // namespace tovik
