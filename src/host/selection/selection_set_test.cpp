// Selection through the spatial index after undo groups, in a UCS that is
// not the WCS, on degenerate input, and on shapes where window, crossing,
// polygon and fence disagree because the curve leaves its chord.
#include <cmath>
#include <functional>
#include <set>
#include <string>

#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "tests/support/geometry_checks.h"

namespace tovik::host {
namespace {

constexpr int32_t kWindow = 0, kCrossing = 1, kFence = 2, kWindowPolygon = 6, kCrossingPolygon = 7;
constexpr int32_t kInvalidInput = -2145386493;

class SelectionMoreTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    ss = CallMethod(GetProperty(doc, "SelectionSets").Object(), "Add", {Variant("M")}).Object();
  }
  std::set<std::string> Handles() { return MemberHandles(ss); }
  std::set<std::string> Window(int32_t mode, Variant p1, Variant p2) {
    CallMethod(ss, "Clear");
    CallMethod(ss, "Select", {Variant(mode), p1, p2});
    return Handles();
  }
  std::set<std::string> Polygon(int32_t mode, Variant points) {
    CallMethod(ss, "Clear");
    CallMethod(ss, "SelectByPolygon", {Variant(mode), points});
    return Handles();
  }
  std::set<std::string> Pick(Variant point) {
    CallMethod(ss, "Clear");
    CallMethod(ss, "SelectAtPoint", {point});
    return Handles();
  }
  // The UCS variables are read-only through SetVariable; a drawing file
  // brings them in, as this does.
  void SetUcs(geometry::Vec3 origin, geometry::Vec3 x, geometry::Vec3 y) {
    auto& vars = document().sysvar_values();
    vars["UCSORG"] = Pt(origin.x, origin.y, origin.z);
    vars["UCSXDIR"] = Pt(x.x, x.y, x.z);
    vars["UCSYDIR"] = Pt(y.x, y.y, y.z);
  }

  ObjectRef ss;
};

TEST_F(SelectionMoreTest, UndoOfAGroupRestoresWhatWindowsSee) {
  ObjectRef a = Line(1, 1, 2, 2), b = Line(3, 3, 4, 4);
  ObjectRef block = AddBlock("B");
  CallMethod(block, "AddLine", {Pt(0, 0), Pt(1, 0)});
  ObjectRef ref = Insert(ms, "B", {10, 10, 0});
  // The first query builds the index; later ones must follow the edits.
  ASSERT_EQ(Window(kWindow, Pt(0, 0), Pt(5, 5)), HandlesOf({a, b}));
  ASSERT_EQ(Window(kWindow, Pt(9, 9), Pt(12, 12)), HandlesOf({ref}));
  CallMethod(doc, "StartUndoMark");
  CallMethod(a, "Move", {Pt(0, 0), Pt(100, 0)});
  CallMethod(b, "Delete");
  ObjectRef c = Line(1, 3, 2, 3);
  CallMethod(c, "ScaleEntity", {Pt(1, 3), Variant(2.0)});  // (1,3)-(3,3)
  // The definition grows to (15,15) at the reference: no longer inside.
  CallMethod(block, "AddLine", {Pt(0, 0), Pt(5, 5)});
  CallMethod(doc, "EndUndoMark");
  EXPECT_EQ(Window(kWindow, Pt(0, 0), Pt(5, 5)), HandlesOf({c}));
  EXPECT_EQ(Window(kWindow, Pt(100, 0), Pt(103, 3)), HandlesOf({a}));
  EXPECT_TRUE(Window(kWindow, Pt(9, 9), Pt(12, 12)).empty());
  CallMethod(doc, "SendCommand", {Variant("Undo 1 ")});
  // One step back undoes the whole group.
  EXPECT_EQ(Window(kWindow, Pt(0, 0), Pt(5, 5)), HandlesOf({a, b}));
  EXPECT_TRUE(Window(kCrossing, Pt(100, 0), Pt(103, 3)).empty());
  EXPECT_EQ(Window(kWindow, Pt(9, 9), Pt(12, 12)), HandlesOf({ref}));
  ExpectBox(ref, {10, 10, 0}, {11, 10, 0});
}

TEST_F(SelectionMoreTest, WindowsAreJudgedInThePlanOfATurnedUcs) {
  // UCS turned 45° about Z at the origin: X = (1,1)/√2, Y = (−1,1)/√2. The
  // window with WCS corners (0,0) and (2,0) spans UCS x ∈ [0, √2],
  // y ∈ [−√2, 0]: in WCS the diamond (0,0) (1,1) (2,0) (1,−1).
  const double h = std::sqrt(0.5);
  SetUcs({0, 0, 0}, {h, h, 0}, {-h, h, 0});
  ObjectRef inside = Line(1, 0.5, 1, -0.5);  // at x = 1 the diamond spans |y| ≤ 1
  Line(0.2, 0.5, 0.3, 0.5);                  // |y| > x all along: outside the diamond
  ObjectRef across = Line(1, 0, 1, 3);       // leaves the diamond at its corner (1,1)
  Line(5, 5, 6, 6);                          // far away
  EXPECT_EQ(Window(kWindow, Pt(0, 0), Pt(2, 0)), HandlesOf({inside}));
  EXPECT_EQ(Window(kCrossing, Pt(0, 0), Pt(2, 0)), HandlesOf({inside, across}));
  // In the WCS the same two corners make a window of no height.
  SetUcs({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  EXPECT_TRUE(Window(kWindow, Pt(0, 0), Pt(2, 0)).empty());
}

TEST_F(SelectionMoreTest, AFrontViewUcsJudgesInTheXzPlane) {
  // X = (1,0,0), Y = (0,0,1), so Z = X × Y = (0,−1,0): plan u = x, v = z.
  SetUcs({0, 0, 0}, {1, 0, 0}, {0, 0, 1});
  ObjectRef rising = CallMethod(ms, "AddLine", {Pt(0, 5, 0), Pt(1, 5, 1)}).Object();  // plan (0,0)-(1,1)
  CallMethod(ms, "AddLine", {Pt(5, 0, 0), Pt(6, 0, 0)});  // plan (5,0)-(6,0): outside
  // A circle in z = 0 is seen edge-on: the plan segment u ∈ [−1, 1], v = 0.
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(0, 7, 0), Variant(1.0)}).Object();
  // Plan window (−1.5,−1)-(2,2); the WCS y of the corners does not matter.
  EXPECT_EQ(Window(kWindow, Pt(-1.5, 0, -1), Pt(2, 40, 2)), HandlesOf({rising, circle}));
  // A fence along plan v = 0.5 from u = −2 to 1 crosses the rising line at
  // u = 0.5 and nothing else: the circle and the far line are at v = 0.
  EXPECT_EQ(Polygon(kFence, Doubles({-2, 0, 0.5, 1, 0, 0.5})), HandlesOf({rising}));
}

TEST_F(SelectionMoreTest, PickPointsAreInTheUcs) {
  // UCS turned 90° with its origin at (10,0): UCS (5,0) is WCS (10,5).
  SetUcs({10, 0, 0}, {0, 1, 0}, {-1, 0, 0});
  ObjectRef target = Line(9, 5, 11, 5);
  ObjectRef decoy = Line(4, -1, 6, 1);  // passes through WCS (5,0)
  EXPECT_EQ(Pick(Pt(5, 0)), HandlesOf({target}));
  // UCS (0,5) is WCS (5,0): the decoy.
  EXPECT_EQ(Pick(Pt(0, 5)), HandlesOf({decoy}));
}

TEST_F(SelectionMoreTest, CurvesAreJudgedByTheCurveNotTheirChord) {
  // Arc r = 2 about the origin from 30° to 150°: ends (±√3, 1), top (0, 2).
  ObjectRef arc = CallMethod(ms, "AddArc", {Pt(0, 0), Variant(2.0), Variant(kPi / 6), Variant(5 * kPi / 6)}).Object();
  // Polyline (−1,−10)-(1,−10) with bulge −1: the half circle above the
  // chord, through (0,−9).
  ObjectRef pl = Polyline({-1, -10, 1, -10});
  CallMethod(pl, "SetBulge", {Variant(int16_t(0)), Variant(-1.0)});
  const struct {
    const char* what;
    int32_t mode;
    Variant a, b;  // corners, or the point list in a
    std::set<std::string> want;
  } cases[] = {
      // The chord's ends are inside y ≤ 1.5, the top (0,2) is not.
      {"window holding the chord only", kWindow, Pt(-2, 0), Pt(2, 1.5), {}},
      {"crossing holding the chord only", kCrossing, Pt(-2, 0), Pt(2, 1.5), HandlesOf({arc})},
      // Boundary: the top touches the window's edge y = 2 from inside.
      {"window up to the top", kWindow, Pt(-2, 0), Pt(2, 2), HandlesOf({arc})},
      // At y = 1.9 the arc is at x = ±√(4 − 3.61) = ±0.62, within 30°..150°.
      {"fence across the bulge", kFence, Doubles({-3, 1.9, 0, 3, 1.9, 0}), {}, HandlesOf({arc})},
      // At y = 0.5 only the (absent) chord's extension would be met.
      {"fence under the arc", kFence, Doubles({-3, 0.5, 0, 3, 0.5, 0}), {}, {}},
      {"polyline window around the chord", kWindow, Pt(-1, -10.5), Pt(1, -9.5), {}},
      {"polyline crossing around the chord", kCrossing, Pt(-1, -10.5), Pt(1, -9.5), HandlesOf({pl})},
      // A small triangle around the chord's midpoint (0,−10): the curve
      // is 1 above it, so a crossing polygon there finds nothing.
      {"crossing polygon on the chord's middle", kCrossingPolygon,
       Doubles({-0.2, -10.2, 0, 0.2, -10.2, 0, 0, -9.8, 0}), {}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto got = c.b.IsEmpty() ? Polygon(c.mode, c.a) : Window(c.mode, c.a, c.b);
    EXPECT_EQ(got, c.want);
  }
}

TEST_F(SelectionMoreTest, ConcavePolygonsJudgeTheWholeSegment) {
  // An L: the arms x ∈ [0,1] up to y = 4 and y ∈ [0,1] out to x = 4.
  const Variant l_shape = Doubles({0, 0, 0, 4, 0, 0, 4, 1, 0, 1, 1, 0, 1, 4, 0, 0, 4, 0});
  // Both ends in the arms, the middle (1.75,1.75) out of the L.
  ObjectRef diagonal = Line(0.5, 3, 3, 0.5);
  ObjectRef in_arm = Line(0.5, 0.5, 3.5, 0.5);
  EXPECT_EQ(Polygon(kWindowPolygon, l_shape), HandlesOf({in_arm}));
  EXPECT_EQ(Polygon(kCrossingPolygon, l_shape), HandlesOf({in_arm, diagonal}));
}

TEST_F(SelectionMoreTest, RaysAreCrossedButNeverInsideAWindow) {
  // A ray from (10,0) along +X and a construction line along y = 20, as a
  // drawing file brings them in (base point, unit direction).
  ObjectRef ray = Infinite(GenericKind::kRay, {10, 0, 0}, {1, 0, 0});
  ObjectRef xline = Infinite(GenericKind::kXLine, {0, 20, 0}, {1, 0, 0});
  // Far out along the ray, well away from where the index holds boxes.
  EXPECT_EQ(Window(kCrossing, Pt(1000, -1), Pt(1001, 1)), HandlesOf({ray}));
  EXPECT_TRUE(Window(kWindow, Pt(1000, -1), Pt(1001, 1)).empty());
  // Behind the ray's base: nothing to cross.
  EXPECT_TRUE(Window(kCrossing, Pt(0, -1), Pt(9, 1)).empty());
  // The construction line runs both ways.
  EXPECT_EQ(Window(kCrossing, Pt(-500, 19), Pt(-499, 21)), HandlesOf({xline}));
  EXPECT_EQ(Polygon(kFence, Doubles({-7, 30, 0, -7, 10, 0})), HandlesOf({xline}));
  EXPECT_TRUE(Window(kWindow, Pt(-1000, 0), Pt(1000, 30)).empty());
}

TEST_F(SelectionMoreTest, DegenerateInputGivesTheHostsErrorOrASelection) {
  // A zero-length line is a point: windows, fences and picks find it.
  ObjectRef dot = Line(2, 2, 2, 2);
  EXPECT_EQ(Window(kWindow, Pt(1, 1), Pt(3, 3)), HandlesOf({dot}));
  EXPECT_EQ(Window(kCrossing, Pt(1, 1), Pt(3, 3)), HandlesOf({dot}));
  EXPECT_EQ(Polygon(kFence, Doubles({0, 2, 0, 4, 2, 0})), HandlesOf({dot}));
  EXPECT_EQ(Pick(Pt(2.1, 2)), HandlesOf({dot}));
  const double nan = std::nan("");
  const struct {
    const char* what;
    std::function<void()> statement;
    int32_t number;
    const char* text;
  } refusals[] = {
      {"zero radius circle", [&] { CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(0.0)}); },
       kInvalidInput, "Invalid input"},
      {"negative radius circle", [&] { CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(-1.0)}); },
       kInvalidInput, "Invalid input"},
      {"zero radius arc", [&] { CallMethod(ms, "AddArc", {Pt(0, 0), Variant(0.0), Variant(0.0), Variant(1.0)}); },
       kInvalidInput, "Invalid input"},
      {"fence of one point", [&] { Polygon(kFence, Doubles({1, 1, 0})); }, kScodeInvalidArgument,
       "Invalid argument PointsList in SelectByPolygon"},
      // Repeats are dropped: two equal points are one.
      {"fence of one repeated point", [&] { Polygon(kFence, Doubles({1, 1, 0, 1, 1, 0})); },
       kScodeInvalidArgument, "Invalid argument PointsList in SelectByPolygon"},
      {"point list not in triples", [&] { Polygon(kFence, Doubles({0, 0, 0, 1, 1})); },
       kScodeInvalidArgument, "Invalid argument PointsList in SelectByPolygon"},
      {"NaN in a polygon", [&] { Polygon(kWindowPolygon, Doubles({0, 0, 0, 1, nan, 0, 1, 1, 0})); },
       kScodeInvalidArgument, "Invalid argument PointsList in SelectByPolygon"},
      {"NaN window corner", [&] { Window(kCrossing, Pt(nan, 0), Pt(1, 1)); }, kScodeInvalidArgument,
       "Invalid argument Point1 in Select"},
      {"NaN pick", [&] { Pick(Pt(0, nan)); }, kScodeInvalidArgument,
       "Invalid argument Point in SelectAtPoint"},
      {"NaN move", [&] { CallMethod(dot, "Move", {Pt(0, 0), Pt(nan, 0)}); }, kInvalidInput,
       "Invalid input"},
      {"NaN angle", [&] { CallMethod(dot, "Rotate", {Pt(0, 0), Variant(nan)}); }, kInvalidInput,
       "Invalid input"},
      {"NaN scale", [&] { CallMethod(dot, "ScaleEntity", {Pt(0, 0), Variant(nan)}); }, kInvalidInput,
       "Invalid input"},
      {"mirror in no line", [&] { CallMethod(dot, "Mirror", {Pt(1, 1), Pt(1, 1)}); }, kInvalidInput,
       "Invalid input"},
      {"OCS with a zero normal",
       [&] {
         CallMethod(GetProperty(doc, "Utility").Object(), "TranslateCoordinates",
                    {Pt(1, 2, 3), Variant(int32_t(0)), Variant(int32_t(4)), Variant(int32_t(0)), Pt(0, 0, 0)});
       },
       kInvalidInput, "Invalid input"},
  };
  for (const auto& r : refusals) {
    SCOPED_TRACE(r.what);
    const AutomationError raised = ErrorOf(r.statement);
    EXPECT_EQ(raised.Number(), r.number);
    EXPECT_EQ(raised.Description(), r.text);
  }
  // The refused edits left the dot where it was.
  ExpectPoint(GetProperty(dot, "StartPoint"), {2, 2, 0}, 0);
  ExpectPoint(GetProperty(dot, "EndPoint"), {2, 2, 0}, 0);
}

TEST_F(SelectionMoreTest, TranslateCoordinatesThroughAnOcs) {
  ObjectRef util = GetProperty(doc, "Utility").Object();
  auto translate = [&](Variant p, int from, int to, int disp, Variant normal) {
    return CallMethod(util, "TranslateCoordinates",
                      {p, Variant(int32_t(from)), Variant(int32_t(to)), Variant(int32_t(disp)), normal});
  };
  // Normal +X: |Nx| ≥ 1/64, so Ax = Z × N = (0,1,0), Ay = N × Ax = (0,0,1).
  // WCS (1,2,3) reads (2, 3, 1) in that OCS.
  ExpectPoint(translate(Pt(1, 2, 3), 0, 4, 0, Pt(1, 0, 0)), {2, 3, 1});
  ExpectPoint(translate(Pt(2, 3, 1), 4, 0, 0, Pt(1, 0, 0)), {1, 2, 3});
  // Normal −Z: Ax = Y × N = (−1,0,0), Ay = (0,1,0); (1,2,3) → (−1, 2, −3).
  ExpectPoint(translate(Pt(1, 2, 3), 0, 4, 1, Pt(0, 0, -1)), {-1, 2, -3});
  // A normal that is not unit is normalised first: (0,0,−5) is −Z.
  ExpectPoint(translate(Pt(1, 2, 3), 0, 4, 0, Pt(0, 0, -5)), {-1, 2, -3});
  // OCS to OCS is refused.
  const AutomationError r = ErrorOf([&] { translate(Pt(1, 2, 3), 4, 4, 0, Pt(0, 0, 1)); });
  EXPECT_EQ(r.Number(), kInvalidInput);
  EXPECT_EQ(r.Description(), "Invalid input");
}

}  // namespace
}  // namespace tovik::host
