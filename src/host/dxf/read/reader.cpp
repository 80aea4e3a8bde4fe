// The structure pass of the DXF loader: header, tables, blocks, entities,
// objects, extended data and extension dictionaries, mapped onto a fresh
// document. Entity kinds are mapped in read/entities.cpp; validation
// of the file's structure is in read/validate.cpp.
#include "host/dxf/dxf_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <unordered_set>

#include "frame/variant.h"
#include "host/core/application.h"
#include "host/core/host_error.h"
#include "host/dxf/binding.h"
#include "host/dxf/read/loader.h"
#include "host/dxf/read/validate.h"
#include "host/surface/args.h"
#include "host/tables/dictionary.h"

namespace tovik::host::dxf {


// ---------------------------------------------------------------- binding

void Loader::Bind(const Record& record, std::shared_ptr<DbObject> object) {
  DbObject* raw = object.get();
  doc_.Register(std::move(object), HandleOf(record));
  source_.bindings[&record] = Binding{raw, nullptr};
  source_.records[raw] = &record;
}

void Loader::BindExisting(const Record& record, DbObject* object) {
  uint64_t handle = HandleOf(record);
  if (handle != 0) doc_.ReassignHandle(object, handle);
  source_.bindings[&record] = Binding{object, nullptr};
  source_.records[object] = &record;
  source_.unwritten.erase(object);
}

// ---------------------------------------------------------------- lookups

LayerRecord* Loader::LayerNamed(std::string_view name) {
  if (name.empty()) name = "0";
  if (auto* found = layers_.Find(name)) return found;
  auto layer = std::make_shared<LayerRecord>();
  layer->mutable_data().name = std::string(name);
  layer->mutable_data().linetype = doc_.continuous_linetype();
  LayerRecord* raw = layer.get();
  doc_.Register(std::move(layer), 0);
  doc_.AddRecord(doc_.layers(), raw);
  layers_.Set(FoldName(name), raw);
  Repair("layer \"" + std::string(name) + "\" used but not in the LAYER table: added");
  return raw;
}

LinetypeRecord* Loader::LinetypeNamed(std::string_view name) {
  if (name.empty()) return doc_.bylayer_linetype();
  if (auto* found = linetypes_.Find(name)) return found;
  auto lt = std::make_shared<LinetypeRecord>();
  lt->mutable_data().name = std::string(name);
  LinetypeRecord* raw = lt.get();
  doc_.Register(std::move(lt), 0);
  doc_.AddRecord(doc_.linetypes(), raw);
  linetypes_.Set(FoldName(name), raw);
  Repair("linetype \"" + std::string(name) + "\" used but not in the LTYPE table: added");
  return raw;
}

TextStyleRecord* Loader::StyleNamed(std::string_view name) {
  if (name.empty()) name = "Standard";
  if (auto* found = styles_.Find(name)) return found;
  auto style = std::make_shared<TextStyleRecord>();
  style->mutable_data().name = std::string(name);
  TextStyleRecord* raw = style.get();
  doc_.Register(std::move(style), 0);
  doc_.AddRecord(doc_.text_styles(), raw);
  styles_.Set(FoldName(name), raw);
  Repair("text style \"" + std::string(name) + "\" used but not in the STYLE table: added");
  return raw;
}

BlockRecord* Loader::BlockNamed(std::string_view name) const {
  return blocks_.Find(name);
}

DimStyleRecord* Loader::DimStyleNamed(std::string_view name) const {
  return dim_styles_.Find(name);
}

// ---------------------------------------------------------------- run

void Loader::Run() {
  // One binding (and one handle) for about every record: make room once.
  size_t count = 0;
  for (const Section& section : source_.model.sections()) {
    count += section.records.size();
    for (const Table& table : section.tables) count += table.entries.size();
    for (const Block& block : section.blocks) count += block.entities.size() + 1;
  }
  source_.bindings.reserve(count);
  source_.records.reserve(count);
  doc_.ReserveObjects(count);
  size_t entities = 0;
  for (const Section& section : source_.model.sections()) {
    for (const Record& r : section.records) entities += 1 + r.followers.size();
    for (const Block& block : section.blocks) entities += block.entities.size();
  }
  // About what an entity and its control block take, on average.
  constexpr size_t kBytesPerEntity = 400;
  if (entities >= kPooledEntities) pool_ = ObjectPool::Create(entities * kBytesPerEntity);
  // A load is not an undoable change: nothing is recorded until it ends.
  doc_.journal().set_paused(true);
  MoveStandardHandles();
  LoadHeader();
  LoadTables();
  LoadBlocks();
  LoadEntities();
  if (pool_) {
    pool_->Seal();
    pool_.reset();
  }
  LoadObjects();
  LinkExtensionDictionaries();
  LinkDynamicBlocks();
  LoadDynamicValues();
  DropUnusedStandardLayouts();
  if (const HeaderVariable* seed = source_.model.FindVariable("$HANDSEED")) {
    if (!seed->tags.empty()) {
      uint64_t value = HandleValue(&seed->tags[0]);
      if (value == 0 && !seed->tags[0].text.empty()) {
        errno = 0;
        value = std::strtoull(std::string(seed->tags[0].text).c_str(), nullptr, 16);
        if (errno == ERANGE) value = UINT64_MAX;  // reported below
      }
      // A seed so large that handles counting up from it would wrap round
      // is no seed: the host's own (above every handle in the file) stays.
      constexpr uint64_t kLargestSeed = uint64_t{1} << 62;
      if (value > kLargestSeed) {
        Repair("$HANDSEED " + std::string(seed->tags[0].text.substr(0, 24)) +
               " is out of range: handles continue from the file's largest");
      } else if (value > doc_.handle_seed()) {
        doc_.set_handle_seed(value);
      }
    }
  }
  doc_.journal() = Journal();
}

void Loader::MoveStandardHandles() {
  // The standard contents took the first handles; the file's objects need
  // them. Park every standard object above the file's largest handle; the
  // ones the file names take its handles when bound.
  uint64_t top = handles_.max;
  std::vector<DbObject*> standard;
  for (uint64_t h = 1; h < doc_.handle_seed(); ++h) {
    if (DbObject* o = doc_.FindByHandle(h)) standard.push_back(o);
  }
  uint64_t next = std::max(top, doc_.handle_seed()) + 1;
  for (DbObject* o : standard) {
    doc_.ReassignHandle(o, next++);
    source_.unwritten.insert(o);
  }
  for (LayerRecord* r : doc_.layers().items) layers_.Set(FoldName(r->Name()), r);
  for (LinetypeRecord* r : doc_.linetypes().items) linetypes_.Set(FoldName(r->Name()), r);
  for (TextStyleRecord* r : doc_.text_styles().items) styles_.Set(FoldName(r->Name()), r);
  for (BlockRecord* r : doc_.blocks().items) blocks_.Set(FoldName(r->Name()), r);
  for (DimStyleRecord* r : doc_.dim_styles().items) dim_styles_.Set(FoldName(r->Name()), r);
  for (RegApp* r : doc_.regapps().items) regapps_.Set(FoldName(r->Name()), r);
}

void Loader::LoadHeader() {
  auto& vars = doc_.sysvar_values();
  for (const HeaderVariable& v : source_.model.FindSection("HEADER")
                                     ? source_.model.FindSection("HEADER")->variables
                                     : std::vector<HeaderVariable>{}) {
    if (v.tags.empty()) continue;
    const Tag& t = v.tags[0];
    std::string_view name = v.name;
    if (name == "$INSUNITS" || name.starts_with("$USERI")) {
      if (t.IsInteger()) vars[std::string(name.substr(1))] = Variant(static_cast<int16_t>(t.integer));
    } else if (name.starts_with("$USERR")) {
      if (t.IsDouble()) vars[std::string(name.substr(1))] = Variant(t.real);
    } else if (name == "$INSBASE") {
      // The base point a drawing is inserted or imported by.
      double xyz[3] = {0, 0, 0};
      for (const Tag& c : v.tags) {
        if (c.IsDouble() && (c.code == 10 || c.code == 20 || c.code == 30)) xyz[c.code / 10 - 1] = c.real;
      }
      vars["INSBASE"] = PointValue({xyz[0], xyz[1], xyz[2]});
    }
  }
}

// ---------------------------------------------------------------- tables

void Loader::LoadTables() {
  Section* tables = source_.model.FindSection("TABLES");
  if (tables == nullptr) return;
  // Records first, then their data: a layer names a linetype that may come
  // in a later table.
  for (const Table& table : tables->tables) {
    for (const Record& entry : table.entries) LoadTableEntry(table.Name(), entry);
  }
  for (const Table& table : tables->tables) {
    for (const Record& entry : table.entries) FillTableEntry(table.Name(), entry);
  }
}

void Loader::LoadTableEntry(std::string_view table, const Record& record) {
  std::string name(record.StringOr(2));
  std::string key = FoldName(name);
  auto bind_named = [&](auto& map, auto& host_table, auto make) {
    using R = std::remove_pointer_t<typename std::decay_t<decltype(map)>::mapped_type>;
    R* existing = map.FindKey(key);
    if (existing != nullptr && source_.records.count(existing) == 0) {
      BindExisting(record, existing);
      return;
    }
    if (existing != nullptr) {
      Repair(std::string(table) + " entry \"" + name + "\" appears twice: the second was renamed");
      // Named after its handle, or a number while that name is taken (a
      // file without handles).
      std::string base = name + "$";
      name = base + std::to_string(HandleOf(record));
      for (int n = 1; map.Contains(FoldName(name)); ++n) name = base + std::to_string(n);
      key = FoldName(name);
    }
    std::shared_ptr<R> object = make();
    object->mutable_data().name = name;
    R* raw = object.get();
    Bind(record, std::move(object));
    doc_.AddRecord(host_table, raw);
    map.Set(key, raw);
  };
  if (table == "LAYER") {
    bind_named(layers_, doc_.layers(), [] { return std::make_shared<LayerRecord>(); });
  } else if (table == "LTYPE") {
    bind_named(linetypes_, doc_.linetypes(), [] { return std::make_shared<LinetypeRecord>(); });
  } else if (table == "STYLE") {
    if (name.empty()) return;  // shape-file entries without a name stay raw
    bind_named(styles_, doc_.text_styles(), [] { return std::make_shared<TextStyleRecord>(); });
  } else if (table == "APPID") {
    bind_named(regapps_, doc_.regapps(), [] { return std::make_shared<RegApp>(); });
  } else if (table == "DIMSTYLE") {
    bind_named(dim_styles_, doc_.dim_styles(), [] { return std::make_shared<DimStyleRecord>(); });
  } else if (table == "BLOCK_RECORD") {
    bind_named(blocks_, doc_.blocks(), [] { return std::make_shared<BlockRecord>(); });
  }
}

void Loader::FillTableEntry(std::string_view table, const Record& record) {
  auto it = source_.bindings.find(&record);
  if (it == source_.bindings.end()) return;
  DbObject* object = it->second.object;
  if (table == "LAYER") {
    auto& d = static_cast<LayerRecord*>(object)->mutable_data();
    int64_t color = IntOr(record, 62, 7);
    d.on = color >= 0;
    d.color = CmColor::Aci(static_cast<int16_t>(std::clamp<int64_t>(std::abs(color), 1, 255)));
    if (const Tag* rgb = record.Find(420); rgb && rgb->IsInteger()) {
      d.color = CmColor{kColorByRgb, d.color.index, static_cast<uint32_t>(rgb->integer) & 0xFFFFFF};
    }
    int64_t flags = IntOr(record, 70, 0);
    d.frozen = (flags & 1) != 0;
    d.locked = (flags & 4) != 0;
    d.linetype = LinetypeNamed(record.StringOr(6, "Continuous"));
    d.lineweight = static_cast<int16_t>(IntOr(record, 370, -3));
    d.plottable = IntOr(record, 290, 1) != 0;
  } else if (table == "LTYPE") {
    auto& d = static_cast<LinetypeRecord*>(object)->mutable_data();
    d.description = std::string(record.StringOr(3));
    d.pattern_length = RealOr(record, 40, 0);
    for (const Tag* t : record.FindAll(49)) d.dashes.push_back(NumberOf(*t));
  } else if (table == "STYLE") {
    auto& d = static_cast<TextStyleRecord*>(object)->mutable_data();
    d.font_file = std::string(record.StringOr(3));
    d.big_font_file = std::string(record.StringOr(4));
    d.height = RealOr(record, 40, 0);
    d.width = RealOr(record, 41, 1);
    d.oblique = RealOr(record, 50, 0) * kDegToRad;
    d.generation_flags = static_cast<int16_t>(IntOr(record, 71, 0));
    d.last_height = RealOr(record, 42, 2.5);
    if (auto xd = record.Xdata("ACAD")) {
      for (const Tag& t : *xd) {
        if (t.code == 1000) {
          d.typeface = std::string(t.text);
          break;
        }
      }
    }
  } else if (table == "BLOCK_RECORD") {
    auto& d = static_cast<BlockRecord*>(object)->mutable_data();
    d.units = static_cast<int32_t>(IntOr(record, 70, 0));
    d.explodable = IntOr(record, 280, 1) != 0;
  }
  LoadXData(record, object);
}

// ---------------------------------------------------------------- blocks

void Loader::LoadBlocks() {
  if (Section* section = source_.model.FindSection("BLOCKS")) LoadBlockDefinitions(*section);
  // A block record without a name and without a definition gets one too.
  for (BlockRecord* b : doc_.blocks().items) {
    if (!b->Name().empty()) continue;
    std::string given = FreeBlockName("*U");
    Repair("a block record without a name (handle " + HexOf(b->handle()) + "): named \"" + given + "\"");
    b->mutable_data().name = given;
    blocks_.Set(FoldName(given), b);
  }
}

void Loader::LoadBlockDefinitions(Section& blocks_section) {
  Section* section = &blocks_section;
  // The record each block definition fills, in order: the block record its
  // owner handle names, else the one of its name, unless an earlier block
  // took it; a block without a name or with a name taken gets a new one.
  std::vector<BlockRecord*> records;
  std::unordered_set<const BlockRecord*> claimed;
  std::unordered_map<uint64_t, BlockRecord*> by_handle;
  for (BlockRecord* b : doc_.blocks().items) by_handle[b->handle()] = b;
  for (const Block& block : section->blocks) {
    std::string name(block.Name());
    BlockRecord* record = nullptr;
    if (auto it = by_handle.find(OwnerOf(block.begin)); it != by_handle.end() && !claimed.count(it->second) &&
                                                          (name.empty() || FoldName(it->second->Name()) == FoldName(name))) {
      record = it->second;
    } else if (!name.empty() && BlockNamed(name) != nullptr && !claimed.count(BlockNamed(name))) {
      record = BlockNamed(name);
      // A standard record (a space) whose table entry the file lost takes
      // the handle its BLOCK names, which its entities and layout name too.
      uint64_t named = OwnerOf(block.begin);
      // (Not one another record of the file carries: that one keeps it.)
      if (source_.records.count(record) == 0 && named != 0 && doc_.FindByHandle(named) == nullptr &&
          handles_.positions.find(named) == handles_.positions.end()) {
        doc_.ReassignHandle(record, named);
        by_handle[named] = record;
      }
    }
    if (record == nullptr) {
      std::string given = name;
      if (name.empty() || BlockNamed(name) != nullptr) {
        given = FreeBlockName(name.empty() || name[0] == '*' ? "*U" : name + "$");
        Repair(std::string(name.empty() ? "a block without a name" : "a second block \"" + name + "\"") +
               " at line " + std::to_string(block.begin.head.position) + ": named \"" + given + "\"");
      }
      // A file before R2000 has no BLOCK_RECORD table: the BLOCK is the record.
      auto made = std::make_shared<BlockRecord>();
      made->mutable_data().name = given;
      record = made.get();
      doc_.Register(std::move(made), 0);
      doc_.AddRecord(doc_.blocks(), record);
      blocks_.Set(FoldName(given), record);
    } else if (source_.records.count(record) == 0) {
      source_.unwritten.erase(record);
    }
    if (record->Name().empty()) {
      std::string given = FreeBlockName("*U");
      Repair("a block without a name at line " + std::to_string(block.begin.head.position) + ": named \"" +
             given + "\"");
      record->mutable_data().name = given;
      blocks_.Set(FoldName(given), record);
    }
    claimed.insert(record);
    records.push_back(record);
    if (source_.records.count(record) == 0) source_.records[record] = &block.begin;
    source_.bindings[&block.begin] = Binding{record, nullptr};
    auto& d = record->mutable_data();
    d.origin = PointOr(block.begin, 10);
    d.comments = std::string(block.begin.StringOr(4));
    int64_t flags = IntOr(block.begin, 70, 0);
    d.is_xref = (flags & 4) != 0;
    d.xref_path = std::string(block.begin.StringOr(1));
  }
  for (size_t i = 0; i < section->blocks.size(); ++i) {
    for (const Record& entity : section->blocks[i].entities) LoadEntity(entity, records[i]);
  }
}

BlockRecord* Loader::EmptyBlockNamed(std::string_view name) {
  auto made = std::make_shared<BlockRecord>();
  made->mutable_data().name = std::string(name);
  BlockRecord* raw = made.get();
  doc_.Register(std::move(made), 0);
  doc_.AddRecord(doc_.blocks(), raw);
  blocks_.Set(FoldName(name), raw);
  return raw;
}

std::string Loader::FreeBlockName(const std::string& stem) const {
  for (int k = 1;; ++k) {
    std::string name = stem + std::to_string(k);
    if (BlockNamed(name) == nullptr) return name;
  }
}

void Loader::LoadEntities() {
  Section* section = source_.model.FindSection("ENTITIES");
  if (section == nullptr) return;
  std::unordered_map<uint64_t, BlockRecord*> by_handle;
  for (BlockRecord* b : doc_.blocks().items) by_handle[b->handle()] = b;
  for (const Record& record : section->records) {
    BlockRecord* block = IntOr(record, 67, 0) == 1 ? doc_.paper_space() : doc_.model_space();
    uint64_t owner = OwnerOf(record);
    auto it = by_handle.find(owner);
    if (it != by_handle.end() && it->second->IsLayout()) {
      block = it->second;
    } else if (owner != 0 && source_.model.version() >= "AC1015") {
      Repair("entity " + std::string(record.Handle()) + " (" + std::string(record.type) +
             ") names a missing owner " + std::string(record.Owner()) + ": moved to " +
             block->Name());
    }
    LoadEntity(record, block);
  }
}

// ---------------------------------------------------------------- xdata

void Loader::LoadXData(const Record& record, DbObject* object) {
  auto blocks = record.XdataBlocks();
  if (blocks.empty()) return;
  auto xdata = std::make_shared<XData>();
  for (const TagSegment& seg : blocks) {
    RegApp* app = regapps_.Find(seg.name);
    if (app == nullptr) {
      auto made = std::make_shared<RegApp>();
      made->mutable_data().name = std::string(seg.name);
      app = made.get();
      doc_.Register(std::move(made), 0);
      doc_.AddRecord(doc_.regapps(), app);
      regapps_.Set(FoldName(seg.name), app);
      Repair("extended data of application \"" + std::string(seg.name) +
             "\" without an APPID entry: registered");
    }
    XDataRun run{app, {}};
    std::span<const Tag> tags = seg.tags;
    for (size_t i = 0; i < tags.size(); ++i) {
      const Tag& t = tags[i];
      XDataItem item{t.code, {}};
      if (t.code >= 1010 && t.code <= 1013) {
        double y = i + 1 < tags.size() && tags[i + 1].code == t.code + 10 ? NumberOf(tags[++i]) : 0;
        double z = i + 1 < tags.size() && tags[i + 1].code == t.code + 20 ? NumberOf(tags[++i]) : 0;
        item.value = Variant(SafeArray::OfDoubles({NumberOf(t), y, z}));
      } else if (t.IsDouble()) {
        item.value = Variant(t.real);
      } else if (t.code == 1070) {
        item.value = Variant(static_cast<int16_t>(t.integer));
      } else if (t.code == 1071 || t.IsInteger()) {
        // 1071, and integers under codes extended data does not define
        // (kept as the file has them).
        item.value = Variant(static_cast<int32_t>(t.integer));
      } else if (t.code == 1004) {
        std::string bytes = t.BinaryBytes();
        SafeArray array(VarType::kByte, 0, static_cast<int32_t>(bytes.size()));
        for (size_t k = 0; k < bytes.size(); ++k) {
          array.Set(static_cast<int32_t>(k), Variant::Byte(static_cast<uint8_t>(bytes[k])));
        }
        item.value = Variant(std::move(array));
      } else {
        item.value = Variant(std::string(t.text));
      }
      run.items.push_back(std::move(item));
    }
    xdata->push_back(std::move(run));
  }
  object->SetXData(xdata);
  source_.bindings[&record].loaded_xdata = object->xdata();
}

}  // namespace tovik::host::dxf
