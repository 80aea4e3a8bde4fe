// Checks several properties of one object in one statement:
//
//   ExpectProperties(line, {{"Layer", "WALLS"}, {"Lineweight", 30}, {"Visible", true}});
//
// Each expected value is compared in its own type: text with CStr, a
// Boolean with CBool, a Double exactly (to four ulps) with CDbl, a whole
// number with CLngLng.
#ifndef TOVIK_TESTS_SUPPORT_PROPERTIES_H_
#define TOVIK_TESTS_SUPPORT_PROPERTIES_H_

#include <gtest/gtest.h>

#include <initializer_list>

#include "frame/conversions.h"
#include "frame/dispatch.h"

namespace tovik {

struct PropertyValue {
  const char* name;
  Variant expected;
};

inline void ExpectProperties(const ObjectRef& obj, std::initializer_list<PropertyValue> properties) {
  for (const PropertyValue& p : properties) {
    SCOPED_TRACE(p.name);
    const Variant actual = GetProperty(obj, p.name);
    switch (p.expected.Type()) {
      case VarType::kString: EXPECT_EQ(CStr(actual), CStr(p.expected)); break;
      case VarType::kBoolean: EXPECT_EQ(CBool(actual), CBool(p.expected)); break;
      case VarType::kDouble: EXPECT_DOUBLE_EQ(CDbl(actual), CDbl(p.expected)); break;
      default: EXPECT_EQ(CLngLng(actual), CLngLng(p.expected));
    }
  }
}

}  // namespace tovik

#endif  // TOVIK_TESTS_SUPPORT_PROPERTIES_H_
