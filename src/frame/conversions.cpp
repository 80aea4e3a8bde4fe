#include "frame/conversions.h"

#include <cmath>
#include <optional>

#include "frame/automation_error.h"
#include "frame/dispatch.h"
#include "frame/runtime_number.h"
#include "frame/runtime_text.h"

namespace tovik {
namespace {

std::string ElementTypeName(VarType type) {
  switch (type) {
    case VarType::kEmpty: return "Empty";
    case VarType::kNull: return "Null";
    case VarType::kInteger: return "Integer";
    case VarType::kLong: return "Long";
    case VarType::kSingle: return "Single";
    case VarType::kDouble: return "Double";
    case VarType::kCurrency: return "Currency";
    case VarType::kDate: return "Date";
    case VarType::kString: return "String";
    case VarType::kObject: return "Object";
    case VarType::kError: return "Error";
    case VarType::kBoolean: return "Boolean";
    case VarType::kVariant: return "Variant";
    case VarType::kByte: return "Byte";
    case VarType::kLongLong: return "LongLong";
  }
  return "Unknown";
}

// A scalar reduced to a number or a string, objects through their default
// member; raises the runtime's error for Null, Nothing, arrays and errors.
Variant Scalar(const Variant& value) {
  if (value.IsArray()) throw errors::TypeMismatch();
  if (value.IsObject()) return Scalar(ValueOf(value));
  if (value.IsNull()) throw errors::Runtime(kErrInvalidUseOfNull);
  if (value.IsError()) throw errors::TypeMismatch();
  return value;
}

double StringToDouble(const std::string& text) {
  std::optional<double> number = ParseNumeric(text);
  if (number) return *number;
  // "True" and "False" read as -1 and 0 wherever a number is expected.
  if (CaseInsensitiveEqual(Trim(text), "True")) return -1.0;
  if (CaseInsensitiveEqual(Trim(text), "False")) return 0.0;
  throw errors::TypeMismatch();
}

double ToDouble(const Variant& value) {
  Variant scalar = Scalar(value);
  if (scalar.IsEmpty()) return 0.0;
  if (scalar.IsString()) return StringToDouble(scalar.RawString());
  return NumberOf(scalar);
}

}  // namespace

double NumberOf(const Variant& value) {
  switch (value.Type()) {
    case VarType::kSingle:
    case VarType::kDouble:
    case VarType::kDate:
      return value.RawDouble();
    default:
      return static_cast<double>(value.RawInt());
  }
}

std::string TypeName(const Variant& value) {
  if (value.IsArray()) return ElementTypeName(value.Type()) + "()";
  if (value.IsObject()) {
    const ObjectRef& object = value.RawObject();
    return object ? std::string(object->TypeName()) : "Nothing";
  }
  return ElementTypeName(value.Type());
}

Variant ValueOf(const Variant& value) {
  if (!value.IsObject()) return value;
  const ObjectRef& object = value.Object();
  return object->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
}

std::string CStr(const Variant& value) {
  Variant scalar = Scalar(value);
  switch (scalar.Type()) {
    case VarType::kEmpty: return std::string();
    case VarType::kString: return scalar.RawString();
    case VarType::kBoolean: return scalar.RawBool() ? "True" : "False";
    case VarType::kSingle:
      return FormatSingle(static_cast<float>(scalar.RawDouble()));
    case VarType::kDouble:
    case VarType::kDate:
      return FormatDouble(scalar.RawDouble());
    default:
      return std::to_string(scalar.RawInt());
  }
}

double CDbl(const Variant& value) {
  if (value.Type() == VarType::kDouble && !value.IsArray()) {
    return value.RawDouble();  // the hot path: points and lengths
  }
  return ToDouble(value);
}

float CSng(const Variant& value) {
  double d = ToDouble(value);
  if (std::isfinite(d) && std::fabs(d) > 3.402823466e38) throw errors::Overflow();
  return static_cast<float>(d);
}

int16_t CInt(const Variant& value) {
  if (value.Type() == VarType::kInteger && !value.IsArray()) {
    return static_cast<int16_t>(value.RawInt());
  }
  std::optional<int16_t> result = ToInteger(ToDouble(value));
  if (!result) throw errors::Overflow();
  return *result;
}

int32_t CLng(const Variant& value) {
  if ((value.Type() == VarType::kLong || value.Type() == VarType::kInteger) &&
      !value.IsArray()) {
    return static_cast<int32_t>(value.RawInt());
  }
  std::optional<int32_t> result = ToLong(ToDouble(value));
  if (!result) throw errors::Overflow();
  return *result;
}

int64_t CLngLng(const Variant& value) {
  if (!value.IsArray() && value.Type() != VarType::kSingle &&
      value.Type() != VarType::kDouble && value.Type() != VarType::kDate &&
      value.IsNumber()) {
    return value.RawInt();
  }
  double d = RoundHalfEven(ToDouble(value));
  // 2^63 is the first double outside the signed 64-bit range.
  if (!(d >= -9223372036854775808.0 && d < 9223372036854775808.0)) {
    throw errors::Overflow();
  }
  return static_cast<int64_t>(d);
}

bool CBool(const Variant& value) {
  Variant scalar = Scalar(value);
  if (scalar.IsEmpty()) return false;
  if (scalar.IsString()) return StringToDouble(scalar.RawString()) != 0.0;
  return NumberOf(scalar) != 0.0;
}

uint8_t CByte(const Variant& value) {
  std::optional<uint8_t> result = ToByte(ToDouble(value));
  if (!result) throw errors::Overflow();
  return *result;
}

Variant ConvertTo(const Variant& value, VarType type) {
  switch (type) {
    case VarType::kVariant: return value;
    case VarType::kInteger: return Variant(CInt(value));
    case VarType::kLong: return Variant(CLng(value));
    case VarType::kLongLong: return Variant(CLngLng(value));
    case VarType::kSingle: return Variant(CSng(value));
    case VarType::kDouble: return Variant(CDbl(value));
    case VarType::kDate: return Variant::Date(CDbl(value));
    case VarType::kBoolean: return Variant(CBool(value));
    case VarType::kByte: return Variant::Byte(CByte(value));
    case VarType::kString: return Variant(CStr(value));
    case VarType::kObject:
      if (!value.IsObject()) throw errors::TypeMismatch();
      return value;
    default:
      throw errors::TypeMismatch();
  }
}

bool IsNumeric(const Variant& value) {
  if (value.IsArray() || value.IsNull() || value.IsError()) return false;
  if (value.Type() == VarType::kDate) return false;  // dates are not numeric
  if (value.IsEmpty() || value.IsNumber()) return true;
  if (value.IsString()) return ParseNumeric(value.RawString()).has_value();
  return false;
}

}  // namespace tovik
