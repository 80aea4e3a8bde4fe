// The extents of one entity as the library measures it everywhere (set
// boxes, AcadSpace's box of a list of entities).
#ifndef TOVIK_TOOLKIT_ENTITY_EXTENTS_H_
#define TOVIK_TOOLKIT_ENTITY_EXTENTS_H_

#include "frame/dispatch.h"

namespace tovik {

// The corners of the entity's host GetBoundingBox; when the host cannot
// give it (a text or reference without readable extents, an empty block
// reference), its InsertionPoint as both corners. False, with min_p and
// max_p unchanged, when neither can be read: the caller skips the entity.
bool EntityExtents(const ObjectRef& ent, Variant& min_p, Variant& max_p);

}  // namespace tovik

#endif  // TOVIK_TOOLKIT_ENTITY_EXTENTS_H_
