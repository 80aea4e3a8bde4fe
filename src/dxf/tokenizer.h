// Splits a whole DXF file buffer, ASCII or binary, into typed tags.
#ifndef TOVIK_DXF_TOKENIZER_H_
#define TOVIK_DXF_TOKENIZER_H_

#include <string>
#include <string_view>
#include <vector>

#include "dxf/tag.h"
#include "dxf/tag_array.h"

namespace tovik::dxf {

// The sentinel that opens every binary DXF file.
inline constexpr std::string_view kBinarySentinel{"AutoCAD Binary DXF\r\n\x1a\0", 22};

// The two encodings of a DXF file.
enum class FileFormat : std::uint8_t { kAscii, kBinary };

// What the tokenizer does with a fault: throw ReadError, or repair it and
// list the repair.
enum class Faults : std::uint8_t { kThrow, kRepair };

// The tags of one file, in file order.
struct TokenStream {
  FileFormat format = FileFormat::kAscii;
  // Binary DXF of R12 and older writes one-byte group codes (255 escapes a
  // two-byte code); later versions write two-byte codes.
  bool one_byte_codes = false;
  // True when the stream ended with a "0 EOF" tag (which is included).
  bool saw_eof = false;
  TagArray tags;
  // With Faults::kRepair: what was repaired, in file order ("line 12:
  // group code 10: decimal comma in \"1,5\": read as 1.5").
  std::vector<std::string> repairs;
};

// Returns the format of `buffer`: binary when it starts with kBinarySentinel.
FileFormat DetectFormat(std::string_view buffer);

// Reads every tag of `buffer` up to and including "0 EOF"; bytes after EOF
// are ignored. Strings stay raw bytes (the tag model decodes them); the tags'
// text views point into `buffer`, which must outlive the result.
//
// ASCII: LF or CR LF line ends, spaces around the group code, a last line
// without a line end. Numbers are checked against their code's range: a
// double must be a finite decimal number, an integer must fit its width, a
// handle is 1-16 hex digits, binary data an even count of hex digits.
// Binary: two-byte little-endian codes (one-byte with a 255 escape for R12),
// NUL-terminated strings, one-byte bools, 310-319 and 1004 chunks prefixed by
// a length byte.
//
// Throws ReadError naming `file_name`, the line (ASCII) or byte offset
// (binary) and the group code, for an unknown group code, a value of the
// wrong type, a file cut inside a tag, or a buffer over 4 GiB. Memory grows
// with the tag count, at most one tag per 3 input bytes. An ASCII file of a
// few megabytes is read in two halves at once, with the same tags and the
// same errors as one pass.
//
// With Faults::kRepair nothing short of a file over 4 GiB throws: a decimal
// comma is read as a point, a whole number written with decimals as an
// integer; a value its code cannot carry and a code DXF does not define are
// dropped with their tag; after a line that is no group code, reading
// resumes at the next line "0" followed by a record type; a file cut inside
// a tag ends before it. Each repair is listed in `repairs`.
TokenStream Tokenize(std::string_view buffer, std::string_view file_name,
                     Faults faults = Faults::kThrow);

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_TOKENIZER_H_
