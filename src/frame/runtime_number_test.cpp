#include "frame/runtime_number.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace tovik {
namespace {

struct DoubleText {
  double value;
  const char* text;
};

TEST(FormatDouble, MatchesRuntimeText) {
  const std::vector<DoubleText> cases = {
      {0.0, "0"},
      {-0.0, "0"},  // negative zero is never shown with a sign
      {2.5, "2.5"},
      {-123.456, "-123.456"},
      {100.0, "100"},
      {0.1 + 0.2, "0.3"},  // 0.30000000000000004 at 15 digits
      {1.0 / 3.0, "0.333333333333333"},
      {2.0 / 3.0, "0.666666666666667"},
      {3.14159265358979323846, "3.14159265358979"},
      {1234567.5, "1234567.5"},
      // Upper switch: exponent 14 is the last fixed form, 15 the first
      // exponent form.
      {1e14, "100000000000000"},
      {999999999999999.0, "999999999999999"},
      {1e15, "1E+15"},
      {999999999999999.9, "1E+15"},  // rounds up into exponent 15
      {123456789012345678.0, "1.23456789012346E+17"},
      {1e20, "1E+20"},
      {-2.5e100, "-2.5E+100"},
      {DBL_MAX, "1.79769313486232E+308"},
      // Lower switch: exponent -4 is the last fixed form, -5 the first
      // exponent form.
      {0.0001, "0.0001"},
      {0.00012345, "0.00012345"},
      {0.00001, "1E-05"},
      {0.000099999999999999, "9.9999999999999E-05"},
      {1.5e-7, "1.5E-07"},
      {-1.5e-7, "-1.5E-07"},
      {1e-100, "1E-100"},
      {4.9406564584124654e-324, "4.94065645841247E-324"},  // smallest
      // 100000000000000.5 is exact in binary: a tie at the 15th digit rounds
      // away from zero.
      {100000000000000.5, "100000000000001"},
      {-100000000000000.5, "-100000000000001"},
  };
  for (const DoubleText& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(FormatDouble(c.value), c.text);
  }
}

TEST(FormatDouble, NonFiniteValuesGiveClassicRuntimeText) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(FormatDouble(inf), "1.#INF");
  EXPECT_EQ(FormatDouble(-inf), "-1.#INF");
  EXPECT_EQ(FormatDouble(std::nan("")), "-1.#IND");
}

struct SingleText {
  float value;
  const char* text;
};

TEST(FormatSingle, MatchesRuntimeTextAtSevenDigits) {
  const std::vector<SingleText> cases = {
      {0.1f, "0.1"},  // 0.100000001490116 in binary
      {1.0f / 3.0f, "0.3333333"},
      {-2.5f, "-2.5"},
      // Upper switch at exponent 7.
      {1234567.0f, "1234567"},
      {9999999.0f, "9999999"},
      {1e7f, "1E+07"},
      {12345678.0f, "1.234568E+07"},
      {FLT_MAX, "3.402823E+38"},
      // Lower switch at exponent -5.
      {0.0001f, "0.0001"},
      {0.00001f, "1E-05"},
      {1.5e-7f, "1.5E-07"},
      // The float nearest 654322.23456 is 654322.25: the tie rounds away.
      {654322.23456f, "654322.3"},
      {-0.0f, "0"},
  };
  for (const SingleText& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(FormatSingle(c.value), c.text);
  }
}

TEST(RoundHalfEven, RoundsHalvesToEvenNeighbour) {
  const std::vector<std::pair<double, double>> cases = {
      {0.5, 0.0},
      {1.5, 2.0},
      {2.5, 2.0},
      {3.5, 4.0},
      {-0.5, 0.0},
      {-1.5, -2.0},
      {-2.5, -2.0},
      {2.4999999999999996, 2.0},  // just below the half
      {2.5000000000000004, 3.0},  // just above the half
      {-7.2, -7.0},
      {-7.8, -8.0},
      // 2^52 - 0.5: the largest magnitude where halves still exist.
      {4503599627370495.5, 4503599627370496.0},
      {1e300, 1e300},
  };
  for (const auto& [in, out] : cases) {
    SCOPED_TRACE(in);
    EXPECT_EQ(RoundHalfEven(in), out);
  }
}

// ToInteger, ToLong and ToByte round half to even, then refuse what their
// type cannot hold (nullopt: the caller raises Overflow).
TEST(IntegerConversion, RoundsHalfEvenAndReportsOverflow) {
  enum To { kInteger, kLong, kByte };
  const struct {
    To to;
    double in;
    std::optional<int64_t> out;
  } cases[] = {
      {kInteger, 2.5, 2},
      {kInteger, 3.5, 4},
      {kInteger, -2.5, -2},
      {kInteger, 0.4, 0},
      {kInteger, 32767.4, 32767},
      {kInteger, 32767.5, std::nullopt},  // rounds to 32768: one past the top
      {kInteger, -32768.5, -32768},       // rounds to the even -32768: still fits
      {kInteger, -32768.6, std::nullopt},
      {kInteger, -32769.0, std::nullopt},
      {kInteger, 1e10, std::nullopt},
      {kInteger, std::nan(""), std::nullopt},
      {kLong, -3.5, -4},
      {kLong, 2147483646.5, 2147483646},
      {kLong, 2147483647.0, 2147483647},
      {kLong, 2147483647.5, std::nullopt},  // rounds to 2^31
      {kLong, -2147483648.5, -2147483648},  // rounds to the even -2^31
      {kLong, -2147483649.5, std::nullopt},
      {kLong, 32768.0, 32768},  // beyond Integer, fine for Long
      {kLong, std::numeric_limits<double>::infinity(), std::nullopt},
      {kByte, 254.5, 254},
      {kByte, 255.4, 255},
      {kByte, 255.5, std::nullopt},  // rounds to 256
      {kByte, -0.5, 0},              // rounds to 0: accepted
      {kByte, -0.51, std::nullopt},  // rounds to -1
      {kByte, 1.5, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.to << ": " << c.in);
    std::optional<int64_t> got;
    if (c.to == kInteger && ToInteger(c.in)) got = *ToInteger(c.in);
    if (c.to == kLong && ToLong(c.in)) got = *ToLong(c.in);
    if (c.to == kByte && ToByte(c.in)) got = *ToByte(c.in);
    EXPECT_EQ(got, c.out);
  }
}

TEST(ParseNumeric, AcceptsWhatCDblAccepts) {
  struct Case {
    const char* text;
    double value;
  };
  const std::vector<Case> cases = {
      {"12", 12},
      {"  12  ", 12},
      {"\t7\r\n", 7},
      {"+5", 5},
      {"-5", -5},
      {"- 5", -5},
      {"1.5", 1.5},
      {".5", 0.5},
      {"5.", 5},
      {"1e3", 1000},
      {"1E-2", 0.01},
      {"1D2", 100},
      {"2d-1", 0.2},
      {"1,000", 1000},
      {"1,000.25", 1000.25},
      {"1,00", 100},  // group sizes are not checked
      {"(5)", -5},
      {"5-", -5},
      {"5+", 5},
      {"$5", 5},
      {"-$1,234.5", -1234.5},
      {"&H1F", 31},
      {"&h1f", 31},
      {"&O17", 15},
      {" &H10 ", 16},
      {"-&H10", -16},
      {"&H7FFF", 32767},
      {"&H8000", -32768},  // 16-bit values are signed Integers
      {"&HFFFF", -1},
      {"&H10000", 65536},  // beyond 16 bits: a Long
      {"&H7FFFFFFF", 2147483647},
      {"&HFFFFFFFF", -1},
      {"&O177777", -1},
      {"0.1", 0.1},
      {"1.7976931348623157E+308", DBL_MAX},
      {"1E-400", 0},  // below the smallest Double
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const NumericParse parsed = ParseNumericText(c.text);
    EXPECT_EQ(parsed.status, NumericStatus::kOk);
    EXPECT_EQ(parsed.value, c.value);
    EXPECT_EQ(ParseNumeric(c.text), c.value);
  }
}

TEST(ParseNumeric, RejectsTextThatIsNotANumber) {
  const std::vector<const char*> cases = {
      "",       " ",
      ".",      "+",
      "-",      "abc",
      "1e",     "1e+",
      "12abc",  "1.2.3",
      "1 2",    ",5",
      "(5",     "5)",
      "(-5)",   "--5",
      "5--",    "&H",
      "&HG",    "&O8",
      "&H1F.5", "1.5$",
      "$$5",    "((5))",
      "e5",     "1,000,000.5.1",
  };
  for (const char* text : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(ParseNumericText(text).status, NumericStatus::kNotNumeric);
    EXPECT_EQ(ParseNumeric(text), std::nullopt);
  }
}

TEST(ParseNumeric, ReportsOverflowApartFromMismatch) {
  const std::vector<std::string> cases = {
      "1E400",
      "-1E309",
      "9e99999999999999999999",
      "1" + std::string(400, '0'),  // 401 integer digits
      "&H100000000",                // 33 bits
      "&O40000000000",
  };
  for (const std::string& text : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(ParseNumericText(text).status, NumericStatus::kOverflow);
  }
}

TEST(Val, ReadsLeadingNumberSkippingBlanks) {
  struct Case {
    const char* text;
    double value;
  };
  const std::vector<Case> cases = {
      {"2457", 2457},
      {" 2 45 7", 2457},
      {"24 and 57", 24},
      {"    1615 198th Street N.E.", 1615198},
      {" 1 2 3", 123},
      {"\t\n42", 42},
      {"  -12.5abc", -12.5},
      {"- 3", -3},
      {"+4", 4},
      {".5", 0.5},
      {"1.2.3", 1.2},
      {"1,000", 1},  // commas stop the scan
      {"$5", 0},     // so do currency signs
      {"1e3", 1000},
      {"12 e 2", 1200},
      {"1D2", 100},
      {"2.5e-1x", 0.25},
      {"2E", 2},  // exponent letter without digits is left unread
      {"2E+", 2},
      {"2Ex", 2},
      {"&H1F", 31},
      {"&o 1 7", 15},
      {"&HFFFF", -1},
      {"&HFFFFFFFF", -1},
      {"&H10000", 65536},
      {"&H1FZZ", 31},
      {"&H", 0},
      {"&X1", 0},
      {"", 0},
      {"abc", 0},
      {"-", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Val(c.text), c.value);
  }
}

TEST(Val, ZeroIsPositive) {
  const std::optional<double> zero = Val("-0");
  ASSERT_TRUE(zero.has_value());
  EXPECT_FALSE(std::signbit(*zero));
}

TEST(Val, ReportsOverflow) {
  EXPECT_EQ(Val("1E400"), std::nullopt);
  EXPECT_EQ(Val("-1e309abc"), std::nullopt);
  EXPECT_EQ(Val("&H123456789"), std::nullopt);  // 33 bits
  EXPECT_EQ(Val("1E-400"), 0.0);                // underflow is just 0
}

}  // namespace
}  // namespace tovik
