#include "dxf/tokenizer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
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

// True when the line at `line` is "0" (spaces around allowed) and the next
// line starts with a capital letter: a record type follows. A value "0" is
// followed by a group code (digits), so in a well-formed file this is the
// start of a record.
bool StartsRecord(const char* line, const char* end) {
  const char* q = line;
  while (q < end && (*q == ' ' || *q == '\t')) ++q;
  if (q >= end || *q != '0') return false;
  ++q;
  while (q < end && (*q == ' ' || *q == '\t')) ++q;
  if (q < end && *q == '\r') ++q;
  if (q >= end || *q != '\n') return false;
  ++q;
  return q < end && *q >= 'A' && *q <= 'Z';
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
              std::string_view file_name, TagArray* tags, std::size_t base, bool fixed,
              Faults faults)
      : p_(begin), end_(stop), file_end_(file_end), file_name_(file_name), tags_(tags),
        base_(base), fixed_(fixed), repair_(faults == Faults::kRepair), line_(first_line) {}

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
      int code = 0;
      if (!ParseCode(trimmed, &code)) {
        std::string what = "expected a group code, got " + QuoteForMessage(trimmed);
        if (!repair_) Fail(code_line, -1, what);
        Resync(code_line, what);
        continue;
      }
      if (p_ >= end_) {
        if (end_ < file_end_) {
          // The value is past this reader's part: the part was cut between
          // a group code and its value.
          p_ = code_start;
          --line_;
          misaligned_ = true;
          return false;
        }
        if (!repair_) Fail(code_line, code, "the file ends after the group code, the value is missing");
        Note(code_line, code, "the file ends after the group code: the code is dropped");
        dropped_ = true;
        return false;
      }
      std::uint32_t value_line = line_ + 1;
      if (KindOfCode(code) == ValueKind::kInvalid) {
        std::string what = "not a DXF group code: " + QuoteForMessage(trimmed);
        if (!repair_) Fail(code_line, -1, what);
        NextLine();
        Note(code_line, -1, what + ": the code and its value are dropped");
        dropped_ = true;
        continue;
      }
      Tag* tag = NewTag();
      if (tag == nullptr) {
        misaligned_ = true;
        return false;
      }
      tag->code = static_cast<std::int16_t>(code);
      tag->position = code_line;
      tag->text = NextLine();
      if (std::string what = ParseValue(tag); !what.empty()) {
        if (!repair_) Fail(value_line, code, what);
        if (!RepairValue(tag, value_line, what)) {
          --count_;  // the slot is taken by the next tag
          dropped_ = true;
          continue;
        }
      }
      if (code == 0 && Trim(tag->text) == "EOF") return true;
    }
    return false;
  }

  // What was repaired ("line 12: group code 10: ..."), in file order.
  const std::vector<std::string>& repairs() const { return repairs_; }
  // True when a tag or line was dropped: the tag count is then no longer
  // half the line count.
  bool dropped() const { return dropped_; }

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

  // Reads a group code line: false when it is not a decimal number of at
  // most five characters (a negative number is read, and is not a DXF code).
  static bool ParseCode(std::string_view text, int* code) {
    *code = 0;
    if (text.empty() || text.size() > 5) return false;
    std::size_t i = text[0] == '-' ? 1 : 0;
    if (i == text.size()) return false;
    for (; i < text.size(); ++i) {
      if (text[i] < '0' || text[i] > '9') return false;
      *code = *code * 10 + (text[i] - '0');
    }
    if (text[0] == '-') *code = -1;
    return true;
  }

  // Types the value of `tag` by its code; returns what is wrong with it,
  // empty when nothing.
  static std::string ParseValue(Tag* tag) {
    tag->kind = KindOfCode(tag->code);
    switch (tag->kind) {
      case ValueKind::kString:
        return {};
      case ValueKind::kDouble:
        if (ParseDouble(Trim(tag->text), &tag->real)) return {};
        break;
      case ValueKind::kInt16:
      case ValueKind::kInt32:
      case ValueKind::kInt64:
      case ValueKind::kBool:
        if (ParseInteger(Trim(tag->text), &tag->integer)) {
          if (InRange(tag->kind, tag->integer)) return {};
          return "value out of range for " + std::string(DescribeKind(tag->kind)) + ": " +
                 QuoteForMessage(tag->text);
        }
        break;
      case ValueKind::kHandle:
        if (!ParseHandle(Trim(tag->text), &tag->integer)) tag->integer = kNoHandle;
        return {};
      case ValueKind::kBinary: {
        std::string_view hex = Trim(tag->text);
        bool ok = hex.size() % 2 == 0;
        for (char c : hex) ok = ok && IsHex(c);
        if (ok) return {};
        break;
      }
      case ValueKind::kInvalid:
        break;
    }
    return "expected " + std::string(DescribeKind(tag->kind)) + ", got " + QuoteForMessage(tag->text);
  }

  // Repairs a value its code cannot carry, as a careful reader would: a
  // decimal comma read as a point, a whole number written with decimals read
  // as an integer. Such a value loses its text (the writer formats the
  // number). Returns false when the tag cannot be kept: it is then dropped.
  bool RepairValue(Tag* tag, std::uint32_t line, const std::string& what) {
    std::string_view text = Trim(tag->text);
    std::string fixed(text);
    if (tag->kind == ValueKind::kDouble && std::count(fixed.begin(), fixed.end(), ',') == 1 &&
        fixed.find('.') == std::string::npos) {
      fixed[fixed.find(',')] = '.';
      if (ParseDouble(fixed, &tag->real)) {
        tag->text = {};
        Note(line, tag->code, "decimal comma in " + QuoteForMessage(text) + ": read as " + fixed);
        return true;
      }
    }
    double real = 0;
    if (tag->IsInteger() && ParseDouble(text, &real) && real == std::trunc(real) &&
        InRange(tag->kind, static_cast<std::int64_t>(std::clamp(real, -9.2e18, 9.2e18)))) {
      tag->integer = static_cast<std::int64_t>(real);
      tag->text = {};
      Note(line, tag->code, "a whole number written as " + QuoteForMessage(text) + ": read as " +
                                std::to_string(tag->integer));
      return true;
    }
    Note(line, tag->code, what + ": the tag is dropped");
    return false;
  }

  // After a line that is no group code, the pairs are out of step: skips to
  // the next line "0" followed by a record type (as the cut between two
  // readers is chosen, so that both resume at the same place), or to the end
  // of this reader's part.
  void Resync(std::uint32_t bad_line, const std::string& what) {
    const char* q = p_;
    std::uint32_t line = line_;
    while (q < end_ && !StartsRecord(q, file_end_)) {
      const char* nl = static_cast<const char*>(std::memchr(q, '\n', static_cast<std::size_t>(end_ - q)));
      q = nl == nullptr ? end_ : nl + 1;
      ++line;
    }
    p_ = q;
    line_ = line;
    dropped_ = true;
    if (q == file_end_) {
      Note(bad_line, -1, what + ": the rest of the file is skipped");
    } else {
      Note(bad_line, -1, what + ": lines " + std::to_string(bad_line) + " to " +
                             std::to_string(line) + " are skipped");
    }
  }

  void Note(std::uint32_t line, int code, const std::string& what) {
    repairs_.push_back("line " + std::to_string(line) + ": " +
                       (code >= 0 ? "group code " + std::to_string(code) + ": " : std::string()) + what);
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
  bool repair_;
  std::uint32_t line_;  // lines read so far
  std::size_t count_ = 0;
  bool misaligned_ = false;
  bool dropped_ = false;
  std::vector<std::string> repairs_;
};

// Where a file may be cut for two readers: the start of a record (see
// StartsRecord) at or after the middle; the first reader's end confirms it.
// Returns nullptr when there is none close after the middle.
const char* FindCut(const char* begin, const char* end) {
  constexpr std::size_t kSearch = 1 << 20;
  const char* p = begin + (end - begin) / 2;
  const char* limit = end - p > static_cast<std::ptrdiff_t>(kSearch) ? p + kSearch : end;
  while (p < limit) {
    const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(limit - p)));
    if (nl == nullptr) return nullptr;
    if (StartsRecord(nl + 1, end)) return nl + 1;
    p = nl + 1;
  }
  return nullptr;
}

// Files smaller than this are read by one reader: a thread costs more.
constexpr std::size_t kParallelSize = std::size_t{2} << 20;

void ReadAscii(std::string_view buffer, std::string_view file_name, Faults faults,
               TokenStream* out) {
  const char* begin = buffer.data();
  const char* end = begin + buffer.size();
  TagArray& tags = out->tags;
  auto keep_repairs = [out](const AsciiReader& reader) {
    out->repairs.insert(out->repairs.end(), reader.repairs().begin(), reader.repairs().end());
  };
  const char* cut = nullptr;
  // Every tag but the last takes at least three bytes ("0", a line end, an
  // empty value line): a block of size / 3 + 2 tags holds any file. Only
  // the touched part is committed, but 32-bit address space is too short.
  if (sizeof(void*) == 8 && buffer.size() >= kParallelSize) cut = FindCut(begin, end);
  if (cut == nullptr) {
    // Drawings average 8-16 bytes per tag: reserving for 8 avoids copying
    // the block as it grows.
    tags.reserve(buffer.size() / 8 + 16);
    AsciiReader reader(begin, end, end, 0, file_name, &tags, 0, false, faults);
    out->saw_eof = reader.Run();
    tags.SetSize(reader.count());
    keep_repairs(reader);
    return;
  }
  tags.reserve(buffer.size() / 3 + 2);
  // The second reader counts the lines before the cut (every tag is two
  // lines, so the first part's tag count is half of them when the cut is
  // at a tag and nothing was dropped), then reads the second part into the
  // slots after those.
  std::size_t first_count = 0;
  std::uint32_t first_lines = 0;
  std::optional<AsciiReader> second_reader;
  bool second_eof = false;
  bool second_usable = false;
  std::exception_ptr second_error;
  std::thread second([&] {
    try {
      std::size_t lines = static_cast<std::size_t>(std::count(begin, cut, '\n'));
      if (lines % 2 != 0 || lines > UINT32_MAX) return;
      first_count = lines / 2;
      first_lines = static_cast<std::uint32_t>(lines);
      if (first_count + static_cast<std::size_t>(end - cut) / 3 + 2 > tags.capacity()) return;
      second_reader.emplace(cut, end, end, first_lines, file_name, &tags, first_count, true, faults);
      second_eof = second_reader->Run();
      second_usable = !second_reader->misaligned();
    } catch (...) {
      second_error = std::current_exception();
      second_usable = true;
    }
  });
  AsciiReader first(begin, cut, end, 0, file_name, &tags, 0, true, faults);
  bool first_eof = false;
  try {
    first_eof = first.Run();
  } catch (...) {
    second.join();
    throw;
  }
  second.join();
  keep_repairs(first);
  if (first_eof) {
    out->saw_eof = true;
    tags.SetSize(first.count());
    return;
  }
  if (!first.misaligned() && !first.dropped() && first.stopped_at() == cut && second_usable &&
      first.count() == first_count && first.lines() == first_lines) {
    if (second_error) std::rethrow_exception(second_error);
    out->saw_eof = second_eof;
    tags.SetSize(first_count + second_reader->count());
    keep_repairs(*second_reader);
    return;
  }
  // The cut was not at a tag, or the first part lost tags to repairs: the
  // first reader's work goes on alone. The block has room for every tag.
  AsciiReader rest(first.stopped_at(), end, end, first.lines(), file_name, &tags, first.count(),
                   false, faults);
  out->saw_eof = rest.Run();
  tags.SetSize(first.count() + rest.count());
  keep_repairs(rest);
}

class BinaryReader {
 public:
  BinaryReader(std::string_view buffer, std::string_view file_name, Faults faults, TokenStream* out)
      : data_(buffer), file_name_(file_name), repair_(faults == Faults::kRepair), out_(out) {}

  void Run() {
    std::size_t at = kBinarySentinel.size();
    // Two-byte codes start with "00 00" for the first "0 SECTION"; R12's
    // one-byte codes give "00 'S'", and any code over 254 "FF lo hi".
    out_->one_byte_codes = data_.size() > at + 1 &&
                           (static_cast<unsigned char>(data_[at]) == 0xFF || data_[at + 1] != 0);
    out_->tags.reserve(data_.size() / 12 + 16);
    while (at < data_.size()) {
      std::size_t tag_start = at;
      std::size_t count = out_->tags.size();
      try {
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
      } catch (const ReadError& error) {
        // Binary values have no line ends to find the next tag by: a tag
        // that cannot be read ends the file, except a number that is no
        // finite number, whose place is known.
        if (!repair_) throw;
        out_->tags.SetSize(count);
        std::string where = "byte " + std::to_string(error.position()) + ": " +
                            (error.code() >= 0 ? "group code " + std::to_string(error.code()) + ": " : "");
        if (at > tag_start && at <= data_.size() && error.what_wrong() == kNotFinite) {
          out_->repairs.push_back(where + error.what_wrong() + ": the tag is dropped");
          continue;
        }
        out_->repairs.push_back(where + error.what_wrong() + ": the rest of the file is skipped");
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
        *at += 8;
        if (!std::isfinite(tag->real)) Fail(start, tag->code, kNotFinite);
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

  static constexpr const char* kNotFinite = "expected a finite number";

  std::string_view data_;
  std::string_view file_name_;
  bool repair_;
  TokenStream* out_;
};

}  // namespace

FileFormat DetectFormat(std::string_view buffer) {
  return buffer.starts_with(kBinarySentinel) ? FileFormat::kBinary : FileFormat::kAscii;
}

TokenStream Tokenize(std::string_view buffer, std::string_view file_name, Faults faults) {
  if (buffer.size() > kMaxInputSize) {
    throw ReadError(file_name, PositionKind::kNone, 0, -1, "the file is larger than 4 GiB");
  }
  TokenStream out;
  out.format = DetectFormat(buffer);
  if (out.format == FileFormat::kBinary) {
    BinaryReader(buffer, file_name, faults, &out).Run();
  } else {
    ReadAscii(buffer, file_name, faults, &out);
  }
  return out;
}

}  // namespace tovik::dxf
