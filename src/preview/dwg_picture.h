// DwgPicture: a canvas that draws a simple preview of drawing geometry on a
// picture surface the calling application owns. Clients cannot create it:
// it comes only from AcadSpace.NewDwgPicture, which attaches it to a
// surface.
//
// Drawing coordinates (drawing units, y up) map to picture coordinates (the
// surface's scale units, y down):
//   px = (X − origin.x) × scale,  py = H − (Y − origin.y) × scale,
// then px = W − px when mirrored in x, py = H − py when mirrored in y. W
// and H are the surface's inner size, read at every use, so resizing the
// surface moves the mapping without a call. Picture coordinates are
// Singles: computed in Double and rounded when stored.
//
// Borrows: the picture surface.
#ifndef TOVIK_PREVIEW_DWG_PICTURE_H_
#define TOVIK_PREVIEW_DWG_PICTURE_H_

#include <memory>
#include <string_view>

#include "frame/member_table.h"
#include "geometry/vec3.h"
#include "preview/picture_surface.h"

namespace tovik {

class DwgPicture : public DispatchObject<DwgPicture> {
 public:
  static constexpr std::string_view kClassName = "DwgPicture";

  std::string_view TypeName() const override { return kClassName; }
  // SetMirror, Picture, CopyToClipboard, SetCoordinateSystem,
  // SetCoordinateToFit, Origin, Clear, DrawingScale, ScaleMode,
  // TranslateCoordinates, DrawLine, DrawCircle, DrawArc.
  static const MemberTable<DwgPicture>& Members();

  // Attaches `picture`, which must be a picture surface (13 otherwise):
  // switches its persistent image on and sets the scale to 1.
  void Attach(const ObjectRef& picture);

  void SetMirror(bool mirror_x, bool mirror_y) {
    mirror_x_ = mirror_x;
    mirror_y_ = mirror_y;
  }
  // origin := a copy of new_org; scale := W / drawing_width (11 for a zero
  // width, 6 for 0 / 0).
  void SetCoordinateSystem(const Variant& new_org, double drawing_width);
  // Fits the window from clip_bl to clip_tr into the surface, as large as
  // it goes with its proportions kept, centred along the other direction.
  // The width is fitted when W / H ≤ dx / dy, both rounded to Single (ties
  // fit the width). A zero dx or dy raises the runtime's arithmetic error.
  void SetCoordinateToFit(const Variant& clip_bl, const Variant& clip_tr);
  // Drawing point to picture point and back (Single precision results).
  geometry::Vec2 ToPicture(double x, double y) const;
  geometry::Vec2 ToDrawing(float px, float py) const;
  void DrawLine(const Variant& start, const Variant& end, int32_t color);
  // The same for points and lengths in drawing units given as numbers.
  void DrawLine(geometry::Vec2 start, geometry::Vec2 end, int32_t color);
  void DrawCircle(geometry::Vec2 center, double radius, int32_t color);
  void DrawArc(geometry::Vec2 center, double radius, int32_t color, double start, double end);
  void DrawCircle(const Variant& center, const Variant& radius, int32_t color);
  // The arc's angles are passed to the surface unchanged (not adjusted for
  // the y flip or mirroring).
  void DrawArc(const Variant& center, const Variant& radius, int32_t color, double start,
               double end);

  const ObjectRef& picture() const { return picture_; }
  // The attached surface; raises 91 when none is attached.
  PictureSurface& surface() const;
  const Variant& origin() const { return origin_; }
  double scale() const { return scale_; }

 private:
  ObjectRef picture_;
  PictureSurface* surface_ = nullptr;
  // A two-element zero point until a coordinate system is set.
  Variant origin_ = Variant(SafeArray::OfDoubles({0.0, 0.0}));
  double scale_ = 1.0;
  bool mirror_x_ = false;
  bool mirror_y_ = false;
};

// The library's own picture box (the toolbox form's DwgPicturebox), made
// on first use: 400 x 300 pixels in twips.
ObjectRef ToolboxPicture();

}  // namespace tovik

#endif  // TOVIK_PREVIEW_DWG_PICTURE_H_
