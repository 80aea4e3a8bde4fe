// The host's geometry members on entities: extents, transforms, explode and
// intersections. Entity's member table calls AddEntityGeometryMembers.
#ifndef TOVIK_HOST_SHAPES_GEOMETRY_MEMBERS_H_
#define TOVIK_HOST_SHAPES_GEOMETRY_MEMBERS_H_

#include <vector>

#include "frame/member_table.h"
#include "geometry/box.h"
#include "geometry/matrix.h"

namespace tovik::host {

class Entity;

// GetBoundingBox, IntersectWith, Move, Rotate, Rotate3D, ScaleEntity,
// Mirror, TransformBy and Explode on every entity.
void AddEntityGeometryMembers(MemberTable<Entity>& t);

// The WCS extents of an entity as GetBoundingBox reports them. Raises the
// host's "Null extents" for an entity with none (an empty text, a reference
// to an empty block) or unbounded ones (a ray, a construction line).
geometry::BoundingBox EntityExtents(const Entity& entity);

// Applies m to the entity (and a block reference's attributes), recording
// undo. `readable_text`: a mirroring m keeps texts reading forward
// (MIRRTEXT 0). Raises Invalid input when the kind cannot take m (a circle
// under a non-uniform scale, a singular matrix).
void TransformEntity(Entity& entity, const geometry::Matrix4& m, bool readable_text);

// The new entities Explode makes of `entity`, appended to its owner.
// Raises 438 for kinds that do not explode, Not applicable for a
// reference to a block that is not explodable.
std::vector<Entity*> ExplodeEntity(Entity& entity);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SHAPES_GEOMETRY_MEMBERS_H_
