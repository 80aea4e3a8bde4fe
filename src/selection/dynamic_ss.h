// DynamicSS: the library's own selection set. An ordered collection of the
// entities of one host document, keyed by each entity's Handle, that lives
// in the caller's memory across calls and never holds an entity twice.
//
// Owns: its entity table (a scripting Dictionary, handle -> entity, binary
// compare) and its two companions (SSDimensions, SSAnimation).
// Borrows: the document and the entities.
#ifndef TOVIK_SELECTION_DYNAMIC_SS_H_
#define TOVIK_SELECTION_DYNAMIC_SS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "frame/dictionary.h"
#include "frame/member_table.h"
#include "selection/ss_companions.h"

namespace tovik {

// The named-object store key under which the shared highlight set lives.
inline constexpr std::string_view kHighlightSetKey = "ZHighlightSS";

class DynamicSS : public DispatchObject<DynamicSS> {
  struct Token {};

 public:
  static constexpr std::string_view kClassName = "DynamicSS";

  // A new set, as creating the class does: its Document is the current
  // drawing (Nothing without a host link or drawing), it is empty, and
  // its companions exist and point back to it.
  static std::shared_ptr<DynamicSS> Create();
  // Use Create(): the companions need the set owned by a shared_ptr.
  explicit DynamicSS(Token) {}

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<DynamicSS>& Members();

  // Name: a free caption for the caller, starting empty.
  const std::string& Name() const { return name_; }
  void SetName(std::string name) { name_ = std::move(name); }

  // Item(index): a number or numeric string selects by 0-based position
  // (outside 0..Count-1 raises 9); anything else is a handle, read with
  // the dictionary's keyed read, which adds an unknown handle as a key
  // with an Empty item before this raises 2411 "Invalid index for
  // Dictionary collection." (no source). Returns the entity.
  Variant Item(const Variant& index);

  // Dimensions / Animation: the companions (made at creation; made again
  // on first use if missing).
  std::shared_ptr<SSDimensions> Dimensions();
  std::shared_ptr<SSAnimation> Animation();

  // Dictionary: the entity table itself, live (made on first use).
  std::shared_ptr<Dictionary> EntityTable();

  // Count: number of entries as an Integer; more than 32,767 raises
  // overflow (6).
  int16_t Count();

  // Add(Objects): adds the elements of a one-dimensional array, in order:
  //   - a nested array: its elements read from index 0 up until a read
  //     fails, each added as one entity;
  //   - a host selection set, host group, DynamicSS or Collection (by exact
  //     type name): its Item(0) .. Item(Count - 1);
  //   - a block definition, model space or paper space: every entity in it;
  //   - anything else: one entity.
  // An entity whose Handle is already a key is skipped. A failure stops the
  // walk and reaches the caller; what was added before it stays. Objects
  // that is not an array raises 13.
  void Add(const Variant& objects);

  // Document: the host document whose entities the set holds. Setting it
  // (even to the same document) empties the set.
  const ObjectRef& Document() const { return document_; }
  void SetDocument(ObjectRef document);
  // DocumentName: the Document's Name (host errors pass through).
  std::string DocumentName() const;

 private:
  // Adds entity under its Handle unless that handle is a key already;
  // True when added.
  bool AddOne(const Variant& entity);

  std::string name_;
  ObjectRef document_;
  std::shared_ptr<Dictionary> entities_;
  std::shared_ptr<SSAnimation> animation_;
  std::shared_ptr<SSDimensions> dimensions_;
};

// The highlight set shared by all of the maker's libraries in the host: the
// object stored under "ZHighlightSS" (no owner) in the host-event object's
// named-object store. When there is none, or it is not a DynamicSS, a new
// DynamicSS is made, stored there and returned. Without a host link the
// store cannot be asked and a new, unshared set is returned.
std::shared_ptr<DynamicSS> SharedHighlightSet();

}  // namespace tovik

#endif  // TOVIK_SELECTION_DYNAMIC_SS_H_
