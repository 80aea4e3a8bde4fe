// The entity factories of a block definition: AddLine, AddCircle, ...,
// InsertBlock. Every new entity gets the current layer and ByLayer
// properties and is appended to the block.
#include <cmath>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/copying/copy_objects.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/surface/args.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

template <class K>
K* NewEntity(BlockRecord& block) {
  Document* doc = block.document();
  K* e = doc->Create<K>();
  doc->InitEntity(e);
  return e;
}

template <class K>
Variant Finish(BlockRecord& block, K* e) {
  block.Append(e);
  return Variant(block.document()->Ref(e));
}

double PositiveRadius(const Variant& v, std::string_view member) {
  double r = DoubleArg(v, {"Radius", member});
  if (!(r > 0)) throw HostError(HostFailure::kInvalidInput);
  return r;
}

// True when `target`'s definition contains a reference to `block`,
// directly or through nested references.
bool Contains(const BlockRecord* target, const BlockRecord* block) {
  if (target == block) return true;
  for (const Entity* e : target->entities()) {
    const auto* ref = As<BlockRef>(e);
    if (ref && !ref->erased() && Contains(ref->data().block, block)) return true;
  }
  return false;
}

Vec3 RotateZ(const Vec3& p, double angle) {
  double c = std::cos(angle), s = std::sin(angle);
  return {p.x * c - p.y * s, p.x * s + p.y * c, p.z};
}

Variant InsertBlock(BlockRecord& s, CallArgs& a) {
  constexpr std::string_view kMember = "InsertBlock";
  Vec3 at = PointArg(a[0], {"InsertionPoint", kMember});
  std::string name = StringArg(a[1], {"Name", kMember});
  Vec3 scale{DoubleArg(a[2], {"Xscale", kMember}), DoubleArg(a[3], {"Yscale", kMember}),
             DoubleArg(a[4], {"Zscale", kMember})};
  double rotation = a.Has(5) ? DoubleArg(a[5], {"Rotation", kMember}) : 0.0;
  Document* doc = s.document();
  BlockRecord* block = doc->blocks().Find(name);
  // Name may be a drawing file: it becomes the block's definition.
  if (!block) block = BlockFromDrawingFile(*doc, name);
  if (!block) throw HostError(HostFailure::kKeyNotFound);
  if (scale.x == 0 || scale.y == 0 || scale.z == 0) {
    throw HostError(HostFailure::kInvalidInput);
  }
  if (block->IsLayout() || Contains(block, &s)) throw HostError(HostFailure::kInvalidInput);
  auto* ref = NewEntity<BlockRef>(s);
  BlockRef::Data& d = ref->mutable_data();
  d.block = block;
  d.insertion = at;
  d.scale = scale;
  d.rotation = rotation;
  if (block->IsDynamic()) {
    d.dynamic_source = block;
    d.dynamic_properties = block->data().dynamic_properties;
  }
  Finish(s, ref);
  // One attribute reference per non-constant definition, in order.
  for (const Entity* e : block->entities()) {
    const auto* def = As<AttributeDef>(e);
    if (!def || def->erased() || (def->data().mode & kAttConstant)) continue;
    auto* att = doc->Create<AttributeRef>();
    doc->InitEntity(att);
    att->mutable_props() = def->props();
    AttributeRef::Data& ad = att->mutable_data();
    static_cast<TextData&>(ad) = def->data();
    ad.tag = def->data().tag;
    ad.mode = def->data().mode;
    auto place = [&](const Vec3& p) {
      Vec3 local = p - block->data().origin;
      Vec3 scaled{local.x * scale.x, local.y * scale.y, local.z * scale.z};
      return at + RotateZ(scaled, rotation);
    };
    ad.insertion = place(def->data().insertion);
    ad.alignment = place(def->data().alignment);
    ad.rotation = def->data().rotation + rotation;
    ad.height = def->data().height * std::fabs(scale.y);
    ref->AppendAttribute(att);
  }
  return Variant(doc->Ref(ref));
}

Variant AddAttribute(BlockRecord& s, CallArgs& a) {
  constexpr std::string_view kMember = "AddAttribute";
  double height = DoubleArg(a[0], {"Height", kMember});
  int32_t mode = LongArg(a[1], {"Mode", kMember});
  std::string prompt = StringArg(a[2], {"Prompt", kMember});
  Vec3 at = PointArg(a[3], {"InsertionPoint", kMember});
  std::string tag = StringArg(a[4], {"Tag", kMember});
  std::string value = StringArg(a[5], {"Value", kMember});
  if (!(height > 0) || mode < 0 || mode > 63 || tag.empty() ||
      tag.find_first_of(" !") != std::string::npos) {
    throw HostError(HostFailure::kInvalidInput);
  }
  auto* def = NewEntity<AttributeDef>(s);
  AttributeDef::Data& d = def->mutable_data();
  d.height = height;
  d.mode = mode;
  d.prompt = prompt;
  d.insertion = at;
  d.tag = UCase(tag);
  d.text = value;
  d.style = s.document()->active_text_style();
  return Finish(s, def);
}

}  // namespace

void RegisterBlockFactories(MemberTable<BlockRecord>& t) {
  t.Method(
      "AddLine",
      [](BlockRecord& s, CallArgs& a) {
        Vec3 p1 = PointArg(a[0], {"StartPoint", "AddLine"});
        Vec3 p2 = PointArg(a[1], {"EndPoint", "AddLine"});
        auto* e = NewEntity<Line>(s);
        e->mutable_data().start = p1;
        e->mutable_data().end = p2;
        return Finish(s, e);
      },
      2, 2);
  t.Method(
      "AddCircle",
      [](BlockRecord& s, CallArgs& a) {
        Vec3 c = PointArg(a[0], {"Center", "AddCircle"});
        double r = PositiveRadius(a[1], "AddCircle");
        auto* e = NewEntity<Circle>(s);
        e->mutable_data().center = c;
        e->mutable_data().radius = r;
        return Finish(s, e);
      },
      2, 2);
  t.Method(
      "AddArc",
      [](BlockRecord& s, CallArgs& a) {
        Vec3 c = PointArg(a[0], {"Center", "AddArc"});
        double r = PositiveRadius(a[1], "AddArc");
        double a1 = DoubleArg(a[2], {"StartAngle", "AddArc"});
        double a2 = DoubleArg(a[3], {"EndAngle", "AddArc"});
        auto* e = NewEntity<Arc>(s);
        e->mutable_data().center = c;
        e->mutable_data().radius = r;
        e->mutable_data().start_angle = geometry::NormalizeAngle(a1);
        e->mutable_data().end_angle = geometry::NormalizeAngle(a2);
        return Finish(s, e);
      },
      4, 4);
  t.Method(
      "AddEllipse",
      [](BlockRecord& s, CallArgs& a) {
        Vec3 c = PointArg(a[0], {"Center", "AddEllipse"});
        Vec3 major = PointArg(a[1], {"MajorAxis", "AddEllipse"});
        double ratio = DoubleArg(a[2], {"RadiusRatio", "AddEllipse"});
        if (!(ratio > 0 && ratio <= 1) || geometry::Length(major) <= geometry::kAbsTol) {
          throw HostError(HostFailure::kInvalidInput);
        }
        auto* e = NewEntity<Ellipse>(s);
        e->mutable_data().center = c;
        e->mutable_data().major_axis = major;
        e->mutable_data().radius_ratio = ratio;
        return Finish(s, e);
      },
      3, 3);
  t.Method(
      "AddPoint",
      [](BlockRecord& s, CallArgs& a) {
        Vec3 p = PointArg(a[0], {"Point", "AddPoint"});
        auto* e = NewEntity<PointEntity>(s);
        e->mutable_data().position = p;
        return Finish(s, e);
      },
      1, 1);
  t.Method(
      "AddLightWeightPolyline",
      [](BlockRecord& s, CallArgs& a) {
        std::vector<double> xy = DoublesArg(a[0], {"VerticesList", "AddLightWeightPolyline"});
        if (xy.size() < 4 || xy.size() % 2 != 0) {
          throw InvalidArgument("VerticesList", "AddLightWeightPolyline");
        }
        auto* e = NewEntity<LwPolyline>(s);
        for (size_t i = 0; i < xy.size(); i += 2) {
          e->mutable_data().vertices.push_back({{xy[i], xy[i + 1]}});
        }
        return Finish(s, e);
      },
      1, 1);
  t.Method(
      "AddText",
      [](BlockRecord& s, CallArgs& a) {
        std::string text = StringArg(a[0], {"TextString", "AddText"});
        Vec3 at = PointArg(a[1], {"InsertionPoint", "AddText"});
        double height = DoubleArg(a[2], {"Height", "AddText"});
        if (!(height > 0)) throw HostError(HostFailure::kInvalidInput);
        auto* e = NewEntity<Text>(s);
        TextData& d = e->mutable_data();
        d.text = text;
        d.insertion = at;
        d.height = height;
        d.style = s.document()->active_text_style();
        return Finish(s, e);
      },
      3, 3);
  t.Method(
      "AddMText",
      [](BlockRecord& s, CallArgs& a) {
        Vec3 at = PointArg(a[0], {"InsertionPoint", "AddMText"});
        double width = DoubleArg(a[1], {"Width", "AddMText"});
        std::string text = StringArg(a[2], {"Text", "AddMText"});
        if (width < 0) throw HostError(HostFailure::kInvalidInput);
        auto* e = NewEntity<MText>(s);
        e->mutable_data().insertion = at;
        e->mutable_data().width = width;
        e->mutable_data().text = text;
        e->mutable_data().style = s.document()->active_text_style();
        return Finish(s, e);
      },
      3, 3);
  t.Method(
      "AddHatch",
      [](BlockRecord& s, CallArgs& a) {
        int32_t type = LongArg(a[0], {"PatternType", "AddHatch"});
        std::string name = StringArg(a[1], {"PatternName", "AddHatch"});
        bool associative = BoolArg(a[2], {"Associativity", "AddHatch"});
        int32_t object_type = a.Has(3) ? LongArg(a[3], {"HatchObjectType", "AddHatch"}) : 0;
        if (type < 0 || type > 2 || object_type < 0 || object_type > 1 || name.empty()) {
          throw HostError(HostFailure::kInvalidInput);
        }
        auto* e = NewEntity<Hatch>(s);
        e->mutable_data().pattern_type = type;
        e->mutable_data().pattern_name = UCase(name);
        e->mutable_data().associative = associative;
        e->mutable_data().object_type = object_type;
        return Finish(s, e);
      },
      3, 4);
  t.Method("AddAttribute", AddAttribute, 6, 6);
  t.Method("InsertBlock", InsertBlock, 5, 7);
}

}  // namespace tovik::host
