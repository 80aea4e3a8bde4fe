#include "dxf/tag_model.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace tovik::dxf {
namespace {

constexpr const char* kDrawing =
    "999\nwritten by hand\n"
    "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n9\n$DWGCODEPAGE\n3\nANSI_1251\n"
    "9\n$INSBASE\n10\n0.0\n20\n0.0\n30\n0.0\n0\nENDSEC\n"
    "0\nSECTION\n2\nTABLES\n"
    "0\nTABLE\n2\nLAYER\n70\n2\n0\nLAYER\n2\n0\n70\n0\n0\nLAYER\n2\n\xD1\xF2\xE5\xED\xFB\n70\n0\n"
    "0\nENDTAB\n0\nENDSEC\n"
    "0\nSECTION\n2\nBLOCKS\n"
    "0\nBLOCK\n2\nB1\n0\nPOLYLINE\n66\n1\n0\nVERTEX\n10\n0.0\n0\nVERTEX\n10\n1.0\n0\nSEQEND\n"
    "0\nLINE\n8\n0\n0\nENDBLK\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n"
    "0\nINSERT\n2\nB1\n66\n1\n0\nATTRIB\n1\nv1\n0\nATTRIB\n1\nv2\n0\nSEQEND\n"
    "0\nINSERT\n2\nB1\n0\nCIRCLE\n40\n1.0\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nTHUMBNAILIMAGE\n90\n2\n310\nABCD\n0\nENDSEC\n"
    "0\nSECTION\n2\nVENDOR_STUFF\n0\nTHING\n1\nkept\n0\nENDSEC\n"
    "0\nEOF\n";

TEST(TagModel, GroupsTheFileIntoSectionsTablesBlocksAndRecords) {
  TagModel model = TagModel::Load(kDrawing, "d.dxf");
  ASSERT_EQ(model.leading().size(), 1u);
  EXPECT_EQ(model.leading()[0].code, 999);
  ASSERT_EQ(model.sections().size(), 6u);
  EXPECT_EQ(model.version(), "AC1015");
  EXPECT_EQ(model.code_page(), "ANSI_1251");

  const Section& header = model.sections()[0];
  EXPECT_EQ(header.kind, SectionKind::kHeader);
  ASSERT_EQ(header.variables.size(), 3u);
  EXPECT_EQ(header.begin.tags.size(), 1u);  // only "2 HEADER"
  const HeaderVariable* insbase = model.FindVariable("$INSBASE");
  ASSERT_NE(insbase, nullptr);
  EXPECT_EQ(insbase->tags.size(), 3u);
  EXPECT_EQ(model.FindVariable("$MISSING"), nullptr);

  const Section& tables = model.sections()[1];
  ASSERT_EQ(tables.tables.size(), 1u);
  EXPECT_EQ(tables.tables[0].Name(), "LAYER");
  ASSERT_EQ(tables.tables[0].entries.size(), 2u);
  // "Сеть" written in code page 1251 arrives as UTF-8.
  EXPECT_EQ(tables.tables[0].entries[1].StringOr(2), "\xD0\xA1\xD1\x82\xD0\xB5\xD0\xBD\xD1\x8B");
  EXPECT_EQ(tables.tables[0].end.type, "ENDTAB");

  const Section& blocks = model.sections()[2];
  ASSERT_EQ(blocks.blocks.size(), 1u);
  const Block& block = blocks.blocks[0];
  EXPECT_EQ(block.Name(), "B1");
  ASSERT_EQ(block.entities.size(), 2u);  // POLYLINE (with followers) and LINE
  ASSERT_EQ(block.entities[0].followers.size(), 3u);
  EXPECT_EQ(block.entities[0].followers[2].type, "SEQEND");
  EXPECT_EQ(block.end.type, "ENDBLK");

  const Section& entities = model.sections()[3];
  ASSERT_EQ(entities.records.size(), 3u);
  EXPECT_EQ(entities.records[0].followers.size(), 3u);  // two ATTRIBs and SEQEND
  EXPECT_TRUE(entities.records[1].followers.empty());   // INSERT without attributes
  EXPECT_EQ(entities.records[2].type, "CIRCLE");

  const Section& thumbnail = model.sections()[4];
  EXPECT_EQ(thumbnail.kind, SectionKind::kThumbnailImage);
  EXPECT_EQ(thumbnail.begin.tags.size(), 3u);  // 2, 90, 310
  const Section& vendor = model.sections()[5];
  EXPECT_EQ(vendor.kind, SectionKind::kOther);
  ASSERT_EQ(vendor.records.size(), 1u);
  EXPECT_EQ(vendor.records[0].StringOr(1), "kept");
}

// The record types of a model, section by section: "ENTITIES[LINE,CIRCLE]",
// "TABLES{LAYER:2}", "BLOCKS{B:LINE}", "HEADER($ACADVER:1)" (a variable and
// the count of its value's groups); followers after a slash.
std::string Shape(const TagModel& model) {
  std::string out;
  for (const Section& section : model.sections()) {
    out += std::string(section.name);
    if (section.kind == SectionKind::kTables) {
      out += "{";
      for (const Table& t : section.tables) out += std::string(t.Name()) + ":" + std::to_string(t.entries.size()) + ";";
      out += "}";
    } else if (section.kind == SectionKind::kBlocks) {
      out += "{";
      for (const Block& b : section.blocks) {
        out += std::string(b.Name()) + ":";
        for (const Record& r : b.entities) out += std::string(r.type) + ",";
        out += ";";
      }
      out += "}";
    } else if (section.kind == SectionKind::kHeader) {
      out += "(";
      for (const HeaderVariable& v : section.variables) out += std::string(v.name) + ":" + std::to_string(v.tags.size()) + ";";
      out += ")";
    } else {
      out += "[";
      for (const Record& r : section.records) {
        out += std::string(r.type);
        for (const Record& f : r.followers) out += "/" + std::string(f.type);
        out += ",";
      }
      out += "]";
    }
    out += " ";
  }
  return out;
}

TEST(TagModel, DamagedStructureIsRepairedAndListed) {
  struct Case {
    const char* name;
    std::string text;
    std::string shape;
    std::vector<std::string> repairs;
  };
  const std::string entities = "0\nSECTION\n2\nENTITIES\n";
  const Case cases[] = {
      {"cut after a record", entities + "0\nLINE\n8\n0\n", "ENTITIES[LINE,] ",
       {"line 1: section ENTITIES has no ENDSEC: closed"}},
      {"cut inside a tag", entities + "0\nLINE\n8\n", "ENTITIES[LINE,] ",
       {"line 7: group code 8: the file ends after the group code: the code is dropped",
        "line 1: section ENTITIES has no ENDSEC: closed"}},
      {"stray ENDSEC between sections",
       entities + "0\nENDSEC\n0\nENDSEC\n0\nSECTION\n2\nOBJECTS\n0\nENDSEC\n",
       "ENTITIES[] OBJECTS[] ", {"line 7: expected SECTION, got \"ENDSEC\": dropped"}},
      {"a header running into the next section's records",
       "0\nSECTION\n2\nHEADER\n9\n$A\n70\n1\n0\nLAYOUT\n0\nENDSEC\n0\nSECTION\n2\nOBJECTS\n0\nENDSEC\n",
       "HEADER($A:1;) OBJECTS[LAYOUT,] ",
       {"line 9: section HEADER has no ENDSEC before \"LAYOUT\": closed; section OBJECTS begins there",
        "line 13: a second OBJECTS section: joined to the first (line 9)"}},
      {"symbol-table entries with markers damaged or lost, one without a name",
       "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nAPPID\n0\nAPPID\n100\nAcDbSymbolTableRecord\n100\nAc 5\n2\nA\n"
       "0\nAPPID\n100\nAcDbRegAppTableRecord\n100\nAcDbSymTab\n2\nB\n0\nAPPID\n100\nAcDbSymbolTableRecord\n"
       "70\n0\n0\nENDTAB\n0\nENDSEC\n",
       "TABLES{APPID:2;} ",
       {"line 13: subclass marker \"Ac 5\" is no class name: dropped",
        "line 15: \"APPID\" without its subclass marker \"AcDbRegAppTableRecord\": added",
        "line 21: subclass marker \"AcDbSymTab\" is no marker of \"APPID\": dropped",
        "line 19: \"APPID\" without its subclass marker \"AcDbSymbolTableRecord\": added",
        "line 29: \"APPID\" without its subclass marker \"AcDbRegAppTableRecord\": added",
        "line 25: \"APPID\" entry without a name (group code 2): dropped"}},
      {"header variables inside an entity, the file without a header",
       entities + "0\nLINE\n8\n0\n9\n$A\n70\n1\n9\n$B\n70\n2\n0\nENDSEC\n", "HEADER($A:1;$B:1;) ENTITIES[LINE,] ",
       {"line 9: header variables inside \"LINE\": moved to the header"}},
      {"a section under a damaged name",
       "0\nSECTION\n2\nCLASSD\n70\n1\n0\nSEQEND\n0\nAPPID\n2\nA\n0\nENDSEC\n",
       "TABLES{APPID:1;} ",
       {"line 1: section \"CLASSD\" holds \"APPID\" records: read as section TABLES",
        "line 7: expected TABLE, got \"SEQEND\": dropped",
        "line 9: expected TABLE, got \"APPID\": a APPID table is made for the entries",
        "line 9: table \"APPID\" has no ENDTAB: closed"}},
      {"records readers cannot take: a class among the objects, a hatch and a visual style cut short",
       "0\nSECTION\n2\nOBJECTS\n0\nCLASS\n1\nC\n0\nVISUALSTYLE\n100\nAcDbVisualStyle\n2\nFlat\n"
       "0\nVISUALSTYLE\n100\nAcDbVisualStyle\n2\nFlat\n291\n0\n0\nENDSEC\n" + entities +
           "0\nHATCH\n100\nAcDbEntity\n100\nAcDbHatch\n70\n0\n0\nENDSEC\n",
       "OBJECTS[VISUALSTYLE,] ENTITIES[] ",
       {"line 5: \"CLASS\" outside the CLASSES section: dropped",
        "line 9: \"VISUALSTYLE\" cut short (no group code 291): dropped",
        "line 29: \"HATCH\" without its boundaries (group code 91): dropped"}},
      {"among the entities: a record of no kind, an object under its long name, an entity lacking AcDbEntity",
       entities + "0\nAcDbBlockBegin\n8\n0\n0\nACDBSECTIONVIEWSTYLE\n100\nAcDbSectionViewStyle\n"
                  "0\nMTEXT\n5\nA\n8\n0\n100\nAcDbMText\n1\nx\n0\nMESH\n92\n0\n93\n0\n0\nENDSEC\n",
       "ENTITIES[MTEXT,] ",
       {"line 5: expected an entity, got \"AcDbBlockBegin\": dropped",
        "line 17: \"MTEXT\" without its subclass marker \"AcDbEntity\": added",
        "line 23: \"MESH\" cut short (no group code 94): dropped",
        "line 9: \"ACDBSECTIONVIEWSTYLE\" among the entities: dropped (the file has no OBJECTS section)"}},
      {"a section given twice", entities + "0\nLINE\n0\nENDSEC\n" + entities + "0\nCIRCLE\n0\nENDSEC\n",
       "ENTITIES[LINE,CIRCLE,] ", {"line 9: a second ENTITIES section: joined to the first (line 1)"}},
      {"header variables without a value or with more than one",
       "0\nSECTION\n2\nHEADER\n9\n$A\n9\n$B\n70\n1\n8\nx\n9\n$C\n10\n1\n20\n2\n30\n3\n0\n\n9\nD\n1\nx\n0\nENDSEC\n",
       "HEADER($B:1;$C:3;) ",
       {"line 5: header variable \"$A\" has no value: dropped",
        "line 11: header variable \"$B\" has 1 group after its value: dropped",
        "line 21: \"\" among the header variables: dropped, the variables after it are read",
        "line 23: header variable name \"D\" without its leading \"$\": dropped"}},
      {"a handle that is no number", entities + "0\nLINE\n5\n1 9\n8\n0\n0\nENDSEC\n", "ENTITIES[LINE,] ",
       {"line 7: handle \"1 9\" is no hexadecimal number: dropped, a new one is given"}},
      {"a table of no standard name",
       "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nUMS\n0\nENDTAB\n0\nTABLE\n2\nLTYPE\n0\nENDTAB\n0\nENDSEC\n",
       "TABLES{LTYPE:0;} ", {"line 5: table \"UMS\" is none of the standard tables: dropped with its 0 entries"}},
      {"table records and objects among the entities",
       entities + "0\nLAYER\n2\nA\n0\nMATERIAL\n100\nAcDbMaterial\n0\nLINE\n0\nENDSEC\n"
                  "0\nSECTION\n2\nOBJECTS\n0\nDICTIONARY\n100\nAcDbDictionary\n0\nENDSEC\n",
       "ENTITIES[LINE,] OBJECTS[DICTIONARY,MATERIAL,] ",
       {"line 5: expected an entity, got \"LAYER\": dropped",
        "line 9: \"MATERIAL\" among the entities: moved to the OBJECTS section"}},
      {"an object whose data lacks its subclass marker",
       "0\nSECTION\n2\nOBJECTS\n0\nMLINESTYLE\n5\nA\n2\nStandard\n0\nMLINESTYLE\n100\nAcDbMlineStyle\n71\n1\n"
       "0\nMLINESTYLE\n100\nAcDbMlineStyle\n71\n1\n49\n0.5\n0\nENDSEC\n",
       "OBJECTS[MLINESTYLE,] ",
       {"line 5: \"MLINESTYLE\" without its subclass marker \"AcDbMlineStyle\" (its data cannot be told apart): "
        "dropped",
        "line 11: \"MLINESTYLE\" without line elements (group code 49): dropped"}},
      {"a POLYLINE without vertices or SEQEND, an INSERT whose attributes do not come",
       entities + "0\nPOLYLINE\n0\nINSERT\n66\n1\n0\nINSERT\n0\nENDSEC\n",
       "ENTITIES[POLYLINE/SEQEND,INSERT/SEQEND,INSERT,] ",
       {"line 5: \"POLYLINE\" without its SEQEND: closed", "line 7: \"INSERT\" without its SEQEND: closed"}},
      {"SECTION without a name", "0\nSECTION\n70\n1\n0\nLINE\n0\nENDSEC\n", "",
       {"line 1: SECTION without a name (group code 2): its 1 records are dropped"}},
      {"entity between blocks",
       "0\nSECTION\n2\nBLOCKS\n0\nLINE\n0\nBLOCK\n2\nB\n0\nENDBLK\n0\nENDSEC\n", "BLOCKS{B:;} ",
       {"line 5: expected BLOCK, got \"LINE\": dropped"}},
      {"block without ENDBLK, then another block",
       "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\nB\n0\nLINE\n0\nBLOCK\n2\nC\n0\nENDBLK\n0\nENDSEC\n",
       "BLOCKS{B:LINE,;C:;} ", {"line 5: block \"B\" has no ENDBLK: closed"}},
      {"entries without TABLE, two types",
       "0\nSECTION\n2\nTABLES\n0\nLAYER\n2\nA\n0\nLAYER\n2\nB\n0\nLTYPE\n2\nL\n0\nENDSEC\n",
       "TABLES{LAYER:2;LTYPE:1;} ",
       {"line 5: expected TABLE, got \"LAYER\": a LAYER table is made for the entries",
        "line 5: table \"LAYER\" has no ENDTAB: closed",
        "line 13: expected TABLE, got \"LTYPE\": a LTYPE table is made for the entries",
        "line 13: table \"LTYPE\" has no ENDTAB: closed"}},
      {"a table given twice",
       "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLAYER\n0\nLAYER\n2\nA\n0\nENDTAB\n"
       "0\nTABLE\n2\nLAYER\n0\nLAYER\n2\nB\n0\nENDTAB\n0\nENDSEC\n",
       "TABLES{LAYER:2;} ", {"line 15: a second \"LAYER\" table: its entries join the first"}},
      {"a VERTEX without its POLYLINE", entities + "0\nLINE\n0\nVERTEX\n0\nSEQEND\n0\nENDSEC\n", "ENTITIES[LINE,] ",
       {"line 7: \"VERTEX\" without its POLYLINE: dropped", "line 9: \"SEQEND\" without its POLYLINE: dropped"}},
      {"an entity among the tables",
       "0\nSECTION\n2\nTABLES\n0\nINSERT\n0\nATTRIB\n0\nSEQEND\n0\nTABLE\n2\nLTYPE\n0\nENDTAB\n0\nENDSEC\n",
       "TABLES{LTYPE:0;} ", {"line 5: expected TABLE, got \"INSERT\": dropped"}},
      {"table without ENDTAB", "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLTYPE\n0\nENDSEC\n",
       "TABLES{LTYPE:0;} ", {"line 5: table \"LTYPE\" has no ENDTAB: closed"}},
      {"a table running into the next one's entries",
       "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLTYPE\n0\nLTYPE\n2\nL\n0\nLAYER\n2\nA\n0\nENDTAB\n0\nENDSEC\n",
       "TABLES{LTYPE:1;LAYER:1;} ",
       {"line 5: table \"LTYPE\" has no ENDTAB: closed",
        "line 13: expected TABLE, got \"LAYER\": a LAYER table is made for the entries"}},
      {"VERTEX without SEQEND", entities + "0\nPOLYLINE\n0\nVERTEX\n0\nLINE\n0\nENDSEC\n",
       "ENTITIES[POLYLINE/VERTEX/SEQEND,LINE,] ",
       {"line 5: VERTEX records of POLYLINE are not closed by SEQEND: closed"}},
      {"decimal comma and a whole number with decimals",
       entities + "0\nLINE\n10\n1,5\n20\n0\n62\n3.0\n0\nENDSEC\n", "ENTITIES[LINE,] ",
       {"line 8: group code 10: decimal comma in \"1,5\": read as 1.5",
        "line 12: group code 62: a whole number written as \"3.0\": read as 3"}},
      {"a value its code cannot carry, a code DXF does not define",
       entities + "0\nLINE\n10\nx\n85\n1\n20\n2\n0\nENDSEC\n", "ENTITIES[LINE,] ",
       {"line 8: group code 10: expected a number, got \"x\": the tag is dropped",
        "line 9: not a DXF group code: \"85\": the code and its value are dropped",
        "line 11: group code 20 has no x (group code 10): x is 0"}},
      {"points without their y or x", entities + "0\nLINE\n10\n1\n30\n2\n11\n4\n0\nTEXT\n20\n5\n0\nENDSEC\n",
       "ENTITIES[LINE,TEXT,] ",
       {"line 7: group code 10 has no y (group code 20): y is 0",
        "line 11: group code 11 has no y (group code 21): y is 0",
        "line 15: group code 20 has no x (group code 10): x is 0"}},
      {"application groups that do not pair",
       entities + "0\nLINE\n102\n{ACAD_REACTORS\n330\n1\n100\nAcDbEntity\n102\n}\n0\nENDSEC\n"
                  "0\nSECTION\n2\nOBJECTS\n0\nXRECORD\n102\n{ACAD_REACTORS\n100\nAcDbXrecord\n102\n{data\n"
                  "0\nENDSEC\n",
       "ENTITIES[LINE,] OBJECTS[XRECORD,] ",
       {"line 11: application group not closed (group code 102): closed",
        "line 13: \"102 }\" without its group: dropped",
        "line 5: \"LINE\" without its subclass marker \"AcDbLine\": added",
        "line 25: application group not closed (group code 102): closed"}},
      {"an entity among the objects",
       entities + "0\nENDSEC\n0\nSECTION\n2\nOBJECTS\n0\nPOLYLINE\n0\nVERTEX\n0\nSEQEND\n0\nENDSEC\n",
       "ENTITIES[POLYLINE/VERTEX/SEQEND,] OBJECTS[] ",
       {"line 11: \"POLYLINE\" among the objects: moved to the ENTITIES section"}},
      {"table records in the CLASSES section",
       "0\nSECTION\n2\nCLASSES\n0\nCLASS\n1\nC\n0\nTABLE\n2\nLAYER\n0\nENDTAB\n0\nENDSEC\n", "CLASSES[CLASS,] ",
       {"line 9: expected CLASS, got \"TABLE\": dropped", "line 13: expected CLASS, got \"ENDTAB\": dropped"}},
      {"a table record among the objects",
       "0\nSECTION\n2\nOBJECTS\n0\nDICTIONARY\n0\nBLOCK_RECORD\n2\nB\n0\nENDSEC\n", "OBJECTS[DICTIONARY,] ",
       {"line 5: \"DICTIONARY\" without its subclass marker: \"AcDbDictionary\" added",
        "line 7: expected an object, got \"BLOCK_RECORD\": dropped"}},
      {"two handles in one record", entities + "0\nLINE\n5\nA\n8\n0\n5\nB\n0\nENDSEC\n", "ENTITIES[LINE,] ",
       {"line 11: a second handle (group code 5) in one record: dropped"}},
      {"an XRECORD without its subclass marker",
       "0\nSECTION\n2\nOBJECTS\n0\nXRECORD\n5\nA\n330\nB\n1\nv\n0\nENDSEC\n", "OBJECTS[XRECORD,] ",
       {"line 11: \"XRECORD\" without its subclass marker: \"AcDbXrecord\" added"}},
      {"lines out of step", entities + "0\nLINE\nxy\n1\n2\n0\nCIRCLE\n0\nENDSEC\n",
       "ENTITIES[LINE,CIRCLE,] ",
       {"line 7: expected a group code, got \"xy\": lines 7 to 9 are skipped"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TagModel model = TagModel::Load(c.text, "d.dxf");
    EXPECT_EQ(Shape(model), c.shape);
    EXPECT_EQ(model.repairs(), c.repairs);
  }
}

// A lost marker goes where its part begins: an entity's after the groups
// every entity has, a symbol-table record's own after the base one.
TEST(TagModel, LostSubclassMarkersComeBackWhereTheirPartBegins) {
  TagModel model = TagModel::Load(
      "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLAYER\n0\nLAYER\n100\nAcDbLayerTableRecord\n2\nL\n0\nENDTAB\n"
      "0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nLINE\n5\nA\n100\nAcDbEntity\n8\n0\n62\n1\n10\n1\n20\n2\n"
      "0\nENDSEC\n",
      "d.dxf");
  auto codes = [](const Record& r) {
    std::string out;
    for (const Tag& t : r.tags) out += std::to_string(t.code) + (t.code == 100 ? " " + std::string(t.text) : "") + ";";
    return out;
  };
  EXPECT_EQ(codes(model.FindSection("TABLES")->tables[0].entries[0]),
            "100 AcDbSymbolTableRecord;100 AcDbLayerTableRecord;2;");
  EXPECT_EQ(codes(model.FindSection("ENTITIES")->records[0]), "5;100 AcDbEntity;8;62;100 AcDbLine;10;20;");
}

// The y a point lacked is put right after its x, so the point reads whole.
TEST(TagModel, APointWithoutItsYGetsOneAfterItsX) {
  TagModel model = TagModel::Load("0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n1\n30\n2\n11\n4\n0\nENDSEC\n", "d.dxf");
  const Record& line = model.sections()[0].records[0];
  std::vector<int> codes;
  for (const Tag& t : line.tags) codes.push_back(t.code);
  EXPECT_EQ(codes, (std::vector<int>{10, 20, 30, 11, 21}));
  EXPECT_EQ(line.DoubleOf(20), 0.0);
}

TEST(TagModel, RefusesFilesWithNoDrawingAndThrowsWhenAskedTo) {
  struct Case {
    const char* name;
    std::string text;
    Faults faults;
    std::string message;
  };
  const Case cases[] = {
      {"no DXF at all", "hello\nworld\n", Faults::kRepair,
       "d.dxf: line 1: expected a group code, got \"hello\""},
      {"records but no section", "0\nLINE\n8\n0\n", Faults::kRepair,
       "d.dxf: line 1: group code 0: expected SECTION, got \"LINE\""},
      {"no ENDSEC, strict", "0\nSECTION\n2\nENTITIES\n0\nLINE\n0\nEOF\n", Faults::kThrow,
       "d.dxf: line 1: group code 0: section ENTITIES has no ENDSEC"},
      {"value error, strict", "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nx\n0\nENDSEC\n", Faults::kThrow,
       "d.dxf: line 8: group code 10: expected a number, got \"x\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      TagModel::Load(c.text, "d.dxf", c.faults);
      ADD_FAILURE() << "no error";
    } catch (const ReadError& error) {
      EXPECT_EQ(std::string(error.what()), c.message);
    }
  }
}

TEST(TagModel, AcceptsFilesAutoCadAccepts) {
  struct Case {
    const char* name;
    std::string text;
    std::size_t sections;
  };
  const Case cases[] = {
      {"only an empty ENTITIES section", "0\nSECTION\n2\nENTITIES\n0\nENDSEC\n0\nEOF\n", 1},
      {"no EOF after the last ENDSEC", "0\nSECTION\n2\nENTITIES\n0\nENDSEC\n", 1},
      {"spaces around structure names", "  0\nSECTION  \n  2\nENTITIES \n  0\n ENDSEC\n0\nEOF\n",
       1},
      {"empty file", "", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TagModel model = TagModel::Load(c.text, "ok.dxf");
    EXPECT_EQ(model.sections().size(), c.sections);
  }
}

TEST(TagModel, DecodesTextByVersionAndCodePage) {
  auto layer_name = [](const std::string& version, const std::string& code_page,
                       const std::string& raw) {
    std::string text = "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\n" + version +
                       "\n9\n$DWGCODEPAGE\n3\n" + code_page + "\n0\nENDSEC\n" +
                       "0\nSECTION\n2\nENTITIES\n0\nTEXT\n1\n" + raw + "\n0\nENDSEC\n";
    TagModel model = TagModel::Load(text, "t.dxf");
    return std::string(model.FindSection("ENTITIES")->records[0].StringOr(1));
  };
  // R2004 (AC1018) is the last code-page version; R2007 (AC1021) is UTF-8.
  EXPECT_EQ(layer_name("AC1018", "ANSI_1252", "\xC3\xA4"), "\xC3\x83\xC2\xA4");
  EXPECT_EQ(layer_name("AC1021", "ANSI_1252", "\xC3\xA4"), "\xC3\xA4");
  EXPECT_EQ(layer_name("AC1009", "ANSI_1252", "\\U+00E4"), "\xC3\xA4");
  EXPECT_EQ(layer_name("AC1032", "ANSI_1252", "\\U+00E4"), "\\U+00E4");
}

TEST(TagModel, OnlyTheHeaderSectionDecidesTheEncoding) {
  // Found by fuzzing: a section named "-HEADER" holding $ACADVER AC1024 made
  // the reader decode UTF-8 while the writer, seeing no HEADER, wrote
  // code page 1252, so the copy read back differently.
  const std::string text =
      "0\nSECTION\n2\n-HEADER\n9\n$ACADVER\n1\nAC1024\n0\nENDSEC\n"
      "0\nSECTION\n2\nENTITIES\n0\nTEXT\n1\n\xC3\xA4\n0\nENDSEC\n";
  TagModel model = TagModel::Load(text, "t.dxf");
  EXPECT_EQ(model.version(), "");
  // Read as code page 1252: two characters, not one.
  EXPECT_EQ(model.FindSection("ENTITIES")->records[0].StringOr(1), "\xC3\x83\xC2\xA4");
}

TEST(TagModel, InternedTextOutlivesMoves) {
  TagModel model = TagModel::Load("0\nSECTION\n2\nENTITIES\n0\nTEXT\n1\nold\n0\nENDSEC\n", "m");
  std::string_view copy = model.Intern(std::string("new text"));
  Record& text = model.FindSection("ENTITIES")->records[0];
  text.tags[0] = Tag::String(1, copy);
  TagModel moved = std::move(model);
  EXPECT_EQ(moved.FindSection("ENTITIES")->records[0].StringOr(1), "new text");
  EXPECT_EQ(moved.FindSection("ENTITIES")->begin.StringOr(2), "ENTITIES");
}

TEST(TagModel, MissingFileIsAReadError) {
  try {
    TagModel::LoadFile("/nonexistent/x.dxf");
    FAIL() << "no error";
  } catch (const ReadError& error) {
    EXPECT_EQ(std::string(error.what()), "/nonexistent/x.dxf: cannot open the file");
  }
}

// Small files are read in one piece, large ones in two halves at once: the
// bytes are the file's either way, the halves' seam included.
TEST(TagModel, FilesAreReadWholeAtAnySize) {
  for (size_t size : {size_t{0}, size_t{1}, size_t{4096}, (size_t{2} << 20) + 7}) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>('a' + (i * 7 + i / 251) % 26);
    const std::string path = ::testing::TempDir() + "/source_text_" + std::to_string(size);
    {
      std::ofstream out(path, std::ios::binary);
      out.write(bytes.data(), static_cast<std::streamsize>(size));
    }
    EXPECT_EQ(SourceText::ReadFile(path).view(), bytes) << size;
    std::remove(path.c_str());
  }
}

TEST(TagModel, BinaryTextWithLineBreaksTakesTheAsciiForm) {
  std::string bytes(kBinarySentinel);
  auto add = [&bytes](int code, std::string_view text) {
    bytes += static_cast<char>(code & 0xFF);
    bytes += static_cast<char>(code >> 8);
    bytes.append(text);
    bytes += '\0';
  };
  add(0, "SECTION");
  add(2, "ENTITIES");
  add(0, "MTEXT");
  add(1, "two\nlines");
  add(0, "ENDSEC");
  TagModel model = TagModel::Load(bytes, "b.dxf");
  EXPECT_EQ(model.format(), FileFormat::kBinary);
  EXPECT_EQ(model.FindSection("ENTITIES")->records[0].StringOr(1), "two^Jlines");
}

}  // namespace
}  // namespace tovik::dxf
