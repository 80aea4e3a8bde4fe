// The host-event object ("ZActiveX"): the companion object a client add-in
// hands to the library. It gives the host application, keeps a named-object
// store shared by all of the maker's libraries in the host, and raises the
// host's events to connected sinks:
//   AcadWindowChanged(state As Long: 1 normal, 2 minimised, 3 maximised),
//   EnterModal, LeaveModal, ThisDrawingActivate, ThisDrawingBeginClose,
//   BeginClose, Terminate, ObjectModified(text As String).
#ifndef TOVIK_HOST_CORE_HOST_EVENTS_H_
#define TOVIK_HOST_CORE_HOST_EVENTS_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/member_table.h"

namespace tovik::host {

class Application;

class HostEvents : public DispatchObject<HostEvents> {
 public:
  explicit HostEvents(std::weak_ptr<Application> app) : app_(std::move(app)) {}

  std::string_view TypeName() const override { return "ZActiveX"; }
  static const MemberTable<HostEvents>& Members();
  EventSource* Events() override { return &events_; }

  // The host application, or nullptr once it is gone.
  std::shared_ptr<Application> application() const { return app_.lock(); }

  // Raises `event` with `args` to every connected sink.
  void Raise(std::string_view event, std::vector<Variant> args = {});

  // GetNamedObject(Key, Owner): the object stored under `key` (compared
  // case-insensitively) for `owner` (compared by identity; Nothing means
  // no owner), or Nothing.
  ObjectRef GetNamedObject(std::string_view key, const ObjectRef& owner) const;
  // SetNamedObject(Key, Obj, AuxText, Owner): stores or replaces the entry
  // for key and owner. Storing Nothing removes it.
  void SetNamedObject(std::string_view key, ObjectRef object, std::string aux_text,
                      const ObjectRef& owner);
  // Drops every entry owned by `owner` (its document closed).
  void DropOwner(const Dispatch* owner);
  size_t named_object_count() const { return entries_.size(); }

 private:
  struct Entry {
    std::string key;
    ObjectRef object;
    std::string aux_text;
    const Dispatch* owner;  // identity only; entries die with their owner
  };
  std::weak_ptr<Application> app_;
  EventSource events_;
  std::vector<Entry> entries_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_HOST_EVENTS_H_
