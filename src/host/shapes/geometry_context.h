// The drawing state geometry members read: the current UCS, the view, the
// mirror-text setting and the pick aperture, taken from the document's
// system variables.
#ifndef TOVIK_HOST_SHAPES_GEOMETRY_CONTEXT_H_
#define TOVIK_HOST_SHAPES_GEOMETRY_CONTEXT_H_

#include "geometry/coordinate_systems.h"
#include "geometry/matrix.h"

namespace tovik::host {

class Document;

// UCSORG, UCSXDIR, UCSYDIR.
geometry::Ucs CurrentUcs(Document& doc);
// The UCS and the view (TARGET, VIEWDIR, VIEWTWIST); no floating viewport
// is modelled, so paper-space DCS equals DCS.
geometry::CoordinateContext CurrentCoordinateContext(Document& doc);
// WCS → UCS (the plan selection is judged in); the identity when the UCS
// variables are degenerate.
geometry::Matrix4 WcsToUcsMatrix(Document& doc);
// The UCS Z axis in WCS (unit).
geometry::Vec3 UcsZAxis(Document& doc);
// True when MIRRTEXT is 0: mirrored texts keep reading forward.
bool KeepTextReadable(Document& doc);
// The pick aperture in drawing units: PICKBOX pixels times VIEWSIZE over
// the viewport's pixel height (SCREENSIZE y).
double PickAperture(Document& doc);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SHAPES_GEOMETRY_CONTEXT_H_
