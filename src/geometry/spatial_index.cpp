#include "geometry/spatial_index.h"

#include <algorithm>
#include <cmath>

namespace tovik::geometry {

namespace {

bool Acceptable(const Box2& b) {
  return b.IsFinite() && b.min_x <= b.max_x && b.min_y <= b.max_y;
}

double Enlargement(const Box2& b, const Box2& add) { return Box2::Union(b, add).Area() - b.Area(); }

double OverlapArea(const Box2& a, const Box2& b) {
  const double w = std::min(a.max_x, b.max_x) - std::max(a.min_x, b.min_x);
  const double h = std::min(a.max_y, b.max_y) - std::max(a.min_y, b.min_y);
  return (w > 0 && h > 0) ? w * h : 0.0;
}

}  // namespace

SpatialIndex::SpatialIndex() { Clear(); }

void SpatialIndex::Clear() {
  nodes_.clear();
  free_.clear();
  leaf_of_.clear();
  root_ = NewNode(0);
}

uint32_t SpatialIndex::NewNode(uint16_t level) {
  uint32_t n;
  if (!free_.empty()) {
    n = free_.back();
    free_.pop_back();
    nodes_[n] = Node{};
  } else {
    n = static_cast<uint32_t>(nodes_.size());
    nodes_.emplace_back();
  }
  nodes_[n].level = level;
  return n;
}

void SpatialIndex::FreeNode(uint32_t n) {
  nodes_[n].count = 0;
  free_.push_back(n);
}

Box2 SpatialIndex::NodeBox(uint32_t n) const {
  const Node& node = nodes_[n];
  Box2 b = node.box[0];
  for (int i = 1; i < node.count; ++i) b = Box2::Union(b, node.box[i]);
  return b;
}

int SpatialIndex::SlotInParent(uint32_t n) const {
  const Node& parent = nodes_[nodes_[n].parent];
  for (int i = 0; i < parent.count; ++i)
    if (parent.item[i] == n) return i;
  return -1;
}

uint32_t SpatialIndex::ChooseLeaf(const Box2& box) const {
  uint32_t n = root_;
  while (nodes_[n].level > 0) {
    const Node& node = nodes_[n];
    int best = 0;
    double best_growth = INFINITY, best_area = INFINITY;
    for (int i = 0; i < node.count; ++i) {
      const double growth = Enlargement(node.box[i], box), area = node.box[i].Area();
      if (growth < best_growth || (growth == best_growth && area < best_area)) {
        best = i, best_growth = growth, best_area = area;
      }
    }
    n = static_cast<uint32_t>(node.item[best]);
  }
  return n;
}

void SpatialIndex::AddEntry(uint32_t n, const Box2& box, uint64_t item) {
  Node& node = nodes_[n];
  node.box[node.count] = box;
  node.item[node.count] = item;
  ++node.count;
  if (node.level == 0) {
    leaf_of_[item] = n;
  } else {
    nodes_[item].parent = n;
  }
}

// Recomputes the boxes of n's ancestors' entries, stopping where nothing
// changes.
void SpatialIndex::RefreshUpward(uint32_t n) {
  while (nodes_[n].parent != kNoNode) {
    const uint32_t parent = nodes_[n].parent;
    const int slot = SlotInParent(n);
    const Box2 b = NodeBox(n);
    if (nodes_[parent].box[slot] == b) return;
    nodes_[parent].box[slot] = b;
    n = parent;
  }
}

// R*-style split of an overfull node: per axis, sort by centre and sum the
// margins of every allowed distribution; on the axis with the least margin
// take the distribution with the least overlap, then the least area.
void SpatialIndex::SplitIfFull(uint32_t n) {
  while (nodes_[n].count > kMaxEntries) {
    const int total = nodes_[n].count;
    std::vector<Entry> entries(total);
    for (int i = 0; i < total; ++i) entries[i] = {nodes_[n].box[i], nodes_[n].item[i]};
    auto centre = [](const Box2& b, int axis) { return axis == 0 ? b.min_x + b.max_x : b.min_y + b.max_y; };
    int best_axis = 0;
    double best_margin = INFINITY;
    std::vector<Box2> prefix(total), suffix(total);
    auto fill = [&] {
      prefix[0] = entries[0].box;
      for (int i = 1; i < total; ++i) prefix[i] = Box2::Union(prefix[i - 1], entries[i].box);
      suffix[total - 1] = entries[total - 1].box;
      for (int i = total - 2; i >= 0; --i) suffix[i] = Box2::Union(suffix[i + 1], entries[i].box);
    };
    for (int axis = 0; axis < 2; ++axis) {
      std::sort(entries.begin(), entries.end(),
                [&](const Entry& a, const Entry& b) { return centre(a.box, axis) < centre(b.box, axis); });
      fill();
      double margin = 0.0;
      for (int k = kMinEntries; k <= total - kMinEntries; ++k)
        margin += prefix[k - 1].Margin() + suffix[k].Margin();
      if (margin < best_margin) best_margin = margin, best_axis = axis;
    }
    std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
      return centre(a.box, best_axis) < centre(b.box, best_axis);
    });
    fill();
    int best_k = kMinEntries;
    double best_overlap = INFINITY, best_area = INFINITY;
    for (int k = kMinEntries; k <= total - kMinEntries; ++k) {
      const double overlap = OverlapArea(prefix[k - 1], suffix[k]);
      const double area = prefix[k - 1].Area() + suffix[k].Area();
      if (overlap < best_overlap || (overlap == best_overlap && area < best_area))
        best_k = k, best_overlap = overlap, best_area = area;
    }
    const uint16_t level = nodes_[n].level;
    const uint32_t sibling = NewNode(level);  // may reallocate nodes_
    nodes_[n].count = 0;
    for (int i = 0; i < best_k; ++i) AddEntry(n, entries[i].box, entries[i].item);
    for (int i = best_k; i < total; ++i) AddEntry(sibling, entries[i].box, entries[i].item);
    if (n == root_) {
      const uint32_t new_root = NewNode(level + 1);
      AddEntry(new_root, NodeBox(n), n);
      AddEntry(new_root, NodeBox(sibling), sibling);
      root_ = new_root;
      return;
    }
    const uint32_t parent = nodes_[n].parent;
    nodes_[parent].box[SlotInParent(n)] = NodeBox(n);
    AddEntry(parent, NodeBox(sibling), sibling);
    RefreshUpward(parent);
    n = parent;
  }
}

bool SpatialIndex::Insert(uint64_t id, const Box2& box) {
  if (!Acceptable(box)) return false;
  if (leaf_of_.count(id)) Remove(id);
  const uint32_t leaf = ChooseLeaf(box);
  AddEntry(leaf, box, id);
  // Grow the ancestors' boxes on the way up (an insert only grows them).
  for (uint32_t n = leaf; nodes_[n].parent != kNoNode; n = nodes_[n].parent) {
    const uint32_t parent = nodes_[n].parent;
    Box2& slot = nodes_[parent].box[SlotInParent(n)];
    if (slot.Contains(box)) break;
    slot = Box2::Union(slot, box);
  }
  SplitIfFull(leaf);
  return true;
}

void SpatialIndex::CondenseAfterRemove(uint32_t n) {
  // Drop emptied nodes from their parents, then tighten the boxes above.
  while (nodes_[n].count == 0 && n != root_) {
    const uint32_t parent = nodes_[n].parent;
    Node& p = nodes_[parent];
    const int slot = SlotInParent(n);
    p.box[slot] = p.box[p.count - 1];
    p.item[slot] = p.item[p.count - 1];
    --p.count;
    FreeNode(n);
    n = parent;
  }
  if (nodes_[n].count > 0) RefreshUpward(n);
  // A root with a single child hands over to it; an empty inner root
  // becomes an empty leaf.
  while (nodes_[root_].level > 0 && nodes_[root_].count <= 1) {
    const uint32_t old = root_;
    if (nodes_[old].count == 0) {
      nodes_[old].level = 0;
      break;
    }
    root_ = static_cast<uint32_t>(nodes_[old].item[0]);
    nodes_[root_].parent = kNoNode;
    FreeNode(old);
  }
}

bool SpatialIndex::Remove(uint64_t id) {
  const auto it = leaf_of_.find(id);
  if (it == leaf_of_.end()) return false;
  const uint32_t leaf = it->second;
  leaf_of_.erase(it);
  Node& node = nodes_[leaf];
  for (int i = 0; i < node.count; ++i) {
    if (node.item[i] != id) continue;
    node.box[i] = node.box[node.count - 1];
    node.item[i] = node.item[node.count - 1];
    --node.count;
    break;
  }
  CondenseAfterRemove(leaf);
  return true;
}

bool SpatialIndex::Update(uint64_t id, const Box2& box) {
  if (!Acceptable(box) || !leaf_of_.count(id)) return false;
  Remove(id);
  return Insert(id, box);
}

std::vector<SpatialIndex::Entry> SpatialIndex::PackLevel(std::vector<Entry> entries, uint16_t level) {
  // Sort-Tile-Recursive: vertical slices by x centre, then runs by y centre.
  constexpr size_t kFill = kMaxEntries - 2;  // leave room for later inserts
  const size_t count = entries.size();
  const size_t nodes = (count + kFill - 1) / kFill;
  const size_t slices = static_cast<size_t>(std::ceil(std::sqrt(static_cast<double>(nodes))));
  const size_t per_slice = slices * kFill;
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.box.min_x + a.box.max_x < b.box.min_x + b.box.max_x;
  });
  std::vector<Entry> parents;
  parents.reserve(nodes);
  for (size_t s = 0; s < count; s += per_slice) {
    const auto first = entries.begin() + s;
    const auto last = entries.begin() + std::min(count, s + per_slice);
    std::sort(first, last, [](const Entry& a, const Entry& b) {
      return a.box.min_y + a.box.max_y < b.box.min_y + b.box.max_y;
    });
    for (auto run = first; run < last; run += std::min<ptrdiff_t>(kFill, last - run)) {
      const uint32_t n = NewNode(level);
      for (auto e = run; e < last && e < run + kFill; ++e) AddEntry(n, e->box, e->item);
      parents.push_back({NodeBox(n), n});
    }
  }
  return parents;
}

void SpatialIndex::Build(const std::vector<std::pair<uint64_t, Box2>>& entries) {
  Clear();
  // Entry indexes are kept in the id map's 32-bit slots while building.
  if (entries.empty() || entries.size() >= kNoNode) return;
  // The later of repeated ids wins. leaf_of_ first holds each id's last
  // entry index; AddEntry overwrites it with the leaf.
  leaf_of_.reserve(entries.size());
  for (size_t i = 0; i < entries.size(); ++i)
    if (Acceptable(entries[i].second)) leaf_of_[entries[i].first] = static_cast<uint32_t>(i);
  std::vector<Entry> level_entries;
  level_entries.reserve(leaf_of_.size());
  for (size_t i = 0; i < entries.size(); ++i) {
    const auto it = leaf_of_.find(entries[i].first);
    if (it != leaf_of_.end() && it->second == i) level_entries.push_back({entries[i].second, entries[i].first});
  }
  if (level_entries.empty()) return;
  FreeNode(root_);
  nodes_.reserve(level_entries.size() / 8 + 16);
  uint16_t level = 0;
  while (true) {
    std::vector<Entry> parents = PackLevel(std::move(level_entries), level);
    if (parents.size() == 1) {
      root_ = static_cast<uint32_t>(parents[0].item);
      return;
    }
    level_entries = std::move(parents);
    ++level;
  }
}

void SpatialIndex::QueryRect(const Box2& rect, std::vector<uint64_t>* out) const {
  if (nodes_[root_].count == 0) return;
  std::vector<uint32_t> stack;
  stack.reserve(128);
  stack.push_back(root_);
  while (!stack.empty()) {
    const Node& node = nodes_[stack.back()];
    stack.pop_back();
    for (int i = 0; i < node.count; ++i) {
      if (!node.box[i].Intersects(rect)) continue;
      if (node.level == 0) {
        out->push_back(node.item[i]);
      } else {
        stack.push_back(static_cast<uint32_t>(node.item[i]));
      }
    }
  }
}

void SpatialIndex::QueryPoint(const Vec2& p, double radius, std::vector<uint64_t>* out) const {
  if (!IsFinite(p) || !(radius >= 0.0) || nodes_[root_].count == 0) return;
  const Box2 reach{p.x - radius, p.y - radius, p.x + radius, p.y + radius};
  std::vector<uint32_t> stack;
  stack.reserve(128);
  stack.push_back(root_);
  while (!stack.empty()) {
    const Node& node = nodes_[stack.back()];
    stack.pop_back();
    for (int i = 0; i < node.count; ++i) {
      if (!node.box[i].Intersects(reach) || node.box[i].DistanceTo(p) > radius) continue;
      if (node.level == 0) {
        out->push_back(node.item[i]);
      } else {
        stack.push_back(static_cast<uint32_t>(node.item[i]));
      }
    }
  }
}

std::optional<Box2> SpatialIndex::Extents() const {
  if (nodes_[root_].count == 0) return std::nullopt;
  return NodeBox(root_);
}

std::optional<Box2> SpatialIndex::BoxOf(uint64_t id) const {
  const auto it = leaf_of_.find(id);
  if (it == leaf_of_.end()) return std::nullopt;
  const Node& node = nodes_[it->second];
  for (int i = 0; i < node.count; ++i)
    if (node.item[i] == id) return node.box[i];
  return std::nullopt;
}

bool SpatialIndex::CheckInvariants() const {
  size_t ids = 0;
  std::vector<uint32_t> stack = {root_};
  if (nodes_[root_].parent != kNoNode) return false;
  while (!stack.empty()) {
    const uint32_t n = stack.back();
    stack.pop_back();
    const Node& node = nodes_[n];
    if (node.count > kMaxEntries || (n != root_ && node.count == 0)) return false;
    for (int i = 0; i < node.count; ++i) {
      if (node.level == 0) {
        ++ids;
        const auto it = leaf_of_.find(node.item[i]);
        if (it == leaf_of_.end() || it->second != n) return false;
        continue;
      }
      const uint32_t child = static_cast<uint32_t>(node.item[i]);
      if (nodes_[child].parent != n || nodes_[child].level + 1 != node.level) return false;
      if (!(NodeBox(child) == node.box[i])) return false;  // tight, not just covering
      stack.push_back(child);
    }
  }
  return ids == leaf_of_.size();
}

}  // namespace tovik::geometry
