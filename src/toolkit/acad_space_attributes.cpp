// AcadSpace: attribute texts of block references, attribute definitions of
// blocks, and the custom properties of dynamic block references, point and
// polar parameters exchanged in the space holding the reference.
#include <cmath>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/library_state.h"
#include "frame/runtime_text.h"
#include "frame/value_helpers.h"
#include "frame/variant_compare.h"
#include "geometry/vector_service.h"
#include "toolkit/acad_space.h"
#include "toolkit/convert_service.h"

namespace tovik {
namespace {

using geometry::Vec3;

bool SameName(const Variant& name, const std::string& wanted) {
  return UCase(CStr(name)) == UCase(wanted);
}

// Writes one attribute's text with its layer unlocked, every step trapped:
// a failing step leaves the attribute as the host left it, and the layer's
// lock is put back in any case.
void WriteAttribute(const ObjectRef& att, const Variant& new_value) {
  ResumeNext trap;
  ObjectRef layer;
  Variant was_locked;
  trap([&] {
    ObjectRef layers = GetProperty(GetProperty(att, "Document").Object(), "Layers").Object();
    layer = CallMethod(layers, "Item", {GetProperty(att, "Layer")}).Object();
  });
  trap([&] { was_locked = GetProperty(layer, "Lock"); });
  trap([&] { LetProperty(layer, "Lock", Variant(false)); });
  // An attribute is never given an empty text: "" is written as one space.
  bool empty = new_value.IsEmpty() || (new_value.IsString() && new_value.RawString().empty());
  if (!trap([&] { LetProperty(att, "TextString", empty ? Variant(" ") : new_value); })) {
    trap.Clear();
    trap([&] { LetProperty(att, "TextString", Variant(std::string(Trim(CStr(new_value))))); });
  }
  trap([&] { LetProperty(layer, "Lock", was_locked); });
}

// The attribute definitions of `bdef` tagged `tag`, in order; at most one
// when `first_only`.
std::vector<ObjectRef> AttributeDefinitions(const ObjectRef& bdef, const std::string& tag,
                                            bool first_only) {
  GetProperty(bdef, "Count");  // a non-collection fails here
  std::vector<ObjectRef> found;
  for (const Variant& member : ForEach(bdef)) {
    const ObjectRef& e = member.Object();
    if (!Like(e->TypeName(), "IAcadAttribute*").value_or(false)) continue;
    if (!SameName(GetProperty(e, "TagString"), tag)) continue;
    found.push_back(e);
    if (first_only) break;
  }
  return found;
}

// The dynamic properties of a reference, and the position of the first
// named `name` (-1 when none).
std::pair<std::vector<Variant>, int> FindProperty(const ObjectRef& dbref, const std::string& name) {
  std::vector<Variant> props = CallMethod(dbref, "GetDynamicBlockProperties").Array().Items();
  for (size_t i = 0; i < props.size(); ++i) {
    if (SameName(GetProperty(props[i].Object(), "PropertyName"), name)) {
      return {props, static_cast<int>(i)};
    }
  }
  return {props, -1};
}

// Entry i of the property list; one past its end raises 9, as reading the
// array would.
const ObjectRef& Entry(const std::vector<Variant>& props, int i) {
  if (i < 0 || static_cast<size_t>(i) >= props.size()) throw errors::SubscriptOutOfRange();
  return props[static_cast<size_t>(i)].Object();
}

Variant ToBlock(const Variant& point, const ObjectRef& dbref) {
  Variant out;
  AcadSpace::TranslatePointToBlock(point, dbref, out, Variant(true), Variant(false));
  return out;
}

Variant FromBlock(const Vec3& point, const ObjectRef& dbref) {
  Variant out;
  AcadSpace::TranslatePointFromBlock(PointOf(point), dbref, out, Variant(true), Variant(false));
  return out;
}

double AsDouble(const Variant& value) { return value.IsEmpty() ? 0.0 : CDbl(value); }

}  // namespace

std::string AcadSpace::AttRef_Get(const ObjectRef& block_ref, const std::string& tag,
                                  const Variant& new_value, Variant& flag) {
  flag = Variant(false);
  Variant atts = CallMethod(block_ref, "GetAttributes");
  if (ElementCount(atts) == 0) return "";
  bool writing = !new_value.IsMissing();
  for (const Variant& item : atts.Array().Items()) {
    const ObjectRef& att = item.Object();
    if (!SameName(GetProperty(att, "TagString"), tag)) continue;
    flag = Variant(true);
    if (!writing) return CStr(GetProperty(att, "TextString"));  // the first match
    WriteAttribute(att, new_value);
  }
  return writing && CBool(flag) ? CStr(new_value) : "";
}

Variant AcadSpace::AttDefs_Get(const ObjectRef& bdef, const std::string& tag) {
  Variant result(SafeArray::Empty(VarType::kObject));
  for (const ObjectRef& def : AttributeDefinitions(bdef, tag, false)) {
    InsertElement(result, Variant(def));
  }
  return result;
}

ObjectRef AcadSpace::AttDef_Get(const ObjectRef& bdef, const std::string& tag) {
  std::vector<ObjectRef> found = AttributeDefinitions(bdef, tag, true);
  return found.empty() ? nullptr : found.front();
}

Variant AcadSpace::DynamicProperty_Get(const ObjectRef& dblockref, const std::string& property_name,
                                       const Variant& new_value, Variant& flag,
                                       Variant& no_change) {
  no_change = Variant(true);
  if (!CBool(GetProperty(dblockref, "IsDynamicBlock"))) return Variant();
  flag = Variant(false);
  auto [props, at] = FindProperty(dblockref, property_name);
  if (at < 0) return Variant();
  const ObjectRef& prop = Entry(props, at);
  if (!new_value.IsMissing()) {
    Variant current = GetProperty(prop, "Value");
    if (tovik::TypeName(current) == "String") {
      if (!ValuesEqual(new_value, current)) {
        LetProperty(prop, "Value", new_value);
        no_change = Variant(false);
      }
    } else {
      ResumeNext trap;
      trap([&] {
        // The companion's conversion, through its shared instance.
        double d = CDbl(CallMethod(GlobalInstance<ConvertService>(), "ValueAsDouble", {new_value}));
        if (ValuesEqual(current, Variant(d))) return;
        no_change = Variant(false);
        if (!trap([&] { LetProperty(prop, "Value", Variant(d)); })) {
          trap.Clear();
          // Int(): the integer part, toward minus infinity.
          trap([&] { LetProperty(prop, "Value", Variant(std::floor(CDbl(new_value)))); });
        }
      });
    }
  }
  flag = Variant(true);
  return GetProperty(prop, "Value");
}

Variant AcadSpace::DynamicProperty_GetPoint(const ObjectRef& dbref, const std::string& point_name) {
  Variant flag, no_change, missing = Variant::Missing();
  Vec3 p{AsDouble(DynamicProperty_Get(dbref, point_name + " X", missing, flag, no_change)),
         AsDouble(DynamicProperty_Get(dbref, point_name + " Y", missing, flag, no_change)), 0};
  return FromBlock(p, dbref);
}

void AcadSpace::DynamicProperty_LetPoint(const ObjectRef& dbref, const std::string& point_name,
                                         const Variant& acad_point) {
  Vec3 p = VectorOf(ToBlock(acad_point, dbref));
  Variant flag, no_change;
  DynamicProperty_Get(dbref, point_name + " X", Variant(p.x), flag, no_change);
  DynamicProperty_Get(dbref, point_name + " Y", Variant(p.y), flag, no_change);
}

Variant AcadSpace::DynamicProperty_GetPolarPoint(const ObjectRef& dbref,
                                                 const std::string& polar_distance_name) {
  double dist = 0, angle = 0;
  Vec3 base;
  auto [props, at] = FindProperty(dbref, polar_distance_name);
  if (at >= 0) {
    dist = CDbl(GetProperty(Entry(props, at), "Value"));
    angle = CDbl(GetProperty(Entry(props, at + 1), "Value"));
    base = VectorOf(GetProperty(Entry(props, at + 2), "Value"));
  }
  Vec3 p{base.x + dist * std::cos(angle), base.y + dist * std::sin(angle), 0};
  if (!std::isfinite(p.x) || !std::isfinite(p.y)) throw errors::Overflow();
  return FromBlock(p, dbref);
}

void AcadSpace::DynamicProperty_LetPolarPoint(const ObjectRef& dbref,
                                              const std::string& polar_distance_name,
                                              const Variant& acad_point) {
  Vec3 p = VectorOf(ToBlock(acad_point, dbref));
  auto [props, at] = FindProperty(dbref, polar_distance_name);
  if (at < 0) return;
  Vec3 base = VectorOf(GetProperty(Entry(props, at + 2), "Value"));
  LetProperty(Entry(props, at), "Value", Variant(geometry::Length(p - base)));
  LetProperty(Entry(props, at + 1), "Value", Variant(AngleOf(p - base)));
}

}  // namespace tovik
