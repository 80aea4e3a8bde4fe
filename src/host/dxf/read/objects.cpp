// The OBJECTS pass of the DXF loader (dictionaries, xrecords, groups,
// draw-order tables, layouts, materials), extension dictionaries, dynamic
// block links, and the entry points that build a document from a file.
#include <fstream>
#include <optional>
#include <sstream>

#include "host/core/application.h"
#include "host/core/host_error.h"
#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/read/loader.h"
#include "host/dxf/read/validate.h"
#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"
#include "host/tables/group.h"

namespace tovik::host::dxf {
namespace {

bool IsDictionaryType(std::string_view type) {
  return type == "DICTIONARY" || type == "ACDBDICTIONARYWDFLT";
}

uint64_t LayoutBlockHandle(const Record& record) {
  auto sub = record.Subclass("AcDbLayout");
  if (!sub) return 0;
  for (const Tag& tag : *sub) {
    if (tag.code == 330) return HandleValue(&tag);
  }
  return 0;
}

void FillXRecord(const Record& record, XRecord* xrecord) {
  auto sub = record.Subclass("AcDbXrecord");
  if (!sub) return;
  auto& d = xrecord->mutable_data();
  std::span<const Tag> tags = *sub;
  size_t i = !tags.empty() && tags[0].code == 280 ? 1 : 0;
  for (; i < tags.size(); ++i) {
    const Tag& t = tags[i];
    d.codes.push_back(t.code);
    if (t.IsDouble()) {
      d.values.emplace_back(t.real);
    } else if (t.kind == ValueKind::kInt16 || t.kind == ValueKind::kBool) {
      d.values.emplace_back(static_cast<int16_t>(t.integer));
    } else if (t.IsInteger()) {
      d.values.emplace_back(static_cast<int32_t>(t.integer));
    } else if (t.kind == ValueKind::kBinary) {
      d.values.emplace_back(t.BinaryHex());
    } else {
      d.values.emplace_back(std::string(t.text));
    }
  }
}

}  // namespace

std::vector<Entity*> Loader::DrawOrderOf(std::span<const Tag> table, BlockRecord** block) {
  // The pairs (331 entity, 5 sort key) re-key the entities they name; every
  // other entity of the block keeps its own handle as key. The block is
  // drawn in ascending key order.
  std::unordered_map<const Entity*, uint64_t> keys;
  for (size_t k = 0; k < table.size(); ++k) {
    const Tag& t = table[k];
    if (t.code == 330) *block = AsObject<BlockRecord>(doc_.FindByHandle(HandleValue(&t)));
    if (t.code == 331 && k + 1 < table.size() && table[k + 1].code == 5) {
      if (auto* e = AsEntity(doc_.FindByHandle(HandleValue(&t)))) {
        keys[e] = HandleValue(&table[k + 1]);
      }
    }
  }
  if (*block == nullptr) return {};
  std::vector<std::pair<uint64_t, Entity*>> keyed;
  for (Entity* e : (*block)->entities()) {
    auto it = keys.find(e);
    keyed.emplace_back(it != keys.end() ? it->second : e->handle(), e);
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Entity*> order;
  for (const auto& [key, e] : keyed) order.push_back(e);
  return order;
}

void Loader::LoadLayout(const Record& record,
                        const std::unordered_map<uint64_t, BlockRecord*>& block_by_handle) {
  // The layout's own part names it; the plot settings before it start
  // with a page setup name, also group 1 and usually empty.
  auto own = record.Subclass("AcDbLayout");
  std::string_view name = record.StringOr(1);
  std::optional<int64_t> tab_order = record.IntegerOf(71);
  if (own) {
    for (const Tag& t : *own) {
      if (t.code == 1) name = t.text;
      if (t.code == 71 && t.IsInteger()) tab_order = t.integer;
    }
  }
  if (!own) {
    // Name, tab and block record are all in that part: nothing tells which
    // layout this was.
    Repair("layout " + HexOf(HandleOf(record)) + " without its AcDbLayout part: dropped");
    source_.dropped.insert(&record);
    return;
  }
  auto it = block_by_handle.find(LayoutBlockHandle(record));
  BlockRecord* block = it == block_by_handle.end() ? nullptr : it->second;
  if (block == nullptr) {
    // A layout whose block record was lost takes the space it can only
    // mean: model space for "Model", else the paper space while no layout
    // of the file has it.
    BlockRecord* space = FoldName(name) == "model" ? doc_.model_space() : doc_.paper_space();
    if (space != nullptr && !layout_blocks_used_.count(space)) {
      Repair("layout \"" + std::string(name) + "\" names no block record: tied to " + space->Name());
      block = space;
    }
  }
  if (block == nullptr) {
    Repair("layout \"" + std::string(name) + "\" names no block record: dropped");
    source_.dropped.insert(&record);
    return;
  }
  Layout* layout = block->data().layout;
  if (layout != nullptr && source_.records.count(layout) == 0) {
    BindExisting(record, layout);
  } else {
    auto made = std::make_shared<Layout>();
    layout = made.get();
    Bind(record, made);
    doc_.AddRecord(doc_.layouts(), layout);
  }
  auto& d = layout->mutable_data();
  d.name = std::string(name);
  d.block = block;
  d.tab_order = static_cast<int32_t>(tab_order.value_or(d.tab_order));
  block->mutable_data().layout = layout;
  layout_blocks_used_[block] = true;
}

void Loader::LoadMaterial(const Record& record) {
  std::string name(record.StringOr(1));
  MaterialRecord* found = doc_.materials().Find(name);
  if (found != nullptr && source_.records.count(found) == 0) {
    BindExisting(record, found);
  } else {
    auto m = std::make_shared<MaterialRecord>();
    m->mutable_data().name = name;
    MaterialRecord* raw = m.get();
    Bind(record, m);
    doc_.AddRecord(doc_.materials(), raw);
  }
}

void Loader::LinkDictionary(const Record& record, Dictionary* dict) {
  auto& entries = dict->mutable_data().entries;
  std::string key;
  for (const Tag& t : record.Body()) {
    if (t.code == 3) {
      key = std::string(t.text);
    } else if ((t.code == 350 || t.code == 360) && !key.empty()) {
      uint64_t h = HandleValue(&t);
      DbObject* target = doc_.FindByHandle(h);
      if (target != nullptr && target->IsEntity()) {
        // Dictionaries hold objects; an entity named here is damage.
        Repair("dictionary " + std::string(record.Handle()) + " entry \"" + key + "\" points to entity " +
               std::string(t.text) + ", not an object: removed");
      } else if (target != nullptr) {
        entries.emplace_back(key, target);
        if (t.code == 360 || target->owner() == nullptr) target->set_owner(dict);
      } else if (handles_.positions.count(h) == 0) {
        // Neither a live object nor a record the host keeps raw.
        Repair("dictionary " + std::string(record.Handle()) + " entry \"" + key +
               "\" points to missing object " + std::string(t.text) + ": removed");
      }
      key.clear();
    }
  }
  for (auto& [name, target] : entries) {
    if (auto* g = AsObject<Group>(target)) g->mutable_data().name = name;
  }
}

void Loader::LinkGroup(const Record& record, Group* g) {
  auto& d = g->mutable_data();
  d.description = std::string(record.StringOr(300));
  d.anonymous = IntOr(record, 70, 0) != 0;
  d.selectable = IntOr(record, 71, 1) != 0;
  for (const Tag* t : record.FindAll(340)) {
    if (auto* e = AsEntity(doc_.FindByHandle(HandleValue(t)))) d.members.push_back(e);
  }
}

void Loader::LoadObjects() {
  Section* section = source_.model.FindSection("OBJECTS");
  if (section == nullptr) return;
  bool root_seen = false;
  std::unordered_map<uint64_t, BlockRecord*> block_by_handle;
  for (BlockRecord* b : doc_.blocks().items) block_by_handle[b->handle()] = b;
  for (const Record& record : section->records) {
    std::string_view type = record.type;
    if (IsDictionaryType(type)) {
      if (!root_seen) {
        root_seen = true;
        BindExisting(record, doc_.named_objects());
      } else {
        Bind(record, std::make_shared<Dictionary>());
      }
    } else if (type == "XRECORD") {
      auto x = std::make_shared<XRecord>();
      FillXRecord(record, x.get());
      Bind(record, x);
    } else if (type == "GROUP") {
      auto g = std::make_shared<Group>();
      Group* raw = g.get();
      Bind(record, g);
      doc_.groups().push_back(raw);
    } else if (type == "SORTENTSTABLE") {
      Bind(record, std::make_shared<SortentsTable>());
    } else if (type == "LAYOUT") {
      LoadLayout(record, block_by_handle);
    } else if (type == "MATERIAL") {
      LoadMaterial(record);
    }
  }
  for (const Record& record : section->records) {
    auto it = source_.bindings.find(&record);
    if (it == source_.bindings.end()) {
      continue;
    }
    DbObject* object = it->second.object;
    if (auto* dict = AsObject<Dictionary>(object)) {
      LinkDictionary(record, dict);
    } else if (auto* g = AsObject<Group>(object)) {
      LinkGroup(record, g);
    } else if (auto* s = AsObject<SortentsTable>(object)) {
      auto& d = s->mutable_data();
      if (auto sub = record.Subclass("AcDbSortentsTable")) {
        d.order = DrawOrderOf(*sub, &d.block);
      }
    }
    if (object->xdata() == nullptr) LoadXData(record, object);
  }
}

void Loader::LinkExtensionDictionaries() {
  for (auto& [record, binding] : source_.bindings) {
    size_t slot = record->binding_slot;
    if (slot < without_app_groups_.size() && without_app_groups_[slot]) continue;
    auto group = record->AppData("ACAD_XDICTIONARY");
    if (!group) continue;
    for (const Tag& t : *group) {
      if (t.code != 360) continue;
      if (auto* dict = AsObject<Dictionary>(doc_.FindByHandle(HandleValue(&t)))) {
        ObjectCore core = binding.object->DbObject::SaveBase();
        core.xdict = dict;
        binding.object->DbObject::RestoreBase(core);
        dict->set_owner(binding.object);
      }
    }
  }
}

void Loader::DropUnusedStandardLayouts() {
  // The standard "Layout1"/"Layout2" the file did not define go; the model
  // layout and one paper layout always stay.
  for (Layout* layout : std::vector<Layout*>(doc_.layouts().items)) {
    if (!source_.unwritten.count(layout)) continue;
    BlockRecord* block = layout->data().block;
    bool block_bound = source_.records.count(block) != 0;
    if (block == doc_.model_space() || block == doc_.paper_space()) continue;
    if (!block_bound) {
      doc_.RemoveRecord(doc_.layouts(), layout);
      doc_.RemoveRecord(doc_.blocks(), block);
    }
  }
}

// ---------------------------------------------------------------- entry points

namespace {

AutomationError ReadFailure(const std::string& text) {
  return AutomationError(kReadFailedNumber, text, std::string(kHostErrorSource));
}

}  // namespace

void AttachSource(Document& document, std::shared_ptr<DxfSource> source) {
  // The source lives with its document, so it goes when the document goes.
  document.dxf_source() = std::move(source);
}

std::shared_ptr<DxfSource> SourceOf(const Document& document) { return document.dxf_source(); }

std::vector<std::string> Repairs(const Document& document) {
  auto source = SourceOf(document);
  return source ? source->repairs : std::vector<std::string>{};
}

std::string SourceVersion(const Document& document) {
  auto source = SourceOf(document);
  return source ? std::string(source->model.version()) : std::string();
}

std::shared_ptr<Document> ReadDrawingBuffer(Application& app, std::string buffer,
                                            const std::string& path) {
  return ReadDrawingText(app, SourceText(std::move(buffer)), path);
}

std::shared_ptr<Document> ReadDrawingText(Application& app, SourceText text, const std::string& path) {
  std::shared_ptr<DxfSource> source;
  ModelHandles handles;
  try {
    source = std::make_shared<DxfSource>(TagModel::Load(std::move(text), path));
    handles = ValidateModel(source->model, path);
    source->repairs = source->model.repairs();
    source->repairs.insert(source->repairs.end(), handles.repairs.begin(), handles.repairs.end());
  } catch (const ReadError& e) {
    throw ReadFailure(e.what());
  } catch (const std::bad_alloc&) {
    throw ReadFailure(path + ": the file is too large to read");
  }
  auto doc = std::make_shared<Document>(&app, "Drawing.dwg", app.options().id32_only);
  doc->Initialize();
  doc->set_full_name(path);
  try {
    Loader loader(*doc, *source, handles);
    loader.Run();
    RememberSourceRecords(*source);
  } catch (const AutomationError& e) {
    doc->Close();
    throw ReadFailure(path + ": " + e.Description());
  } catch (const std::exception& e) {
    doc->Close();
    throw ReadFailure(path + ": " + e.what());
  }
  AttachSource(*doc, std::move(source));
  return doc;
}

std::shared_ptr<Document> ReadDrawingFile(Application& app, const std::string& path) {
  SourceText text;
  try {
    // In one piece of the file's size: a growing buffer would hold up to
    // three times the file while it grows.
    text = SourceText::ReadFile(path);
  } catch (const ReadError& e) {
    throw ReadFailure(e.what());
  }
  return ReadDrawingText(app, std::move(text), path);
}

void InstallDxfFileIo(Application& app) {
  app.SetFileIo(DrawingFileIo{
      [](Application& app, const std::string& path) { return ReadDrawingFile(app, path); },
      [](Document& doc, const std::string& path, const SaveFormat& format) {
        WriteDrawingFile(doc, path, format);
      }});
}

}  // namespace tovik::host::dxf
