#include "host/surface/args.h"

#include "frame/conversions.h"
#include "host/core/host_error.h"

namespace tovik::host {
namespace {

void RequirePresent(const Variant& value, ArgName name) {
  if (value.IsMissing() || value.IsEmpty() || value.IsNull()) {
    throw InvalidArgument(name.arg, name.member);
  }
}

double NumberElement(const Variant& element, ArgName name) {
  if (!element.IsNumber() || element.IsBoolean()) {
    throw InvalidArgument(name.arg, name.member);
  }
  return NumberOf(element);
}

}  // namespace

std::vector<double> DoublesArg(const Variant& value, ArgName name) {
  if (!value.IsArray() || value.Array().Dims() != 1) {
    throw InvalidArgument(name.arg, name.member);
  }
  std::vector<double> out;
  const SafeArray& array = value.Array();
  out.reserve(static_cast<size_t>(array.Count()));
  for (const Variant& element : array.Items()) {
    out.push_back(NumberElement(element, name));
  }
  return out;
}

geometry::Vec3 PointArg(const Variant& value, ArgName name) {
  std::vector<double> d = DoublesArg(value, name);
  if (d.size() != 3) throw InvalidArgument(name.arg, name.member);
  return {d[0], d[1], d[2]};
}

geometry::Vec3 Point2or3Arg(const Variant& value, ArgName name) {
  std::vector<double> d = DoublesArg(value, name);
  if (d.size() == 2) return {d[0], d[1], 0.0};
  if (d.size() != 3) throw InvalidArgument(name.arg, name.member);
  return {d[0], d[1], d[2]};
}

double DoubleArg(const Variant& value, ArgName name) {
  RequirePresent(value, name);
  if (value.IsArray()) throw InvalidArgument(name.arg, name.member);
  return CDbl(value);
}

int32_t LongArg(const Variant& value, ArgName name) {
  RequirePresent(value, name);
  if (value.IsArray()) throw InvalidArgument(name.arg, name.member);
  return CLng(value);
}

int16_t IntegerArg(const Variant& value, ArgName name) {
  RequirePresent(value, name);
  if (value.IsArray()) throw InvalidArgument(name.arg, name.member);
  return CInt(value);
}

bool BoolArg(const Variant& value, ArgName name) {
  RequirePresent(value, name);
  if (value.IsArray()) throw InvalidArgument(name.arg, name.member);
  return CBool(value);
}

std::string StringArg(const Variant& value, ArgName name) {
  if (value.IsMissing() || value.IsArray() || value.IsNull()) {
    throw InvalidArgument(name.arg, name.member);
  }
  return CStr(value);
}

ObjectRef ObjectArg(const Variant& value, ArgName name) {
  if (!value.IsObject() || value.IsNothing()) {
    throw InvalidArgument(name.arg, name.member);
  }
  return value.RawObject();
}

std::vector<ObjectRef> ObjectsArg(const Variant& value, ArgName name) {
  if (!value.IsArray() || value.Array().Dims() != 1) {
    throw InvalidArgument(name.arg, name.member);
  }
  std::vector<ObjectRef> out;
  for (const Variant& element : value.Array().Items()) {
    if (!element.IsObject() || element.IsNothing()) {
      throw InvalidArgument(name.arg, name.member);
    }
    out.push_back(element.RawObject());
  }
  return out;
}

Variant PointValue(const geometry::Vec3& p) {
  return Variant(SafeArray::OfDoubles({p.x, p.y, p.z}));
}

Variant Point2Value(double x, double y) {
  return Variant(SafeArray::OfDoubles({x, y}));
}

Variant DoublesValue(const std::vector<double>& values) {
  return Variant(SafeArray::OfDoubles(values));
}

Variant ObjectsValue(const std::vector<ObjectRef>& objects) {
  return Variant(SafeArray::OfObjects(objects));
}

}  // namespace tovik::host
