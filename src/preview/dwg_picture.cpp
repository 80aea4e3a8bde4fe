#include "preview/dwg_picture.h"

namespace tovik {

const MemberTable<DwgPicture>& DwgPicture::Members() {
  static const MemberTable<DwgPicture> table;
  return table;
}

}  // namespace tovik
