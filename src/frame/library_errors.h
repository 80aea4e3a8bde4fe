// Every description the library raises with its own error number 2411,
// verbatim (misspellings included: callers compare these texts), and the
// source texts some of them carry. Raise with
// `throw errors::Library(kInvalidDictionaryIndex);` or
// `throw errors::Library(VariableNameNotFound(name), kSourceTovikCom);`.
#ifndef TOVIK_FRAME_LIBRARY_ERRORS_H_
#define TOVIK_FRAME_LIBRARY_ERRORS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace tovik {

// Source texts.
inline constexpr std::string_view kSourceTovikCom = "Tovik COM";
inline constexpr std::string_view kSourceTovikStudio = "Tovik Studio";

// Unit lookup of a length-unit code it does not know (raised without a
// source text).
inline constexpr std::string_view kUnsupportedLengthUnit =
    "Unsupported Length Unit. Supported Units are mm, cm, dm, m, ft and inch";

// DynamicSS.Item with a handle that is not a member (no source text).
inline constexpr std::string_view kInvalidDictionaryIndex =
    "Invalid index for Dictionary collection.";

// SSAnimation.ZoomTo on a set outside the current layout.
inline constexpr std::string_view kSelectionNotInCurrentLayout =
    "Selection Set is not in current layout to run ZoomTo command.";

// The xdata variable table failed validation (source "Tovik Studio"). The
// full description is this text, then CR LF and each of the three lists
// below, separated by CR LF.
inline constexpr std::string_view kInvalidVariableTable = "Invalid VariableTable";
inline constexpr std::string_view kDuplicateVarnamePrefix = "Dupplicate Varname: ";
inline constexpr std::string_view kDuplicateVarIdPrefix = "Dupplicated VarID: ";
inline constexpr std::string_view kInvalidVarIdPrefix = "Invalid VarID: ";

// Xdata.GetVariableID of an unknown name (source "Tovik COM"):
// "SetXdata fails. Variable names " + name + " not found".
inline std::string VariableNameNotFound(std::string_view name) {
  return "SetXdata fails. Variable names " + std::string(name) + " not found";
}

// Xdata.GetVariableName of an unknown ID (source "Tovik COM"): no blank
// between "VarID" and the number: "SetXdata fails. VarID4 not found".
inline std::string VariableIdNotFound(int32_t var_id) {
  return "SetXdata fails. VarID" + std::to_string(var_id) + " not found";
}

// Xdata.FormatTableToString / FormatTableToDxf with an element type that
// tables cannot hold (source "Tovik COM").
inline constexpr std::string_view kTableNotNative =
    "Table must contain Native Datatype only";

}  // namespace tovik

#endif  // TOVIK_FRAME_LIBRARY_ERRORS_H_
