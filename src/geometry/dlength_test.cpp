#include "geometry/dlength.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"
#include "tests/support/properties.h"

#include <functional>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"

namespace tovik {
namespace {

TEST(DLength, OneMillimetreAndOneUnitInEverySupportedUnit) {
  struct Case {
    int16_t unit;
    double mm_per_unit;   // exact definitions
    double unit_per_mm;   // written out by hand
  } cases[] = {
      {kLengthMillimetre, 1.0, 1.0},
      {kLengthCentimetre, 10.0, 0.1},
      {kLengthDecimetre, 100.0, 0.01},
      {kLengthMetre, 1000.0, 0.001},
      {kLengthInch, 25.4, 0.03937007874015748},
      {kLengthFoot, 304.8, 0.0032808398950131233},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.unit);
    DLength one_mm;
    one_mm.SetMillimetres(1.0);
    EXPECT_DOUBLE_EQ(one_mm.GetValue(c.unit), c.unit_per_mm);
    DLength one_unit;
    one_unit.SetValue(1.0, c.unit);
    EXPECT_DOUBLE_EQ(one_unit.Millimetres(), c.mm_per_unit);
  }
}

TEST(DLength, ConvertsBetweenNonMetricAndMetricUnits) {
  struct Case {
    double value;
    int16_t from, to;
    double expected;
  } cases[] = {
      {1.0, kLengthFoot, kLengthInch, 12.0},
      {2.54, kLengthCentimetre, kLengthInch, 1.0},
      {1.0, kLengthMetre, kLengthFoot, 3.280839895013123},
      {3.0, kLengthFoot, kLengthMetre, 0.9144},
      {5.0, kLengthDecimetre, kLengthCentimetre, 50.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.value << " " << c.from << "->" << c.to);
    DLength length;
    length.SetValue(c.value, c.from);
    EXPECT_DOUBLE_EQ(length.GetValue(c.to), c.expected);
  }
}

TEST(DLength, SameUnitGivesBackTheExactNumber) {
  // 0.1 inch goes through millimetres as 2.54 / 25.4, which is not exactly
  // 0.1 in binary; the length keeps its own unit instead.
  DLength length;
  length.SetValue(0.1, kLengthInch);
  EXPECT_EQ(length.GetValue(kLengthInch), 0.1);
}

TEST(DLength, UnknownUnitsAreRefusedAndLeaveTheLength) {
  DLength length;
  length.SetValue(7.0, kLengthMetre);
  for (int32_t unit : {-1, 6, 10}) {
    SCOPED_TRACE(unit);
    EXPECT_EQ(ErrorOf([&] { length.SetValue(1.0, unit); }).Number(), kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] { length.GetValue(unit); }).Number(), kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] { length.ChangeUnit(unit); }).Number(), kErrInvalidCall);
  }
  EXPECT_EQ(length.GetValue(kLengthMillimetre), 7000.0);
}

TEST(DLength, MembersByNameChangeUnitWithoutChangingTheLength) {
  ObjectRef length = DLength::Make();
  CallMethod(length, "SetValue", {Variant(1.5), Variant(int16_t{kLengthMetre})});
  LetProperty(length, "unitid", Variant(int16_t{kLengthCentimetre}));
  ExpectProperties(length, {{"Value", 150.0}, {"Millimeter", 1500.0}});
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(length, "GetValue", {Variant(int16_t{kLengthInch})})),
                   1500.0 / 25.4);
  EXPECT_EQ(TypeName(Variant(length)), "DLength");
}

}  // namespace
}  // namespace tovik
