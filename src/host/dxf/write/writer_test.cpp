// Writing drawings the host built itself: a new document made through the
// automation surface is saved, opened again and compared with hand-written
// expectations, and the file is checked by an independent reader (ezdxf,
// through the shared dxf-summary tool) when it is installed.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "dxf/tag_model.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/surface/args.h"
#include "tests/support/host_fixture.h"
#include "tests/support/dxf_checks.h"
#include "tests/support/properties.h"

namespace tovik::host::dxf {
namespace {


double At(const Variant& array, size_t k) { return CDbl(array.Array().Items()[k]); }

// A new drawing with one of each thing a drawing gains through automation.
struct BuiltDrawing {
  std::string line, polyline, mtext, insert, hatch, circle, paper_line;
};

BuiltDrawing Build(const ObjectRef& doc) {
  BuiltDrawing out;
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef walls = CallMethod(layers, "Add", {Variant("WALLS")}).Object();
  LetProperty(walls, "Color", Variant(int32_t{3}));
  LetProperty(walls, "Lineweight", Variant(int32_t{50}));
  LetProperty(walls, "Plottable", Variant(false));
  ObjectRef hidden = CallMethod(layers, "Add", {Variant("HIDDEN")}).Object();
  LetProperty(hidden, "LayerOn", Variant(false));
  LetProperty(hidden, "Freeze", Variant(true));
  LetProperty(hidden, "Lock", Variant(true));

  ObjectRef style = CallMethod(GetProperty(doc, "TextStyles").Object(), "Add", {Variant("NOTES")}).Object();
  LetProperty(style, "FontFile", Variant("romans.shx"));
  LetProperty(style, "Width", Variant(0.8));

  ObjectRef line = CallMethod(ms, "AddLine", {Pt(0, 0), Pt(10, 0)}).Object();
  LetProperty(line, "Layer", Variant("WALLS"));
  LetProperty(line, "Lineweight", Variant(int32_t{30}));
  LetProperty(line, "LinetypeScale", Variant(2.0));
  CallMethod(line, "SetXData",
             {Codes({1001, 1000, 1070, 1040}),
              Variant(SafeArray::Of({Variant("TOVIK_TEST"), Variant("note"), Variant(int16_t{12}), Variant(3.25)}))});
  out.line = GetProperty(line, "Handle").RawString();

  ObjectRef poly = CallMethod(ms, "AddLightWeightPolyline",
                              {Variant(SafeArray::OfDoubles({0, 0, 10, 0, 10, 5}))}).Object();
  CallMethod(poly, "SetBulge", {Variant(int32_t{1}), Variant(0.5)});
  LetProperty(poly, "ConstantWidth", Variant(0.25));
  LetProperty(poly, "Closed", Variant(true));
  LetProperty(poly, "Elevation", Variant(2.0));
  out.polyline = GetProperty(poly, "Handle").RawString();

  ObjectRef mtext = CallMethod(ms, "AddMText", {Pt(1, 2), Variant(20.0), Variant("Hello\\PWorld")}).Object();
  LetProperty(mtext, "StyleName", Variant("NOTES"));
  out.mtext = GetProperty(mtext, "Handle").RawString();

  ObjectRef blocks = GetProperty(doc, "Blocks").Object();
  ObjectRef door = CallMethod(blocks, "Add", {Pt(0, 0), Variant("DOOR")}).Object();
  CallMethod(door, "AddLine", {Pt(0, 0), Pt(0, 2)});
  CallMethod(door, "AddAttribute", {Variant(2.5), Variant(int32_t{0}), Variant("Number?"), Pt(1, 0), Variant("NUM"), Variant("1")});
  ObjectRef insert = CallMethod(ms, "InsertBlock", {Pt(20, 0), Variant("DOOR"), Variant(2.0), Variant(2.0),
                                                    Variant(2.0), Variant(0.0)}).Object();
  ObjectRef att = CallMethod(insert, "GetAttributes").Array().Items()[0].Object();
  LetProperty(att, "TextString", Variant("42"));
  out.insert = GetProperty(insert, "Handle").RawString();

  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(30, 0), Variant(3.0)}).Object();
  ObjectRef color = GetProperty(circle, "TrueColor").Object();
  CallMethod(color, "SetRGB", {Variant(int32_t{10}), Variant(int32_t{20}), Variant(int32_t{200})});
  SetProperty(circle, "TrueColor", color);
  out.circle = GetProperty(circle, "Handle").RawString();
  ObjectRef hatch = CallMethod(ms, "AddHatch", {Variant(int32_t{1}), Variant("ANSI31"), Variant(false)}).Object();
  CallMethod(hatch, "AppendOuterLoop", {ObjectsValue({circle})});
  out.hatch = GetProperty(hatch, "Handle").RawString();

  ObjectRef group = CallMethod(GetProperty(doc, "Groups").Object(), "Add", {Variant("PAIR")}).Object();
  CallMethod(group, "AppendItems", {ObjectsValue({line, circle})});

  ObjectRef dict = CallMethod(GetProperty(doc, "Dictionaries").Object(), "Add", {Variant("MYDICT")}).Object();
  ObjectRef xrec = CallMethod(dict, "AddXRecord", {Variant("REC")}).Object();
  CallMethod(xrec, "SetXRecordData",
             {Codes({1, 70, 40}), Variant(SafeArray::Of({Variant("text"), Variant(int16_t{7}), Variant(2.5)}))});

  ObjectRef layout = CallMethod(GetProperty(doc, "Layouts").Object(), "Add", {Variant("Sheet2")}).Object();
  ObjectRef sheet = GetProperty(layout, "Block").Object();
  out.paper_line = GetProperty(CallMethod(sheet, "AddLine", {Pt(1, 1), Pt(5, 5)}).Object(), "Handle").RawString();

  ObjectRef line_dict = CallMethod(line, "GetExtensionDictionary").Object();
  ObjectRef note = CallMethod(line_dict, "AddXRecord", {Variant("NOTE")}).Object();
  CallMethod(note, "SetXRecordData", {Codes({1}), Variant(SafeArray::Of({Variant("on the line")}))});
  // The circle goes to the bottom of model space's draw order.
  ObjectRef ms_dict = CallMethod(ms, "GetExtensionDictionary").Object();
  ObjectRef order = CallMethod(ms_dict, "AddObject", {Variant("ACAD_SORTENTS"), Variant("AcDbSortentsTable")}).Object();
  CallMethod(order, "MoveToBottom", {ObjectsValue({circle})});
  CallMethod(GetProperty(doc, "Materials").Object(), "Add", {Variant("STEEL")});

  CallMethod(doc, "SetVariable", {Variant("USERI1"), Variant(int16_t{7})});
  CallMethod(doc, "SetVariable", {Variant("USERR2"), Variant(1.5)});
  CallMethod(doc, "SetVariable", {Variant("INSUNITS"), Variant(int16_t{4})});
  return out;
}

// The saved file's record with `handle`, read back through the tag model.
struct SavedFile {
  explicit SavedFile(const std::string& path) : model(TagModel::LoadFile(path)) {}
  const Record* Find(uint64_t handle) const {
    for (const Section& s : model.sections()) {
      for (const Record& r : s.records) {
        if (HandleOf(r) == handle) return &r;
      }
    }
    return nullptr;
  }
  // The handles a record names under `code` (outside or inside 102 groups).
  static std::vector<uint64_t> Named(const Record& r, int code) {
    std::vector<uint64_t> out;
    for (const Tag& t : r.tags) {
      if (t.code == code) out.push_back(HandleValue(&t));
    }
    return out;
  }
  TagModel model;
};

class NewDrawingSave : public ::testing::Test {
 protected:
  void SetUp() override {
    app_ = Application::Create({.open_drawing = false});
    InstallDxfFileIo(*app_);
    docs_ = GetProperty(ObjectRef(app_), "Documents").Object();
  }
  ObjectRef Open(const std::string& path) { return CallMethod(docs_, "Open", {Variant(path)}).Object(); }
  ObjectRef Object(const ObjectRef& doc, const std::string& handle) {
    return CallMethod(doc, "HandleToObject", {Variant(handle)}).Object();
  }

  std::shared_ptr<Application> app_;
  ObjectRef docs_;
};

TEST_F(NewDrawingSave, SavesAndOpensAgainWithTheSameObjectsAndValues) {
  ObjectRef doc = CallMethod(docs_, "Add").Object();
  BuiltDrawing built = Build(doc);
  std::string path = ::testing::TempDir() + "/tovik_new_drawing.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});
  ObjectRef again = Open(path);

  ObjectRef line = Object(again, built.line);
  ExpectProperties(line, {{"ObjectName", "AcDbLine"}, {"Layer", "WALLS"}, {"Lineweight", 30},
      {"LinetypeScale", 2.0}, {"Length", 10.0}});
  Variant types, values;
  std::vector<Variant> xdata_args{Variant("TOVIK_TEST"), types, values};
  CallMethodRef(line, "GetXData", xdata_args);
  ASSERT_TRUE(xdata_args[2].IsArray());
  ASSERT_EQ(xdata_args[2].Array().Count(), 4);
  EXPECT_EQ(xdata_args[2].Array().Items()[1].RawString(), "note");
  EXPECT_EQ(CLng(xdata_args[2].Array().Items()[2]), 12);
  EXPECT_EQ(CDbl(xdata_args[2].Array().Items()[3]), 3.25);

  // Vertices (0,0) (10,0) (10,5), bulge 0.5 on the second, width 0.25,
  // closed, at elevation 2.
  ObjectRef poly = Object(again, built.polyline);
  Variant coords = GetProperty(poly, "Coordinates");
  ASSERT_EQ(coords.Array().Count(), 6);
  EXPECT_EQ(At(coords, 4), 10.0);
  EXPECT_EQ(At(coords, 5), 5.0);
  EXPECT_EQ(CDbl(CallMethod(poly, "GetBulge", {Variant(int32_t{1})})), 0.5);
  EXPECT_EQ(CDbl(CallMethod(poly, "GetBulge", {Variant(int32_t{0})})), 0.0);
  ExpectProperties(poly, {{"Closed", true}, {"Elevation", 2.0}, {"ConstantWidth", 0.25}});

  ObjectRef mtext = Object(again, built.mtext);
  ExpectProperties(mtext, {{"TextString", "Hello\\PWorld"}, {"StyleName", "NOTES"}});

  // The reference is scaled 2 and its attribute kept its value.
  ObjectRef insert = Object(again, built.insert);
  ExpectProperties(insert, {{"Name", "DOOR"}, {"XScaleFactor", 2.0}});
  Variant atts = CallMethod(insert, "GetAttributes");
  ASSERT_EQ(atts.Array().Count(), 1);
  EXPECT_EQ(GetProperty(atts.Array().Items()[0].Object(), "TagString").RawString(), "NUM");
  EXPECT_EQ(GetProperty(atts.Array().Items()[0].Object(), "TextString").RawString(), "42");

  ObjectRef circle = Object(again, built.circle);
  ObjectRef color = GetProperty(circle, "TrueColor").Object();
  ExpectProperties(color, {{"Red", 10}, {"Blue", 200}});
  EXPECT_EQ(GetProperty(Object(again, built.hatch), "PatternName").RawString(), "ANSI31");

  ObjectRef layers = GetProperty(again, "Layers").Object();
  ObjectRef walls = CallMethod(layers, "Item", {Variant("WALLS")}).Object();
  ExpectProperties(walls, {{"Color", 3}, {"Lineweight", 50}, {"Plottable", false}});
  ObjectRef hidden = CallMethod(layers, "Item", {Variant("HIDDEN")}).Object();
  ExpectProperties(hidden, {{"LayerOn", false}, {"Freeze", true}, {"Lock", true}});
  ObjectRef style = CallMethod(GetProperty(again, "TextStyles").Object(), "Item", {Variant("NOTES")}).Object();
  ExpectProperties(style, {{"FontFile", "romans.shx"}, {"Width", 0.8}});

  ObjectRef group = CallMethod(GetProperty(again, "Groups").Object(), "Item", {Variant("PAIR")}).Object();
  ASSERT_EQ(CLng(GetProperty(group, "Count")), 2);
  EXPECT_EQ(GetProperty(CallMethod(group, "Item", {Variant(int32_t{1})}).Object(), "Handle").RawString(), built.circle);

  ObjectRef dict = CallMethod(GetProperty(again, "Dictionaries").Object(), "Item", {Variant("MYDICT")}).Object();
  ObjectRef xrec = CallMethod(dict, "GetObject", {Variant("REC")}).Object();
  std::vector<Variant> xrec_args{Variant(), Variant()};
  CallMethodRef(xrec, "GetXRecordData", xrec_args);
  ASSERT_EQ(xrec_args[1].Array().Count(), 3);
  EXPECT_EQ(CLng(xrec_args[0].Array().Items()[1]), 70);
  EXPECT_EQ(xrec_args[1].Array().Items()[0].RawString(), "text");
  EXPECT_EQ(CLng(xrec_args[1].Array().Items()[1]), 7);
  EXPECT_EQ(CDbl(xrec_args[1].Array().Items()[2]), 2.5);

  ObjectRef sheet = CallMethod(GetProperty(again, "Layouts").Object(), "Item", {Variant("Sheet2")}).Object();
  ObjectRef paper_line = Object(again, built.paper_line);
  EXPECT_EQ(CLng(GetProperty(paper_line, "OwnerID")),
            CLng(GetProperty(GetProperty(sheet, "Block").Object(), "ObjectID")));
  ObjectRef note = CallMethod(CallMethod(line, "GetExtensionDictionary").Object(), "GetObject", {Variant("NOTE")}).Object();
  std::vector<Variant> note_args{Variant(), Variant()};
  CallMethodRef(note, "GetXRecordData", note_args);
  ASSERT_TRUE(note_args[1].IsArray());
  EXPECT_EQ(note_args[1].Array().Items()[0].RawString(), "on the line");
  EXPECT_NO_THROW(CallMethod(GetProperty(again, "Materials").Object(), "Item", {Variant("STEEL")}));
  EXPECT_EQ(CLng(CallMethod(again, "GetVariable", {Variant("USERI1")})), 7);
  EXPECT_EQ(CDbl(CallMethod(again, "GetVariable", {Variant("USERR2")})), 1.5);
  EXPECT_EQ(CLng(CallMethod(again, "GetVariable", {Variant("INSUNITS")})), 4);

  // The draw-order table lists the circle first (drawn first, at the
  // bottom) with the smallest of the six entity handles as its sort key.
  SavedFile saved(path);
  const Record* table = nullptr;
  for (const Record& r : saved.model.FindSection("OBJECTS")->records) {
    if (r.type == "SORTENTSTABLE") table = &r;
  }
  ASSERT_NE(table, nullptr);
  std::vector<const Tag*> drawn = table->FindAll(331);
  ASSERT_EQ(drawn.size(), 6u);
  EXPECT_EQ(HandleValue(drawn[0]), std::strtoull(built.circle.c_str(), nullptr, 16));
  EXPECT_EQ(HandleValue(drawn[1]), std::strtoull(built.line.c_str(), nullptr, 16));

  EXPECT_EZDXF_ACCEPTS(path);
}

const std::string kGroupsDrawing = CorpusDrawing("ezdxf/groups.dxf");
const std::string kDrawOrderDrawing = CorpusDrawing("ezdxf/hatches_1.dxf");

TEST_F(NewDrawingSave, ALoadedDrawingSavesItsCurrentLayerAndSpace) {
  SKIP_WITHOUT_DRAWING(kGroupsDrawing);
  // groups.dxf was saved with layer "0" current and the Model tab active.
  ObjectRef doc = Open(kGroupsDrawing);
  ObjectRef layer = CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("CURRENT")}).Object();
  SetProperty(doc, "ActiveLayer", layer);
  LetProperty(doc, "ActiveSpace", Variant(int32_t{0}));  // acPaperSpace
  std::string path = ::testing::TempDir() + "/tovik_current.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});
  SavedFile saved(path);
  const HeaderVariable* clayer = saved.model.FindVariable("$CLAYER");
  const HeaderVariable* tilemode = saved.model.FindVariable("$TILEMODE");
  ASSERT_NE(clayer, nullptr);
  ASSERT_NE(tilemode, nullptr);
  EXPECT_EQ(clayer->tags[0].text, "CURRENT");
  EXPECT_EQ(tilemode->tags[0].integer, 0);
}

TEST_F(NewDrawingSave, ErasedObjectsLeaveNoHandleInGroupsDictionariesOrReactors) {
  SKIP_WITHOUT_DRAWING(kGroupsDrawing);
  // groups.dxf: group G1 (A9) holds lines A0 9F 9E 9D 9C, group G2 (AA)
  // holds A8..A1; ACAD_GROUP is D; every line names its group as reactor.
  ObjectRef doc = Open(kGroupsDrawing);
  CallMethod(Object(doc, "9E"), "Delete");
  ObjectRef groups = GetProperty(doc, "Groups").Object();
  CallMethod(CallMethod(groups, "Item", {Variant("G2")}).Object(), "Delete");
  ObjectRef fresh = CallMethod(groups, "Add", {Variant("NEW")}).Object();
  CallMethod(fresh, "AppendItems", {ObjectsValue({Object(doc, "A1")})});
  uint64_t fresh_handle = std::strtoull(GetProperty(fresh, "Handle").RawString().c_str(), nullptr, 16);
  std::string path = ::testing::TempDir() + "/tovik_groups_edited.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});

  SavedFile saved(path);
  ASSERT_NE(saved.Find(0xA9), nullptr);
  EXPECT_EQ(SavedFile::Named(*saved.Find(0xA9), 340), (std::vector<uint64_t>{0xA0, 0x9F, 0x9D, 0x9C}));
  EXPECT_EQ(saved.Find(0x9E), nullptr);
  EXPECT_EQ(saved.Find(0xAA), nullptr);
  // ACAD_GROUP lists G1 and the new group, not G2.
  EXPECT_EQ(SavedFile::Named(*saved.Find(0xD), 350), (std::vector<uint64_t>{0xA9, fresh_handle}));
  // A1 left G2 for NEW: its reactor follows; A2 was in G2 only.
  EXPECT_EQ(SavedFile::Named(*saved.Find(0xA1), 330), (std::vector<uint64_t>{fresh_handle, 0x1F}));
  EXPECT_EQ(SavedFile::Named(*saved.Find(0xA2), 330), (std::vector<uint64_t>{0x1F}));
  ASSERT_NE(saved.Find(fresh_handle), nullptr);
  EXPECT_EQ(SavedFile::Named(*saved.Find(fresh_handle), 340), (std::vector<uint64_t>{0xA1}));

  ObjectRef again = Open(path);
  ObjectRef groups_again = GetProperty(again, "Groups").Object();
  EXPECT_EQ(CLng(GetProperty(groups_again, "Count")), 2);
  EXPECT_EQ(CLng(GetProperty(CallMethod(groups_again, "Item", {Variant("G1")}).Object(), "Count")), 4);
  EXPECT_EQ(CLng(GetProperty(CallMethod(groups_again, "Item", {Variant("NEW")}).Object(), "Count")), 1);

  EXPECT_EZDXF_ACCEPTS(path);
}

TEST_F(NewDrawingSave, ErasedEntitiesLeaveTheDrawOrderTableAndTheRestKeepsItsPairs) {
  SKIP_WITHOUT_DRAWING(kDrawOrderDrawing);
  // hatches_1.dxf: SORTENTSTABLE 22B of model space pairs 331 223 with sort
  // handle 228 first, 331 224 with 23F second, 32 pairs in all.
  ObjectRef doc = Open(kDrawOrderDrawing);
  CallMethod(Object(doc, "223"), "Delete");
  std::string path = ::testing::TempDir() + "/tovik_sortents_edited.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});
  SavedFile saved(path);
  const Record* table = saved.Find(0x22B);
  ASSERT_NE(table, nullptr);
  std::vector<uint64_t> entities = SavedFile::Named(*table, 331);
  ASSERT_EQ(entities.size(), 31u);
  EXPECT_EQ(entities[0], 0x224u);
  // The remaining pairs are the file's own: 224 keeps sort handle 23F.
  std::vector<uint64_t> keys;
  for (const Tag& t : table->tags) {
    if (t.code == 5) keys.push_back(HandleValue(&t));
  }
  ASSERT_GE(keys.size(), 2u);
  EXPECT_EQ(keys[1], 0x23Fu);  // keys[0] is the table's own handle
  EXPECT_EZDXF_ACCEPTS(path);
}

int CountOf(const Record& r, int code) {
  int n = 0;
  for (const Tag& t : r.tags) n += t.code == code ? 1 : 0;
  return n;
}

TEST_F(NewDrawingSave, CopiesOfKindsTheHostDoesNotModelWholeAreWrittenWhole) {
  SKIP_WITHOUT_DRAWING(kDrawOrderDrawing);
  // HATCH 293 of hatches_1.dxf: 4 boundary paths (92) with 21 vertices
  // (10, the elevation point included); the host keeps no loops of it.
  ObjectRef doc = Open(kDrawOrderDrawing);
  ObjectRef hatch = Object(doc, "293");
  ObjectRef copy = CallMethod(hatch, "Copy").Object();
  std::string copy_handle = GetProperty(copy, "Handle").RawString();
  CallMethod(copy, "Move", {Pt(0, 0), Pt(0, 0)});
  ObjectRef other = CallMethod(docs_, "Add").Object();
  CallMethod(doc, "CopyObjects", {ObjectsValue({hatch}), GetProperty(other, "ModelSpace")});
  std::string same_path = ::testing::TempDir() + "/tovik_copy_same.dxf";
  std::string other_path = ::testing::TempDir() + "/tovik_copy_other.dxf";
  CallMethod(doc, "SaveAs", {Variant(same_path)});
  CallMethod(other, "SaveAs", {Variant(other_path)});

  SavedFile same(same_path);
  const Record* written = same.Find(std::strtoull(copy_handle.c_str(), nullptr, 16));
  ASSERT_NE(written, nullptr);
  EXPECT_EQ(written->type, "HATCH");
  EXPECT_EQ(CountOf(*written, 92), 4);
  EXPECT_EQ(CountOf(*written, 10), 21);
  EXPECT_EQ(written->StringOr(2), "SOLID");

  SavedFile into_other(other_path);
  const Section* entities = into_other.model.FindSection("ENTITIES");
  ASSERT_NE(entities, nullptr);
  ASSERT_EQ(entities->records.size(), 1u);
  EXPECT_EQ(entities->records[0].type, "HATCH");
  EXPECT_EQ(CountOf(entities->records[0], 92), 4);
  EXPECT_EQ(CountOf(entities->records[0], 10), 21);

  for (const std::string& path : {same_path, other_path}) {
    EXPECT_EZDXF_ACCEPTS(path);
  }
}

// Tag text: pairs of lines, group code then value.
std::string Dxf(std::initializer_list<std::pair<int, const char*>> tags) {
  std::string out;
  for (const auto& [code, value] : tags) out += std::to_string(code) + "\n" + value + "\n";
  return out;
}

std::vector<std::string_view> Markers(const Record& r) {
  std::vector<std::string_view> out;
  for (const Tag& t : r.tags) {
    if (t.code == 100) out.push_back(t.text);
  }
  return out;
}

TEST_F(NewDrawingSave, AnR12DrawingIsWrittenAsAc1032WithHandlesOwnersAndMarkers) {
  // An R12 file without a single handle: a layer, a block, a line, a
  // two-vertex polyline (first vertex bulge 0.5) and a reference.
  std::string r12 = Dxf({{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1009"}, {0, "ENDSEC"},
                         {0, "SECTION"}, {2, "TABLES"}, {0, "TABLE"}, {2, "LAYER"}, {70, "1"},
                         {0, "LAYER"}, {2, "WALLS"}, {70, "0"}, {62, "1"}, {6, "CONTINUOUS"},
                         {0, "ENDTAB"}, {0, "ENDSEC"},
                         {0, "SECTION"}, {2, "BLOCKS"}, {0, "BLOCK"}, {8, "0"}, {2, "BOX"}, {70, "0"},
                         {10, "0"}, {20, "0"}, {30, "0"}, {3, "BOX"}, {0, "LINE"}, {8, "0"}, {10, "0"},
                         {20, "0"}, {30, "0"}, {11, "1"}, {21, "0"}, {31, "0"}, {0, "ENDBLK"}, {8, "0"},
                         {0, "ENDSEC"},
                         {0, "SECTION"}, {2, "ENTITIES"},
                         {0, "LINE"}, {8, "WALLS"}, {10, "1"}, {20, "2"}, {30, "0"}, {11, "4"}, {21, "6"}, {31, "0"},
                         {0, "POLYLINE"}, {8, "WALLS"}, {66, "1"}, {70, "1"}, {10, "0"}, {20, "0"}, {30, "0"},
                         {0, "VERTEX"}, {8, "WALLS"}, {10, "0"}, {20, "0"}, {30, "0"}, {42, "0.5"},
                         {0, "VERTEX"}, {8, "WALLS"}, {10, "5"}, {20, "0"}, {30, "0"},
                         {0, "SEQEND"}, {8, "WALLS"},
                         {0, "INSERT"}, {8, "0"}, {2, "BOX"}, {10, "10"}, {20, "10"}, {30, "0"},
                         {0, "ENDSEC"}, {0, "EOF"}});
  std::string in = ::testing::TempDir() + "/tovik_r12_in.dxf";
  std::ofstream(in, std::ios::binary) << r12;
  ObjectRef doc = Open(in);
  std::string path = ::testing::TempDir() + "/tovik_r12_out.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});

  SavedFile saved(path);
  EXPECT_EQ(saved.model.version(), "AC1032");
  // Every record of every section has a handle of its own.
  std::set<uint64_t> handles;
  size_t records = 0;
  auto note = [&](const Record& r) {
    ++records;
    uint64_t h = HandleOf(r);
    EXPECT_NE(h, 0u) << r.type;
    handles.insert(h);
  };
  uint64_t model_space = 0;
  for (const Section& s : saved.model.sections()) {
    for (const Table& t : s.tables) {
      note(t.head);
      for (const Record& e : t.entries) {
        note(e);
        if (t.Name() == "BLOCK_RECORD" && e.StringOr(2) == "*Model_Space") model_space = HandleOf(e);
      }
    }
    for (const Block& b : s.blocks) {
      note(b.begin);
      note(b.end);
      for (const Record& e : b.entities) note(e);
    }
    for (const Record& r : s.records) {
      if (s.kind == SectionKind::kClasses) continue;
      note(r);
      for (const Record& f : r.followers) note(f);
    }
  }
  EXPECT_EQ(handles.size(), records);
  ASSERT_NE(model_space, 0u);
  const Section* objects = saved.model.FindSection("OBJECTS");
  ASSERT_NE(objects, nullptr);
  ASSERT_FALSE(objects->records.empty());
  EXPECT_EQ(objects->records[0].type, "DICTIONARY");
  EXPECT_NE(objects->records[0].Find(3), nullptr);

  const Section* entities = saved.model.FindSection("ENTITIES");
  ASSERT_NE(entities, nullptr);
  ASSERT_EQ(entities->records.size(), 3u);
  for (const Record& r : entities->records) EXPECT_EQ(OwnerOf(r), model_space) << r.type;
  const Record& polyline = entities->records[1];
  ASSERT_EQ(polyline.type, "POLYLINE");
  EXPECT_EQ(Markers(polyline), (std::vector<std::string_view>{"AcDbEntity", "AcDb2dPolyline"}));
  ASSERT_EQ(polyline.followers.size(), 3u);
  const Record& vertex = polyline.followers[0];
  EXPECT_EQ(Markers(vertex), (std::vector<std::string_view>{"AcDbEntity", "AcDbVertex", "AcDb2dVertex"}));
  EXPECT_EQ(RealOr(vertex, 42, 0), 0.5);
  EXPECT_EQ(OwnerOf(vertex), HandleOf(polyline));
  EXPECT_EQ(OwnerOf(polyline.followers[2]), HandleOf(polyline));
  EXPECT_EQ(Markers(entities->records[0]), (std::vector<std::string_view>{"AcDbEntity", "AcDbLine"}));

  ObjectRef again = Open(path);
  ObjectRef line = CallMethod(GetProperty(again, "ModelSpace").Object(), "Item", {Variant(int32_t{0})}).Object();
  EXPECT_EQ(GetProperty(line, "Layer").RawString(), "WALLS");
  EXPECT_EQ(CDbl(GetProperty(line, "Length")), 5.0);  // (1,2) to (4,6)
  EXPECT_EZDXF_ACCEPTS(path);
}

// The records of a saved file's ENTITIES section.
const std::vector<Record>& SavedEntities(const SavedFile& saved) {
  static const std::vector<Record> kNone;
  const Section* s = saved.model.FindSection("ENTITIES");
  return s != nullptr ? s->records : kNone;
}

TEST_F(NewDrawingSave, TextJustificationIsWrittenAsHorizontalAndVerticalCodes) {
  // acAlignment -> DXF 72 (horizontal) and 73 (vertical), 0 when absent.
  struct Case {
    int32_t alignment;
    int64_t horizontal, vertical;
  };
  const Case cases[] = {
      {0, 0, 0},   // Left: neither code, no alignment point
      {2, 2, 0},   // Right
      {4, 4, 0},   // Middle
      {6, 0, 3},   // TopLeft
      {10, 1, 2},  // MiddleCenter
      {14, 2, 1},  // BottomRight
  };
  ObjectRef doc = CallMethod(docs_, "Add").Object();
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  std::vector<std::string> handles;
  for (const Case& c : cases) {
    ObjectRef text = CallMethod(ms, "AddText", {Variant("T"), Pt(1, 1), Variant(2.0)}).Object();
    LetProperty(text, "Alignment", Variant(c.alignment));
    if (c.alignment != 0) LetProperty(text, "TextAlignmentPoint", Pt(5, 5));
    handles.push_back(GetProperty(text, "Handle").RawString());
  }
  std::string path = ::testing::TempDir() + "/tovik_text_alignment.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});
  SavedFile saved(path);
  ObjectRef again = Open(path);
  for (size_t k = 0; k < std::size(cases); ++k) {
    SCOPED_TRACE(cases[k].alignment);
    const Record* r = saved.Find(std::strtoull(handles[k].c_str(), nullptr, 16));
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(IntOr(*r, 72, 0), cases[k].horizontal);
    EXPECT_EQ(IntOr(*r, 73, 0), cases[k].vertical);
    EXPECT_EQ(r->Find(11) != nullptr, cases[k].alignment != 0);
    EXPECT_EQ(CLng(GetProperty(Object(again, handles[k]), "Alignment")), cases[k].alignment);
  }
}

TEST_F(NewDrawingSave, HatchPatternLinesAreScaledTurnedAndOffsetInTheHatchFrame) {
  // ANSI31 is one family of 45° lines 0.125" apart (3.175 mm in a metric
  // drawing). At scale 2 and angle 30° in a metric drawing the line runs at
  // 75° and the offset (0, 6.35) in the line's frame is
  // (-6.35 sin 75°, 6.35 cos 75°) = (-6.133629, 1.643501) in the hatch's.
  struct Case {
    int16_t measurement;
    double spacing;  // 0.125 · 2, or 3.175 · 2
  };
  const Case cases[] = {{1, 6.35}, {0, 0.25}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.measurement);
    ObjectRef doc = CallMethod(docs_, "Add").Object();
    CallMethod(doc, "SetVariable", {Variant("MEASUREMENT"), Variant(c.measurement)});
    ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
    ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(10.0)}).Object();
    ObjectRef hatch = CallMethod(ms, "AddHatch", {Variant(int32_t{1}), Variant("ANSI31"), Variant(true)}).Object();
    CallMethod(hatch, "AppendOuterLoop", {ObjectsValue({circle})});
    LetProperty(hatch, "PatternScale", Variant(2.0));
    LetProperty(hatch, "PatternAngle", Variant(3.141592653589793 / 6));
    std::string path = ::testing::TempDir() + "/tovik_hatch_pattern.dxf";
    CallMethod(doc, "SaveAs", {Variant(path)});
    SavedFile saved(path);
    const Record* r = saved.Find(std::strtoull(GetProperty(hatch, "Handle").RawString().c_str(), nullptr, 16));
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(IntOr(*r, 78, 0), 1);
    EXPECT_NEAR(RealOr(*r, 53, 0), 75.0, 1e-9);
    EXPECT_NEAR(RealOr(*r, 52, 0), 30.0, 1e-9);
    EXPECT_NEAR(RealOr(*r, 45, 0), -c.spacing * 0.9659258262890683, 1e-9);
    EXPECT_NEAR(RealOr(*r, 46, 0), c.spacing * 0.25881904510252074, 1e-9);
    // One loop: the circle as two half-circle arcs (bulge 1) of a polyline path.
    EXPECT_EQ(IntOr(*r, 91, 0), 1);
    EXPECT_EQ(IntOr(*r, 93, 0), 2);
    EXPECT_EQ(RealOr(*r, 42, 0), 1.0);
  }
}

TEST_F(NewDrawingSave, R12KindsWrittenFromTheirRecordGetTheSubclassMarkersOfTheirFlags) {
  // Each case: one R12 entity (no handle, no markers) and the markers of
  // the saved record and of its first follower.
  struct Case {
    const char* what;
    std::string tags;
    std::vector<std::string_view> markers, follower_markers;
  };
  auto vertex = [](const char* flags) {
    return Dxf({{0, "VERTEX"}, {8, "0"}, {10, "1"}, {20, "2"}, {30, "3"}, {70, flags}});
  };
  const Case cases[] = {
      {"3DFACE", Dxf({{0, "3DFACE"}, {8, "0"}, {10, "0"}, {20, "0"}, {30, "0"}, {11, "1"}, {21, "0"},
                      {31, "0"}, {12, "1"}, {22, "1"}, {32, "0"}, {13, "0"}, {23, "1"}, {33, "0"}}),
       {"AcDbEntity", "AcDbFace"}, {}},
      {"SOLID", Dxf({{0, "SOLID"}, {8, "0"}, {10, "0"}, {20, "0"}, {30, "0"}, {11, "1"}, {21, "0"},
                     {31, "0"}, {12, "0"}, {22, "1"}, {32, "0"}, {13, "1"}, {23, "1"}, {33, "0"}}),
       {"AcDbEntity", "AcDbTrace"}, {}},
      {"3D polyline", Dxf({{0, "POLYLINE"}, {8, "0"}, {66, "1"}, {70, "8"}, {10, "0"}, {20, "0"}, {30, "0"}}) +
                          vertex("32") + vertex("32") + Dxf({{0, "SEQEND"}, {8, "0"}}),
       {"AcDbEntity", "AcDb3dPolyline"}, {"AcDbEntity", "AcDbVertex", "AcDb3dPolylineVertex"}},
      {"polyface mesh", Dxf({{0, "POLYLINE"}, {8, "0"}, {66, "1"}, {70, "64"}, {71, "3"}, {72, "1"},
                             {10, "0"}, {20, "0"}, {30, "0"}}) +
                            vertex("192") + vertex("192") + vertex("192") +
                            Dxf({{0, "VERTEX"}, {8, "0"}, {10, "0"}, {20, "0"}, {30, "0"}, {70, "128"},
                                 {71, "1"}, {72, "2"}, {73, "3"}, {0, "SEQEND"}, {8, "0"}}),
       {"AcDbEntity", "AcDbPolyFaceMesh"}, {"AcDbEntity", "AcDbVertex", "AcDbPolyFaceMeshVertex"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::string dxf = Dxf({{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1009"}, {0, "ENDSEC"},
                           {0, "SECTION"}, {2, "ENTITIES"}}) +
                      c.tags + Dxf({{0, "ENDSEC"}, {0, "EOF"}});
    std::string in = ::testing::TempDir() + "/tovik_r12_kind.dxf";
    std::ofstream(in, std::ios::binary | std::ios::trunc) << dxf;
    std::string path = ::testing::TempDir() + "/tovik_r12_kind_out.dxf";
    CallMethod(Open(in), "SaveAs", {Variant(path)});
    SavedFile saved(path);
    ASSERT_EQ(SavedEntities(saved).size(), 1u);
    const Record& r = SavedEntities(saved)[0];
    EXPECT_EQ(Markers(r), c.markers);
    if (!c.follower_markers.empty()) {
      ASSERT_FALSE(r.followers.empty());
      EXPECT_EQ(Markers(r.followers[0]), c.follower_markers);
      EXPECT_EQ(PointOr(r.followers[0], 10).z, 3.0);
    }
  }
  // The polyface's face record (flags 128 alone) is a face, not a vertex.
  SavedFile last(::testing::TempDir() + "/tovik_r12_kind_out.dxf");
  ASSERT_EQ(SavedEntities(last)[0].followers.size(), 5u);
  EXPECT_EQ(Markers(SavedEntities(last)[0].followers[3]),
            (std::vector<std::string_view>{"AcDbEntity", "AcDbFaceRecord"}));
}

}  // namespace
}  // namespace tovik::host::dxf

namespace tovik::host::dxf {
namespace {

const std::string kTextDrawing = CorpusDrawing("ezdxf/text.dxf");

TEST_F(NewDrawingSave, RenamedTableRecordsAreWrittenUnderTheNameTheirUsersGet) {
  SKIP_WITHOUT_DRAWING(kTextDrawing);
  struct Case {
    const char* collection;
    const char* old_name;
    const char* new_name;
  };
  const Case cases[] = {
      {"Blocks", "att_block", "Bloc_é"},
      {"DimStyles", "Mech-2.5", "Cote_é"},
  };
  ObjectRef doc = Open(kTextDrawing);
  for (const Case& c : cases) {
    ObjectRef record = CallMethod(GetProperty(doc, c.collection).Object(), "Item", {Variant(c.old_name)}).Object();
    LetProperty(record, "Name", Variant(c.new_name));
  }
  std::string path = ::testing::TempDir() + "/tovik_renamed.dxf";
  CallMethod(doc, "SaveAs", {Variant(path)});
  CallMethod(doc, "Close", {Variant(false)});
  ObjectRef again = Open(path);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.new_name);
    ObjectRef records = GetProperty(again, c.collection).Object();
    EXPECT_NO_THROW(CallMethod(records, "Item", {Variant(c.new_name)}));
    EXPECT_THROW(CallMethod(records, "Item", {Variant(c.old_name)}), AutomationError);
  }
  // The block keeps its entities under the new name, and its references follow.
  ObjectRef block = CallMethod(GetProperty(again, "Blocks").Object(), "Item", {Variant("Bloc_é")}).Object();
  EXPECT_EQ(CLng(GetProperty(block, "Count")), 4);
  int refs = 0;
  for (const Variant& e : ForEach(GetProperty(again, "ModelSpace").Object())) {
    if (CStr(GetProperty(e.Object(), "EntityName")) == "AcDbBlockReference") {
      EXPECT_EQ(CStr(GetProperty(e.Object(), "Name")), "Bloc_é");
      ++refs;
    }
  }
  EXPECT_GT(refs, 0);
}

}  // namespace
}  // namespace tovik::host::dxf

namespace tovik::host::dxf {
namespace {

TEST_F(NewDrawingSave, EveryVersionAsciiOrBinaryReadsBackWithItsText) {
  ObjectRef doc = CallMethod(docs_, "Add").Object();
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  ObjectRef circle = CallMethod(ms, "AddCircle", {Pt(0, 0), Variant(3.0)}).Object();
  ObjectRef color = GetProperty(circle, "TrueColor").Object();
  CallMethod(color, "SetRGB", {Variant(int32_t{10}), Variant(int32_t{20}), Variant(int32_t{200})});
  SetProperty(circle, "TrueColor", color);
  CallMethod(ms, "AddText", {Variant("Λ 45° ^ x"), Pt(1, 1), Variant(2.0)});
  const Document& written = *app_->documents().back();
  for (std::string_view release : {"R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"}) {
    for (bool binary : {false, true}) {
      SCOPED_TRACE(std::string(release) + (binary ? " binary" : " ascii"));
      std::vector<std::string> notes;
      SaveFormat format{std::string(VersionCodeOf(release)), binary};
      std::string out = WriteDrawing(written, format, &notes);
      EXPECT_EQ(out.starts_with("AutoCAD Binary DXF"), binary);
      auto read = ReadDrawingBuffer(*app_, out, "v.dxf");
      EXPECT_EQ(SourceVersion(*read), format.version);
      EXPECT_TRUE(Repairs(*read).empty());
      std::vector<const Entity*> entities(read->model_space()->entities().begin(),
                                          read->model_space()->entities().end());
      ASSERT_EQ(entities.size(), 2u);
      EXPECT_EQ(As<Text>(entities[1])->data().text, "Λ 45° ^ x");
      // Before R2004 the circle keeps only its nearest index colour.
      bool older = release == "R12" || release == "R2000";
      EXPECT_EQ(entities[0]->props().color.method == kColorByRgb, !older);
      EXPECT_EQ(notes.size(), older ? 1u : 0u);
      read->Close();
    }
  }
  // R12 has no LWPOLYLINE, MTEXT or ELLIPSE: polylines and a TEXT a line.
  ObjectRef pline = CallMethod(ms, "AddLightWeightPolyline", {DoublesValue({0, 0, 4, 0, 4, 3})}).Object();
  CallMethod(pline, "SetBulge", {Variant(int32_t{0}), Variant(0.5)});
  CallMethod(ms, "AddMText", {Pt(0, 10), Variant(20.0), Variant("one\\Ptwo")});
  CallMethod(ms, "AddEllipse", {Pt(0, 0), Pt(5, 0), Variant(0.5)});
  std::vector<std::string> notes;
  TagModel r12 = TagModel::Load(WriteDrawing(written, SaveFormat{"AC1009", false}, &notes), "r12.dxf");
  std::string kinds;
  for (const Record& r : r12.FindSection("ENTITIES")->records) {
    kinds += std::string(r.type) + (r.followers.empty() ? "" : std::to_string(r.followers.size())) + " ";
    if (r.type == "POLYLINE" && r.followers.size() == 4) {
      EXPECT_EQ(r.followers[0].DoubleOf(42), 0.5);
    }
  }
  EXPECT_EQ(kinds, "CIRCLE TEXT POLYLINE4 TEXT TEXT POLYLINE65 ");
  EXPECT_EQ(notes.size(), 3u);  // true colour, MTEXT, ELLIPSE
  // SaveAs with a file type (ac2000_dxf) writes that version.
  std::string path = ::testing::TempDir() + "/tovik_r2000.dxf";
  CallMethod(doc, "SaveAs", {Variant(path), Variant(int32_t{13})});
  EXPECT_EQ(SavedFile(path).model.version(), "AC1015");
  EXPECT_THROW(WriteDrawing(written, SaveFormat{"AC1012", false}), AutomationError);
}

}  // namespace
}  // namespace tovik::host::dxf
