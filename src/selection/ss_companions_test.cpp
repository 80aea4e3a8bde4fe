// The set's box (SSDimensions) and moving the set as a whole (SSAnimation)
// on real entities, through dispatch as add-ins call them.
#include <gtest/gtest.h>

#include <array>

#include "frame/conversions.h"
#include "frame/library_errors.h"
#include "geometry/vector_service.h"
#include "selection/dynamic_ss.h"
#include "tests/support/errors.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

using geometry::Vec3;

class Companions : public LinkedHostTest {
 protected:
  void SetUp() override {
    LinkedHostTest::SetUp();
    set = DynamicSS::Create();
    dims = GetProperty(set, "Dimensions").Object();
    anim = GetProperty(set, "Animation").Object();
  }
  void Hold(std::initializer_list<ObjectRef> entities) {
    std::vector<Variant> items(entities.begin(), entities.end());
    set->Clear();
    set->Add(Variant(SafeArray::Of({Variant(SafeArray::OfVariants(items))})));
  }
  // GetBoundingBox(minP, maxP, NonZeroZ, CenterPoint, Height, Width, ShrinkScale, ShrAbs).
  std::array<Variant, 8> Box(Variant shrink = Variant::Missing(), Variant absolute = Variant::Missing()) {
    std::array<Variant, 8> a{Variant(), Variant(), Variant::Missing(), Variant(), Variant(), Variant(),
                             shrink, absolute};
    CallMethodRef(dims, "GetBoundingBox", a);
    return a;
  }
  static std::pair<Vec3, Vec3> HostBox(const ObjectRef& e) {
    std::array<Variant, 2> box;
    CallMethodRef(e, "GetBoundingBox", box);
    return {VectorOf(box[0]), VectorOf(box[1])};
  }
  ObjectRef Text(const char* s, double x, double y, double height) {
    return CallMethod(ms, "AddText", {Variant(s), Pt(x, y), Variant(height)}).Object();
  }
  std::shared_ptr<DynamicSS> set;
  ObjectRef dims, anim;
};

TEST_F(Companions, FlatBoxesWidenAcrossTheirFlatAxis) {
  struct Case {
    const char* what;
    std::function<ObjectRef()> make;
    Vec3 low, high;
  } cases[] = {
      {"horizontal line", [&] { return Line(0, 0, 10, 0); }, {0, -1.25, 0}, {10, 1.25, 0}},
      {"vertical line", [&] { return Line(0, 0, 0, 8); }, {-1, 0, 0}, {1, 8, 0}},
      {"point", [&] { return CallMethod(ms, "AddPoint", {Pt(2, 3, 4)}).Object(); }, {2, 3, 0}, {2, 3, 0}},
  };
  for (const Case& c : cases) {
    Hold({c.make()});
    auto a = Box();
    EXPECT_VEC_CLOSE(VectorOf(a[0]), c.low) << c.what;
    EXPECT_VEC_CLOSE(VectorOf(a[1]), c.high) << c.what;
    EXPECT_DOUBLE_EQ(CDbl(a[4]), c.high.y - c.low.y) << c.what;
    EXPECT_DOUBLE_EQ(CDbl(GetProperty(dims, "Width")), c.high.x - c.low.x) << c.what;
  }
}

TEST_F(Companions, MarginsScalesAndHiddenMembers) {
  ObjectRef a = Line(0, 0, 4, 2), b = CallMethod(ms, "AddCircle", {Pt(10, 10), Variant(1.0)}).Object();
  Hold({a, b});
  auto half = Box(Variant(0.5));
  EXPECT_VEC_CLOSE(VectorOf(half[0]), (Vec3{2.75, 2.75, 0}));
  EXPECT_VEC_CLOSE(VectorOf(half[3]), (Vec3{5.5, 5.5, 0}));
  auto margin = Box(Variant(2.0), Variant(true));
  EXPECT_VEC_CLOSE(VectorOf(margin[1]), (Vec3{13, 13, 0}));
  EXPECT_DOUBLE_EQ(CDbl(margin[5]), 15);
  EXPECT_VEC_CLOSE(VectorOf(CallMethod(dims, "Centre")), (Vec3{5.5, 5.5, 0}));
  // Hidden members do not count; all hidden leaves the caller's corners.
  LetProperty(b, "Visible", Variant(false));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(dims, "Height")), 2);
  LetProperty(a, "Visible", Variant(false));
  EXPECT_EQ(ErrorOf([&] { Box(); }).Number(), 13);
  set->Clear();
  EXPECT_EQ(CDbl(GetProperty(dims, "Height")), 0);
  EXPECT_TRUE(CallMethod(dims, "Centre").IsEmpty());
}

TEST_F(Companions, TilingStacksBoxesIntoOneColumn) {
  std::vector<ObjectRef> boxes;
  for (double h : {1.0, 2.0, 3.0}) boxes.push_back(Polyline({5, 5, 7, 5, 7, 5 + h, 5, 5 + h}));
  Hold({boxes[0], boxes[1], boxes[2]});
  CallMethod(anim, "TileArrangement");
  const double bottoms[] = {0, 1, 3};
  for (size_t i = 0; i < 3; ++i) {
    auto [low, high] = HostBox(boxes[i]);
    EXPECT_NEAR(low.y, bottoms[i], 1e-9);
    EXPECT_NEAR(high.x, 0, 1e-9);
  }
}

TEST_F(Companions, SortingPutsTextsInReadingOrder) {
  // Two rows; in the first, heights differ but the boxes overlap in y.
  ObjectRef b = Text("b", 10, 10, 2), c = Text("c", 20, 10.5, 1), a = Text("a", 0, 10.2, 3);
  ObjectRef e = Text("e", 15, 0, 1), d = Text("d", 1, 0, 1);
  Hold({e, c, b, d, a});
  CallMethod(anim, "Sort2D");
  EXPECT_EQ(set->Enumerate().size(), 5u);
  std::string order;
  for (const Variant& t : set->Enumerate()) order += CStr(GetProperty(t.Object(), "TextString"));
  EXPECT_EQ(order, "abcde");
  CallMethod(anim, "Sort2D", {Variant(false), Variant(false)});  // columns, right to left
  order.clear();
  for (const Variant& t : set->Enumerate()) order += CStr(GetProperty(t.Object(), "TextString"));
  EXPECT_EQ(order, "cebad");
}

TEST_F(Companions, ScalingMovingAndZooming) {
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(5, 5), Variant(1.0)}).Object();
  ObjectRef line = Line(0, 0, 2, 0);
  Hold({circle, line});
  CallMethod(anim, "ScaleEach", {Variant(2.0)});
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(circle, "Center")), (Vec3{5, 5, 0}));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(circle, "Radius")), 2);
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(line, "StartPoint")), (Vec3{-1, 0, 0}));

  // The line's box (-1,-0.5)..(3,0.5) goes to the centre of (0,0)..(4,2)
  // and is scaled by the larger ratio, 2 / 1 against 4 / 4.
  Hold({line});
  std::array<Variant, 4> fit{Pt(0, 0), Pt(4, 2), Variant(int16_t{100}), Variant(0.0)};
  CallMethodRef(anim, "MoveAndStretch", fit);
  EXPECT_DOUBLE_EQ(CDbl(fit[3]), 2);
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(line, "EndPoint")), (Vec3{6, 1, 0}));

  // Picked points move the set step by step until the request is cancelled.
  document().QueueInput(host::UserInput::Point({10, 1, 0}));
  document().QueueInput(host::UserInput::Point({10, 5, 0}));
  std::array<Variant, 2> moving{Pt(2, 1), Variant()};
  CallMethodRef(anim, "Moving", moving);
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(line, "EndPoint")), (Vec3{14, 5, 0}));
  EXPECT_VEC_CLOSE(VectorOf(moving[1]), (Vec3{10, 5, 0}));

  CallMethod(anim, "ZoomTo", {Variant(0.0)});
  EXPECT_VEC_CLOSE(VectorOf(CallMethod(doc, "GetVariable", {Variant("VIEWCTR")})), (Vec3{10, 5, 0}));
  CallMethod(doc, "SetVariable", {Variant("TILEMODE"), Variant(int16_t{0})});
  ExpectError([&] { CallMethod(anim, "ZoomTo"); }, 2411, std::string(kSelectionNotInCurrentLayout));
}

}  // namespace
}  // namespace tovik
