// The writer's machinery shared by the structure pass (write/writer.cpp), the
// text output and entry points (write/output.cpp), the records written
// back patched (write/patch.cpp), the records written from the live
// objects (db_writer_new*.cpp), the records no live object stands for
// (write/standard.cpp) and the links of records written back
// (write/links.cpp).
//
// One writer serves every drawing: a drawing read from DXF walks its model,
// a new drawing walks an empty model. Whatever the model lacks (a section, a
// table, a standard dictionary) is generated, and every live object the
// model has no record for is written from the object itself.
#ifndef TOVIK_HOST_DXF_WRITE_WRITER_H_
#define TOVIK_HOST_DXF_WRITE_WRITER_H_

#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "dxf/encoding.h"
#include "dxf/tag_writer.h"
#include "geometry/box.h"
#include "host/core/document.h"
#include "host/dxf/source.h"
#include "host/entities/kinds.h"

namespace tovik::host {
class Dictionary;
class Dimension;
class Entity;
class GenericEntity;
class Group;
class Hatch;
class Layout;
class SortentsTable;
}  // namespace tovik::host

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

// One entry of a dictionary as written: key, handle and the live object
// behind it (nullptr for a record only the writer knows).
struct DictEntry {
  std::string key;
  uint64_t handle = 0;
  DbObject* object = nullptr;
};

// The records that no live object stands for and that the writer supplies
// when the model lacks them: standard dictionaries of the named-object
// dictionary and what they hold.
struct StandardObject {
  std::string key;    // entry of the named-object dictionary ("ACAD_GROUP")
  uint64_t handle = 0;
  bool generated = false;  // false: the model has it
};

// Kinds whose host data leaves out groups their record has: a copy of one
// read from a file is written from the record it came from.
bool WrittenFromSource(const Entity& entity);

// Returns R12 DXF (AC1009) made from `r2000`, the drawing as this writer
// wrote it in AC1015; adds to `notes` what R12 could not hold and how it
// was written instead (r12.cpp).
std::string R12FromR2000(const std::string& r2000, std::vector<std::string>* notes);

class DbWriter {
 public:
  // `version`: the $ACADVER to write; empty for the host's own choice.
  DbWriter(const Document& doc, DxfSource& source, std::string_view version = {});
  // What the written version could not hold and how it was written instead.
  std::vector<std::string> TakeNotes();

  // Receives the written text piece by piece, in file order.
  using TextSink = std::function<void(std::string_view piece)>;
  // Writes the whole drawing to `sink`. The header comes first in the file
  // but is written last ($HANDSEED is known only once every record has its
  // handle), so the body is held until then in pieces of about a megabyte;
  // `sink` receives nothing before the whole drawing is written, and each
  // piece is freed as soon as `sink` has it.
  void Run(const TextSink& sink);

  // A record bound to a live object, with the modelled groups patched from
  // the object and its extended data regenerated when it changed.
  void EmitPatched(const Record& record, const Binding& binding);
  // A record for an object the file did not have, written from the object
  // (write/entities.cpp for entities, write/records.cpp for table
  // records and objects); `owner_handle` is its owner's handle.
  void EmitNew(const DbObject& object, uint64_t owner_handle);

  // The extents of the model-space entities written; `bounded_only` leaves
  // out rays and construction lines.
  geometry::BoundingBox ModelSpaceExtents(bool bounded_only) const;
  // The boundary of a hatch as polyline paths: 91 and each loop's tags.
  void PutHatchLoops(const std::vector<HatchLoop>& loops);
  // Copies `text` to storage that outlives the record being written.
  std::string_view Keep(std::string text);
  // Keeps the tags of a record built while writing (records only view
  // their tags) and returns a view of them.
  std::span<Tag> KeepTags(std::vector<Tag> tags);
  // Writes one tag; an unchanged value that the source file wrote with \U+
  // escapes keeps them.
  void Put(const Tag& tag);
  // A string value; line breaks become "^J" so that a value stays one line.
  void PutString(int code, std::string_view text);
  void PutReal(int code, double value) { Put(Tag::Double(code, value)); }
  void PutInt(int code, int64_t value) { Put(Tag::Integer(code, value)); }
  void PutHandle(int code, uint64_t handle);
  void PutPoint(int code, const geometry::Vec3& p);
  void PutPoint2(int code, double x, double y) {
    PutReal(code, x);
    PutReal(code + 10, y);
  }
  void PutRecordTags(const Record& record);

  // The groups the host models for `object`, in DXF order (write/patch.cpp).
  void Modelled(const DbObject& object, std::vector<Tag>* want);
  // Extended data as tags.
  void XDataTags(const XData& xdata, std::vector<Tag>* out);
  // A polyline's vertices, as the LWPOLYLINE record lists them.
  void PutVertices(const LwPolyline::Data& d);
  // A multiline text's text: chunks of at most 250 bytes (3), never
  // splitting a UTF-8 sequence, then the rest (1).
  void PutMTextChunks(std::string_view text);

  // Entity lists of at least this many records are written in two halves
  // at once, the second by a helper thread (see EmitEntityList).
  static constexpr size_t kSplitRecords = 20000;
  void set_split_records(size_t records) { split_records_ = records; }

  Document& doc() const { return doc_; }
  // A handle for a record the host has no object for (BLOCK, ENDBLK, SEQEND).
  uint64_t NextHandle();
  // The $HANDSEED written: above every handle written.
  uint64_t HandleSeed() const { return next_handle_; }
  bool utf8() const { return encoder_ == nullptr; }

 private:
  // ----------------------------------------------- structure (write/writer.cpp)
  void Plan();
  // The parts of the plan: handles, tables and standard objects; and the
  // classes of objects written anew and the groups of each entity (by a
  // helper thread, reading the drawing only).
  void PlanHandles();
  void FindNewClassesAndGroups(std::unordered_set<std::string>* new_classes,
                               std::unordered_map<const Entity*, std::vector<const Group*>>* groups_of) const;
  void EmitSectionOf(SectionKind kind, const Section* section);
  void EmitHeader(const Section& section);
  void EmitTables(const Section* section);
  void EmitTable(std::string_view name, const Table* table);
  void EmitNewTableRecords(std::string_view name, uint64_t owner);
  // How many records of table `name` the drawing holds (the head's count).
  size_t RecordCount(std::string_view name) const;
  void EmitBlocks(const Section* section);
  void EmitNewBlock(const BlockRecord& block);
  void EmitEntities(const Section* section);
  void EmitObjects(const Section* section);
  void EmitEntityList(const std::vector<Record>& records, const std::vector<BlockRecord*>& blocks);
  void EmitEntity(const Record& record);
  void EmitBound(const Record& record, const Binding& binding);
  void EmitRaw(const Record& record);
  // The BLOCK record of a block definition, under the live block's name.
  void EmitBlockBegin(const Record& begin, const BlockRecord* record);
  void EmitObjectTree(const DbObject& container);
  // Whether `object` is written at all: live, and not a standard record the
  // file did not name.
  bool Written(const DbObject* object) const;
  // Whether `object` has no record in the model (it is written from itself).
  bool IsNew(const DbObject* object) const;

  // ----------------------------------------- records (write/standard.cpp)
  void EmitNewHeader();
  void EmitMissingHeaderVariables(const Section& section);
  void EmitClasses(const Section* section);
  void EmitTableHead(std::string_view name, uint64_t handle, size_t count);
  void EmitActiveViewport(uint64_t owner);
  void EmitStandardObject(const StandardObject& standard);

  // --------------------------------------- upgrade (write/upgrade.cpp)
  // `body` with the subclass markers an R12 entity of `type` lacks (as it
  // is when it has markers).
  std::vector<Tag> WithSubclassMarkers(std::string_view type, std::span<const Tag> body);
  // An entity of a file in the marked form (R13 on) that came without any
  // subclass marker, with its markers; nothing when it has them.
  std::optional<Record> Marked(const Record& record);
  // A record kept as it came from a file before R2000: with a handle, its
  // owner and subclass markers; `table` names the table of a table entry.
  void EmitUpgradedRaw(const Record& record, uint64_t owner, std::string_view table);
  // A table entry of an R12 file bound to `object`, with the object's
  // handle, its owner and the markers, for EmitPatched.
  Record UpgradedEntry(const Record& entry, const DbObject& object, uint64_t owner,
                       std::string_view table);

  // ------------------------------------------- links (write/links.cpp)
  // The record as it must be written now: entries, members and reactors
  // naming erased objects left out, entries and members the drawing gained
  // added, an extension dictionary the object gained named. nullopt when
  // the record is written as it is.
  std::optional<Record> Relinked(const Record& record, const DbObject* object);
  // Whether a handle the file named belongs to an object no longer written.
  bool Dangling(uint64_t handle) const;
  // Whether `handle` names something this file will hold: a live object,
  // or a record of the model kept as it is.
  bool Present(uint64_t handle) const;
  // A dictionary's entries and a group's members brought up to date in the
  // tags of its record; true when something changed.
  bool RelinkDictionary(const Dictionary& dictionary, std::vector<Tag>* tags);
  bool RelinkGroup(const Group& group, std::vector<Tag>* tags);
  // The draw-order pairs of a table read from the file, made to give the
  // host's order; returns whether they changed.
  bool RelinkSortents(const SortentsTable& table, std::vector<Tag>* tags);

 public:
  // --------------------------------------------- shared by the new records
  // The entries a dictionary holds now (standard dictionaries: the groups,
  // layouts and materials of the drawing).
  std::vector<DictEntry> EntriesOf(const Dictionary& dict) const;
  // What a standard dictionary ("ACAD_GROUP", "ACAD_LAYOUT",
  // "ACAD_MATERIAL") holds: the drawing's groups, layouts or materials.
  std::vector<DictEntry> StandardEntries(std::string_view key) const;
  // The plot style every layer names ("Normal"), 0 when there is none.
  uint64_t plot_style_normal() const { return plot_style_normal_; }
  // The handle of the standard object `key` of the named-object dictionary,
  // 0 when the drawing has none.
  uint64_t StandardHandle(std::string_view key) const;
  // The groups `entity` belongs to (its reactors).
  const std::vector<const Group*>* GroupsOf(const Entity* entity) const;
  // Writes 5 (or 105), the reactor and extension-dictionary groups and 330.
  void PutObjectHead(std::string_view type, const DbObject& object, uint64_t owner,
                     const std::vector<uint64_t>& reactors, int handle_code = 5);
  // The extended data of `object`, if any.
  void PutXData(const DbObject& object);

 private:
  void EmitNewEntity(const Entity& entity, uint64_t owner);
  void EmitEntityGeometry(const Entity& entity);
  void EmitLineGeometry(const Line& o);
  void EmitCircleGeometry(const Circle& o);
  void EmitArcGeometry(const Arc& o);
  void EmitPointGeometry(const PointEntity& o);
  void EmitEllipseGeometry(const Ellipse& o);
  void EmitLwPolylineGeometry(const LwPolyline& o);
  void EmitMTextGeometry(const MText& o);
  void EmitBlockRefGeometry(const BlockRef& o);
  void EmitWipeoutGeometry(const Wipeout& o);
  void PutThickness(double thickness);
  // The AcDbCircle part a circle and an arc share.
  void PutCircleGroups(const geometry::Vec3& center, double radius, const geometry::Vec3& normal,
                       double thickness);
  void PutNormal(const geometry::Vec3& normal);
  void EmitTextGeometry(const Entity& entity);
  void EmitHatchGeometry(const Hatch& hatch);
  void EmitDimensionGeometry(const Dimension& dimension);
  void EmitGenericGeometry(const GenericEntity& generic);
  void EmitXRecordValue(int code, const Variant& value);
  void EmitLayout(const Layout& layout, uint64_t owner);
  // A numeric system variable of the drawing (0 when it is not a number).
  double NumberOfSysVar(std::string_view name) const;
  bool EmitFromSourceTags(const Entity& entity, uint64_t owner);
  // Whether `entity` was made in this session from another (not read).
  bool IsCopy(const Entity& entity) const;
  void EmitNewRecord(const DbObject& object, uint64_t owner);
  void EmitNewObject(const DbObject& object, uint64_t owner);
  void EmitSeqend(const Entity& owner_entity);

  // Ends the body's current piece and starts the next one.
  void StartPiece();

  // A helper writing part of an entity list: a copy of this writer, plan
  // and all, with its own output.
  DbWriter(const DbWriter&) = default;
  // Writes records [from, to) of `records` as EmitEntity does.
  void EmitRecords(const std::vector<Record>& records, size_t from, size_t to);
  // Takes what `helper` wrote and noted after this writer's own part;
  // false when the helper gave out handles (this writer's may collide).
  bool TakeHelperPart(DbWriter& helper, uint64_t handle_at_fork, size_t notes_at_fork,
                      size_t dropped_at_fork);

  Document& doc_;
  DxfSource& source_;
  // Where Put appends: the current piece of the body, then the header.
  std::string* out_ = nullptr;
  std::deque<std::string> pieces_;
  bool holding_body_ = false;
  std::shared_ptr<TextEncoder> encoder_;
  std::string version_;
  // The version the drawing would be written in is the host's own: classes
  // and the code page are added as for it.
  bool modern_ = true;
  bool drop_true_colours_ = false;
  bool in_xrecord_ = false;
  size_t dropped_colours_ = 0;
  std::vector<std::string> notes_;
  // A file before R2000 is upgraded: standard records it never named are
  // written too. An R12 file (no BLOCK_RECORD table) is written wholly from
  // the live objects, its records kept as they came upgraded.
  bool upgrade_ = false;
  bool all_new_ = false;
  size_t split_records_ = kSplitRecords;
  std::deque<std::string> kept_;
  std::deque<std::vector<Tag>> kept_tags_;
  // While an object read from the file is written anew: its record, whose
  // spelling of names (layer, linetype, block, style) PutString keeps.
  const Record* spelling_ = nullptr;
  uint64_t next_handle_ = 0;

  // The plan made before writing (Plan).
  std::map<std::string, uint64_t, std::less<>> table_handles_;
  std::vector<StandardObject> standard_;
  std::unordered_map<const Entity*, std::vector<const Group*>> groups_of_;
  // Live objects by the handle their record had in the file.
  // (These two are shared with a helper writing part of an entity list:
  // read only once planned.)
  std::shared_ptr<FlatMap<uint64_t, const DbObject*>> bound_by_handle_ =
      std::make_shared<FlatMap<uint64_t, const DbObject*>>();
  // Handles of the model's records no live object stands for (true).
  std::shared_ptr<FlatMap<uint64_t, bool>> raw_handles_ = std::make_shared<FlatMap<uint64_t, bool>>();
  // Objects written so far (true), one per record.
  ObjectMap<bool> emitted_;
  std::unordered_set<const DbObject*> walked_;
  uint64_t plot_style_normal_ = 0;
  // EmitPatched's groups of the live object and which of them were written.
  std::vector<Tag> patch_want_;
  std::vector<char> patch_used_;
  // Classes of the objects written from scratch ("LAYOUT", "WIPEOUT"...).
  std::unordered_set<std::string> needed_classes_;
};

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_WRITE_WRITER_H_
