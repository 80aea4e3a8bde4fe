// A flat map keyed by pointers or integers, for the DXF code's maps with an
// entry per record (record -> live object and back, handles seen): the
// entries sit in one deque in the order they were first inserted, found
// through an open-addressing table of 32-bit indexes. A node-based hash map
// allocates one node per entry; with a few hundred thousand records that
// allocation and its pointer chasing were a fifth of a load.
#ifndef TOVIK_DXF_FLAT_MAP_H_
#define TOVIK_DXF_FLAT_MAP_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <type_traits>
#include <utility>
#include <vector>

namespace tovik::dxf {

// The subset of std::unordered_map the loader and writer use: find, count,
// at, operator[], try_emplace, iteration (in insertion order), reserve.
// There is no erase: a binding, once made, lasts as long as its drawing.
// References to values stay valid as the map grows (the deque never moves
// its elements).
template <class Key, class Value>
class FlatMap {
  static_assert(std::is_pointer_v<Key> || std::is_integral_v<Key>,
                "FlatMap is keyed by pointers or integers");

 public:
  using value_type = std::pair<const Key, Value>;
  using iterator = typename std::deque<value_type>::iterator;
  using const_iterator = typename std::deque<value_type>::const_iterator;

  iterator begin() { return entries_.begin(); }
  iterator end() { return entries_.end(); }
  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }
  size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }

  // Makes room for `count` entries without growing the index again.
  void reserve(size_t count) {
    if (count * 2 > slots_.size()) Rehash(count * 2);
  }

  // Returns the entry of `key`, or end().
  iterator find(Key key) {
    uint32_t index = Lookup(key);
    return index == kEmpty ? entries_.end() : entries_.begin() + index;
  }
  const_iterator find(Key key) const {
    uint32_t index = Lookup(key);
    return index == kEmpty ? entries_.end() : entries_.begin() + index;
  }
  // Returns 1 when `key` has an entry, else 0.
  size_t count(Key key) const { return Lookup(key) == kEmpty ? 0 : 1; }
  // Returns the value of `key`. REQUIRES: `key` has an entry.
  const Value& at(Key key) const { return entries_[Lookup(key)].second; }
  // Returns the value of `key`, inserting a value-initialised one first
  // when `key` has none.
  Value& operator[](Key key) { return try_emplace(key, Value{}).first->second; }
  // Inserts (`key`, `value`) unless `key` has an entry. Returns the entry of
  // `key` and whether it was inserted now.
  std::pair<iterator, bool> try_emplace(Key key, Value value) {
    // Grow at half full: linear probing stays short below that.
    if ((entries_.size() + 1) * 2 > slots_.size()) Rehash(slots_.empty() ? 16 : slots_.size() * 2);
    size_t mask = slots_.size() - 1;
    for (size_t slot = Hash(key) & mask;; slot = (slot + 1) & mask) {
      uint32_t index = slots_[slot];
      if (index == kEmpty) {
        slots_[slot] = static_cast<uint32_t>(entries_.size());
        entries_.emplace_back(key, std::move(value));
        return {entries_.end() - 1, true};
      }
      if (entries_[index].first == key) return {entries_.begin() + index, false};
    }
  }

 private:
  static constexpr uint32_t kEmpty = 0xFFFFFFFFu;

  // Spreads the key over the word (Fibonacci hashing); objects and records
  // are at least 8-byte aligned, so a pointer's three zero bits go first.
  static size_t Hash(Key key) {
    uint64_t bits;
    if constexpr (std::is_pointer_v<Key>) {
      bits = static_cast<uint64_t>(reinterpret_cast<std::uintptr_t>(key) >> 3);
    } else {
      bits = static_cast<uint64_t>(key);
    }
    return static_cast<size_t>((bits * 0x9E3779B97F4A7C15ull) >> 20);
  }

  uint32_t Lookup(Key key) const {
    if (slots_.empty()) return kEmpty;
    size_t mask = slots_.size() - 1;
    for (size_t slot = Hash(key) & mask;; slot = (slot + 1) & mask) {
      uint32_t index = slots_[slot];
      if (index == kEmpty || entries_[index].first == key) return index;
    }
  }

  // Rebuilds the index with at least `minimum` slots (a power of two).
  void Rehash(size_t minimum) {
    size_t size = 16;
    while (size < minimum) size *= 2;
    slots_.assign(size, kEmpty);
    size_t mask = size - 1;
    for (size_t index = 0; index < entries_.size(); ++index) {
      size_t slot = Hash(entries_[index].first) & mask;
      while (slots_[slot] != kEmpty) slot = (slot + 1) & mask;
      slots_[slot] = static_cast<uint32_t>(index);
    }
  }

  std::deque<value_type> entries_;
  std::vector<uint32_t> slots_;
};

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_FLAT_MAP_H_
