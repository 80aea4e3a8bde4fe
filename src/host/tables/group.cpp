// Groups (IAcadGroup).
#include "host/tables/group.h"

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
    auto* e = AsEntity(o.get());
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
