// HostObject: an object of another component (the host's documents and
// entities, a client's Scripting.Dictionary or script object) as a library
// object, called late-bound through its IDispatch: names looked up once per
// stand-in (through IDispatchEx, case-insensitively, when the object has
// it), arguments passed by reference and read back, the host's errors
// passed through, For Each through _NewEnum, events through its connection
// point.
#ifndef TOVIK_WINDOWS_HOST_OBJECT_H_
#define TOVIK_WINDOWS_HOST_OBJECT_H_

#include <dispex.h>
#include <oaidl.h>
#include <ocidl.h>
#include <windows.h>

#include <span>
#include <string>
#include <unordered_map>

#include "frame/dispatch.h"

namespace tovik::com {

class EventReceiver;

class HostObject final : public Dispatch {
 public:
  // A stand-in for `dispatch` (AddRef'ed for the stand-in's life).
  static ObjectRef Wrap(IDispatch* dispatch);
  explicit HostObject(IDispatch* dispatch);
  ~HostObject() override;
  HostObject(const HostObject&) = delete;
  HostObject& operator=(const HostObject&) = delete;

  IDispatch* dispatch() const { return dispatch_; }

  // The type name from the object's type information ("IAcadLine").
  std::string_view TypeName() const override;
  DispId GetIdOfName(std::string_view name) const override;
  Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) override;
  std::vector<Variant> Enumerate() override;
  // Connects to the object's connection point on first use; nullptr when
  // the object raises no events.
  EventSource* Events() override;
  const void* Identity() const override { return identity_; }

 private:
  IDispatch* dispatch_;
  IDispatchEx* dispatch_ex_ = nullptr;
  IUnknown* identity_ = nullptr;  // the object's IUnknown, for the Is operator
  mutable std::string type_name_;
  mutable bool type_name_known_ = false;
  mutable std::unordered_map<std::string, DispId> ids_;
  EventSource events_;
  bool events_tried_ = false;
  IConnectionPoint* connection_ = nullptr;
  DWORD cookie_ = 0;
  EventReceiver* receiver_ = nullptr;
};

// Calls member `id` of `dispatch` with `args` passed by reference (a
// property put passes the last argument as the value assigned); what the
// callee writes into an argument is read back into `args`. Failures raise
// the matching AutomationError.
Variant CallDispatch(IDispatch* dispatch, DISPID id, InvokeKind kind, std::span<Variant> args);

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_HOST_OBJECT_H_
