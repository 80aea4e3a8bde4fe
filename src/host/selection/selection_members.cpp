// SelectionSet.Select, SelectByPolygon, SelectAtPoint and SelectOnScreen:
// candidates from the spatial index, judged on their true geometry in the
// plan of the current UCS, then filtered.
#include "host/selection/selection_members.h"

#include <algorithm>
#include <cmath>

#include "geometry/selection_geometry.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/selection/entity_filter.h"
#include "host/selection/selection_filter.h"
#include "host/selection/selection_set.h"
#include "host/shapes/entity_shapes.h"
#include "host/shapes/geometry_context.h"
#include "host/shapes/geometry_members.h"
#include "host/shapes/spatial.h"
#include "host/surface/args.h"
#include "host/tables/records.h"

namespace tovik::host {

using geometry::Box2;
using geometry::Matrix4;
using geometry::Vec2;
using geometry::Vec3;

namespace {

enum SelectMode : int32_t {
  kWindow = 0, kCrossing = 1, kFence = 2, kPrevious = 3, kLast = 4, kAll = 5,
  kWindowPolygon = 6, kCrossingPolygon = 7,
};

// On screen: on a layer that is on and thawed, and visible.
bool Displayed(const Entity& e) {
  const LayerRecord* layer = e.props().layer;
  return e.props().visible && (!layer || (layer->data().on && !layer->data().frozen));
}

// The plan judging frame and the WCS search box for a UCS-plan region.
struct Judge {
  Matrix4 to_plan;
  Matrix4 from_plan;
  bool z_aligned = false;  // UCS Z parallel to WCS Z: plan boxes narrow the search

  explicit Judge(Document& doc) : to_plan(WcsToUcsMatrix(doc)) {
    from_plan = to_plan.Inverse().value_or(Matrix4());
    z_aligned = std::fabs(std::fabs(UcsZAxis(doc).z) - 1) < 1e-12;
  }
  Vec2 Plan(const Vec3& wcs) const { return geometry::Xy(to_plan.TransformPoint(wcs)); }
  // Entities of `space` whose plan boxes may meet the plan rectangle.
  std::vector<Entity*> Candidates(Document& doc, BlockRecord* space, const Box2& plan) const {
    std::vector<Entity*> out;
    SpatialState& spatial = SpatialOf(doc);
    if (!z_aligned) {
      spatial.All(space, &out);
      return out;
    }
    geometry::BoundingBox wcs;
    for (const Vec2& c : {Vec2{plan.min_x, plan.min_y}, Vec2{plan.max_x, plan.min_y},
                          Vec2{plan.max_x, plan.max_y}, Vec2{plan.min_x, plan.max_y}}) {
      wcs.Extend(from_plan.TransformPoint(geometry::Lift(c)));
    }
    spatial.QueryRect(space, Box2::FromBox(wcs), &out);
    return out;
  }
  geometry::PlanShape PlanOf(const Entity& e) const {
    std::vector<Primitive> prims;
    AppendPrimitives(e, nullptr, &prims);
    return host::PlanOf(prims, to_plan);
  }
};

// Adds the entities in handle order and makes them the previous selection.
void Commit(SelectionSet& set, BlockRecord* space, std::vector<Entity*> hits) {
  std::sort(hits.begin(), hits.end(),
            [](const Entity* a, const Entity* b) { return a->handle() < b->handle(); });
  hits.erase(std::unique(hits.begin(), hits.end()), hits.end());
  Document& doc = *set.document();
  SpatialState& spatial = SpatialOf(doc);
  std::vector<std::shared_ptr<Entity>> refs;
  for (Entity* e : hits) {
    refs.push_back(doc.RefAs(e));
    set.Add(refs.back());
  }
  spatial.previous() = std::move(refs);
  spatial.previous_space() = space;
}

Vec3 FinitePoint(const Variant& v, std::string_view arg, std::string_view member) {
  const Vec3 p = PointArg(v, {arg, member});
  if (!geometry::IsFinite(p)) throw InvalidArgument(arg, member);
  return p;
}

void SelectRectangle(SelectionSet& set, bool crossing, const Vec3& p1, const Vec3& p2,
                     const SelectionFilter& filter) {
  Document& doc = *set.document();
  BlockRecord* space = doc.current_space();
  const Judge judge(doc);
  const Box2 window = Box2::FromCorners(judge.Plan(p1), judge.Plan(p2));
  std::vector<Entity*> hits;
  for (Entity* e : judge.Candidates(doc, space, window)) {
    if (!Displayed(*e)) continue;
    const geometry::PlanShape shape = judge.PlanOf(*e);
    const bool in = crossing ? geometry::CrossesOrInsideRectangle(shape, window)
                             : geometry::InsideRectangle(shape, window);
    if (in && filter.Matches(EntityFilterSubject(*e))) hits.push_back(e);
  }
  Commit(set, space, std::move(hits));
}

void SelectAll(SelectionSet& set, const SelectionFilter& filter) {
  Document& doc = *set.document();
  std::vector<Entity*> hits;
  for (Layout* layout : doc.layouts().items) {
    BlockRecord* space = layout->data().block;
    if (!space || space->erased()) continue;
    for (Entity* e : space->entities()) {
      if (!e->erased() && filter.Matches(EntityFilterSubject(*e))) hits.push_back(e);
    }
  }
  Commit(set, doc.current_space(), std::move(hits));
}

void SelectLast(SelectionSet& set, const SelectionFilter& filter) {
  Document& doc = *set.document();
  BlockRecord* space = doc.current_space();
  const auto& entities = space->entities();
  for (auto it = entities.rbegin(); it != entities.rend(); ++it) {
    Entity* e = *it;
    if (e->erased() || !Displayed(*e)) continue;
    if (filter.Matches(EntityFilterSubject(*e))) Commit(set, space, {e});
    return;  // only the newest visible entity is considered
  }
}

void SelectPrevious(SelectionSet& set, const SelectionFilter& filter) {
  Document& doc = *set.document();
  SpatialState& spatial = SpatialOf(doc);
  BlockRecord* space = doc.current_space();
  // The previous selection is forgotten once the space changes.
  if (spatial.previous_space() != space) return;
  std::vector<Entity*> hits;
  for (const auto& e : spatial.previous()) {
    if (!e->erased() && filter.Matches(EntityFilterSubject(*e))) hits.push_back(e.get());
  }
  for (Entity* e : hits) set.Add(doc.RefAs(e));
}

Variant Select(SelectionSet& s, CallArgs& a) {
  constexpr std::string_view kMember = "Select";
  const int32_t mode = LongArg(a[0], {"Mode", kMember});
  const SelectionFilter filter = SelectionFilter::Parse(a[3], a[4], kMember);
  switch (mode) {
    case kWindow:
    case kCrossing: {
      if (!a.Has(1) || !a.Has(2)) throw InvalidArgument(a.Has(1) ? "Point2" : "Point1", kMember);
      const Vec3 p1 = FinitePoint(a[1], "Point1", kMember);
      const Vec3 p2 = FinitePoint(a[2], "Point2", kMember);
      SelectRectangle(s, mode == kCrossing, p1, p2, filter);
      break;
    }
    case kPrevious: SelectPrevious(s, filter); break;
    case kLast: SelectLast(s, filter); break;
    case kAll: SelectAll(s, filter); break;
    default:  // fence and polygons go through SelectByPolygon
      throw InvalidArgument("Mode", kMember);
  }
  return Variant();
}

// The plan polygon of a flat WCS list, consecutive repeats dropped.
std::vector<Vec2> PlanPolygon(const Judge& judge, const Variant& list, std::string_view member) {
  const std::vector<double> d = DoublesArg(list, {"PointsList", member});
  if (d.size() % 3 != 0) throw InvalidArgument("PointsList", member);
  std::vector<Vec2> out;
  for (size_t i = 0; i < d.size(); i += 3) {
    const Vec3 p{d[i], d[i + 1], d[i + 2]};
    if (!geometry::IsFinite(p)) throw InvalidArgument("PointsList", member);
    const Vec2 q = judge.Plan(p);
    if (out.empty() || !geometry::IsClose(out.back(), q)) out.push_back(q);
  }
  return out;
}

Variant SelectByPolygon(SelectionSet& s, CallArgs& a) {
  constexpr std::string_view kMember = "SelectByPolygon";
  const int32_t mode = LongArg(a[0], {"Mode", kMember});
  if (mode != kFence && mode != kWindowPolygon && mode != kCrossingPolygon) {
    throw InvalidArgument("Mode", kMember);
  }
  Document& doc = *s.document();
  const Judge judge(doc);
  std::vector<Vec2> polygon = PlanPolygon(judge, a[1], kMember);
  // A closing point equal to the first adds nothing to a polygon.
  if (mode != kFence && polygon.size() > 1 && geometry::IsClose(polygon.front(), polygon.back())) {
    polygon.pop_back();
  }
  if (polygon.size() < (mode == kFence ? 2u : 3u)) throw InvalidArgument("PointsList", kMember);
  const SelectionFilter filter = SelectionFilter::Parse(a[2], a[3], kMember);
  Box2 bounds{polygon[0].x, polygon[0].y, polygon[0].x, polygon[0].y};
  for (const Vec2& p : polygon) bounds = Box2::Union(bounds, Box2{p.x, p.y, p.x, p.y});
  BlockRecord* space = doc.current_space();
  std::vector<Entity*> hits;
  for (Entity* e : judge.Candidates(doc, space, bounds)) {
    if (!Displayed(*e)) continue;
    const geometry::PlanShape shape = judge.PlanOf(*e);
    const bool in = mode == kFence            ? geometry::FenceCrosses(shape, polygon)
                    : mode == kWindowPolygon ? geometry::InsidePolygon(shape, polygon)
                                             : geometry::CrossesOrInsidePolygon(shape, polygon);
    if (in && filter.Matches(EntityFilterSubject(*e))) hits.push_back(e);
  }
  Commit(s, space, std::move(hits));
  return Variant();
}

// The position of each entity in the block's draw order (creation order
// unless the block has a draw-order table).
std::vector<Entity*> TopFirst(BlockRecord* space, std::vector<Entity*> hits) {
  if (hits.size() < 2) return hits;
  if (!space->xdict()) {
    std::sort(hits.begin(), hits.end(),
              [](const Entity* a, const Entity* b) { return a->handle() > b->handle(); });
    return hits;
  }
  const std::vector<Entity*> order = space->DrawOrder();
  std::unordered_map<const Entity*, size_t> rank;
  for (size_t i = 0; i < order.size(); ++i) rank[order[i]] = i;
  std::sort(hits.begin(), hits.end(),
            [&](const Entity* a, const Entity* b) { return rank[a] > rank[b]; });
  return hits;
}

// The point is in the UCS; the aperture is PICKBOX pixels in drawing units.
Variant SelectAtPoint(SelectionSet& s, CallArgs& a) {
  constexpr std::string_view kMember = "SelectAtPoint";
  const Vec3 ucs_point = FinitePoint(a[0], "Point", kMember);
  const SelectionFilter filter = SelectionFilter::Parse(a[1], a[2], kMember);
  Document& doc = *s.document();
  const Judge judge(doc);
  const Vec2 p = geometry::Xy(ucs_point);
  const double aperture = PickAperture(doc);
  const Box2 box{p.x - aperture, p.y - aperture, p.x + aperture, p.y + aperture};
  BlockRecord* space = doc.current_space();
  std::vector<Entity*> hits;
  for (Entity* e : judge.Candidates(doc, space, box)) {
    if (!Displayed(*e) || !filter.Matches(EntityFilterSubject(*e))) continue;
    const auto distance = geometry::DistanceTo(judge.PlanOf(*e), p);
    if (distance && *distance <= aperture + geometry::kAbsTol) hits.push_back(e);
  }
  hits = TopFirst(space, std::move(hits));
  if (!hits.empty()) Commit(s, space, {hits.front()});
  return Variant();
}

// Headless: the queued picks, up to the first answer that is not a pick.
Variant SelectOnScreen(SelectionSet& s, CallArgs& a) {
  constexpr std::string_view kMember = "SelectOnScreen";
  const SelectionFilter filter = SelectionFilter::Parse(a[0], a[1], kMember);
  Document& doc = *s.document();
  std::vector<Entity*> hits;
  while (doc.queued_input() > 0) {
    UserInput input = doc.NextInput();
    if (input.kind != UserInput::Kind::kPick || !input.entity) break;
    Entity* e = input.containers.empty() ? input.entity.get() : input.containers.back().get();
    if (!e->erased() && filter.Matches(EntityFilterSubject(*e))) hits.push_back(e);
  }
  Commit(s, doc.current_space(), std::move(hits));
  return Variant();
}

}  // namespace

void AddSelectionMembers(MemberTable<SelectionSet>& t) {
  t.Method("Select", Select, 1, 5);
  t.Method("SelectByPolygon", SelectByPolygon, 2, 4);
  t.Method("SelectAtPoint", SelectAtPoint, 1, 3);
  t.Method("SelectOnScreen", SelectOnScreen, 0, 2);
}

}  // namespace tovik::host
