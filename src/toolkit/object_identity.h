// Object identity across host builds and the draw-order table of a block.
//
// 64-bit host builds answer ObjectID, OwnerID and ObjectIDToObject; older
// 32-bit builds only ObjectID32, OwnerID32 and ObjectIDToObject32. Each
// procedure tries the first under a trap and falls back to the second,
// whose failure reaches the caller. IDs are returned as the host gives
// them (a 64-bit or a 32-bit integer inside a Variant).
#ifndef TOVIK_TOOLKIT_OBJECT_IDENTITY_H_
#define TOVIK_TOOLKIT_OBJECT_IDENTITY_H_

#include "frame/dispatch.h"

namespace tovik {

// The object ID of `ent`.
Variant ObjectIdOf(const ObjectRef& ent);
// The object ID of `ent`'s owner.
Variant OwnerIdOf(const ObjectRef& ent);
// The database object with ID `id` in `doc`; Nothing means the current
// drawing, written back into `doc`.
ObjectRef ObjectFromId(const Variant& id, ObjectRef& doc);
// The draw-order table ("ACAD_SORTENTS" of the extension dictionary) of
// `block`, created on first use and kept in the drawing. Nothing means the
// current space, written back into `block`. Failures of
// GetExtensionDictionary and AddObject reach the caller.
ObjectRef SortentsTable(ObjectRef& block);

}  // namespace tovik

#endif  // TOVIK_TOOLKIT_OBJECT_IDENTITY_H_
