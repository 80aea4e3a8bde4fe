// A whole DXF file as sections of records of tags, lossless.
//
// The drawing database maps records to live objects from here and writes
// back through it: every tag it does not understand stays in its record.
#ifndef TOVIK_DXF_TAG_MODEL_H_
#define TOVIK_DXF_TAG_MODEL_H_

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dxf/record.h"
#include "dxf/source_text.h"
#include "dxf/tag.h"
#include "dxf/tokenizer.h"

namespace tovik::dxf {

// A HEADER variable: "9 $NAME" and the tags that follow it (one for most
// variables, 2 or 3 for points).
struct HeaderVariable {
  Tag name_tag;            // the 9 tag
  std::string_view name;   // "$ACADVER"
  std::vector<Tag> tags;
};

// A symbol table: its TABLE record (2 name, handle, 70 count...), its
// entries and its ENDTAB record.
struct Table {
  Record head;
  std::vector<Record> entries;
  Record end;

  // Returns the table name ("LAYER"), the 2 tag of the head.
  std::string_view Name() const;
};

// A block definition: BLOCK, its entities (followers grouped), ENDBLK.
struct Block {
  Record begin;
  std::vector<Record> entities;
  Record end;

  // Returns the block name, the 2 tag of the BLOCK record.
  std::string_view Name() const;
};

// The sections a DXF file can have; kOther for any name not listed.
enum class SectionKind : std::uint8_t {
  kHeader, kClasses, kTables, kBlocks, kEntities, kObjects, kThumbnailImage, kAcdsData, kOther,
};

// One "0 SECTION ... 0 ENDSEC". Which containers are used depends on the kind:
// variables (HEADER), tables (TABLES), blocks (BLOCKS), records (all others,
// unknown sections included; entities with their followers grouped).
struct Section {
  // The SECTION record: "2 NAME" and any tags before the first record, e.g.
  // the 90/310 preview data of THUMBNAILIMAGE.
  Record begin;
  std::string_view name;
  SectionKind kind = SectionKind::kOther;
  std::vector<HeaderVariable> variables;
  std::vector<Table> tables;
  std::vector<Block> blocks;
  std::vector<Record> records;
  Record end;  // the ENDSEC record
};

// Returns the kind of a section named `name` ("ENTITIES").
SectionKind SectionKindOf(std::string_view name);

// A loaded DXF file. Owns the file bytes and an arena for decoded and new
// text; every Tag inside borrows from them, so tags must not outlive the
// model. Movable, not copyable.
class TagModel {
 public:
  // Reads `buffer` (ASCII or binary DXF) named `file_name` in messages.
  // Strings are decoded to UTF-8 (before R2007 from $DWGCODEPAGE, with \U+
  // and \M+ escapes) and held in their ASCII DXF form: a line break inside
  // text is "^J" (binary DXF has the control byte itself; it is converted).
  // A file that ends after an ENDSEC without "0 EOF" is read.
  //
  // With Faults::kRepair (the default) a damaged file is repaired as a
  // careful CAD program's recover does, and each repair listed in
  // repairs(): the tokenizer's (see Tokenize), then a section, table, block
  // or run of VERTEX/ATTRIB records left open is closed where the next one
  // begins or the file ends, entries without their TABLE record get one,
  // records outside any section, between blocks or in a section without a
  // name are dropped. Only a file with records but no section is refused.
  // With Faults::kThrow the first fault throws ReadError instead (the
  // message without the remedy).
  static TagModel Load(std::string buffer, std::string_view file_name,
                       Faults faults = Faults::kRepair);
  static TagModel Load(SourceText text, std::string_view file_name,
                       Faults faults = Faults::kRepair);
  // Reads the file at `path`; throws ReadError when it cannot be opened.
  static TagModel LoadFile(const std::string& path);

  TagModel(TagModel&&) noexcept;
  TagModel& operator=(TagModel&&) noexcept;
  ~TagModel();

  // The size in bytes of the file the model was read from.
  std::size_t source_size() const { return buffer_ ? buffer_->size() : 0; }
  // ASCII or binary: the format the file was read from.
  FileFormat format() const { return format_; }
  // The file's $ACADVER ("AC1032"); empty for files without HEADER.
  std::string_view version() const;
  // The file's $DWGCODEPAGE; empty when absent.
  std::string_view code_page() const;
  // Tags before the first SECTION, 999 comments normally.
  std::vector<Tag>& leading() { return leading_; }
  const std::vector<Tag>& leading() const { return leading_; }
  // The sections in file order.
  std::vector<Section>& sections() { return sections_; }
  const std::vector<Section>& sections() const { return sections_; }

  // Returns the first section named `name`, or nullptr.
  Section* FindSection(std::string_view name);
  const Section* FindSection(std::string_view name) const;
  // Returns the HEADER variable `name` ("$INSUNITS"), or nullptr.
  const HeaderVariable* FindVariable(std::string_view name) const;

  // What reading the file repaired, in file order ("line 12: ...").
  const std::vector<std::string>& repairs() const { return repairs_; }

  // Copies `text` into the model's arena and returns the stable copy, for
  // tags the database builds or changes.
  std::string_view Intern(std::string_view text);

  // For a value of this model that a file before R2007 wrote with \U+
  // escapes (`text` is the decoded value itself, not an equal copy): the
  // value in UTF-8 with those escapes as written; empty for any other text.
  // Writers give unchanged values back in this form, so that a reader which
  // leaves the escapes alone sees the same text in the copy.
  std::string_view EscapedFormOf(std::string_view text) const;

 private:
  class Arena;
  TagModel();

  FileFormat format_ = FileFormat::kAscii;
  std::unique_ptr<SourceText> buffer_;  // heap-held so views survive moves
  std::unique_ptr<Arena> arena_;
  std::vector<Tag> leading_;
  std::vector<Section> sections_;
  // Every tag of the file after the HEADER's variables, in file order;
  // records view slices of it. Never resized once built.
  TagArray tags_;
  std::unordered_map<const char*, std::string_view> escaped_forms_;
  std::vector<std::string> repairs_;
  // Tags of records made by repairs (never resized once made).
  std::deque<std::vector<Tag>> made_tags_;

  friend class ModelBuilder;
};

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_TAG_MODEL_H_
