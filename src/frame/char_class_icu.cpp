#include <unicode/uchar.h>

#include "frame/char_class.h"

namespace tovik::chars {

char32_t Upper(char32_t cp) { return static_cast<char32_t>(u_toupper(static_cast<UChar32>(cp))); }
char32_t Lower(char32_t cp) { return static_cast<char32_t>(u_tolower(static_cast<UChar32>(cp))); }
char32_t Fold(char32_t cp) {
  return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(cp), U_FOLD_CASE_DEFAULT));
}
bool IsDigit(char32_t cp) { return u_isdigit(static_cast<UChar32>(cp)); }
bool IsLetter(char32_t cp) { return u_isalpha(static_cast<UChar32>(cp)); }

}  // namespace tovik::chars
