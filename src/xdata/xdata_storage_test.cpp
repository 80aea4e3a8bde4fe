// Xdata against drawings of the headless host: the exact runs written for
// each type, reading back, variable order, ParArray, documents, the legacy
// application name, deletion and copying.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/conversions.h"
#include "frame/library_state.h"
#include "tests/support/host_fixture.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

using XdataStorage = LinkedHostTest;

std::string Render(const Variant& v) {
  if (v.IsArray()) {
    std::string out = "(";
    for (const Variant& e : v.Array().Items()) {
      if (out.size() > 1) out += ",";
      out += Render(e);
    }
    return out + ")";
  }
  return CStr(v);
}

// The object's extended data for `app` as "code value|code value...", or
// "none".
std::string RawRun(const ObjectRef& object, std::string_view app = "Tovik COM") {
  Variant args[3] = {Variant(app), Variant(), Variant()};
  CallMethodRef(object, "GetXData", args);
  if (!args[1].IsArray()) return "none";
  std::string out;
  for (int32_t i = 0; i < args[1].Array().Count(); ++i) {
    if (i > 0) out += "|";
    out += CStr(args[1].Array().At(i)) + " " + Render(args[2].Array().At(i));
  }
  return out;
}

void SetRaw(const ObjectRef& object, const std::vector<int16_t>& codes,
            const std::vector<Variant>& values) {
  SafeArray code_array(VarType::kInteger, 0, 0);
  for (int16_t c : codes) code_array.Append(Variant(c));
  Variant args[2] = {Variant(code_array), Variant(SafeArray::OfVariants(values))};
  CallMethodRef(object, "SetXdata", args);
}

Variant Pars(std::initializer_list<Variant> items) { return Variant(SafeArray::Of(items)); }

ObjectRef LayerNamed(const ObjectRef& doc, std::string_view name) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  return CallMethod(layers, "Add", {Variant(name)}).Object();
}

TEST_F(XdataStorage, WritesTheDocumentedRunForEachTypeAndReadsItBack) {
  ObjectRef doc = ActiveDocument();
  ObjectRef handle_target = AddLine(doc, 50);
  std::string handle = CStr(GetProperty(handle_target, "Handle"));
  struct Case {
    const char* name;
    Variant value;
    int32_t type;
    std::string run;   // after "1001 Tovik COM|1070 301|", written by hand
    std::string back;  // read back with the same type
  } cases[] = {
      {"string", Variant("abc"), xString, "1000 abc", "abc"},
      {"layer name", Variant("0"), xLayerName, "1003 0", "0"},
      {"handle", Variant(handle), xHandle, "1005 " + handle, handle},
      {"point", MakePoint(1, 2, 3), xPoint, "1011 (1,2,3)", "(1,2,3)"},
      {"vector", MakePoint(0, 0, 1), XVector, "1013 (0,0,1)", "(0,0,1)"},
      {"double", Variant(2.5), xDouble, "1040 2.5", "2.5"},
      {"distance", Variant(12.0), xDistance, "1042 12", "12"},
      {"integer", Variant(int16_t{-7}), xInteger, "1070 -7", "-7"},
      {"long", Variant(int32_t{70000}), xLong, "1071 70000", "70000"},
      // The type number 1006 never reaches the drawing.
      {"boolean true", Variant(true), xBoolean, "1070 -1", "True"},
      {"boolean false", Variant(int16_t{0}), xBoolean, "1070 0", "False"},
      {"two lines", Variant("a\r\nb"), xMultilinesText, "1002 {|1000 a|1000 b|1002 }",
       "a\r\nb"},
      {"empty text", Variant(""), xMultilinesText, "1002 {|1000 |1002 }", ""},
      {"Empty text", Variant(), xMultilinesText, "1002 {|1000 |1002 }", ""},
      {"table", Pars({Variant(int16_t{1}), Pars({Variant("x")}), Variant(true)}), xTable,
       "1002 {|1070 1|1002 {|1000 x|1002 }|1070 -1|1002 }", "(1,(x),-1)"},
      // A type outside the table: the ID alone.
      {"unknown type", Variant(9.0), 1041, "", ""},
  };
  auto xdata = Xdata::Make();
  for (Case& c : cases) {
    SCOPED_TRACE(c.name);
    ObjectRef line = AddLine(doc, 0);
    xdata->SetAppXData(Variant(line), "Station", c.value, c.type);
    std::string expected = "1001 Tovik COM|1070 301";
    if (!c.run.empty()) expected += "|" + c.run;
    EXPECT_EQ(RawRun(line), expected);
    EXPECT_EQ(Render(xdata->GetAppXdata(Variant(line), "station", Variant(), c.type)), c.back);
  }
}

TEST_F(XdataStorage, RewrittenVariableMovesToTheEnd) {
  ObjectRef line = AddLine(ActiveDocument(), 0);
  auto xdata = Xdata::Make();
  xdata->SetAppXData(Variant(line), "Top", Variant(1.0), xDouble);
  xdata->SetAppXData(Variant(line), "Bottom", Variant(2.0), xDouble);
  xdata->SetAppXData(Variant(line), "Mass", Variant(3.0), xDouble);
  xdata->SetAppXData(Variant(line), "TOP", Variant(4.0), xDouble);
  EXPECT_EQ(RawRun(line),
            "1001 Tovik COM|1070 308|1040 2|1070 108|1040 3|1070 307|1040 4");
}

TEST_F(XdataStorage, ParArrayTriplesGoIntoOneSetXdataCall) {
  ObjectRef doc = ActiveDocument();
  ObjectRef line = AddLine(doc, 0);
  auto xdata = Xdata::Make();
  xdata->SetAppXData(Variant(line), "Top", Variant(1.0), xDouble);
  Variant pars = Pars({Variant("Mass"), Variant(5.0), Variant(int32_t{xDouble}),
                       Variant("Comments"), Variant("hi"), Variant(int32_t{xString})});
  xdata->SetAppXData(Variant(line), "Bottom", Variant(2.0), xDouble, pars);
  EXPECT_EQ(RawRun(line),
            "1001 Tovik COM|1070 307|1040 1|1070 308|1040 2|1070 108|1040 5|1070 14|1000 hi");
  // One undo step takes back the whole second write: it was one change.
  CallMethod(doc, "SendCommand", {Variant("Undo 1 ")});
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 307|1040 1");
}

TEST_F(XdataStorage, UnknownNamesInParArrayAndVarname) {
  ObjectRef line = AddLine(ActiveDocument(), 0);
  auto xdata = Xdata::Make();
  // The first triple's unknown name is written with ID 0; the lookup error
  // stays pending and the triples after it are ignored.
  Variant pars = Pars({Variant("NoSuchVar"), Variant("v"), Variant(int32_t{xString}),
                       Variant("Mass"), Variant(5.0), Variant(int32_t{xDouble})});
  xdata->SetAppXData(Variant(line), "Top", Variant(1.0), xDouble, pars);
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 307|1040 1|1070 0|1000 v");
  // An unknown Varname raises and writes nothing.
  ExpectError([&] { xdata->SetAppXData(Variant(line), "Topp", Variant(2.0), xDouble); }, 2411,
              "SetXdata fails. Variable names Topp not found", "Tovik COM");
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 307|1040 1|1070 0|1000 v");
}

TEST_F(XdataStorage, MissingVariablesKeepTheCallersDefaults) {
  ObjectRef line = AddLine(ActiveDocument(), 0);
  auto xdata = Xdata::Make();
  xdata->SetAppXData(Variant(line), "Mass", Variant(5.0), xDouble);
  xdata->SetAppXData(Variant(line), "Comments", Variant("x\r\ny"), xMultilinesText);
  Variant start("default");
  Variant type(int32_t{xString});
  Variant pars = Pars({Variant("mass"), Variant(-1.0), Variant(int32_t{xDouble}),
                       Variant("Top"), Variant(-2.0), Variant(int32_t{xDouble}),
                       Variant("Comments"), Variant(), Variant(int32_t{xMultilinesText})});
  xdata->GetAppXdata(Variant(line), "Story", start, type, pars);
  EXPECT_EQ(Render(start), "default");
  EXPECT_EQ(Render(pars), "(mass,5,1040,Top,-2,1040,Comments,x\r\ny,1008)");
  // Datatype holds the type of the last triple read.
  EXPECT_EQ(TypeName(type), "Long");
  EXPECT_EQ(CLng(type), xMultilinesText);
}

TEST_F(XdataStorage, DocumentVariablesLiveOnLayerZero) {
  ObjectRef doc = ActiveDocument();
  auto xdata = Xdata::Make();
  xdata->SetAppXData(Variant(doc), "Category", Variant("steel"), xString);
  ObjectRef layer0 = CallMethod(GetProperty(doc, "Layers").Object(), "Item", {Variant("0")})
                         .Object();
  EXPECT_EQ(RawRun(layer0), "1001 Tovik COM|1070 8|1000 steel");
  EXPECT_EQ(CStr(xdata->GetAppXdata(Variant(doc), "Category", Variant(), xString)), "steel");
  xdata->RemoveXdata(Variant(doc), "Tovik COM");
  EXPECT_EQ(RawRun(layer0), "none");
}

TEST_F(XdataStorage, LegacyDataIsMovedWhenBothNamesAreRegistered) {
  ObjectRef doc = ActiveDocument();
  ObjectRef apps = GetProperty(doc, "RegisteredApplications").Object();
  CallMethod(apps, "Add", {Variant("Pelmar")});
  CallMethod(apps, "Add", {Variant("Tovik COM")});
  ObjectRef line = AddLine(doc, 0);
  SetRaw(line, {1001, 1070, 1000}, {Variant("Pelmar"), Variant(int16_t{301}), Variant("old")});
  auto xdata = Xdata::Make();
  EXPECT_EQ(CStr(xdata->GetAppXdata(Variant(line), "Station", Variant(), xString)), "old");
  EXPECT_EQ(RawRun(line, "Pelmar"), "none");
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 301|1000 old");
}

TEST_F(XdataStorage, LegacyApplicationAloneIsRenamed) {
  ObjectRef doc = ActiveDocument();
  ObjectRef line = AddLine(doc, 0);
  SetRaw(line, {1001, 1070, 1040}, {Variant("Pelmar"), Variant(int16_t{108}), Variant(9.5)});
  auto xdata = Xdata::Make();
  EXPECT_EQ(CDbl(xdata->GetAppXdata(Variant(line), "Mass", Variant(), xDouble)), 9.5);
  ObjectRef apps = GetProperty(doc, "RegisteredApplications").Object();
  ExpectError([&] { CallMethod(apps, "Item", {Variant("Pelmar")}); }, -2145386476,
              "Key not found", "AutoCAD.Application");
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 108|1040 9.5");
}

TEST_F(XdataStorage, DeleteRemovesNamesAndTheLastOneRemovesTheData) {
  ObjectRef line = AddLine(ActiveDocument(), 0);
  auto xdata = Xdata::Make();
  Variant pars = Pars({Variant("Mass"), Variant(5.0), Variant(int32_t{xDouble}),
                       Variant("Top"), Variant(1.0), Variant(int32_t{xDouble})});
  xdata->SetAppXData(Variant(line), "Bottom", Variant(2.0), xDouble, pars);
  Variant names = Pars({Variant("TOP"), Variant("NotAVariable")});
  xdata->DeleteAppXdata(Variant(line), "bottom", names);
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 108|1040 5");
  xdata->DeleteAppXdata(Variant(line), "Mass");
  EXPECT_EQ(RawRun(line), "none");
}

TEST_F(XdataStorage, InheriteAllXdataCopiesTovikStudioByDefault) {
  ObjectRef doc = ActiveDocument();
  ObjectRef source = AddLine(doc, 0);
  ObjectRef plain_copy = AddLine(doc, 2);
  ObjectRef full_copy = AddLine(doc, 4);
  SetRaw(source, {1001, 1000}, {Variant("Tovik Studio"), Variant("studio")});
  SetRaw(source, {1001, 1000}, {Variant("Other"), Variant("other")});
  Xdata::Make()->SetAppXData(Variant(source), "Top", Variant(1.0), xDouble);
  auto xdata = Xdata::Make();
  xdata->InheriteAllXdata(source, plain_copy, false);
  EXPECT_EQ(RawRun(plain_copy, "Tovik Studio"), "1001 Tovik Studio|1000 studio");
  EXPECT_EQ(RawRun(plain_copy), "none");  // not the variables' application
  EXPECT_EQ(RawRun(plain_copy, "Other"), "none");
  xdata->InheriteAllXdata(source, full_copy, true);
  EXPECT_EQ(RawRun(full_copy, "Other"), "1001 Other|1000 other");
  EXPECT_EQ(RawRun(full_copy), "1001 Tovik COM|1070 307|1040 1");
}

TEST_F(XdataStorage, TableWithALayerComesBackWithItsName) {
  ObjectRef doc = ActiveDocument();
  ObjectRef layer = LayerNamed(doc, "Walls");
  ObjectRef line = AddLine(doc, 0);
  auto xdata = Xdata::Make();
  Variant table = Pars({Variant(layer), Variant(int32_t{5}), Variant::Nothing()});
  xdata->SetAppXData(Variant(line), "Parameters", table, xTable);
  EXPECT_EQ(RawRun(line),
            "1001 Tovik COM|1070 103|1002 {|1003 Walls|1071 5|1000 |1002 }");
  Variant back = xdata->GetAppXdata(Variant(line), "Parameters", Variant(), xTable);
  EXPECT_EQ(TypeName(back.Array().At(0)), "String");
  EXPECT_EQ(Render(back), "(Walls,5,)");
}

TEST_F(XdataStorage, UnknownTypeTakesTheNextElementAsBodyOnRead) {
  ObjectRef line = AddLine(ActiveDocument(), 0);
  auto xdata = Xdata::Make();
  xdata->SetAppXData(Variant(line), "Top", Variant(1.0), 1041);
  xdata->SetAppXData(Variant(line), "Mass", Variant(5.0), xDouble);
  EXPECT_EQ(RawRun(line), "1001 Tovik COM|1070 307|1070 108|1040 5");
  // Top's body is now the 1070 108 that was Mass's ID; Mass is lost.
  EXPECT_EQ(Render(xdata->GetAppXdata(Variant(line), "Top", Variant(), xInteger)), "108");
  EXPECT_EQ(Render(xdata->GetAppXdata(Variant(line), "Mass", Variant("gone"), xDouble)),
            "gone");
}

TEST_F(XdataStorage, LockedLayerRefusalReachesTheCaller) {
  ObjectRef doc = ActiveDocument();
  ObjectRef layer = LayerNamed(doc, "Locked");
  ObjectRef line = AddLine(doc, 0);
  LetProperty(line, "Layer", Variant("Locked"));
  LetProperty(layer, "Lock", Variant(true));
  auto xdata = Xdata::Make();
  bool raised = false;
  try {
    xdata->SetAppXData(Variant(line), "Top", Variant(1.0), xDouble);
  } catch (const AutomationError& e) {
    raised = true;
    EXPECT_NE(e.Number(), 2411);  // the host's own error, passed through
  }
  EXPECT_TRUE(raised);
  EXPECT_EQ(RawRun(line), "none");
}

TEST_F(XdataStorage, MembersByNameWriteBackTheirArguments) {
  ObjectRef line = AddLine(ActiveDocument(), 0);
  ObjectRef xdata = GlobalInstance<Xdata>();
  CallMethod(xdata, "SetAppXData",
             {Variant(line), Variant("UnitID"), Variant(int16_t{3}), Variant(int32_t{xInteger})});
  Variant args[4] = {Variant(line), Variant("UnitID"), Variant(), Variant(int32_t{xInteger})};
  CallMethodRef(xdata, "GetAppXdata", args);
  EXPECT_EQ(CInt(args[2]), 3);
  EXPECT_EQ(CStr(CallMethod(xdata, "XdataVarname", {Variant(int16_t{38})})), "UnitID");
  EXPECT_EQ(CInt(CallMethod(xdata, "XdataVarID", {Variant(int16_t{13})})), 73);
  ExpectError([&] { CallMethod(xdata, "XdataVarname", {Variant(int16_t{39})}); }, 9,
              "Subscript out of range", "Tovik_AutoCad_Pro");
  Variant table;
  Variant dxf_args[2] = {table, Pars({Variant("{"), Variant(int16_t{4}), Variant("}")})};
  CallMethodRef(xdata, "FormatDxfToTable", dxf_args);
  EXPECT_EQ(Render(dxf_args[0]), "(4)");
}

}  // namespace
}  // namespace tovik
