// Polylines and loops: the host's lightweight polylines (and lines, arcs,
// circles) to and from the companion geometry's Loop7, in millimetres
// through the millimetre factor of the block that holds the polyline.
#include <array>
#include <cmath>

#include "document/units.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_number.h"
#include "frame/runtime_text.h"
#include "frame/value_helpers.h"
#include "geometry/vector_service.h"
#include "selection/dynamic_ss.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

bool Flag(const Variant& v) { return !v.IsMissing() && !v.IsEmpty() && CBool(v); }

ObjectRef SpaceOr(const ObjectRef& block) { return block ? block : AcadSpace::CurSpace(); }

void Append(std::vector<double>& list, const Variant& point) {
  geometry::Vec3 p = VectorOf(point);
  list.push_back(p.x);
  list.push_back(p.y);
}

// Drawing units of `block` per millimetre, or 1 when NoMMConv.
double FactorOf(const ObjectRef& block, bool no_mm_conversion) {
  return no_mm_conversion ? 1.0 : MillimetreFactor(block);
}

// The points that stand for an entity when testing it against a loop.
std::vector<geometry::Vec2> CollectEntityPoints(const ObjectRef& ent) {
  std::vector<geometry::Vec2> points;
  std::string type(ent->TypeName());
  if (!type.empty() && type.back() == '2') type.pop_back();
  auto add = [&](const char* member) {
    geometry::Vec3 p = VectorOf(GetProperty(ent, member));
    points.push_back({p.x, p.y});
  };
  if (type == "IAcadLine" || type == "IAcadArc") {
    add("StartPoint");
    add("EndPoint");
  } else if (type == "IAcadCircle" || type == "IAcadEllipse") {
    add("Center");
  } else if (type == "IAcadBlockReference" || type == "IAcadText" || type == "IAcadMText" ||
             type == "IAcadAttribute") {
    add("InsertionPoint");
  } else if (type == "IAcadHatch") {
    add("Origin");
  } else if (type == "IAcadPoint") {
    add("Coordinates");
  }
  return points;
}

}  // namespace

void AcadSpace::LwPlineCoords(const ObjectRef& pline, Variant& coords, Variant& bulges) {
  coords = GetProperty(pline, "Coordinates");
  const int32_t n = coords.Array().Count() / 2;
  SafeArray out(VarType::kDouble, 0, n);
  for (int32_t i = 0; i < n; ++i) out.Set(i, CallMethod(pline, "GetBulge", {Variant(i)}));
  bulges = Variant(std::move(out));
}

std::shared_ptr<Loop7> AcadSpace::LwPlineToLoop7(const ObjectRef& ent, const Variant& no_close,
                                                 const Variant& no_mm_conversion) {
  const bool open = Flag(no_close);
  std::vector<double> vertices, bulges;
  const Variant entity(ent);
  if (TypeNameLike(entity, "IAcadCircle*")) {
    geometry::Vec3 c = VectorOf(GetProperty(ent, "Center"));
    double r = CDbl(GetProperty(ent, "Radius"));
    vertices = {c.x - r, c.y, c.x + r, c.y};
    bulges = {1, 1};
    if (open) vertices.insert(vertices.end(), {c.x - r, c.y});
  } else if (TypeNameLike(entity, "IAcadLine*")) {
    Append(vertices, GetProperty(ent, "StartPoint"));
    Append(vertices, GetProperty(ent, "EndPoint"));
    bulges = {0, 0};
  } else if (TypeNameLike(entity, "IAcadArc*")) {
    Append(vertices, GetProperty(ent, "StartPoint"));
    Append(vertices, GetProperty(ent, "EndPoint"));
    bulges = {std::tan(CDbl(GetProperty(ent, "TotalAngle")) / 4), 0};
  } else {
    Variant coords, bulge_list;
    LwPlineCoords(ent, coords, bulge_list);
    vertices = coords.Array().ToDoubles();
    bulges = bulge_list.Array().ToDoubles();
    if (open && CBool(GetProperty(ent, "Closed")) && vertices.size() >= 2) {
      vertices.insert(vertices.end(), {vertices[0], vertices[1]});
    }
  }
  const double f = FactorOf(Block_OwnerOf(ent, Variant(false)), Flag(no_mm_conversion));
  if (f != 1.0) {
    for (double& v : vertices) v = DivideDoubles(v, f);
  }
  auto loop = Loop7::Make();
  loop->SetVertices(Variant(SafeArray::OfDoubles(vertices)), Variant(SafeArray::OfDoubles(bulges)), open);
  return loop;
}

ObjectRef AcadSpace::LwPlineFromLoop7(const Loop7& loop, const ObjectRef& acad_block,
                                      const Variant& no_mm_conversion) {
  ObjectRef block = SpaceOr(acad_block);
  std::vector<double> vertices = loop.Vertices().Array().ToDoubles();
  const double f = FactorOf(block, Flag(no_mm_conversion));
  if (f != 1.0) {
    for (double& v : vertices) v *= f;
  }
  ObjectRef pline = AddLwPolyline(block, Variant(SafeArray::OfDoubles(vertices)), loop.Bulges(), Variant::Missing());
  LetProperty(pline, "Closed", Variant(true));
  return pline;
}

std::shared_ptr<Loop7s> AcadSpace::LwPlinesToLoop7s(DynamicSS& plines, const Variant& no_mm_conversion) {
  auto loops = Loop7s::Make();
  for (int32_t i = 0; i < plines.Count(); ++i) {
    loops->Add(LwPlineToLoop7(plines.At(i).Object(), Variant(false), no_mm_conversion));
  }
  loops->ClassifyByNesting();
  return loops;
}

std::shared_ptr<DynamicSS> AcadSpace::LwPlineFromLoop7s(const Loop7s& loops, const ObjectRef& acad_block,
                                                        const HatchRequest& hatch) {
  ObjectRef block = SpaceOr(acad_block);
  auto set = DynamicSS::Create();
  std::vector<ObjectRef> outer, inner;
  for (int32_t i = 0; i < loops.Count(); ++i) {
    ObjectRef pline = LwPlineFromLoop7(*loops.Item(i), block, hatch.no_mm_conversion);
    set->Add(Variant(SafeArray::Of({Variant(pline)})));
    (loops.Item(i)->is_outer() ? outer : inner).push_back(pline);
  }
  if (hatch.make) {
    ObjectRef made = CallMethod(block, "AddHatch",
                                {Variant(hatch.pattern_type), Variant(hatch.pattern_name), Variant(true),
                                 Variant(hatch.object_type)})
                         .Object();
    auto one = [](const ObjectRef& pline) { return Variant(SafeArray::OfObjects({pline})); };
    for (const ObjectRef& pline : outer) CallMethod(made, "AppendOuterLoop", {one(pline)});
    for (const ObjectRef& pline : inner) CallMethod(made, "AppendInnerLoop", {one(pline)});
    if (hatch.made) *hatch.made = Variant(made);
  }
  return set;
}

void AcadSpace::LwPlinesSplit(DynamicSS& plines, const Variant& start_point, const Variant& end_point,
                              Variant& upper, Variant& lower) {
  auto up = Loop7s::Make(), down = Loop7s::Make();
  if (plines.size() > 0) {
    std::shared_ptr<Loop7s> loops = LwPlinesToLoop7s(plines, Variant(false));
    // The line is given in drawing units; the loops are in millimetres.
    const double f = MillimetreFactor(Block_OwnerOf(plines.At(0).Object(), Variant(false)));
    geometry::Vec3 from = VectorOf(start_point), to = VectorOf(end_point);
    loops->Split({DivideDoubles(from.x, f), DivideDoubles(from.y, f)},
                 {DivideDoubles(to.x, f), DivideDoubles(to.y, f)}, *up, *down);
  }
  upper = Variant(ObjectRef(up));
  lower = Variant(ObjectRef(down));
}

bool AcadSpace::LwPlineBoundTo(const ObjectRef& lw_pline, const ObjectRef& acad_ent) {
  std::shared_ptr<Loop7> loop = LwPlineToLoop7(lw_pline, Variant(false), Variant(false));
  const double f = MillimetreFactor(Block_OwnerOf(lw_pline, Variant(false)));
  std::vector<geometry::Vec2> points = CollectEntityPoints(acad_ent);
  if (points.empty()) return false;
  for (const geometry::Vec2& p : points) {
    if (!loop->Contains({DivideDoubles(p.x, f), DivideDoubles(p.y, f)})) return false;
  }
  return true;
}

ObjectRef AcadSpace::AddLwPolyline(const ObjectRef& acad_block, const Variant& coordinates,
                                   const Variant& bulges, const Variant& closed) {
  ObjectRef pline = CallMethod(SpaceOr(acad_block), "AddLightWeightPolyline", {coordinates}).Object();
  if (!bulges.IsMissing() && !bulges.IsEmpty()) {
    const SafeArray& list = bulges.Array();
    for (int32_t i = 0; i < list.Count(); ++i) {
      CallMethod(pline, "SetBulge", {Variant(static_cast<int16_t>(i)), list.At(i)});
    }
  }
  if (Flag(closed)) LetProperty(pline, "Closed", Variant(true));
  return pline;
}

ObjectRef AcadSpace::LwRectangle(const Variant& point1, const Variant& point2, const ObjectRef& acad_block) {
  geometry::Vec3 a = VectorOf(point1), b = VectorOf(point2);
  return AddLwPolyline(acad_block, Variant(SafeArray::OfDoubles({a.x, a.y, a.x, b.y, b.x, b.y, b.x, a.y})),
                       Variant::Missing(), Variant(true));
}

ObjectRef AcadSpace::TextBoundPline(const ObjectRef& text, const Variant& shrink, const Variant& shr_abs) {
  ObjectRef drawing = GetProperty(text, "Document").Object();
  CallMethod(drawing, "SetVariable", {Variant("USERS1"), Variant("TextBox")});
  CallMethod(drawing, "SetVariable", {Variant("USERS2"), GetProperty(text, "Handle")});
  CallMethod(drawing, "SendCommand", {Variant("(TOVIK_COM) ")});
  std::vector<geometry::Vec2> corners;
  for (const std::string& pair : Split(CStr(CallMethod(drawing, "GetVariable", {Variant("USERS3")})), " ")) {
    std::vector<std::string> xy = Split(pair, ",");
    if (xy.size() == 2) corners.push_back({CDbl(Variant(xy[0])), CDbl(Variant(xy[1]))});
  }
  if (corners.size() != 4) {
    // No answer for this kind (a multiline text): its extents.
    std::array<Variant, 2> box;
    CallMethodRef(text, "GetBoundingBox", box);
    geometry::Vec3 lo = VectorOf(box[0]), hi = VectorOf(box[1]);
    corners = {{lo.x, lo.y}, {hi.x, lo.y}, {hi.x, hi.y}, {lo.x, hi.y}};
  }
  // A factor about the centre, or with ShrAbs a margin (positive grows).
  geometry::Vec2 centre = (corners[0] + corners[2]) * 0.5;
  const double s = shrink.IsMissing() ? (Flag(shr_abs) ? 0.0 : 1.0) : CDbl(shrink);
  std::vector<double> list;
  for (const geometry::Vec2& c : corners) {
    geometry::Vec2 d = c - centre;
    if (Flag(shr_abs)) {
      // Along the box's own diagonal, so a turned box keeps its turn.
      geometry::Vec2 u = corners[1] - corners[0], v = corners[3] - corners[0];
      double lu = std::hypot(u.x, u.y), lv = std::hypot(v.x, v.y);
      geometry::Vec2 du = lu > 0 ? u / lu : geometry::Vec2{1, 0}, dv = lv > 0 ? v / lv : geometry::Vec2{0, 1};
      double su = (d.x * du.x + d.y * du.y) >= 0 ? 1 : -1, sv = (d.x * dv.x + d.y * dv.y) >= 0 ? 1 : -1;
      d = d + du * (su * s) + dv * (sv * s);
    } else {
      d = d * s;
    }
    list.push_back(centre.x + d.x);
    list.push_back(centre.y + d.y);
  }
  return AddLwPolyline(Block_OwnerOf(text, Variant(false)), Variant(SafeArray::OfDoubles(list)),
                       Variant::Missing(), Variant(true));
}

}  // namespace tovik
