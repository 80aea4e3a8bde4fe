// The base of every graphical object: the display properties every entity
// has (layer, linetype, colour...) and the members that read and write them.
// Geometry lives in each kind's own Data struct (entities.h).
#ifndef TOVIK_HOST_ENTITIES_ENTITY_H_
#define TOVIK_HOST_ENTITIES_ENTITY_H_

#include <cstdint>
#include <memory>
#include <string>

#include "host/core/color.h"
#include "host/core/db_object.h"
#include "host/entities/kind.h"

namespace tovik::host {

class BlockRecord;
class LayerRecord;
class LinetypeRecord;
class MaterialRecord;

// Display properties every entity has. Records are referenced, not named,
// so a rename shows everywhere and an entity costs no strings.
struct EntityProps {
  LayerRecord* layer = nullptr;
  LinetypeRecord* linetype = nullptr;  // the "ByLayer" record by default
  MaterialRecord* material = nullptr;  // the "ByLayer" material by default
  const std::string* plot_style = nullptr;  // interned; nullptr = "ByLayer"
  CmColor color;
  double linetype_scale = 1.0;
  int16_t lineweight = -1;  // ByLayer
  bool visible = true;
};

// The undo state of an entity beyond its kind's data.
struct EntityBase {
  ObjectCore core;
  EntityProps props;
};

class Entity : public DbObject {
 public:
  ObjectClass Class() const final { return ObjectClass::kEntity; }
  // Which of the modelled kinds this entity is.
  virtual EntityKind Kind() const = 0;
  // Refuses changes while the entity's layer is locked.
  void CheckWritable() const override;
  // Takes the entity out of its block and flags it erased.
  void Erase() override;

  const EntityProps& props() const { return props_; }
  // For loaders (no undo, no checks).
  EntityProps& mutable_props() { return props_; }
  // The block holding the entity (nullptr for an attribute reference,
  // whose owner is its block reference).
  BlockRecord* block() const;
  // True when the entity is drawn highlighted (Highlight(True)).
  bool highlighted() const { return highlighted_; }
  void set_highlighted(bool on) { highlighted_ = on; }

  // A copy of this entity appended to `block` (of this or another
  // document), with new handle, same properties and extended data.
  // Entities owning sub-entities (attributes) copy them too.
  virtual Entity* CloneInto(BlockRecord* block) const = 0;

  EntityBase SaveBase() const { return {core_, props_}; }
  void RestoreBase(const EntityBase& base) {
    core_ = base.core;
    props_ = base.props;
  }

 protected:
  EntityProps props_;
  bool highlighted_ = false;
};

// `object` as kind K, or nullptr when it is another kind or no entity.
template <class K>
const K* As(const DbObject* object) {
  if (object == nullptr || !object->IsEntity()) return nullptr;
  const auto* entity = static_cast<const Entity*>(object);
  return entity->Kind() == K::kKind ? static_cast<const K*>(entity) : nullptr;
}
template <class K>
K* As(DbObject* object) {
  return const_cast<K*>(As<K>(static_cast<const DbObject*>(object)));
}
// `object` as an entity, or nullptr.
inline const Entity* AsEntity(const DbObject* object) {
  return object != nullptr && object->IsEntity() ? static_cast<const Entity*>(object) : nullptr;
}
inline Entity* AsEntity(DbObject* object) {
  return object != nullptr && object->IsEntity() ? static_cast<Entity*>(object) : nullptr;
}
// The same for an automation object handed in by a caller (a host object
// or any other dispatch object).
template <class K>
K* As(Dispatch* object) {
  return As<K>(dynamic_cast<DbObject*>(object));
}
inline Entity* AsEntity(Dispatch* object) { return AsEntity(dynamic_cast<DbObject*>(object)); }

// Kind K's copy of `source` appended to `block`: same data, properties and
// extended data, new identity.
template <class K>
Entity* CloneEntity(const K& source, BlockRecord* block);

}  // namespace tovik::host

#endif  // TOVIK_HOST_ENTITIES_ENTITY_H_
