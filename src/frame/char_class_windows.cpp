// The national-language API answers for UTF-16 strings, so a code point
// beyond the basic plane goes in as its surrogate pair; a mapping that does
// not give back exactly one code point leaves it unchanged.
#include <windows.h>

#include "frame/char_class.h"

namespace tovik::chars {
namespace {

int ToUtf16(char32_t cp, wchar_t* out) {
  if (cp < 0x10000) {
    out[0] = static_cast<wchar_t>(cp);
    return 1;
  }
  cp -= 0x10000;
  out[0] = static_cast<wchar_t>(0xD800 + (cp >> 10));
  out[1] = static_cast<wchar_t>(0xDC00 + (cp & 0x3FF));
  return 2;
}

char32_t Map(char32_t cp, DWORD flags) {
  if (cp > 0x10FFFF || (cp >= 0xD800 && cp < 0xE000)) return cp;
  wchar_t in[2];
  wchar_t out[4];
  int n = ToUtf16(cp, in);
  int m = LCMapStringEx(LOCALE_NAME_INVARIANT, flags, in, n, out, 4, nullptr, nullptr, 0);
  if (m == 1 && (out[0] < 0xD800 || out[0] >= 0xE000)) return out[0];
  if (m == 2 && out[0] >= 0xD800 && out[0] < 0xDC00 && out[1] >= 0xDC00 && out[1] < 0xE000) {
    return 0x10000 + ((static_cast<char32_t>(out[0]) - 0xD800) << 10) + (out[1] - 0xDC00);
  }
  return cp;
}

WORD Type(char32_t cp) {
  if (cp > 0x10FFFF || (cp >= 0xD800 && cp < 0xE000)) return 0;
  wchar_t in[2];
  WORD types[2] = {0, 0};
  int n = ToUtf16(cp, in);
  if (!GetStringTypeW(CT_CTYPE1, in, n, types)) return 0;
  return types[0];
}

}  // namespace

char32_t Upper(char32_t cp) { return Map(cp, LCMAP_UPPERCASE); }
char32_t Lower(char32_t cp) { return Map(cp, LCMAP_LOWERCASE); }
// Folding as lower case of the upper case: "ß" and "ẞ" meet, as do the
// Greek final and medial sigma.
char32_t Fold(char32_t cp) { return Lower(Upper(cp)); }
bool IsDigit(char32_t cp) { return (Type(cp) & C1_DIGIT) != 0; }
bool IsLetter(char32_t cp) { return (Type(cp) & C1_ALPHA) != 0; }

}  // namespace tovik::chars
