// Test helper: a value written with its type, so that a test compares
// types as well as values.
#ifndef TOVIK_TESTS_SUPPORT_TYPED_VALUE_H_
#define TOVIK_TESTS_SUPPORT_TYPED_VALUE_H_

#include <string>

#include "frame/conversions.h"
#include "frame/variant.h"

namespace tovik::test_support {

// Double 1 -> "D1", Integer -> "I…", Long -> "L…", String -> "S…",
// Boolean -> "BT"/"BF", Empty -> "E", arrays as "(…,…)".
inline std::string Typed(const Variant& v) {
  if (v.IsArray()) {
    std::string out = "(";
    for (const Variant& e : v.Array().Items()) {
      if (out.size() > 1) out += ",";
      out += Typed(e);
    }
    return out + ")";
  }
  switch (v.Type()) {
    case VarType::kDouble: return "D" + CStr(v);
    case VarType::kInteger: return "I" + CStr(v);
    case VarType::kLong: return "L" + CStr(v);
    case VarType::kString: return "S" + v.RawString();
    case VarType::kBoolean: return v.RawBool() ? "BT" : "BF";
    case VarType::kEmpty: return "E";
    default: return "?" + TypeName(v);
  }
}

}  // namespace tovik::test_support

#endif  // TOVIK_TESTS_SUPPORT_TYPED_VALUE_H_
