// Document.CopyObjects, the IDPair objects it reports, and Document.Import.
#ifndef TOVIK_HOST_COPYING_COPY_OBJECTS_H_
#define TOVIK_HOST_COPYING_COPY_OBJECTS_H_

#include "frame/member_table.h"
#include "host/core/document.h"

namespace tovik::host {

struct ClonePair;

// IAcadIdPair: one object CopyObjects met. Key is the source's object ID,
// Value its copy's (or, for a record of another drawing found by name in
// the target, that record's). Detached: it keeps the numbers, not the
// objects.
class IdPair : public DispatchObject<IdPair> {
 public:
  IdPair(Document& doc, const ClonePair& pair);
  std::string_view TypeName() const override { return "IAcadIdPair"; }
  static const MemberTable<IdPair>& Members();

 private:
  ObjectRef app_;
  Variant key_, value_;
  int32_t key32_, value32_;
  bool cloned_, primary_;
};

// CopyObjects(Objects [, Owner] [, IDPairs]) As Variant.
//
// Objects: entities of this drawing sharing one owner (else Invalid
// argument / Invalid owner object, before anything is copied). Owner: the
// block of this or another drawing the copies go to (missing or Nothing:
// beside the originals). Across drawings the layers, linetypes, materials,
// text and dimension styles, applications and block definitions the copies
// name are taken from the target by name, or brought over when it has
// none (a block with its entities; an anonymous block always as a new
// "*U" block). Returns the primary copies in input order; IDPairs, when
// passed, receives an array of IdPair objects: the primary ones first, then
// everything else met, in the order met.
Variant CopyObjects(Document& doc, CallArgs& args);

// Import(FileName, InsertionPoint, ScaleFactor) As Object.
//
// A DXF file: its model-space entities are added to this drawing's model
// space, moved so that the file's base point (INSBASE) lands on
// InsertionPoint (WCS) and scaled by ScaleFactor about it; the layers,
// styles and blocks they name are taken from this drawing by name or
// brought over (as CopyObjects does). Returns Nothing. Raises: a file that
// is not there, File not found; ScaleFactor not above 0, Invalid input;
// WMF, SAT and EPS (which the host reads but the headless host does not),
// Not applicable; any other kind, Invalid input; without the DXF reader
// installed, Not applicable. A file that fails to read raises the reader's
// error, and this drawing is left unchanged.
Variant ImportFile(Document& doc, CallArgs& args);

// The block definition InsertBlock makes of a drawing file named as its
// block: named after the file (without folders and extension), holding
// copies of the file's model-space entities, with the file's base point
// (INSBASE) as its origin; an existing block of that name is used as it
// is. The headless host reads DXF: a ".dwg" path that is not there is read
// from the ".dxf" file beside it. nullptr when `path` names no drawing file
// (no folder separator and no ".dwg"/".dxf" extension); File not found when
// it names one that is not there; the reader's error when it cannot be
// read.
BlockRecord* BlockFromDrawingFile(Document& doc, const std::string& path);

}  // namespace tovik::host

#endif  // TOVIK_HOST_COPYING_COPY_OBJECTS_H_
