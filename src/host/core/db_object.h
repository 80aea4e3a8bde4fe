// The base of every object of the drawing database. Each database object IS
// its automation object (one wrapper per object, so two reads compare equal
// with Is). The document owns every object it created through a shared_ptr
// and hands out handles (upper-case hex, never reused) and object IDs
// (stable for the document's life, below 2^31).
//
// Members come from a chain of static tables: the kind's own table first,
// then the entity table (entities only), then the table every database
// object answers (Handle, ObjectID, GetXData...). An erased object answers
// only Handle and ObjectName; every other member raises "Object was erased".
#ifndef TOVIK_HOST_CORE_DB_OBJECT_H_
#define TOVIK_HOST_CORE_DB_OBJECT_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "frame/member_table.h"
#include "frame/variant.h"
#include "host/core/journal.h"

namespace tovik::host {

class Document;
class Dictionary;
class RegApp;

// One item of extended data after its run's 1001 (code and value as
// SetXData takes them: 1070 Integer, 1071 Long, points as Double arrays).
struct XDataItem {
  int16_t code = 0;
  Variant value;
};
// One application's run. The app is referenced by identity, so a rename of
// the registered application renames every run.
struct XDataRun {
  RegApp* app = nullptr;
  std::vector<XDataItem> items;
};
using XData = std::vector<XDataRun>;

// A DXF tag the host does not model, kept so that nothing is lost on save.
struct RawTag {
  int16_t code = 0;
  std::string value;
};
using RawTags = std::vector<RawTag>;

// The state every object has that undo restores.
struct ObjectCore {
  std::shared_ptr<const XData> xdata;    // nullptr: no extended data
  std::shared_ptr<const RawTags> extra;  // nullptr: nothing unmodelled
  Dictionary* xdict = nullptr;           // extension dictionary, if any
};

// What a database object is: an entity (its EntityKind tells which) or one
// of the non-graphical classes the host models.
enum class ObjectClass : uint8_t {
  kEntity,
  kBlockRecord,
  kLayer,
  kLinetype,
  kTextStyle,
  kMaterial,
  kRegApp,
  kDimStyle,
  kLayout,
  kDictionary,
  kXRecord,
  kGroup,
  kSortentsTable,
};

class DbObject : public Dispatch {
 public:
  ~DbObject() override = default;

  // The owning document; nullptr once it is closed.
  Document* document() const { return doc_; }
  uint64_t handle() const { return handle_; }
  // The handle as the host writes it: upper-case hex without leading zeros.
  std::string HandleText() const;
  int32_t id() const { return id_; }
  // The owning object (block of an entity, block reference of an
  // attribute, dictionary of a dictionary entry); nullptr for tables' records.
  DbObject* owner() const { return owner_; }
  void set_owner(DbObject* owner) { owner_ = owner; }
  // Erased by Delete (or by undoing its creation), or its document closed.
  bool erased() const { return erased_ || doc_ == nullptr; }

  // The ObjectARX class name ("AcDbLine").
  virtual std::string_view ObjectName() const = 0;
  virtual ObjectClass Class() const = 0;
  bool IsEntity() const { return Class() == ObjectClass::kEntity; }

  // Call before every change: raises the erased error, lets the kind refuse
  // (an entity on a locked layer), and snapshots the state for undo once per
  // undo step.
  void Touch();
  // What Touch checks, for a write that leaves the object as it is: the
  // call is still an undo step (undoing it changes nothing), but nothing
  // is snapshotted and no one is told of a change.
  void TouchUnchanged();
  // Raises "Object was erased" when erased.
  void CheckLive() const;
  // Raises when the object refuses changes; the default accepts.
  virtual void CheckWritable() const {}
  // A closure restoring the present state (what Touch records).
  virtual std::function<void()> Restorer() = 0;

  // Erases the object (Delete): flags it, detaches it from its owner and
  // records how to undo that. REQUIRES: not erased.
  virtual void Erase();
  // Brings an erased object back (undo of Erase, redo of nothing).
  virtual void Unerase();
  // Delete: checks the kind's rules (a layer in use, a referenced block...)
  // and erases. The default erases.
  virtual void Delete();

  // Extended data, extension dictionary and unmodelled tags.
  const XData* xdata() const { return core_.xdata.get(); }
  void SetXData(std::shared_ptr<const XData> xdata);
  const RawTags* extra() const { return core_.extra.get(); }
  void SetExtra(RawTags tags);
  Dictionary* xdict() const { return core_.xdict; }
  // The extension dictionary, created when missing.
  Dictionary* GetOrCreateXDict();

  // The journal of the owning document (nullptr once closed).
  Journal* journal() const;
  // Tells the document's change observer that this object changed.
  void NotifyChanged();

  // Members every database object answers.
  static const MemberTable<DbObject>& ObjectMembers();

  // The base state undo snapshots (kinds deriving further hide these).
  ObjectCore SaveBase() const { return core_; }
  void RestoreBase(const ObjectCore& core) { core_ = core; }

 protected:
  friend class Document;
  DbObject() = default;

  Document* doc_ = nullptr;
  DbObject* owner_ = nullptr;
  uint64_t handle_ = 0;
  int32_t id_ = 0;
  bool erased_ = false;
  ObjectCore core_;
};

// Whether objects of class `c` are records of a symbol table (written in the
// TABLES section or, for blocks, as the block table's records).
constexpr bool IsTableRecord(ObjectClass c) {
  switch (c) {
    case ObjectClass::kBlockRecord:
    case ObjectClass::kLayer:
    case ObjectClass::kLinetype:
    case ObjectClass::kTextStyle:
    case ObjectClass::kRegApp:
    case ObjectClass::kDimStyle: return true;
    case ObjectClass::kEntity:
    case ObjectClass::kMaterial:
    case ObjectClass::kLayout:
    case ObjectClass::kDictionary:
    case ObjectClass::kXRecord:
    case ObjectClass::kGroup:
    case ObjectClass::kSortentsTable: return false;
  }
  return false;
}

// `object` as the non-graphical class K, or nullptr when it is another.
template <class K>
const K* AsObject(const DbObject* object) {
  return object != nullptr && object->Class() == K::kClass ? static_cast<const K*>(object) : nullptr;
}
template <class K>
K* AsObject(DbObject* object) {
  return const_cast<K*>(AsObject<K>(static_cast<const DbObject*>(object)));
}
// The same for an automation object handed in by a caller.
template <class K>
K* AsObject(Dispatch* object) {
  return AsObject<K>(dynamic_cast<DbObject*>(object));
}

// Member ids of the shared tables are offset so that one id names one member
// across the chain.
inline constexpr DispId kEntityIdBase = 10000;
inline constexpr DispId kObjectIdBase = 20000;

class Entity;
// Defined in entity.h; declared here so the chain can reach them.
const MemberTable<Entity>& EntityMembers();
bool AnswersWhenErased(DispId id);

// Binds kind T (deriving from Base, itself a DbObject) to its member table
// and to undo snapshots of its typed data. T provides:
//   static const MemberTable<T>& Members();
//   const Data& data() const; Data& mutable_data();  (a copyable struct)
template <class T, class Base>
class HostObject : public Base {
 public:
  DispId GetIdOfName(std::string_view name) const override {
    FoldedName folded(name);
    DispId id = T::Members().Find(folded);
    if (id != kDispIdUnknown) return id;
    if constexpr (std::is_base_of_v<Entity, Base>) {
      id = EntityMembers().Find(folded);
      if (id != kDispIdUnknown) return id + kEntityIdBase;
    }
    id = DbObject::ObjectMembers().Find(folded);
    return id == kDispIdUnknown ? id : id + kObjectIdBase;
  }

  Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) override {
    if (this->erased() && !AnswersWhenErased(id)) this->CheckLive();
    CallScope scope(this->journal());
    if (id >= kObjectIdBase) {
      return DbObject::ObjectMembers().Invoke(*this, id - kObjectIdBase, kind, args);
    }
    if constexpr (std::is_base_of_v<Entity, Base>) {
      if (id >= kEntityIdBase) {
        return EntityMembers().Invoke(static_cast<Entity&>(*this), id - kEntityIdBase,
                                      kind, args);
      }
    }
    return T::Members().Invoke(static_cast<T&>(*this), id, kind, args);
  }

  MemberInfo Describe(DispId id) const override {
    if (id >= kObjectIdBase) return DescribeMember(DbObject::ObjectMembers(), id - kObjectIdBase);
    if constexpr (std::is_base_of_v<Entity, Base>) {
      if (id >= kEntityIdBase) return DescribeMember(EntityMembers(), id - kEntityIdBase);
    }
    return DescribeMember(T::Members(), id);
  }
  std::vector<std::string> MemberNames() const override {
    std::vector<std::string> names;
    AppendMemberNames(T::Members(), names);
    if constexpr (std::is_base_of_v<Entity, Base>) AppendMemberNames(EntityMembers(), names);
    AppendMemberNames(DbObject::ObjectMembers(), names);
    return names;
  }

  std::function<void()> Restorer() override {
    auto self = std::static_pointer_cast<T>(this->shared_from_this());
    auto data = self->data();
    auto base = this->SaveBase();
    return [self, data = std::move(data), base = std::move(base)]() mutable {
      self->mutable_data() = data;
      self->RestoreBase(base);
      self->NotifyChanged();
    };
  }
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_DB_OBJECT_H_
