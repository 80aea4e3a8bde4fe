// Explode: a polyline into lines and arcs, a block reference into
// transformed copies of its definition's entities. The new entities go to
// the owner of the original, which stays.
#include <optional>

#include "frame/automation_error.h"
#include "geometry/bulge.h"
#include "geometry/ellipse.h"
#include "host/copying/clone.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/shapes/entity_shapes.h"
#include "host/shapes/geometry_context.h"
#include "host/shapes/geometry_members.h"

namespace tovik::host {

using geometry::Matrix4;
using geometry::Vec3;

namespace {

// A piece of a polyline: same layer, colour and other properties, no
// extended data, widths dropped.
template <class K>
K* NewPiece(const Entity& source, BlockRecord* block) {
  Document* doc = block->document();
  K* piece = doc->Create<K>();
  CopyEntityBase(source, piece);
  piece->SetXData(nullptr);
  block->Append(piece);
  return piece;
}

void ExplodePolyline(const Entity& source, std::span<const geometry::BulgeVertex> v, bool closed,
                     const Vec3& normal, double elevation, double thickness,
                     std::vector<Entity*>* out) {
  BlockRecord* block = source.block();
  const size_t n = v.size() < 2 ? 0 : (closed ? v.size() : v.size() - 1);
  for (size_t i = 0; i < n; ++i) {
    auto seg = geometry::SegmentInWcs(v, closed, i, normal, elevation);
    if (!seg) continue;
    if (seg->arc) {
      auto* arc = NewPiece<host::Arc>(source, block);
      const geometry::Arc& a = *seg->arc;
      arc->mutable_data() = {a.center, a.radius, geometry::NormalizeAngle(a.start_angle),
                             geometry::NormalizeAngle(a.end_angle), a.normal, thickness};
      out->push_back(arc);
    } else {
      auto* line = NewPiece<Line>(source, block);
      line->mutable_data() = {seg->start, seg->end, normal, thickness};
      out->push_back(line);
    }
  }
}

// The copy of `inner` placed by m in `block`: circles and arcs under a
// non-uniform m become ellipses.
Entity* PlacedCopy(const Entity& inner, const Matrix4& m, BlockRecord* block, bool readable) {
  std::optional<geometry::Arc> arc;
  if (const auto* c = As<Circle>(&inner)) {
    arc = geometry::Arc::Circle(c->data().center, c->data().radius, c->data().normal);
  } else if (const auto* a = As<host::Arc>(&inner)) {
    const auto& d = a->data();
    arc = geometry::Arc{d.center, d.radius, d.normal, d.start_angle, d.end_angle};
  }
  if (arc && !m.UniformScale()) {
    auto e = geometry::EllipseFromArc(*arc);
    auto t = e ? geometry::TransformEllipse(*e, m) : std::nullopt;
    if (!t) throw HostError(HostFailure::kInvalidInput);
    auto* ellipse = NewPiece<host::Ellipse>(inner, block);
    ellipse->SetXData(inner.xdata() ? std::make_shared<const XData>(*inner.xdata()) : nullptr);
    ellipse->mutable_data() = {t->center, t->major_axis, t->normal, t->ratio, t->start_param,
                               t->end_param};
    return ellipse;
  }
  Entity* copy = inner.CloneInto(block);
  try {
    TransformEntity(*copy, m, readable);
  } catch (const AutomationError&) {
    copy->Erase();
    throw;
  }
  return copy;
}

void ExplodeReference(const BlockRef& ref, std::vector<Entity*>* out) {
  const BlockRef::Data& d = ref.data();
  if (!d.block) return;
  if (!d.block->data().explodable) throw HostError(HostFailure::kNotApplicable);
  BlockRecord* owner = ref.block();
  if (!owner) throw HostError(HostFailure::kNotApplicable);
  const bool readable = KeepTextReadable(*ref.document());
  // Attribute definitions come back with their default text; the
  // reference's attribute references are dropped. Nested references are
  // copied, not exploded.
  const std::vector<Entity*> contents = d.block->entities();
  for (int r = 0; r < std::max(1, d.rows); ++r) {
    for (int c = 0; c < std::max(1, d.columns); ++c) {
      const Matrix4 m = BlockRefCellMatrix(d, c, r);
      for (const Entity* inner : contents) {
        if (!inner->erased()) out->push_back(PlacedCopy(*inner, m, owner, readable));
      }
    }
  }
}

}  // namespace

std::vector<Entity*> ExplodeEntity(Entity& entity) {
  entity.CheckLive();
  std::vector<Entity*> out;
  if (const auto* pl = As<LwPolyline>(&entity)) {
    const auto& d = pl->data();
    std::vector<geometry::BulgeVertex> v;
    for (const auto& x : d.vertices) v.push_back({x.point, x.bulge});
    if (!entity.block()) throw HostError(HostFailure::kNotApplicable);
    ExplodePolyline(entity, v, d.closed, d.normal, d.elevation, d.thickness, &out);
  } else if (const auto* br = As<BlockRef>(&entity)) {
    // A part that cannot be placed (a nested reference the placing matrix
    // would shear) refuses the whole explode: the pieces made before it go.
    try {
      ExplodeReference(*br, &out);
    } catch (const AutomationError&) {
      for (Entity* piece : out) piece->Erase();
      throw;
    }
  } else if (const auto* g = As<GenericEntity>(&entity);
             g && (g->data().kind == GenericKind::kPolyline2d ||
                   g->data().kind == GenericKind::kPolyline3d)) {
    const auto& d = g->data();
    if (!entity.block()) throw HostError(HostFailure::kNotApplicable);
    if (d.kind == GenericKind::kPolyline2d) {
      std::vector<geometry::BulgeVertex> v;
      for (size_t i = 0; i < d.points.size(); ++i) {
        v.push_back({geometry::Xy(d.points[i]), i < d.bulges.size() ? d.bulges[i] : 0.0});
      }
      ExplodePolyline(entity, v, d.closed, d.normal, d.elevation, d.thickness, &out);
    } else {
      const size_t n = d.points.size();
      for (size_t i = 0; n >= 2 && i < (d.closed ? n : n - 1); ++i) {
        auto* line = NewPiece<Line>(entity, entity.block());
        line->mutable_data().start = d.points[i];
        line->mutable_data().end = d.points[(i + 1) % n];
        out.push_back(line);
      }
    }
  } else {
    throw errors::NotSupported();
  }
  return out;
}

}  // namespace tovik::host
