#include "geometry/dlength.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {
namespace {

// Millimetres per unit, by LengthUnitID. All are exact in binary except
// 25.4 and 304.8, which are the correctly rounded doubles of the exact
// definitions of the inch and the foot.
constexpr double kMillimetresPer[] = {1.0, 10.0, 100.0, 1000.0, 25.4, 304.8};

double CheckedMillimetresPer(int32_t unit) {
  std::optional<double> mm = MillimetresPerUnit(unit);
  if (!mm) throw errors::InvalidCall();
  return *mm;
}

}  // namespace

std::optional<double> MillimetresPerUnit(int32_t unit) {
  if (unit < kLengthMillimetre || unit > kLengthFoot) return std::nullopt;
  return kMillimetresPer[unit];
}

double ConvertLength(double value, int32_t from, int32_t to) {
  double from_mm = CheckedMillimetresPer(from);
  double to_mm = CheckedMillimetresPer(to);
  if (from == to) return value;
  // Millimetres to another unit divide once, so 1 mm in metres is exactly
  // the double nearest 0.001 (1 / 1000), not 1 * (1 / 1000).
  if (from == kLengthMillimetre) return value / to_mm;
  return value * from_mm / to_mm;
}

void DLength::SetValue(double value, int32_t unit) {
  CheckedMillimetresPer(unit);
  value_ = value;
  unit_ = static_cast<int16_t>(unit);
}

double DLength::GetValue(int32_t unit) const { return ConvertLength(value_, unit_, unit); }

void DLength::ChangeUnit(int32_t unit) {
  double converted = GetValue(unit);
  value_ = converted;
  unit_ = static_cast<int16_t>(unit);
}

const MemberTable<DLength>& DLength::Members() {
  static const MemberTable<DLength> table = [] {
    MemberTable<DLength> t;
    // Value: the number in the length's own unit (default member).
    t.Property(
        "Value", [](DLength& s, CallArgs&) { return Variant(s.Value()); },
        [](DLength& s, CallArgs&, Variant& v) { s.SetValue(CDbl(v), s.Unit()); });
    t.Default("Value");
    // UnitID: the length's own unit; assigning re-expresses the length.
    t.Property(
        "UnitID", [](DLength& s, CallArgs&) { return Variant(s.Unit()); },
        [](DLength& s, CallArgs&, Variant& v) { s.ChangeUnit(CLng(v)); });
    // Millimeter: the length in millimetres.
    t.Property(
        "Millimeter", [](DLength& s, CallArgs&) { return Variant(s.Millimetres()); },
        [](DLength& s, CallArgs&, Variant& v) { s.SetMillimetres(CDbl(v)); });
    // GetValue(UnitID): the length in the given unit.
    t.Method(
        "GetValue", [](DLength& s, CallArgs& a) { return Variant(s.GetValue(CLng(a[0]))); },
        1, 1);
    // SetValue(Value, UnitID): sets the length from a number and a unit.
    t.Method(
        "SetValue",
        [](DLength& s, CallArgs& a) {
          s.SetValue(CDbl(a[0]), CLng(a[1]));
          return Variant();
        },
        2, 2);
    return t;
  }();
  return table;
}

}  // namespace tovik
