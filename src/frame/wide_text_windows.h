// UTF-8 and Windows' wide (UTF-16) strings, for the Windows side of the
// platform seams and the automation server. Windows builds only.
#ifndef TOVIK_FRAME_WIDE_TEXT_WINDOWS_H_
#define TOVIK_FRAME_WIDE_TEXT_WINDOWS_H_

#include <windows.h>

#include <string>
#include <string_view>

namespace tovik {

inline std::wstring WideOf(std::string_view utf8) {
  if (utf8.empty()) return {};
  int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), out.data(), n);
  return out;
}

// `length` -1: up to the terminator.
inline std::string Utf8Of(const wchar_t* text, int length = -1) {
  if (!text || length == 0) return {};
  int n = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
  if (n <= 0) return {};
  std::string out(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, length, out.data(), n, nullptr, nullptr);
  if (length < 0 && !out.empty()) out.pop_back();  // the terminator
  return out;
}

}  // namespace tovik

#endif  // TOVIK_FRAME_WIDE_TEXT_WINDOWS_H_
