#include "frame/variant.h"

#include <ostream>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"

namespace tovik {

Variant::Variant(SafeArray array)
    : type_(array.ElementType()),
      data_(std::make_shared<SafeArray>(std::move(array))) {}

Variant Variant::Null() { return Variant(VarType::kNull, int64_t{0}); }

Variant Variant::Missing() { return Variant(VarType::kError, int64_t{kMissingScode}); }

Variant Variant::Error(int32_t scode) {
  return Variant(VarType::kError, int64_t{scode});
}

Variant Variant::Byte(uint8_t v) { return Variant(VarType::kByte, int64_t{v}); }

Variant Variant::Date(double serial) { return Variant(VarType::kDate, serial); }

int Variant::VarTypeCode() const {
  int code = static_cast<int>(type_);
  return IsArray() ? code | kArrayFlag : code;
}

bool Variant::IsMissing() const {
  return IsError() && RawError() == kMissingScode;
}

bool Variant::IsArray() const { return std::holds_alternative<ArrayPtr>(data_); }

bool Variant::IsNothing() const { return IsObject() && RawObject() == nullptr; }

bool Variant::IsNumber() const {
  if (IsArray()) return false;
  switch (type_) {
    case VarType::kInteger:
    case VarType::kLong:
    case VarType::kLongLong:
    case VarType::kSingle:
    case VarType::kDouble:
    case VarType::kDate:
    case VarType::kByte:
    case VarType::kBoolean:
      return true;
    default:
      return false;
  }
}

const SafeArray& Variant::Array() const {
  if (!IsArray()) throw errors::TypeMismatch();
  return *std::get<ArrayPtr>(data_);
}

SafeArray& Variant::MutableArray() {
  if (!IsArray()) throw errors::TypeMismatch();
  ArrayPtr& array = std::get<ArrayPtr>(data_);
  // Copy-on-write: a shared array is detached before it is changed, so the
  // other holders keep their own (deep) copy.
  if (array.use_count() > 1) array = std::make_shared<SafeArray>(*array);
  return *array;
}

const ObjectRef& Variant::Object() const {
  if (!IsObject()) throw errors::TypeMismatch();
  const ObjectRef& object = RawObject();
  if (!object) throw errors::ObjectNotSet();
  return object;
}

bool Variant::SameAs(const Variant& other) const {
  if (IsArray() != other.IsArray()) return false;
  if (IsArray()) {
    const SafeArray& a = Array();
    const SafeArray& b = other.Array();
    if (a.Dims() != b.Dims() || a.Count() != b.Count()) return false;
    for (int d = 1; d <= a.Dims(); ++d) {
      if (a.LBound(d) != b.LBound(d)) return false;
    }
    for (int32_t i = 0; i < a.Count(); ++i) {
      if (!a.Items()[i].SameAs(b.Items()[i])) return false;
    }
    return true;
  }
  if (type_ != other.type_) return false;
  if (type_ == VarType::kObject) return SameObject(RawObject(), other.RawObject());
  return data_ == other.data_;
}

// ---------------------------------------------------------------- SafeArray

SafeArray::SafeArray(VarType element_type, int32_t lower, int32_t count)
    : SafeArray(element_type, std::vector<ArrayBound>{{lower, count}}) {}

SafeArray::SafeArray(VarType element_type, std::vector<ArrayBound> bounds)
    : element_type_(element_type), bounds_(std::move(bounds)) {
  size_t total = 1;
  for (const ArrayBound& b : bounds_) {
    if (b.count < 0) throw errors::Overflow();
    total *= static_cast<size_t>(b.count);
  }
  items_.assign(total, DefaultOf(element_type_));
}

SafeArray SafeArray::Of(std::initializer_list<Variant> values) {
  return OfVariants(std::vector<Variant>(values));
}

SafeArray SafeArray::OfVariants(std::vector<Variant> values, int32_t lower) {
  SafeArray array(VarType::kVariant, lower, 0);
  array.bounds_[0].count = static_cast<int32_t>(values.size());
  array.items_ = std::move(values);
  return array;
}

SafeArray SafeArray::OfDoubles(std::initializer_list<double> values) {
  return OfDoubles(std::vector<double>(values));
}

SafeArray SafeArray::OfDoubles(const std::vector<double>& values) {
  SafeArray array(VarType::kDouble, 0, 0);
  array.bounds_[0].count = static_cast<int32_t>(values.size());
  array.items_.reserve(values.size());
  for (double v : values) array.items_.emplace_back(v);
  return array;
}

SafeArray SafeArray::OfObjects(const std::vector<ObjectRef>& objects) {
  SafeArray array(VarType::kObject, 0, 0);
  array.bounds_[0].count = static_cast<int32_t>(objects.size());
  array.items_.reserve(objects.size());
  for (const ObjectRef& o : objects) array.items_.emplace_back(o);
  return array;
}

SafeArray::~SafeArray() {
  // Move every array that only this tree holds onto a work list before it
  // is destroyed, so each destructor below finds no nested array left.
  std::vector<std::shared_ptr<SafeArray>> pending;
  auto take_nested = [&pending](std::vector<Variant>& items) {
    for (Variant& item : items) {
      auto* nested = std::get_if<Variant::ArrayPtr>(&item.data_);
      if (nested != nullptr && nested->use_count() == 1) {
        pending.push_back(std::move(*nested));
      }
    }
  };
  take_nested(items_);
  while (!pending.empty()) {
    std::shared_ptr<SafeArray> array = std::move(pending.back());
    pending.pop_back();
    take_nested(array->items_);
  }
}

int32_t SafeArray::LBound(int dim) const {
  if (dim < 1 || dim > Dims()) throw errors::SubscriptOutOfRange();
  return bounds_[dim - 1].lower;
}

int32_t SafeArray::UBound(int dim) const {
  if (dim < 1 || dim > Dims()) throw errors::SubscriptOutOfRange();
  return bounds_[dim - 1].lower + bounds_[dim - 1].count - 1;
}

size_t SafeArray::Offset(int32_t index) const {
  if (Dims() != 1) throw errors::SubscriptOutOfRange();
  int64_t offset = int64_t{index} - bounds_[0].lower;
  if (offset < 0 || offset >= bounds_[0].count) {
    throw errors::SubscriptOutOfRange();
  }
  return static_cast<size_t>(offset);
}

size_t SafeArray::Offset(std::initializer_list<int32_t> indexes) const {
  if (static_cast<int>(indexes.size()) != Dims()) {
    throw errors::SubscriptOutOfRange();
  }
  size_t offset = 0;
  size_t d = 0;
  for (int32_t index : indexes) {
    int64_t local = int64_t{index} - bounds_[d].lower;
    if (local < 0 || local >= bounds_[d].count) {
      throw errors::SubscriptOutOfRange();
    }
    offset = offset * static_cast<size_t>(bounds_[d].count) +
             static_cast<size_t>(local);
    ++d;
  }
  return offset;
}

const Variant& SafeArray::At(int32_t index) const { return items_[Offset(index)]; }

const Variant& SafeArray::At(std::initializer_list<int32_t> indexes) const {
  return items_[Offset(indexes)];
}

void SafeArray::Set(int32_t index, Variant value) {
  size_t offset = Offset(index);
  items_[offset] = Coerce(std::move(value));
}

void SafeArray::Set(std::initializer_list<int32_t> indexes, Variant value) {
  size_t offset = Offset(indexes);
  items_[offset] = Coerce(std::move(value));
}

Variant& SafeArray::Ref(int32_t index) { return items_[Offset(index)]; }

void SafeArray::Redim(int32_t lower, int32_t count, bool preserve) {
  if (count < 0) throw errors::SubscriptOutOfRange();
  if (Dims() != 1) throw errors::SubscriptOutOfRange();
  if (!preserve) {
    bounds_[0] = {lower, count};
    items_.assign(static_cast<size_t>(count), DefaultOf(element_type_));
    return;
  }
  // ReDim Preserve keeps elements by index: the runtime only lets the upper
  // bound change, and so do we.
  if (lower != bounds_[0].lower) throw errors::SubscriptOutOfRange();
  bounds_[0].count = count;
  items_.resize(static_cast<size_t>(count), DefaultOf(element_type_));
}

void SafeArray::Append(Variant value) {
  if (Dims() != 1) throw errors::SubscriptOutOfRange();
  items_.push_back(Coerce(std::move(value)));
  ++bounds_[0].count;
}

std::vector<double> SafeArray::ToDoubles() const {
  std::vector<double> out;
  out.reserve(items_.size());
  for (const Variant& v : items_) out.push_back(CDbl(v));
  return out;
}

Variant SafeArray::Coerce(Variant value) const {
  if (element_type_ == VarType::kVariant) return value;
  return ConvertTo(value, element_type_);
}

Variant DefaultOf(VarType type) {
  switch (type) {
    case VarType::kInteger: return Variant(int16_t{0});
    case VarType::kLong: return Variant(int32_t{0});
    case VarType::kLongLong: return Variant(int64_t{0});
    case VarType::kSingle: return Variant(0.0f);
    case VarType::kDouble: return Variant(0.0);
    case VarType::kDate: return Variant::Date(0.0);
    case VarType::kByte: return Variant::Byte(0);
    case VarType::kBoolean: return Variant(false);
    case VarType::kString: return Variant(std::string());
    case VarType::kObject: return Variant::Nothing();
    case VarType::kError: return Variant::Error(0);
    default: return Variant();
  }
}

void PrintTo(const Variant& value, std::ostream* os) {
  *os << TypeName(value);
  if (value.IsArray()) {
    const SafeArray& a = value.Array();
    *os << "(";
    for (int d = 1; d <= a.Dims(); ++d) {
      if (d > 1) *os << ", ";
      *os << a.LBound(d) << " To " << a.UBound(d);
    }
    *os << ") {";
    for (int32_t i = 0; i < a.Count(); ++i) {
      if (i > 0) *os << ", ";
      PrintTo(a.Items()[i], os);
    }
    *os << "}";
    return;
  }
  if (value.IsString()) {
    *os << " \"" << value.RawString() << "\"";
  } else if (value.IsNumber()) {
    *os << " " << CStr(value);
  } else if (value.IsError()) {
    *os << " " << value.RawError();
  }
}

}  // namespace tovik
