// Move, Rotate, Rotate3D, ScaleEntity, Mirror and TransformBy on polylines
// with bulges off the default normal, hatches, dimensions, images, MText
// and extended data, plus inverse transforms giving the input back. Every
// expectation is worked out by hand in the comment beside it.
#include <cmath>
#include <functional>
#include <string>

#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "tests/support/geometry_checks.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

class TransformTest : public HostTest {
 protected:

  // A polyline (0,0)-(2,0) with bulge +1 (a half circle) on normal −Z.
  // The OCS of −Z has X = (−1,0,0) and Y = (0,1,0), so the vertices sit at
  // WCS (0,0,0) and (−2,0,0); the bulge runs counter-clockwise in the OCS,
  // i.e. to the right of the chord: OCS (1,−1), WCS (−1,−1,0).
  ObjectRef HalfCircleOnNegativeZ() {
    ObjectRef pl = Polyline({0, 0, 2, 0});
    CallMethod(pl, "SetBulge", {Variant(int16_t(0)), Variant(1.0)});
    LetProperty(pl, "Normal", Pt(0, 0, -1));
    return pl;
  }
  // A 4 × 4 TransformBy matrix, row by row (translation in the last column).
  static Variant Matrix(std::initializer_list<double> rows, int32_t n = 4) {
    SafeArray a(VarType::kDouble, {{0, n}, {0, n}});
    auto it = rows.begin();
    for (int32_t r = 0; r < n; ++r) {
      for (int32_t c = 0; c < n; ++c) a.Set({r, c}, Variant(*it++));
    }
    return Variant(std::move(a));
  }

};

TEST_F(TransformTest, PolylineOnNegativeZKeepsItsOcsAndFlipsBulgesOnlyWhenMirrored) {
  // Before: box (−2,−1,0)-(0,0,0).
  const struct {
    const char* what;
    std::function<ObjectRef(const ObjectRef&)> apply;  // returns the result entity
    std::vector<double> coordinates;                   // OCS of −Z
    double bulge, elevation;
    Vec3 lo, hi;
  } cases[] = {
      // WCS vertices (1,2,3), (−1,2,3): OCS x = −X, y = Y, z = −Z.
      {"move",
       [](const ObjectRef& pl) { CallMethod(pl, "Move", {Pt(0, 0, 0), Pt(1, 2, 3)}); return pl; },
       {-1, 2, 1, 2}, 1, -3, {-1, 1, 3}, {1, 2, 3}},
      // A quarter turn about +Z: (−2,0) → (0,−2), the bulge's far point
      // (−1,−1) → (1,−1). Rotating in the plane keeps the bulge.
      {"rotate",
       [](const ObjectRef& pl) { CallMethod(pl, "Rotate", {Pt(0, 0), Variant(kPi / 2)}); return pl; },
       {0, 0, 0, -2}, 1, 0, {0, -2, 0}, {1, 0, 0}},
      // Mirror in x = 0: vertices (0,0), (2,0), far point (1,−1). The normal
      // stays −Z (the mirror plane holds it), so OCS (0,0), (−2,0); travelling
      // −X in the OCS, the far point OCS (−1,−1) lies on the left: bulge −1.
      {"mirror",
       [](const ObjectRef& pl) { return CallMethod(pl, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object(); },
       {0, 0, -2, 0}, -1, 0, {0, -1, 0}, {2, 0, 0}},
      // Twice the size about the origin.
      {"scale",
       [](const ObjectRef& pl) { CallMethod(pl, "ScaleEntity", {Pt(0, 0), Variant(2.0)}); return pl; },
       {0, 0, 4, 0}, 1, 0, {-4, -2, 0}, {0, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ObjectRef pl = HalfCircleOnNegativeZ();
    ExpectBox(pl, {-2, -1, 0}, {0, 0, 0});
    ObjectRef out = c.apply(pl);
    ExpectDoubles(GetProperty(out, "Coordinates").Array().ToDoubles(), c.coordinates);
    EXPECT_NEAR(CDbl(CallMethod(out, "GetBulge", {Variant(int16_t(0))})), c.bulge, kGeoTol);
    EXPECT_NEAR(CDbl(GetProperty(out, "Elevation")), c.elevation, kGeoTol);
    ExpectPoint(GetProperty(out, "Normal"), {0, 0, -1});
    ExpectBox(out, c.lo, c.hi);
  }
}

TEST_F(TransformTest, Rotate3DCarriesAPolylineElevationIntoItsNewPlane) {
  ObjectRef pl = Polyline({0, 0, 2, 0});
  LetProperty(pl, "Elevation", Variant(5.0));
  // A quarter turn about +X takes (x, 0, 5) to (x, −5, 0) and Z to −Y. The
  // OCS of −Y has X = (0,0,1)×N = (1,0,0) and Y = N×X = (0,0,1), so the
  // vertices read (0,0), (2,0) again and the plane lies 5 along −Y.
  CallMethod(pl, "Rotate3D", {Pt(0, 0, 0), Pt(1, 0, 0), Variant(kPi / 2)});
  ExpectPoint(GetProperty(pl, "Normal"), {0, -1, 0});
  ExpectDoubles(GetProperty(pl, "Coordinates").Array().ToDoubles(), {0, 0, 2, 0});
  EXPECT_NEAR(CDbl(GetProperty(pl, "Elevation")), 5, kGeoTol);
  ExpectBox(pl, {0, -5, 0}, {2, -5, 0});
}

TEST_F(TransformTest, ExtendedDataFollowsEachTransformByItsCode) {
  ObjectRef line = Line(0, 0, 1, 0);
  CallMethod(line, "SetXData",
             {Codes({1001, 1010, 1011, 1012, 1013, 1040, 1041, 1042}),
              Variant(SafeArray::Of({Variant("APP"), Pt(1, 1), Pt(1, 1), Pt(1, 1), Pt(1, 0),
                                     Variant(2.0), Variant(2.0), Variant(2.0)}))});
  // The values after each step, in code order 1010 1011 1012 1013 (points)
  // then 1040 1041 1042. 1010 and 1040 never change.
  struct Expected {
    Vec3 p1010, p1011, p1012, p1013;
    double r1040, r1041, r1042;
  };
  auto check = [](const ObjectRef& e, const Expected& x) {
    std::vector<Variant> out(3);
    out[0] = Variant("APP");
    CallMethodRef(e, "GetXData", out);
    const SafeArray& values = out[2].Array();
    ASSERT_EQ(values.Count(), 8);
    ExpectPoint(values.At(1), x.p1010);
    ExpectPoint(values.At(2), x.p1011);
    ExpectPoint(values.At(3), x.p1012);
    ExpectPoint(values.At(4), x.p1013);
    EXPECT_NEAR(CDbl(values.At(5)), x.r1040, kGeoTol);
    EXPECT_NEAR(CDbl(values.At(6)), x.r1041, kGeoTol);
    EXPECT_NEAR(CDbl(values.At(7)), x.r1042, kGeoTol);
  };
  {
    SCOPED_TRACE("move by (10,0,0): only the world position moves");
    CallMethod(line, "Move", {Pt(0, 0), Pt(10, 0)});
    check(line, {{1, 1, 0}, {11, 1, 0}, {1, 1, 0}, {1, 0, 0}, 2, 2, 2});
  }
  {
    SCOPED_TRACE("quarter turn about (10,0): positions, displacements, directions turn");
    CallMethod(line, "Rotate", {Pt(10, 0), Variant(kPi / 2)});
    // 1011: (11,1) − (10,0) = (1,1) → (−1,1) → (9,1).
    check(line, {{1, 1, 0}, {9, 1, 0}, {-1, 1, 0}, {0, 1, 0}, 2, 2, 2});
  }
  {
    SCOPED_TRACE("scale 3 about (10,0): distances and scale factors triple");
    CallMethod(line, "ScaleEntity", {Pt(10, 0), Variant(3.0)});
    // 1011: (−1,1)·3 + (10,0) = (7,3); a direction stays a unit vector.
    check(line, {{1, 1, 0}, {7, 3, 0}, {-3, 3, 0}, {0, 1, 0}, 2, 6, 6});
  }
  {
    SCOPED_TRACE("mirror in x = 10: the copy's data mirrored, lengths stay positive");
    ObjectRef copy = CallMethod(line, "Mirror", {Pt(10, 0), Pt(10, 1)}).Object();
    check(copy, {{1, 1, 0}, {13, 3, 0}, {3, 3, 0}, {0, 1, 0}, 2, 6, 6});
    check(line, {{1, 1, 0}, {7, 3, 0}, {-3, 3, 0}, {0, 1, 0}, 2, 6, 6});  // original kept
  }
}

// The state an inverse pair must give back: the box and the members that
// carry each kind's placement.
struct Snapshot {
  Vec3 lo, hi;
  std::vector<std::pair<std::string, Variant>> members;
};

Snapshot Take(const ObjectRef& e, const std::vector<std::string>& names) {
  Snapshot s;
  std::tie(s.lo, s.hi) = BoxOf(e);
  for (const std::string& n : names) s.members.emplace_back(n, GetProperty(e, n));
  return s;
}

// Angles compare modulo a full turn: 2π − 1e-15 and 0 are the same angle.
void ExpectSame(const Snapshot& got, const Snapshot& want) {
  EXPECT_TRUE(geometry::IsClose(got.lo, want.lo, 1e-9)) << got.lo << " vs " << want.lo;
  EXPECT_TRUE(geometry::IsClose(got.hi, want.hi, 1e-9)) << got.hi << " vs " << want.hi;
  for (size_t i = 0; i < want.members.size(); ++i) {
    const auto& [name, w] = want.members[i];
    const Variant& g = got.members[i].second;
    SCOPED_TRACE(name);
    if (w.IsArray()) {
      ExpectDoubles(g.Array().ToDoubles(), w.Array().ToDoubles(), 1e-9);
    } else if (name.find("Angle") != std::string::npos || name == "Rotation") {
      EXPECT_NEAR(std::remainder(CDbl(g) - CDbl(w), 2 * kPi), 0, kGeoTol);
    } else if (w.IsNumber()) {
      EXPECT_NEAR(CDbl(g), CDbl(w), kGeoTol);
    } else {
      EXPECT_EQ(CStr(g), CStr(w));
    }
  }
}

TEST_F(TransformTest, InversePairsGiveEveryKindBackUnchanged) {
  // The inverse of TransformBy M (a quarter turn about Z, then (5,0,0)) is
  // Rᵀ with translation −Rᵀt = (0,5,0).
  const Variant m = Matrix({0, -1, 0, 5, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  const Variant m_inv = Matrix({0, 1, 0, 0, -1, 0, 0, 5, 0, 0, 1, 0, 0, 0, 0, 1});
  const struct {
    const char* what;
    std::function<ObjectRef(const ObjectRef&)> there_and_back;
  } pairs[] = {
      {"rotate a then -a",
       [](const ObjectRef& e) {
         CallMethod(e, "Rotate", {Pt(3, -2), Variant(0.7)});
         CallMethod(e, "Rotate", {Pt(3, -2), Variant(-0.7)});
         return e;
       }},
      {"scale f then 1/f",
       [](const ObjectRef& e) {
         CallMethod(e, "ScaleEntity", {Pt(-1, 4), Variant(2.5)});
         CallMethod(e, "ScaleEntity", {Pt(-1, 4), Variant(0.4)});
         return e;
       }},
      {"rotate3d a then -a",
       [](const ObjectRef& e) {
         CallMethod(e, "Rotate3D", {Pt(0, 0, 0), Pt(1, 1, 1), Variant(1.1)});
         CallMethod(e, "Rotate3D", {Pt(0, 0, 0), Pt(1, 1, 1), Variant(-1.1)});
         return e;
       }},
      {"mirror twice",
       [](const ObjectRef& e) {
         ObjectRef once = CallMethod(e, "Mirror", {Pt(1, 0), Pt(2, 3)}).Object();
         return CallMethod(once, "Mirror", {Pt(1, 0), Pt(2, 3)}).Object();
       }},
      {"transform by M then M^-1",
       [&](const ObjectRef& e) {
         CallMethod(e, "TransformBy", {m});
         CallMethod(e, "TransformBy", {m_inv});
         return e;
       }},
  };
  ObjectRef block = CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {Pt(0, 0), Variant("B")}).Object();
  CallMethod(block, "AddLine", {Pt(0, 0), Pt(2, 1)});
  CallMethod(block, "AddArc", {Pt(1, 0), Variant(1.0), Variant(0.0), Variant(2.0)});
  CallMethod(block, "AddAttribute", {Variant(0.5), Variant(int32_t(0)), Variant("P"), Pt(0, 2),
                                     Variant("TAG"), Variant("VAL")});
  const struct {
    const char* what;
    std::function<ObjectRef()> make;
    std::vector<std::string> members;
  } kinds[] = {
      {"arc", [&] {
         return CallMethod(ms, "AddArc", {Pt(1, 2), Variant(3.0), Variant(0.5), Variant(2.5)}).Object();
       }, {"Center", "Radius", "StartAngle", "EndAngle", "Normal"}},
      {"polyline with bulges on -Z", [&] {
         ObjectRef pl = HalfCircleOnNegativeZ();
         LetProperty(pl, "Elevation", Variant(1.5));
         return pl;
       }, {"Coordinates", "Elevation", "Normal"}},
      {"ellipse", [&] {
         return CallMethod(ms, "AddEllipse", {Pt(1, 1), Pt(3, 1), Variant(0.4)}).Object();
       }, {"Center", "MajorAxis", "RadiusRatio"}},
      {"rotated text", [&] {
         ObjectRef t = CallMethod(ms, "AddText", {Variant("Hello"), Pt(2, 3), Variant(1.5)}).Object();
         LetProperty(t, "Rotation", Variant(0.3));
         return t;
       }, {"InsertionPoint", "Rotation", "Height", "Backward", "UpsideDown"}},
      {"mtext", [&] {
         ObjectRef t = CallMethod(ms, "AddMText", {Pt(-1, 2), Variant(6.0), Variant("AB\\PCD")}).Object();
         LetProperty(t, "Rotation", Variant(0.2));
         return t;
       }, {"InsertionPoint", "Rotation", "Width", "Height"}},
      {"block reference with an attribute", [&] {
         return CallMethod(ms, "InsertBlock", {Pt(4, 1), Variant("B"), Variant(1.5), Variant(1.5),
                                               Variant(1.5), Variant(0.4)}).Object();
       }, {"InsertionPoint", "Rotation", "XScaleFactor", "YScaleFactor", "ZScaleFactor", "Normal"}},
  };
  for (const auto& k : kinds) {
    for (const auto& p : pairs) {
      SCOPED_TRACE(std::string(k.what) + ", " + p.what);
      ObjectRef e = k.make();
      const Snapshot before = Take(e, k.members);
      ObjectRef back = p.there_and_back(e);
      ExpectSame(Take(back, k.members), before);
    }
  }
}

TEST_F(TransformTest, HatchLoopsPatternAndElevationFollowTheTransform) {
  // A 2 × 2 square hatch at the origin: area 4, pattern angle 0, scale 1.
  auto square_hatch = [&] {
    ObjectRef hatch = CallMethod(ms, "AddHatch", {Variant(int32_t(1)), Variant("ANSI31"), Variant(false)}).Object();
    ObjectRef boundary = Polyline({0, 0, 2, 0, 2, 2, 0, 2});
    LetProperty(boundary, "Closed", Variant(true));
    CallMethod(hatch, "AppendOuterLoop", {Variant(SafeArray::Of({Variant(boundary)}))});
    return hatch;
  };
  const struct {
    const char* what;
    std::function<ObjectRef(const ObjectRef&)> apply;
    Vec3 lo, hi;
    double area, pattern_scale, elevation;
    Vec3 normal;
  } cases[] = {
      {"quarter turn about the origin",
       [](const ObjectRef& h) { CallMethod(h, "Rotate", {Pt(0, 0), Variant(kPi / 2)}); return h; },
       {-2, 0, 0}, {0, 2, 0}, 4, 1, 0, {0, 0, 1}},
      {"scale 3: nine times the area, pattern three times the size",
       [](const ObjectRef& h) { CallMethod(h, "ScaleEntity", {Pt(0, 0), Variant(3.0)}); return h; },
       {0, 0, 0}, {6, 6, 0}, 36, 3, 0, {0, 0, 1}},
      {"move up 4: the elevation follows",
       [](const ObjectRef& h) { CallMethod(h, "Move", {Pt(0, 0, 0), Pt(1, 1, 4)}); return h; },
       {1, 1, 4}, {3, 3, 4}, 4, 1, 4, {0, 0, 1}},
      {"mirror in x = 0",
       [](const ObjectRef& h) { return CallMethod(h, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object(); },
       {-2, 0, 0}, {0, 2, 0}, 4, 1, 0, {0, 0, 1}},
      // Up 4, then a quarter turn about +X: (x, y, 4) → (x, −4, y); the
      // plane y = −4 lies 4 along the new normal −Y.
      {"lifted then turned about X",
       [](const ObjectRef& h) {
         CallMethod(h, "Move", {Pt(0, 0, 0), Pt(0, 0, 4)});
         CallMethod(h, "Rotate3D", {Pt(0, 0, 0), Pt(1, 0, 0), Variant(kPi / 2)});
         return h;
       },
       {0, -4, 0}, {2, -4, 2}, 4, 1, 4, {0, -1, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ObjectRef out = c.apply(square_hatch());
    ExpectBox(out, c.lo, c.hi);
    EXPECT_NEAR(CDbl(GetProperty(out, "Area")), c.area, kGeoTol);
    EXPECT_NEAR(CDbl(GetProperty(out, "PatternScale")), c.pattern_scale, kGeoTol);
    EXPECT_NEAR(CDbl(GetProperty(out, "Elevation")), c.elevation, kGeoTol);
    ExpectPoint(GetProperty(out, "Normal"), c.normal);
  }
  // The pattern turns with the hatch.
  ObjectRef turned = square_hatch();
  CallMethod(turned, "Rotate", {Pt(5, 5), Variant(kPi / 3)});
  EXPECT_NEAR(CDbl(GetProperty(turned, "PatternAngle")), kPi / 3, kGeoTol);
}

TEST_F(TransformTest, DimensionsTransformTheirPointsAndOnlyTheirOwnPicture) {
  // A rotated dimension measuring (0,0)-(4,0) along X, its line at y = 2,
  // drawn by a picture block holding that line.
  auto make = [&] {
    ObjectRef picture = CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {Pt(0, 0), Variant("*U")}).Object();
    CallMethod(picture, "AddLine", {Pt(0, 2), Pt(4, 2)});
    Dimension::Data d;
    d.kind = DimensionKind::kRotated;
    d.p13 = {0, 0, 0};
    d.p14 = {4, 0, 0};
    d.p10 = {4, 2, 0};
    d.p11 = {2, 2.5, 0};
    d.block = AsObject<BlockRecord>(picture.get());
    return document().Ref(Loaded<Dimension>(d));
  };
  ObjectRef dim = make();
  ExpectBox(dim, {0, 2, 0}, {4, 2, 0});
  EXPECT_NEAR(CDbl(GetProperty(dim, "Measurement")), 4, kGeoTol);
  {
    SCOPED_TRACE("quarter turn: the dimension now measures along Y");
    CallMethod(dim, "Rotate", {Pt(0, 0), Variant(kPi / 2)});
    EXPECT_NEAR(CDbl(GetProperty(dim, "Rotation")), kPi / 2, kGeoTol);
    EXPECT_NEAR(CDbl(GetProperty(dim, "Measurement")), 4, kGeoTol);
    ExpectPoint(GetProperty(dim, "TextPosition"), {-2.5, 2, 0});
    ExpectBox(dim, {-2, 0, 0}, {-2, 4, 0});
  }
  {
    SCOPED_TRACE("scale 2 doubles the measurement");
    CallMethod(dim, "ScaleEntity", {Pt(0, 0), Variant(2.0)});
    EXPECT_NEAR(CDbl(GetProperty(dim, "Measurement")), 8, kGeoTol);
    ExpectBox(dim, {-4, 0, 0}, {-4, 8, 0});
  }
  {
    SCOPED_TRACE("a mirrored copy leaves the original's picture where it was");
    ObjectRef other = make();
    ObjectRef copy = CallMethod(other, "Mirror", {Pt(-1, 0), Pt(-1, 1)}).Object();
    // x ↦ −2 − x: the picture line (0,2)-(4,2) goes to (−6,2)-(−2,2).
    ExpectBox(copy, {-6, 2, 0}, {-2, 2, 0});
    ExpectBox(other, {0, 2, 0}, {4, 2, 0});
    EXPECT_NEAR(CDbl(GetProperty(copy, "Measurement")), 4, kGeoTol);
  }
}

TEST_F(TransformTest, ImagesTurnAndScaleTheirFrame) {
  // 200 × 100 pixels of 0.01: a 2 × 1 frame with its corner at (1,1).
  ImageData d;
  d.origin = {1, 1, 0};
  d.u = {0.01, 0, 0};
  d.v = {0, 0.01, 0};
  d.width_pixels = 200;
  d.height_pixels = 100;
  ObjectRef image = document().Ref(Loaded<RasterImage>(d));
  ExpectBox(image, {1, 1, 0}, {3, 2, 0});
  // A quarter turn about the corner: width runs up +Y, height along −X.
  CallMethod(image, "Rotate", {Pt(1, 1), Variant(kPi / 2)});
  EXPECT_NEAR(CDbl(GetProperty(image, "Rotation")), kPi / 2, kGeoTol);
  EXPECT_NEAR(CDbl(GetProperty(image, "ImageWidth")), 2, kGeoTol);
  EXPECT_NEAR(CDbl(GetProperty(image, "ImageHeight")), 1, kGeoTol);
  ExpectBox(image, {0, 1, 0}, {1, 3, 0});
  CallMethod(image, "ScaleEntity", {Pt(1, 1), Variant(2.0)});
  EXPECT_NEAR(CDbl(GetProperty(image, "ImageWidth")), 4, kGeoTol);
  ExpectPoint(GetProperty(image, "Origin"), {1, 1, 0});
  ExpectBox(image, {-1, 1, 0}, {1, 5, 0});
}

TEST_F(TransformTest, MTextTurnsScalesAndReadsForwardWhenMirrored) {
  ObjectRef t = CallMethod(ms, "AddMText", {Pt(1, 2), Variant(4.0), Variant("AB")}).Object();
  const double height = CDbl(GetProperty(t, "Height"));
  CallMethod(t, "Rotate", {Pt(0, 0), Variant(kPi / 2)});
  ExpectPoint(GetProperty(t, "InsertionPoint"), {-2, 1, 0});
  EXPECT_NEAR(CDbl(GetProperty(t, "Rotation")), kPi / 2, kGeoTol);
  CallMethod(t, "ScaleEntity", {Pt(0, 0), Variant(2.0)});
  ExpectPoint(GetProperty(t, "InsertionPoint"), {-4, 2, 0});
  EXPECT_NEAR(CDbl(GetProperty(t, "Width")), 8, kGeoTol);
  EXPECT_NEAR(CDbl(GetProperty(t, "Height")), 2 * height, kGeoTol);
  // Mirrored in y = 0 the glyphs would read down −Y; multiline text never
  // shows mirrored, and like single-line text it takes the reading
  // direction closest to the original: still up +Y (rotation π/2).
  ObjectRef m = CallMethod(t, "Mirror", {Pt(0, 0), Pt(1, 0)}).Object();
  EXPECT_NEAR(CDbl(GetProperty(m, "Rotation")), kPi / 2, kGeoTol);
  EXPECT_NEAR(CDbl(GetProperty(m, "Width")), 8, kGeoTol);
}

TEST_F(TransformTest, TransformByAppliesRowMajorMatricesAndRefusesWhatCannotBeHeld) {
  {
    SCOPED_TRACE("translation in the last column");
    ObjectRef line = Line(0, 0, 1, 0);
    CallMethod(line, "TransformBy", {Matrix({1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1})});
    ExpectPoint(GetProperty(line, "StartPoint"), {1, 2, 3});
    ExpectPoint(GetProperty(line, "EndPoint"), {2, 2, 3});
  }
  {
    SCOPED_TRACE("non-uniform scale of a line");
    ObjectRef line = Line(1, 1, 2, 0);
    CallMethod(line, "TransformBy", {Matrix({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})});
    ExpectPoint(GetProperty(line, "StartPoint"), {2, 3, 0});
    ExpectPoint(GetProperty(line, "EndPoint"), {4, 0, 0});
  }
  const double nan = std::nan("");
  const struct {
    const char* what;
    Variant matrix;
    int32_t number;
    const char* text;
  } refusals[] = {
      {"a circle cannot become an ellipse", Matrix({2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}),
       -2145386493, "Invalid input"},
      {"singular", Matrix({0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}), -2145386493, "Invalid input"},
      {"projective last row", Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1}), -2145386493,
       "Invalid input"},
      {"not a number", Matrix({1, 0, 0, nan, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}), -2145386493,
       "Invalid input"},
      {"3 x 3", Matrix({1, 0, 0, 0, 1, 0, 0, 0, 1}, 3), kScodeInvalidArgument,
       "Invalid argument TransformationMatrix in TransformBy"},
      {"flat 16", Doubles({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}), kScodeInvalidArgument,
       "Invalid argument TransformationMatrix in TransformBy"},
  };
  for (const auto& r : refusals) {
    SCOPED_TRACE(r.what);
    ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(1, 1), Variant(2.0)}).Object();
    const AutomationError raised = ErrorOf([&] { CallMethod(circle, "TransformBy", {r.matrix}); });
    EXPECT_EQ(raised.Number(), r.number);
    EXPECT_EQ(raised.Description(), r.text);
    // Nothing changed.
    EXPECT_NEAR(CDbl(GetProperty(circle, "Radius")), 2, 0);
    ExpectPoint(GetProperty(circle, "Center"), {1, 1, 0}, 0);
  }
}

TEST_F(TransformTest, MirroredTextFillsTheMirroredBoxForEveryAlignment) {
  // w: how wide "AB" of height 1 is in the style's face.
  ObjectRef probe = CallMethod(ms, "AddText", {Variant("AB"), Pt(0, 0), Variant(1.0)}).Object();
  std::array<Variant, 2> box;
  CallMethodRef(probe, "GetBoundingBox", box);
  const double w = box[1].Array().ToDoubles()[0] - box[0].Array().ToDoubles()[0];
  ASSERT_GT(w, 0.5);
  const struct {
    const char* what;
    int32_t alignment;
    Vec3 insertion, alignment_point;  // the second unused for Left
    Vec3 lo, hi;                      // the box before mirroring
  } texts[] = {
      {"left", 0, {1, 0, 0}, {}, {1, 0, 0}, {1 + w, 1, 0}},
      {"center", 1, {}, {2, 0, 0}, {2 - w / 2, 0, 0}, {2 + w / 2, 1, 0}},
      {"right", 2, {}, {3, 0, 0}, {3 - w, 0, 0}, {3, 1, 0}},
      // Aligned over 2 units keeps the proportions: height 2 / w.
      {"aligned", 3, {1, 0, 0}, {3, 0, 0}, {1, 0, 0}, {3, 2 / w, 0}},
      {"middle", 4, {}, {2, 0.5, 0}, {2 - w / 2, 0, 0}, {2 + w / 2, 1, 0}},
      {"fit", 5, {1, 0, 0}, {3, 0, 0}, {1, 0, 0}, {3, 1, 0}},
      {"top left", 6, {}, {1, 1, 0}, {1, 0, 0}, {1 + w, 1, 0}},
      {"top right", 8, {}, {3, 1, 0}, {3 - w, 0, 0}, {3, 1, 0}},
      {"middle center", 10, {}, {2, 0.5, 0}, {2 - w / 2, 0, 0}, {2 + w / 2, 1, 0}},
      {"bottom right", 14, {}, {3, 0, 0}, {3 - w, 0, 0}, {3, 1, 0}},
  };
  for (int mirrtext : {0, 1}) {
    document().sysvar_values()["MIRRTEXT"] = Variant(int16_t(mirrtext));
    for (const auto& t : texts) {
      for (bool vertical : {true, false}) {
        SCOPED_TRACE(std::string(t.what) + (vertical ? ", in x = 0" : ", in y = 0") +
                     ", MIRRTEXT " + std::to_string(mirrtext));
        ObjectRef text = CallMethod(ms, "AddText", {Variant("AB"), Pt(0, 0), Variant(1.0)}).Object();
        LetProperty(text, "Alignment", Variant(t.alignment));
        if (t.alignment == 0 || t.alignment == 3 || t.alignment == 5) {
          LetProperty(text, "InsertionPoint", Pt(t.insertion.x, t.insertion.y));
        }
        if (t.alignment != 0) {
          LetProperty(text, "TextAlignmentPoint", Pt(t.alignment_point.x, t.alignment_point.y));
        }
        ExpectBox(text, t.lo, t.hi);
        ObjectRef m = CallMethod(text, "Mirror", {Pt(0, 0), vertical ? Pt(0, 1) : Pt(1, 0)}).Object();
        if (vertical) {
          ExpectBox(m, {-t.hi.x, t.lo.y, 0}, {-t.lo.x, t.hi.y, 0});
        } else {
          ExpectBox(m, {t.lo.x, -t.hi.y, 0}, {t.hi.x, -t.lo.y, 0});
        }
        if (mirrtext == 0) {
          // Readable: the same reading direction, glyphs neither reversed
          // nor upside down.
          EXPECT_NEAR(std::remainder(CDbl(GetProperty(m, "Rotation")), 2 * kPi), 0, kGeoTol);
          ExpectProperties(m, {{"Backward", false}, {"UpsideDown", false}});
        }
      }
    }
  }
}

TEST_F(TransformTest, RotateAndMirrorWorkAboutTheUcsZAxis) {
  // A front-view UCS: X = (1,0,0), Y = (0,0,1), Z = X × Y = (0,−1,0).
  auto& vars = document().sysvar_values();
  vars["UCSXDIR"] = Pt(1, 0, 0);
  vars["UCSYDIR"] = Pt(0, 0, 1);
  ObjectRef line = CallMethod(ms, "AddLine", {Pt(1, 0, 0), Pt(2, 0, 5)}).Object();
  // A quarter turn about a = −Y through the origin takes v to a × v (both
  // points are perpendicular to a): (1,0,0) → (0,0,1), (2,0,5) → (−5,0,2).
  CallMethod(line, "Rotate", {Pt(0, 0, 0), Variant(kPi / 2)});
  ExpectPoint(GetProperty(line, "StartPoint"), {0, 0, 1});
  ExpectPoint(GetProperty(line, "EndPoint"), {-5, 0, 2});
  // The mirror plane holds the line (0,0,0)-(0,0,1) and the UCS Z axis −Y:
  // it is x = 0.
  ObjectRef m = CallMethod(line, "Mirror", {Pt(0, 0, 0), Pt(0, 0, 1)}).Object();
  ExpectPoint(GetProperty(m, "StartPoint"), {0, 0, 1});
  ExpectPoint(GetProperty(m, "EndPoint"), {5, 0, 2});
}

TEST_F(TransformTest, MultipleInsertGridScalesAndMirrorsWithItsCells) {
  ObjectRef block = CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {Pt(0, 0), Variant("DOT")}).Object();
  CallMethod(block, "AddCircle", {Pt(0, 0), Variant(0.5)});
  // Two columns 3 apart, one row: cells at (0,0) and (3,0); box (−0.5,−0.5)-(3.5,0.5).
  ObjectRef grid = CallMethod(ms, "InsertBlock", {Pt(0, 0), Variant("DOT"), Variant(1.0), Variant(1.0),
                                                  Variant(1.0), Variant(0.0)}).Object();
  auto& d = As<BlockRef>(grid.get())->mutable_data();
  d.columns = 2;
  d.column_spacing = 3;
  ExpectBox(grid, {-0.5, -0.5, 0}, {3.5, 0.5, 0});
  {
    SCOPED_TRACE("mirror in x = 0: cells at (0,0) and (−3,0)");
    ObjectRef m = CallMethod(grid, "Mirror", {Pt(0, 0), Pt(0, 1)}).Object();
    ExpectBox(m, {-3.5, -0.5, 0}, {0.5, 0.5, 0});
  }
  {
    SCOPED_TRACE("scale 2: cells at (0,0) and (6,0), radius 1");
    CallMethod(grid, "ScaleEntity", {Pt(0, 0), Variant(2.0)});
    ExpectBox(grid, {-1, -1, 0}, {7, 1, 0});
  }
}

}  // namespace
}  // namespace tovik::host
