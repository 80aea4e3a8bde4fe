#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "typelib_idl.h"

namespace tovik::com {
namespace {

// The servers are built from the committed IDL: a member added, removed or
// moved in a table must be seen there (regenerate with tovik_typelib_idl).
TEST(TypeLibrarySource, CommittedIdlIsWhatTheMemberTablesGive) {
  std::ifstream in(TOVIK_SOURCE_DIR "/windows/Tovik_AutoCad_Pro.idl", std::ios::binary);
  ASSERT_TRUE(in) << "windows/Tovik_AutoCad_Pro.idl is missing";
  std::stringstream committed;
  committed << in.rdbuf();
  EXPECT_TRUE(committed.str() == TypeLibraryIdl())
      << "regenerate: build/default/windows/tovik_typelib_idl windows/Tovik_AutoCad_Pro.idl";
}

// Slot order is the table order: DynamicSS starts with Name (get and let)
// and Item, which clients bind to by DISPID.
TEST(TypeLibrarySource, KeepsSlotOrderAndCreationRules) {
  std::string idl = TypeLibraryIdl();
  size_t dss = idl.find("dispinterface _DynamicSS {");
  ASSERT_NE(dss, std::string::npos);
  EXPECT_NE(idl.find("[id(1), propget] VARIANT Name();", dss), std::string::npos);
  EXPECT_NE(idl.find("[id(1), propput] void Name([in] VARIANT rhs);", dss), std::string::npos);
  EXPECT_NE(idl.find("[id(2), propget] VARIANT Item([in, out] VARIANT* a1);", dss), std::string::npos);
  EXPECT_NE(idl.find("appobject]\n    coclass AcadSpace"), std::string::npos);
  EXPECT_NE(idl.find("noncreatable]\n    coclass SSDimensions"), std::string::npos);
  EXPECT_NE(idl.find("acModelSpace = 1"), std::string::npos);
  EXPECT_NE(idl.find("xLong = 1071"), std::string::npos);
}

}  // namespace
}  // namespace tovik::com
