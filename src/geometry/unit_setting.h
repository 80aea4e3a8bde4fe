// UnitSetting: a drawing's unit preferences, as an automation object.
//
// It holds the length unit (a LengthUnitID), the angle unit (0 radians,
// 1 degrees, 2 grads) and the number of decimal places shown for lengths
// and for angles. Every change made through a property raises the event
// "Modified" to connected sinks (the drawing's transaction listens and
// writes the setting back into the drawing); loading from the table form
// does not.
//
// Table form, as stored in a drawing: a table of five elements,
//   ("UnitSetting", LengthUnit, AngleUnit, LinearPrecision, AnglePrecision)
// the four numbers as Integers. It survives both table encodings: numbers
// read back from text come back as Doubles and are converted.
#ifndef TOVIK_GEOMETRY_UNIT_SETTING_H_
#define TOVIK_GEOMETRY_UNIT_SETTING_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include "frame/member_table.h"
#include "geometry/dlength.h"

namespace tovik {

enum AngleUnitID : int16_t {
  kAngleRadian = 0,
  kAngleDegree = 1,
  kAngleGrad = 2,
};

class UnitSetting : public DispatchObject<UnitSetting> {
 public:
  static constexpr std::string_view kClassName = "UnitSetting";
  // The first element of the table form.
  static constexpr std::string_view kTableTag = "UnitSetting";
  // Decimal places accepted for either precision.
  static constexpr int16_t kMaxPrecision = 16;

  // Millimetres, degrees, two decimal places for both.
  UnitSetting() = default;
  static std::shared_ptr<UnitSetting> Make() { return std::make_shared<UnitSetting>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<UnitSetting>& Members();
  EventSource* Events() override { return &events_; }

  int16_t LengthUnit() const { return length_unit_; }
  int16_t AngleUnit() const { return angle_unit_; }
  int16_t LinearPrecision() const { return linear_precision_; }
  int16_t AnglePrecision() const { return angle_precision_; }

  // Setters: raise 5 (invalid procedure call or argument) for a value out
  // of range, leaving the setting unchanged; raise "Modified" when the value
  // changes.
  void SetLengthUnit(int32_t unit);
  void SetAngleUnit(int32_t unit);
  void SetLinearPrecision(int32_t places);
  void SetAnglePrecision(int32_t places);

  // The table form (see above).
  Variant ToTable() const;
  // Loads every field from the table form, without raising "Modified".
  // Raises 5 when `table` is not a table of at least five elements opening
  // with "UnitSetting" or holds a value out of range (nothing is changed
  // then), and the conversion error (13, 6) of a field that is no number.
  void LoadTable(const Variant& table);

 private:
  void Change(int16_t& field, int16_t value);

  int16_t length_unit_ = kLengthMillimetre;
  int16_t angle_unit_ = kAngleDegree;
  int16_t linear_precision_ = 2;
  int16_t angle_precision_ = 2;
  EventSource events_;
};

}  // namespace tovik

#endif  // TOVIK_GEOMETRY_UNIT_SETTING_H_
