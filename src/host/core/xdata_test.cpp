#include "host/core/xdata.h"

#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"
#include "tests/support/errors.h"

namespace tovik::host {
namespace {

using XDataTest = HostTest;

Variant Values(std::initializer_list<Variant> values) { return Variant(SafeArray::Of(values)); }

struct Read {
  Variant types, values;
};
Read GetXData(const ObjectRef& o, const char* app) {
  std::vector<Variant> args{Variant(app), Variant(), Variant()};
  CallMethodRef(o, "GetXData", args);
  return {args[1], args[2]};
}

TEST_F(XDataTest, RoundTripKeepsTypesAndRegistersTheApp) {
  ObjectRef line = Line(0, 0, 1, 1);
  CallMethod(line, "SetXData",
             {Codes({1001, 1000, 1070, 1071, 1040, 1010, 1002, 1005, 1002}),
              Values({Variant("Tovik COM"), Variant("text"), Variant(int32_t{12}),
                      Variant(int16_t{7}), Variant(int16_t{2}), Pt(1, 2, 3), Variant("{"),
                      Variant("1F"), Variant("}")})});
  ObjectRef apps = GetProperty(doc, "RegisteredApplications").Object();
  EXPECT_EQ(CStr(GetProperty(CallMethod(apps, "Item", {Variant("TOVIK COM")}).Object(), "Name")),
            "Tovik COM");
  Read r = GetXData(line, "tovik com");
  ASSERT_TRUE(r.types.IsArray());
  EXPECT_EQ(r.types.Array().ElementType(), VarType::kInteger);
  const auto& v = r.values.Array().Items();
  ASSERT_EQ(v.size(), 9u);
  EXPECT_EQ(CStr(v[0]), "Tovik COM");
  EXPECT_EQ(v[2].Type(), VarType::kInteger);  // 1070 comes back as an Integer
  EXPECT_EQ(v[3].Type(), VarType::kLong);     // 1071 as a Long
  EXPECT_EQ(v[4].Type(), VarType::kDouble);
  EXPECT_EQ(v[5].Array().ToDoubles(), (std::vector<double>{1, 2, 3}));
}

TEST_F(XDataTest, RunsOfOtherAppsStayAndALone1001Removes) {
  ObjectRef line = Line(0, 0, 1, 1);
  CallMethod(line, "SetXData", {Codes({1001, 1000}), Values({Variant("A"), Variant("a")})});
  CallMethod(line, "SetXData", {Codes({1001, 1000}), Values({Variant("B"), Variant("b")})});
  EXPECT_EQ(GetXData(line, "").types.Array().Count(), 4);
  EXPECT_EQ(GetXData(line, "*").types.Array().Count(), 4);
  CallMethod(line, "SetXData", {Codes({1001}), Values({Variant("A")})});
  Read r = GetXData(line, "");
  EXPECT_EQ(r.types.Array().Count(), 2);
  EXPECT_EQ(CStr(r.values.Array().Items()[0]), "B");
  // No data for that app: the outs stay Empty.
  r = GetXData(line, "A");
  EXPECT_TRUE(r.types.IsEmpty());
  EXPECT_TRUE(r.values.IsEmpty());
}

// The host counts an object's extended data as 2 bytes per group code, the
// text and its terminator, and refuses more than 16383 bytes. Application
// "A": 2 + 1 + 1; 64 strings of 250: 64 * 253; one more of n: 3 + n.
// 4 + 16192 + 3 + 184 = 16383 fits; with 185 it is one byte over.
TEST_F(XDataTest, SixteenThousandThreeHundredEightyThreeBytesFitAndOneMoreDoesNot) {
  for (size_t last : {184, 185}) {
    SCOPED_TRACE(last);
    ObjectRef line = Line(0, 0, 1, 1);
    SafeArray codes(VarType::kInteger, 0, 66);
    std::vector<Variant> values{Variant("A")};
    codes.Set(0, Variant(int16_t{1001}));
    for (int32_t i = 1; i < 66; ++i) {
      codes.Set(i, Variant(int16_t{1000}));
      values.emplace_back(std::string(i < 65 ? 250 : last, 'x'));
    }
    const AutomationError e = ErrorOf([&] {
      CallMethod(line, "SetXData", {Variant(std::move(codes)), Variant(SafeArray::OfVariants(values))});
    });
    EXPECT_EQ(e.Number(), last == 184 ? 0 : -2145386493);
  }
}

TEST_F(XDataTest, ValidationRefusesAndChangesNothing) {
  ObjectRef line = Line(0, 0, 1, 1);
  CallMethod(line, "SetXData", {Codes({1001, 1000}), Values({Variant("KEEP"), Variant("k")})});
  std::string long_text(256, 'x');
  std::string chunk(250, 'y');
  std::vector<Variant> many_values{Variant("BIG")};
  SafeArray many_codes(VarType::kInteger, 0, 70);
  many_codes.Set(0, Variant(int16_t{1001}));
  for (int i = 1; i < 70; ++i) {
    many_codes.Set(i, Variant(int16_t{1000}));
    many_values.emplace_back(chunk);
  }
  struct Case {
    const char* what;
    Variant types, values;
    int32_t number;
    const char* text;
  } cases[] = {
      {"first code not 1001", Codes({1000}), Values({Variant("x")}), -2145386493, "Invalid input"},
      {"string over 255", Codes({1001, 1000}), Values({Variant("NEW"), Variant(long_text)}),
       -2145386493, "Invalid input"},
      {"unbalanced brace", Codes({1001, 1002}), Values({Variant("NEW"), Variant("{")}),
       -2145386493, "Invalid input"},
      {"missing layer", Codes({1001, 1003}), Values({Variant("NEW"), Variant("Nope")}),
       -2145386493, "Invalid input"},
      {"point not 3 numbers", Codes({1001, 1010}), Values({Variant("NEW"), Variant(1.0)}),
       kScodeInvalidArgument, "Invalid argument XDataValue in SetXData"},
      {"lengths differ", Codes({1001, 1000}), Values({Variant("NEW")}), kScodeInvalidArgument,
       "Invalid argument XDataValue in SetXData"},
      // 69 strings of 250 bytes: over 16 KB.
      {"over 16 KB", Variant(std::move(many_codes)), Variant(SafeArray::OfVariants(many_values)),
       -2145386493, "Invalid input"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AutomationError r = ErrorOf([&] { CallMethod(line, "SetXData", {c.types, c.values}); });
    EXPECT_EQ(r.Number(), c.number);
    EXPECT_EQ(r.Description(), c.text);
    EXPECT_EQ(GetXData(line, "").types.Array().Count(), 2);
  }
  ObjectRef apps = GetProperty(doc, "RegisteredApplications").Object();
  EXPECT_EQ(CLng(GetProperty(apps, "Count")), 2);  // ACAD, KEEP: nothing registered
}

TEST_F(XDataTest, RenamingTheApplicationCarriesTheData) {
  ObjectRef a = Line(0, 0, 1, 1);
  ObjectRef b = Line(0, 0, 2, 2);
  for (const ObjectRef& o : {a, b}) {
    CallMethod(o, "SetXData", {Codes({1001, 1070}), Values({Variant("OLD"), Variant(int16_t{5})})});
  }
  ObjectRef apps = GetProperty(doc, "RegisteredApplications").Object();
  CallMethod(apps, "Add", {Variant("TAKEN")});
  ObjectRef app = CallMethod(apps, "Item", {Variant("OLD")}).Object();
  AutomationError r = ErrorOf([&] { LetProperty(app, "Name", Variant("taken")); });
  EXPECT_EQ(r.Description(), "Duplicate record name");
  LetProperty(app, "Name", Variant("NEWNAME"));
  for (const ObjectRef& o : {a, b}) {
    EXPECT_TRUE(GetXData(o, "OLD").types.IsEmpty());
    Read read = GetXData(o, "NEWNAME");
    ASSERT_TRUE(read.values.IsArray());
    EXPECT_EQ(CStr(read.values.Array().Items()[0]), "NEWNAME");
    EXPECT_EQ(CInt(read.values.Array().Items()[1]), 5);
  }
  // An app that data still uses cannot be deleted.
  r = ErrorOf([&] { CallMethod(app, "Delete"); });
  EXPECT_EQ(r.Description(), "Object is referenced");
}

}  // namespace
}  // namespace tovik::host
