// The runtime's relational operators (=, <, >) on Variants, under
// Option Compare Binary.
//
// How two values compare depends on what they hold, as the runtime decides
// the "effective type" of a comparison:
//   - Null on either side: the result is Null (neither equal nor ordered;
//     an If on it takes the False branch).
//   - Both numbers (Integer, Long, LongLong, Single, Double, Date, Byte,
//     Boolean with True = -1): numeric comparison.
//   - Both strings: binary comparison, in the order of the runtime's UTF-16
//     code units (a character beyond U+FFFF sorts below U+E000..U+FFFF).
//   - A number and a string: the string is converted to the number's type
//     (CInt for an Integer, CDbl for a Double...) and the two compare as
//     numbers, so 1 = "1" and 10 > "9"; a string that does not read as a
//     number raises type mismatch (13); a Boolean and a string compare as
//     Booleans (CBool of the string).
//   - Empty against a number is 0, against a string "", against Empty equal.
//   - An object compares through its default member (Nothing raises 91).
//   - An array or an Error value raises type mismatch (13).
#ifndef TOVIK_FRAME_VARIANT_COMPARE_H_
#define TOVIK_FRAME_VARIANT_COMPARE_H_

#include <string_view>

#include "frame/variant.h"

namespace tovik {

// Outcome of a relational comparison of a and b.
enum class Comparison { kLess, kEqual, kGreater, kNull };

// Compares a with b as the relational operators do (rules above). Raises
// 13, 91 or 6 (a string too large for an Integer or Long operand).
Comparison CompareValues(const Variant& a, const Variant& b);

// a = b; False when either is Null.
bool ValuesEqual(const Variant& a, const Variant& b);
// a < b; False when either is Null.
bool ValueLess(const Variant& a, const Variant& b);
// a > b; False when either is Null.
bool ValueGreater(const Variant& a, const Variant& b);

// Binary text comparison in UTF-16 code unit order: negative, zero or
// positive. A proper prefix sorts first.
int CompareTextBinary(std::string_view a, std::string_view b);

}  // namespace tovik

#endif  // TOVIK_FRAME_VARIANT_COMPARE_H_
