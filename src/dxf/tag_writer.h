// Writes a TagModel as ASCII DXF.
#ifndef TOVIK_DXF_TAG_WRITER_H_
#define TOVIK_DXF_TAG_WRITER_H_

#include <string>
#include <string_view>

#include "dxf/encoding.h"
#include "dxf/tag_model.h"

namespace tovik::dxf {

// The line end written after every group code and value.
enum class LineEnd : std::uint8_t { kLf, kCrLf };

// How to write a file.
struct WriteOptions {
  // The $ACADVER to write ("AC1032"); empty keeps the model's. From AC1021 on
  // text is written as UTF-8; before, and for files without a version, in
  // the model's $DWGCODEPAGE (ANSI_1252 when absent), characters outside it
  // as \U+XXXX.
  std::string_view version;
  LineEnd line_end = LineEnd::kLf;
};

// Appends one tag to `out` as two lines: the group code right-aligned in
// three columns, then the value. A value that kept its original text (read
// from ASCII) is written byte for byte; other numbers are formatted: doubles
// in shortest round-trip form with a decimal point ("1.0", "0.1", "1.0e+20"),
// integers in decimal; binary chunks as upper-case hex. Non-ASCII text goes
// through `encoder` when given (a file before R2007), else stays UTF-8.
void AppendTag(const Tag& tag, TextEncoder* encoder, LineEnd line_end, std::string* out);

// Returns ASCII DXF text `ascii` (as AppendTag writes it) as binary DXF: the
// sentinel, then each tag's code in two bytes (one byte with a 255 escape
// when `one_byte_codes`, as R12 and older write), strings and handles
// NUL-terminated as the ASCII text has them (control characters stay in
// their ^J form, which readers of both forms take alike), numbers in binary
// little-endian form as an ASCII reader would read them, binary chunks as a
// length byte and bytes.
// Throws ReadError when `ascii` is not valid DXF.
std::string AsciiToBinaryDxf(std::string_view ascii, bool one_byte_codes);

// Returns the whole model as ASCII DXF text ending in "0 EOF": leading tags,
// then every section with its records and followers in model order.
std::string WriteDxf(const TagModel& model, const WriteOptions& options = {});

// Writes WriteDxf(model, options) to `path`. Throws std::runtime_error
// ("cannot write PATH") when the file cannot be created or written.
void WriteDxfFile(const TagModel& model, const std::string& path,
                  const WriteOptions& options = {});

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_TAG_WRITER_H_
