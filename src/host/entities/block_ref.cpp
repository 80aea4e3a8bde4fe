// Block references: placement, attributes, dynamic properties, conversion
// to an anonymous block.
#include <algorithm>
#include <cmath>
#include <optional>

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/copying/clone.h"
#include "host/entities/kinds.h"
#include "host/tables/dictionary.h"
#include "host/surface/member_helpers.h"
#include "host/tables/block.h"
#include "host/shapes/geometry_members.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

// IAcadDynamicBlockReferenceProperty: one property of one reference, by
// position (the list of a reference never changes length).
class DynamicPropertyObject : public DispatchObject<DynamicPropertyObject> {
 public:
  DynamicPropertyObject(std::shared_ptr<BlockRef> ref, size_t index)
      : ref_(std::move(ref)), index_(index) {}
  std::string_view TypeName() const override {
    return "IAcadDynamicBlockReferenceProperty";
  }
  static const MemberTable<DynamicPropertyObject>& Members();

 private:
  const DynamicProperty& prop() const {
    if (ref_->erased()) throw HostError(HostFailure::kObjectErased);
    return ref_->data().dynamic_properties.at(index_);
  }
  std::shared_ptr<BlockRef> ref_;
  size_t index_;
};

// The base point of rotation parameter p of `ref` (its record's first
// point; the definition's origin when there is none).
Vec3 RotationBase(const BlockRef& ref, const DynamicProperty& p) {
  if (const XRecord* record = EnhancedBlockData(ref, p.node)) {
    std::vector<RecordPoint> points = RecordPoints(*record);
    if (!points.empty()) return points[0].point;
  }
  return {};
}

// Refills the anonymous copy of its dynamic definition that a reference is
// drawn through, as the host program keeps such copies: every entity of
// the definition, shown as the reference's values say. Entities a
// visibility parameter governs but its state does not show are invisible;
// entities a rotation parameter's actions turn are turned about its base
// point by its angle. A reference to the definition itself is left as it
// is.
void RegenerateCopy(BlockRef& ref) {
  BlockRecord* shown_in = ref.data().block;
  const BlockRecord* source = ref.data().dynamic_source;
  if (shown_in == nullptr || source == nullptr || shown_in == source) return;
  auto listed = [](const std::vector<const Entity*>& list, const Entity* e) {
    return std::find(list.begin(), list.end(), e) != list.end();
  };
  for (Entity* e : std::vector<Entity*>(shown_in->entities())) {
    if (!e->erased()) e->Erase();
  }
  CloneSession session(*ref.document());
  std::vector<std::pair<const Entity*, Entity*>> clones;
  for (const Entity* e : source->entities()) {
    if (!e->erased()) clones.emplace_back(e, e->CloneInto(shown_in));
  }
  for (const DynamicProperty& p : ref.data().dynamic_properties) {
    for (size_t k = 0; k < p.shown.size() && k < p.allowed_values.size(); ++k) {
      if (!p.allowed_values[k].SameAs(p.value)) continue;
      for (auto& [original, copy] : clones) {
        copy->mutable_props().visible = !listed(p.governed, original) || listed(p.shown[k], original);
      }
    }
    if (p.units_type != 1 || p.turned.empty() || !p.value.IsNumber()) continue;
    std::optional<geometry::Matrix4> turn =
        geometry::Matrix4::Rotation(RotationBase(ref, p), {0, 0, 1}, NumberOf(p.value) - p.drawn_angle);
    if (!turn) continue;
    for (auto& [original, copy] : clones) {
      if (listed(p.turned, original)) TransformEntity(*copy, *turn, false);
    }
  }
}

void LetDynamicValue(DynamicPropertyObject& s, const DynamicProperty& p, BlockRef& ref,
                     size_t index, const Variant& v) {
  if (p.read_only) throw HostError(HostFailure::kNotApplicable);
  Variant value = v;
  if (p.value.IsArray()) {
    value = PointValue(PointArg(v, {"Value", "Value"}));
  } else if (p.value.Type() == VarType::kDouble) {
    value = Variant(DoubleArg(v, {"Value", "Value"}));
  }
  if (!p.allowed_values.empty()) {
    bool allowed = std::any_of(p.allowed_values.begin(), p.allowed_values.end(),
                               [&](const Variant& a) {
                                 if (a.IsNumber() && value.IsNumber()) {
                                   return NumberOf(a) == NumberOf(value);
                                 }
                                 return a.SameAs(value);
                               });
    if (!allowed) throw HostError(HostFailure::kInvalidInput);
  }
  ref.Touch();
  ref.mutable_data().dynamic_properties[index].value = value;
  // The value is also kept where the drawing file keeps it, so a saved
  // drawing reopens with it: a visibility state as code 1, an angle as the
  // turned end (the second point: the unturned end, the fourth, turned
  // about the base, the first).
  if (XRecord* record = EnhancedBlockData(ref, p.node)) {
    auto& d = record->mutable_data();
    std::vector<RecordPoint> points = RecordPoints(*record);
    if (value.IsString()) {
      for (size_t k = 0; k < d.codes.size(); ++k) {
        if (d.codes[k] != 1) continue;
        record->Touch();
        d.values[k] = value;
      }
    } else if (p.units_type == 1 && points.size() >= 4) {
      Vec3 base = points[0].point, arm = points[3].point - base;
      double angle = NumberOf(value), c = std::cos(angle), sn = std::sin(angle);
      const Vec3 turned{base.x + arm.x * c - arm.y * sn, base.y + arm.x * sn + arm.y * c, base.z + arm.z};
      record->Touch();
      const size_t at = points[1].at;
      const double xyz[] = {turned.x, turned.y, turned.z};
      for (size_t k = 0; k < 3 && at + k < d.codes.size() && d.codes[at + k] == 10 + 10 * static_cast<int>(k); ++k) {
        d.values[at + k] = Variant(xyz[k]);
      }
    }
  }
  // Only what the copy can show anew is regenerated: a parameter whose
  // geometry is not modelled leaves the copy as the file drew it.
  if (!p.shown.empty() || (p.units_type == 1 && !p.turned.empty())) RegenerateCopy(ref);
}

}  // namespace

XRecord* EnhancedBlockData(const BlockRef& ref, int32_t node) {
  if (node == 0) return nullptr;
  const Dictionary* dict = ref.xdict();
  for (const char* key : {"AcDbBlockRepresentation", "AppDataCache", "ACAD_ENHANCEDBLOCKDATA"}) {
    if (dict == nullptr) return nullptr;
    dict = AsObject<Dictionary>(dict->Find(key));
  }
  return dict ? AsObject<XRecord>(dict->Find(std::to_string(node))) : nullptr;
}

std::vector<RecordPoint> RecordPoints(const XRecord& record) {
  std::vector<RecordPoint> out;
  const auto& d = record.data();
  for (size_t k = 0; k < d.codes.size(); ++k) {
    if (d.codes[k] != 10 || !d.values[k].IsNumber()) continue;
    RecordPoint p{k, {NumberOf(d.values[k]), 0, 0}};
    if (k + 1 < d.codes.size() && d.codes[k + 1] == 20) p.point.y = NumberOf(d.values[k + 1]);
    if (k + 2 < d.codes.size() && d.codes[k + 2] == 30) p.point.z = NumberOf(d.values[k + 2]);
    out.push_back(p);
  }
  return out;
}

const MemberTable<DynamicPropertyObject>& DynamicPropertyObject::Members() {
  static const MemberTable<DynamicPropertyObject> table = [] {
    MemberTable<DynamicPropertyObject> t;
    using K = DynamicPropertyObject;
    t.Property("PropertyName", [](K& s, CallArgs&) { return Variant(s.prop().name); });
    t.Property(
        "Value", [](K& s, CallArgs&) { return s.prop().value; },
        [](K& s, CallArgs&, Variant& v) { LetDynamicValue(s, s.prop(), *s.ref_, s.index_, v); });
    t.Property("UnitsType", [](K& s, CallArgs&) { return Variant(s.prop().units_type); });
    t.Property("ReadOnly", [](K& s, CallArgs&) { return Variant(s.prop().read_only); });
    t.Property("Show", [](K& s, CallArgs&) { return Variant(s.prop().show); });
    t.Property("Description", [](K& s, CallArgs&) { return Variant(s.prop().description); });
    t.Property("AllowedValues", [](K& s, CallArgs&) {
      if (s.prop().allowed_values.empty()) return Variant();
      return Variant(SafeArray::OfVariants(s.prop().allowed_values));
    });
    return t;
  }();
  return table;
}

std::string_view BlockRef::TypeName() const {
  if (data_.columns > 1 || data_.rows > 1) return "IAcadMInsertBlock";
  if (data_.block && data_.block->data().is_xref) return "IAcadExternalReference";
  return "IAcadBlockReference";
}

std::string_view BlockRef::ObjectName() const {
  if (data_.columns > 1 || data_.rows > 1) return "AcDbMInsertBlock";
  return "AcDbBlockReference";
}

const std::string& BlockRef::EffectiveName() const {
  if (data_.dynamic_source) return data_.dynamic_source->Name();
  if (data_.block->data().dynamic_source) return data_.block->data().dynamic_source->Name();
  return data_.block->Name();
}

void BlockRef::AppendAttribute(AttributeRef* attribute) {
  attribute->set_owner(this);
  attributes_.push_back(attribute);
  if (Journal* j = journal()) j->Record([this] { attributes_.pop_back(); });
}

void BlockRef::CheckWritable() const { Entity::CheckWritable(); }

void BlockRef::Erase() {
  Touch();
  for (AttributeRef* att : attributes_) {
    if (!att->erased()) att->DbObject::Erase();
  }
  if (BlockRecord* b = block()) b->Detach(this);
  DbObject::Erase();
}

void BlockRef::Unerase() { DbObject::Unerase(); }

Entity* BlockRef::CloneInto(BlockRecord* target) const {
  auto* copy = static_cast<BlockRef*>(CloneEntity(*this, target));
  for (const AttributeRef* att : attributes_) {
    if (att->erased()) continue;
    auto* att_copy = target->document()->Create<AttributeRef>();
    att_copy->mutable_data() = att->data();
    CopyEntityBase(*att, att_copy);
    copy->AppendAttribute(att_copy);
  }
  return copy;
}

namespace {

void MoveAttributes(BlockRef& s, const Vec3& delta) {
  for (AttributeRef* att : s.attributes()) {
    if (att->erased()) continue;
    att->Touch();
    att->mutable_data().insertion += delta;
    att->mutable_data().alignment += delta;
  }
}

template <int Axis>
void LetScale(BlockRef& s, CallArgs&, Variant& v) {
  double f = DoubleArg(v, {"ScaleFactor", "ScaleFactor"});
  CheckDouble(f, Check::kNonZero);
  s.Touch();
  s.mutable_data().scale[Axis] = f;
}
template <int Axis>
Variant GetScale(BlockRef& s, CallArgs&) {
  return Variant(s.data().scale[Axis]);
}
template <int Axis>
Variant GetEffectiveScale(BlockRef& s, CallArgs&) {
  return Variant(s.data().scale[Axis] * s.data().dynamic_scale[Axis]);
}
// The effective factor includes what dynamic parameters scale by: the
// reference's own factor takes the rest.
template <int Axis>
void LetEffectiveScale(BlockRef& s, CallArgs&, Variant& v) {
  double f = DoubleArg(v, {"ScaleFactor", "ScaleFactor"});
  CheckDouble(f, Check::kNonZero);
  const double dynamic = s.data().dynamic_scale[Axis];
  s.Touch();
  s.mutable_data().scale[Axis] = dynamic != 0 ? f / dynamic : f;
}

Variant ConvertToAnonymousBlock(BlockRef& s, CallArgs&) {
  Document* doc = s.document();
  BlockRecord* source = s.data().block;
  s.Touch();
  BlockRecord* anon = doc->AddAnonymousBlock(source->data().origin);
  anon->mutable_data().units = source->data().units;
  for (Entity* e : source->entities()) {
    if (!e->erased()) e->CloneInto(anon);
  }
  s.mutable_data().block = anon;
  s.mutable_data().dynamic_source = nullptr;
  s.mutable_data().dynamic_properties.clear();
  return Variant();
}

}  // namespace

namespace {

// A multiple insert's grid (IAcadMInsertBlock): Columns, Rows,
// ColumnSpacing, RowSpacing. A plain reference does not have them (438).
BlockRef& Grid(BlockRef& s) {
  if (s.data().columns <= 1 && s.data().rows <= 1) throw errors::NotSupported();
  return s;
}

void AddGridMembers(MemberTable<BlockRef>& t) {
  using K = BlockRef;
  t.Property("Columns", [](K& s, CallArgs&) { return Variant(Grid(s).data().columns); });
  t.Property("Rows", [](K& s, CallArgs&) { return Variant(Grid(s).data().rows); });
  t.Property("ColumnSpacing",
             [](K& s, CallArgs&) { return Variant(Grid(s).data().column_spacing); });
  t.Property("RowSpacing", [](K& s, CallArgs&) { return Variant(Grid(s).data().row_spacing); });
}

}  // namespace

const MemberTable<BlockRef>& BlockRef::Members() {
  static const MemberTable<BlockRef> table = [] {
    MemberTable<BlockRef> t;
    using K = BlockRef;
    t.Property(
        "Name", [](K& s, CallArgs&) { return Variant(s.data().block->Name()); },
        [](K& s, CallArgs&, Variant& v) {
          std::string name = StringArg(v, {"Name", "Name"});
          BlockRecord* block = s.document()->blocks().Find(name);
          if (!block) throw HostError(HostFailure::kKeyNotFound);
          if (block->IsLayout()) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_data().block = block;
        });
    t.Property("EffectiveName", [](K& s, CallArgs&) { return Variant(s.EffectiveName()); });
    t.Property("InsertionPoint", GetPointField<K, &K::Data::insertion>,
               [](K& s, CallArgs&, Variant& v) {
                 Vec3 p = PointArg(v, {"InsertionPoint", "InsertionPoint"});
                 Vec3 delta = p - s.data().insertion;
                 s.Touch();
                 MoveAttributes(s, delta);
                 s.mutable_data().insertion = p;
               });
    t.Property("Rotation", GetDoubleField<K, &K::Data::rotation>,
               LetDoubleField<K, &K::Data::rotation, "Rotation">);
    t.Property("XScaleFactor", GetScale<0>, LetScale<0>);
    t.Property("YScaleFactor", GetScale<1>, LetScale<1>);
    t.Property("ZScaleFactor", GetScale<2>, LetScale<2>);
    t.Property("XEffectiveScaleFactor", GetEffectiveScale<0>, LetEffectiveScale<0>);
    t.Property("YEffectiveScaleFactor", GetEffectiveScale<1>, LetEffectiveScale<1>);
    t.Property("ZEffectiveScaleFactor", GetEffectiveScale<2>, LetEffectiveScale<2>);
    AddNormalMember(t);
    AddGridMembers(t);
    t.Property("IsDynamicBlock", [](K& s, CallArgs&) { return Variant(s.IsDynamic()); });
    t.Property("HasAttributes", [](K& s, CallArgs&) {
      for (const Entity* e : s.data().block->entities()) {
        if (!e->erased() && As<AttributeDef>(e)) return Variant(true);
      }
      return Variant(false);
    });
    t.Method("GetAttributes", [](K& s, CallArgs&) {
      std::vector<ObjectRef> out;
      for (AttributeRef* att : s.attributes()) {
        if (!att->erased()) out.push_back(s.document()->Ref(att));
      }
      return ObjectsValue(out);
    });
    t.Method("GetConstantAttributes", [](K& s, CallArgs&) {
      std::vector<ObjectRef> out;
      for (Entity* e : s.data().block->entities()) {
        auto* def = As<AttributeDef>(e);
        if (def && !def->erased() && (def->data().mode & kAttConstant)) {
          out.push_back(s.document()->Ref(def));
        }
      }
      return ObjectsValue(out);
    });
    t.Method("GetDynamicBlockProperties", [](K& s, CallArgs&) {
      std::vector<ObjectRef> out;
      auto self = s.document()->RefAs(&s);
      for (size_t i = 0; i < s.data().dynamic_properties.size(); ++i) {
        out.push_back(std::make_shared<DynamicPropertyObject>(self, i));
      }
      return ObjectsValue(out);
    });
    t.Method("ConvertToAnonymousBlock", ConvertToAnonymousBlock);
    t.Method(
        "ConvertToStaticBlock",
        [](K& s, CallArgs& a) {
          std::string name = StringArg(a[0], {"newBlockName", "ConvertToStaticBlock"});
          Document* doc = s.document();
          if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
          if (doc->blocks().Find(name)) throw HostError(HostFailure::kDuplicateRecordName);
          s.Touch();
          BlockRecord* source = s.data().block;
          BlockRecord* fresh = doc->AddBlock(name, source->data().origin);
          for (Entity* e : source->entities()) {
            if (!e->erased()) e->CloneInto(fresh);
          }
          s.mutable_data().block = fresh;
          s.mutable_data().dynamic_source = nullptr;
          s.mutable_data().dynamic_properties.clear();
          return Variant();
        },
        1, 1);
    t.Method("ResetBlock", [](K& s, CallArgs&) {
      if (!s.IsDynamic()) return Variant();
      s.Touch();
      s.mutable_data().dynamic_properties = s.data().dynamic_source->data().dynamic_properties;
      return Variant();
    });
    return t;
  }();
  return table;
}

}  // namespace tovik::host
