// Maps entity records to live host entities: the record's kind decides which
// load function of kinds/ builds it (each modelled kind gets its geometry in
// its Data struct, WCS points and radians; every other kind is a generic
// entity holding its points). Common properties, extended data, a block
// reference's attributes and dynamic-block links are set here.
#include <cmath>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/kinds/kinds.h"
#include "host/dxf/read/hatch.h"
#include "host/dxf/read/loader.h"
#include "host/tables/dictionary.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;

// A live entity of the record's kind; nullptr when the record must stay as
// it was read.
std::shared_ptr<Entity> LoadKind(Loader& loader, const Record& record, const RecordFields& r) {
  switch (KindOfDxfName(record.type)) {
    case EntityKind::kLine: return LoadLine(loader, record, r);
    case EntityKind::kCircle: return LoadCircle(loader, record, r);
    case EntityKind::kArc: return LoadArc(loader, record, r);
    case EntityKind::kEllipse: return LoadEllipse(loader, record, r);
    case EntityKind::kLwPolyline: return LoadLwPolyline(loader, record, r);
    case EntityKind::kPoint: return LoadPoint(loader, record, r);
    case EntityKind::kText: return LoadText(loader, record, r);
    case EntityKind::kAttributeDef: return LoadAttributeDef(loader, record, r);
    case EntityKind::kMText: return LoadMText(loader, record, r);
    case EntityKind::kBlockRef: return LoadBlockRef(loader, record, r);
    case EntityKind::kDimension: return LoadDimension(loader, record, r);
    case EntityKind::kHatch: return LoadHatch(loader, record, r);
    case EntityKind::kWipeout: return LoadWipeout(loader, record, r);
    case EntityKind::kRasterImage: return LoadRasterImage(loader, record, r);
    // An attribute outside a block reference is kept whole.
    case EntityKind::kAttributeRef:
    case EntityKind::kGeneric: return LoadGeneric(loader, record, r);
  }
  return LoadGeneric(loader, record, r);
}

}  // namespace

void Loader::ApplyCommon(const RecordFields& r, Entity* e) {
  EntityProps& p = e->mutable_props();
  p.layer = LayerNamed(r.StringOr(8, "0"));
  p.linetype = LinetypeNamed(r.StringOr(6, "ByLayer"));
  p.material = doc_.bylayer_material();
  int64_t aci = IntOr(r, 62, 256);
  p.color = CmColor::Aci(static_cast<int16_t>(std::clamp<int64_t>(aci, 0, 256)));
  if (const Tag* rgb = r.Find(420); rgb && rgb->IsInteger()) {
    p.color = CmColor{kColorByRgb, p.color.index, static_cast<uint32_t>(rgb->integer) & 0xFFFFFF};
  }
  p.linetype_scale = RealOr(r, 48, 1);
  p.lineweight = static_cast<int16_t>(IntOr(r, 370, -1));
  p.visible = IntOr(r, 60, 0) == 0;
}

void Loader::LoadEntity(const Record& record, BlockRecord* block) {
  const RecordFields r(record, fields_);
  std::shared_ptr<Entity> entity = LoadKind(*this, record, r);
  if (!entity) return;
  Entity* raw = entity.get();
  Bind(record, entity);
  if (r.Find(102) == nullptr) NoteWithoutAppGroups(record);
  ApplyCommon(r, raw);
  LoadXData(record, raw);
  block->Append(raw);
  if (auto* ref = As<BlockRef>(raw)) {
    for (const Record& f : record.followers) {
      if (f.type != "ATTRIB") continue;
      auto att = Make<AttributeRef>();
      auto& d = att->mutable_data();
      // Indexing the attribute ends the reference's index, no longer used.
      const RecordFields fields(f, fields_);
      FillText(fields, d, *this, 74);
      d.tag = std::string(fields.StringOr(2));
      d.mode = static_cast<int32_t>(IntOr(fields, 70, 0));
      AttributeRef* a = att.get();
      Bind(f, att);
      if (fields.Find(102) == nullptr) NoteWithoutAppGroups(f);
      ApplyCommon(fields, a);
      LoadXData(f, a);
      ref->AppendAttribute(a);
    }
  }
}


void Loader::LinkDynamicBlocks() {
  // An anonymous copy of a dynamic block carries "AcDbBlockRepBTag" xdata
  // ending in the handle of the block record it was made from.
  for (BlockRecord* block : doc_.blocks().items) {
    const XData* xdata = block->xdata();
    if (xdata == nullptr) continue;
    for (const XDataRun& run : *xdata) {
      if (run.app == nullptr || run.app->Name() != "AcDbBlockRepBTag") continue;
      for (const XDataItem& item : run.items) {
        if (item.code != 1005 || !item.value.IsString()) continue;
        uint64_t h = std::strtoull(item.value.RawString().c_str(), nullptr, 16);
        if (auto* source = AsObject<BlockRecord>(doc_.FindByHandle(h))) {
          block->mutable_data().dynamic_source = source;
        }
      }
    }
  }
  LoadDynamicProperties();
}

}  // namespace tovik::host::dxf
