#include "host/entities/entity.h"

#include <algorithm>

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/shapes/geometry_members.h"
#include "host/surface/args.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

constexpr int16_t kLineweights[] = {0,  5,  9,  13, 15,  18,  20,  25,  30,  35,  40,  50,
                                    53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

bool IsValidLineweight(int32_t w) {
  if (w >= -3 && w <= -1) return true;
  return std::find(std::begin(kLineweights), std::end(kLineweights), w) !=
         std::end(kLineweights);
}

Document& Doc(Entity& e) { return *e.document(); }

void LetLayer(Entity& s, CallArgs&, Variant& v) {
  std::string name = StringArg(v, {"Layer", "Layer"});
  LayerRecord* layer = Doc(s).layers().Find(name);
  if (!layer) throw HostError(HostFailure::kKeyNotFound);
  // Moving onto a locked layer is refused too.
  if (layer->data().locked) throw HostError(HostFailure::kOnLockedLayer);
  s.Touch();
  s.mutable_props().layer = layer;
}

void LetLinetype(Entity& s, CallArgs&, Variant& v) {
  std::string name = StringArg(v, {"Linetype", "Linetype"});
  LinetypeRecord* lt = Doc(s).linetypes().Find(name);
  if (!lt) throw HostError(HostFailure::kKeyNotFound);
  s.Touch();
  s.mutable_props().linetype = lt;
}

void LetMaterial(Entity& s, CallArgs&, Variant& v) {
  std::string name = StringArg(v, {"Material", "Material"});
  MaterialRecord* m = Doc(s).materials().Find(name);
  if (!m) throw HostError(HostFailure::kKeyNotFound);
  s.Touch();
  s.mutable_props().material = m;
}

}  // namespace

void Entity::CheckWritable() const {
  if (props_.layer && props_.layer->data().locked) {
    throw HostError(HostFailure::kOnLockedLayer);
  }
}

void Entity::Erase() {
  Touch();
  if (BlockRecord* b = block()) b->Detach(this);
  DbObject::Erase();
}

BlockRecord* Entity::block() const { return AsObject<BlockRecord>(owner_); }

const MemberTable<Entity>& EntityMembers() {
  static const MemberTable<Entity> table = [] {
    MemberTable<Entity> t;
    t.Property("Layer",
               [](Entity& s, CallArgs&) { return Variant(s.props().layer->Name()); },
               LetLayer);
    t.Property("Linetype",
               [](Entity& s, CallArgs&) { return Variant(s.props().linetype->Name()); },
               LetLinetype);
    t.Property(
        "LinetypeScale",
        [](Entity& s, CallArgs&) { return Variant(s.props().linetype_scale); },
        [](Entity& s, CallArgs&, Variant& v) {
          double scale = DoubleArg(v, {"LinetypeScale", "LinetypeScale"});
          if (!(scale > 0)) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_props().linetype_scale = scale;
        });
    t.Property(
        "Lineweight",
        [](Entity& s, CallArgs&) { return Variant(int32_t{s.props().lineweight}); },
        [](Entity& s, CallArgs&, Variant& v) {
          int32_t w = LongArg(v, {"Lineweight", "Lineweight"});
          if (!IsValidLineweight(w)) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_props().lineweight = static_cast<int16_t>(w);
        });
    auto let_color = [](Entity& s, CallArgs&, Variant& v) {
      CmColor c = ColorArg(v, "TrueColor");
      s.Touch();
      s.mutable_props().color = c;
    };
    t.Property(
        "TrueColor", [](Entity& s, CallArgs&) { return ColorValue(s.props().color); },
        let_color, let_color);
    t.Property(
        "Color", [](Entity& s, CallArgs&) { return Variant(int32_t{s.props().color.index}); },
        [](Entity& s, CallArgs&, Variant& v) {
          int32_t index = LongArg(v, {"Color", "Color"});
          if (index < 0 || index > 256) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_props().color = CmColor::Aci(static_cast<int16_t>(index));
        });
    t.Property("Material",
               [](Entity& s, CallArgs&) { return Variant(s.props().material->Name()); },
               LetMaterial);
    t.Property(
        "PlotStyleName",
        [](Entity& s, CallArgs&) {
          const std::string* ps = s.props().plot_style;
          return Variant(ps ? *ps : std::string("ByLayer"));
        },
        [](Entity& s, CallArgs&, Variant& v) {
          std::string name = StringArg(v, {"PlotStyleName", "PlotStyleName"});
          if (name.empty()) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_props().plot_style = Doc(s).InternPlotStyle(name);
        });
    t.Property(
        "Visible", [](Entity& s, CallArgs&) { return Variant(s.props().visible); },
        [](Entity& s, CallArgs&, Variant& v) {
          bool on = BoolArg(v, {"Visible", "Visible"});
          s.Touch();
          s.mutable_props().visible = on;
        });
    t.Property("EntityName", [](Entity& s, CallArgs&) {
      return Variant(std::string(s.ObjectName()));
    });
    t.Property("EntityType", [](Entity&, CallArgs&) { return Variant(int32_t{0}); });
    t.Method(
        "Highlight",
        [](Entity& s, CallArgs& a) {
          s.set_highlighted(BoolArg(a[0], {"HighlightFlag", "Highlight"}));
          return Variant();
        },
        1, 1);
    t.Method("Update", [](Entity&, CallArgs&) { return Variant(); });
    t.Method("Copy", [](Entity& s, CallArgs&) {
      BlockRecord* block = s.block();
      if (!block) throw HostError(HostFailure::kNotApplicable);
      return Variant(s.document()->Ref(s.CloneInto(block)));
    });
    AddEntityGeometryMembers(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
