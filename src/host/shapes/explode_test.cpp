// Explode of polylines off the default normal and of block references
// that are mirrored, non-uniformly scaled, gridded, not explodable or that
// cannot be exploded, with the pieces worked out by hand.
#include <cmath>
#include <string>

#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "tests/support/geometry_checks.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

class ExplodeTest : public HostTest {
 protected:


  static std::vector<ObjectRef> Pieces(const Variant& exploded) {
    std::vector<ObjectRef> out;
    const SafeArray& a = exploded.Array();
    for (int32_t i = a.LBound(1); i <= a.UBound(1); ++i) out.push_back(a.At(i).Object());
    return out;
  }
  int32_t Count() { return CLng(GetProperty(ms, "Count")); }
};

TEST_F(ExplodeTest, PolylineOnNegativeZGivesPiecesInItsPlane) {
  // OCS of −Z: (x, y, z) is WCS (−x, y, −z). Vertices (0,0), (2,0), (2,2)
  // at elevation 3 are WCS (0,0,−3), (−2,0,−3), (−2,2,−3).
  ObjectRef pl = Polyline({0, 0, 2, 0, 2, 2});
  CallMethod(pl, "SetBulge", {Variant(int16_t(1)), Variant(1.0)});
  LetProperty(pl, "Normal", Pt(0, 0, -1));
  LetProperty(pl, "Elevation", Variant(3.0));
  const int32_t before = Count();
  const std::vector<ObjectRef> pieces = Pieces(CallMethod(pl, "Explode"));
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(Count(), before + 2);  // the polyline stays
  EXPECT_EQ(TypeName(Variant(pieces[0])), "IAcadLine");
  ExpectPoint(GetProperty(pieces[0], "StartPoint"), {0, 0, -3});
  ExpectPoint(GetProperty(pieces[0], "EndPoint"), {-2, 0, -3});
  // Bulge +1 from OCS (2,0) to (2,2) swings right of the chord, to OCS
  // (3,1): centre OCS (2,1) = WCS (−2,1,−3), running counter-clockwise
  // about −Z from OCS angle 270° to 90°.
  ASSERT_EQ(TypeName(Variant(pieces[1])), "IAcadArc");
  ExpectPoint(GetProperty(pieces[1], "Center"), {-2, 1, -3});
  EXPECT_NEAR(CDbl(GetProperty(pieces[1], "Radius")), 1, kGeoTol);
  ExpectPoint(GetProperty(pieces[1], "Normal"), {0, 0, -1});
  EXPECT_NEAR(CDbl(GetProperty(pieces[1], "StartAngle")), 3 * kPi / 2, kGeoTol);
  EXPECT_NEAR(CDbl(GetProperty(pieces[1], "EndAngle")), kPi / 2, kGeoTol);
  ExpectPoint(GetProperty(pieces[1], "StartPoint"), {-2, 0, -3});
  ExpectPoint(GetProperty(pieces[1], "EndPoint"), {-2, 2, -3});
  ExpectBox(pieces[1], {-3, 0, -3}, {-2, 2, -3});
}

TEST_F(ExplodeTest, BlockReferencePiecesFollowMirrorScaleAndGrid) {
  ObjectRef quarter = AddBlock("Q");
  CallMethod(quarter, "AddArc", {Pt(0, 0), Variant(1.0), Variant(0.0), Variant(kPi / 2)});
  {
    SCOPED_TRACE("mirrored: still an arc, its ends swapped");
    // X scale −1: the quarter from (1,0) to (0,1) becomes the one from
    // (0,1) to (−1,0), i.e. 90°..180° counter-clockwise.
    const auto pieces = Pieces(CallMethod(Insert(ms, "Q", {5, 0, 0}, {-1, 1, 1}, 0), "Explode"));
    ASSERT_EQ(pieces.size(), 1u);
    ASSERT_EQ(TypeName(Variant(pieces[0])), "IAcadArc");
    ExpectPoint(GetProperty(pieces[0], "Center"), {5, 0, 0});
    EXPECT_NEAR(CDbl(GetProperty(pieces[0], "StartAngle")), kPi / 2, kGeoTol);
    EXPECT_NEAR(CDbl(GetProperty(pieces[0], "EndAngle")), kPi, kGeoTol);
  }
  {
    SCOPED_TRACE("twice as tall: an elliptical arc");
    // (x, y) → (x, 2y): the quarter runs from (1,0) to (0,2); the major
    // axis is (0,2,0), ratio 0.5.
    const auto pieces = Pieces(CallMethod(Insert(ms, "Q", {0, 0, 0}, {1, 2, 1}, 0), "Explode"));
    ASSERT_EQ(pieces.size(), 1u);
    ASSERT_EQ(TypeName(Variant(pieces[0])), "IAcadEllipse");
    ExpectPoint(GetProperty(pieces[0], "MajorAxis"), {0, 2, 0});
    EXPECT_NEAR(CDbl(GetProperty(pieces[0], "RadiusRatio")), 0.5, kGeoTol);
    ExpectBox(pieces[0], {0, 0, 0}, {1, 2, 0});
  }
  {
    SCOPED_TRACE("a grid of two columns 3 apart gives a copy per cell");
    ObjectRef stick = AddBlock("STICK");
    CallMethod(stick, "AddLine", {Pt(0, 0), Pt(1, 0)});
    ObjectRef grid = Insert(ms, "STICK", {0, 10, 0}, {1, 1, 1}, 0);
    auto& d = As<BlockRef>(grid.get())->mutable_data();
    d.columns = 2;
    d.column_spacing = 3;
    const auto pieces = Pieces(CallMethod(grid, "Explode"));
    ASSERT_EQ(pieces.size(), 2u);
    ExpectPoint(GetProperty(pieces[0], "StartPoint"), {0, 10, 0});
    ExpectPoint(GetProperty(pieces[1], "StartPoint"), {3, 10, 0});
    ExpectPoint(GetProperty(pieces[1], "EndPoint"), {4, 10, 0});
  }
}

TEST_F(ExplodeTest, AttributeDefinitionsComeBackAndReferencesAreDropped) {
  ObjectRef b = AddBlock("TAGGED");
  CallMethod(b, "AddLine", {Pt(0, 0), Pt(1, 0)});
  CallMethod(b, "AddAttribute", {Variant(1.0), Variant(int32_t(0)), Variant("P"), Pt(0, 2),
                                 Variant("TAG"), Variant("DEFAULT")});
  ObjectRef ref = Insert(ms, "TAGGED", {10, 0, 0}, {1, 1, 1}, 0);
  ASSERT_EQ(CallMethod(ref, "GetAttributes").Array().Count(), 1);
  const auto pieces = Pieces(CallMethod(ref, "Explode"));
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(TypeName(Variant(pieces[0])), "IAcadLine");
  ASSERT_EQ(TypeName(Variant(pieces[1])), "IAcadAttribute");
  EXPECT_EQ(CStr(GetProperty(pieces[1], "TextString")), "DEFAULT");
  ExpectPoint(GetProperty(pieces[1], "InsertionPoint"), {10, 2, 0});
}

TEST_F(ExplodeTest, RefusalsLeaveTheDrawingAsItWas) {
  ObjectRef inner = AddBlock("INNER");
  CallMethod(inner, "AddLine", {Pt(0, 0), Pt(1, 0)});
  ObjectRef outer = AddBlock("OUTER");
  CallMethod(outer, "AddLine", {Pt(0, 0), Pt(0, 1)});
  Insert(outer, "INNER", {0, 0, 0}, {1, 1, 1}, kPi / 4);
  // Stretched along X, the nested reference turned 45° would be sheared:
  // no scale factors and rotation can hold it.
  ObjectRef stretched = Insert(ms, "OUTER", {0, 0, 0}, {2, 1, 1}, 0);
  ObjectRef locked_block = AddBlock("FIXED");
  CallMethod(locked_block, "AddLine", {Pt(0, 0), Pt(1, 0)});
  LetProperty(locked_block, "Explodable", Variant(false));
  ObjectRef fixed = Insert(ms, "FIXED", {0, 0, 0}, {1, 1, 1}, 0);
  const struct {
    const char* what;
    ObjectRef target;
    int32_t number;
    const char* text;
  } cases[] = {
      {"sheared nested reference", stretched, -2145386493, "Invalid input"},
      {"not explodable", fixed, -2145386494, "Not applicable"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const int32_t before = Count();
    const AutomationError r = ErrorOf([&] { CallMethod(c.target, "Explode"); });
    EXPECT_EQ(r.Number(), c.number);
    EXPECT_EQ(r.Description(), c.text);
    EXPECT_EQ(Count(), before);  // no half-made pieces left behind
  }
  // An empty block explodes into an empty array.
  AddBlock("EMPTY");
  const Variant none = CallMethod(Insert(ms, "EMPTY", {0, 0, 0}, {1, 1, 1}, 0), "Explode");
  ASSERT_TRUE(none.IsArray());
  EXPECT_EQ(none.Array().UBound(1), -1);
}

}  // namespace
}  // namespace tovik::host
