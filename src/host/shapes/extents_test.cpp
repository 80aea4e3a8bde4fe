// Extents, transforms, explode and intersections of host entities, checked
// against values worked out by hand.
#include <cmath>
#include <numbers>

#include "geometry/matrix.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "tests/support/geometry_checks.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

class GeometryTest : public HostTest {
 protected:



};

TEST_F(GeometryTest, CurveExtentsIncludeArcExtremesAndBulges) {
  // Arc r=2 from 45° to 135°: ends (±√2, √2), passes the top (0, 2).
  ObjectRef arc = CallMethod(ms, "AddArc", {Pt(0, 0), Variant(2.0), Variant(kPi / 4), Variant(3 * kPi / 4)}).Object();
  ExpectBox(arc, {-std::sqrt(2.0), std::sqrt(2.0), 0}, {std::sqrt(2.0), 2, 0});
  // Bulge +1 from (0,0) to (2,0) runs counter-clockwise: below the chord.
  ObjectRef pl = Polyline({0, 0, 2, 0});
  CallMethod(pl, "SetBulge", {Variant(int16_t(0)), Variant(1.0)});
  ExpectBox(pl, {0, -1, 0}, {2, 0, 0});
  CallMethod(pl, "SetBulge", {Variant(int16_t(0)), Variant(-1.0)});  // bulge −1: above
  ExpectBox(pl, {0, 0, 0}, {2, 1, 0});
  // Ellipse, major 3 along X, ratio 0.5: ±3 by ±1.5 around (1, 1).
  ObjectRef el = CallMethod(ms, "AddEllipse", {Pt(1, 1), Pt(3, 0), Variant(0.5)}).Object();
  ExpectBox(el, {-2, -0.5, 0}, {4, 2.5, 0});
  // A point is a zero box; a zero-length line too.
  ExpectBox(CallMethod(ms, "AddPoint", {Pt(4, 5, 6)}).Object(), {4, 5, 6}, {4, 5, 6});
  ExpectBox(Line(7, 7, 7, 7), {7, 7, 0}, {7, 7, 0});
}

TEST_F(GeometryTest, TextExtentsAreTheGlyphsWidthInTheStylesFaceAndFollowAlignment) {
  auto width = [&](const char* text, double height) {
    const auto [lo, hi] =
        BoxOf(CallMethod(ms, "AddText", {Variant(text), Pt(0, 0), Variant(height)}).Object());
    return hi.x - lo.x;
  };
  // A proportional face: narrow letters take less room than wide ones; the
  // width grows with the height and the characters.
  const double w = width("ABCD", 2);
  EXPECT_LT(width("iiii", 2), 0.6 * w);
  EXPECT_NEAR(width("ABCD", 4), 2 * w, 1e-9);
  EXPECT_NEAR(width("ABCDABCD", 2), 2 * w, 1e-9);
  ObjectRef t = CallMethod(ms, "AddText", {Variant("ABCD"), Pt(10, 5), Variant(2.0)}).Object();
  ExpectBox(t, {10, 5, 0}, {10 + w, 7, 0});
  LetProperty(t, "Rotation", Variant(kPi / 2));  // up the Y axis, leaning left
  ExpectBox(t, {8, 5, 0}, {10, 5 + w, 0});
  LetProperty(t, "Rotation", Variant(0.0));
  LetProperty(t, "Alignment", Variant(int32_t(10)));  // middle centre around (0, 0)
  LetProperty(t, "TextAlignmentPoint", Pt(0, 0));
  ExpectBox(t, {-w / 2, -1, 0}, {w / 2, 1, 0});
  LetProperty(t, "TextString", Variant(""));
  const AutomationError r = ErrorOf([&] { BoxOf(t); });
  EXPECT_EQ(r.Number(), -2145386458);
  EXPECT_EQ(r.Description(), "Null extents");
}

TEST_F(GeometryTest, BlockReferenceExtentsAreTheTransformedContents) {
  ObjectRef b = AddBlock("B");
  CallMethod(b, "AddLine", {Pt(0, 0), Pt(1, 0)});
  CallMethod(b, "AddCircle", {Pt(2, 0), Variant(0.5)});
  // An attribute definition far away does not count.
  CallMethod(b, "AddAttribute", {Variant(1.0), Variant(int32_t(0)), Variant("P"), Pt(100, 100),
                                 Variant("TAG"), Variant("")});
  const struct {
    const char* what;
    Vec3 at, scale;
    double rotation;
    Vec3 lo, hi;
  } cases[] = {
      // x2 in X: circle becomes an ellipse ±1 by ±0.5 at (4,0); turned 90°.
      {"non-uniform, rotated", {10, 10, 0}, {2, 1, 1}, kPi / 2, {9.5, 10, 0}, {10.5, 15, 0}},
      {"mirrored", {0, 0, 0}, {-1, 1, 1}, 0, {-2.5, -0.5, 0}, {0, 0.5, 0}},
      {"uniform", {1, 1, 0}, {2, 2, 2}, 0, {1, 0, 0}, {6, 2, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ObjectRef ref = Insert(ms, "B", c.at, c.scale, c.rotation);
    ExpectBox(ref, c.lo, c.hi);
  }
  // Nested: N holds B at (5,0); N turned 180° puts B's parts at −5..−7.5.
  ObjectRef n = AddBlock("N");
  Insert(n, "B", {5, 0, 0}, {1, 1, 1}, 0);
  ExpectBox(Insert(ms, "N", {0, 0, 0}, {1, 1, 1}, kPi), {-7.5, -0.5, 0}, {-5, 0.5, 0});
  // On a normal along +X, block X maps to WCS Y, block Y to WCS Z.
  ObjectRef tilted = Insert(ms, "B", {0, 0, 0}, {1, 1, 1}, 0);
  LetProperty(tilted, "Normal", Pt(1, 0, 0));
  ExpectBox(tilted, {0, 0, -0.5}, {0, 2.5, 0.5});
  // An empty block has no extents.
  AddBlock("EMPTY");
  const AutomationError r = ErrorOf([&] { BoxOf(Insert(ms, "EMPTY", {0, 0, 0}, {1, 1, 1}, 0)); });
  EXPECT_EQ(r.Description(), "Null extents");
}

TEST_F(GeometryTest, TransformsMoveEveryPartAsHandComputed) {
  ObjectRef line = Line(0, 0, 1, 0);
  CallMethod(line, "Move", {Pt(0, 0), Pt(1, 2)});
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(line, "StartPoint")), {1, 2, 0}));
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(2, 0), Variant(1.0)}).Object();
  CallMethod(circle, "Rotate", {Pt(0, 0), Variant(kPi / 2)});
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(circle, "Center")), {0, 2, 0}, kGeoTol));
  CallMethod(circle, "ScaleEntity", {Pt(0, 0), Variant(3.0)});
  EXPECT_NEAR(CDbl(GetProperty(circle, "Radius")), 3.0, kGeoTol);
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(circle, "Center")), {0, 6, 0}, kGeoTol));
  // Rotate3D a quarter turn about +X: the normal Z goes to −Y.
  CallMethod(circle, "Rotate3D", {Pt(0, 0), Pt(1, 0), Variant(kPi / 2)});
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(circle, "Normal")), {0, -1, 0}, kGeoTol));
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(circle, "Center")), {0, 0, 6}, kGeoTol));
  // Mirror in the Y axis: a new arc from 90° to 180° about (−2, 0).
  ObjectRef arc = CallMethod(ms, "AddArc", {Pt(2, 0), Variant(1.0), Variant(0.0), Variant(kPi / 2)}).Object();
  ObjectRef copy = CallMethod(arc, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object();
  EXPECT_FALSE(SameObject(copy, arc));
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(copy, "Center")), {-2, 0, 0}, kGeoTol));
  EXPECT_NEAR(CDbl(GetProperty(copy, "StartAngle")), kPi / 2, kGeoTol);
  EXPECT_NEAR(CDbl(GetProperty(copy, "EndAngle")), kPi, kGeoTol);
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(arc, "Center")), {2, 0, 0}));  // original kept
}

TEST_F(GeometryTest, MirroredTextStaysReadableInTheMirroredBox) {
  // "AB", height 1 at (1,0): box (1,0)-(1+w,1); mirrored in x = 0: (−1−w,0)-(−1,1).
  ObjectRef t = CallMethod(ms, "AddText", {Variant("AB"), Pt(1, 0), Variant(1.0)}).Object();
  const double w = BoxOf(t).second.x - 1;
  ObjectRef m = CallMethod(t, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object();
  ExpectBox(m, {-1 - w, 0, 0}, {-1, 1, 0});
  EXPECT_NEAR(CDbl(GetProperty(m, "Rotation")), 0.0, kGeoTol);
  EXPECT_FALSE(CBool(GetProperty(m, "Backward")));
  // With MIRRTEXT 1 the glyphs mirror: same box, Backward set.
  document().sysvar_values()["MIRRTEXT"] = Variant(int16_t(1));
  ObjectRef m1 = CallMethod(t, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object();
  ExpectBox(m1, {-1 - w, 0, 0}, {-1, 1, 0});
  EXPECT_TRUE(CBool(GetProperty(m1, "Backward")));
}

TEST_F(GeometryTest, BlockReferenceTransformsCarryAttributes) {
  ObjectRef b = AddBlock("A");
  CallMethod(b, "AddLine", {Pt(0, 0), Pt(1, 0)});
  CallMethod(b, "AddAttribute", {Variant(1.0), Variant(int32_t(0)), Variant("P"), Pt(0, 2),
                                 Variant("TAG"), Variant("X")});
  ObjectRef ref = Insert(ms, "A", {0, 0, 0}, {1, 1, 1}, 0);
  CallMethod(ref, "Move", {Pt(0, 0), Pt(5, 0)});
  CallMethod(ref, "Rotate", {Pt(5, 0), Variant(kPi / 2)});
  ObjectRef att = CallMethod(ref, "GetAttributes").Array().At(0).Object();
  // (0,2) moved to (5,2), turned about (5,0) by 90°: (3,0).
  EXPECT_TRUE(geometry::IsClose(V3(GetProperty(att, "InsertionPoint")), {3, 0, 0}, kGeoTol));
  EXPECT_NEAR(CDbl(GetProperty(att, "Rotation")), kPi / 2, kGeoTol);
  // Mirrored copy: negative X scale, as the host gives it.
  ObjectRef mirrored = CallMethod(ref, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object();
  EXPECT_NEAR(CDbl(GetProperty(mirrored, "XScaleFactor")), -1, kGeoTol);
}

}  // namespace
}  // namespace tovik::host
