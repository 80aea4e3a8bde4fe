// A document's handle -> object index: open addressing with linear probing
// in one array of (handle, object) pairs, erase by shifting the run back.
//
// A drawing read from a file registers an object per record; a node-based
// hash map spent an allocation, a modulo and a pointer chase on each, and a
// tenth of a load in rehashing.
#ifndef TOVIK_HOST_CORE_HANDLE_INDEX_H_
#define TOVIK_HOST_CORE_HANDLE_INDEX_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tovik::host {

class DbObject;

class HandleIndex {
 public:
  // Makes room for `count` more handles without growing again.
  void Reserve(size_t count) {
    if ((size_ + count) * 2 > slots_.size()) Grow((size_ + count) * 2);
  }

  size_t size() const { return size_; }

  // Returns the object of `handle`, or nullptr. Handle 0 is never held.
  DbObject* Find(uint64_t handle) const {
    if (slots_.empty() || handle == 0) return nullptr;
    size_t mask = slots_.size() - 1;
    for (size_t i = Hash(handle) & mask;; i = (i + 1) & mask) {
      if (slots_[i].handle == handle) return slots_[i].object;
      if (slots_[i].handle == 0) return nullptr;
    }
  }

  // Adds (`handle`, `object`). REQUIRES: `handle` != 0 and not held.
  void Insert(uint64_t handle, DbObject* object) {
    if ((size_ + 1) * 2 > slots_.size()) Grow(slots_.empty() ? 64 : slots_.size() * 2);
    size_t mask = slots_.size() - 1;
    size_t i = Hash(handle) & mask;
    while (slots_[i].handle != 0) i = (i + 1) & mask;
    slots_[i] = {handle, object};
    ++size_;
  }

  // Removes `handle` when held.
  void Erase(uint64_t handle) {
    if (slots_.empty() || handle == 0) return;
    size_t mask = slots_.size() - 1;
    size_t i = Hash(handle) & mask;
    while (slots_[i].handle != handle) {
      if (slots_[i].handle == 0) return;
      i = (i + 1) & mask;
    }
    // Backward-shift deletion: pull later entries of the run into the hole
    // when their home slot does not lie cyclically between the hole and them.
    size_t hole = i;
    for (size_t j = (i + 1) & mask; slots_[j].handle != 0; j = (j + 1) & mask) {
      size_t home = Hash(slots_[j].handle) & mask;
      bool stays = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
      if (!stays) {
        slots_[hole] = slots_[j];
        hole = j;
      }
    }
    slots_[hole] = {};
    --size_;
  }

 private:
  struct Slot {
    uint64_t handle = 0;
    DbObject* object = nullptr;
  };

  // Handles are mostly consecutive numbers, registered in order: runs of
  // 64 consecutive handles take consecutive slots (a few cache lines rather
  // than a miss each), and the runs are spread by Fibonacci hashing so that
  // strided handles do not pile up.
  static size_t Hash(uint64_t handle) {
    uint64_t run = ((handle >> 6) * 0x9E3779B97F4A7C15ull) >> 24;
    return static_cast<size_t>((run << 6) | (handle & 63));
  }

  void Grow(size_t minimum) {
    size_t size = 64;
    while (size < minimum) size *= 2;
    std::vector<Slot> old(size);
    old.swap(slots_);
    size_t mask = size - 1;
    for (const Slot& s : old) {
      if (s.handle == 0) continue;
      size_t i = Hash(s.handle) & mask;
      while (slots_[i].handle != 0) i = (i + 1) & mask;
      slots_[i] = s;
    }
  }

  std::vector<Slot> slots_;
  size_t size_ = 0;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_HANDLE_INDEX_H_
