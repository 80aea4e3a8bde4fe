// Entities written from the live objects: every kind the host models, with
// the common properties (layer, linetype, material, colour and true colour,
// lineweight, linetype scale, visibility), thickness and normal, extended
// data, extension dictionary and group reactors; block references with
// their attributes and SEQEND. Hatches, dimensions and generic kinds are in
// write/entity_kinds.cpp, copies written from their source record in
// write/copies.cpp.
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/selection/entity_filter.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

bool IsZAxis(const Vec3& n) { return n.x == 0 && n.y == 0 && n.z == 1; }

Vec3 ToOcs(const Vec3& p, const Vec3& normal) {
  if (IsZAxis(normal)) return p;
  return geometry::WcsToOcs(p, normal).value_or(p);
}

// The entity type written for a live entity; empty when the host cannot
// write the kind from its own data.
std::string_view NewTypeOf(const Entity& e) {
  // A raster image needs an image definition the host does not keep.
  if (As<RasterImage>(&e)) return "";
  if (const auto* d = As<Dimension>(&e)) {
    // Arc-length and large radial dimensions need data the host does not keep.
    bool plain = d->data().kind != DimensionKind::kArcLength &&
                 d->data().kind != DimensionKind::kRadialLarge;
    return plain ? "DIMENSION" : "";
  }
  if (const auto* g = As<GenericEntity>(&e)) {
    switch (g->data().kind) {
      case GenericKind::kPolyline2d:
      case GenericKind::kPolyline3d:
      case GenericKind::kRay:
      case GenericKind::kXLine:
      case GenericKind::kSolid2d:
      case GenericKind::kTrace:
      case GenericKind::kFace3d: break;
      default: return "";  // kept only as the record it was read from
    }
  }
  return DxfNameOf(e);
}

}  // namespace

void DbWriter::EmitNew(const DbObject& object, uint64_t owner_handle) {
  // An object read from a file (an upgraded drawing's) spells the names it
  // uses as the file did.
  const Record* outer = spelling_;
  spelling_ = source_.records.ValueOr(&object, nullptr);
  struct Restore {
    const Record*& slot;
    const Record* value;
    ~Restore() { slot = value; }
  } restore{spelling_, outer};
  if (const auto* e = AsEntity(&object)) {
    EmitNewEntity(*e, owner_handle);
  } else if (dynamic_cast<const NamedRecord*>(&object) && !dynamic_cast<const Layout*>(&object) &&
             !dynamic_cast<const MaterialRecord*>(&object)) {
    EmitNewRecord(object, owner_handle);
  } else {
    EmitNewObject(object, owner_handle);
  }
}

void DbWriter::PutObjectHead(std::string_view type, const DbObject& object, uint64_t owner,
                             const std::vector<uint64_t>& reactors, int handle_code) {
  PutString(0, type);
  PutHandle(handle_code, object.handle());
  if (!reactors.empty()) {
    PutString(102, "{ACAD_REACTORS");
    for (uint64_t h : reactors) PutHandle(330, h);
    PutString(102, "}");
  }
  if (Written(object.xdict())) {
    PutString(102, "{ACAD_XDICTIONARY");
    PutHandle(360, object.xdict()->handle());
    PutString(102, "}");
  }
  PutHandle(330, owner);
}

void DbWriter::PutXData(const DbObject& object) {
  if (object.xdata() == nullptr) return;
  // Extended data unchanged since the file was read is written as it came.
  if (const Record* source_record = source_.records.ValueOr(&object, nullptr)) {
    auto binding = source_.bindings.find(source_record);
    if (binding != source_.bindings.end() && binding->second.loaded_xdata == object.xdata()) {
      const Record& record = *source_record;
      for (size_t i = record.Body().size(); i < record.tags.size(); ++i) Put(record.tags[i]);
      return;
    }
  }
  std::vector<Tag> tags;
  XDataTags(*object.xdata(), &tags);
  for (const Tag& t : tags) Put(t);
}

void DbWriter::EmitNewEntity(const Entity& e, uint64_t owner) {
  if (e.extra() != nullptr && WrittenFromSource(e) && EmitFromSourceTags(e, owner)) return;
  std::string_view type = NewTypeOf(e);
  if (type.empty()) return;  // nothing to write it from: see docs/dxf.md
  std::vector<uint64_t> reactors;
  if (const auto* groups = GroupsOf(&e)) {
    for (const Group* g : *groups) reactors.push_back(g->handle());
  }
  PutObjectHead(type, e, owner, reactors);
  PutString(100, "AcDbEntity");
  BlockRecord* block = e.block();
  if (const auto* att = As<AttributeRef>(&e)) {
    if (const auto* ref = AsEntity(att->owner())) block = ref->block();
  }
  if (block != nullptr && block->IsLayout() && block != doc_.model_space()) PutInt(67, 1);
  const EntityProps& p = e.props();
  PutString(8, p.layer != nullptr ? p.layer->Name() : "0");
  if (p.linetype != nullptr && p.linetype != doc_.bylayer_linetype()) PutString(6, p.linetype->Name());
  if (p.material != nullptr && p.material != doc_.bylayer_material() && Written(p.material)) {
    PutHandle(347, p.material->handle());
  }
  if (p.color.method == kColorByRgb) {
    PutInt(62, NearestAci(p.color.rgb));
  } else if (p.color.index != 256) {
    PutInt(62, p.color.index);
  }
  if (p.lineweight != -1) PutInt(370, p.lineweight);
  if (p.linetype_scale != 1) PutReal(48, p.linetype_scale);
  if (!p.visible) PutInt(60, 1);
  if (p.color.method == kColorByRgb) PutInt(420, p.color.rgb);
  EmitEntityGeometry(e);
  PutXData(e);
  if (const auto* ref = As<BlockRef>(&e)) {
    bool any = false;
    for (const AttributeRef* a : ref->attributes()) {
      if (!Written(a)) continue;
      EmitNew(*a, e.handle());
      any = true;
    }
    if (any) EmitSeqend(e);
  } else if (const auto* g = As<GenericEntity>(&e); g && type == "POLYLINE") {
    bool three_d = g->data().kind == GenericKind::kPolyline3d;
    const auto& d = g->data();
    for (size_t k = 0; k < d.points.size(); ++k) {
      PutString(0, "VERTEX");
      PutHandle(5, NextHandle());
      PutHandle(330, e.handle());
      PutString(100, "AcDbEntity");
      PutString(8, p.layer != nullptr ? p.layer->Name() : "0");
      PutString(100, "AcDbVertex");
      PutString(100, three_d ? "AcDb3dPolylineVertex" : "AcDb2dVertex");
      Vec3 v = d.points[k];
      if (!three_d) v.z = d.elevation;
      PutPoint(10, v);
      if (!three_d && k < d.bulges.size() && d.bulges[k] != 0) PutReal(42, d.bulges[k]);
      PutInt(70, three_d ? 32 : 0);
    }
    EmitSeqend(e);
  }
}

void DbWriter::EmitSeqend(const Entity& owner_entity) {
  PutString(0, "SEQEND");
  PutHandle(5, NextHandle());
  PutHandle(330, owner_entity.handle());
  PutString(100, "AcDbEntity");
  const LayerRecord* layer = owner_entity.props().layer;
  PutString(8, layer != nullptr ? layer->Name() : "0");
}

void DbWriter::PutThickness(double thickness) {
  if (thickness != 0) PutReal(39, thickness);
}

void DbWriter::PutNormal(const Vec3& normal) {
  if (!IsZAxis(normal)) PutPoint(210, normal);
}

void DbWriter::PutMTextChunks(std::string_view text) {
  std::string_view s = text;
  while (s.size() > 250) {
    size_t cut = 250;
    while (cut > 0 && (static_cast<unsigned char>(s[cut]) & 0xC0) == 0x80) --cut;
    PutString(3, s.substr(0, cut));
    s.remove_prefix(cut);
  }
  PutString(1, s);
}

void DbWriter::EmitEntityGeometry(const Entity& entity) {
  switch (entity.Kind()) {
    case EntityKind::kLine: return EmitLineGeometry(static_cast<const Line&>(entity));
    case EntityKind::kCircle: return EmitCircleGeometry(static_cast<const Circle&>(entity));
    case EntityKind::kArc: return EmitArcGeometry(static_cast<const Arc&>(entity));
    case EntityKind::kPoint: return EmitPointGeometry(static_cast<const PointEntity&>(entity));
    case EntityKind::kEllipse: return EmitEllipseGeometry(static_cast<const Ellipse&>(entity));
    case EntityKind::kLwPolyline:
      return EmitLwPolylineGeometry(static_cast<const LwPolyline&>(entity));
    case EntityKind::kText:
    case EntityKind::kAttributeDef:
    case EntityKind::kAttributeRef: return EmitTextGeometry(entity);
    case EntityKind::kMText: return EmitMTextGeometry(static_cast<const MText&>(entity));
    case EntityKind::kBlockRef: return EmitBlockRefGeometry(static_cast<const BlockRef&>(entity));
    case EntityKind::kHatch: return EmitHatchGeometry(static_cast<const Hatch&>(entity));
    case EntityKind::kDimension:
      return EmitDimensionGeometry(static_cast<const Dimension&>(entity));
    case EntityKind::kWipeout: return EmitWipeoutGeometry(static_cast<const Wipeout&>(entity));
    // A raster image is never written from the host's data (NewTypeOf).
    case EntityKind::kRasterImage: return;
    case EntityKind::kGeneric:
      return EmitGenericGeometry(static_cast<const GenericEntity&>(entity));
  }
}

void DbWriter::EmitLineGeometry(const Line& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kLine).subclass);
  PutThickness(d.thickness);
  PutPoint(10, d.start);
  PutPoint(11, d.end);
  PutNormal(d.normal);
}

void DbWriter::EmitCircleGeometry(const Circle& o) {
  const auto& d = o.data();
  PutCircleGroups(d.center, d.radius, d.normal, d.thickness);
}

void DbWriter::EmitArcGeometry(const Arc& o) {
  const auto& d = o.data();
  PutCircleGroups(d.center, d.radius, d.normal, d.thickness);
  PutString(100, InfoOf(EntityKind::kArc).second_subclass);
  PutReal(50, d.start_angle * kRadToDeg);
  PutReal(51, d.end_angle * kRadToDeg);
}

void DbWriter::PutCircleGroups(const Vec3& center, double radius, const Vec3& normal,
                               double thickness) {
  PutString(100, InfoOf(EntityKind::kCircle).subclass);
  PutThickness(thickness);
  PutPoint(10, ToOcs(center, normal));
  PutReal(40, radius);
  PutNormal(normal);
}

void DbWriter::EmitPointGeometry(const PointEntity& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kPoint).subclass);
  PutPoint(10, d.position);
  PutThickness(d.thickness);
  PutNormal(d.normal);
}

void DbWriter::EmitEllipseGeometry(const Ellipse& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kEllipse).subclass);
  PutPoint(10, d.center);
  PutPoint(11, d.major_axis);
  PutPoint(210, d.normal);
  PutReal(40, d.radius_ratio);
  PutReal(41, d.start_param);
  PutReal(42, d.end_param);
}

void DbWriter::EmitLwPolylineGeometry(const LwPolyline& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kLwPolyline).subclass);
  PutInt(90, static_cast<int64_t>(d.vertices.size()));
  PutInt(70, (d.closed ? 1 : 0) | (d.plinegen ? 128 : 0));
  bool widths = false;
  for (const auto& v : d.vertices) widths |= v.start_width != 0 || v.end_width != 0;
  if (!widths && d.constant_width != 0) PutReal(43, d.constant_width);
  if (d.elevation != 0) PutReal(38, d.elevation);
  PutThickness(d.thickness);
  for (const auto& v : d.vertices) {
    PutPoint2(10, v.point.x, v.point.y);
    if (widths) {
      PutReal(40, v.start_width);
      PutReal(41, v.end_width);
    }
    if (v.bulge != 0) PutReal(42, v.bulge);
  }
  PutNormal(d.normal);
}

void DbWriter::EmitMTextGeometry(const MText& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kMText).subclass);
  PutPoint(10, d.insertion);
  PutReal(40, d.height);
  PutReal(41, d.width);
  PutInt(71, d.attachment);
  PutInt(72, d.drawing_direction);
  PutMTextChunks(d.text);
  PutString(7, d.style != nullptr ? d.style->Name() : "Standard");
  PutNormal(d.normal);
  if (d.rotation != 0) PutReal(50, d.rotation * kRadToDeg);
  PutInt(73, 1);
  PutReal(44, d.line_spacing_factor);
}

void DbWriter::EmitBlockRefGeometry(const BlockRef& o) {
  const auto& d = o.data();
  bool grid = d.columns > 1 || d.rows > 1;
  PutString(100, grid ? "AcDbMInsertBlock" : "AcDbBlockReference");
  bool attributes = false;
  for (const AttributeRef* a : o.attributes()) attributes |= Written(a);
  if (attributes) PutInt(66, 1);
  PutString(2, d.block != nullptr ? d.block->Name() : "");
  PutPoint(10, ToOcs(d.insertion, d.normal));
  if (d.scale.x != 1) PutReal(41, d.scale.x);
  if (d.scale.y != 1) PutReal(42, d.scale.y);
  if (d.scale.z != 1) PutReal(43, d.scale.z);
  if (d.rotation != 0) PutReal(50, d.rotation * kRadToDeg);
  if (grid) {
    PutInt(70, d.columns);
    PutInt(71, d.rows);
    PutReal(44, d.column_spacing);
    PutReal(45, d.row_spacing);
  }
  PutNormal(d.normal);
}

void DbWriter::EmitWipeoutGeometry(const Wipeout& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kWipeout).subclass);
  PutInt(90, 0);
  PutPoint(10, d.origin);
  PutPoint(11, d.u);
  PutPoint(12, d.v);
  PutPoint2(13, d.width_pixels, d.height_pixels);
  PutHandle(340, 0);
  PutInt(70, d.display_flags);
  PutInt(280, 1);
  PutInt(281, 50);
  PutInt(282, 50);
  PutInt(283, 0);
  PutHandle(360, 0);
  PutInt(71, d.clip.size() > 2 ? 2 : 1);
  PutInt(91, static_cast<int64_t>(d.clip.size()));
  for (const auto& c : d.clip) PutPoint2(14, c.x, c.y);
}

void DbWriter::EmitTextGeometry(const Entity& entity) {
  const TextData* t = nullptr;
  const AttributeDef* def = As<AttributeDef>(&entity);
  const AttributeRef* ref = As<AttributeRef>(&entity);
  if (def != nullptr) t = &def->data();
  if (ref != nullptr) t = &ref->data();
  if (const auto* text = As<Text>(&entity)) t = &text->data();
  auto [horizontal, vertical] = JustificationOf(t->alignment_mode);
  PutString(100, "AcDbText");
  if (t->thickness != 0) PutReal(39, t->thickness);
  PutPoint(10, ToOcs(t->insertion, t->normal));
  PutReal(40, t->height);
  PutString(1, t->text);
  if (t->rotation != 0) PutReal(50, t->rotation * kRadToDeg);
  if (t->width_factor != 1) PutReal(41, t->width_factor);
  if (t->oblique != 0) PutReal(51, t->oblique * kRadToDeg);
  PutString(7, t->style != nullptr ? t->style->Name() : "Standard");
  int generation = (t->backward ? 2 : 0) | (t->upside_down ? 4 : 0);
  if (generation != 0) PutInt(71, generation);
  if (horizontal != 0) PutInt(72, horizontal);
  if (t->alignment_mode != 0) PutPoint(11, ToOcs(t->alignment, t->normal));
  if (!IsZAxis(t->normal)) PutPoint(210, t->normal);
  if (def == nullptr && ref == nullptr) {
    PutString(100, "AcDbText");
    if (vertical != 0) PutInt(73, vertical);
    return;
  }
  int32_t mode = def != nullptr ? def->data().mode : ref->data().mode;
  PutString(100, def != nullptr ? "AcDbAttributeDefinition" : "AcDbAttribute");
  PutInt(280, 0);
  if (def != nullptr) PutString(3, def->data().prompt);
  PutString(2, def != nullptr ? def->data().tag : ref->data().tag);
  PutInt(70, mode & (kAttInvisible | kAttConstant | kAttVerify | kAttPreset));
  if (vertical != 0) PutInt(74, vertical);
  if (mode & kAttLockPosition) PutInt(280, 1);
}

}  // namespace tovik::host::dxf
