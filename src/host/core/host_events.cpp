#include "host/core/host_events.h"

#include <algorithm>

#include "frame/runtime_text.h"
#include "host/core/application.h"
#include "host/core/host_error.h"
#include "host/surface/args.h"

namespace tovik::host {

const MemberTable<HostEvents>& HostEvents::Members() {
  static const MemberTable<HostEvents> table = [] {
    MemberTable<HostEvents> t;
    t.Property("Application", [](HostEvents& s, CallArgs&) {
      return Variant(ObjectRef(s.application()));
    });
    t.Method(
        "GetNamedObject",
        [](HostEvents& s, CallArgs& a) {
          std::string key = StringArg(a[0], {"Key", "GetNamedObject"});
          ObjectRef owner = a.Has(1) && a[1].IsObject() ? a[1].RawObject() : nullptr;
          return Variant(s.GetNamedObject(key, owner));
        },
        1, 2);
    t.Method(
        "SetNamedObject",
        [](HostEvents& s, CallArgs& a) {
          std::string key = StringArg(a[0], {"Key", "SetNamedObject"});
          if (!a[1].IsObject()) throw InvalidArgument("Obj", "SetNamedObject");
          std::string aux = a.Has(2) ? StringArg(a[2], {"AuxText", "SetNamedObject"})
                                     : std::string();
          ObjectRef owner = a.Has(3) && a[3].IsObject() ? a[3].RawObject() : nullptr;
          s.SetNamedObject(key, a[1].RawObject(), std::move(aux), owner);
          return Variant();
        },
        2, 4);
    return t;
  }();
  return table;
}

void HostEvents::Raise(std::string_view event, std::vector<Variant> args) {
  events_.Raise(event, args);
}

ObjectRef HostEvents::GetNamedObject(std::string_view key,
                                     const ObjectRef& owner) const {
  for (const Entry& e : entries_) {
    if (e.owner == owner.get() && CaseInsensitiveEqual(e.key, key)) return e.object;
  }
  return nullptr;
}

void HostEvents::SetNamedObject(std::string_view key, ObjectRef object,
                                std::string aux_text, const ObjectRef& owner) {
  auto it = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) {
    return e.owner == owner.get() && CaseInsensitiveEqual(e.key, key);
  });
  if (!object) {
    if (it != entries_.end()) entries_.erase(it);
    return;
  }
  if (it != entries_.end()) {
    it->object = std::move(object);
    it->aux_text = std::move(aux_text);
    return;
  }
  entries_.push_back({std::string(key), std::move(object), std::move(aux_text), owner.get()});
}

void HostEvents::DropOwner(const Dispatch* owner) {
  std::erase_if(entries_, [owner](const Entry& e) { return e.owner == owner; });
}

}  // namespace tovik::host
