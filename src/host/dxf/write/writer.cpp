// The structure pass of the DXF writer: the sections in their standard
// order, each walking the model the drawing was read from (a new drawing
// has an empty one). A record of a live object is written patched from it
// (erased ones left out), every unmodelled record as it came, and whatever
// the model lacks is generated: sections, tables, standard dictionaries,
// and the records of objects the drawing gained, after their container's.
// The header is written last, once every handle is given out.
#include <algorithm>
#include <cstdio>

#include "dxf/beside.h"
#include "host/core/host_error.h"
#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/write/version.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

// The sections every written file has, in file order.
constexpr SectionKind kStandardSections[] = {SectionKind::kHeader, SectionKind::kClasses,
                                             SectionKind::kTables, SectionKind::kBlocks,
                                             SectionKind::kEntities, SectionKind::kObjects};
constexpr std::string_view kSectionNames[] = {"HEADER", "CLASSES", "TABLES",
                                              "BLOCKS", "ENTITIES", "OBJECTS"};

// The symbol tables in file order.
constexpr std::string_view kTableNames[] = {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW",
                                            "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"};

// The dictionaries of the named-object dictionary the writer supplies when
// the file has none: what AutoCAD-class readers expect of every drawing.
constexpr std::string_view kStandardKeys[] = {"ACAD_GROUP", "ACAD_LAYOUT", "ACAD_MATERIAL",
                                              "ACAD_MLINESTYLE", "ACAD_PLOTSETTINGS",
                                              "ACAD_PLOTSTYLENAME"};

}  // namespace

DbWriter::DbWriter(const Document& doc, DxfSource& source, std::string_view version)
    : doc_(const_cast<Document&>(doc)), source_(source) {
  // Every drawing is written in the host's version (older files are
  // upgraded on the way), unless it holds data that version has no form for.
  std::string_view original = source.model.version();
  version_ = std::string(WriteVersionFor(source.model));
  modern_ = version_ == kWriteVersion;
  if (!version.empty() && version != version_) {
    if (version > version_) {
      // Asked for a newer version than the drawing's forms allow.
      notes_.push_back("written as " + version_ + ", not " + std::string(version) +
                       ": the drawing holds forms " + std::string(version) + " has no room for");
    } else {
      version_ = std::string(version);
    }
  }
  // Before R2004 an object has only an index colour: true colours, colour
  // names and transparency (420-449) are left out.
  drop_true_colours_ = version_ < "AC1018";
  if (version_ < "AC1027") {
    for (const Section& section : source.model.sections()) {
      if (section.kind == SectionKind::kAcdsData && !section.records.empty()) {
        notes_.push_back("solids, regions and bodies keep their shape data in the ACDSDATA section (R2013 "
                         "on): written as it is, but readers of " + version_ + " look for it in the entities");
      }
    }
  }
  // Records are patched in place only when the file has the block records
  // they hang from (model space's at least); otherwise everything is
  // written from the live objects.
  bool has_block_records = false;
  if (const Section* tables = source.model.FindSection("TABLES")) {
    for (const Table& t : tables->tables) {
      if (t.Name() != "BLOCK_RECORD") continue;
      for (const Record& entry : t.entries) has_block_records |= FoldName(entry.StringOr(2)) == "*model_space";
    }
  }
  bool read = !source.model.sections().empty();
  upgrade_ = read && (original.empty() || original < "AC1015");
  all_new_ = read && (original < "AC1012" || !has_block_records);
  if (!IsUtf8Version(version_)) encoder_ = std::make_shared<TextEncoder>(source.model.code_page());
}

std::vector<std::string> DbWriter::TakeNotes() {
  if (dropped_colours_ > 0) {
    notes_.push_back(std::to_string(dropped_colours_) + " true colours, colour names or transparencies left out: " +
                     version_ + " holds index colours only (each object keeps its nearest index colour)");
    dropped_colours_ = 0;
  }
  return std::move(notes_);
}

bool DbWriter::Written(const DbObject* object) const {
  // Written all anew, a drawing gets every standard object it needs (a
  // file without model space's block record still has model space).
  return object != nullptr && !object->erased() && (upgrade_ || all_new_ || !source_.unwritten.count(object));
}

bool DbWriter::IsNew(const DbObject* object) const { return all_new_ || !source_.records.count(object); }

uint64_t DbWriter::NextHandle() { return next_handle_++; }

double DbWriter::NumberOfSysVar(std::string_view name) const {
  Variant v = doc_.GetSysVar(name);
  if (!v.IsNumber()) return 0;
  return v.Type() == VarType::kDouble || v.Type() == VarType::kSingle ? v.RawDouble()
                                                                      : static_cast<double>(v.RawInt());
}

uint64_t DbWriter::StandardHandle(std::string_view key) const {
  for (const StandardObject& s : standard_) {
    if (s.key == key) return s.handle;
  }
  return 0;
}

const std::vector<const Group*>* DbWriter::GroupsOf(const Entity* entity) const {
  auto it = groups_of_.find(entity);
  return it == groups_of_.end() ? nullptr : &it->second;
}

// ---------------------------------------------------------------- the plan

void DbWriter::Plan() {
  // The classes the objects written anew need and the groups of each
  // entity are found by a helper while the handles are gathered here: the
  // two read the drawing only.
  std::unordered_set<std::string> new_classes;
  std::unordered_map<const Entity*, std::vector<const Group*>> groups_of;
  RunBeside([&] { FindNewClassesAndGroups(&new_classes, &groups_of); }, [&] { PlanHandles(); });
  needed_classes_.insert(new_classes.begin(), new_classes.end());
  groups_of_ = std::move(groups_of);
}

void DbWriter::FindNewClassesAndGroups(std::unordered_set<std::string>* new_classes,
                                       std::unordered_map<const Entity*, std::vector<const Group*>>* groups_of) const {
  for (size_t slot = 0; slot < doc_.object_count(); ++slot) {
    DbObject* o = doc_.FindById(kObjectIdBase32 + kObjectIdStride * static_cast<int64_t>(slot));
    if (!Written(o) || !IsNew(o)) continue;
    if (AsObject<Layout>(o)) new_classes->insert("LAYOUT");
    if (AsObject<MaterialRecord>(o)) new_classes->insert("MATERIAL");
    if (AsObject<SortentsTable>(o)) new_classes->insert("SORTENTSTABLE");
    if (As<Wipeout>(o)) new_classes->insert("WIPEOUT");
  }
  for (const Group* g : doc_.groups()) {
    if (!Written(g)) continue;
    for (const Entity* e : g->LiveMembers()) (*groups_of)[e].push_back(g);
  }
}

void DbWriter::PlanHandles() {
  next_handle_ = doc_.handle_seed();
  // About one entry per record each: make room once.
  bound_by_handle_->reserve(source_.bindings.size());
  emitted_.reserve(source_.bindings.size());
  for (const auto& [record, binding] : source_.bindings) {
    if (uint64_t h = HandleOf(*record)) (*bound_by_handle_)[h] = binding.object;
  }
  auto note_raw = [&](const Record& r, auto& self) -> void {
    // A bound record's handle is among the bound ones (read above).
    if (source_.bindings.count(&r) == 0) {
      uint64_t h = HandleOf(r);
      if (h != 0 && !bound_by_handle_->count(h) && !source_.dropped.count(&r)) (*raw_handles_)[h] = true;
    }
    for (const Record& f : r.followers) self(f, self);
  };
  for (const Section& s : source_.model.sections()) {
    for (const Table& t : s.tables) {
      note_raw(t.head, note_raw);
      for (const Record& e : t.entries) note_raw(e, note_raw);
    }
    for (const Block& b : s.blocks) {
      for (const Record& e : b.entities) note_raw(e, note_raw);
    }
    for (const Record& r : s.records) note_raw(r, note_raw);
  }
  const Section* tables = source_.model.FindSection("TABLES");
  for (std::string_view name : kTableNames) {
    uint64_t handle = 0;
    if (tables != nullptr) {
      for (const Table& t : tables->tables) {
        if (t.Name() == name) handle = HandleOf(t.head);
      }
    }
    table_handles_.emplace(std::string(name), handle != 0 ? handle : NextHandle());
  }
  // The standard dictionaries: the model's when its named-object dictionary
  // names them, generated otherwise.
  std::vector<std::pair<std::string, uint64_t>> named;
  if (const Record* root = source_.records.count(doc_.named_objects())
                               ? source_.records.at(doc_.named_objects())
                               : nullptr) {
    std::string key;
    for (const Tag& t : root->Body()) {
      if (t.code == 3) key = std::string(t.text);
      if ((t.code == 350 || t.code == 360) && !key.empty()) named.emplace_back(key, HandleValue(&t));
    }
  }
  for (std::string_view key : kStandardKeys) {
    StandardObject s{std::string(key), 0, true};
    for (const auto& [k, h] : named) {
      if (k == key && h != 0) s = {std::string(key), h, false};
    }
    if (s.generated) s.handle = NextHandle();
    standard_.push_back(s);
  }
  // Every layer names the plot style "Normal" of ACAD_PLOTSTYLENAME.
  for (const StandardObject& s : standard_) {
    if (s.key != "ACAD_PLOTSTYLENAME") continue;
    if (s.generated) {
      plot_style_normal_ = NextHandle();
    } else if (const Section* objects = source_.model.FindSection("OBJECTS")) {
      for (const Record& r : objects->records) {
        if (HandleOf(r) == s.handle) plot_style_normal_ = HandleValue(r.Find(340));
      }
    }
  }
  for (const StandardObject& s : standard_) {
    if (s.key == "ACAD_PLOTSTYLENAME" && s.generated) {
      needed_classes_.insert("ACDBDICTIONARYWDFLT");
      needed_classes_.insert("ACDBPLACEHOLDER");
    }
  }
}

// ---------------------------------------------------------------- run

void DbWriter::Run(const TextSink& sink) {
  Plan();
  holding_body_ = true;
  StartPiece();
  // The drawing's sections in their standard order (a file may list them
  // in another), each the file's own or generated; then the file's other
  // sections (THUMBNAILIMAGE, ACDSDATA...) as they came.
  std::vector<const Section*> others;
  const Section* standard[6] = {};
  for (const Section& section : source_.model.sections()) {
    auto it = std::find(std::begin(kStandardSections), std::end(kStandardSections), section.kind);
    size_t index = static_cast<size_t>(it - std::begin(kStandardSections));
    if (it == std::end(kStandardSections)) {
      others.push_back(&section);
    } else if (index != 0 && standard[index] == nullptr) {
      standard[index] = &section;  // HEADER (0) is written last, below
    }
  }
  for (size_t k = 1; k < 6; ++k) EmitSectionOf(kStandardSections[k], standard[k]);
  for (const Section* section : others) EmitSectionOf(section->kind, section);
  PutString(0, "EOF");

  // The header last: $HANDSEED is known only now.
  holding_body_ = false;
  std::string header;
  out_ = &header;
  for (const Tag& t : source_.model.leading()) Put(t);
  kept_.clear();
  if (const Section* header = source_.model.FindSection("HEADER")) {
    Put(header->begin.head);
    for (const Tag& t : header->begin.tags) Put(t);
    EmitHeader(*header);
    PutRecordTags(header->end);
  } else {
    PutString(0, "SECTION");
    PutString(2, "HEADER");
    EmitNewHeader();
    PutString(0, "ENDSEC");
  }
  out_ = nullptr;
  sink(header);
  while (!pieces_.empty()) {
    sink(pieces_.front());
    pieces_.pop_front();
  }
}

void DbWriter::EmitSectionOf(SectionKind kind, const Section* section) {
  kept_.clear();
  if (section != nullptr) {
    Put(section->begin.head);
    for (const Tag& t : section->begin.tags) Put(t);
  } else {
    auto it = std::find(std::begin(kStandardSections), std::end(kStandardSections), kind);
    PutString(0, "SECTION");
    PutString(2, kSectionNames[it - std::begin(kStandardSections)]);
  }
  switch (kind) {
    case SectionKind::kClasses: EmitClasses(section); break;
    case SectionKind::kTables: EmitTables(section); break;
    case SectionKind::kBlocks: EmitBlocks(section); break;
    case SectionKind::kEntities: EmitEntities(section); break;
    case SectionKind::kObjects: EmitObjects(section); break;
    default:
      for (const Record& r : section->records) {
        PutRecordTags(r);
        for (const Record& f : r.followers) PutRecordTags(f);
      }
  }
  if (section != nullptr) {
    PutRecordTags(section->end);
  } else {
    PutString(0, "ENDSEC");
  }
}

// ---------------------------------------------------------------- tables

void DbWriter::EmitTables(const Section* section) {
  for (std::string_view name : kTableNames) {
    const Table* found = nullptr;
    if (section != nullptr) {
      for (const Table& t : section->tables) {
        if (t.Name() == name) found = &t;
      }
    }
    EmitTable(name, found);
  }
  if (section == nullptr) return;
  for (const Table& t : section->tables) {
    if (std::find(std::begin(kTableNames), std::end(kTableNames), t.Name()) == std::end(kTableNames)) {
      PutRecordTags(t.head);
      for (const Record& e : t.entries) PutRecordTags(e);
      PutRecordTags(t.end);
    }
  }
}

void DbWriter::EmitTable(std::string_view name, const Table* table) {
  uint64_t owner = table_handles_.find(name)->second;
  if (all_new_ && table != nullptr) {
    // An R12 table: a new head, its unmodelled entries upgraded, then
    // every record from the live objects.
    bool raw_viewport = false;
    size_t raw = 0;
    for (const Record& entry : table->entries) {
      bool bound = source_.bindings.count(&entry) != 0;
      raw += bound ? 0 : 1;
      raw_viewport |= !bound && name == "VPORT";
    }
    EmitTableHead(name, owner, raw + RecordCount(name));
    if (name == "VPORT" && !raw_viewport) EmitActiveViewport(owner);
    for (const Record& entry : table->entries) {
      auto bound = source_.bindings.find(&entry);
      if (bound == source_.bindings.end()) {
        EmitUpgradedRaw(entry, owner, name);
      } else if ((name == "DIMSTYLE" || name == "LTYPE") && Written(bound->second.object)) {
        // The host keeps little of these: the record is kept, upgraded.
        emitted_[bound->second.object] = true;
        EmitPatched(UpgradedEntry(entry, *bound->second.object, owner, name), bound->second);
      }
    }
    EmitNewTableRecords(name, owner);
    PutString(0, "ENDTAB");
    return;
  }
  if (table == nullptr) {
    EmitTableHead(name, owner, name == "VPORT" ? 1 : RecordCount(name));
    if (name == "VPORT") EmitActiveViewport(owner);
  } else {
    PutRecordTags(table->head);
    for (const Record& entry : table->entries) {
      auto it = source_.bindings.find(&entry);
      if (it == source_.bindings.end()) {
        EmitRaw(entry);
      } else if (Written(it->second.object)) {
        EmitBound(entry, it->second);
      }
    }
  }
  EmitNewTableRecords(name, owner);
  if (name == "BLOCK_RECORD" && table != nullptr) {
    // A block whose table entry the file lost (its BLOCK came without one)
    // still needs its record: the block and its entities name it.
    for (const BlockRecord* b : doc_.blocks().items) {
      // (A record written raw, in a section the host does not read, is
      // there already.)
      if (IsNew(b) || !Written(b) || emitted_.count(b) || raw_handles_->count(b->handle())) continue;
      emitted_[b] = true;
      EmitNew(*b, owner);
    }
  }
  if (table != nullptr) {
    PutRecordTags(table->end);
  } else {
    PutString(0, "ENDTAB");
  }
}

size_t DbWriter::RecordCount(std::string_view name) const {
  if (name == "LTYPE") return doc_.linetypes().items.size();
  if (name == "LAYER") return doc_.layers().items.size();
  if (name == "STYLE") return doc_.text_styles().items.size();
  if (name == "APPID") return doc_.regapps().items.size();
  if (name == "DIMSTYLE") return doc_.dim_styles().items.size();
  if (name == "BLOCK_RECORD") return doc_.blocks().items.size();
  return 0;
}

void DbWriter::EmitNewTableRecords(std::string_view name, uint64_t owner) {
  auto add_new = [&](const auto& items) {
    for (const auto* r : items) {
      if (!IsNew(r) || !Written(r) || emitted_.count(r)) continue;
      if (const auto* b = AsObject<BlockRecord>(r); b && upgrade_ && b->entities().empty() &&
          (FoldName(b->Name()) == "$model_space" || FoldName(b->Name()) == "$paper_space")) {
        continue;  // see EmitBlocks
      }
      EmitNew(*r, owner);
    }
  };
  if (name == "LTYPE") add_new(doc_.linetypes().items);
  if (name == "LAYER") add_new(doc_.layers().items);
  if (name == "STYLE") add_new(doc_.text_styles().items);
  if (name == "APPID") add_new(doc_.regapps().items);
  if (name == "DIMSTYLE") add_new(doc_.dim_styles().items);
  if (name == "BLOCK_RECORD") add_new(doc_.blocks().items);
}

// ---------------------------------------------------------------- blocks

void DbWriter::EmitBlocks(const Section* section) {
  if (section != nullptr && !all_new_) {
    for (const Block& block : section->blocks) {
      auto it = source_.bindings.find(&block.begin);
      auto* record = it == source_.bindings.end() ? nullptr : static_cast<BlockRecord*>(it->second.object);
      if (record != nullptr && record->erased()) continue;
      EmitBlockBegin(block.begin, record);
      if (record != nullptr && !record->IsLayout()) {
        EmitEntityList(block.entities, {record});
      } else if (record != nullptr && record->IsLayout() && record != doc_.model_space() &&
                 record->Name() != "*Paper_Space") {
        EmitEntityList(block.entities, {record});
      } else {
        for (const Record& e : block.entities) EmitEntity(e);
      }
      EmitRaw(block.end);
    }
  }
  for (const BlockRecord* b : doc_.blocks().items) {
    // R12 writers name the spaces "$MODEL_SPACE" and "$PAPER_SPACE": empty
    // blocks whose place *Model_Space and *Paper_Space take.
    bool r12_space = upgrade_ && b->entities().empty() &&
                     (FoldName(b->Name()) == "$model_space" || FoldName(b->Name()) == "$paper_space");
    if (IsNew(b) && Written(b) && !r12_space) EmitNewBlock(*b);
  }
}

void DbWriter::EmitNewBlock(const BlockRecord& b) {
  bool paper = b.IsLayout() && &b != doc_.model_space();
  bool has_attdefs = false;
  for (const Entity* e : b.entities()) has_attdefs |= Written(e) && As<AttributeDef>(e);
  PutString(0, "BLOCK");
  PutHandle(5, NextHandle());
  PutHandle(330, b.handle());
  PutString(100, "AcDbEntity");
  if (paper) PutInt(67, 1);
  PutString(8, "0");
  PutString(100, "AcDbBlockBegin");
  PutString(2, b.Name());
  PutInt(70, (b.IsAnonymous() ? 1 : 0) | (has_attdefs ? 2 : 0) | (b.data().is_xref ? 4 : 0));
  PutPoint(10, b.data().origin);
  PutString(3, b.Name());
  PutString(1, b.data().xref_path);
  if (!b.data().comments.empty()) PutString(4, b.data().comments);
  // Model space and the current paper space keep their entities in ENTITIES.
  if (&b != doc_.model_space() && b.Name() != "*Paper_Space") {
    for (const Entity* e : b.entities()) {
      if (Written(e)) EmitNew(*e, b.handle());
    }
  }
  PutString(0, "ENDBLK");
  PutHandle(5, NextHandle());
  PutHandle(330, b.handle());
  PutString(100, "AcDbEntity");
  if (paper) PutInt(67, 1);
  PutString(8, "0");
  PutString(100, "AcDbBlockEnd");
}

// ---------------------------------------------------------------- entities

void DbWriter::EmitEntities(const Section* section) {
  std::vector<BlockRecord*> spaces{doc_.model_space()};
  if (BlockRecord* paper = doc_.blocks().Find("*Paper_Space")) spaces.push_back(paper);
  static const std::vector<Record> kNone;
  if (all_new_) {
    // An R12 drawing: the records no live object stands for (a reference
    // to a block the file lacks) are kept, upgraded.
    if (section != nullptr) {
      for (const Record& r : section->records) {
        if (source_.bindings.count(&r)) continue;
        EmitUpgradedRaw(r, doc_.model_space()->handle(), {});
        for (const Record& f : r.followers) EmitUpgradedRaw(f, doc_.model_space()->handle(), {});
      }
    }
    EmitEntityList(kNone, spaces);
    return;
  }
  EmitEntityList(section != nullptr ? section->records : kNone, spaces);
}

void DbWriter::EmitEntityList(const std::vector<Record>& records,
                              const std::vector<BlockRecord*>& blocks) {
  // A long list is written in two halves at once: a helper, a copy of this
  // writer, writes the second half into pieces of its own while this one
  // writes the first; its pieces then follow this writer's. Writing a record
  // read from the file reads the drawing and the plan only, so the text is
  // the same as written in one pass; a helper that gave out handles (a
  // record without one) would number them differently: its part is then
  // written again here. Text written through a code page stays in one pass
  // (the encoder is shared).
  size_t split = records.size();
  if (records.size() >= split_records_ && records.size() >= 2 && encoder_ == nullptr) {
    split = records.size() / 2;
  }
  if (split == records.size()) {
    EmitRecords(records, 0, records.size());
  } else {
    uint64_t handle_at_fork = next_handle_;
    size_t notes_at_fork = notes_.size();
    size_t dropped_at_fork = dropped_colours_;
    // The helper starts with no objects marked written (it only adds marks,
    // taken back below) and no text, so this writer's marks and the pieces
    // written so far are not copied (moving the pieces keeps them, and
    // out_, where they are).
    ObjectMap<bool> marks = std::move(emitted_);
    std::deque<std::string> pieces = std::move(pieces_);
    emitted_ = ObjectMap<bool>();
    pieces_.clear();
    DbWriter helper(*this);
    emitted_ = std::move(marks);
    pieces_ = std::move(pieces);
    helper.out_ = nullptr;
    helper.StartPiece();
    RunBeside([&] { helper.EmitRecords(records, split, records.size()); },
              [&] { EmitRecords(records, 0, split); });
    if (!TakeHelperPart(helper, handle_at_fork, notes_at_fork, dropped_at_fork)) {
      EmitRecords(records, split, records.size());
    }
  }
  for (BlockRecord* block : blocks) {
    if (!Written(block)) continue;
    for (const Entity* e : block->entities()) {
      if (IsNew(e) && Written(e)) EmitNew(*e, block->handle());
    }
  }
}

void DbWriter::EmitRecords(const std::vector<Record>& records, size_t from, size_t to) {
  for (size_t i = from; i < to; ++i) EmitEntity(records[i]);
}

bool DbWriter::TakeHelperPart(DbWriter& helper, uint64_t handle_at_fork, size_t notes_at_fork,
                              size_t dropped_at_fork) {
  if (helper.next_handle_ != handle_at_fork) return false;
  for (std::string& piece : helper.pieces_) {
    if (!piece.empty()) pieces_.push_back(std::move(piece));
  }
  StartPiece();
  notes_.insert(notes_.end(), helper.notes_.begin() + static_cast<std::ptrdiff_t>(notes_at_fork),
                helper.notes_.end());
  dropped_colours_ += helper.dropped_colours_ - dropped_at_fork;
  needed_classes_.insert(helper.needed_classes_.begin(), helper.needed_classes_.end());
  walked_.insert(helper.walked_.begin(), helper.walked_.end());
  emitted_.Merge(helper.emitted_);
  return true;
}

void DbWriter::EmitEntity(const Record& record) {
  // An entity without its subclass markers (a damaged or careless R13+
  // file) is written with them: other readers take its data by part.
  auto emit = [&](const Record& r) {
    auto it = source_.bindings.find(&r);
    if (it != source_.bindings.end() && !Written(it->second.object)) return false;
    std::optional<Record> marked = Marked(r);
    const Record& out = marked ? *marked : r;
    if (it == source_.bindings.end()) {
      EmitRaw(out);
    } else {
      EmitBound(out, it->second);
    }
    return true;
  };
  if (!emit(record)) return;
  for (const Record& f : record.followers) emit(f);
}

void DbWriter::EmitBound(const Record& record, const Binding& binding) {
  emitted_[binding.object] = true;
  if (std::optional<Record> relinked = Relinked(record, binding.object)) {
    EmitPatched(*relinked, binding);
  } else {
    EmitPatched(record, binding);
  }
}

void DbWriter::EmitBlockBegin(const Record& begin, const BlockRecord* record) {
  std::optional<Record> relinked = Relinked(begin, nullptr);
  const Record& base = relinked ? *relinked : begin;
  // A block renamed (or named by a repair) is written under its name: the
  // 2 and 3 groups both carry it.
  if (record == nullptr || FoldName(record->Name()) == FoldName(Trim(begin.StringOr(2)))) {
    PutRecordTags(base);
    return;
  }
  std::vector<Tag> tags(base.tags.begin(), base.tags.end());
  bool named = false;
  for (Tag& t : tags) {
    if (t.code == 2 || t.code == 3) {
      t = Tag::String(t.code, record->Name());
      named |= t.code == 2;
    }
  }
  // The name group (2) comes before the second name (3) and the flags.
  if (!named) {
    auto at = std::find_if(tags.begin(), tags.end(), [](const Tag& t) { return t.code == 3 || t.code == 70; });
    tags.insert(at, Tag::String(2, record->Name()));
  }
  Record renamed = base;
  renamed.tags = KeepTags(std::move(tags));
  PutRecordTags(renamed);
}

void DbWriter::EmitRaw(const Record& record) {
  if (std::optional<Record> relinked = Relinked(record, nullptr)) {
    PutRecordTags(*relinked);
  } else {
    PutRecordTags(record);
  }
}

// ---------------------------------------------------------------- objects

void DbWriter::EmitObjects(const Section* section) {
  Dictionary* root = doc_.named_objects();
  // The named-object dictionary comes first: readers take the section's
  // first object as the root (a damaged or reordered file may have put
  // others before it).
  const Record* root_record = nullptr;
  if (IsNew(root)) {
    emitted_[root] = true;
    EmitNew(*root, 0);
  } else if (const Record* const* found = source_.records.Find(root);
             found != nullptr && section != nullptr && !section->records.empty() &&
             *found >= &section->records.front() && *found <= &section->records.back()) {
    root_record = *found;
    auto bound = source_.bindings.find(root_record);
    if (Written(root) && bound != source_.bindings.end()) EmitBound(*root_record, bound->second);
  }
  if (section != nullptr) {
    for (const Record& r : section->records) {
      if (&r == root_record) continue;
      auto it = source_.bindings.find(&r);
      if (it == source_.bindings.end()) {
        if (source_.dropped.count(&r)) continue;
        // A record the host keeps as it came, with its followers (an
        // entity misplaced among the objects keeps its VERTEXes and SEQEND).
        EmitRaw(r);
        for (const Record& f : r.followers) EmitRaw(f);
      } else if (!all_new_ && Written(it->second.object)) {
        EmitBound(r, it->second);
      }
      // Written anew (all_new_), live objects come from the tree below.
    }
  }
  for (const StandardObject& s : standard_) {
    if (s.generated) EmitStandardObject(s);
  }
  EmitObjectTree(*root);
  // Extension dictionaries and what they hold, for every object written.
  for (size_t slot = 0; slot < doc_.object_count(); ++slot) {
    DbObject* o = doc_.FindById(kObjectIdBase32 + kObjectIdStride * static_cast<int64_t>(slot));
    if (!Written(o) || !Written(o->xdict())) continue;
    Dictionary* xdict = o->xdict();
    if (!emitted_.count(xdict)) {
      emitted_[xdict] = true;
      EmitNew(*xdict, o->handle());
    }
    EmitObjectTree(*xdict);
  }
}

void DbWriter::EmitObjectTree(const DbObject& container) {
  const auto* dict = AsObject<Dictionary>(&container);
  // Each dictionary is walked once (a damaged file may nest one in itself).
  if (dict == nullptr || !walked_.insert(dict).second) return;
  for (const DictEntry& e : EntriesOf(*dict)) {
    if (e.object == nullptr || !Written(e.object)) continue;
    // An entry naming an entity or a table record (a damaged file may) does
    // not move it here: those are written in their own sections.
    if (AsEntity(e.object) || IsTableRecord(e.object->Class())) continue;
    if (!emitted_.count(e.object)) {
      emitted_[e.object] = true;
      uint64_t owner = e.object->owner() != nullptr && Written(e.object->owner())
                           ? e.object->owner()->handle()
                           : dict->handle();
      if (AsObject<Group>(e.object) || AsObject<Layout>(e.object) ||
          AsObject<MaterialRecord>(e.object)) {
        owner = dict->handle();
      }
      if (IsNew(e.object)) EmitNew(*e.object, owner);
    }
    EmitObjectTree(*e.object);
  }
}

}  // namespace tovik::host::dxf
