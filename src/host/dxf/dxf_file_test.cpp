// Reading drawings into the host and writing them back: error texts, audit
// repairs, and an edit made through the automation surface that survives a
// save and a reload while everything else stays as it was.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "host/entities/kinds.h"
#include "host/surface/args.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"
#include "tests/support/dxf_checks.h"

namespace tovik::host::dxf {
namespace {

std::string ErrorText(Application& app, std::string text, const std::string& name) {
  try {
    ReadDrawingBuffer(app, std::move(text), name);
  } catch (const AutomationError& e) {
    return e.Description();
  }
  return "";
}

TEST(DxfDrawingRead, RefusesUnreadableInputNamingFileLineAndFault) {
  auto app = Application::Create({.open_drawing = false});
  struct Case {
    const char* what;
    std::string dxf;
    std::string message;
  };
  const Case cases[] = {
      {"no drawing at all", "this is not a drawing\n",
       "d.dxf: line 1: expected a group code, got \"this is not a drawing\""},
      {"a block inserting itself through another",
       "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\nA\n0\nINSERT\n2\nB\n0\nENDBLK\n0\nBLOCK\n2\nB\n0\nINSERT\n2\nA\n"
       "0\nENDBLK\n0\nENDSEC\n0\nEOF\n",
       "d.dxf: line 21: group code 2: block \"A\" contains itself (A -> B -> A)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(ErrorText(*app, c.dxf, "d.dxf"), c.message);
  }
  EXPECT_TRUE(app->documents().empty());
}

TEST(DxfDrawingRead, TwoRecordsWithOneHandleGetTwoHandles) {
  auto app = Application::Create({.open_drawing = false});
  // The INSERT's attribute names it as owner: it follows the new handle.
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nENTITIES\n0\nLINE\n5\n2A\n8\n0\n11\n5\n21\n0\n"
                               "0\nINSERT\n5\n2A\n2\n*Model_Space\n66\n1\n0\nATTRIB\n5\n40\n330\n2A\n2\nT\n1\nv\n"
                               "0\nSEQEND\n5\n41\n0\nENDSEC\n0\nEOF\n",
                               "d.dxf");
  ASSERT_EQ(Repairs(*doc).size(), 1u) << Repairs(*doc).back();
  EXPECT_EQ(Repairs(*doc)[0], "line 17: duplicate handle 2A (also used at line 7): the record gets handle 42");
  EXPECT_NE(As<Line>(doc->FindByHandle(0x2A)), nullptr);
  auto* ref = As<BlockRef>(doc->FindByHandle(0x42));
  ASSERT_NE(ref, nullptr);
  ASSERT_EQ(ref->attributes().size(), 1u);
  EXPECT_EQ(ref->attributes()[0]->handle(), 0x40u);
}

TEST(DxfDrawingRead, RepairsWhatAnAuditRepairsAndListsIt) {
  auto app = Application::Create({.open_drawing = false});
  // The LINE names layer "WALLS", which no LAYER entry defines.
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nENTITIES\n0\nLINE\n5\n30\n8\nWALLS\n"
                               "10\n1\n20\n2\n30\n0\n11\n4\n21\n6\n31\n0\n0\nENDSEC\n0\nEOF\n",
                               "r.dxf");
  ASSERT_EQ(Repairs(*doc).size(), 1u);
  EXPECT_EQ(Repairs(*doc)[0], "layer \"WALLS\" used but not in the LAYER table: added");
  auto* line = As<Line>(doc->FindByHandle(0x30));
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->props().layer->Name(), "WALLS");
  EXPECT_EQ(line->data().end.y, 6.0);
}

TEST(DxfDrawingRead, RemovesDictionaryEntriesNamingNothingButKeepsThoseNamingRawRecords) {
  auto app = Application::Create({.open_drawing = false});
  // Dictionary D holds three entries: a VISUALSTYLE record (no live object:
  // kept as the file wrote it), handle 99 that no record carries, and an
  // XRECORD. Only the entry naming nothing is a repair.
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nOBJECTS\n"
                               "0\nDICTIONARY\n5\nC\n330\n0\n100\nAcDbDictionary\n3\nMINE\n350\nD\n"
                               "0\nDICTIONARY\n5\nD\n330\nC\n100\nAcDbDictionary\n"
                               "3\nSTYLE\n350\n20\n3\nGONE\n350\n99\n3\nDATA\n350\n21\n"
                               "0\nVISUALSTYLE\n5\n20\n330\nD\n100\nAcDbVisualStyle\n2\nFlat\n291\n0\n"
                               "0\nXRECORD\n5\n21\n330\nD\n100\nAcDbXrecord\n1\nvalue\n"
                               "0\nENDSEC\n0\nEOF\n",
                               "d.dxf");
  ASSERT_EQ(Repairs(*doc).size(), 1u);
  EXPECT_EQ(Repairs(*doc)[0], "dictionary D entry \"GONE\" points to missing object 99: removed");
  auto* dict = AsObject<Dictionary>(doc->FindByHandle(0xD));
  ASSERT_NE(dict, nullptr);
  // The live entries: the XRECORD only (the raw record has no live object).
  ASSERT_EQ(dict->data().entries.size(), 1u);
  EXPECT_EQ(dict->data().entries[0].first, "DATA");
  EXPECT_EQ(dict->data().entries[0].second, doc->FindByHandle(0x21));
}

TEST(DxfDrawingRead, NamesMatchTheirTableEntriesWhateverTheCaseOfNonAsciiLetters) {
  auto app = Application::Create({.open_drawing = false});
  // An R2018 (UTF-8) file whose tables spell the layer and the block in
  // lower case, the entity in upper case (Cyrillic and Greek): the same
  // names to the host.
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1032\n0\nENDSEC\n"
                               "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLAYER\n0\nLAYER\n2\n\xD1\x81\xD1\x82\xD0\xB5\xD0\xBD\xD1\x8B\n"
                               "70\n0\n62\n7\n6\nCONTINUOUS\n0\nENDTAB\n0\nENDSEC\n"
                               "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\n\xCE\xB1\xCE\xB2\n70\n0\n10\n0\n20\n0\n30\n0\n0\nENDBLK\n0\nENDSEC\n"
                               "0\nSECTION\n2\nENTITIES\n0\nINSERT\n5\n40\n8\n\xD0\xA1\xD0\xA2\xD0\x95\xD0\x9D\xD0\xAB\n"
                               "2\n\xCE\x91\xCE\x92\n10\n0\n20\n0\n30\n0\n0\nENDSEC\n0\nEOF\n",
                               "n.dxf");
  EXPECT_TRUE(Repairs(*doc).empty());
  auto* insert = As<BlockRef>(doc->FindByHandle(0x40));
  ASSERT_NE(insert, nullptr);
  EXPECT_EQ(insert->props().layer->Name(), "\xD1\x81\xD1\x82\xD0\xB5\xD0\xBD\xD1\x8B");  // "стены"
  ASSERT_NE(insert->data().block, nullptr);
  EXPECT_EQ(insert->data().block->Name(), "\xCE\xB1\xCE\xB2");  // "αβ"
}

TEST(DxfDrawingRead, MapsOcsGeometryAndDegreesToTheLiveObject) {
  auto app = Application::Create({.open_drawing = false});
  // An ARC with normal (0,0,-1): OCS x is WCS -x; angles are degrees.
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nENTITIES\n0\nARC\n5\n31\n8\n0\n10\n3\n20\n4\n30\n0\n"
                               "40\n2\n50\n90\n51\n180\n210\n0\n220\n0\n230\n-1\n0\nENDSEC\n0\nEOF\n",
                               "a.dxf");
  auto* arc = As<Arc>(doc->FindByHandle(0x31));
  ASSERT_NE(arc, nullptr);
  EXPECT_DOUBLE_EQ(arc->data().center.x, -3.0);
  EXPECT_DOUBLE_EQ(arc->data().center.y, 4.0);
  EXPECT_DOUBLE_EQ(arc->data().start_angle, 3.141592653589793 / 2);
  EXPECT_DOUBLE_EQ(arc->data().end_angle, 3.141592653589793);
  // An MTEXT's direction is its own 11, not the 11 (a point) of the
  // embedded object that follows "101 Embedded Object"; without an 11 of
  // its own, 50 (degrees) turns it.
  doc = ReadDrawingBuffer(*app,
                          "0\nSECTION\n2\nENTITIES\n0\nMTEXT\n5\n32\n8\n0\n100\nAcDbMText\n"
                          "10\n5\n20\n6\n40\n2\n1\nA\n101\nEmbedded Object\n10\n1\n20\n0\n"
                          "11\n5\n21\n6\n0\nMTEXT\n5\n33\n8\n0\n10\n0\n20\n0\n40\n2\n1\nB\n"
                          "50\n90\n0\nENDSEC\n0\nEOF\n",
                          "m.dxf");
  EXPECT_EQ(As<MText>(doc->FindByHandle(0x32))->data().rotation, 0.0);
  EXPECT_DOUBLE_EQ(As<MText>(doc->FindByHandle(0x33))->data().rotation, 3.141592653589793 / 2);
}


}  // namespace
}  // namespace tovik::host::dxf
