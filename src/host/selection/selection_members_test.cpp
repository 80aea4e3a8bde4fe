// Selection by window, crossing, fence, polygon and point, filters through
// Select, and TranslateCoordinates, on drawings built in the host.
#include <algorithm>
#include <set>

#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "tests/support/geometry_checks.h"

namespace tovik::host {
namespace {

class SelectionTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    ss = CallMethod(GetProperty(doc, "SelectionSets").Object(), "Add", {Variant("S")}).Object();
    inside = Line(1, 1, 2, 2);
    crossing = Line(4, 4, 8, 8);
    touching = Line(5, 0, 5, 5);  // lies on the window's right edge
    // Its box (6..7.5) overlaps the window (0..6.2) but the curve stays out.
    arc = CallMethod(ms, "AddArc", {Pt(6, 6), Variant(1.5), Variant(0.0), Variant(1.5707963267948966)})
              .Object();
    circle = CallMethod(ms, "AddCircle", {Pt(3, 3), Variant(1.0)}).Object();
  }
  std::set<std::string> Handles() { return MemberHandles(ss); }
  void Run(const char* member, std::initializer_list<Variant> args) {
    CallMethod(ss, "Clear");
    CallMethod(ss, member, args);
  }

  ObjectRef ss, inside, crossing, touching, arc, circle;
};

TEST_F(SelectionTest, WindowCrossingAndFenceDifferOnTheSameShapes) {
  Run("Select", {Variant(int32_t(0)), Pt(0, 0), Pt(6.2, 6.2)});
  EXPECT_EQ(Handles(), HandlesOf({inside, touching, circle}));
  Run("Select", {Variant(int32_t(1)), Pt(0, 0), Pt(6.2, 6.2)});
  EXPECT_EQ(Handles(), HandlesOf({inside, crossing, touching, circle}));  // not the arc
  // A fence along y = 3 crosses the circle and the vertical line at x = 5.
  Run("SelectByPolygon", {Variant(int32_t(2)), Doubles({0, 3, 0, 10, 3, 0})});
  EXPECT_EQ(Handles(), HandlesOf({circle, touching}));
  // Triangle (0,0) (5,0) (0,5): the short line lies inside, the circle
  // crosses the hypotenuse (0.71 from its centre), the vertical line
  // touches the corner (5,0).
  Run("SelectByPolygon", {Variant(int32_t(6)), Doubles({0, 0, 0, 5, 0, 0, 0, 5, 0})});
  EXPECT_EQ(Handles(), HandlesOf({inside}));
  Run("SelectByPolygon", {Variant(int32_t(7)), Doubles({0, 0, 0, 5, 0, 0, 0, 5, 0})});
  EXPECT_EQ(Handles(), HandlesOf({inside, circle, touching}));
}

TEST_F(SelectionTest, SkipsHiddenEntitiesButAllSeesThem) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef frozen = CallMethod(layers, "Add", {Variant("F")}).Object();
  LetProperty(inside, "Layer", Variant("F"));
  LetProperty(frozen, "Freeze", Variant(true));
  LetProperty(circle, "Visible", Variant(false));
  Run("Select", {Variant(int32_t(0)), Pt(0, 0), Pt(6.2, 6.2)});
  EXPECT_EQ(Handles(), HandlesOf({touching}));
  Run("Select", {Variant(int32_t(5))});
  EXPECT_EQ(Handles().size(), 5u);
}

TEST_F(SelectionTest, FollowsMovesErasesAndUndo) {
  CallMethod(inside, "Move", {Pt(0, 0), Pt(100, 0)});
  Run("Select", {Variant(int32_t(0)), Pt(0, 0), Pt(6.2, 6.2)});
  EXPECT_EQ(Handles(), HandlesOf({touching, circle}));
  CallMethod(circle, "Delete");
  Run("Select", {Variant(int32_t(0)), Pt(0, 0), Pt(6.2, 6.2)});
  EXPECT_EQ(Handles(), HandlesOf({touching}));
  CallMethod(doc, "SendCommand", {Variant("_undo 2 ")});  // both steps back
  Run("Select", {Variant(int32_t(0)), Pt(0, 0), Pt(6.2, 6.2)});
  EXPECT_EQ(Handles(), HandlesOf({inside, touching, circle}));
}

TEST_F(SelectionTest, PickUsesTheApertureAndTakesTheTopObject) {
  // Aperture: PICKBOX 3 × VIEWSIZE 200 / 900 pixels = 0.667 units.
  ObjectRef low = Line(0, 20, 10, 20), top = Line(0, 20.1, 10, 20.1);
  Run("SelectAtPoint", {Pt(5, 20.5)});
  EXPECT_EQ(Handles(), HandlesOf({top}));  // both in reach, the newer is on top
  Run("SelectAtPoint", {Pt(5, 19.4)});
  EXPECT_EQ(Handles(), HandlesOf({low}));  // 0.6 from low, 0.7 from top
  Run("SelectAtPoint", {Pt(5, 21)});
  EXPECT_TRUE(Handles().empty());
}

TEST_F(SelectionTest, PreviousAndLastAndAddingNeverDuplicates) {
  Run("Select", {Variant(int32_t(0)), Pt(0, 0), Pt(2.5, 2.5)});
  // A crossing that finds the same line again adds nothing.
  CallMethod(ss, "Select", {Variant(int32_t(1)), Pt(0, 0), Pt(1.5, 1.5)});
  EXPECT_EQ(CLng(GetProperty(ss, "Count")), 1);
  Run("Select", {Variant(int32_t(3))});
  EXPECT_EQ(Handles(), HandlesOf({inside}));
  Run("Select", {Variant(int32_t(4))});
  EXPECT_EQ(Handles(), HandlesOf({circle}));
}

TEST_F(SelectionTest, FiltersNestAndMatchWildcards) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  CallMethod(layers, "Add", {Variant("WALL-1")});
  LetProperty(crossing, "Layer", Variant("WALL-1"));
  LetProperty(circle, "Color", Variant(int32_t(1)));
  // (LINE on WALL-#) or (anything red).
  Variant ft = Codes({-4, -4, 0, 8, -4, 62, -4});
  Variant fd(SafeArray::Of({Variant("<OR"), Variant("<AND"), Variant("line"), Variant("wall-#"),
                            Variant("AND>"), Variant(int16_t(1)), Variant("OR>")}));
  Run("Select", {Variant(int32_t(5)), Variant::Missing(), Variant::Missing(), ft, fd});
  EXPECT_EQ(Handles(), HandlesOf({crossing, circle}));
  // Not a line: the arc and the circle.
  Run("Select", {Variant(int32_t(1)), Pt(0, 0), Pt(10, 10), Codes({-4, 0, -4}),
                 Variant(SafeArray::Of({Variant("<NOT"), Variant("LINE"), Variant("NOT>")}))});
  EXPECT_EQ(Handles(), HandlesOf({circle, arc}));
  // Radius (40) against a number: the circle's 1 is below 1.2, the arc's 1.5 is not.
  Run("Select", {Variant(int32_t(5)), Variant::Missing(), Variant::Missing(), Codes({-4, 40}),
                 Variant(SafeArray::Of({Variant("<"), Variant(1.2)}))});
  EXPECT_EQ(Handles(), HandlesOf({circle}));
}

TEST_F(SelectionTest, RefusesBadModesPointsAndFilters) {
  const struct {
    const char* member;
    std::vector<Variant> args;
    const char* text;
  } cases[] = {
      {"Select", {Variant(int32_t(2)), Pt(0, 0), Pt(1, 1)}, "Invalid argument Mode in Select"},
      {"Select", {Variant(int32_t(0)), Pt(0, 0)}, "Invalid argument Point2 in Select"},
      {"SelectByPolygon", {Variant(int32_t(2)), Variant(SafeArray::OfDoubles({1, 1, 0}))},
       "Invalid argument PointsList in SelectByPolygon"},
      // Three points of which two coincide: not a polygon.
      {"SelectByPolygon", {Variant(int32_t(6)), Variant(SafeArray::OfDoubles({0, 0, 0, 0, 0, 0, 1, 1, 0}))},
       "Invalid argument PointsList in SelectByPolygon"},
      {"Select", {Variant(int32_t(5)), Variant::Missing(), Variant::Missing(), Codes({8})},
       "Invalid argument FilterType in Select"},
      {"Select", {Variant(int32_t(0)), Pt(0, 0), Pt(NAN, 1)}, "Invalid argument Point2 in Select"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    std::vector<Variant> args = c.args;
    const AutomationError r = ErrorOf([&] { CallMethodRef(ss, c.member, args); });
    EXPECT_EQ(r.Number(), kScodeInvalidArgument);
    EXPECT_EQ(r.Description(), c.text);
  }
}

TEST_F(SelectionTest, TranslateCoordinatesUsesTheUcs) {
  auto& vars = document().sysvar_values();
  vars["UCSORG"] = Pt(10, 0, 0);
  vars["UCSXDIR"] = Pt(0, 1, 0);
  vars["UCSYDIR"] = Pt(-1, 0, 0);
  ObjectRef util = GetProperty(doc, "Utility").Object();
  auto translate = [&](Variant p, int from, int to, int disp) {
    return CallMethod(util, "TranslateCoordinates",
                      {p, Variant(int32_t(from)), Variant(int32_t(to)), Variant(int32_t(disp))});
  };
  // (10,5) is 5 along the UCS X (WCS Y) from the origin.
  EXPECT_EQ(translate(Pt(10, 5), 0, 1, 0).Array().ToDoubles(), (std::vector<double>{5, 0, 0}));
  EXPECT_EQ(translate(Pt(0, 0), 0, 1, 0).Array().ToDoubles(), (std::vector<double>{0, 10, 0}));
  EXPECT_EQ(translate(Pt(0, 0), 0, 1, 1).Array().ToDoubles(), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(translate(Pt(5, 0), 1, 0, 0).Array().ToDoubles(), (std::vector<double>{10, 5, 0}));
  const AutomationError r = ErrorOf([&] { translate(Variant(SafeArray::Of({1.0, 2.0, 3.0})), 0, 1, 0); });
  EXPECT_EQ(r.Description(), "Invalid argument Point in TranslateCoordinates");
  EXPECT_EQ(r.Number(), kScodeInvalidArgument);
}

}  // namespace
}  // namespace tovik::host
