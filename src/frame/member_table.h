// Static member tables: each automation class registers each of its members
// once (name, getter, letter, setter or method body, argument counts), and
// the table answers GetIdOfName and Invoke for every instance.
//
//   const MemberTable<Line>& Line::Members() {
//     static const MemberTable<Line> table = [] {
//       MemberTable<Line> t;
//       t.Property("StartPoint", &Line::GetStart, &Line::LetStart);
//       t.Method("Move", &Line::MoveBody, 2, 2);
//       return t;
//     }();
//     return table;
//   }
//
// Lookup folds case (non-ASCII letters too) and costs one hash and a probe
// or two; a call allocates nothing beyond what the member body does.
#ifndef TOVIK_FRAME_MEMBER_TABLE_H_
#define TOVIK_FRAME_MEMBER_TABLE_H_

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "frame/automation_error.h"
#include "frame/dispatch.h"
#include "frame/variant.h"

namespace tovik {

// Why a by-name call failed before reaching a member body; turned into the
// runtime's number and text in one place (DispatchFailure).
enum class CallFailure : uint8_t {
  kUnknownMember,   // 438
  kNotReadable,     // 438: a write-only property read
  kNotWritable,     // 438: a read-only property assigned
  kTooFewArgs,      // 449
  kTooManyArgs,     // 450
};
AutomationError DispatchFailure(CallFailure failure);

// Lower-cased (case-folded) key of a member name; ASCII without allocation
// of more than the result.
std::string MemberKey(std::string_view name);

// A member name folded and hashed once, to be looked up in several tables
// (an object answers from its own table, then from those it shares with
// its kind). Short ASCII names are folded into the key itself.
class FoldedName {
 public:
  explicit FoldedName(std::string_view name);
  FoldedName(const FoldedName&) = delete;
  FoldedName& operator=(const FoldedName&) = delete;
  std::string_view key() const { return key_; }
  uint64_t hash() const { return hash_; }

 private:
  char buffer_[48];
  std::string folded_;  // longer or non-ASCII names
  std::string_view key_;
  uint64_t hash_;
};

// The part of a member table that does not depend on the class.
class MemberIndex {
 public:
  // The id of `name` (1-based position), kDispIdUnknown when absent.
  DispId Find(std::string_view name) const;
  DispId Find(const FoldedName& name) const;
  // The id registered as the default member, kDispIdUnknown when none.
  DispId default_id() const { return default_id_; }
  // The registered name of member `id` ("" when unknown).
  std::string_view NameOf(DispId id) const;
  size_t size() const { return names_.size(); }

 protected:
  DispId Add(std::string_view name);
  void SetDefault(DispId id) { default_id_ = id; }

 private:
  // Open addressing over the folded names: a slot holds a key's hash and
  // its id (0: free); the table is kept at most half full.
  struct Slot {
    uint64_t hash = 0;
    DispId id = 0;
  };
  void Grow();
  std::vector<Slot> slots_;
  std::vector<std::string> keys_;  // folded, by id - 1
  std::vector<std::string> names_;
  DispId default_id_ = kDispIdUnknown;
};

template <class T>
class MemberTable : public MemberIndex {
 public:
  // A property read or method body: returns the result (Empty for none).
  using Body = Variant (*)(T& self, CallArgs& args);
  // A property assignment: `value` is what is assigned; `args` are the
  // property's own arguments (Item(i) = value).
  using Assign = void (*)(T& self, CallArgs& args, Variant& value);

  // A property with a getter and optionally a Let (value) and a Set
  // (object) assignment. min_args/max_args count the property's own
  // arguments, not the assigned value.
  MemberTable& Property(std::string_view name, Body get, Assign let = nullptr,
                        Assign set = nullptr, int min_args = 0,
                        int max_args = 0) {
    Entry& e = NewEntry(name, min_args, max_args);
    e.get = get;
    e.let = let;
    e.set = set;
    return *this;
  }
  // A write-only property (reading it is an error).
  MemberTable& WriteOnly(std::string_view name, Assign let) {
    Entry& e = NewEntry(name, 0, 0);
    e.let = let;
    return *this;
  }
  // A method taking min_args..max_args arguments.
  MemberTable& Method(std::string_view name, Body body, int min_args = 0,
                      int max_args = 0) {
    Entry& e = NewEntry(name, min_args, max_args);
    e.get = body;
    e.method = true;
    return *this;
  }
  // Marks arguments of the member registered last as by-reference outputs
  // (0-based positions): clients that return outputs (the Python module, a
  // type library) return what the member leaves in them.
  MemberTable& Outs(std::initializer_list<int> positions) {
    for (int p : positions) entries_.back().outs |= uint32_t{1} << p;
    return *this;
  }
  // The output positions of member `id` as a bit mask (bit i: argument i).
  uint32_t OutMask(DispId id) const {
    if (id <= 0 || static_cast<size_t>(id) > entries_.size()) return 0;
    return entries_[static_cast<size_t>(id) - 1].outs;
  }
  // True when member `id` is a method (not a property).
  bool IsMethod(DispId id) const {
    if (id <= 0 || static_cast<size_t>(id) > entries_.size()) return false;
    return entries_[static_cast<size_t>(id) - 1].method;
  }
  // The fewest and most arguments member `id` takes (a property's own).
  std::pair<int, int> ArgumentCounts(DispId id) const {
    if (id <= 0 || static_cast<size_t>(id) > entries_.size()) return {0, 0};
    const Entry& e = entries_[static_cast<size_t>(id) - 1];
    return {e.min_args, e.max_args};
  }

  // How member `id` can be used: read (or called), assigned with Let, with
  // Set.
  struct Access {
    bool read = false, let = false, set = false;
  };
  Access AccessOf(DispId id) const {
    if (id <= 0 || static_cast<size_t>(id) > entries_.size()) return {};
    const Entry& e = entries_[static_cast<size_t>(id) - 1];
    return {e.get != nullptr, e.let != nullptr, e.set != nullptr};
  }

  // Makes an already registered member the default member.
  MemberTable& Default(std::string_view name) {
    SetDefault(Find(name));
    return *this;
  }

  Variant Invoke(T& self, DispId id, InvokeKind kind,
                 std::span<Variant> args) const {
    if (id == kDispIdValue) id = default_id();
    if (id <= 0 || static_cast<size_t>(id) > entries_.size()) {
      throw DispatchFailure(CallFailure::kUnknownMember);
    }
    const Entry& e = entries_[static_cast<size_t>(id) - 1];
    if (kind == InvokeKind::kMethod || kind == InvokeKind::kPropertyGet) {
      if (!e.get) throw DispatchFailure(CallFailure::kNotReadable);
      CheckCount(e, args.size());
      CallArgs call_args(args);
      return e.get(self, call_args);
    }
    if (args.empty()) throw DispatchFailure(CallFailure::kTooFewArgs);
    Variant& value = args.back();
    std::span<Variant> own = args.first(args.size() - 1);
    Assign assign = kind == InvokeKind::kPropertyPutRef && e.set ? e.set : e.let;
    if (!assign) assign = e.set;
    if (!assign) throw DispatchFailure(CallFailure::kNotWritable);
    CheckCount(e, own.size());
    CallArgs call_args(own);
    assign(self, call_args, value);
    return Variant();
  }

 private:
  struct Entry {
    Body get = nullptr;
    Assign let = nullptr;
    Assign set = nullptr;
    int16_t min_args = 0;
    int16_t max_args = 0;
    uint32_t outs = 0;
    bool method = false;
  };

  Entry& NewEntry(std::string_view name, int min_args, int max_args) {
    Add(name);
    entries_.push_back(Entry{});
    Entry& e = entries_.back();
    e.min_args = static_cast<int16_t>(min_args);
    e.max_args = static_cast<int16_t>(max_args < min_args ? min_args : max_args);
    return e;
  }

  static void CheckCount(const Entry& e, size_t count) {
    if (count < static_cast<size_t>(e.min_args)) {
      throw DispatchFailure(CallFailure::kTooFewArgs);
    }
    if (count > static_cast<size_t>(e.max_args)) {
      throw DispatchFailure(CallFailure::kTooManyArgs);
    }
  }

  std::vector<Entry> entries_;
};

// Base for automation classes whose members come from a static table:
// `static const MemberTable<T>& Members();` in T.
// Member `id` of `table` as a client sees it (empty name when unknown).
template <class T>
MemberInfo DescribeMember(const MemberTable<T>& table, DispId id) {
  auto [min_args, max_args] = table.ArgumentCounts(id);
  auto access = table.AccessOf(id);
  return {table.NameOf(id), table.IsMethod(id), min_args, max_args, table.OutMask(id),
          access.read, access.let, access.set};
}
template <class T>
void AppendMemberNames(const MemberTable<T>& table, std::vector<std::string>& names) {
  for (size_t i = 1; i <= table.size(); ++i) names.emplace_back(table.NameOf(static_cast<DispId>(i)));
}

template <class T>
class DispatchObject : public Dispatch {
 public:
  DispId GetIdOfName(std::string_view name) const override {
    return T::Members().Find(name);
  }
  Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) override {
    return T::Members().Invoke(static_cast<T&>(*this), id, kind, args);
  }
  MemberInfo Describe(DispId id) const override { return DescribeMember(T::Members(), id); }
  std::vector<std::string> MemberNames() const override {
    std::vector<std::string> names;
    AppendMemberNames(T::Members(), names);
    return names;
  }
  // A counted reference to this object (it must be owned by a shared_ptr).
  std::shared_ptr<T> Self() {
    return std::static_pointer_cast<T>(shared_from_this());
  }
};

// The object held by `value` as a T, or nullptr when it holds another kind
// of object, Nothing or no object at all.
template <class T>
std::shared_ptr<T> ObjectAs(const Variant& value) {
  if (!value.IsObject()) return nullptr;
  return std::dynamic_pointer_cast<T>(value.RawObject());
}

}  // namespace tovik

#endif  // TOVIK_FRAME_MEMBER_TABLE_H_
