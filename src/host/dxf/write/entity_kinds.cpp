// Entities written from the live objects, continued: hatches (boundary
// loops as polyline paths, pattern definition lines), dimensions, and the
// generic kinds the host can write from their points (old-style polylines,
// rays, construction lines, solids, traces, 3D faces).
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

bool IsZAxis(const Vec3& n) { return n.x == 0 && n.y == 0 && n.z == 1; }

// Lines of a hatch pattern in drawing units at scale 1 and angle 0: angle
// (degrees), base point, offset (in the line's own frame) and dashes.
struct PatternLine {
  double angle, base_x, base_y, offset_x, offset_y;
  std::vector<double> dashes;
};

// The standard patterns new hatches most often use (acad.pat, inches).
std::vector<PatternLine> PatternOf(std::string_view name) {
  if (name == "ANSI31") return {{45, 0, 0, 0, 0.125, {}}};
  if (name == "ANSI37") return {{45, 0, 0, 0, 0.125, {}}, {135, 0, 0, 0, 0.125, {}}};
  if (name == "LINE") return {{0, 0, 0, 0, 0.125, {}}};
  if (name == "NET") return {{0, 0, 0, 0, 0.125, {}}, {90, 0, 0, 0, 0.125, {}}};
  return {};
}

}  // namespace

void DbWriter::EmitHatchGeometry(const Hatch& hatch) {
  const auto& d = hatch.data();
  bool solid = d.pattern_name == "SOLID";
  PutString(100, "AcDbHatch");
  PutPoint(10, {0, 0, d.elevation});
  PutPoint(210, d.normal);
  PutString(2, d.pattern_name);
  PutInt(70, solid ? 1 : 0);
  PutInt(71, d.associative ? 1 : 0);
  PutInt(91, static_cast<int64_t>(d.loops.size()));
  for (const HatchLoop& loop : d.loops) {
    // Every loop is written as a polyline path (flag 2); 1 marks an outer one.
    int32_t flags = loop.flags != 0 ? loop.flags : (loop.outer ? 1 : 0);
    PutInt(92, (flags & ~int32_t{2}) | 2);
    bool bulged = false;
    for (double b : loop.bulges) bulged |= b != 0;
    PutInt(72, bulged ? 1 : 0);
    PutInt(73, 1);
    PutInt(93, static_cast<int64_t>(loop.points.size()));
    for (size_t k = 0; k < loop.points.size(); ++k) {
      PutPoint2(10, loop.points[k].x, loop.points[k].y);
      if (bulged) PutReal(42, k < loop.bulges.size() ? loop.bulges[k] : 0);
    }
    PutInt(97, 0);
  }
  PutInt(75, d.hatch_style);
  PutInt(76, d.pattern_type);
  if (!solid) {
    PutReal(52, d.pattern_angle * kRadToDeg);
    PutReal(41, d.pattern_scale);
    PutInt(77, 0);
    std::vector<PatternLine> lines;
    if (d.pattern_type == 0) {
      lines.push_back({0, 0, 0, 0, 1, {}});  // user defined: parallel lines one unit apart
    } else {
      lines = PatternOf(d.pattern_name);
    }
    // Metric drawings use acadiso.pat, whose distances are in millimetres.
    double unit = d.pattern_type != 0 && NumberOfSysVar("MEASUREMENT") != 0 ? 25.4 : 1;
    PutInt(78, static_cast<int64_t>(lines.size()));
    double turn = d.pattern_angle;
    double s = d.pattern_scale * unit;
    for (const PatternLine& l : lines) {
      double a = l.angle * std::numbers::pi / 180 + turn;
      // The offset is given in the line's frame; DXF wants it in the hatch's.
      double ox = (l.offset_x * std::cos(a) - l.offset_y * std::sin(a)) * s;
      double oy = (l.offset_x * std::sin(a) + l.offset_y * std::cos(a)) * s;
      PutReal(53, a * kRadToDeg);
      PutReal(43, l.base_x * s);
      PutReal(44, l.base_y * s);
      PutReal(45, ox);
      PutReal(46, oy);
      PutInt(79, static_cast<int64_t>(l.dashes.size()));
      for (double dash : l.dashes) PutReal(49, dash * s);
    }
  }
  PutInt(98, 0);
  if (d.object_type == 1) {
    // A gradient fill: its name stands in the pattern name.
    PutInt(450, 1);
    PutInt(451, 0);
    PutReal(460, d.pattern_angle);
    PutReal(461, 0);
    PutInt(452, 0);
    PutReal(462, 0);
    PutInt(453, 0);
    PutString(470, d.pattern_name);
  }
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
