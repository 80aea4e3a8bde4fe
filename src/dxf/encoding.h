// Text encoding of DXF strings: code pages and \U+ escapes in, UTF-8 out.
//
// Before R2007 (AC1021) a DXF file stores text in the code page named by
// $DWGCODEPAGE and writes characters outside it as \U+XXXX (or, for East Asian
// double-byte characters, \M+NXXXX). From R2007 on the file is UTF-8 and a
// \U+ sequence is left as it is (AutoCAD writes none; MTEXT may use it as an
// inline code). Everything inside the tag model is UTF-8.
#ifndef TOVIK_DXF_ENCODING_H_
#define TOVIK_DXF_ENCODING_H_

#include <memory>
#include <string>
#include <string_view>

#include "dxf/code_page.h"

namespace tovik::dxf {

// The first DXF version whose files are UTF-8.
inline constexpr std::string_view kFirstUtf8Version = "AC1021";

// Returns true when `acad_version` ($ACADVER, e.g. "AC1027") is R2007 or
// later; false for anything but "AC" and four digits.
bool IsUtf8Version(std::string_view acad_version);

// Returns the iconv name of a $DWGCODEPAGE value ("ANSI_1252" -> "CP1252",
// "dos932" -> "CP932"), matched case-insensitively; empty when unknown.
std::string_view IconvNameOfCodePage(std::string_view dwg_code_page);

// Returns true when `text` is well-formed UTF-8 (no overlongs, no surrogates).
bool IsValidUtf8(std::string_view text);

// Appends the UTF-8 form of `code_point` to `out`; U+FFFD for invalid ones.
void AppendUtf8(char32_t code_point, std::string* out);

// Decodes raw DXF string bytes of one file to UTF-8.
//
// Owns its code page converter, opened on first use. Not thread-safe.
class TextDecoder {
 public:
  // `dwg_code_page` is the file's $DWGCODEPAGE (unknown or empty: ANSI_1252,
  // the value AutoCAD writes by default); `utf8_file` is true from R2007 on.
  TextDecoder(std::string_view dwg_code_page, bool utf8_file);
  ~TextDecoder();
  TextDecoder(const TextDecoder&) = delete;
  TextDecoder& operator=(const TextDecoder&) = delete;

  // Returns true when `raw` is already its own UTF-8 form (the common case:
  // plain ASCII without escapes); `out` is then unspecified. Otherwise
  // writes the decoded text to `out` and returns false. Bytes of a UTF-8 file
  // that are not valid UTF-8 decode through the code page, as other readers
  // do; bytes the code page does not define become U+FFFD. \U+ and \M+
  // escapes are decoded in files before R2007 only. When `escaped_form` is
  // given and escapes were decoded, it receives the text in UTF-8 with its
  // \U+ escapes as written (empty otherwise), so that a writer can give the
  // value back in the form the file had.
  bool Decode(std::string_view raw, std::string* out, std::string* escaped_form = nullptr);

 private:
  void ConvertCodePage(std::string_view raw, std::string* out);
  void DecodeEscapes(std::string_view text, std::string* out);

  std::string code_page_iconv_name_;
  bool utf8_file_;
  std::unique_ptr<CodePageConverter> code_page_;  // opened on first use
};

// Encodes UTF-8 text for a file before R2007: characters of the file's code
// page as its bytes, the others as \U+XXXX, as AutoCAD writes them.
//
// Owns a code page converter. Not thread-safe.
class TextEncoder {
 public:
  // `dwg_code_page` is the $DWGCODEPAGE to write (unknown or empty: ANSI_1252).
  explicit TextEncoder(std::string_view dwg_code_page);
  ~TextEncoder();
  TextEncoder(const TextEncoder&) = delete;
  TextEncoder& operator=(const TextEncoder&) = delete;

  // Appends `text` to `out`: control characters as in EncodeForDxf,
  // non-ASCII characters in the code page or as \U+ escapes.
  void Append(std::string_view text, std::string* out);

 private:
  std::unique_ptr<CodePageConverter> to_code_page_;  // nullptr: escape all
};

// Appends UTF-8 `text` to `out` as a DXF value: control characters other than
// tab as ^@..^_ (a line end would split the tag), and, when
// `escape_non_ascii`, every non-ASCII character as \U+XXXX (surrogate pairs
// above U+FFFF), which readers of pre-R2007 files understand in any code page.
void EncodeForDxf(std::string_view text, bool escape_non_ascii, std::string* out);

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_ENCODING_H_
