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

namespace {

// The kinds KindsOf tells apart.
enum KindBit : uint32_t {
  kIsEntity = 1u << 0,
  kIsLine = 1u << 1,
  kIsCircle = 1u << 2,
  kIsArc = 1u << 3,
  kIsPoint = 1u << 4,
  kIsEllipse = 1u << 5,
  kIsText = 1u << 6,
  kIsAttributeRef = 1u << 7,
  kIsAttributeDef = 1u << 8,
  kIsMText = 1u << 9,
  kIsBlockRef = 1u << 10,
  kIsLayer = 1u << 11,
  kIsRegApp = 1u << 12,
  kIsLwPolyline = 1u << 13,
  kIsHatch = 1u << 14,
};

template <class Kind>
uint32_t BitIf(const DbObject& object, uint32_t bit) {
  return dynamic_cast<const Kind*>(&object) != nullptr ? bit : 0;
}

// `object` as `Kind` when `kinds` (its KindsOf) has `bit`, else nullptr.
template <class Kind>
const Kind* As(const DbObject& object, uint32_t kinds, uint32_t bit) {
  return (kinds & bit) != 0 ? static_cast<const Kind*>(&object) : nullptr;
}

}  // namespace

uint32_t DbWriter::KindsOf(const DbObject& object) {
  const std::type_info* type = &typeid(object);
  for (const auto& [known, bits] : kinds_) {
    if (known == type) return bits;
  }
  uint32_t bits = BitIf<Entity>(object, kIsEntity) | BitIf<Line>(object, kIsLine) |
                  BitIf<Circle>(object, kIsCircle) | BitIf<Arc>(object, kIsArc) |
                  BitIf<PointEntity>(object, kIsPoint) | BitIf<Ellipse>(object, kIsEllipse) |
                  BitIf<Text>(object, kIsText) | BitIf<AttributeRef>(object, kIsAttributeRef) |
                  BitIf<AttributeDef>(object, kIsAttributeDef) | BitIf<MText>(object, kIsMText) |
                  BitIf<BlockRef>(object, kIsBlockRef) | BitIf<LayerRecord>(object, kIsLayer) |
                  BitIf<RegApp>(object, kIsRegApp) | BitIf<LwPolyline>(object, kIsLwPolyline) |
                  BitIf<Hatch>(object, kIsHatch);
  kinds_.emplace_back(type, bits);
  return bits;
}

void DbWriter::Modelled(const DbObject& object, std::vector<Tag>* want) {
  // The first kind in this order that the object is decides what is written.
  const uint32_t kinds = KindsOf(object);

  auto real = [&](int code, double v) { want->push_back(Tag::Double(code, v)); };
  auto point = [&](int code, const Vec3& p) {
    real(code, p.x);
    real(code + 10, p.y);
    real(code + 20, p.z);
  };
  auto text = [&](int code, std::string_view s) { want->push_back(Tag::String(code, Keep(std::string(s)))); };
  auto integer = [&](int code, int64_t v) { want->push_back(Tag::Integer(code, v)); };
  if (const auto* e = As<Entity>(object, kinds, kIsEntity)) {
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
  }
  if (const auto* o = As<Line>(object, kinds, kIsLine)) {
    point(10, o->data().start);
    point(11, o->data().end);
  } else if (const auto* o = As<Circle>(object, kinds, kIsCircle)) {
    point(10, Ocs(o->data().center, o->data().normal));
    real(40, o->data().radius);
  } else if (const auto* o = As<Arc>(object, kinds, kIsArc)) {
    point(10, Ocs(o->data().center, o->data().normal));
    real(40, o->data().radius);
    real(50, o->data().start_angle * kRadToDeg);
    real(51, o->data().end_angle * kRadToDeg);
  } else if (const auto* o = As<PointEntity>(object, kinds, kIsPoint)) {
    point(10, o->data().position);
  } else if (const auto* o = As<Ellipse>(object, kinds, kIsEllipse)) {
    point(10, o->data().center);
    point(11, o->data().major_axis);
    real(40, o->data().radius_ratio);
  } else if (const TextData* t = (kinds & kIsText) != 0
                                     ? &static_cast<const Text&>(object).data()
                                 : (kinds & kIsAttributeRef) != 0
                                     ? static_cast<const TextData*>(&static_cast<const AttributeRef&>(object).data())
                                 : (kinds & kIsAttributeDef) != 0
                                     ? static_cast<const TextData*>(&static_cast<const AttributeDef&>(object).data())
                                     : nullptr) {
    point(10, Ocs(t->insertion, t->normal));
    real(40, t->height);
    text(1, t->text);
    if (t->rotation != 0) real(50, t->rotation * kRadToDeg);
    if (t->alignment_mode != 0) point(11, Ocs(t->alignment, t->normal));
    if (const auto* a = As<AttributeRef>(object, kinds, kIsAttributeRef)) text(2, a->data().tag);
    if (const auto* a = As<AttributeDef>(object, kinds, kIsAttributeDef)) text(2, a->data().tag);
  } else if (const auto* o = As<MText>(object, kinds, kIsMText)) {
    point(10, o->data().insertion);
    real(40, o->data().height);
  } else if (const auto* o = As<BlockRef>(object, kinds, kIsBlockRef)) {
    if (o->data().block) text(2, o->data().block->Name());
    point(10, Ocs(o->data().insertion, o->data().normal));
    if (o->data().scale.x != 1) real(41, o->data().scale.x);
    if (o->data().scale.y != 1) real(42, o->data().scale.y);
    if (o->data().scale.z != 1) real(43, o->data().scale.z);
    if (o->data().rotation != 0) real(50, o->data().rotation * kRadToDeg);
  } else if (const auto* o = As<LayerRecord>(object, kinds, kIsLayer)) {
    const auto& d = o->data();
    text(2, d.name);
    integer(62, d.on ? d.color.index : -std::abs(d.color.index));
    if (d.linetype) text(6, d.linetype->Name());
  } else if (const auto* o = As<RegApp>(object, kinds, kIsRegApp)) {
    text(2, o->data().name);
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

void DbWriter::EmitPatched(const Record& record, const Binding& binding) {
  const DbObject& object = *binding.object;
  std::vector<Tag> want;
  Modelled(object, &want);
  std::vector<bool> used(want.size(), false);
  std::span<const Tag> body = record.Body();
  // Layer flags keep the bits the host does not model.
  const uint32_t kinds = KindsOf(object);
  const auto* layer = As<LayerRecord>(object, kinds, kIsLayer);
  const auto* lw = As<LwPolyline>(object, kinds, kIsLwPolyline);
  const auto* mtext = As<MText>(object, kinds, kIsMText);
  bool rewrite_vertices = false;
  if (lw != nullptr) {
    // Vertices are compared as a whole; a changed list is written anew.
    size_t k = 0;
    const auto& vs = lw->data().vertices;
    for (const Tag& t : body) {
      if (t.code == 10) {
        if (k >= vs.size() || std::fabs(vs[k].point.x - t.real) > 1e-10 * std::max(1.0, std::fabs(t.real))) rewrite_vertices = true;
        ++k;
      } else if (t.code == 20 && k > 0 && k <= vs.size() &&
                 std::fabs(vs[k - 1].point.y - t.real) > 1e-10 * std::max(1.0, std::fabs(t.real))) {
        rewrite_vertices = true;
      }
    }
    rewrite_vertices = rewrite_vertices || k != vs.size();
  }
  std::string mtext_original;
  if (mtext != nullptr) {
    for (const Tag* t : record.FindAll(3)) mtext_original += t->text;
    mtext_original += record.StringOr(1);
  }
  bool rewrite_mtext = mtext != nullptr && mtext_original != mtext->data().text;
  // Hatch boundaries: kept as the file wrote them (edges of every kind)
  // while the host's loops are the ones read from them; rewritten as
  // polyline paths once the hatch was moved or its loops changed.
  size_t loops_begin = 0, loops_end = 0;
  const auto* hatch = As<Hatch>(object, kinds, kIsHatch);
  if (hatch != nullptr) {
    for (size_t i = 0; i < body.size(); ++i) {
      if (loops_begin == 0 && body[i].code == 91) loops_begin = i;
      if (loops_begin != 0 && body[i].code == 75) {
        loops_end = i;
        break;
      }
    }
    auto part = record.Subclass("AcDbHatch");
    if (loops_end == 0 || SameLoops(ReadHatchLoops(part ? *part : body), hatch->data().loops)) {
      hatch = nullptr;  // nothing to rewrite
    }
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
          if (first) {
            for (const auto& v : lw->data().vertices) {
              PutReal(10, v.point.x);
              PutReal(20, v.point.y);
              if (v.start_width != 0 || v.end_width != 0) {
                PutReal(40, v.start_width);
                PutReal(41, v.end_width);
              }
              if (v.bulge != 0) PutReal(42, v.bulge);
            }
          }
        }
        continue;
      }
      if (rewrite_mtext && (t.code == 1 || t.code == 3)) {
        if (t.code == 1) {
          std::string_view s = mtext->data().text;
          while (s.size() > 250) {
            PutString(3, s.substr(0, 250));
            s.remove_prefix(250);
          }
          PutString(1, s);
        }
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
