// The error paths of the entity members the library calls (every entity,
// block references, texts and attributes, dynamic properties, curves,
// dimensions, hatches, colours, text styles), each through the dispatch
// interface, and that a refused call leaves the entity as it was.
#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/surface_calls.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

const std::string kNotSupported = "Object doesn't support this property or method";
const std::string kWrongCount = "Wrong number of arguments or invalid property assignment";

TEST_F(SurfaceTest, EveryEntityMemberRefusesBadArguments) {
  ObjectRef empty_text = CallMethod(ms, "AddText", {Variant(""), Pt(0, 0), Variant(1.0)}).Object();
  ExpectErrors({
      {"read-only", line, "Handle", Op::kLet, {Variant("1F")}, kNotSupported},
      {"no name", line, "PlotStyleName", Op::kLet, {Variant::Missing()},
       "Invalid argument PlotStyleName in PlotStyleName"},
      {"read-only", line, "Document", Op::kSet, {Variant(doc)}, kNotSupported},
      {"unknown layer", line, "Layer", Op::kLet, {Variant("Nope")}, "Key not found"},
      {"unknown linetype", line, "LineType", Op::kLet, {Variant("Nope")}, "Key not found"},
      {"zero", line, "LinetypeScale", Op::kLet, {Variant(0.0)}, "Invalid input"},
      {"not a weight", line, "Lineweight", Op::kLet, {Variant(int32_t{7})}, "Invalid input"},
      {"not a colour", line, "TrueColor", Op::kSet, {Variant(line)},
       "Invalid argument TrueColor in TrueColor"},
      {"unknown material", line, "Material", Op::kLet, {Variant("Nope")}, "Key not found"},
      {"not a Boolean", line, "Visible", Op::kLet, {Variant("no")}, "Type mismatch"},
      {"not a point", line, "StartPoint", Op::kLet, {Variant(1.0)},
       "Invalid argument StartPoint in StartPoint"},
      {"zero vector", circle, "Normal", Op::kLet, {Pt(0, 0, 0)}, "Invalid input"},
      {"not on a block reference", ref, "Thickness", Op::kGet, {}, kNotSupported},
      {"not on a line", line, "Elevation", Op::kGet, {}, kNotSupported},
      {"an empty text", empty_text, "GetBoundingBox", Op::kCall, {Variant(), Variant()},
       "Null extents"},
      {"one out argument", line, "GetBoundingBox", Op::kCall, {Variant()},
       "Argument not optional"},
      {"not an entity", line, "IntersectWith", Op::kCall, {Variant(block), Variant(int32_t{0})},
       "Invalid argument IntersectObject in IntersectWith"},
      {"bad option", line, "IntersectWith", Op::kCall, {Variant(circle), Variant(int32_t{4})},
       "Invalid argument ExtendOption in IntersectWith"},
      {"bad point", line, "Move", Op::kCall, {Variant(1.0), Pt(1, 1)},
       "Invalid argument FromPoint in Move"},
      {"not a number", line, "Rotate", Op::kCall, {Pt(0, 0), Variant("x")}, "Type mismatch"},
      {"one point axis", line, "Rotate3D", Op::kCall, {Pt(1, 1), Pt(1, 1), Variant(1.0)},
       "Invalid input"},
      {"zero factor", line, "ScaleEntity", Op::kCall, {Pt(0, 0), Variant(0.0)}, "Invalid input"},
      {"an argument", line, "Copy", Op::kCall, {Variant(1.0)}, kWrongCount},
      {"alone", attref, "Copy", Op::kCall, {}, "Not applicable"},
      {"alone", attref, "Delete", Op::kCall, {}, "Not applicable"},
      {"a line", line, "Explode", Op::kCall, {}, kNotSupported},
      {"not a Boolean", line, "Highlight", Op::kCall, {Variant("on")}, "Type mismatch"},
      {"two arguments", line, "GetXData", Op::kCall, {Variant(""), Variant()},
       "Argument not optional"},
      {"unequal lengths", line, "SetXdata", Op::kCall,
       {Variant(SafeArray::Of({Variant(int16_t{1001})})),
        Variant(SafeArray::Of({Variant("APP"), Variant("x")}))},
       "Invalid argument XDataValue in SetXData"},
  });
  // A locked layer refuses every change, and reads still answer.
  ObjectRef layer0 =
      CallMethod(GetProperty(doc, "Layers").Object(), "Item", {Variant("0")}).Object();
  LetProperty(layer0, "Lock", Variant(true));
  ExpectErrors({
      {"locked", line, "Visible", Op::kLet, {Variant(false)}, "On locked layer"},
      {"locked", line, "Move", Op::kCall, {Pt(0, 0), Pt(1, 1)}, "On locked layer"},
      {"locked", line, "Delete", Op::kCall, {}, "On locked layer"},
      {"locked", line, "SetXdata", Op::kCall,
       {Variant(SafeArray::Of({Variant(int16_t{1001})})), Variant(SafeArray::Of({Variant("A")}))},
       "On locked layer"},
      {"locked", ref, "InsertionPoint", Op::kLet, {Pt(1, 1)}, "On locked layer"},
      {"locked", ref, "ConvertToAnonymousBlock", Op::kCall, {}, "On locked layer"},
  });
  EXPECT_TRUE(CBool(GetProperty(line, "Visible")));
  LetProperty(layer0, "Lock", Variant(false));
  // Nothing of the refused calls stuck.
  EXPECT_EQ(GetProperty(line, "StartPoint").Array().ToDoubles(), (std::vector<double>{0, 0, 0}));
  ExpectProperties(line, {{"Layer", "0"}, {"LinetypeScale", 1.0}, {"Lineweight", -1}});
  std::vector<Variant> xdata{Variant(""), Variant(), Variant()};
  CallMethodRef(line, "GetXData", xdata);
  EXPECT_TRUE(xdata[1].IsEmpty());
}

TEST_F(SurfaceTest, BlockReferenceAndTextMembersRefuseBadArguments) {
  ExpectErrors({
      {"undefined block", ref, "Name", Op::kLet, {Variant("Nope")}, "Key not found"},
      {"not a point", ref, "InsertionPoint", Op::kLet, {Variant("p")},
       "Invalid argument InsertionPoint in InsertionPoint"},
      {"not a number", ref, "Rotation", Op::kLet, {Variant("r")}, "Type mismatch"},
      {"zero", ref, "XScaleFactor", Op::kLet, {Variant(0.0)}, "Invalid input"},
      {"zero", ref, "ZEffectiveScaleFactor", Op::kLet, {Variant(0.0)}, "Invalid input"},
      {"not a number", dynprop, "Value", Op::kLet, {Variant("far")}, "Type mismatch"},
      {"a space", attref, "TagString", Op::kLet, {Variant("A B")}, "Invalid input"},
      {"empty", attdef, "TagString", Op::kLet, {Variant("")}, "Invalid input"},
      {"zero", text, "Height", Op::kLet, {Variant(0.0)}, "Invalid input"},
      {"out of range", text, "Alignment", Op::kLet, {Variant(int32_t{15})}, "Invalid input"},
      {"left aligned", text, "TextAlignmentPoint", Op::kLet, {Pt(1, 1)}, "Not applicable"},
      {"unknown style", text, "StyleName", Op::kLet, {Variant("Nope")}, "Key not found"},
      {"unknown style", attref, "StyleName", Op::kLet, {Variant("Nope")}, "Key not found"},
      {"beyond 85 degrees", text, "ObliqueAngle", Op::kLet, {Variant(1.6)}, "Invalid input"},
      {"not a Boolean", text, "UpsideDown", Op::kLet, {Variant("x")}, "Type mismatch"},
      {"not a Boolean", text, "Backward", Op::kLet, {Variant("x")}, "Type mismatch"},
      {"not a Boolean", attdef, "Invisible", Op::kLet, {Variant("x")}, "Type mismatch"},
      {"read-only on a reference", attref, "Constant", Op::kLet, {Variant(true)}, kNotSupported},
      {"not on a text", text, "Invisible", Op::kGet, {}, kNotSupported},
  });
  ExpectProperties(ref, {{"Name", "B"}, {"XScaleFactor", 1.0}});
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(text, "Height")), 2.5);
  EXPECT_EQ(CStr(GetProperty(attref, "TagString")), "TAG");
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(dynprop, "Value")), 10);
}

TEST_F(SurfaceTest, CurveDimensionHatchColourAndStyleMembersRefuseBadArguments) {
  ObjectRef sortents = CallMethod(CallMethod(ms, "GetExtensionDictionary").Object(), "AddObject",
                                  {Variant("ACAD_SORTENTS"), Variant("AcDbSortentsTable")})
                           .Object();
  ObjectRef in_block = CallMethod(block, "Item", {Variant(int32_t{1})}).Object();
  ObjectRef layouts = GetProperty(doc, "Layouts").Object();
  ObjectRef model = CallMethod(layouts, "Item", {Variant("Model")}).Object();
  ExpectErrors({
      {"another block's entity", sortents, "MoveToTop", Op::kCall, {ObjectsValue({in_block})},
       "Invalid input"},
      {"given twice", sortents, "MoveToBottom", Op::kCall, {ObjectsValue({line, line})},
       "Invalid input"},
      {"not objects", sortents, "MoveToBottom", Op::kCall, {Variant(1.0)},
       "Invalid argument Objects in MoveToBottom"},
      {"not a method", color, "ColorMethod", Op::kLet, {Variant(int32_t{196})}, "Invalid input"},
      {"odd count", pline, "Coordinates", Op::kLet, {DoublesValue({0, 0, 1})},
       "Invalid argument Coordinates in Coordinates"},
      {"beyond the last vertex", pline, "Coordinate", Op::kGet, {Variant(int32_t{3})},
       "Invalid argument Index in Coordinate"},
      {"not a Boolean", pline, "Closed", Op::kLet, {Variant("x")}, "Type mismatch"},
      {"beyond the last vertex", pline, "GetBulge", Op::kCall, {Variant(int16_t{3})},
       "Invalid argument Index in GetBulge"},
      {"negative index", pline, "SetBulge", Op::kCall, {Variant(int16_t{-1}), Variant(1.0)},
       "Invalid argument Index in SetBulge"},
      {"not a point", line, "StartPoint", Op::kLet, {Variant(0.0)},
       "Invalid argument StartPoint in StartPoint"},
      {"not a point", line, "EndPoint", Op::kLet, {DoublesValue({1, 2, 3, 4})},
       "Invalid argument EndPoint in EndPoint"},
      {"not a point", circle, "Center", Op::kLet, {Variant("c")},
       "Invalid argument Center in Center"},
      {"zero", circle, "Radius", Op::kLet, {Variant(0.0)}, "Invalid input"},
      {"negative", arc, "Radius", Op::kLet, {Variant(-1.0)}, "Invalid input"},
      {"not a number", arc, "StartAngle", Op::kLet, {Variant("a")}, "Type mismatch"},
      {"not a number", arc, "EndAngle", Op::kLet, {Variant("a")}, "Type mismatch"},
      {"no text", dimension, "TextOverride", Op::kLet, {Variant::Missing()},
       "Invalid argument TextOverride in TextOverride"},
      {"inner before outer", hatch, "AppendInnerLoop", Op::kCall, {ObjectsValue({circle})},
       "Not applicable"},
      {"an open boundary", hatch, "AppendOuterLoop", Op::kCall, {ObjectsValue({line})},
       "Invalid input"},
      {"not objects", hatch, "AppendOuterLoop", Op::kCall, {Variant(1.0)},
       "Invalid argument ObjectArray in AppendOuterLoop"},
      {"out of range", color, "ColorIndex", Op::kLet, {Variant(int32_t{257})}, "Invalid input"},
      {"missing arguments", style, "SetFont", Op::kCall, {Variant("Arial"), Variant(false)},
       "Argument not optional"},
      {"not a Boolean", style, "SetFont", Op::kCall,
       {Variant("Arial"), Variant("bold"), Variant(false), Variant(int32_t{0}),
        Variant(int32_t{0})},
       "Type mismatch"},
      {"negative", style, "Height", Op::kLet, {Variant(-1.0)}, "Invalid input"},
  });
  EXPECT_EQ(GetProperty(pline, "Coordinates").Array().ToDoubles(),
            (std::vector<double>{0, 0, 4, 0, 4, 3}));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(circle, "Radius")), 2);
  EXPECT_EQ(CLng(GetProperty(hatch, "NumberOfLoops")), 0);
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(dimension, "Measurement")), 7);
  std::vector<Variant> font(5);
  CallMethodRef(style, "GetFont", font);
  EXPECT_EQ(CStr(font[0]), "");
}

}  // namespace
}  // namespace tovik::host
