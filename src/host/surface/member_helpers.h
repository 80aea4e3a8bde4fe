// Member bodies shared by entity kinds: typed fields of a kind's Data read
// and written through the automation surface with the host's checks.
//
//   t.Property("StartPoint", GetPointField<Line, &Line::Data::start>,
//              LetPointField<Line, &Line::Data::start, "StartPoint">);
#ifndef TOVIK_HOST_SURFACE_MEMBER_HELPERS_H_
#define TOVIK_HOST_SURFACE_MEMBER_HELPERS_H_

#include <algorithm>
#include <cmath>
#include <string_view>

#include "frame/member_table.h"
#include "geometry/vec3.h"
#include "host/core/host_error.h"
#include "host/surface/args.h"

namespace tovik::host {

// A string literal usable as a template argument.
template <size_t N>
struct Literal {
  constexpr Literal(const char (&text)[N]) { std::copy_n(text, N, chars); }
  constexpr std::string_view view() const { return {chars, N - 1}; }
  char chars[N];
};

// How a Double property checks what is assigned.
enum class Check : uint8_t { kAny, kPositive, kNonNegative, kNonZero };

inline void CheckDouble(double value, Check check) {
  bool ok = std::isfinite(value);
  switch (check) {
    case Check::kAny: break;
    case Check::kPositive: ok = ok && value > 0; break;
    case Check::kNonNegative: ok = ok && value >= 0; break;
    case Check::kNonZero: ok = ok && value != 0; break;
  }
  if (!ok) throw HostError(HostFailure::kInvalidInput);
}

template <class K, auto Field>
Variant GetPointField(K& s, CallArgs&) {
  return PointValue(s.data().*Field);
}
template <class K, auto Field, Literal Name>
void LetPointField(K& s, CallArgs&, Variant& v) {
  geometry::Vec3 p = PointArg(v, {Name.view(), Name.view()});
  s.Touch();
  s.mutable_data().*Field = p;
}

// A unit normal: a zero vector raises Invalid input; the stored vector is
// normalised.
template <class K, auto Field>
void LetNormalField(K& s, CallArgs&, Variant& v) {
  geometry::Vec3 p = PointArg(v, {"Normal", "Normal"});
  std::optional<geometry::Vec3> unit = geometry::Normalized(p);
  if (!unit) throw HostError(HostFailure::kInvalidInput);
  s.Touch();
  s.mutable_data().*Field = *unit;
}

template <class K, auto Field>
Variant GetDoubleField(K& s, CallArgs&) {
  return Variant(static_cast<double>(s.data().*Field));
}
template <class K, auto Field, Literal Name, Check C = Check::kAny>
void LetDoubleField(K& s, CallArgs&, Variant& v) {
  double d = DoubleArg(v, {Name.view(), Name.view()});
  CheckDouble(d, C);
  s.Touch();
  s.mutable_data().*Field = d;
}
// An angle stored normalised into [0, 2π).
template <class K, auto Field, Literal Name>
void LetAngleField(K& s, CallArgs&, Variant& v) {
  double d = DoubleArg(v, {Name.view(), Name.view()});
  CheckDouble(d, Check::kAny);
  s.Touch();
  s.mutable_data().*Field = geometry::NormalizeAngle(d);
}

template <class K, auto Field>
Variant GetBoolField(K& s, CallArgs&) {
  return Variant(static_cast<bool>(s.data().*Field));
}
template <class K, auto Field, Literal Name>
void LetBoolField(K& s, CallArgs&, Variant& v) {
  bool b = BoolArg(v, {Name.view(), Name.view()});
  if (s.data().*Field == b) {
    s.TouchUnchanged();  // (a layer unlocked around a write that was not locked)
    return;
  }
  s.Touch();
  s.mutable_data().*Field = b;
}

template <class K, auto Field>
Variant GetStringField(K& s, CallArgs&) {
  return Variant(s.data().*Field);
}
template <class K, auto Field, Literal Name>
void LetStringField(K& s, CallArgs&, Variant& v) {
  std::string text = StringArg(v, {Name.view(), Name.view()});
  s.Touch();
  s.mutable_data().*Field = std::move(text);
}

// Normal, Thickness (and Elevation) registered for kinds that have them.
template <class K>
void AddNormalMember(MemberTable<K>& t) {
  t.Property("Normal", GetPointField<K, &K::Data::normal>, LetNormalField<K, &K::Data::normal>);
}
template <class K>
void AddThicknessMember(MemberTable<K>& t) {
  t.Property("Thickness", GetDoubleField<K, &K::Data::thickness>,
             LetDoubleField<K, &K::Data::thickness, "Thickness">);
}

}  // namespace tovik::host

#endif  // TOVIK_HOST_SURFACE_MEMBER_HELPERS_H_
