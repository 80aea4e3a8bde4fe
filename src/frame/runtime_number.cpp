#include "frame/runtime_number.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <system_error>

#include "frame/automation_error.h"

namespace tovik {
namespace {

// Shared by FormatDouble and FormatSingle: `significant` digits, exponent form
// outside the decimal exponents -4..significant-1 (the rule of C's %G, which
// is also where the runtime switches forms).
std::string FormatSignificant(double value, int significant) {
  if (std::isnan(value)) return "-1.#IND";
  if (std::isinf(value)) return value < 0 ? "-1.#INF" : "1.#INF";
  if (value == 0.0) return "0";  // also -0, which the runtime never shows

  // The exact decimal expansion of the binary value (800 fraction digits hold
  // every double exactly), then rounded here: the runtime rounds a tie away
  // from zero (Single 654322.25 shows as "654322.3"), where printf would
  // round it to even.
  char buffer[900];
  std::snprintf(buffer, sizeof buffer, "%.800e", std::fabs(value));
  const std::string_view printed(buffer);
  const size_t e_pos = printed.find('e');
  std::string exact;
  for (char c : printed.substr(0, e_pos)) {
    if (c != '.') exact.push_back(c);
  }
  int exponent = 0;
  std::string_view exponent_text = printed.substr(e_pos + 1);
  if (exponent_text.front() == '+') exponent_text.remove_prefix(1);
  std::from_chars(exponent_text.data(),
                  exponent_text.data() + exponent_text.size(), exponent);

  const size_t keep = static_cast<size_t>(significant);
  std::string digits = exact.substr(0, keep);
  if (exact[keep] >= '5') {
    size_t k = keep;
    while (k > 0 && digits[k - 1] == '9') digits[--k] = '0';
    if (k == 0) {
      digits.insert(digits.begin(), '1');  // 9.99... carried to 10.0...
      digits.pop_back();
      ++exponent;
    } else {
      ++digits[k - 1];
    }
  }
  while (digits.size() > 1 && digits.back() == '0') digits.pop_back();

  std::string out = value < 0 ? "-" : "";
  if (exponent < -4 || exponent >= significant) {
    out += digits[0];
    if (digits.size() > 1) {
      out += '.';
      out.append(digits, 1);
    }
    out += exponent < 0 ? "E-" : "E+";
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude < 10) out += '0';
    out += std::to_string(magnitude);
  } else if (exponent >= 0) {
    const size_t integer_digits = static_cast<size_t>(exponent) + 1;
    if (digits.size() <= integer_digits) {
      out += digits;
      out.append(integer_digits - digits.size(), '0');
    } else {
      out.append(digits, 0, integer_digits);
      out += '.';
      out.append(digits, integer_digits);
    }
  } else {
    out += "0.";
    out.append(static_cast<size_t>(-exponent - 1), '0');
    out += digits;
  }
  return out;
}

bool IsParseBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' ||
         c == '\f';
}

bool IsValBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int RadixDigitValue(char c, int radix) {
  int v = -1;
  if (c >= '0' && c <= '9') v = c - '0';
  if (c >= 'a' && c <= 'f') v = c - 'a' + 10;
  if (c >= 'A' && c <= 'F') v = c - 'A' + 10;
  return v < radix ? v : -1;
}

// A &H / &O value the way VB reads the literal: up to 16 bits it is an
// Integer, up to 32 bits a Long, both signed.
double SignedRadixValue(uint64_t raw) {
  if (raw <= 0xFFFF) {
    return raw >= 0x8000 ? static_cast<double>(raw) - 65536.0
                         : static_cast<double>(raw);
  }
  return raw >= 0x80000000u ? static_cast<double>(raw) - 4294967296.0
                            : static_cast<double>(raw);
}

// Accumulates radix digits; sets `overflow` once the value passes 32 bits.
struct RadixAccumulator {
  int radix;
  uint64_t value = 0;
  int count = 0;
  bool overflow = false;
  void Add(int digit) {
    ++count;
    value = value * static_cast<uint64_t>(radix) + static_cast<uint64_t>(digit);
    if (value > 0xFFFFFFFFu) {
      overflow = true;
      value = 0xFFFFFFFFu + 1;  // keep it from wrapping on later digits
    }
  }
};

// A decimal number collected as plain text ("123.45e-6") for from_chars,
// plus what is needed to tell overflow from underflow when from_chars
// reports the value out of range.
struct DecimalText {
  std::string text;
  int64_t integer_digits = 0;          // significant digits before the point
  int64_t fraction_leading_zeros = 0;  // zeros after the point before any
                                       // nonzero digit, when no integer digits
  bool any_nonzero = false;
  bool in_fraction = false;
  int64_t exponent = 0;  // saturated explicit exponent
  bool exponent_negative = false;

  void AddDigit(char c) {
    text.push_back(c);
    if (c != '0') any_nonzero = true;
    if (!in_fraction) {
      if (integer_digits > 0 || c != '0') ++integer_digits;
    } else if (integer_digits == 0 && !any_nonzero) {
      ++fraction_leading_zeros;
    }
  }
  void AddExponentDigit(char c) {
    text.push_back(c);
    if (exponent < 100000) exponent = exponent * 10 + (c - '0');
  }
};

NumericParse DecimalValue(const DecimalText& number, bool negative) {
  double value = 0.0;
  const char* first = number.text.data();
  const char* last = first + number.text.size();
  const auto [ptr, ec] = std::from_chars(first, last, value);
  if (ptr != last) return {NumericStatus::kNotNumeric, 0.0};
  if (ec == std::errc::result_out_of_range) {
    // Decide by the decimal exponent of the leading significant digit.
    const int64_t explicit_exp =
        number.exponent_negative ? -number.exponent : number.exponent;
    const int64_t position = number.integer_digits > 0
                                 ? number.integer_digits
                                 : -number.fraction_leading_zeros;
    if (explicit_exp + position > 0) return {NumericStatus::kOverflow, 0.0};
    value = 0.0;  // below the smallest Double
  }
  if (value == 0.0) return {NumericStatus::kOk, 0.0};
  return {NumericStatus::kOk, negative ? -value : value};
}

}  // namespace

std::string FormatDouble(double value) { return FormatSignificant(value, 15); }

std::string FormatSingle(float value) {
  return FormatSignificant(static_cast<double>(value), 7);
}

double RoundHalfEven(double value) {
  if (!std::isfinite(value)) return value;
  const double below = std::floor(value);
  // Exact: for |value| < 2^52 the difference is representable, and beyond
  // that every double is already an integer.
  const double fraction = value - below;
  if (fraction < 0.5) return below;
  if (fraction > 0.5) return below + 1.0;
  return std::fmod(below, 2.0) == 0.0 ? below : below + 1.0;
}

std::optional<int16_t> ToInteger(double value) {
  const double rounded = RoundHalfEven(value);
  if (!(rounded >= -32768.0 && rounded <= 32767.0)) return std::nullopt;
  return static_cast<int16_t>(rounded);
}

std::optional<int32_t> ToLong(double value) {
  const double rounded = RoundHalfEven(value);
  if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0)) {
    return std::nullopt;
  }
  return static_cast<int32_t>(rounded);
}

std::optional<uint8_t> ToByte(double value) {
  const double rounded = RoundHalfEven(value);
  if (!(rounded >= 0.0 && rounded <= 255.0)) return std::nullopt;
  return static_cast<uint8_t>(rounded);
}

NumericParse ParseNumericText(std::string_view text) {
  constexpr NumericParse kNotNumeric{NumericStatus::kNotNumeric, 0.0};
  size_t i = 0;
  const size_t n = text.size();
  bool negative = false;
  bool has_sign = false;
  bool has_paren = false;
  bool has_currency = false;

  // Leading part: blanks, one sign, one "(", one "$", in any order.
  for (; i < n; ++i) {
    const char c = text[i];
    if (IsParseBlank(c)) continue;
    if ((c == '+' || c == '-') && !has_sign && !has_paren) {
      has_sign = true;
      negative = c == '-';
    } else if (c == '(' && !has_paren && !has_sign) {
      has_paren = true;
    } else if (c == '$' && !has_currency) {
      has_currency = true;
    } else {
      break;
    }
  }

  NumericParse result;
  if (i + 1 < n && text[i] == '&' &&
      (text[i + 1] == 'H' || text[i + 1] == 'h' || text[i + 1] == 'O' ||
       text[i + 1] == 'o')) {
    RadixAccumulator digits{(text[i + 1] == 'H' || text[i + 1] == 'h') ? 16
                                                                       : 8};
    for (i += 2; i < n; ++i) {
      const int d = RadixDigitValue(text[i], digits.radix);
      if (d < 0) break;
      digits.Add(d);
    }
    if (digits.count == 0) return kNotNumeric;
    result = digits.overflow ? NumericParse{NumericStatus::kOverflow, 0.0}
                             : NumericParse{NumericStatus::kOk,
                                            SignedRadixValue(digits.value)};
  } else {
    DecimalText number;
    int digit_count = 0;
    for (; i < n; ++i) {
      const char c = text[i];
      if (IsDigit(c)) {
        number.AddDigit(c);
        ++digit_count;
      } else if (c == ',' && !number.in_fraction && digit_count > 0) {
        continue;  // thousands separator
      } else if (c == '.' && !number.in_fraction) {
        number.in_fraction = true;
        number.text.push_back('.');
      } else {
        break;
      }
    }
    if (digit_count == 0) return kNotNumeric;
    if (i < n && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' ||
                  text[i] == 'd')) {
      number.text.push_back('e');
      ++i;
      if (i < n && (text[i] == '+' || text[i] == '-')) {
        number.exponent_negative = text[i] == '-';
        number.text.push_back(text[i]);
        ++i;
      }
      int exponent_digits = 0;
      for (; i < n && IsDigit(text[i]); ++i, ++exponent_digits) {
        number.AddExponentDigit(text[i]);
      }
      if (exponent_digits == 0) return kNotNumeric;
    }
    result = DecimalValue(number, false);
  }

  // Trailing part: blanks, one sign (only without a leading one), the ")".
  bool closed = false;
  for (; i < n; ++i) {
    const char c = text[i];
    if (IsParseBlank(c)) continue;
    if ((c == '+' || c == '-') && !has_sign && !has_paren) {
      has_sign = true;
      negative = c == '-';
    } else if (c == ')' && has_paren && !closed) {
      closed = true;
    } else {
      return kNotNumeric;
    }
  }
  if (has_paren && !closed) return kNotNumeric;
  if (has_paren) negative = true;
  if (result.status == NumericStatus::kOk && negative && result.value != 0.0) {
    result.value = -result.value;
  }
  return result;
}

std::optional<double> ParseNumeric(std::string_view text) {
  const NumericParse parsed = ParseNumericText(text);
  if (parsed.status != NumericStatus::kOk) return std::nullopt;
  return parsed.value;
}

std::optional<double> Val(std::string_view text) {
  // Val ignores blanks everywhere, so read through a cursor that skips them.
  size_t i = 0;
  const size_t n = text.size();
  auto skip = [&] {
    while (i < n && IsValBlank(text[i])) ++i;
  };
  auto peek = [&]() -> char {
    skip();
    return i < n ? text[i] : '\0';
  };

  if (peek() == '&') {
    ++i;
    const char kind = peek();
    int radix = 0;
    if (kind == 'H' || kind == 'h') radix = 16;
    if (kind == 'O' || kind == 'o') radix = 8;
    if (radix == 0) return 0.0;
    ++i;
    RadixAccumulator digits{radix};
    for (int d; (d = RadixDigitValue(peek(), radix)) >= 0; ++i) digits.Add(d);
    if (digits.overflow) return std::nullopt;
    const double value = SignedRadixValue(digits.value);
    return value == 0.0 ? 0.0 : value;
  }

  bool negative = false;
  if (peek() == '+' || peek() == '-') {
    negative = text[i] == '-';
    ++i;
  }
  DecimalText number;
  int digit_count = 0;
  for (char c; (c = peek()) != '\0'; ++i) {
    if (IsDigit(c)) {
      number.AddDigit(c);
      ++digit_count;
    } else if (c == '.' && !number.in_fraction) {
      number.in_fraction = true;
      number.text.push_back('.');
    } else {
      break;
    }
  }
  if (digit_count == 0) return 0.0;

  const char e = peek();
  if (e == 'E' || e == 'e' || e == 'D' || e == 'd') {
    // Only taken when digits follow; otherwise the number ends before it.
    const size_t mark = i;
    ++i;
    std::string exponent_part = "e";
    bool exponent_negative = false;
    if (peek() == '+' || peek() == '-') {
      exponent_negative = text[i] == '-';
      exponent_part.push_back(text[i]);
      ++i;
    }
    if (IsDigit(peek())) {
      number.text += exponent_part;
      number.exponent_negative = exponent_negative;
      for (char c; IsDigit(c = peek()); ++i) number.AddExponentDigit(c);
    } else {
      i = mark;
    }
  }

  const NumericParse parsed = DecimalValue(number, negative);
  if (parsed.status == NumericStatus::kOverflow) return std::nullopt;
  return parsed.value;
}

double DivideDoubles(double a, double b) {
  if (b == 0.0) throw a == 0.0 ? errors::Overflow() : errors::DivisionByZero();
  double q = a / b;
  if (!std::isfinite(q)) throw errors::Overflow();
  return q;
}

}  // namespace tovik
