// The scripting runtime's Dictionary (Scripting.Dictionary), as callers of
// the library receive it (DynamicSS.Dictionary hands its entity table out
// as it is).
//
// Keys keep insertion order. A key is a number, a string, an object
// (compared by identity), Empty or Null; numbers compare by value whatever
// their type (1, 1# and CLng(1) are one key), and a number never equals a
// string (1 and "1" are two keys). Strings compare binary by default; in
// text compare mode they compare case-insensitively, non-ASCII letters too
// ("Ёлка" and "ёЛКА" are one key). The compare mode can change only while
// the dictionary is empty.
//
// Quirk kept from the runtime: reading Item of a missing key adds the key
// with an Empty item.
#ifndef TOVIK_FRAME_DICTIONARY_H_
#define TOVIK_FRAME_DICTIONARY_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "frame/member_table.h"
#include "frame/variant.h"

namespace tovik {

class Dictionary : public DispatchObject<Dictionary> {
 public:
  static constexpr std::string_view kClassName = "Dictionary";

  // Values of CompareMode (the runtime's CompareMethod).
  enum CompareMethod : int32_t {
    kBinaryCompare = 0,
    kTextCompare = 1,
    kDatabaseCompare = 2,  // compares as text compare does
  };

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<Dictionary>& Members();
  // For Each walks the keys, in insertion order.
  std::vector<Variant> Enumerate() override;

  // Adds item under key. Raises 457 when the key exists and 13 when the
  // key is an array.
  void Add(const Variant& key, Variant item);
  // True when key is present.
  bool Exists(const Variant& key) const;
  // Number of entries.
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }
  // The item stored under key, by reference; a missing key is added first
  // with an Empty item (the runtime's keyed read does the same).
  Variant& Item(const Variant& key);
  // Item(key) = item: replaces the item, or adds the key when missing.
  void SetItem(const Variant& key, Variant item);
  // Key(old_key) = new_key: renames in place, keeping the position and the
  // item. Raises 32811 "Element not found" when old_key is missing and 457
  // when new_key is already a key.
  void Rename(const Variant& old_key, const Variant& new_key);
  // Removes key and its item. Raises 32811 "Element not found" when absent.
  void Remove(const Variant& key);
  // Removes every entry for which remove(key, item) is true, in one pass
  // over the table (the rest keep their order); returns how many went.
  // Removing k of n entries one by one costs O(k n); this costs O(n).
  int32_t RemoveWhere(const std::function<bool(const Variant& key, const Variant& item)>& remove);
  // Removes every entry.
  void RemoveAll();
  // Keys() and Items(): 0-based Variant arrays in insertion order (an empty
  // dictionary gives bounds 0..-1).
  SafeArray Keys() const;
  SafeArray Items() const;
  // The entry at 0-based position i. REQUIRES: 0 <= i < Count().
  const Variant& KeyAt(int32_t i) const { return entries_[static_cast<size_t>(i)].key; }
  const Variant& ItemAt(int32_t i) const { return entries_[static_cast<size_t>(i)].item; }

  // CompareMode: 0 binary, 1 text, 2 database (text); other non-negative
  // values act as text compare. Setting it on a dictionary that holds
  // entries, or to a negative value, raises 5.
  int32_t CompareMode() const { return compare_mode_; }
  void SetCompareMode(int32_t mode);

 private:
  // A key reduced to what identifies it under the current compare mode.
  struct KeyId {
    enum class Kind : uint8_t { kEmpty, kNull, kNumber, kString, kObject };
    Kind kind = Kind::kEmpty;
    double number = 0.0;
    std::string text;  // folded in text compare mode
    const void* object = nullptr;
    bool operator==(const KeyId& other) const = default;
  };
  struct KeyIdHash {
    size_t operator()(const KeyId& id) const;
  };
  struct Entry {
    Variant key;
    Variant item;
  };

  KeyId IdOf(const Variant& key) const;
  // Position of key, or -1.
  int32_t Find(const KeyId& id) const;
  void Reindex(size_t from);

  std::vector<Entry> entries_;
  std::unordered_map<KeyId, size_t, KeyIdHash> index_;
  int32_t compare_mode_ = kBinaryCompare;
};

}  // namespace tovik

#endif  // TOVIK_FRAME_DICTIONARY_H_
