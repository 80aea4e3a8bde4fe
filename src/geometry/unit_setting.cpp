#include "geometry/unit_setting.h"

#include <array>

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {
namespace {

int16_t Checked(int32_t value, int32_t low, int32_t high) {
  if (value < low || value > high) throw errors::InvalidCall();
  return static_cast<int16_t>(value);
}

int16_t CheckedLengthUnit(int32_t v) { return Checked(v, kLengthMillimetre, kLengthFoot); }
int16_t CheckedAngleUnit(int32_t v) { return Checked(v, kAngleRadian, kAngleGrad); }
int16_t CheckedPrecision(int32_t v) { return Checked(v, 0, UnitSetting::kMaxPrecision); }

}  // namespace

void UnitSetting::Change(int16_t& field, int16_t value) {
  if (field == value) return;
  field = value;
  events_.Raise("Modified", {});
}

void UnitSetting::SetLengthUnit(int32_t unit) { Change(length_unit_, CheckedLengthUnit(unit)); }
void UnitSetting::SetAngleUnit(int32_t unit) { Change(angle_unit_, CheckedAngleUnit(unit)); }
void UnitSetting::SetLinearPrecision(int32_t places) {
  Change(linear_precision_, CheckedPrecision(places));
}
void UnitSetting::SetAnglePrecision(int32_t places) {
  Change(angle_precision_, CheckedPrecision(places));
}

Variant UnitSetting::ToTable() const {
  return Variant(SafeArray::Of({Variant(kTableTag), Variant(length_unit_),
                                Variant(angle_unit_), Variant(linear_precision_),
                                Variant(angle_precision_)}));
}

void UnitSetting::LoadTable(const Variant& table) {
  if (!table.IsArray() || table.Array().Dims() != 1 || table.Array().Count() < 5) {
    throw errors::InvalidCall();
  }
  const SafeArray& items = table.Array();
  int32_t lb = items.LBound();
  const Variant& tag = items.At(lb);
  if (!tag.IsString() || tag.RawString() != kTableTag) throw errors::InvalidCall();
  // Convert and check all four before changing any.
  std::array<int16_t, 4> fields = {
      CheckedLengthUnit(CInt(items.At(lb + 1))), CheckedAngleUnit(CInt(items.At(lb + 2))),
      CheckedPrecision(CInt(items.At(lb + 3))), CheckedPrecision(CInt(items.At(lb + 4)))};
  length_unit_ = fields[0];
  angle_unit_ = fields[1];
  linear_precision_ = fields[2];
  angle_precision_ = fields[3];
}

const MemberTable<UnitSetting>& UnitSetting::Members() {
  static const MemberTable<UnitSetting> table = [] {
    MemberTable<UnitSetting> t;
    // LengthUnit: the drawing's length unit, a LengthUnitID.
    t.Property(
        "LengthUnit", [](UnitSetting& s, CallArgs&) { return Variant(s.LengthUnit()); },
        [](UnitSetting& s, CallArgs&, Variant& v) { s.SetLengthUnit(CLng(v)); });
    // AngleUnit: 0 radians, 1 degrees, 2 grads.
    t.Property(
        "AngleUnit", [](UnitSetting& s, CallArgs&) { return Variant(s.AngleUnit()); },
        [](UnitSetting& s, CallArgs&, Variant& v) { s.SetAngleUnit(CLng(v)); });
    // LinearPrecision / AnglePrecision: decimal places shown, 0 to 16.
    t.Property(
        "LinearPrecision",
        [](UnitSetting& s, CallArgs&) { return Variant(s.LinearPrecision()); },
        [](UnitSetting& s, CallArgs&, Variant& v) { s.SetLinearPrecision(CLng(v)); });
    t.Property(
        "AnglePrecision",
        [](UnitSetting& s, CallArgs&) { return Variant(s.AnglePrecision()); },
        [](UnitSetting& s, CallArgs&, Variant& v) { s.SetAnglePrecision(CLng(v)); });
    // Table: the table form.
    t.Property("Table", [](UnitSetting& s, CallArgs&) { return s.ToTable(); });
    // LoadTable(Table): loads the table form without raising Modified.
    t.Method(
        "LoadTable",
        [](UnitSetting& s, CallArgs& a) {
          s.LoadTable(a[0]);
          return Variant();
        },
        1, 1);
    return t;
  }();
  return table;
}

}  // namespace tovik
