// Selection sets (IAcadSelectionSet) and the document's SelectionSets
// collection. Sets are not database objects: they are not saved and not
// undone. Names compare case-sensitively.
#ifndef TOVIK_HOST_SELECTION_SELECTION_SET_H_
#define TOVIK_HOST_SELECTION_SELECTION_SET_H_

#include <memory>
#include <string>
#include <vector>

#include "frame/member_table.h"

namespace tovik::host {

class Document;
class Entity;

// At most this many named sets per document.
inline constexpr size_t kMaxSelectionSets = 128;

class SelectionSet : public DispatchObject<SelectionSet> {
 public:
  SelectionSet(Document* doc, std::string name) : doc_(doc), name_(std::move(name)) {}
  std::string_view TypeName() const override { return "IAcadSelectionSet"; }
  static const MemberTable<SelectionSet>& Members();
  Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) override;
  std::vector<Variant> Enumerate() override;

  const std::string& name() const { return name_; }
  Document* document() const { return doc_; }
  // The live members in order.
  std::vector<std::shared_ptr<Entity>> Live() const;
  // Adds `entity` unless it is already a member.
  void Add(std::shared_ptr<Entity> entity);
  void Clear() { members_.clear(); }
  // Detaches the set from its collection (Delete).
  void MarkDeleted() { deleted_ = true; }
  bool highlighted() const { return highlighted_; }

 private:
  Document* doc_;
  std::string name_;
  std::vector<std::shared_ptr<Entity>> members_;
  bool deleted_ = false;
  bool highlighted_ = false;
};

class SelectionSets : public DispatchObject<SelectionSets> {
 public:
  explicit SelectionSets(Document* doc) : doc_(doc) {}
  std::string_view TypeName() const override { return "IAcadSelectionSets"; }
  static const MemberTable<SelectionSets>& Members();
  std::vector<Variant> Enumerate() override;

 private:
  Document* doc_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_SELECTION_SELECTION_SET_H_
