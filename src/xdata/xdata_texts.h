// Fixed texts of the extended-data subsystem: the registered application
// names and the descriptions and sources of the errors it raises. Drawings
// and callers match these texts exactly, so they are kept verbatim,
// misspellings included ("Dupplicate", "Variable names").
#ifndef TOVIK_XDATA_XDATA_TEXTS_H_
#define TOVIK_XDATA_XDATA_TEXTS_H_

#include <string_view>

namespace tovik::xdata_texts {

// The registered application under which the library keeps its variables;
// also the source of the errors the variable and table code raises.
inline constexpr std::string_view kAppName = "Tovik COM";
// The application name earlier versions of the library stored under; data
// found under it is moved to kAppName on the first read.
inline constexpr std::string_view kLegacyAppName = "Pelmar";
// The application InheriteAllXdata copies by default, and the source of the
// variable-table validation error.
inline constexpr std::string_view kStudioAppName = "Tovik Studio";

// Raised by the table encoders for an element of a type they refuse.
inline constexpr std::string_view kNativeDatatypeOnly =
    "Table must contain Native Datatype only";

// Variable-table validation: the description opens with kInvalidTable and
// lists, one per line, the duplicate names, duplicate IDs and zero IDs.
inline constexpr std::string_view kInvalidTable = "Invalid VariableTable";
inline constexpr std::string_view kDuplicateNames = "Dupplicate Varname: ";
inline constexpr std::string_view kDuplicateIds = "Dupplicated VarID: ";
inline constexpr std::string_view kInvalidIds = "Invalid VarID: ";

// Unknown variable name: kUnknownNameHead + name + kNotFoundTail.
inline constexpr std::string_view kUnknownNameHead =
    "SetXdata fails. Variable names ";
// Unknown ID: kUnknownIdHead + ID (no blank before it) + kNotFoundTail.
inline constexpr std::string_view kUnknownIdHead = "SetXdata fails. VarID";
inline constexpr std::string_view kNotFoundTail = " not found";

}  // namespace tovik::xdata_texts

#endif  // TOVIK_XDATA_XDATA_TEXTS_H_
