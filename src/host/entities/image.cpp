// Wipeout and raster image members: the picture frame and its clip boundary.
#include <cmath>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "geometry/arc.h"
#include "geometry/bulge.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"

namespace tovik::host {

namespace {

template <class K>
void RegisterImageMembers(MemberTable<K>& t) {
  t.Property("Origin", GetPointField<K, &K::Data::origin>,
             LetPointField<K, &K::Data::origin, "Origin">);
  t.Property("ImageWidth", [](K& s, CallArgs&) {
    return Variant(geometry::Length(s.data().u) * s.data().width_pixels);
  });
  t.Property("ImageHeight", [](K& s, CallArgs&) {
    return Variant(geometry::Length(s.data().v) * s.data().height_pixels);
  });
  t.Property("Rotation", [](K& s, CallArgs&) {
    return Variant(geometry::NormalizeAngle(std::atan2(s.data().u.y, s.data().u.x)));
  });
  t.Property("ImageFile", GetStringField<K, &K::Data::image_path>,
             LetStringField<K, &K::Data::image_path, "ImageFile">);
}

}  // namespace

const MemberTable<Wipeout>& Wipeout::Members() {
  static const MemberTable<Wipeout> table = [] {
    MemberTable<Wipeout> t;
    RegisterImageMembers(t);
    return t;
  }();
  return table;
}

const MemberTable<RasterImage>& RasterImage::Members() {
  static const MemberTable<RasterImage> table = [] {
    MemberTable<RasterImage> t;
    RegisterImageMembers(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
