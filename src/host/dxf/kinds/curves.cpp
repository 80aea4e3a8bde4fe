// Lines, circles, arcs, ellipses, points and lightweight polylines: read,
// written whole, and the groups patched into the records read.
#include "host/dxf/kinds/kinds.h"

#include <cmath>

#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {

using geometry::Vec3;

std::shared_ptr<Entity> LoadLine(Loader& loader, const Record&, const RecordFields& r) {
  auto e = loader.Make<Line>();
  auto& d = e->mutable_data();
  d.start = PointOr(r, 10);
  d.end = PointOr(r, 11);
  d.normal = NormalOf(r);
  d.thickness = RealOr(r, 39, 0);
  return e;
}

std::shared_ptr<Entity> LoadCircle(Loader& loader, const Record&, const RecordFields& r) {
  Vec3 normal = NormalOf(r);
  auto e = loader.Make<Circle>();
  e->mutable_data() = {Wcs(PointOr(r, 10), normal), RealOr(r, 40, 1), normal, RealOr(r, 39, 0)};
  return e;
}

std::shared_ptr<Entity> LoadArc(Loader& loader, const Record&, const RecordFields& r) {
  Vec3 normal = NormalOf(r);
  auto e = loader.Make<Arc>();
  e->mutable_data() = {Wcs(PointOr(r, 10), normal), RealOr(r, 40, 1),
                       NormalAngle(RealOr(r, 50, 0) * kDegToRad),
                       NormalAngle(RealOr(r, 51, 0) * kDegToRad), normal, RealOr(r, 39, 0)};
  return e;
}

std::shared_ptr<Entity> LoadEllipse(Loader& loader, const Record&, const RecordFields& r) {
  auto e = loader.Make<Ellipse>();
  auto& d = e->mutable_data();
  d.center = PointOr(r, 10);
  d.major_axis = PointOr(r, 11, {1, 0, 0});
  d.normal = NormalOf(r);
  d.radius_ratio = RealOr(r, 40, 1);
  d.start_param = RealOr(r, 41, 0);
  d.end_param = RealOr(r, 42, geometry::kTwoPi);
  return e;
}

std::shared_ptr<Entity> LoadPoint(Loader& loader, const Record&, const RecordFields& r) {
  auto e = loader.Make<PointEntity>();
  e->mutable_data() = {PointOr(r, 10), NormalOf(r), RealOr(r, 39, 0)};
  return e;
}

std::shared_ptr<Entity> LoadLwPolyline(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<LwPolyline>();
  auto& d = e->mutable_data();
  int64_t flags = IntOr(r, 70, 0);
  d.closed = (flags & 1) != 0;
  d.plinegen = (flags & 128) != 0;
  d.constant_width = RealOr(r, 43, 0);
  d.elevation = RealOr(r, 38, 0);
  d.thickness = RealOr(r, 39, 0);
  d.normal = NormalOf(r);
  for (const Tag& t : record.Body()) {
    if (t.code == 10) {
      d.vertices.push_back({{t.real, 0}});
    } else if (!d.vertices.empty()) {
      auto& v = d.vertices.back();
      if (t.code == 20) v.point.y = NumberOf(t);
      if (t.code == 40) v.start_width = NumberOf(t);
      if (t.code == 41) v.end_width = NumberOf(t);
      if (t.code == 42) v.bulge = NumberOf(t);
    }
  }
  return e;
}

void DbWriter::EmitLineGeometry(const Line& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kLine).subclass);
  PutThickness(d.thickness);
  PutPoint(10, d.start);
  PutPoint(11, d.end);
  PutNormal(d.normal);
}

void DbWriter::EmitCircleGeometry(const Circle& o) {
  const auto& d = o.data();
  PutCircleGroups(d.center, d.radius, d.normal, d.thickness);
}

void DbWriter::EmitArcGeometry(const Arc& o) {
  const auto& d = o.data();
  PutCircleGroups(d.center, d.radius, d.normal, d.thickness);
  PutString(100, InfoOf(EntityKind::kArc).second_subclass);
  PutReal(50, d.start_angle * kRadToDeg);
  PutReal(51, d.end_angle * kRadToDeg);
}

void DbWriter::PutCircleGroups(const Vec3& center, double radius, const Vec3& normal,
                               double thickness) {
  PutString(100, InfoOf(EntityKind::kCircle).subclass);
  PutThickness(thickness);
  PutPoint(10, ToOcs(center, normal));
  PutReal(40, radius);
  PutNormal(normal);
}

void DbWriter::EmitPointGeometry(const PointEntity& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kPoint).subclass);
  PutPoint(10, d.position);
  PutThickness(d.thickness);
  PutNormal(d.normal);
}

void DbWriter::EmitEllipseGeometry(const Ellipse& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kEllipse).subclass);
  PutPoint(10, d.center);
  PutPoint(11, d.major_axis);
  PutPoint(210, d.normal);
  PutReal(40, d.radius_ratio);
  PutReal(41, d.start_param);
  PutReal(42, d.end_param);
}

void DbWriter::EmitLwPolylineGeometry(const LwPolyline& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kLwPolyline).subclass);
  PutInt(90, static_cast<int64_t>(d.vertices.size()));
  PutInt(70, (d.closed ? 1 : 0) | (d.plinegen ? 128 : 0));
  bool widths = false;
  for (const auto& v : d.vertices) widths |= v.start_width != 0 || v.end_width != 0;
  if (!widths && d.constant_width != 0) PutReal(43, d.constant_width);
  if (d.elevation != 0) PutReal(38, d.elevation);
  PutThickness(d.thickness);
  for (const auto& v : d.vertices) {
    PutPoint2(10, v.point.x, v.point.y);
    if (widths) {
      PutReal(40, v.start_width);
      PutReal(41, v.end_width);
    }
    if (v.bulge != 0) PutReal(42, v.bulge);
  }
  PutNormal(d.normal);
}

void ModelledLine(const Line& o, ModelledGroups& g) {
  g.Point(10, o.data().start);
  g.Point(11, o.data().end);
}

void ModelledCircle(const Circle& o, ModelledGroups& g) {
  const auto& d = o.data();
  g.Point(10, ToOcs(d.center, d.normal));
  g.Real(40, d.radius);
}

void ModelledArc(const Arc& o, ModelledGroups& g) {
  const auto& d = o.data();
  g.Point(10, ToOcs(d.center, d.normal));
  g.Real(40, d.radius);
  g.Real(50, d.start_angle * kRadToDeg);
  g.Real(51, d.end_angle * kRadToDeg);
}

void ModelledPoint(const PointEntity& o, ModelledGroups& g) { g.Point(10, o.data().position); }

void ModelledEllipse(const Ellipse& o, ModelledGroups& g) {
  const auto& d = o.data();
  g.Point(10, d.center);
  g.Point(11, d.major_axis);
  g.Real(40, d.radius_ratio);
}

// Whether the polyline's vertices differ from those of the record: they are
// compared as a whole, and a changed list is written anew.
bool VerticesChanged(const LwPolyline::Data& d, std::span<const Tag> body) {
  size_t k = 0;
  const auto& vs = d.vertices;
  auto differs = [](double have, double read) {
    return std::fabs(have - read) > 1e-10 * std::max(1.0, std::fabs(read));
  };
  for (const Tag& t : body) {
    if (t.code == 10) {
      if (k >= vs.size() || differs(vs[k].point.x, t.real)) return true;
      ++k;
    } else if (t.code == 20 && k > 0 && k <= vs.size() && differs(vs[k - 1].point.y, t.real)) {
      return true;
    }
  }
  return k != vs.size();
}

void DbWriter::PutVertices(const LwPolyline::Data& d) {
  for (const auto& v : d.vertices) {
    PutReal(10, v.point.x);
    PutReal(20, v.point.y);
    if (v.start_width != 0 || v.end_width != 0) {
      PutReal(40, v.start_width);
      PutReal(41, v.end_width);
    }
    if (v.bulge != 0) PutReal(42, v.bulge);
  }
}

}  // namespace tovik::host::dxf
