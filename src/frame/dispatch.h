// The late-bound dispatch interface: how every host object and every library
// object is reached, by member name, exactly as an automation client does.
//
// A call resolves a member name to a member id once (names compare
// case-insensitively, non-ASCII letters included), then invokes it with the
// arguments passed by reference, so a member can write back into its
// caller's variables. An unknown name raises 438. Objects can also raise
// named events to connected sinks.
#ifndef TOVIK_FRAME_DISPATCH_H_
#define TOVIK_FRAME_DISPATCH_H_

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/variant.h"

namespace tovik {

using DispId = int32_t;
// The default member (Value of a property, Item of a collection).
inline constexpr DispId kDispIdValue = 0;
// What GetIdOfName answers for a name the object does not know.
inline constexpr DispId kDispIdUnknown = -1;

// How a member is invoked. A property read and a method call are
// interchangeable, as they are for late-bound clients (obj.Count and
// obj.Count() are the same call).
enum class InvokeKind : uint8_t {
  kMethod,
  kPropertyGet,
  kPropertyPut,     // Let: assign a value
  kPropertyPutRef,  // Set: assign an object reference
};

class EventSource;

// What a client needs to know of one member to call it as a COM client
// with type information would: its name, whether it is a method, how many
// arguments it takes, and which of them are by-reference outputs.
struct MemberInfo {
  std::string_view name;  // "" for an unknown member (names live in the member tables)
  bool method = false;
  int min_args = 0;
  int max_args = 0;
  uint32_t outs = 0;  // bit i: argument i is an output
  // For properties: whether it can be read, and assigned a value (Let) or
  // an object (Set).
  bool readable = true;
  bool can_let = false;
  bool can_set = false;
};

// An automation object. Implementations usually derive from
// DispatchObject<T> below, which answers from a static member table.
class Dispatch : public std::enable_shared_from_this<Dispatch> {
 public:
  virtual ~Dispatch() = default;

  // The type name TypeName() reports for this object ("IAcadLine",
  // "DynamicSS").
  virtual std::string_view TypeName() const = 0;

  // The member id of `name`, or kDispIdUnknown.
  virtual DispId GetIdOfName(std::string_view name) const = 0;

  // Invokes member `id`. `args` are the positional arguments, by reference;
  // for a property put the value assigned is the last one. Raises 438 for
  // an unknown id, 449/450 for a wrong argument count, and whatever the
  // member raises.
  virtual Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) = 0;

  // The items For Each walks, in Item order. Objects that are not
  // collections raise 438.
  virtual std::vector<Variant> Enumerate();

  // The events this object raises, or nullptr when it raises none.
  virtual EventSource* Events() { return nullptr; }
  // What member `id` is; objects without member tables know nothing.
  virtual MemberInfo Describe(DispId id) const { return {}; }
  // Every member's name, in id order (for completion and help).
  virtual std::vector<std::string> MemberNames() const { return {}; }
  // What makes two references the same object (the Is operator): the
  // object itself, or for a stand-in for an object of another component,
  // that object.
  virtual const void* Identity() const { return this; }
};

// ------------------------------------------------------------------ events

// Receives the events of the objects it is connected to. Sinks are held
// weakly by their sources, so a sink's owner controls its life.
class EventSink {
 public:
  virtual ~EventSink() = default;
  // Called for every event raised by a connected source. `args` may be
  // written back (by-reference event arguments).
  virtual void OnEvent(std::string_view event, std::span<Variant> args) = 0;
};

// The connection point of an object that raises events.
class EventSource {
 public:
  // Connects a sink; returns a cookie for Disconnect.
  int Connect(std::weak_ptr<EventSink> sink);
  void Disconnect(int cookie);
  // Disconnects every connection to `sink`.
  void Disconnect(const EventSink* sink);
  // Raises `event` to every live sink, in connection order. A sink's
  // failure reaches the raiser, as an event handler's error does.
  void Raise(std::string_view event, std::span<Variant> args);
  int SinkCount() const;

 private:
  struct Connection {
    int cookie;
    std::weak_ptr<EventSink> sink;
  };
  std::vector<Connection> connections_;
  int next_cookie_ = 1;
};

// ----------------------------------------------------------- call helpers

// Arguments as a member body sees them: positional, by reference, with
// omitted trailing optionals reading as Missing.
class CallArgs {
 public:
  explicit CallArgs(std::span<Variant> args) : args_(args) {}
  // Number of arguments the caller passed.
  size_t size() const { return args_.size(); }
  // Argument i, by reference; beyond what was passed it is a Missing value
  // of its own (REQUIRES: i < the passed count + 16).
  Variant& operator[](size_t i);
  // True when argument i was passed and is not Missing.
  bool Has(size_t i) const;

 private:
  // Omitted arguments beyond those passed, one slot each (made on first
  // use): a member that writes one omitted out-argument must not change
  // another omitted argument it reads.
  // The first few here (most members have few optionals), the rest made
  // together on first use.
  static constexpr size_t kOmittedSlots = 16;
  std::span<Variant> args_;
  std::array<std::optional<Variant>, 4> near_;
  std::unique_ptr<std::array<Variant, kOmittedSlots>> omitted_;
};

// Reads a property: obj.name(args...). Nothing raises 91.
Variant GetProperty(const ObjectRef& obj, std::string_view name,
                    std::initializer_list<Variant> args = {});
// Assigns a value: obj.name(args...) = value.
void LetProperty(const ObjectRef& obj, std::string_view name, Variant value,
                 std::initializer_list<Variant> args = {});
// Assigns an object reference: Set obj.name = value.
void SetProperty(const ObjectRef& obj, std::string_view name, ObjectRef value);
// Calls a method with arguments passed by value.
Variant CallMethod(const ObjectRef& obj, std::string_view name,
                   std::initializer_list<Variant> args = {});
// Calls a method with arguments passed by reference: what the member writes
// into them is seen by the caller.
Variant CallMethodRef(const ObjectRef& obj, std::string_view name,
                      std::span<Variant> args);
// The items of a collection, in For Each order.
std::vector<Variant> ForEach(const ObjectRef& obj);
// The Is operator: the same object (both Nothing counts as the same).
bool SameObject(const ObjectRef& a, const ObjectRef& b);
}  // namespace tovik

#endif  // TOVIK_FRAME_DISPATCH_H_
