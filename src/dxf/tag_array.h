// The tags of a whole file in one block of memory.
//
// Unlike a vector, the block can be reserved for the most tags a file of its
// size can hold and filled at two places at once (the two halves of a file
// tokenized in parallel): slots are constructed as they are written, so the
// pages past the last tag are never touched and never committed.
#ifndef TOVIK_DXF_TAG_ARRAY_H_
#define TOVIK_DXF_TAG_ARRAY_H_

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "dxf/tag.h"

namespace tovik::dxf {

static_assert(std::is_trivially_copyable_v<Tag> && std::is_trivially_destructible_v<Tag>,
              "tags are moved with memcpy and dropped without destruction");

class TagArray {
 public:
  TagArray() = default;
  TagArray(TagArray&& other) noexcept { Swap(other); }
  TagArray& operator=(TagArray&& other) noexcept {
    TagArray(std::move(other)).Swap(*this);
    return *this;
  }
  ~TagArray() { ::operator delete(data_, std::align_val_t{alignof(Tag)}); }

  size_t size() const { return size_; }
  size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  Tag* data() { return data_; }
  const Tag* data() const { return data_; }
  Tag& operator[](size_t i) { return data_[i]; }
  const Tag& operator[](size_t i) const { return data_[i]; }
  Tag* begin() { return data_; }
  Tag* end() { return data_ + size_; }
  const Tag* begin() const { return data_; }
  const Tag* end() const { return data_ + size_; }

  // Makes room for `count` tags in all; existing tags are kept.
  void reserve(size_t count) {
    if (count <= capacity_) return;
    Tag* grown = static_cast<Tag*>(::operator new(count * sizeof(Tag), std::align_val_t{alignof(Tag)}));
    if (size_ != 0) std::memcpy(static_cast<void*>(grown), data_, size_ * sizeof(Tag));
    ::operator delete(data_, std::align_val_t{alignof(Tag)});
    data_ = grown;
    capacity_ = count;
  }

  // Appends a default tag, growing the block when full.
  Tag& emplace_back() {
    if (size_ == capacity_) reserve(capacity_ < 16 ? 16 : capacity_ * 2);
    return *new (data_ + size_++) Tag();
  }

  // Constructs a default tag at `index`, which may lie past size() (a
  // second writer filling a later part of the block).
  // REQUIRES: index < capacity().
  Tag& ConstructAt(size_t index) { return *new (data_ + index) Tag(); }

  // Sets the count of tags. REQUIRES: every slot below `count` was written.
  void SetSize(size_t count) { size_ = count; }

 private:
  void Swap(TagArray& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

  Tag* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_TAG_ARRAY_H_
