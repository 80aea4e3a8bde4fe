// The length unit of a drawing or block definition and its millimetre
// factor. The maker's add-ins compute in millimetres; a drawing may be drawn
// in any of six units. The host numbers units as AcInsertUnits (INSUNITS of
// a drawing, Units of a block definition):
//
//   host code            unit          LengthUnitID   drawing units per mm
//   0 unitless           millimetre    0              1
//   4 millimetres        millimetre    0              1
//   5 centimetres        centimetre    1              0.1
//   14 decimetres        decimetre     2              0.01
//   6 metres             metre         3              0.001
//   1 inches             inch          4              1 / 25.4
//   2 feet               foot          5              1 / 304.8
//
// A unitless drawing is taken to be in millimetres on purpose; every other
// code (miles, yards, microns...) is refused.
#ifndef TOVIK_DOCUMENT_UNITS_H_
#define TOVIK_DOCUMENT_UNITS_H_

#include <cstdint>
#include <optional>

#include "frame/dispatch.h"

namespace tovik {

// The LengthUnitID of an AcInsertUnits code, or nullopt when unsupported.
std::optional<int16_t> LengthUnitOfHostCode(int32_t code);

// DrawingLengthUnit(target): the LengthUnitID of `target`, read from
//   - Nothing: the current drawing's INSUNITS;
//   - a document (type name exactly "IAcadDocument"): its INSUNITS;
//   - anything else, taken as a block definition: its Document's INSUNITS
//     when IsLayout is True (model space, paper space, layout blocks),
//     otherwise its own Units.
// Raises 2411 "Unsupported Length Unit. Supported Units are mm, cm, dm, m,
// ft and inch" (no source) for an unsupported code. No trap: host failures
// (no current drawing, an object with neither IsLayout nor Units) reach the
// caller.
int16_t DrawingLengthUnit(const ObjectRef& target);

// MillimetreFactor(target): drawing units per millimetre of `target` (the
// value of one millimetre in its unit): multiply millimetres by it to get
// drawing units, divide drawing values by it to get millimetres. Raises as
// DrawingLengthUnit.
double MillimetreFactor(const ObjectRef& target);

}  // namespace tovik

#endif  // TOVIK_DOCUMENT_UNITS_H_
