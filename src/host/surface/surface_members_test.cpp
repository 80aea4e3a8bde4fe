// Every host member the library calls answers by name on the kind it is
// called on (spelled as the library spells it: names fold case), and an
// erased object refuses each of them with the host's error.
#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/surface_calls.h"

namespace tovik::host {
namespace {

struct KindMembers {
  const char* kind;
  ObjectRef object;
  std::vector<const char*> members;
};

TEST_F(SurfaceTest, EveryMemberTheLibraryCallsAnswersByName) {
  ObjectRef app = GetProperty(doc, "Application").Object();
  // The library reaches MoveToTop/MoveToBottom through the space's table.
  ObjectRef sortents = CallMethod(CallMethod(ms, "GetExtensionDictionary").Object(), "AddObject",
                                  {Variant("ACAD_SORTENTS"), Variant("AcDbSortentsTable")})
                           .Object();
  const std::vector<const char*> entity_members = {
      "Handle", "ObjectID", "ObjectID32", "OwnerID", "Document", "Layer", "LineType",
      "LinetypeScale", "Lineweight", "TrueColor", "Material", "PlotStyleName", "Visible",
      "GetBoundingBox", "IntersectWith", "Move", "Rotate", "Rotate3D", "ScaleEntity", "Copy",
      "Delete", "Highlight", "Update", "GetXData", "SetXdata", "GetExtensionDictionary"};
  const std::vector<KindMembers> table = {
      {"application", app, {"ActiveDocument", "Documents", "ZoomWindow", "Update"}},
      {"layer", CallMethod(GetProperty(doc, "Layers").Object(), "Item", {Variant(int16_t{0})})
                    .Object(),
       {"Name", "Lock", "Freeze", "LayerOn", "TrueColor", "GetXData", "SetXData"}},
      {"documents", GetProperty(app, "Documents").Object(), {"Count", "Item"}},
      {"document", doc, {"Name", "ActiveLayout", "ActiveSpace", "MSpace", "Activelayer",
                         "ModelSpace", "PaperSpace", "Blocks", "Layers", "TextStyles",
                         "Materials", "Groups", "RegisteredApplications", "SelectionSets",
                         "PickfirstSelectionSet", "Utility", "GetVariable", "SetVariable",
                         "SendCommand", "StartUndoMark", "EndUndoMark", "HandleToObject",
                         "ObjectIDToObject", "ObjectIDToObject32", "CopyObjects", "Import"}},
      {"blocks", blocks, {"Item", "Count", "Add"}},
      {"layers", GetProperty(doc, "Layers").Object(), {"Item", "Count", "Add"}},
      {"text styles", GetProperty(doc, "TextStyles").Object(), {"Item", "Count", "Add"}},
      {"groups", GetProperty(doc, "Groups").Object(), {"Item", "Count", "Add"}},
      {"group", group, {"Item", "Count", "AppendItems", "Delete", "Highlight", "Update"}},
      {"selection sets", GetProperty(doc, "SelectionSets").Object(), {"Item", "Count", "Add"}},
      {"selection set", set, {"Item", "Count", "Delete", "Clear", "AddItems", "Select",
                              "SelectAtPoint", "SelectByPolygon", "SelectOnScreen", "Highlight",
                              "Update"}},
      {"dictionaries", GetProperty(doc, "Dictionaries").Object(), {"Item", "Count", "Add"}},
      {"dictionary", dictionary, {"Item", "Count", "Remove", "Delete", "AddObject", "GetObject"}},
      {"block definition", block, {"Name", "Origin", "Units", "IsLayout", "Explodable",
                                   "Comments", "Document", "InsertBlock",
                                   "AddLightWeightPolyline", "AddText", "AddHatch"}},
      {"entity", line, entity_members},
      {"entity with a plane", circle, {"Normal", "Thickness"}},
      {"polyline plane", pline, {"Normal", "Thickness", "Elevation"}},
      {"hatch", hatch, {"Elevation", "AppendOuterLoop", "AppendInnerLoop", "Normal"}},
      {"block reference", ref, {"Name", "EffectiveName", "InsertionPoint", "Rotation",
                                "XScaleFactor", "YScaleFactor", "ZScaleFactor",
                                "XEffectiveScaleFactor", "YEffectiveScaleFactor",
                                "ZEffectiveScaleFactor", "IsDynamicBlock", "GetAttributes",
                                "GetDynamicBlockProperties", "ConvertToAnonymousBlock",
                                "Explode"}},
      {"draw-order table", sortents, {"MoveToBottom", "MoveToTop", "MoveAbove", "MoveBelow",
                                      "SwapOrder", "GetFullDrawOrder", "Block"}},
      {"attribute", attref, {"TagString", "TextString", "Height", "Alignment",
                             "TextAlignmentPoint", "StyleName", "ObliqueAngle", "UpsideDown",
                             "Backward", "Invisible", "Constant"}},
      {"attribute definition", attdef, {"TagString", "TextString", "Height", "Alignment",
                                        "TextAlignmentPoint", "StyleName", "ObliqueAngle",
                                        "UpsideDown", "Backward", "Invisible", "Constant"}},
      {"text", text, {"TextString", "Height", "Alignment", "TextAlignmentPoint", "StyleName",
                      "ObliqueAngle", "UpsideDown", "Backward"}},
      {"dynamic-block property", dynprop, {"PropertyName", "Value", "UnitsType"}},
      {"polyline", pline, {"Coordinates", "Coordinate", "Closed", "GetBulge", "SetBulge",
                           "Explode"}},
      {"line", line, {"StartPoint", "EndPoint"}},
      {"circle", circle, {"Center", "Radius"}},
      {"arc", arc, {"Center", "Radius", "StartAngle", "EndAngle", "TotalAngle"}},
      {"dimension", dimension, {"Measurement", "TextOverride"}},
      {"colour", color, {"ColorIndex", "Red", "Green", "Blue"}},
      {"text style", style, {"SetFont", "Height"}},
      {"utility", utility, {"GetPoint", "GetDistance", "GetInput", "GetSubEntity", "Prompt",
                            "TranslateCoordinates"}},
  };
  for (const KindMembers& k : table) {
    for (const char* member : k.members) {
      SCOPED_TRACE(std::string(k.kind) + "." + member);
      EXPECT_NE(k.object->GetIdOfName(member), kDispIdUnknown);
    }
  }
  // The system variables the library reads and writes.
  for (const char* name : {"USERS1", "USERS2", "USERS3", "USERI1", "USERR1", "USERR2", "USERR3",
                           "USERR4", "INSUNITS", "VIEWCTR", "VIEWSIZE", "VIEWDIR", "VIEWTWIST",
                           "SCREENSIZE", "UCSORG", "UCSXDIR", "UCSYDIR", "TARGET", "CLAYER"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ErrorOf([&] { CallMethod(doc, "GetVariable", {Variant(name)}); }).Number(), 0);
  }
}

// Once erased, an entity answers Handle and ObjectName only: every other
// member the library calls raises "Object was erased", arguments unread.
TEST_F(SurfaceTest, ErasedEntitiesRefuseEveryMemberButHandle) {
  const char* members[] = {
      "ObjectID", "ObjectID32", "OwnerID", "Document", "Layer", "Linetype", "LinetypeScale",
      "Lineweight", "TrueColor", "Material", "PlotStyleName", "Visible", "GetBoundingBox",
      "Copy", "Delete", "Explode", "Highlight", "Update", "GetExtensionDictionary", "Normal",
      "Coordinates", "Closed", "InsertionPoint", "Name", "GetAttributes", "TextString"};
  ObjectRef objects[] = {line, pline, ref, text};
  for (const ObjectRef& o : objects) CallMethod(o, "Delete");
  for (const ObjectRef& o : objects) {
    EXPECT_FALSE(CStr(GetProperty(o, "Handle")).empty());
    for (const char* member : members) {
      if (o->GetIdOfName(member) == kDispIdUnknown) continue;
      SCOPED_TRACE(std::string(TypeName(Variant(o))) + "." + member);
      AutomationError r = ErrorOf([&] { GetProperty(o, member); });
      EXPECT_EQ(r.Number(), kScodeObjectErased);
      EXPECT_EQ(r.Description(), "Object was erased");
    }
  }
  // The attribute reference went with its block reference.
  EXPECT_EQ(ErrorOf([&] { GetProperty(attref, "TextString"); }).Number(), kScodeObjectErased);
}

}  // namespace
}  // namespace tovik::host
