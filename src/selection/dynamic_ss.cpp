#include "selection/dynamic_ss.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_errors.h"

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

}  // namespace

std::shared_ptr<DynamicSS> DynamicSS::Create() {
  auto set = std::make_shared<DynamicSS>(Token{});
  set->SetDocument(CurrentDrawing());
  set->animation_ = std::make_shared<SSAnimation>(set);
  set->dimensions_ = std::make_shared<SSDimensions>(set);
  return set;
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
    SafeArray items = table->Items();
    return items.At(CLng(index));
  }
  Variant entity = table->Item(index);
  if (entity.IsEmpty()) throw errors::Library(kInvalidDictionaryIndex);
  return Variant(entity.Object());
}

int16_t DynamicSS::Count() {
  int32_t count = EntityTable()->Count();
  if (count > 32767) throw errors::Overflow();
  return static_cast<int16_t>(count);
}

bool DynamicSS::AddOne(const Variant& entity) {
  std::string handle = CStr(GetProperty(entity.Object(), "Handle"));
  std::shared_ptr<Dictionary> table = EntityTable();
  Variant key(handle);
  if (table->Exists(key)) return false;
  table->Add(key, entity);
  return true;
}

void DynamicSS::Add(const Variant& objects) {
  Variant list = objects;  // a set may be added to itself
  const SafeArray& elements = list.Array();
  for (const Variant& element : elements.Items()) {
    if (element.IsArray()) {
      const SafeArray& nested = element.Array();
      ResumeNext trap;
      for (int32_t i = 0;; ++i) {
        Variant item;
        if (!trap([&] { item = nested.At(i); })) break;
        AddOne(Variant(item.Object()));
      }
      continue;
    }
    std::string type_name = tovik::TypeName(element);
    if (IsContainer(type_name) || IsBlockOrSpace(type_name)) {
      const ObjectRef& container = element.Object();
      int32_t count = CLng(GetProperty(container, "Count"));
      for (int32_t j = 0; j < count; ++j) {
        AddOne(GetProperty(container, "Item", {Variant(j)}));
      }
      continue;
    }
    AddOne(element);
  }
}

void DynamicSS::SetDocument(ObjectRef document) {
  document_ = std::move(document);
  EntityTable()->RemoveAll();
}

std::string DynamicSS::DocumentName() const {
  return CStr(GetProperty(document_, "Name"));
}

// Members in the slot order of the class interface. Slots whose members
// belong to the selection, edit, extent and animation families are marked
// where they go.
const MemberTable<DynamicSS>& DynamicSS::Members() {
  static const MemberTable<DynamicSS> table = [] {
    MemberTable<DynamicSS> t;
    t.Property(
        "Name", [](DynamicSS& s, CallArgs&) { return Variant(s.Name()); },
        [](DynamicSS& s, CallArgs&, Variant& v) { s.SetName(CStr(v)); });
    t.Property(
        "Item", [](DynamicSS& s, CallArgs& a) { return s.Item(a[0]); }, nullptr,
        nullptr, 1, 1);
    t.Default("Item");
    // Replace, Block_OwnerOf
    t.Property("Dimensions",
               [](DynamicSS& s, CallArgs&) { return Variant(s.Dimensions()); });
    t.Property("Animation",
               [](DynamicSS& s, CallArgs&) { return Variant(s.Animation()); });
    t.Property("Dictionary",
               [](DynamicSS& s, CallArgs&) { return Variant(s.EntityTable()); });
    // IsInCollection, SelectionSet
    t.Property("Count", [](DynamicSS& s, CallArgs&) { return Variant(s.Count()); });
    t.Method(
        "Add",
        [](DynamicSS& s, CallArgs& a) {
          s.Add(a[0]);
          return Variant();
        },
        1, 1);
    // RemoveLockedEnts, RemoveTypeName, Remove, Highlight, Update, SelectW,
    // SelectByFilteringFrom, SelectAtPoint, SelectByPolygon, SelectOnScreen,
    // SelectPickFirstSS, SelectByBoundPline, SelectByCrossPline, Clean,
    // Clear, EraseAllEntities
    t.Property("DocumentName",
               [](DynamicSS& s, CallArgs&) { return Variant(s.DocumentName()); });
    t.Property(
        "Document", [](DynamicSS& s, CallArgs&) { return Variant(s.Document()); },
        nullptr, [](DynamicSS& s, CallArgs&, Variant& v) {
          if (!v.IsObject()) throw errors::TypeMismatch();
          s.SetDocument(v.RawObject());
        });
    // Copy, LineType, Layer, TrueColor, Material, Visible, IsIntersectWith,
    // IntersectWith, ToArray, ToPickSet, ToPreviousSS, MoveToBottom,
    // MoveToTop
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
