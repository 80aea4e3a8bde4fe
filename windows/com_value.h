// Automation values between COM and the library: VARIANTs, BSTRs and
// SAFEARRAYs to Variants and back, keeping what a client relies on (array
// lower bounds and dimensions, typed element arrays, nested arrays, Missing,
// True as -1, object identity both ways).
#ifndef TOVIK_WINDOWS_COM_VALUE_H_
#define TOVIK_WINDOWS_COM_VALUE_H_

#include <oaidl.h>
#include <windows.h>

#include <string>
#include <string_view>

#include "frame/variant.h"

namespace tovik::com {

std::wstring Wide(std::string_view utf8);
std::string Narrow(const wchar_t* text, int length = -1);
// A new BSTR of `utf8`; the caller frees it.
BSTR MakeBstr(std::string_view utf8);

// The value a VARIANT holds (references followed). Objects of this
// component come back as the very objects that went out; other objects as
// stand-ins that call them late-bound.
Variant FromVariant(const VARIANT& in);

// Writes `value` into `out`, which must be empty (VariantInit'ed or
// cleared). Library objects go out as dispatch objects of this component;
// stand-ins as the objects they stand for.
void ToVariant(const Variant& value, VARIANT* out);

// Writes `value` back through a by-reference argument of any type:
// VT_BYREF | VT_VARIANT takes the value as it is, a typed reference the
// value converted to its type (an error when it cannot be converted).
HRESULT WriteBack(const Variant& value, VARIANT* by_ref);

// True when a VARIANT still holds what `before` held (same type, same
// scalar, same string, same array or object pointer).
bool SameVariant(const VARIANT& a, const VARIANT& b);

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_COM_VALUE_H_
