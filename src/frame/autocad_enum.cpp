#include "frame/autocad_enum.h"

namespace tovik {
namespace {

constexpr EnumMember kAcActiveSpaceMembers[] = {
    {"acModelSpace", acModelSpace},
    {"acPaperSpace", acPaperSpace},
};
constexpr EnumMember kAcColorMethodMembers[] = {
    {"acColorMethodByLayer", acColorMethodByLayer},
    {"acColorMethodByBlock", acColorMethodByBlock},
    {"acColorMethodByRGB", acColorMethodByRGB},
    {"acColorMethodByACI", acColorMethodByACI},
    {"acColorMethodForeground", acColorMethodForeground},
};
constexpr EnumMember kAcColorMembers[] = {
    {"acByBlock", acByBlock},
    {"acRed", acRed},
    {"acYellow", acYellow},
    {"acGreen", acGreen},
    {"acCyan", acCyan},
    {"acBlue", acBlue},
    {"acMagenta", acMagenta},
    {"acWhite", acWhite},
    {"acByLayer", acByLayer},
};
constexpr EnumMember kAcCoordinateSystemMembers[] = {
    {"acWorld", acWorld},
    {"acUCS", acUCS},
    {"acDisplayDCS", acDisplayDCS},
    {"acPaperSpaceDCS", acPaperSpaceDCS},
    {"acOCS", acOCS},
};
constexpr EnumMember kAcDynamicBlockReferencePropertyUnitsTypeMembers[] = {
    {"acNoUnits", acNoUnits},
    {"acAngular", acAngular},
    {"acDistance", acDistance},
    {"acArea", acArea},
};
constexpr EnumMember kAcLeaderTypeMembers[] = {
    {"acLineNoArrow", acLineNoArrow},
    {"acSplineNoArrow", acSplineNoArrow},
    {"acLineWithArrow", acLineWithArrow},
    {"acSplineWithArrow", acSplineWithArrow},
};
constexpr EnumMember kAcSelectMembers[] = {
    {"acSelectionSetWindow", acSelectionSetWindow},
    {"acSelectionSetCrossing", acSelectionSetCrossing},
    {"acSelectionSetFence", acSelectionSetFence},
    {"acSelectionSetPrevious", acSelectionSetPrevious},
    {"acSelectionSetLast", acSelectionSetLast},
    {"acSelectionSetAll", acSelectionSetAll},
    {"acSelectionSetWindowPolygon", acSelectionSetWindowPolygon},
    {"acSelectionSetCrossingPolygon", acSelectionSetCrossingPolygon},
};
constexpr EnumMember kAcWindowStateMembers[] = {
    {"acNorm", acNorm},
    {"acMin", acMin},
    {"acMax", acMax},
};
constexpr EnumMember kAcExtendOptionMembers[] = {
    {"acExtendNone", acExtendNone},
    {"acExtendThisEntity", acExtendThisEntity},
    {"acExtendOtherEntity", acExtendOtherEntity},
    {"acExtendBoth", acExtendBoth},
};
constexpr EnumMember kAcAlignmentMembers[] = {
    {"acAlignmentLeft", acAlignmentLeft},
    {"acAlignmentCenter", acAlignmentCenter},
    {"acAlignmentRight", acAlignmentRight},
    {"acAlignmentAligned", acAlignmentAligned},
    {"acAlignmentMiddle", acAlignmentMiddle},
    {"acAlignmentFit", acAlignmentFit},
    {"acAlignmentTopLeft", acAlignmentTopLeft},
    {"acAlignmentTopCenter", acAlignmentTopCenter},
    {"acAlignmentTopRight", acAlignmentTopRight},
    {"acAlignmentMiddleLeft", acAlignmentMiddleLeft},
    {"acAlignmentMiddleCenter", acAlignmentMiddleCenter},
    {"acAlignmentMiddleRight", acAlignmentMiddleRight},
    {"acAlignmentBottomLeft", acAlignmentBottomLeft},
    {"acAlignmentBottomCenter", acAlignmentBottomCenter},
    {"acAlignmentBottomRight", acAlignmentBottomRight},
};
constexpr EnumMember kAcInsertUnitsMembers[] = {
    {"acInsertUnitsUnitless", acInsertUnitsUnitless},
    {"acInsertUnitsInches", acInsertUnitsInches},
    {"acInsertUnitsFeet", acInsertUnitsFeet},
    {"acInsertUnitsMiles", acInsertUnitsMiles},
    {"acInsertUnitsMillimeters", acInsertUnitsMillimeters},
    {"acInsertUnitsCentimeters", acInsertUnitsCentimeters},
    {"acInsertUnitsMeters", acInsertUnitsMeters},
    {"acInsertUnitsKilometers", acInsertUnitsKilometers},
    {"acInsertUnitsMicroinches", acInsertUnitsMicroinches},
    {"acInsertUnitsMils", acInsertUnitsMils},
    {"acInsertUnitsYards", acInsertUnitsYards},
    {"acInsertUnitsAngstroms", acInsertUnitsAngstroms},
    {"acInsertUnitsNanometers", acInsertUnitsNanometers},
    {"acInsertUnitsMicrons", acInsertUnitsMicrons},
    {"acInsertUnitsDecimeters", acInsertUnitsDecimeters},
    {"acInsertUnitsDecameters", acInsertUnitsDecameters},
    {"acInsertUnitsHectometers", acInsertUnitsHectometers},
    {"acInsertUnitsGigameters", acInsertUnitsGigameters},
    {"acInsertUnitsAstronomicalUnits", acInsertUnitsAstronomicalUnits},
    {"acInsertUnitsLightYears", acInsertUnitsLightYears},
    {"acInsertUnitsParsecs", acInsertUnitsParsecs},
};
constexpr EnumMember kAcRowTypeMembers[] = {
    {"acUnknownRow", acUnknownRow},
    {"acDataRow", acDataRow},
    {"acTitleRow", acTitleRow},
    {"acHeaderRow", acHeaderRow},
};
constexpr EnumMember kAcValueDataTypeMembers[] = {
    {"acUnknownDataType", acUnknownDataType},
    {"acLong", acLong},
    {"acDouble", acDouble},
    {"acString", acString},
    {"acPoint2d", acPoint2d},
    {"acPoint3d", acPoint3d},
    {"acGeneral", acGeneral},
};
constexpr EnumMember kAcValueUnitTypeMembers[] = {
    {"acUnitless", acUnitless},
    {"acUnitDistance", acUnitDistance},
    {"acUnitAngle", acUnitAngle},
    {"acUnitArea", acUnitArea},
    {"acUnitVolume", acUnitVolume},
};
constexpr EnumMember kAcHatchObjectTypeMembers[] = {
    {"acHatchObject", acHatchObject},
    {"acGradientObject", acGradientObject},
};
constexpr EnumMember kAcAttributeModeMembers[] = {
    {"acAttributeModeNormal", acAttributeModeNormal},
    {"acAttributeModeInvisible", acAttributeModeInvisible},
    {"acAttributeModeConstant", acAttributeModeConstant},
    {"acAttributeModeVerify", acAttributeModeVerify},
    {"acAttributeModePreset", acAttributeModePreset},
    {"acAttributeModeLockPosition", acAttributeModeLockPosition},
    {"acAttributeModeMultipleLine", acAttributeModeMultipleLine},
};

constexpr EnumInfo kEnumerations[] = {
    {"AcActiveSpace", kAcActiveSpaceMembers},
    {"AcColorMethod", kAcColorMethodMembers},
    {"AcColor", kAcColorMembers},
    {"AcCoordinateSystem", kAcCoordinateSystemMembers},
    {"AcDynamicBlockReferencePropertyUnitsType", kAcDynamicBlockReferencePropertyUnitsTypeMembers},
    {"AcLeaderType", kAcLeaderTypeMembers},
    {"AcSelect", kAcSelectMembers},
    {"AcWindowState", kAcWindowStateMembers},
    {"AcExtendOption", kAcExtendOptionMembers},
    {"acAlignment", kAcAlignmentMembers},
    {"AcInsertUnits", kAcInsertUnitsMembers},
    {"AcRowType", kAcRowTypeMembers},
    {"AcValueDataType", kAcValueDataTypeMembers},
    {"AcValueUnitType", kAcValueUnitTypeMembers},
    {"AcHatchObjectType", kAcHatchObjectTypeMembers},
    {"AcAttributeMode", kAcAttributeModeMembers},
};

}  // namespace

std::span<const EnumInfo> PublishedEnumerations() { return kEnumerations; }

const MemberTable<AutoCAD_Enum>& AutoCAD_Enum::Members() {
  static const MemberTable<AutoCAD_Enum> table;
  return table;
}

}  // namespace tovik
