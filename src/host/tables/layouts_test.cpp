#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

class LayoutsTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    layouts = GetProperty(doc, "Layouts").Object();
  }
  ObjectRef Layout(const char* name) {
    return CallMethod(layouts, "Item", {Variant(name)}).Object();
  }
  ObjectRef BlockOf(const char* layout) { return GetProperty(Layout(layout), "Block").Object(); }
  std::string Name(const ObjectRef& o) { return CStr(GetProperty(o, "Name")); }
  int32_t Tab(const char* layout) { return CLng(GetProperty(Layout(layout), "TabOrder")); }

  ObjectRef layouts;
};

TEST_F(LayoutsTest, CollectionListsModelThenPaperLayoutsWithTheirBlocks) {
  EXPECT_EQ(TypeName(Variant(layouts)), "IAcadLayouts");
  EXPECT_EQ(CLng(GetProperty(layouts, "Count")), 3);
  ObjectRef model = CallMethod(layouts, "Item", {Variant(int32_t{0})}).Object();
  EXPECT_EQ(TypeName(Variant(model)), "IAcadLayout");
  EXPECT_EQ(Name(model), "Model");
  EXPECT_TRUE(CBool(GetProperty(model, "ModelType")));
  EXPECT_TRUE(SameObject(GetProperty(model, "Block").Object(), ms));
  EXPECT_TRUE(SameObject(GetProperty(ms, "Layout").Object(), model));
  EXPECT_EQ(Tab("Model"), 0);
  EXPECT_EQ(Tab("layout1"), 1);  // names fold case
  EXPECT_EQ(Tab("Layout2"), 2);
  EXPECT_EQ(Name(BlockOf("Layout1")), "*Paper_Space");
  EXPECT_EQ(Name(BlockOf("Layout2")), "*Paper_Space0");
  EXPECT_TRUE(SameObject(GetProperty(doc, "PaperSpace").Object(), BlockOf("Layout1")));
  EXPECT_EQ(ErrorOf([&] { Layout("Layout9"); }).Number(), kScodeKeyNotFound);
  EXPECT_EQ(ErrorOf([&] { CallMethod(layouts, "Item", {Variant(int32_t{3})}); }).Number(),
            kScodeKeyNotFound);
  EXPECT_EQ(ErrorOf([&] { CallMethod(layouts, "Item", {Pt(0, 0)}); }).Description(),
            "Invalid argument Index in Item");
}

TEST_F(LayoutsTest, AddMakesANewPaperBlockLastInTabOrderAndRefusesNamesInUse) {
  ObjectRef added = CallMethod(layouts, "Add", {Variant("Sheet")}).Object();
  EXPECT_EQ(Name(added), "Sheet");
  EXPECT_EQ(Tab("Sheet"), 3);
  ObjectRef block = GetProperty(added, "Block").Object();
  EXPECT_EQ(Name(block), "*Paper_Space1");
  EXPECT_EQ(TypeName(Variant(block)), "IAcadBlock");
  EXPECT_TRUE(CBool(GetProperty(block, "IsLayout")));
  // Not made current.
  EXPECT_EQ(Name(GetProperty(doc, "ActiveLayout").Object()), "Model");
  struct Refusal {
    Variant name;
    const char* text;
  } refusals[] = {
      {Variant("sheet"), "Duplicate record name"},
      {Variant("Model"), "Duplicate record name"},
      {Variant("a<b"), "Invalid input"},
      {Variant(""), "Invalid input"},
  };
  for (const Refusal& r : refusals) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(ErrorOf([&] { CallMethod(layouts, "Add", {r.name}); }).Description(), r.text);
  }
  EXPECT_EQ(CLng(GetProperty(layouts, "Count")), 4);
  EXPECT_EQ(CLng(GetProperty(GetProperty(doc, "Blocks").Object(), "Count")), 4);
  EXPECT_EQ(ErrorOf([&] { CallMethod(layouts, "Add"); }).Number(), 449);
}

TEST_F(LayoutsTest, ActivatingAPaperLayoutGivesItsBlockThePaperSpaceName) {
  ObjectRef layout2 = Layout("Layout2");
  ObjectRef block1 = BlockOf("Layout1"), block2 = BlockOf("Layout2");
  SetProperty(doc, "ActiveLayout", layout2);
  EXPECT_EQ(CLng(GetProperty(doc, "ActiveSpace")), 0);
  EXPECT_TRUE(SameObject(GetProperty(doc, "PaperSpace").Object(), block2));
  EXPECT_EQ(Name(block2), "*Paper_Space");
  EXPECT_EQ(TypeName(Variant(block2)), "IAcadPaperSpace");
  EXPECT_EQ(Name(block1), "*Paper_Space0");
  EXPECT_EQ(TypeName(Variant(block1)), "IAcadBlock");
  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  EXPECT_TRUE(SameObject(CallMethod(blocks, "Item", {Variant("*Paper_Space")}).Object(), block2));
  // Back to Model: PaperSpace stays the last paper layout's block.
  SetProperty(doc, "ActiveLayout", Layout("Model"));
  EXPECT_EQ(CLng(GetProperty(doc, "ActiveSpace")), 1);
  EXPECT_TRUE(SameObject(GetProperty(doc, "PaperSpace").Object(), block2));
  // Undo takes both switches back, names included.
  document().Undo(2);
  EXPECT_EQ(Name(block1), "*Paper_Space");
  EXPECT_EQ(Name(block2), "*Paper_Space0");
  EXPECT_EQ(Name(GetProperty(doc, "ActiveLayout").Object()), "Model");
  // What is not a layout of this drawing is refused, and nothing changes.
  auto other = app_->AddDocument();
  ObjectRef foreign = CallMethod(GetProperty(ObjectRef(other), "Layouts").Object(), "Item",
                                 {Variant("Layout2")}).Object();
  app_->Activate(std::static_pointer_cast<Document>(doc));
  for (const ObjectRef& wrong : {foreign, ms}) {
    EXPECT_EQ(ErrorOf([&] { SetProperty(doc, "ActiveLayout", wrong); }).Description(),
              "Invalid argument ActiveLayout in ActiveLayout");
  }
  EXPECT_EQ(Name(GetProperty(doc, "ActiveLayout").Object()), "Model");
  EXPECT_EQ(Name(block1), "*Paper_Space");
}

TEST_F(LayoutsTest, RenameAndTabOrderKeepNamesUniqueAndTabsSequential) {
  ObjectRef model = Layout("Model");
  LetProperty(Layout("Layout2"), "Name", Variant("Detail"));
  EXPECT_EQ(Tab("Detail"), 2);
  struct Refusal {
    ObjectRef layout;
    const char* member;
    Variant value;
    const char* text;
  } refusals[] = {
      {model, "Name", Variant("M"), "Not applicable"},
      {Layout("Detail"), "Name", Variant("LAYOUT1"), "Duplicate record name"},
      {Layout("Detail"), "Name", Variant("a|b"), "Invalid input"},
      {model, "TabOrder", Variant(int32_t{1}), "Not applicable"},
      {Layout("Detail"), "TabOrder", Variant(int32_t{0}), "Invalid input"},
      {Layout("Detail"), "TabOrder", Variant(int32_t{3}), "Invalid input"},
      {Layout("Detail"), "TabOrder", Variant("x"), "Type mismatch"},
  };
  for (const Refusal& r : refusals) {
    SCOPED_TRACE(std::string(r.member) + " " + r.text);
    EXPECT_EQ(ErrorOf([&] { LetProperty(r.layout, r.member, r.value); }).Description(), r.text);
  }
  LetProperty(Layout("Detail"), "TabOrder", Variant(int32_t{1}));
  EXPECT_EQ(Tab("Detail"), 1);
  EXPECT_EQ(Tab("Layout1"), 2);
  CallMethod(layouts, "Add", {Variant("Third")});
  LetProperty(Layout("Third"), "TabOrder", Variant(int32_t{2}));
  EXPECT_EQ(Tab("Detail"), 1);
  EXPECT_EQ(Tab("Third"), 2);
  EXPECT_EQ(Tab("Layout1"), 3);
}

TEST_F(LayoutsTest, DeleteTakesTheBlockAndHandsPaperSpaceOn) {
  ObjectRef layout1 = Layout("Layout1");
  ObjectRef block1 = BlockOf("Layout1"), block2 = BlockOf("Layout2");
  SetProperty(doc, "ActiveLayout", layout1);
  ObjectRef on_paper = CallMethod(block1, "AddLine", {Pt(0, 0), Pt(1, 1)}).Object();
  EXPECT_EQ(ErrorOf([&] { CallMethod(Layout("Model"), "Delete"); }).Description(),
            "Not applicable");
  // An entity on a locked layer keeps the whole layout.
  ObjectRef layer0 = CallMethod(GetProperty(doc, "Layers").Object(), "Item", {Variant("0")}).Object();
  LetProperty(layer0, "Lock", Variant(true));
  EXPECT_EQ(ErrorOf([&] { CallMethod(layout1, "Delete"); }).Description(), "On locked layer");
  EXPECT_FALSE(CStr(GetProperty(on_paper, "Layer")).empty());
  LetProperty(layer0, "Lock", Variant(false));
  CallMethod(layout1, "Delete");
  EXPECT_EQ(CLng(GetProperty(layouts, "Count")), 2);
  EXPECT_EQ(ErrorOf([&] { GetProperty(on_paper, "Layer"); }).Number(), kScodeObjectErased);
  EXPECT_EQ(ErrorOf([&] { GetProperty(block1, "Count"); }).Number(), kScodeObjectErased);
  EXPECT_EQ(ErrorOf([&] { GetProperty(layout1, "TabOrder"); }).Number(), kScodeObjectErased);
  // The remaining paper layout is shown, named "*Paper_Space" and first.
  EXPECT_TRUE(SameObject(GetProperty(doc, "PaperSpace").Object(), block2));
  EXPECT_EQ(Name(block2), "*Paper_Space");
  EXPECT_EQ(Name(GetProperty(doc, "ActiveLayout").Object()), "Layout2");
  EXPECT_EQ(Tab("Layout2"), 1);
  EXPECT_EQ(ErrorOf([&] { CallMethod(Layout("Layout2"), "Delete"); }).Description(),
            "Not applicable");
  // Undo brings the layout, its block and its entity back.
  document().Undo(1);
  EXPECT_EQ(CLng(GetProperty(layouts, "Count")), 3);
  EXPECT_EQ(Name(block1), "*Paper_Space");
  EXPECT_EQ(CLng(GetProperty(block1, "Count")), 1);
  EXPECT_EQ(Tab("Layout2"), 2);
}

}  // namespace
}  // namespace tovik::host
