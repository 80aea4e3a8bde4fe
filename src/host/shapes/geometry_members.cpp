// GetBoundingBox and IntersectWith, and the registration of every entity
// geometry member.
#include "host/shapes/geometry_members.h"

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/shapes/entity_shapes.h"
#include "host/shapes/geometry_context.h"
#include "host/surface/args.h"

namespace tovik::host {

using geometry::BoundingBox;
using geometry::Curve;
using geometry::Linear;
using geometry::LinearKind;
using geometry::Matrix4;
using geometry::Vec3;

BoundingBox EntityExtents(const Entity& entity) {
  std::vector<Primitive> primitives;
  AppendPrimitives(entity, nullptr, &primitives);
  const ShapeExtents e = ExtentsOf(primitives);
  if (e.unbounded || !e.box.has_data) throw HostError(HostFailure::kNullExtents);
  return e.box;
}

namespace {

// The curves of one polyline, in order, without thickness.
std::vector<Curve> PolylineCurves(std::span<const geometry::BulgeVertex> v, bool closed,
                                  const Vec3& normal, double elevation) {
  std::vector<Curve> out;
  const size_t n = v.size() < 2 ? 0 : (closed ? v.size() : v.size() - 1);
  for (size_t i = 0; i < n; ++i) {
    if (auto seg = geometry::SegmentInWcs(v, closed, i, normal, elevation)) {
      out.push_back(geometry::CurveFromPolylineSegment(*seg));
    }
  }
  return out;
}

// An open polyline extends only its two end segments: the first backwards
// from its end vertex, the last forwards from its start vertex; an arc at
// either end becomes its full circle. A single segment extends both ways.
void ExtendEnds(std::vector<Curve>* curves) {
  if (curves->empty()) return;
  if (curves->size() == 1) {
    curves->front() = geometry::Extended(curves->front());
    return;
  }
  auto extend = [](Curve& c, bool backwards) {
    if (auto* l = std::get_if<Linear>(&c)) {
      if (l->start == l->end) return;
      c = backwards ? Linear{l->end, l->start, LinearKind::kRay}
                    : Linear{l->start, l->end, LinearKind::kRay};
    } else {
      c = geometry::Extended(c);
    }
  };
  extend(curves->front(), true);
  extend(curves->back(), false);
}

std::vector<geometry::BulgeVertex> Vertices(const LwPolyline::Data& d) {
  std::vector<geometry::BulgeVertex> v;
  for (const auto& x : d.vertices) v.push_back({x.point, x.bulge});
  return v;
}

// The curves IntersectWith sees of an entity, extended when asked.
std::vector<Curve> IntersectionCurves(const Entity& e, bool extend) {
  std::vector<Curve> curves;
  bool whole_extends = false;  // every curve extends (lines, arcs, rays)
  if (const auto* pl = As<LwPolyline>(&e)) {
    const auto& d = pl->data();
    curves = PolylineCurves(Vertices(d), d.closed, d.normal, d.elevation);
    if (extend && !d.closed) ExtendEnds(&curves);
    return curves;
  }
  if (const auto* g = As<GenericEntity>(&e);
      g && (g->data().kind == GenericKind::kPolyline2d || g->data().kind == GenericKind::kPolyline3d)) {
    std::vector<Primitive> prims;
    AppendPrimitives(e, nullptr, &prims);
    for (const Primitive& p : prims) {
      if (const auto* c = std::get_if<Curve>(&p)) curves.push_back(*c);
    }
    if (extend && !g->data().closed) ExtendEnds(&curves);
    return curves;
  }
  if (As<BlockRef>(&e)) {
    // The host intersects a block reference's box, not its contents.
    std::vector<Primitive> prims;
    AppendPrimitives(e, nullptr, &prims);
    const ShapeExtents ext = ExtentsOf(prims);
    if (!ext.box.has_data) return curves;
    const Vec3 lo = ext.box.min, hi = ext.box.max;
    Vec3 corner[8];
    for (int k = 0; k < 8; ++k) {
      corner[k] = {(k & 1) ? hi.x : lo.x, (k & 2) ? hi.y : lo.y, (k & 4) ? hi.z : lo.z};
    }
    for (int k = 0; k < 8; ++k) {
      for (int bit : {1, 2, 4}) {
        if (!(k & bit) && corner[k] != corner[k | bit]) curves.push_back(Linear{corner[k], corner[k | bit]});
      }
    }
    return curves;
  }
  whole_extends = As<Line>(&e) || As<host::Arc>(&e) ||
                  As<host::Ellipse>(&e) || As<Circle>(&e) ||
                  As<GenericEntity>(&e);
  std::vector<Primitive> prims;
  // Thickness does not take part: intersect the curve itself.
  if (const auto* l = As<Line>(&e)) {
    prims.push_back(Curve(Linear{l->data().start, l->data().end}));
  } else if (const auto* c = As<Circle>(&e)) {
    prims.push_back(Curve(geometry::Arc::Circle(c->data().center, c->data().radius, c->data().normal)));
  } else if (const auto* a = As<host::Arc>(&e)) {
    const auto& d = a->data();
    prims.push_back(Curve(geometry::Arc{d.center, d.radius, d.normal, d.start_angle, d.end_angle}));
  } else {
    AppendPrimitives(e, nullptr, &prims);
  }
  for (const Primitive& p : prims) {
    if (const auto* c = std::get_if<Curve>(&p)) {
      curves.push_back(extend && whole_extends ? geometry::Extended(*c) : *c);
    } else if (const auto* o = std::get_if<Outline>(&p)) {
      for (size_t i = 0; i < o->points.size(); ++i) {
        curves.push_back(Linear{o->points[i], o->points[(i + 1) % o->points.size()]});
      }
    } else {
      const Vec3& q = std::get<Vec3>(p);
      curves.push_back(Linear{q, q});  // a point meets what passes through it
    }
  }
  return curves;
}

Entity& OtherEntity(const Variant& v) {
  ObjectRef o = ObjectArg(v, {"IntersectObject", "IntersectWith"});
  auto* e = AsEntity(o.get());
  if (!e) throw InvalidArgument("IntersectObject", "IntersectWith");
  e->CheckLive();
  return *e;
}

Variant IntersectWith(Entity& s, CallArgs& a) {
  Entity& other = OtherEntity(a[0]);
  const int32_t option = LongArg(a[1], {"ExtendOption", "IntersectWith"});
  if (option < 0 || option > 3) throw InvalidArgument("ExtendOption", "IntersectWith");
  const std::vector<Curve> mine = IntersectionCurves(s, option == 1 || option == 3);
  const std::vector<Curve> theirs = IntersectionCurves(other, option == 2 || option == 3);
  std::vector<Vec3> points;
  for (const Curve& c : mine) {
    for (const Curve& d : theirs) {
      for (const Vec3& p : geometry::Intersect(c, d)) geometry::AppendUnique(&points, p);
    }
  }
  std::vector<double> flat;
  flat.reserve(points.size() * 3);
  for (const Vec3& p : points) {
    flat.insert(flat.end(), {p.x, p.y, p.z});
  }
  return DoublesValue(flat);  // none: an empty Double array, UBound -1
}

Variant GetBoundingBox(Entity& s, CallArgs& a) {
  const BoundingBox box = EntityExtents(s);
  a[0] = PointValue(box.min);
  a[1] = PointValue(box.max);
  return Variant();
}

constexpr std::string_view kMove = "Move", kRotate = "Rotate", kRotate3D = "Rotate3D",
                           kScale = "ScaleEntity", kMirror = "Mirror";

Variant Move(Entity& s, CallArgs& a) {
  const Vec3 from = PointArg(a[0], {"FromPoint", kMove});
  const Vec3 to = PointArg(a[1], {"ToPoint", kMove});
  if (!geometry::IsFinite(to - from)) throw HostError(HostFailure::kInvalidInput);
  TransformEntity(s, Matrix4::Translation(to - from), true);
  return Variant();
}

Variant Rotate(Entity& s, CallArgs& a) {
  const Vec3 base = PointArg(a[0], {"BasePoint", kRotate});
  const double angle = DoubleArg(a[1], {"RotationAngle", kRotate});
  const auto m = Matrix4::Rotation(base, UcsZAxis(*s.document()), angle);
  if (!m) throw HostError(HostFailure::kInvalidInput);
  TransformEntity(s, *m, true);
  return Variant();
}

Variant Rotate3D(Entity& s, CallArgs& a) {
  const Vec3 p1 = PointArg(a[0], {"Point1", kRotate3D});
  const Vec3 p2 = PointArg(a[1], {"Point2", kRotate3D});
  const double angle = DoubleArg(a[2], {"RotationAngle", kRotate3D});
  if (geometry::IsClose(p1, p2)) throw HostError(HostFailure::kInvalidInput);
  const auto m = Matrix4::Rotation(p1, p2 - p1, angle);
  if (!m) throw HostError(HostFailure::kInvalidInput);
  TransformEntity(s, *m, true);
  return Variant();
}

Variant ScaleEntity(Entity& s, CallArgs& a) {
  const Vec3 base = PointArg(a[0], {"BasePoint", kScale});
  const double factor = DoubleArg(a[1], {"ScaleFactor", kScale});
  if (!(factor > 0) || !std::isfinite(factor) || !geometry::IsFinite(base)) {
    throw HostError(HostFailure::kInvalidInput);
  }
  TransformEntity(s, Matrix4::Scaling(factor, base), true);
  return Variant();
}

// The copy mirrored in the plane through P1-P2 that holds the UCS Z axis.
Variant Mirror(Entity& s, CallArgs& a) {
  const Vec3 p1 = PointArg(a[0], {"Point1", kMirror});
  const Vec3 p2 = PointArg(a[1], {"Point2", kMirror});
  if (As<AttributeRef>(&s)) throw HostError(HostFailure::kNotApplicable);
  Document& doc = *s.document();
  const Vec3 normal = geometry::Cross(p2 - p1, UcsZAxis(doc));
  const auto m = geometry::IsClose(p1, p2) ? std::nullopt : Matrix4::Mirror(p1, normal);
  if (!m) throw HostError(HostFailure::kInvalidInput);
  BlockRecord* block = s.block();
  if (!block) throw HostError(HostFailure::kNotApplicable);
  Entity* copy = s.CloneInto(block);
  TransformEntity(*copy, *m, KeepTextReadable(doc));
  return Variant(doc.Ref(copy));
}

// TransformBy(TransformationMatrix): a 4x4 Double array, row by row, the
// translation in the last column.
Variant TransformBy(Entity& s, CallArgs& a) {
  const Variant& v = a[0];
  if (!v.IsArray() || v.Array().Dims() != 2 || v.Array().Count() != 16) {
    throw InvalidArgument("TransformationMatrix", "TransformBy");
  }
  const SafeArray& arr = v.Array();
  Matrix4 m;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      const Variant& x = arr.At({arr.LBound(1) + r, arr.LBound(2) + c});
      if (!x.IsNumber()) throw InvalidArgument("TransformationMatrix", "TransformBy");
      m(r, c) = NumberOf(x);
    }
  }
  if (!m.IsFinite() || m(3, 0) != 0 || m(3, 1) != 0 || m(3, 2) != 0 || m(3, 3) != 1 ||
      !m.Inverse()) {
    throw HostError(HostFailure::kInvalidInput);
  }
  TransformEntity(s, m, KeepTextReadable(*s.document()));
  return Variant();
}

Variant Explode(Entity& s, CallArgs&) {
  std::vector<ObjectRef> out;
  for (Entity* e : ExplodeEntity(s)) out.push_back(s.document()->Ref(e));
  return ObjectsValue(out);
}

}  // namespace

void AddEntityGeometryMembers(MemberTable<Entity>& t) {
  t.Method("GetBoundingBox", GetBoundingBox, 2, 2).Outs({0, 1});
  t.Method("IntersectWith", IntersectWith, 2, 2);
  t.Method("Move", Move, 2, 2);
  t.Method("Rotate", Rotate, 2, 2);
  t.Method("Rotate3D", Rotate3D, 3, 3);
  t.Method("ScaleEntity", ScaleEntity, 2, 2);
  t.Method("Mirror", Mirror, 2, 2);
  t.Method("TransformBy", TransformBy, 1, 1);
  t.Method("Explode", Explode, 0, 0);
}

}  // namespace tovik::host
