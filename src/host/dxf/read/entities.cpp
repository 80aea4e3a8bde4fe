// Maps entity records to live host entities: each modelled kind gets its
// geometry in its Data struct (WCS points, radians); every other kind is a
// generic entity holding its points. Common properties, extended data and
// dynamic-block links are set here too.
#include <cmath>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/read/hatch.h"
#include "host/dxf/read/loader.h"
#include "host/tables/dictionary.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;

template <class Fields>
Vec3 NormalOf(const Fields& r) {
  return PointOr(r, 210, kZAxis);
}

Vec3 Wcs(const Vec3& p, const Vec3& normal) {
  if (normal.x == 0 && normal.y == 0 && normal.z == 1) return p;
  return geometry::OcsToWcs(p, normal).value_or(p);
}

GenericKind GenericKindOf(std::string_view type, const RecordFields& r) {
  if (type == "POLYLINE") {
    int64_t flags = IntOr(r, 70, 0);
    if (flags & 64) return GenericKind::kPolyfaceMesh;
    if (flags & 16) return GenericKind::kPolygonMesh;
    return (flags & 8) ? GenericKind::kPolyline3d : GenericKind::kPolyline2d;
  }
  return GenericKindOfDxfName(type);
}

void FillText(const RecordFields& r, TextData& d, Loader& loader, int vertical_code) {
  d.text = std::string(r.StringOr(1));
  d.normal = NormalOf(r);
  d.insertion = Wcs(PointOr(r, 10), d.normal);
  d.alignment = Wcs(PointOr(r, 11, PointOr(r, 10)), d.normal);
  d.height = RealOr(r, 40, 2.5);
  d.rotation = RealOr(r, 50, 0) * kDegToRad;
  d.width_factor = RealOr(r, 41, 1);
  d.oblique = RealOr(r, 51, 0) * kDegToRad;
  d.style = loader.StyleNamed(r.StringOr(7, "Standard"));
  int64_t generation = IntOr(r, 71, 0);
  d.backward = (generation & 2) != 0;
  d.upside_down = (generation & 4) != 0;
  d.alignment_mode = AlignmentOf(IntOr(r, 72, 0), IntOr(r, vertical_code, 0));
  d.thickness = RealOr(r, 39, 0);
}

std::shared_ptr<Entity> LoadLine(Loader&, const Record&, const RecordFields& r) {
  auto e = std::make_shared<Line>();
  auto& d = e->mutable_data();
  d.start = PointOr(r, 10);
  d.end = PointOr(r, 11);
  d.normal = NormalOf(r);
  d.thickness = RealOr(r, 39, 0);
  return e;
}

std::shared_ptr<Entity> LoadCircle(Loader&, const Record&, const RecordFields& r) {
  Vec3 normal = NormalOf(r);
  auto e = std::make_shared<Circle>();
  e->mutable_data() = {Wcs(PointOr(r, 10), normal), RealOr(r, 40, 1), normal, RealOr(r, 39, 0)};
  return e;
}

std::shared_ptr<Entity> LoadArc(Loader&, const Record&, const RecordFields& r) {
  Vec3 normal = NormalOf(r);
  auto e = std::make_shared<Arc>();
  e->mutable_data() = {Wcs(PointOr(r, 10), normal), RealOr(r, 40, 1),
                       NormalAngle(RealOr(r, 50, 0) * kDegToRad),
                       NormalAngle(RealOr(r, 51, 0) * kDegToRad), normal, RealOr(r, 39, 0)};
  return e;
}

std::shared_ptr<Entity> LoadEllipse(Loader&, const Record&, const RecordFields& r) {
  auto e = std::make_shared<Ellipse>();
  auto& d = e->mutable_data();
  d.center = PointOr(r, 10);
  d.major_axis = PointOr(r, 11, {1, 0, 0});
  d.normal = NormalOf(r);
  d.radius_ratio = RealOr(r, 40, 1);
  d.start_param = RealOr(r, 41, 0);
  d.end_param = RealOr(r, 42, geometry::kTwoPi);
  return e;
}

std::shared_ptr<Entity> LoadPoint(Loader&, const Record&, const RecordFields& r) {
  auto e = std::make_shared<PointEntity>();
  e->mutable_data() = {PointOr(r, 10), NormalOf(r), RealOr(r, 39, 0)};
  return e;
}

std::shared_ptr<Entity> LoadLwPolyline(Loader&, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<LwPolyline>();
  auto& d = e->mutable_data();
  int64_t flags = IntOr(r, 70, 0);
  d.closed = (flags & 1) != 0;
  d.plinegen = (flags & 128) != 0;
  d.constant_width = RealOr(r, 43, 0);
  d.elevation = RealOr(r, 38, 0);
  d.thickness = RealOr(r, 39, 0);
  d.normal = NormalOf(r);
  for (const Tag& t : record.Body()) {
    if (t.code == 10) {
      d.vertices.push_back({{t.real, 0}});
    } else if (!d.vertices.empty()) {
      auto& v = d.vertices.back();
      if (t.code == 20) v.point.y = NumberOf(t);
      if (t.code == 40) v.start_width = NumberOf(t);
      if (t.code == 41) v.end_width = NumberOf(t);
      if (t.code == 42) v.bulge = NumberOf(t);
    }
  }
  return e;
}

std::shared_ptr<Entity> LoadText(Loader& loader, const Record&, const RecordFields& r) {
  auto e = std::make_shared<Text>();
  FillText(r, e->mutable_data(), loader, 73);
  return e;
}

std::shared_ptr<Entity> LoadAttributeDef(Loader& loader, const Record&, const RecordFields& r) {
  auto e = std::make_shared<AttributeDef>();
  auto& d = e->mutable_data();
  FillText(r, d, loader, 74);
  d.tag = std::string(r.StringOr(2));
  d.prompt = std::string(r.StringOr(3));
  d.mode = static_cast<int32_t>(IntOr(r, 70, 0));
  return e;
}

std::shared_ptr<Entity> LoadMText(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<MText>();
  auto& d = e->mutable_data();
  for (const Tag* t : record.FindAll(3)) d.text += t->text;
  d.text += r.StringOr(1);
  d.normal = NormalOf(r);
  d.insertion = PointOr(r, 10);
  d.height = RealOr(r, 40, 2.5);
  d.width = RealOr(r, 41, 0);
  d.attachment = static_cast<int32_t>(IntOr(r, 71, 1));
  d.drawing_direction = static_cast<int32_t>(IntOr(r, 72, 1));
  d.line_spacing_factor = RealOr(r, 44, 1);
  d.style = loader.StyleNamed(r.StringOr(7, "Standard"));
  if (r.Find(11)) {
    Vec3 dir = PointOr(r, 11);
    d.rotation = NormalAngle(std::atan2(dir.y, dir.x));
  } else {
    d.rotation = RealOr(r, 50, 0) * kDegToRad;
  }
  return e;
}

std::shared_ptr<Entity> LoadBlockRef(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<BlockRef>();
  auto& d = e->mutable_data();
  d.block = loader.BlockNamed(r.StringOr(2));
  if (d.block == nullptr) {
    // The record stays raw: a reference to a block the file does not
    // define cannot be a live reference.
    loader.Repair("INSERT " + std::string(record.Handle()) + " names missing block \"" +
                  std::string(r.StringOr(2)) + "\": kept unmapped");
    return nullptr;
  }
  d.normal = NormalOf(r);
  d.insertion = Wcs(PointOr(r, 10), d.normal);
  d.scale = {RealOr(r, 41, 1), RealOr(r, 42, 1), RealOr(r, 43, 1)};
  d.rotation = RealOr(r, 50, 0) * kDegToRad;
  d.columns = static_cast<int32_t>(IntOr(r, 70, 1));
  d.rows = static_cast<int32_t>(IntOr(r, 71, 1));
  d.column_spacing = RealOr(r, 44, 0);
  d.row_spacing = RealOr(r, 45, 0);
  return e;
}

std::shared_ptr<Entity> LoadDimension(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<Dimension>();
  auto& d = e->mutable_data();
  static constexpr DimensionKind kKinds[7] = {
      DimensionKind::kRotated,   DimensionKind::kAligned,       DimensionKind::kAngular,
      DimensionKind::kDiametric, DimensionKind::kRadial,        DimensionKind::kAngular3Point,
      DimensionKind::kOrdinate};
  int64_t kind = IntOr(r, 70, 0) & 7;
  d.kind = kind < 7 ? kKinds[kind] : DimensionKind::kRotated;
  if (record.Subclass("AcDbArcDimension")) d.kind = DimensionKind::kArcLength;
  if (record.Subclass("AcDbRadialDimensionLarge")) d.kind = DimensionKind::kRadialLarge;
  d.p10 = PointOr(r, 10);
  d.p11 = PointOr(r, 11);
  d.p13 = PointOr(r, 13);
  d.p14 = PointOr(r, 14);
  d.p15 = PointOr(r, 15);
  d.p16 = PointOr(r, 16);
  d.rotation = RealOr(r, 50, 0) * kDegToRad;
  d.text_override = std::string(r.StringOr(1));
  d.text_rotation = RealOr(r, 53, 0) * kDegToRad;
  d.style = loader.DimStyleNamed(r.StringOr(3, "Standard"));
  d.normal = NormalOf(r);
  d.block = loader.BlockNamed(r.StringOr(2));
  return e;
}

std::shared_ptr<Entity> LoadHatch(Loader&, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<Hatch>();
  auto& d = e->mutable_data();
  d.pattern_name = std::string(r.StringOr(2, "SOLID"));
  d.pattern_type = static_cast<int32_t>(IntOr(r, 76, 1));
  d.associative = IntOr(r, 71, 0) != 0;
  d.object_type = IntOr(r, 450, 0) != 0 ? 1 : 0;
  d.pattern_scale = RealOr(r, 41, 1);
  d.pattern_angle = RealOr(r, 52, 0) * kDegToRad;
  d.elevation = RealOr(r, 30, 0);
  d.normal = NormalOf(r);
  d.hatch_style = static_cast<int32_t>(IntOr(r, 75, 0));
  auto part = record.Subclass(InfoOf(EntityKind::kHatch).subclass);
  d.loops = ReadHatchLoops(part ? *part : record.Body());
  return e;
}

// Wipeouts and raster images share their frame and clip boundary.
template <class K>
std::shared_ptr<Entity> LoadImage(Loader&, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<K>();
  ImageData* d = &e->mutable_data();
  d->origin = PointOr(r, 10);
  d->u = PointOr(r, 11, {1, 0, 0});
  d->v = PointOr(r, 12, {0, 1, 0});
  d->width_pixels = RealOr(r, 13, 1);
  d->height_pixels = RealOr(r, 23, 1);
  d->display_flags = static_cast<int32_t>(IntOr(r, 70, 7));
  for (const Tag* t : record.FindAll(14)) d->clip.push_back({t->real, 0});
  size_t k = 0;
  for (const Tag* t : record.FindAll(24)) {
    if (k < d->clip.size()) d->clip[k++].y = t->real;
  }
  return e;
}

std::shared_ptr<Entity> LoadGeneric(Loader&, const Record& record, const RecordFields& r) {
  auto e = std::make_shared<GenericEntity>();
  auto& d = e->mutable_data();
  d.kind = GenericKindOf(record.type, r);
  d.dxf_name = std::string(record.type);
  d.flags = static_cast<int32_t>(IntOr(r, 70, 0));
  d.closed = (d.flags & 1) != 0;
  d.normal = NormalOf(r);
  d.thickness = RealOr(r, 39, 0);
  if (record.followers.empty()) {
    for (const Tag& t : record.Body()) {
      if (t.code >= 10 && t.code <= 18) d.points.push_back({t.real, 0, 0});
      if (t.code >= 20 && t.code <= 28 && !d.points.empty()) d.points.back().y = NumberOf(t);
      if (t.code >= 30 && t.code <= 37 && !d.points.empty()) d.points.back().z = NumberOf(t);
    }
  } else {
    d.elevation = RealOr(r, 30, 0);
    for (const Record& v : record.followers) {
      if (v.type != "VERTEX") continue;
      d.points.push_back(PointOr(v, 10));
      d.bulges.push_back(RealOr(v, 42, 0));
    }
  }
  return e;
}

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
    case EntityKind::kWipeout: return LoadImage<Wipeout>(loader, record, r);
    case EntityKind::kRasterImage: return LoadImage<RasterImage>(loader, record, r);
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
  ApplyCommon(r, raw);
  LoadXData(record, raw);
  block->Append(raw);
  if (auto* ref = As<BlockRef>(raw)) {
    for (const Record& f : record.followers) {
      if (f.type != "ATTRIB") continue;
      auto att = std::make_shared<AttributeRef>();
      auto& d = att->mutable_data();
      // Indexing the attribute ends the reference's index, no longer used.
      const RecordFields fields(f, fields_);
      FillText(fields, d, *this, 74);
      d.tag = std::string(fields.StringOr(2));
      d.mode = static_cast<int32_t>(IntOr(fields, 70, 0));
      AttributeRef* a = att.get();
      Bind(f, att);
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
        if (auto* source = dynamic_cast<BlockRecord*>(doc_.FindByHandle(h))) {
          block->mutable_data().dynamic_source = source;
        }
      }
    }
  }
  LoadDynamicProperties();
}

}  // namespace tovik::host::dxf
