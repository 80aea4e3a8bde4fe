#include "preview/dwg_picture.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/library_state.h"
#include "frame/runtime_number.h"
#include "preview/picture_box.h"

namespace tovik {
namespace {

double At(const Variant& point, int32_t i) { return CDbl(point.Array().At(i)); }

}  // namespace

void DwgPicture::Attach(const ObjectRef& picture) {
  auto* surface = dynamic_cast<PictureSurface*>(picture.get());
  if (!surface) throw errors::TypeMismatch();
  picture_ = picture;
  surface_ = surface;
  surface_->SetPersistent(true);
  scale_ = 1.0;
}

PictureSurface& DwgPicture::surface() const {
  if (!surface_) throw errors::ObjectNotSet();
  return *surface_;
}

void DwgPicture::SetCoordinateSystem(const Variant& new_org, double drawing_width) {
  double w = surface().InnerWidth();
  origin_ = new_org;
  scale_ = DivideDoubles(w, drawing_width);
}

void DwgPicture::SetCoordinateToFit(const Variant& clip_bl, const Variant& clip_tr) {
  double dx = At(clip_tr, 0) - At(clip_bl, 0);
  double dy = At(clip_tr, 1) - At(clip_bl, 1);
  double w = surface().InnerWidth(), h = surface().InnerHeight();
  float surface_ratio = static_cast<float>(DivideDoubles(w, h));
  float window_ratio = static_cast<float>(DivideDoubles(dx, dy));
  double ox, oy;
  if (surface_ratio <= window_ratio) {
    scale_ = DivideDoubles(w, dx);
    ox = At(clip_bl, 0);
    oy = (At(clip_bl, 1) + dy / 2) - DivideDoubles(h / 2, scale_);
  } else {
    scale_ = DivideDoubles(h, dy);
    oy = At(clip_bl, 1);
    ox = (At(clip_bl, 0) + dx / 2) - DivideDoubles(w / 2, scale_);
  }
  origin_ = Variant(SafeArray::OfDoubles({ox, oy}));
}

geometry::Vec2 DwgPicture::ToPicture(double x, double y) const {
  double w = surface().InnerWidth(), h = surface().InnerHeight();
  double px = (x - At(origin_, 0)) * scale_;
  double py = h - (y - At(origin_, 1)) * scale_;
  if (mirror_x_) px = w - px;
  if (mirror_y_) py = h - py;
  return {static_cast<float>(px), static_cast<float>(py)};
}

geometry::Vec2 DwgPicture::ToDrawing(float px_in, float py_in) const {
  double w = surface().InnerWidth(), h = surface().InnerHeight();
  double px = px_in, py = py_in;
  if (mirror_x_) px = w - px;
  if (mirror_y_) py = h - py;
  return {DivideDoubles(px, scale_) + At(origin_, 0), DivideDoubles(h - py, scale_) + At(origin_, 1)};
}

void DwgPicture::DrawLine(geometry::Vec2 start, geometry::Vec2 end, int32_t color) {
  geometry::Vec2 a = ToPicture(start.x, start.y);
  geometry::Vec2 b = ToPicture(end.x, end.y);
  surface().DrawLine(a.x, a.y, b.x, b.y, color);
}

void DwgPicture::DrawCircle(geometry::Vec2 center, double radius, int32_t color) {
  geometry::Vec2 c = ToPicture(center.x, center.y);
  surface().DrawCircle(c.x, c.y, radius * scale_, color);
}

void DwgPicture::DrawArc(geometry::Vec2 center, double radius, int32_t color, double start,
                         double end) {
  geometry::Vec2 c = ToPicture(center.x, center.y);
  surface().DrawArc(c.x, c.y, radius * scale_, color, start, end);
}

void DwgPicture::DrawLine(const Variant& start, const Variant& end, int32_t color) {
  DrawLine(geometry::Vec2{At(start, 0), At(start, 1)}, geometry::Vec2{At(end, 0), At(end, 1)},
           color);
}

void DwgPicture::DrawCircle(const Variant& center, const Variant& radius, int32_t color) {
  DrawCircle(geometry::Vec2{At(center, 0), At(center, 1)}, CDbl(radius), color);
}

void DwgPicture::DrawArc(const Variant& center, const Variant& radius, int32_t color,
                         double start, double end) {
  DrawArc(geometry::Vec2{At(center, 0), At(center, 1)}, CDbl(radius), color, start, end);
}

// Members in interface order.
const MemberTable<DwgPicture>& DwgPicture::Members() {
  static const MemberTable<DwgPicture> table = [] {
    MemberTable<DwgPicture> t;
    t.Method(
        "SetMirror",
        [](DwgPicture& d, CallArgs& a) {
          d.SetMirror(CBool(a[0]), CBool(a[1]));
          return Variant();
        },
        2, 2);
    t.Property("Picture", [](DwgPicture& d, CallArgs&) { return Variant(d.picture()); });
    t.Method("CopyToClipboard", [](DwgPicture& d, CallArgs&) {
      d.surface().CopyToClipboard();
      return Variant();
    });
    t.Method(
        "SetCoordinateSystem",
        [](DwgPicture& d, CallArgs& a) {
          d.SetCoordinateSystem(a[0], CDbl(a[1]));
          return Variant();
        },
        2, 2);
    t.Method(
        "SetCoordinateToFit",
        [](DwgPicture& d, CallArgs& a) {
          d.SetCoordinateToFit(a[0], a[1]);
          return Variant();
        },
        2, 2);
    t.Property("Origin", [](DwgPicture& d, CallArgs&) { return d.origin(); });
    t.Method("Clear", [](DwgPicture& d, CallArgs&) {
      d.surface().Clear();
      return Variant();
    });
    t.Property("DrawingScale", [](DwgPicture& d, CallArgs&) { return Variant(d.scale()); });
    t.Property("ScaleMode", [](DwgPicture& d, CallArgs&) {
      return Variant(static_cast<int16_t>(d.surface().Mode()));
    });
    // TranslateCoordinates(x, Y, AcadX, AcadY[, FromAcadToVB]): by
    // reference both ways.
    t.Method(
        "TranslateCoordinates",
        [](DwgPicture& d, CallArgs& a) {
          if (a.Has(4) && CBool(a[4])) {
            geometry::Vec2 p = d.ToPicture(CDbl(a[2]), CDbl(a[3]));
            a[0] = Variant(static_cast<float>(p.x));
            a[1] = Variant(static_cast<float>(p.y));
          } else {
            geometry::Vec2 p = d.ToDrawing(CSng(a[0]), CSng(a[1]));
            a[2] = Variant(p.x);
            a[3] = Variant(p.y);
          }
          return Variant();
        },
        4, 5).Outs({0, 1, 2, 3});
    t.Method(
        "DrawLine",
        [](DwgPicture& d, CallArgs& a) {
          d.DrawLine(a[0], a[1], CLng(a[2]));
          return Variant();
        },
        3, 3);
    t.Method(
        "DrawCircle",
        [](DwgPicture& d, CallArgs& a) {
          d.DrawCircle(a[0], a[1], CLng(a[2]));
          return Variant();
        },
        3, 3);
    t.Method(
        "DrawArc",
        [](DwgPicture& d, CallArgs& a) {
          d.DrawArc(a[0], a[1], CLng(a[2]), CDbl(a[3]), CDbl(a[4]));
          return Variant();
        },
        5, 5);
    return t;
  }();
  return table;
}

ObjectRef ToolboxPicture() {
  ObjectRef& slot = Library().toolbox_picture;
  if (!slot) slot = std::make_shared<PictureBox>(400, 300);
  return slot;
}

}  // namespace tovik
