#include "frame/collection.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_text.h"

namespace tovik {

size_t Collection::PositionOf(const Variant& index_in) const {
  Variant index = index_in.IsObject() ? ValueOf(index_in) : index_in;
  if (index.IsString()) {
    for (size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].key && CaseInsensitiveEqual(*entries_[i].key, index.RawString())) {
        return i;
      }
    }
    throw errors::InvalidCall();
  }
  if (!index.IsNumber()) throw errors::TypeMismatch();
  int32_t position = CLng(index);
  if (position < 1 || position > Count()) throw errors::SubscriptOutOfRange();
  return static_cast<size_t>(position - 1);
}

void Collection::Add(Variant item, const Variant& key, const Variant& before,
                     const Variant& after) {
  std::optional<std::string> new_key;
  if (!key.IsMissing()) {
    if (!key.IsString()) throw errors::TypeMismatch();
    for (const Entry& e : entries_) {
      if (e.key && CaseInsensitiveEqual(*e.key, key.RawString())) {
        throw errors::DuplicateKey();
      }
    }
    new_key = key.RawString();
  }
  bool has_before = !before.IsMissing();
  bool has_after = !after.IsMissing();
  if (has_before && has_after) throw errors::InvalidCall();
  size_t at = entries_.size();
  if (has_before) at = PositionOf(before);
  if (has_after) at = PositionOf(after) + 1;
  entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(at),
                  Entry{std::move(item), std::move(new_key)});
}

const Variant& Collection::Item(const Variant& index) const {
  return entries_[PositionOf(index)].item;
}

void Collection::Remove(const Variant& index) {
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(PositionOf(index)));
}

std::vector<Variant> Collection::Enumerate() {
  std::vector<Variant> items;
  items.reserve(entries_.size());
  for (const Entry& e : entries_) items.push_back(e.item);
  return items;
}

// Members in the order of the runtime's Collection interface.
const MemberTable<Collection>& Collection::Members() {
  static const MemberTable<Collection> table = [] {
    MemberTable<Collection> t;
    t.Method(
        "Item", [](Collection& c, CallArgs& a) { return c.Item(a[0]); }, 1, 1);
    t.Default("Item");
    t.Method(
        "Add",
        [](Collection& c, CallArgs& a) {
          c.Add(a[0], a[1], a[2], a[3]);
          return Variant();
        },
        1, 4);
    t.Property("Count", [](Collection& c, CallArgs&) { return Variant(c.Count()); });
    t.Method(
        "Remove",
        [](Collection& c, CallArgs& a) {
          c.Remove(a[0]);
          return Variant();
        },
        1, 1);
    return t;
  }();
  return table;
}

}  // namespace tovik
