#include "host/tables/collections.h"

#include "host/entities/entity.h"
#include "host/tables/block.h"

#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

using TablesTest = HostTest;

TEST_F(TablesTest, ItemTakesIndexOrNameCaseInsensitivelyNonAsciiToo) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef walls = CallMethod(layers, "Add", {Variant("Стены")}).Object();
  EXPECT_TRUE(SameObject(CallMethod(layers, "Item", {Variant("СТЕНЫ")}).Object(), walls));
  EXPECT_TRUE(SameObject(CallMethod(layers, "Item", {Variant(int16_t{1})}).Object(), walls));
  EXPECT_TRUE(SameObject(CallMethod(layers, "Item", {Variant(int32_t{1})}).Object(), walls));
  // Add of an existing name returns the record untouched.
  EXPECT_TRUE(SameObject(CallMethod(layers, "Add", {Variant("стены")}).Object(), walls));
  EXPECT_EQ(CLng(GetProperty(layers, "Count")), 2);
  struct Case {
    const char* what;
    Variant index;
    int32_t number;
    const char* text;
  } cases[] = {
      {"one past the end", Variant(int32_t{2}), kScodeKeyNotFound, "Key not found"},
      {"negative", Variant(int16_t{-1}), kScodeKeyNotFound, "Key not found"},
      {"missing name", Variant("Roof"), kScodeKeyNotFound, "Key not found"},
      {"not a key", Variant(SafeArray::OfDoubles({1.0})), kScodeInvalidArgument,
       "Invalid argument Index in Item"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AutomationError r = ErrorOf([&] { CallMethod(layers, "Item", {c.index}); });
    EXPECT_EQ(r.Number(), c.number);
    EXPECT_EQ(r.Description(), c.text);
  }
  AutomationError r = ErrorOf([&] { CallMethod(layers, "Add", {Variant("a<b")}); });
  EXPECT_EQ(r.Description(), "Invalid input");
  r = ErrorOf([&] { CallMethod(layers, "Delete"); });
  EXPECT_EQ(r.Description(), "Cannot delete");
}

TEST_F(TablesTest, LayerRules) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef layer0 = CallMethod(layers, "Item", {Variant("0")}).Object();
  ObjectRef used = CallMethod(layers, "Add", {Variant("Used")}).Object();
  ObjectRef spare = CallMethod(layers, "Add", {Variant("Spare")}).Object();
  ObjectRef line = Line(0, 0, 1, 1);
  LetProperty(line, "Layer", Variant("used"));
  EXPECT_EQ(CStr(GetProperty(line, "Layer")), "Used");  // the table's spelling
  ExpectProperties(used, {{"Color", 7}, {"Linetype", "Continuous"}});
  EXPECT_EQ(ErrorOf([&] { CallMethod(layer0, "Delete"); }).Description(), "Object is referenced");
  EXPECT_EQ(ErrorOf([&] { CallMethod(used, "Delete"); }).Description(), "Object is referenced");
  EXPECT_EQ(ErrorOf([&] { LetProperty(layer0, "Freeze", Variant(true)); }).Description(),
            "Invalid layer");
  EXPECT_EQ(ErrorOf([&] { LetProperty(line, "Layer", Variant("Nope")); }).Description(),
            "Key not found");
  // A locked layer's entities refuse every change but can be read.
  LetProperty(used, "Lock", Variant(true));
  AutomationError r = ErrorOf([&] { LetProperty(line, "EndPoint", Pt(4, 4)); });
  EXPECT_EQ(r.Description(), "On locked layer");
  EXPECT_EQ(ErrorOf([&] { CallMethod(line, "Delete"); }).Description(), "On locked layer");
  EXPECT_EQ(CStr(GetProperty(line, "Layer")), "Used");  // reading still works
  // Moving an entity onto a locked layer is refused too.
  ObjectRef other = Line(0, 0, 2, 2);
  EXPECT_EQ(ErrorOf([&] { LetProperty(other, "Layer", Variant("Used")); }).Description(),
            "On locked layer");
  EXPECT_EQ(ErrorOf([&] { CallMethod(spare, "Delete"); }).Number(), 0);
}

TEST_F(TablesTest, BlocksAnonymousNamesAndDeleteRules) {
  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  EXPECT_EQ(TypeName(CallMethod(blocks, "Item", {Variant("*model_space")})), "IAcadModelSpace");
  EXPECT_EQ(TypeName(CallMethod(blocks, "Item", {Variant("*Paper_Space")})), "IAcadPaperSpace");
  EXPECT_EQ(TypeName(CallMethod(blocks, "Item", {Variant("*Paper_Space0")})), "IAcadBlock");
  ObjectRef anon1 = CallMethod(blocks, "Add", {Pt(0, 0), Variant("*U")}).Object();
  ObjectRef anon2 = CallMethod(blocks, "Add", {Pt(0, 0), Variant("*U")}).Object();
  EXPECT_EQ(CStr(GetProperty(anon1, "Name")).rfind("*U", 0), 0u);
  EXPECT_NE(CStr(GetProperty(anon1, "Name")), CStr(GetProperty(anon2, "Name")));
  ObjectRef door = CallMethod(blocks, "Add", {Pt(5, 5), Variant("Door")}).Object();
  CallMethod(door, "AddLine", {Pt(0, 0), Pt(1, 0)});
  // Existing name: the same definition, contents kept.
  ObjectRef again = CallMethod(blocks, "Add", {Pt(0, 0), Variant("DOOR")}).Object();
  EXPECT_TRUE(SameObject(again, door));
  EXPECT_EQ(CLng(GetProperty(door, "Count")), 1);
  EXPECT_EQ(PointArg(GetProperty(door, "Origin"), {"", ""}), (geometry::Vec3{5, 5, 0}));
  ObjectRef ref = CallMethod(ms, "InsertBlock", {Pt(0, 0), Variant("door"), Variant(1.0),
                                                 Variant(1.0), Variant(1.0)}).Object();
  EXPECT_EQ(ErrorOf([&] { CallMethod(door, "Delete"); }).Description(), "Object is referenced");
  EXPECT_EQ(ErrorOf([&] { CallMethod(ms, "Delete"); }).Description(), "Not applicable");
  EXPECT_EQ(ErrorOf([&] {
              CallMethod(ms, "InsertBlock", {Pt(0, 0), Variant("Window"), Variant(1.0),
                                             Variant(1.0), Variant(1.0)});
            }).Description(),
            "Key not found");
  EXPECT_EQ(ErrorOf([&] {
              CallMethod(ms, "InsertBlock", {Pt(0, 0), Variant("Door"), Variant(0.0),
                                             Variant(1.0), Variant(1.0)});
            }).Description(),
            "Invalid input");
  // Inserting a block into itself is refused.
  EXPECT_EQ(ErrorOf([&] {
              CallMethod(door, "InsertBlock", {Pt(0, 0), Variant("Door"), Variant(1.0),
                                               Variant(1.0), Variant(1.0)});
            }).Description(),
            "Invalid input");
  CallMethod(ref, "Delete");
  CallMethod(door, "Delete");
  EXPECT_EQ(ErrorOf([&] { CallMethod(blocks, "Item", {Variant("Door")}); }).Description(),
            "Key not found");
}

TEST_F(TablesTest, GroupsCountLiveMembersOnly) {
  ObjectRef groups = GetProperty(doc, "Groups").Object();
  ObjectRef group = CallMethod(groups, "Add", {Variant("TOVIK_COM")}).Object();
  EXPECT_EQ(TypeName(Variant(group)), "IAcadGroup");
  EXPECT_EQ(ErrorOf([&] { CallMethod(groups, "Add", {Variant("tovik_com")}); }).Description(),
            "Duplicate record name");
  ObjectRef a = Line(0, 0, 1, 1), b = Line(0, 0, 2, 2);
  CallMethod(group, "AppendItems", {ObjectsValue({a, b, a})});
  EXPECT_EQ(CLng(GetProperty(group, "Count")), 2);
  CallMethod(a, "Delete");
  EXPECT_EQ(CLng(GetProperty(group, "Count")), 1);
  EXPECT_TRUE(SameObject(CallMethod(group, "Item", {Variant(int16_t{0})}).Object(), b));
  EXPECT_EQ(ErrorOf([&] { CallMethod(group, "Item", {Variant(int16_t{1})}); }).Description(),
            "Key not found");
  // Write-only display properties set every member; reading is refused.
  LetProperty(group, "Lineweight", Variant(int32_t{50}));
  EXPECT_EQ(CLng(GetProperty(b, "Lineweight")), 50);
  EXPECT_EQ(ErrorOf([&] { GetProperty(group, "Lineweight"); }).Number(), kErrNotSupported);
  CallMethod(group, "RemoveItems", {ObjectsValue({b})});
  EXPECT_EQ(CLng(GetProperty(group, "Count")), 0);
  ObjectRef anon = CallMethod(groups, "Add", {Variant("*")}).Object();
  EXPECT_EQ(CStr(GetProperty(anon, "Name")), "*A1");
  CallMethod(group, "Delete");
  EXPECT_EQ(CLng(GetProperty(groups, "Count")), 1);
  EXPECT_EQ(CStr(GetProperty(b, "Layer")), "0");  // its entities stay
}

TEST_F(TablesTest, SelectionSetNamesAreCaseSensitiveAndUnique) {
  ObjectRef sets = GetProperty(doc, "SelectionSets").Object();
  ObjectRef s1 = CallMethod(sets, "Add", {Variant("Work")}).Object();
  ObjectRef s2 = CallMethod(sets, "Add", {Variant("WORK")}).Object();
  EXPECT_FALSE(SameObject(s1, s2));
  AutomationError r = ErrorOf([&] { CallMethod(sets, "Add", {Variant("Work")}); });
  EXPECT_EQ(r.Description(), "Duplicate key");
  EXPECT_TRUE(SameObject(CallMethod(sets, "Item", {Variant("WORK")}).Object(), s2));
  EXPECT_EQ(ErrorOf([&] { CallMethod(sets, "Item", {Variant("work")}); }).Description(),
            "Key not found");
  ObjectRef a = Line(0, 0, 1, 1), b = Line(0, 0, 2, 2);
  CallMethod(s1, "AddItems", {ObjectsValue({a, b, a})});
  EXPECT_EQ(CLng(GetProperty(s1, "Count")), 2);
  CallMethod(s1, "RemoveItems", {ObjectsValue({a})});
  EXPECT_TRUE(SameObject(CallMethod(s1, "Item", {Variant(int16_t{0})}).Object(), b));
  CallMethod(b, "Delete");
  EXPECT_EQ(CLng(GetProperty(s1, "Count")), 0);
  CallMethod(s1, "AddItems", {ObjectsValue({a})});
  CallMethod(s1, "Highlight", {Variant(true)});
  CallMethod(s1, "Update");
  CallMethod(s1, "Clear");
  EXPECT_EQ(CLng(GetProperty(s1, "Count")), 0);
  CallMethod(s1, "Delete");
  EXPECT_EQ(CLng(GetProperty(sets, "Count")), 1);
  CallMethod(sets, "Add", {Variant("Work")});  // the name is free again
  ObjectRef foreign = CallMethod(GetProperty(app_->AddDocument()->Self(), "ModelSpace").Object(),
                                 "AddLine", {Pt(0, 0), Pt(1, 1)}).Object();
  r = ErrorOf([&] { CallMethod(s2, "AddItems", {ObjectsValue({foreign})}); });
  EXPECT_EQ(r.Description(), "Invalid argument Objects in AddItems");
}

TEST_F(TablesTest, DictionariesAndXRecords) {
  ObjectRef dicts = GetProperty(doc, "Dictionaries").Object();
  ObjectRef dict = CallMethod(dicts, "Add", {Variant("TOVIK")}).Object();
  EXPECT_TRUE(SameObject(CallMethod(dicts, "Add", {Variant("tovik")}).Object(), dict));
  ObjectRef xrec = CallMethod(dict, "AddXRecord", {Variant("Data")}).Object();
  EXPECT_EQ(TypeName(Variant(xrec)), "IAcadXRecord");
  std::vector<Variant> outs{Variant(), Variant()};
  CallMethodRef(xrec, "GetXRecordData", outs);
  EXPECT_TRUE(outs[0].IsEmpty());
  SafeArray codes(VarType::kInteger, 0, 1);
  codes.Set(0, Variant(int16_t{1}));
  CallMethod(xrec, "SetXRecordData", {Variant(codes), Variant(SafeArray::Of({Variant("v")}))});
  CallMethodRef(xrec, "GetXRecordData", outs);
  EXPECT_EQ(CStr(outs[1].Array().Items()[0]), "v");
  EXPECT_TRUE(SameObject(CallMethod(dict, "GetObject", {Variant("DATA")}).Object(), xrec));
  EXPECT_EQ(ErrorOf([&] { CallMethod(dict, "GetObject", {Variant("None")}); }).Description(),
            "Key not found");
  EXPECT_EQ(ErrorOf([&] { CallMethod(dict, "AddObject", {Variant("K"), Variant("AcDbNope")}); })
                .Description(),
            "Invalid input");
  // An existing keyword is replaced and the old object erased.
  ObjectRef sub = CallMethod(dict, "AddObject", {Variant("data"), Variant("AcDbDictionary")}).Object();
  EXPECT_EQ(CLng(GetProperty(dict, "Count")), 1);
  EXPECT_EQ(ErrorOf([&] { CallMethod(xrec, "GetXRecordData", {Variant(), Variant()}); }).Number(),
            kScodeObjectErased);
  ObjectRef removed = CallMethod(dict, "Remove", {Variant("Data")}).Object();
  EXPECT_TRUE(SameObject(removed, sub));
  EXPECT_EQ(CLng(GetProperty(dict, "Count")), 0);
  ObjectRef line = Line(0, 0, 1, 1);
  EXPECT_FALSE(CBool(GetProperty(line, "HasExtensionDictionary")));
  ObjectRef xd = CallMethod(line, "GetExtensionDictionary").Object();
  EXPECT_TRUE(CBool(GetProperty(line, "HasExtensionDictionary")));
  EXPECT_TRUE(SameObject(CallMethod(line, "GetExtensionDictionary").Object(), xd));
}

TEST_F(TablesTest, DrawOrderTableMovesEntities) {
  ObjectRef a = Line(0, 0, 1, 1), b = Line(0, 0, 2, 2), c = Line(0, 0, 3, 3),
            d = Line(0, 0, 4, 4);
  ObjectRef xd = CallMethod(ms, "GetExtensionDictionary").Object();
  ObjectRef table =
      CallMethod(xd, "AddObject", {Variant("ACAD_SORTENTS"), Variant("AcDbSortentsTable")}).Object();
  EXPECT_EQ(TypeName(Variant(table)), "IAcadSortentsTable");
  EXPECT_TRUE(SameObject(GetProperty(table, "Block").Object(), ms));
  auto order = [&] {
    std::vector<Variant> args{Variant(), Variant(true)};
    CallMethodRef(table, "GetFullDrawOrder", args);
    std::string names;
    for (const Variant& v : args[0].Array().Items()) {
      double x = PointArg(GetProperty(v.RawObject(), "EndPoint"), {"", ""}).x;
      names += static_cast<char>('a' + static_cast<int>(x) - 1);
    }
    return names;
  };
  EXPECT_EQ(order(), "abcd");
  CallMethod(table, "MoveToTop", {ObjectsValue({b, a})});
  EXPECT_EQ(order(), "cdab");  // relative order kept
  CallMethod(table, "MoveToBottom", {ObjectsValue({d})});
  EXPECT_EQ(order(), "dcab");
  CallMethod(table, "MoveAbove", {ObjectsValue({d}), Variant(a)});
  EXPECT_EQ(order(), "cadb");
  CallMethod(table, "MoveBelow", {ObjectsValue({b}), Variant(c)});
  EXPECT_EQ(order(), "bcad");
  CallMethod(table, "SwapOrder", {Variant(b), Variant(d)});
  EXPECT_EQ(order(), "dcab");
  ObjectRef e = Line(0, 0, 5, 5);  // new entities go on top
  EXPECT_EQ(order(), "dcabe");
  CallMethod(c, "Delete");
  EXPECT_EQ(order(), "dabe");
  EXPECT_EQ(ErrorOf([&] { CallMethod(table, "MoveToTop", {ObjectsValue({a, a})}); }).Description(),
            "Invalid input");
  ObjectRef other = CallMethod(CallMethod(GetProperty(doc, "Blocks").Object(), "Add",
                                          {Pt(0, 0), Variant("B")}).Object(),
                               "AddLine", {Pt(0, 0), Pt(9, 9)}).Object();
  EXPECT_EQ(ErrorOf([&] { CallMethod(table, "MoveToTop", {ObjectsValue({other})}); }).Description(),
            "Invalid input");
  // The block's draw order (what the preview draws) follows the table.
  auto drawn = app_->active_document()->model_space()->DrawOrder();
  ASSERT_EQ(drawn.size(), 4u);
  EXPECT_TRUE(SameObject(document().Ref(drawn[0]), d));
}

}  // namespace
}  // namespace tovik::host
