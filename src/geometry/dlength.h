// DLength: a length that knows its unit, as an automation object.
//
// The six length units the maker's add-ins support are numbered by
// LengthUnitID (0 millimetre, 1 centimetre, 2 decimetre, 3 metre, 4 inch,
// 5 foot). A DLength keeps the number exactly as it was set together with
// its unit, so reading it back in the same unit returns the very number
// given; other units are converted through millimetres.
#ifndef TOVIK_GEOMETRY_DLENGTH_H_
#define TOVIK_GEOMETRY_DLENGTH_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "frame/member_table.h"

namespace tovik {

// The length-unit identifiers.
enum LengthUnitID : int16_t {
  kLengthMillimetre = 0,
  kLengthCentimetre = 1,
  kLengthDecimetre = 2,
  kLengthMetre = 3,
  kLengthInch = 4,
  kLengthFoot = 5,
};

// Millimetres in one `unit` (10 for centimetres, 25.4 for inches), or
// nullopt for a number that is no LengthUnitID.
std::optional<double> MillimetresPerUnit(int32_t unit);

// Converts `value` from unit `from` to unit `to`: exact (the value itself)
// when the units are equal, otherwise value * mm(from) / mm(to).
// Raises 5 (invalid procedure call or argument) for an unknown unit.
double ConvertLength(double value, int32_t from, int32_t to);

class DLength : public DispatchObject<DLength> {
 public:
  static constexpr std::string_view kClassName = "DLength";

  // A length of 0 millimetres.
  DLength() = default;
  static std::shared_ptr<DLength> Make() { return std::make_shared<DLength>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<DLength>& Members();

  // Sets the length to `value` in `unit`; raises 5 for an unknown unit
  // (the length is then unchanged).
  void SetValue(double value, int32_t unit);
  // The length expressed in `unit`; raises 5 for an unknown unit.
  double GetValue(int32_t unit) const;
  // Sets the length in millimetres (its unit becomes millimetres).
  void SetMillimetres(double value) { SetValue(value, kLengthMillimetre); }
  // The length in millimetres.
  double Millimetres() const { return GetValue(kLengthMillimetre); }
  // The unit the length was last set in, and the number in that unit.
  int16_t Unit() const { return unit_; }
  double Value() const { return value_; }
  // Re-expresses the same length in `unit` (Value changes, the length does
  // not); raises 5 for an unknown unit.
  void ChangeUnit(int32_t unit);

 private:
  double value_ = 0.0;
  int16_t unit_ = kLengthMillimetre;
};

}  // namespace tovik

#endif  // TOVIK_GEOMETRY_DLENGTH_H_
