// AcadDocSpace: the drawing's length unit and the conversion of vectors
// between drawing units and millimetres.
#include "document/acad_doc_space.h"
#include "document/units.h"
#include "frame/automation_error.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "geometry/vector_service.h"

namespace tovik {
namespace {

// Replaces Vectors(0), Vectors(1), ... by themselves scaled by `factor`
// until one is missing or no numeric array; always from index 0, so an
// array with lower bound 1 is not touched.
void ScaleVectorsInPlace(Variant& vectors, double factor) {
  ResumeNext trap;
  for (int32_t i = 0;; ++i) {
    bool done = !trap([&] {
      const Variant& vector = vectors.Array().At(i);
      if (!vector.IsArray()) throw errors::TypeMismatch();
      Variant scaled = ScaleVector(vector, factor);
      vectors.MutableArray().Set(i, std::move(scaled));
    });
    if (done) return;
  }
}

}  // namespace

std::shared_ptr<UnitSetting> AcadDocSpace::GetAcadUnitSetting(ObjectRef& adwg) {
  if (!adwg) adwg = CurrentDrawing();
  return GetAcadTransaction(adwg)->UnitSetting(false);
}

int16_t AcadDocSpace::GetAcadDLengthUnitID(const ObjectRef& ablock) {
  return DrawingLengthUnit(ablock);
}

double AcadDocSpace::GetAcad_Millimeter_ScaleFactor(const ObjectRef& ablock) {
  return MillimetreFactor(ablock);
}

std::shared_ptr<DLength> AcadDocSpace::GetAcadDLength(double dist, const ObjectRef& ablock) {
  auto length = DLength::Make();
  length->SetValue(dist, GetAcadDLengthUnitID(ablock));
  return length;
}

void AcadDocSpace::ConvertAcadVectorsToMM(const ObjectRef& acad_block, Variant& vectors) {
  double factor = GetAcad_Millimeter_ScaleFactor(acad_block);  // untrapped: may raise
  ScaleVectorsInPlace(vectors, 1.0 / factor);
}

void AcadDocSpace::ConvertMMVectorsToAcad(const ObjectRef& acad_block, Variant& vectors) {
  double factor = GetAcad_Millimeter_ScaleFactor(acad_block);
  ScaleVectorsInPlace(vectors, factor);
}

}  // namespace tovik
