// Number semantics of the Automation runtime: the standard text form of
// Double and Single values, banker's rounding and the checked integer
// conversions built on it, and the two ways the runtime reads numbers from
// text (the strict form CDbl and IsNumeric accept, and Val's lenient scan).
//
// The locale is fixed to en-US: "." is the decimal separator and "," the
// thousands separator, whatever the machine's settings are.

#ifndef TOVIK_FRAME_RUNTIME_NUMBER_H_
#define TOVIK_FRAME_RUNTIME_NUMBER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tovik {

// Returns the runtime's standard text for a Double (what CStr and string
// concatenation produce): the exact binary value rounded to 15 significant
// digits, a tie away from zero; trailing zeros dropped; "." as decimal
// separator; no leading "+". Exponent form ("1.5E-07", "1E+15", "-2.5E+100")
// is used when the decimal exponent of the rounded value is 15 or more or less
// than -4; the exponent always carries a sign and at least two digits. Both
// zeros give "0".
// Infinities and NaN cannot arise from VB arithmetic (it raises overflow
// instead); they give "1.#INF", "-1.#INF" and "-1.#IND", the texts the
// classic Windows C runtime printed for them.
std::string FormatDouble(double value);

// Returns the runtime's standard text for a Single: as FormatDouble, with 7
// significant digits, so exponent form starts at 1E+07.
std::string FormatSingle(float value);

// Rounds to the nearest integer, halves to the even neighbour (banker's
// rounding, as CInt, CLng and CByte do): 2.5 -> 2, 3.5 -> 4, -2.5 -> -2.
// Infinities and NaN are returned unchanged.
double RoundHalfEven(double value);

// a / b as the runtime divides Doubles: 0 / 0 raises Overflow (6), any
// other division by zero raises Division by zero (11), and a quotient too
// large for a Double raises Overflow.
double DivideDoubles(double a, double b);

// CInt: rounds half to even and returns the Integer, or nullopt when the
// rounded value lies outside -32768..32767 or is NaN (the caller raises
// overflow, error 6).
std::optional<int16_t> ToInteger(double value);

// CLng: as ToInteger, for -2147483648..2147483647.
std::optional<int32_t> ToLong(double value);

// CByte: as ToInteger, for 0..255. -0.5 rounds to 0 and is accepted.
std::optional<uint8_t> ToByte(double value);

// How reading a number from text ended.
enum class NumericStatus {
  kOk,          // the whole text is a number; `value` holds it
  kNotNumeric,  // CDbl raises type mismatch (13); IsNumeric is False
  kOverflow,    // a number beyond the Double (or 32-bit hex) range: error 6
};

struct NumericParse {
  NumericStatus status = NumericStatus::kNotNumeric;
  double value = 0.0;  // meaningful only when status is kOk
};

// Reads text the way CDbl and IsNumeric do (the Automation runtime's standard
// number parsing, en-US). The whole text must be used. Accepted:
//   - blanks (space, tab, CR, LF, VT, FF) before and after;
//   - before the number, in any order and each at most once: a sign "+"/"-",
//     an opening "(" (then a closing ")" must follow the number and the value
//     is negated), a currency sign "$";
//   - digits with "," thousands separators anywhere after the first digit of
//     the integer part (group sizes are not checked: "1,00" is 100), an
//     optional "." and fraction digits; at least one digit overall;
//   - an optional exponent: E, e, D or d, an optional sign, one or more
//     digits;
//   - a trailing sign "+"/"-" when there was no leading sign or "(";
//   - instead of decimal digits, "&H" hex or "&O" octal digits (after an
//     optional sign). Like VB literals, values up to &HFFFF are 16-bit signed
//     (&HFFFF = -1, &H8000 = -32768) and larger ones up to &HFFFFFFFF are
//     32-bit signed (&H10000 = 65536, &HFFFFFFFF = -1); beyond that is
//     overflow.
// Empty text, blanks only, "." and "+" are not numeric. Magnitudes below the
// smallest Double read as 0.
NumericParse ParseNumericText(std::string_view text);

// The value of ParseNumericText when it is kOk; nullopt otherwise.
std::optional<double> ParseNumeric(std::string_view text);

// VB's Val: reads the longest numeric prefix of text and returns its value,
// 0 when there is none. Spaces, tabs and line feeds are skipped everywhere,
// even inside the number (Val(" 1 2 3") = 123). Accepts one leading sign,
// digits, "." as the only decimal separator (commas and currency signs stop
// the scan), an exponent E or D (letter case ignored) with optional sign, and
// "&H"/"&O" prefixes read as ParseNumericText does (Val("&HFFFF") = -1).
// An exponent letter without digits is ignored (Val("2E") = 2).
// Returns nullopt when the number overflows a Double or a hex/octal value
// exceeds 32 bits (the caller raises overflow, error 6). Zero is always +0.
std::optional<double> Val(std::string_view text);

}  // namespace tovik

#endif  // TOVIK_FRAME_RUNTIME_NUMBER_H_
