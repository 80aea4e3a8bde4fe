// The kinds kept whole (old-style polylines, splines, rays, solids...): read
// with their points; those the host can write from their points written
// whole.
#include "host/dxf/kinds/kinds.h"

#include <cmath>

#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {

using geometry::Vec3;

GenericKind GenericKindOf(std::string_view type, const RecordFields& r) {
  if (type == "POLYLINE") {
    int64_t flags = IntOr(r, 70, 0);
    if (flags & 64) return GenericKind::kPolyfaceMesh;
    if (flags & 16) return GenericKind::kPolygonMesh;
    return (flags & 8) ? GenericKind::kPolyline3d : GenericKind::kPolyline2d;
  }
  return GenericKindOfDxfName(type);
}

std::shared_ptr<Entity> LoadGeneric(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<GenericEntity>();
  auto& d = e->mutable_data();
  d.kind = GenericKindOf(record.type, r);
  d.dxf_name = std::string(record.type);
  d.flags = static_cast<int32_t>(IntOr(r, 70, 0));
  d.closed = (d.flags & 1) != 0;
  d.normal = NormalOf(r);
  d.thickness = RealOr(r, 39, 0);
  if (record.followers.empty()) {
    for (const Tag& t : record.Body()) {
      if (t.code >= 10 && t.code <= 18) d.points.push_back({t.real, 0, 0});
      if (t.code >= 20 && t.code <= 28 && !d.points.empty()) d.points.back().y = NumberOf(t);
      if (t.code >= 30 && t.code <= 37 && !d.points.empty()) d.points.back().z = NumberOf(t);
      if (d.kind != GenericKind::kSpline) continue;
      if (t.code == 10) ++d.control_count;
      if (t.code == 40) d.knots.push_back(NumberOf(t));
      if (t.code == 41) d.weights.push_back(NumberOf(t));
      if (t.code == 71) d.degree = static_cast<int32_t>(NumberOf(t));
    }
  } else {
    d.elevation = RealOr(r, 30, 0);
    for (const Record& v : record.followers) {
      if (v.type != "VERTEX") continue;
      d.points.push_back(PointOr(v, 10));
      d.bulges.push_back(RealOr(v, 42, 0));
    }
  }
  return e;
}

void DbWriter::EmitGenericGeometry(const GenericEntity& generic) {
  const auto& d = generic.data();
  auto at = [&](size_t k) { return k < d.points.size() ? d.points[k] : Vec3{}; };
  switch (d.kind) {
    case GenericKind::kPolyline2d:
    case GenericKind::kPolyline3d: {
      bool three_d = d.kind == GenericKind::kPolyline3d;
      PutString(100, three_d ? "AcDb3dPolyline" : "AcDb2dPolyline");
      PutInt(66, 1);
      PutPoint(10, {0, 0, three_d ? 0 : d.elevation});
      if (d.thickness != 0) PutReal(39, d.thickness);
      PutInt(70, (d.closed ? 1 : 0) | (three_d ? 8 : 0) | (d.flags & ~int32_t{1 | 8 | 16 | 64}));
      if (!IsZAxis(d.normal)) PutPoint(210, d.normal);
      break;
    }
    case GenericKind::kRay:
    case GenericKind::kXLine:
      PutString(100, d.kind == GenericKind::kRay ? "AcDbRay" : "AcDbXline");
      PutPoint(10, at(0));
      PutPoint(11, at(1));
      break;
    case GenericKind::kSolid2d:
    case GenericKind::kTrace:
    case GenericKind::kFace3d:
      PutString(100, d.kind == GenericKind::kFace3d ? "AcDbFace" : "AcDbTrace");
      for (int k = 0; k < 4; ++k) PutPoint(10 + k, at(static_cast<size_t>(k < static_cast<int>(d.points.size()) ? k : static_cast<int>(d.points.size()) - 1)));
      if (d.kind == GenericKind::kFace3d) {
        PutInt(70, d.flags);
      } else {
        if (d.thickness != 0) PutReal(39, d.thickness);
        if (!IsZAxis(d.normal)) PutPoint(210, d.normal);
      }
      break;
    default: break;
  }
}

}  // namespace tovik::host::dxf
