// SSDimensions: the axis-aligned box around a DynamicSS's visible members.
#include <cmath>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/value_helpers.h"
#include "geometry/vector_service.h"
#include "selection/dynamic_ss.h"
#include "toolkit/entity_extents.h"

namespace tovik {
namespace {

using geometry::Vec3;

bool NearlyEqual(double a, double b) {
  double tolerance = 0;
  return TolerantEqual(Variant(a), Variant(b), tolerance);
}

// An optional by-reference argument read with its default.
bool BoolOr(const Variant& v, bool fallback) { return v.IsMissing() ? fallback : CBool(v); }
double DoubleOr(const Variant& v, double fallback) { return v.IsMissing() ? fallback : CDbl(v); }

}  // namespace

std::shared_ptr<DynamicSS> SSDimensions::Owner() const {
  std::shared_ptr<DynamicSS> owner = owner_.lock();
  if (!owner) throw errors::ObjectNotSet();
  return owner;
}

std::shared_ptr<Dictionary> SSDimensions::mCollection() const { return Owner()->EntityTable(); }

void SSDimensions::GetBoundingBox(BoxOut out, const BoxOptions& options) {
  std::shared_ptr<DynamicSS> owner = Owner();
  if (owner->Count() == 0) {
    out.height = 0;
    out.width = 0;
    return;
  }
  bool first = true;
  ResumeNext trap;
  for (int32_t i = 0; i < owner->size(); ++i) {
    const Variant& member = owner->At(i);
    // An entry without a live entity (erased, or left by a keyed read of
    // an unknown handle) is passed over like a hidden one.
    bool visible = false;
    if (!trap([&] { visible = CBool(GetProperty(member.Object(), "Visible")); }) || !visible) {
      continue;
    }
    Variant low, high;
    if (!EntityExtents(member.Object(), low, high)) continue;
    if (first) {
      AssignValue(out.min_p, low);
      AssignValue(out.max_p, high);
      first = false;
    } else {
      ExtendExtents(out.min_p, out.max_p, low);
      ExtendExtents(out.min_p, out.max_p, high);
    }
  }
  Vec3 low = VectorOf(out.min_p);
  Vec3 high = VectorOf(out.max_p);
  // A flat box gets some height (or width) for framing: 1/8 of its
  // diagonal on each side; a single point stays a point.
  const double d = geometry::Distance(low, high);
  if (NearlyEqual(low.y, high.y)) {
    low.y -= d / 8;
    high.y += d / 8;
  } else if (NearlyEqual(low.x, high.x)) {
    low.x -= d / 8;
    high.x += d / 8;
  }
  if (!options.non_zero_z) {
    low.z = 0;
    high.z = 0;
  }
  const Vec3 centre = (low + high) * 0.5;
  const double s = options.shrink_scale;
  if (options.shrink_absolute && s != 0) {
    low = {low.x - s, low.y - s, low.z};
    high = {high.x + s, high.y + s, high.z};
  } else if (!options.shrink_absolute && s != 1) {
    low = centre + (low - centre) * s;
    high = centre + (high - centre) * s;
  }
  out.min_p = PointOf(low);
  out.max_p = PointOf(high);
  out.center = PointOf(centre);
  out.height = high.y - low.y;
  out.width = high.x - low.x;
}

Variant SSDimensions::Centre(bool suppress_z) {
  if (Owner()->Count() == 0) return Variant();
  Variant centre;
  double height = 0, width = 0;
  GetBoundingBox({last_min_, last_max_, centre, height, width}, {.non_zero_z = !suppress_z});
  return PointOf((VectorOf(last_min_) + VectorOf(last_max_)) * 0.5);
}

double SSDimensions::Height() {
  if (Owner()->Count() == 0) return 0;
  Variant centre;
  double height = 0, width = 0;
  GetBoundingBox({last_min_, last_max_, centre, height, width}, {});
  return height;
}

double SSDimensions::Width() {
  if (Owner()->Count() == 0) return 0;
  Variant centre;
  double height = 0, width = 0;
  GetBoundingBox({last_min_, last_max_, centre, height, width}, {});
  return width;
}

const MemberTable<SSDimensions>& SSDimensions::Members() {
  static const MemberTable<SSDimensions> table = [] {
    using S = SSDimensions;
    MemberTable<S> t;
    t.Property("mCollection", [](S& s, CallArgs&) { return Variant(s.mCollection()); });
    // GetBoundingBox(minP, maxP, NonZeroZ, CenterPoint, Height, Width,
    // ShrinkScale, ShrAbs): every argument optional and by reference.
    t.Method(
        "GetBoundingBox",
        [](S& s, CallArgs& a) {
          double height = 0, width = 0;
          s.GetBoundingBox({a[0], a[1], a[3], height, width},
                           {BoolOr(a[2], false), DoubleOr(a[6], 1.0), BoolOr(a[7], false)});
          a[4] = Variant(height);
          a[5] = Variant(width);
          return Variant();
        },
        0, 8).Outs({0, 1, 3, 4, 5});
    t.Method(
        "Centre", [](S& s, CallArgs& a) { return s.Centre(BoolOr(a[0], true)); }, 0, 1);
    t.Property("Height", [](S& s, CallArgs&) { return Variant(s.Height()); });
    t.Property("Width", [](S& s, CallArgs&) { return Variant(s.Width()); });
    return t;
  }();
  return table;
}

}  // namespace tovik
