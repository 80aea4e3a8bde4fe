// Hatch members: boundary loops appended from entities, area, pattern.
#include <cmath>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"

namespace tovik::host {

namespace {

using geometry::Vec2;
using geometry::Vec3;

constexpr double kJoinTol = 1e-6;

struct Piece {
  Vec2 start, end;
  double bulge = 0;
  // The piece's own vertices (a polyline is several segments).
  std::vector<std::pair<Vec2, double>> run;
};

// The boundary pieces of `objects` (lines, arcs, circles, polylines).
std::vector<Piece> PiecesOf(const std::vector<ObjectRef>& objects, Document* doc,
                            std::string_view member) {
  std::vector<Piece> pieces;
  for (const ObjectRef& o : objects) {
    auto* e = AsEntity(o.get());
    if (!e || e->erased() || e->document() != doc) throw InvalidArgument("ObjectArray", member);
    Piece p;
    if (auto* line = As<Line>(e)) {
      p.run = {{geometry::Xy(line->data().start), 0}, {geometry::Xy(line->data().end), 0}};
    } else if (auto* arc = As<Arc>(e)) {
      const auto& d = arc->data();
      geometry::Arc g{d.center, d.radius, d.normal, d.start_angle, d.end_angle};
      double sweep = geometry::NormalizeAngle(d.end_angle - d.start_angle);
      p.run = {{geometry::Xy(*geometry::StartPoint(g)), std::tan(sweep / 4)},
               {geometry::Xy(*geometry::EndPoint(g)), 0}};
    } else if (auto* circle = As<Circle>(e)) {
      Vec2 c = geometry::Xy(circle->data().center);
      double r = circle->data().radius;
      p.run = {{{c.x + r, c.y}, 1}, {{c.x - r, c.y}, 1}, {{c.x + r, c.y}, 0}};
    } else if (auto* pl = As<LwPolyline>(e)) {
      for (const auto& v : pl->data().vertices) p.run.push_back({v.point, v.bulge});
      if (pl->data().closed && !p.run.empty()) p.run.push_back({p.run.front().first, 0});
    } else {
      throw HostError(HostFailure::kInvalidInput);
    }
    pieces.push_back(std::move(p));
  }
  return pieces;
}

// Chains the pieces into one closed loop; an open chain raises Invalid input.
HatchLoop ChainLoop(std::vector<Piece> pieces, bool outer) {
  HatchLoop loop;
  loop.outer = outer;
  Vec2 first{}, cursor{};
  bool started = false;
  for (Piece& piece : pieces) {
    auto& run = piece.run;
    if (run.size() < 2) throw HostError(HostFailure::kInvalidInput);
    if (started && !geometry::IsClose(run.front().first, cursor, kJoinTol)) {
      if (!geometry::IsClose(run.back().first, cursor, kJoinTol)) {
        throw HostError(HostFailure::kInvalidInput);
      }
      // Walk the piece backwards: bulges move to the other vertex and flip.
      std::vector<std::pair<Vec2, double>> reversed;
      for (size_t i = run.size(); i-- > 0;) {
        double b = i > 0 ? -run[i - 1].second : 0;
        reversed.push_back({run[i].first, b});
      }
      run = std::move(reversed);
    }
    if (!started) first = run.front().first;
    started = true;
    for (size_t i = 0; i + 1 < run.size(); ++i) {
      loop.points.push_back(run[i].first);
      loop.bulges.push_back(run[i].second);
    }
    cursor = run.back().first;
  }
  if (!started || !geometry::IsClose(cursor, first, kJoinTol)) {
    throw HostError(HostFailure::kInvalidInput);
  }
  return loop;
}

double LoopArea(const HatchLoop& loop) {
  std::vector<geometry::BulgeVertex> v;
  for (size_t i = 0; i < loop.points.size(); ++i) v.push_back({loop.points[i], loop.bulges[i]});
  return geometry::PolylineArea(v, true);
}

Variant AppendLoop(Hatch& s, CallArgs& a, bool outer) {
  std::string_view member = outer ? "AppendOuterLoop" : "AppendInnerLoop";
  std::vector<ObjectRef> objects = ObjectsArg(a[0], {"ObjectArray", member});
  HatchLoop loop = ChainLoop(PiecesOf(objects, s.document(), member), outer);
  bool has_outer = std::any_of(s.data().loops.begin(), s.data().loops.end(),
                               [](const HatchLoop& l) { return l.outer; });
  if (!outer && !has_outer) throw HostError(HostFailure::kNotApplicable);
  s.Touch();
  s.mutable_data().loops.push_back(std::move(loop));
  return Variant();
}

}  // namespace

const MemberTable<Hatch>& Hatch::Members() {
  static const MemberTable<Hatch> table = [] {
    MemberTable<Hatch> t;
    using K = Hatch;
    t.Method("AppendOuterLoop", [](K& s, CallArgs& a) { return AppendLoop(s, a, true); }, 1, 1);
    t.Method("AppendInnerLoop", [](K& s, CallArgs& a) { return AppendLoop(s, a, false); }, 1, 1);
    t.Property("NumberOfLoops", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.data().loops.size()));
    });
    t.Property("PatternName", GetStringField<K, &K::Data::pattern_name>);
    t.Property("PatternType", [](K& s, CallArgs&) { return Variant(s.data().pattern_type); });
    t.Method(
        "SetPattern",
        [](K& s, CallArgs& a) {
          int32_t type = LongArg(a[0], {"PatternType", "SetPattern"});
          std::string name = StringArg(a[1], {"PatternName", "SetPattern"});
          if (type < 0 || type > 2 || name.empty()) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_data().pattern_type = type;
          s.mutable_data().pattern_name = UCase(name);
          return Variant();
        },
        2, 2);
    t.Property("PatternScale", GetDoubleField<K, &K::Data::pattern_scale>,
               LetDoubleField<K, &K::Data::pattern_scale, "PatternScale", Check::kPositive>);
    t.Property("PatternAngle", GetDoubleField<K, &K::Data::pattern_angle>,
               LetDoubleField<K, &K::Data::pattern_angle, "PatternAngle">);
    t.Property("AssociativeHatch", GetBoolField<K, &K::Data::associative>,
               LetBoolField<K, &K::Data::associative, "AssociativeHatch">);
    t.Property("Elevation", GetDoubleField<K, &K::Data::elevation>,
               LetDoubleField<K, &K::Data::elevation, "Elevation">);
    t.Property("HatchObjectType", [](K& s, CallArgs&) { return Variant(s.data().object_type); });
    t.Method("Evaluate", [](K& s, CallArgs&) -> Variant {
      if (s.data().loops.empty()) throw HostError(HostFailure::kInvalidInput);
      return Variant();
    });
    t.Property("Area", [](K& s, CallArgs&) {
      double area = 0;
      for (const HatchLoop& l : s.data().loops) area += l.outer ? LoopArea(l) : -LoopArea(l);
      return Variant(std::fabs(area));
    });
    AddNormalMember(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
