// The draw-order table (IAcadSortentsTable) of a block.
#include "host/tables/draw_order.h"

#include <algorithm>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/surface/args.h"
#include "host/surface/collection_util.h"
#include "host/tables/block.h"

namespace tovik::host {

std::vector<Entity*> SortentsTable::FullOrder() const {
  std::vector<Entity*> out;
  const BlockRecord* block = data_.block;
  if (!block) return out;
  auto in_block = [&](const Entity* e) { return !e->erased() && e->owner() == block; };
  for (Entity* e : data_.order) {
    if (in_block(e)) out.push_back(e);
  }
  // Entities the order does not list yet (newer ones) are drawn on top.
  std::vector<Entity*> rest;
  for (Entity* e : block->entities()) {
    if (std::find(data_.order.begin(), data_.order.end(), e) == data_.order.end()) {
      rest.push_back(e);
    }
  }
  std::sort(rest.begin(), rest.end(),
            [](const Entity* a, const Entity* b) { return a->handle() < b->handle(); });
  out.insert(out.end(), rest.begin(), rest.end());
  return out;
}

void SortentsTable::SetOrder(std::vector<Entity*> order) {
  Touch();
  data_.order = std::move(order);
}

namespace {

// The objects argument as entities of the table's block; another block's
// entity or one given twice raises Invalid input.
std::vector<Entity*> EntitiesOf(const SortentsTable& s, const Variant& v,
                                std::string_view member) {
  std::vector<Entity*> out;
  for (const ObjectRef& o : ObjectsArg(v, {"Objects", member})) {
    auto* e = AsEntity(o.get());
    if (!e || e->erased() || e->owner() != s.data().block) {
      throw HostError(HostFailure::kInvalidInput);
    }
    if (std::find(out.begin(), out.end(), e) != out.end()) {
      throw HostError(HostFailure::kInvalidInput);
    }
    out.push_back(e);
  }
  return out;
}

Entity* TargetOf(const SortentsTable& s, const Variant& v, std::string_view member) {
  auto* e = AsEntity(ObjectArg(v, {"Target", member}).get());
  if (!e || e->erased() || e->owner() != s.data().block) {
    throw HostError(HostFailure::kInvalidInput);
  }
  return e;
}

// The full order without `moving`, and `moving` in their present relative
// order.
std::pair<std::vector<Entity*>, std::vector<Entity*>> Split(const SortentsTable& s,
                                                            const std::vector<Entity*>& moving) {
  std::vector<Entity*> rest, moved;
  for (Entity* e : s.FullOrder()) {
    bool m = std::find(moving.begin(), moving.end(), e) != moving.end();
    (m ? moved : rest).push_back(e);
  }
  return {rest, moved};
}

Variant MoveRelative(SortentsTable& s, CallArgs& a, std::string_view member, bool above) {
  std::vector<Entity*> moving = EntitiesOf(s, a[0], member);
  Entity* target = TargetOf(s, a[1], member);
  if (std::find(moving.begin(), moving.end(), target) != moving.end()) {
    throw HostError(HostFailure::kInvalidInput);
  }
  auto [rest, moved] = Split(s, moving);
  auto it = std::find(rest.begin(), rest.end(), target);
  if (above) ++it;
  rest.insert(it, moved.begin(), moved.end());
  s.SetOrder(std::move(rest));
  return Variant();
}

}  // namespace

const MemberTable<SortentsTable>& SortentsTable::Members() {
  static const MemberTable<SortentsTable> table = [] {
    MemberTable<SortentsTable> t;
    using K = SortentsTable;
    t.Method(
        "MoveToTop",
        [](K& s, CallArgs& a) {
          auto [rest, moved] = Split(s, EntitiesOf(s, a[0], "MoveToTop"));
          rest.insert(rest.end(), moved.begin(), moved.end());
          s.SetOrder(std::move(rest));
          return Variant();
        },
        1, 1);
    t.Method(
        "MoveToBottom",
        [](K& s, CallArgs& a) {
          auto [rest, moved] = Split(s, EntitiesOf(s, a[0], "MoveToBottom"));
          moved.insert(moved.end(), rest.begin(), rest.end());
          s.SetOrder(std::move(moved));
          return Variant();
        },
        1, 1);
    t.Method("MoveAbove", [](K& s, CallArgs& a) { return MoveRelative(s, a, "MoveAbove", true); },
             2, 2);
    t.Method("MoveBelow", [](K& s, CallArgs& a) { return MoveRelative(s, a, "MoveBelow", false); },
             2, 2);
    t.Method(
        "SwapOrder",
        [](K& s, CallArgs& a) {
          Entity* e1 = TargetOf(s, a[0], "SwapOrder");
          Entity* e2 = TargetOf(s, a[1], "SwapOrder");
          std::vector<Entity*> order = s.FullOrder();
          auto i1 = std::find(order.begin(), order.end(), e1);
          auto i2 = std::find(order.begin(), order.end(), e2);
          std::iter_swap(i1, i2);
          s.SetOrder(std::move(order));
          return Variant();
        },
        2, 2);
    t.Method(
        "GetFullDrawOrder",
        [](K& s, CallArgs& a) {
          std::vector<ObjectRef> out;
          for (Entity* e : s.FullOrder()) out.push_back(s.doc_->Ref(e));
          a[0] = ObjectsValue(out);
          return Variant();
        },
        1, 2)
        .Outs({0});
    t.Method(
        "GetRelativeDrawOrder",
        [](K& s, CallArgs& a) {
          std::vector<Entity*> given = EntitiesOf(s, a[0], "GetRelativeDrawOrder");
          std::vector<ObjectRef> out;
          for (Entity* e : s.FullOrder()) {
            if (std::find(given.begin(), given.end(), e) != given.end()) {
              out.push_back(s.doc_->Ref(e));
            }
          }
          a[0] = ObjectsValue(out);
          return Variant();
        },
        1, 2)
        .Outs({0});
    t.Property("Block", [](K& s, CallArgs&) { return Variant(s.doc_->Ref(s.data_.block)); });
    return t;
  }();
  return table;
}

}  // namespace tovik::host
