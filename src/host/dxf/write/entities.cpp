// Entities written from the live objects: the record head, the common
// properties (layer, linetype, material, colour and true colour,
// lineweight, linetype scale, visibility), extended data, extension
// dictionary and group reactors, then the kind's own groups (kinds/); block
// references with their attributes and SEQEND. Copies written from their
// source record are in write/copies.cpp.
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/kinds/kinds.h"
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
  } else if (IsTableRecord(object.Class())) {
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

}  // namespace tovik::host::dxf
