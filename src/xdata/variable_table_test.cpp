#include "xdata/variable_table.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "tests/support/errors.h"

namespace tovik {
namespace {

std::string Listing(const std::vector<VariableEntry>& entries) {
  std::string out;
  for (const VariableEntry& e : entries) out += e.name + "=" + std::to_string(e.id) + " ";
  return out;
}

TEST(VariableTable, BuiltInLinesGiveTheThirtyNineVariablesInTableOrder) {
  std::vector<VariableEntry> entries = LoadVariableTable(BuiltInVariableLines());
  // Written out from the published table, index by index.
  EXPECT_EQ(Listing(entries),
            "VBCodes=1 InertiaBlock=100 PreviousLayer=70 CSILabel=300 DataType=2 "
            "MainSectionHandle=101 OriginLineType=71 Station=301 Boundary=3 StressFactor=102 "
            "OriginColorIndex=72 Story=302 Parameters=103 OrgLock=73 AnonyBType=303 "
            "DoubleOrg=5 SectionMark=104 OriginBlock=74 WPMatrix=304 MaterialDatabase=105 "
            "GreyBlock=75 DateMod=305 Force4D=106 HiddenBlock=76 SectionColor=306 "
            "Category=8 Formula=107 Top=307 Mass=108 Bottom=308 UnitSetting=10 "
            "IsViewBox=309 Visibility=310 ClippedD1=311 ClippedD2=312 Comments=14 "
            "ETModel=313 InvisibleRef=15 UnitID=314 ");
  EXPECT_EQ(BuiltInVariableLines().size(), 15u);
}

TEST(VariableTable, CommentsBlankLinesAndFreeSlotsAreSkipped) {
  std::vector<std::string_view> lines = {
      "  ' a comment line, even when indented",
      "   ",
      "",
      "  Alpha \t 7\t\t8",  // names are trimmed; ID 8 is a free slot
      "Beta\t&H10\tGamma",   // Gamma takes the next line's first field as ID
      "Delta\t9",
  };
  // Joined: "  Alpha \t 7\t\t8\tBeta\t&H10\tGamma\tDelta\t9" - Gamma pairs
  // with "Delta" (Val gives 0) and "9" is left without an ID.
  EXPECT_EQ(Listing(ParseVariableLines(lines)), "Alpha=7 Beta=16 Gamma=0 ");
}

TEST(VariableTable, ValidationListsEveryFaultInOneError) {
  std::vector<std::string_view> lines = {"One\t1\tTwo\t2\tone\t3\tFour\t2\tZero\t0\tLast\t0"};
  AutomationError e = ErrorOf([&] { LoadVariableTable(lines); });
  EXPECT_EQ(e.Number(), 2411);
  EXPECT_EQ(e.Source(), "Tovik Studio");
  // The last entry's zero ID is not reported: the zero test stops one short.
  EXPECT_EQ(e.Description(),
            "Invalid VariableTable\r\n"
            "Dupplicate Varname: {One, one}\r\n"
            "Dupplicated VarID: {Two, Four}{Zero, Last}\r\n"
            "Invalid VarID: {Zero,0}");
}

TEST(VariableTable, ZeroIdOfTheLastEntryAloneIsAccepted) {
  std::vector<std::string_view> lines = {"One\t1\tLast\t0"};
  EXPECT_EQ(Listing(LoadVariableTable(lines)), "One=1 Last=0 ");
  std::vector<std::string_view> first_zero = {"First\t0\tOne\t1"};
  EXPECT_EQ(ErrorOf([&] { LoadVariableTable(first_zero); }).Description(),
            "Invalid VariableTable\r\nDupplicate Varname: \r\nDupplicated VarID: \r\n"
            "Invalid VarID: {First,0}");
}

TEST(VariableTable, NamesMapToIdsWithoutRegardToCase) {
  std::vector<VariableEntry> entries = LoadVariableTable(BuiltInVariableLines());
  struct Case {
    const char* name;
    int16_t id;
  } cases[] = {{"station", 301}, {"STATION", 301}, {"UnitSetting", 10},
               {"orglock", 73},  {"UnitID", 314},   {"VBCodes", 1}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(VariableIdOf(entries, c.name), c.id);
  }
  EXPECT_EQ(VariableNameOf(entries, 301), "Station");
  EXPECT_EQ(VariableNameOf(entries, 15), "InvisibleRef");
}

TEST(VariableTable, UnknownNamesAndIdsRaiseTheirOwnTexts) {
  std::vector<VariableEntry> entries = LoadVariableTable(BuiltInVariableLines());
  AutomationError by_name = ErrorOf([&] { VariableIdOf(entries, "Stations"); });
  EXPECT_EQ(by_name.Number(), 2411);
  EXPECT_EQ(by_name.Description(), "SetXdata fails. Variable names Stations not found");
  EXPECT_EQ(by_name.Source(), "Tovik COM");
  // ID 4 is a free slot; no blank between "VarID" and the number.
  AutomationError by_id = ErrorOf([&] { VariableNameOf(entries, 4); });
  EXPECT_EQ(by_id.Number(), 2411);
  EXPECT_EQ(by_id.Description(), "SetXdata fails. VarID4 not found");
  EXPECT_EQ(by_id.Source(), "Tovik COM");
  EXPECT_EQ(ErrorOf([&] { VariableNameOf(entries, -7); }).Description(),
            "SetXdata fails. VarID-7 not found");
}

}  // namespace
}  // namespace tovik
