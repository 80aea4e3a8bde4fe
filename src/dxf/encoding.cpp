#include "dxf/encoding.h"

#include <cstdio>
#include <cstring>

#include "dxf/code_page.h"

namespace tovik::dxf {
namespace {

struct CodePageName {
  std::string_view dxf;
  std::string_view iconv;
};

// $DWGCODEPAGE names AutoCAD writes, with the glibc iconv converter for each.
constexpr CodePageName kCodePages[] = {
    {"ANSI_874", "CP874"},       {"ANSI_932", "CP932"},       {"ANSI_936", "CP936"},
    {"ANSI_949", "CP949"},       {"ANSI_950", "CP950"},       {"ANSI_1250", "CP1250"},
    {"ANSI_1251", "CP1251"},     {"ANSI_1252", "CP1252"},     {"ANSI_1253", "CP1253"},
    {"ANSI_1254", "CP1254"},     {"ANSI_1255", "CP1255"},     {"ANSI_1256", "CP1256"},
    {"ANSI_1257", "CP1257"},     {"ANSI_1258", "CP1258"},     {"ANSI_1361", "JOHAB"},
    {"dos437", "CP437"},         {"dos850", "CP850"},         {"dos852", "CP852"},
    {"dos855", "CP855"},         {"dos857", "CP857"},         {"dos860", "CP860"},
    {"dos861", "CP861"},         {"dos863", "CP863"},         {"dos864", "CP864"},
    {"dos865", "CP865"},         {"dos866", "CP866"},         {"dos869", "CP869"},
    {"dos932", "CP932"},         {"iso8859-1", "ISO-8859-1"}, {"iso8859-2", "ISO-8859-2"},
    {"iso8859-3", "ISO-8859-3"}, {"iso8859-4", "ISO-8859-4"}, {"iso8859-5", "ISO-8859-5"},
    {"iso8859-6", "ISO-8859-6"}, {"iso8859-7", "ISO-8859-7"}, {"iso8859-8", "ISO-8859-8"},
    {"iso8859-9", "ISO-8859-9"}, {"mac-roman", "MACINTOSH"},  {"big5", "BIG5"},
    {"ksc5601", "CP949"},        {"johab", "JOHAB"},          {"gb2312", "GB2312"},
    {"UTF8", "UTF-8"},           {"UTF-8", "UTF-8"},
};

// The code pages of \M+N escapes, N = 1..5.
constexpr std::string_view kMifCodePages[] = {"CP932", "CP950", "CP949", "JOHAB", "CP936"};

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x + 32);
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y + 32);
    if (x != y) return false;
  }
  return true;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Returns the value of 4 hex digits at `text[at]`, or -1.
int Hex4(std::string_view text, std::size_t at) {
  if (at + 4 > text.size()) return -1;
  int value = 0;
  for (std::size_t i = at; i < at + 4; ++i) {
    int digit = HexDigit(text[i]);
    if (digit < 0) return -1;
    value = value * 16 + digit;
  }
  return value;
}

bool NeedsDecoding(std::string_view raw) {
  for (char c : raw) {
    if ((static_cast<unsigned char>(c) & 0x80) != 0 || c == '\\') return true;
  }
  return false;
}

}  // namespace

bool IsUtf8Version(std::string_view acad_version) {
  if (acad_version.size() != 6 || !acad_version.starts_with("AC")) return false;
  for (char c : acad_version.substr(2)) {
    if (c < '0' || c > '9') return false;
  }
  return acad_version >= kFirstUtf8Version;
}

std::string_view IconvNameOfCodePage(std::string_view dwg_code_page) {
  for (const CodePageName& page : kCodePages) {
    if (EqualsIgnoreCase(page.dxf, dwg_code_page)) return page.iconv;
  }
  return {};
}

bool IsValidUtf8(std::string_view text) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const auto* end = p + text.size();
  while (p < end) {
    unsigned char c = *p;
    if (c < 0x80) {
      ++p;
      continue;
    }
    int extra;
    char32_t code_point;
    if (c >= 0xC2 && c <= 0xDF) {
      extra = 1, code_point = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
      extra = 2, code_point = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      extra = 3, code_point = c & 0x07;
    } else {
      return false;
    }
    if (end - p <= extra) return false;
    for (int i = 1; i <= extra; ++i) {
      if ((p[i] & 0xC0) != 0x80) return false;
      code_point = (code_point << 6) | (p[i] & 0x3F);
    }
    if ((extra == 2 && code_point < 0x800) || (extra == 3 && code_point < 0x10000) ||
        code_point > 0x10FFFF || (code_point >= 0xD800 && code_point <= 0xDFFF)) {
      return false;
    }
    p += extra + 1;
  }
  return true;
}

void AppendUtf8(char32_t code_point, std::string* out) {
  if (code_point > 0x10FFFF || (code_point >= 0xD800 && code_point <= 0xDFFF)) {
    code_point = 0xFFFD;
  }
  if (code_point < 0x80) {
    *out += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    *out += static_cast<char>(0xC0 | (code_point >> 6));
    *out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else if (code_point < 0x10000) {
    *out += static_cast<char>(0xE0 | (code_point >> 12));
    *out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
    *out += static_cast<char>(0x80 | (code_point & 0x3F));
  } else {
    *out += static_cast<char>(0xF0 | (code_point >> 18));
    *out += static_cast<char>(0x80 | ((code_point >> 12) & 0x3F));
    *out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
    *out += static_cast<char>(0x80 | (code_point & 0x3F));
  }
}

TextDecoder::TextDecoder(std::string_view dwg_code_page, bool utf8_file) : utf8_file_(utf8_file) {
  std::string_view name = IconvNameOfCodePage(dwg_code_page);
  code_page_iconv_name_ = name.empty() ? "CP1252" : std::string(name);
}

TextDecoder::~TextDecoder() = default;

bool TextDecoder::Decode(std::string_view raw, std::string* out, std::string* escaped_form) {
  if (escaped_form != nullptr) escaped_form->clear();
  if (!NeedsDecoding(raw)) return true;
  std::string converted;
  std::string_view utf8 = raw;
  bool is_utf8 = (utf8_file_ || code_page_iconv_name_ == "UTF-8") && IsValidUtf8(raw);
  if (!is_utf8) {
    ConvertCodePage(raw, &converted);
    utf8 = converted;
  }
  out->clear();
  if (utf8_file_) {
    // From R2007 a \U+ sequence is text (an MTEXT code, a literal name);
    // only the file's code page stood in need of escapes.
    if (is_utf8) return true;
    out->swap(converted);
    return false;
  }
  DecodeEscapes(utf8, out);
  if (escaped_form != nullptr && utf8.find("\\U+") != std::string_view::npos) {
    escaped_form->assign(utf8);
  }
  return *out == raw;
}

void TextDecoder::ConvertCodePage(std::string_view raw, std::string* out) {
  if (!code_page_) code_page_ = std::make_unique<CodePageConverter>("UTF-8", code_page_iconv_name_);
  if (!code_page_->ok()) {
    // No converter installed: read the bytes as Latin-1 rather than fail.
    for (unsigned char c : raw) AppendUtf8(c, out);
    return;
  }
  code_page_->ConvertLenient(raw, out);
}

void TextDecoder::DecodeEscapes(std::string_view text, std::string* out) {
  out->reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    char c = text[i];
    if (c == '\\' && i + 2 < text.size() && text[i + 2] == '+') {
      if (text[i + 1] == 'U') {
        int unit = Hex4(text, i + 3);
        if (unit >= 0) {
          i += 7;
          char32_t code_point = static_cast<char32_t>(unit);
          // A surrogate pair is written as two escapes.
          if (unit >= 0xD800 && unit <= 0xDBFF && text.substr(i, 3) == "\\U+") {
            int low = Hex4(text, i + 3);
            if (low >= 0xDC00 && low <= 0xDFFF) {
              code_point = 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) +
                           (static_cast<char32_t>(low) - 0xDC00);
              i += 7;
            }
          }
          AppendUtf8(code_point, out);
          continue;
        }
      } else if (text[i + 1] == 'M' && i + 3 < text.size() && text[i + 3] >= '1' &&
                 text[i + 3] <= '5') {
        int bytes = Hex4(text, i + 4);
        if (bytes >= 0) {
          const char pair[2] = {static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)};
          CodePageConverter mif("UTF-8", kMifCodePages[text[i + 3] - '1']);
          if (mif.ok()) {
            mif.ConvertLenient(std::string_view(pair, 2), out);
            i += 8;
            continue;
          }
        }
      }
    }
    *out += c;
    ++i;
  }
}

TextEncoder::TextEncoder(std::string_view dwg_code_page) {
  std::string name(IconvNameOfCodePage(dwg_code_page));
  if (name.empty()) name = "CP1252";
  if (name == "UTF-8") return;  // a pre-R2007 reader would not take UTF-8
  auto converter = std::make_unique<CodePageConverter>(name, "UTF-8");
  if (converter->ok()) to_code_page_ = std::move(converter);
}

TextEncoder::~TextEncoder() = default;

void TextEncoder::Append(std::string_view text, std::string* out) {
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t start = i;
    while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) ++i;
    if (i > start) EncodeForDxf(text.substr(start, i - start), true, out);
    if (i == text.size()) break;
    // One non-ASCII UTF-8 sequence: lead byte and its continuation bytes.
    std::size_t end = i + 1;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
    std::string_view sequence = text.substr(i, end - i);
    i = end;
    if (to_code_page_ && IsValidUtf8(sequence) && to_code_page_->ConvertExact(sequence, out)) {
      continue;
    }
    EncodeForDxf(sequence, true, out);
  }
}

void EncodeForDxf(std::string_view text, bool escape_non_ascii, std::string* out) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const auto* end = p + text.size();
  while (p < end) {
    unsigned char c = *p;
    if (c < 0x20 && c != '\t') {
      *out += '^';
      *out += static_cast<char>(c + 0x40);
      ++p;
      continue;
    }
    if (c < 0x80 || !escape_non_ascii) {
      *out += static_cast<char>(c);
      ++p;
      continue;
    }
    // Decode one UTF-8 sequence; a malformed one escapes as U+FFFD.
    int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    char32_t code_point = 0xFFFD;
    if (extra > 0 && end - p > extra &&
        IsValidUtf8(std::string_view(reinterpret_cast<const char*>(p), extra + 1))) {
      code_point = c & (0x3F >> extra);
      for (int i = 1; i <= extra; ++i) code_point = (code_point << 6) | (p[i] & 0x3F);
      p += extra + 1;
    } else {
      ++p;
    }
    char escaped[32];
    if (code_point > 0xFFFF) {
      char32_t v = code_point - 0x10000;
      std::snprintf(escaped, sizeof escaped, "\\U+%04X\\U+%04X",
                    static_cast<unsigned>(0xD800 + (v >> 10)),
                    static_cast<unsigned>(0xDC00 + (v & 0x3FF)));
    } else {
      std::snprintf(escaped, sizeof escaped, "\\U+%04X", static_cast<unsigned>(code_point));
    }
    *out += escaped;
  }
}

}  // namespace tovik::dxf
