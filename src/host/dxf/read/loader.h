// The loader's working state: the document being built, the file's model
// and name lookups. Shared by the structure pass (read/reader.cpp) and the
// entity mapping (read/entities.cpp).
#ifndef TOVIK_HOST_DXF_READ_LOADER_H_
#define TOVIK_HOST_DXF_READ_LOADER_H_

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "dxf/record_fields.h"
#include "host/core/document.h"
#include "host/dxf/binding.h"
#include "host/dxf/read/object_pool.h"
#include "host/dxf/read/validate.h"
#include "host/dxf/source.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

// Records of one table by folded name. The last name looked up is
// remembered as the file spelled it: entities mostly name the same layer,
// style or block as the one before.
template <class R>
class NameMap {
 public:
  using mapped_type = R*;
  // The record named `name` as a file spells it; nullptr when none.
  R* Find(std::string_view name) const {
    if (last_ != nullptr && name == last_name_) return last_;
    R* found = FindKey(FoldName(name));
    if (found != nullptr) {
      last_name_.assign(name);
      last_ = found;
    }
    return found;
  }
  // The record under an already folded key; nullptr when none.
  R* FindKey(const std::string& key) const {
    auto it = map_.find(key);
    return it == map_.end() ? nullptr : it->second;
  }
  bool Contains(const std::string& key) const { return map_.count(key) != 0; }
  void Set(const std::string& key, R* record) {
    map_[key] = record;
    last_ = nullptr;
  }

 private:
  std::unordered_map<std::string, R*> map_;
  mutable std::string last_name_;
  mutable R* last_ = nullptr;
};

class Loader {
 public:
  // `handles` are those of `source`'s records (as ValidateModel returns them).
  Loader(Document& doc, DxfSource& source, const ModelHandles& handles)
      : doc_(doc), source_(source), handles_(handles) {}
  // A load that failed half way stops the pool's helper too.
  ~Loader() {
    if (pool_) pool_->Seal();
  }
  Loader(const Loader&) = delete;
  Loader& operator=(const Loader&) = delete;

  // Maps the whole model into the document.
  void Run();

  // A new entity for the document: from the pool when the file brings
  // many (see object_pool.h).
  template <class T>
  std::shared_ptr<T> Make() {
    return pool_ ? std::allocate_shared<T>(PoolAllocator<T>(pool_)) : std::make_shared<T>();
  }
  // Files with at least this many entities have theirs pooled.
  static constexpr size_t kPooledEntities = 20000;

  // Registers `object` under the record's handle (a new one when it has
  // none) and remembers the binding.
  void Bind(const Record& record, std::shared_ptr<DbObject> object);
  // Binds an object that already exists (a standard record).
  void BindExisting(const Record& record, DbObject* object);
  // Notes that a bound record holds no application group (102), as the
  // entity loader's index of its groups shows: linking extension
  // dictionaries need not read it again.
  void NoteWithoutAppGroups(const Record& record) {
    if (record.binding_slot == Record::kNoSlot) return;
    if (without_app_groups_.size() <= record.binding_slot) without_app_groups_.resize(record.binding_slot + 1);
    without_app_groups_[record.binding_slot] = true;
  }

  // Entity mapping (read/entities.cpp): a live entity for `record`,
  // appended to `block`; attributes of an INSERT follow it.
  void LoadEntity(const Record& record, BlockRecord* block);

  LayerRecord* LayerNamed(std::string_view name);
  LinetypeRecord* LinetypeNamed(std::string_view name);
  TextStyleRecord* StyleNamed(std::string_view name);
  BlockRecord* BlockNamed(std::string_view name) const;
  // Makes an empty block named `name` (which no block has).
  BlockRecord* EmptyBlockNamed(std::string_view name);
  // `stem` followed by the first number that makes a name no block has.
  std::string FreeBlockName(const std::string& stem) const;
  DimStyleRecord* DimStyleNamed(std::string_view name) const;

  Document& doc() { return doc_; }
  DxfSource& source() { return source_; }
  void Repair(std::string text) { source_.repairs.push_back(std::move(text)); }

 private:
  void MoveStandardHandles();
  void LoadHeader();
  void LoadTables();
  void LoadBlockDefinitions(Section& section);
  void LoadTableEntry(std::string_view table, const Record& record);
  void FillTableEntry(std::string_view table, const Record& record);
  void LoadBlocks();
  void LoadEntities();
  void LoadObjects();
  // The objects of the OBJECTS section the host models, read in a first
  // pass (LoadLayout, LoadMaterial) and linked in a second (Link...).
  void LoadLayout(const Record& record,
                  const std::unordered_map<uint64_t, BlockRecord*>& block_by_handle);
  void LoadMaterial(const Record& record);
  void LinkDictionary(const Record& record, Dictionary* dict);
  void LinkGroup(const Record& record, Group* group);
  void FillObject(const Record& record, DbObject* object);
  void LoadXData(const Record& record, DbObject* object);
  void LinkExtensionDictionaries();
  // The draw order a SORTENTSTABLE's tags give its block (every entity of
  // the block, in drawing order); `block` receives the block it names.
  std::vector<Entity*> DrawOrderOf(std::span<const Tag> table, BlockRecord** block);
  void LinkDynamicBlocks();
  void LoadDynamicProperties();
  // Each dynamic reference's own parameter values, once the objects (its
  // extension dictionary) are loaded.
  void LoadDynamicValues();
  void DropUnusedStandardLayouts();
  void ApplyCommon(const RecordFields& record, Entity* entity);

  Document& doc_;
  DxfSource& source_;
  const ModelHandles& handles_;
  NameMap<LayerRecord> layers_;
  NameMap<LinetypeRecord> linetypes_;
  NameMap<TextStyleRecord> styles_;
  NameMap<BlockRecord> blocks_;
  NameMap<DimStyleRecord> dim_styles_;
  NameMap<RegApp> regapps_;
  std::unordered_map<const BlockRecord*, bool> layout_blocks_used_;
  // Where the entity loader indexes one record's groups at a time.
  FieldTable fields_;
  std::shared_ptr<ObjectPool> pool_;
  // By binding slot: records known to hold no application group.
  std::vector<bool> without_app_groups_;

  friend class EntityMapper;
};

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_READ_LOADER_H_
