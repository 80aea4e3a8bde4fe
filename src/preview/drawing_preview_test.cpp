#include "preview/drawing_preview.h"

#include <gtest/gtest.h>

#include "preview/picture_box.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

TEST(DrawingPreview, ColourIndexesGiveThePaletteColours) {
  struct Case {
    int32_t aci;
    int r, g, b;
  } cases[] = {{1, 255, 0, 0},     {5, 0, 0, 255},     {10, 255, 0, 0},   {11, 255, 127, 127},
               {12, 204, 0, 0},    {18, 76, 0, 0},     {30, 255, 127, 0}, {140, 0, 191, 255},
               {250, 51, 51, 51},  {255, 255, 255, 255}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.aci);
    int32_t rgb = AciToRgb(c.aci);
    EXPECT_EQ(rgb & 0xFF, c.r);
    EXPECT_EQ((rgb >> 8) & 0xFF, c.g);
    EXPECT_EQ((rgb >> 16) & 0xFF, c.b);
  }
}

TEST(DrawingPreview, MTextCodesAreDroppedAndParagraphsSplit) {
  struct Case {
    const char* in;
    std::vector<std::string> out;
  } cases[] = {
      {"one\\Ptwo", {"one", "two"}},
      {"{\\fArial|b1|i0;Bold} \\H2.5x;big", {"Bold big"}},
      {"a\\~b \\\\ \\{c\\}", {"a b \\ {c}"}},
      {"1\\S1^2; inch", {"11/2 inch"}},
      {"\\LUnder\\l and \\C1;red", {"Under and red"}},
      {"unterminated \\H2", {"unterminated "}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.in);
    EXPECT_EQ(PlainMTextLines(c.in), c.out);
  }
}

class DrawingPreviewOnHost : public HostTest {
 protected:
  // Draws model space into a 200 x 200 box showing the window (0, 0) to
  // (100, 100): one drawing unit is two pixels, y up.
  PreviewReport Draw(ShapeSource* shapes = nullptr) {
    box = std::make_shared<PictureBox>(200, 200, ScaleMode::kPixels);
    DwgPicture canvas;
    canvas.Attach(box);
    PreviewOptions options;
    options.shapes = shapes;
    options.window = std::array<double, 4>{0, 0, 100, 100};
    PreviewReport report = DrawDrawingPreview(doc, canvas, options);
    pixels = box->Pixels();
    return report;
  }
  // The colour (0xRRGGBB, as the picture's pixels hold it) of the pixel showing drawing point (x, y).
  uint32_t At(double x, double y) const {
    int px = static_cast<int>(x * 2), py = static_cast<int>(200 - y * 2);
    return pixels[static_cast<size_t>(py) * 200 + static_cast<size_t>(px)] & 0xFFFFFF;
  }
  bool Ink(double x, double y) const { return At(x, y) != 0xFFFFFF; }
  // True when the pixel's channel (0 red, 1 green, 2 blue) stands out from
  // the other two: antialiased lines on pixel edges are half-tinted.
  bool Tinted(double x, double y, int channel) const {
    uint32_t c = At(x, y);
    int v[3] = {static_cast<int>(c >> 16), static_cast<int>((c >> 8) & 0xFF),
                static_cast<int>(c & 0xFF)};
    return v[channel] >= v[(channel + 1) % 3] + 60 && v[channel] >= v[(channel + 2) % 3] + 60;
  }

  std::shared_ptr<PictureBox> box;
  std::vector<uint32_t> pixels;
};

TEST_F(DrawingPreviewOnHost, BlockReferencesAreDrawnWhereTheirPlacementPutsThem) {
  ObjectRef block = AddBlock("B");
  LetProperty(block, "Origin", Pt(5, 0));
  ObjectRef inner = CallMethod(block, "AddLine", {Pt(5, 0), Pt(15, 0)}).Object();
  LetProperty(inner, "Color", Variant(int32_t{0}));  // ByBlock
  // Turned a quarter, scaled 2: the line runs from (50, 50) up to (50, 70).
  ObjectRef ref = Insert(ms, "B", {50, 50, 0}, {2, 2, 2}, kPi / 2);
  LetProperty(ref, "Color", Variant(int32_t{5}));
  // Mirrored in x: from (30, 20) left to (10, 20).
  Insert(ms, "B", {30, 20, 0}, {-2, 2, 2});
  PreviewReport report = Draw();
  EXPECT_EQ(report.drawn, 4u);  // two references and the line in each
  EXPECT_TRUE(Tinted(50.2, 60, 2));  // blue from the reference (ByBlock)
  EXPECT_FALSE(Ink(60, 50.5));
  EXPECT_TRUE(Ink(20, 20.2));
  EXPECT_FALSE(Ink(40, 20.2));
}

TEST_F(DrawingPreviewOnHost, LayersDecideVisibilityAndByLayerColours) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef red = CallMethod(layers, "Add", {Variant("Red")}).Object();
  LetProperty(red, "Color", Variant(int32_t{1}));
  ObjectRef off = CallMethod(layers, "Add", {Variant("Off")}).Object();
  LetProperty(off, "LayerOn", Variant(false));
  LetProperty(Line(10, 10, 90, 10), "Layer", Variant("Red"));
  LetProperty(Line(10, 30, 90, 30), "Layer", Variant("Off"));
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(50, 60), Variant(20.0)}).Object();
  PreviewReport report = Draw();
  EXPECT_EQ(report.drawn, 2u);
  EXPECT_TRUE(Tinted(50, 10.2, 0));           // red
  EXPECT_FALSE(Ink(50, 30.2));                // layer off
  EXPECT_TRUE(Ink(70.2, 60) || Ink(69.8, 60));  // the circle's right side
  EXPECT_FALSE(Ink(50, 60));                  // not its centre
}

// Every entity dashed by one pattern, in drawing units.
struct DashedShapes : ShapeSource {
  std::vector<double> pattern;
  std::vector<std::vector<geometry::Vec3>> HatchLoops(const ObjectRef&) override { return {}; }
  ObjectRef PictureBlock(const ObjectRef&) override { return nullptr; }
  std::vector<double> Dashes(const ObjectRef&) override { return pattern; }
};

TEST_F(DrawingPreviewOnHost, LinetypePatternsDashTheLines) {
  Line(0, 50.25, 100, 50.25);
  // Two units (four pixels) drawn, then two skipped; a pattern that starts
  // with its gap starts skipping.
  for (const auto& [pattern, first_on] :
       {std::pair{std::vector<double>{2, -2}, true}, {std::vector<double>{-2, 2}, false}}) {
    DashedShapes shapes;
    shapes.pattern = pattern;
    Draw(&shapes);
    EXPECT_EQ(Ink(1, 50.25), first_on);
    EXPECT_EQ(Ink(3, 50.25), !first_on);
    EXPECT_EQ(Ink(5, 50.25), first_on);
  }
  // Finer than two pixels: solid.
  DashedShapes fine;
  fine.pattern = {0.2, -0.2};
  Draw(&fine);
  EXPECT_TRUE(Ink(0.5, 50.25) && Ink(0.7, 50.25) && Ink(0.9, 50.25));
}

}  // namespace
}  // namespace tovik
