#include "frame/variant.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {
namespace {

TEST(Variant, TypeNamesAsTheRuntimeReportsThem) {
  struct Case {
    Variant value;
    const char* name;
  } cases[] = {
      {Variant(), "Empty"},
      {Variant::Null(), "Null"},
      {Variant(int16_t{1}), "Integer"},
      {Variant(int32_t{1}), "Long"},
      {Variant(1.0), "Double"},
      {Variant(1.0f), "Single"},
      {Variant("x"), "String"},
      {Variant(true), "Boolean"},
      {Variant::Byte(3), "Byte"},
      {Variant::Nothing(), "Nothing"},
      // An omitted optional argument is an Error value, not Empty.
      {Variant::Missing(), "Error"},
      {Variant(SafeArray::OfDoubles({1, 2, 3})), "Double()"},
      {Variant(SafeArray::Of({Variant(1.0)})), "Variant()"},
      {Variant(SafeArray(VarType::kObject, 0, 2)), "Object()"},
      {Variant(SafeArray(VarType::kInteger, 1, 2)), "Integer()"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(TypeName(c.value), c.name);
  }
}

TEST(Variant, MissingIsNotEmpty) {
  EXPECT_TRUE(Variant::Missing().IsMissing());
  EXPECT_FALSE(Variant::Missing().IsEmpty());
  EXPECT_FALSE(Variant().IsMissing());
  EXPECT_EQ(Variant::Missing().VarTypeCode(), 10);
}

TEST(Variant, TrueIsMinusOne) {
  EXPECT_EQ(CInt(Variant(true)), -1);
  EXPECT_EQ(CDbl(Variant(true)), -1.0);
  EXPECT_EQ(CStr(Variant(true)), "True");
  EXPECT_EQ(CStr(Variant(false)), "False");
  // CByte(True) overflows: -1 is outside 0..255.
  EXPECT_EQ(ErrorOf([] { CByte(Variant(true)); }).Number(), kErrOverflow);
}

TEST(Variant, ArrayCopyIsDeep) {
  Variant a(SafeArray::OfDoubles({1, 2, 3}));
  Variant b = a;
  b.MutableArray().Set(0, Variant(9.0));
  EXPECT_EQ(CDbl(a.Array().At(0)), 1.0);
  EXPECT_EQ(CDbl(b.Array().At(0)), 9.0);
  // Nested arrays are copied too.
  Variant outer(SafeArray::Of({a}));
  Variant outer_copy = outer;
  outer_copy.MutableArray().Ref(0).MutableArray().Set(1, Variant(7.0));
  EXPECT_EQ(CDbl(outer.Array().At(0).Array().At(1)), 2.0);
}

TEST(Variant, ArraysKeepTheirLowerBound) {
  SafeArray a(VarType::kDouble, 1, 3);
  EXPECT_EQ(a.LBound(), 1);
  EXPECT_EQ(a.UBound(), 3);
  a.Set(3, Variant(int16_t{4}));
  EXPECT_EQ(TypeName(a.At(3)), "Double");  // converted to the element type
  EXPECT_EQ(ErrorOf([&] { a.At(0); }).Number(), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { a.At(4); }).Number(), kErrSubscript);
  a.Redim(1, 5, /*preserve=*/true);
  EXPECT_EQ(a.UBound(), 5);
  EXPECT_EQ(CDbl(a.At(3)), 4.0);
  EXPECT_EQ(ErrorOf([&] { a.LBound(2); }).Number(), kErrSubscript);
  SafeArray empty = SafeArray::Empty();
  EXPECT_EQ(empty.UBound(), -1);
}

TEST(Variant, TypedArraysRefuseWhatTheyCannotHold) {
  SafeArray doubles(VarType::kDouble, 0, 1);
  EXPECT_EQ(ErrorOf([&] { doubles.Set(0, Variant("abc")); }).Number(), kErrTypeMismatch);
  doubles.Set(0, Variant("2.5"));
  EXPECT_EQ(CDbl(doubles.At(0)), 2.5);
  SafeArray integers(VarType::kInteger, 0, 1);
  EXPECT_EQ(ErrorOf([&] { integers.Set(0, Variant(40000.0)); }).Number(), kErrOverflow);
  SafeArray objects(VarType::kObject, 0, 1);
  EXPECT_EQ(ErrorOf([&] { objects.Set(0, Variant(1.0)); }).Number(), kErrTypeMismatch);
}

TEST(Variant, MultiDimensionalArrays) {
  SafeArray m(VarType::kDouble, {{0, 4}, {0, 4}});
  m.Set({2, 3}, Variant(5.0));
  EXPECT_EQ(CDbl(m.At({2, 3})), 5.0);
  EXPECT_EQ(CDbl(m.At({3, 2})), 0.0);
  EXPECT_EQ(m.UBound(2), 3);
  EXPECT_EQ(ErrorOf([&] { m.At({4, 0}); }).Number(), kErrSubscript);
}

TEST(Conversions, IntegerConversionsRoundHalfToEvenAndOverflow) {
  struct Case {
    double in;
    int32_t cint;  // kErrOverflow marker below
    bool overflows;
  } cases[] = {
      {2.5, 2, false},      {3.5, 4, false},       {-2.5, -2, false},
      {32767.0, 32767, false},
      {32767.5, 0, true},   // rounds to 32768
      {-32768.5, -32768, false},  // rounds to the even -32768
      {-32769.0, 0, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.in);
    if (c.overflows) {
      EXPECT_EQ(ErrorOf([&] { CInt(Variant(c.in)); }).Number(), kErrOverflow);
    } else {
      EXPECT_EQ(CInt(Variant(c.in)), c.cint);
    }
  }
  EXPECT_EQ(CLng(Variant(2147483647.4)), 2147483647);
  EXPECT_EQ(ErrorOf([] { CLng(Variant(2147483647.5)); }).Number(), kErrOverflow);
  EXPECT_EQ(CInt(Variant(" 12 ")), 12);
  // Single: beyond its largest finite value (3.4028235E+38) is an overflow.
  EXPECT_EQ(CSng(Variant(3.4e38)), 3.4e38f);
  EXPECT_EQ(ErrorOf([] { CSng(Variant(-3.5e38)); }).Number(), kErrOverflow);
}

TEST(Conversions, EmptyNullStringsAndObjects) {
  EXPECT_EQ(CDbl(Variant()), 0.0);
  EXPECT_EQ(CStr(Variant()), "");
  EXPECT_FALSE(CBool(Variant()));
  EXPECT_EQ(ErrorOf([] { CStr(Variant::Null()); }).Number(), kErrInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([] { CDbl(Variant("1.2.3")); }).Number(), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([] { CDbl(Variant::Nothing()); }).Number(), kErrObjectNotSet);
  EXPECT_EQ(ErrorOf([] { CDbl(Variant(SafeArray::Empty())); }).Number(), kErrTypeMismatch);
  EXPECT_TRUE(CBool(Variant("true")));
  EXPECT_FALSE(CBool(Variant("0")));
  EXPECT_EQ(CStr(Variant(0.1 + 0.2)), "0.3");
  EXPECT_EQ(CStr(Variant(int16_t{-5})), "-5");
}

TEST(Conversions, IsNumeric) {
  EXPECT_TRUE(IsNumeric(Variant()));
  EXPECT_TRUE(IsNumeric(Variant(" 1.5 ")));
  EXPECT_TRUE(IsNumeric(Variant(true)));
  EXPECT_FALSE(IsNumeric(Variant("1.5x")));
  EXPECT_FALSE(IsNumeric(Variant::Null()));
  EXPECT_FALSE(IsNumeric(Variant(SafeArray::OfDoubles({1}))));
}

}  // namespace
}  // namespace tovik
