// DwgPicture: a canvas that draws a simple preview of drawing geometry on a
// picture surface the calling application owns. Clients cannot create it:
// it comes only from AcadSpace.NewDwgPicture, which attaches it to a
// surface.
//
// Borrows: the picture surface.
#ifndef TOVIK_PREVIEW_DWG_PICTURE_H_
#define TOVIK_PREVIEW_DWG_PICTURE_H_

#include <string_view>

#include "frame/member_table.h"

namespace tovik {

class DwgPicture : public DispatchObject<DwgPicture> {
 public:
  static constexpr std::string_view kClassName = "DwgPicture";

  std::string_view TypeName() const override { return kClassName; }
  // The canvas members (mapping, mirroring, drawing) register here in
  // interface order as they are written.
  static const MemberTable<DwgPicture>& Members();
};

}  // namespace tovik

#endif  // TOVIK_PREVIEW_DWG_PICTURE_H_
