// Wipeouts and raster images: read with their frame and clip boundary; a
// wipeout written whole.
#include "host/dxf/kinds/kinds.h"

#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {

using geometry::Vec3;

namespace {

// Wipeouts and raster images share their frame and clip boundary.
template <class K>
std::shared_ptr<Entity> LoadImage(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<K>();
  ImageData* d = &e->mutable_data();
  d->origin = PointOr(r, 10);
  d->u = PointOr(r, 11, {1, 0, 0});
  d->v = PointOr(r, 12, {0, 1, 0});
  d->width_pixels = RealOr(r, 13, 1);
  d->height_pixels = RealOr(r, 23, 1);
  d->display_flags = static_cast<int32_t>(IntOr(r, 70, 7));
  for (const Tag* t : record.FindAll(14)) d->clip.push_back({t->real, 0});
  size_t k = 0;
  for (const Tag* t : record.FindAll(24)) {
    if (k < d->clip.size()) d->clip[k++].y = t->real;
  }
  return e;
}

}  // namespace

void DbWriter::EmitWipeoutGeometry(const Wipeout& o) {
  const auto& d = o.data();
  PutString(100, InfoOf(EntityKind::kWipeout).subclass);
  PutInt(90, 0);
  PutPoint(10, d.origin);
  PutPoint(11, d.u);
  PutPoint(12, d.v);
  PutPoint2(13, d.width_pixels, d.height_pixels);
  PutHandle(340, 0);
  PutInt(70, d.display_flags);
  PutInt(280, 1);
  PutInt(281, 50);
  PutInt(282, 50);
  PutInt(283, 0);
  PutHandle(360, 0);
  PutInt(71, d.clip.size() > 2 ? 2 : 1);
  PutInt(91, static_cast<int64_t>(d.clip.size()));
  for (const auto& c : d.clip) PutPoint2(14, c.x, c.y);
}

std::shared_ptr<Entity> LoadWipeout(Loader& loader, const Record& record, const RecordFields& r) {
  return LoadImage<Wipeout>(loader, record, r);
}

std::shared_ptr<Entity> LoadRasterImage(Loader& loader, const Record& record,
                                        const RecordFields& r) {
  return LoadImage<RasterImage>(loader, record, r);
}

}  // namespace tovik::host::dxf
