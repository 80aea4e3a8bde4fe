// The records no live object stands for, generated when the model lacks
// them: the header of a new drawing, the classes of the objects written,
// table heads, the active viewport, and the standard dictionaries of the
// named-object dictionary (groups, layouts, materials, multiline styles,
// plot settings, plot style names).
#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/shapes/entity_shapes.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;


// A header variable the host holds as a system variable: DXF name, group
// code (10: a 3D point, 11: a 2D point written as 10/20), the system
// variable it comes from ("" for a fixed value) and the value written when
// the host has none.
struct HeaderDef {
  std::string_view name;
  int code;
  std::string_view sysvar;
  double fallback = 0;
};

constexpr HeaderDef kHeaderDefs[] = {
    {"$INSBASE", 10, "INSBASE"},     {"$ORTHOMODE", 70, ""},          {"$REGENMODE", 70, "", 1},
    {"$FILLMODE", 70, "", 1},        {"$QTEXTMODE", 70, ""},          {"$MIRRTEXT", 70, "MIRRTEXT"},
    {"$LTSCALE", 40, "LTSCALE", 1},  {"$ATTMODE", 70, "", 1},         {"$TEXTSIZE", 40, "TEXTSIZE", 2.5},
    {"$TRACEWID", 40, "", 1},        {"$TEXTSTYLE", 7, "TEXTSTYLE"},  {"$CLAYER", 8, "CLAYER"},
    {"$CELTYPE", 6, "CELTYPE"},      {"$CECOLOR", 62, "CECOLOR"},     {"$CELTSCALE", 40, "CELTSCALE", 1},
    {"$DIMSCALE", 40, "DIMSCALE", 1}, {"$DIMLFAC", 40, "DIMLFAC", 1}, {"$LUNITS", 70, "LUNITS", 2},
    {"$LUPREC", 70, "LUPREC", 4},    {"$ANGBASE", 50, "ANGBASE"},     {"$ANGDIR", 70, "ANGDIR"},
    {"$PDMODE", 70, "PDMODE"},       {"$PDSIZE", 40, "PDSIZE"},       {"$PLINEWID", 40, ""},
    {"$USERI1", 70, "USERI1"},       {"$USERI2", 70, "USERI2"},       {"$USERI3", 70, "USERI3"},
    {"$USERI4", 70, "USERI4"},       {"$USERI5", 70, "USERI5"},       {"$USERR1", 40, "USERR1"},
    {"$USERR2", 40, "USERR2"},       {"$USERR3", 40, "USERR3"},       {"$USERR4", 40, "USERR4"},
    {"$USERR5", 40, "USERR5"},       {"$TILEMODE", 70, "TILEMODE", 1}, {"$PSLTSCALE", 70, "PSLTSCALE", 1},
    {"$MEASUREMENT", 70, "MEASUREMENT"}, {"$INSUNITS", 70, "INSUNITS"}, {"$UCSORG", 10, "UCSORG"},
    {"$UCSXDIR", 10, "UCSXDIR"},     {"$UCSYDIR", 10, "UCSYDIR"},     {"$SORTENTS", 280, "SORTENTS", 127},
};

// A class the objects this writer generates need: DXF name, C++ class,
// application, proxy flags, whether it is an entity.
struct ClassDef {
  std::string_view dxf_name, cpp_name, app;
  int flags;
  bool entity;
};

constexpr ClassDef kClasses[] = {
    {"ACDBDICTIONARYWDFLT", "AcDbDictionaryWithDefault", "ObjectDBX Classes", 0, false},
    {"ACDBPLACEHOLDER", "AcDbPlaceHolder", "ObjectDBX Classes", 0, false},
    {"LAYOUT", "AcDbLayout", "ObjectDBX Classes", 0, false},
    {"MATERIAL", "AcDbMaterial", "ObjectDBX Classes", 1153, false},
    {"SORTENTSTABLE", "AcDbSortentsTable", "ObjectDBX Classes", 0, false},
    {"WIPEOUT", "AcDbWipeout", "WipeOut|AutoCAD Express Tool|expresstools@autodesk.com", 127, true},
    {"IMAGE", "AcDbRasterImage", "ISM", 2175, true},
    {"IMAGEDEF", "AcDbRasterImageDef", "ISM", 0, false},
    {"IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor", "ISM", 1, false},
};

double NumberOr(const Variant& v, double fallback) {
  if (!v.IsNumber() && !v.IsBoolean()) return fallback;
  return v.Type() == VarType::kDouble || v.Type() == VarType::kSingle ? v.RawDouble()
                                                                      : static_cast<double>(v.RawInt());
}

Vec3 PointOf(const Variant& v) {
  Vec3 p;
  if (!v.IsArray()) return p;
  const auto& items = v.Array().Items();
  double* c[3] = {&p.x, &p.y, &p.z};
  for (size_t i = 0; i < 3 && i < items.size(); ++i) *c[i] = NumberOr(items[i], 0);
  return p;
}

}  // namespace

// ---------------------------------------------------------------- header

void DbWriter::EmitHeader(const Section& section) {
  auto& vars = const_cast<Document&>(doc_).sysvar_values();
  bool seed_written = false;
  // The version comes first, also where the file's header lacked it:
  // without it readers take the drawing for R12.
  if (std::none_of(section.variables.begin(), section.variables.end(),
                   [](const HeaderVariable& v) { return v.name == "$ACADVER"; })) {
    PutString(9, "$ACADVER");
    PutString(1, version_);
  }
  for (const HeaderVariable& v : section.variables) {
    Put(v.name_tag);
    std::string_view name = v.name;
    if (v.tags.empty()) continue;
    // Variables the host writes take their own group codes, whatever code
    // the file gave them (a damaged file may give a text an integer's code).
    if (name == "$ACADVER") {
      PutString(1, version_);
    } else if (name == "$CLAYER" && doc_.active_layer() != nullptr &&
               FoldName(v.tags[0].text) != FoldName(doc_.active_layer()->Name())) {
      PutString(8, doc_.active_layer()->Name());
    } else if (name == "$TILEMODE" && v.tags[0].IsInteger() &&
               (v.tags[0].integer != 0) != doc_.model_active()) {
      PutInt(70, doc_.model_active() ? 1 : 0);
    } else if (name == "$HANDSEED") {
      PutHandle(5, HandleSeed());
      seed_written = true;
    } else if ((name == "$INSUNITS" || name.starts_with("$USERI") || name.starts_with("$USERR")) &&
               vars.count(std::string(name.substr(1)))) {
      const Variant& value = vars[std::string(name.substr(1))];
      const Tag& t = v.tags[0];
      if (name.starts_with("$USERR") && value.IsNumber()) {
        bool same = t.code == 40 && t.IsDouble() && t.real == value.RawDouble();
        Put(same ? t : Tag::Double(40, value.RawDouble()));
      } else if (value.IsNumber()) {
        bool same = t.code == 70 && t.IsInteger() && t.integer == value.RawInt();
        Put(same ? t : Tag::Integer(70, value.RawInt()));
      } else {
        Put(v.tags[0]);
      }
    } else {
      for (const Tag& t : v.tags) Put(t);
    }
  }
  if (!seed_written) {
    PutString(9, "$HANDSEED");
    PutHandle(5, HandleSeed());
  }
  EmitMissingHeaderVariables(section);
}

void DbWriter::EmitNewHeader() {
  auto var = [&](std::string_view name) {
    PutString(9, name);
  };
  var("$ACADVER");
  PutString(1, version_);
  var("$DWGCODEPAGE");
  PutString(3, "ANSI_1252");
  // Extents of model space, as the drawing holds them now.
  geometry::BoundingBox box = ModelSpaceExtents(false);
  var("$EXTMIN");
  PutPoint(10, box.has_data ? box.min : Vec3{1e20, 1e20, 1e20});
  var("$EXTMAX");
  PutPoint(10, box.has_data ? box.max : Vec3{-1e20, -1e20, -1e20});
  bool metric = NumberOr(doc_.GetSysVar("MEASUREMENT"), 0) != 0;
  var("$LIMMIN");
  PutPoint2(10, 0, 0);
  var("$LIMMAX");
  PutPoint2(10, metric ? 420 : 12, metric ? 297 : 9);
  // A file read without a header meant unitless; the host's own start
  // value for a new document does not apply to it.
  bool read_from_file = !source_.model.sections().empty();
  for (const HeaderDef& def : kHeaderDefs) {
    if (read_from_file && def.name == "$INSUNITS") continue;
    var(def.name);
    Variant value;
    if (!def.sysvar.empty()) value = doc_.GetSysVar(def.sysvar);
    if (def.code == 10) {
      PutPoint(10, PointOf(value));
    } else if (def.code == 62) {
      // CECOLOR is held as text: "BYLAYER", "BYBLOCK" or a number.
      std::string text = value.IsString() ? value.RawString() : "BYLAYER";
      int64_t aci = 256;
      if (FoldName(text) == "byblock") aci = 0;
      if (!text.empty() && std::isdigit(static_cast<unsigned char>(text[0]))) aci = std::atoi(text.c_str());
      PutInt(62, aci);
    } else if (KindOfCode(def.code) == ValueKind::kString) {
      PutString(def.code, value.IsString() ? value.RawString() : std::string("ByLayer"));
    } else if (def.code == 50) {
      PutReal(50, NumberOr(value, def.fallback) * kRadToDeg);
    } else if (KindOfCode(def.code) == ValueKind::kDouble) {
      PutReal(def.code, NumberOr(value, def.fallback));
    } else {
      PutInt(def.code, static_cast<int64_t>(NumberOr(value, def.fallback)));
    }
  }
  var("$DIMSTYLE");
  PutString(2, doc_.dim_styles().items.empty() ? "Standard" : doc_.dim_styles().items[0]->Name());
  var("$CMLSTYLE");
  PutString(2, "Standard");
  var("$PSTYLEMODE");
  PutInt(290, 1);
  var("$HANDSEED");
  PutHandle(5, HandleSeed());
}

void DbWriter::EmitMissingHeaderVariables(const Section& section) {
  auto has = [&](std::string_view name) {
    return std::any_of(section.variables.begin(), section.variables.end(),
                       [&](const HeaderVariable& v) { return v.name == name; });
  };
  auto& vars = doc_.sysvar_values();
  // What the host may have been given that a file without it never named.
  for (const HeaderDef& def : kHeaderDefs) {
    // $INSUNITS is left out: a file without it means unitless drawings,
    // whatever a new document starts with.
    bool held = def.name.starts_with("$USERI") || def.name.starts_with("$USERR");
    if (!held || has(def.name) || !vars.count(std::string(def.sysvar))) continue;
    const Variant& value = vars[std::string(def.sysvar)];
    if (NumberOr(value, 0) == 0) continue;  // the default a reader assumes anyway
    PutString(9, def.name);
    if (def.code == 40) {
      PutReal(40, NumberOr(value, 0));
    } else {
      PutInt(def.code, static_cast<int64_t>(NumberOr(value, 0)));
    }
  }
  if ((modern_ || !IsUtf8Version(version_)) && !has("$DWGCODEPAGE")) {
    PutString(9, "$DWGCODEPAGE");
    PutString(3, "ANSI_1252");
  }
}

// ---------------------------------------------------------------- classes

void DbWriter::EmitClasses(const Section* section) {
  std::vector<std::string_view> present;
  if (section != nullptr) {
    for (const Record& r : section->records) {
      PutRecordTags(r);
      present.push_back(r.StringOr(1));
    }
  }
  if (!modern_) return;
  for (const ClassDef& c : kClasses) {
    if (std::find(present.begin(), present.end(), c.dxf_name) != present.end()) continue;
    // A file read keeps its classes; only those of objects it gained are added.
    if (section != nullptr && !needed_classes_.count(std::string(c.dxf_name))) continue;
    PutString(0, "CLASS");
    PutString(1, c.dxf_name);
    PutString(2, c.cpp_name);
    PutString(3, c.app);
    PutInt(90, c.flags);
    PutInt(91, 0);
    PutInt(280, 0);
    PutInt(281, c.entity ? 1 : 0);
  }
}

// ---------------------------------------------------------------- tables

void DbWriter::EmitTableHead(std::string_view name, uint64_t handle, size_t count) {
  PutString(0, "TABLE");
  PutString(2, name);
  PutHandle(5, handle);
  PutHandle(330, 0);
  PutString(100, "AcDbSymbolTable");
  PutInt(70, static_cast<int64_t>(count));
  if (name == "DIMSTYLE") {
    PutString(100, "AcDbDimStyleTable");
    PutInt(71, 0);
  }
}

geometry::BoundingBox DbWriter::ModelSpaceExtents(bool bounded_only) const {
  geometry::BoundingBox box;
  for (const Entity* e : doc_.model_space()->entities()) {
    if (!Written(e)) continue;
    std::vector<Primitive> shape;
    AppendPrimitives(*e, nullptr, &shape);
    ShapeExtents x = ExtentsOf(shape);
    if (x.box.has_data && !(bounded_only && x.unbounded)) {
      box.Extend(x.box.min);
      box.Extend(x.box.max);
    }
  }
  return box;
}

void DbWriter::EmitActiveViewport(uint64_t owner) {
  // The view shows model space's extents (the host's stored view when the
  // drawing is empty); rays and construction lines have no end to show.
  geometry::BoundingBox box = ModelSpaceExtents(true);
  Vec3 center = PointOf(doc_.GetSysVar("VIEWCTR"));
  double height = NumberOr(doc_.GetSysVar("VIEWSIZE"), 200);
  if (box.has_data) {
    center = (box.min + box.max) * 0.5;
    height = std::max({(box.max.y - box.min.y) * 1.1, (box.max.x - box.min.x) * 1.1 / 1.5, 1e-6});
  }
  PutString(0, "VPORT");
  PutHandle(5, NextHandle());
  PutHandle(330, owner);
  PutString(100, "AcDbSymbolTableRecord");
  PutString(100, "AcDbViewportTableRecord");
  PutString(2, "*Active");
  PutInt(70, 0);
  PutPoint2(10, 0, 0);
  PutPoint2(11, 1, 1);
  PutPoint2(12, center.x, center.y);
  PutPoint2(13, 0, 0);
  PutPoint2(14, 0.5, 0.5);
  PutPoint2(15, 0.5, 0.5);
  PutPoint(16, {0, 0, 1});
  PutPoint(17, {0, 0, 0});
  PutReal(40, height);
  PutReal(41, 1.5);
  PutReal(42, 50);
  PutReal(43, 0);
  PutReal(44, 0);
  PutReal(50, 0);
  PutReal(51, 0);
  PutInt(71, 0);
  PutInt(72, 1000);
  PutInt(73, 1);
  PutInt(74, 3);
  PutInt(75, 0);
  PutInt(76, 0);
  PutInt(77, 0);
  PutInt(78, 0);
  PutInt(281, 0);
  PutInt(65, 1);
  PutPoint(110, {0, 0, 0});
  PutPoint(111, {1, 0, 0});
  PutPoint(112, {0, 1, 0});
  PutInt(79, 0);
  PutReal(146, 0);
}

// ---------------------------------------------------------------- objects

void DbWriter::EmitStandardObject(const StandardObject& s) {
  uint64_t root = doc_.named_objects()->handle();
  auto dictionary_head = [&](std::string_view type) {
    PutString(0, type);
    PutHandle(5, s.handle);
    PutString(102, "{ACAD_REACTORS");
    PutHandle(330, root);
    PutString(102, "}");
    PutHandle(330, root);
    PutString(100, "AcDbDictionary");
    PutInt(281, 1);
  };
  auto owned_head = [&](std::string_view type, uint64_t handle) {
    PutString(0, type);
    PutHandle(5, handle);
    PutString(102, "{ACAD_REACTORS");
    PutHandle(330, s.handle);
    PutString(102, "}");
    PutHandle(330, s.handle);
  };
  if (s.key == "ACAD_MLINESTYLE") {
    uint64_t standard = NextHandle();
    dictionary_head("DICTIONARY");
    PutString(3, "Standard");
    PutHandle(350, standard);
    owned_head("MLINESTYLE", standard);
    PutString(100, "AcDbMlineStyle");
    PutString(2, "Standard");
    PutInt(70, 0);
    PutString(3, "");
    PutInt(62, 256);
    PutReal(51, 90);
    PutReal(52, 90);
    PutInt(71, 2);
    for (double offset : {0.5, -0.5}) {
      PutReal(49, offset);
      PutInt(62, 256);
      PutString(6, "BYLAYER");
    }
  } else if (s.key == "ACAD_PLOTSTYLENAME") {
    uint64_t normal = plot_style_normal_;
    dictionary_head("ACDBDICTIONARYWDFLT");
    PutString(3, "Normal");
    PutHandle(350, normal);
    PutString(100, "AcDbDictionaryWithDefault");
    PutHandle(340, normal);
    owned_head("ACDBPLACEHOLDER", normal);
  } else {
    dictionary_head("DICTIONARY");
    std::vector<DictEntry> entries = StandardEntries(s.key);
    for (const DictEntry& e : entries) {
      PutString(3, e.key);
      PutHandle(350, e.handle);
    }
    // What they hold follows, written from the objects.
    for (const DictEntry& e : entries) {
      if (!IsNew(e.object) || emitted_.count(e.object)) continue;
      emitted_[e.object] = true;
      EmitNew(*e.object, s.handle);
    }
  }
}

}  // namespace tovik::host::dxf
