// TransformEntity: an affine matrix applied to each entity kind the way the
// host applies Move, Rotate, Rotate3D, ScaleEntity, Mirror and TransformBy.
//
// Planar kinds keep their data in the OCS of their normal; the new normal is
// the transformed plane normal (inverse transpose), so a mirror in a plane
// holding the normal keeps it, and the in-plane handedness flips instead:
// bulges change sign, arcs swap their ends, block references take a negative
// X scale, and texts either read forward (MIRRTEXT 0) or show mirrored.
#include <cmath>

#include "frame/conversions.h"
#include "geometry/arc.h"
#include "geometry/ellipse.h"
#include "geometry/ocs.h"
#include "host/copying/clone.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/shapes/entity_shapes.h"
#include "host/shapes/geometry_members.h"
#include "host/tables/block.h"

namespace tovik::host {

using geometry::Matrix4;
using geometry::Vec3;

namespace {

[[noreturn]] void Refuse() { throw HostError(HostFailure::kInvalidInput); }

Vec3 NewNormal(const Matrix4& m, const Vec3& n) {
  auto r = m.TransformNormal(n);
  if (!r) Refuse();
  return *r;
}

// The OCS angle of WCS direction d in the plane of normal n.
double AngleIn(const Vec3& n, const Vec3& d) {
  const auto ax = geometry::ArbitraryAxis(n);
  if (!ax) Refuse();
  return geometry::NormalizeAngle(std::atan2(Dot(d, ax->y), Dot(d, ax->x)));
}

// The factor lengths scale by: exact for uniform matrices, the geometric
// mean of the three for others.
double LengthScale(const Matrix4& m) {
  if (auto s = m.UniformScale()) return *s;
  return std::cbrt(std::fabs(m.LinearDeterminant()));
}

Vec3 Unit(const Vec3& v) {
  auto u = geometry::Normalized(v);
  if (!u) Refuse();
  return *u;
}

// True when m reverses the in-plane orientation of a plane with normal n,
// seen from the transformed normal.
bool FlipsPlane(const Matrix4& m, const Vec3& n, const Vec3& new_normal) {
  const auto ax = geometry::ArbitraryAxis(n);
  if (!ax) Refuse();
  return Dot(Cross(m.TransformVector(ax->x), m.TransformVector(ax->y)), new_normal) < 0;
}

void TransformXData(DbObject& object, const Matrix4& m) {
  const XData* xdata = object.xdata();
  if (!xdata) return;
  auto copy = std::make_shared<XData>(*xdata);
  bool changed = false;
  for (XDataRun& run : *copy) {
    for (XDataItem& item : run.items) {
      auto point = [&item]() -> std::optional<Vec3> {
        if (!item.value.IsArray()) return std::nullopt;
        auto d = item.value.Array().ToDoubles();
        if (d.size() != 3) return std::nullopt;
        return Vec3{d[0], d[1], d[2]};
      };
      auto set_point = [&item](const Vec3& p) { item.value = Variant(SafeArray::OfDoubles({p.x, p.y, p.z})); };
      switch (item.code) {
        case 1011:  // world position: every part of the transform
          if (auto p = point()) set_point(m.TransformPoint(*p)), changed = true;
          break;
        case 1012:  // world displacement: no translation
          if (auto p = point()) set_point(m.TransformVector(*p)), changed = true;
          break;
        case 1013:  // world direction: rotation and mirror only
          if (auto p = point()) {
            if (auto u = geometry::Normalized(m.TransformVector(*p))) set_point(*u), changed = true;
          }
          break;
        case 1041:
        case 1042:  // distance and scale factor: scaled
          if (item.value.IsNumber()) {
            item.value = Variant(NumberOf(item.value) * LengthScale(m));
            changed = true;
          }
          break;
        default:
          break;
      }
    }
  }
  if (changed) object.SetXData(std::move(copy));
}

void TransformPolyline(std::vector<geometry::Vec2*> points, std::vector<double*> bulges,
                       std::vector<double*> widths, double* elevation, Vec3* normal,
                       const Matrix4& m) {
  const Vec3 n2 = NewNormal(m, *normal);
  const bool flip = FlipsPlane(m, *normal, n2);
  const auto ax = geometry::ArbitraryAxis(*normal);
  const Vec3 u = m.TransformVector(ax->x), v = m.TransformVector(ax->y);
  const bool conformal = geometry::IsClose(Length(u), Length(v), 1e-12, 1e-9) &&
                         std::fabs(Dot(u, v)) <= 1e-9 * Length(u) * Length(v);
  for (double* b : bulges) {
    if (*b != 0 && !conformal) Refuse();  // a bulge cannot become elliptical
  }
  double z = *elevation;
  for (size_t i = 0; i < points.size(); ++i) {
    const Vec3 w = m.TransformPoint(*geometry::OcsToWcs(geometry::Lift(*points[i], *elevation), *normal));
    const Vec3 o = *geometry::WcsToOcs(w, n2);
    *points[i] = geometry::Xy(o);
    if (i == 0) z = o.z;
  }
  for (double* b : bulges) *b = flip ? -*b : *b;
  const double s = std::sqrt(Length(u) * Length(v));
  for (double* w : widths) *w *= s;
  *elevation = z;
  *normal = n2;
}

}  // namespace

// Moves a text's frame by m. `text` is the shown string (for its width).
void TransformText(TextData& d, const Matrix4& m, bool readable, std::string_view text) {
  const auto ax = geometry::ArbitraryAxis(d.normal);
  if (!ax) Refuse();
  const Vec3 dir = ax->x * std::cos(d.rotation) + ax->y * std::sin(d.rotation);
  const Vec3 up = Cross(ax->z, dir);
  const Vec3 n2 = NewNormal(m, d.normal);
  const Vec3 dir2 = m.TransformVector(dir), up2 = m.TransformVector(up);
  const double width = TextWidth(d, text);
  const int mode = d.alignment_mode;
  const bool spans = mode == 3 || mode == 5;  // Aligned, Fit
  const Vec3 anchor = mode == 0 || spans ? d.insertion : d.alignment;
  Vec3 ins2 = m.TransformPoint(d.insertion), align2 = m.TransformPoint(d.alignment);
  Vec3 new_dir = Unit(dir2);
  const double up_len = Length(up2);
  if (!(up_len > 0)) Refuse();
  d.width_factor *= Length(dir2) / up_len;
  d.height *= up_len;
  if (Dot(Cross(dir2, up2), n2) < 0) {  // the text would show mirrored
    // Option A reverses the reading direction (mirror across the text's
    // up axis), option B keeps it and flips the lines over (across the
    // baseline); the one closer to the original direction is taken.
    const Vec3 dir_a = Unit(Cross(up2, n2));
    const bool use_a = Dot(dir_a, dir) > Dot(new_dir, dir) + 1e-12;
    if (!readable) {
      // Mirrored glyphs: the flag mirrors the box about the anchor. Aligned
      // and fit text keep their span; reversing it, the two points swap so
      // that the text still runs from the first to the second.
      if (use_a) {
        d.backward = !d.backward;
        new_dir = dir_a;
        if (spans) std::swap(ins2, align2);
      } else {
        d.upside_down = !d.upside_down;
      }
    } else {
      static constexpr double kH[15] = {0, .5, 1, 0, .5, 0, 0, .5, 1, 0, .5, 1, 0, .5, 1};
      static constexpr double kV[15] = {0, 0, 0, 0, .5, 0, 1, 1, 1, .5, .5, .5, 0, 0, 0};
      const int k = std::clamp(mode, 0, 14);
      Vec3 shift;
      if (spans && use_a) {
        std::swap(ins2, align2);
        new_dir = Unit(ins2 - align2) * -1.0;
      } else if (use_a) {
        new_dir = dir_a;
        shift = m.TransformPoint(anchor + dir * ((1 - 2 * kH[k]) * width)) - m.TransformPoint(anchor);
      } else {
        // The height shown: Aligned text grows with its span.
        double shown = d.height / up_len;
        if (mode == 3 && width > 0) shown *= Length(d.alignment - d.insertion) / width;
        shift = m.TransformPoint(anchor + up * ((1 - 2 * kV[k]) * shown)) - m.TransformPoint(anchor);
      }
      ins2 += shift;
      align2 += shift;
      d.oblique = -d.oblique;
    }
  }
  d.insertion = ins2;
  d.alignment = align2;
  d.normal = n2;
  d.rotation = AngleIn(n2, new_dir);
}

namespace {

void TransformBlockRef(BlockRef& r, const Matrix4& m, bool readable) {
  BlockRef::Data& d = r.mutable_data();
  const auto ocs = geometry::OcsToWcsMatrix(d.normal);
  if (!ocs) Refuse();
  const Matrix4 rot = *Matrix4::Rotation({}, {0, 0, 1}, d.rotation);
  const Matrix4 linear = m * *ocs * rot * Matrix4::Scaling(d.scale);
  const Vec3 ex = linear.TransformVector({1, 0, 0}), ey = linear.TransformVector({0, 1, 0}),
             ez = linear.TransformVector({0, 0, 1});
  const Vec3 n2 = NewNormal(m, d.normal);
  // A mirrored reference takes the negative scale on X, as the host does.
  const bool flip = Dot(Cross(ex, ey), n2) < 0;
  const double sx = flip ? -Length(ex) : Length(ex);
  const Vec3 x_axis = Unit(ex) * (flip ? -1.0 : 1.0);
  const Vec3 y_axis = Cross(n2, x_axis);
  if (std::fabs(Dot(Unit(ey), x_axis)) > 1e-9 || std::fabs(Dot(ez, x_axis)) > 1e-9 * Length(ez) ||
      std::fabs(Dot(ez, y_axis)) > 1e-9 * Length(ez)) {
    Refuse();  // a shear cannot be held by scale factors and a rotation
  }
  d.insertion = m.TransformPoint(d.insertion);
  d.scale = {sx, Dot(ey, y_axis), Dot(ez, n2)};
  d.rotation = AngleIn(n2, x_axis);
  d.normal = n2;
  if (d.rows > 1 || d.columns > 1) {
    // The grid offsets live in the rotated, unscaled frame; each spacing
    // takes the transformed axis' length, negative where a mirror reverses
    // it against the new frame.
    const Matrix4 grid = m * *ocs * rot;
    d.column_spacing *= Dot(grid.TransformVector({1, 0, 0}), x_axis);
    d.row_spacing *= Dot(grid.TransformVector({0, 1, 0}), y_axis);
  }
  for (AttributeRef* att : r.attributes()) {
    if (att->erased()) continue;
    att->Touch();
    TransformText(att->mutable_data(), m, readable, att->data().text);
    TransformXData(*att, m);
  }
}

void TransformGeneric(GenericEntity::Data& d, const Matrix4& m) {
  auto& p = d.points;
  if ((d.kind == GenericKind::kRay || d.kind == GenericKind::kXLine) && p.size() >= 2) {
    p[0] = m.TransformPoint(p[0]);
    p[1] = Unit(m.TransformVector(p[1]));
    return;
  }
  if (d.kind == GenericKind::kPolyline2d) {
    std::vector<geometry::Vec2> xy;
    for (const Vec3& q : p) xy.push_back(geometry::Xy(q));
    std::vector<geometry::Vec2*> pts;
    for (auto& q : xy) pts.push_back(&q);
    std::vector<double*> bulges;
    for (double& b : d.bulges) bulges.push_back(&b);
    TransformPolyline(pts, bulges, {}, &d.elevation, &d.normal, m);
    for (size_t i = 0; i < p.size(); ++i) p[i] = geometry::Lift(xy[i], p[i].z);
    return;
  }
  for (Vec3& q : p) q = m.TransformPoint(q);
  if (auto n = m.TransformNormal(d.normal)) d.normal = *n;
}

// Multiline text moves its frame and always reads forward.
void TransformMText(MText* mt, const Matrix4& m) {
  auto& d = mt->mutable_data();
  const auto ax = geometry::ArbitraryAxis(d.normal);
  if (!ax) Refuse();
  const Vec3 dir = ax->x * std::cos(d.rotation) + ax->y * std::sin(d.rotation);
  const Vec3 up = Cross(ax->z, dir);
  const Vec3 n2 = NewNormal(m, d.normal);
  Vec3 dir2 = m.TransformVector(dir);
  const Vec3 up2 = m.TransformVector(up);
  d.width *= Length(dir2);
  d.height *= Length(up2);
  // Multiline text always reads forward.
  if (Dot(Cross(dir2, up2), n2) < 0) dir2 = Cross(up2, n2);
  d.insertion = m.TransformPoint(d.insertion);
  d.normal = n2;
  d.rotation = AngleIn(n2, dir2);
}

// A hatch transforms its boundary loops in its plane, and its pattern's angle and scale.
void TransformHatch(Hatch* h, const Matrix4& m) {
  auto& d = h->mutable_data();
  const Vec3 old_normal = d.normal;
  const Vec3 n2 = NewNormal(m, old_normal);
  const auto ax = geometry::ArbitraryAxis(old_normal);
  const Vec3 pattern_dir = ax->x * std::cos(d.pattern_angle) + ax->y * std::sin(d.pattern_angle);
  for (HatchLoop& loop : d.loops) {
    std::vector<geometry::Vec2*> pts;
    std::vector<double*> bulges;
    for (auto& q : loop.points) pts.push_back(&q);
    loop.bulges.resize(loop.points.size(), 0.0);
    for (double& b : loop.bulges) bulges.push_back(&b);
    double elevation = d.elevation;
    Vec3 normal = old_normal;
    TransformPolyline(pts, bulges, {}, &elevation, &normal, m);
  }
  d.elevation = geometry::WcsToOcs(m.TransformPoint(*geometry::OcsToWcs({0, 0, d.elevation}, old_normal)), n2)->z;
  d.pattern_angle = AngleIn(n2, m.TransformVector(pattern_dir));
  d.pattern_scale *= LengthScale(m);
  d.normal = n2;
}

// A dimension moves its definition points and its picture's entities.
void TransformDimension(Dimension* dim, const Matrix4& m, bool readable) {
  auto& d = dim->mutable_data();
  const auto ax = geometry::ArbitraryAxis(d.normal);
  if (!ax) Refuse();
  const Vec3 n2 = NewNormal(m, d.normal);
  const Vec3 dir = ax->x * std::cos(d.rotation) + ax->y * std::sin(d.rotation);
  for (Vec3* p : {&d.p10, &d.p11, &d.p13, &d.p14, &d.p15, &d.p16}) *p = m.TransformPoint(*p);
  d.rotation = AngleIn(n2, m.TransformVector(dir));
  d.normal = n2;
  if (d.block && !d.block->IsLayout()) {
    for (Entity* inner : d.block->entities()) {
      if (!inner->erased()) TransformEntity(*inner, m, readable);
    }
  }
}

// A polyline's vertices, bulges and widths in its plane.
void TransformLwPolyline(LwPolyline* pl, const Matrix4& m) {
  auto& d = pl->mutable_data();
  std::vector<geometry::Vec2*> pts;
  std::vector<double*> bulges, widths{&d.constant_width};
  for (auto& v : d.vertices) {
    pts.push_back(&v.point);
    bulges.push_back(&v.bulge);
    widths.push_back(&v.start_width);
    widths.push_back(&v.end_width);
  }
  const Vec3 old_normal = d.normal;
  TransformPolyline(pts, bulges, widths, &d.elevation, &d.normal, m);
  d.thickness *= Dot(m.TransformVector(old_normal), d.normal);
}

void TransformKind(Entity& e, const Matrix4& m, bool readable) {
  switch (e.Kind()) {
    case EntityKind::kLine: {
      auto* l = static_cast<Line*>(&e);
      auto& d = l->mutable_data();
      const Vec3 n2 = NewNormal(m, d.normal);
      d.thickness *= Dot(m.TransformVector(d.normal), n2);
      d.start = m.TransformPoint(d.start);
      d.end = m.TransformPoint(d.end);
      d.normal = n2;
      break;
    }
    case EntityKind::kCircle: {
      auto* c = static_cast<Circle*>(&e);
      auto& d = c->mutable_data();
      auto t = geometry::TransformArc(geometry::Arc::Circle(d.center, d.radius, d.normal), m);
      if (!t) Refuse();
      d.thickness *= Dot(m.TransformVector(d.normal), t->normal);
      d.center = t->center;
      d.radius = t->radius;
      d.normal = t->normal;
      break;
    }
    case EntityKind::kArc: {
      auto* a = static_cast<host::Arc*>(&e);
      auto& d = a->mutable_data();
      auto t = geometry::TransformArc({d.center, d.radius, d.normal, d.start_angle, d.end_angle}, m);
      if (!t) Refuse();
      d.thickness *= Dot(m.TransformVector(d.normal), t->normal);
      d = {t->center, t->radius, geometry::NormalizeAngle(t->start_angle),
           geometry::NormalizeAngle(t->end_angle), t->normal, d.thickness};
      break;
    }
    case EntityKind::kEllipse: {
      auto* el = static_cast<host::Ellipse*>(&e);
      auto& d = el->mutable_data();
      auto t = geometry::TransformEllipse(
          {d.center, d.major_axis, d.radius_ratio, d.normal, d.start_param, d.end_param}, m);
      if (!t) Refuse();
      d = {t->center, t->major_axis, t->normal, t->ratio, t->start_param, t->end_param};
      break;
    }
    case EntityKind::kLwPolyline: {
      TransformLwPolyline(static_cast<LwPolyline*>(&e), m);
      break;
    }
    case EntityKind::kPoint: {
      auto* pt = static_cast<PointEntity*>(&e);
      auto& d = pt->mutable_data();
      d.position = m.TransformPoint(d.position);
      d.normal = NewNormal(m, d.normal);
      break;
    }
    case EntityKind::kText: {
      auto* t = static_cast<Text*>(&e);
      TransformText(t->mutable_data(), m, readable, t->data().text);
      break;
    }
    case EntityKind::kAttributeDef: {
      auto* ad = static_cast<AttributeDef*>(&e);
      TransformText(ad->mutable_data(), m, readable, ad->data().tag);
      break;
    }
    case EntityKind::kAttributeRef: {
      auto* ar = static_cast<AttributeRef*>(&e);
      TransformText(ar->mutable_data(), m, readable, ar->data().text);
      break;
    }
    case EntityKind::kMText: {
      TransformMText(static_cast<MText*>(&e), m);
      break;
    }
    case EntityKind::kBlockRef: {
      auto* br = static_cast<BlockRef*>(&e);
      TransformBlockRef(*br, m, readable);
      break;
    }
    case EntityKind::kHatch: {
      TransformHatch(static_cast<Hatch*>(&e), m);
      break;
    }
    case EntityKind::kDimension: {
      TransformDimension(static_cast<Dimension*>(&e), m, readable);
      break;
    }
    case EntityKind::kWipeout: {
      auto* wo = static_cast<Wipeout*>(&e);
      auto& d = wo->mutable_data();
      d.origin = m.TransformPoint(d.origin);
      d.u = m.TransformVector(d.u);
      d.v = m.TransformVector(d.v);
      break;
    }
    case EntityKind::kRasterImage: {
      auto* ri = static_cast<RasterImage*>(&e);
      auto& d = ri->mutable_data();
      d.origin = m.TransformPoint(d.origin);
      d.u = m.TransformVector(d.u);
      d.v = m.TransformVector(d.v);
      break;
    }
    case EntityKind::kGeneric: {
      auto* g = static_cast<GenericEntity*>(&e);
      TransformGeneric(g->mutable_data(), m);
      break;
    }
  }
}

}  // namespace

// A dimension's copy gets its own picture block: the transforms move a
// picture's entities in place, so a shared one would drag the original's
// picture along with the copy's (Mirror, and Copy followed by an edit).
Entity* Dimension::CloneInto(BlockRecord* block) const {
  auto* copy = static_cast<Dimension*>(CloneEntity(*this, block));
  const BlockRecord* picture = data_.block;
  if (picture && !picture->IsLayout()) {
    BlockRecord* own = block->document()->AddAnonymousBlock(picture->data().origin);
    for (const Entity* e : picture->entities()) {
      if (!e->erased()) e->CloneInto(own);
    }
    copy->mutable_data().block = own;
  }
  return copy;
}

void TransformEntity(Entity& entity, const Matrix4& m, bool readable_text) {
  if (!m.IsFinite() || !m.Inverse()) Refuse();
  entity.Touch();
  // Each kind checks what it cannot hold before it writes.
  TransformKind(entity, m, readable_text);
  TransformXData(entity, m);
}

}  // namespace tovik::host
