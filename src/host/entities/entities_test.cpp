#include "host/entities/kinds.h"

#include <gtest/gtest.h>

#include <numbers>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"
#include "tests/support/geometry.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

using EntitiesTest = HostTest;

std::vector<double> Doubles(const Variant& v) { return v.Array().ToDoubles(); }

TEST_F(EntitiesTest, NewEntitiesGetTheCurrentLayerAndByLayerProperties) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  SetProperty(doc, "ActiveLayer", CallMethod(layers, "Add", {Variant("Cur")}).Object());
  ObjectRef line = Line(0, 0, 1, 0);
  ExpectProperties(line, {{"Layer", "Cur"}, {"Linetype", "ByLayer"}, {"Lineweight", -1},
      {"LinetypeScale", 1.0}, {"Material", "ByLayer"}, {"PlotStyleName", "ByLayer"},
      {"Visible", true}});
  ObjectRef color = GetProperty(line, "TrueColor").Object();
  ExpectProperties(color, {{"ColorMethod", 192}, {"ColorIndex", 256}});
}

TEST_F(EntitiesTest, ColourObjectIsDetachedUntilAssignedBack) {
  ObjectRef line = Line(0, 0, 1, 0);
  ObjectRef color = GetProperty(line, "TrueColor").Object();
  CallMethod(color, "SetRGB", {Variant(int32_t{255}), Variant(int32_t{0}), Variant(int32_t{0})});
  EXPECT_EQ(CLng(GetProperty(GetProperty(line, "TrueColor").Object(), "ColorMethod")), 192);
  SetProperty(line, "TrueColor", color);
  ObjectRef read = GetProperty(line, "TrueColor").Object();
  EXPECT_EQ(CLng(GetProperty(read, "ColorMethod")), 194);
  EXPECT_EQ(CLng(GetProperty(read, "ColorIndex")), 1);  // nearest ACI of pure red
  EXPECT_EQ(CLng(GetProperty(read, "Red")), 255);
  LetProperty(read, "ColorIndex", Variant(int32_t{30}));
  // ACI 30 is (255, 127, 0) in the standard palette.
  ExpectProperties(read, {{"Green", 127}, {"ColorMethod", 195}});
  AutomationError r = ErrorOf([&] {
    CallMethod(read, "SetRGB", {Variant(int32_t{256}), Variant(int32_t{0}), Variant(int32_t{0})});
  });
  EXPECT_EQ(r.Description(), "Invalid input");
}

TEST_F(EntitiesTest, CurvesComputeWhatTheHostComputes) {
  ObjectRef arc =
      CallMethod(ms, "AddArc", {Pt(0, 0), Variant(2.0), Variant(-kPi / 2), Variant(kPi / 2)})
          .Object();
  EXPECT_NEAR(CDbl(GetProperty(arc, "StartAngle")), 1.5 * kPi, 1e-12);  // normalised
  EXPECT_NEAR(CDbl(GetProperty(arc, "TotalAngle")), kPi, 1e-12);
  EXPECT_NEAR(CDbl(GetProperty(arc, "ArcLength")), 2 * kPi, 1e-12);
  std::vector<double> start = Doubles(GetProperty(arc, "StartPoint"));
  EXPECT_NEAR(start[0], 0, 1e-12);
  EXPECT_NEAR(start[1], -2, 1e-12);
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(1.0)}).Object();
  LetProperty(circle, "Area", Variant(4 * kPi));
  EXPECT_NEAR(CDbl(GetProperty(circle, "Radius")), 2, 1e-12);
  EXPECT_EQ(ErrorOf([&] { CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(0.0)}); }).Description(),
            "Invalid input");
  // A unit square with one half-circle side (bulge 1 on the right edge).
  ObjectRef pl = Polyline({0, 0, 1, 0, 1, 1, 0, 1});
  LetProperty(pl, "Closed", Variant(true));
  CallMethod(pl, "SetBulge", {Variant(int16_t{1}), Variant(1.0)});
  EXPECT_NEAR(CDbl(GetProperty(pl, "Length")), 3 + kPi / 2, 1e-12);
  EXPECT_NEAR(CDbl(GetProperty(pl, "Area")), 1 + kPi / 8, 1e-12);
  EXPECT_EQ(Doubles(CallMethod(pl, "Coordinate", {Variant(int16_t{2})})),
            (std::vector<double>{1, 1}));
  EXPECT_EQ(ErrorOf([&] { CallMethod(pl, "Coordinate", {Variant(int16_t{4})}); }).Description(),
            "Invalid argument Index in Coordinate");
  LetProperty(pl, "Coordinates", DoublesValue({0, 0, 5, 0, 5, 5}));
  EXPECT_EQ(CDbl(CallMethod(pl, "GetBulge", {Variant(int16_t{1})})), 1.0);  // kept
  EXPECT_EQ(ErrorOf([&] {
              CallMethod(ms, "AddLightWeightPolyline", {DoublesValue({0, 0, 1})});
            }).Description(),
            "Invalid argument VerticesList in AddLightWeightPolyline");
}

TEST_F(EntitiesTest, TextAlignmentRules) {
  ObjectRef text = CallMethod(ms, "AddText", {Variant("abc"), Pt(1, 2), Variant(2.5)}).Object();
  EXPECT_EQ(Doubles(GetProperty(text, "TextAlignmentPoint")), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(ErrorOf([&] { LetProperty(text, "TextAlignmentPoint", Pt(3, 3)); }).Description(),
            "Not applicable");
  LetProperty(text, "Alignment", Variant(int32_t{10}));  // MiddleCenter
  EXPECT_EQ(ErrorOf([&] { LetProperty(text, "InsertionPoint", Pt(3, 3)); }).Description(),
            "Not applicable");
  LetProperty(text, "TextAlignmentPoint", Pt(7, 8));
  EXPECT_EQ(Doubles(GetProperty(text, "TextAlignmentPoint")), (std::vector<double>{7, 8, 0}));
  EXPECT_EQ(CStr(GetProperty(text, "StyleName")), "Standard");
  EXPECT_EQ(ErrorOf([&] { LetProperty(text, "StyleName", Variant("Nope")); }).Description(),
            "Key not found");
}

TEST_F(EntitiesTest, BlockReferenceAttributesAndAnonymousCopy) {
  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  ObjectRef block = CallMethod(blocks, "Add", {Pt(10, 0), Variant("Title")}).Object();
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("Name?"),
                                     Pt(12, 1), Variant("name"), Variant("default")});
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{2}), Variant(""), Pt(10, 0),
                                     Variant("FIXED"), Variant("c")});
  CallMethod(block, "AddLine", {Pt(10, 0), Pt(20, 0)});
  ObjectRef ref = CallMethod(ms, "InsertBlock", {Pt(100, 100), Variant("title"), Variant(2.0),
                                                 Variant(2.0), Variant(2.0), Variant(kPi / 2)})
                      .Object();
  ExpectProperties(ref, {{"Name", "Title"}, {"EffectiveName", "Title"}, {"IsDynamicBlock", false}});
  EXPECT_EQ(GetProperty(ref, "GetDynamicBlockProperties").Array().UBound(), -1);
  Variant atts = CallMethod(ref, "GetAttributes");
  ASSERT_EQ(atts.Array().Count(), 1);  // the constant one is not referenced
  ObjectRef att = atts.Array().Items()[0].RawObject();
  EXPECT_EQ(TypeName(Variant(att)), "IAcadAttributeReference");
  ExpectProperties(att, {{"TagString", "NAME"}, {"TextString", "default"}});
  // (12,1) - origin (10,0) = (2,1), scaled 2 -> (4,2), turned 90° -> (-2,4).
  std::vector<double> p = Doubles(GetProperty(att, "InsertionPoint"));
  EXPECT_NEAR(p[0], 98, kGeoTol);
  EXPECT_NEAR(p[1], 104, kGeoTol);
  EXPECT_EQ(CallMethod(ref, "GetConstantAttributes").Array().Count(), 1);
  EXPECT_EQ(CLngLng(GetProperty(att, "OwnerID")), CLngLng(GetProperty(ref, "ObjectID")));
  EXPECT_EQ(ErrorOf([&] { CallMethod(att, "Delete"); }).Description(), "Not applicable");
  CallMethod(ref, "ConvertToAnonymousBlock");
  std::string anon = CStr(GetProperty(ref, "Name"));
  EXPECT_EQ(anon.rfind("*U", 0), 0u);
  ObjectRef copy = CallMethod(blocks, "Item", {Variant(anon)}).Object();
  EXPECT_EQ(CLng(GetProperty(copy, "Count")), 3);
  EXPECT_EQ(CLng(GetProperty(block, "Count")), 3);
  CallMethod(ref, "Delete");
  EXPECT_EQ(ErrorOf([&] { GetProperty(att, "TextString"); }).Description(), "Object was erased");
}

TEST_F(EntitiesTest, DynamicPropertiesFollowTheirRules) {
  auto& d = document();
  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  ObjectRef block = CallMethod(blocks, "Add", {Pt(0, 0), Variant("Dyn")}).Object();
  auto* def = static_cast<BlockRecord*>(block.get());
  def->mutable_data().dynamic_properties = {
      DynProp("Origin", PointValue({0, 0, 0}), 0, true, false),
      DynProp("Distance1", Variant(10.0), 2, false, true),
      DynProp("Visibility", Variant("A"), 0, false, true, {Variant("A"), Variant("B")}),
  };
  ObjectRef ref = CallMethod(ms, "InsertBlock", {Pt(0, 0), Variant("Dyn"), Variant(1.0),
                                                 Variant(1.0), Variant(1.0)}).Object();
  EXPECT_TRUE(CBool(GetProperty(ref, "IsDynamicBlock")));
  EXPECT_TRUE(CBool(GetProperty(block, "IsDynamicBlock")));
  Variant props = CallMethod(ref, "GetDynamicBlockProperties");
  ASSERT_EQ(props.Array().Count(), 3);
  ObjectRef origin = props.Array().Items()[0].RawObject();
  ObjectRef dist = props.Array().Items()[1].RawObject();
  ObjectRef vis = props.Array().Items()[2].RawObject();
  EXPECT_EQ(TypeName(Variant(dist)), "IAcadDynamicBlockReferenceProperty");
  ExpectProperties(dist, {{"PropertyName", "Distance1"}, {"UnitsType", 2}});
  LetProperty(dist, "Value", Variant(int32_t{25}));
  EXPECT_EQ(GetProperty(dist, "Value").Type(), VarType::kDouble);
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(dist, "Value")), 25);
  EXPECT_EQ(ErrorOf([&] { LetProperty(origin, "Value", Pt(1, 1)); }).Description(),
            "Not applicable");
  EXPECT_EQ(ErrorOf([&] { LetProperty(vis, "Value", Variant("C")); }).Description(),
            "Invalid input");
  LetProperty(vis, "Value", Variant("B"));
  EXPECT_EQ(CStr(GetProperty(vis, "Value")), "B");
  EXPECT_TRUE(GetProperty(dist, "AllowedValues").IsEmpty());
  // An anonymous copy made from the dynamic block keeps its effective name.
  BlockRecord* anon = d.AddAnonymousBlock({});
  anon->mutable_data().dynamic_source = def;
  LetProperty(ref, "Name", Variant(anon->Name()));
  EXPECT_EQ(CStr(GetProperty(ref, "EffectiveName")), "Dyn");
}

TEST_F(EntitiesTest, HatchLoopsMustCloseAndComeOuterFirst) {
  ObjectRef hatch = CallMethod(ms, "AddHatch", {Variant(int32_t{1}), Variant("ansi31"),
                                                Variant(true)}).Object();
  ObjectRef a = Line(0, 0, 4, 0), b = Line(4, 0, 4, 3), c = Line(0, 3, 4, 3),
            open_end = Line(0, 3, 0, 1);
  ObjectRef hole = CallMethod(ms, "AddCircle", {Pt(2, 1.5), Variant(1.0)}).Object();
  EXPECT_EQ(ErrorOf([&] { CallMethod(hatch, "AppendInnerLoop", {ObjectsValue({hole})}); })
                .Description(),
            "Not applicable");
  EXPECT_EQ(ErrorOf([&] { CallMethod(hatch, "AppendOuterLoop", {ObjectsValue({a, b, c, open_end})}); })
                .Description(),
            "Invalid input");
  ObjectRef d = Line(0, 3, 0, 0);
  // c runs backwards (0,3)->(4,3) after b ends at (4,3): chained reversed.
  CallMethod(hatch, "AppendOuterLoop", {ObjectsValue({a, b, c, d})});
  CallMethod(hatch, "AppendInnerLoop", {ObjectsValue({hole})});
  EXPECT_EQ(CLng(GetProperty(hatch, "NumberOfLoops")), 2);
  EXPECT_NEAR(CDbl(GetProperty(hatch, "Area")), 12 - kPi, kGeoTol);
  ExpectProperties(hatch, {{"PatternName", "ANSI31"}, {"PatternType", 1}});
}

TEST_F(EntitiesTest, DimensionMeasuresFromItsDefinitionPoints) {
  auto& d = document();
  auto* dim = d.Create<Dimension>();
  d.InitEntity(dim);
  dim->mutable_data().kind = DimensionKind::kRotated;
  dim->mutable_data().p13 = {0, 0, 0};
  dim->mutable_data().p14 = {3, 4, 0};
  dim->mutable_data().rotation = 0;
  d.model_space()->Append(dim);
  ObjectRef ref = d.Ref(dim);
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "Measurement")), 3);  // projected on X
  LetProperty(ref, "TextOverride", Variant("<> mm"));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "Measurement")), 3);
  dim->mutable_data().kind = DimensionKind::kAligned;
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "Measurement")), 5);
  EXPECT_EQ(TypeName(Variant(ref)), "IAcadDimAligned");
}

}  // namespace
}  // namespace tovik::host
