// A dynamic spatial index over 2D boxes keyed by 64-bit ids (entity handles
// or object ids), for selection windows, pick points and extents.
//
// Why an R-tree and not a hashed uniform grid: a drawing mixes scales (a
// 0.001 text next to a 100,000 unit border), and its extents move as it is
// edited. A grid needs a cell size chosen from the data and an overflow list
// for large boxes, both of which degrade when the data does not match them;
// an R-tree adapts to any size mix and extent with no tuning, and its
// bounding boxes give the total extents for free. Bulk loading (Build, STR
// packing) makes a million-entry build a few sorts; single inserts use the
// R*-tree split (minimum margin, then overlap).
#ifndef TOVIK_GEOMETRY_SPATIAL_INDEX_H_
#define TOVIK_GEOMETRY_SPATIAL_INDEX_H_

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "geometry/box.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// Owns its nodes and an id → leaf map; holds no pointers to callers' data.
class SpatialIndex {
 public:
  SpatialIndex();

  // Adds id with box, replacing the box of an id already present. A box with
  // a NaN or infinite coordinate, or min > max, is refused (returns false).
  bool Insert(uint64_t id, const Box2& box);
  // Removes id; false when absent. Nodes left underfull are kept (no
  // reinsertion): queries stay exact, and Build() repacks.
  bool Remove(uint64_t id);
  // Moves id to a new box; false when absent or the box is refused.
  bool Update(uint64_t id, const Box2& box);
  // Replaces the whole content by bulk loading (STR packing). With repeated
  // ids the later entry wins; refused boxes are skipped.
  void Build(const std::vector<std::pair<uint64_t, Box2>>& entries);
  // Empties the index.
  void Clear();

  // Appends the ids whose boxes intersect rect (touching counts), in no
  // particular order.
  void QueryRect(const Box2& rect, std::vector<uint64_t>* out) const;
  // Appends the ids whose boxes lie within `radius` of p (inside counts).
  void QueryPoint(const Vec2& p, double radius, std::vector<uint64_t>* out) const;
  // The union of all boxes; nullopt when empty.
  std::optional<Box2> Extents() const;
  // The stored box of id.
  std::optional<Box2> BoxOf(uint64_t id) const;
  size_t size() const { return leaf_of_.size(); }
  bool empty() const { return leaf_of_.empty(); }

  // Checks the tree's invariants (parent boxes cover children, links and
  // the id map agree); for tests.
  bool CheckInvariants() const;

 private:
  static constexpr int kMaxEntries = 16;
  static constexpr int kMinEntries = 6;
  static constexpr uint32_t kNoNode = UINT32_MAX;

  struct Node {
    Box2 box[kMaxEntries + 1];       // one spare slot while splitting
    uint64_t item[kMaxEntries + 1];  // ids in leaves, node indexes above
    uint32_t parent = kNoNode;
    uint16_t count = 0;
    uint16_t level = 0;  // 0 = leaf
  };
  struct Entry {
    Box2 box;
    uint64_t item;
  };

  uint32_t NewNode(uint16_t level);
  void FreeNode(uint32_t n);
  Box2 NodeBox(uint32_t n) const;
  int SlotInParent(uint32_t n) const;
  uint32_t ChooseLeaf(const Box2& box) const;
  void AddEntry(uint32_t n, const Box2& box, uint64_t item);
  void SplitIfFull(uint32_t n);
  void RefreshUpward(uint32_t n);
  void CondenseAfterRemove(uint32_t leaf);
  std::vector<Entry> PackLevel(std::vector<Entry> entries, uint16_t level);

  std::vector<Node> nodes_;
  std::vector<uint32_t> free_;
  uint32_t root_ = kNoNode;
  std::unordered_map<uint64_t, uint32_t> leaf_of_;
};

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_SPATIAL_INDEX_H_
