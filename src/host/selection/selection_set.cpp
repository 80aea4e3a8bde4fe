#include "host/selection/selection_set.h"

#include <algorithm>

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/entity.h"
#include "host/selection/selection_members.h"
#include "host/shapes/geometry_members.h"
#include "host/surface/args.h"
#include "host/surface/collection_util.h"

namespace tovik::host {
namespace {

// The entities of an Objects argument; an erased, foreign or non-graphical
// object raises Invalid argument.
std::vector<std::shared_ptr<Entity>> EntitiesArg(Document* doc, const Variant& v,
                                                 std::string_view member) {
  std::vector<std::shared_ptr<Entity>> out;
  for (const ObjectRef& o : ObjectsArg(v, {"Objects", member})) {
    auto e = std::dynamic_pointer_cast<Entity>(o);
    if (!e || e->erased() || e->document() != doc) throw InvalidArgument("Objects", member);
    out.push_back(std::move(e));
  }
  return out;
}

}  // namespace

Variant SelectionSet::Invoke(DispId id, InvokeKind kind, std::span<Variant> args) {
  if (doc_->closed()) throw HostError(HostFailure::kNoDocument);
  if (deleted_ && Members().NameOf(id) != "Name") throw HostError(HostFailure::kObjectErased);
  return DispatchObject<SelectionSet>::Invoke(id, kind, args);
}

std::vector<std::shared_ptr<Entity>> SelectionSet::Live() const {
  std::vector<std::shared_ptr<Entity>> out;
  for (const auto& e : members_) {
    if (!e->erased()) out.push_back(e);
  }
  return out;
}

void SelectionSet::Add(std::shared_ptr<Entity> entity) {
  if (std::find(members_.begin(), members_.end(), entity) == members_.end()) {
    members_.push_back(std::move(entity));
  }
}

std::vector<Variant> SelectionSet::Enumerate() {
  std::vector<Variant> out;
  for (auto& e : Live()) out.emplace_back(ObjectRef(e));
  return out;
}

const MemberTable<SelectionSet>& SelectionSet::Members() {
  static const MemberTable<SelectionSet> table = [] {
    MemberTable<SelectionSet> t;
    using K = SelectionSet;
    t.Property("Name", [](K& s, CallArgs&) { return Variant(s.name_); });
    t.Property("Count", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.Live().size()));
    });
    t.Method(
        "Item",
        [](K& s, CallArgs& a) {
          auto live = s.Live();
          return Variant(ObjectRef(live[ItemPositionIndexOnly(a[0], live.size())]));
        },
        1, 1);
    t.Default("Item");
    t.Method(
        "AddItems",
        [](K& s, CallArgs& a) {
          for (auto& e : EntitiesArg(s.doc_, a[0], "AddItems")) s.Add(std::move(e));
          return Variant();
        },
        1, 1);
    t.Method(
        "RemoveItems",
        [](K& s, CallArgs& a) {
          auto remove = EntitiesArg(s.doc_, a[0], "RemoveItems");
          std::erase_if(s.members_, [&](const std::shared_ptr<Entity>& e) {
            return std::find(remove.begin(), remove.end(), e) != remove.end();
          });
          return Variant();
        },
        1, 1);
    t.Method("Clear", [](K& s, CallArgs&) {
      s.Clear();
      return Variant();
    });
    t.Method("Erase", [](K& s, CallArgs&) {
      CallScope scope(&s.doc_->journal());
      // A member that refuses (on a locked layer) keeps every member.
      for (auto& e : s.Live()) e->CheckWritable();
      for (auto& e : s.Live()) e->Delete();
      s.Clear();
      return Variant();
    });
    t.Method("Delete", [](K& s, CallArgs&) {
      auto& sets = s.doc_->selection_sets();
      std::erase_if(sets, [&](const std::shared_ptr<SelectionSet>& p) { return p.get() == &s; });
      s.MarkDeleted();
      return Variant();
    });
    t.Method(
        "Highlight",
        [](K& s, CallArgs& a) {
          s.highlighted_ = BoolArg(a[0], {"HighlightFlag", "Highlight"});
          for (auto& e : s.Live()) e->set_highlighted(s.highlighted_);
          return Variant();
        },
        1, 1);
    t.Method("Update", [](K&, CallArgs&) { return Variant(); });
    AddSelectionMembers(t);
    return t;
  }();
  return table;
}

std::vector<Variant> SelectionSets::Enumerate() {
  std::vector<Variant> out;
  for (auto& set : doc_->selection_sets()) out.emplace_back(ObjectRef(set));
  return out;
}

const MemberTable<SelectionSets>& SelectionSets::Members() {
  static const MemberTable<SelectionSets> table = [] {
    MemberTable<SelectionSets> t;
    using K = SelectionSets;
    t.Property("Count", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.doc_->selection_sets().size()));
    });
    t.Method(
        "Item",
        [](K& s, CallArgs& a) {
          auto& sets = s.doc_->selection_sets();
          size_t i = ItemPosition(
              a[0], sets.size(), [&](size_t k) -> std::string_view { return sets[k]->name(); },
              NameMatch::kCaseSensitive);
          return Variant(ObjectRef(sets[i]));
        },
        1, 1);
    t.Default("Item");
    t.Method(
        "Add",
        [](K& s, CallArgs& a) {
          std::string name = StringArg(a[0], {"Name", "Add"});
          if (name.empty()) throw HostError(HostFailure::kInvalidInput);
          auto& sets = s.doc_->selection_sets();
          for (auto& set : sets) {
            if (set->name() == name) throw HostError(HostFailure::kDuplicateKey);
          }
          if (sets.size() >= kMaxSelectionSets) {
            throw HostError(HostFailure::kTooManySelectionSets);
          }
          sets.push_back(std::make_shared<SelectionSet>(s.doc_, name));
          return Variant(ObjectRef(sets.back()));
        },
        1, 1);
    t.Method("Delete", [](K&, CallArgs&) -> Variant {
      throw HostError(HostFailure::kCannotDelete);
    });
    return t;
  }();
  return table;
}

}  // namespace tovik::host
