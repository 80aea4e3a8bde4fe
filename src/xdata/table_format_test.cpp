#include "xdata/table_format.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_number.h"
#include "tests/support/typed_value.h"
#include "tests/support/errors.h"

namespace tovik {
namespace {

Variant Table(std::initializer_list<Variant> items) { return Variant(SafeArray::Of(items)); }

// The six-element table used throughout: 1, 2.5, "ab", True, Empty, (3, "x").
Variant SampleTable() {
  return Table({Variant(int16_t{1}), Variant(2.5), Variant("ab"), Variant(true), Variant(),
                Table({Variant(int16_t{3}), Variant("x")})});
}

void ExpectNativeOnlyError(const AutomationError& e) {
  EXPECT_EQ(e.Number(), 2411);
  EXPECT_EQ(e.Description(), "Table must contain Native Datatype only");
  EXPECT_EQ(e.Source(), "Tovik COM");
}

std::vector<int> CodesOf(const Variant& codes) {
  std::vector<int> out;
  for (const Variant& v : codes.Array().Items()) out.push_back(CInt(v));
  return out;
}

// Renders a decoded value with its type, so one string comparison checks
using test_support::Typed;

TEST(TableText, SampleTableWritesTabsQuotesAndKeywords) {
  EXPECT_EQ(TableToText(SampleTable()),
            "{1\t2.5\t\"ab\"\tTRUE\tEMPTY\t{3\t\"x\"}}");
}

TEST(TableText, SampleTextReadsNumbersBackAsDoubles) {
  Variant table = TextToTable("{1\t2.5\t\"ab\"\tTRUE\tEMPTY\t{3\t\"x\"}}");
  EXPECT_EQ(Typed(table), "(D1,D2.5,Sab,BT,E,(D3,Sx))");
}

TEST(TableText, EmptyTablesAndNonArrays) {
  EXPECT_EQ(TableToText(Variant(SafeArray::Empty())), "{}");
  EXPECT_EQ(TableToText(Variant()), "{}");  // not an array: 0 elements
  EXPECT_EQ(Typed(TextToTable("{}")), "()");
  EXPECT_EQ(Typed(TextToTable("")), "()");
}

TEST(TableText, DoublesUseTheStandardNumberText) {
  Variant table = Table({Variant(0.1), Variant(-2.0), Variant(1e20), Variant(1.5e-7)});
  EXPECT_EQ(TableToText(table), "{0.1\t-2\t1E+20\t1.5E-07}");
}

TEST(TableText, RefusesTypesOutsideTheTextForm) {
  struct Case {
    const char* name;
    Variant element;
  } cases[] = {
      {"Long", Variant(int32_t{7})},
      {"Single", Variant(1.5f)},
      {"Date", Variant::Date(45000.0)},
      {"Nothing", Variant::Nothing()},
      {"Null", Variant::Null()},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    // Nested one level down, so the failure comes from the inner walk.
    Variant table = Table({Variant(int16_t{1}), Table({c.element})});
    ExpectNativeOnlyError(ErrorOf([&] { TableToText(table); }));
  }
}

TEST(TableText, TableWithLowerBoundOneIsReadFromIndexZero) {
  SafeArray one_based(VarType::kVariant, 1, 2);
  one_based.Set(1, Variant(int16_t{5}));
  one_based.Set(2, Variant(int16_t{6}));
  EXPECT_EQ(ErrorOf([&] { TableToText(Variant(one_based)); }).Number(), kErrSubscript);
}

TEST(TableText, StringsWithTabsOrBracesDoNotRoundTrip) {
  struct Case {
    const char* text;
    const char* expected;
  } cases[] = {
      // The tab splits the element; each half is neither quoted nor a
      // number, so each reads as an (empty) table.
      {"a\tb", "((),())"},
      // A lone brace opens a nested scan; the outer table never closes.
      {"{", "()"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    std::string text = TableToText(Table({Variant(c.text)}));
    EXPECT_EQ(Typed(TextToTable(text)), c.expected);
  }
}

TEST(TableText, MalformedTextGivesShorterTables) {
  struct Case {
    const char* text;
    const char* expected;
  } cases[] = {
      {"{1}\t2", "(D1)"},          // trailing token never flushed
      {"{1}2\t", "(D1,D2)"},       // ... unless a tab follows it
      {"{1}2}", "(D1,D2)"},        // ... or a closing brace
      {"{1}{2}\t", "(D1,(D2))"},   // a brace after the end opens a table
      {"x{1}", "(D1)"},            // text before the first brace is skipped
      {"}{1}", "()"},              // a stray close leaves the depth below 1
      {"{1\t{2", "(D1)"},          // nested table never closed
      {"{abc\ttrue}", "((),())"},  // bare words, keywords in the wrong case
      {"{\"ab}", "(())"},          // opening quote only
      {"{ 7 \t1,5\t&H10}", "(D7,D1,D16)"},  // numeric as IsNumeric, read by Val
      {"{{}}", "(())"},
      {"{\"{\"}", "()"},           // the "{" in the text opens a table
      {"{\"{\"}\"}", "(S{\"})"},   // quoted token: the inner scan never runs
      {"{{\"a\"\t{}}\t\"\"}", "((Sa,()),S)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Typed(TextToTable(c.text)), c.expected);
  }
}

TEST(TableText, LoneQuoteTokenRaisesInvalidCall) {
  // At the top level, inside a nested table that is read as a table, and
  // for the String "}" written as text: its brace closes the table right
  // after the opening quote.
  std::string closing_brace = TableToText(Table({Variant("}")}));
  for (std::string text : {std::string("{\"}"), std::string("{1\t\"}"),
                           std::string("{\"{\"}}"), closing_brace}) {
    SCOPED_TRACE(text);
    AutomationError e = ErrorOf([&] { TextToTable(text); });
    EXPECT_EQ(e.Number(), kErrInvalidCall);
    EXPECT_EQ(e.Description(), "Invalid procedure call or argument");
  }
}

TEST(TableText, DeepNestingRoundTripsWithoutRecursion) {
  const int kDepth = 10000;
  std::string text = std::string(kDepth, '{') + std::string(kDepth, '}');
  Variant table = TextToTable(text);
  // Innermost first: each level holds exactly the next one; the innermost
  // is empty.
  int depth = 1;
  const Variant* level = &table;
  while (level->Array().Count() == 1) {
    level = &level->Array().At(0);
    ++depth;
  }
  EXPECT_EQ(depth, kDepth - 1 + 1);
  EXPECT_EQ(level->Array().Count(), 0);
  EXPECT_EQ(TableToText(table), text);
}

// The character scanner exactly as the text form is defined: a nested table
// is read by scanning its token again. Quadratic and recursive, so only for
// short texts; the one-pass reader must agree with it on every input.
Variant ModelTextToTable(const std::string& text) {
  std::vector<Variant> result;
  int depth = 0;
  std::string token;
  for (char c : text) {
    bool tab = c == '\t';
    if (c == '}') {
      if (--depth == 0) {
        depth = 1;
        tab = true;
      }
    }
    if (depth < 1) {
    } else if (!(tab && depth == 1)) {
      token += c;
    } else {
      if (token == "TRUE") {
        result.emplace_back(true);
      } else if (token == "FALSE") {
        result.emplace_back(false);
      } else if (token == "EMPTY") {
        result.emplace_back();
      } else if (!token.empty() && token.front() == '"' && token.back() == '"') {
        if (token.size() == 1) throw errors::InvalidCall();
        result.emplace_back(token.substr(1, token.size() - 2));
      } else if (IsNumeric(Variant(token))) {
        result.emplace_back(*Val(token));
      } else if (!token.empty()) {
        result.push_back(ModelTextToTable(token));
      }
      token.clear();
    }
    if (c == '{') ++depth;
  }
  return Variant(SafeArray::OfVariants(std::move(result)));
}

std::string TypedOrError(const std::function<Variant()>& read) {
  try {
    return Typed(read());
  } catch (const AutomationError& e) {
    return "error " + std::to_string(e.Number());
  }
}

TEST(TableText, OnePassReaderAgreesWithTheRescanningScanner) {
  // Short random texts over the characters that matter, so that stray and
  // unbalanced braces, quotes and keywords all turn up often.
  const char kAlphabet[] = {'{', '}', '\t', '"', '1', '.', 'x', '{', '}', '\t'};
  uint32_t seed = 12345;
  auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) & 0x7fff;
  };
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    size_t length = next() % 14;
    for (size_t i = 0; i < length; ++i) text += kAlphabet[next() % sizeof(kAlphabet)];
    SCOPED_TRACE(text);
    ASSERT_EQ(TypedOrError([&] { return TextToTable(text); }),
              TypedOrError([&] { return ModelTextToTable(text); }));
  }
}

TEST(TableGroupCodes, SampleTableWritesTheDocumentedRun) {
  Variant codes, values;
  TableToGroupCodes(SampleTable(), codes, values);
  EXPECT_EQ(CodesOf(codes), (std::vector<int>{1002, 1070, 1040, 1000, 1070, 1040, 1002,
                                               1070, 1000, 1002, 1002}));
  EXPECT_EQ(TypeName(codes), "Integer()");
  EXPECT_EQ(Typed(values), "(S{,I1,D2.5,Sab,I-1,D0,S{,I3,Sx,S},S})");
}

TEST(TableGroupCodes, SampleRunDecodesWithHostTypes) {
  Variant codes, values;
  TableToGroupCodes(SampleTable(), codes, values);
  // The Boolean comes back as the Integer -1 and Empty as 0.0.
  EXPECT_EQ(Typed(GroupCodesToTable(values)), "(I1,D2.5,Sab,I-1,D0,(I3,Sx))");
}

TEST(TableGroupCodes, AppendsToWhatTheArraysHold) {
  Variant codes(SafeArray(VarType::kInteger, 0, 1));
  codes.MutableArray().Set(0, Variant(int16_t{1001}));
  Variant values(SafeArray::Of({Variant("Tovik COM")}));
  TableToGroupCodes(Variant(SafeArray::Empty()), codes, values);
  EXPECT_EQ(CodesOf(codes), (std::vector<int>{1001, 1002, 1002}));
  EXPECT_EQ(Typed(values), "(STovik COM,S{,S})");
}

TEST(TableGroupCodes, AcceptsLongAndNothingThatTextRefuses) {
  Variant table = Table({Variant(int32_t{70000}), Variant::Nothing()});
  Variant codes, values;
  TableToGroupCodes(table, codes, values);
  EXPECT_EQ(CodesOf(codes), (std::vector<int>{1002, 1071, 1000, 1002}));
  EXPECT_EQ(Typed(values), "(S{,L70000,S,S})");
  ExpectNativeOnlyError(ErrorOf([&] { TableToText(table); }));
}

TEST(TableGroupCodes, RefusalKeepsTheTopLevelElementsBeforeIt) {
  struct Case {
    const char* name;
    Variant table;
    std::vector<int> codes;
  } cases[] = {
      // The nested run is lost whole: it reaches the arrays only when done.
      {"inside nested", Table({Variant(int16_t{1}), Table({Variant(int16_t{2}), Variant(1.5f)}),
                               Variant(int16_t{3})}),
       {1001, 1002, 1070}},
      {"top level", Table({Variant(2.0), Variant::Date(1.0)}), {1001, 1002, 1040}},
      {"first element", Table({Variant::Null()}), {1001, 1002}},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.name);
    Variant codes(SafeArray(VarType::kInteger, 0, 1));
    codes.MutableArray().Set(0, Variant(int16_t{1001}));
    Variant values(SafeArray::Of({Variant("Tovik COM")}));
    ExpectNativeOnlyError(ErrorOf([&] { TableToGroupCodes(c.table, codes, values); }));
    EXPECT_EQ(CodesOf(codes), c.codes);
    EXPECT_EQ(values.Array().Count(), static_cast<int32_t>(c.codes.size()));
  }
}

TEST(TableGroupCodes, UnbalancedRunsGiveShorterTables) {
  Variant b = Variant("{"), e = Variant("}");
  Variant one(int16_t{1}), two(int16_t{2});
  struct Case {
    const char* name;
    Variant values;
    const char* expected;
  } cases[] = {
      {"nested never closed", Table({b, one, b, two}), "(I1)"},
      {"outer reopened", Table({b, one, e, b, two, e}), "(I1,I2)"},
      {"stray close first", Table({e, b, one, e}), "()"},
      {"values outside braces", Table({one, b, two, e, one}), "(I2)"},
      {"nested", Table({b, b, one, e, b, e, e}), "((I1),())"},
      {"not an array", Variant("{"), "()"},
      // Numbers never equal a brace; "{ " is no brace.
      {"look-alikes", Table({b, Variant(int16_t{123}), Variant("{ "), e}), "(I123,S{ )"},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Typed(GroupCodesToTable(c.values)), c.expected);
  }
}

TEST(TableGroupCodes, DeepNestingRoundTrips) {
  const int kDepth = 10000;
  Variant table(SafeArray::Empty());
  for (int i = 1; i < kDepth; ++i) table = Table({table});
  Variant codes, values;
  TableToGroupCodes(table, codes, values);
  ASSERT_EQ(values.Array().Count(), 2 * kDepth);
  EXPECT_EQ(values.Array().At(kDepth - 1).RawString(), "{");
  EXPECT_EQ(values.Array().At(kDepth).RawString(), "}");
  EXPECT_EQ(TableToText(GroupCodesToTable(values)), TableToText(table));
}

}  // namespace
}  // namespace tovik
