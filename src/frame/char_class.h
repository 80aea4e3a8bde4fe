// Case mapping and classes of single code points: the one place the library
// asks the platform about letters. Linux builds answer from ICU; Windows
// builds from the national-language API, as the host itself compares names
// there. Every other file folds, maps and classifies through these.
#ifndef TOVIK_FRAME_CHAR_CLASS_H_
#define TOVIK_FRAME_CHAR_CLASS_H_

namespace tovik::chars {

// The simple (one code point to one) mappings; code points without one map
// to themselves.
char32_t Upper(char32_t cp);
char32_t Lower(char32_t cp);
// The case-folded form names are compared under.
char32_t Fold(char32_t cp);

bool IsDigit(char32_t cp);
bool IsLetter(char32_t cp);

}  // namespace tovik::chars

#endif  // TOVIK_FRAME_CHAR_CLASS_H_
