// SSAnimation: moving, turning, scaling, tiling, sorting and zooming all
// members of a DynamicSS at once.
#include <array>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_errors.h"
#include "frame/runtime_number.h"
#include "frame/value_helpers.h"
#include "geometry/vector_service.h"
#include "selection/dynamic_ss.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

using geometry::Vec3;

constexpr double kDefaultZoomScale = 1.2;
constexpr std::string_view kMovingPrompt = "Specify the Insertion Point: ";

// The point one entity is scaled about in ScaleEach, by exact type name;
// Empty for other kinds (and when a read fails).
Variant ReferencePoint(const Variant& entity) {
  const std::string type = tovik::TypeName(entity);
  Variant point;
  ResumeNext trap;
  trap([&] {
    const ObjectRef& e = entity.Object();
    if (type == "IAcadLine") {
      point = PointOf((VectorOf(GetProperty(e, "StartPoint")) + VectorOf(GetProperty(e, "EndPoint"))) *
                      0.5);
    } else if (type == "IAcadCircle" || type == "IAcadArc" || type == "IAcadEllipse") {
      point = GetProperty(e, "Center");
    } else if (type == "IAcadBlockReference" || type == "IAcadText" || type == "IAcadMText" ||
               type == "IAcadAttribute") {
      point = GetProperty(e, "InsertionPoint");
    }
  });
  return point;
}

struct Box {
  Vec3 low, high;
};

// The host's box of one entity; its failure reaches the caller.
Box HostBox(const Variant& entity) {
  std::array<Variant, 2> corners;
  CallMethodRef(entity.Object(), "GetBoundingBox", corners);
  return {VectorOf(corners[0]), VectorOf(corners[1])};
}

// The set's box as SSDimensions gives it with the factor `scale`.
struct SetBox {
  Variant min_p, max_p, centre;
};
SetBox BoxOfSet(DynamicSS& set, double scale) {
  SetBox box;
  double height = 0, width = 0;
  set.Dimensions()->GetBoundingBox({box.min_p, box.max_p, box.centre, height, width},
                                   {.shrink_scale = scale});
  return box;
}

// A before b in the order Sort2D asks for. Boxes that overlap in x share a
// column, boxes that overlap in y share a row; boxes overlapping both ways
// are ordered by their lower corners.
struct Sort2DOrder {
  bool horz_then_vert, left_right, downward;

  bool operator()(const Box& a, const Box& b) const {
    auto apart_x = [&] { return a.high.x < b.low.x || a.low.x > b.high.x; };
    auto apart_y = [&] { return a.high.y < b.low.y || a.low.y > b.high.y; };
    int sx = apart_x() ? (a.low.x < b.low.x ? 1 : -1) : 0;
    int sy = apart_y() ? (a.low.y > b.low.y ? 1 : -1) : 0;
    if (sx == 0 && sy == 0) {
      sx = a.low.x < b.low.x ? 1 : -1;
      sy = a.low.y > b.low.y ? 1 : -1;
    }
    if (!downward) sy = -sy;
    if (!left_right) sx = -sx;
    int primary = horz_then_vert ? sy : sx;
    int tie = horz_then_vert ? sx : sy;
    return (primary != 0 ? primary : tie) == 1;
  }
};

// Stable merge sort of positions by `before`. The order need not be a
// strict weak ordering (overlap is not transitive), so a library sort,
// which may misbehave on such orders, is not used; this one only ever
// compares and copies in bounds. O(n log n) comparisons.
template <class Before>
std::vector<size_t> MergeSorted(size_t n, Before before) {
  std::vector<size_t> order(n), scratch(n);
  for (size_t i = 0; i < n; ++i) order[i] = i;
  for (size_t width = 1; width < n; width *= 2) {
    for (size_t lo = 0; lo < n; lo += 2 * width) {
      size_t mid = std::min(lo + width, n), hi = std::min(lo + 2 * width, n);
      size_t i = lo, j = mid, k = lo;
      while (i < mid && j < hi) scratch[k++] = before(order[j], order[i]) ? order[j++] : order[i++];
      while (i < mid) scratch[k++] = order[i++];
      while (j < hi) scratch[k++] = order[j++];
    }
    order.swap(scratch);
  }
  return order;
}

}  // namespace

std::shared_ptr<DynamicSS> SSAnimation::Owner() const {
  std::shared_ptr<DynamicSS> owner = owner_.lock();
  if (!owner) throw errors::ObjectNotSet();
  return owner;
}

void SSAnimation::Move(const Variant& from, const Variant& to) {
  std::shared_ptr<DynamicSS> owner = Owner();
  for (int32_t i = 0; i < owner->Count(); ++i) CallMethod(owner->At(i).Object(), "Move", {from, to});
}

void SSAnimation::Rotate3D(const Variant& p1, const Variant& p2, double angle) {
  std::shared_ptr<DynamicSS> owner = Owner();
  for (int32_t i = 0; i < owner->Count(); ++i) {
    CallMethod(owner->At(i).Object(), "Rotate3D", {p1, p2, Variant(angle)});
  }
}

void SSAnimation::ScaleAll(const Variant& base, double factor) {
  std::shared_ptr<DynamicSS> owner = Owner();
  for (int32_t i = 0; i < owner->Count(); ++i) {
    CallMethod(owner->At(i).Object(), "ScaleEntity", {base, Variant(factor)});
  }
}

void SSAnimation::ScaleEach(double factor) {
  std::shared_ptr<DynamicSS> owner = Owner();
  for (int32_t i = 0; i < owner->Count(); ++i) {
    const Variant& member = owner->At(i);
    CallMethod(member.Object(), "ScaleEntity", {ReferencePoint(member), Variant(factor)});
  }
}

void SSAnimation::Moving(const Variant& start, Variant* new_point) {
  std::shared_ptr<DynamicSS> owner = Owner();
  Variant base = start.IsMissing() ? BoxOfSet(*owner, 1.0).centre : start;
  owner->Highlight(true);
  ObjectRef utility = GetProperty(owner->Document(), "Utility").Object();
  Variant picked;
  ResumeNext trap;
  for (;;) {
    Variant point;
    // The base point is world; the rubber band is drawn in the user's
    // coordinate system.
    bool answered = trap([&] {
      Variant shown = CallMethod(utility, "TranslateCoordinates",
                                 {base, Variant(int32_t{0}), Variant(int32_t{1}), Variant(false)});
      point = CallMethod(utility, "GetPoint", {shown, Variant(std::string(kMovingPrompt))});
    });
    if (!answered) break;
    picked = point;
    double tolerance = 0;
    if (!TolerantEqual(point, base, tolerance)) {
      trap([&] { Move(base, point); });
      base = point;
    }
  }
  owner->Highlight(false);
  if (new_point) *new_point = picked;
}

double SSAnimation::MoveAndStretch(const Variant& ll, const Variant& ur, int16_t zoom_percent) {
  std::shared_ptr<DynamicSS> owner = Owner();
  SetBox box = BoxOfSet(*owner, 1.0);
  Vec3 low = VectorOf(box.min_p), high = VectorOf(box.max_p);
  Vec3 corner1 = VectorOf(ll), corner2 = VectorOf(ur);
  Variant c1 = PointOf((low + high) * 0.5);
  Variant c2 = PointOf((corner1 + corner2) * 0.5);
  Move(c1, c2);
  double sx = DivideDoubles(corner2.x - corner1.x, high.x - low.x);
  double sy = DivideDoubles(corner2.y - corner1.y, high.y - low.y);
  double factor = CDbl(MaxOf({Variant(sx), Variant(sy)}));
  factor = zoom_percent * factor / 100;
  ScaleAll(c2, factor);
  return factor;
}

void SSAnimation::TileArrangement() {
  std::shared_ptr<DynamicSS> owner = Owner();
  Vec3 cursor{0, 0, 0};
  for (int32_t i = 0; i < owner->Count(); ++i) {
    const Variant& member = owner->At(i);
    Box box = HostBox(member);
    CallMethod(member.Object(), "Move",
               {PointOf({box.high.x, box.low.y, 0}), PointOf(cursor)});
    cursor.y += box.high.y - box.low.y;
  }
}

void SSAnimation::Sort2D(bool horz_then_vert, bool left_right, bool downward) {
  horz_then_vert_ = horz_then_vert;
  left_right_ = left_right;
  downward_ = downward;
  std::shared_ptr<DynamicSS> owner = Owner();
  if (owner->size() == 0) return;
  std::vector<Variant> members = owner->Enumerate();
  // Each member's box is read once, before anything changes.
  std::vector<Box> boxes;
  boxes.reserve(members.size());
  for (const Variant& member : members) boxes.push_back(HostBox(member));
  const Sort2DOrder before{horz_then_vert_, left_right_, downward_};
  std::vector<size_t> order =
      MergeSorted(members.size(), [&](size_t a, size_t b) { return before(boxes[a], boxes[b]); });
  std::vector<Variant> sorted;
  sorted.reserve(order.size());
  for (size_t k : order) sorted.push_back(members[k]);
  owner->Clear();
  owner->Add(Variant(SafeArray::Of({Variant(SafeArray::OfVariants(std::move(sorted)))})));
}

void SSAnimation::ZoomTo(double scale) {
  std::shared_ptr<DynamicSS> owner = Owner();
  if (!SameObject(AcadSpace::CurSpace(), owner->Block_OwnerOf())) {
    throw errors::Library(kSelectionNotInCurrentLayout);
  }
  if (scale <= 0) scale = kDefaultZoomScale;
  SetBox box = BoxOfSet(*owner, scale);
  CallMethod(HostApplication(), "ZoomWindow", {box.min_p, box.max_p});
}

const MemberTable<SSAnimation>& SSAnimation::Members() {
  static const MemberTable<SSAnimation> table = [] {
    using S = SSAnimation;
    using A = CallArgs;
    MemberTable<S> t;
    t.Method("Move", [](S& s, A& a) { return s.Move(a[0], a[1]), Variant(); }, 2, 2);
    t.Method(
        "Moving",
        [](S& s, A& a) {
          s.Moving(a[0], a.Has(1) ? &a[1] : nullptr);
          return Variant();
        },
        0, 2).Outs({1});
    t.Method("Rotate3D", [](S& s, A& a) { return s.Rotate3D(a[0], a[1], CDbl(a[2])), Variant(); },
             3, 3);
    t.Method("ScaleAll", [](S& s, A& a) { return s.ScaleAll(a[0], CDbl(a[1])), Variant(); }, 2, 2);
    t.Method("ScaleEach", [](S& s, A& a) { return s.ScaleEach(CDbl(a[0])), Variant(); }, 1, 1);
    t.Method(
        "MoveAndStretch",
        [](S& s, A& a) {
          a[3] = Variant(s.MoveAndStretch(a[0], a[1], CInt(a[2])));
          return Variant();
        },
        4, 4).Outs({3});
    t.Method("TileArrangement", [](S& s, A&) { return s.TileArrangement(), Variant(); });
    t.Method(
        "Sort2D",
        [](S& s, A& a) {
          auto flag = [&](size_t i) { return a.Has(i) ? CBool(a[i]) : true; };
          return s.Sort2D(flag(0), flag(1), flag(2)), Variant();
        },
        0, 3);
    t.Method(
        "ZoomTo",
        [](S& s, A& a) { return s.ZoomTo(a.Has(0) ? CDbl(a[0]) : kDefaultZoomScale), Variant(); },
        0, 1);
    return t;
  }();
  return table;
}

}  // namespace tovik
