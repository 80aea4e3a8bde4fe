// Code pages through MultiByteToWideChar and WideCharToMultiByte: the iconv
// names the DXF layer uses are mapped to Windows code page numbers.
#include <windows.h>

#include <cstring>
#include <string>

#include "dxf/code_page.h"
#include "dxf/encoding.h"

namespace tovik::dxf {
namespace {

constexpr unsigned kUtf8Page = 65001;

// The Windows code page an iconv name stands for; 0 when unknown.
unsigned PageOf(std::string_view name) {
  if (name == "UTF-8") return kUtf8Page;
  if (name == "JOHAB") return 1361;
  if (name == "MACINTOSH") return 10000;
  if (name == "BIG5") return 950;
  if (name == "GB2312") return 936;
  if (name.starts_with("CP")) {
    unsigned page = 0;
    for (char c : name.substr(2)) {
      if (c < '0' || c > '9') return 0;
      page = page * 10 + static_cast<unsigned>(c - '0');
    }
    return page;
  }
  if (name.starts_with("ISO-8859-")) {
    unsigned part = 0;
    for (char c : name.substr(9)) {
      if (c < '0' || c > '9') return 0;
      part = part * 10 + static_cast<unsigned>(c - '0');
    }
    return 28590 + part;
  }
  return 0;
}

bool Usable(unsigned page) { return page == kUtf8Page || (page != 0 && IsValidCodePage(page)); }

std::wstring ToWide(unsigned page, std::string_view in, DWORD flags, bool* ok) {
  *ok = true;
  if (in.empty()) return {};
  int n = MultiByteToWideChar(page, flags, in.data(), static_cast<int>(in.size()), nullptr, 0);
  if (n <= 0) {
    *ok = false;
    return {};
  }
  std::wstring wide(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(page, flags, in.data(), static_cast<int>(in.size()), wide.data(), n);
  return wide;
}

bool FromWide(unsigned page, const std::wstring& wide, bool exact, std::string* out) {
  if (wide.empty()) return true;
  BOOL used_default = FALSE;
  BOOL* used = page == kUtf8Page ? nullptr : &used_default;
  DWORD flags = page == kUtf8Page || !exact ? 0 : WC_NO_BEST_FIT_CHARS;
  int n = WideCharToMultiByte(page, flags, wide.data(), static_cast<int>(wide.size()), nullptr,
                              0, nullptr, used);
  if (n <= 0 || (exact && used_default)) return false;
  std::string bytes(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(page, flags, wide.data(), static_cast<int>(wide.size()), bytes.data(), n,
                      nullptr, nullptr);
  out->append(bytes);
  return true;
}

}  // namespace

CodePageConverter::CodePageConverter(std::string_view to, std::string_view from)
    : to_page_(PageOf(to)), from_page_(PageOf(from)) {
  // The handle only marks a usable pair; the pages do the work.
  if (Usable(to_page_) && Usable(from_page_)) handle_ = this;
}

CodePageConverter::~CodePageConverter() = default;

void CodePageConverter::ConvertLenient(std::string_view in, std::string* out) {
  bool ok = false;
  // Bytes the code page does not define become U+FFFD, one each.
  std::wstring wide = ToWide(from_page_, in, MB_ERR_INVALID_CHARS, &ok);
  if (!ok) {
    for (size_t i = 0; i < in.size();) {
      // Longest run from i that converts, else one replaced byte.
      size_t len = std::min<size_t>(4, in.size() - i);
      for (; len > 0; --len) {
        std::wstring part = ToWide(from_page_, in.substr(i, len), MB_ERR_INVALID_CHARS, &ok);
        if (ok && !part.empty()) {
          FromWide(to_page_, part, false, out);
          break;
        }
      }
      if (len == 0) {
        AppendUtf8(0xFFFD, out);
        len = 1;
      }
      i += len;
    }
    return;
  }
  FromWide(to_page_, wide, false, out);
}

bool CodePageConverter::ConvertExact(std::string_view in, std::string* out) {
  bool ok = false;
  std::wstring wide = ToWide(from_page_, in, MB_ERR_INVALID_CHARS, &ok);
  if (!ok) return false;
  return FromWide(to_page_, wide, true, out);
}

}  // namespace tovik::dxf
