#include "frame/member_table.h"

#include <algorithm>
#include <cstring>

#include "frame/runtime_text.h"

namespace tovik {

AutomationError DispatchFailure(CallFailure failure) {
  switch (failure) {
    case CallFailure::kTooFewArgs: return errors::ArgumentNotOptional();
    case CallFailure::kTooManyArgs: return errors::WrongArgumentCount();
    case CallFailure::kUnknownMember:
    case CallFailure::kNotReadable:
    case CallFailure::kNotWritable:
      break;
  }
  return errors::NotSupported();
}

std::string MemberKey(std::string_view name) {
  bool ascii = true;
  for (char c : name) {
    if (static_cast<unsigned char>(c) >= 0x80) {
      ascii = false;
      break;
    }
  }
  if (!ascii) return FoldCase(name);
  std::string key(name);
  for (char& c : key) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return key;
}

namespace {

constexpr uint64_t kHighBits = 0x8080808080808080ull;

// Up to 8 bytes of `bytes` from `at`, zero-padded, as one word.
uint64_t WordAt(std::string_view bytes, size_t at) {
  uint64_t word = 0;
  if (at + 8 <= bytes.size()) {
    std::memcpy(&word, bytes.data() + at, 8);  // one load
  } else {
    char tail[8] = {};
    for (size_t i = at; i < bytes.size(); ++i) tail[i - at] = bytes[i];
    std::memcpy(&word, tail, 8);
  }
  return word;
}

// A word's ASCII capitals in lower case, eight bytes at once. REQUIRES:
// every byte below 0x80.
uint64_t LowerAscii(uint64_t word) {
  uint64_t at_least_a = word + 0x3F3F3F3F3F3F3F3Full;   // high bit: byte >= 'A'
  uint64_t beyond_z = word + 0x2525252525252525ull;     // high bit: byte > 'Z'
  return word | ((at_least_a & ~beyond_z & kHighBits) >> 2);
}

// A folded key's hash, a word at a time: member names are short, and one
// hash serves every table asked.
uint64_t HashKey(std::string_view key) {
  uint64_t h = key.size();
  for (size_t at = 0; at < key.size(); at += 8) {
    h = (h ^ WordAt(key, at)) * 0x9E3779B97F4A7C15ull;
    h ^= h >> 29;
  }
  return h | 1;  // never 0, the mark of a free slot's hash
}

}  // namespace

FoldedName::FoldedName(std::string_view name) {
  bool ascii = name.size() <= sizeof(buffer_);
  for (size_t at = 0; ascii && at < name.size(); at += 8) {
    uint64_t word = WordAt(name, at);
    if ((word & kHighBits) != 0) {
      ascii = false;
      break;
    }
    word = LowerAscii(word);
    // Whole words: the buffer holds six, and the bytes past the name are
    // not part of the key.
    std::memcpy(buffer_ + at, &word, 8);
  }
  if (ascii) {
    key_ = std::string_view(buffer_, name.size());
  } else {
    folded_ = MemberKey(name);
    key_ = folded_;
  }
  hash_ = HashKey(key_);
}

DispId MemberIndex::Find(std::string_view name) const { return Find(FoldedName(name)); }

DispId MemberIndex::Find(const FoldedName& name) const {
  if (slots_.empty()) return kDispIdUnknown;
  size_t mask = slots_.size() - 1;
  for (size_t i = name.hash() & mask;; i = (i + 1) & mask) {
    const Slot& slot = slots_[i];
    if (slot.id == 0) return kDispIdUnknown;
    if (slot.hash == name.hash() && keys_[static_cast<size_t>(slot.id) - 1] == name.key()) {
      return slot.id;
    }
  }
}

void MemberIndex::Grow() {
  std::vector<Slot> old = std::move(slots_);
  slots_.assign(std::max<size_t>(16, old.size() * 2), Slot{});
  size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.id == 0) continue;
    size_t i = slot.hash & mask;
    while (slots_[i].id != 0) i = (i + 1) & mask;
    slots_[i] = slot;
  }
}

std::string_view MemberIndex::NameOf(DispId id) const {
  if (id <= 0 || static_cast<size_t>(id) > names_.size()) return {};
  return names_[static_cast<size_t>(id) - 1];
}

DispId MemberIndex::Add(std::string_view name) {
  DispId id = static_cast<DispId>(names_.size() + 1);
  names_.emplace_back(name);
  keys_.push_back(MemberKey(name));
  // A name registered twice keeps its first id (the interface order).
  FoldedName folded(name);
  if (Find(folded) != kDispIdUnknown) return id;
  if ((keys_.size() + 1) * 2 > slots_.size()) Grow();
  size_t mask = slots_.size() - 1;
  size_t i = folded.hash() & mask;
  while (slots_[i].id != 0) i = (i + 1) & mask;
  slots_[i] = Slot{folded.hash(), id};
  return id;
}

}  // namespace tovik
