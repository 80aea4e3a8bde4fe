#include <gtest/gtest.h>

#include <array>

#include "geometry/vector_service.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

using geometry::Vec3;

class Blocks : public LinkedHostTest {
 protected:
  ObjectRef Block(const char* name) {
    return CallMethod(GetProperty(doc, "Blocks").Object(), "Item", {Variant(name)}).Object();
  }
  static std::pair<Vec3, Vec3> Box(const ObjectRef& e) {
    std::array<Variant, 2> box;
    CallMethodRef(e, "GetBoundingBox", box);
    return {VectorOf(box[0]), VectorOf(box[1])};
  }
  static Vec3 Scales(const ObjectRef& ref) {
    return {CDbl(GetProperty(ref, "XScaleFactor")), CDbl(GetProperty(ref, "YScaleFactor")),
            CDbl(GetProperty(ref, "ZScaleFactor"))};
  }
};

TEST_F(Blocks, ExternalReferenceNamesSplitAtTheirBars) {
  EXPECT_TRUE(AcadSpace::IsXrefName("A|B"));
  EXPECT_FALSE(AcadSpace::IsXrefName("AB"));
  Variant xref("kept");
  EXPECT_EQ(AcadSpace::Xref_GetObjectName("X|Y|Z", xref), "Y");
  EXPECT_EQ(CStr(xref), "X");
  xref = Variant("kept");
  EXPECT_EQ(AcadSpace::Xref_GetObjectName("plain", xref), "plain");
  EXPECT_EQ(CStr(xref), "kept");
}

TEST_F(Blocks, MovingTheOriginKeepsEveryReferencesLook) {
  ObjectRef block = AddBlock("B");
  ObjectRef line = CallMethod(block, "AddLine", {Pt(1, 1), Pt(3, 1)}).Object();
  ObjectRef layer = CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("L")}).Object();
  LetProperty(line, "Layer", Variant("L"));
  LetProperty(layer, "Lock", Variant(true));
  ObjectRef ref = Insert(ms, "B", {10, 10, 0}, {2, -1, 1}, 0.3);
  auto before = Box(ref);
  EXPECT_FALSE(AcadSpace::Block_MoveOrigin(block, Pt(0, 0)));
  EXPECT_TRUE(AcadSpace::Block_MoveOrigin(block, Pt(1, 1)));
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(line, "StartPoint")), (Vec3{0, 0, 0}));
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(block, "Origin")), (Vec3{-1, -1, 0}));
  EXPECT_TRUE(CBool(GetProperty(layer, "Lock")));
  auto after = Box(ref);
  EXPECT_VEC_CLOSE(after.first, before.first);
  EXPECT_VEC_CLOSE(after.second, before.second);
}

TEST_F(Blocks, OverridingABlockCopiesContentsAndOrigin) {
  ObjectRef source = AddBlock("S");
  LetProperty(source, "Origin", Pt(5, 5));
  CallMethod(source, "AddLine", {Pt(0, 0), Pt(1, 0)});
  CallMethod(source, "AddCircle", {Pt(0, 0), Variant(1.0)});
  ObjectRef target = AddBlock("T");
  LetProperty(target, "Origin", Pt(7, 7));
  CallMethod(target, "AddLine", {Pt(0, 0), Pt(9, 9)});
  AcadSpace::Block_Override_Block(source, target);
  EXPECT_EQ(CLng(GetProperty(target, "Count")), 2);
  EXPECT_EQ(CStr(GetProperty(CallMethod(target, "Item", {Variant(int32_t{1})}).Object(),
                             "ObjectName")),
            "AcDbCircle");
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(target, "Origin")), (Vec3{5, 5, 0}));
  // From an empty source: emptied, its own origin kept.
  LetProperty(target, "Origin", Pt(7, 7));
  AcadSpace::Block_Override_Block(AddBlock("EMPTY"), target);
  EXPECT_EQ(CLng(GetProperty(target, "Count")), 0);
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(target, "Origin")), (Vec3{7, 7, 0}));
}

TEST_F(Blocks, ScaleFactorsAndNesting) {
  AddBlock("C");
  CallMethod(Block("C"), "AddLine", {Pt(0, 0), Pt(1, 0)});
  Insert(AddBlock("B"), "C", {0, 0, 0});
  Insert(AddBlock("A"), "B", {0, 0, 0});
  EXPECT_TRUE(AcadSpace::Block_IsInside_Block(Block("A"), Block("C")));
  EXPECT_FALSE(AcadSpace::Block_IsInside_Block(Block("C"), Block("A")));
  ObjectRef ref = Insert(ms, "C", {0, 0, 0}, {2, -0.5, 3});
  AcadSpace::UniformalizeBlock(ref);
  EXPECT_EQ(Scales(ref), (Vec3{2, -2, 2}));
  AcadSpace::SetEffectiveScaleF(ref, 4);
  EXPECT_EQ(CDbl(GetProperty(ref, "ZEffectiveScaleFactor")), 4);
}

TEST_F(Blocks, SynchronisingStopsAtTheAttributeMemberTheHostLacks) {
  ObjectRef block = AddBlock("B");
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("?"), Pt(0, 0),
                                     Variant("TAG"), Variant("")});
  CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("L")});
  ObjectRef source = Insert(ms, "B", {0, 0, 0});
  LetProperty(source, "Layer", Variant("L"));
  LetProperty(source, "Color", Variant(int32_t{3}));
  LetProperty(source, "LinetypeScale", Variant(2.5));
  ObjectRef target = Insert(ms, "B", {5, 0, 0});
  // The four properties are copied, then "getattribute" is refused.
  EXPECT_EQ(ErrorOf([&] { AcadSpace::BlockRef_Synchronize(source, target); }).Number(),
            kErrNotSupported);
  EXPECT_EQ(CStr(GetProperty(target, "Layer")), "L");
  EXPECT_EQ(CLng(GetProperty(target, "Color")), 3);
  EXPECT_EQ(CDbl(GetProperty(target, "LinetypeScale")), 2.5);
  // ReplaceBref therefore stops there too: the new reference stays, placed
  // as the old, and the old one is kept.
  AddBlock("NEW");
  ObjectRef old_ref = source;
  EXPECT_EQ(ErrorOf([&] { AcadSpace::ReplaceBref(old_ref, "NEW"); }).Number(), kErrNotSupported);
  EXPECT_TRUE(SameObject(old_ref, source));
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 3);
  ObjectRef made = CallMethod(ms, "Item", {Variant(int32_t{2})}).Object();
  EXPECT_EQ(CStr(GetProperty(made, "Name")), "NEW");
  EXPECT_EQ(CStr(GetProperty(made, "Layer")), "L");
}

TEST_F(Blocks, ExplodingTurnsAttributesIntoTextsAndPiecesTakeTheReferencesLayer) {
  ObjectRef block = AddBlock("B");
  ObjectRef line = CallMethod(block, "AddLine", {Pt(0, 0), Pt(1, 0)}).Object();
  LetProperty(line, "Color", Variant(int32_t{0}));  // ByBlock
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("?"), Pt(0, 2),
                                     Variant("SHOWN"), Variant("s")});
  CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{1}), Variant("?"), Pt(0, 4),
                                     Variant("HIDDEN"), Variant("h")});
  CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("L")});
  ObjectRef ref = Insert(ms, "B", {10, 0, 0});
  LetProperty(ref, "Layer", Variant("L"));
  LetProperty(ref, "Color", Variant(int32_t{5}));
  Variant err_flag(false);
  AcadSpace::ExplodeBlock(ref, err_flag);
  EXPECT_FALSE(CBool(err_flag));
  // Left in model space: the line (on the reference's layer, in its
  // colour) and one text for the visible attribute.
  std::vector<std::string> kinds;
  for (const Variant& e : ForEach(ms)) {
    const ObjectRef& o = e.Object();
    kinds.push_back(CStr(GetProperty(o, "ObjectName")));
    if (kinds.back() == "AcDbLine") {
      EXPECT_EQ(CStr(GetProperty(o, "Layer")), "L");
      EXPECT_EQ(CLng(GetProperty(o, "Color")), 5);
    } else {  // the text takes the attribute's own layer and text
      EXPECT_EQ(CStr(GetProperty(o, "TextString")), "s");
    }
  }
  EXPECT_EQ(kinds, (std::vector<std::string>{"AcDbLine", "AcDbText"}));
}

}  // namespace
}  // namespace tovik
