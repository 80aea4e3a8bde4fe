// The writer's per-record machinery shared by the structure pass
// (db_writer.cpp) and the per-kind groups (db_writer_patch.cpp).
#ifndef TOVIK_HOST_DXF_DB_WRITER_INTERNAL_H_
#define TOVIK_HOST_DXF_DB_WRITER_INTERNAL_H_

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "host/document.h"
#include "host/dxf/db_source.h"
#include "host/dxf/encoding.h"
#include "host/dxf/writer.h"

namespace tovik::host::dxf {

class DbWriter {
 public:
  DbWriter(const Document& doc, DxfSource& source, std::string* out);

  // Writes the whole drawing.
  void Run();

  // A record bound to a live object, with the modelled groups patched from
  // the object and its extended data regenerated when it changed.
  void EmitPatched(const Record& record, const Binding& binding);
  // A record for an object the file did not have.
  void EmitNew(const DbObject& object, uint64_t owner_handle);

  // Copies `text` to storage that outlives the record being written.
  std::string_view Keep(std::string text);
  // Writes one tag; an unchanged value that the source file wrote with \U+
  // escapes keeps them.
  void Put(const Tag& tag);
  void PutString(int code, std::string_view text) { Put(Tag::String(code, Keep(std::string(text)))); }
  void PutReal(int code, double value) { Put(Tag::Double(code, value)); }
  void PutInt(int code, int64_t value) { Put(Tag::Integer(code, value)); }
  void PutHandle(int code, uint64_t handle);
  void PutPoint(int code, const geometry::Vec3& p);
  void PutRecordTags(const Record& record);

  // The groups the host models for `object`, in DXF order (db_writer_patch.cpp).
  void Modelled(const DbObject& object, std::vector<Tag>* want);
  // Extended data as tags.
  void XDataTags(const XData& xdata, std::vector<Tag>* out);

  Document& doc() const { return doc_; }
  // A handle for a record the host has no object for (BLOCK, ENDBLK, SEQEND).
  uint64_t NextHandle();
  // The $HANDSEED written: above every handle, reserved ones included.
  uint64_t HandleSeed() const;
  bool utf8() const { return encoder_ == nullptr; }

 private:
  void EmitHeader(const Section& section);
  void EmitTables(const Section& section);
  void EmitBlocks(const Section& section);
  void EmitEntities(const Section& section);
  void EmitObjects(const Section& section);
  void EmitEntityList(const std::vector<Record>& records, const std::vector<BlockRecord*>& blocks);
  void EmitEntity(const Record& record);
  bool Written(const DbObject* object) const;

  Document& doc_;
  DxfSource& source_;
  std::string* out_;
  std::unique_ptr<TextEncoder> encoder_;
  std::string version_;
  std::deque<std::string> kept_;
  uint64_t next_handle_ = 0;
  uint64_t reserved_ = 0;
};

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_DB_WRITER_INTERNAL_H_
