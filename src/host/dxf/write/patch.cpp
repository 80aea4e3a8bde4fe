// The groups the host models for each kind: patched into a record read
// from the file (a value the object still holds keeps its original text),
// or written whole for an object the file did not have.
#include <cmath>

#include "frame/runtime_text.h"
#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/kinds/kinds.h"
#include "host/dxf/read/hatch.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;



bool SameValue(const Tag& a, const Tag& b) {
  if (a.IsDouble() || b.IsDouble()) {
    double x = NumberOf(a), y = NumberOf(b);
    return std::fabs(x - y) <= 1e-10 * std::max(1.0, std::fabs(x));
  }
  if (a.IsInteger() || b.IsInteger()) return a.integer == b.integer;
  // Names (layer, linetype, block, style) compare as the tables look them up.
  if (a.code == 2 || a.code == 3 || a.code == 6 || a.code == 7 || a.code == 8) {
    return CaseInsensitiveEqual(a.text, b.text);  // FoldName(a) == FoldName(b), no copies
  }
  return a.text == b.text;
}

// Codes kept in the common AcDbEntity part.
bool IsCommonCode(int code) {
  return code == 8 || code == 6 || code == 62 || code == 420 || code == 370 || code == 48 ||
         code == 60;
}

}  // namespace

void DbWriter::XDataTags(const XData& xdata, std::vector<Tag>* out) {
  for (const XDataRun& run : xdata) {
    if (run.app == nullptr) continue;
    out->push_back(Tag::String(1001, Keep(run.app->Name())));
    for (const XDataItem& item : run.items) {
      const Variant& v = item.value;
      if (item.code >= 1010 && item.code <= 1013 && v.IsArray()) {
        const SafeArray& a = v.Array();
        for (int32_t k = 0; k < 3 && k < a.Count(); ++k) {
          const Variant& c = a.Items()[static_cast<size_t>(k)];
          out->push_back(Tag::Double(item.code + 10 * k, c.IsNumber() ? c.RawDouble() : 0));
        }
      } else if (item.code == 1004 && v.IsArray()) {
        std::string hex;
        for (const Variant& b : v.Array().Items()) {
          char digits[4];
          std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(b.RawInt() & 0xFF));
          hex += digits;
        }
        out->push_back(Tag::String(1004, Keep(hex)));
      } else if (KindOfCode(item.code) == ValueKind::kDouble) {
        // Reals, and a point's y or z the file gave without its x.
        out->push_back(Tag::Double(item.code, v.IsNumber() ? (v.Type() == VarType::kDouble ? v.RawDouble() : static_cast<double>(v.RawInt())) : 0));
      } else if (item.code == 1070 || item.code == 1071 || KindOfCode(item.code) == ValueKind::kInt16 ||
                 KindOfCode(item.code) == ValueKind::kInt32 || KindOfCode(item.code) == ValueKind::kInt64 ||
                 KindOfCode(item.code) == ValueKind::kBool) {
        out->push_back(Tag::Integer(item.code, v.IsNumber() ? v.RawInt() : 0));
      } else {
        out->push_back(Tag::String(item.code, Keep(v.IsString() ? v.RawString() : std::string())));
      }
    }
  }
}

void ModelledGroups::Real(int code, double value) { tags_->push_back(Tag::Double(code, value)); }

void ModelledGroups::Point(int code, const Vec3& p) {
  Real(code, p.x);
  Real(code + 10, p.y);
  Real(code + 20, p.z);
}

void ModelledGroups::Text(int code, const std::string& text) {
  tags_->push_back(Tag::String(code, text));
}

void ModelledGroups::Integer(int code, int64_t value) { tags_->push_back(Tag::Integer(code, value)); }

void DbWriter::Modelled(const DbObject& object, std::vector<Tag>* want) {
  ModelledGroups g(*this, want);
  const Entity* e = AsEntity(&object);
  if (e == nullptr) {
    // Of the records, layers are patched, and every symbol table entry's
    // name: a renamed record is written under the name its users are.
    if (const auto* o = AsObject<LayerRecord>(&object)) {
      const auto& d = o->data();
      g.Text(2, d.name);
      g.Integer(62, d.on ? d.color.index : -std::abs(d.color.index));
      if (d.linetype) g.Text(6, d.linetype->Name());
    } else if (const auto* o = AsObject<RegApp>(&object)) {
      g.Text(2, o->data().name);
    } else if (const auto* o = AsObject<BlockRecord>(&object)) {
      g.Text(2, o->Name());
    } else if (const auto* o = AsObject<LinetypeRecord>(&object)) {
      g.Text(2, o->Name());
    } else if (const auto* o = AsObject<TextStyleRecord>(&object)) {
      g.Text(2, o->Name());
    } else if (const auto* o = AsObject<DimStyleRecord>(&object)) {
      g.Text(2, o->Name());
    }
    return;
  }
  const EntityProps& p = e->props();
  if (p.layer) g.Text(8, p.layer->Name());
  if (p.linetype && p.linetype != doc_.bylayer_linetype()) g.Text(6, p.linetype->Name());
  if (p.color.method == kColorByRgb) {
    g.Integer(62, NearestAci(p.color.rgb));
    g.Integer(420, p.color.rgb);
  } else if (p.color.index != 256) {
    g.Integer(62, p.color.index);
  }
  if (p.lineweight != -1) g.Integer(370, p.lineweight);
  if (p.linetype_scale != 1) g.Real(48, p.linetype_scale);
  if (!p.visible) g.Integer(60, 1);
  switch (e->Kind()) {
    case EntityKind::kLine: return ModelledLine(static_cast<const Line&>(*e), g);
    case EntityKind::kCircle: return ModelledCircle(static_cast<const Circle&>(*e), g);
    case EntityKind::kArc: return ModelledArc(static_cast<const Arc&>(*e), g);
    case EntityKind::kPoint: return ModelledPoint(static_cast<const PointEntity&>(*e), g);
    case EntityKind::kEllipse: return ModelledEllipse(static_cast<const Ellipse&>(*e), g);
    case EntityKind::kText:
    case EntityKind::kAttributeRef:
    case EntityKind::kAttributeDef: return ModelledText(*e, g);
    case EntityKind::kMText: return ModelledMText(static_cast<const MText&>(*e), g);
    case EntityKind::kBlockRef: return ModelledBlockRef(static_cast<const BlockRef&>(*e), g);
    case EntityKind::kLwPolyline:
    case EntityKind::kHatch:
    case EntityKind::kDimension:
    case EntityKind::kWipeout:
    case EntityKind::kRasterImage:
    case EntityKind::kGeneric: break;
  }
}

void DbWriter::EmitPatched(const Record& record, const Binding& binding) {
  const DbObject& object = *binding.object;
  // The buffers are the writer's, reused record after record.
  std::vector<Tag>& want = patch_want_;
  want.clear();
  Modelled(object, &want);
  std::vector<char>& used = patch_used_;
  used.assign(want.size(), 0);
  std::span<const Tag> body = record.Body();
  // Layer flags keep the bits the host does not model.
  const auto* layer = object.IsEntity() ? nullptr : AsObject<LayerRecord>(&object);
  const auto* lw = As<LwPolyline>(&object);
  const auto* mtext = As<MText>(&object);
  const bool rewrite_vertices = lw != nullptr && VerticesChanged(lw->data(), body);
  const bool rewrite_mtext = mtext != nullptr && TextOfRecord(record) != mtext->data().text;
  size_t loops_begin = 0, loops_end = 0;
  const auto* hatch = As<Hatch>(&object);
  if (hatch != nullptr && !LoopsToRewrite(record, hatch->data(), &loops_begin, &loops_end)) {
    hatch = nullptr;
  }

  // Common properties the record lacks go right after its own common
  // properties (the AcDbEntity part), so that those keep their place.
  size_t common_end = 0;
  if (object.IsEntity()) {
    bool seen_layer = false;
    for (size_t i = 0; i < body.size(); ++i) {
      if (body[i].code == 8) seen_layer = true;
      if (seen_layer && body[i].code == 100) break;
      if (IsCommonCode(body[i].code)) common_end = i + 1;
    }
  }

  Put(record.head);
  int depth = 0;
  bool after_embedded = false;
  auto insert_unused = [&](bool common) {
    for (size_t w = 0; w < want.size(); ++w) {
      // A table entry without a name gets the one it was given on load.
      if (!used[w] && IsCommonCode(want[w].code) == common &&
          (common || object.IsEntity() || layer != nullptr || want[w].code == 2)) {
        // A point's y and z go with its x only.
        Put(want[w]);
        used[w] = 1;
      }
    }
  };
  for (size_t i = 0; i < body.size(); ++i) {
    const Tag& t = body[i];
    if (common_end > 0 && i == common_end) insert_unused(true);
    if (hatch != nullptr && i == loops_begin) {
      PutHatchLoops(hatch->data().loops);
      i = loops_end - 1;
      continue;
    }
    if (t.code == 102) depth += t.text.starts_with("{") ? 1 : (depth > 0 ? -1 : 0);
    if (t.code == 101) after_embedded = true;
    if (depth == 0 && !after_embedded && t.code != 102) {
      if (rewrite_vertices && (t.code == 10 || t.code == 20 || t.code == 40 || t.code == 41 || t.code == 42 || t.code == 90 || t.code == 91)) {
        if (t.code == 90) {
          PutInt(90, static_cast<int64_t>(lw->data().vertices.size()));
        } else if (t.code == 10 && (i == 0 || body[i - 1].code != 10)) {
          bool first = true;
          for (size_t k = 0; k < body.size(); ++k) {
            if (body[k].code == 10) first = k == i;
            if (body[k].code == 10) break;
          }
          if (first) PutVertices(lw->data());
        }
        continue;
      }
      if (rewrite_mtext && (t.code == 1 || t.code == 3)) {
        if (t.code == 1) PutMTextChunks(mtext->data().text);
        continue;
      }
      if (layer != nullptr && t.code == 70) {
        int64_t flags = (t.integer & ~int64_t{5}) | (layer->data().frozen ? 1 : 0) |
                        (layer->data().locked ? 4 : 0);
        Put(flags == t.integer ? t : Tag::Integer(70, flags));
        continue;
      }
      bool matched = false;
      for (size_t w = 0; w < want.size(); ++w) {
        if (used[w] || want[w].code != t.code) continue;
        used[w] = 1;
        Put(SameValue(t, want[w]) ? t : want[w]);
        matched = true;
        break;
      }
      if (matched) continue;
      // An explicit "ByLayer" the file wrote stays: it is the host's default.
      if (t.code == 6 && object.IsEntity() && FoldName(t.text) == "bylayer" &&
          static_cast<const Entity&>(object).props().linetype == doc_.bylayer_linetype()) {
        Put(t);
        continue;
      }
      if (IsCommonCode(t.code) && object.IsEntity()) continue;  // the host dropped it
    }
    Put(t);
  }
  insert_unused(true);
  insert_unused(false);
  if (object.xdata() == binding.loaded_xdata) {
    for (size_t i = body.size(); i < record.tags.size(); ++i) Put(record.tags[i]);
  } else if (object.xdata() != nullptr) {
    std::vector<Tag> tags;
    XDataTags(*object.xdata(), &tags);
    for (const Tag& t : tags) Put(t);
  }
}

}  // namespace tovik::host::dxf
