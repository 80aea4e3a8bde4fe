// What a record read from a file looks like when written back: values the
// host left alone keep the form the file gave them, properties the host
// adds go where readers expect them, and the written version keeps data an
// older file holds in a form R2018 has no room for.
#include <gtest/gtest.h>

#include <numbers>
#include <string>
#include <vector>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "dxf/tag_writer.h"
#include "host/surface/args.h"

namespace tovik::host::dxf {
namespace {

// A drawing of `version` with model space's block record and block, so
// that its records are patched rather than written anew as those of a file
// without them are.
std::string Drawing(const std::string& version, const std::string& entities) {
  return "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\n" + version +
         "\n9\n$DWGCODEPAGE\n3\nANSI_1252\n9\n$HANDSEED\n5\n100\n0\nENDSEC\n"
         "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nBLOCK_RECORD\n5\n1\n70\n1\n"
         "0\nBLOCK_RECORD\n5\n1F\n330\n1\n100\nAcDbSymbolTableRecord\n100\nAcDbBlockTableRecord\n"
         "2\n*Model_Space\n0\nENDTAB\n0\nENDSEC\n"
         "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n5\n20\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockBegin\n"
         "2\n*Model_Space\n70\n0\n10\n0\n20\n0\n30\n0\n3\n*Model_Space\n"
         "0\nENDBLK\n5\n21\n330\n1F\n100\nAcDbEntity\n8\n0\n100\nAcDbBlockEnd\n0\nENDSEC\n"
         "0\nSECTION\n2\nENTITIES\n" + entities + "0\nENDSEC\n0\nEOF\n";
}

// The written $ACADVER.
std::string VersionOf(const std::string& dxf) {
  size_t at = dxf.find("$ACADVER\n");
  if (at == std::string::npos) return "";
  size_t value = dxf.find('\n', dxf.find('\n', at) + 1) + 1;
  return dxf.substr(value, dxf.find('\n', value) - value);
}

TEST(DxfWriteForm, EscapesOfAnOlderFileStayWhileTheTextIsUnchanged) {
  auto app = Application::Create({.open_drawing = false});
  // R2004 text: "94" and a degree sign written as an escape, then a raw
  // cp1252 byte 0xE4 (a-umlaut).
  auto doc = ReadDrawingBuffer(
      *app,
      Drawing("AC1018",
              "0\nTEXT\n5\n40\n100\nAcDbEntity\n8\n0\n100\nAcDbText\n10\n0\n20\n0\n30\n0\n40\n1\n"
              "1\n94\\U+00B0\n100\nAcDbText\n0\nTEXT\n5\n41\n100\nAcDbEntity\n8\n0\n100\nAcDbText\n"
              "10\n0\n20\n0\n30\n0\n40\n1\n1\nK\xE4se\n100\nAcDbText\n"),
      "t.dxf");
  ObjectRef degrees = CallMethod(ObjectRef(doc), "HandleToObject", {Variant(std::string("40"))}).Object();
  EXPECT_EQ(GetProperty(degrees, "TextString").RawString(), "94\xC2\xB0");  // the host sees "94°"

  std::string written = WriteDrawing(*doc);
  EXPECT_EQ(VersionOf(written), "AC1032");
  // R2018 is UTF-8: the escape is kept as written, the code page byte
  // becomes its UTF-8 form.
  EXPECT_NE(written.find("\n  1\n94\\U+00B0\n"), std::string::npos);
  EXPECT_NE(written.find("\n  1\nK\xC3\xA4se\n"), std::string::npos);

  LetProperty(degrees, "TextString", Variant(std::string("95\xC2\xB0")));
  written = WriteDrawing(*doc);
  EXPECT_NE(written.find("\n  1\n95\xC2\xB0\n"), std::string::npos);
  EXPECT_EQ(written.find("U+00B0"), std::string::npos);
}

TEST(DxfWriteForm, CommonPropertiesKeepTheirSpellingAndPlace) {
  auto app = Application::Create({.open_drawing = false});
  auto doc = ReadDrawingBuffer(
      *app,
      Drawing("AC1032",
              // An explicit "ByLayer", an upper-case "BYBLOCK" (as R12 writers
              // spell it), and a line with no colour at all.
              "0\nLINE\n5\n50\n100\nAcDbEntity\n8\n0\n6\nByLayer\n100\nAcDbLine\n10\n0\n20\n0\n30\n0\n"
              "11\n1\n21\n0\n31\n0\n"
              "0\nLINE\n5\n51\n100\nAcDbEntity\n8\n0\n6\nBYBLOCK\n62\n0\n100\nAcDbLine\n10\n0\n20\n0\n30\n0\n"
              "11\n1\n21\n0\n31\n0\n"),
      "c.dxf");
  ObjectRef plain = CallMethod(ObjectRef(doc), "HandleToObject", {Variant(std::string("50"))}).Object();
  // ACI 3 is green; set through the entity's colour property.
  LetProperty(plain, "Color", Variant(int32_t{3}));
  std::string written = WriteDrawing(*doc);
  EXPECT_NE(written.find("\n  5\n50\n100\nAcDbEntity\n  8\n0\n  6\nByLayer\n 62\n3\n100\nAcDbLine\n"),
            std::string::npos)
      << written;
  EXPECT_NE(written.find("\n  5\n51\n100\nAcDbEntity\n  8\n0\n  6\nBYBLOCK\n 62\n0\n100\nAcDbLine\n"),
            std::string::npos)
      << written;
}

// A multiline text turned through automation is written turned, in the form
// its file gave the direction (a vector, an angle, or none until now).
TEST(DxfWriteForm, TurnedMultilineTextKeepsTheFormOfItsDirection) {
  const std::string head = "0\nMTEXT\n5\n50\n100\nAcDbEntity\n8\n0\n100\nAcDbMText\n10\n0\n20\n0\n30\n0\n40\n1\n1\nT\n";
  struct Case {
    const char* name;
    std::string direction;  // as the file gives it
    std::string expected;   // in the copy, after a turn to 90 degrees
  } cases[] = {
      {"vector", "11\n1\n21\n0\n31\n0\n", "\n 11\n6.123233995736766e-17\n 21\n1.0\n"},
      {"angle", "50\n0\n", "\n 50\n90.0\n"},
      {"none", "", "\n 50\n90.0\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto app = Application::Create({.open_drawing = false});
    auto doc = ReadDrawingBuffer(*app, Drawing("AC1032", head + c.direction), "m.dxf");
    ObjectRef text = CallMethod(ObjectRef(doc), "HandleToObject", {Variant(std::string("50"))}).Object();
    LetProperty(text, "Rotation", Variant(std::numbers::pi / 2));
    std::string written = WriteDrawing(*doc);
    std::string record = written.substr(written.find("\nMTEXT\n"));
    record = record.substr(0, record.find("\n  0\n") + 1);
    EXPECT_NE(record.find(c.expected), std::string::npos) << record;
    auto again = ReadDrawingBuffer(*app, written, "again.dxf");
    ObjectRef back = CallMethod(ObjectRef(again), "HandleToObject", {Variant(std::string("50"))}).Object();
    EXPECT_NEAR(CDbl(GetProperty(back, "Rotation")), std::numbers::pi / 2, 1e-9);
  }
}

// A line break inside a binary file's multiline text is a paragraph break;
// an ASCII file's "^J" stays as it was written.
TEST(DxfWriteForm, LineBreaksOfBinaryMultilineTextBecomeParagraphBreaks) {
  const std::string mtext = "0\nMTEXT\n5\n50\n100\nAcDbEntity\n8\n0\n100\nAcDbMText\n10\n0\n20\n0\n30\n0\n"
                            "40\n1\n1\none^Jtwo\n";
  auto app = Application::Create({.open_drawing = false});
  std::string ascii = Drawing("AC1032", mtext);
  auto from_binary = ReadDrawingBuffer(*app, tovik::dxf::AsciiToBinaryDxf(ascii, false), "b.dxf");
  auto from_ascii = ReadDrawingBuffer(*app, ascii, "a.dxf");
  auto text_of = [](const std::shared_ptr<Document>& doc) {
    ObjectRef t = CallMethod(ObjectRef(doc), "HandleToObject", {Variant(std::string("50"))}).Object();
    return CStr(GetProperty(t, "TextString"));
  };
  EXPECT_EQ(text_of(from_binary), "one\\Ptwo");
  EXPECT_NE(WriteDrawing(*from_binary).find("\n  1\none\\Ptwo\n"), std::string::npos);
  EXPECT_EQ(text_of(from_ascii), "one^Jtwo");
}

// The oldest kinds, which later versions have no subclass for, keep every
// group when an old file is upgraded: R10's 3D line, R2's repeat blocks.
TEST(DxfWriteForm, OldestKindsKeepTheirGroupsWhenUpgraded) {
  const std::string file =
      "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1006\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n"
      "0\n3DLINE\n8\n0\n10\n1.0\n20\n2.0\n30\n3.0\n11\n4.0\n21\n5.0\n31\n6.0\n"
      "0\nREPEAT\n8\n0\n70\n2\n71\n3\n44\n5.0\n45\n6.0\n"
      "0\nLINE\n8\n0\n10\n0\n20\n0\n11\n1\n21\n1\n0\nENDREP\n8\n0\n0\nENDSEC\n0\nEOF\n";
  auto app = Application::Create({.open_drawing = false});
  std::string written = WriteDrawing(*ReadDrawingBuffer(*app, file, "r10.dxf"));
  for (const char* kept : {"\n  8\n0\n 10\n1.0\n 20\n2.0\n 30\n3.0\n 11\n4.0\n 21\n5.0\n 31\n6.0\n  0\n",
                           "\n  8\n0\n 70\n2\n 71\n3\n 44\n5.0\n 45\n6.0\n  0\n", "\nENDREP\n"}) {
    EXPECT_NE(written.find(kept), std::string::npos) << kept << "\n" << written.substr(written.find("ENTITIES"));
  }
}

TEST(DxfWriteForm, ChangedExtendedDataKeepsEveryValueInItsGroupsKind) {
  auto app = Application::Create({.open_drawing = false});
  // A y coordinate (1020) the file gave without its x, beside a real and an
  // integer; a copy of the line has its extended data written from the
  // host's values, and the file must read again.
  auto doc = ReadDrawingBuffer(
      *app,
      Drawing("AC1032",
              "0\nLINE\n5\n70\n100\nAcDbEntity\n8\n0\n100\nAcDbLine\n10\n0\n20\n0\n30\n0\n"
              "11\n1\n21\n0\n31\n0\n1001\nAPP\n1020\n2.5\n1040\n7.25\n1070\n3\n"),
      "x.dxf");
  ObjectRef line = CallMethod(ObjectRef(doc), "HandleToObject", {Variant(std::string("70"))}).Object();
  ObjectRef copy = CallMethod(line, "Copy").Object();
  std::string written = WriteDrawing(*doc);
  size_t at = written.find("\n  5\n" + GetProperty(copy, "Handle").RawString() + "\n");
  ASSERT_NE(at, std::string::npos) << written;
  EXPECT_NE(written.find("1020\n2.5\n1040\n7.25\n1070\n3\n", at), std::string::npos) << written.substr(at);
  EXPECT_NO_THROW(ReadDrawingBuffer(*app, written, "again.dxf"));
}

TEST(DxfWriteForm, AFileWithoutModelSpacesBlockRecordIsWrittenAnewOnce) {
  auto app = Application::Create({.open_drawing = false});
  // An R2018 file with objects but no block records (found by fuzzing): its
  // drawing is written from the live objects, each of them once.
  auto doc = ReadDrawingBuffer(
      *app,
      "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1032\n0\nENDSEC\n"
      "0\nSECTION\n2\nENTITIES\n0\nLINE\n5\n30\n100\nAcDbEntity\n8\n0\n100\nAcDbLine\n"
      "10\n0\n20\n0\n30\n0\n11\n1\n21\n0\n31\n0\n0\nENDSEC\n"
      "0\nSECTION\n2\nOBJECTS\n0\nDICTIONARY\n5\nA\n330\n0\n100\nAcDbDictionary\n3\nACAD_GROUP\n350\nB\n"
      "0\nDICTIONARY\n5\nB\n330\nA\n100\nAcDbDictionary\n0\nENDSEC\n0\nEOF\n",
      "o.dxf");
  std::string written = WriteDrawing(*doc);
  size_t first = written.find("\nDICTIONARY\n  5\nA\n");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(written.find("\nDICTIONARY\n  5\nA\n", first + 1), std::string::npos);
  EXPECT_NO_THROW(ReadDrawingBuffer(*app, written, "again.dxf"));
}

TEST(DxfWriteForm, HeaderVariablesTheHostWritesTakeTheirOwnGroupCodes) {
  auto app = Application::Create({.open_drawing = false});
  // A damaged header (found by fuzzing): $USERR1 with an integer's code 70
  // and $ACADVER with code 70 too. The copy writes a real (40) and a text
  // (1), so that it reads.
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1032\n9\n$USERR1\n70\n3\n"
                               "0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nENDSEC\n0\nEOF\n",
                               "h.dxf");
  std::string written = WriteDrawing(*doc);
  EXPECT_NE(written.find("$USERR1\n 40\n0.0\n"), std::string::npos) << written;
  EXPECT_NO_THROW(ReadDrawingBuffer(*app, written, "again.dxf"));
}

TEST(DxfWriteForm, SectionsAreWrittenInTheirStandardOrderEachOnce) {
  auto app = Application::Create({.open_drawing = false});
  // ENTITIES before CLASSES (found by fuzzing: the copy had CLASSES twice).
  auto doc = ReadDrawingBuffer(*app,
                               "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1032\n0\nENDSEC\n"
                               "0\nSECTION\n2\nENTITIES\n0\nENDSEC\n0\nSECTION\n2\nCLASSES\n0\nENDSEC\n0\nEOF\n",
                               "s.dxf");
  std::string written = WriteDrawing(*doc);
  std::vector<std::string> sections;
  for (size_t at = written.find("SECTION\n  2\n"); at != std::string::npos;
       at = written.find("SECTION\n  2\n", at + 1)) {
    size_t name = at + 12;
    sections.push_back(written.substr(name, written.find('\n', name) - name));
  }
  EXPECT_EQ(sections, (std::vector<std::string>{"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS"}));
  EXPECT_NO_THROW(ReadDrawingBuffer(*app, written, "again.dxf"));
}

TEST(DxfWriteForm, OlderFormsWithoutAnR2018EquivalentKeepTheDrawingAtR2010) {
  auto app = Application::Create({.open_drawing = false});
  const std::string solid =
      "0\n3DSOLID\n5\n60\n100\nAcDbEntity\n8\n0\n100\nAcDbModelerGeometry\n70\n1\n"
      "1\nmnmoo nm m mn\n3\nnmm\n";
  const std::string empty_solid = "0\n3DSOLID\n5\n60\n100\nAcDbEntity\n8\n0\n100\nAcDbModelerGeometry\n70\n1\n";
  const std::string linked_mtext =
      "0\nMTEXT\n5\n61\n100\nAcDbEntity\n8\n0\n100\nAcDbMText\n10\n0\n20\n0\n30\n0\n40\n1\n1\nA\n"
      "1001\nACAD\n1000\nACAD_MTEXT_COLUMNS_BEGIN\n1070\n47\n1070\n2\n1005\n62\n1000\nACAD_MTEXT_COLUMNS_END\n"
      "0\nMTEXT\n5\n62\n100\nAcDbEntity\n8\n0\n100\nAcDbMText\n10\n5\n20\n0\n30\n0\n40\n1\n1\nB\n";
  struct Case {
    const char* what;
    std::string version;
    std::string entities;
    std::string written;
  };
  const Case cases[] = {
      {"R2007 solid with SAT text", "AC1021", solid, "AC1024"},
      {"R2007 solid without SAT text", "AC1021", empty_solid, "AC1032"},
      {"R2004 MTEXT linking a column entity", "AC1018", linked_mtext, "AC1024"},
      // From R2013 on solids are SAB in ACDSDATA: the host's version fits.
      {"R2013 solid", "AC1027", solid, "AC1032"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    auto doc = ReadDrawingBuffer(*app, Drawing(c.version, c.entities), "v.dxf");
    std::string written = WriteDrawing(*doc);
    EXPECT_EQ(VersionOf(written), c.written);
    if (c.entities == solid) {
      EXPECT_NE(written.find("\n  1\nmnmoo nm m mn\n"), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace tovik::host::dxf
