#include "frame/dispatch.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <vector>

#include "frame/automation_error.h"
#include "frame/member_table.h"

namespace tovik {

std::vector<Variant> Dispatch::Enumerate() {
  throw DispatchFailure(CallFailure::kUnknownMember);
}

// ------------------------------------------------------------ EventSource

int EventSource::Connect(std::weak_ptr<EventSink> sink) {
  int cookie = next_cookie_++;
  connections_.push_back({cookie, std::move(sink)});
  return cookie;
}

void EventSource::Disconnect(int cookie) {
  std::erase_if(connections_,
                [cookie](const Connection& c) { return c.cookie == cookie; });
}

void EventSource::Disconnect(const EventSink* sink) {
  std::erase_if(connections_, [sink](const Connection& c) {
    std::shared_ptr<EventSink> live = c.sink.lock();
    return !live || live.get() == sink;
  });
}

void EventSource::Raise(std::string_view event, std::span<Variant> args) {
  // A handler may connect or disconnect sinks while the event is delivered:
  // deliver to the sinks connected when the event was raised.
  std::vector<std::shared_ptr<EventSink>> live;
  live.reserve(connections_.size());
  for (const Connection& c : connections_) {
    if (std::shared_ptr<EventSink> sink = c.sink.lock()) live.push_back(sink);
  }
  for (const std::shared_ptr<EventSink>& sink : live) sink->OnEvent(event, args);
}

int EventSource::SinkCount() const {
  return static_cast<int>(std::count_if(
      connections_.begin(), connections_.end(),
      [](const Connection& c) { return !c.sink.expired(); }));
}

// --------------------------------------------------------------- CallArgs

Variant& CallArgs::operator[](size_t i) {
  if (i < args_.size()) return args_[i];
  size_t k = i - args_.size();
  if (k < near_.size()) {
    if (!near_[k]) near_[k].emplace(Variant::Missing());
    return *near_[k];
  }
  if (!omitted_) {
    omitted_ = std::make_unique<std::array<Variant, kOmittedSlots>>();
    omitted_->fill(Variant::Missing());
  }
  return omitted_->at(k - near_.size());
}

bool CallArgs::Has(size_t i) const {
  return i < args_.size() && !args_[i].IsMissing();
}

// ----------------------------------------------------------- call helpers

namespace {

Dispatch& Target(const ObjectRef& obj) {
  if (!obj) throw errors::ObjectNotSet();
  return *obj;
}

DispId IdOf(Dispatch& target, std::string_view name) {
  DispId id = target.GetIdOfName(name);
  if (id == kDispIdUnknown) throw DispatchFailure(CallFailure::kUnknownMember);
  return id;
}

// The arguments of one call, copied so that the member may write them:
// up to four (nearly every call) on the stack, more on the heap.
class ArgCopy {
 public:
  explicit ArgCopy(std::initializer_list<Variant> args, Variant* last = nullptr)
      : size_(args.size() + (last != nullptr ? 1 : 0)) {
    if (size_ > kLocal) {
      heap_.assign(args.begin(), args.end());
      if (last != nullptr) heap_.push_back(std::move(*last));
      data_ = heap_.data();
      return;
    }
    // Only the arguments given are made in the local room.
    data_ = reinterpret_cast<Variant*>(local_);
    size_t made = 0;
    try {
      for (const Variant& arg : args) {
        new (data_ + made) Variant(arg);
        ++made;
      }
    } catch (...) {
      std::destroy_n(data_, made);
      throw;
    }
    if (last != nullptr) new (data_ + made) Variant(std::move(*last));
  }
  ~ArgCopy() {
    if (size_ <= kLocal) std::destroy_n(data_, size_);
  }
  ArgCopy(const ArgCopy&) = delete;
  ArgCopy& operator=(const ArgCopy&) = delete;
  std::span<Variant> span() { return {data_, size_}; }

 private:
  static constexpr size_t kLocal = 4;
  alignas(Variant) unsigned char local_[kLocal * sizeof(Variant)];
  std::vector<Variant> heap_;
  size_t size_;
  Variant* data_;
};

}  // namespace

Variant GetProperty(const ObjectRef& obj, std::string_view name,
                    std::initializer_list<Variant> args) {
  Dispatch& target = Target(obj);
  if (args.size() == 0) return target.Invoke(IdOf(target, name), InvokeKind::kPropertyGet, {});
  ArgCopy copy(args);
  return target.Invoke(IdOf(target, name), InvokeKind::kPropertyGet, copy.span());
}

void LetProperty(const ObjectRef& obj, std::string_view name, Variant value,
                 std::initializer_list<Variant> args) {
  Dispatch& target = Target(obj);
  ArgCopy copy(args, &value);
  target.Invoke(IdOf(target, name), InvokeKind::kPropertyPut, copy.span());
}

void SetProperty(const ObjectRef& obj, std::string_view name, ObjectRef value) {
  Dispatch& target = Target(obj);
  Variant arg(std::move(value));
  target.Invoke(IdOf(target, name), InvokeKind::kPropertyPutRef,
                std::span<Variant>(&arg, 1));
}

Variant CallMethod(const ObjectRef& obj, std::string_view name,
                   std::initializer_list<Variant> args) {
  Dispatch& target = Target(obj);
  if (args.size() == 0) return target.Invoke(IdOf(target, name), InvokeKind::kMethod, {});
  ArgCopy copy(args);
  return target.Invoke(IdOf(target, name), InvokeKind::kMethod, copy.span());
}

Variant CallMethodRef(const ObjectRef& obj, std::string_view name,
                      std::span<Variant> args) {
  Dispatch& target = Target(obj);
  return target.Invoke(IdOf(target, name), InvokeKind::kMethod, args);
}

std::vector<Variant> ForEach(const ObjectRef& obj) { return Target(obj).Enumerate(); }

bool SameObject(const ObjectRef& a, const ObjectRef& b) {
  if (a.get() == b.get()) return true;
  return a && b && a->Identity() == b->Identity();
}

}  // namespace tovik
