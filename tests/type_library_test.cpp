// The type library: creation by ProgID, the creation rules of the ten
// classes, the implicit instances of the global classes, and the library's
// own error (2411) with its fixed texts and sources.
#include "type_library.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "frame/autocad_enum.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/library_errors.h"
#include "frame/library_state.h"
#include "frame/toolbox_data.h"
#include "frame/zactivex_com.h"

namespace tovik {
namespace {

void ExpectCannotCreate(const std::function<void()>& statement) {
  try {
    statement();
    ADD_FAILURE() << "no error";
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.Number(), 429);
    EXPECT_EQ(e.Description(), "ActiveX component can't create object");
  }
}

TEST(TypeLibrary, CreateObjectMakesCreatableClassesAndRefusesTheRest) {
  ResetLibraryState();
  for (const ClassInfo& info : Classes()) {
    SCOPED_TRACE(std::string(info.name));
    std::string prog_id = "Tovik_AutoCad_Pro." + std::string(info.name);
    if (info.instancing == Instancing::kPublicNotCreatable) {
      ExpectCannotCreate([&] { CreateObject(prog_id); });
      continue;
    }
    if (!info.make) continue;  // a class whose code is not in this build
    ObjectRef made = CreateObject(prog_id);
    EXPECT_EQ(TypeName(Variant(made)), info.name);
    // Each call makes a new instance.
    EXPECT_NE(CreateObject(prog_id), made);
  }
  // ProgIDs ignore case; other libraries and unknown classes are refused.
  EXPECT_EQ(TypeName(Variant(CreateObject("tovik_autocad_pro.dynamicss"))), "DynamicSS");
  ExpectCannotCreate([] { CreateObject("Scripting.Dictionary"); });
  ExpectCannotCreate([] { CreateObject("Tovik_AutoCad_Pro.NoSuchClass"); });
  ExpectCannotCreate([] { CreateObject("DynamicSS"); });
}

TEST(TypeLibrary, FactoryOnlyClassesStillAnswerTheirTypeNames) {
  for (const char* name : {"SSDimensions", "SSAnimation", "DwgPicture"}) {
    SCOPED_TRACE(name);
    const ClassInfo* info = FindClass(name);
    ASSERT_NE(info, nullptr);
    EXPECT_FALSE(info->factory.empty());
    EXPECT_EQ(TypeName(Variant(info->make())), name);
  }
}

TEST(TypeLibrary, GlobalClassesHaveOneImplicitInstanceUntilReset) {
  ResetLibraryState();
  ObjectRef space = GlobalObject("AcadSpace");
  EXPECT_EQ(GlobalObject("acadspace"), space);
  EXPECT_EQ(TypeName(Variant(GlobalObject("AutoCAD_Enum"))), "AutoCAD_Enum");
  EXPECT_EQ(GlobalObject("ZActiveXCOM"), GlobalInstance<ZActiveXCOM>());
  ExpectCannotCreate([] { GlobalObject("DynamicSS"); });
  ResetLibraryState();
  EXPECT_NE(GlobalObject("AcadSpace"), space);
  ResetLibraryState();
}

}  // namespace
}  // namespace tovik
