// Argument checking and result shaping for host members, done the way the
// host's typed parameters do it: a Double parameter takes any number (and a
// numeric string), a point must be an array of three numbers, an object
// parameter must hold an object. What cannot be taken raises the host's
// "Invalid argument <Arg> in <Member>" or the runtime's type mismatch.
#ifndef TOVIK_HOST_SURFACE_ARGS_H_
#define TOVIK_HOST_SURFACE_ARGS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/dispatch.h"
#include "frame/variant.h"
#include "geometry/vec3.h"

namespace tovik::host {

// Where an argument goes: its interface name and the member's name, for the
// error text.
struct ArgName {
  std::string_view arg;
  std::string_view member;
};

// A point argument: a one-dimensional array of 3 numbers (Double arrays, or
// Variant arrays of numbers). Anything else raises Invalid argument.
geometry::Vec3 PointArg(const Variant& value, ArgName name);
// A 2D or 3D point (2 or 3 numbers); z is 0 for two.
geometry::Vec3 Point2or3Arg(const Variant& value, ArgName name);
// A flat list of numbers (any numeric array); raises Invalid argument for a
// non-array or a non-numeric element.
std::vector<double> DoublesArg(const Variant& value, ArgName name);
// Scalars. Missing raises Invalid argument (a required argument given as
// Missing); a value that does not convert raises type mismatch (13).
double DoubleArg(const Variant& value, ArgName name);
int32_t LongArg(const Variant& value, ArgName name);
int16_t IntegerArg(const Variant& value, ArgName name);
bool BoolArg(const Variant& value, ArgName name);
std::string StringArg(const Variant& value, ArgName name);
// An object argument; Nothing or a non-object raises Invalid argument.
ObjectRef ObjectArg(const Variant& value, ArgName name);
// The objects of an array of objects (Variant or Object arrays). A
// non-array, or an element that is not an object, raises Invalid argument.
std::vector<ObjectRef> ObjectsArg(const Variant& value, ArgName name);

// Results.
Variant PointValue(const geometry::Vec3& p);
Variant Point2Value(double x, double y);
Variant DoublesValue(const std::vector<double>& values);
// An array of objects (VT_ARRAY|VT_DISPATCH), 0-based; empty: UBound -1.
Variant ObjectsValue(const std::vector<ObjectRef>& objects);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SURFACE_ARGS_H_
