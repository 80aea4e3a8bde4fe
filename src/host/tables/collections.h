// The document's collection objects: Blocks, Layers, TextStyles,
// Linetypes, Materials, RegisteredApplications, DimStyles, Layouts, Groups,
// Dictionaries. One object each per document; they hold no data of their
// own and read the document's tables.
#ifndef TOVIK_HOST_TABLES_COLLECTIONS_H_
#define TOVIK_HOST_TABLES_COLLECTIONS_H_

#include <string_view>

#include "frame/member_table.h"

namespace tovik::host {

class Document;

enum class CollectionKind : uint8_t {
  kBlocks, kLayers, kTextStyles, kLinetypes, kMaterials, kRegApps, kDimStyles,
  kLayouts, kGroups, kDictionaries,
};

class TableCollection : public DispatchObject<TableCollection> {
 public:
  TableCollection(Document* doc, CollectionKind kind) : doc_(doc), kind_(kind) {}
  std::string_view TypeName() const override;
  static const MemberTable<TableCollection>& Members();
  Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) override;
  std::vector<Variant> Enumerate() override;

  Document* document() const { return doc_; }
  CollectionKind kind() const { return kind_; }

 private:
  Document* doc_;
  CollectionKind kind_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_TABLES_COLLECTIONS_H_
