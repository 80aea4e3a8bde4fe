#include "host/shapes/entity_shapes.h"

#include <cmath>
#include <span>

#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "geometry/ellipse.h"
#include "geometry/ocs.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/tables/records.h"

namespace tovik::host {

using GArc = geometry::Arc;
using geometry::BoundingBox;
using geometry::BulgeVertex;
using geometry::Curve;
using geometry::Linear;
using geometry::LinearKind;
using geometry::Matrix4;
using geometry::Vec3;

namespace {

// The curve moved by m; an arc under a non-uniform matrix becomes the
// ellipse it is the image of. nullopt when the image is degenerate.
std::optional<Curve> TransformCurve(const Curve& c, const Matrix4& m) {
  if (const auto* l = std::get_if<Linear>(&c)) {
    return Linear{m.TransformPoint(l->start), m.TransformPoint(l->end), l->kind};
  }
  if (const auto* a = std::get_if<GArc>(&c)) {
    if (m.UniformScale()) {
      if (auto t = geometry::TransformArc(*a, m)) return Curve(*t);
      return std::nullopt;
    }
    auto e = geometry::EllipseFromArc(*a);
    if (!e) return std::nullopt;
    if (auto t = geometry::TransformEllipse(*e, m)) return Curve(*t);
    return std::nullopt;
  }
  if (auto t = geometry::TransformEllipse(std::get<geometry::Ellipse>(c), m)) return Curve(*t);
  return std::nullopt;
}

class Sink {
 public:
  Sink(const Matrix4* place, std::vector<Primitive>* out) : place_(place), out_(out) {}
  void Add(const Curve& c) {
    if (!place_) {
      out_->push_back(c);
    } else if (auto t = TransformCurve(c, *place_)) {
      out_->push_back(*t);
    }
  }
  void Add(const Vec3& p) { out_->push_back(place_ ? place_->TransformPoint(p) : p); }
  void Add(Outline o) {
    if (place_) {
      for (Vec3& p : o.points) p = place_->TransformPoint(p);
    }
    out_->push_back(std::move(o));
  }
  // A curve and, for a nonzero thickness, its copy moved along the normal.
  void AddThick(const Curve& c, const Vec3& normal, double thickness) {
    Add(c);
    if (thickness == 0 || !std::isfinite(thickness)) return;
    const Vec3 offset = normal * thickness;
    if (const auto* l = std::get_if<Linear>(&c)) {
      Add(Curve(Linear{l->start + offset, l->end + offset, l->kind}));
    } else if (const auto* a = std::get_if<GArc>(&c)) {
      GArc moved = *a;
      moved.center += offset;
      Add(Curve(moved));
    }
  }

 private:
  const Matrix4* place_;
  std::vector<Primitive>* out_;
};

void AddPolyline(Sink& sink, std::span<const BulgeVertex> vertices, bool closed,
                 const Vec3& normal, double elevation, double thickness) {
  if (vertices.size() == 1) {
    if (auto p = geometry::OcsToWcs(geometry::Lift(vertices[0].point, elevation), normal)) {
      sink.Add(*p);
    }
    return;
  }
  const size_t n = closed ? vertices.size() : vertices.size() - 1;
  for (size_t i = 0; i < n && vertices.size() >= 2; ++i) {
    auto seg = geometry::SegmentInWcs(vertices, closed, i, normal, elevation);
    if (!seg) continue;
    sink.AddThick(geometry::CurveFromPolylineSegment(*seg), normal, thickness);
  }
}

std::vector<BulgeVertex> LwVertices(const LwPolyline::Data& d) {
  std::vector<BulgeVertex> v;
  v.reserve(d.vertices.size());
  for (const auto& x : d.vertices) v.push_back({x.point, x.bulge});
  return v;
}

// Number of code points of UTF-8 text.
size_t CodePoints(std::string_view s) {
  size_t n = 0;
  for (char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return n;
}

void AddMText(Sink& sink, const MText::Data& d) {
  if (d.text.empty()) return;
  auto ax = geometry::ArbitraryAxis(d.normal);
  if (!ax || !(d.height > 0)) return;
  // Lines split at paragraph codes and line feeds, each measured in the
  // style's face; formatting codes are measured as characters (an
  // overestimate, never an underestimate).
  size_t lines = 1;
  double longest = 0;
  size_t start = 0;
  auto measure = [&](size_t end) {
    std::string_view line(d.text.data() + start, end - start);
    double w = d.style ? d.style->document()->application()->fonts().Width(
                             d.style->data().font_file, line, d.height)
                       : kFallbackCharWidth * d.height * double(CodePoints(line));
    longest = std::max(longest, w);
  };
  for (size_t i = 0; i < d.text.size(); ++i) {
    const bool para = d.text.compare(i, 2, "\\P") == 0;
    if (para || d.text[i] == '\n') {
      measure(i);
      ++lines;
      if (para) ++i;
      start = i + 1;
    }
  }
  measure(d.text.size());
  const double w = d.width > 0 ? d.width : longest;
  const double h = d.height + double(lines - 1) * d.height * (5.0 / 3.0) * d.line_spacing_factor;
  const Vec3 dir = ax->x * std::cos(d.rotation) + ax->y * std::sin(d.rotation);
  const Vec3 up = geometry::Cross(ax->z, dir);
  const int a = std::clamp(d.attachment, 1, 9) - 1;
  const Vec3 top_left = d.insertion - dir * (w * (a % 3) / 2.0) + up * (h * (a / 3) / 2.0);
  sink.Add(Outline{{top_left - up * h, top_left - up * h + dir * w, top_left + dir * w, top_left}});
}

void AddDimension(Sink& sink, const Dimension::Data& d, const Matrix4* place, int depth,
                  std::vector<Primitive>* out) {
  if (d.block && !d.block->entities().empty()) {
    for (const Entity* e : d.block->entities()) {
      if (!e->erased()) AppendPrimitives(*e, place, out, depth + 1);
    }
    return;
  }
  for (const Vec3* p : {&d.p10, &d.p11, &d.p13, &d.p14}) sink.Add(*p);
  if (d.kind != DimensionKind::kRotated && d.kind != DimensionKind::kAligned &&
      d.kind != DimensionKind::kOrdinate) {
    sink.Add(d.p15);
    sink.Add(d.p16);
  }
}

void AddGeneric(Sink& sink, const GenericEntity::Data& d) {
  const auto& p = d.points;
  switch (d.kind) {
    case GenericKind::kRay:
    case GenericKind::kXLine:
      // DXF RAY / XLINE: 10 the base point, 11 the unit direction.
      if (p.size() >= 2) {
        sink.Add(Curve(Linear{p[0], p[0] + p[1],
                              d.kind == GenericKind::kRay ? LinearKind::kRay : LinearKind::kLine}));
      }
      return;
    case GenericKind::kPolyline2d: {
      std::vector<BulgeVertex> v;
      for (size_t i = 0; i < p.size(); ++i) {
        v.push_back({geometry::Xy(p[i]), i < d.bulges.size() ? d.bulges[i] : 0.0});
      }
      AddPolyline(sink, v, d.closed, d.normal, d.elevation, d.thickness);
      return;
    }
    case GenericKind::kPolyline3d:
    case GenericKind::kLeader:
      for (size_t i = 0; i + 1 < p.size(); ++i) sink.Add(Curve(Linear{p[i], p[i + 1]}));
      if (d.closed && p.size() > 2) sink.Add(Curve(Linear{p.back(), p.front()}));
      if (p.size() == 1) sink.Add(p[0]);
      return;
    case GenericKind::kSolid2d:
    case GenericKind::kTrace:
      // DXF SOLID corners run 10, 11, 13, 12 around the outline.
      if (p.size() == 4) {
        sink.Add(Outline{{p[0], p[1], p[3], p[2]}});
        return;
      }
      break;
    case GenericKind::kFace3d:
      if (p.size() >= 3) {
        sink.Add(Outline{p});
        return;
      }
      break;
    default:
      break;
  }
  // Splines and the kinds kept as points: the points bound the shape (a
  // spline lies in the hull of its control points).
  for (const Vec3& q : p) sink.Add(q);
}

}  // namespace

Matrix4 BlockRefCellMatrix(const BlockRef::Data& d, int column, int row) {
  const Matrix4 ocs = geometry::OcsToWcsMatrix(d.normal).value_or(Matrix4());
  const Matrix4 rotation = *Matrix4::Rotation({}, {0, 0, 1}, d.rotation);
  const Vec3 cell{column * d.column_spacing, row * d.row_spacing, 0};
  return Matrix4::Translation(d.insertion) * ocs * rotation * Matrix4::Translation(cell) *
         Matrix4::Scaling(d.scale) * Matrix4::Translation(-d.block->data().origin);
}

Matrix4 BlockRefMatrix(const BlockRef::Data& d) { return BlockRefCellMatrix(d, 0, 0); }

double TextWidth(const TextData& d, std::string_view text) {
  if (!d.style) return kFallbackCharWidth * d.height * d.width_factor * double(CodePoints(text));
  FontMetrics& fonts = d.style->document()->application()->fonts();
  return fonts.Width(d.style->data().font_file, text, d.height) * d.width_factor;
}

std::optional<std::vector<Vec3>> TextBox(const TextData& d, std::string_view text) {
  if (text.empty()) return std::nullopt;
  auto ax = geometry::ArbitraryAxis(d.normal);
  if (!ax) return std::nullopt;
  Vec3 dir = ax->x * std::cos(d.rotation) + ax->y * std::sin(d.rotation);
  double w = TextWidth(d, text);
  double h = d.height;
  Vec3 anchor = d.insertion;
  double hfrac = 0, vfrac = 0;  // the anchor's place within the box
  const int mode = d.alignment_mode;
  if (mode == 3 || mode == 5) {  // Aligned, Fit: the text spans the two points
    const Vec3 span = d.alignment - d.insertion;
    if (auto u = geometry::Normalized(span)) {
      dir = *u;
      const double fitted = geometry::Length(span);
      if (mode == 3 && w > 0) h *= fitted / w;  // Aligned keeps the proportions
      w = fitted;
    }
  } else if (mode != 0) {
    static constexpr double kH[15] = {0, .5, 1, 0, .5, 0, 0, .5, 1, 0, .5, 1, 0, .5, 1};
    static constexpr double kV[15] = {0, 0, 0, 0, .5, 0, 1, 1, 1, .5, .5, .5, 0, 0, 0};
    const int m = std::clamp(mode, 0, 14);
    anchor = d.alignment;
    hfrac = kH[m];
    vfrac = kV[m];
  }
  const Vec3 up = geometry::Cross(ax->z, dir);
  const double slant = std::tan(d.oblique);
  // Corners in the text's frame around the anchor; Backward mirrors the
  // glyphs about the anchor's vertical (within the span for Aligned and
  // Fit, whose two points fix where the text lies), UpsideDown about its
  // horizontal.
  const bool spans = mode == 3 || mode == 5;
  std::vector<Vec3> corners;
  for (const auto& [fx, fy] : {std::pair{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}) {
    const double y = (fy - vfrac) * h;
    double x = (fx - hfrac) * w + (fy * h) * slant;
    if (d.backward && !spans) x = -x;
    corners.push_back(anchor + dir * x + up * (d.upside_down ? -y : y));
  }
  return corners;
}

// A block reference: its block's entities in every cell of its grid, then its visible attributes.
static void AddBlockRef(const BlockRef* br, const Matrix4* place, std::vector<Primitive>* out, int depth) {
  const auto& d = br->data();
  if (d.block) {
    const int columns = std::max(1, d.columns), rows = std::max(1, d.rows);
    // Beyond this many cells only the corner cells count (they bound the
    // grid); selection by parts then sees the corners only.
    const bool all_cells = int64_t{columns} * rows <= 4096;
    for (int r = 0; r < rows; ++r) {
      for (int col = 0; col < columns; ++col) {
        const bool corner = (r == 0 || r == rows - 1) && (col == 0 || col == columns - 1);
        if (!all_cells && !corner) continue;
        Matrix4 m = BlockRefCellMatrix(d, col, r);
        if (place) m = *place * m;
        for (const Entity* inner : d.block->entities()) {
          if (inner->erased() || As<AttributeDef>(inner)) continue;
          AppendPrimitives(*inner, &m, out, depth + 1);
        }
      }
    }
  }
  for (const AttributeRef* att : br->attributes()) {
    if (att->erased() || (att->data().mode & kAttInvisible)) continue;
    AppendPrimitives(*att, place, out, depth + 1);
  }
}

void AppendPrimitives(const Entity& entity, const Matrix4* place, std::vector<Primitive>* out,
                      int depth) {
  if (depth > kMaxBlockNesting) return;
  Sink sink(place, out);
  switch (entity.Kind()) {
    case EntityKind::kLine: {
      const auto* l = static_cast<const Line*>(&entity);
      const auto& d = l->data();
      sink.AddThick(Curve(Linear{d.start, d.end}), d.normal, d.thickness);
      break;
    }
    case EntityKind::kCircle: {
      const auto* c = static_cast<const Circle*>(&entity);
      const auto& d = c->data();
      sink.AddThick(Curve(GArc::Circle(d.center, d.radius, d.normal)), d.normal, d.thickness);
      break;
    }
    case EntityKind::kArc: {
      const auto* a = static_cast<const host::Arc*>(&entity);
      const auto& d = a->data();
      sink.AddThick(Curve(GArc{d.center, d.radius, d.normal, d.start_angle, d.end_angle}), d.normal,
                    d.thickness);
      break;
    }
    case EntityKind::kEllipse: {
      const auto* e = static_cast<const host::Ellipse*>(&entity);
      const auto& d = e->data();
      sink.Add(Curve(geometry::Ellipse{d.center, d.major_axis, d.radius_ratio, d.normal,
                                       d.start_param, d.end_param}));
      break;
    }
    case EntityKind::kLwPolyline: {
      const auto* pl = static_cast<const LwPolyline*>(&entity);
      const auto& d = pl->data();
      AddPolyline(sink, LwVertices(d), d.closed, d.normal, d.elevation, d.thickness);
      break;
    }
    case EntityKind::kPoint: {
      const auto* pt = static_cast<const PointEntity*>(&entity);
      sink.Add(pt->data().position);
      break;
    }
    case EntityKind::kText: {
      const auto* t = static_cast<const Text*>(&entity);
      if (auto box = TextBox(t->data(), t->data().text)) sink.Add(Outline{*box});
      break;
    }
    case EntityKind::kAttributeDef: {
      const auto* ad = static_cast<const AttributeDef*>(&entity);
      if (auto box = TextBox(ad->data(), ad->data().tag)) sink.Add(Outline{*box});
      break;
    }
    case EntityKind::kAttributeRef: {
      const auto* ar = static_cast<const AttributeRef*>(&entity);
      if (auto box = TextBox(ar->data(), ar->data().text)) sink.Add(Outline{*box});
      break;
    }
    case EntityKind::kMText: {
      const auto* mt = static_cast<const MText*>(&entity);
      AddMText(sink, mt->data());
      break;
    }
    case EntityKind::kBlockRef: {
      AddBlockRef(static_cast<const BlockRef*>(&entity), place, out, depth);
      break;
    }
    case EntityKind::kHatch: {
      const auto* h = static_cast<const Hatch*>(&entity);
      const auto& d = h->data();
      for (const HatchLoop& loop : d.loops) {
        std::vector<BulgeVertex> v;
        for (size_t i = 0; i < loop.points.size(); ++i) {
          v.push_back({loop.points[i], i < loop.bulges.size() ? loop.bulges[i] : 0.0});
        }
        AddPolyline(sink, v, true, d.normal, d.elevation, 0);
      }
      break;
    }
    case EntityKind::kDimension: {
      const auto* dim = static_cast<const Dimension*>(&entity);
      AddDimension(sink, dim->data(), place, depth, out);
      break;
    }
    case EntityKind::kWipeout: {
      const auto* wo = static_cast<const Wipeout*>(&entity);
      const auto& d = wo->data();
      const Vec3 u = d.u * d.width_pixels, v = d.v * d.height_pixels;
      sink.Add(Outline{{d.origin, d.origin + u, d.origin + u + v, d.origin + v}});
      break;
    }
    case EntityKind::kRasterImage: {
      const auto* ri = static_cast<const RasterImage*>(&entity);
      const auto& d = ri->data();
      const Vec3 u = d.u * d.width_pixels, v = d.v * d.height_pixels;
      sink.Add(Outline{{d.origin, d.origin + u, d.origin + u + v, d.origin + v}});
      break;
    }
    case EntityKind::kGeneric: {
      const auto* g = static_cast<const GenericEntity*>(&entity);
      AddGeneric(sink, g->data());
      break;
    }
  }
}

ShapeExtents ExtentsOf(const std::vector<Primitive>& primitives) {
  ShapeExtents r;
  for (const Primitive& p : primitives) {
    if (const auto* c = std::get_if<Curve>(&p)) {
      if (const auto* l = std::get_if<Linear>(c)) {
        if (l->kind != LinearKind::kSegment) {
          r.unbounded = true;
          continue;
        }
        r.box.Extend(l->start);
        r.box.Extend(l->end);
      } else if (const auto* a = std::get_if<GArc>(c)) {
        r.box.Extend(geometry::Extents(*a));
      } else {
        r.box.Extend(geometry::Extents(std::get<geometry::Ellipse>(*c)));
      }
    } else if (const auto* o = std::get_if<Outline>(&p)) {
      for (const Vec3& q : o->points) r.box.Extend(q);
    } else {
      r.box.Extend(std::get<Vec3>(p));
    }
  }
  return r;
}

geometry::PlanShape PlanOf(const std::vector<Primitive>& primitives, const Matrix4& to_plan) {
  geometry::PlanShape shape;
  for (const Primitive& p : primitives) {
    if (const auto* c = std::get_if<Curve>(&p)) {
      geometry::Append(&shape, geometry::PlanOfCurve(*c, to_plan));
    } else if (const auto* o = std::get_if<Outline>(&p)) {
      geometry::Append(&shape, geometry::PlanOfPolygon(o->points, to_plan));
    } else {
      geometry::Append(&shape, geometry::PlanOfPoint(std::get<Vec3>(p), to_plan));
    }
  }
  return shape;
}

}  // namespace tovik::host
