#include "dxf/record.h"

#include <gtest/gtest.h>

#include <string>

#include "dxf/tag_model.h"

namespace tovik::dxf {
namespace {

std::vector<int> Codes(std::span<const Tag> tags) {
  std::vector<int> codes;
  for (const Tag& tag : tags) codes.push_back(tag.code);
  return codes;
}

// An R2018 LINE with reactors, an extension dictionary and two xdata blocks.
constexpr const char* kLine =
    "0\nSECTION\n2\nENTITIES\n"
    "0\nLINE\n5\n2A\n"
    "102\n{ACAD_REACTORS\n330\n1F\n102\n}\n"
    "102\n{ACAD_XDICTIONARY\n360\n2B\n102\n}\n"
    "330\n1E\n100\nAcDbEntity\n8\nWalls\n"
    "100\nAcDbLine\n10\n1.0\n20\n2.0\n30\n0.0\n11\n4.0\n21\n6.0\n31\n0.0\n"
    "1001\nAPP_ONE\n1000\nfirst\n1070\n7\n"
    "1001\nAPP_TWO\n1040\n2.5\n"
    "0\nENDSEC\n0\nEOF\n";

TEST(Record, SplitsTagsIntoSubclassesXdataAndGroups) {
  TagModel model = TagModel::Load(kLine, "line.dxf");
  const Record& line = model.FindSection("ENTITIES")->records.at(0);
  EXPECT_EQ(line.type, "LINE");
  EXPECT_EQ(line.Handle(), "2A");
  // The 330 inside ACAD_REACTORS is a reactor, not the owner.
  EXPECT_EQ(line.Owner(), "1E");

  std::vector<TagSegment> subclasses = line.Subclasses();
  ASSERT_EQ(subclasses.size(), 3u);
  EXPECT_EQ(subclasses[0].name, "");
  EXPECT_EQ(Codes(subclasses[0].tags), (std::vector<int>{5, 102, 330, 102, 102, 360, 102, 330}));
  EXPECT_EQ(subclasses[1].name, "AcDbEntity");
  EXPECT_EQ(Codes(subclasses[1].tags), (std::vector<int>{8}));
  EXPECT_EQ(subclasses[2].name, "AcDbLine");
  // The last subclass stops where the xdata starts.
  EXPECT_EQ(Codes(subclasses[2].tags), (std::vector<int>{10, 20, 30, 11, 21, 31}));
  ASSERT_TRUE(line.Subclass("AcDbLine").has_value());
  EXPECT_EQ(line.Subclass("AcDbLine")->size(), 6u);
  EXPECT_FALSE(line.Subclass("AcDbCircle").has_value());

  std::vector<TagSegment> xdata = line.XdataBlocks();
  ASSERT_EQ(xdata.size(), 2u);
  EXPECT_EQ(xdata[0].name, "APP_ONE");
  EXPECT_EQ(Codes(xdata[0].tags), (std::vector<int>{1000, 1070}));
  EXPECT_EQ(xdata[1].name, "APP_TWO");
  EXPECT_EQ(xdata[1].tags[0].real, 2.5);
  EXPECT_FALSE(line.Xdata("APP_THREE").has_value());

  std::vector<TagSegment> groups = line.AppDataGroups();
  ASSERT_EQ(groups.size(), 2u);
  EXPECT_EQ(groups[0].name, "ACAD_REACTORS");
  EXPECT_EQ(groups[1].name, "ACAD_XDICTIONARY");
  ASSERT_TRUE(line.AppData("ACAD_XDICTIONARY").has_value());
  EXPECT_EQ(line.AppData("ACAD_XDICTIONARY")->front().text, "2B");
}

TEST(Record, FindsValuesByCode) {
  TagModel model = TagModel::Load(kLine, "line.dxf");
  const Record& line = model.FindSection("ENTITIES")->records.at(0);
  EXPECT_EQ(line.StringOr(8), "Walls");
  EXPECT_EQ(line.StringOr(6, "BYLAYER"), "BYLAYER");
  EXPECT_EQ(line.DoubleOf(21), 6.0);
  EXPECT_FALSE(line.DoubleOf(40).has_value());
  EXPECT_EQ(line.IntegerOf(1070), 7);
  EXPECT_FALSE(line.IntegerOf(8).has_value());  // 8 is text, not a number
  std::vector<const Tag*> owners = line.FindAll(330);
  ASSERT_EQ(owners.size(), 2u);
  EXPECT_EQ(owners[0]->text, "1F");
  EXPECT_EQ(owners[1]->text, "1E");
}

TEST(Record, RecordsWithoutMarkersHaveOneUnnamedSegment) {
  // An R12 entity: no handle, no 100 markers, no owner.
  TagModel model = TagModel::Load("0\nSECTION\n2\nENTITIES\n0\nCIRCLE\n8\n0\n40\n1.5\n"
                                  "0\nENDSEC\n", "r12.dxf");
  const Record& circle = model.FindSection("ENTITIES")->records.at(0);
  EXPECT_EQ(circle.Handle(), "");
  EXPECT_EQ(circle.Owner(), "");
  ASSERT_EQ(circle.Subclasses().size(), 1u);
  EXPECT_EQ(circle.Subclasses()[0].tags.size(), 2u);
  EXPECT_TRUE(circle.XdataBlocks().empty());
  EXPECT_TRUE(circle.AppDataGroups().empty());
}

TEST(Record, AppDataGroupsEndAtTheirCloseOrAtTheExtendedData) {
  // The second group is never closed: it runs to the first 1001, and the
  // xdata after it is no part of it, not even a 102 group written there.
  TagModel model = TagModel::Load(
      "0\nSECTION\n2\nENTITIES\n0\nLINE\n5\n2A\n"
      "102\n{ACAD_REACTORS\n330\n1F\n102\n}\n"
      "102\n{ACAD_XDICTIONARY\n360\n2B\n8\nWalls\n"
      "1001\nAPP\n102\n{ACAD_FAKE\n1000\nx\n102\n}\n0\nENDSEC\n", "open.dxf");
  const Record& line = model.FindSection("ENTITIES")->records.at(0);
  auto reactors = line.AppData("ACAD_REACTORS");
  ASSERT_TRUE(reactors.has_value());
  EXPECT_EQ(Codes(*reactors), (std::vector<int>{330}));
  auto xdict = line.AppData("ACAD_XDICTIONARY");
  ASSERT_TRUE(xdict.has_value());
  EXPECT_EQ(Codes(*xdict), (std::vector<int>{360, 8}));
  EXPECT_FALSE(line.AppData("ACAD_FAKE").has_value());
  EXPECT_FALSE(line.AppData("APP").has_value());
}

TEST(Record, DimstyleHandleIsCode105) {
  TagModel model = TagModel::Load(
      "0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nDIMSTYLE\n5\nA\n0\nDIMSTYLE\n105\n27\n2\nStandard\n"
      "0\nENDTAB\n0\nENDSEC\n", "ds.dxf");
  const Table& table = model.FindSection("TABLES")->tables.at(0);
  EXPECT_EQ(table.head.Handle(), "A");
  EXPECT_EQ(table.entries.at(0).Handle(), "27");
}

}  // namespace
}  // namespace tovik::dxf
