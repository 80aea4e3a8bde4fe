// The per-drawing spatial index: one R-tree per layout block (model space
// and each paper layout) over the entities' WCS plan boxes, keyed by handle,
// plus the drawing's previous selection.
//
// The index follows the drawing lazily: the document tells it of every
// object created, touched (before each change), erased, brought back or
// restored by undo, and the next query re-measures just those. A change
// inside a block definition (or to a block's origin) re-measures every
// reference, by rebuilding the whole index once.
#ifndef TOVIK_HOST_SHAPES_SPATIAL_H_
#define TOVIK_HOST_SHAPES_SPATIAL_H_

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "geometry/box.h"
#include "geometry/spatial_index.h"

namespace tovik::host {

class BlockRecord;
class DbObject;
class Document;
class Entity;

class SpatialState {
 public:
  explicit SpatialState(Document* doc) : doc_(doc) {}

  // Records that `object` changed (or is about to); cheap.
  void NoteChanged(DbObject* object);

  // Appends the live entities of layout block `space` whose plan boxes meet
  // `rect` (WCS XY), plus every unbounded one (rays, construction lines).
  void QueryRect(BlockRecord* space, const geometry::Box2& rect, std::vector<Entity*>* out);
  // Every live entity of `space` that has a shape (for judging frames the
  // plan boxes cannot narrow).
  void All(BlockRecord* space, std::vector<Entity*>* out);
  // The union of the plan boxes of `space`; nullopt when empty.
  std::optional<geometry::Box2> Extents(BlockRecord* space);

  // The previous selection and the space it was made in.
  std::vector<std::shared_ptr<Entity>>& previous() { return previous_; }
  BlockRecord*& previous_space() { return previous_space_; }

 private:
  struct SpaceIndex {
    geometry::SpatialIndex index;
    std::vector<uint64_t> unbounded;
  };
  SpaceIndex& Fresh(BlockRecord* space);
  void Rebuild();
  void Measure(Entity* entity);
  void Forget(uint64_t handle);

  Document* doc_;
  std::unordered_map<BlockRecord*, SpaceIndex> spaces_;
  std::vector<DbObject*> dirty_;
  bool built_ = false;
  bool rebuild_due_ = true;
  std::vector<std::shared_ptr<Entity>> previous_;
  BlockRecord* previous_space_ = nullptr;
};

// The spatial state of `doc`, created on first use.
SpatialState& SpatialOf(Document& doc);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SHAPES_SPATIAL_H_
