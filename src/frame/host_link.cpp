#include "frame/host_link.h"

#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/library_state.h"

namespace tovik {
namespace {

// The object a trapped property read left behind: Nothing unless it
// returned an object.
ObjectRef ObjectProperty(const ObjectRef& owner, std::string_view name) {
  ObjectRef result;
  ResumeNext trap;
  trap([&] {
    Variant value = GetProperty(owner, name);
    if (value.IsObject()) result = value.RawObject();
  });
  return result;
}

}  // namespace

ObjectRef HostEvents() { return Library().host_events; }

bool HasHostEvents() { return Library().host_events != nullptr; }

ObjectRef HostApplication() { return ObjectProperty(HostEvents(), "Application"); }

ObjectRef CurrentDrawing() {
  return ObjectProperty(HostApplication(), "ActiveDocument");
}

ObjectRef LibraryGroup(const ObjectRef& document, bool renew) {
  ObjectRef groups = GetProperty(document, "Groups").Object();
  Variant name{std::string(kLibraryGroupName)};
  Variant group;
  ResumeNext trap;
  bool found = trap([&] { group = GetProperty(groups, "Item", {name}); });
  if (!found || !group.IsObject() || group.IsNothing()) {
    return CallMethod(groups, "Add", {name}).Object();
  }
  if (renew) {
    CallMethod(group.RawObject(), "Delete");
    return CallMethod(groups, "Add", {name}).Object();
  }
  return group.RawObject();
}

}  // namespace tovik
