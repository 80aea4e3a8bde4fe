#include "frame/dictionary.h"

#include <algorithm>
#include <functional>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_text.h"

namespace tovik {

size_t Dictionary::KeyIdHash::operator()(const KeyId& id) const {
  size_t seed = static_cast<size_t>(id.kind);
  switch (id.kind) {
    case KeyId::Kind::kNumber:
      return seed ^ (std::hash<double>()(id.number) << 1);
    case KeyId::Kind::kString:
      return seed ^ (std::hash<std::string>()(id.text) << 1);
    case KeyId::Kind::kObject:
      return seed ^ (std::hash<const void*>()(id.object) << 1);
    default:
      return seed;
  }
}

Dictionary::KeyId Dictionary::IdOf(const Variant& key) const {
  KeyId id;
  if (key.IsArray()) throw errors::TypeMismatch();
  if (key.IsObject()) {
    id.kind = KeyId::Kind::kObject;
    id.object = key.RawObject().get();
  } else if (key.IsString()) {
    id.kind = KeyId::Kind::kString;
    id.text = compare_mode_ == kBinaryCompare ? key.RawString()
                                              : FoldCase(key.RawString());
  } else if (key.IsNumber()) {
    id.kind = KeyId::Kind::kNumber;
    // +0 and -0 are one key.
    id.number = NumberOf(key) + 0.0;
  } else if (key.IsNull()) {
    id.kind = KeyId::Kind::kNull;
  } else if (key.IsError()) {
    throw errors::TypeMismatch();
  }
  return id;
}

int32_t Dictionary::Find(const KeyId& id) const {
  auto it = index_.find(id);
  return it == index_.end() ? -1 : static_cast<int32_t>(it->second);
}

void Dictionary::Reindex(size_t from) {
  for (size_t i = from; i < entries_.size(); ++i) {
    index_[IdOf(entries_[i].key)] = i;
  }
}

void Dictionary::Add(const Variant& key, Variant item) {
  KeyId id = IdOf(key);
  if (Find(id) >= 0) throw errors::DuplicateKey();
  index_.emplace(std::move(id), entries_.size());
  entries_.push_back(Entry{key, std::move(item)});
}

bool Dictionary::Exists(const Variant& key) const { return Find(IdOf(key)) >= 0; }

Variant& Dictionary::Item(const Variant& key) {
  KeyId id = IdOf(key);
  int32_t pos = Find(id);
  if (pos < 0) {
    pos = static_cast<int32_t>(entries_.size());
    index_.emplace(std::move(id), entries_.size());
    entries_.push_back(Entry{key, Variant()});
  }
  return entries_[static_cast<size_t>(pos)].item;
}

void Dictionary::SetItem(const Variant& key, Variant item) {
  Item(key) = std::move(item);
}

void Dictionary::Rename(const Variant& old_key, const Variant& new_key) {
  KeyId old_id = IdOf(old_key);
  int32_t pos = Find(old_id);
  if (pos < 0) throw errors::Runtime(kErrElementNotFound);
  KeyId new_id = IdOf(new_key);
  if (Find(new_id) >= 0) throw errors::DuplicateKey();
  index_.erase(old_id);
  index_.emplace(std::move(new_id), static_cast<size_t>(pos));
  entries_[static_cast<size_t>(pos)].key = new_key;
}

void Dictionary::Remove(const Variant& key) {
  KeyId id = IdOf(key);
  int32_t pos = Find(id);
  if (pos < 0) throw errors::Runtime(kErrElementNotFound);
  index_.erase(id);
  entries_.erase(entries_.begin() + pos);
  Reindex(static_cast<size_t>(pos));
}

int32_t Dictionary::RemoveWhere(
    const std::function<bool(const Variant& key, const Variant& item)>& remove) {
  size_t kept = 0;
  size_t first_moved = entries_.size();
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (remove(entries_[i].key, entries_[i].item)) {
      index_.erase(IdOf(entries_[i].key));
      first_moved = std::min(first_moved, i);
      continue;
    }
    if (kept != i) entries_[kept] = std::move(entries_[i]);
    ++kept;
  }
  auto removed = static_cast<int32_t>(entries_.size() - kept);
  entries_.resize(kept);
  Reindex(first_moved);
  return removed;
}

void Dictionary::RemoveAll() {
  entries_.clear();
  index_.clear();
}

SafeArray Dictionary::Keys() const {
  std::vector<Variant> keys;
  keys.reserve(entries_.size());
  for (const Entry& e : entries_) keys.push_back(e.key);
  return SafeArray::OfVariants(std::move(keys));
}

SafeArray Dictionary::Items() const {
  std::vector<Variant> items;
  items.reserve(entries_.size());
  for (const Entry& e : entries_) items.push_back(e.item);
  return SafeArray::OfVariants(std::move(items));
}

void Dictionary::SetCompareMode(int32_t mode) {
  if (mode < 0 || !entries_.empty()) throw errors::InvalidCall();
  compare_mode_ = mode;
}

std::vector<Variant> Dictionary::Enumerate() {
  std::vector<Variant> keys;
  keys.reserve(entries_.size());
  for (const Entry& e : entries_) keys.push_back(e.key);
  return keys;
}

// Members in the order of the runtime's IDictionary interface.
const MemberTable<Dictionary>& Dictionary::Members() {
  static const MemberTable<Dictionary> table = [] {
    MemberTable<Dictionary> t;
    auto assign_item = [](Dictionary& d, CallArgs& a, Variant& v) {
      d.SetItem(a[0], v);
    };
    t.Property(
        "Item", [](Dictionary& d, CallArgs& a) { return d.Item(a[0]); },
        assign_item, assign_item, 1, 1);
    t.Default("Item");
    t.Method(
        "Add",
        [](Dictionary& d, CallArgs& a) {
          d.Add(a[0], a[1]);
          return Variant();
        },
        2, 2);
    t.Property("Count", [](Dictionary& d, CallArgs&) { return Variant(d.Count()); });
    t.Method(
        "Exists",
        [](Dictionary& d, CallArgs& a) { return Variant(d.Exists(a[0])); }, 1, 1);
    t.Method("Items", [](Dictionary& d, CallArgs&) { return Variant(d.Items()); });
    // Key is write-only: Key(old) = new.
    t.Property(
        "Key", nullptr,
        [](Dictionary& d, CallArgs& a, Variant& v) { d.Rename(a[0], v); }, nullptr,
        1, 1);
    t.Method("Keys", [](Dictionary& d, CallArgs&) { return Variant(d.Keys()); });
    t.Method(
        "Remove",
        [](Dictionary& d, CallArgs& a) {
          d.Remove(a[0]);
          return Variant();
        },
        1, 1);
    t.Method("RemoveAll", [](Dictionary& d, CallArgs&) {
      d.RemoveAll();
      return Variant();
    });
    t.Property(
        "CompareMode",
        [](Dictionary& d, CallArgs&) { return Variant(d.CompareMode()); },
        [](Dictionary& d, CallArgs&, Variant& v) { d.SetCompareMode(CLng(v)); });
    return t;
  }();
  return table;
}

}  // namespace tovik
