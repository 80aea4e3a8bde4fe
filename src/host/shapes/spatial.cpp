#include "host/shapes/spatial.h"

#include <algorithm>

#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/shapes/entity_shapes.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host {

using geometry::Box2;

namespace {

struct Measured {
  std::optional<Box2> box;
  bool unbounded = false;
};

Measured MeasureEntity(const Entity& e) {
  std::vector<Primitive> primitives;
  AppendPrimitives(e, nullptr, &primitives);
  const ShapeExtents ext = ExtentsOf(primitives);
  Measured m;
  m.unbounded = ext.unbounded;
  if (ext.box.has_data) m.box = Box2::FromBox(ext.box);
  return m;
}

}  // namespace

SpatialState& SpatialOf(Document& doc) {
  if (!doc.spatial_state()) {
    auto state = std::make_shared<SpatialState>(&doc);
    SpatialState* raw = state.get();
    doc.spatial_state() = state;
    doc.set_change_observer([raw](DbObject* o) { raw->NoteChanged(o); });
  }
  return *doc.spatial_state();
}

void SpatialState::NoteChanged(DbObject* object) {
  if (rebuild_due_) return;  // everything is measured afresh anyway
  dirty_.push_back(object);
}

void SpatialState::Rebuild() {
  spaces_.clear();
  for (Layout* layout : doc_->layouts().items) {
    BlockRecord* space = layout->data().block;
    if (!space || space->erased()) continue;
    SpaceIndex& si = spaces_[space];
    std::vector<std::pair<uint64_t, Box2>> entries;
    entries.reserve(space->entities().size());
    for (Entity* e : space->entities()) {
      if (e->erased()) continue;
      const Measured m = MeasureEntity(*e);
      if (m.unbounded) si.unbounded.push_back(e->handle());
      if (m.box) entries.emplace_back(e->handle(), *m.box);
    }
    si.index.Build(entries);
  }
  dirty_.clear();
  rebuild_due_ = false;
}

void SpatialState::Forget(uint64_t handle) {
  for (auto& [space, si] : spaces_) {
    si.index.Remove(handle);
    std::erase(si.unbounded, handle);
  }
}

void SpatialState::Measure(Entity* entity) {
  Forget(entity->handle());
  BlockRecord* space = entity->block();
  if (entity->erased() || !space || space->erased()) return;
  if (!space->IsLayout()) {
    rebuild_due_ = true;  // a definition changed: its references move
    return;
  }
  const Measured m = MeasureEntity(*entity);
  SpaceIndex& si = spaces_[space];
  if (m.unbounded) si.unbounded.push_back(entity->handle());
  if (m.box) si.index.Insert(entity->handle(), *m.box);
}

SpatialState::SpaceIndex& SpatialState::Fresh(BlockRecord* space) {
  if (!rebuild_due_ && !dirty_.empty()) {
    std::vector<DbObject*> dirty;
    dirty.swap(dirty_);
    std::sort(dirty.begin(), dirty.end());
    dirty.erase(std::unique(dirty.begin(), dirty.end()), dirty.end());
    for (DbObject* o : dirty) {
      if (rebuild_due_) break;
      if (AsObject<BlockRecord>(o)) {
        rebuild_due_ = true;  // an origin moved
      } else if (auto* att = As<AttributeRef>(o)) {
        if (auto* ref = AsEntity(att->owner())) Measure(ref);
      } else if (auto* e = AsEntity(o)) {
        Measure(e);
      }
    }
  }
  if (rebuild_due_) Rebuild();
  return spaces_[space];
}

void SpatialState::QueryRect(BlockRecord* space, const Box2& rect, std::vector<Entity*>* out) {
  SpaceIndex& si = Fresh(space);
  std::vector<uint64_t> ids;
  si.index.QueryRect(rect, &ids);
  ids.insert(ids.end(), si.unbounded.begin(), si.unbounded.end());
  for (uint64_t h : ids) {
    if (auto* e = AsEntity(doc_->FindByHandle(h))) out->push_back(e);
  }
}

void SpatialState::All(BlockRecord* space, std::vector<Entity*>* out) {
  for (Entity* e : space->entities()) {
    if (!e->erased()) out->push_back(e);
  }
}

std::optional<Box2> SpatialState::Extents(BlockRecord* space) {
  return Fresh(space).index.Extents();
}

}  // namespace tovik::host
