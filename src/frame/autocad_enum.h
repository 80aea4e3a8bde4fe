// AutoCAD_Enum: the class that carries the host enumerations the type
// library publishes, so that clients can pass host values straight through.
// Names and values are the host's own. The class has no members; the
// enumerations are also listed as data (PublishedEnumerations) for the
// type library and the command line.
#ifndef TOVIK_FRAME_AUTOCAD_ENUM_H_
#define TOVIK_FRAME_AUTOCAD_ENUM_H_

#include <cstdint>
#include <span>
#include <string_view>

#include "frame/member_table.h"

namespace tovik {

enum AcActiveSpace : int32_t {
  acModelSpace = 1,
  acPaperSpace = 0,
};

enum AcColorMethod : int32_t {
  acColorMethodByLayer = 192,
  acColorMethodByBlock = 193,
  acColorMethodByRGB = 194,
  acColorMethodByACI = 195,
  acColorMethodForeground = 197,
};

enum AcColor : int32_t {
  acByBlock = 0,
  acRed = 1,
  acYellow = 2,
  acGreen = 3,
  acCyan = 4,
  acBlue = 5,
  acMagenta = 6,
  acWhite = 7,
  acByLayer = 256,
};

enum AcCoordinateSystem : int32_t {
  acWorld = 0,
  acUCS = 1,
  acDisplayDCS = 2,
  acPaperSpaceDCS = 3,
  acOCS = 4,
};

enum AcDynamicBlockReferencePropertyUnitsType : int32_t {
  acNoUnits = 0,
  acAngular = 1,
  acDistance = 2,
  acArea = 3,
};

enum AcLeaderType : int32_t {
  acLineNoArrow = 0,
  acSplineNoArrow = 1,
  acLineWithArrow = 2,
  acSplineWithArrow = 3,
};

enum AcSelect : int32_t {
  acSelectionSetWindow = 0,
  acSelectionSetCrossing = 1,
  acSelectionSetFence = 2,
  acSelectionSetPrevious = 3,
  acSelectionSetLast = 4,
  acSelectionSetAll = 5,
  acSelectionSetWindowPolygon = 6,
  acSelectionSetCrossingPolygon = 7,
};

enum AcWindowState : int32_t {
  acNorm = 1,
  acMin = 2,
  acMax = 3,
};

enum AcExtendOption : int32_t {
  acExtendNone = 0,
  acExtendThisEntity = 1,
  acExtendOtherEntity = 2,
  acExtendBoth = 3,
};

enum acAlignment : int32_t {
  acAlignmentLeft = 0,
  acAlignmentCenter = 1,
  acAlignmentRight = 2,
  acAlignmentAligned = 3,
  acAlignmentMiddle = 4,
  acAlignmentFit = 5,
  acAlignmentTopLeft = 6,
  acAlignmentTopCenter = 7,
  acAlignmentTopRight = 8,
  acAlignmentMiddleLeft = 9,
  acAlignmentMiddleCenter = 10,
  acAlignmentMiddleRight = 11,
  acAlignmentBottomLeft = 12,
  acAlignmentBottomCenter = 13,
  acAlignmentBottomRight = 14,
};

enum AcInsertUnits : int32_t {
  acInsertUnitsUnitless = 0,
  acInsertUnitsInches = 1,
  acInsertUnitsFeet = 2,
  acInsertUnitsMiles = 3,
  acInsertUnitsMillimeters = 4,
  acInsertUnitsCentimeters = 5,
  acInsertUnitsMeters = 6,
  acInsertUnitsKilometers = 7,
  acInsertUnitsMicroinches = 8,
  acInsertUnitsMils = 9,
  acInsertUnitsYards = 10,
  acInsertUnitsAngstroms = 11,
  acInsertUnitsNanometers = 12,
  acInsertUnitsMicrons = 13,
  acInsertUnitsDecimeters = 14,
  acInsertUnitsDecameters = 15,
  acInsertUnitsHectometers = 16,
  acInsertUnitsGigameters = 17,
  acInsertUnitsAstronomicalUnits = 18,
  acInsertUnitsLightYears = 19,
  acInsertUnitsParsecs = 20,
};

enum AcRowType : int32_t {
  acUnknownRow = 0,
  acDataRow = 1,
  acTitleRow = 3,
  acHeaderRow = 4,
};

enum AcValueDataType : int32_t {
  acUnknownDataType = 0,
  acLong = 1,
  acDouble = 2,
  acString = 4,
  acPoint2d = 16,
  acPoint3d = 32,
  acGeneral = 512,
};

enum AcValueUnitType : int32_t {
  acUnitless = 0,
  acUnitDistance = 1,
  acUnitAngle = 2,
  acUnitArea = 4,
  acUnitVolume = 8,
};

enum AcHatchObjectType : int32_t {
  acHatchObject = 0,
  acGradientObject = 1,
};

enum AcAttributeMode : int32_t {
  acAttributeModeNormal = 0,
  acAttributeModeInvisible = 1,
  acAttributeModeConstant = 2,
  acAttributeModeVerify = 4,
  acAttributeModePreset = 8,
  acAttributeModeLockPosition = 16,
  acAttributeModeMultipleLine = 32,
};

// One member of a published enumeration.
struct EnumMember {
  std::string_view name;
  int32_t value;
};

// A published enumeration: its name and members in declaration order.
struct EnumInfo {
  std::string_view name;
  std::span<const EnumMember> members;
};

// The enumerations AutoCAD_Enum carries, in type-library order.
std::span<const EnumInfo> PublishedEnumerations();

// The global class that exists only to carry the enumerations above.
class AutoCAD_Enum : public DispatchObject<AutoCAD_Enum> {
 public:
  static constexpr std::string_view kClassName = "AutoCAD_Enum";
  std::string_view TypeName() const override { return kClassName; }
  // An empty table: the class has no members.
  static const MemberTable<AutoCAD_Enum>& Members();
};

}  // namespace tovik

#endif  // TOVIK_FRAME_AUTOCAD_ENUM_H_
