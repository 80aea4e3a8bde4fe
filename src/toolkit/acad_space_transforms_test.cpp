#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <random>

#include "geometry/trans_matrix.h"
#include "geometry/vector_service.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"
#include "toolkit/acad_space.h"
#include "toolkit/object_identity.h"

namespace tovik {
namespace {

using geometry::Vec3;

Vec3 V(const Variant& p) { return VectorOf(p); }

class Transforms : public LinkedHostTest {
 protected:
  // A block "B" whose origin is `origin`, holding one line from a to b.
  void MakeBlock(Vec3 origin, Vec3 a, Vec3 b) {
    ObjectRef block = AddBlock("B");
    LetProperty(block, "Origin", Pt(origin.x, origin.y, origin.z));
    CallMethod(block, "AddLine", {Pt(a.x, a.y, a.z), Pt(b.x, b.y, b.z)});
  }
  static Vec3 FromBlock(const ObjectRef& bref, Vec3 p, bool ignore = false, bool vector = false) {
    Variant out;
    AcadSpace::TranslatePointFromBlock(PointOf(p), bref, out, Variant(ignore), Variant(vector));
    return V(out);
  }
  static Vec3 ToBlock(const ObjectRef& bref, Vec3 p, bool ignore = false, bool vector = false) {
    Variant out;
    AcadSpace::TranslatePointToBlock(PointOf(p), bref, out, Variant(ignore), Variant(vector));
    return V(out);
  }
};

TEST_F(Transforms, TranslatePointScalesThenTurnsThenMoves) {
  struct Case {
    const char* what;
    Vec3 p, displacement;
    double rotation, xs, ys;
    std::optional<Vec3> base;
    Vec3 expected;
  } cases[] = {
      {"scale touches x and y only", {1, 1, 5}, {}, 0, 2, 3, Vec3{}, {2, 3, 5}},
      {"missing base turns about the world origin", {1, 0, 0}, {}, kPi / 2, 1, 1, {}, {0, 1, 0}},
      // (2,1) - base (1,1) = (1,0) scaled to (2,0): (3,1), turned about
      // (1,1) to (1,3), moved by (10,0,1).
      {"about a base point", {2, 1, 0}, {10, 0, 1}, kPi / 2, 2, 5, Vec3{1, 1, 0}, {11, 3, 1}},
      {"mirror in y", {3, 4, 0}, {}, 0, 1, -1, Vec3{0, 2, 0}, {3, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Variant p = PointOf(c.p);
    AcadSpace::TranslatePoint(p, PointOf(c.displacement), c.rotation, c.xs, c.ys,
                              c.base ? PointOf(*c.base) : Variant::Missing());
    EXPECT_VEC_CLOSE(V(p), c.expected);
  }
  Variant p = PointOf({10, 1, 0});
  EXPECT_EQ(ErrorOf([&] { AcadSpace::TranslatePoint(p, PointOf({}), 0, 1e308, 1); }).Number(), kErrOverflow);
  EXPECT_VEC_CLOSE(V(p), (Vec3{10, 1, 0}));
}

// Random references: mirrored, turned, scaled unevenly, any definition
// origin, some on the underside (normal (0, 0, -1)).
TEST_F(Transforms, BlockMappingsAreInversesAndTheMatrixPlacesTheDefinitionAsTheHostDoes) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> coord(-50, 50), angle(-7, 7), mag(0.2, 4);
  auto factor = [&] { return mag(rng) * (rng() % 3 == 0 ? -1 : 1); };
  Vec3 a{coord(rng), coord(rng), 0}, b{coord(rng), coord(rng), 0};
  MakeBlock({coord(rng), coord(rng), coord(rng)}, a, b);
  for (int i = 0; i < 40; ++i) {
    SCOPED_TRACE(i);
    ObjectRef bref = Insert(ms, "B", {coord(rng), coord(rng), coord(rng)},
                            {factor(), factor(), factor()}, angle(rng));
    bool underside = i % 4 == 3;
    if (underside) LetProperty(bref, "Normal", Pt(0, 0, -1));
    Vec3 p{coord(rng), coord(rng), coord(rng)};
    for (bool ignore : {false, true}) {
      for (bool vector : {false, true}) {
        EXPECT_VEC_CLOSE(ToBlock(bref, FromBlock(bref, p, ignore, vector), ignore, vector), p);
        EXPECT_VEC_CLOSE(FromBlock(bref, ToBlock(bref, p, ignore, vector), ignore, vector), p);
      }
    }
    // IsVector drops the insertion point and the origin out.
    EXPECT_VEC_CLOSE(FromBlock(bref, p, false, true), FromBlock(bref, p) - FromBlock(bref, {}));
    auto m = ObjectAs<TransMatrix>(Variant(AcadSpace::BRef_TransMatrix(bref)))->ToMatrix4();
    Vec3 ma = m.TransformPoint(a), mb = m.TransformPoint(b);
    std::array<Variant, 2> box;
    CallMethodRef(bref, "GetBoundingBox", box);
    EXPECT_VEC_CLOSE(V(box[0]), (Vec3{std::min(ma.x, mb.x), std::min(ma.y, mb.y),
                                      std::min(ma.z, mb.z)}));
    EXPECT_VEC_CLOSE(V(box[1]), (Vec3{std::max(ma.x, mb.x), std::max(ma.y, mb.y),
                                      std::max(ma.z, mb.z)}));
    // On the upper side the planar mapping and the full placement agree in
    // x and y; z is not scaled by the planar one.
    if (!underside) {
      Vec3 planar = FromBlock(bref, a);
      EXPECT_VEC_CLOSE((Vec3{planar.x, planar.y, 0}), (Vec3{ma.x, ma.y, 0}));
    }
  }
}

TEST_F(Transforms, IgnoreScaleKeepsMirroringAndTheUcsCarriesIt) {
  MakeBlock({}, {0, 0, 0}, {1, 0, 0});
  ObjectRef bref = Insert(ms, "B", {10, 20, 0}, {-2.5, 4, 1}, kPi / 2);
  EXPECT_VEC_CLOSE(FromBlock(bref, {1, 0, 0}, true), (Vec3{10, 19, 0}));
  EXPECT_VEC_CLOSE(FromBlock(bref, {1, 1, 0}, false, true), (Vec3{-4, -2.5, 0}));
  auto ucs = ObjectAs<UCS>(Variant(AcadSpace::BRef_UCS(bref)));
  EXPECT_VEC_CLOSE(ucs->origin, (Vec3{10, 20, 0}));
  EXPECT_VEC_CLOSE(ucs->x_axis, (Vec3{0, -1, 0}));
  EXPECT_VEC_CLOSE(ucs->y_axis, (Vec3{-1, 0, 0}));
  EXPECT_VEC_CLOSE(ucs->z_axis, (Vec3{0, 0, -1}));
  // An inch drawing: the origin in millimetres.
  CallMethod(doc, "SetVariable", {Variant("INSUNITS"), Variant(int16_t{1})});
  ucs = ObjectAs<UCS>(Variant(AcadSpace::BRef_UCS(bref, Variant(true))));
  EXPECT_VEC_CLOSE(ucs->origin, (Vec3{254, 508, 0}));
}

TEST_F(Transforms, TranslateCoordinatesConvertsInPlaceUntilTheListEnds) {
  auto& vars = document().sysvar_values();
  vars["UCSORG"] = Pt(100, 0, 7);
  vars["UCSXDIR"] = Pt(0, 1, 0);
  vars["UCSYDIR"] = Pt(-1, 0, 0);
  struct Case {
    const char* what;
    std::vector<double> list;
    Variant dims;
    std::vector<double> expected;
  } cases[] = {
      {"points of three", {100, 5, 7, 101, 0, 8}, Variant::Missing(), {5, 0, 0, 0, -1, 1}},
      // z goes to the host as 0 and is not written back.
      {"pairs", {100, 5, 101, 0}, Variant(int16_t{2}), {5, 0, 0, -1}},
      {"a partial last point stays as it was", {100, 5, 7, 1, 2}, Variant::Missing(),
       {5, 0, 0, 1, 2}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Variant list(SafeArray::OfDoubles(c.list));
    AcadSpace::TranslateCoordinates(doc, list, 0, 1, c.dims);
    std::vector<double> got = list.Array().ToDoubles();
    ASSERT_EQ(got.size(), c.expected.size());
    for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], c.expected[i], kGeoTol) << i;
  }
  EXPECT_VEC_CLOSE(V(AcadSpace::UCSPoint(Pt(100, 5, 7))), (Vec3{5, 0, 0}));
  EXPECT_VEC_CLOSE(V(AcadSpace::WCSPoint(Pt(5, 0, 0))), (Vec3{100, 5, 7}));
  Variant not_a_list(1.0);
  AcadSpace::TranslateCoordinates(doc, not_a_list, 0, 1);  // never raises
}

TEST_F(Transforms, Align3DMovesAnEntityByTheRigidMotionOfItsPoints) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> coord(-20, 20);
  for (int i = 0; i < 10; ++i) {
    SCOPED_TRACE(i);
    Vec3 axis{coord(rng), coord(rng), coord(rng)}, shift{coord(rng), coord(rng), coord(rng)};
    auto motion = *geometry::Matrix4::Rotation({}, axis, coord(rng));
    auto move = [&](Vec3 p) { return motion.TransformPoint(p) + shift; };
    Vec3 b[3] = {{coord(rng), coord(rng), coord(rng)}, {coord(rng), coord(rng), coord(rng)},
                 {coord(rng), coord(rng), coord(rng)}};
    if (i == 0) motion = geometry::Matrix4();  // a pure move: both turns skipped
    Vec3 s{coord(rng), coord(rng), coord(rng)}, e{coord(rng), coord(rng), coord(rng)};
    ObjectRef line = CallMethod(ms, "AddLine", {PointOf(s), PointOf(e)}).Object();
    AcadSpace::Align3D(line, PointOf(b[0]), PointOf(b[1]), PointOf(b[2]), PointOf(move(b[0])),
                       PointOf(move(b[1])), PointOf(move(b[2])));
    EXPECT_VEC_CLOSE(V(GetProperty(line, "StartPoint")), move(s));
    EXPECT_VEC_CLOSE(V(GetProperty(line, "EndPoint")), move(e));
  }
}

TEST_F(Transforms, ScreenViewComesFromTheViewVariables) {
  // The new drawing's view: 1600 x 900 pixels, 200 units high, centred at
  // (88.9, 100).
  AcadSpace::ScreenView v = AcadSpace::GetAcadScreenWCS(doc);
  EXPECT_EQ(v.window_width, 1600);
  EXPECT_EQ(v.window_height, 900);
  EXPECT_DOUBLE_EQ(v.acad_width, 200.0 * 1600 / 900);
  EXPECT_VEC_CLOSE(V(v.tl_corner), (V(v.view_centre) + Vec3{-v.acad_width / 2, 100, 0}));
  document().sysvar_values()["VIEWTWIST"] = Variant(kPi / 2);
  v = AcadSpace::GetAcadScreenWCS(doc);
  // Twisted a quarter turn, the window's top-left lies right and up.
  EXPECT_VEC_CLOSE(V(v.tl_corner), (V(v.view_centre) + Vec3{100, v.acad_width / 2, 0}));
  document().sysvar_values()["SCREENSIZE"] = Variant(SafeArray::OfDoubles({0, 0}));
  EXPECT_EQ(ErrorOf([&] { AcadSpace::GetAcadScreenWCS(doc); }).Number(), kErrOverflow);
}

TEST_F(Transforms, CurSpaceIsModelSpaceUnlessPaperSpaceIsWorkedIn) {
  ObjectRef model = GetProperty(doc, "ModelSpace").Object();
  EXPECT_TRUE(SameObject(AcadSpace::CurSpace(doc), model));
  SetProperty(doc, "ActiveLayout",
              CallMethod(GetProperty(doc, "Layouts").Object(), "Item", {Variant("Layout1")}).Object());
  EXPECT_TRUE(SameObject(AcadSpace::CurSpace(doc), GetProperty(doc, "PaperSpace").Object()));
  LetProperty(doc, "MSpace", Variant(true));
  EXPECT_TRUE(SameObject(AcadSpace::CurSpace(doc), model));
}

TEST_F(Transforms, IdentityWorksInBothHostBuilds) {
  for (bool id32 : {false, true}) {
    SCOPED_TRACE(id32);
    ResetLibraryState();
    app_ = host::Application::Create({.id32_only = id32});
    Link();  // the library follows the new host
    ObjectRef d = app_->ActiveDocumentRef();
    ObjectRef line = CallMethod(GetProperty(d, "ModelSpace").Object(), "AddLine",
                                {Pt(0, 0), Pt(1, 1)}).Object();
    Variant id = ObjectIdOf(line);
    EXPECT_EQ(id.Type(), id32 ? VarType::kLong : VarType::kLongLong);
    // An older build answers only the 32-bit members, and its window
    // handle is a Long.
    EXPECT_EQ(ErrorOf([&] { GetProperty(line, "ObjectID"); }).Number(),
              id32 ? kErrNotSupported : 0);
    EXPECT_EQ(GetProperty(ObjectRef(app_), "HWND").Type(),
              id32 ? VarType::kLong : VarType::kLongLong);
    ObjectRef none;
    EXPECT_TRUE(SameObject(ObjectFromId(id, none), line));
    EXPECT_TRUE(SameObject(none, d));  // the drawing used is written back
    ObjectRef model = GetProperty(d, "ModelSpace").Object();
    EXPECT_TRUE(SameObject(ObjectFromId(OwnerIdOf(line), none), model));
    EXPECT_TRUE(SameObject(AcadSpace::Block_OwnerOf(line), model));
    EXPECT_EQ(ErrorOf([&] { ObjectIdOf(GetProperty(d, "Utility").Object()); }).Number(), kErrNotSupported);
    // The draw-order table is made on first read and then found again.
    ObjectRef space;
    ObjectRef table = SortentsTable(space);
    EXPECT_TRUE(SameObject(space, GetProperty(d, "ModelSpace").Object()));
    EXPECT_EQ(TypeName(Variant(table)), "IAcadSortentsTable");
    ObjectRef again;
    EXPECT_TRUE(SameObject(SortentsTable(again), table));
  }
}

}  // namespace
}  // namespace tovik
