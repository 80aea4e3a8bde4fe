// The mailbox to the host's lisp, end to end: the library's members, the
// headless host's lisp running the library's own lisp side.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>

#include "frame/conversions.h"
#include "frame/library_state.h"
#include "frame/runtime_text.h"
#include "geometry/vector_service.h"
#include "host/entities/entity.h"
#include "host/selection/selection_set.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

using geometry::Vec3;

class LispBridge : public LinkedHostTest {
 protected:
  void SetUp() override {
    LinkedHostTest::SetUp();
    folder = ::testing::TempDir() + "/tovik_commons";
    std::filesystem::create_directories(folder);
    Library().commons_folder = folder;
  }
  Variant Var(const char* name) { return CallMethod(doc, "GetVariable", {Variant(name)}); }
  std::string folder;
};

TEST_F(LispBridge, RunLispDefinesAFunctionAndRemovesItsScratchFile) {
  AcadSpace::VL_RunLisp("(defun tovik-test-double (x) (* 2 x))");
  EXPECT_EQ(CStr(Var("USERS2")), folder + "/RunLisp.lsp");
  EXPECT_EQ(CStr(Var("USERS2")).find('\\'), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder + "/RunLisp.lsp"));
  CallMethod(doc, "SendCommand", {Variant("(setvar \"USERI2\" (tovik-test-double 21)) ")});
  EXPECT_EQ(CLng(Var("USERI2")), 42);
  // A folder that does not exist: the writer's error, nothing sent.
  Library().commons_folder = folder + "/missing";
  std::string before = document().command_log();
  EXPECT_THROW(AcadSpace::VL_RunLisp("(princ)"), AutomationError);
  EXPECT_EQ(document().command_log(), before);
}

TEST_F(LispBridge, EntitiesColoursAndTheCursorComeBackThroughTheVariables) {
  ObjectRef first = Line(0, 0, 1, 0);
  ObjectRef last = Line(0, 1, 1, 1);
  EXPECT_TRUE(SameObject(AcadSpace::VL_EntNext(first), last));
  EXPECT_EQ(AcadSpace::VL_EntNext(last), nullptr);
  ObjectRef added = Line(5, 5, 6, 6);
  EXPECT_TRUE(SameObject(AcadSpace::VL_EntLast(), added));

  document().QueueInput(host::UserInput::Number(5));
  EXPECT_EQ(AcadSpace::VL_SelectColor(), 5);
  document().QueueInput(host::UserInput::Point({1.5, -2, 3}));
  EXPECT_VEC_CLOSE(VectorOf(AcadSpace::VL_CursorPoint()), (Vec3{1.5, -2, 3}));

  document().pickfirst()->Add(std::dynamic_pointer_cast<host::Entity>(first));
  AcadSpace::VL_ClearSSSetFirst();
  EXPECT_EQ(CLng(GetProperty(GetProperty(doc, "PickfirstSelectionSet").Object(), "Count")), 0);
  // Every request typed the same command, and the lisp side printed nothing.
  std::string log = document().command_log(), trigger = "(TOVIK_COM) ";
  size_t count = 0;
  for (size_t at = log.find(trigger); at != std::string::npos; at = log.find(trigger, at + 1)) ++count;
  EXPECT_EQ(count * trigger.size(), log.size());
  EXPECT_EQ(count, 6u);
}

TEST_F(LispBridge, TextBoxesComeBackAsWorldCorners) {
  ObjectRef text = CallMethod(ms, "AddText", {Variant("Box"), Pt(10, 20), Variant(2.0)}).Object();
  LetProperty(text, "Rotation", Variant(M_PI / 2));
  std::array<Variant, 2> box;
  CallMethodRef(text, "GetBoundingBox", box);
  Vec3 low = VectorOf(box[0]), high = VectorOf(box[1]);
  CallMethod(doc, "SetVariable", {Variant("USERS2"), GetProperty(text, "Handle")});
  CallMethod(doc, "SetVariable", {Variant("USERS1"), Variant("TextBox")});
  CallMethod(doc, "SendCommand", {Variant("(TOVIK_COM) ")});
  // Turned a quarter: the text's lower left is the box's lower right.
  std::vector<std::string> corners = Split(CStr(Var("USERS3")), " ");
  ASSERT_EQ(corners.size(), 4u);
  std::vector<std::string> first = Split(corners[0], ","), third = Split(corners[2], ",");
  EXPECT_NEAR(std::stod(first[0]), high.x, 1e-6);
  EXPECT_NEAR(std::stod(first[1]), low.y, 1e-6);
  EXPECT_NEAR(std::stod(third[0]), low.x, 1e-6);
  EXPECT_NEAR(std::stod(third[1]), high.y, 1e-6);
}

TEST_F(LispBridge, WithoutTheLispSideStaleAnswersComeBackUnchecked) {
  document().set_lisp_evaluator(nullptr);
  CallMethod(doc, "SetVariable", {Variant("USERI1"), Variant(int16_t{9})});
  ObjectRef line = Line(0, 0, 1, 0);
  CallMethod(doc, "SetVariable", {Variant("USERS2"), GetProperty(line, "Handle")});
  EXPECT_EQ(AcadSpace::VL_SelectColor(), 9);
  EXPECT_TRUE(SameObject(AcadSpace::VL_EntLast(), line));
  CallMethod(line, "Delete");
  EXPECT_THROW(AcadSpace::VL_EntLast(), AutomationError);  // the stale handle names nothing now
}

}  // namespace
}  // namespace tovik
