// RecordFields answers as Record::Find does: the first tag of a code
// anywhere in the record, and still so once its table indexes another record.
#include "dxf/record_fields.h"

#include <gtest/gtest.h>

#include "dxf/tag_model.h"

namespace tovik::dxf {
namespace {

// Two records: a LINE whose 330 appears first inside ACAD_REACTORS, with a
// 1000 in its xdata; and a CIRCLE sharing codes 8 and 10 with other values.
constexpr const char* kRecords =
    "0\nSECTION\n2\nENTITIES\n"
    "0\nLINE\n5\n2A\n102\n{ACAD_REACTORS\n330\n1F\n102\n}\n330\n1E\n100\nAcDbEntity\n8\nWalls\n"
    "100\nAcDbLine\n10\n1.5\n20\n2.0\n30\n0.0\n11\n4.0\n21\n6.0\n31\n0.0\n"
    "1001\nAPP\n1000\nnote\n1000\nsecond\n"
    "0\nCIRCLE\n5\n2B\n8\nDoors\n10\n7.0\n20\n8.0\n30\n0.0\n40\n3.0\n"
    "0\nENDSEC\n0\nEOF\n";

TEST(RecordFields, FindsTheFirstTagOfEachCodeAsTheRecordDoes) {
  TagModel model = TagModel::Load(kRecords, "r.dxf");
  const Record& line = model.FindSection("ENTITIES")->records.at(0);
  FieldTable table;
  RecordFields fields(line, table);
  // The first 330 is the reactor inside the 102 group, as Record::Find has it.
  ASSERT_NE(fields.Find(330), nullptr);
  EXPECT_EQ(fields.Find(330)->text, "1F");
  EXPECT_EQ(fields.Find(330), line.Find(330));
  EXPECT_EQ(fields.StringOr(8), "Walls");
  EXPECT_EQ(fields.Find(10)->real, 1.5);
  // Extended data counts too: the first of the two 1000s.
  EXPECT_EQ(fields.StringOr(1000), "note");
  // Absent codes, at both ends of the code range and beyond it.
  EXPECT_EQ(fields.Find(40), nullptr);
  EXPECT_EQ(fields.Find(0), nullptr);
  EXPECT_EQ(fields.Find(1071), nullptr);
  EXPECT_EQ(fields.Find(5000), nullptr);
  EXPECT_EQ(fields.StringOr(62, "fallback"), "fallback");
}

TEST(RecordFields, AnOlderIndexStillAnswersOnceTheTableMovesOn) {
  TagModel model = TagModel::Load(kRecords, "r.dxf");
  const Record& line = model.FindSection("ENTITIES")->records.at(0);
  const Record& circle = model.FindSection("ENTITIES")->records.at(1);
  FieldTable table;
  RecordFields line_fields(line, table);
  RecordFields circle_fields(circle, table);
  // The table now holds the circle's index; the line's view must not read
  // it (the circle's 8 is "Doors", its 10 is 7, it has a 40).
  EXPECT_EQ(line_fields.StringOr(8), "Walls");
  EXPECT_EQ(line_fields.Find(10)->real, 1.5);
  EXPECT_EQ(line_fields.Find(40), nullptr);
  EXPECT_EQ(circle_fields.StringOr(8), "Doors");
  EXPECT_EQ(circle_fields.Find(40)->real, 3.0);
  // A code the line has and the circle lacks.
  EXPECT_EQ(circle_fields.Find(11), nullptr);
  EXPECT_EQ(line_fields.Find(11)->real, 4.0);
}

}  // namespace
}  // namespace tovik::dxf
