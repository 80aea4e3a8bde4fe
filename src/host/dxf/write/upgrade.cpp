// Records of files before R2000 written in the host's version: R12 records
// have no subclass markers, R12 files no handles for everything. A record
// the host keeps as it came (VPORT, VIEW, UCS entries, kinds written from
// their source record) gets its handle, its owner and the markers AC1032
// readers need, its groups sorted into the subclass each belongs to.
#include <algorithm>
#include <array>
#include <initializer_list>

#include "host/dxf/binding.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {
namespace {

// The codes of the common part (AcDbEntity) of an R12 entity.
bool IsEntityCommon(int code) {
  return code == 8 || code == 6 || code == 62 || code == 67 || code == 48 || code == 60 ||
         code == 370 || code == 420 || code == 347 || code == 284 || code == 440;
}

bool In(int code, std::initializer_list<int> codes) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

// The x, y and z codes of the points `codes` names (10 -> 10, 20, 30).
bool InPoints(int code, std::initializer_list<int> points) {
  for (int p : points) {
    if (code == p || code == p + 10 || code == p + 20) return true;
  }
  return false;
}

// One subclass of the upgraded record: its marker and which of the
// record's codes it takes (the last subclass takes every code left).
struct Part {
  std::string_view marker;
  bool (*takes)(int code);
};

bool TakesNothing(int) { return false; }
bool TakesAll(int) { return true; }
bool ArcPart(int c) { return c == 50 || c == 51; }
bool TextSecond(int c) { return c == 73; }
bool AttributePart(int c) { return In(c, {2, 70, 73, 74, 280}); }
bool AttdefPart(int c) { return In(c, {3, 2, 70, 73, 74, 280}); }
bool DimensionCommon(int c) {
  return InPoints(c, {10, 11, 12, 210}) || In(c, {2, 70, 1, 53, 51, 3, 71, 72, 41, 42, 280});
}

// The subclasses of an entity of `type` with flags `flags` (70) that came
// without markers (R12's kinds, and later ones of one part).
std::vector<Part> PartsOf(std::string_view type, int64_t flags) {
  static constexpr std::pair<std::string_view, std::string_view> kOnePart[] = {
      {"ELLIPSE", "AcDbEllipse"}, {"HATCH", "AcDbHatch"},     {"IMAGE", "AcDbRasterImage"},
      {"LEADER", "AcDbLeader"},   {"LWPOLYLINE", "AcDbPolyline"}, {"MESH", "AcDbSubDMesh"},
      {"MLINE", "AcDbMline"},     {"MTEXT", "AcDbMText"},     {"MULTILEADER", "AcDbMLeader"},
      {"RAY", "AcDbRay"},         {"SPLINE", "AcDbSpline"},   {"TOLERANCE", "AcDbFcf"},
      {"XLINE", "AcDbXline"},
  };
  for (const auto& [kind, marker] : kOnePart) {
    if (kind == type) return {{marker, TakesAll}};
  }
  if (type == "LINE") return {{"AcDbLine", TakesAll}};
  if (type == "POINT") return {{"AcDbPoint", TakesAll}};
  if (type == "CIRCLE") return {{"AcDbCircle", TakesAll}};
  if (type == "ARC") return {{"AcDbCircle", [](int c) { return !ArcPart(c); }}, {"AcDbArc", TakesAll}};
  if (type == "TRACE" || type == "SOLID") return {{"AcDbTrace", TakesAll}};
  if (type == "3DFACE") return {{"AcDbFace", TakesAll}};
  if (type == "SHAPE") return {{"AcDbShape", TakesAll}};
  if (type == "VIEWPORT") return {{"AcDbViewport", TakesAll}};
  if (type == "TEXT") return {{"AcDbText", [](int c) { return !TextSecond(c); }}, {"AcDbText", TakesAll}};
  if (type == "ATTRIB") {
    return {{"AcDbText", [](int c) { return !AttributePart(c); }}, {"AcDbAttribute", TakesAll}};
  }
  if (type == "ATTDEF") {
    return {{"AcDbText", [](int c) { return !AttdefPart(c); }}, {"AcDbAttributeDefinition", TakesAll}};
  }
  if (type == "INSERT") {
    return {{(flags > 1 ? "AcDbMInsertBlock" : "AcDbBlockReference"), TakesAll}};
  }
  if (type == "POLYLINE") {
    if (flags & 64) return {{"AcDbPolyFaceMesh", TakesAll}};
    if (flags & 16) return {{"AcDbPolygonMesh", TakesAll}};
    return {{(flags & 8) ? "AcDb3dPolyline" : "AcDb2dPolyline", TakesAll}};
  }
  if (type == "VERTEX") {
    if ((flags & 128) && !(flags & 64)) return {{"AcDbFaceRecord", TakesAll}};
    std::string_view second = (flags & 32)                   ? "AcDb3dPolylineVertex"
                              : (flags & 64) && (flags & 128) ? "AcDbPolyFaceMeshVertex"
                              : (flags & 64)                 ? "AcDbPolygonMeshVertex"
                                                             : "AcDb2dVertex";
    return {{"AcDbVertex", TakesNothing}, {second, TakesAll}};
  }
  if (type == "DIMENSION") {
    switch (flags & 7) {
      case 0:
        return {{"AcDbDimension", DimensionCommon}, {"AcDbAlignedDimension", TakesAll},
                {"AcDbRotatedDimension", TakesNothing}};
      case 1: return {{"AcDbDimension", DimensionCommon}, {"AcDbAlignedDimension", TakesAll}};
      case 2: return {{"AcDbDimension", DimensionCommon}, {"AcDb2LineAngularDimension", TakesAll}};
      case 3: return {{"AcDbDimension", DimensionCommon}, {"AcDbDiametricDimension", TakesAll}};
      case 4: return {{"AcDbDimension", DimensionCommon}, {"AcDbRadialDimension", TakesAll}};
      case 5: return {{"AcDbDimension", DimensionCommon}, {"AcDb3PointAngularDimension", TakesAll}};
      default: return {{"AcDbDimension", DimensionCommon}, {"AcDbOrdinateDimension", TakesAll}};
    }
  }
  return {};  // SEQEND and kinds without a subclass of their own
}

bool HasMarkers(std::span<const Tag> tags) {
  return std::any_of(tags.begin(), tags.end(), [](const Tag& t) { return t.code == 100; });
}

}  // namespace

std::vector<Tag> DbWriter::WithSubclassMarkers(std::string_view type, std::span<const Tag> body) {
  std::vector<Tag> out;
  if (HasMarkers(body)) {
    out.assign(body.begin(), body.end());
    return out;
  }
  int64_t flags = 0;
  for (const Tag& t : body) {
    if (t.code == 70 && t.IsInteger()) flags = t.integer;
  }
  if (type == "INSERT") {
    int64_t columns = 1, rows = 1;
    for (const Tag& t : body) {
      if (t.code == 70 && t.IsInteger()) columns = t.integer;
      if (t.code == 71 && t.IsInteger()) rows = t.integer;
    }
    flags = columns > 1 || rows > 1 ? 2 : 0;
  }
  std::vector<Part> parts = PartsOf(type, flags);
  std::vector<std::vector<Tag>> split(parts.size());
  std::vector<Tag> own;  // handle and owner stay in front
  // A kind without a subclass of its own (R10's 3DLINE, R2's REPEAT and
  // ENDREP) keeps its groups as the file gave them; only a handle and an
  // owner are added.
  const bool as_given = parts.empty() && type != "SEQEND";
  if (!as_given) out.push_back(Tag::String(100, "AcDbEntity"));
  bool in_group = false;  // an application group stays whole, in front
  for (const Tag& t : body) {
    if (t.code == 102) in_group = t.text.starts_with("{");
    if (t.code == 5 || t.code == 330 || t.code == 102 || in_group) {
      own.push_back(t);
    } else if (IsEntityCommon(t.code) || as_given) {
      out.push_back(t);
    } else if (t.code == 38) {
      continue;  // R12 elevation: the z of the points carries it
    } else {
      size_t k = 0;
      while (k + 1 < parts.size() && !parts[k].takes(t.code)) ++k;
      if (!parts.empty()) split[k].push_back(t);
    }
  }
  for (size_t k = 0; k < parts.size(); ++k) {
    out.push_back(Tag::String(100, parts[k].marker));
    out.insert(out.end(), split[k].begin(), split[k].end());
  }
  own.insert(own.end(), out.begin(), out.end());
  return own;
}

std::optional<Record> DbWriter::Marked(const Record& record) {
  std::span<const Tag> body = record.Body();
  if (all_new_ || HasMarkers(body) || PartsOf(record.type, 0).empty()) return std::nullopt;
  std::vector<Tag> tags = WithSubclassMarkers(record.type, body);
  for (size_t i = body.size(); i < record.tags.size(); ++i) tags.push_back(record.tags[i]);
  Record out;
  out.head = record.head;
  out.type = record.type;
  out.tags = KeepTags(std::move(tags));
  return out;
}

Record DbWriter::UpgradedEntry(const Record& entry, const DbObject& object, uint64_t owner,
                               std::string_view table) {
  Record out;
  out.head = entry.head;
  out.type = entry.type;
  int handle_code = entry.type == "DIMSTYLE" ? 105 : 5;
  std::vector<Tag> tags;
  tags.push_back(Tag::String(handle_code, Keep(HexOf(object.handle()))));
  tags.push_back(Tag::String(330, Keep(HexOf(owner))));
  bool marked = HasMarkers(entry.Body());
  if (!marked) {
    tags.push_back(Tag::String(100, "AcDbSymbolTableRecord"));
    tags.push_back(Tag::String(100, SymbolTableRecordMarker(table)));
  }
  for (const Tag& t : entry.tags) {
    if (t.code == 5 || t.code == 105 || t.code == 330) continue;
    tags.push_back(t);
  }
  out.tags = KeepTags(std::move(tags));
  return out;
}

void DbWriter::EmitUpgradedRaw(const Record& record, uint64_t owner, std::string_view table) {
  std::span<const Tag> body = record.Body();
  uint64_t handle = HandleOf(record);
  Put(record.head);
  int handle_code = record.type == "DIMSTYLE" ? 105 : 5;
  PutHandle(handle_code, handle != 0 ? handle : NextHandle());
  PutHandle(330, owner);
  std::vector<Tag> tags;
  if (!table.empty()) {
    if (!HasMarkers(body)) {
      PutString(100, "AcDbSymbolTableRecord");
      PutString(100, SymbolTableRecordMarker(table));
    }
    tags.assign(body.begin(), body.end());
  } else {
    tags = WithSubclassMarkers(record.type, body);
  }
  int depth = 0;
  for (const Tag& t : tags) {
    if (t.code == 102) depth += t.text.starts_with("{") ? 1 : (depth > 0 ? -1 : 0);
    if (depth == 0 && (t.code == 5 || t.code == 105 || t.code == 330)) continue;
    Put(t);
  }
  for (size_t i = body.size(); i < record.tags.size(); ++i) Put(record.tags[i]);
}

}  // namespace tovik::host::dxf
