#include "frame/variant_compare.h"

#include <cstdint>

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {
namespace {

// One code point of UTF-8 text at `pos`, advancing `pos`. A byte that does
// not start a valid sequence is taken as itself.
uint32_t NextCodePoint(std::string_view text, size_t& pos) {
  unsigned char lead = static_cast<unsigned char>(text[pos]);
  int extra = lead < 0x80 ? 0 : (lead >> 5) == 0x6 ? 1 : (lead >> 4) == 0xE ? 2
              : (lead >> 3) == 0x1E ? 3 : -1;
  if (extra <= 0 || pos + static_cast<size_t>(extra) >= text.size()) {
    ++pos;
    return lead;
  }
  uint32_t cp = lead & (0x3F >> extra);
  for (int i = 1; i <= extra; ++i) {
    unsigned char c = static_cast<unsigned char>(text[pos + static_cast<size_t>(i)]);
    if ((c & 0xC0) != 0x80) {
      ++pos;
      return lead;
    }
    cp = (cp << 6) | (c & 0x3F);
  }
  pos += static_cast<size_t>(extra) + 1;
  return cp;
}

// A sort key that orders code points as their UTF-16 code units order:
// characters beyond the Basic Multilingual Plane start with a surrogate
// (D800..DBFF), below the private-use and compatibility block E000..FFFF.
uint32_t Utf16OrderKey(uint32_t cp) {
  if (cp >= 0x10000) return 0xD800 + (cp - 0x10000);
  if (cp >= 0xE000) return cp + 0x100000;
  return cp;
}

// What an operand reduces to before the comparison picks its effective type.
Variant Operand(const Variant& value) {
  if (value.IsArray() || value.IsError()) throw errors::TypeMismatch();
  if (value.IsObject()) return Operand(ValueOf(value));
  return value;
}

bool IsIntegral(VarType type) {
  return type == VarType::kInteger || type == VarType::kLong ||
         type == VarType::kLongLong || type == VarType::kByte ||
         type == VarType::kBoolean;
}

template <class T>
Comparison Order(T a, T b) {
  if (a < b) return Comparison::kLess;
  if (b < a) return Comparison::kGreater;
  return Comparison::kEqual;
}

Comparison CompareNumbers(const Variant& a, const Variant& b) {
  if (IsIntegral(a.Type()) && IsIntegral(b.Type())) {
    return Order(a.RawInt(), b.RawInt());
  }
  return Order(NumberOf(a), NumberOf(b));
}

// A number against a string: the string takes the number's type.
Comparison CompareNumberWithText(const Variant& number, const Variant& text,
                                 bool number_first) {
  Variant converted = number.IsBoolean()
                          ? Variant(CBool(text))
                          : ConvertTo(text, number.Type());
  return number_first ? CompareNumbers(number, converted)
                      : CompareNumbers(converted, number);
}

}  // namespace

int CompareTextBinary(std::string_view a, std::string_view b) {
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    uint32_t ka = Utf16OrderKey(NextCodePoint(a, i));
    uint32_t kb = Utf16OrderKey(NextCodePoint(b, j));
    if (ka != kb) return ka < kb ? -1 : 1;
  }
  if (i < a.size()) return 1;
  if (j < b.size()) return -1;
  return 0;
}

Comparison CompareValues(const Variant& a_in, const Variant& b_in) {
  Variant a = Operand(a_in);
  Variant b = Operand(b_in);
  if (a.IsNull() || b.IsNull()) return Comparison::kNull;
  if (a.IsEmpty() && b.IsEmpty()) return Comparison::kEqual;
  if (a.IsString() || b.IsString()) {
    if (a.IsString() && b.IsString()) {
      int c = CompareTextBinary(a.RawString(), b.RawString());
      return c < 0 ? Comparison::kLess : c > 0 ? Comparison::kGreater : Comparison::kEqual;
    }
    if (a.IsEmpty()) return CompareValues(Variant(std::string()), b);
    if (b.IsEmpty()) return CompareValues(a, Variant(std::string()));
    return a.IsString() ? CompareNumberWithText(b, a, false)
                        : CompareNumberWithText(a, b, true);
  }
  // Empty against a number reads as 0.
  if (a.IsEmpty()) a = Variant(int16_t{0});
  if (b.IsEmpty()) b = Variant(int16_t{0});
  return CompareNumbers(a, b);
}

bool ValuesEqual(const Variant& a, const Variant& b) {
  return CompareValues(a, b) == Comparison::kEqual;
}

bool ValueLess(const Variant& a, const Variant& b) {
  return CompareValues(a, b) == Comparison::kLess;
}

bool ValueGreater(const Variant& a, const Variant& b) {
  return CompareValues(a, b) == Comparison::kGreater;
}

}  // namespace tovik
