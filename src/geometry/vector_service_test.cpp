#include "geometry/vector_service.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"

#include <functional>

#include "frame/automation_error.h"
#include "frame/conversions.h"

namespace tovik {
namespace {

TEST(VectorService, ScaleVectorGivesAZeroBasedDoubleArray) {
  SafeArray one_based(VarType::kVariant, 1, 3);
  one_based.Set(1, Variant(int16_t{1}));
  one_based.Set(2, Variant(2.5));
  one_based.Set(3, Variant(int32_t{-4}));
  ObjectRef service = VectorService::Make();
  Variant scaled = CallMethod(service, "ScaleVector", {Variant(one_based), Variant(1000.0)});
  EXPECT_EQ(TypeName(scaled), "Double()");
  EXPECT_EQ(scaled.Array().LBound(), 0);
  EXPECT_EQ(scaled.Array().ToDoubles(), (std::vector<double>{1000.0, 2500.0, -4000.0}));
  EXPECT_EQ(ScaleVector(Variant(SafeArray::Empty()), 2.0).Array().Count(), 0);
}

TEST(VectorService, NonNumericVectorsAreATypeMismatch) {
  for (Variant v : {Variant(1.0), Variant(SafeArray::Of({Variant(1.0), Variant("2")})),
                    Variant(SafeArray::Of({Variant(SafeArray::OfDoubles({1.0}))}))}) {
    SCOPED_TRACE(TypeName(v));
    EXPECT_EQ(ErrorOf([&] { ScaleVector(v, 2.0); }).Number(), kErrTypeMismatch);
  }
}

}  // namespace
}  // namespace tovik
