// Structural checks a DXF file must pass before the loader maps it: no
// handle twice, no block that contains itself.
#ifndef TOVIK_HOST_DXF_DB_VALIDATE_H_
#define TOVIK_HOST_DXF_DB_VALIDATE_H_

#include <cstdint>
#include <string_view>

#include "host/dxf/tag_model.h"

namespace tovik::host::dxf {

// Throws ReadError (file, line of the offending record, what) for a handle
// used by two records or a block that inserts itself, directly or through
// other blocks.
void ValidateModel(const TagModel& model, std::string_view file_name);

// The largest handle any record of `model` carries (0 when none).
uint64_t MaxHandle(const TagModel& model);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_DB_VALIDATE_H_
