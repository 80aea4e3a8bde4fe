// Hatches: read with their boundary loops, written whole with their loops
// as polyline paths and the definition lines of their pattern.
#include "host/dxf/kinds/kinds.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

#include "host/dxf/read/hatch.h"
#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {

using geometry::Vec3;

namespace {

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

// True when two boundaries have the same loops, point for point.
bool SameLoops(const std::vector<HatchLoop>& a, const std::vector<HatchLoop>& b) {
  if (a.size() != b.size()) return false;
  auto near = [](double x, double y) { return std::fabs(x - y) <= 1e-9 * std::max(1.0, std::fabs(x)); };
  for (size_t k = 0; k < a.size(); ++k) {
    if (a[k].points.size() != b[k].points.size() || a[k].outer != b[k].outer) return false;
    for (size_t i = 0; i < a[k].points.size(); ++i) {
      if (!near(a[k].points[i].x, b[k].points[i].x) || !near(a[k].points[i].y, b[k].points[i].y) ||
          !near(a[k].bulges[i], b[k].bulges[i])) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

std::shared_ptr<Entity> LoadHatch(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<Hatch>();
  auto& d = e->mutable_data();
  d.pattern_name = std::string(r.StringOr(2, "SOLID"));
  d.pattern_type = static_cast<int32_t>(IntOr(r, 76, 1));
  d.associative = IntOr(r, 71, 0) != 0;
  d.object_type = IntOr(r, 450, 0) != 0 ? 1 : 0;
  d.pattern_scale = RealOr(r, 41, 1);
  d.pattern_angle = RealOr(r, 52, 0) * kDegToRad;
  d.elevation = RealOr(r, 30, 0);
  d.normal = NormalOf(r);
  d.hatch_style = static_cast<int32_t>(IntOr(r, 75, 0));
  auto part = record.Subclass(InfoOf(EntityKind::kHatch).subclass);
  d.loops = ReadHatchLoops(part ? *part : record.Body());
  return e;
}

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

// Hatch boundaries stay as the file wrote them (edges of every kind) while
// the host's loops are the ones read from them; they are rewritten as
// polyline paths once the hatch was moved or its loops changed. True, with
// the body's range of boundary groups, when they must be rewritten.
bool LoopsToRewrite(const Record& record, const Hatch::Data& hatch, size_t* begin, size_t* end) {
  std::span<const Tag> body = record.Body();
  for (size_t i = 0; i < body.size(); ++i) {
    if (*begin == 0 && body[i].code == 91) *begin = i;
    if (*begin != 0 && body[i].code == 75) {
      *end = i;
      break;
    }
  }
  if (*begin == 0) {
    // No loop count (91): readers cannot take the boundaries that follow;
    // the host's loops take their place, before the hatch style (75).
    size_t style = 0, first_path = 0;
    for (size_t i = 0; i < body.size() && style == 0; ++i) {
      if (body[i].code == 92 && first_path == 0) first_path = i;
      if (body[i].code == 75) style = i;
    }
    if (style == 0) return false;
    *begin = first_path != 0 ? first_path : style;
    *end = style;
    return true;
  }
  auto part = record.Subclass(InfoOf(EntityKind::kHatch).subclass);
  return *end != 0 && !SameLoops(ReadHatchLoops(part ? *part : body), hatch.loops);
}

void DbWriter::PutHatchLoops(const std::vector<HatchLoop>& loops) {
  PutInt(91, static_cast<int64_t>(loops.size()));
  for (const HatchLoop& loop : loops) {
    bool bulged = false;
    for (double b : loop.bulges) bulged = bulged || b != 0;
    // Polyline path (2), external when the loop bounds the hatch (1); the
    // other flags the file gave it stay.
    PutInt(92, (loop.flags & ~int64_t{3}) | 2 | (loop.outer ? 1 : 0));
    PutInt(72, bulged ? 1 : 0);
    PutInt(73, 1);
    PutInt(93, static_cast<int64_t>(loop.points.size()));
    for (size_t i = 0; i < loop.points.size(); ++i) {
      PutReal(10, loop.points[i].x);
      PutReal(20, loop.points[i].y);
      if (bulged) PutReal(42, loop.bulges[i]);
    }
    PutInt(97, 0);
  }
}

}  // namespace tovik::host::dxf
