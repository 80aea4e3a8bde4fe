// Length units of drawings and block definitions of the headless host, and
// the AcadDocSpace members built on them.
#include "document/units.h"

#include <gtest/gtest.h>

#include "document/acad_doc_space.h"
#include "frame/conversions.h"
#include "frame/library_state.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

using Units = LinkedHostTest;

void SetInsUnits(const ObjectRef& doc, int16_t code) {
  CallMethod(doc, "SetVariable", {Variant("INSUNITS"), Variant(code)});
}


TEST_F(Units, SupportedHostCodesGiveTheirUnitAndFactor) {
  ObjectRef doc = ActiveDocument();
  struct Case {
    int16_t code;
    int16_t unit;
    double factor;  // drawing units per millimetre, by hand
  } cases[] = {
      {0, kLengthMillimetre, 1.0},  // unitless is taken as millimetres
      {4, kLengthMillimetre, 1.0},
      {5, kLengthCentimetre, 0.1},
      {14, kLengthDecimetre, 0.01},
      {6, kLengthMetre, 0.001},
      {1, kLengthInch, 0.03937007874015748},
      {2, kLengthFoot, 0.0032808398950131233},
  };
  auto doc_space = GlobalInstance<AcadDocSpace>();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.code);
    SetInsUnits(doc, c.code);
    EXPECT_EQ(doc_space->GetAcadDLengthUnitID(nullptr), c.unit);
    EXPECT_EQ(doc_space->GetAcadDLengthUnitID(doc), c.unit);
    EXPECT_DOUBLE_EQ(doc_space->GetAcad_Millimeter_ScaleFactor(nullptr), c.factor);
  }
}

TEST_F(Units, OtherHostCodesAreRefusedWithoutSource) {
  ObjectRef doc = ActiveDocument();
  auto doc_space = GlobalInstance<AcadDocSpace>();
  const std::string text =
      "Unsupported Length Unit. Supported Units are mm, cm, dm, m, ft and inch";
  for (int16_t code : {3, 7, 8, 9, 10, 11, 12, 13, 15, 16, 17, 18, 19, 20}) {
    SCOPED_TRACE(code);
    SetInsUnits(doc, code);
    ExpectError([&] { doc_space->GetAcadDLengthUnitID(nullptr); }, 2411, text, "");
    ExpectError([&] { doc_space->GetAcad_Millimeter_ScaleFactor(doc); }, 2411, text, "");
    ExpectError([&] { doc_space->GetAcadDLength(1.0, nullptr); }, 2411, text, "");
    Variant vectors(SafeArray::Of({MakePoint(1, 0, 0)}));
    ExpectError([&] { doc_space->ConvertAcadVectorsToMM(nullptr, vectors); }, 2411, text, "");
    ExpectError([&] { doc_space->ConvertMMVectorsToAcad(nullptr, vectors); }, 2411, text, "");
  }
}

TEST_F(Units, BlocksUseTheirOwnUnitsAndLayoutsTheDrawings) {
  ObjectRef doc = ActiveDocument();
  SetInsUnits(doc, 6);  // metres
  ObjectRef inch_block = AddBlock("InchPart");
  LetProperty(inch_block, "Units", Variant(int32_t{1}));
  ObjectRef model = GetProperty(doc, "ModelSpace").Object();
  auto doc_space = GlobalInstance<AcadDocSpace>();
  EXPECT_EQ(doc_space->GetAcadDLengthUnitID(inch_block), kLengthInch);
  EXPECT_EQ(doc_space->GetAcadDLengthUnitID(model), kLengthMetre);
  auto length = doc_space->GetAcadDLength(2.0, inch_block);
  EXPECT_DOUBLE_EQ(length->Millimetres(), 50.8);
  EXPECT_EQ(length->GetValue(kLengthInch), 2.0);
}

TEST_F(Units, VectorsConvertBothWays) {
  ObjectRef doc = ActiveDocument();
  auto doc_space = GlobalInstance<AcadDocSpace>();
  SetInsUnits(doc, 6);  // metres
  Variant vectors(SafeArray::Of({MakePoint(1, 2, 0), MakePoint(-0.5, 0, 3)}));
  doc_space->ConvertAcadVectorsToMM(nullptr, vectors);
  EXPECT_EQ(vectors.Array().At(0).Array().ToDoubles(), (std::vector<double>{1000, 2000, 0}));
  EXPECT_EQ(vectors.Array().At(1).Array().ToDoubles(), (std::vector<double>{-500, 0, 3000}));
  doc_space->ConvertMMVectorsToAcad(nullptr, vectors);
  EXPECT_EQ(vectors.Array().At(0).Array().ToDoubles(), (std::vector<double>{1, 2, 0}));

  SetInsUnits(doc, 1);  // inches
  Variant mm(SafeArray::Of({MakePoint(25.4, 0, 0)}));
  doc_space->ConvertMMVectorsToAcad(nullptr, mm);
  EXPECT_DOUBLE_EQ(mm.Array().At(0).Array().At(0).RawDouble(), 1.0);
}

TEST_F(Units, VectorWalkStartsAtZeroAndStopsQuietly) {
  ObjectRef doc = ActiveDocument();
  auto doc_space = GlobalInstance<AcadDocSpace>();
  SetInsUnits(doc, 5);  // centimetres: factor 0.1
  // Lower bound 1: element 0 does not exist, so nothing changes.
  SafeArray one_based(VarType::kVariant, 1, 1);
  one_based.Set(1, MakePoint(1, 1, 1));
  Variant from_one(one_based);
  doc_space->ConvertAcadVectorsToMM(nullptr, from_one);
  EXPECT_EQ(from_one.Array().At(1).Array().ToDoubles(), (std::vector<double>{1, 1, 1}));
  // Empty, and not an array at all: no error.
  Variant empty(SafeArray::Empty());
  doc_space->ConvertAcadVectorsToMM(nullptr, empty);
  Variant scalar(2.0);
  doc_space->ConvertAcadVectorsToMM(nullptr, scalar);
  EXPECT_EQ(CDbl(scalar), 2.0);
  // An element that is no vector ends the walk; earlier ones stay converted.
  Variant mixed(SafeArray::Of({MakePoint(1, 0, 0), Variant("x"), MakePoint(2, 0, 0)}));
  doc_space->ConvertAcadVectorsToMM(nullptr, mixed);
  EXPECT_DOUBLE_EQ(mixed.Array().At(0).Array().At(0).RawDouble(), 10.0);
  EXPECT_EQ(mixed.Array().At(2).Array().ToDoubles(), (std::vector<double>{2, 0, 0}));
}

TEST_F(Units, NoDrawingReachesTheCaller) {
  app_->CloseDocument(app_->active_document());
  auto doc_space = GlobalInstance<AcadDocSpace>();
  ExpectError([&] { doc_space->GetAcadDLengthUnitID(nullptr); }, 91,
              "Object variable or With block variable not set", "Tovik_AutoCad_Pro");
}

}  // namespace
}  // namespace tovik
