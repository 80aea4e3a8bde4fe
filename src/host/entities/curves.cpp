// Members of lines, circles, arcs, ellipses, points and lightweight
// polylines.
#include <cmath>
#include <numbers>

#include "frame/conversions.h"
#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "geometry/ellipse.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"

namespace tovik::host {
namespace {

using geometry::Vec3;

geometry::Arc ArcOf(const Arc& a) {
  const Arc::Data& d = a.data();
  return {d.center, d.radius, d.normal, d.start_angle, d.end_angle};
}

double TotalAngle(const Arc::Data& d) {
  double sweep = geometry::NormalizeAngle(d.end_angle - d.start_angle);
  return sweep == 0 ? geometry::kTwoPi : sweep;  // (0, 2π]
}

std::vector<geometry::BulgeVertex> BulgeVertices(const LwPolyline::Data& d) {
  std::vector<geometry::BulgeVertex> out;
  out.reserve(d.vertices.size());
  for (const auto& v : d.vertices) out.push_back({v.point, v.bulge});
  return out;
}

size_t VertexIndex(const LwPolyline& s, const Variant& index, std::string_view member) {
  int32_t i = LongArg(index, {"Index", member});
  if (i < 0 || static_cast<size_t>(i) >= s.data().vertices.size()) {
    throw InvalidArgument("Index", member);
  }
  return static_cast<size_t>(i);
}

void LetCoordinates(LwPolyline& s, CallArgs&, Variant& v) {
  std::vector<double> xy = DoublesArg(v, {"Coordinates", "Coordinates"});
  if (xy.size() < 4 || xy.size() % 2 != 0) throw InvalidArgument("Coordinates", "Coordinates");
  s.Touch();
  auto& vertices = s.mutable_data().vertices;
  // Extra vertices are cut, new ones come with bulge 0.
  vertices.resize(xy.size() / 2);
  for (size_t i = 0; i < vertices.size(); ++i) vertices[i].point = {xy[2 * i], xy[2 * i + 1]};
}

void RegisterPolylineMembers(MemberTable<LwPolyline>& t) {
  using K = LwPolyline;
  t.Property(
      "Coordinates",
      [](K& s, CallArgs&) {
        std::vector<double> xy;
        for (const auto& v : s.data().vertices) {
          xy.push_back(v.point.x);
          xy.push_back(v.point.y);
        }
        return DoublesValue(xy);
      },
      LetCoordinates);
  t.Property(
      "Coordinate",
      [](K& s, CallArgs& a) {
        const auto& p = s.data().vertices[VertexIndex(s, a[0], "Coordinate")].point;
        return Point2Value(p.x, p.y);
      },
      [](K& s, CallArgs& a, Variant& v) {
        size_t i = VertexIndex(s, a[0], "Coordinate");
        Vec3 p = Point2or3Arg(v, {"Coordinate", "Coordinate"});
        s.Touch();
        s.mutable_data().vertices[i].point = {p.x, p.y};
      },
      nullptr, 1, 1);
  t.Property("Closed", GetBoolField<K, &K::Data::closed>,
             LetBoolField<K, &K::Data::closed, "Closed">);
  t.Method(
      "GetBulge",
      [](K& s, CallArgs& a) {
        return Variant(s.data().vertices[VertexIndex(s, a[0], "GetBulge")].bulge);
      },
      1, 1);
  t.Method(
      "SetBulge",
      [](K& s, CallArgs& a) {
        size_t i = VertexIndex(s, a[0], "SetBulge");
        double bulge = DoubleArg(a[1], {"Value", "SetBulge"});
        CheckDouble(bulge, Check::kAny);
        s.Touch();
        s.mutable_data().vertices[i].bulge = bulge;
        return Variant();
      },
      2, 2);
  t.Method(
      "AddVertex",
      [](K& s, CallArgs& a) {
        int32_t i = LongArg(a[0], {"Index", "AddVertex"});
        Vec3 p = Point2or3Arg(a[1], {"Point", "AddVertex"});
        auto& vertices = s.mutable_data().vertices;
        if (i < 0 || static_cast<size_t>(i) > vertices.size()) {
          throw InvalidArgument("Index", "AddVertex");
        }
        s.Touch();
        vertices.insert(vertices.begin() + i, LwPolyline::Vertex{{p.x, p.y}});
        return Variant();
      },
      2, 2);
  t.Property("ConstantWidth", GetDoubleField<K, &K::Data::constant_width>,
             LetDoubleField<K, &K::Data::constant_width, "ConstantWidth", Check::kNonNegative>);
  t.Property("Elevation", GetDoubleField<K, &K::Data::elevation>,
             LetDoubleField<K, &K::Data::elevation, "Elevation">);
  t.Property("Length", [](K& s, CallArgs&) {
    return Variant(geometry::PolylineLength(BulgeVertices(s.data()), s.data().closed));
  });
  t.Property("Area", [](K& s, CallArgs&) {
    return Variant(geometry::PolylineArea(BulgeVertices(s.data()), s.data().closed));
  });
  AddNormalMember(t);
  AddThicknessMember(t);
}

}  // namespace

const MemberTable<Line>& Line::Members() {
  static const MemberTable<Line> table = [] {
    MemberTable<Line> t;
    using K = Line;
    t.Property("StartPoint", GetPointField<K, &K::Data::start>,
               LetPointField<K, &K::Data::start, "StartPoint">);
    t.Property("EndPoint", GetPointField<K, &K::Data::end>,
               LetPointField<K, &K::Data::end, "EndPoint">);
    t.Property("Length", [](K& s, CallArgs&) {
      return Variant(geometry::Distance(s.data().start, s.data().end));
    });
    t.Property("Delta", [](K& s, CallArgs&) { return PointValue(s.data().end - s.data().start); });
    t.Property("Angle", [](K& s, CallArgs&) {
      Vec3 d = s.data().end - s.data().start;
      return Variant(geometry::NormalizeAngle(std::atan2(d.y, d.x)));
    });
    AddNormalMember(t);
    AddThicknessMember(t);
    return t;
  }();
  return table;
}

const MemberTable<Circle>& Circle::Members() {
  static const MemberTable<Circle> table = [] {
    MemberTable<Circle> t;
    using K = Circle;
    t.Property("Center", GetPointField<K, &K::Data::center>,
               LetPointField<K, &K::Data::center, "Center">);
    t.Property("Radius", GetDoubleField<K, &K::Data::radius>,
               LetDoubleField<K, &K::Data::radius, "Radius", Check::kPositive>);
    t.Property(
        "Diameter", [](K& s, CallArgs&) { return Variant(2 * s.data().radius); },
        [](K& s, CallArgs&, Variant& v) {
          double d = DoubleArg(v, {"Diameter", "Diameter"});
          CheckDouble(d, Check::kPositive);
          s.Touch();
          s.mutable_data().radius = d / 2;
        });
    t.Property("Circumference", [](K& s, CallArgs&) {
      return Variant(geometry::kTwoPi * s.data().radius);
    });
    // Area is writable on circles: it sets the radius.
    t.Property(
        "Area",
        [](K& s, CallArgs&) {
          return Variant(std::numbers::pi * s.data().radius * s.data().radius);
        },
        [](K& s, CallArgs&, Variant& v) {
          double area = DoubleArg(v, {"Area", "Area"});
          CheckDouble(area, Check::kPositive);
          s.Touch();
          s.mutable_data().radius = std::sqrt(area / std::numbers::pi);
        });
    AddNormalMember(t);
    AddThicknessMember(t);
    return t;
  }();
  return table;
}

const MemberTable<Arc>& Arc::Members() {
  static const MemberTable<Arc> table = [] {
    MemberTable<Arc> t;
    using K = Arc;
    t.Property("Center", GetPointField<K, &K::Data::center>,
               LetPointField<K, &K::Data::center, "Center">);
    t.Property("Radius", GetDoubleField<K, &K::Data::radius>,
               LetDoubleField<K, &K::Data::radius, "Radius", Check::kPositive>);
    t.Property("StartAngle", GetDoubleField<K, &K::Data::start_angle>,
               LetAngleField<K, &K::Data::start_angle, "StartAngle">);
    t.Property("EndAngle", GetDoubleField<K, &K::Data::end_angle>,
               LetAngleField<K, &K::Data::end_angle, "EndAngle">);
    t.Property("TotalAngle", [](K& s, CallArgs&) { return Variant(TotalAngle(s.data())); });
    t.Property("ArcLength", [](K& s, CallArgs&) {
      return Variant(s.data().radius * TotalAngle(s.data()));
    });
    t.Property("StartPoint", [](K& s, CallArgs&) {
      return PointValue(geometry::StartPoint(ArcOf(s)).value_or(s.data().center));
    });
    t.Property("EndPoint", [](K& s, CallArgs&) {
      return PointValue(geometry::EndPoint(ArcOf(s)).value_or(s.data().center));
    });
    t.Property("Area", [](K& s, CallArgs&) {
      double r = s.data().radius, a = TotalAngle(s.data());
      return Variant(0.5 * r * r * (a - std::sin(a)));
    });
    AddNormalMember(t);
    AddThicknessMember(t);
    return t;
  }();
  return table;
}

const MemberTable<Ellipse>& Ellipse::Members() {
  static const MemberTable<Ellipse> table = [] {
    MemberTable<Ellipse> t;
    using K = Ellipse;
    t.Property("Center", GetPointField<K, &K::Data::center>,
               LetPointField<K, &K::Data::center, "Center">);
    t.Property("MajorAxis", GetPointField<K, &K::Data::major_axis>,
               LetPointField<K, &K::Data::major_axis, "MajorAxis">);
    t.Property(
        "RadiusRatio", GetDoubleField<K, &K::Data::radius_ratio>,
        [](K& s, CallArgs&, Variant& v) {
          double r = DoubleArg(v, {"RadiusRatio", "RadiusRatio"});
          if (!(r > 0 && r <= 1)) throw HostError(HostFailure::kInvalidInput);
          s.Touch();
          s.mutable_data().radius_ratio = r;
        });
    t.Property("StartParameter", GetDoubleField<K, &K::Data::start_param>,
               LetAngleField<K, &K::Data::start_param, "StartParameter">);
    t.Property("EndParameter", GetDoubleField<K, &K::Data::end_param>,
               LetAngleField<K, &K::Data::end_param, "EndParameter">);
    t.Property("StartAngle", [](K& s, CallArgs&) {
      return Variant(geometry::AngleFromParameter(s.data().start_param, s.data().radius_ratio));
    });
    t.Property("EndAngle", [](K& s, CallArgs&) {
      return Variant(geometry::AngleFromParameter(s.data().end_param, s.data().radius_ratio));
    });
    t.Property("MajorRadius", [](K& s, CallArgs&) {
      return Variant(geometry::Length(s.data().major_axis));
    });
    t.Property("MinorRadius", [](K& s, CallArgs&) {
      return Variant(geometry::Length(s.data().major_axis) * s.data().radius_ratio);
    });
    // Normal is read-only on ellipses.
    t.Property("Normal", GetPointField<K, &K::Data::normal>);
    return t;
  }();
  return table;
}

const MemberTable<PointEntity>& PointEntity::Members() {
  static const MemberTable<PointEntity> table = [] {
    MemberTable<PointEntity> t;
    using K = PointEntity;
    t.Property("Coordinates", GetPointField<K, &K::Data::position>,
               LetPointField<K, &K::Data::position, "Coordinates">);
    AddNormalMember(t);
    AddThicknessMember(t);
    return t;
  }();
  return table;
}

const MemberTable<LwPolyline>& LwPolyline::Members() {
  static const MemberTable<LwPolyline> table = [] {
    MemberTable<LwPolyline> t;
    RegisterPolylineMembers(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
