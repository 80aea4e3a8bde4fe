#include "host/selection/entity_filter.h"

#include <numbers>

#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host {

using geometry::Vec3;

namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;

const TextData* TextOf(const Entity& e) {
  if (const auto* t = As<Text>(&e)) return &t->data();
  if (const auto* a = As<AttributeDef>(&e)) return &a->data();
  if (const auto* r = As<AttributeRef>(&e)) return &r->data();
  return nullptr;
}

// The layout block that finally holds the entity (an attribute's through
// its reference).
const BlockRecord* SpaceOf(const Entity& e) {
  const DbObject* owner = e.owner();
  if (const auto* ref = AsEntity(owner)) owner = ref->owner();
  return AsObject<BlockRecord>(owner);
}

void KindValues(const Entity& e, int code, std::vector<FilterValue>* out) {
  using V = FilterValue;
  if (const TextData* t = TextOf(e)) {
    if (code == 1) out->push_back(V::Text(t->text));
    if (code == 2) {
      if (const auto* ad = As<AttributeDef>(&e)) out->push_back(V::Text(ad->data().tag));
      if (const auto* ar = As<AttributeRef>(&e)) out->push_back(V::Text(ar->data().tag));
    }
    if (code == 7 && t->style) out->push_back(V::Text(t->style->Name()));
    if (code == 10) out->push_back(V::Point(t->insertion));
    if (code == 11) out->push_back(V::Point(t->alignment));
    if (code == 40) out->push_back(V::Number(t->height));
    if (code == 50) out->push_back(V::Number(t->rotation * kDegrees));
    return;
  }
  switch (e.Kind()) {
    case EntityKind::kLine: {
      const auto* l = static_cast<const Line*>(&e);
      if (code == 10) out->push_back(V::Point(l->data().start));
      if (code == 11) out->push_back(V::Point(l->data().end));
      if (code == 39) out->push_back(V::Number(l->data().thickness));
      if (code == 210) out->push_back(V::Point(l->data().normal));
      break;
    }
    case EntityKind::kCircle: {
      const auto* c = static_cast<const Circle*>(&e);
      if (code == 10) out->push_back(V::Point(c->data().center));
      if (code == 40) out->push_back(V::Number(c->data().radius));
      if (code == 210) out->push_back(V::Point(c->data().normal));
      break;
    }
    case EntityKind::kArc: {
      const auto* a = static_cast<const host::Arc*>(&e);
      if (code == 10) out->push_back(V::Point(a->data().center));
      if (code == 40) out->push_back(V::Number(a->data().radius));
      if (code == 50) out->push_back(V::Number(a->data().start_angle * kDegrees));
      if (code == 51) out->push_back(V::Number(a->data().end_angle * kDegrees));
      if (code == 210) out->push_back(V::Point(a->data().normal));
      break;
    }
    case EntityKind::kEllipse: {
      const auto* el = static_cast<const host::Ellipse*>(&e);
      if (code == 10) out->push_back(V::Point(el->data().center));
      if (code == 11) out->push_back(V::Point(el->data().major_axis));
      if (code == 40) out->push_back(V::Number(el->data().radius_ratio));
      break;
    }
    case EntityKind::kLwPolyline: {
      const auto* pl = static_cast<const LwPolyline*>(&e);
      const auto& d = pl->data();
      if (code == 70) out->push_back(V::Number((d.closed ? 1 : 0) | (d.plinegen ? 128 : 0)));
      if (code == 90) out->push_back(V::Number(double(d.vertices.size())));
      if (code == 38) out->push_back(V::Number(d.elevation));
      if (code == 210) out->push_back(V::Point(d.normal));
      break;
    }
    case EntityKind::kPoint: {
      const auto* p = static_cast<const PointEntity*>(&e);
      if (code == 10) out->push_back(V::Point(p->data().position));
      break;
    }
    case EntityKind::kMText: {
      const auto* mt = static_cast<const MText*>(&e);
      if (code == 1) out->push_back(V::Text(mt->data().text));
      if (code == 7 && mt->data().style) out->push_back(V::Text(mt->data().style->Name()));
      if (code == 10) out->push_back(V::Point(mt->data().insertion));
      if (code == 40) out->push_back(V::Number(mt->data().height));
      break;
    }
    case EntityKind::kBlockRef: {
      const auto* br = static_cast<const BlockRef*>(&e);
      const auto& d = br->data();
      if (code == 2 && d.block) out->push_back(V::Text(d.block->Name()));
      if (code == 10) out->push_back(V::Point(d.insertion));
      if (code >= 41 && code <= 43) out->push_back(V::Number(d.scale[code - 41]));
      if (code == 50) out->push_back(V::Number(d.rotation * kDegrees));
      if (code == 66) out->push_back(V::Number(br->attributes().empty() ? 0 : 1));
      if (code == 210) out->push_back(V::Point(d.normal));
      break;
    }
    case EntityKind::kHatch: {
      const auto* h = static_cast<const Hatch*>(&e);
      if (code == 2) out->push_back(V::Text(h->data().pattern_name));
      break;
    }
    case EntityKind::kDimension: {
      const auto* dim = static_cast<const Dimension*>(&e);
      if (code == 2 && dim->data().block) out->push_back(V::Text(dim->data().block->Name()));
      if (code == 1) out->push_back(V::Text(dim->data().text_override));
      break;
    }
    case EntityKind::kText:
    case EntityKind::kAttributeDef:
    case EntityKind::kAttributeRef:
    case EntityKind::kWipeout:
    case EntityKind::kRasterImage:
    case EntityKind::kGeneric:
      break;  // text kinds are answered above; the others only by the common codes
  }
}

}  // namespace

void EntityFilterSubject::ValuesOf(int code, std::vector<FilterValue>* out) const {
  using V = FilterValue;
  const EntityProps& props = entity_.props();
  switch (code) {
    case 0: out->push_back(V::Text(DxfNameOf(entity_))); return;
    case 8:
      if (props.layer) out->push_back(V::Text(props.layer->Name()));
      return;
    case 6: {
      const Document* doc = entity_.document();
      // Only an explicitly set linetype answers; ByLayer is the absence of one.
      if (props.linetype && doc && props.linetype != const_cast<Document*>(doc)->bylayer_linetype()) {
        out->push_back(V::Text(props.linetype->Name()));
      }
      return;
    }
    case 62: out->push_back(V::Number(props.color.index)); return;
    case 60: out->push_back(V::Number(props.visible ? 0 : 1)); return;
    case 48: out->push_back(V::Number(props.linetype_scale)); return;
    case 370: out->push_back(V::Number(props.lineweight)); return;
    case 67:
    case 410: {
      const BlockRecord* space = SpaceOf(entity_);
      if (!space || !space->IsLayout()) return;
      if (code == 67) {
        out->push_back(V::Number(space->IsModelSpace() ? 0 : 1));
      } else {
        out->push_back(V::Text(space->data().layout->Name()));
      }
      return;
    }
    case 1001:
      if (const XData* x = entity_.xdata()) {
        for (const XDataRun& run : *x) {
          if (run.app) out->push_back(V::Text(run.app->Name()));
        }
      }
      return;
    default:
      KindValues(entity_, code, out);
  }
}

}  // namespace tovik::host
