// Which DXF version a drawing is written in.
#ifndef TOVIK_HOST_DXF_WRITE_VERSION_H_
#define TOVIK_HOST_DXF_WRITE_VERSION_H_

#include <string_view>

#include "dxf/tag_model.h"

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

// The version for data only R2010 and older can hold (see WriteVersionFor).
inline constexpr std::string_view kOlderFormsVersion = "AC1024";

// Returns the $ACADVER to write a drawing read into `model` in: the host's
// version (kWriteVersion, R2018) normally, older files upgraded. A drawing
// read from an R13 to R2010 file that holds data R2018 stores in another
// form the host cannot convert to is written as R2010 (kOlderFormsVersion),
// so nothing is lost:
//   - ACIS solids, regions and surfaces as SAT text in the entity (R2018
//     keeps them as binary SAB in the ACDSDATA section; converting needs a
//     solid modeller);
//   - multi-column MTEXT whose columns are MTEXT entities of their own,
//     linked from the first one's xdata (R2018 keeps one MTEXT with an
//     embedded column object and no linked entities).
std::string_view WriteVersionFor(const TagModel& model);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_WRITE_VERSION_H_
