// Dimensions: read with their definition points, written whole (the kinds
// the host can write from its own data).
#include "host/dxf/kinds/kinds.h"

#include <cmath>

#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {

using geometry::Vec3;

std::shared_ptr<Entity> LoadDimension(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<Dimension>();
  auto& d = e->mutable_data();
  static constexpr DimensionKind kKinds[7] = {
      DimensionKind::kRotated,   DimensionKind::kAligned,       DimensionKind::kAngular,
      DimensionKind::kDiametric, DimensionKind::kRadial,        DimensionKind::kAngular3Point,
      DimensionKind::kOrdinate};
  int64_t kind = IntOr(r, 70, 0) & 7;
  d.kind = kind < 7 ? kKinds[kind] : DimensionKind::kRotated;
  if (record.Subclass("AcDbArcDimension")) d.kind = DimensionKind::kArcLength;
  if (record.Subclass("AcDbRadialDimensionLarge")) d.kind = DimensionKind::kRadialLarge;
  d.p10 = PointOr(r, 10);
  d.p11 = PointOr(r, 11);
  d.p13 = PointOr(r, 13);
  d.p14 = PointOr(r, 14);
  d.p15 = PointOr(r, 15);
  d.p16 = PointOr(r, 16);
  d.rotation = RealOr(r, 50, 0) * kDegToRad;
  d.text_override = std::string(r.StringOr(1));
  d.text_rotation = RealOr(r, 53, 0) * kDegToRad;
  d.style = loader.DimStyleNamed(r.StringOr(3, "Standard"));
  d.normal = NormalOf(r);
  d.block = loader.BlockNamed(r.StringOr(2));
  return e;
}

void DbWriter::EmitDimensionGeometry(const Dimension& dimension) {
  const auto& d = dimension.data();
  static constexpr std::pair<DimensionKind, int> kTypes[] = {
      {DimensionKind::kRotated, 0},   {DimensionKind::kAligned, 1},  {DimensionKind::kAngular, 2},
      {DimensionKind::kDiametric, 3}, {DimensionKind::kRadial, 4},   {DimensionKind::kAngular3Point, 5},
      {DimensionKind::kOrdinate, 6}};
  int type = 0;
  for (const auto& [kind, code] : kTypes) {
    if (kind == d.kind) type = code;
  }
  PutString(100, "AcDbDimension");
  PutInt(280, 0);
  bool picture = Written(d.block);
  if (picture) PutString(2, d.block->Name());
  PutPoint(10, d.p10);
  PutPoint(11, d.p11);
  // 32: the picture block belongs to this dimension alone.
  PutInt(70, type | (picture ? 32 : 0));
  if (!d.text_override.empty()) PutString(1, d.text_override);
  if (d.text_rotation != 0) PutReal(53, d.text_rotation * kRadToDeg);
  PutString(3, d.style != nullptr ? d.style->Name() : "Standard");
  if (!IsZAxis(d.normal)) PutPoint(210, d.normal);
  switch (d.kind) {
    case DimensionKind::kRotated:
    case DimensionKind::kAligned:
      PutString(100, "AcDbAlignedDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      if (d.kind == DimensionKind::kRotated) {
        PutReal(50, d.rotation * kRadToDeg);
        PutString(100, "AcDbRotatedDimension");
      }
      break;
    case DimensionKind::kAngular:
      PutString(100, "AcDb2LineAngularDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      PutPoint(15, d.p15);
      PutPoint(16, d.p16);
      break;
    case DimensionKind::kAngular3Point:
      PutString(100, "AcDb3PointAngularDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      PutPoint(15, d.p15);
      break;
    case DimensionKind::kDiametric:
    case DimensionKind::kRadial:
      PutString(100, d.kind == DimensionKind::kRadial ? "AcDbRadialDimension" : "AcDbDiametricDimension");
      PutPoint(15, d.p15);
      PutReal(40, 0);
      break;
    case DimensionKind::kOrdinate:
      PutString(100, "AcDbOrdinateDimension");
      PutPoint(13, d.p13);
      PutPoint(14, d.p14);
      break;
    default: break;
  }
}

}  // namespace tovik::host::dxf
