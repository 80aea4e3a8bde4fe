// Sub-entities: entities inside nested block references, picked, shown
// highlighted where they are drawn, copied out to that place, and their
// outlines brought into the current space.
#include <array>
#include <cmath>

#include "document/units.h"
#include "frame/conversions.h"
#include "frame/host_link.h"
#include "frame/runtime_text.h"
#include "frame/value_helpers.h"
#include "geometry/trans_matrix.h"
#include "geometry/vector_service.h"
#include "selection/dynamic_ss.h"
#include "toolkit/acad_space.h"
#include "toolkit/object_identity.h"

namespace tovik {
namespace {

using geometry::Vec3;

double Element(const ObjectRef& matrix, int32_t row, int32_t column) {
  return CDbl(GetProperty(matrix, "Matrix", {Variant(row), Variant(column)}));
}

Vec3 Column(const ObjectRef& matrix, int32_t column) {
  return {Element(matrix, 0, column), Element(matrix, 1, column), Element(matrix, 2, column)};
}

// A 4 x 4 placement given as a TransMatrix or as the host's 4 x 4 array.
geometry::Matrix4 PlacementOf(const Variant& value) {
  if (std::shared_ptr<TransMatrix> m = ObjectAs<TransMatrix>(value)) return m->ToMatrix4();
  geometry::Matrix4 out;
  const SafeArray& a = value.Array();
  for (int32_t r = 0; r < 4; ++r) {
    for (int32_t c = 0; c < 4; ++c) out(r, c) = CDbl(a.At({a.LBound(1) + r, a.LBound(2) + c}));
  }
  return out;
}

}  // namespace

void AcadSpace::SubEntSelect(Variant& sub_ent, Variant& nest_ids, const Variant& prefer_names) {
  ObjectRef utility = GetProperty(CurrentDrawing(), "Utility").Object();
  std::array<Variant, 4> picked;
  CallMethodRef(utility, "GetSubEntity", picked);
  // The host lists the containing references innermost first.
  std::vector<Variant> chain;
  if (picked[3].IsArray()) {
    for (const Variant& id : picked[3].Array().Items()) chain.insert(chain.begin(), id);
  }
  std::vector<std::string> patterns;
  if (prefer_names.IsArray()) {
    for (const Variant& p : prefer_names.Array().Items()) patterns.push_back(UCase(CStr(p)));
  }
  ObjectRef doc;
  sub_ent = picked[0];
  size_t kept = chain.size();
  // The outermost reference whose effective name is preferred is picked
  // instead; its containers stay the chain.
  for (size_t i = 0; i < chain.size() && !patterns.empty(); ++i) {
    ObjectRef ref = ObjectFromId(chain[i], doc);
    if (!TypeNameLike(Variant(ref), "IAcadBlockReference*")) continue;
    std::string name = UCase(CStr(GetProperty(ref, "EffectiveName")));
    bool preferred = false;
    for (const std::string& p : patterns) preferred = preferred || Like(name, p).value_or(false);
    if (preferred) {
      sub_ent = Variant(ref);
      kept = i;
      break;
    }
  }
  for (size_t i = 0; i < kept; ++i) InsertElement(nest_ids, chain[i]);
}

void AcadSpace::SubEntHighlight(const ObjectRef& sub_ent, const Variant& nest_ids, Variant& copy_ent) {
  std::shared_ptr<TransMatrix> acc;
  const int16_t count = ElementCount(nest_ids);
  for (int16_t i = 0; i < count; ++i) {
    const SafeArray& ids = nest_ids.Array();
    ObjectRef doc;
    ObjectRef ref = ObjectFromId(Variant(CLng(ids.At(ids.LBound() + i))), doc);
    auto m = ObjectAs<TransMatrix>(Variant(BRef_TransMatrix(ref, Variant(false))));
    acc = acc ? acc->Times(*m) : m;
  }
  ObjectRef shown = sub_ent;
  if (!acc) {
    CallMethod(sub_ent, "Highlight", {Variant(true)});
  } else {
    SubEntCopy(sub_ent, Variant(ObjectRef(acc)), copy_ent);
    shown = copy_ent.Object();
    CallMethod(shown, "Highlight", {Variant(true)});
  }
  SharedHighlightSet()->Add(Variant(SafeArray::Of({Variant(shown)})));
}

void AcadSpace::SubEntCopy(const ObjectRef& sub_ent, const Variant& matrix, Variant& copy_ent) {
  ObjectRef source = sub_ent;
  if (TypeNameLike(Variant(sub_ent), "IAcadAttributeReference*")) {
    ObjectRef doc;
    source = ObjectFromId(OwnerIdOf(sub_ent), doc);
  }
  ObjectRef space = CurSpace();
  Variant copies = CallMethod(CurrentDrawing(), "CopyObjects", {Variant(SafeArray::OfObjects({source})), Variant(space)});
  ObjectRef copy = copies.Array().At(copies.Array().LBound()).Object();
  copy_ent = Variant(copy);
  const ObjectRef& m = matrix.Object();
  const Vec3 x = Column(m, 0), y = Column(m, 1), t = Column(m, 3);
  const double s = geometry::Length(x);
  const bool mirrored = geometry::Dot(geometry::Cross(x, y), Column(m, 2)) < 0;
  const bool uneven = std::fabs(geometry::Length(y) - s) > 1e-9 * std::max(1.0, s);
  if (mirrored || uneven) {
    // Turning and one scale cannot mirror or stretch: the whole placement
    // is applied instead.
    SafeArray rows(VarType::kDouble, {{0, 4}, {0, 4}});
    for (int32_t r = 0; r < 4; ++r) {
      for (int32_t c = 0; c < 4; ++c) rows.Set({r, c}, Variant(r == 3 ? (c == 3 ? 1.0 : 0.0) : Element(m, r, c)));
    }
    CallMethod(copy, "TransformBy", {Variant(std::move(rows))});
    return;
  }
  Align3D(copy, PointOf({0, 0, 0}), PointOf({1, 0, 0}), PointOf({0, 1, 0}), PointOf(t), PointOf(t + x),
          PointOf(t + y));
  CallMethod(copy, "ScaleEntity", {PointOf(t), Variant(s)});
}

void AcadSpace::TransSubLoop7(const ObjectRef& sub_ent, const Variant& pp, const Variant& trans_matrix,
                              Variant& loop7, Variant& base_point, Variant& normal) {
  const geometry::Matrix4 placement = PlacementOf(trans_matrix);
  std::shared_ptr<Loop7> loop = LwPlineToLoop7(sub_ent, Variant(false), Variant(false));
  // Millimetres of the definition to drawing units, placed, back to
  // millimetres of the current space.
  const double from = MillimetreFactor(Block_OwnerOf(sub_ent, Variant(false)));
  const double to = MillimetreFactor(CurSpace());
  std::vector<double> xy = loop->Vertices().Array().ToDoubles();
  for (size_t i = 0; i + 1 < xy.size(); i += 2) {
    Vec3 p = placement.TransformPoint({xy[i] * from, xy[i + 1] * from, 0});
    xy[i] = p.x / to;
    xy[i + 1] = p.y / to;
  }
  const Vec3 x = placement.TransformVector({1, 0, 0}), y = placement.TransformVector({0, 1, 0});
  const Vec3 z = geometry::Cross(x, y);
  std::vector<double> bulges = loop->Bulges().Array().ToDoubles();
  if (z.z < 0) {
    for (double& b : bulges) b = -b;  // a mirrored placement turns arcs the other way
  }
  auto placed = Loop7::Make();
  placed->SetVertices(Variant(SafeArray::OfDoubles(xy)), Variant(SafeArray::OfDoubles(bulges)), false);
  loop7 = Variant(ObjectRef(placed));
  base_point = WCSPoint(pp);
  std::optional<Vec3> unit = geometry::Normalized(z);
  normal = PointOf(unit ? *unit : Vec3{0, 0, 1});
}

void AcadSpace::ClearHighlight() { SharedHighlightSet()->Highlight(false); }

}  // namespace tovik
