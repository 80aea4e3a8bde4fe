#include "toolkit/entity_extents.h"

#include <array>

#include "frame/error_trap.h"

namespace tovik {

bool EntityExtents(const ObjectRef& ent, Variant& min_p, Variant& max_p) {
  std::array<Variant, 2> box;
  ResumeNext trap;
  if (!trap([&] { CallMethodRef(ent, "GetBoundingBox", box); })) {
    if (!trap([&] { box[0] = GetProperty(ent, "InsertionPoint"); })) return false;
    box[1] = box[0];
  }
  min_p = std::move(box[0]);
  max_p = std::move(box[1]);
  return true;
}

}  // namespace tovik
