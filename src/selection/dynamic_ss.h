// DynamicSS: the library's own selection set. An ordered collection of the
// entities of one host document, keyed by each entity's Handle, that lives
// in the caller's memory across calls and never holds an entity twice.
//
// Owns: its entity table (a scripting Dictionary, handle -> entity, binary
// compare) and its two companions (SSDimensions, SSAnimation).
// Borrows: the document and the entities.
//
// The members live in three files by family: membership and conversion
// (dynamic_ss.cpp, which also holds the member table in slot order),
// selection from the host (dynamic_ss_select.cpp) and bulk edits
// (dynamic_ss_edits.cpp).
//
// Walks over the members read the table by position without copying its
// item array per step; removals of many members compact the table once.
#ifndef TOVIK_SELECTION_DYNAMIC_SS_H_
#define TOVIK_SELECTION_DYNAMIC_SS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/dictionary.h"
#include "frame/member_table.h"
#include "selection/ss_companions.h"

namespace tovik {

// The named-object store key under which the shared highlight set lives.
inline constexpr std::string_view kHighlightSetKey = "ZHighlightSS";
// The host selection set every selection goes through.
inline constexpr std::string_view kHostSelectionSetName = "DynamicSS";
// The host group holding the entities the library has hidden.
inline constexpr std::string_view kInvisibleGroupName = "InvisibleSpace";

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
  // For Each walks the member entities in set order.
  std::vector<Variant> Enumerate() override;

  // ------------------------------------------------ membership (dynamic_ss.cpp)

  // Name: a free caption for the caller, starting empty.
  const std::string& Name() const { return name_; }
  void SetName(std::string name) { name_ = std::move(name); }

  // Item(index): a number or numeric string selects by 0-based position
  // (outside 0..Count-1 raises 9); anything else is a handle, read with
  // the dictionary's keyed read, which adds an unknown handle as a key
  // with an Empty item before this raises 2411 "Invalid index for
  // Dictionary collection." (no source). Returns the entity.
  Variant Item(const Variant& index);
  // Replace(Ent1, Ent2): Ent2 takes Ent1's entry and position, keyed by
  // Ent2's handle. Ent1 not a member raises the dictionary's 32811, Ent2
  // already a member its 457; either leaves the set unchanged.
  void Replace(const ObjectRef& ent1, const ObjectRef& ent2);
  // Block_OwnerOf: the block owning the first member (AcadSpace's rule);
  // Nothing for an empty set.
  ObjectRef Block_OwnerOf();

  // Dimensions / Animation: the companions (made at creation; made again
  // on first use if missing).
  std::shared_ptr<SSDimensions> Dimensions();
  std::shared_ptr<SSAnimation> Animation();
  // Dictionary: the entity table itself, live (made on first use).
  std::shared_ptr<Dictionary> EntityTable();

  // IsInCollection(Ent[, LinkAttribAndBlock]): Ent's handle is a key; with
  // LinkAttribAndBlock True also a block reference one of whose attribute
  // references is a member, or an attribute reference whose block
  // reference is a member.
  bool IsInCollection(const ObjectRef& ent, const Variant& link_attrib_and_block);
  // SelectionSet: the host selection set "DynamicSS" of the Document,
  // cleared and refilled with ToArray(); an empty set passes Empty to the
  // host's AddItems, which refuses it.
  ObjectRef SelectionSet();
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
  // RemoveLockedEnts: removes the members on layers locked in the current
  // drawing and reports "k object(s) on locked layer removed." on its
  // command line (nothing when k is 0).
  void RemoveLockedEnts();
  // RemoveTypeName(pattern): removes the members whose type name matches
  // the case-sensitive Like pattern ("IAcadText*").
  void RemoveTypeName(std::string_view pattern);
  // Remove(Objects): the mirror of Add (nested arrays; selection sets,
  // groups and DynamicSS sets as containers; one entity otherwise).
  // Non-members are skipped. A failure stops the walk; what was removed
  // before it stays removed.
  void Remove(const Variant& objects);
  // Clean: removes the entries whose entity is gone (erased, or the Empty
  // item an unknown handle's read left).
  void Clean();
  // Clear: empties the set and deletes the Document's host selection set
  // "DynamicSS" (none is no error).
  void Clear();

  // Document: the host document whose entities the set holds. Setting it
  // (even to the same document) empties the set.
  const ObjectRef& Document() const { return document_; }
  void SetDocument(ObjectRef document);
  // DocumentName: the Document's Name (host errors pass through).
  std::string DocumentName() const;
  // Copy([NoEntityCopy]): a new set of this Document with, in order, the
  // members themselves (NoEntityCopy True) or their host copies.
  std::shared_ptr<DynamicSS> Copy(const Variant& no_entity_copy);
  // ToArray([ConvertAttrib]): the members as an object array 0..Count-1;
  // with ConvertAttrib True an attribute reference is replaced by its block
  // reference (Nothing when that cannot be found). Empty for an empty set.
  Variant ToArray(const Variant& convert_attrib);

  // ------------------------------------- selection (dynamic_ss_select.cpp)
  // Each selecting member clears the set, selects into a fresh host set
  // "DynamicSS" and adds what it holds. Filters pass on unchanged.

  void SelectW(CallArgs& args);  // mode[, Point1, Point2, FilterType, FilterData]
  // previousSS becomes the host's previous selection, which is filtered
  // into the host set "DynamicSS"; this set stays empty.
  void SelectByFilteringFrom(DynamicSS& previous, Variant& filter_type, Variant& filter_data);
  // The point is in world coordinates (converted to the UCS for the host).
  void SelectAtPoint(const Variant& point, Variant& filter_type, Variant& filter_data);
  void SelectByPolygon(int32_t mode, Variant& points, Variant& filter_type,
                       Variant& filter_data);
  void SelectOnScreen(Variant& filter_type, Variant& filter_data);
  // The current drawing's pick-first selection.
  void SelectPickFirstSS();
  // Window polygon (6) / fence (2) along the polyline's vertices.
  void SelectByBoundPline(const ObjectRef& pline, Variant& filter_type, Variant& filter_data);
  void SelectByCrossPline(const ObjectRef& pline, Variant& filter_type, Variant& filter_data);
  // Hands the set to the host's lisp as the pick-first / previous
  // selection through the group "TOVIK_COM" (attribute references as their
  // block references), USERS1 and "(TOVIK_COM) ". Nothing for an empty set.
  void ToPickSet();
  void ToPreviousSS();

  // ----------------------------------------- bulk edits (dynamic_ss_edits.cpp)

  // Highlights (or not) every member, an attribute reference through its
  // block reference, and records it in the shared highlight set. Never
  // raises.
  void Highlight(bool flag);
  // Update of every member; host errors pass through.
  void Update();
  // Property writes on every member; a member that refuses is skipped.
  // Layer and Material first add the name to the Document's table.
  void SetLineType(const Variant& name);
  void SetLayer(const Variant& name);
  void SetTrueColor(const ObjectRef& color);
  void SetMaterial(const Variant& name);
  // Shows or hides every member, keeping the hidden ones in the group
  // "InvisibleSpace". Never raises.
  void Visible(bool flag);
  // Deletes every member from the drawing, then empties the set.
  void EraseAllEntities();
  // IsIntersectWith(obj): a member answers a non-empty array from its
  // member "IsIntersectWith" (a DynamicSS obj: any of its members does).
  bool IsIntersectWith(const Variant& obj);
  // IntersectWith(obj[, Extent]): the members' intersection points with
  // obj (or with each member of a DynamicSS obj) as one flat x, y, z list.
  Variant IntersectWith(const Variant& obj, const Variant& extent);
  // Draw order of all members in the first member's block.
  void MoveToBottom();
  void MoveToTop();

  // ------------------------------------------------ for the companions
  // Member i (0-based). REQUIRES: 0 <= i < size().
  const Variant& At(int32_t i) { return EntityTable()->ItemAt(i); }
  // Number of entries, without Count's 16-bit limit.
  int32_t size() { return EntityTable()->Count(); }

 private:
  // Adds entity under its Handle unless that handle is a key already;
  // True when added.
  bool AddOne(const Variant& entity);
  // Removes the entries whose handles are listed (one pass).
  void RemoveHandles(std::vector<std::string> handles);
  // The Document's host selection set "DynamicSS", made when missing.
  ObjectRef HostSelectionSet();
  // Clear, a fresh host set, then `select` on it, then its entities added.
  template <class Select>
  void SelectThrough(Select&& select);
  void HandToHost(std::string_view mode);
  void MoveInDrawOrder(std::string_view member);

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

// The type name of the entity held by `value` matches `pattern`
// (case-sensitive Like).
bool TypeNameLike(const Variant& value, std::string_view pattern);

}  // namespace tovik

#endif  // TOVIK_SELECTION_DYNAMIC_SS_H_
