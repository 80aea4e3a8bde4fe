#include "frame/variant_compare.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "frame/automation_error.h"
#include "frame/dictionary.h"

namespace tovik {
namespace {

const char* Name(Comparison c) {
  switch (c) {
    case Comparison::kLess: return "Less";
    case Comparison::kEqual: return "Equal";
    case Comparison::kGreater: return "Greater";
    case Comparison::kNull: return "Null";
  }
  return "?";
}

TEST(VariantCompare, EffectiveTypeDecidesHowValuesCompare) {
  struct Case {
    const char* what;
    Variant a;
    Variant b;
    Comparison expected;
  };
  const Case cases[] = {
      {"Integer and Double by value", Variant(int16_t{2}), Variant(2.0), Comparison::kEqual},
      {"Long below Double", Variant(int32_t{-3}), Variant(-2.5), Comparison::kLess},
      {"numeric string converts", Variant(int32_t{10}), Variant("9"), Comparison::kGreater},
      {"string on the left converts", Variant("1"), Variant(1.0), Comparison::kEqual},
      // An Integer operand makes the string an Integer: "1.4" rounds to 1.
      {"string rounds to the Integer", Variant(int16_t{1}), Variant("1.4"), Comparison::kEqual},
      {"string stays exact for a Double", Variant(1.0), Variant("1.4"), Comparison::kLess},
      {"strings are binary: upper case first", Variant("B"), Variant("a"), Comparison::kLess},
      {"strings: prefix first", Variant("ab"), Variant("abc"), Comparison::kLess},
      {"strings: digits compare as text", Variant("10"), Variant("9"), Comparison::kLess},
      {"Empty is 0 against a number", Variant(), Variant(int32_t{0}), Comparison::kEqual},
      {"Empty is \"\" against a string", Variant(), Variant(""), Comparison::kEqual},
      {"Empty below a non-empty string", Variant(), Variant("a"), Comparison::kLess},
      {"Empty equals Empty", Variant(), Variant(), Comparison::kEqual},
      {"True is -1", Variant(true), Variant(int32_t{-1}), Comparison::kEqual},
      {"True below False", Variant(true), Variant(false), Comparison::kLess},
      {"Boolean against text as Boolean", Variant(true), Variant("True"), Comparison::kEqual},
      {"Null on the right", Variant(1.0), Variant::Null(), Comparison::kNull},
      {"Null on the left", Variant::Null(), Variant(), Comparison::kNull},
      {"LongLong exact beyond 2^53", Variant(int64_t{9007199254740993}),
       Variant(int64_t{9007199254740992}), Comparison::kGreater},
      // U+FF21 (fullwidth A) is one UTF-16 unit FF21; U+1F600 starts with
      // the surrogate D83D, so it sorts first in the runtime's order.
      {"UTF-16 unit order", Variant("\xF0\x9F\x98\x80"), Variant("\xEF\xBC\xA1"),
       Comparison::kLess},
      {"code points below the surrogates keep their order", Variant("\xC3\xA9"),
       Variant("\xE4\xB8\x80"), Comparison::kLess},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_STREQ(Name(CompareValues(c.a, c.b)), Name(c.expected));
  }
}

TEST(VariantCompare, OperatorsAreFalseForNull) {
  EXPECT_FALSE(ValuesEqual(Variant::Null(), Variant::Null()));
  EXPECT_FALSE(ValueLess(Variant::Null(), Variant(1.0)));
  EXPECT_FALSE(ValueGreater(Variant(1.0), Variant::Null()));
  EXPECT_TRUE(ValueGreater(Variant(2.5), Variant("2")));
}

TEST(VariantCompare, ObjectsCompareThroughTheirDefaultMember) {
  auto dict = std::make_shared<Dictionary>();
  // A Dictionary's default member needs a key: reading it bare fails with 449.
  try {
    CompareValues(Variant(ObjectRef(dict)), Variant(1.0));
    ADD_FAILURE() << "no error";
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.Number(), 449);
  }
}

TEST(VariantCompare, ErrorsOfTheRuntime) {
  struct Case {
    const char* what;
    std::function<void()> compare;
    int32_t number;
    const char* description;
  };
  const Case cases[] = {
      {"number against a non-numeric string",
       [] { CompareValues(Variant(1.0), Variant("abc")); }, 13, "Type mismatch"},
      {"an array", [] { CompareValues(Variant(SafeArray::OfDoubles({1})), Variant(1.0)); },
       13, "Type mismatch"},
      {"Nothing", [] { CompareValues(Variant::Nothing(), Variant(1.0)); }, 91,
       "Object variable or With block variable not set"},
      {"string too big for an Integer operand",
       [] { CompareValues(Variant(int16_t{1}), Variant("40000")); }, 6, "Overflow"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    try {
      c.compare();
      ADD_FAILURE() << "no error";
    } catch (const AutomationError& e) {
      EXPECT_EQ(e.Number(), c.number);
      EXPECT_EQ(e.Description(), c.description);
    }
  }
}

TEST(VariantCompare, TextOrderIsAntisymmetric) {
  const char* texts[] = {"", "a", "A", "ab", "\xC3\xA9", "\xEF\xBC\xA1", "\xF0\x9F\x98\x80"};
  for (const char* x : texts) {
    for (const char* y : texts) {
      SCOPED_TRACE(std::string(x) + " vs " + y);
      int xy = CompareTextBinary(x, y);
      int yx = CompareTextBinary(y, x);
      EXPECT_EQ(xy < 0, yx > 0);
      EXPECT_EQ(xy == 0, std::string(x) == y);
    }
  }
}

}  // namespace
}  // namespace tovik
