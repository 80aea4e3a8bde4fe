#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/host_error.h"
#include "host/host_test_util.h"

namespace tovik::host {
namespace {

// Import reads files through the installed reader; these tests install a
// stand-in that builds the drawing a file would hold, and put it back.
class ImportTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    saved_ = GetDrawingFileIo();
    dir_ = std::filesystem::temp_directory_path() /
           ("tovik_import_" + std::to_string(reinterpret_cast<uintptr_t>(this)));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override {
    SetDrawingFileIo(saved_);
    std::filesystem::remove_all(dir_);
  }
  std::string File(const char* name) {
    std::string path = (dir_ / name).string();
    std::ofstream(path) << "0\nEOF\n";
    return path;
  }
  // A reader whose drawing has INSBASE (1,1,0), a line from (0,0) to (2,0)
  // on a locked layer "Imported", and a reference to a block "Part".
  void InstallReader() {
    DrawingFileIo io;
    io.open = [](Application& app, const std::string& path) {
      auto d = std::make_shared<Document>(&app, path, false);
      d->Initialize();
      ObjectRef file(d);
      d->sysvar_values()["INSBASE"] = PointValue({1, 1, 0});
      ObjectRef fms = GetProperty(file, "ModelSpace").Object();
      ObjectRef layer = CallMethod(GetProperty(file, "Layers").Object(), "Add",
                                   {Variant("Imported")}).Object();
      ObjectRef line = CallMethod(fms, "AddLine", {Pt(0, 0), Pt(2, 0)}).Object();
      LetProperty(line, "Layer", Variant("Imported"));
      LetProperty(layer, "Lock", Variant(true));
      ObjectRef part = CallMethod(GetProperty(file, "Blocks").Object(), "Add",
                                  {Pt(0, 0), Variant("Part")}).Object();
      CallMethod(part, "AddCircle", {Pt(0, 0), Variant(1.0)});
      CallMethod(fms, "InsertBlock", {Pt(1, 1), Variant("Part"), Variant(1.0), Variant(1.0),
                                      Variant(1.0)});
      return d;
    };
    SetDrawingFileIo(io);
  }

  DrawingFileIo saved_;
  std::filesystem::path dir_;
};

TEST_F(ImportTest, ADxfFileIsMergedPlacedAndScaled) {
  InstallReader();
  ObjectRef existing = Line(0, 0, 1, 0);
  Variant result = CallMethod(doc, "Import", {Variant(File("parts.DXF")), Pt(10, 10), Variant(2.0)});
  EXPECT_TRUE(result.IsNothing());
  ASSERT_EQ(CLng(GetProperty(ms, "Count")), 3);
  ObjectRef line = CallMethod(ms, "Item", {Variant(int32_t{1})}).Object();
  // The file's base point (1,1) lands on (10,10); lengths double.
  EXPECT_EQ(GetProperty(line, "StartPoint").Array().ToDoubles(), (std::vector<double>{8, 8, 0}));
  EXPECT_EQ(GetProperty(line, "EndPoint").Array().ToDoubles(), (std::vector<double>{12, 8, 0}));
  // The layer came over as the file has it, locked.
  EXPECT_EQ(CStr(GetProperty(line, "Layer")), "Imported");
  ObjectRef layer = CallMethod(GetProperty(doc, "Layers").Object(), "Item",
                               {Variant("Imported")}).Object();
  EXPECT_TRUE(CBool(GetProperty(layer, "Lock")));
  ObjectRef ref = CallMethod(ms, "Item", {Variant(int32_t{2})}).Object();
  EXPECT_EQ(CStr(GetProperty(ref, "Name")), "Part");
  EXPECT_EQ(GetProperty(ref, "InsertionPoint").Array().ToDoubles(),
            (std::vector<double>{10, 10, 0}));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "XScaleFactor")), 2);
  ObjectRef part = CallMethod(GetProperty(doc, "Blocks").Object(), "Item", {Variant("Part")}).Object();
  EXPECT_EQ(CLng(GetProperty(part, "Count")), 1);
  // One undo step takes the import back.
  document().Undo(1);
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 1);
  EXPECT_TRUE(SameObject(CallMethod(ms, "Item", {Variant(int32_t{0})}).Object(), existing));
}

TEST_F(ImportTest, RefusalsLeaveTheDrawingAsItWas) {
  std::string dxf = File("a.dxf");
  std::string wmf = File("a.wmf");
  std::string txt = File("a.txt");
  std::string missing = (dir_ / "none.dxf").string();
  struct Case {
    const char* what;
    bool reader;
    std::vector<Variant> args;
    const char* text;
  } cases[] = {
      {"no reader installed", false, {Variant(dxf), Pt(0, 0), Variant(1.0)}, "Not applicable"},
      {"a missing file", true, {Variant(missing), Pt(0, 0), Variant(1.0)}, "File not found"},
      {"a WMF file", true, {Variant(wmf), Pt(0, 0), Variant(1.0)}, "Not applicable"},
      {"another kind", true, {Variant(txt), Pt(0, 0), Variant(1.0)}, "Invalid input"},
      {"a zero scale", true, {Variant(dxf), Pt(0, 0), Variant(0.0)}, "Invalid input"},
      {"a bad point", true, {Variant(dxf), Variant(1.0), Variant(1.0)},
       "Invalid argument InsertionPoint in Import"},
      {"a bad scale", true, {Variant(dxf), Pt(0, 0), Variant("x")}, "Type mismatch"},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.what);
    if (c.reader) {
      InstallReader();
    } else {
      SetDrawingFileIo({});
    }
    EXPECT_EQ(ErrorOf([&] { CallMethodRef(doc, "Import", c.args); }).description, c.text);
    EXPECT_EQ(CLng(GetProperty(ms, "Count")), 0);
    EXPECT_EQ(CLng(GetProperty(GetProperty(doc, "Layers").Object(), "Count")), 1);
  }
  EXPECT_EQ(ErrorOf([&] { CallMethod(doc, "Import", {Variant(dxf), Pt(0, 0)}); }).number, 449);
  // A reader failure reaches the caller as the reader raised it.
  DrawingFileIo failing;
  failing.open = [](Application&, const std::string& path) -> std::shared_ptr<Document> {
    throw AutomationError(-2145386445, path + ": line 3: bad group code", "AutoCAD.Application");
  };
  SetDrawingFileIo(failing);
  Raised r = ErrorOf([&] { CallMethod(doc, "Import", {Variant(dxf), Pt(0, 0), Variant(1.0)}); });
  EXPECT_EQ(r.number, -2145386445);
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 0);
}

}  // namespace
}  // namespace tovik::host
