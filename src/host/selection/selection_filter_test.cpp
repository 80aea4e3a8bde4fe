#include "host/selection/selection_filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "frame/automation_error.h"
#include "host/core/host_error.h"

namespace tovik::host {
namespace {

using Pairs = std::vector<std::pair<int, Variant>>;

Variant Types(const Pairs& pairs) {
  SafeArray a(VarType::kInteger, 0, static_cast<int32_t>(pairs.size()));
  for (size_t i = 0; i < pairs.size(); ++i) a.Set(static_cast<int32_t>(i), Variant(int16_t(pairs[i].first)));
  return Variant(std::move(a));
}
Variant Data(const Pairs& pairs) {
  std::vector<Variant> values;
  for (const auto& p : pairs) values.push_back(p.second);
  return Variant(SafeArray::OfVariants(std::move(values)));
}
SelectionFilter Filter(const Pairs& pairs) {
  return SelectionFilter::Parse(Types(pairs), Data(pairs), "Select");
}
Variant Pt(double x, double y, double z) { return Variant(SafeArray::OfDoubles({x, y, z})); }

// A red circle on layer WALLS with xdata of two applications.
TagListSubject Circle() {
  using V = FilterValue;
  return TagListSubject({{0, V::Text("CIRCLE")},
                         {8, V::Text("WALLS")},
                         {62, V::Number(1)},
                         {60, V::Number(0)},
                         {67, V::Number(0)},
                         {70, V::Number(5)},
                         {40, V::Number(2.5)},
                         {10, V::Point({10, 20, 0})},
                         {1001, V::Text("ACME")},
                         {1001, V::Text("TOVIK_TAG")}});
}

TEST(SelectionFilter, EvaluatesTestsOperatorsAndGroups) {
  const struct {
    const char* what;
    Pairs pairs;
    bool match;
  } cases[] = {
      {"no pairs", {}, true},
      {"type", {{0, Variant("CIRCLE")}}, true},
      {"type, other", {{0, Variant("LINE")}}, false},
      {"type wildcard list", {{0, Variant("LINE,CIRC*")}}, true},
      {"layer and colour", {{8, Variant("walls")}, {62, Variant(int16_t(1))}}, true},
      {"layer and wrong colour", {{8, Variant("WALLS")}, {62, Variant(int16_t(2))}}, false},
      {"absent code fails", {{6, Variant("*")}}, false},
      {"absent code fails even negated", {{6, Variant("~DASHED")}}, false},
      {"any application matches", {{1001, Variant("TOVIK*")}}, true},
      {"radius > 2", {{-4, Variant(">")}, {40, Variant(2.0)}}, true},
      {"radius < 2.5 (boundary excluded)", {{-4, Variant("<")}, {40, Variant(2.5)}}, false},
      {"radius <= 2.5 (boundary included)", {{-4, Variant("<=")}, {40, Variant(2.5)}}, true},
      {"radius != 2.5", {{-4, Variant("/=")}, {40, Variant(2.5)}}, false},
      {"anything present", {{-4, Variant("*")}, {40, Variant(99.0)}}, true},
      {"flags & 4", {{-4, Variant("&")}, {70, Variant(int16_t(4))}}, true},
      {"flags & 2", {{-4, Variant("&")}, {70, Variant(int16_t(2))}}, false},
      {"flags &= 5", {{-4, Variant("&=")}, {70, Variant(int16_t(5))}}, true},
      {"flags &= 6", {{-4, Variant("&=")}, {70, Variant(int16_t(6))}}, false},
      {"point equal", {{10, Pt(10, 20, 0)}}, true},
      {"point per axis", {{-4, Variant(">,<,*")}, {10, Pt(5, 25, 999)}}, true},
      {"point per axis fails on y", {{-4, Variant(">,<,*")}, {10, Pt(5, 15, 999)}}, false},
      {"point single != (one axis differs)", {{-4, Variant("!=")}, {10, Pt(10, 20, 1)}}, true},
      {"OR", {{-4, Variant("<OR")}, {0, Variant("LINE")}, {0, Variant("CIRCLE")}, {-4, Variant("OR>")}}, true},
      {"NOT", {{-4, Variant("<NOT")}, {8, Variant("WALLS")}, {-4, Variant("NOT>")}}, false},
      {"NOT of an absent code", {{-4, Variant("<NOT")}, {6, Variant("*")}, {-4, Variant("NOT>")}}, true},
      {"XOR both true",
       {{-4, Variant("<XOR")}, {0, Variant("CIRCLE")}, {8, Variant("WALLS")}, {-4, Variant("XOR>")}},
       false},
      {"XOR one true",
       {{-4, Variant("<XOR")}, {0, Variant("LINE")}, {8, Variant("WALLS")}, {-4, Variant("XOR>")}},
       true},
      {"nested: AND(OR(LINE, AND(CIRCLE, NOT(radius<1))), layer W*)",
       {{-4, Variant("<AND")},
        {-4, Variant("<OR")},
        {0, Variant("LINE")},
        {-4, Variant("<AND")},
        {0, Variant("CIRCLE")},
        {-4, Variant("<NOT")},
        {-4, Variant("<")},
        {40, Variant(1.0)},
        {-4, Variant("NOT>")},
        {-4, Variant("AND>")},
        {-4, Variant("OR>")},
        {8, Variant("W*")},
        {-4, Variant("AND>")}},
       true},
      {"operator keywords ignore case", {{-4, Variant("<or")}, {0, Variant("CIRCLE")}, {-4, Variant("or>")}}, true},
  };
  const TagListSubject subject = Circle();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Filter(c.pairs).Matches(subject), c.match);
  }
}

TEST(SelectionFilter, DeepNestingParsesAndEvaluatesWithoutRecursion) {
  // 20,000 nested NOTs around one true test: an even count keeps it true.
  Pairs pairs;
  const int depth = 20000;
  for (int i = 0; i < depth; ++i) pairs.push_back({-4, Variant("<NOT")});
  pairs.push_back({0, Variant("CIRCLE")});
  for (int i = 0; i < depth; ++i) pairs.push_back({-4, Variant("NOT>")});
  EXPECT_TRUE(Filter(pairs).Matches(Circle()));
  pairs.insert(pairs.begin(), {-4, Variant("<NOT")});
  pairs.push_back({-4, Variant("NOT>")});
  EXPECT_FALSE(Filter(pairs).Matches(Circle()));
}

void ExpectInvalid(const Variant& types, const Variant& data, const char* text) {
  try {
    SelectionFilter::Parse(types, data, "Select");
    ADD_FAILURE() << "no error for " << text;
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.Number(), kScodeInvalidArgument);
    EXPECT_EQ(e.Description(), text);
  }
}

TEST(SelectionFilter, RefusesBadShapesAndBadGroups) {
  const Pairs one = {{8, Variant("0")}};
  SafeArray longs(VarType::kLong, 0, 1);
  longs.Set(0, Variant(int32_t(8)));
  const char* kType = "Invalid argument FilterType in Select";
  const char* kData = "Invalid argument FilterData in Select";
  {
    SCOPED_TRACE("a Long array");
    ExpectInvalid(Variant(longs), Data(one), kType);
  }
  {
    SCOPED_TRACE("only one of the two");
    ExpectInvalid(Types(one), Variant::Missing(), kType);
    ExpectInvalid(Variant::Missing(), Data(one), kType);
  }
  {
    SCOPED_TRACE("lengths differ");
    ExpectInvalid(Types({{8, Variant("0")}, {62, Variant(int16_t(1))}}), Data(one), kType);
  }
  {
    SCOPED_TRACE("FilterData a Double array");
    ExpectInvalid(Types(one), Variant(SafeArray::OfDoubles({1.0})), kType);
  }
  const struct {
    const char* what;
    Pairs pairs;
  } bad[] = {
      {"unclosed group", {{-4, Variant("<OR")}, {8, Variant("0")}}},
      {"close without open", {{8, Variant("0")}, {-4, Variant("OR>")}}},
      {"mismatched close", {{-4, Variant("<OR")}, {8, Variant("0")}, {-4, Variant("AND>")}}},
      {"NOT with two operands",
       {{-4, Variant("<NOT")}, {8, Variant("0")}, {8, Variant("1")}, {-4, Variant("NOT>")}}},
      {"XOR with one operand", {{-4, Variant("<XOR")}, {8, Variant("0")}, {-4, Variant("XOR>")}}},
      {"empty AND", {{-4, Variant("<AND")}, {-4, Variant("AND>")}}},
      {"operator at the end", {{8, Variant("0")}, {-4, Variant(">")}}},
      {"unknown operator", {{-4, Variant("=>")}, {40, Variant(1.0)}}},
      {"ordering test on a string", {{-4, Variant("<")}, {8, Variant("A")}}},
      {"number for a string code", {{8, Variant(int16_t(0))}}},
      {"string for a number code", {{62, Variant("1")}}},
      {"NaN", {{40, Variant(std::nan(""))}}},
      {"point of one number", {{10, Variant(SafeArray::OfDoubles({1.0}))}}},
  };
  for (const auto& c : bad) {
    SCOPED_TRACE(c.what);
    ExpectInvalid(Types(c.pairs), Data(c.pairs), kData);
  }
}

TEST(SelectionFilter, AcceptsMissingPairAsNoFilter) {
  EXPECT_TRUE(SelectionFilter::Parse(Variant::Missing(), Variant::Missing(), "Select").empty());
  EXPECT_TRUE(SelectionFilter::Parse(Variant(), Variant(), "Select").empty());
}

TEST(SelectionFilter, CodeKindsFollowTheDxfRanges) {
  EXPECT_EQ(KindOfCode(0), FilterValue::Kind::kText);
  EXPECT_EQ(KindOfCode(410), FilterValue::Kind::kText);
  EXPECT_EQ(KindOfCode(1001), FilterValue::Kind::kText);
  EXPECT_EQ(KindOfCode(10), FilterValue::Kind::kPoint);
  EXPECT_EQ(KindOfCode(210), FilterValue::Kind::kPoint);
  EXPECT_EQ(KindOfCode(40), FilterValue::Kind::kNumber);
  EXPECT_EQ(KindOfCode(62), FilterValue::Kind::kNumber);
  EXPECT_EQ(KindOfCode(370), FilterValue::Kind::kNumber);
}

}  // namespace
}  // namespace tovik::host
