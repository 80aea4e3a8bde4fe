// The error paths of the application, document, collection, block and
// utility members the library calls, each through the dispatch interface,
// and that a refused call leaves the drawing as it was.
#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/surface_calls.h"

namespace tovik::host {
namespace {

const std::string kNotSupported = "Object doesn't support this property or method";
const std::string kWrongCount = "Wrong number of arguments or invalid property assignment";

TEST_F(SurfaceTest, ApplicationAndDocumentMembersRefuseBadArguments) {
  ObjectRef app = GetProperty(doc, "Application").Object();
  ObjectRef documents = GetProperty(app, "Documents").Object();
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef frozen = CallMethod(layers, "Add", {Variant("Frozen")}).Object();
  LetProperty(frozen, "Freeze", Variant(true));
  ObjectRef erased = Line(0, 0, 1, 1);
  std::string erased_handle = CStr(GetProperty(erased, "Handle"));
  CallMethod(erased, "Delete");
  ExpectErrors({
      {"Nothing", app, "ActiveDocument", Op::kSet, {Variant(ObjectRef())},
       "Invalid argument ActiveDocument in ActiveDocument"},
      {"not a document", app, "ActiveDocument", Op::kSet, {Variant(line)},
       "Invalid argument ActiveDocument in ActiveDocument"},
      {"on the application", app, "GetVariable", Op::kCall, {Variant("CLAYER")}, kNotSupported},
      {"bad index", documents, "Item", Op::kCall, {Variant(int32_t{1})}, "Key not found"},
      {"bad name", documents, "Item", Op::kCall, {Variant("Nope.dwg")}, "Key not found"},
      {"negative index", documents, "Item", Op::kCall, {Variant(int16_t{-1})}, "Key not found"},
      {"read-only", documents, "Count", Op::kLet, {Variant(int32_t{2})}, kNotSupported},
      {"bad corner", app, "ZoomWindow", Op::kCall, {Variant(1.0), Pt(1, 1)},
       "Invalid argument LowerLeft in ZoomWindow"},
      {"one corner", app, "ZoomWindow", Op::kCall, {Pt(0, 0)}, "Argument not optional"},
      {"read-only", doc, "ModelSpace", Op::kSet, {Variant(block)}, kNotSupported},
      {"not a layout", doc, "ActiveLayout", Op::kSet, {Variant(block)},
       "Invalid argument ActiveLayout in ActiveLayout"},
      {"out of range", doc, "ActiveSpace", Op::kLet, {Variant(int32_t{2})}, "Invalid input"},
      {"not a number", doc, "ActiveSpace", Op::kLet, {Variant("model")}, "Type mismatch"},
      {"in model space", doc, "MSpace", Op::kLet, {Variant(true)}, "Not applicable"},
      {"not a layer", doc, "ActiveLayer", Op::kSet, {Variant(line)},
       "Invalid argument ActiveLayer in ActiveLayer"},
      {"frozen", doc, "ActiveLayer", Op::kSet, {Variant(frozen)}, "Invalid layer"},
      {"unknown name", doc, "GetVariable", Op::kCall, {Variant("NOSUCHVAR")},
       "Error getting system variable"},
      {"read-only", doc, "SetVariable", Op::kCall, {Variant("VIEWSIZE"), Variant(1.0)},
       "Error setting system variable"},
      {"Long for an Integer", doc, "SetVariable", Op::kCall,
       {Variant("USERI1"), Variant(int32_t{1})}, "Invalid argument Value in SetVariable"},
      {"missing layer", doc, "SetVariable", Op::kCall, {Variant("CLAYER"), Variant("Nope")},
       "Key not found"},
      {"an argument", doc, "StartUndoMark", Op::kCall, {Variant(1.0)}, kWrongCount},
      {"not hex", doc, "HandleToObject", Op::kCall, {Variant("XYZ")}, "Invalid handle"},
      {"unknown", doc, "HandleToObject", Op::kCall, {Variant("FFFFF")}, "Invalid handle"},
      {"erased", doc, "HandleToObject", Op::kCall, {Variant(erased_handle)}, "Invalid handle"},
      {"unknown", doc, "ObjectIDToObject", Op::kCall, {Variant(int64_t{12345})},
       "Invalid object ID"},
      {"not a number", doc, "ObjectIDToObject", Op::kCall, {Variant("1")},
       "Invalid argument ObjectID in ObjectIDToObject"},
      {"unknown", doc, "ObjectIDToObject32", Op::kCall, {Variant(int32_t{7})},
       "Invalid object ID"},
      {"erased", doc, "ObjectIDToObject32", Op::kCall,
       {Variant(int32_t{static_cast<DbObject*>(erased.get())->id()})}, "Invalid object ID"},
  });
  // Nothing of the refused calls stuck.
  EXPECT_EQ(CStr(GetProperty(GetProperty(doc, "ActiveLayer").Object(), "Name")), "0");
  EXPECT_EQ(CLng(GetProperty(doc, "ActiveSpace")), 1);
  EXPECT_EQ(CStr(CallMethod(doc, "GetVariable", {Variant("CLAYER")})), "0");
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("USERI1")})), 0);
}

TEST_F(SurfaceTest, CollectionMembersRefuseBadArguments) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef styles = GetProperty(doc, "TextStyles").Object();
  ObjectRef groups = GetProperty(doc, "Groups").Object();
  ObjectRef sets = GetProperty(doc, "SelectionSets").Object();
  ObjectRef dictionaries = GetProperty(doc, "Dictionaries").Object();
  ObjectRef other_doc = app_->AddDocument();
  ObjectRef foreign = CallMethod(GetProperty(other_doc, "ModelSpace").Object(), "AddLine",
                                 {Pt(0, 0), Pt(1, 0)}).Object();
  app_->Activate(std::static_pointer_cast<Document>(doc));
  ExpectErrors({
      {"bad index", blocks, "Item", Op::kCall, {Variant(int32_t{99})}, "Key not found"},
      {"bad name", layers, "Item", Op::kCall, {Variant("Nope")}, "Key not found"},
      {"negative", styles, "Item", Op::kCall, {Variant(int16_t{-1})}, "Key not found"},
      {"a point", groups, "Item", Op::kCall, {Pt(0, 0)}, "Invalid argument Index in Item"},
      {"case differs", sets, "Item", Op::kCall, {Variant("s")}, "Key not found"},
      {"bad name", dictionaries, "Item", Op::kCall, {Variant("Nope")}, "Key not found"},
      {"invalid name", layers, "Add", Op::kCall, {Variant("a*b")}, "Invalid input"},
      {"empty name", styles, "Add", Op::kCall, {Variant("")}, "Invalid input"},
      {"bad origin", blocks, "Add", Op::kCall, {Variant(1.0), Variant("X")},
       "Invalid argument InsertionPoint in Add"},
      {"name in use", groups, "Add", Op::kCall, {Variant("g")}, "Duplicate record name"},
      {"name in use", sets, "Add", Op::kCall, {Variant("S")}, "Duplicate key"},
      {"collection", layers, "Delete", Op::kCall, {}, "Cannot delete"},
      {"collection", blocks, "Delete", Op::kCall, {}, "Cannot delete"},
      {"missing key", dictionary, "Remove", Op::kCall, {Variant("Nope")}, "Key not found"},
      {"missing key", dictionary, "GetObject", Op::kCall, {Variant("Nope")}, "Key not found"},
      {"unknown class", dictionary, "AddObject", Op::kCall, {Variant("K"), Variant("AcDbNope")},
       "Invalid input"},
      {"empty keyword", dictionary, "AddObject", Op::kCall,
       {Variant(""), Variant("AcDbXrecord")}, "Invalid argument Keyword in AddObject"},
      {"another drawing's entity", set, "AddItems", Op::kCall, {ObjectsValue({foreign})},
       "Invalid argument Objects in AddItems"},
      {"not an array", set, "AddItems", Op::kCall, {Variant(line)},
       "Invalid argument Objects in AddItems"},
      {"another drawing's entity", group, "AppendItems", Op::kCall, {ObjectsValue({foreign})},
       "Invalid argument Objects in AppendItems"},
      {"not a mode", set, "Select", Op::kCall, {Variant(int32_t{9})},
       "Invalid argument Mode in Select"},
      {"window without corners", set, "Select", Op::kCall, {Variant(int32_t{0})},
       "Invalid argument Point1 in Select"},
      {"bad point", set, "SelectAtPoint", Op::kCall, {Variant("p")},
       "Invalid argument Point in SelectAtPoint"},
      {"two points for a polygon", set, "SelectByPolygon", Op::kCall,
       {Variant(int32_t{6}), DoublesValue({0, 0, 0, 1, 1, 0})},
       "Invalid argument PointsList in SelectByPolygon"},
      {"Long filter codes", set, "SelectOnScreen", Op::kCall,
       {Variant(SafeArray::Of({Variant(int32_t{0})})), Variant(SafeArray::Of({Variant("LINE")}))},
       "Invalid argument FilterType in SelectOnScreen"},
      {"not a Boolean", set, "Highlight", Op::kCall, {Variant("yes")}, "Type mismatch"},
      {"not a Boolean", group, "Highlight", Op::kCall, {Variant("yes")}, "Type mismatch"},
  });
  EXPECT_EQ(CLng(GetProperty(layers, "Count")), 1);
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  EXPECT_EQ(CLng(GetProperty(group, "Count")), 0);
  EXPECT_EQ(CLng(GetProperty(dictionary, "Count")), 0);
}

TEST_F(SurfaceTest, BlockDefinitionMembersRefuseBadArguments) {
  CallMethod(blocks, "Add", {Pt(0, 0), Variant("Other")});
  ExpectErrors({
      {"model space", ms, "Name", Op::kLet, {Variant("M")}, "Not applicable"},
      {"name in use", block, "Name", Op::kLet, {Variant("OTHER")},
       "Duplicate record name"},
      {"invalid name", block, "Name", Op::kLet, {Variant("a?")}, "Invalid input"},
      {"not a point", block, "Origin", Op::kLet, {Variant(1.0)},
       "Invalid argument Origin in Origin"},
      {"out of range", block, "Units", Op::kLet, {Variant(int32_t{25})}, "Invalid input"},
      {"not a number", block, "Units", Op::kLet, {Variant("mm")}, "Type mismatch"},
      {"not a Boolean", block, "Explodable", Op::kLet, {Variant("no")}, "Type mismatch"},
      {"no text", block, "Comments", Op::kLet, {Variant::Missing()},
       "Invalid argument Comments in Comments"},
      {"undefined block", ms, "InsertBlock", Op::kCall,
       {Pt(0, 0), Variant("Nope"), Variant(1.0), Variant(1.0), Variant(1.0)}, "Key not found"},
      {"zero scale", ms, "InsertBlock",
       Op::kCall, {Pt(0, 0), Variant("B"), Variant(0.0), Variant(1.0), Variant(1.0)},
       "Invalid input"},
      {"into itself", block, "InsertBlock", Op::kCall,
       {Pt(0, 0), Variant("B"), Variant(1.0), Variant(1.0), Variant(1.0)}, "Invalid input"},
      {"a layout block", ms, "InsertBlock", Op::kCall,
       {Pt(0, 0), Variant("*Paper_Space"), Variant(1.0), Variant(1.0), Variant(1.0)},
       "Invalid input"},
      {"odd count", ms, "AddLightWeightPolyline", Op::kCall, {DoublesValue({0, 0, 1, 0, 2})},
       "Invalid argument VerticesList in AddLightWeightPolyline"},
      {"one vertex", ms, "AddLightWeightPolyline", Op::kCall, {DoublesValue({0, 0})},
       "Invalid argument VerticesList in AddLightWeightPolyline"},
      {"bad point", ms, "AddText", Op::kCall, {Variant("t"), Variant(0.0), Variant(1.0)},
       "Invalid argument InsertionPoint in AddText"},
      {"zero height", ms, "AddText", Op::kCall, {Variant("t"), Pt(0, 0), Variant(0.0)},
       "Invalid input"},
      {"bad pattern type", ms, "AddHatch", Op::kCall,
       {Variant(int32_t{7}), Variant("ANSI31"), Variant(false)}, "Invalid input"},
      {"missing arguments", ms, "AddHatch", Op::kCall, {Variant(int32_t{1})},
       "Argument not optional"},
  });
  EXPECT_EQ(CStr(GetProperty(block, "Name")), "B");
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 8);  // the fixture's entities only
}

TEST_F(SurfaceTest, UtilityMembersRefuseBadArguments) {
  ExpectErrors({
      {"bad base", utility, "GetPoint", Op::kCall, {Variant(1.0)},
       "Invalid argument Point in GetPoint"},
      {"nothing queued", utility, "GetPoint", Op::kCall, {}, "Function cancelled"},
      {"nothing queued", utility, "GetDistance", Op::kCall, {}, "Function cancelled"},
      {"too few", utility, "GetSubEntity", Op::kCall, {Variant(), Variant()},
       "Argument not optional"},
      {"nothing queued", utility, "GetSubEntity", Op::kCall,
       {Variant(), Variant(), Variant(), Variant()}, "Function cancelled"},
      {"Variant point", utility, "TranslateCoordinates", Op::kCall,
       {Variant(SafeArray::Of({Variant(1.0), Variant(2.0), Variant(3.0)})), Variant(int32_t{0}),
        Variant(int32_t{1}), Variant(int32_t{0})},
       "Invalid argument Point in TranslateCoordinates"},
      {"bad system", utility, "TranslateCoordinates", Op::kCall,
       {Pt(0, 0), Variant(int32_t{7}), Variant(int32_t{1}), Variant(int32_t{0})},
       "Invalid argument From in TranslateCoordinates"},
      {"nothing queued", utility, "GetEntity", Op::kCall, {Variant(), Variant()},
       "Function cancelled"},
      {"OCS to OCS", utility, "TranslateCoordinates", Op::kCall,
       {Pt(0, 0), Variant(int32_t{4}), Variant(int32_t{4}), Variant(int32_t{0}), Pt(0, 0, 1)},
       "Invalid input"},
  });
}

}  // namespace
}  // namespace tovik::host
