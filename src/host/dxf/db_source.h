// What a drawing read from DXF keeps beside its live objects: the file's
// tag model (every record, unmodelled ones and unknown groups included) and
// which live object each record became. The writer walks the model again,
// re-emitting each record with the groups the host models patched from the
// live object, so a read-then-write loses nothing the host does not model.
#ifndef TOVIK_HOST_DXF_DB_SOURCE_H_
#define TOVIK_HOST_DXF_DB_SOURCE_H_

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "host/db_object.h"
#include "host/dxf/flat_map.h"
#include "host/dxf/tag_model.h"

namespace tovik::host {
class Document;
}

namespace tovik::host::dxf {

// One record turned into a live object.
struct Binding {
  DbObject* object = nullptr;
  // The extended data as loaded: while the object still holds this very
  // pointer, its xdata is unchanged and the original tags are written.
  const XData* loaded_xdata = nullptr;
};

// A drawing's DXF origin.
struct DxfSource {
  explicit DxfSource(TagModel m) : model(std::move(m)) {}
  TagModel model;
  FlatMap<const Record*, Binding> bindings;
  // The object each live object came from (reverse of `bindings`).
  FlatMap<const DbObject*, const Record*> records;
  // Standard contents of a new document the file did not name (a layout
  // the file lacks): kept alive, never written.
  std::unordered_set<const DbObject*> unwritten;
  // What the loader repaired, one line each ("layer "X" was missing: added").
  std::vector<std::string> repairs;
};

// Gives each entity read from `source` whose kind the host does not model
// whole (generic entities, dimensions, hatches, images, wipeouts) the tags
// of its record as unmodelled tags (DbObject::extra), followers included,
// so that a copy of it, which carries them along, is written whole.
void RememberSourceRecords(DxfSource& source);

// Attaches `source` to `document` (replacing an earlier one).
void AttachSource(const Document& document, std::shared_ptr<DxfSource> source);
// The source attached to `document`, or nullptr for a drawing not read from DXF.
std::shared_ptr<DxfSource> SourceOf(const Document& document);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_DB_SOURCE_H_
