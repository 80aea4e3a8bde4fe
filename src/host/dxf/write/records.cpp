// Table records and objects written from the live objects: linetypes,
// layers (every flag, true colour, lineweight, plot flag), text styles,
// registered applications, dimension styles, block records; dictionaries
// (extension dictionaries included), xrecords, groups, draw-order tables,
// layouts and materials. Each names its owner, its reactors and its
// extension dictionary, and carries its extended data.
#include <cmath>
#include <numbers>

#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {


double NumberIn(const Variant& v) {
  if (!v.IsNumber() && !v.IsBoolean()) return 0;
  return v.Type() == VarType::kDouble || v.Type() == VarType::kSingle ? v.RawDouble()
                                                                      : static_cast<double>(v.RawInt());
}

}  // namespace

void DbWriter::EmitNewRecord(const DbObject& object, uint64_t owner) {
  auto head = [&](std::string_view type, std::string_view marker, int handle_code = 5) {
    PutObjectHead(type, object, owner, {}, handle_code);
    PutString(100, "AcDbSymbolTableRecord");
    PutString(100, marker);
  };
  switch (object.Class()) {
    case ObjectClass::kLinetype: {
      const auto* lt = static_cast<const LinetypeRecord*>(&object);
      const auto& d = lt->data();
      head("LTYPE", "AcDbLinetypeTableRecord");
      PutString(2, d.name);
      PutInt(70, 0);
      PutString(3, d.description);
      PutInt(72, 65);
      PutInt(73, static_cast<int64_t>(d.dashes.size()));
      double length = d.pattern_length;
      if (length == 0) {
        for (double dash : d.dashes) length += std::fabs(dash);
      }
      PutReal(40, length);
      for (double dash : d.dashes) {
        PutReal(49, dash);
        PutInt(74, 0);
      }
      break;
    }
    case ObjectClass::kLayer: {
      const auto* layer = static_cast<const LayerRecord*>(&object);
      const auto& d = layer->data();
      head("LAYER", "AcDbLayerTableRecord");
      PutString(2, d.name);
      PutInt(70, (d.frozen ? 1 : 0) | (d.locked ? 4 : 0));
      int16_t aci = d.color.method == kColorByRgb ? NearestAci(d.color.rgb) : d.color.index;
      if (aci < 1 || aci > 255) aci = 7;
      // A layer that is off has a negative colour.
      PutInt(62, d.on ? aci : -aci);
      if (d.color.method == kColorByRgb) PutInt(420, d.color.rgb);
      PutString(6, d.linetype != nullptr && Written(d.linetype) ? d.linetype->Name() : "Continuous");
      if (!d.plottable) PutInt(290, 0);
      PutInt(370, d.lineweight);
      if (plot_style_normal() != 0) PutHandle(390, plot_style_normal());
      if (d.material != nullptr && Written(d.material)) PutHandle(347, d.material->handle());
      break;
    }
    case ObjectClass::kTextStyle: {
      const auto* style = static_cast<const TextStyleRecord*>(&object);
      const auto& d = style->data();
      head("STYLE", "AcDbTextStyleTableRecord");
      PutString(2, d.name);
      PutInt(70, 0);
      PutReal(40, d.height);
      PutReal(41, d.width);
      PutReal(50, d.oblique * kRadToDeg);
      PutInt(71, d.generation_flags);
      PutReal(42, d.last_height);
      PutString(3, d.font_file);
      PutString(4, d.big_font_file);
      // A TrueType face is named in the style's ACAD extended data, with its
      // charset, pitch and family, bold and italic bits.
      bool acad_run = false;
      if (style->xdata() != nullptr) {
        for (const XDataRun& run : *style->xdata()) acad_run |= run.app != nullptr && run.app->Name() == "ACAD";
      }
      if (!d.typeface.empty() && !acad_run) {
        PutString(1001, "ACAD");
        PutString(1000, d.typeface);
        int64_t flags = (d.italic ? 0x01000000 : 0) | (d.bold ? 0x02000000 : 0) |
                        ((d.charset & 0xFF) << 8) | (d.pitch_and_family & 0xFF);
        PutInt(1071, flags);
      }
      break;
    }
    case ObjectClass::kRegApp: {
      const auto* app = static_cast<const RegApp*>(&object);
      head("APPID", "AcDbRegAppTableRecord");
      PutString(2, app->Name());
      PutInt(70, 0);
      break;
    }
    case ObjectClass::kDimStyle: {
      const auto* dim = static_cast<const DimStyleRecord*>(&object);
      head("DIMSTYLE", "AcDbDimStyleTableRecord", 105);
      PutString(2, dim->Name());
      PutInt(70, 0);
      break;
    }
    case ObjectClass::kBlockRecord: {
      const auto* block = static_cast<const BlockRecord*>(&object);
      const auto& d = block->data();
      head("BLOCK_RECORD", "AcDbBlockTableRecord");
      PutString(2, d.name);
      PutHandle(340, d.layout != nullptr && Written(d.layout) ? d.layout->handle() : 0);
      PutInt(70, d.units);
      PutInt(280, d.explodable ? 1 : 0);
      PutInt(281, 0);
      break;
    }
    case ObjectClass::kEntity:
    case ObjectClass::kMaterial:
    case ObjectClass::kLayout:
    case ObjectClass::kDictionary:
    case ObjectClass::kXRecord:
    case ObjectClass::kGroup:
    case ObjectClass::kSortentsTable:
      return;  // entities and objects are written by EmitNewEntity and EmitNewObject
  }
  PutXData(object);
}

void DbWriter::EmitNewObject(const DbObject& object, uint64_t owner) {
  // Objects in a dictionary name it as their reactor; an extension
  // dictionary names the object it extends.
  std::vector<uint64_t> reactors;
  if (owner != 0) reactors.push_back(owner);
  switch (object.Class()) {
    case ObjectClass::kDictionary: {
      const auto* dict = static_cast<const Dictionary*>(&object);
      // A dictionary the file had, written anew, keeps its kind, its
      // default and its entries naming objects the host keeps as they came.
      const Record* const* found = source_.records.Find(dict);
      const Record* source = found != nullptr ? *found : nullptr;
      bool with_default = source != nullptr && source->type == "ACDBDICTIONARYWDFLT";
      PutObjectHead(with_default ? "ACDBDICTIONARYWDFLT" : "DICTIONARY", object, owner, reactors);
      PutString(100, "AcDbDictionary");
      // Entries of an extension dictionary are owned by it (360).
      bool extension = dict->owner() != nullptr && !AsObject<Dictionary>(dict->owner()) &&
                       dict != doc_.named_objects();
      if (extension) PutInt(280, 1);
      PutInt(281, 1);
      std::vector<DictEntry> entries = EntriesOf(*dict);
      for (const DictEntry& e : entries) {
        PutString(3, e.key);
        PutHandle(extension ? 360 : 350, e.handle);
      }
      if (source != nullptr) {
        std::string_view key;
        for (const Tag& t : source->Body()) {
          if (t.code == 3) key = t.text;
          if ((t.code != 350 && t.code != 360) || key.empty()) continue;
          uint64_t handle = HandleValue(&t);
          bool listed = std::any_of(entries.begin(), entries.end(),
                                    [&](const DictEntry& e) { return CaseInsensitiveEqual(e.key, key); });
          if (!listed && doc_.FindByHandle(handle) == nullptr && Present(handle)) {
            PutString(3, key);
            PutHandle(extension ? 360 : 350, handle);
          }
          key = {};
        }
      }
      if (with_default) {
        PutString(100, "AcDbDictionaryWithDefault");
        uint64_t fallback = source != nullptr ? HandleValue(source->Find(340)) : 0;
        PutHandle(340, Present(fallback) ? fallback : 0);
      }
      break;
    }
    case ObjectClass::kXRecord: {
      const auto* x = static_cast<const XRecord*>(&object);
      PutObjectHead("XRECORD", object, owner, reactors);
      PutString(100, "AcDbXrecord");
      PutInt(280, 1);
      const auto& d = x->data();
      for (size_t k = 0; k < d.codes.size() && k < d.values.size(); ++k) EmitXRecordValue(d.codes[k], d.values[k]);
      break;
    }
    case ObjectClass::kGroup: {
      const auto* g = static_cast<const Group*>(&object);
      const auto& d = g->data();
      PutObjectHead("GROUP", object, owner, reactors);
      PutString(100, "AcDbGroup");
      PutString(300, d.description);
      PutInt(70, d.anonymous ? 1 : 0);
      PutInt(71, d.selectable ? 1 : 0);
      for (const Entity* e : g->LiveMembers()) {
        if (Written(e)) PutHandle(340, e->handle());
      }
      break;
    }
    case ObjectClass::kSortentsTable: {
      const auto* s = static_cast<const SortentsTable*>(&object);
      PutObjectHead("SORTENTSTABLE", object, owner, reactors);
      PutString(100, "AcDbSortentsTable");
      PutHandle(330, s->data().block != nullptr ? s->data().block->handle() : 0);
      // The k-th entity drawn takes the k-th smallest handle as sort key.
      std::vector<uint64_t> order;
      for (const Entity* e : s->FullOrder()) {
        if (Written(e)) order.push_back(e->handle());
      }
      std::vector<uint64_t> keys = order;
      std::sort(keys.begin(), keys.end());
      for (size_t k = 0; k < order.size(); ++k) {
        PutHandle(331, order[k]);
        PutHandle(5, keys[k]);
      }
      break;
    }
    case ObjectClass::kLayout: {
      const auto* layout = static_cast<const Layout*>(&object);
      EmitLayout(*layout, owner);
      break;
    }
    case ObjectClass::kMaterial: {
      const auto* m = static_cast<const MaterialRecord*>(&object);
      PutObjectHead("MATERIAL", object, owner, reactors);
      PutString(100, "AcDbMaterial");
      PutString(1, m->Name());
      if (!m->data().description.empty()) PutString(2, m->data().description);
      break;
    }
    case ObjectClass::kEntity:
    case ObjectClass::kBlockRecord:
    case ObjectClass::kLayer:
    case ObjectClass::kLinetype:
    case ObjectClass::kTextStyle:
    case ObjectClass::kRegApp:
    case ObjectClass::kDimStyle:
      return;  // entities and table records are written by EmitNewEntity and EmitNewRecord
  }
  PutXData(object);
}

void DbWriter::EmitXRecordValue(int code, const Variant& value) {
  ValueKind kind = KindOfCode(code);
  bool point = kind == ValueKind::kDouble && value.IsArray() &&
               ((code >= 10 && code <= 18) || (code >= 110 && code <= 112) || (code >= 1010 && code <= 1013));
  if (point) {
    const auto& items = value.Array().Items();
    for (size_t k = 0; k < 3 && k < items.size(); ++k) PutReal(code + 10 * static_cast<int>(k), NumberIn(items[k]));
    return;
  }
  switch (kind) {
    case ValueKind::kDouble: PutReal(code, NumberIn(value)); break;
    case ValueKind::kInt16:
    case ValueKind::kInt32:
    case ValueKind::kInt64:
    case ValueKind::kBool: PutInt(code, static_cast<int64_t>(NumberIn(value))); break;
    case ValueKind::kInvalid: break;  // a code DXF does not define cannot be written
    default: PutString(code, value.IsString() ? value.RawString() : std::string());
  }
}

void DbWriter::EmitLayout(const Layout& layout, uint64_t owner) {
  bool model = layout.data().block == doc_.model_space();
  PutObjectHead("LAYOUT", layout, owner, {owner});
  PutString(100, "AcDbPlotSettings");
  PutString(1, "");
  PutString(2, "none_device");
  PutString(4, "");
  PutString(6, "");
  for (int code = 40; code <= 49; ++code) PutReal(code, 0);
  PutReal(140, 0);
  PutReal(141, 0);
  PutReal(142, 1);
  PutReal(143, 1);
  PutInt(70, model ? 1712 : 688);
  PutInt(72, 0);
  PutInt(73, 0);
  PutInt(74, 5);
  PutString(7, "");
  PutInt(75, 16);
  PutReal(147, 1);
  PutInt(76, 0);
  PutInt(77, 2);
  PutInt(78, 300);
  PutReal(148, 0);
  PutReal(149, 0);
  PutString(100, "AcDbLayout");
  PutString(1, layout.Name());
  PutInt(70, 1);
  PutInt(71, layout.data().tab_order);
  PutPoint2(10, 0, 0);
  PutPoint2(11, 12, 9);
  PutPoint(12, {0, 0, 0});
  PutPoint(14, {1e20, 1e20, 1e20});
  PutPoint(15, {-1e20, -1e20, -1e20});
  PutReal(146, 0);
  PutPoint(13, {0, 0, 0});
  PutPoint(16, {1, 0, 0});
  PutPoint(17, {0, 1, 0});
  PutInt(76, 0);
  PutHandle(330, layout.data().block != nullptr ? layout.data().block->handle() : 0);
}

}  // namespace tovik::host::dxf
