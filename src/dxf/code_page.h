// Conversion between a legacy code page and UTF-8: the one place the DXF
// layer asks the platform for code pages (glibc's iconv on Linux, the
// national-language API on Windows). Code pages go by their iconv names
// ("CP1252", "ISO-8859-2", "JOHAB", "UTF-8").
#ifndef TOVIK_DXF_CODE_PAGE_H_
#define TOVIK_DXF_CODE_PAGE_H_

#include <string>
#include <string_view>

namespace tovik::dxf {

class CodePageConverter {
 public:
  // A converter from the code page named `from` to the one named `to`
  // (one of the two is "UTF-8"). ok() is false when the platform has none.
  CodePageConverter(std::string_view to, std::string_view from);
  ~CodePageConverter();
  CodePageConverter(const CodePageConverter&) = delete;
  CodePageConverter& operator=(const CodePageConverter&) = delete;

  bool ok() const { return handle_ != nullptr; }

  // Appends the conversion of `in` to `out`, a byte that cannot be
  // converted becoming U+FFFD (for conversions to UTF-8).
  void ConvertLenient(std::string_view in, std::string* out);
  // Appends the conversion of `in` to `out` and returns true when every
  // character converts exactly; otherwise appends nothing and returns false.
  bool ConvertExact(std::string_view in, std::string* out);

 private:
  void* handle_ = nullptr;
  // Windows: code page numbers of the two sides (0 for UTF-8's partner).
  unsigned to_page_ = 0;
  unsigned from_page_ = 0;
};

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_CODE_PAGE_H_
