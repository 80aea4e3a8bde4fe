// Polylines and loops in millimetre, inch and foot drawings, and
// sub-entities copied out of nested references, on the headless host.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "frame/conversions.h"
#include "geometry/vector_service.h"
#include "host/dxf/dxf_file.h"
#include "host/entities/entity.h"
#include "selection/dynamic_ss.h"
#include "tests/support/dxf_checks.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

using geometry::Vec3;

class Polylines : public LinkedHostTest {
 protected:
  void Units(int16_t code) { CallMethod(doc, "SetVariable", {Variant("INSUNITS"), Variant(code)}); }
  static std::vector<double> List(const Variant& v) { return v.Array().ToDoubles(); }
  static void ExpectList(const std::vector<double>& got, const std::vector<double>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], 1e-9) << "at " << i;
  }
  std::shared_ptr<DynamicSS> SetOf(std::initializer_list<ObjectRef> entities) {
    auto set = DynamicSS::Create();
    std::vector<Variant> items(entities.begin(), entities.end());
    set->Add(Variant(SafeArray::Of({Variant(SafeArray::OfVariants(items))})));
    return set;
  }
  static std::pair<Vec3, Vec3> Box(const ObjectRef& e) {
    std::array<Variant, 2> box;
    CallMethodRef(e, "GetBoundingBox", box);
    return {VectorOf(box[0]), VectorOf(box[1])};
  }
};

TEST_F(Polylines, EntitiesBecomeLoopsInMillimetresAndComeBack) {
  const struct {
    int16_t units;
    double mm;  // millimetres per drawing unit
  } drawings[] = {{4, 1}, {1, 25.4}, {2, 304.8}};
  for (const auto& d : drawings) {
    Units(d.units);
    ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(10, 0), Variant(5.0)}).Object();
    ObjectRef arc = CallMethod(ms, "AddArc", {Pt(0, 0), Variant(2.0), Variant(0.0), Variant(M_PI)}).Object();
    ObjectRef line = Line(1, 2, 3, 4);
    ObjectRef pline = Polyline({0, 0, 4, 0, 4, 3});
    CallMethod(pline, "SetBulge", {Variant(int16_t{1}), Variant(0.5)});
    LetProperty(pline, "Closed", Variant(true));
    const double k = d.mm;
    const struct {
      ObjectRef entity;
      std::vector<double> vertices, bulges;
    } cases[] = {
        {circle, {5 * k, 0, 15 * k, 0}, {1, 1}},
        {arc, {2 * k, 0, -2 * k, 0}, {1, 0}},  // a half circle: tan(pi / 4)
        {line, {1 * k, 2 * k, 3 * k, 4 * k}, {0, 0}},
        {pline, {0, 0, 4 * k, 0, 4 * k, 3 * k}, {0, 0.5, 0}},
    };
    for (const auto& c : cases) {
      std::shared_ptr<Loop7> loop = AcadSpace::LwPlineToLoop7(c.entity, Variant(), Variant());
      ExpectList(List(loop->Vertices()), c.vertices);
      ExpectList(List(loop->Bulges()), c.bulges);
      ObjectRef back = AcadSpace::LwPlineFromLoop7(*loop, nullptr, Variant());
      ExpectList(List(GetProperty(back, "Coordinates")), [&] {
        std::vector<double> drawing = c.vertices;
        for (double& v : drawing) v /= k;
        return drawing;
      }());
      EXPECT_TRUE(CBool(GetProperty(back, "Closed")));
    }
    // NoClose: a circle repeats its first vertex; NoMMConv keeps drawing units.
    ExpectList(List(AcadSpace::LwPlineToLoop7(circle, Variant(true), Variant(true))->Vertices()),
               {5, 0, 15, 0, 5, 0});
  }
  ExpectList(List(GetProperty(AcadSpace::LwRectangle(Pt(0, 0), Pt(2, 1), nullptr), "Coordinates")),
             {0, 0, 0, 1, 2, 1, 2, 0});
}

TEST_F(Polylines, HolesSplitAndHatchFromLoops) {
  ObjectRef square = Polyline({0, 0, 40, 0, 40, 40, 0, 40});
  LetProperty(square, "Closed", Variant(true));
  ObjectRef hole = CallMethod(ms, "AddCircle", {Pt(20, 20), Variant(10.0)}).Object();
  auto set = SetOf({square, hole});
  std::shared_ptr<Loop7s> loops = AcadSpace::LwPlinesToLoop7s(*set, Variant());
  EXPECT_TRUE(loops->Item(0)->is_outer());
  EXPECT_FALSE(loops->Item(1)->is_outer());

  // Split through the hole's centre: upper and lower each get half the
  // square and half the hole.
  Variant upper, lower;
  AcadSpace::LwPlinesSplit(*set, Pt(-5, 20), Pt(45, 20), upper, lower);
  for (const Variant& side : {upper, lower}) {
    auto pieces = ObjectAs<Loop7s>(side);
    ASSERT_EQ(pieces->Count(), 2);
    EXPECT_NEAR(std::fabs(pieces->Item(0)->Area()), 800, 1e-6);
    EXPECT_NEAR(std::fabs(pieces->Item(1)->Area()), 50 * M_PI, 1e-6);
    EXPECT_FALSE(pieces->Item(1)->is_outer());
  }
  // A point inside the square but in the hole's circle still counts as
  // within the square's outline; a line crossing out does not.
  EXPECT_TRUE(AcadSpace::LwPlineBoundTo(square, hole));
  EXPECT_FALSE(AcadSpace::LwPlineBoundTo(square, Line(39, 39, 41, 41)));
  EXPECT_TRUE(AcadSpace::LwPlineBoundTo(square, Line(0, 0, 40, 40)));  // ends on the boundary

  Variant hatch;
  AcadSpace::HatchRequest request;
  request.make = true;
  request.made = &hatch;
  auto plines = AcadSpace::LwPlineFromLoop7s(*loops, nullptr, request);
  EXPECT_EQ(plines->Count(), 2);
  EXPECT_NEAR(CDbl(GetProperty(hatch.Object(), "Area")), 1600 - 100 * M_PI, 1e-6);
  std::string path = ::testing::TempDir() + "/tovik_loops_hatch.dxf";
  host::dxf::InstallDxfFileIo(*app_);
  CallMethod(doc, "SaveAs", {Variant(path)});
  ObjectRef again = CallMethod(GetProperty(ObjectRef(app_), "Documents").Object(), "Open", {Variant(path)}).Object();
  ObjectRef read = CallMethod(again, "HandleToObject", {GetProperty(hatch.Object(), "Handle")}).Object();
  EXPECT_EQ(CLng(GetProperty(read, "NumberOfLoops")), 2);
  EXPECT_NEAR(CDbl(GetProperty(read, "Area")), 1600 - 100 * M_PI, 1e-6);
  EXPECT_EZDXF_ACCEPTS(path);
}

TEST_F(Polylines, TextBoundsAndPlacedOutlines) {
  ObjectRef text = CallMethod(ms, "AddText", {Variant("Bound"), Pt(10, 20), Variant(2.0)}).Object();
  LetProperty(text, "Rotation", Variant(M_PI / 6));
  auto [low, high] = Box(text);
  auto [pl_low, pl_high] = Box(AcadSpace::TextBoundPline(text, Variant::Missing(), Variant::Missing()));
  EXPECT_VEC_CLOSE(pl_low, low);
  EXPECT_VEC_CLOSE(pl_high, high);
  // A margin of 1 on every side of the turned box: each side moves out by 1.
  ObjectRef wide = AcadSpace::TextBoundPline(text, Variant(1.0), Variant(true));
  ObjectRef tight = AcadSpace::TextBoundPline(text, Variant::Missing(), Variant::Missing());
  EXPECT_NEAR(CDbl(GetProperty(wide, "Area")),
              CDbl(GetProperty(tight, "Area")) + CDbl(GetProperty(tight, "Length")) + 4, 1e-6);

  // An outline in a block placed twice its size at (5, 5): in millimetres of
  // an inch drawing's model space, from a millimetre block.
  ObjectRef block = AddBlock("P");
  LetProperty(block, "Units", Variant(int32_t{4}));
  ObjectRef outline = CallMethod(block, "AddLightWeightPolyline", {Variant(SafeArray::OfDoubles({0, 0, 1, 0, 1, 1}))}).Object();
  Units(1);
  ObjectRef ref = Insert(ms, "P", {5, 5, 0}, {2, 2, 2});
  Variant loop, base, normal;
  AcadSpace::TransSubLoop7(outline, Pt(0, 0), Variant(AcadSpace::BRef_TransMatrix(ref, Variant())), loop, base,
                           normal);
  ExpectList(List(ObjectAs<Loop7>(loop)->Vertices()), {5 * 25.4, 5 * 25.4, 7 * 25.4, 5 * 25.4, 7 * 25.4, 7 * 25.4});
  EXPECT_VEC_CLOSE(VectorOf(normal), (Vec3{0, 0, 1}));
}

TEST_F(Polylines, SubEntitiesAreCopiedWhereTheyAreShown) {
  ObjectRef inner = AddBlock("IN");
  ObjectRef circle = CallMethod(inner, "AddCircle", {Pt(3, 1), Variant(1.0)}).Object();
  ObjectRef outer = AddBlock("OUT");
  auto as_entity = [](const ObjectRef& e) { return std::dynamic_pointer_cast<host::Entity>(e); };
  ObjectRef nested, top;
  // Turned and scaled, mirrored (applied whole) and not (aligned and scaled).
  for (double x_scale : {-2.0, 2.0}) {
    nested = Insert(outer, "IN", {5, 2, 0}, {x_scale, 2, 2}, 0.5);
    top = Insert(ms, "OUT", {10, 20, 0}, {1.5, 1.5, 1.5}, 1.0);
    document().QueueInput(host::UserInput::Pick(as_entity(circle), {0, 0, 0}, {as_entity(nested), as_entity(top)}));
    Variant picked, chain;
    AcadSpace::SubEntSelect(picked, chain, Variant());
    EXPECT_TRUE(SameObject(picked.Object(), circle));
    ASSERT_EQ(chain.Array().Count(), 2);
    Variant copy;
    AcadSpace::SubEntHighlight(circle, chain, copy);
    auto [low, high] = Box(copy.Object());
    auto [shown_low, shown_high] = Box(top);  // the circle is all the reference shows
    EXPECT_VEC_CLOSE(low, shown_low);
    EXPECT_VEC_CLOSE(high, shown_high);
    EXPECT_TRUE(as_entity(copy.Object())->highlighted());
    AcadSpace::ClearHighlight();
    EXPECT_FALSE(as_entity(copy.Object())->highlighted());
    CallMethod(nested, "Delete");
  }
  nested = Insert(outer, "IN", {5, 2, 0}, {2, 2, 2}, 0.5);

  // A preferred block name stops the pick at that reference.
  document().QueueInput(host::UserInput::Pick(as_entity(circle), {0, 0, 0}, {as_entity(nested), as_entity(top)}));
  Variant preferred, outer_chain;
  AcadSpace::SubEntSelect(preferred, outer_chain, Variant(SafeArray::Of({Variant("i*")})));
  EXPECT_TRUE(SameObject(preferred.Object(), nested));
  EXPECT_EQ(outer_chain.Array().Count(), 1);
  // An empty chain highlights the entity itself and copies nothing.
  ObjectRef plain = Line(0, 0, 1, 1);
  Variant none;
  AcadSpace::SubEntHighlight(plain, Variant(), none);
  EXPECT_TRUE(none.IsEmpty());
  EXPECT_TRUE(as_entity(plain)->highlighted());
}

}  // namespace
}  // namespace tovik
