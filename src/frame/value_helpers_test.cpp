#include "frame/value_helpers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/collection.h"
#include "frame/conversions.h"

namespace tovik {
namespace {

Variant Arr(std::initializer_list<Variant> values, int32_t lower = 0) {
  return Variant(SafeArray::OfVariants(std::vector<Variant>(values), lower));
}

// The elements of a one-dimensional array as text, "lb:a,b,c".
std::string Dump(const Variant& v) {
  if (!v.IsArray()) return "not an array: " + TypeName(v);
  const SafeArray& a = v.Array();
  std::string out = std::to_string(a.LBound()) + ":";
  for (int32_t i = 0; i < a.Count(); ++i) {
    if (i > 0) out += ",";
    const Variant& e = a.Items()[static_cast<size_t>(i)];
    out += e.IsArray() ? "(" + Dump(e) + ")" : CStr(e);
  }
  return out;
}

TEST(ElementCount, CountsOnlyArrays) {
  struct Case {
    const char* what;
    Variant value;
    int16_t expected;
  };
  const Case cases[] = {
      {"Empty", Variant(), 0},
      {"a String", Variant("abc"), 0},
      {"an empty array (0..-1)", Variant(SafeArray::Empty()), 0},
      {"a point", MakePoint(1, 2, 3), 3},
      {"bounds 5..7", Arr({1.0, 2.0, 3.0}, 5), 3},
      {"bounds -2..-1", Arr({1.0, 2.0}, -2), 2},
      // 32,767 elements still fit an Integer; one more fails to 0.
      {"32767 elements", Variant(SafeArray(VarType::kDouble, 0, 32767)), 32767},
      {"32768 elements", Variant(SafeArray(VarType::kDouble, 0, 32768)), 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(ElementCount(c.value), c.expected);
  }
}

TEST(InsertElement, ClampsThePositionAndKeepsTheLowerBound) {
  struct Case {
    const char* what;
    Variant array;
    Variant position;
    const char* expected;
  };
  const Case cases[] = {
      {"append when missing", Arr({1.0, 2.0, 3.0}), Variant::Missing(), "0:1,2,3,9"},
      {"-5 inserts at the lower bound", Arr({1.0, 2.0, 3.0}), Variant(int32_t{-5}), "0:9,1,2,3"},
      {"99 appends at 3", Arr({1.0, 2.0, 3.0}), Variant(int32_t{99}), "0:1,2,3,9"},
      {"in the middle", Arr({1.0, 2.0, 3.0}), Variant(int32_t{1}), "0:1,9,2,3"},
      {"position ub + 1 appends", Arr({1.0, 2.0, 3.0}), Variant(int32_t{3}), "0:1,2,3,9"},
      {"lower bound 1, position 0 clamps to 1", Arr({1.0, 2.0}, 1), Variant(int32_t{0}),
       "1:9,1,2"},
      {"Empty becomes one element", Variant(), Variant::Missing(), "0:9"},
      {"an empty array", Variant(SafeArray::Empty()), Variant(int32_t{4}), "0:9"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Variant array = c.array;
    InsertElement(array, Variant(9.0), c.position);
    EXPECT_EQ(Dump(array), c.expected);
  }
}

TEST(InsertElement, CopiesArraysAndSharesObjects) {
  Variant list = Arr({1.0});
  Variant point = MakePoint(1, 2, 3);
  InsertElement(list, point);
  point.MutableArray().Set(0, Variant(7.0));
  EXPECT_EQ(Dump(list), "0:1,(0:1,2,3)");
  auto obj = std::make_shared<Collection>();
  InsertElement(list, Variant(ObjectRef(obj)), Variant(int32_t{0}));
  EXPECT_EQ(list.Array().At(0).RawObject().get(), obj.get());
  // A typed array keeps its element type.
  Variant doubles(SafeArray::OfDoubles({1, 2}));
  InsertElement(doubles, Variant(int16_t{5}), Variant(int32_t{0}));
  EXPECT_EQ(TypeName(doubles), "Double()");
  EXPECT_EQ(Dump(doubles), "0:5,1,2");
}

TEST(JoinValues, SpreadsArraysOneLevel) {
  EXPECT_EQ(Dump(JoinValues({Arr({1.0, 2.0}), Variant(3.0), Variant(SafeArray::Empty())})),
            "0:1,2,3");
  EXPECT_EQ(Dump(JoinValues({Arr({Arr({1.0, 2.0}), Variant(3.0)}), Variant("x")})),
            "0:(0:1,2),3,x");
  EXPECT_EQ(Dump(JoinValues({Arr({5.0, 6.0}, 4), Variant()})), "0:5,6,");
  EXPECT_EQ(Dump(JoinValues({})), "0:");
}

TEST(TolerantEqual, ComparesWithTheToleranceItWritesBack) {
  struct Case {
    const char* what;
    Variant a;
    Variant b;
    double tolerance;
    bool expected;
    double tolerance_after;
  };
  const Case cases[] = {
      {"texts trimmed and upper-cased with t=1", Variant(" abc"), Variant("ABC "), 1, true, 1},
      {"texts exact with t=0", Variant(" abc"), Variant("ABC "), 0, false, 0},
      {"text against a number with t=0", Variant("2"), Variant(2.0), 0, true, 0},
      {"Double with t=0 sets 1E-06", Variant(1.0), Variant(1.0000001), 0, true, 1e-06},
      // 1.000002 / 1 - 1 = 2E-06 > 1E-06.
      {"beyond 1E-06 relative", Variant(1.0), Variant(1.000002), 0, false, 1e-06},
      {"both below the tolerance", Variant(0.0000001), Variant(-0.0000001), 0, true, 1e-06},
      // 0.5 / 1E-07 - 1 = 4999999: one value near zero is not enough.
      {"only one below the tolerance", Variant(0.0000001), Variant(0.5), 0, false, 1e-06},
      {"Long with t=0 stays exact", Variant(int32_t{1}), Variant(1.0000001), 0, false, 0},
      {"relative 10% on 100", Variant(100.0), Variant(109.0), 0.1, true, 0.1},
      {"negative tolerance acts by magnitude", Variant(100.0), Variant(109.0), -0.1, true, -0.1},
      {"a = 0, b not: division fails to False", Variant(int32_t{0}), Variant(5.0), 0, false, 0},
      {"number against non-numeric text", Variant(1.0), Variant("x"), 0, false, 1e-06},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    double tolerance = c.tolerance;
    EXPECT_EQ(TolerantEqual(c.a, c.b, tolerance), c.expected);
    EXPECT_EQ(tolerance, c.tolerance_after);
  }
}

TEST(TolerantEqual, ArraysSkipTheLastElementFromLowerBoundOne) {
  double t = 0;
  // Lower bound 1, count 3: positions 1..2 are compared, position 3 is not.
  EXPECT_TRUE(TolerantEqual(Arr({1.0, 2.0, 3.0}, 1), Arr({1.0, 2.0, 99.0}, 1), t));
  EXPECT_FALSE(TolerantEqual(Arr({1.0, 2.0, 3.0}, 1), Arr({1.0, 5.0, 3.0}, 1), t));
  // Lower bound 0: every element counts.
  EXPECT_FALSE(TolerantEqual(Arr({1.0, 2.0, 3.0}), Arr({1.0, 2.0, 99.0}), t));
  EXPECT_TRUE(TolerantEqual(MakePoint(1, 2, 3), MakePoint(1, 2, 3.0000001), t));
  EXPECT_EQ(t, 1e-06);  // set by the first Double element
  // Different counts.
  EXPECT_FALSE(TolerantEqual(Arr({1.0}), Arr({1.0, 2.0}), t));
  // b is indexed like a: only b(1) and b(2) are read, b(0) never.
  EXPECT_TRUE(TolerantEqual(Arr({1.0, 2.0, 3.0}, 1), Arr({7.0, 1.0, 2.0}), t));
}

TEST(TolerantEqual, ObjectsByIdentity) {
  auto x = std::make_shared<Collection>();
  auto y = std::make_shared<Collection>();
  double t = 0;
  EXPECT_TRUE(TolerantEqual(Variant(ObjectRef(x)), Variant(ObjectRef(x)), t));
  EXPECT_FALSE(TolerantEqual(Variant(ObjectRef(x)), Variant(ObjectRef(y)), t));
  EXPECT_TRUE(TolerantEqual(Variant::Nothing(), Variant::Nothing(), t));
  EXPECT_FALSE(TolerantEqual(Variant(ObjectRef(x)), Variant(1.0), t));
}

TEST(AssignValue, DeepCopiesIntoVariantArrays) {
  Variant source(SafeArray::OfVariants({MakePoint(1, 2, 3), Variant("t")}, 3));
  Variant target;
  AssignValue(target, source);
  source.MutableArray().Ref(3).MutableArray().Set(0, Variant(9.0));
  EXPECT_EQ(Dump(target), "3:(0:1,2,3),t");
  EXPECT_EQ(TypeName(target.Array().At(3)), "Variant()");
  // An empty source erases; so does an upper bound below 0.
  AssignValue(target, Variant(SafeArray::Empty()));
  EXPECT_TRUE(target.IsEmpty());
  target = MakePoint(0, 0, 0);
  AssignValue(target, Arr({1.0, 2.0}, -3));  // bounds -3..-2
  EXPECT_TRUE(target.IsEmpty());
  target = MakePoint(0, 0, 0);
  AssignValue(target, Variant());
  EXPECT_TRUE(target.IsEmpty());
  AssignValue(target, Variant(int16_t{4}));
  EXPECT_EQ(TypeName(target), "Integer");
  // Assigning a variable to itself keeps it.
  target = Arr({1.0, 2.0});
  AssignValue(target, target);
  EXPECT_EQ(Dump(target), "0:1,2");
}

TEST(MinMaxOf, TiesKeepTheEarlierValue) {
  Variant five_int(int16_t{5});
  Variant five_dbl(5.0);
  EXPECT_EQ(TypeName(MaxOf({Variant(2.0), five_int, five_dbl})), "Integer");
  EXPECT_EQ(TypeName(MinOf({five_dbl, five_int, Variant(7.0)})), "Double");
  EXPECT_EQ(CDbl(MinOf({Variant(3.0), Variant(-1.0), Variant(2.0)})), -1.0);
  // Numeric texts compare as numbers against numbers: "10" > 9.
  EXPECT_EQ(CStr(MaxOf({Variant(9.0), Variant("10")})), "10");
  // An array first: its elements are reduced, the other values ignored.
  EXPECT_EQ(CDbl(MaxOf({Arr({4.0, 8.0, 6.0}), Variant(100.0)})), 8.0);
  EXPECT_EQ(CDbl(MinOf({Arr({4.0, 8.0, 2.0}, 1)})), 2.0);
  EXPECT_TRUE(MinOf({}).IsEmpty());
}

TEST(ExtendExtents, GrowsEachCoordinateOnItsOwn) {
  Variant min_p = MakePoint(0, 0, 0);
  Variant max_p = MakePoint(1, 1, 1);
  ExtendExtents(min_p, max_p, MakePoint(-2, 0.5, 3));
  EXPECT_EQ(Dump(min_p), "0:-2,0,0");
  EXPECT_EQ(Dump(max_p), "0:1,1,3");
  ExtendExtents(min_p, max_p, MakePoint(5, -4, 1));
  EXPECT_EQ(Dump(min_p), "0:-2,-4,0");
  EXPECT_EQ(Dump(max_p), "0:5,1,3");
}

}  // namespace
}  // namespace tovik
