#include "host/tables/collections.h"

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/selection/selection_set.h"
#include "host/surface/args.h"
#include "host/surface/collection_util.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

// The items of a collection as (name, object) pairs in Item order.
std::vector<std::pair<std::string_view, DbObject*>> Items(Document& doc, CollectionKind kind) {
  std::vector<std::pair<std::string_view, DbObject*>> out;
  auto add = [&](const auto& table) {
    for (auto* r : table.items) out.emplace_back(r->Name(), r);
  };
  switch (kind) {
    case CollectionKind::kBlocks: add(doc.blocks()); break;
    case CollectionKind::kLayers: add(doc.layers()); break;
    case CollectionKind::kTextStyles: add(doc.text_styles()); break;
    case CollectionKind::kLinetypes: add(doc.linetypes()); break;
    case CollectionKind::kMaterials: add(doc.materials()); break;
    case CollectionKind::kRegApps: add(doc.regapps()); break;
    case CollectionKind::kDimStyles: add(doc.dim_styles()); break;
    case CollectionKind::kLayouts: add(doc.layouts()); break;
    case CollectionKind::kGroups:
      for (Group* g : doc.groups()) out.emplace_back(g->Name(), g);
      break;
    case CollectionKind::kDictionaries:
      for (const auto& e : doc.named_objects()->data().entries) {
        if (!e.second->erased()) out.emplace_back(e.first, e.second);
      }
      break;
  }
  return out;
}

std::string NewName(const Variant& v) {
  std::string name = StringArg(v, {"Name", "Add"});
  if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
  return name;
}

// Add of a symbol table: an existing name returns the record untouched.
template <class R>
DbObject* AddRecordNamed(Document& doc, RecordTable<R>& table, const Variant& v,
                         void (*init)(Document&, R&) = nullptr) {
  std::string name = NewName(v);
  if (R* existing = table.Find(name)) return existing;
  R* r = doc.Create<R>();
  r->mutable_data().name = name;
  if (init) init(doc, *r);
  doc.AddRecord(table, r);
  return r;
}

DbObject* AddGroup(Document& doc, const Variant& v) {
  std::string name = StringArg(v, {"Name", "Add"});
  bool anonymous = name == "*";
  if (anonymous) {
    int n = 1;
    auto taken = [&](const std::string& candidate) {
      for (Group* g : doc.groups()) {
        if (CaseInsensitiveEqual(g->Name(), candidate)) return true;
      }
      return false;
    };
    do {
      name = "*A" + std::to_string(n++);
    } while (taken(name));
  } else {
    if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
    for (Group* g : doc.groups()) {
      if (CaseInsensitiveEqual(g->Name(), name)) throw HostError(HostFailure::kDuplicateRecordName);
    }
  }
  Group* g = doc.Create<Group>();
  g->mutable_data().name = name;
  g->mutable_data().anonymous = anonymous;
  doc.groups().push_back(g);
  doc.Record([&doc, g] { std::erase(doc.groups(), g); });
  return g;
}

Variant Add(TableCollection& s, CallArgs& a) {
  Document& doc = *s.document();
  DbObject* added = nullptr;
  switch (s.kind()) {
    case CollectionKind::kBlocks: {
      geometry::Vec3 origin = PointArg(a[0], {"InsertionPoint", "Add"});
      std::string name = StringArg(a[1], {"Name", "Add"});
      if (name == "*U" || name == "*u") {
        added = doc.AddAnonymousBlock(origin);
        break;
      }
      if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
      // An existing name gives back the existing definition, contents kept.
      added = doc.blocks().Find(name);
      if (!added) added = doc.AddBlock(name, origin);
      break;
    }
    case CollectionKind::kLayers:
      added = AddRecordNamed<LayerRecord>(doc, doc.layers(), a[0], [](Document& d, LayerRecord& l) {
        l.mutable_data().linetype = d.continuous_linetype();
        l.mutable_data().material = d.materials().Find("Global");
      });
      break;
    case CollectionKind::kTextStyles:
      added = AddRecordNamed<TextStyleRecord>(doc, doc.text_styles(), a[0]);
      break;
    case CollectionKind::kLinetypes:
      added = AddRecordNamed<LinetypeRecord>(doc, doc.linetypes(), a[0]);
      break;
    case CollectionKind::kMaterials:
      added = AddRecordNamed<MaterialRecord>(doc, doc.materials(), a[0]);
      break;
    case CollectionKind::kRegApps: {
      std::string name = StringArg(a[0], {"Name", "Add"});
      if (name.size() > 31) throw HostError(HostFailure::kInvalidInput);
      added = AddRecordNamed<RegApp>(doc, doc.regapps(), a[0]);
      break;
    }
    case CollectionKind::kDimStyles:
      added = AddRecordNamed<DimStyleRecord>(doc, doc.dim_styles(), a[0]);
      break;
    case CollectionKind::kLayouts: added = AddLayout(doc, a[0]); break;
    case CollectionKind::kGroups: added = AddGroup(doc, a[0]); break;
    case CollectionKind::kDictionaries: {
      std::string name = NewName(a[0]);
      Dictionary* nod = doc.named_objects();
      added = nod->Find(name);
      if (!added) added = nod->AddObject(name, "AcDbDictionary");
      break;
    }
  }
  return Variant(doc.Ref(added));
}

}  // namespace

std::string_view TableCollection::TypeName() const {
  static constexpr std::string_view kNames[] = {
      "IAcadBlocks",    "IAcadLayers",     "IAcadTextStyles", "IAcadLineTypes",
      "IAcadMaterials", "IAcadRegisteredApplications", "IAcadDimStyles",
      "IAcadLayouts",   "IAcadGroups",     "IAcadDictionaries"};
  return kNames[static_cast<size_t>(kind_)];
}

Variant TableCollection::Invoke(DispId id, InvokeKind kind, std::span<Variant> args) {
  if (doc_->closed()) throw HostError(HostFailure::kNoDocument);
  CallScope scope(&doc_->journal());
  return DispatchObject<TableCollection>::Invoke(id, kind, args);
}

std::vector<Variant> TableCollection::Enumerate() {
  std::vector<Variant> out;
  for (const auto& item : Items(*doc_, kind_)) out.emplace_back(doc_->Ref(item.second));
  return out;
}

const MemberTable<TableCollection>& TableCollection::Members() {
  static const MemberTable<TableCollection> table = [] {
    MemberTable<TableCollection> t;
    using K = TableCollection;
    t.Property("Count", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(Items(*s.doc_, s.kind_).size()));
    });
    t.Method(
        "Item",
        [](K& s, CallArgs& a) {
          auto items = Items(*s.doc_, s.kind_);
          size_t i = ItemPosition(a[0], items.size(), [&](size_t k) { return items[k].first; });
          return Variant(s.doc_->Ref(items[i].second));
        },
        1, 1);
    t.Default("Item");
    t.Method("Add", Add, 1, 2);
    // Delete on a collection object always raises.
    t.Method("Delete", [](K&, CallArgs&) -> Variant {
      throw HostError(HostFailure::kCannotDelete);
    });
    return t;
  }();
  return table;
}

ObjectRef Document::Collection(std::string_view kind) {
  static constexpr std::pair<std::string_view, CollectionKind> kKinds[] = {
      {"Blocks", CollectionKind::kBlocks},       {"Layers", CollectionKind::kLayers},
      {"TextStyles", CollectionKind::kTextStyles}, {"Linetypes", CollectionKind::kLinetypes},
      {"Materials", CollectionKind::kMaterials}, {"RegisteredApplications", CollectionKind::kRegApps},
      {"DimStyles", CollectionKind::kDimStyles}, {"Layouts", CollectionKind::kLayouts},
      {"Groups", CollectionKind::kGroups},       {"Dictionaries", CollectionKind::kDictionaries},
  };
  auto it = collections_.find(std::string(kind));
  if (it != collections_.end()) return it->second;
  if (kind == "SelectionSets") {
    auto sets = std::make_shared<SelectionSets>(this);
    collections_.emplace(std::string(kind), sets);
    return sets;
  }
  for (const auto& [name, k] : kKinds) {
    if (name == kind) {
      auto c = std::make_shared<TableCollection>(this, k);
      collections_.emplace(std::string(kind), c);
      return c;
    }
  }
  return nullptr;
}

}  // namespace tovik::host
