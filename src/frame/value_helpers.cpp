#include "frame/value_helpers.h"

#include <cmath>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/error_trap.h"
#include "frame/runtime_text.h"
#include "frame/variant_compare.h"

namespace tovik {
namespace {

// AssignValue into element `index` of an array. A Variant element takes
// the deep copy; a typed element (Double, String...) converts the source,
// and a source it cannot hold leaves the element as it was.
void AssignElement(SafeArray& array, int32_t index, const Variant& source) {
  if (array.ElementType() == VarType::kVariant) {
    AssignValue(array.Ref(index), source);
    return;
  }
  ResumeNext trap;
  trap([&] { array.Set(index, source); });
}

// The walk of MinOf and MaxOf: `replaces(candidate, current)` decides
// whether a later value takes the place of the current one.
template <class Replaces>
Variant Reduce(std::span<const Variant> values, Replaces replaces) {
  if (values.empty()) return Variant();
  if (!values[0].IsArray()) {
    Variant current = values[0];
    for (size_t i = 1; i < values.size(); ++i) {
      if (replaces(values[i], current)) current = values[i];
    }
    return current;
  }
  Variant copy;
  AssignValue(copy, values[0]);
  if (!copy.IsArray() || copy.Array().empty()) return Variant();
  const std::vector<Variant>& items = copy.Array().Items();
  Variant current = items[0];
  for (size_t i = 1; i < items.size(); ++i) {
    if (replaces(items[i], current)) current = items[i];
  }
  return current;
}

bool TolerantEqualUntrapped(const Variant& a, const Variant& b, double& tolerance) {
  if (TypeName(a) == "String") {
    if (tolerance != 0.0) {
      return UCase(Trim(CStr(a))) == UCase(Trim(CStr(b)));
    }
    return ValuesEqual(a, b);
  }
  if (a.IsObject()) {
    // `a Is b`: b must hold an object too.
    if (!b.IsObject()) throw errors::TypeMismatch();
    return SameObject(a.RawObject(), b.RawObject());
  }
  if (a.IsArray()) {
    int16_t count = ElementCount(a);
    if (count != ElementCount(b)) return false;
    const SafeArray& aa = a.Array();
    const SafeArray& bb = b.Array();
    // Positions run from a's lower bound up to count - 1: with a lower
    // bound of 1 the last element is left out. Kept as callers know it.
    for (int32_t i = aa.LBound(); i <= count - 1; ++i) {
      if (!TolerantEqualUntrapped(aa.At(i), bb.At(i), tolerance)) return false;
    }
    return true;
  }
  if ((a.Type() == VarType::kSingle || a.Type() == VarType::kDouble) &&
      tolerance == 0.0) {
    tolerance = 1e-06;
  }
  if (ValuesEqual(a, b)) return true;
  double da = CDbl(a);
  double db = CDbl(b);
  if (std::fabs(da) < tolerance && std::fabs(db) < tolerance) return true;
  if (da == 0.0) {
    // b / 0: overflow for 0 / 0, division by zero otherwise.
    throw db == 0.0 ? errors::Overflow() : errors::DivisionByZero();
  }
  return std::fabs(db / da - 1.0) <= std::fabs(tolerance);
}

}  // namespace

int16_t ElementCount(const Variant& value) {
  if (!value.IsArray()) return 0;
  const SafeArray& array = value.Array();
  int64_t count = int64_t{array.UBound(1)} - array.LBound(1) + 1;
  // The count is an Integer: a longer array fails the conversion, which
  // the trap turns into 0.
  if (count < 0 || count > 32767) return 0;
  return static_cast<int16_t>(count);
}

void InsertElement(Variant& array, const Variant& value, const Variant& position) {
  Variant item = value;  // value may be array itself
  if (!array.IsArray() || array.Array().Dims() != 1) {
    SafeArray grown(VarType::kVariant, 0, 1);
    AssignElement(grown, 0, item);
    array = Variant(std::move(grown));
    return;
  }
  SafeArray& target = array.MutableArray();
  int32_t lb = target.LBound();
  int32_t ub = target.UBound();
  int64_t at = int64_t{ub} + 1;
  if (!position.IsMissing()) {
    at = CLng(position);
    if (at < lb) at = lb;
    if (at > int64_t{ub} + 1) at = int64_t{ub} + 1;
  }
  target.Redim(lb, target.Count() + 1, true);
  for (int64_t i = ub; i >= at; --i) {
    Variant moved = target.At(static_cast<int32_t>(i));
    AssignElement(target, static_cast<int32_t>(i + 1), moved);
  }
  AssignElement(target, static_cast<int32_t>(at), item);
}

Variant JoinValues(std::span<const Variant> values) {
  std::vector<Variant> joined;
  for (const Variant& v : values) {
    if (!v.IsArray()) {
      joined.push_back(v);
      continue;
    }
    for (const Variant& element : v.Array().Items()) joined.push_back(element);
  }
  return Variant(SafeArray::OfVariants(std::move(joined)));
}

Variant JoinValues(std::initializer_list<Variant> values) {
  return JoinValues(std::span<const Variant>(values.begin(), values.size()));
}

bool TolerantEqual(const Variant& a, const Variant& b, double& tolerance) {
  try {
    return TolerantEqualUntrapped(a, b, tolerance);
  } catch (const AutomationError&) {
    return false;
  }
}

void AssignValue(Variant& target, const Variant& source_in) {
  Variant source = source_in;  // target and source may be one variable
  if (source.IsArray()) {
    const SafeArray& from = source.Array();
    if (from.Dims() != 1) {
      target = source;
      return;
    }
    // An upper bound below 0 counts as empty, whatever the lower bound.
    if (from.UBound() < 0) {
      target = Variant();
      return;
    }
    SafeArray copy(VarType::kVariant, from.LBound(), from.Count());
    for (int32_t i = from.LBound(); i <= from.UBound(); ++i) {
      AssignValue(copy.Ref(i), from.At(i));
    }
    target = Variant(std::move(copy));
    return;
  }
  if (source.IsObject()) {
    target = source;
    return;
  }
  if (target.IsArray() && source.IsEmpty()) {
    target = Variant();
    return;
  }
  target = source;
}

Variant MinOf(std::span<const Variant> values) {
  return Reduce(values, [](const Variant& candidate, const Variant& current) {
    return ValueLess(candidate, current);
  });
}

Variant MinOf(std::initializer_list<Variant> values) {
  return MinOf(std::span<const Variant>(values.begin(), values.size()));
}

Variant MaxOf(std::span<const Variant> values) {
  return Reduce(values, [](const Variant& candidate, const Variant& current) {
    return ValueGreater(candidate, current);
  });
}

Variant MaxOf(std::initializer_list<Variant> values) {
  return MaxOf(std::span<const Variant>(values.begin(), values.size()));
}

void ExtendExtents(Variant& min_p, Variant& max_p, const Variant& p) {
  const SafeArray& point = p.Array();
  for (int32_t i = 0; i <= 2; ++i) {
    const Variant& c = point.At(i);
    if (ValueLess(c, min_p.Array().At(i))) min_p.MutableArray().Set(i, c);
    if (ValueGreater(c, max_p.Array().At(i))) max_p.MutableArray().Set(i, c);
  }
}

Variant MakePoint(double x, double y, double z) {
  return Variant(SafeArray::OfDoubles({x, y, z}));
}

}  // namespace tovik
