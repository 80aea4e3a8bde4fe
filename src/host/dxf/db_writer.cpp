// The structure pass of the DXF writer: walks the model the drawing was
// read from, writing each record of a live object patched from it (erased
// ones left out) and every unmodelled record as it came; objects the
// drawing gained are written after the records of their container.
#include <cstdio>
#include <fstream>

#include "host/block.h"
#include "host/dictionary.h"
#include "host/dxf/db_internal.h"
#include "host/dxf/db_reader.h"
#include "host/dxf/db_write_version.h"
#include "host/dxf/db_writer_internal.h"
#include "host/entities.h"
#include "host/host_error.h"
#include "host/records.h"

namespace tovik::host::dxf {
namespace {

std::string Hex(uint64_t value) {
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(value));
  return buffer;
}

}  // namespace

DbWriter::DbWriter(const Document& doc, DxfSource& source, std::string* out)
    : doc_(const_cast<Document&>(doc)), source_(source), out_(out) {
  version_ = std::string(WriteVersionFor(source.model));
  if (!IsUtf8Version(version_)) encoder_ = std::make_unique<TextEncoder>(source.model.code_page());
}

std::string_view DbWriter::Keep(std::string text) { return kept_.emplace_back(std::move(text)); }

void DbWriter::Put(const Tag& tag) {
  if (tag.kind == ValueKind::kString && encoder_ == nullptr) {
    std::string_view escaped = source_.model.EscapedFormOf(tag.text);
    if (!escaped.empty()) {
      Tag copy = tag;
      copy.text = escaped;
      AppendTag(copy, nullptr, LineEnd::kLf, out_);
      return;
    }
  }
  AppendTag(tag, encoder_.get(), LineEnd::kLf, out_);
}

void DbWriter::PutHandle(int code, uint64_t handle) { Put(Tag::String(code, Keep(Hex(handle)))); }

void DbWriter::PutPoint(int code, const geometry::Vec3& p) {
  PutReal(code, p.x);
  PutReal(code + 10, p.y);
  PutReal(code + 20, p.z);
}

void DbWriter::PutRecordTags(const Record& record) {
  Put(record.head);
  for (const Tag& t : record.tags) Put(t);
}

bool DbWriter::Written(const DbObject* object) const {
  return object != nullptr && !object->erased() && !source_.unwritten.count(object);
}

uint64_t DbWriter::NextHandle() { return next_handle_++; }

uint64_t DbWriter::HandleSeed() const { return next_handle_ + reserved_; }

void DbWriter::Run() {
  // New blocks need BLOCK and ENDBLK handles, new references a SEQEND
  // handle; they come after every object's handle.
  next_handle_ = doc_.handle_seed();
  for (const BlockRecord* b : const_cast<Document&>(doc_).blocks().items) {
    reserved_ += source_.records.count(b) ? 0 : 2;
    for (const Entity* e : b->entities()) {
      if (!source_.records.count(e) && dynamic_cast<const BlockRef*>(e)) ++reserved_;
    }
  }
  for (const Tag& t : source_.model.leading()) Put(t);
  bool has_header = source_.model.FindSection("HEADER") != nullptr;
  if (!has_header && version_ == kWriteVersion) {
    PutString(0, "SECTION");
    PutString(2, "HEADER");
    PutString(9, "$ACADVER");
    PutString(1, version_);
    PutString(9, "$HANDSEED");
    PutHandle(5, HandleSeed());
    PutString(0, "ENDSEC");
  }
  for (const Section& section : source_.model.sections()) {
    kept_.clear();
    Put(section.begin.head);
    for (const Tag& t : section.begin.tags) Put(t);
    switch (section.kind) {
      case SectionKind::kHeader: EmitHeader(section); break;
      case SectionKind::kTables: EmitTables(section); break;
      case SectionKind::kBlocks: EmitBlocks(section); break;
      case SectionKind::kEntities: EmitEntities(section); break;
      case SectionKind::kObjects: EmitObjects(section); break;
      default:
        for (const Record& r : section.records) {
          PutRecordTags(r);
          for (const Record& f : r.followers) PutRecordTags(f);
        }
    }
    PutRecordTags(section.end);
  }
  PutString(0, "EOF");
}

void DbWriter::EmitHeader(const Section& section) {
  auto& vars = const_cast<Document&>(doc_).sysvar_values();
  bool seed_written = false;
  for (const HeaderVariable& v : section.variables) {
    Put(v.name_tag);
    std::string_view name = v.name;
    if (v.tags.empty()) continue;
    if (name == "$ACADVER") {
      PutString(v.tags[0].code, version_);
    } else if (name == "$HANDSEED") {
      PutHandle(v.tags[0].code, HandleSeed());
      seed_written = true;
    } else if ((name == "$INSUNITS" || name.starts_with("$USERI") || name.starts_with("$USERR")) &&
               vars.count(std::string(name.substr(1)))) {
      const Variant& value = vars[std::string(name.substr(1))];
      if (name.starts_with("$USERR") && value.IsNumber()) {
        Tag t = v.tags[0];
        if (t.real != value.RawDouble()) t = Tag::Double(t.code, value.RawDouble());
        Put(t);
      } else if (value.IsNumber()) {
        Tag t = v.tags[0];
        if (t.integer != value.RawInt()) t = Tag::Integer(t.code, value.RawInt());
        Put(t);
      } else {
        Put(v.tags[0]);
      }
    } else {
      for (const Tag& t : v.tags) Put(t);
    }
  }
  if (!seed_written) {
    PutString(9, "$HANDSEED");
    PutHandle(5, HandleSeed());
  }
}

void DbWriter::EmitTables(const Section& section) {
  for (const Table& table : section.tables) {
    PutRecordTags(table.head);
    std::string_view name = table.Name();
    for (const Record& entry : table.entries) {
      auto it = source_.bindings.find(&entry);
      if (it == source_.bindings.end()) {
        PutRecordTags(entry);
      } else if (Written(it->second.object)) {
        EmitPatched(entry, it->second);
      }
    }
    uint64_t owner = HandleOf(table.head);
    auto add_new = [&](const auto& items) {
      for (const auto* r : items) {
        if (!source_.records.count(r) && Written(r)) EmitNew(*r, owner);
      }
    };
    if (name == "LAYER") add_new(doc_.layers().items);
    if (name == "APPID") add_new(const_cast<Document&>(doc_).regapps().items);
    if (name == "BLOCK_RECORD") add_new(const_cast<Document&>(doc_).blocks().items);
    PutRecordTags(table.end);
  }
}

void DbWriter::EmitBlocks(const Section& section) {
  for (const Block& block : section.blocks) {
    auto it = source_.bindings.find(&block.begin);
    auto* record = it == source_.bindings.end() ? nullptr : static_cast<BlockRecord*>(it->second.object);
    if (record != nullptr && record->erased()) continue;
    PutRecordTags(block.begin);
    if (record != nullptr && !record->IsLayout() ) {
      EmitEntityList(block.entities, {record});
    } else if (record != nullptr && record->IsLayout() && record != doc_.model_space() &&
               record->Name() != "*Paper_Space") {
      EmitEntityList(block.entities, {record});
    } else {
      for (const Record& e : block.entities) EmitEntity(e);
    }
    PutRecordTags(block.end);
  }
  for (const BlockRecord* b : const_cast<Document&>(doc_).blocks().items) {
    if (source_.records.count(b) || !Written(b)) continue;
    PutString(0, "BLOCK");
    PutHandle(5, NextHandle());
    PutHandle(330, b->handle());
    PutString(100, "AcDbEntity");
    PutString(8, "0");
    PutString(100, "AcDbBlockBegin");
    PutString(2, b->Name());
    PutInt(70, 0);
    PutPoint(10, b->data().origin);
    PutString(3, b->Name());
    PutString(1, "");
    for (const Entity* e : b->entities()) {
      if (Written(e)) EmitNew(*e, b->handle());
    }
    PutString(0, "ENDBLK");
    PutHandle(5, NextHandle());
    PutHandle(330, b->handle());
    PutString(100, "AcDbEntity");
    PutString(8, "0");
    PutString(100, "AcDbBlockEnd");
  }
}

void DbWriter::EmitEntities(const Section& section) {
  std::vector<BlockRecord*> spaces{doc_.model_space()};
  if (BlockRecord* paper = const_cast<Document&>(doc_).blocks().Find("*Paper_Space")) spaces.push_back(paper);
  EmitEntityList(section.records, spaces);
}

void DbWriter::EmitEntityList(const std::vector<Record>& records,
                              const std::vector<BlockRecord*>& blocks) {
  for (const Record& r : records) EmitEntity(r);
  for (BlockRecord* block : blocks) {
    for (const Entity* e : block->entities()) {
      if (!source_.records.count(e) && Written(e)) EmitNew(*e, block->handle());
    }
  }
}

void DbWriter::EmitEntity(const Record& record) {
  auto it = source_.bindings.find(&record);
  if (it == source_.bindings.end()) {
    PutRecordTags(record);
    for (const Record& f : record.followers) PutRecordTags(f);
    return;
  }
  if (!Written(it->second.object)) return;
  EmitPatched(record, it->second);
  for (const Record& f : record.followers) {
    auto fit = source_.bindings.find(&f);
    if (fit == source_.bindings.end()) {
      PutRecordTags(f);
    } else if (Written(fit->second.object)) {
      EmitPatched(f, fit->second);
    }
  }
}

void DbWriter::EmitObjects(const Section& section) {
  for (const Record& r : section.records) {
    auto it = source_.bindings.find(&r);
    if (it == source_.bindings.end()) {
      PutRecordTags(r);
    } else if (Written(it->second.object)) {
      EmitPatched(r, it->second);
    }
  }
}

// ---------------------------------------------------------------- entry points

std::string WriteDrawing(const Document& document) {
  std::shared_ptr<DxfSource> source = SourceOf(document);
  if (source == nullptr) {
    throw AutomationError(kReadFailedNumber,
                          "only drawings read from a DXF file can be saved as DXF",
                          std::string(kHostErrorSource));
  }
  std::string out;
  // About the size of the file read: the text does not have to move as it
  // grows (pages reserved but never written cost nothing).
  out.reserve(source->model.source_size() + source->model.source_size() / 8 + 4096);
  DbWriter writer(document, *source, &out);
  writer.Run();
  return out;
}

void WriteDrawingFile(const Document& document, const std::string& path) {
  std::string text = WriteDrawing(document);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) file.write(text.data(), static_cast<std::streamsize>(text.size()));
  if (!file) {
    throw AutomationError(kReadFailedNumber, path + ": cannot write the file",
                          std::string(kHostErrorSource));
  }
}

}  // namespace tovik::host::dxf
