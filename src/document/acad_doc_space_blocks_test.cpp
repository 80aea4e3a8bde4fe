#include <gtest/gtest.h>

#include <filesystem>

#include "document/acad_doc_space.h"
#include "host/dxf/dxf_file.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

class DocSpaceBlocks : public LinkedHostTest {
 protected:
  void SetUp() override {
    LinkedHostTest::SetUp();
    host::dxf::InstallDxfFileIo(*app_);
  }
  AcadDocSpace space;
  std::string Name(const ObjectRef& o) { return CStr(GetProperty(o, "Name")); }
  int32_t Count(const ObjectRef& o) { return CLng(GetProperty(o, "Count")); }
};

TEST_F(DocSpaceBlocks, LayersByMarkAreMadeOnDemand) {
  ObjectRef drawing;
  EXPECT_EQ(Name(space.JLayer("rebar", drawing, false)), "Rebar");
  EXPECT_TRUE(SameObject(drawing, doc));  // the drawing used is written back
  EXPECT_EQ(Name(space.JLayer("Rebar", drawing, true)), "X-Rebar");
  EXPECT_EQ(space.JLayer("Unknown", drawing, false), nullptr);
  EXPECT_EQ(Name(space.DefaultLayer("Walls", drawing, 3)), "Walls");
  ObjectRef no_print = space.DefaultNoPrintLayer();
  EXPECT_EQ(Name(no_print), "Not to Print");
  EXPECT_FALSE(CBool(GetProperty(no_print, "Plottable")));
  EXPECT_EQ(Name(space.DefaultTextStyle()), "Tovik Studio");
  EXPECT_TRUE(SameObject(space.DefaultTextStyle(), space.DefaultTextStyle()));
  EXPECT_EQ(CLng(GetProperty(space.GetColor(30), "ColorIndex")), 30);
}

TEST_F(DocSpaceBlocks, ScratchBlocksAreReusedByCommentAndPurged) {
  ObjectRef drawing = doc;
  ObjectRef a = space.TempAnonyBlock(drawing, "A", false);
  EXPECT_EQ(Name(a).rfind("*U", 0), 0u);
  CallMethod(a, "AddLine", {Pt(0, 0), Pt(1, 1)});
  EXPECT_TRUE(SameObject(space.TempAnonyBlock(drawing, "A", false), a));
  EXPECT_EQ(Count(a), 1);
  EXPECT_TRUE(SameObject(space.TempAnonyBlock(drawing, "A", true), a));
  EXPECT_EQ(Count(a), 0);
  ObjectRef b = space.TempAnonyBlock(drawing, "B", false);
  EXPECT_FALSE(SameObject(a, b));
  ObjectRef invisible = space.InvisibleSpace(drawing);
  EXPECT_TRUE(SameObject(space.InvisibleSpace(drawing), invisible));
  // Everything hides in one invisible reference in model space.
  EXPECT_EQ(Count(ms), 1);
  EXPECT_FALSE(CBool(GetProperty(CallMethod(ms, "Item", {Variant(int32_t{0})}).Object(), "Visible")));
  space.PurgeTempAnonyBlocks(drawing);
  EXPECT_EQ(ErrorOf([&] { GetProperty(a, "Name"); }).Number() != 0, true);  // deleted
  ObjectRef fresh = space.TempAnonyBlock(drawing, "A", false);
  EXPECT_FALSE(SameObject(fresh, a));
  // With its holder reference erased, the next call builds a new holder.
  CallMethod(CallMethod(ms, "Item", {Variant(int32_t{0})}).Object(), "Delete");
  EXPECT_FALSE(SameObject(space.InvisibleSpace(drawing), invisible));
}

TEST_F(DocSpaceBlocks, NewAnonymousBlocksAreEmptyAndTheScratchBlockGoes) {
  ObjectRef block = space.NewAnonyBlock(doc, false);
  EXPECT_EQ(Name(block).rfind("*U", 0), 0u);
  EXPECT_EQ(Count(block), 0);
  EXPECT_EQ(Count(ms), 0);  // the reference is not retained
  EXPECT_EQ(ErrorOf([&] {
              CallMethod(GetProperty(doc, "Blocks").Object(), "Item", {Variant("Tovik Anonyblock")});
            }).Description(),
            "Key not found");
  // On a locked active layer the host refuses to convert the new reference:
  // the refusal reaches the caller.
  LetProperty(GetProperty(doc, "ActiveLayer").Object(), "Lock", Variant(true));
  EXPECT_EQ(ErrorOf([&] { space.NewAnonyBlock(doc, false); }).Description(), "On locked layer");
}

TEST_F(DocSpaceBlocks, TheHolderSurvivesSavingAndReopening) {
  ObjectRef drawing = doc;
  ObjectRef a = space.TempAnonyBlock(drawing, "kept", false);
  CallMethod(a, "AddCircle", {Pt(0, 0), Variant(2.0)});
  std::string path = ::testing::TempDir() + "/tovik_holder.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});
  ObjectRef again = CallMethod(GetProperty(ObjectRef(app_), "Documents").Object(), "Open",
                               {Variant(path)}).Object();
  ObjectRef reopened = again;
  ObjectRef kept = space.TempAnonyBlock(reopened, "kept", false);
  EXPECT_EQ(Count(kept), 1);
  EXPECT_EQ(Count(GetProperty(again, "ModelSpace").Object()), 1);  // no second holder
}

TEST_F(DocSpaceBlocks, LibraryBlocksLoadFromDrawingFiles) {
  std::filesystem::path folder = std::filesystem::path(::testing::TempDir()) / "tovik_blocks";
  std::filesystem::create_directories(folder);
  ObjectRef other = NewDrawing();
  ObjectRef other_ms = GetProperty(other, "ModelSpace").Object();
  CallMethod(other_ms, "AddLine", {Pt(0, 0), Pt(5, 0)});
  CallMethod(other_ms, "AddCircle", {Pt(0, 0), Variant(1.0)});
  CallMethod(other, "SaveAs", {Variant((folder / "Door.dxf").string())});
  CallMethod(doc, "Activate");  // the library loads into the current drawing
  Library().block_library_folder = folder.string();
  ObjectRef drawing = doc;
  ObjectRef door = space.JBlock("Door", drawing);
  ASSERT_NE(door, nullptr);
  EXPECT_EQ(Name(door), "Door");
  EXPECT_EQ(Count(door), 2);
  EXPECT_EQ(space.JBlock("Window", drawing), nullptr);
}

}  // namespace
}  // namespace tovik
