#include "host/input/utility.h"

#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

using InputTest = HostTest;

TEST_F(InputTest, GetPointAndDistanceAnswerFromTheQueue) {
  ObjectRef util = GetProperty(doc, "Utility").Object();
  EXPECT_EQ(TypeName(Variant(util)), "IAcadUtility");
  document().QueueInput(UserInput::Point({1, 2, 3}));
  document().QueueInput(UserInput::Distance(4.5));
  document().QueueInput(UserInput::Keyword("Exit"));
  document().QueueInput(UserInput::Enter());
  document().QueueInput(UserInput::Cancel());
  EXPECT_EQ(CallMethod(util, "GetPoint", {Variant::Missing(), Variant("Point: ")}).Array().ToDoubles(),
            (std::vector<double>{1, 2, 3}));
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(util, "GetDistance")), 4.5);
  AutomationError r = ErrorOf([&] { CallMethod(util, "GetPoint"); });
  EXPECT_EQ(r.Number(), kScodeUserInputKeyword);
  EXPECT_EQ(r.Description(), "User input is a keyword");
  EXPECT_EQ(CStr(CallMethod(util, "GetInput")), "Exit");
  r = ErrorOf([&] { CallMethod(util, "GetDistance"); });
  EXPECT_EQ(r.Number(), kScodeUserInputKeyword);
  EXPECT_EQ(CStr(CallMethod(util, "GetInput")), "");
  r = ErrorOf([&] { CallMethod(util, "GetPoint"); });
  EXPECT_EQ(r.Number(), kScodeCancelled);
  // Nothing queued: as if the user pressed Escape.
  r = ErrorOf([&] { CallMethod(util, "GetPoint"); });
  EXPECT_EQ(r.Number(), kScodeCancelled);
  EXPECT_NE(document().command_log().find("Point: "), std::string::npos);
}

TEST_F(InputTest, GetSubEntityReportsNestingOnlyForNestedPicks) {
  ObjectRef util = GetProperty(doc, "Utility").Object();
  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  ObjectRef block = CallMethod(blocks, "Add", {Pt(0, 0), Variant("B")}).Object();
  ObjectRef inner = CallMethod(block, "AddLine", {Pt(0, 0), Pt(1, 0)}).Object();
  ObjectRef ref = CallMethod(ms, "InsertBlock", {Pt(10, 20), Variant("B"), Variant(2.0),
                                                 Variant(2.0), Variant(1.0)}).Object();
  ObjectRef plain = Line(0, 0, 5, 5);
  auto as_entity = [](const ObjectRef& o) { return std::dynamic_pointer_cast<Entity>(o); };
  document().QueueInput(UserInput::Pick(as_entity(plain), {1, 1, 0}));
  document().QueueInput(UserInput::Pick(as_entity(inner), {11, 20, 0}, {as_entity(ref)}));
  std::vector<Variant> outs(4);
  CallMethodRef(util, "GetSubEntity", outs);
  EXPECT_TRUE(SameObject(outs[0].RawObject(), plain));
  EXPECT_TRUE(outs[2].IsEmpty());
  EXPECT_TRUE(outs[3].IsEmpty());
  outs.assign(4, Variant());
  CallMethodRef(util, "GetSubEntity", outs);
  EXPECT_TRUE(SameObject(outs[0].RawObject(), inner));
  const SafeArray& m = outs[2].Array();
  EXPECT_EQ(m.Dims(), 2);
  EXPECT_DOUBLE_EQ(CDbl(m.At({0, 0})), 2);   // scale
  EXPECT_DOUBLE_EQ(CDbl(m.At({0, 3})), 10);  // translation x
  EXPECT_DOUBLE_EQ(CDbl(m.At({1, 3})), 20);
  EXPECT_EQ(CLngLng(outs[3].Array().Items()[0]), CLngLng(GetProperty(ref, "ObjectID")));
  AutomationError r = ErrorOf([&] { CallMethodRef(util, "GetSubEntity", outs); });
  EXPECT_EQ(r.Number(), kScodeCancelled);
}

TEST_F(InputTest, SelectOnScreenTakesQueuedPicks) {
  ObjectRef sets = GetProperty(doc, "SelectionSets").Object();
  ObjectRef set = CallMethod(sets, "Add", {Variant("S")}).Object();
  ObjectRef a = Line(0, 0, 1, 1), b = Line(0, 0, 2, 2);
  document().QueueInput(UserInput::Pick(std::dynamic_pointer_cast<Entity>(a), {}));
  document().QueueInput(UserInput::Pick(std::dynamic_pointer_cast<Entity>(b), {}));
  document().QueueInput(UserInput::Enter());
  CallMethod(set, "SelectOnScreen");
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 2);
  CallMethod(set, "SelectOnScreen");  // a cancel adds nothing
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 2);
  ObjectRef pickfirst = GetProperty(doc, "PickfirstSelectionSet").Object();
  EXPECT_EQ(CLng(GetProperty(pickfirst, "Count")), 0);
  EXPECT_EQ(CLng(GetProperty(sets, "Count")), 1);  // not in SelectionSets
}

}  // namespace
}  // namespace tovik::host
