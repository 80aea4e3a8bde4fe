// Document.Import of DXF files through the host's DXF reader: the file's
// model space is merged into the drawing, placed and scaled, with the
// layers and blocks it names; a file the reader refuses changes nothing.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "host/surface/args.h"

namespace tovik::host {
namespace {

Variant Pt(double x, double y) { return PointValue({x, y, 0}); }

// An R12 file as other programs write it: a locked layer "Parts", a block
// "Bolt" holding a circle, a line on "Parts" and a reference to "Bolt".
constexpr const char* kDxf =
    "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLAYER\n70\n1\n"
    "0\nLAYER\n2\nParts\n70\n4\n62\n3\n6\nCONTINUOUS\n0\nENDTAB\n0\nENDSEC\n"
    "0\nSECTION\n2\nBLOCKS\n"
    "0\nBLOCK\n8\n0\n2\nBolt\n70\n0\n10\n0.0\n20\n0.0\n30\n0.0\n"
    "0\nCIRCLE\n8\n0\n10\n0.0\n20\n0.0\n30\n0.0\n40\n0.5\n"
    "0\nENDBLK\n8\n0\n0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n"
    "0\nLINE\n8\nParts\n10\n1.0\n20\n2.0\n30\n0.0\n11\n4.0\n21\n6.0\n31\n0.0\n"
    "0\nINSERT\n8\n0\n2\nBolt\n10\n3.0\n20\n1.0\n30\n0.0\n"
    "0\nENDSEC\n0\nEOF\n";

class HostImport : public ::testing::Test {
 protected:
  void SetUp() override {
    app_ = Application::Create();
    dxf::InstallDxfFileIo(*app_);
    doc_ = app_->ActiveDocumentRef();
    ms_ = GetProperty(doc_, "ModelSpace").Object();
  }
  void TearDown() override {
    for (const auto& path : written_) std::filesystem::remove(path);
  }
  std::string Write(const char* name, const char* text) {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("tovik_import_" + std::to_string(::getpid()) + "_" + name);
    std::ofstream(path) << text;
    written_.push_back(path);
    return path.string();
  }
  ObjectRef Item(const char* collection, const char* name) {
    return CallMethod(GetProperty(doc_, collection).Object(), "Item", {Variant(name)}).Object();
  }

  std::shared_ptr<Application> app_;
  ObjectRef doc_, ms_;
  std::vector<std::filesystem::path> written_;
};

TEST_F(HostImport, ADxfFileMergesPlacedAndScaledWithItsLayersAndBlocks) {
  CallMethod(ms_, "AddLine", {Pt(0, 0), Pt(1, 0)});
  Variant result = CallMethod(doc_, "Import", {Variant(Write("parts.dxf", kDxf)), Pt(10, 0),
                                               Variant(2.0)});
  EXPECT_TRUE(result.IsNothing());
  ASSERT_EQ(CLng(GetProperty(ms_, "Count")), 3);
  // The file's origin lands on (10,0); lengths double: (1,2) -> (12,4).
  ObjectRef line = CallMethod(ms_, "Item", {Variant(int32_t{1})}).Object();
  EXPECT_EQ(CStr(GetProperty(line, "ObjectName")), "AcDbLine");
  EXPECT_EQ(GetProperty(line, "StartPoint").Array().ToDoubles(), (std::vector<double>{12, 4, 0}));
  EXPECT_EQ(GetProperty(line, "EndPoint").Array().ToDoubles(), (std::vector<double>{18, 12, 0}));
  // The layer came as the file has it, locked and green.
  EXPECT_EQ(CStr(GetProperty(line, "Layer")), "Parts");
  EXPECT_TRUE(CBool(GetProperty(Item("Layers", "Parts"), "Lock")));
  EXPECT_EQ(CLng(GetProperty(Item("Layers", "Parts"), "Color")), 3);
  ObjectRef ref = CallMethod(ms_, "Item", {Variant(int32_t{2})}).Object();
  EXPECT_EQ(CStr(GetProperty(ref, "Name")), "Bolt");
  EXPECT_EQ(GetProperty(ref, "InsertionPoint").Array().ToDoubles(),
            (std::vector<double>{16, 2, 0}));
  EXPECT_DOUBLE_EQ(CDbl(GetProperty(ref, "XScaleFactor")), 2);
  EXPECT_EQ(CLng(GetProperty(Item("Blocks", "Bolt"), "Count")), 1);
  // The file's own drawing was never opened; one undo step takes it all back.
  EXPECT_EQ(app_->documents().size(), 1u);
  app_->active_document()->Undo(1);
  EXPECT_EQ(CLng(GetProperty(ms_, "Count")), 1);
  EXPECT_EQ(CLng(GetProperty(GetProperty(doc_, "Layers").Object(), "Count")), 1);
}

TEST_F(HostImport, TheFilesBasePointLandsOnTheInsertionPoint) {
  // The same drawing with $INSBASE (1,1,0): that point goes to (10,0).
  std::string with_base = std::string("0\nSECTION\n2\nHEADER\n9\n$INSBASE\n10\n1.0\n20\n1.0\n30\n0.0\n0\nENDSEC\n") + kDxf;
  CallMethod(doc_, "Import", {Variant(Write("based.dxf", with_base.c_str())), Pt(10, 0), Variant(2.0)});
  ObjectRef line = CallMethod(ms_, "Item", {Variant(int32_t{0})}).Object();
  // (1,2) -> (10 + 2*(1-1), 0 + 2*(2-1)) = (10,2); (4,6) -> (16,10).
  EXPECT_EQ(GetProperty(line, "StartPoint").Array().ToDoubles(), (std::vector<double>{10, 2, 0}));
  EXPECT_EQ(GetProperty(line, "EndPoint").Array().ToDoubles(), (std::vector<double>{16, 10, 0}));
}

TEST_F(HostImport, AFileTheReaderRefusesChangesNothing) {
  const char* broken = "not a drawing\n0\nLINE\n";
  std::string path = Write("broken.dxf", broken);
  try {
    CallMethod(doc_, "Import", {Variant(path), Pt(0, 0), Variant(1.0)});
    ADD_FAILURE() << "no error";
  } catch (const AutomationError& e) {
    // The reader's own error, naming the file.
    EXPECT_NE(e.Description().find(path), std::string::npos) << e.Description();
  }
  EXPECT_EQ(CLng(GetProperty(ms_, "Count")), 0);
  EXPECT_EQ(app_->documents().size(), 1u);
}

}  // namespace
}  // namespace tovik::host
