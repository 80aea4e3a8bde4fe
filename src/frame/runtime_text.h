// Text semantics of the Automation runtime over UTF-8 strings: case mapping
// and case-insensitive comparison of names, VB's Trim family, Split, Like and
// the character functions Len, Left, Right and Mid.
//
// Character-level operations count Unicode code points. (VB itself counts
// UTF-16 units, so a character outside the Basic Multilingual Plane is one
// character here and two there.) Bytes that are not valid UTF-8 are kept as
// they are and count as one character each.

#ifndef TOVIK_FRAME_RUNTIME_TEXT_H_
#define TOVIK_FRAME_RUNTIME_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tovik {

// UCase: every code point replaced by its simple (one-to-one) uppercase
// mapping, the way the runtime maps characters one by one: "ёлка" -> "ЁЛКА",
// "straße" -> "STRAßE" (ß has no single-character uppercase and stays).
// Independent of locale: "i" -> "I" everywhere.
std::string UCase(std::string_view text);

// LCase: every code point replaced by its simple lowercase mapping.
std::string LCase(std::string_view text);

// Simple case folding per code point (Unicode CaseFolding C+S), the form in
// which names are compared: "ΣΑΣ" and "σας" fold alike, "K" (Kelvin sign)
// folds to "k". "ß" does not fold to "ss".
std::string FoldCase(std::string_view text);

// True when `a` and `b` are equal after FoldCase. Allocates nothing; pure
// ASCII is compared byte by byte.
bool CaseInsensitiveEqual(std::string_view a, std::string_view b);

// Orders `a` and `b` by their folded code points, a proper prefix first:
// negative, zero or positive. Zero exactly when CaseInsensitiveEqual.
int CaseInsensitiveCompare(std::string_view a, std::string_view b);

// A hash of the folded text: equal for texts that are CaseInsensitiveEqual.
// Allocates nothing.
size_t CaseInsensitiveHash(std::string_view text);

// Hash and equality functors for unordered containers keyed by host names.
struct CaseInsensitiveHasher {
  size_t operator()(std::string_view text) const {
    return CaseInsensitiveHash(text);
  }
};
struct CaseInsensitiveEqualTo {
  bool operator()(std::string_view a, std::string_view b) const {
    return CaseInsensitiveEqual(a, b);
  }
};

// LTrim, RTrim, Trim: remove leading, trailing or both runs of spaces
// (U+0020 only; tabs and other blanks stay, as in VB).
std::string_view LTrim(std::string_view text);
std::string_view RTrim(std::string_view text);
std::string_view Trim(std::string_view text);

// VB's Split with binary comparison. Returns the pieces of `text` between
// occurrences of `delimiter`, scanning left to right without overlap.
//   - Empty `text` gives no elements (the caller's array has UBound -1).
//   - Empty `delimiter` gives one element, the whole text.
//   - `limit` -1 returns all pieces; limit n >= 1 returns at most n, the last
//     holding the unsplit rest; limit 0 returns no elements.
// REQUIRES: limit >= -1 (VB raises invalid procedure call, error 5, for other
// negative limits; the caller checks).
std::vector<std::string> Split(std::string_view text,
                               std::string_view delimiter = " ",
                               int limit = -1);

// `text Like pattern` under Option Compare Binary (code points compared
// exactly). In the pattern:
//   *        any run of characters, including none
//   ?        exactly one character
//   #        one digit 0-9
//   [list]   one character in the list: single characters and ascending
//            ranges "a-z"; "-" first or last is itself; "[!list]" negates;
//            "*", "?", "#" and "[" inside brackets are plain, so "[*]" matches
//            a star; "[]" matches nothing (zero length); "[!]" matches any one
//            character
//   ]        outside brackets, a plain "]"
// Returns nullopt for a malformed pattern: an unclosed "[" or a descending
// range such as "[z-a]" (the caller raises invalid pattern string, error 93).
// Runs in O(len(text) * len(pattern)) at worst.
std::optional<bool> Like(std::string_view text, std::string_view pattern);

// Len: the number of characters (code points) in `text`.
int64_t Len(std::string_view text);

// Left: the first `length` characters of `text` (all of it when shorter).
// REQUIRES: length >= 0 (VB raises error 5 otherwise).
std::string Left(std::string_view text, int64_t length);

// Right: the last `length` characters of `text` (all of it when shorter).
// REQUIRES: length >= 0.
std::string Right(std::string_view text, int64_t length);

// Mid: `length` characters of `text` from the 1-based character `start`;
// to the end when `length` is omitted or runs past it; "" when `start` is
// past the end.
// REQUIRES: start >= 1 and length >= 0 when given (VB raises error 5).
std::string Mid(std::string_view text, int64_t start,
                std::optional<int64_t> length = std::nullopt);

}  // namespace tovik

#endif  // TOVIK_FRAME_RUNTIME_TEXT_H_
