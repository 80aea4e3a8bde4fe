// Dictionaries (the named-object dictionary, extension dictionaries) and
// xrecords.
#ifndef TOVIK_HOST_TABLES_DICTIONARY_H_
#define TOVIK_HOST_TABLES_DICTIONARY_H_

#include <string>
#include <utility>
#include <vector>

#include "host/core/db_object.h"

namespace tovik::host {

class BlockRecord;
class Entity;

// IAcadDictionary (AcDbDictionary): keyword -> object, keywords compared
// case-insensitively, in insertion order.
class Dictionary final : public HostObject<Dictionary, DbObject> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kDictionary;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::vector<std::pair<std::string, DbObject*>> entries;
  };
  std::string_view TypeName() const override { return "IAcadDictionary"; }
  std::string_view ObjectName() const override { return "AcDbDictionary"; }
  static const MemberTable<Dictionary>& Members();
  std::vector<Variant> Enumerate() override;
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

  // The object under `key`, or nullptr.
  DbObject* Find(std::string_view key) const;
  // Stores `object` under `key` (replacing and erasing an existing entry);
  // recorded for undo.
  void Put(std::string_view key, DbObject* object);
  // Takes the entry out (the object stays alive); nullptr when missing.
  DbObject* Take(std::string_view key);
  // A new object of ObjectARX class `class_name` ("AcDbDictionary",
  // "AcDbXrecord", "AcDbSortentsTable") stored under `key`; an unknown class
  // raises Invalid input.
  DbObject* AddObject(std::string_view key, std::string_view class_name);

 private:
  Data data_;
};

// IAcadXRecord (AcDbXrecord): a list of DXF code / value pairs.
class XRecord final : public HostObject<XRecord, DbObject> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kXRecord;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::vector<int16_t> codes;
    std::vector<Variant> values;
  };
  std::string_view TypeName() const override { return "IAcadXRecord"; }
  std::string_view ObjectName() const override { return "AcDbXrecord"; }
  static const MemberTable<XRecord>& Members();
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_TABLES_DICTIONARY_H_
