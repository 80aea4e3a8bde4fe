// The two stored forms of a table: a single line of text and a run of
// extended-data group codes.
//
// A table is an automation array read from index 0 whose elements are plain
// values or further tables, nested to any depth. All four conversions walk
// the nesting with an explicit stack, so a table nested ten thousand deep or
// a text of a million characters costs linear time and no native stack.
//
// The forms accept different element types on purpose: Long, host layers and
// Nothing go into group codes but not into text. Reading text back turns
// every number into a Double; reading group codes back gives the values as
// the host stored them (a Boolean comes back as the Integer -1 or 0, Empty as
// the Double 0).
#ifndef TOVIK_XDATA_TABLE_FORMAT_H_
#define TOVIK_XDATA_TABLE_FORMAT_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/variant.h"

namespace tovik {

// Number of elements of a table: upper bound - lower bound + 1 of its first
// dimension; 0 for a value that is no array.
int32_t TableElementCount(const Variant& table);

// The text form of `table`: "{", the elements separated by one tab, "}".
// Empty is "EMPTY", a Boolean "TRUE" or "FALSE", a number its standard text
// (CStr), a String the text between double quotes (inner quotes, tabs and
// braces are written as they are), a nested table its own text form. A value
// that is no array gives "{}".
// Raises 2411 "Table must contain Native Datatype only" (source "Tovik COM")
// for any other element (Long, Single, Date, objects, Nothing), and 9 when a
// table whose lower bound is not 0 is read past its end.
std::string TableToText(const Variant& table);

// Parses the text form back. Numbers come back as Doubles (read with "." as
// the decimal sign whatever the caller's settings), quoted text as Strings,
// anything else between tabs as a nested table. Malformed text gives a
// shorter table, never an error, except that an element consisting of a
// single double quote raises 5 (invalid procedure call or argument).
// Characters after the closing brace count only if a tab or brace follows.
Variant TextToTable(std::string_view text);

// Appends the group-code run of `table` to `codes` (Integer type codes) and
// `values` (Variants): 1002 "{", one pair per element (a nested table as its
// own run), 1002 "}". A caller's value that is no array is replaced by a new
// array first. Pairs: Empty 1040 0.0, Integer 1070, Long 1071, Double 1040,
// host layer 1003 with its Name, Nothing 1000 "", String 1000, Boolean 1070
// -1 or 0.
// Raises 2411 "Table must contain Native Datatype only" (source "Tovik COM")
// for any other element; the arrays then keep what was appended for the
// top-level elements before the one that failed.
void TableToGroupCodes(const Variant& table, Variant& codes, Variant& values);

// TableToGroupCodes into plain vectors (appended to, as above; on a refusal
// they keep the top-level elements before the failing one).
void AppendTableRun(const Variant& table, std::vector<int16_t>& codes,
                    std::vector<Variant>& values);

// Decodes a run of group-code values (the codes are not needed) into a
// table: the values between the outermost 1002 "{" and "}", nested braces as
// nested tables. Unbalanced braces give a shorter table: a nested table still
// open at the end is dropped, closing braces beyond the outermost one are
// ignored, and a later "{" reopens the outermost table.
Variant GroupCodesToTable(const Variant& values);
Variant GroupCodesToTable(std::span<const Variant> values);

}  // namespace tovik

#endif  // TOVIK_XDATA_TABLE_FORMAT_H_
