// One DXF record ("0 TYPE" and the tags up to the next 0) with its followers.
#ifndef TOVIK_DXF_RECORD_H_
#define TOVIK_DXF_RECORD_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "dxf/tag.h"

namespace tovik::dxf {

// A named run of tags inside a record: a subclass (after "100 AcDbLine"), an
// application's xdata (after "1001 ACAD") or a 102 group ("102 {ACAD_REACTORS").
struct TagSegment {
  std::string_view name;
  std::span<const Tag> tags;
};

// A record of any section: an entity, a table entry, an object, a CLASS, a
// BLOCK or ENDBLK. Its tag list keeps every tag in file order, unknown ones
// included, so that writing the record back loses nothing. The tags are a
// view into the one tag array of the TagModel that holds the record (one
// array for the whole file instead of one allocation per record), and their
// text is borrowed from that model too.
struct Record {
  Tag head;                       // the "0 TYPE" tag itself
  std::string_view type;          // its value without surrounding spaces
  std::span<Tag> tags;            // the tags after the 0 tag
  // VERTEX records of a POLYLINE, ATTRIB records of an INSERT, then their
  // SEQEND; empty for other records.
  std::vector<Record> followers;
  // Where the drawing read from this record keeps the record's binding to
  // its live object (RecordBindings in source.h), so that finding it
  // needs no hashing; kNoSlot until bound. Not part of the record's content
  // (hence mutable): the model is read-only once loaded.
  static constexpr std::uint32_t kNoSlot = 0xFFFFFFFFu;
  mutable std::uint32_t binding_slot = kNoSlot;

  // Returns the first tag with `code`, or nullptr.
  const Tag* Find(int code) const;
  // Returns every tag with `code`, in order.
  std::vector<const Tag*> FindAll(int code) const;
  // Returns the text of the first tag with `code`, or `fallback`.
  std::string_view StringOr(int code, std::string_view fallback = {}) const;
  // Returns the value of the first double tag with `code`.
  std::optional<double> DoubleOf(int code) const;
  // Returns the value of the first integer tag with `code`.
  std::optional<std::int64_t> IntegerOf(int code) const;

  // Returns the record's handle text: code 5, or 105 (DIMSTYLE); empty if none.
  std::string_view Handle() const;
  // Returns the owner handle text: the first 330 outside 102 groups; empty if none.
  std::string_view Owner() const;

  // Returns the tags before the extended data (before the first 1001).
  std::span<const Tag> Body() const;
  // Returns the body split at 100 markers; the first segment (name empty)
  // holds the common tags before the first marker and may be empty.
  std::vector<TagSegment> Subclasses() const;
  // Returns the tags after "100 `marker`" up to the next 100 or the end of the
  // body (102 groups included); nullopt when the marker is absent.
  std::optional<std::span<const Tag>> Subclass(std::string_view marker) const;

  // Returns each application's extended data: name from the 1001 tag, tags
  // after it up to the next 1001.
  std::vector<TagSegment> XdataBlocks() const;
  // Returns the extended data of application `app` (matched exactly).
  std::optional<std::span<const Tag>> Xdata(std::string_view app) const;

  // Returns the 102 groups of the body: name without the "{" (e.g.
  // "ACAD_REACTORS"), tags between the opening and the closing "102 }".
  std::vector<TagSegment> AppDataGroups() const;
  // Returns the tags of the 102 group `name` ("ACAD_XDICTIONARY").
  std::optional<std::span<const Tag>> AppData(std::string_view name) const;
};

// The marker of a symbol-table record's own part ("AcDbLayerTableRecord"
// for LAYER), after AcDbSymbolTableRecord; empty for other kinds.
std::string_view SymbolTableRecordMarker(std::string_view type);

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_RECORD_H_
