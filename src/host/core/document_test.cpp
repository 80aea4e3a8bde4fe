#include "host/core/document.h"

#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

using DocumentTest = HostTest;

TEST_F(DocumentTest, SystemVariablesKeepTheirHostTypes) {
  struct Case {
    const char* name;
    VarType type;
    bool array;
  } cases[] = {
      {"INSUNITS", VarType::kInteger, false}, {"USERS1", VarType::kString, false},
      {"useri5", VarType::kInteger, false},   {"USERR3", VarType::kDouble, false},
      {"CLAYER", VarType::kString, false},    {"VIEWCTR", VarType::kDouble, true},
      {"VIEWSIZE", VarType::kDouble, false},  {"SCREENSIZE", VarType::kDouble, true},
      {"VIEWTWIST", VarType::kDouble, false}, {"VIEWDIR", VarType::kDouble, true},
      {"TARGET", VarType::kDouble, true},     {"UCSORG", VarType::kDouble, true},
      {"UCSXDIR", VarType::kDouble, true},    {"UCSYDIR", VarType::kDouble, true},
      {"TILEMODE", VarType::kInteger, false}, {"CVPORT", VarType::kInteger, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Variant v = CallMethod(doc, "GetVariable", {Variant(c.name)});
    EXPECT_EQ(v.Type(), c.type);
    EXPECT_EQ(v.IsArray(), c.array);
  }
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("CLAYER")})), "0");
  EXPECT_EQ(CallMethod(doc, "GetVariable", {Variant("SCREENSIZE")}).Array().Count(), 2);
}

TEST_F(DocumentTest, SetVariableChecksNameTypeAndAccess) {
  CallMethod(doc, "SetVariable", {Variant("USERI1"), Variant(int16_t{-32768})});
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("USERI1")})), -32768);
  CallMethod(doc, "SetVariable", {Variant("users2"), Variant("mailbox")});
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("USERS2")})), "mailbox");
  struct Case {
    const char* what;
    const char* name;
    Variant value;
    int32_t number;
    const char* text;
  } cases[] = {
      // A Long is not widened to an Integer, nor an Integer to a Double.
      {"Long for a short", "USERI1", Variant(int32_t{1}), kScodeInvalidArgument,
       "Invalid argument Value in SetVariable"},
      {"Integer for a real", "USERR1", Variant(int16_t{1}), kScodeInvalidArgument,
       "Invalid argument Value in SetVariable"},
      {"read-only", "VIEWSIZE", Variant(10.0), -2145320824, "Error setting system variable"},
      {"unknown", "NOSUCHVAR", Variant(int16_t{1}), -2145320824,
       "Error setting system variable"},
      {"missing layer", "CLAYER", Variant("Nope"), kScodeKeyNotFound, "Key not found"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AutomationError r = ErrorOf([&] { CallMethod(doc, "SetVariable", {Variant(c.name), c.value}); });
    EXPECT_EQ(r.Number(), c.number);
    EXPECT_EQ(r.Description(), c.text);
  }
  AutomationError r = ErrorOf([&] { CallMethod(doc, "GetVariable", {Variant("NOSUCHVAR")}); });
  EXPECT_EQ(r.Description(), "Error getting system variable");
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("USERI1")})), -32768);
}

TEST_F(DocumentTest, ActiveSpaceFollowsTileModeAndLayouts) {
  EXPECT_EQ(CLng(GetProperty(doc, "ActiveSpace")), 1);
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("CVPORT")})), 2);
  // MSpace cannot be set while the Model tab is current.
  AutomationError r = ErrorOf([&] { LetProperty(doc, "MSpace", Variant(true)); });
  EXPECT_EQ(r.Description(), "Not applicable");
  LetProperty(doc, "ActiveSpace", Variant(int32_t{0}));
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("TILEMODE")})), 0);
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("CVPORT")})), 1);
  EXPECT_EQ(CStr(GetProperty(GetProperty(doc, "ActiveLayout").Object(), "Name")), "Layout1");
  LetProperty(doc, "MSpace", Variant(true));
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("CVPORT")})), 2);
  ObjectRef layouts = GetProperty(doc, "Layouts").Object();
  SetProperty(doc, "ActiveLayout", CallMethod(layouts, "Item", {Variant("model")}).Object());
  ExpectProperties(doc, {{"ActiveSpace", 1}, {"MSpace", false}});
}

TEST_F(DocumentTest, HandlesAreUpperHexUniqueAndNeverReused) {
  ObjectRef a = Line(0, 0, 1, 1);
  ObjectRef b = Line(0, 0, 2, 2);
  std::string ha = CStr(GetProperty(a, "Handle"));
  std::string hb = CStr(GetProperty(b, "Handle"));
  EXPECT_NE(ha, hb);
  EXPECT_EQ(ha.find_first_not_of("0123456789ABCDEF"), std::string::npos);
  EXPECT_NE(ha[0], '0');
  CallMethod(b, "Delete");
  ObjectRef c = Line(0, 0, 3, 3);
  EXPECT_GT(std::stoull(CStr(GetProperty(c, "Handle")), nullptr, 16),
            std::stoull(hb, nullptr, 16));
  // Lookup is case-insensitive hex in this drawing only.
  std::string lower = ha;
  for (char& ch : lower) ch = static_cast<char>(std::tolower(ch));
  EXPECT_TRUE(SameObject(CallMethod(doc, "HandleToObject", {Variant(lower)}).Object(), a));
  for (const std::string& bad : {hb, std::string("XYZ"), std::string("FFFFFF")}) {
    SCOPED_TRACE(bad);
    AutomationError r = ErrorOf([&] { CallMethod(doc, "HandleToObject", {Variant(bad)}); });
    EXPECT_EQ(r.Description(), "Invalid handle");
  }
  ObjectRef other = app_->AddDocument();
  AutomationError r = ErrorOf([&] { CallMethod(other, "HandleToObject", {Variant(hb)}); });
  EXPECT_EQ(r.Description(), "Invalid handle");
}

TEST_F(DocumentTest, ErasedObjectAnswersOnlyHandleAndObjectName) {
  ObjectRef line = Line(0, 0, 1, 0);
  std::string handle = CStr(GetProperty(line, "Handle"));
  CallMethod(line, "Delete");
  EXPECT_EQ(CStr(GetProperty(line, "Handle")), handle);
  EXPECT_EQ(CStr(GetProperty(line, "ObjectName")), "AcDbLine");
  for (const char* member : {"Layer", "StartPoint", "ObjectID", "Length"}) {
    SCOPED_TRACE(member);
    AutomationError r = ErrorOf([&] { GetProperty(line, member); });
    EXPECT_EQ(r.Number(), kScodeObjectErased);
    EXPECT_EQ(r.Description(), "Object was erased");
  }
  AutomationError r = ErrorOf([&] { CallMethod(line, "Delete"); });
  EXPECT_EQ(r.Number(), kScodeObjectErased);
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 0);
}

TEST_F(DocumentTest, CommandLineLogsPromptsAndHandsLispOn) {
  class Lisp : public LispEvaluator {
   public:
    void Evaluate(Document& d, std::string_view expression) override {
      seen.emplace_back(expression);
      d.SetSysVar("USERS1", Variant("done"));
    }
    std::vector<std::string> seen;
  };
  auto lisp = std::make_shared<Lisp>();
  document().set_lisp_evaluator(lisp);
  CallMethod(GetProperty(doc, "Utility").Object(), "Prompt", {Variant("Pick a point: ")});
  CallMethod(doc, "SendCommand", {Variant("(TOVIK_COM \"a (b)\") ")});
  // An expression split over two calls runs once it is complete.
  CallMethod(doc, "SendCommand", {Variant("(+ 1")});
  EXPECT_EQ(lisp->seen.size(), 1u);
  CallMethod(doc, "SendCommand", {Variant(" 2) ")});
  ASSERT_EQ(lisp->seen.size(), 2u);
  EXPECT_EQ(lisp->seen[0], "(TOVIK_COM \"a (b)\")");
  EXPECT_EQ(lisp->seen[1], "(+ 1 2)");
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("USERS1")})), "done");
  EXPECT_EQ(document().command_log().rfind("Pick a point: ", 0), 0u);
  // Unknown commands raise nothing.
  CallMethod(doc, "SendCommand", {Variant("FROBNICATE ")});
}

TEST_F(DocumentTest, ClosedDocumentRefusesMembers) {
  ObjectRef line = Line(0, 0, 1, 0);
  CallMethod(doc, "Close");
  EXPECT_EQ(CStr(GetProperty(doc, "Name")), "Drawing1.dwg");
  AutomationError r = ErrorOf([&] { GetProperty(doc, "ModelSpace"); });
  EXPECT_EQ(r.Description(), "No database");
  r = ErrorOf([&] { GetProperty(line, "Layer"); });
  EXPECT_EQ(r.Description(), "Object was erased");
}

}  // namespace
}  // namespace tovik::host
