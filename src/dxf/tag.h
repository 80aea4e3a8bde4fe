// One DXF group: a group code and its typed value, plus the reader's error.
//
// A Tag is a small value type (32 bytes) that borrows its text: the bytes live
// in the file buffer or in the arena of the TagModel that holds the tag.
#ifndef TOVIK_DXF_TAG_H_
#define TOVIK_DXF_TAG_H_

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tovik::dxf {

// The largest group code DXF defines (1071, a 32-bit xdata integer).
inline constexpr int kMaxGroupCode = 1071;

// The integer of a handle tag whose text is not 1-16 hex digits: R12 files
// write empty handles, libdxfrw writes a style name under 340.
inline constexpr std::int64_t kNoHandle = -1;

// What kind of value a group code carries, from the group-code ranges.
enum class ValueKind : std::uint8_t {
  kInvalid,  // not a group code DXF defines
  kString,   // text; 0-9, 100-102, 300-309, 410-419, 430-439, 470-479, 999, 1000-1003, 1006-1009
  kDouble,   // 10-59, 110-149, 210-239, 460-469, 1010-1059
  kInt16,    // 60-79, 170-179, 270-289, 370-389, 400-409, 1060-1070
  kInt32,    // 90-99, 420-429, 440-459, 1071
  kInt64,    // 160-169
  kBool,     // 290-299 (one byte in binary DXF)
  kHandle,   // hex handle: 5, 105, 320-369, 390-399, 480-481, 1005
  kBinary,   // binary chunk: 310-319, 1004 (hex text in ASCII, length byte in binary)
};

// Returns the value kind of `code`; kInvalid for codes DXF does not define.
ValueKind KindOfCode(int code);

// Returns a lower-case English name of `kind` for messages ("a number").
std::string_view DescribeKind(ValueKind kind);

// One group code/value pair.
//
// `text` is the value as it appeared in an ASCII file (without the line end),
// a string already decoded to UTF-8 by the tag model, or the raw bytes of a
// binary chunk read from binary DXF (`raw_binary` set). Numbers read from
// binary DXF, and numbers built in code, have an empty `text`; the writer then
// formats the number. Keeping the original text makes an unmodified value
// write back byte for byte.
struct Tag {
  std::int16_t code = 0;
  ValueKind kind = ValueKind::kString;
  bool raw_binary = false;  // kBinary only: `text` holds bytes, not hex digits
  // 1-based line of the group code in an ASCII file, or byte offset of the
  // group code in a binary file; 0 for tags built in code.
  std::uint32_t position = 0;
  union {
    double real;          // kDouble
    std::int64_t integer; // kInt16, kInt32, kInt64, kBool; handle or kNoHandle for kHandle
  };
  std::string_view text;

  Tag() : integer(0) {}

  // Builds a string tag (also handle or binary-hex text, by the code's kind).
  // REQUIRES: `value` outlives the tag (use TagModel::Intern for new text).
  static Tag String(int code, std::string_view value);
  // Builds a floating-point tag written in shortest round-trip form.
  static Tag Double(int code, double value);
  // Builds an integer tag (kInt16/32/64/kBool by the code's kind).
  static Tag Integer(int code, std::int64_t value);

  // Returns true for a kDouble tag.
  bool IsDouble() const { return kind == ValueKind::kDouble; }
  // Returns true for the integer kinds, bool included.
  bool IsInteger() const {
    return kind == ValueKind::kInt16 || kind == ValueKind::kInt32 ||
           kind == ValueKind::kInt64 || kind == ValueKind::kBool;
  }
  // Returns the hex digits of a kBinary tag (encodes raw bytes from binary DXF).
  std::string BinaryHex() const;
  // Returns the bytes of a kBinary tag (decodes hex text from ASCII DXF).
  std::string BinaryBytes() const;
};

// Where in a file a ReadError happened.
enum class PositionKind : std::uint8_t { kNone, kLine, kByteOffset };

// The reader refuses a file it cannot read without guessing. The message
// reads like `drawing.dxf: line 1234: group code 10: expected a number, got "abc"`.
class ReadError : public std::runtime_error {
 public:
  // `code` < 0 leaves the group code out of the message.
  ReadError(std::string_view file_name, PositionKind position_kind,
            std::uint64_t position, int code, std::string_view what_wrong);

  // The file name given to the reader.
  const std::string& file_name() const { return file_name_; }
  // kLine (ASCII), kByteOffset (binary) or kNone.
  PositionKind position_kind() const { return position_kind_; }
  // 1-based line number or 0-based byte offset.
  std::uint64_t position() const { return position_; }
  // The offending group code, or -1.
  int code() const { return code_; }
  // The short English description without file, position and code.
  const std::string& what_wrong() const { return what_wrong_; }

 private:
  std::string file_name_;
  PositionKind position_kind_;
  std::uint64_t position_;
  int code_;
  std::string what_wrong_;
};

// Returns `value` quoted for an error message: at most 40 bytes, bytes
// outside printable ASCII as \xNN.
std::string QuoteForMessage(std::string_view value);

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_TAG_H_
