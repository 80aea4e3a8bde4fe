#include "host/core/journal.h"

#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

using UndoTest = HostTest;

std::vector<double> Doubles(const Variant& v) { return v.Array().ToDoubles(); }

TEST_F(UndoTest, UndoOneRevertsTheWholeLastGroup) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef kept = Line(0, 0, 1, 0);
  LetProperty(kept, "LinetypeScale", Variant(2.0));
  ObjectRef doomed = Line(5, 5, 6, 6);
  std::string kept_handle = CStr(GetProperty(kept, "Handle"));

  CallMethod(doc, "StartUndoMark");
  ObjectRef layer = CallMethod(layers, "Add", {Variant("Walls")}).Object();
  LetProperty(layer, "Lock", Variant(true));
  LetProperty(kept, "StartPoint", Pt(-1, -1));
  LetProperty(kept, "LinetypeScale", Variant(3.0));
  LetProperty(kept, "LinetypeScale", Variant(4.0));
  CallMethod(kept, "SetXData", {Variant(SafeArray::Of({Variant(int16_t{1001}), Variant(int16_t{1000})})),
                                Variant(SafeArray::Of({Variant("UNDOAPP"), Variant("x")}))});
  ObjectRef added = Line(9, 9, 10, 10);
  CallMethod(doomed, "Delete");
  CallMethod(doc, "SetVariable", {Variant("USERI2"), Variant(int16_t{7})});
  ObjectRef groups = GetProperty(doc, "Groups").Object();
  ObjectRef group = CallMethod(groups, "Add", {Variant("G1")}).Object();
  CallMethod(group, "AppendItems", {ObjectsValue({kept})});
  CallMethod(doc, "EndUndoMark");

  CallMethod(doc, "SendCommand", {Variant("Undo 1 ")});

  EXPECT_EQ(Doubles(GetProperty(kept, "StartPoint")), (std::vector<double>{0, 0, 0}));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(kept, "LinetypeScale")), 2.0);
  Variant types, values;
  std::vector<Variant> args{Variant(""), types, values};
  CallMethodRef(kept, "GetXData", args);
  EXPECT_TRUE(args[1].IsEmpty());
  EXPECT_EQ(ErrorOf([&] { GetProperty(added, "Layer"); }).Description(), "Object was erased");
  EXPECT_EQ(CStr(GetProperty(doomed, "Layer")), "0");  // revived
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 2);
  EXPECT_TRUE(SameObject(CallMethod(ms, "Item", {Variant(int32_t{1})}).Object(), doomed));
  EXPECT_EQ(CInt(CallMethod(doc, "GetVariable", {Variant("USERI2")})), 0);
  EXPECT_EQ(ErrorOf([&] { CallMethod(layers, "Item", {Variant("Walls")}); }).Description(),
            "Key not found");
  EXPECT_EQ(CLng(GetProperty(groups, "Count")), 0);
  ObjectRef apps = GetProperty(doc, "RegisteredApplications").Object();
  EXPECT_EQ(CLng(GetProperty(apps, "Count")), 1);
  EXPECT_EQ(CStr(GetProperty(kept, "Handle")), kept_handle);
  // The step before the group is next: the second line's creation.
  CallMethod(doc, "SendCommand", {Variant("_.UNDO 1 ")});
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 1);
}

TEST_F(UndoTest, MarksDoNotNestAndAStrayEndIsIgnored) {
  CallMethod(doc, "EndUndoMark");  // no group open: ignored
  CallMethod(doc, "StartUndoMark");
  Line(0, 0, 1, 1);
  CallMethod(doc, "StartUndoMark");  // closes the first group, opens another
  Line(0, 0, 2, 2);
  Line(0, 0, 3, 3);
  CallMethod(doc, "EndUndoMark");
  CallMethod(doc, "SendCommand", {Variant("UNDO 1 ")});
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 1);
  CallMethod(doc, "SendCommand", {Variant("UNDO\r1\r")});
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 0);
}

TEST_F(UndoTest, OutsideGroupsEachCallIsOneStep) {
  ObjectRef line = Line(0, 0, 1, 1);
  LetProperty(line, "EndPoint", Pt(5, 5));
  LetProperty(line, "EndPoint", Pt(7, 7));
  CallMethod(doc, "SendCommand", {Variant("U ")});
  EXPECT_EQ(Doubles(GetProperty(line, "EndPoint")), (std::vector<double>{5, 5, 0}));
  CallMethod(doc, "SendCommand", {Variant("UNDO 2 ")});
  EXPECT_EQ(ErrorOf([&] { GetProperty(line, "EndPoint"); }).Description(), "Object was erased");
}

// A property set to the value it has is a step of its own too: undoing it
// changes nothing and leaves the step before alone.
TEST_F(UndoTest, ASettingThatChangesNothingIsAStepOfItsOwn) {
  ObjectRef layer = CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("L1")}).Object();
  LetProperty(layer, "Lock", Variant(true));
  LetProperty(layer, "Lock", Variant(true));
  CallMethod(doc, "SendCommand", {Variant("U ")});
  EXPECT_TRUE(CBool(GetProperty(layer, "Lock")));
  CallMethod(doc, "SendCommand", {Variant("U ")});
  EXPECT_FALSE(CBool(GetProperty(layer, "Lock")));
}

TEST_F(UndoTest, UndoRevertsBlockInsertWithAttributesAndDraworder) {
  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  ObjectRef block = CallMethod(blocks, "Add", {Pt(0, 0), Variant("TAG")}).Object();
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("Tag?"),
                                     Pt(0, 0), Variant("T"), Variant("v")});
  ObjectRef a = Line(0, 0, 1, 1);
  ObjectRef b = Line(0, 0, 2, 2);
  ObjectRef xdict = CallMethod(ms, "GetExtensionDictionary").Object();
  ObjectRef table =
      CallMethod(xdict, "AddObject", {Variant("ACAD_SORTENTS"), Variant("AcDbSortentsTable")})
          .Object();
  CallMethod(doc, "StartUndoMark");
  ObjectRef ref = CallMethod(ms, "InsertBlock", {Pt(1, 1), Variant("tag"), Variant(1.0),
                                                 Variant(1.0), Variant(1.0)})
                      .Object();
  CallMethod(table, "MoveToBottom", {ObjectsValue({b})});
  CallMethod(doc, "EndUndoMark");
  CallMethod(doc, "SendCommand", {Variant("Undo 1 ")});
  EXPECT_EQ(ErrorOf([&] { GetProperty(ref, "Name"); }).Number(), kScodeObjectErased);
  Variant order;
  std::vector<Variant> args{order};
  CallMethodRef(table, "GetFullDrawOrder", args);
  const auto& items = args[0].Array().Items();
  ASSERT_EQ(items.size(), 2u);
  EXPECT_TRUE(SameObject(items[0].RawObject(), a));
  EXPECT_TRUE(SameObject(items[1].RawObject(), b));
}

}  // namespace
}  // namespace tovik::host
