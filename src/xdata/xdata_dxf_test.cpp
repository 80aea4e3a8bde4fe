// Variables written by the library survive saving the drawing as DXF and
// reading it back with the headless host's DXF reader.
#include <gtest/gtest.h>

#include <string>

#include "frame/conversions.h"
#include "host/dxf/dxf_file.h"
#include "tests/support/host_fixture.h"
#include "tests/support/typed_value.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

using XdataDxf = LinkedHostTest;

using test_support::Typed;

// The object's "Tovik COM" run with value types.
std::string TypedRun(const ObjectRef& object) {
  Variant args[3] = {Variant("Tovik COM"), Variant(), Variant()};
  CallMethodRef(object, "GetXData", args);
  if (!args[1].IsArray()) return "none";
  std::string out;
  for (int32_t i = 0; i < args[1].Array().Count(); ++i) {
    out += CStr(args[1].Array().At(i)) + " " + Typed(args[2].Array().At(i)) + "|";
  }
  return out;
}

TEST_F(XdataDxf, VariablesSurviveSaveAndReload) {
  // The host writes DXF for drawings it read from DXF: start from a file.
  std::string path = std::string(TOVIK_SHARED_DIR) + "/dxf/netdxf/sample_2007.dxf";
  ObjectRef doc = host::dxf::ReadDrawingFile(*app_, path);
  ObjectRef line = AddLine(doc, 0);
  std::string handle = CStr(GetProperty(line, "Handle"));
  auto xdata = Xdata::Make();
  Variant table(SafeArray::Of({Variant(int16_t{1}), Variant(2.5), Variant("ab"), Variant(true),
                               Variant(SafeArray::Of({Variant(int16_t{3}), Variant("x")}))}));
  Variant pars(SafeArray::Of({
      Variant("Comments"), Variant("first\r\nsecond"), Variant(int32_t{xMultilinesText}),
      Variant("WPMatrix"), MakePoint(1, 2, 3), Variant(int32_t{xPoint}),
      Variant("IsViewBox"), Variant(true), Variant(int32_t{xBoolean}),
      Variant("UnitID"), Variant(int32_t{70000}), Variant(int32_t{xLong}),
  }));
  xdata->SetAppXData(Variant(line), "Parameters", table, xTable, pars);
  xdata->SetAppXData(Variant(doc), "Category", Variant("steel"), xString);
  std::string written = TypedRun(line);

  auto& host_doc = dynamic_cast<host::Document&>(*doc);
  std::string dxf = host::dxf::WriteDrawing(host_doc);
  ObjectRef reloaded = host::dxf::ReadDrawingBuffer(*app_, dxf, "saved.dxf");
  ObjectRef again = CallMethod(reloaded, "HandleToObject", {Variant(handle)}).Object();

  EXPECT_EQ(TypedRun(again), written);
  EXPECT_EQ(Typed(xdata->GetAppXdata(Variant(again), "Parameters", Variant(), xTable)),
            "(I1,D2.5,Sab,I-1,(I3,Sx))");
  EXPECT_EQ(CStr(xdata->GetAppXdata(Variant(again), "Comments", Variant(), xMultilinesText)),
            "first\r\nsecond");
  EXPECT_EQ(Typed(xdata->GetAppXdata(Variant(again), "WPMatrix", Variant(), xPoint)),
            "(D1,D2,D3)");
  EXPECT_EQ(Typed(xdata->GetAppXdata(Variant(again), "IsViewBox", Variant(), xBoolean)), "BT");
  EXPECT_EQ(Typed(xdata->GetAppXdata(Variant(again), "UnitID", Variant(), xLong)), "L70000");
  EXPECT_EQ(CStr(xdata->GetAppXdata(Variant(reloaded), "Category", Variant(), xString)),
            "steel");
}

}  // namespace
}  // namespace tovik
