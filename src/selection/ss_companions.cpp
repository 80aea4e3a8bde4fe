#include "selection/ss_companions.h"

#include "selection/dynamic_ss.h"

namespace tovik {

// The measuring members (extents, sizes, the dimension collection) are
// registered here as they are written.
const MemberTable<SSDimensions>& SSDimensions::Members() {
  static const MemberTable<SSDimensions> table;
  return table;
}

// The moving, tiling, sorting and zooming members are registered here as
// they are written.
const MemberTable<SSAnimation>& SSAnimation::Members() {
  static const MemberTable<SSAnimation> table;
  return table;
}

}  // namespace tovik
