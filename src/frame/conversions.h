// The runtime's conversion functions on Variants, exact at their edges:
// TypeName, CStr, CDbl, CSng, CInt, CLng, CBool, CByte, IsNumeric.
//
// Rules shared by all of them: Empty converts to 0 / "" / False; Null raises
// 94 (invalid use of Null); an object converts through its default member
// (Value, Item...), and Nothing raises 91; an array raises 13; a string
// converts when it reads as a number (with "." as the decimal separator and
// "True"/"False" for Booleans) and raises 13 otherwise; integer conversions
// round half to even and raise 6 on overflow.
#ifndef TOVIK_FRAME_CONVERSIONS_H_
#define TOVIK_FRAME_CONVERSIONS_H_

#include <cstdint>
#include <string>

#include "frame/variant.h"

namespace tovik {

// TypeName(): "Integer", "Long", "Double", "String", "Boolean", "Empty",
// "Null", "Nothing", "Error", an object's own type name, or an element type
// name followed by "()" for arrays ("Double()", "Variant()", "Object()").
std::string TypeName(const Variant& value);

// The value an object stands for in an expression: its default member read
// with no arguments. Non-objects are returned as they are. Nothing raises 91;
// an object without a default member raises 438.
Variant ValueOf(const Variant& value);

std::string CStr(const Variant& value);
double CDbl(const Variant& value);
float CSng(const Variant& value);
int16_t CInt(const Variant& value);
int32_t CLng(const Variant& value);
int64_t CLngLng(const Variant& value);
bool CBool(const Variant& value);
uint8_t CByte(const Variant& value);

// Converts to the given type (the target of a typed array element or a
// typed variable); kVariant returns the value unchanged.
Variant ConvertTo(const Variant& value, VarType type);

// IsNumeric(): numbers, Booleans, Empty and strings that read as a number.
bool IsNumeric(const Variant& value);

// Numeric value of a number held directly (Boolean = -1/0); requires
// value.IsNumber().
double NumberOf(const Variant& value);

}  // namespace tovik

#endif  // TOVIK_FRAME_CONVERSIONS_H_
