// AcadSpace: object identity, the block owning an entity and new preview
// canvases.
#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "preview/dwg_picture.h"
#include "toolkit/acad_space.h"
#include "toolkit/object_identity.h"

namespace tovik {

ObjectRef AcadSpace::NewDwgPicture(Variant& picture) {
  if (picture.IsMissing() || picture.IsNothing()) picture = Variant(ToolboxPicture());
  auto canvas = std::make_shared<DwgPicture>();
  canvas->Attach(picture.Object());
  return canvas;
}

ObjectRef AcadSpace::Block_OwnerOf(const ObjectRef& acad_ent, const Variant& ignore_bref) {
  ObjectRef doc = GetProperty(acad_ent, "Document").Object();
  ObjectRef owner = ObjectFromId(OwnerIdOf(acad_ent), doc);
  if (!ignore_bref.IsMissing() && CBool(ignore_bref) &&
      Like(owner->TypeName(), "IAcadBlockReference*").value_or(false)) {
    owner = Block_OwnerOf(owner, Variant(false));
  }
  return owner;
}

}  // namespace tovik
