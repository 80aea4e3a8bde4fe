// What a drawing read from DXF keeps beside its live objects: the file's
// tag model (every record, unmodelled ones and unknown groups included) and
// which live object each record became. The writer walks the model again,
// re-emitting each record with the groups the host models patched from the
// live object, so a read-then-write loses nothing the host does not model.
#ifndef TOVIK_HOST_DXF_SOURCE_H_
#define TOVIK_HOST_DXF_SOURCE_H_

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "dxf/flat_map.h"
#include "dxf/tag_model.h"
#include "host/core/db_object.h"
#include "host/core/document.h"

namespace tovik::host {
class Document;
}

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

// One record turned into a live object.
struct Binding {
  DbObject* object = nullptr;
  // The extended data as loaded: while the object still holds this very
  // pointer, its xdata is unchanged and the original tags are written.
  const XData* loaded_xdata = nullptr;
};

// Record -> binding, for a drawing's records: the bindings in one deque in
// the order they were made, each record holding the slot of its own
// (Record::binding_slot), so a lookup is one array access and no hash. A
// record that is not the one its slot names (a copy of a bound record, or
// one never bound) finds nothing, as with a map keyed by address. A record
// is bound in one source only (its drawing's). The subset of
// std::unordered_map the loader and writer use; values keep their address
// as bindings are added.
class RecordBindings {
 public:
  using value_type = std::pair<const Record* const, Binding>;
  using iterator = std::deque<value_type>::iterator;
  using const_iterator = std::deque<value_type>::const_iterator;

  iterator begin() { return entries_.begin(); }
  iterator end() { return entries_.end(); }
  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }
  size_t size() const { return entries_.size(); }
  // Nothing to reserve: kept for the callers written against a hash map.
  void reserve(size_t) {}

  // Returns the binding of `record`, or end().
  iterator find(const Record* record) {
    return Holds(record) ? entries_.begin() + record->binding_slot : entries_.end();
  }
  const_iterator find(const Record* record) const {
    return Holds(record) ? entries_.begin() + record->binding_slot : entries_.end();
  }
  // Returns 1 when `record` is bound, else 0.
  size_t count(const Record* record) const { return Holds(record) ? 1 : 0; }
  // Returns the binding of `record`, making an empty one first when it has none.
  Binding& operator[](const Record* record) {
    if (Holds(record)) return entries_[record->binding_slot].second;
    record->binding_slot = static_cast<uint32_t>(entries_.size());
    return entries_.emplace_back(record, Binding{}).second;
  }

 private:
  bool Holds(const Record* record) const {
    return record->binding_slot < entries_.size() && entries_[record->binding_slot].first == record;
  }

  std::deque<value_type> entries_;
};

// A map keyed by live objects (object -> the record it came from, objects
// written). A registered object's ID is its document's base plus
// kObjectIdStride times its slot, the bases being kObjectIdRange apart, so
// the slot indexes a vector directly: no hashing. The entry of a slot
// names its object; objects without an ID (never registered) and an object
// whose slot another drawing's object holds already go to a flat map, so
// this answers as a map keyed by address.
template <class Value>
class ObjectMap {
 public:
  // Makes room for objects in the first `count` slots.
  void reserve(size_t count) { by_slot_.reserve(count); }
  // Returns the value of `object`, or nullptr when it has none.
  const Value* Find(const DbObject* object) const {
    std::optional<size_t> slot = SlotOf(object);
    if (slot && *slot < by_slot_.size() && by_slot_[*slot].first == object) {
      return &by_slot_[*slot].second;
    }
    if (others_.empty()) return nullptr;
    auto it = others_.find(object);
    return it != others_.end() ? &it->second : nullptr;
  }
  // Returns the value of `object`, or `fallback` when it has none.
  Value ValueOr(const DbObject* object, Value fallback) const {
    const Value* value = Find(object);
    return value != nullptr ? *value : fallback;
  }
  // Returns 1 when `object` has an entry, else 0.
  size_t count(const DbObject* object) const { return Find(object) != nullptr ? 1 : 0; }
  // Returns the value of `object`. REQUIRES: count(object) == 1.
  const Value& at(const DbObject* object) const { return *Find(object); }
  // Returns the value of `object`, value-initialised first when it has none.
  Value& operator[](const DbObject* object) {
    std::optional<size_t> slot = SlotOf(object);
    if (!slot) return others_[object];
    if (*slot >= by_slot_.size()) by_slot_.resize(*slot + 1, {nullptr, Value{}});
    auto& entry = by_slot_[*slot];
    if (entry.first == nullptr) entry.first = object;
    return entry.first == object ? entry.second : others_[object];
  }
  // Gives every object of `other` its value there.
  void Merge(const ObjectMap& other) {
    // Slot by slot: an object has the same slot in both.
    if (by_slot_.size() < other.by_slot_.size()) by_slot_.resize(other.by_slot_.size(), {nullptr, Value{}});
    for (size_t slot = 0; slot < other.by_slot_.size(); ++slot) {
      const auto& [object, value] = other.by_slot_[slot];
      if (object == nullptr) continue;
      auto& entry = by_slot_[slot];
      if (entry.first == nullptr || entry.first == object) {
        entry = {object, value};
      } else {
        others_[object] = value;
      }
    }
    for (const auto& [object, value] : other.others_) (*this)[object] = value;
  }

 private:
  static std::optional<size_t> SlotOf(const DbObject* object) {
    int64_t offset = int64_t{object->id()} - kObjectIdBase32;
    if (offset < 0 || offset % kObjectIdStride != 0) return std::nullopt;
    return static_cast<size_t>((offset % kObjectIdRange) / kObjectIdStride);
  }

  std::vector<std::pair<const DbObject*, Value>> by_slot_;
  FlatMap<const DbObject*, Value> others_;
};

// A drawing's DXF origin.
struct DxfSource {
  explicit DxfSource(TagModel m) : model(std::move(m)) {}
  TagModel model;
  RecordBindings bindings;
  // The object each live object came from (reverse of `bindings`).
  ObjectMap<const Record*> records;
  // Standard contents of a new document the file did not name (a layout
  // the file lacks): kept alive, never written.
  std::unordered_set<const DbObject*> unwritten;
  // What the loader repaired, one line each ("layer "X" was missing: added").
  std::vector<std::string> repairs;
  // Records a repair dropped: never written (a layout naming no block
  // record would need the same repair in every copy).
  std::unordered_set<const Record*> dropped;
};

// Gives each entity read from `source` whose kind the host does not model
// whole (generic entities, dimensions, hatches, images, wipeouts) the tags
// of its record as unmodelled tags (DbObject::extra), followers included,
// so that a copy of it, which carries them along, is written whole.
void RememberSourceRecords(DxfSource& source);

// Attaches `source` to `document` (replacing an earlier one).
void AttachSource(Document& document, std::shared_ptr<DxfSource> source);
// The source attached to `document`, or nullptr for a drawing not read from DXF.
std::shared_ptr<DxfSource> SourceOf(const Document& document);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_SOURCE_H_
