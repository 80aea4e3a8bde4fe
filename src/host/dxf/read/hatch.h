// Reading the boundary loops of a HATCH record.
#ifndef TOVIK_HOST_DXF_READ_HATCH_H_
#define TOVIK_HOST_DXF_READ_HATCH_H_

#include <span>
#include <vector>

#include "host/dxf/binding.h"
#include "host/entities/kinds.h"

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

// The loops of the AcDbHatch part of a HATCH record (`hatch_part`: its tags
// after "100 AcDbHatch"), in OCS, as closed polygons with bulges: polyline
// loops and line/arc edges exactly, elliptic-arc and spline edges as points
// along the curve. A loop is outer when flagged external (1); with none
// flagged, the first is. Damaged counts end the reading
// early instead of failing.
std::vector<HatchLoop> ReadHatchLoops(std::span<const Tag> hatch_part);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_READ_HATCH_H_
