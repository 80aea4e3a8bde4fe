// Copies of entities the host does not model whole: an entity read from a
// file keeps its record's tags (DbObject::extra), which Copy and
// CopyObjects carry along; the copy is written from them with its own
// identity, patched from the copy where the host models a group.
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {

// Kinds whose host data leaves out groups their record has: a copy of one
// read from a file is written from the record it came from.
bool WrittenFromSource(const Entity& e) {
  switch (e.Kind()) {
    case EntityKind::kGeneric:
    case EntityKind::kDimension:
    case EntityKind::kRasterImage:
    case EntityKind::kWipeout:
    // A hatch read from a file keeps its edges and pattern lines as the file
    // wrote them; its loops are rewritten only when they changed.
    case EntityKind::kHatch: return true;
    case EntityKind::kLine:
    case EntityKind::kCircle:
    case EntityKind::kArc:
    case EntityKind::kEllipse:
    case EntityKind::kLwPolyline:
    case EntityKind::kPoint:
    case EntityKind::kText:
    case EntityKind::kAttributeDef:
    case EntityKind::kAttributeRef:
    case EntityKind::kMText:
    case EntityKind::kBlockRef: return false;
  }
  return false;
}

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
    if (!binding.object->IsEntity()) continue;
    const auto* entity = AsEntity(binding.object);
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
  std::vector<std::vector<Tag>> record_tags;  // each record's tags, viewed by it below
  for (const RawTag& r : raw) {
    if (r.code == 0) {
      Record record;
      record.type = Keep(r.value);
      record.head = Tag::String(0, record.type);
      records.push_back(std::move(record));
      record_tags.emplace_back();
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
    record_tags.back().push_back(t);
  }
  for (size_t k = 0; k < records.size(); ++k) records[k].tags = KeepTags(std::move(record_tags[k]));
  uint64_t main = entity.handle();
  for (size_t k = 0; k < records.size(); ++k) {
    // New identity: own handle, owner, no reactors or extension dictionary
    // of the source; handles of objects this drawing does not have are
    // left out.
    // Records of R12 files gain their subclass markers.
    records[k].tags = KeepTags(WithSubclassMarkers(records[k].type, records[k].tags));
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
      if (k == 0 && t.code == 360 && As<RasterImage>(&entity)) continue;
      if (t.kind == ValueKind::kHandle && t.integer > 0 && !Present(static_cast<uint64_t>(t.integer))) continue;
      // A dimension's copy has a picture block of its own.
      if (const auto* dim = As<Dimension>(&entity); k == 0 && dim && t.code == 2) {
        if (Written(dim->data().block)) tags.push_back(Tag::String(2, Keep(dim->data().block->Name())));
        continue;
      }
      tags.push_back(t);
    }
    records[k].tags = KeepTags(std::move(tags));
    if (k == 0) {
      EmitPatched(records[0], Binding{const_cast<Entity*>(&entity), nullptr});
    } else {
      PutRecordTags(records[k]);
    }
  }
  return true;
}

}  // namespace tovik::host::dxf
