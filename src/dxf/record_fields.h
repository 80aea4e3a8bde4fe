// Looking up many groups of one record: the entity loader asks for a dozen
// or more codes per entity (layer, colour, points, normal, thickness...),
// most of them absent, and a linear scan of the record per code was a tenth
// of a load. RecordFields indexes a record's tags in one pass; lookups then
// cost one array access.
#ifndef TOVIK_DXF_RECORD_FIELDS_H_
#define TOVIK_DXF_RECORD_FIELDS_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include "dxf/record.h"

namespace tovik::dxf {

// The table the index of one record at a time lives in, kept by the loader
// so that it is allocated once. Entries are stamped with the generation of
// the record that wrote them, so starting the next record clears nothing.
class FieldTable {
 public:
  FieldTable() : stamp_(kMaxGroupCode + 1, 0), first_(kMaxGroupCode + 1, 0) {}

 private:
  friend class RecordFields;
  std::vector<uint32_t> stamp_;  // generation that set first_[code]
  std::vector<uint32_t> first_;  // index of the first tag with the code
  uint32_t generation_ = 0;
};

// The first tag of each code of one record, with Record's lookup
// semantics (the first tag with the code anywhere in the record, extended
// data included). Valid while `table` indexes no other record; after that,
// and for codes outside 0..kMaxGroupCode, lookups scan the record.
class RecordFields {
 public:
  RecordFields(const Record& record, FieldTable& table)
      : record_(record), table_(table), generation_(++table.generation_) {
    for (size_t k = 0; k < record.tags.size(); ++k) {
      int code = record.tags[k].code;
      if (code < 0 || code > kMaxGroupCode || table.stamp_[code] == generation_) continue;
      table.stamp_[code] = generation_;
      table.first_[code] = static_cast<uint32_t>(k);
    }
  }

  const Record& record() const { return record_; }

  // Returns the first tag with `code`, or nullptr (as Record::Find).
  const Tag* Find(int code) const {
    if (code < 0 || code > kMaxGroupCode || table_.generation_ != generation_) {
      return record_.Find(code);
    }
    if (table_.stamp_[code] != generation_) return nullptr;
    return &record_.tags[table_.first_[code]];
  }
  // Returns the text of the first tag with `code`, or `fallback`.
  std::string_view StringOr(int code, std::string_view fallback = {}) const {
    const Tag* tag = Find(code);
    return tag != nullptr ? tag->text : fallback;
  }

 private:
  const Record& record_;
  const FieldTable& table_;
  uint32_t generation_;
};

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_RECORD_FIELDS_H_
