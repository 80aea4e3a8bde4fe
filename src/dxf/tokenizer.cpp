#include "dxf/tokenizer.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

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
  AsciiReader(std::string_view buffer, std::string_view file_name, TokenStream* out)
      : p_(buffer.data()), end_(buffer.data() + buffer.size()), file_name_(file_name), out_(out) {}

  void Run() {
    // Drawings average 8-16 bytes per tag. Reserving for 8 avoids copying
    // the vector as it grows; pages never written are never committed.
    out_->tags.reserve(static_cast<std::size_t>(end_ - p_) / 8 + 16);
    while (p_ < end_) {
      std::uint32_t code_line = line_ + 1;
      std::string_view code_text = NextLine();
      std::string_view trimmed = Trim(code_text);
      if (trimmed.empty() && OnlyWhitespaceLeft()) return;  // blank lines at the end
      int code = ParseCode(trimmed, code_line);
      if (p_ >= end_) Fail(code_line, code, "the file ends after the group code, the value is missing");
      std::uint32_t value_line = line_ + 1;
      Tag& tag = out_->tags.emplace_back();
      tag.code = static_cast<std::int16_t>(code);
      tag.position = code_line;
      tag.text = NextLine();
      ParseValue(&tag, value_line);
      if (code == 0 && Trim(tag.text) == "EOF") {
        out_->saw_eof = true;
        return;
      }
    }
  }

 private:
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
    for (const char* q = p_; q < end_; ++q) {
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
  std::string_view file_name_;
  TokenStream* out_;
  std::uint32_t line_ = 0;  // lines read so far
};

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
    AsciiReader(buffer, file_name, &out).Run();
  }
  return out;
}

}  // namespace tovik::dxf
