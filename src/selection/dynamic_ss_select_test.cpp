// DynamicSS filled by the host's selection modes on real geometry, handed
// back to the host, and edited in bulk.
#include <gtest/gtest.h>

#include "frame/conversions.h"
#include "host/entities/entity.h"
#include "host/selection/selection_set.h"
#include "host/tables/block.h"
#include "selection/dynamic_ss.h"
#include "tests/support/errors.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

Variant List(std::initializer_list<Variant> items) { return Variant(SafeArray::Of(items)); }
Variant Doubles(std::initializer_list<double> values) { return Variant(SafeArray::OfDoubles(values)); }
Variant Codes0() { return Codes({0}); }

class SetSelection : public LinkedHostTest {
 protected:
  void SetUp() override {
    LinkedHostTest::SetUp();
    set = DynamicSS::Create();
    inside = Line(0, 0, 4, 0);  // inside the window (-1,-1)..(5,5)
    across = Line(3, 3, 10, 3);  // crosses its right edge
    far = CallMethod(ms, "AddCircle", {Pt(20, 20), Variant(1.0)}).Object();
  }
  std::set<std::string> Members() { return MemberHandles(set); }
  std::shared_ptr<DynamicSS> set;
  ObjectRef inside, across, far;
};

TEST_F(SetSelection, EachModeReplacesTheSetWithWhatItSelects) {
  struct Case {
    const char* what;
    std::function<void()> select;
    std::set<std::string> expected;
  } cases[] = {
      {"window", [&] { CallMethod(set, "SelectW", {Variant(0), Pt(-1, -1), Pt(5, 5)}); },
       HandlesOf({inside})},
      {"crossing", [&] { CallMethod(set, "SelectW", {Variant(1), Pt(-1, -1), Pt(5, 5)}); },
       HandlesOf({inside, across})},
      {"all, filtered to circles",
       [&] { CallMethod(set, "SelectW", {Variant(5), Variant::Missing(), Variant::Missing(), Codes0(),
                                         List({Variant("CIRCLE")})}); },
       HandlesOf({far})},
      {"fence", [&] { CallMethod(set, "SelectByPolygon", {Variant(2), Doubles({5, -1, 0, 5, 5, 0})}); },
       HandlesOf({across})},
      {"window polygon",
       [&] { CallMethod(set, "SelectByPolygon", {Variant(6), Doubles({15, 15, 0, 25, 15, 0, 20, 25, 0})}); },
       HandlesOf({far})},
      {"point on the circle", [&] { CallMethod(set, "SelectAtPoint", {Pt(21, 20)}); }, HandlesOf({far})},
      {"point, filtered out",
       [&] { CallMethod(set, "SelectAtPoint", {Pt(21, 20), Codes0(), List({Variant("LINE")})}); }, {}},
  };
  for (const Case& c : cases) {
    c.select();
    EXPECT_EQ(Members(), c.expected) << c.what;
    EXPECT_EQ(MemberHandles(CallMethod(GetProperty(doc, "SelectionSets").Object(), "Item",
                                       {Variant("DynamicSS")}).Object()),
              c.expected)
        << c.what;
  }
}

TEST_F(SetSelection, PointsGivenInWorldCoordinatesPickUnderATurnedUcs) {
  auto& vars = document().sysvar_values();
  vars["UCSORG"] = Pt(7, 3, 0);
  vars["UCSXDIR"] = Pt(0, 1, 0);
  vars["UCSYDIR"] = Pt(-1, 0, 0);
  CallMethod(set, "SelectAtPoint", {Pt(21, 20)});
  EXPECT_EQ(Members(), HandlesOf({far}));
}

TEST_F(SetSelection, PolylinesBoundOrCrossAlongTheirPath) {
  ObjectRef square = Polyline({-1, -1, 5, -1, 5, 5, -1, 5});
  LetProperty(square, "Closed", Variant(true));
  CallMethod(set, "SelectByBoundPline", {Variant(square), Codes0(), List({Variant("LINE")})});
  EXPECT_EQ(Members(), HandlesOf({inside}));
  CallMethod(set, "SelectByCrossPline", {Variant(square), Codes0(), List({Variant("LINE")})});
  EXPECT_EQ(Members(), HandlesOf({across}));
}

TEST_F(SetSelection, ScriptedPicksPickFirstAndTheFilteredPreviousSelection) {
  document().QueueInput(host::UserInput::Pick(std::dynamic_pointer_cast<host::Entity>(across), {}));
  document().QueueInput(host::UserInput::Pick(std::dynamic_pointer_cast<host::Entity>(far), {}));
  CallMethod(set, "SelectOnScreen");
  EXPECT_EQ(Members(), HandlesOf({across, far}));
  document().pickfirst()->Add(std::dynamic_pointer_cast<host::Entity>(inside));
  CallMethod(set, "SelectPickFirstSS");
  EXPECT_EQ(Members(), HandlesOf({inside}));

  // The previous selection filtered: the result stays in the host's set.
  auto other = DynamicSS::Create();
  CallMethod(other, "SelectW", {Variant(5)});
  CallMethod(set, "SelectByFilteringFrom", {Variant(ObjectRef(other)), Codes0(), List({Variant("LINE")})});
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  EXPECT_EQ(MemberHandles(CallMethod(GetProperty(doc, "SelectionSets").Object(), "Item",
                                     {Variant("DynamicSS")}).Object()),
            HandlesOf({inside, across}));
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("USERS1")})), "ToPrevious");
}

TEST_F(SetSelection, ToPickSetHandsBlockReferencesThroughTheLibraryGroup) {
  CallMethod(set, "ToPickSet");  // empty: nothing touched
  EXPECT_EQ(document().command_log(), "");
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("USERS1")})), "");
  ObjectRef block = AddBlock("TAG");
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(0), Variant(""), Pt(0, 0), Variant("T"), Variant("v")});
  ObjectRef ref = Insert(ms, "TAG", {1, 1, 0});
  Variant att = CallMethod(ref, "GetAttributes").Array().At(0);
  set->Add(List({att, Variant(inside)}));
  CallMethod(set, "ToPickSet");
  EXPECT_EQ(MemberHandles(CallMethod(GetProperty(doc, "Groups").Object(), "Item", {Variant("TOVIK_COM")}).Object()),
            HandlesOf({ref, inside}));
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("USERS1")})), "ToPickSet");
  EXPECT_EQ(document().command_log(), "(TOVIK_COM) ");
  // The library's lisp side made them the pick-first selection.
  EXPECT_EQ(MemberHandles(GetProperty(doc, "PickfirstSelectionSet").Object()), HandlesOf({ref, inside}));
}

TEST_F(SetSelection, BulkEditsReachEveryMember) {
  set->Add(List({Variant(inside), Variant(across)}));
  LetProperty(set, "Layer", Variant("NEW"));
  for (const ObjectRef& e : {inside, across}) EXPECT_EQ(CStr(GetProperty(e, "Layer")), "NEW");
  LetProperty(set, "LineType", Variant("NO_SUCH_TYPE"));  // refused quietly
  EXPECT_EQ(ErrorOf([&] { GetProperty(set, "Layer"); }).Number(), 438);

  CallMethod(set, "Visible", {Variant(false)});
  ObjectRef hidden = CallMethod(GetProperty(doc, "Groups").Object(), "Item", {Variant("InvisibleSpace")}).Object();
  EXPECT_EQ(MemberHandles(hidden), HandlesOf({inside, across}));
  EXPECT_FALSE(CBool(GetProperty(inside, "Visible")));
  CallMethod(set, "Visible", {Variant(true)});
  EXPECT_EQ(CLng(GetProperty(hidden, "Count")), 0);

  CallMethod(set, "Highlight", {Variant(true)});
  EXPECT_TRUE(std::dynamic_pointer_cast<host::Entity>(across)->highlighted());
  EXPECT_EQ(MemberHandles(SharedHighlightSet()), HandlesOf({inside, across}));
  CallMethod(set, "Highlight", {Variant(false)});
  EXPECT_EQ(SharedHighlightSet()->size(), 0);

  // Draw order: both lines above the circle drawn after them.
  auto* space = std::dynamic_pointer_cast<host::BlockRecord>(ms).get();
  CallMethod(set, "MoveToBottom");
  EXPECT_EQ(space->DrawOrder().back(), std::dynamic_pointer_cast<host::Entity>(far).get());
  CallMethod(set, "MoveToTop");
  EXPECT_EQ(space->DrawOrder().front(), std::dynamic_pointer_cast<host::Entity>(far).get());

  // A circle through both lines' ends: two points on each.
  ObjectRef cut = CallMethod(ms, "AddCircle", {Pt(3.5, 1.5), Variant(1.5524174696260025)}).Object();
  Variant points = CallMethod(set, "IntersectWith", {Variant(cut)});
  EXPECT_EQ(points.Array().Count(), 12);
  EXPECT_EQ(ErrorOf([&] { CallMethod(set, "IsIntersectWith", {Variant(cut)}); }).Number(), 438);
  EXPECT_FALSE(CBool(CallMethod(set, "IsIntersectWith", {Variant(ObjectRef(DynamicSS::Create()))})));

  CallMethod(set, "EraseAllEntities");
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 2);
}

}  // namespace
}  // namespace tovik
