#include "selection/dynamic_ss.h"

#include <unordered_set>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_errors.h"
#include "frame/runtime_text.h"
#include "frame/value_helpers.h"
#include "frame/variant_compare.h"
#include "toolkit/acad_space.h"
#include "toolkit/object_identity.h"

namespace tovik {
namespace {

// Containers whose members Add takes one by one through Item(0..Count-1).
// Indexes start at 0 for all of them: a 1-based Collection fails at its
// index 0, and that failure reaches the caller.
bool IsContainer(const std::string& type_name) {
  return type_name == "IAcadSelectionSet" || type_name == "IAcadGroup" ||
         type_name == "DynamicSS" || type_name == "Collection";
}

bool IsBlockOrSpace(const std::string& type_name) {
  return type_name == "IAcadBlock" || type_name == "IAcadBlock2" ||
         type_name == "IAcadPaperSpace" || type_name == "IAcadPaperSpace2" ||
         type_name == "IAcadModelSpace";
}

// The containers Remove walks (no Collection, no block or space).
bool IsRemovableContainer(const std::string& type_name) {
  return type_name == "IAcadSelectionSet" || type_name == "IAcadGroup" ||
         type_name == "DynamicSS";
}

std::string HandleOf(const Variant& entity) { return CStr(GetProperty(entity.Object(), "Handle")); }

// Calls visit(entity) for every entity an element of Add's or Remove's
// argument stands for: the elements of a nested array read from 0 until a
// read fails, the members of a container, or the element itself.
template <class IsWalked, class Visit>
void ForEachEntity(const Variant& objects, IsWalked is_walked, Visit visit) {
  Variant list = objects;  // a set may be added to or removed from itself
  for (const Variant& element : list.Array().Items()) {
    if (element.IsArray()) {
      // Read from index 0 up: a lower bound above 0 gives nothing.
      const SafeArray& nested = element.Array();
      if (nested.Dims() != 1) continue;
      for (int32_t i = 0; i >= nested.LBound() && i <= nested.UBound(); ++i) {
        visit(Variant(nested.At(i).Object()));
      }
      continue;
    }
    if (is_walked(tovik::TypeName(element))) {
      const ObjectRef& container = element.Object();
      int32_t count = CLng(GetProperty(container, "Count"));
      for (int32_t j = 0; j < count; ++j) visit(GetProperty(container, "Item", {Variant(j)}));
      continue;
    }
    visit(element);
  }
}

// The IDs of two objects name the same object.
bool SameId(const Variant& a, const Variant& b) { return ValuesEqual(a, b); }

}  // namespace

bool TypeNameLike(const Variant& value, std::string_view pattern) {
  return Like(tovik::TypeName(value), pattern).value_or(false);
}

std::shared_ptr<DynamicSS> DynamicSS::Create() {
  auto set = std::make_shared<DynamicSS>(Token{});
  set->SetDocument(CurrentDrawing());
  set->animation_ = std::make_shared<SSAnimation>(set);
  set->dimensions_ = std::make_shared<SSDimensions>(set);
  return set;
}

std::vector<Variant> DynamicSS::Enumerate() {
  std::shared_ptr<Dictionary> table = EntityTable();
  std::vector<Variant> members;
  members.reserve(static_cast<size_t>(table->Count()));
  for (int32_t i = 0; i < table->Count(); ++i) members.push_back(table->ItemAt(i));
  return members;
}

std::shared_ptr<Dictionary> DynamicSS::EntityTable() {
  if (!entities_) entities_ = std::make_shared<Dictionary>();
  return entities_;
}

std::shared_ptr<SSDimensions> DynamicSS::Dimensions() {
  if (!dimensions_) dimensions_ = std::make_shared<SSDimensions>(Self());
  return dimensions_;
}

std::shared_ptr<SSAnimation> DynamicSS::Animation() {
  if (!animation_) animation_ = std::make_shared<SSAnimation>(Self());
  return animation_;
}

Variant DynamicSS::Item(const Variant& index) {
  std::shared_ptr<Dictionary> table = EntityTable();
  if (IsNumeric(index)) {
    int32_t i = CLng(index);
    if (i < 0 || i >= table->Count()) throw errors::SubscriptOutOfRange();
    return table->ItemAt(i);
  }
  Variant entity = table->Item(index);
  if (entity.IsEmpty()) throw errors::Library(kInvalidDictionaryIndex);
  return Variant(entity.Object());
}

void DynamicSS::Replace(const ObjectRef& ent1, const ObjectRef& ent2) {
  std::shared_ptr<Dictionary> table = EntityTable();
  Variant old_key(HandleOf(Variant(ent1)));
  Variant new_key(HandleOf(Variant(ent2)));
  // Renamed first, so a failure (Ent1 no member: 32811; Ent2 already a
  // member: 457) leaves the set as it was.
  table->Rename(old_key, new_key);
  table->SetItem(new_key, Variant(ent2));
}

ObjectRef DynamicSS::Block_OwnerOf() {
  if (size() == 0) return nullptr;
  return AcadSpace::Block_OwnerOf(At(0).Object());
}

int16_t DynamicSS::Count() {
  int32_t count = EntityTable()->Count();
  if (count > 32767) throw errors::Overflow();
  return static_cast<int16_t>(count);
}

bool DynamicSS::IsInCollection(const ObjectRef& ent, const Variant& link_attrib_and_block) {
  Variant entity(ent);
  if (EntityTable()->Exists(Variant(HandleOf(entity)))) return true;
  if (link_attrib_and_block.IsMissing() || !CBool(link_attrib_and_block)) return false;
  if (TypeNameLike(entity, "IAcadBlockReference*")) {
    Variant id = ObjectIdOf(ent);
    for (int32_t i = 0; i < size(); ++i) {
      const Variant& member = At(i);
      if (TypeNameLike(member, "IAcadAttributeReference*") &&
          SameId(OwnerIdOf(member.Object()), id)) {
        return true;
      }
    }
  } else if (TypeNameLike(entity, "IAcadAttributeReference*")) {
    Variant owner = OwnerIdOf(ent);
    for (int32_t i = 0; i < size(); ++i) {
      const Variant& member = At(i);
      if (TypeNameLike(member, "IAcadBlockReference*") &&
          SameId(owner, ObjectIdOf(member.Object()))) {
        return true;
      }
    }
  }
  return false;
}

ObjectRef DynamicSS::HostSelectionSet() {
  ObjectRef sets = GetProperty(document_, "SelectionSets").Object();
  Variant name{std::string(kHostSelectionSetName)};
  ObjectRef set;
  ResumeNext trap;
  if (trap([&] { set = CallMethod(sets, "Add", {name}).Object(); })) return set;
  trap([&] { set = CallMethod(sets, "Item", {name}).Object(); });
  return set;
}

ObjectRef DynamicSS::SelectionSet() {
  ObjectRef set = HostSelectionSet();
  CallMethod(set, "Clear");
  CallMethod(set, "AddItems", {ToArray(Variant::Missing())});
  return set;
}

bool DynamicSS::AddOne(const Variant& entity) {
  std::shared_ptr<Dictionary> table = EntityTable();
  Variant key(HandleOf(entity));
  if (table->Exists(key)) return false;
  table->Add(key, entity);
  return true;
}

void DynamicSS::Add(const Variant& objects) {
  ForEachEntity(
      objects, [](const std::string& t) { return IsContainer(t) || IsBlockOrSpace(t); },
      [&](const Variant& entity) { AddOne(entity); });
}

void DynamicSS::RemoveHandles(std::vector<std::string> handles) {
  if (handles.empty()) return;
  std::unordered_set<std::string> doomed(handles.begin(), handles.end());
  EntityTable()->RemoveWhere([&](const Variant& key, const Variant&) {
    return key.IsString() && doomed.contains(key.RawString());
  });
}

void DynamicSS::Remove(const Variant& objects) {
  // Handles are gathered and removed in one pass; on a failure the ones
  // gathered before it are still removed.
  std::vector<std::string> handles;
  try {
    ForEachEntity(objects, IsRemovableContainer,
                  [&](const Variant& entity) { handles.push_back(HandleOf(entity)); });
  } catch (...) {
    RemoveHandles(std::move(handles));
    throw;
  }
  RemoveHandles(std::move(handles));
}

void DynamicSS::RemoveLockedEnts() {
  if (size() == 0) return;
  ObjectRef drawing = CurrentDrawing();
  ObjectRef layers = GetProperty(drawing, "Layers").Object();
  std::vector<std::string> locked;
  for (int32_t i = 0; i < size(); ++i) {
    const ObjectRef& entity = At(i).Object();
    ObjectRef layer = CallMethod(layers, "Item", {GetProperty(entity, "Layer")}).Object();
    if (CBool(GetProperty(layer, "Lock"))) locked.push_back(CStr(EntityTable()->KeyAt(i)));
  }
  if (locked.empty()) return;
  auto count = static_cast<int32_t>(locked.size());
  RemoveHandles(std::move(locked));
  // The command line is written through the drawing's Utility.Prompt (the
  // document object itself has no Prompt member).
  CallMethod(GetProperty(drawing, "Utility").Object(), "Prompt",
             {Variant("\r\n" + std::to_string(count) + " object(s) on locked layer removed.")});
}

void DynamicSS::RemoveTypeName(std::string_view pattern) {
  if (size() == 0) return;
  if (!Like("", pattern).has_value()) throw errors::Runtime(kErrInvalidPattern);
  EntityTable()->RemoveWhere([&](const Variant&, const Variant& item) {
    return TypeNameLike(item, pattern);
  });
}

// An entry is gone when its Handle cannot be read (an Empty item) or its
// object ID cannot: the host still answers Handle on an erased entity.
void DynamicSS::Clean() {
  ResumeNext trap;
  EntityTable()->RemoveWhere([&](const Variant&, const Variant& item) {
    return !trap([&] {
      HandleOf(item);
      ObjectIdOf(item.Object());
    });
  });
}

void DynamicSS::Clear() {
  EntityTable()->RemoveAll();
  ResumeNext trap;
  trap([&] {
    ObjectRef sets = GetProperty(document_, "SelectionSets").Object();
    CallMethod(CallMethod(sets, "Item", {Variant(std::string(kHostSelectionSetName))}).Object(),
               "Delete");
  });
}

void DynamicSS::SetDocument(ObjectRef document) {
  document_ = std::move(document);
  EntityTable()->RemoveAll();
}

std::string DynamicSS::DocumentName() const { return CStr(GetProperty(document_, "Name")); }

std::shared_ptr<DynamicSS> DynamicSS::Copy(const Variant& no_entity_copy) {
  std::shared_ptr<DynamicSS> copy = Create();
  copy->SetDocument(document_);
  bool same = !no_entity_copy.IsMissing() && CBool(no_entity_copy);
  for (const Variant& member : Enumerate()) {
    Variant entity = same ? member : CallMethod(member.Object(), "Copy");
    copy->Add(Variant(SafeArray::Of({entity})));
  }
  return copy;
}

Variant DynamicSS::ToArray(const Variant& convert_attrib) {
  if (size() == 0) return Variant();
  bool convert = !convert_attrib.IsMissing() && CBool(convert_attrib);
  SafeArray out(VarType::kObject, 0, size());
  ResumeNext trap;
  for (int32_t i = 0; i < size(); ++i) {
    const Variant& member = At(i);
    trap([&] {
      if (convert && TypeNameLike(member, "IAcadAttributeRef*")) {
        const ObjectRef& attribute = member.Object();
        ObjectRef doc = GetProperty(attribute, "Document").Object();
        out.Set(i, Variant(ObjectFromId(OwnerIdOf(attribute), doc)));
      } else {
        out.Set(i, member);
      }
    });
  }
  return Variant(std::move(out));
}

// Members in the slot order of the class interface.
const MemberTable<DynamicSS>& DynamicSS::Members() {
  static const MemberTable<DynamicSS> table = [] {
    using S = DynamicSS;
    using A = CallArgs;
    MemberTable<S> t;
    t.Property(
        "Name", [](S& s, A&) { return Variant(s.Name()); },
        [](S& s, A&, Variant& v) { s.SetName(CStr(v)); });
    t.Property("Item", [](S& s, A& a) { return s.Item(a[0]); }, nullptr, nullptr, 1, 1);
    t.Default("Item");
    t.Method(
        "Replace",
        [](S& s, A& a) {
          s.Replace(a[0].Object(), a[1].Object());
          return Variant();
        },
        2, 2);
    t.Property("Block_OwnerOf", [](S& s, A&) { return Variant(s.Block_OwnerOf()); });
    t.Property("Dimensions", [](S& s, A&) { return Variant(s.Dimensions()); });
    t.Property("Animation", [](S& s, A&) { return Variant(s.Animation()); });
    t.Property("Dictionary", [](S& s, A&) { return Variant(s.EntityTable()); });
    t.Method(
        "IsInCollection",
        [](S& s, A& a) { return Variant(s.IsInCollection(a[0].Object(), a[1])); }, 1, 2);
    t.Method("SelectionSet", [](S& s, A&) { return Variant(s.SelectionSet()); });
    t.Property("Count", [](S& s, A&) { return Variant(s.Count()); });
    t.Method("Add", [](S& s, A& a) { return s.Add(a[0]), Variant(); }, 1, 1);
    t.Method("RemoveLockedEnts", [](S& s, A&) { return s.RemoveLockedEnts(), Variant(); });
    t.Method("RemoveTypeName", [](S& s, A& a) { return s.RemoveTypeName(CStr(a[0])), Variant(); },
             1, 1);
    t.Method("Remove", [](S& s, A& a) { return s.Remove(a[0]), Variant(); }, 1, 1);
    t.Method("Highlight", [](S& s, A& a) { return s.Highlight(CBool(a[0])), Variant(); }, 1, 1);
    t.Method("Update", [](S& s, A&) { return s.Update(), Variant(); });
    t.Method("SelectW", [](S& s, A& a) { return s.SelectW(a), Variant(); }, 1, 5);
    t.Method(
        "SelectByFilteringFrom",
        [](S& s, A& a) {
          std::shared_ptr<S> previous = ObjectAs<S>(a[0]);
          if (!previous) throw a[0].IsObject() ? errors::TypeMismatch() : errors::ObjectNotSet();
          return s.SelectByFilteringFrom(*previous, a[1], a[2]), Variant();
        },
        3, 3);
    t.Method("SelectAtPoint", [](S& s, A& a) { return s.SelectAtPoint(a[0], a[1], a[2]), Variant(); },
             1, 3);
    t.Method(
        "SelectByPolygon",
        [](S& s, A& a) { return s.SelectByPolygon(CLng(a[0]), a[1], a[2], a[3]), Variant(); }, 2,
        4);
    t.Method("SelectOnScreen", [](S& s, A& a) { return s.SelectOnScreen(a[0], a[1]), Variant(); },
             0, 2);
    t.Method("SelectPickFirstSS", [](S& s, A&) { return s.SelectPickFirstSS(), Variant(); });
    t.Method(
        "SelectByBoundPline",
        [](S& s, A& a) { return s.SelectByBoundPline(a[0].Object(), a[1], a[2]), Variant(); }, 1,
        3);
    t.Method(
        "SelectByCrossPline",
        [](S& s, A& a) { return s.SelectByCrossPline(a[0].Object(), a[1], a[2]), Variant(); }, 1,
        3);
    t.Method("Clean", [](S& s, A&) { return s.Clean(), Variant(); });
    t.Method("Clear", [](S& s, A&) { return s.Clear(), Variant(); });
    t.Method("EraseAllEntities", [](S& s, A&) { return s.EraseAllEntities(), Variant(); });
    t.Property("DocumentName", [](S& s, A&) { return Variant(s.DocumentName()); });
    t.Property(
        "Document", [](S& s, A&) { return Variant(s.Document()); }, nullptr,
        [](S& s, A&, Variant& v) {
          if (!v.IsObject()) throw errors::TypeMismatch();
          s.SetDocument(v.RawObject());
        });
    t.Method("Copy", [](S& s, A& a) { return Variant(s.Copy(a[0])); }, 0, 1);
    t.WriteOnly("LineType", [](S& s, A&, Variant& v) { s.SetLineType(v); });
    t.WriteOnly("Layer", [](S& s, A&, Variant& v) { s.SetLayer(v); });
    t.Property("TrueColor", nullptr, nullptr, [](S& s, A&, Variant& v) {
      s.SetTrueColor(v.Object());
    });
    t.WriteOnly("Material", [](S& s, A&, Variant& v) { s.SetMaterial(v); });
    t.Method("Visible", [](S& s, A& a) { return s.Visible(CBool(a[0])), Variant(); }, 1, 1);
    t.Method("IsIntersectWith", [](S& s, A& a) { return Variant(s.IsIntersectWith(a[0])); }, 1, 1);
    t.Method("IntersectWith", [](S& s, A& a) { return s.IntersectWith(a[0], a[1]); }, 1, 2);
    t.Method("ToArray", [](S& s, A& a) { return s.ToArray(a[0]); }, 0, 1);
    t.Method("ToPickSet", [](S& s, A&) { return s.ToPickSet(), Variant(); });
    t.Method("ToPreviousSS", [](S& s, A&) { return s.ToPreviousSS(), Variant(); });
    t.Method("MoveToBottom", [](S& s, A&) { return s.MoveToBottom(), Variant(); });
    t.Method("MoveToTop", [](S& s, A&) { return s.MoveToTop(), Variant(); });
    return t;
  }();
  return table;
}

std::shared_ptr<DynamicSS> SharedHighlightSet() {
  ObjectRef events = HostEvents();
  ResumeNext trap;
  Variant stored;
  trap([&] {
    stored = CallMethod(events, "GetNamedObject",
                        {Variant(std::string(kHighlightSetKey)), Variant::Nothing()});
  });
  if (std::shared_ptr<DynamicSS> set = ObjectAs<DynamicSS>(stored)) return set;
  std::shared_ptr<DynamicSS> set = DynamicSS::Create();
  trap([&] {
    CallMethod(events, "SetNamedObject",
               {Variant(std::string(kHighlightSetKey)), Variant(set), Variant(""),
                Variant::Nothing()});
  });
  return set;
}

}  // namespace tovik
