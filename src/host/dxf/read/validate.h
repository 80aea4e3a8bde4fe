// Structural checks a DXF file must pass before the loader maps it: no
// handle twice, no block that contains itself.
#ifndef TOVIK_HOST_DXF_READ_VALIDATE_H_
#define TOVIK_HOST_DXF_READ_VALIDATE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/flat_map.h"
#include "dxf/tag_model.h"

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

// The handles the records of a model carry, gathered while checking that
// none is used twice; the loader asks them instead of walking the records
// again.
struct ModelHandles {
  // Handle -> position (line or byte offset) of the record that carries it.
  FlatMap<uint64_t, uint32_t> positions;
  // The largest handle a record carries or a group names (0 when none).
  uint64_t max = 0;
  // What was repaired ("line 13: duplicate handle 2A (also used at line 7):
  // the record gets handle 31").
  std::vector<std::string> repairs;
};

// Throws ReadError (file, line of the offending record, what) for a block
// that inserts itself, directly or through other blocks, or a section the
// drawing is built from given twice. A handle used by two records is
// repaired: the later record gets a new handle, above all the file
// mentions (with Faults::kThrow it throws). Returns the handles of the
// model's records.
ModelHandles ValidateModel(TagModel& model, std::string_view file_name,
                           Faults faults = Faults::kRepair);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_READ_VALIDATE_H_
