#include "dxf/tag.h"

#include <array>
#include <cstdio>

namespace tovik::dxf {
namespace {

struct CodeRange {
  int first;
  int last;
  ValueKind kind;
};

// Group-code ranges of the DXF reference; codes not listed are invalid.
constexpr CodeRange kRanges[] = {
    {0, 4, ValueKind::kString},      {5, 5, ValueKind::kHandle},
    {6, 9, ValueKind::kString},      {10, 59, ValueKind::kDouble},
    {60, 79, ValueKind::kInt16},     {90, 99, ValueKind::kInt32},
    {100, 102, ValueKind::kString},  {105, 105, ValueKind::kHandle},
    {110, 149, ValueKind::kDouble},  {160, 169, ValueKind::kInt64},
    {170, 179, ValueKind::kInt16},   {210, 239, ValueKind::kDouble},
    {270, 289, ValueKind::kInt16},   {290, 299, ValueKind::kBool},
    {300, 309, ValueKind::kString},  {310, 319, ValueKind::kBinary},
    {320, 369, ValueKind::kHandle},  {370, 389, ValueKind::kInt16},
    {390, 399, ValueKind::kHandle},  {400, 409, ValueKind::kInt16},
    {410, 419, ValueKind::kString},  {420, 429, ValueKind::kInt32},
    {430, 439, ValueKind::kString},  {440, 459, ValueKind::kInt32},
    {460, 469, ValueKind::kDouble},  {470, 479, ValueKind::kString},
    {480, 481, ValueKind::kHandle},  {999, 999, ValueKind::kString},
    {1000, 1003, ValueKind::kString}, {1004, 1004, ValueKind::kBinary},
    {1005, 1005, ValueKind::kHandle}, {1006, 1009, ValueKind::kString},
    {1010, 1059, ValueKind::kDouble}, {1060, 1070, ValueKind::kInt16},
    {1071, 1071, ValueKind::kInt32},
};

constexpr std::array<ValueKind, kMaxGroupCode + 1> BuildKindTable() {
  std::array<ValueKind, kMaxGroupCode + 1> table{};
  for (auto& kind : table) kind = ValueKind::kInvalid;
  for (const CodeRange& range : kRanges) {
    for (int code = range.first; code <= range.last; ++code) table[code] = range.kind;
  }
  return table;
}

constexpr std::array<ValueKind, kMaxGroupCode + 1> kKindTable = BuildKindTable();

constexpr char kHexDigits[] = "0123456789ABCDEF";

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::string FormatPrefix(std::string_view file_name, PositionKind kind, std::uint64_t position,
                         int code) {
  std::string out(file_name);
  if (kind == PositionKind::kLine) {
    out += ": line " + std::to_string(position);
  } else if (kind == PositionKind::kByteOffset) {
    out += ": byte " + std::to_string(position);
  }
  if (code >= 0) out += ": group code " + std::to_string(code);
  out += ": ";
  return out;
}

}  // namespace

ValueKind KindOfCode(int code) {
  if (code < 0 || code > kMaxGroupCode) return ValueKind::kInvalid;
  return kKindTable[static_cast<std::size_t>(code)];
}

std::string_view DescribeKind(ValueKind kind) {
  switch (kind) {
    case ValueKind::kDouble: return "a number";
    case ValueKind::kInt16: return "a 16-bit integer";
    case ValueKind::kInt32: return "a 32-bit integer";
    case ValueKind::kInt64: return "a 64-bit integer";
    case ValueKind::kBool: return "a byte (0 to 255)";
    case ValueKind::kHandle: return "a hexadecimal handle";
    case ValueKind::kBinary: return "hexadecimal binary data";
    case ValueKind::kString: return "text";
    case ValueKind::kInvalid: break;
  }
  return "nothing";
}

Tag Tag::String(int code, std::string_view value) {
  Tag tag;
  tag.code = static_cast<std::int16_t>(code);
  ValueKind kind = KindOfCode(code);
  tag.kind = (kind == ValueKind::kHandle || kind == ValueKind::kBinary) ? kind : ValueKind::kString;
  tag.text = value;
  if (tag.kind == ValueKind::kHandle) {
    std::uint64_t handle = 0;
    bool valid = !value.empty() && value.size() <= 16;
    for (char c : value) {
      valid = valid && HexValue(c) >= 0;
      handle = (handle << 4) | static_cast<std::uint64_t>(HexValue(c) & 15);
    }
    tag.integer = valid ? static_cast<std::int64_t>(handle) : kNoHandle;
  }
  return tag;
}

Tag Tag::Double(int code, double value) {
  Tag tag;
  tag.code = static_cast<std::int16_t>(code);
  tag.kind = ValueKind::kDouble;
  tag.real = value;
  return tag;
}

Tag Tag::Integer(int code, std::int64_t value) {
  Tag tag;
  tag.code = static_cast<std::int16_t>(code);
  ValueKind kind = KindOfCode(code);
  tag.kind = (kind == ValueKind::kInt32 || kind == ValueKind::kInt64 || kind == ValueKind::kBool)
                 ? kind
                 : ValueKind::kInt16;
  tag.integer = value;
  return tag;
}

std::string Tag::BinaryHex() const {
  if (!raw_binary) return std::string(text);
  std::string out;
  out.reserve(text.size() * 2);
  for (unsigned char byte : text) {
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 15];
  }
  return out;
}

std::string Tag::BinaryBytes() const {
  if (raw_binary) return std::string(text);
  std::string out;
  out.reserve(text.size() / 2);
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    out += static_cast<char>((HexValue(text[i]) << 4) | HexValue(text[i + 1]));
  }
  return out;
}

ReadError::ReadError(std::string_view file_name, PositionKind position_kind,
                     std::uint64_t position, int code, std::string_view what_wrong)
    : std::runtime_error(FormatPrefix(file_name, position_kind, position, code) +
                         std::string(what_wrong)),
      file_name_(file_name),
      position_kind_(position_kind),
      position_(position),
      code_(code),
      what_wrong_(what_wrong) {}

std::string QuoteForMessage(std::string_view value) {
  constexpr std::size_t kMaxShown = 40;
  std::string out = "\"";
  for (std::size_t i = 0; i < value.size() && i < kMaxShown; ++i) {
    unsigned char c = static_cast<unsigned char>(value[i]);
    if (c >= 0x20 && c < 0x7f && c != '"' && c != '\\') {
      out += static_cast<char>(c);
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
      out += escaped;
    }
  }
  if (value.size() > kMaxShown) out += "...";
  out += '"';
  return out;
}

}  // namespace tovik::dxf
