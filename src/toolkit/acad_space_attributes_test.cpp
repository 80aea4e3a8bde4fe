#include <gtest/gtest.h>

#include "geometry/vector_service.h"
#include "host/dxf/dxf_file.h"
#include "host/tables/block.h"
#include "tests/support/dxf_checks.h"
#include "tests/support/geometry.h"
#include "tests/support/host_fixture.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

using geometry::Vec3;

// The attribute references of a block reference (the array is kept while
// it is walked).
std::vector<Variant> AttributesOf(const ObjectRef& ref) {
  return CallMethod(ref, "GetAttributes").Array().Items();
}

class Attributes : public LinkedHostTest {
 protected:
  // A block "TB" with attribute definitions NAME, name and OTHER, and a
  // reference to it whose attributes hold "a", "b" and "c".
  ObjectRef TitleBlock() {
    ObjectRef block = AddBlock("TB");
    int k = 0;
    for (const char* tag : {"NAME", "name", "OTHER"}) {
      CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("?"),
                                         Pt(0, k++), Variant(tag), Variant("")});
    }
    ObjectRef ref = Insert(ms, "TB", {0, 0, 0});
    const char* texts[] = {"a", "b", "c"};
    k = 0;
    for (const Variant& a : AttributesOf(ref)) {
      LetProperty(a.Object(), "TextString", Variant(texts[k++]));
    }
    return ref;
  }
  static std::vector<std::string> Texts(const ObjectRef& ref) {
    std::vector<std::string> out;
    for (const Variant& a : AttributesOf(ref)) {
      out.push_back(CStr(GetProperty(a.Object(), "TextString")));
    }
    return out;
  }
  // A dynamic block "DYN" holding the given properties, referenced at
  // (10, 20), turned a quarter and mirrored in x with scale 2.
  ObjectRef DynamicRef(std::vector<host::DynamicProperty> props) {
    ObjectRef block = AddBlock("DYN");
    static_cast<host::BlockRecord*>(block.get())->mutable_data().dynamic_properties =
        std::move(props);
    return Insert(ms, "DYN", {10, 20, 0}, {-2, 2, 1}, kPi / 2);
  }
};

TEST_F(Attributes, AttRefGetReadsTheFirstAndWritesEveryAttributeWithTheTag) {
  ObjectRef ref = TitleBlock();
  Variant flag;
  EXPECT_EQ(AcadSpace::AttRef_Get(ref, "Name", Variant::Missing(), flag), "a");
  EXPECT_TRUE(CBool(flag));
  EXPECT_EQ(AcadSpace::AttRef_Get(ref, "NAME", Variant(int32_t{42}), flag), "42");
  EXPECT_EQ(Texts(ref), (std::vector<std::string>{"42", "42", "c"}));
  // An empty value is written as one space and given back as it was.
  EXPECT_EQ(AcadSpace::AttRef_Get(ref, "other", Variant(""), flag), "");
  EXPECT_EQ(Texts(ref)[2], " ");
  EXPECT_EQ(AcadSpace::AttRef_Get(ref, "NONE", Variant("x"), flag), "");
  EXPECT_FALSE(CBool(flag));
  // A locked layer is unlocked for the write and locked again.
  ObjectRef layer = CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("L")}).Object();
  for (const Variant& a : AttributesOf(ref)) {
    LetProperty(a.Object(), "Layer", Variant("L"));
  }
  LetProperty(layer, "Lock", Variant(true));
  EXPECT_EQ(AcadSpace::AttRef_Get(ref, "OTHER", Variant("z"), flag), "z");
  EXPECT_EQ(Texts(ref)[2], "z");
  EXPECT_TRUE(CBool(GetProperty(layer, "Lock")));
  // Through the interface; a reference without attributes gives "".
  CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {Pt(0, 0), Variant("PLAIN")});
  ObjectRef plain = Insert(ms, "PLAIN", {0, 0, 0});
  std::array<Variant, 4> args{Variant(plain), Variant("NAME"), Variant("v"), Variant(true)};
  EXPECT_EQ(CStr(CallMethodRef(GlobalInstance<AcadSpace>(), "AttRef_Get", args)), "");
  EXPECT_FALSE(CBool(args[3]));
}

TEST_F(Attributes, AttributeDefinitionsAreFoundByTagInOrder) {
  TitleBlock();
  ObjectRef block = CallMethod(GetProperty(doc, "Blocks").Object(), "Item", {Variant("TB")}).Object();
  Variant defs = AcadSpace::AttDefs_Get(block, "name");
  ASSERT_EQ(defs.Array().Count(), 2);
  // The host keeps tags in capitals: both read "NAME", first and second.
  EXPECT_EQ(CDbl(GetProperty(defs.Array().At(0).Object(), "InsertionPoint").Array().At(1)), 0);
  EXPECT_EQ(CDbl(GetProperty(defs.Array().At(1).Object(), "InsertionPoint").Array().At(1)), 1);
  EXPECT_EQ(CStr(GetProperty(AcadSpace::AttDef_Get(block, "Other"), "TagString")), "OTHER");
  EXPECT_EQ(AcadSpace::AttDefs_Get(block, "NONE").Array().Count(), 0);
  EXPECT_EQ(AcadSpace::AttDef_Get(block, "NONE"), nullptr);
  EXPECT_EQ(ErrorOf([&] { AcadSpace::AttDef_Get(Line(0, 0, 1, 1), "NAME"); }).Number(),
            kErrNotSupported);
}

TEST_F(Attributes, DynamicPropertiesAreWrittenOnlyWhenTheyDiffer) {
  ObjectRef ref = DynamicRef({DynProp("Distance1", Variant(10.0), 2, false, true),
                              DynProp("Visibility", Variant("A"), 0, false, true, {Variant("A"), Variant("B")})});
  Variant flag(int16_t{7}), no_change;
  // Not dynamic: Empty, flag left alone, NoChange True.
  Variant plain_flag(int16_t{7});
  CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {Pt(0, 0), Variant("PLAIN")});
  EXPECT_TRUE(AcadSpace::DynamicProperty_Get(Insert(ms, "PLAIN", {0, 0, 0}), "Distance1",
                                             Variant(1.0), plain_flag, no_change).IsEmpty());
  EXPECT_EQ(CInt(plain_flag), 7);
  EXPECT_TRUE(CBool(no_change));
  struct Case {
    const char* what;
    const char* name;
    Variant value;
    bool no_change;
    Variant result;
  } cases[] = {
      {"read", "distance1", Variant::Missing(), true, Variant(10.0)},
      {"equal number", "DISTANCE1", Variant("10"), true, Variant(10.0)},
      {"numeric text", "Distance1", Variant("25.5"), false, Variant(25.5)},
      {"text", "Visibility", Variant("B"), false, Variant("B")},
      {"equal text", "Visibility", Variant("B"), true, Variant("B")},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Variant got = AcadSpace::DynamicProperty_Get(ref, c.name, c.value, flag, no_change);
    EXPECT_TRUE(got.SameAs(c.result)) << CStr(got);
    EXPECT_TRUE(CBool(flag));
    EXPECT_EQ(CBool(no_change), c.no_change);
  }
  EXPECT_TRUE(AcadSpace::DynamicProperty_Get(ref, "None", Variant(1.0), flag, no_change).IsEmpty());
  EXPECT_FALSE(CBool(flag));
}

TEST_F(Attributes, PointAndPolarParametersLiveInTheHoldingSpace) {
  ObjectRef ref = DynamicRef({DynProp("Reach", Variant(2.0), 2, false, true),
                              DynProp("Reach Angle", Variant(kPi / 2), 1, false, true),
                              DynProp("Reach Base", PointOf({1, 0, 0}), 0, false, true),
                              DynProp("Grip X", Variant(3.0), 2, false, true),
                              DynProp("Grip Y", Variant(1.0), 2, false, true)});
  // Turned a quarter and mirrored in x (scale taken by its sign only):
  // block (x, y) lands at (10 - y, 20 - x).
  EXPECT_VEC_CLOSE(VectorOf(AcadSpace::DynamicProperty_GetPoint(ref, "grip")), (Vec3{9, 17, 0}));
  // The polar end: base (1, 0) plus 2 at 90°, block (1, 2).
  EXPECT_VEC_CLOSE(VectorOf(AcadSpace::DynamicProperty_GetPolarPoint(ref, "REACH")),
                   (Vec3{8, 19, 0}));
  // An unknown name gives the image of the block's origin.
  EXPECT_VEC_CLOSE(VectorOf(AcadSpace::DynamicProperty_GetPolarPoint(ref, "none")),
                   (Vec3{10, 20, 0}));
  AcadSpace::DynamicProperty_LetPoint(ref, "Grip", PointOf({4, 15, 0}));
  EXPECT_VEC_CLOSE(VectorOf(AcadSpace::DynamicProperty_GetPoint(ref, "Grip")), (Vec3{4, 15, 0}));
  AcadSpace::DynamicProperty_LetPolarPoint(ref, "Reach", PointOf({10, 16, 0}));  // block (4, 0)
  Variant flag, no_change, missing = Variant::Missing();
  EXPECT_DOUBLE_EQ(CDbl(AcadSpace::DynamicProperty_Get(ref, "Reach", missing, flag, no_change)), 3);
  EXPECT_NEAR(CDbl(AcadSpace::DynamicProperty_Get(ref, "Reach Angle", missing, flag, no_change)), 0,
              1e-12);
  // A distance with no angle and base after it: the positional reads fail.
  EXPECT_EQ(ErrorOf([&] { AcadSpace::DynamicProperty_GetPolarPoint(ref, "Grip Y"); }).Number(),
            kErrSubscript);
}

// The references of a real dynamic block keep their own visibility states;
// one written through the library is kept through a save and a reopen.
TEST_F(Attributes, VisibilityStatesOfRealDynamicReferencesAreReadWrittenAndSaved) {
  const std::string drawing = CorpusDrawing("acadsharp/BLOCKVISIBILITYPARAMETER.dxf");
  SKIP_WITHOUT_DRAWING(drawing);
  host::dxf::InstallDxfFileIo(*app_);
  ObjectRef docs = GetProperty(ObjectRef(app_), "Documents").Object();
  auto states = [&](const ObjectRef& d) {
    std::vector<std::string> out;
    Variant flag, no_change;
    for (const Variant& e : ForEach(GetProperty(d, "ModelSpace").Object())) {
      out.push_back(CStr(AcadSpace::DynamicProperty_Get(e.Object(), "visibility state",
                                                        Variant::Missing(), flag, no_change)));
    }
    return out;
  };
  ObjectRef opened = CallMethod(docs, "Open", {Variant(drawing)}).Object();
  // As the file holds them (an independent reader finds the same).
  EXPECT_EQ(states(opened), (std::vector<std::string>{"VisibilityState0", "HideAll",
                                                      "VisibilityState1", "ShowAll"}));
  ObjectRef first = CallMethod(GetProperty(opened, "ModelSpace").Object(), "Item",
                               {Variant(int32_t{0})}).Object();
  // The reference's anonymous copy shows the state: every entity of the
  // definition, those the state hides invisible (as the file's own copies).
  auto visible = [&](const ObjectRef& ref) {
    std::vector<bool> out;
    ObjectRef blocks = GetProperty(GetProperty(ref, "Document").Object(), "Blocks").Object();
    for (const Variant& e : ForEach(CallMethod(blocks, "Item", {GetProperty(ref, "Name")}).Object())) {
      out.push_back(CBool(GetProperty(e.Object(), "Visible")));
    }
    return out;
  };
  EXPECT_EQ(visible(first), (std::vector<bool>{true, true, true, false, true}));
  Variant flag, no_change;
  AcadSpace::DynamicProperty_Get(first, "Visibility State", Variant("HideAll"), flag, no_change);
  EXPECT_EQ(visible(first), (std::vector<bool>{false, false, false, true, true}));
  AcadSpace::DynamicProperty_Get(first, "Visibility State", Variant("ShowAll"), flag, no_change);
  EXPECT_FALSE(CBool(no_change));
  EXPECT_EQ(visible(first), (std::vector<bool>{true, true, false, false, true}));
  std::string copy = ::testing::TempDir() + "/tovik_visibility.dxf";
  CallMethod(opened, "SaveAs", {Variant(copy)});
  ObjectRef reopened = CallMethod(docs, "Open", {Variant(copy)}).Object();
  EXPECT_EQ(states(reopened),
            (std::vector<std::string>{"ShowAll", "HideAll", "VisibilityState1", "ShowAll"}));
  EXPECT_EQ(visible(CallMethod(GetProperty(reopened, "ModelSpace").Object(), "Item",
                               {Variant(int32_t{0})}).Object()),
            (std::vector<bool>{true, true, false, false, true}));
  EXPECT_EZDXF_ACCEPTS(copy);
}

// The rotation parameter of a real dynamic block: each reference's angle
// read from the file; a written angle turns the arm of the reference's copy
// and is kept through a save and a reopen.
TEST_F(Attributes, RotationsOfRealDynamicReferencesAreReadWrittenAndSaved) {
  const std::string drawing = CorpusDrawing("acadsharp/BLOCKROTATIONPARAMETER.dxf");
  SKIP_WITHOUT_DRAWING(drawing);
  host::dxf::InstallDxfFileIo(*app_);
  ObjectRef docs = GetProperty(ObjectRef(app_), "Documents").Object();
  auto angles = [&](const ObjectRef& d) {
    std::vector<double> out;
    Variant flag, no_change;
    for (const Variant& e : ForEach(GetProperty(d, "ModelSpace").Object())) {
      out.push_back(CDbl(AcadSpace::DynamicProperty_Get(e.Object(), "Rotation", Variant::Missing(), flag,
                                                        no_change)) * 180 / M_PI);
    }
    return out;
  };
  ObjectRef opened = CallMethod(docs, "Open", {Variant(drawing)}).Object();
  // The first refers to the definition itself, drawn with its arm at 90°.
  std::vector<double> read = angles(opened), expected{90, 50, 0, 225};
  ASSERT_EQ(read.size(), expected.size());
  for (size_t i = 0; i < read.size(); ++i) EXPECT_NEAR(read[i], expected[i], 1e-9) << i;
  // Turned to 90 degrees: the arm (a line from the base, 7.5 long along +x
  // when unturned) now points along +y in the reference's copy.
  ObjectRef third = CallMethod(GetProperty(opened, "ModelSpace").Object(), "Item", {Variant(int32_t{2})}).Object();
  Variant flag, no_change;
  AcadSpace::DynamicProperty_Get(third, "Rotation", Variant(M_PI / 2), flag, no_change);
  ObjectRef copy = CallMethod(GetProperty(opened, "Blocks").Object(), "Item", {GetProperty(third, "Name")}).Object();
  ObjectRef arm = CallMethod(copy, "Item", {Variant(int32_t{1})}).Object();
  EXPECT_VEC_CLOSE(VectorOf(GetProperty(arm, "EndPoint")), (Vec3{0, 7.5, 0}));
  std::string path = ::testing::TempDir() + "/tovik_rotation.dxf";
  CallMethod(opened, "SaveAs", {Variant(path)});
  EXPECT_NEAR(angles(CallMethod(docs, "Open", {Variant(path)}).Object())[2], 90, 1e-9);
  EXPECT_EZDXF_ACCEPTS(path);
}

}  // namespace
}  // namespace tovik
