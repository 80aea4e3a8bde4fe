#include "toolkit/acad_space.h"

#include <gtest/gtest.h>

#include <string>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"

namespace tovik {
namespace {

// "(x,y,z)(x,y,z)..." for an array of points.
std::string Points(const Variant& v) {
  std::string out;
  for (const Variant& p : v.Array().Items()) {
    out += "(";
    for (int32_t i = 0; i <= 2; ++i) {
      out += (i ? "," : "") + CStr(p.Array().At(i));
    }
    out += ")";
  }
  return out;
}

TEST(AcadSpace, ArrDbls2ArrPointsStepsByTwoOrThree) {
  struct Case {
    const char* what;
    Variant list;
    Variant xy_only;
    const char* expected;
  };
  const Case cases[] = {
      {"XY pairs get Z 0", Variant(SafeArray::OfDoubles({1, 2, 3, 4})), Variant(true),
       "(1,2,0)(3,4,0)"},
      {"triples", Variant(SafeArray::OfDoubles({1, 2, 3, 4, 5, 6})), Variant::Missing(),
       "(1,2,3)(4,5,6)"},
      {"XYOnly False is triples", Variant(SafeArray::OfDoubles({1, 2, 3})), Variant(false),
       "(1,2,3)"},
      {"a Variant list from lower bound 1",
       Variant(SafeArray::OfVariants({Variant(int16_t{7}), Variant("8")}, 1)), Variant(true),
       "(7,8,0)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Variant points;
    AcadSpace::ArrDbls2ArrPoints(c.list, points, c.xy_only);
    EXPECT_EQ(Points(points), c.expected);
    EXPECT_EQ(points.Array().LBound(), 0);
    // Each point is stored through AssignValue: a copy as an array of
    // Variants, each holding a Double.
    EXPECT_EQ(TypeName(points.Array().At(0)), "Variant()");
    EXPECT_EQ(TypeName(points.Array().At(0).Array().At(2)), "Double");
  }
}

TEST(AcadSpace, ArrDbls2ArrPointsAppendsToWhatIsThere) {
  Variant points(SafeArray::OfVariants({Variant(SafeArray::OfDoubles({9, 9, 9}))}));
  AcadSpace::ArrDbls2ArrPoints(Variant(SafeArray::OfDoubles({1, 2})), points, Variant(true));
  EXPECT_EQ(Points(points), "(9,9,9)(1,2,0)");
}

TEST(AcadSpace, ArrDbls2ArrPointsStopsAtAPartialStep) {
  Variant points;
  try {
    AcadSpace::ArrDbls2ArrPoints(Variant(SafeArray::OfDoubles({1, 2, 3, 4})), points);
    ADD_FAILURE() << "no error";
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.Number(), 9);
    EXPECT_EQ(e.Description(), "Subscript out of range");
  }
  // The complete first step was appended before the failure.
  EXPECT_EQ(Points(points), "(1,2,3)");
}

TEST(AcadSpace, ArrDbls2ArrPointsThroughTheImplicitInstance) {
  ResetLibraryState();
  ObjectRef space = GlobalInstance<AcadSpace>();
  EXPECT_EQ(space, GlobalInstance<AcadSpace>());  // one implicit instance
  EXPECT_EQ(TypeName(Variant(space)), "AcadSpace");
  Variant args[3] = {Variant(SafeArray::OfDoubles({5, 6, 7, 8})), Variant(), Variant(true)};
  CallMethodRef(space, "arrdbls2arrpoints", args);
  EXPECT_EQ(Points(args[1]), "(5,6,0)(7,8,0)");
  ResetLibraryState();
}

}  // namespace
}  // namespace tovik
