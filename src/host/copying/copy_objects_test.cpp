#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"
#include "tests/support/properties.h"

namespace tovik::host {
namespace {

// A source drawing with a block "B" (an attribute definition, a text in
// style "Notes", a reference to block "C"), a reference to it with its
// attribute, and a line on layer "Moved" drawn in linetype "Dashed"; and
// a second, empty drawing to copy into.
class CopyObjectsTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    ObjectRef blocks = GetProperty(doc, "Blocks").Object();
    ObjectRef c = CallMethod(blocks, "Add", {Pt(0, 0), Variant("C")}).Object();
    CallMethod(c, "AddCircle", {Pt(0, 0), Variant(1.0)});
    ObjectRef b = CallMethod(blocks, "Add", {Pt(0, 0), Variant("B")}).Object();
    CallMethod(b, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("P"), Pt(0, 0),
                                   Variant("TAG"), Variant("v")});
    CallMethod(GetProperty(doc, "TextStyles").Object(), "Add", {Variant("Notes")});
    ObjectRef note = CallMethod(b, "AddText", {Variant("n"), Pt(0, 0), Variant(1.0)}).Object();
    LetProperty(note, "StyleName", Variant("Notes"));
    CallMethod(b, "InsertBlock", {Pt(2, 0), Variant("C"), Variant(1.0), Variant(1.0), Variant(1.0)});
    ref = CallMethod(ms, "InsertBlock", {Pt(5, 5), Variant("B"), Variant(1.0), Variant(1.0),
                                         Variant(1.0)}).Object();
    CallMethod(GetProperty(doc, "Linetypes").Object(), "Add", {Variant("Dashed")});
    ObjectRef moved = CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("Moved")}).Object();
    LetProperty(moved, "Linetype", Variant("Dashed"));
    line = Line(0, 0, 1, 1);
    LetProperty(line, "Layer", Variant("Moved"));
    other = app_->AddDocument();
    other_ms = GetProperty(other, "ModelSpace").Object();
    app_->Activate(std::static_pointer_cast<Document>(doc));
  }
  ObjectRef Item(const ObjectRef& drawing, const char* collection, const char* name) {
    return CallMethod(GetProperty(drawing, collection).Object(), "Item", {Variant(name)}).Object();
  }
  int32_t Count(const ObjectRef& o, const char* collection) {
    return CLng(GetProperty(GetProperty(o, collection).Object(), "Count"));
  }

  ObjectRef ref, line, other, other_ms;
};

TEST_F(CopyObjectsTest, ACopyIntoAnotherDrawingBringsWhatItNames) {
  Variant copies = CallMethod(doc, "CopyObjects", {ObjectsValue({ref, line}), Variant(other_ms)});
  ASSERT_EQ(copies.Array().Count(), 2);
  ObjectRef ref_copy = copies.Array().Items()[0].RawObject();
  ObjectRef line_copy = copies.Array().Items()[1].RawObject();
  for (const ObjectRef& copy : {ref_copy, line_copy}) {
    EXPECT_TRUE(SameObject(GetProperty(copy, "Document").Object(), other));
  }
  // The block definitions came with their entities, nested ones too.
  ObjectRef b = Item(other, "Blocks", "B");
  EXPECT_EQ(CLng(GetProperty(b, "Count")), 3);
  EXPECT_EQ(CLng(GetProperty(Item(other, "Blocks", "C"), "Count")), 1);
  EXPECT_EQ(CStr(GetProperty(ref_copy, "Name")), "B");
  ObjectRef nested = CallMethod(b, "Item", {Variant(int32_t{2})}).Object();
  EXPECT_TRUE(SameObject(GetProperty(nested, "Document").Object(), other));
  ObjectRef note = CallMethod(b, "Item", {Variant(int32_t{1})}).Object();
  EXPECT_EQ(CStr(GetProperty(note, "StyleName")), "Notes");
  EXPECT_TRUE(SameObject(GetProperty(Item(other, "TextStyles", "Notes"), "Document").Object(),
                         other));
  // The attribute reference is the target's, found there by handle.
  Variant atts = CallMethod(ref_copy, "GetAttributes");
  ASSERT_EQ(atts.Array().Count(), 1);
  ObjectRef att = atts.Array().Items()[0].RawObject();
  EXPECT_TRUE(SameObject(
      CallMethod(other, "HandleToObject", {GetProperty(att, "Handle")}).Object(), att));
  // The layer came with its linetype.
  EXPECT_EQ(CStr(GetProperty(line_copy, "Layer")), "Moved");
  EXPECT_EQ(CStr(GetProperty(Item(other, "Layers", "Moved"), "Linetype")), "Dashed");
  EXPECT_TRUE(SameObject(GetProperty(Item(other, "Linetypes", "Dashed"), "Document").Object(),
                         other));
  // The target's undo takes the whole copy back; the source keeps its own.
  static_cast<Document*>(other.get())->Undo(1);
  EXPECT_EQ(ErrorOf([&] { Item(other, "Blocks", "B"); }).Number(), kScodeKeyNotFound);
  EXPECT_EQ(ErrorOf([&] { Item(other, "Layers", "Moved"); }).Number(), kScodeKeyNotFound);
  EXPECT_EQ(CLng(GetProperty(other_ms, "Count")), 0);
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 2);
}

TEST_F(CopyObjectsTest, TheTargetsOwnDefinitionsWinAndAnonymousBlocksAreNew) {
  ObjectRef own_b = CallMethod(GetProperty(other, "Blocks").Object(), "Add",
                               {Pt(0, 0), Variant("b")}).Object();
  CallMethod(own_b, "AddLine", {Pt(0, 0), Pt(9, 9)});
  ObjectRef own_layer = CallMethod(GetProperty(other, "Layers").Object(), "Add",
                                   {Variant("MOVED")}).Object();
  CallMethod(doc, "CopyObjects", {ObjectsValue({ref, line}), Variant(other_ms)});
  EXPECT_EQ(CLng(GetProperty(own_b, "Count")), 1);  // not redefined
  EXPECT_EQ(Count(other, "Layers"), 2);
  EXPECT_EQ(CStr(GetProperty(own_layer, "Linetype")), "Continuous");
  // Two references to one anonymous block share one new "*U" copy.
  ObjectRef anon = CallMethod(GetProperty(doc, "Blocks").Object(), "Add",
                              {Pt(0, 0), Variant("*U")}).Object();
  CallMethod(anon, "AddLine", {Pt(0, 0), Pt(1, 0)});
  std::string anon_name = CStr(GetProperty(anon, "Name"));
  ObjectRef r1 = CallMethod(ms, "InsertBlock", {Pt(0, 0), Variant(anon_name), Variant(1.0),
                                                Variant(1.0), Variant(1.0)}).Object();
  ObjectRef r2 = CallMethod(ms, "InsertBlock", {Pt(3, 0), Variant(anon_name), Variant(1.0),
                                                Variant(1.0), Variant(1.0)}).Object();
  int32_t blocks_before = Count(other, "Blocks");
  Variant copies = CallMethod(doc, "CopyObjects", {ObjectsValue({r1, r2}), Variant(other_ms)});
  EXPECT_EQ(Count(other, "Blocks"), blocks_before + 1);
  std::string n1 = CStr(GetProperty(copies.Array().Items()[0].RawObject(), "Name"));
  EXPECT_EQ(n1, CStr(GetProperty(copies.Array().Items()[1].RawObject(), "Name")));
  EXPECT_EQ(n1.rfind("*U", 0), 0u);
}

TEST_F(CopyObjectsTest, IdPairsReportEveryObjectMetPrimaryOnesFirst) {
  std::vector<Variant> args{ObjectsValue({ref, line}), Variant(other_ms), Variant()};
  Variant copies = CallMethodRef(doc, "CopyObjects", args);
  const SafeArray& pairs = args[2].Array();
  ASSERT_GT(pairs.Count(), 2);
  std::vector<ObjectRef> sources{ref, line};
  for (int32_t i = 0; i < 2; ++i) {
    ObjectRef pair = pairs.Items()[static_cast<size_t>(i)].RawObject();
    EXPECT_EQ(TypeName(Variant(pair)), "IAcadIdPair");
    EXPECT_EQ(CLngLng(GetProperty(pair, "Key")), CLngLng(GetProperty(sources[i], "ObjectID")));
    ObjectRef copy = copies.Array().Items()[static_cast<size_t>(i)].RawObject();
    EXPECT_EQ(CLngLng(GetProperty(pair, "Value")), CLngLng(GetProperty(copy, "ObjectID")));
    ExpectProperties(pair, {{"IsPrimary", true}, {"IsCloned", true}, {"IsOwnerXlated", true}});
  }
  // Layer "0" exists in the target: mapped, not cloned. "Moved" is cloned.
  int64_t layer0 = CLngLng(GetProperty(Item(doc, "Layers", "0"), "ObjectID"));
  int64_t moved = CLngLng(GetProperty(Item(doc, "Layers", "Moved"), "ObjectID"));
  int64_t att = CLngLng(GetProperty(CallMethod(ref, "GetAttributes").Array().Items()[0].RawObject(),
                                    "ObjectID"));
  int found = 0;
  for (size_t i = 2; i < pairs.Items().size(); ++i) {
    ObjectRef pair = pairs.Items()[i].RawObject();
    EXPECT_FALSE(CBool(GetProperty(pair, "IsPrimary")));
    int64_t key = CLngLng(GetProperty(pair, "Key"));
    if (key == layer0) {
      ++found;
      EXPECT_FALSE(CBool(GetProperty(pair, "IsCloned")));
      EXPECT_EQ(CLngLng(GetProperty(pair, "Value")),
                CLngLng(GetProperty(Item(other, "Layers", "0"), "ObjectID")));
    }
    if (key == moved || key == att) {
      ++found;
      EXPECT_TRUE(CBool(GetProperty(pair, "IsCloned")));
    }
  }
  EXPECT_EQ(found, 3);
  // Beside the originals: only the copies and what they own.
  args = {ObjectsValue({line}), Variant(), Variant()};
  CallMethodRef(doc, "CopyObjects", args);
  EXPECT_EQ(args[2].Array().Count(), 1);
}

TEST_F(CopyObjectsTest, ExtendedDataHandlesFollowTheObjectsCopiedWithThem) {
  ObjectRef partner = Line(5, 5, 6, 6);
  std::string partner_handle = CStr(GetProperty(partner, "Handle"));
  CallMethod(line, "SetXData",
             {Variant(SafeArray::Of({Variant(int16_t{1001}), Variant(int16_t{1005})})),
              Variant(SafeArray::Of({Variant("LINK"), Variant(partner_handle)}))});
  auto linked = [&](const ObjectRef& o) {
    std::vector<Variant> out{Variant("LINK"), Variant(), Variant()};
    CallMethodRef(o, "GetXData", out);
    return CStr(out[2].Array().Items()[1]);
  };
  // Copied together: the copy points at the partner's copy.
  Variant both = CallMethod(doc, "CopyObjects", {ObjectsValue({line, partner})});
  ObjectRef line_copy = both.Array().Items()[0].RawObject();
  ObjectRef partner_copy = both.Array().Items()[1].RawObject();
  EXPECT_EQ(linked(line_copy), CStr(GetProperty(partner_copy, "Handle")));
  // Copied alone: it keeps pointing at the original partner.
  Variant alone = CallMethod(doc, "CopyObjects", {ObjectsValue({line})});
  EXPECT_EQ(linked(alone.Array().Items()[0].RawObject()), partner_handle);
  EXPECT_EQ(linked(line), partner_handle);
  // Across drawings too.
  Variant across = CallMethod(doc, "CopyObjects", {ObjectsValue({line, partner}), Variant(other_ms)});
  EXPECT_EQ(linked(across.Array().Items()[0].RawObject()),
            CStr(GetProperty(across.Array().Items()[1].RawObject(), "Handle")));
}

TEST_F(CopyObjectsTest, RefusalsCopyNothing) {
  ObjectRef foreign = CallMethod(other_ms, "AddLine", {Pt(0, 0), Pt(1, 0)}).Object();
  ObjectRef in_block = CallMethod(Item(doc, "Blocks", "C"), "Item", {Variant(int32_t{0})}).Object();
  ObjectRef erased = Line(5, 5, 6, 6);
  CallMethod(erased, "Delete");
  ObjectRef att = CallMethod(ref, "GetAttributes").Array().Items()[0].RawObject();
  struct Case {
    const char* what;
    std::vector<Variant> args;
    const char* text;
  } cases[] = {
      {"two owners", {ObjectsValue({line, in_block}), Variant(other_ms)}, "Invalid owner object"},
      {"another drawing's entity", {ObjectsValue({line, foreign})},
       "Invalid argument Objects in CopyObjects"},
      {"an erased entity", {ObjectsValue({erased})}, "Invalid argument Objects in CopyObjects"},
      {"an attribute reference", {ObjectsValue({att})}, "Invalid argument Objects in CopyObjects"},
      {"not an array", {Variant(line)}, "Invalid argument Objects in CopyObjects"},
      {"an owner that is no block", {ObjectsValue({line}), Variant(foreign)},
       "Invalid argument Owner in CopyObjects"},
  };
  int32_t source_count = CLng(GetProperty(ms, "Count"));
  for (Case& c : cases) {
    SCOPED_TRACE(c.what);
    c.args.push_back(Variant());
    EXPECT_EQ(ErrorOf([&] { CallMethodRef(doc, "CopyObjects", c.args); }).Description(), c.text);
    EXPECT_TRUE(c.args.back().IsEmpty());
    EXPECT_EQ(CLng(GetProperty(other_ms, "Count")), 1);
    EXPECT_EQ(CLng(GetProperty(ms, "Count")), source_count);
    EXPECT_EQ(Count(other, "Layers"), 1);
  }
  EXPECT_EQ(ErrorOf([&] { CallMethod(doc, "CopyObjects"); }).Number(), 449);
}

TEST_F(CopyObjectsTest, ANestedEntityCopiesIntoTheCurrentSpace) {
  // What the library does to show a picked sub-entity: copy it out of its
  // definition into the space, then place it.
  ObjectRef circle = CallMethod(Item(doc, "Blocks", "C"), "Item", {Variant(int32_t{0})}).Object();
  Variant copies = CallMethod(doc, "CopyObjects", {ObjectsValue({circle}), Variant(ms)});
  ObjectRef copy = copies.Array().Items()[0].RawObject();
  EXPECT_EQ(CLngLng(GetProperty(copy, "OwnerID")), CLngLng(GetProperty(ms, "ObjectID")));
  EXPECT_EQ(CLng(GetProperty(Item(doc, "Blocks", "C"), "Count")), 1);
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(copy, "Radius")), 1.0);
}

}  // namespace
}  // namespace tovik::host
