// Entities written from the live objects: every kind the host models, with
// the common properties (layer, linetype, material, colour and true colour,
// lineweight, linetype scale, visibility), thickness and normal, extended
// data, extension dictionary and group reactors; block references with
// their attributes and SEQEND. A copy of an entity read from a file whose
// kind the host does not model whole carries the record it came from
// (its unmodelled tags) and is written from that, patched from the copy.
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "geometry/ocs.h"
#include "host/block.h"
#include "host/dictionary.h"
#include "host/dxf/db_internal.h"
#include "host/dxf/db_writer_internal.h"
#include "host/entities.h"
#include "host/records.h"

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
  if (dynamic_cast<const Line*>(&e)) return "LINE";
  if (dynamic_cast<const Circle*>(&e)) return "CIRCLE";
  if (dynamic_cast<const Arc*>(&e)) return "ARC";
  if (dynamic_cast<const PointEntity*>(&e)) return "POINT";
  if (dynamic_cast<const Ellipse*>(&e)) return "ELLIPSE";
  if (dynamic_cast<const LwPolyline*>(&e)) return "LWPOLYLINE";
  if (dynamic_cast<const Text*>(&e)) return "TEXT";
  if (dynamic_cast<const AttributeDef*>(&e)) return "ATTDEF";
  if (dynamic_cast<const AttributeRef*>(&e)) return "ATTRIB";
  if (dynamic_cast<const MText*>(&e)) return "MTEXT";
  if (dynamic_cast<const BlockRef*>(&e)) return "INSERT";
  if (dynamic_cast<const Hatch*>(&e)) return "HATCH";
  if (dynamic_cast<const Wipeout*>(&e)) return "WIPEOUT";
  if (const auto* d = dynamic_cast<const Dimension*>(&e)) {
    // Arc-length and large radial dimensions need data the host does not keep.
    bool plain = d->data().kind != DimensionKind::kArcLength &&
                 d->data().kind != DimensionKind::kRadialLarge;
    return plain ? "DIMENSION" : "";
  }
  if (const auto* g = dynamic_cast<const GenericEntity*>(&e)) {
    switch (g->data().kind) {
      case GenericKind::kPolyline2d:
      case GenericKind::kPolyline3d: return "POLYLINE";
      case GenericKind::kRay: return "RAY";
      case GenericKind::kXLine: return "XLINE";
      case GenericKind::kSolid2d: return "SOLID";
      case GenericKind::kTrace: return "TRACE";
      case GenericKind::kFace3d: return "3DFACE";
      default: return "";
    }
  }
  return "";
}

// Kinds whose host data leaves out groups their record has: a copy of one
// read from a file is written from the record it came from.
bool WrittenFromSource(const Entity& e) {
  if (dynamic_cast<const GenericEntity*>(&e) || dynamic_cast<const Dimension*>(&e) ||
      dynamic_cast<const RasterImage*>(&e) || dynamic_cast<const Wipeout*>(&e)) {
    return true;
  }
  const auto* hatch = dynamic_cast<const Hatch*>(&e);
  return hatch != nullptr && hatch->data().loops.empty();
}

// Lines of a hatch pattern in drawing units at scale 1 and angle 0: angle
// (degrees), base point, offset (in the line's own frame) and dashes.
struct PatternLine {
  double angle, base_x, base_y, offset_x, offset_y;
  std::vector<double> dashes;
};

// The standard patterns new hatches most often use (acad.pat, inches).
std::vector<PatternLine> PatternOf(std::string_view name) {
  if (name == "ANSI31") return {{45, 0, 0, 0, 0.125, {}}};
  if (name == "ANSI37") return {{45, 0, 0, 0, 0.125, {}}, {135, 0, 0, 0, 0.125, {}}};
  if (name == "LINE") return {{0, 0, 0, 0, 0.125, {}}};
  if (name == "NET") return {{0, 0, 0, 0, 0.125, {}}, {90, 0, 0, 0, 0.125, {}}};
  return {};
}

}  // namespace

void DbWriter::EmitNew(const DbObject& object, uint64_t owner_handle) {
  if (const auto* e = dynamic_cast<const Entity*>(&object)) {
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
  if (auto it = source_.records.find(&object); it != source_.records.end()) {
    auto binding = source_.bindings.find(it->second);
    if (binding != source_.bindings.end() && binding->second.loaded_xdata == object.xdata()) {
      const Record& record = *it->second;
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
  if (const auto* att = dynamic_cast<const AttributeRef*>(&e)) {
    if (const auto* ref = dynamic_cast<const Entity*>(att->owner())) block = ref->block();
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
  if (const auto* ref = dynamic_cast<const BlockRef*>(&e)) {
    bool any = false;
    for (const AttributeRef* a : ref->attributes()) {
      if (!Written(a)) continue;
      EmitNew(*a, e.handle());
      any = true;
    }
    if (any) EmitSeqend(e);
  } else if (const auto* g = dynamic_cast<const GenericEntity*>(&e); g && type == "POLYLINE") {
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

void DbWriter::EmitEntityGeometry(const Entity& entity) {
  auto thickness = [&](double t) {
    if (t != 0) PutReal(39, t);
  };
  auto normal = [&](const Vec3& n) {
    if (!IsZAxis(n)) PutPoint(210, n);
  };
  if (const auto* o = dynamic_cast<const Line*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbLine");
    thickness(d.thickness);
    PutPoint(10, d.start);
    PutPoint(11, d.end);
    normal(d.normal);
  } else if (const auto* o = dynamic_cast<const Circle*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbCircle");
    thickness(d.thickness);
    PutPoint(10, ToOcs(d.center, d.normal));
    PutReal(40, d.radius);
    normal(d.normal);
  } else if (const auto* o = dynamic_cast<const Arc*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbCircle");
    thickness(d.thickness);
    PutPoint(10, ToOcs(d.center, d.normal));
    PutReal(40, d.radius);
    normal(d.normal);
    PutString(100, "AcDbArc");
    PutReal(50, d.start_angle * kRadToDeg);
    PutReal(51, d.end_angle * kRadToDeg);
  } else if (const auto* o = dynamic_cast<const PointEntity*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbPoint");
    PutPoint(10, d.position);
    thickness(d.thickness);
    normal(d.normal);
  } else if (const auto* o = dynamic_cast<const Ellipse*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbEllipse");
    PutPoint(10, d.center);
    PutPoint(11, d.major_axis);
    PutPoint(210, d.normal);
    PutReal(40, d.radius_ratio);
    PutReal(41, d.start_param);
    PutReal(42, d.end_param);
  } else if (const auto* o = dynamic_cast<const LwPolyline*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbPolyline");
    PutInt(90, static_cast<int64_t>(d.vertices.size()));
    PutInt(70, (d.closed ? 1 : 0) | (d.plinegen ? 128 : 0));
    bool widths = false;
    for (const auto& v : d.vertices) widths |= v.start_width != 0 || v.end_width != 0;
    if (!widths && d.constant_width != 0) PutReal(43, d.constant_width);
    if (d.elevation != 0) PutReal(38, d.elevation);
    thickness(d.thickness);
    for (const auto& v : d.vertices) {
      PutPoint2(10, v.point.x, v.point.y);
      if (widths) {
        PutReal(40, v.start_width);
        PutReal(41, v.end_width);
      }
      if (v.bulge != 0) PutReal(42, v.bulge);
    }
    normal(d.normal);
  } else if (dynamic_cast<const Text*>(&entity) || dynamic_cast<const AttributeDef*>(&entity) ||
             dynamic_cast<const AttributeRef*>(&entity)) {
    EmitTextGeometry(entity);
  } else if (const auto* o = dynamic_cast<const MText*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbMText");
    PutPoint(10, d.insertion);
    PutReal(40, d.height);
    PutReal(41, d.width);
    PutInt(71, d.attachment);
    PutInt(72, d.drawing_direction);
    // Chunks of at most 250 bytes, never splitting a UTF-8 sequence.
    std::string_view s = d.text;
    while (s.size() > 250) {
      size_t cut = 250;
      while (cut > 0 && (static_cast<unsigned char>(s[cut]) & 0xC0) == 0x80) --cut;
      PutString(3, s.substr(0, cut));
      s.remove_prefix(cut);
    }
    PutString(1, s);
    PutString(7, d.style != nullptr ? d.style->Name() : "Standard");
    normal(d.normal);
    if (d.rotation != 0) PutReal(50, d.rotation * kRadToDeg);
    PutInt(73, 1);
    PutReal(44, d.line_spacing_factor);
  } else if (const auto* o = dynamic_cast<const BlockRef*>(&entity)) {
    const auto& d = o->data();
    bool grid = d.columns > 1 || d.rows > 1;
    PutString(100, grid ? "AcDbMInsertBlock" : "AcDbBlockReference");
    bool attributes = false;
    for (const AttributeRef* a : o->attributes()) attributes |= Written(a);
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
    normal(d.normal);
  } else if (const auto* o = dynamic_cast<const Hatch*>(&entity)) {
    EmitHatchGeometry(*o);
  } else if (const auto* o = dynamic_cast<const Dimension*>(&entity)) {
    EmitDimensionGeometry(*o);
  } else if (const auto* o = dynamic_cast<const Wipeout*>(&entity)) {
    const auto& d = o->data();
    PutString(100, "AcDbWipeout");
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
  } else if (const auto* o = dynamic_cast<const GenericEntity*>(&entity)) {
    EmitGenericGeometry(*o);
  }
}

void DbWriter::EmitTextGeometry(const Entity& entity) {
  const TextData* t = nullptr;
  const AttributeDef* def = dynamic_cast<const AttributeDef*>(&entity);
  const AttributeRef* ref = dynamic_cast<const AttributeRef*>(&entity);
  if (def != nullptr) t = &def->data();
  if (ref != nullptr) t = &ref->data();
  if (const auto* text = dynamic_cast<const Text*>(&entity)) t = &text->data();
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

void DbWriter::EmitHatchGeometry(const Hatch& hatch) {
  const auto& d = hatch.data();
  bool solid = d.pattern_name == "SOLID";
  PutString(100, "AcDbHatch");
  PutPoint(10, {0, 0, d.elevation});
  PutPoint(210, d.normal);
  PutString(2, d.pattern_name);
  PutInt(70, solid ? 1 : 0);
  PutInt(71, d.associative ? 1 : 0);
  PutInt(91, static_cast<int64_t>(d.loops.size()));
  for (const HatchLoop& loop : d.loops) {
    // Every loop is written as a polyline path (flag 2); 1 marks an outer one.
    int32_t flags = loop.flags != 0 ? loop.flags : (loop.outer ? 1 : 0);
    PutInt(92, (flags & ~int32_t{2}) | 2);
    bool bulged = false;
    for (double b : loop.bulges) bulged |= b != 0;
    PutInt(72, bulged ? 1 : 0);
    PutInt(73, 1);
    PutInt(93, static_cast<int64_t>(loop.points.size()));
    for (size_t k = 0; k < loop.points.size(); ++k) {
      PutPoint2(10, loop.points[k].x, loop.points[k].y);
      if (bulged) PutReal(42, k < loop.bulges.size() ? loop.bulges[k] : 0);
    }
    PutInt(97, 0);
  }
  PutInt(75, d.hatch_style);
  PutInt(76, d.pattern_type);
  if (!solid) {
    PutReal(52, d.pattern_angle * kRadToDeg);
    PutReal(41, d.pattern_scale);
    PutInt(77, 0);
    std::vector<PatternLine> lines;
    if (d.pattern_type == 0) {
      lines.push_back({0, 0, 0, 0, 1, {}});  // user defined: parallel lines one unit apart
    } else {
      lines = PatternOf(d.pattern_name);
    }
    // Metric drawings use acadiso.pat, whose distances are in millimetres.
    double unit = d.pattern_type != 0 && NumberOfSysVar("MEASUREMENT") != 0 ? 25.4 : 1;
    PutInt(78, static_cast<int64_t>(lines.size()));
    double turn = d.pattern_angle;
    double s = d.pattern_scale * unit;
    for (const PatternLine& l : lines) {
      double a = l.angle * std::numbers::pi / 180 + turn;
      // The offset is given in the line's frame; DXF wants it in the hatch's.
      double ox = (l.offset_x * std::cos(a) - l.offset_y * std::sin(a)) * s;
      double oy = (l.offset_x * std::sin(a) + l.offset_y * std::cos(a)) * s;
      PutReal(53, a * kRadToDeg);
      PutReal(43, l.base_x * s);
      PutReal(44, l.base_y * s);
      PutReal(45, ox);
      PutReal(46, oy);
      PutInt(79, static_cast<int64_t>(l.dashes.size()));
      for (double dash : l.dashes) PutReal(49, dash * s);
    }
  }
  PutInt(98, 0);
  if (d.object_type == 1) {
    // A gradient fill: its name stands in the pattern name.
    PutInt(450, 1);
    PutInt(451, 0);
    PutReal(460, d.pattern_angle);
    PutReal(461, 0);
    PutInt(452, 0);
    PutReal(462, 0);
    PutInt(453, 0);
    PutString(470, d.pattern_name);
  }
}

void DbWriter::EmitDimensionGeometry(const Dimension& dimension) {
  const auto& d = dimension.data();
  static constexpr std::pair<DimensionKind, int> kTypes[] = {
      {DimensionKind::kRotated, 0},   {DimensionKind::kAligned, 1},  {DimensionKind::kAngular, 2},
      {DimensionKind::kDiametric, 3}, {DimensionKind::kRadial, 4},   {DimensionKind::kAngular3Point, 5},
      {DimensionKind::kOrdinate, 6}};
  int type = 0;
  for (const auto& [kind, code] : kTypes) {
    if (kind == d.kind) type = code;
  }
  PutString(100, "AcDbDimension");
  PutInt(280, 0);
  bool picture = Written(d.block);
  if (picture) PutString(2, d.block->Name());
  PutPoint(10, d.p10);
  PutPoint(11, d.p11);
  // 32: the picture block belongs to this dimension alone.
  PutInt(70, type | (picture ? 32 : 0));
  if (!d.text_override.empty()) PutString(1, d.text_override);
  if (d.text_rotation != 0) PutReal(53, d.text_rotation * kRadToDeg);
  PutString(3, d.style != nullptr ? d.style->Name() : "Standard");
  if (!IsZAxis(d.normal)) PutPoint(210, d.normal);
  switch (d.kind) {
    case DimensionKind::kRotated:
    case DimensionKind::kAligned:
      PutString(100, "AcDbAlignedDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      if (d.kind == DimensionKind::kRotated) {
        PutReal(50, d.rotation * kRadToDeg);
        PutString(100, "AcDbRotatedDimension");
      }
      break;
    case DimensionKind::kAngular:
      PutString(100, "AcDb2LineAngularDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      PutPoint(15, d.p15);
      PutPoint(16, d.p16);
      break;
    case DimensionKind::kAngular3Point:
      PutString(100, "AcDb3PointAngularDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      PutPoint(15, d.p15);
      break;
    case DimensionKind::kDiametric:
    case DimensionKind::kRadial:
      PutString(100, d.kind == DimensionKind::kRadial ? "AcDbRadialDimension" : "AcDbDiametricDimension");
      PutPoint(15, d.p15);
      PutReal(40, 0);
      break;
    case DimensionKind::kOrdinate:
      PutString(100, "AcDbOrdinateDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      break;
    default: break;
  }
}

void DbWriter::EmitGenericGeometry(const GenericEntity& generic) {
  const auto& d = generic.data();
  auto at = [&](size_t k) { return k < d.points.size() ? d.points[k] : Vec3{}; };
  switch (d.kind) {
    case GenericKind::kPolyline2d:
    case GenericKind::kPolyline3d: {
      bool three_d = d.kind == GenericKind::kPolyline3d;
      PutString(100, three_d ? "AcDb3dPolyline" : "AcDb2dPolyline");
      PutInt(66, 1);
      PutPoint(10, {0, 0, three_d ? 0 : d.elevation});
      if (d.thickness != 0) PutReal(39, d.thickness);
      PutInt(70, (d.closed ? 1 : 0) | (three_d ? 8 : 0) | (d.flags & ~int32_t{1 | 8 | 16 | 64}));
      if (!IsZAxis(d.normal)) PutPoint(210, d.normal);
      break;
    }
    case GenericKind::kRay:
    case GenericKind::kXLine:
      PutString(100, d.kind == GenericKind::kRay ? "AcDbRay" : "AcDbXline");
      PutPoint(10, at(0));
      PutPoint(11, at(1));
      break;
    case GenericKind::kSolid2d:
    case GenericKind::kTrace:
    case GenericKind::kFace3d:
      PutString(100, d.kind == GenericKind::kFace3d ? "AcDbFace" : "AcDbTrace");
      for (int k = 0; k < 4; ++k) PutPoint(10 + k, at(static_cast<size_t>(k < static_cast<int>(d.points.size()) ? k : static_cast<int>(d.points.size()) - 1)));
      if (d.kind == GenericKind::kFace3d) {
        PutInt(70, d.flags);
      } else {
        if (d.thickness != 0) PutReal(39, d.thickness);
        if (!IsZAxis(d.normal)) PutPoint(210, d.normal);
      }
      break;
    default: break;
  }
}

// ---------------------------------------------------------- copied records

namespace {

// A tag's value as ASCII DXF has it (numbers read from binary DXF have no
// text of their own).
std::string TagText(const Tag& t) {
  if (!t.text.empty() && !(t.kind == ValueKind::kBinary && t.raw_binary)) return std::string(t.text);
  char buffer[40];
  switch (t.kind) {
    case ValueKind::kDouble: std::snprintf(buffer, sizeof buffer, "%.17g", t.real); return buffer;
    case ValueKind::kInt16:
    case ValueKind::kInt32:
    case ValueKind::kInt64:
    case ValueKind::kBool: return std::to_string(t.integer);
    case ValueKind::kBinary: return t.BinaryHex();
    default: return std::string(t.text);
  }
}

void AppendRecordTags(const Record& record, RawTags* out) {
  out->push_back({0, std::string(record.type)});
  for (const Tag& t : record.Body()) out->push_back({t.code, TagText(t)});
}

}  // namespace

void RememberSourceRecords(DxfSource& source) {
  for (const auto& [record, binding] : source.bindings) {
    const auto* entity = dynamic_cast<const Entity*>(binding.object);
    if (entity == nullptr || !WrittenFromSource(*entity) || entity->extra() != nullptr) continue;
    RawTags tags;
    AppendRecordTags(*record, &tags);
    for (const Record& f : record->followers) AppendRecordTags(f, &tags);
    binding.object->SetExtra(std::move(tags));
  }
}

bool DbWriter::IsCopy(const Entity& entity) const { return !source_.records.count(&entity); }

bool DbWriter::EmitFromSourceTags(const Entity& entity, uint64_t owner) {
  // The tags are the source record's body and its followers, each
  // follower starting with its own 0 tag.
  const RawTags& raw = *entity.extra();
  if (raw.empty() || raw[0].code != 0) return false;
  std::vector<Record> records;
  for (const RawTag& r : raw) {
    if (r.code == 0) {
      Record record;
      record.type = Keep(r.value);
      record.head = Tag::String(0, record.type);
      records.push_back(std::move(record));
      continue;
    }
    std::string_view text = Keep(r.value);
    Tag t;
    switch (KindOfCode(r.code)) {
      case ValueKind::kDouble:
        t = Tag::Double(r.code, std::strtod(r.value.c_str(), nullptr));
        t.text = text;
        break;
      case ValueKind::kInt16:
      case ValueKind::kInt32:
      case ValueKind::kInt64:
      case ValueKind::kBool:
        t = Tag::Integer(r.code, std::strtoll(r.value.c_str(), nullptr, 10));
        t.text = text;
        break;
      default: t = Tag::String(r.code, text);
    }
    records.back().tags.push_back(t);
  }
  uint64_t main = entity.handle();
  for (size_t k = 0; k < records.size(); ++k) {
    // New identity: own handle, owner, no reactors or extension dictionary
    // of the source; handles of objects this drawing does not have are
    // left out.
    // Records of R12 files gain their subclass markers.
    records[k].tags = WithSubclassMarkers(records[k].type, records[k].tags);
    std::vector<Tag> tags;
    // The entity read from the file (upgraded, not copied) keeps the
    // handles of its followers.
    uint64_t self = main;
    if (k > 0) {
      uint64_t original = 0;
      for (const Tag& t : records[k].tags) {
        if (t.code == 5 && t.kind == ValueKind::kHandle && t.integer > 0) original = static_cast<uint64_t>(t.integer);
      }
      self = !IsCopy(entity) && original != 0 ? original : NextHandle();
    }
    tags.push_back(Tag::String(5, Keep(HexOf(self))));
    std::vector<uint64_t> reactors;
    if (k == 0) {
      if (const auto* groups = GroupsOf(&entity)) {
        for (const Group* g : *groups) reactors.push_back(g->handle());
      }
    }
    if (!reactors.empty()) {
      tags.push_back(Tag::String(102, "{ACAD_REACTORS"));
      for (uint64_t h : reactors) tags.push_back(Tag::String(330, Keep(HexOf(h))));
      tags.push_back(Tag::String(102, "}"));
    }
    tags.push_back(Tag::String(330, Keep(HexOf(k == 0 ? owner : main))));
    int depth = 0;
    bool owner_seen = false;
    bool boundary_handles = false;
    bool hatch = records[k].type == "HATCH";
    for (const Tag& t : records[k].tags) {
      if (t.code == 102) {
        depth += t.text.starts_with("{") ? 1 : (depth > 0 ? -1 : 0);
        continue;
      }
      if (depth > 0 || t.code == 5) continue;
      if (t.code == 330 && !owner_seen) {
        owner_seen = true;
        continue;
      }
      // A copied hatch is not tied to its source's boundary objects.
      if (hatch && t.code == 97) {
        tags.push_back(Tag::Integer(97, 0));
        boundary_handles = true;
        continue;
      }
      if (boundary_handles && t.code == 330) continue;
      boundary_handles = false;
      // The source image's definition reactor belongs to the source.
      if (k == 0 && t.code == 360 && dynamic_cast<const RasterImage*>(&entity)) continue;
      if (t.kind == ValueKind::kHandle && t.integer > 0 && !Present(static_cast<uint64_t>(t.integer))) continue;
      // A dimension's copy has a picture block of its own.
      if (const auto* dim = dynamic_cast<const Dimension*>(&entity); k == 0 && dim && t.code == 2) {
        if (Written(dim->data().block)) tags.push_back(Tag::String(2, Keep(dim->data().block->Name())));
        continue;
      }
      tags.push_back(t);
    }
    records[k].tags = std::move(tags);
    if (k == 0) {
      EmitPatched(records[0], Binding{const_cast<Entity*>(&entity), nullptr});
    } else {
      PutRecordTags(records[k]);
    }
  }
  return true;
}

}  // namespace tovik::host::dxf
