#include "preview/dwg_picture.h"

#include <gtest/gtest.h>

#include "frame/conversions.h"
#include "frame/library_state.h"
#include "preview/picture_box.h"
#include "tests/support/errors.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

struct Canvas {
  // A 200 x 100 pixel box measured in pixels.
  std::shared_ptr<PictureBox> box = std::make_shared<PictureBox>(200, 100, ScaleMode::kPixels);
  std::shared_ptr<DwgPicture> pic;
  Canvas() {
    Variant v = Variant(ObjectRef(box));
    pic = ObjectAs<DwgPicture>(Variant(AcadSpace::NewDwgPicture(v)));
  }
  void Fit(double x1, double y1, double x2, double y2) {
    pic->SetCoordinateToFit(Variant(SafeArray::OfDoubles({x1, y1, 0})),
                            Variant(SafeArray::OfDoubles({x2, y2, 0})));
  }
  double OriginAt(int i) const { return pic->origin().Array().ToDoubles()[i]; }
};

TEST(DwgPicture, MapsDrawingToPictureAndBackUnderMirroring) {
  Canvas c;
  c.pic->SetCoordinateSystem(Variant(SafeArray::OfDoubles({0, 0})), 100);  // scale 2
  struct Case {
    bool mx, my;
    geometry::Vec2 expected;
  } cases[] = {{false, false, {20, 90}}, {true, false, {180, 90}}, {false, true, {20, 10}},
               {true, true, {180, 10}}};
  for (const Case& k : cases) {
    SCOPED_TRACE(::testing::Message() << k.mx << k.my);
    c.pic->SetMirror(k.mx, k.my);
    geometry::Vec2 p = c.pic->ToPicture(10, 5);
    EXPECT_EQ(p.x, k.expected.x);
    EXPECT_EQ(p.y, k.expected.y);
    geometry::Vec2 back = c.pic->ToDrawing(static_cast<float>(p.x), static_cast<float>(p.y));
    EXPECT_DOUBLE_EQ(back.x, 10);
    EXPECT_DOUBLE_EQ(back.y, 5);
  }
  // Through the by-reference member: picture coordinates come back as
  // Singles.
  std::array<Variant, 5> args{Variant(), Variant(), Variant(1.0 / 3), Variant(0.0), Variant(true)};
  c.pic->SetMirror(false, false);
  CallMethodRef(c.pic, "TranslateCoordinates", args);
  EXPECT_EQ(args[0].Type(), VarType::kSingle);
  EXPECT_EQ(CSng(args[0]), static_cast<float>(2.0 / 3));
  EXPECT_EQ(CSng(args[1]), 100.0f);
}

TEST(DwgPicture, FittingAWindowKeepsItsProportionsAndCentresIt) {
  struct Case {
    int w, h;
    double x2, y2;
    double scale, ox, oy;
  } cases[] = {
      {200, 200, 100, 50, 2, 0, -25},     // wider window: fit the width
      {100, 400, 100, 50, 1, 0, -175},    // W / H = 0.25 <= 2: still the width
      // Proportions equal once rounded to Single (the window is taller by
      // one part in 10^9): a tie, which fits the width.
      {200, 200, 10, 10 * (1 + 1e-9), 20, 0, 5e-9},
      {200, 100, 10, 10, 10, -5, 0},      // taller window: fit the height
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(::testing::Message() << k.w << "x" << k.h);
    Canvas c;
    c.box = std::make_shared<PictureBox>(k.w, k.h, ScaleMode::kPixels);
    c.pic->Attach(c.box);
    c.Fit(0, 0, k.x2, k.y2);
    EXPECT_DOUBLE_EQ(c.pic->scale(), k.scale);
    EXPECT_NEAR(c.OriginAt(0), k.ox, 1e-12);
    EXPECT_NEAR(c.OriginAt(1), k.oy, 1e-12);
  }
  Canvas c;
  // A window with no height: dx / dy divides by zero (0 / 0 overflows).
  EXPECT_EQ(ErrorOf([&] { c.Fit(0, 0, 10, 0); }).Number(), kErrDivisionByZero);
  EXPECT_EQ(ErrorOf([&] { c.Fit(0, 0, 0, 0); }).Number(), kErrOverflow);
  Variant zero(SafeArray::OfDoubles({0, 0}));
  EXPECT_EQ(ErrorOf([&] { c.pic->SetCoordinateSystem(zero, 0); }).Number(), kErrDivisionByZero);
}

TEST(DwgPicture, DrawsInTheGivenColourAndScaleUnits) {
  Canvas c;
  c.pic->SetCoordinateSystem(Variant(SafeArray::OfDoubles({0, 0})), 100);  // scale 2
  const int32_t red = 0x0000FF, blue = 0xFF0000;
  c.pic->DrawLine(Variant(SafeArray::OfDoubles({0, 25})), Variant(SafeArray::OfDoubles({100, 25})),
                  red);
  c.pic->DrawCircle(Variant(SafeArray::OfDoubles({50, 25})), Variant(int16_t{3}), blue);
  std::vector<uint32_t> px = c.box->Pixels();
  // Pixels are 0xAARRGGBB. The line lies on y = 50, the boundary of two
  // pixel rows: antialiased, each row is half red.
  auto at = [&](int x, int y) { return px[static_cast<size_t>(y) * 200 + x] & 0xFFFFFF; };
  EXPECT_EQ(at(20, 50) >> 16, 0xFFu);
  EXPECT_LT(at(20, 50) & 0xFF, 0xC0u);
  EXPECT_EQ(at(20, 50) & 0xFF, at(20, 49) & 0xFF);
  // The circle's top (radius 6 picture units) is blue.
  EXPECT_EQ(at(100, 44) & 0xFF, 0xFFu);
  EXPECT_LT(at(100, 44) >> 16, 0xC0u);
  EXPECT_EQ(at(100, 30), 0xFFFFFFu);  // outside both: background
  // Twips: the same box is 3000 x 1500 units.
  PictureBox twips(200, 100);
  EXPECT_EQ(twips.InnerWidth(), 3000);
  EXPECT_EQ(twips.InnerHeight(), 1500);
}

TEST(DwgPicture, NothingMeansTheLibrarysPictureBoxAndTheClipboardKeepsTheLastImage) {
  ResetLibraryState();
  Variant none = Variant::Nothing();
  auto pic = ObjectAs<DwgPicture>(Variant(AcadSpace::NewDwgPicture(none)));
  EXPECT_TRUE(SameObject(none.Object(), ToolboxPicture()));
  EXPECT_EQ(CInt(GetProperty(pic, "ScaleMode")), 1);
  EXPECT_TRUE(CBool(GetProperty(none.Object(), "AutoRedraw")));
  CallMethod(pic, "CopyToClipboard");
  auto& platform = static_cast<HeadlessPlatform&>(Windows());
  ASSERT_NE(platform.clipboard(), nullptr);
  EXPECT_EQ(platform.clipboard()->width(), 400);
  Variant not_a_picture(ObjectRef(std::make_shared<DwgPicture>()));
  EXPECT_EQ(ErrorOf([&] { AcadSpace::NewDwgPicture(not_a_picture); }).Number(), kErrTypeMismatch);
  ResetLibraryState();
}

}  // namespace
}  // namespace tovik
