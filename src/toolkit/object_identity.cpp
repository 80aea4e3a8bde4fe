#include "toolkit/object_identity.h"

#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

// obj.first under a trap; obj.fallback (untrapped) when that raised.
Variant ReadEitherId(const ObjectRef& obj, std::string_view first, std::string_view fallback) {
  Variant value;
  ResumeNext trap;
  if (trap([&] { value = GetProperty(obj, first); })) return value;
  return GetProperty(obj, fallback);
}

}  // namespace

Variant ObjectIdOf(const ObjectRef& ent) { return ReadEitherId(ent, "ObjectID", "ObjectID32"); }

Variant OwnerIdOf(const ObjectRef& ent) { return ReadEitherId(ent, "OwnerID", "OwnerID32"); }

ObjectRef ObjectFromId(const Variant& id, ObjectRef& doc) {
  if (!doc) doc = CurrentDrawing();
  ObjectRef found;
  ResumeNext trap;
  if (trap([&] { found = CallMethod(doc, "ObjectIDToObject", {id}).Object(); })) return found;
  return CallMethod(doc, "ObjectIDToObject32", {id}).Object();
}

ObjectRef SortentsTable(ObjectRef& block) {
  if (!block) block = AcadSpace::CurSpace();
  ObjectRef dict = CallMethod(block, "GetExtensionDictionary").Object();
  ObjectRef table;
  ResumeNext trap;
  trap([&] { table = CallMethod(dict, "GetObject", {Variant("ACAD_SORTENTS")}).Object(); });
  if (!table) {
    table = CallMethod(dict, "AddObject", {Variant("ACAD_SORTENTS"), Variant("AcDbSortentsTable")})
                .Object();
  }
  return table;
}

}  // namespace tovik
