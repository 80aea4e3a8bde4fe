#include "host/entities/kind.h"

#include <array>

#include "host/entities/kinds.h"

namespace tovik::host {
namespace {

using enum EntityKind;

// One row per kind, in the enumeration's order.
constexpr std::array<EntityKindInfo, kEntityKindCount> kKinds = {{
    {kLine, "LINE", "AcDbLine", ""},
    {kCircle, "CIRCLE", "AcDbCircle", ""},
    {kArc, "ARC", "AcDbCircle", "AcDbArc"},
    {kEllipse, "ELLIPSE", "AcDbEllipse", ""},
    {kLwPolyline, "LWPOLYLINE", "AcDbPolyline", ""},
    {kPoint, "POINT", "AcDbPoint", ""},
    {kText, "TEXT", "AcDbText", "AcDbText"},
    {kAttributeDef, "ATTDEF", "AcDbText", "AcDbAttributeDefinition"},
    {kAttributeRef, "ATTRIB", "AcDbText", "AcDbAttribute"},
    {kMText, "MTEXT", "AcDbMText", ""},
    {kBlockRef, "INSERT", "AcDbBlockReference", ""},
    {kHatch, "HATCH", "AcDbHatch", ""},
    {kDimension, "DIMENSION", "AcDbDimension", ""},
    {kWipeout, "WIPEOUT", "AcDbWipeout", ""},
    {kRasterImage, "IMAGE", "AcDbRasterImage", ""},
    {kGeneric, "", "", ""},
}};

constexpr bool InEnumOrder() {
  for (size_t i = 0; i < kKinds.size(); ++i) {
    if (static_cast<size_t>(kKinds[i].kind) != i) return false;
  }
  return true;
}
static_assert(InEnumOrder());

constexpr size_t kGenericKindCount = static_cast<size_t>(GenericKind::kUnknown) + 1;

// One row per generic kind, in the enumeration's order.
constexpr std::array<GenericKindInfo, kGenericKindCount> kGenericKinds = {{
    {GenericKind::kPolyline2d, "POLYLINE", "IAcadPolyline", "AcDb2dPolyline"},
    {GenericKind::kPolyline3d, "POLYLINE", "IAcad3DPolyline", "AcDb3dPolyline"},
    {GenericKind::kSpline, "SPLINE", "IAcadSpline", "AcDbSpline"},
    {GenericKind::kRay, "RAY", "IAcadRay", "AcDbRay"},
    {GenericKind::kXLine, "XLINE", "IAcadXline", "AcDbXline"},
    {GenericKind::kViewport, "VIEWPORT", "IAcadPViewport", "AcDbViewport"},
    {GenericKind::kRegion, "REGION", "IAcadRegion", "AcDbRegion"},
    {GenericKind::kSolid2d, "SOLID", "IAcadSolid", "AcDbSolid"},
    {GenericKind::kSolid3d, "3DSOLID", "IAcad3DSolid", "AcDb3dSolid"},
    {GenericKind::kTrace, "TRACE", "IAcadTrace", "AcDbTrace"},
    {GenericKind::kFace3d, "3DFACE", "IAcad3DFace", "AcDbFace"},
    {GenericKind::kLeader, "LEADER", "IAcadLeader", "AcDbLeader"},
    {GenericKind::kMLeader, "MULTILEADER", "IAcadMLeader", "AcDbMLeader"},
    {GenericKind::kTable, "ACAD_TABLE", "IAcadTable", "AcDbTable"},
    {GenericKind::kPolyfaceMesh, "POLYLINE", "IAcadPolyfaceMesh", "AcDbPolyFaceMesh"},
    {GenericKind::kPolygonMesh, "POLYLINE", "IAcadPolygonMesh", "AcDbPolygonMesh"},
    {GenericKind::kBody, "BODY", "IAcadEntity", "AcDbBody"},
    {GenericKind::kMLine, "MLINE", "IAcadMLine", "AcDbMline"},
    {GenericKind::kTolerance, "TOLERANCE", "IAcadTolerance", "AcDbFcf"},
    {GenericKind::kShape, "SHAPE", "IAcadShape", "AcDbShape"},
    {GenericKind::kOle, "OLE2FRAME", "IAcadOle", "AcDbOle2Frame"},
    {GenericKind::kUnknown, "", "IAcadEntity", "AcDbEntity"},
}};

constexpr bool GenericInEnumOrder() {
  for (size_t i = 0; i < kGenericKinds.size(); ++i) {
    if (static_cast<size_t>(kGenericKinds[i].kind) != i) return false;
  }
  return true;
}
static_assert(GenericInEnumOrder());

}  // namespace

const EntityKindInfo& InfoOf(EntityKind kind) { return kKinds[static_cast<size_t>(kind)]; }

EntityKind KindOfDxfName(std::string_view dxf_name) {
  for (const EntityKindInfo& info : kKinds) {
    if (info.dxf_name == dxf_name && !dxf_name.empty()) return info.kind;
  }
  return kGeneric;
}

const GenericKindInfo& InfoOf(GenericKind kind) { return kGenericKinds[static_cast<size_t>(kind)]; }

GenericKind GenericKindOfDxfName(std::string_view dxf_name) {
  for (const GenericKindInfo& info : kGenericKinds) {
    if (info.dxf_name == dxf_name && !dxf_name.empty()) return info.kind;
  }
  return GenericKind::kUnknown;
}

std::string_view DxfNameOf(const Entity& entity) {
  if (const auto* g = As<GenericEntity>(&entity)) {
    if (!g->data().dxf_name.empty()) return g->data().dxf_name;
    return InfoOf(g->data().kind).dxf_name;
  }
  return InfoOf(entity.Kind()).dxf_name;
}

}  // namespace tovik::host
