// libFuzzer target over the whole DXF read/write path: tokenizer, tag model,
// record accessors and writer. Any input must either load or raise ReadError;
// whatever loads must write, and the written text must load again and write
// to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "dxf/tag_model.h"
#include "dxf/tag_writer.h"

namespace {

using tovik::dxf::ReadError;
using tovik::dxf::Record;
using tovik::dxf::TagModel;

// Touches every accessor a database would use, so they run on odd records.
std::size_t Walk(const Record& record) {
  std::size_t seen = record.Handle().size() + record.Owner().size();
  seen += record.Subclasses().size() + record.XdataBlocks().size() + record.AppDataGroups().size();
  for (const Record& follower : record.followers) seen += Walk(follower);
  return seen;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string input(reinterpret_cast<const char*>(data), size);
  std::string written;
  try {
    TagModel model = TagModel::Load(input, "fuzz.dxf");
    std::size_t seen = 0;
    for (const auto& section : model.sections()) {
      for (const auto& record : section.records) seen += Walk(record);
      for (const auto& block : section.blocks) {
        for (const auto& entity : block.entities) seen += Walk(entity);
      }
      for (const auto& table : section.tables) {
        for (const auto& entry : table.entries) seen += Walk(entry);
      }
    }
    (void)seen;
    written = tovik::dxf::WriteDxf(model);
  } catch (const ReadError&) {
    return 0;
  }
  // The writer's output is always readable and is a fixed point.
  TagModel again = TagModel::Load(written, "written.dxf");
  if (tovik::dxf::WriteDxf(again) != written) std::abort();
  return 0;
}
