// System variables: the table of names, types and write rules, and
// GetVariable / SetVariable with the host's strict type matching.
#include <algorithm>
#include <string>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/surface/args.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

enum class SysVarType : uint8_t { kInteger, kDouble, kString, kPoint2, kPoint3 };

struct SysVarDef {
  std::string_view name;
  SysVarType type;
  bool read_only;
};

// Variables with special storage (CLAYER, TEXTSTYLE, TILEMODE, CVPORT,
// DWGNAME) are answered from the document's state; the others are stored.
constexpr SysVarDef kSysVars[] = {
    {"ACADVER", SysVarType::kString, true},     {"ANGBASE", SysVarType::kDouble, false},
    {"ANGDIR", SysVarType::kInteger, false},    {"ATTDIA", SysVarType::kInteger, false},
    {"ATTREQ", SysVarType::kInteger, false},    {"CECOLOR", SysVarType::kString, false},
    {"CELTSCALE", SysVarType::kDouble, false},  {"CELTYPE", SysVarType::kString, false},
    {"CLAYER", SysVarType::kString, false},     {"CMDECHO", SysVarType::kInteger, false},
    {"CVPORT", SysVarType::kInteger, false},    {"DIMLFAC", SysVarType::kDouble, false},
    {"DIMSCALE", SysVarType::kDouble, false},   {"DWGNAME", SysVarType::kString, true},
    {"DWGPREFIX", SysVarType::kString, true},   {"ERRNO", SysVarType::kInteger, false},
    {"EXTMAX", SysVarType::kPoint3, true},      {"EXTMIN", SysVarType::kPoint3, true},
    {"FILEDIA", SysVarType::kInteger, false},   {"INSBASE", SysVarType::kPoint3, false},
    {"INSUNITS", SysVarType::kInteger, false},  {"LTSCALE", SysVarType::kDouble, false},
    {"LUNITS", SysVarType::kInteger, false},    {"LUPREC", SysVarType::kInteger, false},
    {"MEASUREMENT", SysVarType::kInteger, false}, {"MIRRTEXT", SysVarType::kInteger, false},
    {"OSMODE", SysVarType::kInteger, false},    {"PDMODE", SysVarType::kInteger, false},
    {"PDSIZE", SysVarType::kDouble, false},     {"PICKBOX", SysVarType::kInteger, false},
    {"PSLTSCALE", SysVarType::kInteger, false}, {"SCREENSIZE", SysVarType::kPoint2, true},
    {"SORTENTS", SysVarType::kInteger, false},  {"TARGET", SysVarType::kPoint3, true},
    {"TEXTSIZE", SysVarType::kDouble, false},   {"TEXTSTYLE", SysVarType::kString, false},
    {"TILEMODE", SysVarType::kInteger, false},  {"UCSORG", SysVarType::kPoint3, true},
    {"UCSXDIR", SysVarType::kPoint3, true},     {"UCSYDIR", SysVarType::kPoint3, true},
    {"UNDOCTL", SysVarType::kInteger, true},    {"USERI1", SysVarType::kInteger, false},
    {"USERI2", SysVarType::kInteger, false},    {"USERI3", SysVarType::kInteger, false},
    {"USERI4", SysVarType::kInteger, false},    {"USERI5", SysVarType::kInteger, false},
    {"USERR1", SysVarType::kDouble, false},     {"USERR2", SysVarType::kDouble, false},
    {"USERR3", SysVarType::kDouble, false},     {"USERR4", SysVarType::kDouble, false},
    {"USERR5", SysVarType::kDouble, false},     {"USERS1", SysVarType::kString, false},
    {"USERS2", SysVarType::kString, false},     {"USERS3", SysVarType::kString, false},
    {"USERS4", SysVarType::kString, false},     {"USERS5", SysVarType::kString, false},
    {"VIEWCTR", SysVarType::kPoint3, true},     {"VIEWDIR", SysVarType::kPoint3, true},
    {"VIEWSIZE", SysVarType::kDouble, true},    {"VIEWTWIST", SysVarType::kDouble, true},
};

const SysVarDef* FindDef(std::string_view name) {
  for (const SysVarDef& d : kSysVars) {
    if (CaseInsensitiveEqual(d.name, name)) return &d;
  }
  return nullptr;
}

bool TypeMatches(const SysVarDef& def, const Variant& v) {
  switch (def.type) {
    case SysVarType::kInteger: return v.Type() == VarType::kInteger && !v.IsArray();
    case SysVarType::kDouble: return v.Type() == VarType::kDouble && !v.IsArray();
    case SysVarType::kString: return v.IsString();
    case SysVarType::kPoint2:
    case SysVarType::kPoint3:
      return v.IsArray() && v.Array().Dims() == 1 &&
             (v.Array().Count() == 2 || v.Array().Count() == 3);
  }
  return false;
}

}  // namespace

void InitSysVars(Document& doc) {
  auto& v = doc.sysvar_values();
  auto point = [](double x, double y, double z) { return PointValue({x, y, z}); };
  v["ACADVER"] = Variant("24.1s (LMS Tech)");
  v["ANGBASE"] = Variant(0.0);
  for (const char* name : {"ANGDIR", "ERRNO", "LUNITS", "MIRRTEXT", "OSMODE", "PDMODE",
                           "PSLTSCALE", "CMDECHO", "FILEDIA", "MEASUREMENT"}) {
    v[name] = Variant(int16_t{0});
  }
  v["LUNITS"] = Variant(int16_t{2});
  v["LUPREC"] = Variant(int16_t{4});
  v["ATTDIA"] = Variant(int16_t{0});
  v["ATTREQ"] = Variant(int16_t{1});
  v["CMDECHO"] = Variant(int16_t{1});
  v["FILEDIA"] = Variant(int16_t{1});
  v["MEASUREMENT"] = Variant(int16_t{1});
  v["PICKBOX"] = Variant(int16_t{3});
  v["SORTENTS"] = Variant(int16_t{127});
  v["UNDOCTL"] = Variant(int16_t{53});
  v["INSUNITS"] = Variant(int16_t{4});
  v["TILEMODE"] = Variant(int16_t{1});
  v["CECOLOR"] = Variant("BYLAYER");
  v["CELTSCALE"] = Variant(1.0);
  v["CELTYPE"] = Variant("ByLayer");
  v["DIMLFAC"] = Variant(1.0);
  v["DIMSCALE"] = Variant(1.0);
  v["LTSCALE"] = Variant(1.0);
  v["PDSIZE"] = Variant(0.0);
  v["TEXTSIZE"] = Variant(2.5);
  v["DWGPREFIX"] = Variant("");
  v["EXTMIN"] = point(1e20, 1e20, 1e20);
  v["EXTMAX"] = point(-1e20, -1e20, -1e20);
  v["INSBASE"] = point(0, 0, 0);
  v["SCREENSIZE"] = Variant(SafeArray::OfDoubles({1600.0, 900.0}));
  v["TARGET"] = point(0, 0, 0);
  v["UCSORG"] = point(0, 0, 0);
  v["UCSXDIR"] = point(1, 0, 0);
  v["UCSYDIR"] = point(0, 1, 0);
  v["VIEWCTR"] = point(800.0 / 900.0 * 100, 100, 0);
  v["VIEWDIR"] = point(0, 0, 1);
  v["VIEWSIZE"] = Variant(200.0);
  v["VIEWTWIST"] = Variant(0.0);
  for (int i = 1; i <= 5; ++i) {
    std::string n = std::to_string(i);
    v["USERI" + n] = Variant(int16_t{0});
    v["USERR" + n] = Variant(0.0);
    v["USERS" + n] = Variant("");
  }
}

Variant Document::GetSysVar(std::string_view name) {
  const SysVarDef* def = FindDef(name);
  if (!def) throw HostError(HostFailure::kGetSysVarFailed);
  std::string key(def->name);
  if (key == "CLAYER") return Variant(active_layer_->Name());
  if (key == "TEXTSTYLE") return Variant(active_text_style_->Name());
  if (key == "DWGNAME") return Variant(name_);
  if (key == "TILEMODE") return Variant(int16_t{model_active() ? int16_t{1} : int16_t{0}});
  if (key == "CVPORT") {
    // 2: the model viewport (or the floating one in MSpace); 1: paper.
    return Variant(int16_t{model_active() || mspace_ ? int16_t{2} : int16_t{1}});
  }
  return sysvars_.at(key);
}

void Document::SetSysVar(std::string_view name, const Variant& value) {
  const SysVarDef* def = FindDef(name);
  if (!def || def->read_only) throw HostError(HostFailure::kSetSysVarFailed);
  if (!TypeMatches(*def, value)) throw InvalidArgument("Value", "SetVariable");
  std::string key(def->name);
  if (key == "CLAYER") {
    LayerRecord* layer = layers_.Find(value.RawString());
    if (!layer) throw HostError(HostFailure::kKeyNotFound);
    SetActiveLayer(layer);
    return;
  }
  if (key == "TEXTSTYLE") {
    TextStyleRecord* style = text_styles_.Find(value.RawString());
    if (!style) throw HostError(HostFailure::kKeyNotFound);
    TextStyleRecord* old = active_text_style_;
    active_text_style_ = style;
    Record([this, old] { active_text_style_ = old; });
    return;
  }
  if (key == "CELTYPE" && !linetypes_.Find(value.RawString())) {
    throw HostError(HostFailure::kKeyNotFound);
  }
  if (key == "TILEMODE") {
    int16_t mode = static_cast<int16_t>(value.RawInt());
    if (mode != 0 && mode != 1) throw HostError(HostFailure::kInvalidInput);
    Layout* target = mode == 1 ? model_space_->data().layout : paper_layout_;
    if (target != active_layout_) SetActiveLayout(target);
    return;
  }
  if (key == "CVPORT") {
    int16_t port = static_cast<int16_t>(value.RawInt());
    if (port < 1) throw HostError(HostFailure::kInvalidInput);
    if (!model_active()) SetMSpace(port != 1);
    return;
  }
  if (key == "INSUNITS" && (value.RawInt() < 0 || value.RawInt() > 24)) {
    throw HostError(HostFailure::kInvalidInput);
  }
  Variant stored = value;
  if (def->type == SysVarType::kPoint3 || def->type == SysVarType::kPoint2) {
    stored = DoublesValue(value.Array().ToDoubles());
  }
  Variant old = sysvars_[key];
  sysvars_[key] = stored;
  Record([this, key, old] { sysvars_[key] = old; });
}

}  // namespace tovik::host
