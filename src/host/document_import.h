// Document.Import.
#ifndef TOVIK_HOST_DOCUMENT_IMPORT_H_
#define TOVIK_HOST_DOCUMENT_IMPORT_H_

#include "frame/member_table.h"
#include "host/document.h"

namespace tovik::host {

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

}  // namespace tovik::host

#endif  // TOVIK_HOST_DOCUMENT_IMPORT_H_
