#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

// What Import refuses before it reads anything: the host application has no
// file reader installed (reading DXF files is tested with the DXF reader in
// tests/).
class ImportTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    dir_ = std::filesystem::temp_directory_path() /
           ("tovik_import_" + std::to_string(reinterpret_cast<uintptr_t>(this)));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override {
    std::filesystem::remove_all(dir_);
  }
  std::string File(const char* name) {
    std::string path = (dir_ / name).string();
    std::ofstream(path) << "0\nEOF\n";
    return path;
  }

  std::filesystem::path dir_;
};

TEST_F(ImportTest, RefusalsLeaveTheDrawingAsItWas) {
  std::string dxf = File("a.dxf");
  std::string missing = (dir_ / "none.dxf").string();
  struct Case {
    const char* what;
    std::vector<Variant> args;
    const char* text;
  } cases[] = {
      {"no DXF reader installed", {Variant(dxf), Pt(0, 0), Variant(1.0)}, "Not applicable"},
      {"a missing file", {Variant(missing), Pt(0, 0), Variant(1.0)}, "File not found"},
      {"a directory", {Variant(dir_.string()), Pt(0, 0), Variant(1.0)}, "File not found"},
      // Kinds the host reads and the headless host has no reader for.
      {"a WMF file", {Variant(File("a.WMF")), Pt(0, 0), Variant(1.0)}, "Not applicable"},
      {"a SAT file", {Variant(File("a.sat")), Pt(0, 0), Variant(1.0)}, "Not applicable"},
      {"an EPS file", {Variant(File("a.eps")), Pt(0, 0), Variant(1.0)}, "Not applicable"},
      {"another kind", {Variant(File("a.txt")), Pt(0, 0), Variant(1.0)}, "Invalid input"},
      {"no extension", {Variant(File("plain")), Pt(0, 0), Variant(1.0)}, "Invalid input"},
      {"a zero scale", {Variant(dxf), Pt(0, 0), Variant(0.0)}, "Invalid input"},
      {"a negative scale", {Variant(dxf), Pt(0, 0), Variant(-2.0)}, "Invalid input"},
      {"a bad point", {Variant(dxf), Variant(1.0), Variant(1.0)},
       "Invalid argument InsertionPoint in Import"},
      {"a bad scale", {Variant(dxf), Pt(0, 0), Variant("x")}, "Type mismatch"},
  };
  ObjectRef existing = Line(0, 0, 1, 1);
  for (Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(ErrorOf([&] { CallMethodRef(doc, "Import", c.args); }).Description(), c.text);
    EXPECT_EQ(CLng(GetProperty(ms, "Count")), 1);
    EXPECT_EQ(CLng(GetProperty(GetProperty(doc, "Layers").Object(), "Count")), 1);
  }
  AutomationError r = ErrorOf([&] { CallMethod(doc, "Import", {Variant(dxf), Pt(0, 0)}); });
  EXPECT_EQ(r.Number(), 449);
  EXPECT_EQ(r.Description(), "Argument not optional");
  r = ErrorOf([&] { CallMethod(doc, "Import", {Variant(missing), Pt(0, 0), Variant(1.0)}); });
  EXPECT_EQ(r.Number(), -2145386437);
}

}  // namespace
}  // namespace tovik::host
