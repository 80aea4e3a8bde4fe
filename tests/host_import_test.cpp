// Document.Import of a DXF file through the host's DXF reader: the file's
// entities are merged into a drawing, placed and scaled.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/application.h"
#include "host/args.h"
#include "host/document.h"
#include "host/dxf/db_reader.h"

namespace tovik::host {
namespace {

Variant Pt(double x, double y) { return PointValue({x, y, 0}); }

TEST(HostImport, ADxfFileMergesIntoTheDrawingPlacedAndScaled) {
  DrawingFileIo saved = GetDrawingFileIo();
  dxf::InstallDxfFileIo();
  auto app = Application::Create();
  // An R12 file as other programs write it: a layer table and one line.
  const char* kDxf =
      "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLAYER\n70\n1\n"
      "0\nLAYER\n2\nParts\n70\n0\n62\n3\n6\nCONTINUOUS\n0\nENDTAB\n0\nENDSEC\n"
      "0\nSECTION\n2\nENTITIES\n"
      "0\nLINE\n8\nParts\n10\n1.0\n20\n2.0\n30\n0.0\n11\n4.0\n21\n6.0\n31\n0.0\n"
      "0\nENDSEC\n0\nEOF\n";
  std::filesystem::path path = std::filesystem::temp_directory_path() /
                               ("tovik_import_" + std::to_string(::getpid()) + ".dxf");
  std::ofstream(path) << kDxf;

  ObjectRef target = app->AddDocument();
  ObjectRef target_ms = GetProperty(target, "ModelSpace").Object();
  Variant result = CallMethod(target, "Import", {Variant(path.string()), Pt(10, 0), Variant(2.0)});
  std::filesystem::remove(path);
  SetDrawingFileIo(saved);
  EXPECT_TRUE(result.IsNothing());
  ASSERT_EQ(CLng(GetProperty(target_ms, "Count")), 1);
  ObjectRef copy = CallMethod(target_ms, "Item", {Variant(int32_t{0})}).Object();
  EXPECT_EQ(CStr(GetProperty(copy, "ObjectName")), "AcDbLine");
  EXPECT_EQ(GetProperty(copy, "StartPoint").Array().ToDoubles(), (std::vector<double>{12, 4, 0}));
  EXPECT_EQ(GetProperty(copy, "EndPoint").Array().ToDoubles(), (std::vector<double>{18, 12, 0}));
  EXPECT_EQ(CStr(GetProperty(copy, "Layer")), "Parts");
  ObjectRef imported = CallMethod(GetProperty(target, "Layers").Object(), "Item",
                                  {Variant("Parts")}).Object();
  EXPECT_EQ(CLng(GetProperty(imported, "Color")), 3);
  // The file's own drawing was never opened.
  EXPECT_EQ(app->documents().size(), 2u);
}

}  // namespace
}  // namespace tovik::host
