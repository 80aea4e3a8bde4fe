#include <iconv.h>

#include <cerrno>
#include <string>

#include "dxf/code_page.h"
#include "dxf/encoding.h"

namespace tovik::dxf {

CodePageConverter::CodePageConverter(std::string_view to, std::string_view from) {
  iconv_t handle = iconv_open(std::string(to).c_str(), std::string(from).c_str());
  if (handle != reinterpret_cast<iconv_t>(-1)) handle_ = handle;
}

CodePageConverter::~CodePageConverter() {
  if (handle_ != nullptr) iconv_close(static_cast<iconv_t>(handle_));
}

void CodePageConverter::ConvertLenient(std::string_view in, std::string* out) {
  iconv_t handle = static_cast<iconv_t>(handle_);
  iconv(handle, nullptr, nullptr, nullptr, nullptr);
  char* in_ptr = const_cast<char*>(in.data());
  std::size_t in_left = in.size();
  char buffer[512];
  while (in_left > 0) {
    char* out_ptr = buffer;
    std::size_t out_left = sizeof buffer;
    std::size_t result = iconv(handle, &in_ptr, &in_left, &out_ptr, &out_left);
    out->append(buffer, static_cast<std::size_t>(out_ptr - buffer));
    if (result == static_cast<std::size_t>(-1) && errno != E2BIG) {
      AppendUtf8(0xFFFD, out);  // EILSEQ or a sequence cut at the end
      ++in_ptr;
      --in_left;
      iconv(handle, nullptr, nullptr, nullptr, nullptr);
    }
  }
}

bool CodePageConverter::ConvertExact(std::string_view in, std::string* out) {
  iconv_t handle = static_cast<iconv_t>(handle_);
  iconv(handle, nullptr, nullptr, nullptr, nullptr);
  char* in_ptr = const_cast<char*>(in.data());
  std::size_t in_left = in.size();
  std::string converted(in.size() * 4 + 8, '\0');
  char* out_ptr = converted.data();
  std::size_t out_left = converted.size();
  if (iconv(handle, &in_ptr, &in_left, &out_ptr, &out_left) == static_cast<std::size_t>(-1) ||
      in_left != 0) {
    return false;
  }
  out->append(converted.data(), static_cast<std::size_t>(out_ptr - converted.data()));
  return true;
}

}  // namespace tovik::dxf
