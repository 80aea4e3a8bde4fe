#include "host/dictionary.h"

#include <algorithm>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/args.h"
#include "host/block.h"
#include "host/collection_util.h"
#include "host/document.h"
#include "host/entities.h"
#include "host/host_error.h"

namespace tovik::host {

// ------------------------------------------------------------ Dictionary

DbObject* Dictionary::Find(std::string_view key) const {
  for (const auto& [k, object] : data_.entries) {
    if (CaseInsensitiveEqual(k, key) && !object->erased()) return object;
  }
  return nullptr;
}

void Dictionary::Put(std::string_view key, DbObject* object) {
  Touch();
  auto it = std::find_if(data_.entries.begin(), data_.entries.end(),
                         [&](const auto& e) { return CaseInsensitiveEqual(e.first, key); });
  object->set_owner(this);
  if (it != data_.entries.end()) {
    DbObject* old = it->second;
    it->second = object;
    if (!old->erased()) old->DbObject::Erase();
  } else {
    data_.entries.emplace_back(std::string(key), object);
  }
}

DbObject* Dictionary::Take(std::string_view key) {
  auto it = std::find_if(data_.entries.begin(), data_.entries.end(),
                         [&](const auto& e) { return CaseInsensitiveEqual(e.first, key); });
  if (it == data_.entries.end()) return nullptr;
  Touch();
  DbObject* object = it->second;
  data_.entries.erase(it);
  return object;
}

DbObject* Dictionary::AddObject(std::string_view key, std::string_view class_name) {
  DbObject* object = nullptr;
  if (CaseInsensitiveEqual(class_name, "AcDbDictionary")) {
    object = doc_->Create<Dictionary>();
  } else if (CaseInsensitiveEqual(class_name, "AcDbXrecord")) {
    object = doc_->Create<XRecord>();
  } else if (CaseInsensitiveEqual(class_name, "AcDbSortentsTable")) {
    auto* table = doc_->Create<SortentsTable>();
    // A block's extension dictionary orders that block.
    table->mutable_data().block = dynamic_cast<BlockRecord*>(owner_);
    object = table;
  } else {
    throw HostError(HostFailure::kInvalidInput);
  }
  Put(key, object);
  return object;
}

std::vector<Variant> Dictionary::Enumerate() {
  CheckLive();
  std::vector<Variant> out;
  for (const auto& e : data_.entries) {
    if (!e.second->erased()) out.emplace_back(doc_->Ref(e.second));
  }
  return out;
}

namespace {

std::vector<std::pair<std::string, DbObject*>> LiveEntries(const Dictionary& d) {
  std::vector<std::pair<std::string, DbObject*>> out;
  for (const auto& e : d.data().entries) {
    if (!e.second->erased()) out.push_back(e);
  }
  return out;
}

std::string KeyArg(const Variant& v, std::string_view member) {
  std::string key = StringArg(v, {"Keyword", member});
  if (key.empty()) throw InvalidArgument("Keyword", member);
  return key;
}

}  // namespace

const MemberTable<Dictionary>& Dictionary::Members() {
  static const MemberTable<Dictionary> table = [] {
    MemberTable<Dictionary> t;
    using K = Dictionary;
    t.Property("Count", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(LiveEntries(s).size()));
    });
    t.Method(
        "Item",
        [](K& s, CallArgs& a) {
          auto entries = LiveEntries(s);
          size_t i = ItemPosition(a[0], entries.size(),
                                  [&](size_t k) -> std::string_view { return entries[k].first; });
          return Variant(s.doc_->Ref(entries[i].second));
        },
        1, 1);
    t.Default("Item");
    t.Method(
        "AddObject",
        [](K& s, CallArgs& a) {
          std::string key = KeyArg(a[0], "AddObject");
          std::string cls = StringArg(a[1], {"ObjectName", "AddObject"});
          return Variant(s.doc_->Ref(s.AddObject(key, cls)));
        },
        2, 2);
    t.Method(
        "AddXRecord",
        [](K& s, CallArgs& a) {
          std::string key = KeyArg(a[0], "AddXRecord");
          return Variant(s.doc_->Ref(s.AddObject(key, "AcDbXrecord")));
        },
        1, 1);
    t.Method(
        "GetObject",
        [](K& s, CallArgs& a) -> Variant {
          std::string key = StringArg(a[0], {"Name", "GetObject"});
          DbObject* o = s.Find(key);
          if (!o) throw HostError(HostFailure::kKeyNotFound);
          return Variant(s.doc_->Ref(o));
        },
        1, 1);
    t.Method(
        "Remove",
        [](K& s, CallArgs& a) -> Variant {
          std::string key = StringArg(a[0], {"Name", "Remove"});
          if (!s.Find(key)) throw HostError(HostFailure::kKeyNotFound);
          return Variant(s.doc_->Ref(s.Take(key)));
        },
        1, 1);
    t.Method(
        "Rename",
        [](K& s, CallArgs& a) -> Variant {
          std::string old_name = StringArg(a[0], {"OldName", "Rename"});
          std::string new_name = KeyArg(a[1], "Rename");
          if (!s.Find(old_name)) throw HostError(HostFailure::kKeyNotFound);
          if (s.Find(new_name) && !CaseInsensitiveEqual(old_name, new_name)) {
            throw HostError(HostFailure::kDuplicateRecordName);
          }
          s.Touch();
          for (auto& e : s.data_.entries) {
            if (CaseInsensitiveEqual(e.first, old_name)) e.first = new_name;
          }
          return Variant();
        },
        2, 2);
    t.Method(
        "Replace",
        [](K& s, CallArgs& a) -> Variant {
          std::string key = StringArg(a[0], {"OldName", "Replace"});
          auto* obj = dynamic_cast<DbObject*>(ObjectArg(a[1], {"NewObject", "Replace"}).get());
          if (!obj || obj->document() != s.doc_) throw InvalidArgument("NewObject", "Replace");
          if (!s.Find(key)) throw HostError(HostFailure::kKeyNotFound);
          s.Put(key, obj);
          return Variant();
        },
        2, 2);
    t.Method(
        "GetName",
        [](K& s, CallArgs& a) -> Variant {
          ObjectRef obj = ObjectArg(a[0], {"Object", "GetName"});
          for (const auto& e : LiveEntries(s)) {
            if (e.second == obj.get()) return Variant(e.first);
          }
          throw HostError(HostFailure::kKeyNotFound);
        },
        1, 1);
    t.Property("Name", [](K&, CallArgs&) { return Variant(""); });
    return t;
  }();
  return table;
}

// -------------------------------------------------------------- XRecord

const MemberTable<XRecord>& XRecord::Members() {
  static const MemberTable<XRecord> table = [] {
    MemberTable<XRecord> t;
    using K = XRecord;
    t.Method(
        "SetXRecordData",
        [](K& s, CallArgs& a) {
          if (!a[0].IsArray() || !a[1].IsArray() ||
              a[0].Array().Count() != a[1].Array().Count()) {
            throw InvalidArgument("XRecordDataType", "SetXRecordData");
          }
          Data d;
          for (const Variant& c : a[0].Array().Items()) {
            if (!c.IsNumber()) throw InvalidArgument("XRecordDataType", "SetXRecordData");
            d.codes.push_back(CInt(c));
          }
          d.values = a[1].Array().Items();
          s.Touch();
          s.data_ = std::move(d);
          return Variant();
        },
        2, 2);
    t.Method(
        "GetXRecordData",
        [](K& s, CallArgs& a) {
          // With no data the outs stay as they are.
          if (s.data_.codes.empty()) return Variant();
          SafeArray codes(VarType::kInteger, 0, static_cast<int32_t>(s.data_.codes.size()));
          for (size_t i = 0; i < s.data_.codes.size(); ++i) {
            codes.Set(static_cast<int32_t>(i), Variant(s.data_.codes[i]));
          }
          a[0] = Variant(std::move(codes));
          a[1] = Variant(SafeArray::OfVariants(s.data_.values));
          return Variant();
        },
        2, 2);
    return t;
  }();
  return table;
}

// --------------------------------------------------------- draw order

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
    auto* e = dynamic_cast<Entity*>(o.get());
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
  auto* e = dynamic_cast<Entity*>(ObjectArg(v, {"Target", member}).get());
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
        1, 2);
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
        1, 2);
    t.Property("Block", [](K& s, CallArgs&) { return Variant(s.doc_->Ref(s.data_.block)); });
    return t;
  }();
  return table;
}

// ---------------------------------------------------------------- Group

std::vector<Entity*> Group::LiveMembers() const {
  std::vector<Entity*> out;
  for (Entity* e : data_.members) {
    if (!e->erased()) out.push_back(e);
  }
  return out;
}

std::vector<Variant> Group::Enumerate() {
  CheckLive();
  std::vector<Variant> out;
  for (Entity* e : LiveMembers()) out.emplace_back(doc_->Ref(e));
  return out;
}

void Group::Delete() {
  CheckLive();
  auto& groups = doc_->groups();
  auto it = std::find(groups.begin(), groups.end(), this);
  if (it != groups.end()) {
    size_t index = static_cast<size_t>(it - groups.begin());
    groups.erase(it);
    doc_->Record([&groups, this, index] {
      groups.insert(groups.begin() + static_cast<std::ptrdiff_t>(index), this);
    });
  }
  DbObject::Erase();
}

namespace {

std::vector<Entity*> GroupEntities(const Group& s, const Variant& v, std::string_view member) {
  std::vector<Entity*> out;
  for (const ObjectRef& o : ObjectsArg(v, {"Objects", member})) {
    auto* e = dynamic_cast<Entity*>(o.get());
    if (!e || e->erased() || e->document() != s.document()) {
      throw InvalidArgument("Objects", member);
    }
    out.push_back(e);
  }
  return out;
}

// Sets a display property on every member (the group's write-only
// properties).
void SetOnMembers(Group& s, std::string_view name, Variant& v) {
  for (Entity* e : s.LiveMembers()) {
    LetProperty(s.document()->Ref(e), name, v);
  }
}

}  // namespace

const MemberTable<Group>& Group::Members() {
  static const MemberTable<Group> table = [] {
    MemberTable<Group> t;
    using K = Group;
    t.Property("Name", [](K& s, CallArgs&) { return Variant(s.data_.name); },
               [](K& s, CallArgs&, Variant& v) {
                 std::string name = StringArg(v, {"Name", "Name"});
                 if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
                 for (Group* g : s.doc_->groups()) {
                   if (g != &s && CaseInsensitiveEqual(g->Name(), name)) {
                     throw HostError(HostFailure::kDuplicateRecordName);
                   }
                 }
                 s.Touch();
                 s.data_.name = name;
               });
    t.Property("Count", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.LiveMembers().size()));
    });
    t.Method(
        "Item",
        [](K& s, CallArgs& a) {
          std::vector<Entity*> live = s.LiveMembers();
          return Variant(s.doc_->Ref(live[ItemPositionIndexOnly(a[0], live.size())]));
        },
        1, 1);
    t.Default("Item");
    t.Method(
        "AppendItems",
        [](K& s, CallArgs& a) {
          std::vector<Entity*> add = GroupEntities(s, a[0], "AppendItems");
          s.Touch();
          for (Entity* e : add) {
            // A member is never added twice.
            if (std::find(s.data_.members.begin(), s.data_.members.end(), e) ==
                s.data_.members.end()) {
              s.data_.members.push_back(e);
            }
          }
          return Variant();
        },
        1, 1);
    t.Method(
        "RemoveItems",
        [](K& s, CallArgs& a) {
          std::vector<Entity*> remove = GroupEntities(s, a[0], "RemoveItems");
          s.Touch();
          std::erase_if(s.data_.members, [&](Entity* e) {
            return std::find(remove.begin(), remove.end(), e) != remove.end();
          });
          return Variant();
        },
        1, 1);
    t.Method(
        "Highlight",
        [](K& s, CallArgs& a) {
          bool on = BoolArg(a[0], {"HighlightFlag", "Highlight"});
          for (Entity* e : s.LiveMembers()) e->set_highlighted(on);
          return Variant();
        },
        1, 1);
    t.Method("Update", [](K&, CallArgs&) { return Variant(); });
    t.WriteOnly("Layer", [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "Layer", v); });
    t.WriteOnly("Linetype", [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "Linetype", v); });
    t.WriteOnly("LinetypeScale",
                [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "LinetypeScale", v); });
    t.WriteOnly("Lineweight", [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "Lineweight", v); });
    t.WriteOnly("TrueColor", [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "TrueColor", v); });
    t.WriteOnly("Visible", [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "Visible", v); });
    t.WriteOnly("Material", [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "Material", v); });
    t.WriteOnly("PlotStyleName",
                [](K& s, CallArgs&, Variant& v) { SetOnMembers(s, "PlotStyleName", v); });
    return t;
  }();
  return table;
}

}  // namespace tovik::host
