// The entity kinds the host models, and what the DXF format calls each.
//
// Code that treats kinds differently switches on Entity::Kind() without a
// default label, so that the compiler names every switch a new kind must
// join; As<K>() is the checked downcast for code that wants one kind only.
#ifndef TOVIK_HOST_ENTITIES_KIND_H_
#define TOVIK_HOST_ENTITIES_KIND_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tovik::host {

enum class EntityKind : uint8_t {
  kLine,
  kCircle,
  kArc,
  kEllipse,
  kLwPolyline,
  kPoint,
  kText,
  kAttributeDef,
  kAttributeRef,
  kMText,
  kBlockRef,
  kHatch,
  kDimension,
  kWipeout,
  kRasterImage,
  // Old-style polylines, splines, solids, viewports...: kept whole, with
  // their points (GenericKind tells them apart).
  kGeneric,
};
inline constexpr size_t kEntityKindCount = static_cast<size_t>(EntityKind::kGeneric) + 1;

// The kinds kept whole (EntityKind::kGeneric).
enum class GenericKind : uint8_t {
  kPolyline2d, kPolyline3d, kSpline, kRay, kXLine, kViewport, kRegion,
  kSolid2d, kSolid3d, kTrace, kFace3d, kLeader, kMLeader, kTable, kPolyfaceMesh,
  kPolygonMesh, kBody, kMLine, kTolerance, kShape, kOle, kUnknown,
};

// How the DXF format writes a kind: its entity type name and the subclass
// marker that opens its own group codes (after AcDbEntity).
struct EntityKindInfo {
  EntityKind kind;
  std::string_view dxf_name;  // empty for kGeneric: each generic kind has its own
  // The subclass markers of the kind's own group codes, in file order.
  std::string_view subclass;
  std::string_view second_subclass;
};

// The names of a generic kind: DXF type, automation type, object class.
struct GenericKindInfo {
  GenericKind kind;
  std::string_view dxf_name;
  std::string_view type_name;
  std::string_view object_name;
};

// The row of `kind` in the table of kinds.
const EntityKindInfo& InfoOf(EntityKind kind);
// The kind read from an entity of DXF type `dxf_name` ("CIRCLE"); kGeneric
// for the types kept whole.
EntityKind KindOfDxfName(std::string_view dxf_name);
const GenericKindInfo& InfoOf(GenericKind kind);
// The generic kind of DXF type `dxf_name` (kUnknown when none; POLYLINE
// gives kPolyline2d, its flags tell the other polyline kinds).
GenericKind GenericKindOfDxfName(std::string_view dxf_name);

class Entity;
// The DXF type name of `entity` ("LINE", "INSERT", "ATTRIB"...); a generic
// entity's as it was read.
std::string_view DxfNameOf(const Entity& entity);

}  // namespace tovik::host

#endif  // TOVIK_HOST_ENTITIES_KIND_H_
