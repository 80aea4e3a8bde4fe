// Text, attribute definitions and references, multiline text: read, written
// whole, and the groups patched into the records read.
#include "host/dxf/kinds/kinds.h"

#include <cmath>
#include <optional>

#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {

using geometry::Vec3;

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

std::shared_ptr<Entity> LoadText(Loader& loader, const Record&, const RecordFields& r) {
  auto e = loader.Make<Text>();
  FillText(r, e->mutable_data(), loader, 73);
  return e;
}

std::shared_ptr<Entity> LoadAttributeDef(Loader& loader, const Record&, const RecordFields& r) {
  auto e = loader.Make<AttributeDef>();
  auto& d = e->mutable_data();
  FillText(r, d, loader, 74);
  d.tag = std::string(r.StringOr(2));
  d.prompt = std::string(r.StringOr(3));
  d.mode = static_cast<int32_t>(IntOr(r, 70, 0));
  return e;
}

namespace {

using DirectionForm = MText::Data::DirectionForm;

// The direction of an MTEXT's x axis in world coordinates: its rotation
// measured in the plane of its normal from that plane's x axis.
Vec3 MTextDirection(const MText::Data& d) {
  std::optional<geometry::Axes> ax = geometry::ArbitraryAxis(d.normal);
  if (!ax) return {std::cos(d.rotation), std::sin(d.rotation), 0};
  return ax->x * std::cos(d.rotation) + ax->y * std::sin(d.rotation);
}

// A line break inside a binary file's text reaches the tag model as "^J";
// in multiline text it is a paragraph break, written "\P" in ASCII files.
std::string ParagraphBreaks(std::string text) {
  for (size_t at = text.find("^J"); at != std::string::npos; at = text.find("^J", at + 2)) {
    text.replace(at, 2, "\\P");
  }
  return text;
}

}  // namespace

std::shared_ptr<Entity> LoadMText(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<MText>();
  auto& d = e->mutable_data();
  for (const Tag* t : record.FindAll(3)) d.text += t->text;
  d.text += r.StringOr(1);
  if (loader.source().model.format() == FileFormat::kBinary) d.text = ParagraphBreaks(std::move(d.text));
  d.normal = NormalOf(r);
  d.insertion = PointOr(r, 10);
  d.height = RealOr(r, 40, 2.5);
  d.width = RealOr(r, 41, 0);
  d.attachment = static_cast<int32_t>(IntOr(r, 71, 1));
  d.drawing_direction = static_cast<int32_t>(IntOr(r, 72, 1));
  d.line_spacing_factor = RealOr(r, 44, 1);
  d.style = loader.StyleNamed(r.StringOr(7, "Standard"));
  // The direction (11) counts only in the entity's own data: the embedded
  // object after "101 Embedded Object" has an 11 of its own (a point).
  std::optional<Vec3> dir;
  for (const Tag& t : record.Body()) {
    if (t.code == 101) break;
    if (t.code == 11) dir = Vec3{NumberOf(t), 0, 0};
    if (t.code == 21 && dir) dir->y = NumberOf(t);
    if (t.code == 31 && dir) dir->z = NumberOf(t);
  }
  if (dir) {
    d.direction_form = DirectionForm::kVector;
    std::optional<geometry::Axes> ax = geometry::ArbitraryAxis(d.normal);
    Vec3 in_plane = ax ? geometry::ToFrame(*ax, *dir) : *dir;
    d.rotation = NormalAngle(std::atan2(in_plane.y, in_plane.x));
  } else {
    if (r.Find(50) != nullptr) d.direction_form = DirectionForm::kAngle;
    d.rotation = RealOr(r, 50, 0) * kDegToRad;
  }
  return e;
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
  if (d.direction_form == DirectionForm::kVector) {
    PutPoint(11, MTextDirection(d));
  } else if (d.rotation != 0 || d.direction_form == DirectionForm::kAngle) {
    PutReal(50, d.rotation * kRadToDeg);
  }
  PutInt(73, 1);
  PutReal(44, d.line_spacing_factor);
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

void ModelledText(const Entity& entity, ModelledGroups& g) {
  const auto* def = As<AttributeDef>(&entity);
  const auto* ref = As<AttributeRef>(&entity);
  const TextData& t = def   ? def->data()
                      : ref ? static_cast<const TextData&>(ref->data())
                            : static_cast<const Text&>(entity).data();
  g.Point(10, ToOcs(t.insertion, t.normal));
  g.Real(40, t.height);
  g.Text(1, t.text);
  if (t.rotation != 0) g.Real(50, t.rotation * kRadToDeg);
  if (t.alignment_mode != 0) g.Point(11, ToOcs(t.alignment, t.normal));
  if (ref) g.Text(2, ref->data().tag);
  if (def) g.Text(2, def->data().tag);
}

void ModelledMText(const MText& o, ModelledGroups& g) {
  const MText::Data& d = o.data();
  g.Point(10, d.insertion);
  g.Real(40, d.height);
  if (d.direction_form == DirectionForm::kVector) {
    g.Point(11, MTextDirection(d));
  } else if (d.rotation != 0 || d.direction_form == DirectionForm::kAngle) {
    g.Real(50, d.rotation * kRadToDeg);
  }
}

// The text of a multiline text record: its 3 chunks, then its 1.
std::string TextOfRecord(const Record& record) {
  std::string text;
  for (const Tag* t : record.FindAll(3)) text += t->text;
  text += record.StringOr(1);
  return text;
}

}  // namespace tovik::host::dxf
