// The groups the host models for each kind: patched into a record read
// from the file (a value the object still holds keeps its original text),
// or written whole for an object the file did not have.
#include <cmath>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/read/hatch.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

Vec3 Ocs(const Vec3& p, const Vec3& normal) {
  if (normal.x == 0 && normal.y == 0 && normal.z == 1) return p;
  return geometry::WcsToOcs(p, normal).value_or(p);
}

bool SameValue(const Tag& a, const Tag& b) {
  if (a.IsDouble() || b.IsDouble()) {
    double x = NumberOf(a), y = NumberOf(b);
    return std::fabs(x - y) <= 1e-10 * std::max(1.0, std::fabs(x));
  }
  if (a.IsInteger() || b.IsInteger()) return a.integer == b.integer;
  // Names (layer, linetype, block, style) compare as the tables look them up.
  if (a.code == 2 || a.code == 3 || a.code == 6 || a.code == 7 || a.code == 8) {
    return FoldName(a.text) == FoldName(b.text);
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

void DbWriter::Modelled(const DbObject& object, std::vector<Tag>* want) {
  auto real = [&](int code, double v) { want->push_back(Tag::Double(code, v)); };
  auto point = [&](int code, const Vec3& p) {
    real(code, p.x);
    real(code + 10, p.y);
    real(code + 20, p.z);
  };
  auto text = [&](int code, std::string_view s) { want->push_back(Tag::String(code, Keep(std::string(s)))); };
  auto integer = [&](int code, int64_t v) { want->push_back(Tag::Integer(code, v)); };
  const Entity* e = AsEntity(&object);
  if (e == nullptr) {
    // Of the records, layers and registered applications are patched.
    if (const auto* o = dynamic_cast<const LayerRecord*>(&object)) {
      const auto& d = o->data();
      text(2, d.name);
      integer(62, d.on ? d.color.index : -std::abs(d.color.index));
      if (d.linetype) text(6, d.linetype->Name());
    } else if (const auto* o = dynamic_cast<const RegApp*>(&object)) {
      text(2, o->data().name);
    }
    return;
  }
  const EntityProps& p = e->props();
  if (p.layer) text(8, p.layer->Name());
  if (p.linetype && p.linetype != doc_.bylayer_linetype()) text(6, p.linetype->Name());
  if (p.color.method == kColorByRgb) {
    integer(62, NearestAci(p.color.rgb));
    integer(420, p.color.rgb);
  } else if (p.color.index != 256) {
    integer(62, p.color.index);
  }
  if (p.lineweight != -1) integer(370, p.lineweight);
  if (p.linetype_scale != 1) real(48, p.linetype_scale);
  if (!p.visible) integer(60, 1);
  auto text_groups = [&](const TextData& t) {
    point(10, Ocs(t.insertion, t.normal));
    real(40, t.height);
    text(1, t.text);
    if (t.rotation != 0) real(50, t.rotation * kRadToDeg);
    if (t.alignment_mode != 0) point(11, Ocs(t.alignment, t.normal));
  };
  switch (e->Kind()) {
    case EntityKind::kLine: {
      const auto& d = static_cast<const Line*>(e)->data();
      point(10, d.start);
      point(11, d.end);
      break;
    }
    case EntityKind::kCircle: {
      const auto& d = static_cast<const Circle*>(e)->data();
      point(10, Ocs(d.center, d.normal));
      real(40, d.radius);
      break;
    }
    case EntityKind::kArc: {
      const auto& d = static_cast<const Arc*>(e)->data();
      point(10, Ocs(d.center, d.normal));
      real(40, d.radius);
      real(50, d.start_angle * kRadToDeg);
      real(51, d.end_angle * kRadToDeg);
      break;
    }
    case EntityKind::kPoint: point(10, static_cast<const PointEntity*>(e)->data().position); break;
    case EntityKind::kEllipse: {
      const auto& d = static_cast<const Ellipse*>(e)->data();
      point(10, d.center);
      point(11, d.major_axis);
      real(40, d.radius_ratio);
      break;
    }
    case EntityKind::kText: text_groups(static_cast<const Text*>(e)->data()); break;
    case EntityKind::kAttributeRef: {
      const auto& d = static_cast<const AttributeRef*>(e)->data();
      text_groups(d);
      text(2, d.tag);
      break;
    }
    case EntityKind::kAttributeDef: {
      const auto& d = static_cast<const AttributeDef*>(e)->data();
      text_groups(d);
      text(2, d.tag);
      break;
    }
    case EntityKind::kMText: {
      const auto& d = static_cast<const MText*>(e)->data();
      point(10, d.insertion);
      real(40, d.height);
      break;
    }
    case EntityKind::kBlockRef: {
      const auto& d = static_cast<const BlockRef*>(e)->data();
      if (d.block) text(2, d.block->Name());
      point(10, Ocs(d.insertion, d.normal));
      if (d.scale.x != 1) real(41, d.scale.x);
      if (d.scale.y != 1) real(42, d.scale.y);
      if (d.scale.z != 1) real(43, d.scale.z);
      if (d.rotation != 0) real(50, d.rotation * kRadToDeg);
      break;
    }
    // Vertices, text and boundaries of these are compared whole (EmitPatched);
    // the others are written as read but for their common properties.
    case EntityKind::kLwPolyline:
    case EntityKind::kHatch:
    case EntityKind::kDimension:
    case EntityKind::kWipeout:
    case EntityKind::kRasterImage:
    case EntityKind::kGeneric: break;
  }
}

namespace {

// True when two boundaries have the same loops, point for point.
bool SameLoops(const std::vector<HatchLoop>& a, const std::vector<HatchLoop>& b) {
  if (a.size() != b.size()) return false;
  auto near = [](double x, double y) { return std::fabs(x - y) <= 1e-9 * std::max(1.0, std::fabs(x)); };
  for (size_t k = 0; k < a.size(); ++k) {
    if (a[k].points.size() != b[k].points.size() || a[k].outer != b[k].outer) return false;
    for (size_t i = 0; i < a[k].points.size(); ++i) {
      if (!near(a[k].points[i].x, b[k].points[i].x) || !near(a[k].points[i].y, b[k].points[i].y) ||
          !near(a[k].bulges[i], b[k].bulges[i])) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

void DbWriter::PutHatchLoops(const std::vector<HatchLoop>& loops) {
  PutInt(91, static_cast<int64_t>(loops.size()));
  for (const HatchLoop& loop : loops) {
    bool bulged = false;
    for (double b : loop.bulges) bulged = bulged || b != 0;
    // Polyline path (2), external when the loop bounds the hatch (1); the
    // other flags the file gave it stay.
    PutInt(92, (loop.flags & ~int64_t{3}) | 2 | (loop.outer ? 1 : 0));
    PutInt(72, bulged ? 1 : 0);
    PutInt(73, 1);
    PutInt(93, static_cast<int64_t>(loop.points.size()));
    for (size_t i = 0; i < loop.points.size(); ++i) {
      PutReal(10, loop.points[i].x);
      PutReal(20, loop.points[i].y);
      if (bulged) PutReal(42, loop.bulges[i]);
    }
    PutInt(97, 0);
  }
}

namespace {

// Whether the polyline's vertices differ from those of the record: they are
// compared as a whole, and a changed list is written anew.
bool VerticesChanged(const LwPolyline::Data& d, std::span<const Tag> body) {
  size_t k = 0;
  const auto& vs = d.vertices;
  auto differs = [](double have, double read) {
    return std::fabs(have - read) > 1e-10 * std::max(1.0, std::fabs(read));
  };
  for (const Tag& t : body) {
    if (t.code == 10) {
      if (k >= vs.size() || differs(vs[k].point.x, t.real)) return true;
      ++k;
    } else if (t.code == 20 && k > 0 && k <= vs.size() && differs(vs[k - 1].point.y, t.real)) {
      return true;
    }
  }
  return k != vs.size();
}

// The text of a multiline text record: its 3 chunks, then its 1.
std::string TextOfRecord(const Record& record) {
  std::string text;
  for (const Tag* t : record.FindAll(3)) text += t->text;
  text += record.StringOr(1);
  return text;
}

// Hatch boundaries stay as the file wrote them (edges of every kind) while
// the host's loops are the ones read from them; they are rewritten as
// polyline paths once the hatch was moved or its loops changed. True, with
// the body's range of boundary groups, when they must be rewritten.
bool LoopsToRewrite(const Record& record, const Hatch::Data& hatch, size_t* begin, size_t* end) {
  std::span<const Tag> body = record.Body();
  for (size_t i = 0; i < body.size(); ++i) {
    if (*begin == 0 && body[i].code == 91) *begin = i;
    if (*begin != 0 && body[i].code == 75) {
      *end = i;
      break;
    }
  }
  auto part = record.Subclass(InfoOf(EntityKind::kHatch).subclass);
  return *end != 0 && !SameLoops(ReadHatchLoops(part ? *part : body), hatch.loops);
}

}  // namespace

void DbWriter::PutVertices(const LwPolyline::Data& d) {
  for (const auto& v : d.vertices) {
    PutReal(10, v.point.x);
    PutReal(20, v.point.y);
    if (v.start_width != 0 || v.end_width != 0) {
      PutReal(40, v.start_width);
      PutReal(41, v.end_width);
    }
    if (v.bulge != 0) PutReal(42, v.bulge);
  }
}

void DbWriter::EmitPatched(const Record& record, const Binding& binding) {
  const DbObject& object = *binding.object;
  std::vector<Tag> want;
  Modelled(object, &want);
  std::vector<bool> used(want.size(), false);
  std::span<const Tag> body = record.Body();
  // Layer flags keep the bits the host does not model.
  const auto* layer = object.IsEntity() ? nullptr : dynamic_cast<const LayerRecord*>(&object);
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
      if (!used[w] && IsCommonCode(want[w].code) == common &&
          (common || object.IsEntity() || layer != nullptr)) {
        // A point's y and z go with its x only.
        Put(want[w]);
        used[w] = true;
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
        used[w] = true;
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
