#include "host/tables/block.h"

#include <algorithm>

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/surface/args.h"
#include "host/surface/collection_util.h"
#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"

namespace tovik::host {

std::string_view BlockRecord::TypeName() const {
  if (doc_ && this == doc_->model_space()) return "IAcadModelSpace";
  if (doc_ && this == doc_->paper_space()) return "IAcadPaperSpace";
  return "IAcadBlock";
}

bool BlockRecord::IsModelSpace() const { return doc_ && this == doc_->model_space(); }

bool BlockRecord::IsAnonymous() const {
  return !IsLayout() && !data_.name.empty() && data_.name[0] == '*';
}

void BlockRecord::Append(Entity* entity) {
  entity->set_owner(this);
  entities_.push_back(entity);
  if (Journal* j = journal()) {
    j->Record([this, entity] {
      auto it = std::find(entities_.rbegin(), entities_.rend(), entity);
      if (it != entities_.rend()) entities_.erase(std::next(it).base());
    });
  }
}

void BlockRecord::Detach(Entity* entity) {
  auto it = std::find(entities_.begin(), entities_.end(), entity);
  if (it == entities_.end()) return;
  size_t index = static_cast<size_t>(it - entities_.begin());
  entities_.erase(it);
  if (Journal* j = journal()) {
    j->Record([this, entity, index] {
      entities_.insert(entities_.begin() + static_cast<std::ptrdiff_t>(
                                               std::min(index, entities_.size())),
                       entity);
    });
  }
}

std::vector<Entity*> BlockRecord::DrawOrder() const {
  if (Dictionary* xdict = core_.xdict) {
    if (auto* table = AsObject<SortentsTable>(xdict->Find("ACAD_SORTENTS"))) {
      if (!table->erased()) return table->FullOrder();
    }
  }
  return entities_;
}

void BlockRecord::Delete() {
  CheckLive();
  if (IsLayout()) throw HostError(HostFailure::kNotApplicable);
  if (doc_->BlockReferenced(this)) throw HostError(HostFailure::kObjectReferenced);
  std::vector<Entity*> contents = entities_;
  for (Entity* e : contents) {
    if (!e->erased()) e->DbObject::Erase();
  }
  doc_->RemoveRecord(doc_->blocks(), this);
  DbObject::Erase();
}

std::vector<Variant> BlockRecord::Enumerate() {
  CheckLive();
  std::vector<Variant> out;
  out.reserve(entities_.size());
  for (Entity* e : entities_) out.emplace_back(doc_->Ref(e));
  return out;
}

void RegisterBlockFactories(MemberTable<BlockRecord>& t);

const MemberTable<BlockRecord>& BlockRecord::Members() {
  static const MemberTable<BlockRecord> table = [] {
    MemberTable<BlockRecord> t;
    t.Property(
        "Name", [](BlockRecord& s, CallArgs&) { return Variant(s.data_.name); },
        [](BlockRecord& s, CallArgs&, Variant& v) {
          std::string name = StringArg(v, {"Name", "Name"});
          if (s.IsLayout()) throw HostError(HostFailure::kNotApplicable);
          if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
          BlockRecord* other = s.doc_->blocks().Find(name);
          if (other && other != &s) throw HostError(HostFailure::kDuplicateRecordName);
          s.Touch();
          s.data_.name = name;
        });
    t.Property(
        "Origin", [](BlockRecord& s, CallArgs&) { return PointValue(s.data_.origin); },
        [](BlockRecord& s, CallArgs&, Variant& v) {
          geometry::Vec3 p = PointArg(v, {"Origin", "Origin"});
          s.Touch();
          s.data_.origin = p;
        });
    t.Property(
        "Units", [](BlockRecord& s, CallArgs&) { return Variant(s.data_.units); },
        [](BlockRecord& s, CallArgs&, Variant& v) {
          int32_t units = LongArg(v, {"Units", "Units"});
          if (units < 0 || units > 24) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.data_.units = units;
        });
    t.Property(
        "Comments", [](BlockRecord& s, CallArgs&) { return Variant(s.data_.comments); },
        [](BlockRecord& s, CallArgs&, Variant& v) {
          std::string text = StringArg(v, {"Comments", "Comments"});
          s.Touch();
          s.data_.comments = text;
        });
    t.Property(
        "Explodable", [](BlockRecord& s, CallArgs&) { return Variant(s.data_.explodable); },
        [](BlockRecord& s, CallArgs&, Variant& v) {
          bool on = BoolArg(v, {"Explodable", "Explodable"});
          s.Touch();
          s.data_.explodable = on;
        });
    t.Property("IsLayout", [](BlockRecord& s, CallArgs&) { return Variant(s.IsLayout()); });
    t.Property("IsXRef", [](BlockRecord& s, CallArgs&) { return Variant(s.data_.is_xref); });
    t.Property("IsDynamicBlock",
               [](BlockRecord& s, CallArgs&) { return Variant(s.IsDynamic()); });
    t.Property("Layout", [](BlockRecord& s, CallArgs&) -> Variant {
      if (!s.IsLayout()) throw HostError(HostFailure::kNotApplicable);
      return Variant(s.doc_->Ref(s.data_.layout));
    });
    t.Property("Count", [](BlockRecord& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.entities_.size()));
    });
    t.Method(
        "Item",
        [](BlockRecord& s, CallArgs& a) {
          size_t i = ItemPositionIndexOnly(a[0], s.entities_.size());
          return Variant(s.doc_->Ref(s.entities_[i]));
        },
        1, 1);
    t.Default("Item");
    RegisterBlockFactories(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
