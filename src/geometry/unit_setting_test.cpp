#include "geometry/unit_setting.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"

#include <functional>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "xdata/table_format.h"

namespace tovik {
namespace {

class Counter : public EventSink {
 public:
  void OnEvent(std::string_view event, std::span<Variant>) override {
    events.emplace_back(event);
  }
  std::vector<std::string> events;
};

TEST(UnitSetting, ModifiedIsRaisedOnlyForRealChanges) {
  auto setting = UnitSetting::Make();
  auto counter = std::make_shared<Counter>();
  setting->Events()->Connect(counter);
  LetProperty(setting, "LengthUnit", Variant(int16_t{kLengthInch}));
  LetProperty(setting, "LengthUnit", Variant(int16_t{kLengthInch}));  // same value
  setting->SetAnglePrecision(4);
  EXPECT_EQ(ErrorOf([&] { setting->SetLengthUnit(6); }).Number(), kErrInvalidCall);
  EXPECT_EQ(ErrorOf([&] { setting->SetLinearPrecision(17); }).Number(), kErrInvalidCall);
  EXPECT_EQ(counter->events, (std::vector<std::string>{"Modified", "Modified"}));
  // Loading is not a modification.
  setting->LoadTable(UnitSetting::Make()->ToTable());
  EXPECT_EQ(counter->events.size(), 2u);
  EXPECT_EQ(setting->LengthUnit(), kLengthMillimetre);
}

TEST(UnitSetting, TableFormSurvivesBothEncodings) {
  UnitSetting source;
  source.SetLengthUnit(kLengthFoot);
  source.SetAngleUnit(kAngleGrad);
  source.SetLinearPrecision(0);
  source.SetAnglePrecision(16);
  EXPECT_EQ(TableToText(source.ToTable()), "{\"UnitSetting\"\t5\t2\t0\t16}");

  // Group codes: the Integers come back as they were stored.
  Variant codes, values;
  TableToGroupCodes(source.ToTable(), codes, values);
  UnitSetting from_codes;
  from_codes.LoadTable(GroupCodesToTable(values));
  // Text: the numbers come back as Doubles.
  UnitSetting from_text;
  from_text.LoadTable(TextToTable(TableToText(source.ToTable())));
  for (const UnitSetting* loaded : {&from_codes, &from_text}) {
    EXPECT_EQ(loaded->LengthUnit(), kLengthFoot);
    EXPECT_EQ(loaded->AngleUnit(), kAngleGrad);
    EXPECT_EQ(loaded->LinearPrecision(), 0);
    EXPECT_EQ(loaded->AnglePrecision(), 16);
  }
}

TEST(UnitSetting, LoadTableRefusesOtherTablesAndChangesNothing) {
  auto tag = Variant("UnitSetting");
  auto n = [](int v) { return Variant(static_cast<int16_t>(v)); };
  struct Case {
    const char* name;
    Variant table;
    int32_t error;
  } cases[] = {
      {"not an array", Variant(int16_t{1}), kErrInvalidCall},
      {"four elements", Variant(SafeArray::Of({tag, n(1), n(1), n(1)})), kErrInvalidCall},
      {"wrong tag", Variant(SafeArray::Of({Variant("Units"), n(1), n(1), n(1), n(1)})),
       kErrInvalidCall},
      {"unit 6", Variant(SafeArray::Of({tag, n(6), n(1), n(1), n(1)})), kErrInvalidCall},
      {"text field", Variant(SafeArray::Of({tag, n(1), Variant("x"), n(1), n(1)})),
       kErrTypeMismatch},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.name);
    UnitSetting setting;
    EXPECT_EQ(ErrorOf([&] { setting.LoadTable(c.table); }).Number(), c.error);
    EXPECT_EQ(setting.LengthUnit(), kLengthMillimetre);
    EXPECT_EQ(setting.AngleUnit(), kAngleDegree);
  }
}

}  // namespace
}  // namespace tovik
