// DynamicSS bulk edits: one host operation on every member, in set order.
// Display and property edits swallow each member's failure and go on;
// Update, erasing, intersections and draw order let the host's error
// through.
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/value_helpers.h"
#include "selection/dynamic_ss.h"
#include "toolkit/object_identity.h"

namespace tovik {
namespace {

Variant OneElement(const Variant& value) { return Variant(SafeArray::Of({value})); }

// Every member gets `name` = value under a resume-next trap.
void LetOnEach(DynamicSS& set, std::string_view name, const Variant& value) {
  ResumeNext trap;
  for (const Variant& member : set.Enumerate()) {
    trap([&] { LetProperty(member.Object(), name, value); });
  }
}

// Adds `name` to the Document's table `table` (an existing name is no
// error).
void AddToTable(const ObjectRef& document, std::string_view table, const Variant& name) {
  ResumeNext trap;
  trap([&] { CallMethod(GetProperty(document, table).Object(), "Add", {name}); });
}

}  // namespace

void DynamicSS::Highlight(bool flag) {
  std::shared_ptr<DynamicSS> shared = SharedHighlightSet();
  const bool is_shared = shared.get() == this;
  ResumeNext trap;
  for (const Variant& member : Enumerate()) {
    Variant entity = member;
    // An attribute reference is highlighted through its block reference.
    if (TypeNameLike(member, "IAcadAttributeRef*")) {
      trap([&] {
        ObjectRef doc = GetProperty(member.Object(), "Document").Object();
        entity = Variant(ObjectFromId(OwnerIdOf(member.Object()), doc));
      });
    }
    trap([&] { CallMethod(entity.Object(), "Highlight", {Variant(flag)}); });
    if (is_shared) continue;
    trap([&] {
      if (flag) {
        shared->Add(OneElement(entity));
      } else {
        shared->Remove(OneElement(entity));
      }
    });
  }
}

void DynamicSS::Update() {
  for (const Variant& member : Enumerate()) CallMethod(member.Object(), "Update");
}

void DynamicSS::SetLineType(const Variant& name) { LetOnEach(*this, "LineType", name); }

void DynamicSS::SetLayer(const Variant& name) {
  AddToTable(document_, "Layers", name);
  LetOnEach(*this, "Layer", name);
}

void DynamicSS::SetTrueColor(const ObjectRef& color) {
  ResumeNext trap;
  for (const Variant& member : Enumerate()) {
    trap([&] { SetProperty(member.Object(), "TrueColor", color); });
  }
}

void DynamicSS::SetMaterial(const Variant& name) {
  AddToTable(document_, "Materials", name);
  LetOnEach(*this, "Material", name);
}

void DynamicSS::Visible(bool flag) {
  Variant name{std::string(kInvisibleGroupName)};
  ObjectRef group;
  ResumeNext trap;
  trap([&] { CallMethod(GetProperty(document_, "Groups").Object(), "Add", {name}); });
  trap([&] { group = CallMethod(GetProperty(document_, "Groups").Object(), "Item", {name}).Object(); });
  std::vector<Variant> members = Enumerate();
  SafeArray changed(VarType::kObject, 0, static_cast<int32_t>(members.size()));
  for (size_t i = 0; i < members.size(); ++i) {
    trap([&] { LetProperty(members[i].Object(), "Visible", Variant(flag)); });
    trap([&] { changed.Set(static_cast<int32_t>(i), members[i]); });
  }
  // Shown entities leave the group, hidden ones join it. The host group's
  // member for taking entities out is RemoveItems.
  trap([&] { CallMethod(group, flag ? "RemoveItems" : "AppendItems", {Variant(changed)}); });
}

void DynamicSS::EraseAllEntities() {
  for (const Variant& member : Enumerate()) CallMethod(member.Object(), "Delete");
  EntityTable()->RemoveAll();
}

bool DynamicSS::IsIntersectWith(const Variant& obj) {
  if (tovik::TypeName(obj) == kClassName) {
    const ObjectRef& other = obj.Object();
    int32_t count = CLng(GetProperty(other, "Count"));
    for (int32_t i = 0; i < count; ++i) {
      if (IsIntersectWith(GetProperty(other, "Item", {Variant(i)}))) return true;
    }
    return false;
  }
  // By the member's name, as late-bound callers reach it: entities that do
  // not offer "IsIntersectWith" answer 438.
  for (const Variant& member : Enumerate()) {
    Variant points = CallMethod(member.Object(), "IsIntersectWith", {obj, Variant(int32_t{0})});
    if (ElementCount(points) > 0) return true;
  }
  return false;
}

Variant DynamicSS::IntersectWith(const Variant& obj, const Variant& extent) {
  Variant option = extent.IsMissing() ? Variant(int32_t{0}) : extent;
  // Each piece is an array of coordinates; they are joined once at the end.
  std::vector<Variant> pieces;
  if (tovik::TypeName(obj) == kClassName) {
    const ObjectRef& other = obj.Object();
    int32_t count = CLng(GetProperty(other, "Count"));
    for (int32_t i = 0; i < count; ++i) {
      pieces.push_back(IntersectWith(GetProperty(other, "Item", {Variant(i)}), option));
    }
  } else {
    for (const Variant& member : Enumerate()) {
      pieces.push_back(CallMethod(member.Object(), "IntersectWith", {obj, option}));
    }
  }
  return JoinValues(pieces);
}

void DynamicSS::MoveInDrawOrder(std::string_view member) {
  if (size() == 0) return;
  Variant members = ToArray(Variant(false));
  ObjectRef block = Block_OwnerOf();
  CallMethod(SortentsTable(block), member, {members});
  CallMethod(HostApplication(), "Update");
}

void DynamicSS::MoveToBottom() { MoveInDrawOrder("MoveToBottom"); }

void DynamicSS::MoveToTop() { MoveInDrawOrder("MoveToTop"); }

}  // namespace tovik
