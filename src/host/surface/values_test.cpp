// Members the library calls whose value the host computes or checks, not
// only stores: what they give back after the change that drives them.
#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/surface_calls.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

TEST_F(SurfaceTest, MaterialsAndLayerStateFollowTheirRecords) {
  ObjectRef materials = GetProperty(doc, "Materials").Object();
  EXPECT_EQ(TypeName(Variant(materials)), "IAcadMaterials");
  EXPECT_EQ(CLng(GetProperty(materials, "Count")), 3);  // ByLayer, ByBlock, Global
  ObjectRef global = CallMethod(materials, "Item", {Variant("GLOBAL")}).Object();
  EXPECT_TRUE(SameObject(CallMethod(materials, "Add", {Variant("global")}).Object(), global));
  CallMethod(materials, "Add", {Variant("Steel")});
  LetProperty(line, "Material", Variant("steel"));
  EXPECT_EQ(CStr(GetProperty(line, "Material")), "Steel");  // the table's spelling
  EXPECT_EQ(ErrorOf([&] {
              CallMethod(CallMethod(materials, "Item", {Variant("Steel")}).Object(), "Delete");
            }).Description(),
            "Object is referenced");
  // An entity on a layer turned off is left out of window selections.
  ObjectRef layer0 =
      CallMethod(GetProperty(doc, "Layers").Object(), "Item", {Variant("0")}).Object();
  LetProperty(layer0, "LayerOn", Variant(false));
  CallMethod(set, "Select", {Variant(int32_t{1}), Pt(-100, -100), Pt(100, 100)});
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  LetProperty(layer0, "LayerOn", Variant(true));
  CallMethod(set, "Select", {Variant(int32_t{1}), Pt(-1, -1), Pt(11, 1)});
  EXPECT_GT(CLng(GetProperty(set, "Count")), 0);
}

TEST_F(SurfaceTest, BlockSettingsDriveWhatReferencesDo) {
  LetProperty(block, "Units", Variant(int32_t{6}));
  LetProperty(block, "Comments", Variant("a note"));
  ExpectProperties(block, {{"Units", 6}, {"Comments", "a note"}});
  EXPECT_TRUE(CBool(GetProperty(ms, "IsLayout")));
  EXPECT_FALSE(CBool(GetProperty(block, "IsLayout")));
  EXPECT_TRUE(CBool(GetProperty(ref, "HasAttributes")));
  LetProperty(block, "Explodable", Variant(false));
  EXPECT_EQ(ErrorOf([&] { CallMethod(ref, "Explode"); }).Description(), "Not applicable");
  LetProperty(block, "Explodable", Variant(true));
  EXPECT_GT(CallMethod(ref, "Explode").Array().Count(), 0);
  // A static copy under a name in use is refused; a new name repoints.
  EXPECT_EQ(ErrorOf([&] { CallMethod(ref, "ConvertToStaticBlock", {Variant("b")}); }).Description(),
            "Duplicate record name");
  CallMethod(ref, "ConvertToStaticBlock", {Variant("Fixed")});
  ExpectProperties(ref, {{"Name", "Fixed"}, {"EffectiveName", "Fixed"}, {"IsDynamicBlock", false}});
}

TEST_F(SurfaceTest, EffectiveScaleIncludesWhatDynamicParametersScale) {
  auto* r = static_cast<BlockRef*>(ref.get());
  r->mutable_data().dynamic_scale = {2, 1, 0.5};
  LetProperty(ref, "XScaleFactor", Variant(3.0));
  ExpectProperties(ref, {{"XEffectiveScaleFactor", 6.0}, {"YEffectiveScaleFactor", 1.0},
      {"ZEffectiveScaleFactor", 0.5}});
  // Writing the effective factor leaves the dynamic part in place.
  LetProperty(ref, "XEffectiveScaleFactor", Variant(4.0));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "XScaleFactor")), 2);
  LetProperty(ref, "ZEffectiveScaleFactor", Variant(-1.0));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "ZScaleFactor")), -2);
}

TEST_F(SurfaceTest, TextAnglesAndAttributeFlagsAreViewsOfTheirData) {
  // Oblique angles within ±85° (1.4835 radians) pass, in radians.
  constexpr double kLimit = 85.0 * 3.14159265358979323846 / 180.0;
  LetProperty(text, "ObliqueAngle", Variant(kLimit - 1e-9));
  EXPECT_NEAR(CDbl(GetProperty(text, "ObliqueAngle")), kLimit, 1e-8);
  LetProperty(text, "ObliqueAngle", Variant(-0.5));
  EXPECT_EQ(ErrorOf([&] { LetProperty(text, "ObliqueAngle", Variant(kLimit + 1e-3)); }).Number(),
            NumberOfText("Invalid input"));
  // Invisible and Constant are bits of Mode.
  LetProperty(attdef, "Mode", Variant(int32_t{3}));
  ExpectProperties(attdef, {{"Invisible", true}, {"Constant", true}});
  LetProperty(attdef, "Invisible", Variant(false));
  EXPECT_EQ(CLng(GetProperty(attdef, "Mode")), 2);
  LetProperty(attref, "Invisible", Variant(true));
  ExpectProperties(attref, {{"Invisible", true}, {"Constant", false}});
  // Tags are kept in capitals.
  LetProperty(attdef, "TagString", Variant("name"));
  EXPECT_EQ(CStr(GetProperty(attdef, "TagString")), "NAME");
}

TEST_F(SurfaceTest, ColourChannelsComeFromThePaletteOrTheRgb) {
  struct Case {
    int32_t index;
    int32_t rgb[3];
  } cases[] = {{1, {255, 0, 0}}, {3, {0, 255, 0}}, {5, {0, 0, 255}}, {7, {255, 255, 255}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.index);
    LetProperty(color, "ColorIndex", Variant(c.index));
    EXPECT_EQ(CLng(GetProperty(color, "ColorMethod")), 195);
    EXPECT_EQ(CLng(GetProperty(color, "Red")), c.rgb[0]);
    EXPECT_EQ(CLng(GetProperty(color, "Green")), c.rgb[1]);
    EXPECT_EQ(CLng(GetProperty(color, "Blue")), c.rgb[2]);
  }
  CallMethod(color, "SetRGB", {Variant(int32_t{250}), Variant(int32_t{2}), Variant(int32_t{3})});
  EXPECT_EQ(CLng(GetProperty(color, "ColorMethod")), 194);
  EXPECT_EQ(CLng(GetProperty(color, "ColorIndex")), 1);  // the nearest ACI
  EXPECT_EQ(CLng(GetProperty(color, "Blue")), 3);
  LetProperty(color, "ColorIndex", Variant(int32_t{256}));
  ExpectProperties(color, {{"ColorMethod", 192}, {"Red", 0}});
  // The colour object is detached: the entity changes when it is assigned.
  EXPECT_EQ(CLng(GetProperty(GetProperty(line, "TrueColor").Object(), "ColorMethod")), 192);
}

TEST_F(SurfaceTest, TextStyleFontAndHeight) {
  CallMethod(style, "SetFont", {Variant("Arial"), Variant(true), Variant(false),
                                Variant(int32_t{0}), Variant(int32_t{34})});
  std::vector<Variant> font(5);
  CallMethodRef(style, "GetFont", font);
  EXPECT_EQ(CStr(font[0]), "Arial");
  EXPECT_TRUE(CBool(font[1]));
  EXPECT_FALSE(CBool(font[2]));
  EXPECT_EQ(CLng(font[4]), 34);
  EXPECT_EQ(CStr(GetProperty(style, "FontFile")), "");
  // A fixed style height does not override AddText's own height.
  LetProperty(style, "Height", Variant(5.0));
  ObjectRef t = CallMethod(ms, "AddText", {Variant("x"), Pt(0, 0), Variant(1.5)}).Object();
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(t, "Height")), 1.5);
}

TEST_F(SurfaceTest, GetEntityTakesAPickAndGivesTheOutermostObject) {
  auto entity = [](const ObjectRef& o) { return std::dynamic_pointer_cast<Entity>(o); };
  ObjectRef inner = CallMethod(block, "Item", {Variant(int32_t{1})}).Object();
  document().QueueInput(UserInput::Pick(entity(inner), {5, 6, 0}, {entity(ref)}));
  std::vector<Variant> outs(2);
  CallMethodRef(utility, "GetEntity", outs);
  EXPECT_TRUE(SameObject(outs[0].RawObject(), ref));
  EXPECT_EQ(outs[1].Array().ToDoubles(), (std::vector<double>{5, 6, 0}));
  // A miss (nothing queued) or an erased pick is the user's Escape.
  EXPECT_EQ(ErrorOf([&] { CallMethodRef(utility, "GetEntity", outs); }).Number(), kScodeCancelled);
  document().QueueInput(UserInput::Pick(entity(line), {}));
  CallMethod(line, "Delete");
  EXPECT_EQ(ErrorOf([&] { CallMethodRef(utility, "GetEntity", outs); }).Number(), kScodeCancelled);
}

TEST_F(SurfaceTest, EraseDeletesEveryMemberOrNone) {
  CallMethod(set, "AddItems", {ObjectsValue({circle, arc})});
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  CallMethod(layers, "Add", {Variant("Locked")});
  LetProperty(arc, "Layer", Variant("Locked"));
  LetProperty(CallMethod(layers, "Item", {Variant("Locked")}).Object(), "Lock", Variant(true));
  EXPECT_EQ(ErrorOf([&] { CallMethod(set, "Erase"); }).Description(), "On locked layer");
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(circle, "Radius")), 2);  // still there
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 2);
  LetProperty(CallMethod(layers, "Item", {Variant("Locked")}).Object(), "Lock", Variant(false));
  CallMethod(set, "Erase");
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  EXPECT_EQ(ErrorOf([&] { GetProperty(circle, "Radius"); }).Number(), kScodeObjectErased);
  EXPECT_EQ(ErrorOf([&] { GetProperty(arc, "Radius"); }).Number(), kScodeObjectErased);
}

TEST_F(SurfaceTest, HighlightMarksTheEntitiesASetOrGroupHolds) {
  auto lit = [](const ObjectRef& o) { return static_cast<Entity*>(o.get())->highlighted(); };
  CallMethod(line, "Highlight", {Variant(true)});
  EXPECT_TRUE(lit(line));
  CallMethod(set, "AddItems", {ObjectsValue({line, circle})});
  CallMethod(set, "Highlight", {Variant(false)});
  EXPECT_FALSE(lit(line));
  EXPECT_FALSE(lit(circle));
  CallMethod(group, "AppendItems", {ObjectsValue({arc})});
  CallMethod(group, "Highlight", {Variant(true)});
  EXPECT_TRUE(lit(arc));
  EXPECT_TRUE(CallMethod(line, "Update").IsEmpty());
  EXPECT_TRUE(CallMethod(set, "Update").IsEmpty());
}

}  // namespace
}  // namespace tovik::host
