#include "dxf/tokenizer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <exception>
#include <string>
#include <thread>

namespace tovik::dxf {
namespace {

static_assert(std::endian::native == std::endian::little,
              "binary DXF values are read with memcpy from little-endian data");

constexpr std::uint64_t kMaxInputSize = std::numeric_limits<std::uint32_t>::max();

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

bool IsHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// Parses a decimal integer with an optional sign; false on anything else.
bool ParseInteger(std::string_view text, std::int64_t* value) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty() || text.front() == '+') return false;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return error == std::errc() && end == text.data() + text.size();
}

bool ParseDouble(std::string_view text, double* value) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty() || text.front() == '+') return false;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value,
                                      std::chars_format::general);
  return error == std::errc() && end == text.data() + text.size() && std::isfinite(*value);
}

bool ParseHandle(std::string_view text, std::int64_t* value) {
  if (text.empty() || text.size() > 16) return false;
  std::uint64_t handle = 0;
  for (char c : text) {
    if (!IsHex(c)) return false;
    int digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
    handle = (handle << 4) | static_cast<std::uint64_t>(digit);
  }
  *value = static_cast<std::int64_t>(handle);
  return true;
}

bool InRange(ValueKind kind, std::int64_t value) {
  switch (kind) {
    case ValueKind::kInt16: return value >= -32768 && value <= 32767;
    case ValueKind::kInt32: return value >= INT32_MIN && value <= INT32_MAX;
    case ValueKind::kBool: return value >= 0 && value <= 255;
    default: return true;
  }
}

class AsciiReader {
 public:
  // Reads the tags of [begin, stop) into `tags` from slot `base` on; the
  // first line there is line `first_line` + 1 of the file, which ends at
  // `file_end`. A reader that does not end at the file's end (`stop` <
  // `file_end`) stops when it reaches `stop`: cleanly after a value, or
  // before a group code whose value lies past `stop` (see misaligned()).
  // `fixed`: `tags` has room for every tag this reader can find and must
  // not be reallocated (another reader fills a later part of it).
  AsciiReader(const char* begin, const char* stop, const char* file_end, std::uint32_t first_line,
              std::string_view file_name, TagArray* tags, std::size_t base, bool fixed)
      : p_(begin), end_(stop), file_end_(file_end), file_name_(file_name), tags_(tags),
        base_(base), fixed_(fixed), line_(first_line) {}

  // Returns true when the reader stopped at "0 EOF" (which it includes).
  bool Run() {
    while (p_ < end_) {
      const char* code_start = p_;
      std::uint32_t code_line = line_ + 1;
      std::string_view code_text = NextLine();
      std::string_view trimmed = Trim(code_text);
      if (trimmed.empty() && OnlyWhitespaceLeft()) {  // blank lines at the end
        p_ = file_end_;
        return false;
      }
      int code = ParseCode(trimmed, code_line);
      if (p_ >= end_) {
        if (end_ < file_end_) {
          // The value is past this reader's part: the part was cut between
          // a group code and its value.
          p_ = code_start;
          --line_;
          misaligned_ = true;
          return false;
        }
        Fail(code_line, code, "the file ends after the group code, the value is missing");
      }
      std::uint32_t value_line = line_ + 1;
      Tag* tag = NewTag();
      if (tag == nullptr) {
        misaligned_ = true;
        return false;
      }
      tag->code = static_cast<std::int16_t>(code);
      tag->position = code_line;
      tag->text = NextLine();
      ParseValue(tag, value_line);
      if (code == 0 && Trim(tag->text) == "EOF") return true;
    }
    return false;
  }

  // The number of tags read.
  std::size_t count() const { return count_; }
  // Where reading stopped.
  const char* stopped_at() const { return p_; }
  // The number of lines read.
  std::uint32_t lines() const { return line_; }
  // True when the part did not end at a tag's end, or held more tags than
  // a fixed array had room for.
  bool misaligned() const { return misaligned_; }

 private:
  Tag* NewTag() {
    std::size_t index = base_ + count_;
    if (index == tags_->capacity()) {
      if (fixed_) return nullptr;
      tags_->SetSize(index);
      tags_->reserve(index * 2 + 16);
    }
    ++count_;
    return &tags_->ConstructAt(index);
  }

  // Returns the next line without its LF or CR LF and advances past it.
  std::string_view NextLine() {
    const char* start = p_;
    const void* found = std::memchr(p_, '\n', static_cast<std::size_t>(end_ - p_));
    const char* stop;
    if (found == nullptr) {
      stop = end_;
      p_ = end_;
    } else {
      stop = static_cast<const char*>(found);
      p_ = stop + 1;
    }
    ++line_;
    if (stop > start && stop[-1] == '\r') --stop;
    return std::string_view(start, static_cast<std::size_t>(stop - start));
  }

  bool OnlyWhitespaceLeft() const {
    for (const char* q = p_; q < file_end_; ++q) {
      if (*q != ' ' && *q != '\t' && *q != '\r' && *q != '\n') return false;
    }
    return true;
  }

  int ParseCode(std::string_view text, std::uint32_t line) {
    int code = 0;
    bool ok = !text.empty() && text.size() <= 5;
    std::size_t i = (ok && text[0] == '-') ? 1 : 0;
    if (i == text.size()) ok = false;
    for (; ok && i < text.size(); ++i) {
      if (text[i] < '0' || text[i] > '9') {
        ok = false;
      } else {
        code = code * 10 + (text[i] - '0');
      }
    }
    if (!ok) Fail(line, -1, "expected a group code, got " + QuoteForMessage(text));
    if (text[0] == '-' || KindOfCode(code) == ValueKind::kInvalid) {
      Fail(line, -1, "not a DXF group code: " + QuoteForMessage(text));
    }
    return code;
  }

  void ParseValue(Tag* tag, std::uint32_t line) {
    tag->kind = KindOfCode(tag->code);
    switch (tag->kind) {
      case ValueKind::kString:
        return;
      case ValueKind::kDouble:
        if (ParseDouble(Trim(tag->text), &tag->real)) return;
        break;
      case ValueKind::kInt16:
      case ValueKind::kInt32:
      case ValueKind::kInt64:
      case ValueKind::kBool:
        if (ParseInteger(Trim(tag->text), &tag->integer)) {
          if (InRange(tag->kind, tag->integer)) return;
          Fail(line, tag->code, "value out of range for " + std::string(DescribeKind(tag->kind)) +
                                    ": " + QuoteForMessage(tag->text));
        }
        break;
      case ValueKind::kHandle:
        if (!ParseHandle(Trim(tag->text), &tag->integer)) tag->integer = kNoHandle;
        return;
      case ValueKind::kBinary: {
        std::string_view hex = Trim(tag->text);
        bool ok = hex.size() % 2 == 0;
        for (char c : hex) ok = ok && IsHex(c);
        if (ok) return;
        break;
      }
      case ValueKind::kInvalid:
        break;
    }
    Fail(line, tag->code, "expected " + std::string(DescribeKind(tag->kind)) + ", got " +
                              QuoteForMessage(tag->text));
  }

  [[noreturn]] void Fail(std::uint32_t line, int code, const std::string& what) const {
    throw ReadError(file_name_, PositionKind::kLine, line, code, what);
  }

  const char* p_;
  const char* end_;
  const char* file_end_;
  std::string_view file_name_;
  TagArray* tags_;
  std::size_t base_;
  bool fixed_;
  std::uint32_t line_;  // lines read so far
  std::size_t count_ = 0;
  bool misaligned_ = false;
};

// Where a file may be cut for two readers: the start of a line "0" followed
// by a line starting with a capital letter, at or after the middle. A value
// "0" is followed by a group code (digits), so this is almost always the
// start of a record; the first reader's end confirms it. Returns nullptr
// when there is none close after the middle.
const char* FindCut(const char* begin, const char* end) {
  constexpr std::size_t kSearch = 1 << 20;
  const char* p = begin + (end - begin) / 2;
  const char* limit = end - p > static_cast<std::ptrdiff_t>(kSearch) ? p + kSearch : end;
  while (p < limit) {
    const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(limit - p)));
    if (nl == nullptr) return nullptr;
    const char* line = nl + 1;
    const char* q = line;
    while (q < end && *q == ' ') ++q;
    if (q + 2 < end && q[0] == '0' && (q[1] == '\n' || (q[1] == '\r' && q[2] == '\n'))) {
      const char* next = q[1] == '\n' ? q + 2 : q + 3;
      if (next < end && *next >= 'A' && *next <= 'Z') return line;
    }
    p = line;
  }
  return nullptr;
}

// Files smaller than this are read by one reader: a thread costs more.
constexpr std::size_t kParallelSize = std::size_t{2} << 20;

void ReadAscii(std::string_view buffer, std::string_view file_name, TokenStream* out) {
  const char* begin = buffer.data();
  const char* end = begin + buffer.size();
  TagArray& tags = out->tags;
  const char* cut = nullptr;
  // Every tag but the last takes at least three bytes ("0", a line end, an
  // empty value line): a block of size / 3 + 2 tags holds any file. Only
  // the touched part is committed, but 32-bit address space is too short.
  if (sizeof(void*) == 8 && buffer.size() >= kParallelSize) cut = FindCut(begin, end);
  if (cut == nullptr) {
    // Drawings average 8-16 bytes per tag: reserving for 8 avoids copying
    // the block as it grows.
    tags.reserve(buffer.size() / 8 + 16);
    AsciiReader reader(begin, end, end, 0, file_name, &tags, 0, false);
    out->saw_eof = reader.Run();
    tags.SetSize(reader.count());
    return;
  }
  tags.reserve(buffer.size() / 3 + 2);
  // The second reader counts the lines before the cut (every tag is two
  // lines, so the first part's tag count is half of them when the cut is
  // at a tag), then reads the second part into the slots after those.
  std::size_t first_count = 0;
  std::uint32_t first_lines = 0;
  bool second_eof = false;
  bool second_usable = false;
  std::size_t second_count = 0;
  std::exception_ptr second_error;
  std::thread second([&] {
    try {
      std::size_t lines = static_cast<std::size_t>(std::count(begin, cut, '\n'));
      if (lines % 2 != 0 || lines > UINT32_MAX) return;
      first_count = lines / 2;
      first_lines = static_cast<std::uint32_t>(lines);
      if (first_count + static_cast<std::size_t>(end - cut) / 3 + 2 > tags.capacity()) return;
      AsciiReader reader(cut, end, end, first_lines, file_name, &tags, first_count, true);
      second_eof = reader.Run();
      second_count = reader.count();
      second_usable = !reader.misaligned();
    } catch (...) {
      second_error = std::current_exception();
      second_usable = true;
    }
  });
  AsciiReader first(begin, cut, end, 0, file_name, &tags, 0, true);
  bool first_eof = false;
  try {
    first_eof = first.Run();
  } catch (...) {
    second.join();
    throw;
  }
  second.join();
  if (first_eof) {
    out->saw_eof = true;
    tags.SetSize(first.count());
    return;
  }
  if (!first.misaligned() && first.stopped_at() == cut && second_usable &&
      first.count() == first_count && first.lines() == first_lines) {
    if (second_error) std::rethrow_exception(second_error);
    out->saw_eof = second_eof;
    tags.SetSize(first_count + second_count);
    return;
  }
  // The cut was not at a tag: the first reader goes on alone. The block
  // has room for every tag of the file.
  AsciiReader rest(first.stopped_at(), end, end, first.lines(), file_name, &tags, first.count(), false);
  out->saw_eof = rest.Run();
  tags.SetSize(first.count() + rest.count());
}

class BinaryReader {
 public:
  BinaryReader(std::string_view buffer, std::string_view file_name, TokenStream* out)
      : data_(buffer), file_name_(file_name), out_(out) {}

  void Run() {
    std::size_t at = kBinarySentinel.size();
    // Two-byte codes start with "00 00" for the first "0 SECTION"; R12's
    // one-byte codes give "00 'S'", and any code over 254 "FF lo hi".
    out_->one_byte_codes = data_.size() > at + 1 &&
                           (static_cast<unsigned char>(data_[at]) == 0xFF || data_[at + 1] != 0);
    out_->tags.reserve(data_.size() / 12 + 16);
    while (at < data_.size()) {
      std::size_t tag_start = at;
      int code = ReadCode(&at);
      ValueKind kind = KindOfCode(code);
      if (kind == ValueKind::kInvalid) Fail(tag_start, code, "not a DXF group code");
      Tag& tag = out_->tags.emplace_back();
      tag.code = static_cast<std::int16_t>(code);
      tag.kind = kind;
      tag.position = static_cast<std::uint32_t>(tag_start);
      ReadValue(&tag, &at);
      if (code == 0 && tag.text == "EOF") {
        out_->saw_eof = true;
        return;
      }
    }
  }

 private:
  int ReadCode(std::size_t* at) {
    if (out_->one_byte_codes) {
      int first = Byte(*at, -1);
      if (first != 0xFF) {
        *at += 1;
        return first;
      }
      Need(*at, 3, -1, "the file ends inside a group code");
      int code = Byte(*at + 1, -1) | (Byte(*at + 2, -1) << 8);
      *at += 3;
      return code;
    }
    Need(*at, 2, -1, "the file ends inside a group code");
    int code = Byte(*at, -1) | (Byte(*at + 1, -1) << 8);
    *at += 2;
    return code;
  }

  void ReadValue(Tag* tag, std::size_t* at) {
    std::size_t start = *at;
    switch (tag->kind) {
      case ValueKind::kString:
      case ValueKind::kHandle: {
        const void* nul = std::memchr(data_.data() + start, 0, data_.size() - start);
        if (nul == nullptr) Fail(start, tag->code, "the file ends inside a text value");
        std::size_t stop = static_cast<std::size_t>(static_cast<const char*>(nul) - data_.data());
        tag->text = data_.substr(start, stop - start);
        *at = stop + 1;
        if (tag->kind == ValueKind::kHandle && !ParseHandle(tag->text, &tag->integer)) {
          tag->integer = kNoHandle;
        }
        return;
      }
      case ValueKind::kDouble:
        Need(start, 8, tag->code, "the file ends inside a number");
        std::memcpy(&tag->real, data_.data() + start, 8);
        if (!std::isfinite(tag->real)) Fail(start, tag->code, "expected a finite number");
        *at += 8;
        return;
      case ValueKind::kInt16: {
        Need(start, 2, tag->code, "the file ends inside an integer");
        std::int16_t value;
        std::memcpy(&value, data_.data() + start, 2);
        tag->integer = value;
        *at += 2;
        return;
      }
      case ValueKind::kInt32: {
        Need(start, 4, tag->code, "the file ends inside an integer");
        std::int32_t value;
        std::memcpy(&value, data_.data() + start, 4);
        tag->integer = value;
        *at += 4;
        return;
      }
      case ValueKind::kInt64:
        Need(start, 8, tag->code, "the file ends inside an integer");
        std::memcpy(&tag->integer, data_.data() + start, 8);
        *at += 8;
        return;
      case ValueKind::kBool:
        tag->integer = Byte(start, tag->code);
        *at += 1;
        return;
      case ValueKind::kBinary: {
        std::size_t length = static_cast<std::size_t>(Byte(start, tag->code));
        Need(start + 1, length, tag->code, "the file ends inside binary data");
        tag->text = data_.substr(start + 1, length);
        tag->raw_binary = true;
        *at += 1 + length;
        return;
      }
      case ValueKind::kInvalid:
        break;
    }
  }

  int Byte(std::size_t at, int code) const {
    Need(at, 1, code, "the file ends inside a tag");
    return static_cast<unsigned char>(data_[at]);
  }

  void Need(std::size_t at, std::size_t count, int code, const char* what) const {
    if (at > data_.size() || data_.size() - at < count) Fail(at, code, what);
  }

  [[noreturn]] void Fail(std::size_t offset, int code, const std::string& what) const {
    throw ReadError(file_name_, PositionKind::kByteOffset, offset, code, what);
  }

  std::string_view data_;
  std::string_view file_name_;
  TokenStream* out_;
};

}  // namespace

FileFormat DetectFormat(std::string_view buffer) {
  return buffer.starts_with(kBinarySentinel) ? FileFormat::kBinary : FileFormat::kAscii;
}

TokenStream Tokenize(std::string_view buffer, std::string_view file_name) {
  if (buffer.size() > kMaxInputSize) {
    throw ReadError(file_name, PositionKind::kNone, 0, -1, "the file is larger than 4 GiB");
  }
  TokenStream out;
  out.format = DetectFormat(buffer);
  if (out.format == FileFormat::kBinary) {
    BinaryReader(buffer, file_name, &out).Run();
  } else {
    ReadAscii(buffer, file_name, &out);
  }
  return out;
}

}  // namespace tovik::dxf
