// The runtime's own Collection: a 1-based ordered list of items, each with
// an optional String key. Keys compare as text (case-insensitively, non-
// ASCII letters too) and are never given back.
#ifndef TOVIK_FRAME_COLLECTION_H_
#define TOVIK_FRAME_COLLECTION_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/member_table.h"
#include "frame/variant.h"

namespace tovik {

class Collection : public DispatchObject<Collection> {
 public:
  static constexpr std::string_view kClassName = "Collection";

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<Collection>& Members();
  // For Each walks the items in order.
  std::vector<Variant> Enumerate() override;

  // Add item[, key][, before][, after]. key, when given (not Missing), must
  // be a String (13 otherwise) not already used (457). before and after
  // name an existing item by 1-based index or by key; giving both raises 5.
  // A position outside 1..Count raises 9, an unknown key 5.
  void Add(Variant item, const Variant& key = Variant::Missing(),
           const Variant& before = Variant::Missing(),
           const Variant& after = Variant::Missing());
  // Item(index): a number selects by 1-based position (outside 1..Count:
  // 9 "Subscript out of range"); a String by key (unknown: 5 "Invalid
  // procedure call or argument"); anything else raises 13.
  const Variant& Item(const Variant& index) const;
  // Removes the item that index selects, with Item's errors.
  void Remove(const Variant& index);
  // Number of items.
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }

 private:
  struct Entry {
    Variant item;
    std::optional<std::string> key;
  };
  // 0-based position that index selects; raises as Item does.
  size_t PositionOf(const Variant& index) const;

  std::vector<Entry> entries_;
};

}  // namespace tovik

#endif  // TOVIK_FRAME_COLLECTION_H_
